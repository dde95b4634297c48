// SPDX-License-Identifier: MIT
// The plain functions of the hashing engine.
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/Memory.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/tables/HashingEngine.h>

#include <cstdlib>
#include <cstring>

namespace {

template <class S> S *create(unsigned capacity, ZPSimpleEqualFunction *isEqual, ZPZone *zone, const char *function) {
    if (capacity > ZPSimpleMaximumCapacity)
        ZPException::raise_format(ZPInvalidArgumentException, "*** %s(): absurd capacity: %u"_zp, function, capacity);
    unsigned sizeClass = ZPSimpleClassFor(capacity);
    std::size_t bytes = ZPSimpleSize<S>(sizeClass);
    // The heap's own zero-filled blocks cost nothing until they are touched.
    void *memory = !zone || zone == ZPDefaultMallocZone() ? std::calloc(1, bytes) : ZPZoneCalloc(zone, 1, bytes);
    if (!memory) _ZPRaiseOutOfMemoryIn(function, "%u items", capacity);
    S *s = static_cast<S *>(memory);
    s->info = sizeClass << 27;
    s->isEqual = isEqual;
    return s;
}

template <class S> void destroy(S *s) {
    std::memset(static_cast<void *>(s), 0, ZPSimpleSize<S>(ZPSimpleClass(s)));
    ZPZoneFree(ZPZoneFromPointer(s), s);
}

template <class S>
void addGrowing(S **reference, ZPSimpleBucketOf<S> *place, ZPSimpleBucketOf<S> entry, const char *function) {
    S *old = *reference;
    unsigned count = ZPSimpleCount(old) + 1;
    if (count > ZPSimpleMaximumCount) _ZPRaiseMalloc("%s(): more than %u items", function, ZPSimpleMaximumCount);
    S *s = create<S>(count, old->isEqual, ZPZoneFromPointer(old), function);
    *place = entry;
    old->info++;
    unsigned mask = ZPSimpleBuckets(s) - 1, filled = 0;
    bool linear = ZPSimpleIsLinear(s);
    ZPSimpleForEach(old, [&](ZPSimpleBucketOf<S> *b) {
        if (linear) {
            s->buckets[filled++] = *b;
            return;
        }
        unsigned hash = b->state & ZPSimpleHashMask, i = hash & mask;
        if (s->buckets[i].state) {
            unsigned step = ZPSimpleStep(hash, mask);
            do i = (i + step) & mask;
            while (s->buckets[i].state);
        }
        s->buckets[i] = *b;
    });
    s->info |= count;
    s->retainCount = old->retainCount;
    *reference = s;
    destroy(old);
}

// Turns deleted buckets that no entry's probe sequence passes into empty ones, so that searches end early
// again after many removals. Entries stay where they are, and a new entry would go to the same bucket
// either way. Gives up, changing nothing, when the sequences are so long that it would not pay.
template <class S> void sweep(S *s) {
    constexpr unsigned needed = ZPSimpleDeleted | 1;
    unsigned mask = ZPSimpleBuckets(s) - 1;
    std::uint64_t work = 8 * std::uint64_t(mask);
    ZPSimpleForEach(s, [&](ZPSimpleBucketOf<S> *b) -> bool {
        unsigned hash = b->state & ZPSimpleHashMask, step = ZPSimpleStep(hash, mask);
        for (unsigned i = hash & mask; &s->buckets[i] != b && work; i = (i + step) & mask, --work)
            if (s->buckets[i].state == ZPSimpleDeleted) s->buckets[i].state = needed;
        return work != 0;
    });
    for (unsigned i = 0; i <= mask; ++i) {
        unsigned &state = s->buckets[i].state;
        if (state == needed) state = ZPSimpleDeleted;
        else if (state == ZPSimpleDeleted && work) state = 0;
    }
}

template <class S> S *copy(S *source, ZPZone *zone, const char *function) {
    std::size_t bytes = ZPSimpleSize<S>(ZPSimpleClass(source));
    void *memory = ZPZoneMalloc(zone, bytes);
    if (!memory) _ZPRaiseOutOfMemoryIn(function, "%u items", ZPSimpleCount(source));
    S *s = static_cast<S *>(std::memcpy(memory, static_cast<void *>(source), bytes));
    s->retainCount = 0;
    return s;
}

template <class S> void empty(S *s) {
    std::memset(static_cast<void *>(s->buckets), 0, ZPSimpleBuckets(s) * sizeof(ZPSimpleBucketOf<S>));
    s->info &= ~ZPSimpleCountMask;
}

template <class S> BOOL retain(S *s) {
    int now = __atomic_load_n(&s->retainCount, __ATOMIC_RELAXED);
    if (__libc_single_threaded) {
        if (now == -1) return YES;
        s->retainCount = now + 1;
        return NO;
    }
    do
        if (now == -1) return YES;
    while (!__atomic_compare_exchange_n(&s->retainCount, &now, now + 1, true, __ATOMIC_RELAXED, __ATOMIC_RELAXED));
    return NO;
}

template <class S> BOOL release(S *s) {
    int now = __atomic_load_n(&s->retainCount, __ATOMIC_ACQUIRE);
    do {
        if (now == 0) return YES;
        if (now == -1) return NO;
    } while (!__atomic_compare_exchange_n(&s->retainCount, &now, now - 1, true, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE));
    return NO;
}

template <class S> ZPSimpleBucketOf<S> *bucketAt(S *s, unsigned index) {
    auto *b = &s->buckets[index];
    return b->state & ZPSimpleOccupied ? b : nullptr;
}

template <class S>
ZPSimpleBucketOf<S> *find(S *s, const void *item, unsigned hash, void *context, ZPSimpleBucketOf<S> **place = nullptr) {
    if (ZPSimpleEqualFunction *isEqual = s->isEqual)
        return ZPSimpleFind(
            s, item, hash, [=](const void *stored, const void *probe) { return isEqual(context, stored, probe) != NO; },
            place);
    return ZPSimpleFind(s, item, hash, ZPSimpleIdentityOnly{}, place);
}

}  // namespace

void ZPSweepSimple(ZPSimpleSet *set) { sweep(set); }
void ZPSweepSimple(ZPSimpleDictionary *dictionary) { sweep(dictionary); }
void ZPAddGrowingSimple(ZPSimpleSet **set, ZPSimpleSetBucket *place, ZPSimpleSetBucket entry) {
    addGrowing(set, place, entry, "ZPSimpleSetInsert");
}
void ZPAddGrowingSimple(ZPSimpleDictionary **dictionary, ZPSimpleDictionaryBucket *place,
                        ZPSimpleDictionaryBucket entry) {
    addGrowing(dictionary, place, entry, "ZPSimpleDictionaryInsert");
}

// ---- sets ----------------------------------------------------------------------------------------

ZPSimpleSet *ZPCreateSimpleSet(unsigned capacity, ZPSimpleEqualFunction *isEqual, ZPZone *zone) {
    return create<ZPSimpleSet>(capacity, isEqual, zone, "ZPCreateSimpleSet");
}
void ZPFreeSimpleSet(ZPSimpleSet *set) { destroy(set); }
ZPSimpleSet *ZPCopySimpleSet(ZPSimpleSet *set, ZPZone *zone) { return copy(set, zone, "ZPCopySimpleSet"); }
void ZPResetSimpleSet(ZPSimpleSet *set, void (*release)(void *, void *), void *context) {
    if (release) ZPSimpleForEach(set, [=](ZPSimpleSetBucket *b) { release(context, b->item); });
    empty(set);
}
BOOL ZPRetainSimpleSet(ZPSimpleSet *set) { return retain(set); }
BOOL ZPReleaseSimpleSet(ZPSimpleSet *set) { return release(set); }
int ZPSimpleSetRetainCount(ZPSimpleSet *set) { return __atomic_load_n(&set->retainCount, __ATOMIC_RELAXED) + 1; }
unsigned ZPSimpleSetCount(ZPSimpleSet *set) { return ZPSimpleCount(set); }
unsigned ZPSimpleSetNumBuckets(ZPSimpleSet *set) { return ZPSimpleBuckets(set); }
ZPSimpleSetBucket *ZPSimpleSetGetBucket(ZPSimpleSet *set, unsigned index) { return bucketAt(set, index); }
ZPSimpleSetBucket *ZPSimpleSetLookup(ZPSimpleSet *set, const void *item, unsigned hash, void *context) {
    return ZPSimpleCount(set) ? find(set, item, hash, context) : nullptr;
}

BOOL ZPSimpleSetInsert(ZPSimpleSet **set, void **item, unsigned hash, void *context, BOOL replace) {
    ZPSimpleSetBucket *place, *b = find(*set, *item, hash, context, &place);
    if (b) {
        void *stored = b->item;
        if (replace) b->item = *item;
        *item = stored;
        return NO;
    }
    ZPSimpleAdd(set, place, {(hash & ZPSimpleHashMask) | ZPSimpleOccupied, *item});
    return YES;
}

BOOL ZPSimpleSetDelete(ZPSimpleSet **set, void **item, unsigned hash, void *context) {
    ZPSimpleSetBucket *b = ZPSimpleSetLookup(*set, *item, hash, context);
    if (!b) return NO;
    *item = b->item;
    ZPSimpleRemove(*set, b);
    return YES;
}

// ---- dictionaries --------------------------------------------------------------------------------

ZPSimpleDictionary *ZPCreateSimpleDictionary(unsigned capacity, ZPSimpleEqualFunction *isEqual, ZPZone *zone) {
    return create<ZPSimpleDictionary>(capacity, isEqual, zone, "ZPCreateSimpleDictionary");
}
void ZPFreeSimpleDictionary(ZPSimpleDictionary *dictionary) { destroy(dictionary); }
ZPSimpleDictionary *ZPCopySimpleDictionary(ZPSimpleDictionary *dictionary, ZPZone *zone) {
    return copy(dictionary, zone, "ZPCopySimpleDictionary");
}
void ZPResetSimpleDictionary(ZPSimpleDictionary *dictionary, void (*release)(void *, void *, void *), void *context) {
    if (release) ZPSimpleForEach(dictionary, [=](ZPSimpleDictionaryBucket *b) { release(context, b->key, b->value); });
    empty(dictionary);
}
BOOL ZPRetainSimpleDictionary(ZPSimpleDictionary *dictionary) { return retain(dictionary); }
BOOL ZPReleaseSimpleDictionary(ZPSimpleDictionary *dictionary) { return release(dictionary); }
int ZPSimpleDictionaryRetainCount(ZPSimpleDictionary *dictionary) {
    return __atomic_load_n(&dictionary->retainCount, __ATOMIC_RELAXED) + 1;
}
unsigned ZPSimpleDictionaryCount(ZPSimpleDictionary *dictionary) { return ZPSimpleCount(dictionary); }
unsigned ZPSimpleDictionaryNumBuckets(ZPSimpleDictionary *dictionary) { return ZPSimpleBuckets(dictionary); }
ZPSimpleDictionaryBucket *ZPSimpleDictionaryGetBucket(ZPSimpleDictionary *dictionary, unsigned index) {
    return bucketAt(dictionary, index);
}
ZPSimpleDictionaryBucket *ZPSimpleDictionaryLookup(ZPSimpleDictionary *dictionary, const void *key, unsigned hash,
                                                   void *context) {
    return ZPSimpleCount(dictionary) ? find(dictionary, key, hash, context) : nullptr;
}

BOOL ZPSimpleDictionaryInsert(ZPSimpleDictionary **dictionary, void **key, unsigned hash, void **value, void *context,
                              BOOL replace) {
    ZPSimpleDictionaryBucket *place, *b = find(*dictionary, *key, hash, context, &place);
    if (b) {
        void *stored = b->value;
        if (replace) b->value = *value;
        *value = stored;
        *key = b->key;
        return NO;
    }
    ZPSimpleAdd(dictionary, place, {(hash & ZPSimpleHashMask) | ZPSimpleOccupied, *key, *value});
    return YES;
}

BOOL ZPSimpleDictionaryDelete(ZPSimpleDictionary **dictionary, void **key, unsigned hash, void **value, void *context) {
    ZPSimpleDictionaryBucket *b = ZPSimpleDictionaryLookup(*dictionary, *key, hash, context);
    if (!b) return NO;
    *key = b->key;
    if (value) *value = b->value;
    ZPSimpleRemove(*dictionary, b);
    return YES;
}

BOOL ZPSimpleDictionaryIncrementValue(ZPSimpleDictionary **dictionary, void **key, unsigned hash, void *context) {
    ZPSimpleDictionaryBucket *place, *b = find(*dictionary, *key, hash, context, &place);
    if (b) {
        b->value = reinterpret_cast<void *>(reinterpret_cast<std::uintptr_t>(b->value) + 1);
        *key = b->key;
        return NO;
    }
    ZPSimpleAdd(dictionary, place,
                {(hash & ZPSimpleHashMask) | ZPSimpleOccupied, *key, reinterpret_cast<void *>(std::uintptr_t(1))});
    return YES;
}

BOOL ZPSimpleDictionaryDecrementValue(ZPSimpleDictionary **dictionary, void **key, unsigned hash, void *context) {
    ZPSimpleDictionaryBucket *b = ZPSimpleDictionaryLookup(*dictionary, *key, hash, context);
    if (!b) return NO;
    b->value = reinterpret_cast<void *>(reinterpret_cast<std::uintptr_t>(b->value) - 1);
    if (b->value) return NO;
    *key = b->key;
    ZPSimpleRemove(*dictionary, b);
    return YES;
}

void ZPSimpleDictionaryDeleteEntriesWithValue(ZPSimpleDictionary **dictionary, const void *value) {
    // From the last bucket on: what a removal moves into the hole has been visited.
    ZPSimpleDictionary *d = *dictionary;
    ZPSimpleForEach(d, [=](ZPSimpleDictionaryBucket *b) {
        if (b->value == value) ZPSimpleRemove(d, b);
    });
}
