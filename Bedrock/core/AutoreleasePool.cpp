// SPDX-License-Identifier: MIT
// Autorelease pools. Each thread has one record, made on first need:
//
//   levels[depth]   one a pushed pool, outermost first: where it begins (page and slot) and the
//                   ZPAutoreleasePool object that fronts it, or null
//   pages           a chain of memory pages from the oldest to the current; objects fill them in
//                   order, so a pool is a run of slots that ends where the following pool begins
//   spare pages     emptied pages, kept until the outermost pool goes
//   spare pools     up to four idle pool objects
//
// Only its own thread touches a record; nothing is locked.
#include <Bedrock/core/Core+Internal.h>
#include <Bedrock/core/ZPRef.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <exception>
#include <utility>
#include <vector>

namespace {

struct Page {
    Page *newer, *older;
    std::uintptr_t count;
    objc_object *slots[];
};

struct Level {
    unsigned start;
    unsigned generation;  ///< tells the pool from others that have been at this depth
    Page *page;
    ZPAutoreleasePool *pool;
};

struct Settings {
    unsigned mark, resolution;
    BOOL releaseEnabled, freedCheck;
};

constexpr unsigned sparePoolCount = 4;

using Exceptions = std::vector<ZPRef<ZPException>>;

struct Record {
    Page *page;
    unsigned objectCount;
    Settings settings;
    BOOL reporting;
    Page *sparePages;
    ZPAutoreleasePool *sparePools[sparePoolCount];
    unsigned capacity, depth;
    unsigned slotsPerPage, generation;
    /// What left an outermost pool, and nobody autoreleases: it goes when a pool is opened and no exception can be in
    /// anybody's hands any more.
    Exceptions *kept;
    Level levels[];
};

Settings initialSettings = {0, 0, YES, NO};
unsigned totalCount;

unsigned slotsPerPage() { return (ZPPageSize() - sizeof(Page)) / sizeof(objc_object *); }

std::size_t sizeOfRecord(unsigned capacity) { return sizeof(Record) + capacity * sizeof(Level); }

Record *&slotOfThread() { return reinterpret_cast<Record *&>(ZPCurrentThreadData()->autoreleaseRecord); }

void endRecord(Record *r);

void popOnThreadExit(ZPThreadData *) {
    ZPPopAutoreleasePool(0);
    if (Record *r = slotOfThread()) endRecord(r);  // it had settings or idle pools, but no pool in place
}

Record *makeRecord() {
    auto *r = static_cast<Record *>(ZPZoneCalloc(nullptr, 1, sizeOfRecord(8)));
    if (!r) _ZPRaiseOutOfMemory("an autorelease pool");
    r->settings = initialSettings;
    r->slotsPerPage = slotsPerPage();
    r->capacity = 8;
    slotOfThread() = r;
    ZPCleanUpThread(ZPCleanAutoreleasePools, popOnThreadExit);
    return r;
}

Record *record() {
    Record *r = slotOfThread();
    return r ? r : makeRecord();
}

Record *growLevels(Record *r) {
    unsigned larger = r->capacity * 2;
    auto *moved = static_cast<Record *>(ZPZoneRealloc(nullptr, r, sizeOfRecord(larger)));
    if (!moved) _ZPRaiseOutOfMemory("an autorelease pool");
    std::memset(moved->levels + moved->capacity, 0, (larger - moved->capacity) * sizeof(Level));
    moved->capacity = larger;
    slotOfThread() = moved;
    return moved;
}

ZP_COLD void addPage(Record *r) {
    Page *page = r->sparePages;
    if (page) r->sparePages = page->older;
    else page = static_cast<Page *>(ZPAllocateMemoryPages(ZPPageSize()));
    page->count = 0;
    page->newer = nullptr;
    page->older = r->page;
    if (r->page) r->page->newer = page;
    r->page = page;
}

void noteHighWater(Record *r) {
    unsigned n = r->objectCount, m = r->settings.mark, step = r->settings.resolution;
    if (n >= m && (step == 0 ? n == m : (n - m) % step == 0)) _ZPAutoreleaseHighWaterLog(n);
}

BOOL isFreed(objc_object *object) { return object && (!object->isa || _ZPIsZombie(object)); }

// The objects of a level: from its start to the start of the following level, or to the end.
template <class F> void eachSlotOfLevel(Record *r, unsigned level, F &&visit) {
    Page *endPage = level + 1 < r->depth ? r->levels[level + 1].page : r->page;
    unsigned end = level + 1 < r->depth ? r->levels[level + 1].start : unsigned(r->page->count);
    Page *page = endPage;
    for (unsigned i = end;; i = unsigned(page->count)) {
        unsigned limit = page == r->levels[level].page ? r->levels[level].start : 0;
        while (i > limit) visit(page->slots[--i]);
        if (page == r->levels[level].page) return;
        page = page->older;
    }
}

ZP_COLD void dropKeptExceptions(Record *r) {
    if (std::uncaught_exceptions() || std::current_exception()) return;
    delete std::exchange(r->kept, nullptr);
}

// Takes the current page out of the chain, while it is empty and not the page on which the innermost open pool begins:
// what is recorded next then follows what is there without a gap.
void dropEmptyPages(Record *r, Page *begin) {
    while (r->page->count == 0 && r->page->older && r->page != begin) {
        Page *page = r->page;
        r->page = page->older;
        r->page->newer = nullptr;
        std::memset(page->slots, 0, slotsPerPage() * sizeof(objc_object *));
        page->newer = nullptr;
        page->older = r->sparePages;
        r->sparePages = page;
    }
}

// Releases what a pool and the pools inside it hold, newest first, with what these releases record. A release may do
// anything: move the record, open and close pools, give an outer pool an object and so move where this one begins, or
// pop this pool with an outer one. Answers whether the pool is still open.
bool releaseAll(unsigned token, unsigned generation, const Settings &settings) {
    bool plain = settings.releaseEnabled && !settings.freedCheck;
    for (;;) {
        Record *r = slotOfThread();
        if (!r || r->depth <= token || r->levels[token].generation != generation) [[unlikely]]
            return false;
        const Level &level = r->levels[token];
        if (r->page->count == 0) [[unlikely]]
            dropEmptyPages(r, level.page);
        Page *page = r->page;
        if (page->count == (page == level.page ? level.start : 0)) return true;
        objc_object *object = page->slots[--page->count];
        --r->objectCount;
        if (plain) [[likely]]
            id(object)->release();
        else if (settings.freedCheck && isFreed(object)) _ZPAutoreleaseFreedObject(object);
        else if (settings.releaseEnabled) id(object)->release();
    }
}

void reportException(ZPException *e) {
    Record *r = slotOfThread();
    if (!r || r->reporting || !e) {
        _ZPBasicStdErrLog(
            "*** -[ZPAutoreleasePool dealloc]: Exception ignored while releasing an object in an autorelease pool\n");
        return;
    }
    r->reporting = YES;
    try {
        ZPLog("*** -[ZPAutoreleasePool dealloc]: Exception ignored while releasing an object in an autorelease pool: "
              "%@ %@\n"_zp,
              e->name(), e);
    } catch (ZPException *) {
        _ZPBasicStdErrLog(
            "*** -[ZPAutoreleasePool dealloc]: Exception ignored while releasing an object in an autorelease pool\n");
    }
    if ((r = slotOfThread())) r->reporting = NO;
}

void releasePages(Page *page) {
    while (page) {
        Page *older = page->older;
        ZPDeallocateMemoryPages(page, ZPPageSize());
        page = older;
    }
}

void endRecord(Record *r) {
    slotOfThread() = nullptr;
    releasePages(r->page);
    releasePages(r->sparePages);
    for (ZPAutoreleasePool *pool : r->sparePools) ZPDeallocateObject(pool);
    delete r->kept;
    ZPZoneFree(nullptr, r);
}

// Without pools the record is as good as new; one page stays for the next pool, so that a thread whose outermost pools
// come and go asks the system for nothing.
void restRecord(Record *r) {
    releasePages(r->sparePages);
    r->sparePages = nullptr;
    for (ZPAutoreleasePool *&pool : r->sparePools) {
        ZPDeallocateObject(pool);
        pool = nullptr;
    }
    r->settings = initialSettings;
}

}  // namespace

unsigned ZPPushAutoreleasePool(unsigned) {
    Record *r = record();
    if (r->kept && r->depth == 0) [[unlikely]] {
        dropKeptExceptions(r);
        r = record();
    }
    if (r->depth >= r->capacity) r = growLevels(r);
    if (!r->page) addPage(r);
    r->levels[r->depth] = {unsigned(r->page->count), ++r->generation, r->page, nullptr};
    return r->depth++;
}

void ZPAutoreleaseObject(id object) {
    if (!object) return;
    Record *r = slotOfThread();
    if (!r || r->depth == 0) [[unlikely]] {
        _ZPAutoreleaseNoPool(object);
        return;
    }
    Page *page = r->page;
    if (page->count == r->slotsPerPage) [[unlikely]] {
        addPage(r);
        page = r->page;
    }
    page->slots[page->count++] = object.pointer();
    ++r->objectCount;
    __atomic_store_n(&totalCount, __atomic_load_n(&totalCount, __ATOMIC_RELAXED) + 1, __ATOMIC_RELAXED);
    if (r->settings.mark) [[unlikely]]
        noteHighWater(r);
}

void ZPPopAutoreleasePool(unsigned token) {
    Record *r = slotOfThread();
    if (!r || !r->page || r->depth <= token) return;
    unsigned generation = r->levels[token].generation;
    Settings settings = r->settings;
    bool isOpen = true, raised = false;
    do {
        try {
            raised = true;
            isOpen = releaseAll(token, generation, settings);
            raised = false;
        } catch (ZPException *e) {
            reportException(e);
        } catch (QLError &) {
            ZPHandlerRecord record{};
            reportException(_ZPExceptionObjectFromHandler(&record));
        } catch (abi::__forced_unwind &) {
            throw;
        } catch (...) {
            reportException(nullptr);
        }
        // What is left then belongs to the enclosing pool. There is none around the outermost, which goes on.
    } while (raised && token == 0);
    r = slotOfThread();
    if (!isOpen || !r || r->depth <= token || r->levels[token].generation != generation) return;
    unsigned spare = 0;
    for (unsigned i = token; i < r->depth; ++i) {
        if (ZPAutoreleasePool *pool = r->levels[i].pool) {
            while (spare < sparePoolCount && r->sparePools[spare]) ++spare;
            if (spare < sparePoolCount && pool->isa == ZPAutoreleasePool::class_()) r->sparePools[spare] = pool;
            else ZPDeallocateObject(pool);
        }
        r->levels[i] = {};
    }
    r->depth = token;
    dropEmptyPages(r, token ? r->levels[token - 1].page : nullptr);
    // Slots above the count are zero except those this pop has emptied.
    Page *page = r->page;
    for (unsigned i = unsigned(page->count); i < slotsPerPage() && page->slots[i]; ++i) page->slots[i] = nullptr;
    if (token == 0) restRecord(r);
}

void _ZPPopAutoreleasePoolForRaise(unsigned token) {
    Record *r = slotOfThread();
    if (!r || !r->page || r->depth <= token) return;
    Exceptions raised;
    try {
        for (unsigned level = token; level < r->depth; ++level)
            eachSlotOfLevel(r, level, [&](objc_object *object) {
                if (class_inherits(object->isa, ZPException::class_()))
                    raised.emplace_back(id(object).unchecked<ZPException>());
            });
        if (token == 0 && !r->kept) r->kept = new Exceptions;
        if (token == 0) r->kept->reserve(r->kept->size() + raised.size());
    } catch (std::bad_alloc &) {
        return;  // they stay, with all that lies around them
    }
    ZPPopAutoreleasePool(token);
    for (auto &exception : raised) {
        r = slotOfThread();
        if (r->depth) std::move(exception).autoreleased();
        else if (r->kept) r->kept->push_back(std::move(exception));
    }
}

void _ZPAutoreleaseNoPool(id object) {
    ZPLog("*** _ZPAutoreleaseNoPool(): Object 0x%lx of class %s autoreleased with no pool in place - just leaking\n"_zp,
          reinterpret_cast<unsigned long>(object.pointer()), object.pointer()->isa->name);
}

void _ZPAutoreleaseFreedObject(id object) {
    _ZPBasicStdErrLog("*** _ZPAutoreleaseFreedObject(): release of previously deallocated object (0x%lx) ignored\n",
                      reinterpret_cast<unsigned long>(object.pointer()));
}

void _ZPAutoreleaseHighWaterLog(unsigned count) {
    _ZPBasicStdErrLog("*** _ZPAutoreleaseHighWaterLog(): %d objects in top autorelease pool\n", count);
}

unsigned ZPAutoreleasePoolCount() {
    Record *r = slotOfThread();
    return r ? r->objectCount : 0;
}

unsigned ZPTopAutoreleasePoolCount() {
    Record *r = slotOfThread();
    if (!r || r->depth == 0) return 0;
    unsigned n = 0;
    eachSlotOfLevel(r, r->depth - 1, [&](objc_object *) { ++n; });
    return n;
}

unsigned ZPAutoreleasePoolCountForObject(id object) {
    Record *r = slotOfThread();
    unsigned n = 0;
    if (r)
        for (Page *page = r->page; page; page = page->older)
            for (unsigned i = 0; i < page->count; ++i) n += page->slots[i] == object.pointer();
    return n;
}

void ZPPrintAutoreleasePools() {
    auto write = [](const char *format, auto... arguments) {
        char line[512];
        int n = std::snprintf(line, sizeof line, format, arguments...);
        ZPHostWriteStandardError(line, n < int(sizeof line) ? n : sizeof line - 1);
    };
    Record *r = slotOfThread();
    if (!r || r->depth == 0) {
        write("%s", "No autorelease pools.\n");
        return;
    }
    for (unsigned level = r->depth; level-- > 0;) {
        unsigned n = 0;
        eachSlotOfLevel(r, level, [&](objc_object *) { ++n; });
        write("Pool (level = %d): %d objects ====================\n", r->depth - 1 - level, n);
        eachSlotOfLevel(r, level, [&](objc_object *object) {
            write("\t0x%lx (%s)\n", reinterpret_cast<unsigned long>(object), object->isa->name);
        });
    }
}

void _ZPReadAutoreleaseSwitches() {
    auto begins = [](const char *name, const char *letters) {
        const char *value = std::getenv(name);
        return value && *value && std::strchr(letters, *value);
    };
    if (begins("ZPEnableAutoreleasePool", "Nn")) record()->settings.releaseEnabled = NO;
    if (const char *value = std::getenv("ZPAutoreleaseHighWaterMark"))
        record()->settings.mark = std::strtoul(value, nullptr, 10);
    if (const char *value = std::getenv("ZPAutoreleaseHighWaterResolution"))
        record()->settings.resolution = std::strtoul(value, nullptr, 10);
    if (begins("ZPAutoreleaseFreedObjectCheckEnabled", "Yy") || begins("ZPEnableDoubleReleaseCheck", "Yy"))
        record()->settings.freedCheck = YES;
}

namespace {

struct PoolMethods : ZPAutoreleasePool {
    id init() { return self()->initWithCapacity(0); }
    ZPAutoreleasePool *initWithCapacity(unsigned capacity) {
        unsigned token = ZPPushAutoreleasePool(capacity);
        _token = token;
        slotOfThread()->levels[token].pool = this;
        return this;
    }

    // The new object is recorded in the innermost pool and then changes places with the first object
    // of each inner pool, from the innermost outward, so that every other object stays in its pool.
    void addObject(id object) {
        if (!object) return;
        Record *r = slotOfThread();
        if (!r || r->depth == 0 || _token >= r->depth) {
            _ZPAutoreleaseNoPool(object);
            return;
        }
        ZPAutoreleaseObject(object);
        Page *destinationPage = r->page;
        unsigned destination = unsigned(r->page->count) - 1;
        for (unsigned level = r->depth - 1; level > _token; --level) {
            Level &l = r->levels[level];
            if (l.start == slotsPerPage()) {  // the level began where a page was full
                l.page = l.page->newer;
                l.start = 0;
            }
            destinationPage->slots[destination] = l.page->slots[l.start];
            destinationPage = l.page;
            destination = l.start++;
        }
        destinationPage->slots[destination] = object.pointer();
    }

    void release() { ZPPopAutoreleasePool(unsigned(_token)); }
    id retain() {
        ZPException::raise_format(ZPInvalidArgumentException, "%@: Cannot retain an autorelease pool"_zp,
                                  _ZPMethodExceptionProem(this, "retain"_sel));
    }
    id autorelease() {
        ZPException::raise_format(ZPInvalidArgumentException, "%@: Cannot autorelease an autorelease pool"_zp,
                                  _ZPMethodExceptionProem(this, "autorelease"_sel));
    }
    unsigned retainCount() { return 1; }
    void dealloc() {
        ZPLog("%@: WARNING: Do not call this method directly.\n"_zp, _ZPMethodExceptionProem(this, "dealloc"_sel));
    }
};

struct PoolClassMethods {
    static id allocWithZone(Class self, ZPZone *) {
        // A subclass has fields of its own, for which a spare pool has no room.
        for (ZPAutoreleasePool *&spare : record()->sparePools)
            if (spare && spare->isa == self) {
                ZPAutoreleasePool *pool = spare;
                spare = nullptr;
                return pool;
            }
        return ZPAllocateObject(self, 0, nullptr);
    }
    static void addObject(id object) { ZPAutoreleaseObject(object); }
    static void releaseAllPools() { ZPPopAutoreleasePool(0); }
    static void showPools() { ZPPrintAutoreleasePools(); }
    static void showPoolsWithObjectIdenticalTo(id) { ZPPrintAutoreleasePools(); }
    static unsigned autoreleasedObjectCount() { return ZPAutoreleasePoolCount(); }
    static unsigned topAutoreleasePoolCount() { return ZPTopAutoreleasePoolCount(); }
    static void enableRelease(BOOL enable) { record()->settings.releaseEnabled = enable; }
    static void enableFreedObjectCheck(BOOL enable) { record()->settings.freedCheck = enable; }
    static void enableDoubleReleaseCheck(BOOL enable) { record()->settings.freedCheck = enable; }
    static unsigned poolCountHighWaterMark() { return slotOfThread() ? slotOfThread()->settings.mark : 0; }
    static void setPoolCountHighWaterMark(unsigned poolCountHighWaterMark) {
        record()->settings.mark = poolCountHighWaterMark;
    }
    static unsigned poolCountHighWaterResolution() { return slotOfThread() ? slotOfThread()->settings.resolution : 0; }
    static void setPoolCountHighWaterResolution(unsigned step) { record()->settings.resolution = step; }
    static void setPoolCountThreshold(unsigned value) {
        record()->settings.mark = record()->settings.resolution = value;
    }
    static unsigned totalAutoreleasedObjects() { return __atomic_load_n(&totalCount, __ATOMIC_RELAXED); }
    static void resetTotalAutoreleasedObjects() { __atomic_store_n(&totalCount, 0, __ATOMIC_RELAXED); }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPAutoreleasePool, PoolMethods, init, initWithCapacity, addObject, release, retain, autorelease,
                  retainCount, dealloc,
                  classMethodsOf(PoolClassMethods, allocWithZone, named(addObject, "addObject:"), releaseAllPools,
                                 showPools, showPoolsWithObjectIdenticalTo, autoreleasedObjectCount,
                                 topAutoreleasePoolCount, enableRelease, enableFreedObjectCheck,
                                 enableDoubleReleaseCheck, poolCountHighWaterMark, setPoolCountHighWaterMark,
                                 poolCountHighWaterResolution, setPoolCountHighWaterResolution, setPoolCountThreshold,
                                 totalAutoreleasedObjects, resetTotalAutoreleasedObjects));
