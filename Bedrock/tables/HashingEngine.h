// SPDX-License-Identifier: MIT
// The search, insertion and removal of the hashing engine as templates over the shape (set or dictionary)
// and the equality test, so that the library's own tables and collections inline both.
//
// A shape S is ZPSimpleSet or ZPSimpleDictionary. An equality test is called with the stored item and the
// probe; `ZPSimpleIdentityOnly` stands for none. A probe sequence starts at `hash & mask` and goes on by
// an odd step, so it visits every bucket.
#pragma once

#include <Bedrock/tables/ZPSimpleHashing.h>

#include <cstring>

struct ZPSimpleIdentityOnly {};

template <class S> using ZPSimpleBucketOf = std::remove_reference_t<decltype(*S::buckets)>;

inline void *&ZPSimpleKey(ZPSimpleSetBucket &b) { return b.item; }
inline void *&ZPSimpleKey(ZPSimpleDictionaryBucket &b) { return b.key; }

template <class S> ZP_INLINE unsigned ZPSimpleClass(const S *s) { return s->info >> 27; }
template <class S> ZP_INLINE unsigned ZPSimpleCount(const S *s) { return s->info & ZPSimpleCountMask; }
template <class S> ZP_INLINE unsigned ZPSimpleBuckets(const S *s) { return 4u << ZPSimpleClass(s); }
template <class S> ZP_INLINE bool ZPSimpleIsLinear(const S *s) { return ZPSimpleClass(s) < 2; }

constexpr unsigned ZPSimpleThreshold(unsigned sizeClass) {
    if (sizeClass < 2) return sizeClass ? 7 : 3;
    return unsigned(((std::uint64_t(8) << sizeClass) + 1) / 3);
}

inline unsigned ZPSimpleClassFor(unsigned capacity) {
    unsigned sizeClass = 0;
    while (ZPSimpleThreshold(sizeClass) < capacity) ++sizeClass;
    return sizeClass;
}
template <class S> constexpr std::size_t ZPSimpleSize(unsigned sizeClass) {
    return sizeof(S) + (std::size_t(4) << sizeClass) * sizeof(ZPSimpleBucketOf<S>);
}
/// An empty structure in memory of the caller's, who must not let it grow.
template <class S> S *ZPSimpleInit(void *memory, unsigned sizeClass, ZPSimpleEqualFunction *isEqual) {
    S *s = static_cast<S *>(std::memset(memory, 0, ZPSimpleSize<S>(sizeClass)));
    s->info = sizeClass << 27;
    s->isEqual = isEqual;
    return s;
}

ZP_INLINE unsigned ZPSimpleStep(unsigned hash, unsigned mask) {
    return (((hash >> 1) & mask) + ((hash >> 1) & 1) - 1) & mask;
}

ZP_COLD void ZPSweepSimple(ZPSimpleSet *set);
ZP_COLD void ZPSweepSimple(ZPSimpleDictionary *dictionary);
ZP_COLD void ZPAddGrowingSimple(ZPSimpleSet **set, ZPSimpleSetBucket *place, ZPSimpleSetBucket entry);
ZP_COLD void ZPAddGrowingSimple(ZPSimpleDictionary **dictionary, ZPSimpleDictionaryBucket *place,
                                ZPSimpleDictionaryBucket entry);

/// The bucket of an equal item or null; `place`, when given, gets the bucket where a new entry belongs
/// after a search without success.
template <class S, class E> ZP_INLINE ZPSimpleBucketOf<S> *ZPSimpleFind(S *table, const void *item, unsigned hash,
                                                                        const E &isEqual,
                                                                        ZPSimpleBucketOf<S> **place = nullptr) {
    constexpr bool tests = !std::is_same_v<E, ZPSimpleIdentityOnly>;
    unsigned state = (hash & ZPSimpleHashMask) | ZPSimpleOccupied;
    auto *buckets = table->buckets;
    if (ZPSimpleIsLinear(table)) {
        unsigned count = ZPSimpleCount(table);
        for (unsigned i = 0; i < count; ++i)
            if (ZPSimpleKey(buckets[i]) == item) return &buckets[i];
        if constexpr (tests)
            for (unsigned i = 0; i < count; ++i)
                if (buckets[i].state == state && isEqual(ZPSimpleKey(buckets[i]), item)) return &buckets[i];
        if (place) *place = &buckets[count];
        return nullptr;
    }
    unsigned mask = ZPSimpleBuckets(table) - 1, first = hash & mask, i = first, deleted = 0;
    unsigned step = ZPSimpleStep(hash & ZPSimpleHashMask, mask);
    ZPSimpleBucketOf<S> *free = nullptr;
    do {
        auto *b = &buckets[i];
        unsigned s = b->state;
        if constexpr (tests) {
            // One branch for what is neither the item nor of its hash: an entry found is found at once.
            if ((s == state) | ((ZPSimpleKey(*b) == item) & (s >> 31))) [[likely]]
                if (ZPSimpleKey(*b) == item || isEqual(ZPSimpleKey(*b), item)) [[likely]]
                    return b;
        } else if ((ZPSimpleKey(*b) == item) & (s >> 31)) return b;
        if (!(s & ZPSimpleOccupied)) {
            if (!free) free = b;
            if (!s) break;
            ++deleted;
        }
        i = (i + step) & mask;
    } while (i != first);
    if (place) {
        *place = free;
        if (deleted > 8 + mask / 16) [[unlikely]]
            ZPSweepSimple(table);
    }
    return nullptr;
}

/// Writes a new entry at the place that a search without success found and counts it; the structure has room for it.
template <class S> ZP_INLINE void ZPSimplePut(S *s, ZPSimpleBucketOf<S> *place, ZPSimpleBucketOf<S> entry) {
    *place = entry;
    if constexpr (requires { s->unused; }) s->unused = 0;
    s->info++;
}

/// Writes a new entry at the place that a search without success found, counts it, and grows the structure
/// when it becomes too full. Raises when there is no memory for that, before anything changes.
template <class S> ZP_INLINE void ZPSimpleAdd(S **reference, ZPSimpleBucketOf<S> *place, ZPSimpleBucketOf<S> entry) {
    S *s = *reference;
    unsigned count = ZPSimpleCount(s);
    if (count >= ZPSimpleThreshold(ZPSimpleClass(s)) || count == ZPSimpleMaximumCount) [[unlikely]]
        return ZPAddGrowingSimple(reference, place, entry);
    ZPSimplePut(s, place, entry);
}

/// Empties a bucket in use.
template <class S> ZP_INLINE void ZPSimpleRemove(S *s, ZPSimpleBucketOf<S> *bucket) {
    if (ZPSimpleIsLinear(s)) {
        auto *last = &s->buckets[ZPSimpleCount(s) - 1];
        if (last != bucket) *bucket = *last;
        bucket = last;
    }
    *bucket = {ZPSimpleDeleted};
    s->info--;
}

/// The first bucket in use in the order of enumeration, the last of all; null when there is none. Finds it again
/// without a look at those behind it, so that whoever takes one entry after the other need not look at all each time.
inline ZPSimpleSetBucket *ZPSimpleFirst(ZPSimpleSet *s) {
    unsigned all = ZPSimpleIsLinear(s) ? ZPSimpleCount(s) : ZPSimpleBuckets(s);
    unsigned known = ZPSimpleIsLinear(s) ? 0 : __atomic_load_n(&s->unused, __ATOMIC_RELAXED);
    for (unsigned i = all - known; i-- > 0;) {
        if (!(s->buckets[i].state & ZPSimpleOccupied)) continue;
        // Several threads may ask, and find the same.
        if (all - 1 - i > known + 16) __atomic_store_n(&s->unused, all - 1 - i, __ATOMIC_RELAXED);
        return &s->buckets[i];
    }
    return nullptr;
}

/// Calls f(bucket) for every bucket in use, last first, while it answers nothing or true.
template <class S, class F> ZP_INLINE void ZPSimpleForEach(S *s, const F &f) {
    for (unsigned i = ZPSimpleIsLinear(s) ? ZPSimpleCount(s) : ZPSimpleBuckets(s); i-- > 0;) {
        auto *b = &s->buckets[i];
        if (!(b->state & ZPSimpleOccupied)) continue;
        if constexpr (std::is_same_v<decltype(f(b)), bool>) {
            if (!f(b)) return;
        } else f(b);
    }
}
