// SPDX-License-Identifier: MIT
// Hash and equality of objects in tables. Most keys are 8-bit strings of one class: theirs are taken without messages,
// with the result that the messages have.
#pragma once

#include <Bedrock/strings/cluster/Cluster.h>

#include <bit>
#include <cstring>

static_assert(sizeof(ZPInlineCString) == 16, "short strings are read as whole words");
/// The hash of 3 to 32 bytes below 128 in an inline string; false for any others. Fewer than 8 are read as a word
/// that ends inside the object (4 bytes of the fields' own room and the NUL lie behind them) and shifted into place.
ZP_INLINE bool _ZPHashShortBytes(const char *bytes, unsigned length, unsigned &hash) {
    if (std::endian::native != std::endian::little || length - 3 > 29) return false;
    if (length >= 8) [[likely]]
        return _ZPHashWords(bytes, length, hash);
    std::uint64_t word;
    std::memcpy(&word, bytes, 8);
    word <<= 8 * (8 - length);
    if (word & 0x8080808080808080) return false;
    hash = _ZPFinishHash(length * _ZPPowers.of[length] + _ZPHashEight(word), length);
    return true;
}

/// Whether such bytes are the same. Four words that overlap cover 8 to 32 bytes: no branch depends on the length.
ZP_INLINE bool _ZPSameShortBytes(const char *a, const char *b, unsigned length) {
    auto differ = [=](unsigned at) {
        std::uint64_t x, y;
        std::memcpy(&x, a + at, 8);
        std::memcpy(&y, b + at, 8);
        return x ^ y;
    };
    if (length < 8) return !(differ(0) << 8 * (8 - length));
    unsigned last = length - 8, second = last < 8 ? last : 8, third = length < 16 ? 0 : length - 16;
    return !(differ(0) | differ(second) | differ(third) | differ(last));
}

/// What `hash` answers.
ZP_INLINE unsigned _ZPHashOfObject(id object) {
    if (object.pointer()->isa == ZPInlineCString::class_()) {
        auto *string = object.unchecked<ZPInlineCString>();
        unsigned hash, length = string->byteCount();
        if (_ZPHashShortBytes(string->contents(), length, hash)) [[likely]]
            return hash;
        return ZPHashCString(string->contents(), length);
    }
    return object->hash();
}

/// Makes a hash of words, by numbers of the process's own: whoever writes a text cannot know which texts collide.
class _ZPKeyedHash {
    struct Key {
        std::uint64_t start, factor;
    };
    static const Key &key();
    const Key &_key = key();
    std::uint64_t _state = _key.start;

    static std::uint64_t fold(std::uint64_t a, std::uint64_t b) {
        unsigned __int128 product = static_cast<unsigned __int128>(a) * b;
        return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
    }

  public:
    /// Begins again.
    void begin(std::uint64_t word) { _state = fold(_key.start ^ word, _key.factor); }
    void add(std::uint64_t word) { _state = fold(_state ^ word, _key.factor) + _key.start; }
    std::uint32_t result() const { return std::uint32_t(_state ^ _state >> 32); }
};

/// A keyed hash of the whole text of a string of any class, equal for equal strings; of anything else its `hash`.
ZP_COLD unsigned _ZPKeyedHashOfObject(id object);

/// What `isEqual:` answers, of an item in a table and a probe for it.
struct _ZPObjectEquality {
    ZP_INLINE bool operator()(const void *stored, const void *probe) const {
        auto *a = static_cast<objc_object *>(const_cast<void *>(stored));
        auto *b = static_cast<objc_object *>(const_cast<void *>(probe));
        if (a->isa == ZPInlineCString::class_() && b->isa == ZPInlineCString::class_()) {
            auto *x = reinterpret_cast<ZPInlineCString *>(a), *y = reinterpret_cast<ZPInlineCString *>(b);
            return x->byteCount() == y->byteCount() && !std::memcmp(x->contents(), y->contents(), x->byteCount());
        }
        return id(a)->isEqual(b) != NO;
    }
};
