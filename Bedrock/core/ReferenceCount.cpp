// SPDX-License-Identifier: MIT
// Reference counts. An instance from the allocator counts in the word before its `isa`. Objects that
// lie elsewhere (static objects) count in the side table:
//
//   buckets[capacity]   0, or an object's address with a tag in its two low bits: 1 and 2 say one and
//                       two extra references, 3 sends to the overflow map, which holds the number
//   home slot           (address >> 2) & mask; probing is linear and wraps
//   growth              doubled when capacity < 2 x count before an entry is added, halved when the
//                       count falls below a quarter of the capacity, never below 16
//
// One mutex guards the table and the map together.
#include <Bedrock/core/Core+Internal.h>
#include <Bedrock/platform/kernel/Fork.h>
#include <Bedrock/platform/kernel/MakeOnce.h>

#include <cstdlib>
#include <unordered_map>

namespace {

using Word = std::uintptr_t;

struct SideTable {
    struct mutex mutex;
    unsigned count ZP_GUARDED_BY(mutex) = 0, capacity ZP_GUARDED_BY(mutex) = 16, mask ZP_GUARDED_BY(mutex) = 15;
    Word *buckets ZP_GUARDED_BY(mutex) = static_cast<Word *>(std::calloc(16, sizeof(Word)));
    std::unordered_map<Word, unsigned> overflow ZP_GUARDED_BY(mutex){42};

    static unsigned homeOf(Word address, unsigned mask) { return unsigned(address >> 2) & mask; }

    unsigned find(Word address) const ZP_REQUIRES(mutex) {
        unsigned i = homeOf(address, mask);
        while (buckets[i] && buckets[i] >> 2 != address >> 2) i = (i + 1) & mask;
        return i;
    }

    // Answers NO when the table stays as it is.
    bool resize(unsigned newCapacity) ZP_REQUIRES(mutex) {
        Word *old = buckets, *larger = static_cast<Word *>(std::calloc(newCapacity, sizeof(Word)));
        if (!larger && newCapacity < capacity) return false;  // too large a table does its work too
        if (!larger) _ZPRaiseOutOfMemory("reference counts");
        unsigned oldCapacity = capacity, moved = 0;
        buckets = larger;
        capacity = newCapacity;
        mask = newCapacity - 1;
        for (unsigned i = 0; i < oldCapacity; ++i)
            if (old[i]) {
                buckets[find(old[i])] = old[i];
                ++moved;
            }
        std::free(old);
        if (moved != count)
            ZPException::raise_format(ZPInternalInconsistencyException,
                                      "found %u items instead of %u items on resize"_zp, moved, count);
        return true;
    }

    // Answers whether the count was already at its limit.
    bool increment(Word address) {
        ZPHolding hold(mutex);
        unsigned i = find(address);
        if (!buckets[i]) {
            if (capacity < 2 * count) {
                resize(capacity * 2);
                i = find(address);
            }
            buckets[i] = address | 1;
            ++count;
            return false;
        }
        switch (buckets[i] & 3) {
        case 1: buckets[i] = address | 2; return false;
        case 2:
            buckets[i] = address | 3;
            overflow.emplace(address, 3);
            return false;
        default: {
            unsigned &number = overflow[address];
            if (number == objc_saturatedCount) return true;
            ++number;
            return false;
        }
        }
    }

    bool decrementWasZero(Word address) {
        ZPHolding hold(mutex);
        unsigned i = find(address);
        if (!buckets[i]) return true;
        switch (buckets[i] & 3) {
        case 3: {
            auto at = overflow.find(address);
            if (at->second == objc_saturatedCount) return false;
            if (at->second > 3) --at->second;
            else {
                overflow.erase(at);
                buckets[i] = address | 2;
            }
            return false;
        }
        case 2: buckets[i] = address | 1; return false;
        default:
            buckets[i] = 0;
            --count;
            if (count < capacity / 4 && capacity > 16 && resize(capacity / 2)) return false;
            for (i = (i + 1) & mask; buckets[i]; i = (i + 1) & mask) {
                Word word = buckets[i];
                buckets[i] = 0;
                buckets[find(word)] = word;
            }
            return false;
        }
    }

    unsigned extra(Word address) {
        ZPHolding hold(mutex);
        Word word = buckets[find(address)];
        if ((word & 3) != 3) return unsigned(word & 3);
        return overflow[address];
    }
};

__attribute__((used)) SideTable *sideTable;  // where gdb/bedrock.py finds it
SideTable &table() {
    return *ZPMakeOnce(sideTable, [] { return new SideTable; });
}

ZP_MUTEX_AT_FORK(counts, []() -> mutex & { return table().mutex; });

void logOverflow(id object) {
    ZPLog("*** Reference count overflow for '%@': probably implies a leak!"_zp, object.pointer());
}

Word addressOf(id object) { return reinterpret_cast<Word>(object.pointer()); }

/// A lock object of any class, or none.
struct ZP_LOCKABLE LockObject {
    id object;

    void lock() ZP_ACQUIRES() { object.unchecked<_ZPLockAbove>()->lock(); }
    void unlock() ZP_RELEASES() { object.unchecked<_ZPLockAbove>()->unlock(); }
};

}  // namespace

void objc_retainNearLimit(objc_object *object) {
    unsigned *count = &objc_headerOf(object)->extraReferences;
    unsigned now = __atomic_load_n(count, __ATOMIC_RELAXED);
    do {
        if (now == objc_saturatedCount) {
            logOverflow(object);
            return;
        }
    } while (!__atomic_compare_exchange_n(count, &now, now + 1, true, __ATOMIC_RELAXED, __ATOMIC_RELAXED));
}

void ZPIncrementExtraRefCount(id object) {
    if (!object) return;
    if (objc_countsInItsHeader(object.pointer())) objc_retainInHeader(object.pointer());
    else if (table().increment(addressOf(object))) logOverflow(object);
}

BOOL ZPDecrementExtraRefCountWasZero(id object) {
    if (!object) return NO;
    if (objc_countsInItsHeader(object.pointer())) return objc_releaseInHeader(object.pointer());
    return table().decrementWasZero(addressOf(object));
}

unsigned ZPExtraRefCount(id object) {
    if (!object) return 0;
    if (objc_countsInItsHeader(object.pointer()))
        return __atomic_load_n(&objc_headerOf(object.pointer())->extraReferences, __ATOMIC_RELAXED);
    return table().extra(addressOf(object));
}

void _ZPIncrementInternalRefCount(id object, unsigned *counter, unsigned mask, id lock) {
    LockObject given{lock};
    ZPHolding hold(given);
    unsigned now = __atomic_load_n(counter, __ATOMIC_RELAXED);
    do {
        if ((now & mask) == mask) {
            ZPIncrementExtraRefCount(object);
            return;
        }
    } while (!__atomic_compare_exchange_n(counter, &now, now + 1, true, __ATOMIC_RELAXED, __ATOMIC_RELAXED));
}

BOOL _ZPDecrementInternalRefCountWasZero(id object, unsigned *counter, unsigned mask, id lock) {
    LockObject given{lock};
    ZPHolding hold(given);
    unsigned now = __atomic_load_n(counter, __ATOMIC_ACQUIRE);
    do {
        if ((now & mask) == 0) return YES;
        if ((now & mask) == mask && !ZPDecrementExtraRefCountWasZero(object)) return NO;
    } while (!__atomic_compare_exchange_n(counter, &now, now - 1, true, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE));
    return NO;
}

unsigned _ZPInternalRefCount(id object, unsigned counter, unsigned mask) {
    return (counter & mask) == mask ? ZPExtraRefCount(object) + 1 + mask : (counter & mask) + 1;
}
