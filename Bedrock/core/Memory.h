// SPDX-License-Identifier: MIT
// Memory of zones for a number of elements, and the one way to say that there is none. Sizes that do not fit count as
// memory that is not there. Texts are printf's; what they name stands at the end of the message.
#pragma once

#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/Scope.h>

/// Raises ZPMallocException with "*** out of memory for " and the text.
[[noreturn]] ZP_COLD void _ZPRaiseOutOfMemory(const char *what, ...) __attribute__((format(printf, 1, 2)));
/// The same with "*** FUNCTION(): out of memory for ".
[[noreturn]] ZP_COLD void _ZPRaiseOutOfMemoryIn(const char *function, const char *what, ...)
    __attribute__((format(printf, 2, 3)));
/// Raises ZPMallocException with "*** " and the text: sizes that no memory could hold, and older texts.
[[noreturn]] ZP_COLD void _ZPRaiseMalloc(const char *text, ...) __attribute__((format(printf, 1, 2)));

/// The same for a text that comes from elsewhere.
template <class... A> [[noreturn]] ZP_INLINE void _ZPRaiseOutOfMemoryFor(const char *what, A... of) {
    if constexpr (sizeof...(of) == 0) _ZPRaiseOutOfMemory("%s", what);
    else _ZPRaiseOutOfMemory(what, of...);
}

/// Room for `count` elements of T, its bytes as they come; null without memory.
template <class T> ZP_INLINE T *_ZPTryAllocate(std::size_t count, ZPZone *zone = nullptr) {
    std::size_t bytes;
    if (__builtin_mul_overflow(count, sizeof(T), &bytes)) [[unlikely]]
        return nullptr;
    return static_cast<T *>(ZPZoneMalloc(zone, bytes ? bytes : 1));
}
/// Gives a block of the zone, or null, room for `count` elements; null, and the block stays as it is, without memory.
template <class T> ZP_INLINE T *_ZPTryReallocate(T *block, std::size_t count, ZPZone *zone = nullptr) {
    std::size_t bytes;
    if (__builtin_mul_overflow(count, sizeof(T), &bytes)) [[unlikely]]
        return nullptr;
    return static_cast<T *>(ZPZoneRealloc(zone, static_cast<void *>(block), bytes));
}

/// The same, but raises, with the text that says for what, without memory.
template <class T, class... A> ZP_INLINE T *_ZPAllocate(std::size_t count, ZPZone *zone, const char *what, A... of) {
    T *block = _ZPTryAllocate<T>(count, zone);
    if (!block) [[unlikely]]
        _ZPRaiseOutOfMemoryFor(what, of...);
    return block;
}
template <class T, class... A>
ZP_INLINE T *_ZPAllocateCleared(std::size_t count, ZPZone *zone, const char *what, A... of) {
    auto *block = static_cast<T *>(ZPZoneCalloc(zone, count ? count : 1, sizeof(T)));
    if (!block) [[unlikely]]
        _ZPRaiseOutOfMemoryFor(what, of...);
    return block;
}
template <class T, class... A>
ZP_INLINE T *_ZPReallocate(T *block, std::size_t count, ZPZone *zone, const char *what, A... of) {
    T *moved = _ZPTryReallocate(block, count, zone);
    if (!moved) [[unlikely]]
        _ZPRaiseOutOfMemoryFor(what, of...);
    return moved;
}

struct _ZPFreesInZone {
    ZPZone *zone = nullptr;
    void operator()(void *memory) const { ZPZoneFree(zone, memory); }
};
/// Owns a block of a zone, or none: freed at the end unless taken out.
template <class T> struct _ZPBlock : ZPScope<T, _ZPFreesInZone> {
    explicit _ZPBlock(T *block = nullptr, ZPZone *zone = nullptr) : ZPScope<T, _ZPFreesInZone>(block, {zone}) {}
    /// Shrinks the block and gives it away.
    T *takeShrunk(std::size_t count) {
        T *whole = this->take(), *smaller = _ZPTryReallocate(whole, count, this->_end.zone);
        return smaller ? smaller : whole;
    }

  protected:
    /// Gives the block other room: null, and it stays as it is, without memory.
    T *tryResize(std::size_t count) {
        T *moved = _ZPTryReallocate(this->_held, count, this->_end.zone);
        return moved ? this->_held = moved : nullptr;
    }
};
