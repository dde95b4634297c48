// SPDX-License-Identifier: MIT
// Zones. The default zone is the process heap. A child zone cuts its blocks from arenas of its own:
// each block has a 16-byte head that holds its size, and freed blocks wait in lists by size class
// (powers of two). Every arena is entered in one sorted address map, so that the zone of any block
// is found. Merging a zone marks it: its arenas stay in the map, and freeing one of its blocks through the default zone
// puts the block back into the merged zone's lists. When the last one is freed the zone goes, with its arenas.
//
// A zone's mutex guards its lists and arenas, the map's mutex the map, and a third the list of all zones. They are
// taken one at a time, except that a zone enters an arena into the map while it holds its own, and that a fork takes
// the list's, every zone's and the map's.
#include <Bedrock/platform/ZPZone.h>

#include <Bedrock/platform/kernel/Fork.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::size_t headSize = 16;
constexpr unsigned classCount = 40;
constexpr std::size_t largestGrowth = 1 << 20;

struct Head {
    std::size_t size;  ///< usable bytes
    Head *nextFree;
};

struct ChildZone : ZPZone {
    struct mutex mutex;
    std::size_t granularity;
    bool canFree;
    bool merged;
    std::size_t references;  ///< blocks in use, and one until the zone is merged
    std::size_t total ZP_GUARDED_BY(mutex);  ///< bytes of its arenas
    ChildZone *newer, *older;  ///< under the lock of all zones
    char *next ZP_GUARDED_BY(mutex), *end ZP_GUARDED_BY(mutex);
    Head *freeBlocks[classCount] ZP_GUARDED_BY(mutex);
};

struct Arena {
    std::uintptr_t begin, end;
    ChildZone *zone;
};

// The map: every zone's arenas by address. Made with the first arena, never destroyed.
constinit mutex mapMutex;
std::vector<Arena> *arenas ZP_GUARDED_BY(mapMutex) ZP_PT_GUARDED_BY(mapMutex);
unsigned arenaCount;

ChildZone *childZoneOf(const void *pointer) {
    if (__atomic_load_n(&arenaCount, __ATOMIC_ACQUIRE) == 0) return nullptr;
    auto address = reinterpret_cast<std::uintptr_t>(pointer);
    ZPHolding hold(mapMutex);
    auto at = std::upper_bound(arenas->begin(), arenas->end(), address,
                               [](std::uintptr_t a, const Arena &r) { return a < r.begin; });
    if (at == arenas->begin()) return nullptr;
    --at;
    return address < at->end ? at->zone : nullptr;
}

unsigned classOf(std::size_t size) {
    unsigned c = 4;
    while (c < classCount - 1 && (std::size_t(1) << c) < size) ++c;
    return c;
}

bool addArena(ChildZone *zone, std::size_t atLeast) ZP_REQUIRES(zone->mutex) {
    // In proportion to what there is, so that a zone of many blocks has few arenas.
    std::size_t page = vm_page_size();
    std::size_t bytes = std::max({zone->granularity, atLeast, std::min(zone->total, largestGrowth)});
    bytes = (bytes + page - 1) / page * page;
    void *pages;
    if (!vm_allocate(&pages, bytes)) return false;
    auto begin = reinterpret_cast<std::uintptr_t>(pages);
    ZPHolding hold(mapMutex);
    Arena arena{begin, begin + bytes, zone};
    try {
        if (!arenas) arenas = new std::vector<Arena>;
        arenas->insert(std::upper_bound(arenas->begin(), arenas->end(), arena,
                                        [](const Arena &a, const Arena &b) { return a.begin < b.begin; }),
                       arena);
    } catch (std::bad_alloc &) {
        vm_deallocate(pages, bytes);
        return false;
    }
    __atomic_add_fetch(&arenaCount, 1, __ATOMIC_RELEASE);
    zone->next = static_cast<char *>(pages);
    zone->end = zone->next + bytes;
    zone->total += bytes;
    return true;
}

constinit mutex zonesMutex;
ChildZone *newestZone ZP_GUARDED_BY(zonesMutex);

// The last one to give up the zone takes it down.
void release(ChildZone *zone) {
    if (__atomic_sub_fetch(&zone->references, 1, __ATOMIC_ACQ_REL)) return;
    {
        ZPHolding hold(zonesMutex);
        (zone->newer ? zone->newer->older : newestZone) = zone->older;
        if (zone->older) zone->older->newer = zone->newer;
    }
    {
        ZPHolding hold(mapMutex);
        auto end =
            std::stable_partition(arenas->begin(), arenas->end(), [zone](const Arena &a) { return a.zone != zone; });
        for (auto at = end; at != arenas->end(); ++at)
            vm_deallocate(reinterpret_cast<void *>(at->begin), at->end - at->begin);
        __atomic_sub_fetch(&arenaCount, unsigned(arenas->end() - end), __ATOMIC_RELEASE);
        arenas->erase(end, arenas->end());
    }
    std::free(const_cast<char *>(zone->name));
    delete zone;
}

void *allocateInChild(ZPZone *z, std::size_t size) {
    auto *zone = static_cast<ChildZone *>(z);
    if (size > (std::size_t(1) << (classCount - 2))) return nullptr;
    unsigned c = classOf(size);
    std::size_t room = std::size_t(1) << c;
    ZPHolding hold(zone->mutex);
    if (Head *head = zone->freeBlocks[c]) {
        zone->freeBlocks[c] = head->nextFree;
        __atomic_add_fetch(&zone->references, 1, __ATOMIC_RELAXED);
        return reinterpret_cast<char *>(head) + headSize;
    }
    if (std::size_t(zone->end - zone->next) < room + headSize && !addArena(zone, room + headSize)) return nullptr;
    auto *head = reinterpret_cast<Head *>(zone->next);
    head->size = room;
    zone->next += room + headSize;
    __atomic_add_fetch(&zone->references, 1, __ATOMIC_RELAXED);
    return reinterpret_cast<char *>(head) + headSize;
}

Head *headOf(void *pointer) { return reinterpret_cast<Head *>(static_cast<char *>(pointer) - headSize); }

void freeInChild(ZPZone *z, void *pointer) {
    auto *zone = static_cast<ChildZone *>(z);
    if (!pointer) return;
    if (zone->canFree) {
        Head *head = headOf(pointer);
        ZPHolding hold(zone->mutex);
        unsigned c = classOf(head->size);
        head->nextFree = zone->freeBlocks[c];
        zone->freeBlocks[c] = head;
    }
    release(zone);  // with the lock given back: the zone may go
}

void *reallocateInChild(ZPZone *zone, void *pointer, std::size_t size) {
    if (!pointer) return allocateInChild(zone, size);
    std::size_t have = headOf(pointer)->size;
    if (size <= have) return pointer;
    void *larger = allocateInChild(zone, size);
    if (!larger) return nullptr;
    std::memcpy(larger, pointer, have);
    freeInChild(zone, pointer);
    return larger;
}

void *allocateOnHeap(ZPZone *, std::size_t size) { return std::malloc(size); }
void freeOnHeap(ZPZone *, void *pointer) {
    if (ChildZone *zone = childZoneOf(pointer)) freeInChild(zone, pointer);
    else std::free(pointer);
}
void *reallocateOnHeap(ZPZone *, void *pointer, std::size_t size) {
    if (ChildZone *zone = childZoneOf(pointer)) return reallocateInChild(zone, pointer, size);
    return std::realloc(pointer, size ? size : 1);
}

ZP_AT_FORK(
    zones,
    []() ZP_UNCHECKED_LOCKING {
        zonesMutex.lock();
        for (ChildZone *zone = newestZone; zone; zone = zone->older) zone->mutex.lock();
        mapMutex.lock();
    },
    [](bool) ZP_UNCHECKED_LOCKING {
        mapMutex.unlock();
        for (ChildZone *zone = newestZone; zone; zone = zone->older) zone->mutex.unlock();
        zonesMutex.unlock();
    });

ZPZone heap = {reallocateOnHeap, allocateOnHeap, freeOnHeap, nullptr, nullptr};

}  // namespace

ZPZone *QLDefaultMallocZone() { return &heap; }

ZPZone *QLCreateChildZone(ZPZone *, std::size_t startSize, std::size_t granularity, BOOL canFree) {
    auto *zone = new (std::nothrow) ChildZone{};
    if (!zone) return nullptr;
    static_cast<ZPZone &>(*zone) = {reallocateInChild, allocateInChild, freeInChild, QLMergeZone, nullptr};
    zone->granularity = std::max<std::size_t>(granularity, vm_page_size());
    zone->canFree = canFree;
    zone->references = 1;
    zone->mutex.lock();  // nobody else knows the zone yet
    bool made = addArena(zone, std::max<std::size_t>(startSize, headSize + 16));
    zone->mutex.unlock();
    if (!made) {
        delete zone;
        return nullptr;
    }
    ZPHolding hold(zonesMutex);
    zone->older = newestZone;
    if (newestZone) newestZone->newer = zone;
    newestZone = zone;
    return zone;
}

void QLMergeZone(ZPZone *zone) {
    if (!zone || zone == &heap) return;
    auto *child = static_cast<ChildZone *>(zone);
    if (!__atomic_exchange_n(&child->merged, true, __ATOMIC_ACQ_REL)) release(child);
}

void QLNameZone(ZPZone *zone, const char *name) {
    if (!zone) zone = &heap;
    char *copy = name ? strdup(name) : nullptr;
    std::free(const_cast<char *>(zone->name));
    zone->name = copy;
}

ZPZone *QLZoneFromPtr(const void *pointer) {
    if (!pointer) return nullptr;
    ChildZone *zone = childZoneOf(pointer);
    return zone && !__atomic_load_n(&zone->merged, __ATOMIC_ACQUIRE) ? static_cast<ZPZone *>(zone) : &heap;
}

std::size_t vm_page_size() {
    static std::size_t known;
    std::size_t size = __atomic_load_n(&known, __ATOMIC_RELAXED);
    if (!size) [[unlikely]]
        __atomic_store_n(&known, size = std::size_t(sysconf(_SC_PAGESIZE)), __ATOMIC_RELAXED);
    return size;
}

BOOL vm_allocate(void **pages, std::size_t bytes) {
    void *p = bytes ? mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) : MAP_FAILED;
    if (p == MAP_FAILED) return NO;
    *pages = p;
    return YES;
}

BOOL vm_deallocate(void *pages, std::size_t bytes) { return munmap(pages, bytes) == 0 ? YES : NO; }
