// SPDX-License-Identifier: MIT
// Allocation zones, pages and the memory of instances.
#pragma once

#include <Bedrock/platform/ZPClass.h>

#include <sys/single_threaded.h>

/// An allocation zone. The null zone stands for the default zone in every function that takes one; any thread may
/// use a zone. Sizes are in bytes. The functions get the zone itself.
struct ZPZone {
    /// A block of the new size with the old one's bytes; null, and the old one as it was, without memory.
    void *(*reallocate)(ZPZone *zone, void *pointer, std::size_t size);
    /// A block aligned to 16, or null without memory.
    void *(*allocate)(ZPZone *zone, std::size_t size);
    /// Frees one of its blocks; null is ignored.
    void (*free)(ZPZone *zone, void *pointer);
    /// Ends the zone; null for the default zone.
    void (*destroy)(ZPZone *zone);
    const char *name;  ///< for people; may be null
};

extern "C" {
/// The zone on the process heap, which lives as long as the process.
ZP_EXPORT ZPZone *QLDefaultMallocZone();
/// A new zone whose blocks come from arenas of `granularity` bytes, a page at least, the first of `startSize`; null
/// without memory. `canFree` NO: freed blocks are not reused. `parent` is not used.
ZP_EXPORT ZPZone *QLCreateChildZone(ZPZone *parent, std::size_t startSize, std::size_t granularity, BOOL canFree);
/// Ends a child zone: its blocks live on and belong to the default zone, by which they are freed from then on. Null
/// and the default zone are left alone.
ZP_EXPORT void QLMergeZone(ZPZone *zone);
/// Names a zone for people; copies the name, which may be null.
ZP_EXPORT void QLNameZone(ZPZone *zone, const char *name);
/// The zone that a block came from: a child zone, else the default zone; null for null.
ZP_EXPORT ZPZone *QLZoneFromPtr(const void *pointer);

/// The size of a memory page in bytes.
ZP_EXPORT std::size_t vm_page_size();
/// Zero-filled pages in `*pages`, which `vm_deallocate` gives back; NO when there is no memory.
ZP_EXPORT BOOL vm_allocate(void **pages, std::size_t bytes);
/// Gives pages back, a part of an allocation too; NO when the address is not the beginning of a page.
ZP_EXPORT BOOL vm_deallocate(void *pages, std::size_t bytes);

/// A new instance with `extraBytes` behind its fields: zero-filled, `isa` set, C++ fields constructed, retain count
/// 1. Null when there is no memory.
ZP_EXPORT objc_object *_zoneAlloc(Class cls, std::size_t extraBytes, ZPZone *zone);
/// The same with nothing set but `isa`, for a class without C++ fields whose caller writes every field at once.
objc_object *_zoneAllocBare(Class cls, std::size_t extraBytes, ZPZone *zone);
/// A copy of an instance, C++ fields copied by their copy constructors, with retain count 1. Null when there is no
/// memory; the process stops when the C++ fields cannot be copied.
ZP_EXPORT objc_object *_zoneCopy(objc_object *object, std::size_t extraBytes, ZPZone *zone);
/// Destroys the C++ fields of an instance and frees it, whatever its retain count.
ZP_EXPORT void _dealloc(objc_object *object);
/// Runs the C++ destructors of an instance's fields and keeps its memory.
ZP_EXPORT void objc_destroyFields(objc_object *object);
}

/// @cond machinery
/// What precedes an instance whose class counts in the header.
struct objc_header {
    unsigned extraReferences;
    unsigned origin;  ///< where the block goes when it is freed: one of these two, else the heap
};
inline constexpr unsigned objc_fromChildZone = 0xFFFFFFFF;
inline constexpr unsigned objc_fromSlab = 0x80000000;  ///< and how many bytes it lies behind its slab's head

// The compiler must not reason about a static object here: it has no header, and is never counted in one.
inline objc_header *objc_headerOf(objc_object *object) {
    return reinterpret_cast<objc_header *>(objc_receiver(object)) - 1;
}

inline constexpr unsigned objc_saturatedCount = 0xFFFFFFFF;
extern "C" {
ZP_EXPORT void objc_retainNearLimit(objc_object *object);
/// Answers whether the object had no extra reference.
ZP_EXPORT BOOL objc_releaseNearLimit(objc_object *object);
}
inline constexpr unsigned objc_nearLimit = 0xFFFFFF00;
/// @endcond

/// Adds an extra reference to an instance that counts in its header. Atomic once the process has a
/// second thread.
ZP_INLINE void objc_retainInHeader(objc_object *object) {
    unsigned *count = &objc_headerOf(object)->extraReferences;
    unsigned now = __atomic_load_n(count, __ATOMIC_RELAXED);
    if (now >= objc_nearLimit) [[unlikely]]
        objc_retainNearLimit(object);
    else if (__libc_single_threaded) __atomic_store_n(count, now + 1, __ATOMIC_RELAXED);
    else __atomic_fetch_add(count, 1, __ATOMIC_RELAXED);
}

/// Takes an extra reference away; answers true when there was none, and the caller deallocates.
ZP_INLINE bool objc_releaseInHeader(objc_object *object) {
    unsigned *count = &objc_headerOf(object)->extraReferences;
    unsigned now = __atomic_load_n(count, __ATOMIC_ACQUIRE);
    if (now == 0) return true;
    if (now >= objc_nearLimit) [[unlikely]]
        return objc_releaseNearLimit(object);
    if (__libc_single_threaded) {
        __atomic_store_n(count, now - 1, __ATOMIC_RELAXED);
        return false;
    }
    if (__atomic_fetch_sub(count, 1, __ATOMIC_ACQ_REL) != 0) return false;
    __atomic_store_n(count, 0, __ATOMIC_RELAXED);
    return true;
}

/// Whether an instance counts in its header, by its class.
inline bool objc_countsInItsHeader(objc_object *object) {
    return __atomic_load_n(&object->isa->info, __ATOMIC_RELAXED) & objc_countsInHeader;
}
