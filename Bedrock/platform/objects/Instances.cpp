// SPDX-License-Identifier: MIT
// Making, copying and freeing instances. An instance that counts in its header lies 8 (or, with
// 16-byte alignment, 16) bytes into its block:  [padding] | extraReferences | origin | isa ...
//
// Each thread keeps a few freed heap blocks of each small size for its next instances; every such block
// is a heap block of its own, so any of them may go back to the heap at any time.
#include <Bedrock/platform/kernel/Kernel.h>
#include <Bedrock/platform/objects/Objects+Internal.h>
#include <Bedrock/platform/objects/Slabs.h>
#include <Bedrock/platform/ZPZone.h>

#include <cstdlib>
#include <cstring>

namespace {

// Of a class that is realized: before, its record does not know what it inherits.
std::size_t prefixOf(Class cls) {
    unsigned info = __atomic_load_n(&cls->info, __ATOMIC_RELAXED);
    if (!(info & objc_countsInHeader)) return 0;
    return info & objc_hasWideAlignment ? 16 : sizeof(objc_header);
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr unsigned kept = 0;  // the sanitizers see every allocation and free
#else
constexpr unsigned kept = 64;
#endif
constexpr std::size_t grain = 16, largestKept = 256;

struct Block {
    Block *next;
};
struct Shelf {
    Block *first;
    unsigned count;
};
[[gnu::tls_model("initial-exec")]] thread_local constinit Shelf shelves[largestKept / grain + 1]{};
enum class Keeping : char { notYet, yes, ended };
[[gnu::tls_model("initial-exec")]] thread_local constinit Keeping keeping = Keeping::notYet;

void emptyShelves(ZPThreadData *) {
    keeping = Keeping::ended;
    for (Shelf &shelf : shelves) {
        for (Block *block = shelf.first; block;) {
            Block *next = block->next;
            std::free(block);
            block = next;
        }
        shelf = {};
    }
}

// Sets `shelf` to the shelf that the block will go to, 0 when it is too large for one.
ZP_INLINE void *takeBlock(std::size_t size, unsigned &shelf) {
    if (size > largestKept) [[unlikely]] {
        shelf = 0;
        return std::malloc(size);
    }
    shelf = unsigned((size + grain - 1) / grain);
    if (Block *block = shelves[shelf].first) [[likely]] {
        shelves[shelf].first = block->next;
        --shelves[shelf].count;
        return block;
    }
    return std::malloc(shelf * grain);
}

ZP_INLINE void keepBlock(void *memory, unsigned index) {
    Shelf &shelf = shelves[index];
    if (keeping != Keeping::yes) [[unlikely]] {
        if (keeping == Keeping::ended || kept == 0) {
            std::free(memory);
            return;
        }
        ZPCleanUpThread(ZPCleanFreedBlocks, emptyShelves);
        keeping = Keeping::yes;
    }
    if (shelf.count >= kept) {
        std::free(memory);
        return;
    }
    auto *block = static_cast<Block *>(memory);
    block->next = shelf.first;
    shelf.first = block;
    ++shelf.count;
}

ZP_INLINE objc_object *allocateRaw(std::size_t prefix, std::size_t size, ZPZone *zone) {
    unsigned origin = objc_fromChildZone;
    char *block;
    if (zone && zone != QLDefaultMallocZone()) [[unlikely]]
        block = static_cast<char *>(zone->allocate(zone, size + prefix));
    else if (prefix) [[likely]] block = static_cast<char *>(takeBlock(size + prefix, origin));
    else block = static_cast<char *>(std::malloc(size));
    if (!block) return nullptr;
    auto *object = reinterpret_cast<objc_object *>(block + prefix);
    if (prefix) *objc_headerOf(object) = {0, origin};
    return object;
}

ZP_INLINE void freeRaw(objc_object *object, std::size_t prefix) {
    char *block = reinterpret_cast<char *>(object) - prefix;
    unsigned origin = prefix ? objc_headerOf(object)->origin : objc_fromChildZone;
    if (origin - 1 < largestKept / grain) [[likely]]
        keepBlock(block, origin);
    else if (origin == 0) std::free(block);
    else if (origin != objc_fromChildZone) reinterpret_cast<objc_slab *>(block - (origin & ~objc_fromSlab))->drop();
    else {
        ZPZone *zone = QLZoneFromPtr(block);
        zone->free(zone, block);
    }
}

}  // namespace

void objc_slab::free() { std::free(this); }

bool objc_slabs::next() {
    if (_open) _open->drop();
    _open = static_cast<objc_slab *>(std::malloc(objc_slab::size));
    if (!_open) return false;
    _open->live = 1;
    _used = sizeof(objc_slab);
    return true;
}

objc_object *_zoneAlloc(Class cls, std::size_t extraBytes, ZPZone *zone) {
    objc::realize(cls);
    std::size_t size = cls->instanceSize + extraBytes;
    objc_object *object = allocateRaw(prefixOf(cls), size, zone);
    if (!object) return nullptr;
    // The blocks of the smallest shelves are cleared whole: a few wide stores instead of a call.
    switch (prefixOf(cls) == sizeof(objc_header) ? objc_headerOf(object)->origin : 0) {
    case 2: std::memset(static_cast<void *>(object), 0, 2 * grain - sizeof(objc_header)); break;
    case 3: std::memset(static_cast<void *>(object), 0, 3 * grain - sizeof(objc_header)); break;
    case 4: std::memset(static_cast<void *>(object), 0, 4 * grain - sizeof(objc_header)); break;
    default: std::memset(static_cast<void *>(object), 0, size);
    }
    if (cls->fields && cls->fields->construct) [[unlikely]] {
        try {
            cls->fields->construct(object);
        } catch (...) {
            freeRaw(object, prefixOf(cls));
            throw;
        }
    }
    object->isa = cls;
    return object;
}

objc_object *_zoneAllocBare(Class cls, std::size_t extraBytes, ZPZone *zone) {
    objc::realize(cls);
    objc_object *object = allocateRaw(prefixOf(cls), cls->instanceSize + extraBytes, zone);
    if (object) object->isa = cls;
    return object;
}

objc_object *objc_allocateInstance(Class cls) { return _zoneAlloc(cls, 0, nullptr); }

objc_object *_zoneCopy(objc_object *source, std::size_t extraBytes, ZPZone *zone) {
    if (!source) return nullptr;
    Class cls = source->isa;
    std::size_t size = cls->instanceSize + extraBytes;
    objc_object *object = allocateRaw(prefixOf(cls), size, zone);
    if (!object) return nullptr;
    std::memcpy(static_cast<void *>(object), static_cast<const void *>(source), size);
    if (cls->fields && cls->fields->copy) {
        try {
            cls->fields->copy(object, source);
        } catch (...) {
            freeRaw(object, prefixOf(cls));
            throw;
        }
    }
    object->isa = cls;
    return object;
}

void objc_destroyFields(objc_object *object) {
    Class cls = object->isa;
    if (cls->fields && cls->fields->destroy) cls->fields->destroy(object);
}

void _dealloc(objc_object *object) {
    if (!object) return;
    Class cls = object->isa;
    std::size_t prefix = prefixOf(cls);
    if (cls->fields) objc_destroyFields(object);
    freeRaw(object, prefix);
}

BOOL objc_releaseNearLimit(objc_object *object) {
    unsigned *count = &objc_headerOf(object)->extraReferences;
    unsigned now = __atomic_load_n(count, __ATOMIC_RELAXED);
    do {
        if (now == objc_saturatedCount) return NO;
        if (now == 0) return YES;
    } while (!__atomic_compare_exchange_n(count, &now, now - 1, true, __ATOMIC_ACQ_REL, __ATOMIC_RELAXED));
    return NO;
}
