// Making, copying and freeing instances. An instance that counts in its header lies 8 (or, with
// 16-byte alignment, 16) bytes into its block:  [padding] | extraReferences | inChildZone | isa ...
#include <Bedrock/platform/ZPZone.h>

#include <cstdlib>
#include <cstring>

namespace {

std::size_t prefixOf(Class cls) {
    unsigned info = __atomic_load_n(&cls->info, __ATOMIC_RELAXED);
    if (!(info & objc_countsInHeader)) return 0;
    return info & objc_hasWideAlignment ? 16 : sizeof(objc_header);
}

objc_object *allocateRaw(Class cls, std::size_t size, ZPZone *zone) {
    std::size_t prefix = prefixOf(cls);
    bool child = zone && zone != QLDefaultMallocZone();
    char *block = static_cast<char *>(child ? zone->allocate(zone, size + prefix) : std::malloc(size + prefix));
    if (!block) return nullptr;
    auto *object = reinterpret_cast<objc_object *>(block + prefix);
    if (prefix) *objc_headerOf(object) = {0, child};
    return object;
}

void freeRaw(objc_object *object, std::size_t prefix) {
    char *block = reinterpret_cast<char *>(object) - prefix;
    if (prefix && !objc_headerOf(object)->inChildZone) {
        std::free(block);
        return;
    }
    ZPZone *zone = QLZoneFromPtr(block);
    zone->free(zone, block);
}

}  // namespace

objc_object *_zoneAlloc(Class cls, std::size_t extraBytes, ZPZone *zone) {
    std::size_t size = cls->instanceSize + extraBytes;
    objc_object *object = allocateRaw(cls, size, zone);
    if (!object) return nullptr;
    std::memset(static_cast<void *>(object), 0, size);
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

objc_object *_zoneCopy(objc_object *source, std::size_t extraBytes, ZPZone *zone) {
    if (!source) return nullptr;
    Class cls = source->isa;
    std::size_t size = cls->instanceSize + extraBytes;
    objc_object *object = allocateRaw(cls, size, zone);
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
    std::size_t prefix = prefixOf(object->isa);
    objc_destroyFields(object);
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
