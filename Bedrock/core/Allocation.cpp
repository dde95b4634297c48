// SPDX-License-Identifier: MIT
// Instances, zones and pages, and the library's start-up.
#include <Bedrock/core/Core+Internal.h>

#include <cstdarg>
#include <cstdlib>
#include <cstring>

BOOL ZPZombieEnabled, ZPDeallocateZombies, ZPDebugEnabled, ZPKeepAllocationStatistics, ZPKeepZoneStatistics;

static ZPZone *orDefault(ZPZone *zone) { return zone ? zone : QLDefaultMallocZone(); }

void _ZPStartUp() {
    static BOOL isDone;  // threads that come together do the same twice
    if (__atomic_load_n(&isDone, __ATOMIC_ACQUIRE)) return;
    struct {
        const char *name;
        BOOL *value;
    } switches[] = {
        {"ZPZombieEnabled", &ZPZombieEnabled},
        {"ZPDeallocateZombies", &ZPDeallocateZombies},
        {"ZPDebugEnabled", &ZPDebugEnabled},
        {"ZPKeepAllocationStatistics", &ZPKeepAllocationStatistics},
        {"ZPKeepZoneStatistics", &ZPKeepZoneStatistics},
    };
    for (auto &s : switches)
        if (const char *value = std::getenv(s.name)) *s.value = *value == 'Y' || *value == 'y';
    QLNameZone(nullptr, "ZPDefaultZone");
    _ZPReadAutoreleaseSwitches();
    __atomic_store_n(&isDone, YES, __ATOMIC_RELEASE);
}

static objc_object *orRaise(objc_object *made, Class cls) {
    if (!made) [[unlikely]]
        _ZPRaiseOutOfMemory("an instance of class %s", cls->name);
    return made;
}

namespace {

struct Arguments {
    std::va_list list;
    ~Arguments() { va_end(list); }
};

}  // namespace

void _ZPRaiseMalloc(const char *text, ...) {
    Arguments arguments;
    va_start(arguments.list, text);
    ZPException::raise_format_arguments(ZPMallocException, _ZPStringWithCText("*** %s", text), arguments.list);
}

void _ZPRaiseOutOfMemory(const char *what, ...) {
    Arguments arguments;
    va_start(arguments.list, what);
    ZPException::raise_format_arguments(ZPMallocException, _ZPStringWithCText("*** out of memory for %s", what),
                                        arguments.list);
}

void _ZPRaiseOutOfMemoryIn(const char *function, const char *what, ...) {
    Arguments arguments;
    va_start(arguments.list, what);
    ZPException::raise_format_arguments(
        ZPMallocException, _ZPStringWithCText("*** %s(): out of memory for %s", function, what), arguments.list);
}

id ZPAllocateObject(Class cls, unsigned extraBytes, ZPZone *zone) {
    return orRaise(_zoneAlloc(cls, extraBytes, zone), cls);
}

id ZPCopyObject(id object, unsigned extraBytes, ZPZone *zone) {
    return object ? id(orRaise(_zoneCopy(object.pointer(), extraBytes, zone), object.pointer()->isa)) : id();
}

void ZPDeallocateObject(id object) {
    if (!object) return;
    if (ZPZombieEnabled && _ZPMakeZombie(object.pointer())) return;
    _dealloc(object.pointer());
}

void objc_deallocatePlainly(objc_object *object) {
    if (ZPZombieEnabled && _ZPMakeZombie(object)) return;
    _dealloc(object);
}

BOOL ZPShouldRetainWithZone(id object, ZPZone *zone) {
    if (!zone || zone == QLDefaultMallocZone()) return YES;
    return QLZoneFromPtr(object.pointer()) == zone;
}

ZPZone *ZPDefaultMallocZone() { return QLDefaultMallocZone(); }

ZPZone *ZPCreateZone(unsigned startSize, unsigned granularity, BOOL canFree) {
    return QLCreateChildZone(QLDefaultMallocZone(), startSize ? startSize : ZPPageSize(),
                             granularity ? granularity : ZPPageSize(), canFree);
}

void ZPRecycleZone(ZPZone *zone) {
    if (zone && zone != QLDefaultMallocZone()) QLMergeZone(zone);
}

void ZPSetZoneName(ZPZone *zone, ZPString *name) { QLNameZone(orDefault(zone), _ZPCText(name)); }

ZPString *ZPZoneName(ZPZone *zone) {
    const char *name = orDefault(zone)->name;
    return name ? _ZPStringWithCText("%s", name) : ""_zp;
}

void *ZPZoneMalloc(ZPZone *zone, std::size_t size) {
    zone = orDefault(zone);
    return zone->allocate(zone, size);
}

void *ZPZoneCalloc(ZPZone *zone, std::size_t count, std::size_t size) {
    std::size_t bytes;
    if (__builtin_mul_overflow(count, size, &bytes)) return nullptr;
    void *p = ZPZoneMalloc(zone, bytes);
    return p ? std::memset(p, 0, bytes) : nullptr;
}

void *ZPZoneRealloc(ZPZone *zone, void *pointer, std::size_t size) {
    zone = orDefault(zone);
    return zone->reallocate(zone, pointer, size);
}

void ZPZoneFree(ZPZone *zone, void *pointer) {
    zone = orDefault(zone);
    zone->free(zone, pointer);
}

ZPZone *ZPZoneFromPointer(const void *pointer) { return QLZoneFromPtr(pointer); }

unsigned ZPPageSize() { return static_cast<unsigned>(vm_page_size()); }

unsigned ZPLogPageSize() { return static_cast<unsigned>(ZPLog2(ZPPageSize())); }

unsigned ZPRoundUpToMultipleOfPageSize(unsigned bytes) { return (bytes + ZPPageSize() - 1) & ~(ZPPageSize() - 1); }
unsigned ZPRoundDownToMultipleOfPageSize(unsigned bytes) { return bytes & ~(ZPPageSize() - 1); }

void *ZPAllocateMemoryPages(unsigned bytes) {
    void *pages;
    if (!vm_allocate(&pages, bytes))
        ZPException::raise_format(ZPInvalidArgumentException, "*** ZPAllocateMemoryPages(%d) failed"_zp, bytes);
    return pages;
}

void ZPDeallocateMemoryPages(void *pages, unsigned bytes) {
    if (!vm_deallocate(pages, bytes))
        ZPException::raise_format(ZPInvalidArgumentException, "*** ZPDeallocateMemoryPages(0x%lx, %d) failed"_zp,
                                  reinterpret_cast<unsigned long>(pages), bytes);
}

void ZPCopyMemoryPages(const void *source, void *destination, unsigned bytes) {
    std::memmove(destination, source, bytes);
}

unsigned ZPRealMemoryAvailable() { return ZPHostRealMemory(); }

int ZPLog2(unsigned n) { return n < 2 ? 0 : 31 - __builtin_clz(n); }
