// SPDX-License-Identifier: MIT
// What hash tables and map tables share: the functions behind their standard callback records, and the
// gathering of items into arrays.
#pragma once

#include <Bedrock/core/Fronts.h>
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/CText.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/tables/HashingEngine.h>

#include <vector>

inline id _ZPItemObject(const void *item) { return static_cast<objc_object *>(const_cast<void *>(item)); }

/// Folds a null-terminated byte string four bytes at a time; 0 for null.
unsigned _ZPByteStringHash(const void *bytes);
bool _ZPByteStringsEqual(const void *bytes1, const void *bytes2);

// One function for each way of treating an item, whatever the table T it lies in.
template <class T> unsigned _ZPObjectItemHash(T *, const void *item) { return _ZPItemObject(item)->hash(); }
template <class T> BOOL _ZPObjectItemsEqual(T *, const void *stored, const void *probe) {
    return stored == probe || _ZPItemObject(stored)->isEqual(_ZPItemObject(probe));
}
template <class T> void _ZPObjectItemRetain(T *, const void *item) { _ZPItemObject(item)->retain(); }
template <class T> void _ZPObjectItemRelease(T *, void *item) { _ZPItemObject(item)->release(); }
template <class T> ZPString *_ZPObjectItemDescribe(T *, const void *item) { return _ZPItemObject(item)->description(); }
template <class T> void _ZPPointerItemFree(T *, void *item) { ZPZoneFree(ZPZoneFromPointer(item), item); }
template <class T> unsigned _ZPByteStringItemHash(T *, const void *item) { return _ZPByteStringHash(item); }
template <class T> BOOL _ZPByteStringItemsEqual(T *, const void *stored, const void *probe) {
    return _ZPByteStringsEqual(stored, probe);
}
template <class T> ZPString *_ZPByteStringItemDescribe(T *, const void *item) {
    return _ZPStringWithCText("%s", static_cast<const char *>(item));
}

template <class T, class C> ZPString *_ZPDescribeItem(T *table, const C &callBacks, const void *item) {
    if (callBacks.describe) return callBacks.describe(table, item);
    return _ZPStringWithCText("0x%lx", reinterpret_cast<unsigned long>(item));
}

/// The hash of an item for which the table has no function: of a number of 32 bits itself; of a pointer all its bits,
/// since pointers to large blocks differ in the high ones alone.
template <class T, class C> ZP_INLINE unsigned _ZPItemHash(T *table, const C &callBacks, const void *item) {
    if (callBacks.hash) return callBacks.hash(table, item);
    auto word = reinterpret_cast<std::uintptr_t>(item);
    return word >> 32 ? unsigned(word * 0x9E3779B97F4A7C15 >> 32) : unsigned(word);
}

/// The bucket of an equal item by a table's own equality function, without a detour through the structure's.
template <class T, class C, class S> ZP_INLINE ZPSimpleBucketOf<S> *_ZPFindItem(T *table, const C &callBacks, S *s,
                                                                                const void *item, unsigned hash,
                                                                                ZPSimpleBucketOf<S> **place = nullptr) {
    if (callBacks.isEqual)
        return ZPSimpleFind(
            s, item, hash,
            [&](const void *stored, const void *probe) { return callBacks.isEqual(table, stored, probe) != NO; },
            place);
    return ZPSimpleFind(s, item, hash, ZPSimpleIdentityOnly{}, place);
}

/// An autoreleased array of what `take` answers for each bucket in use, last bucket first.
template <class S, class F> ZPArray *_ZPArrayOfItems(S *s, const F &take) {
    unsigned count = ZPSimpleCount(s);
    id local[128];
    std::vector<id> large(count > 128 ? count : 0);
    id *objects = count > 128 ? large.data() : local, *next = objects;
    ZPSimpleForEach(s, [&](ZPSimpleBucketOf<S> *b) { *next++ = _ZPItemObject(take(b)); });
    return id(_ZPArrayAbove::alloc()->initWithObjects_count(objects, count))->autorelease();
}

/// An empty mutable string with room for `capacity` characters.
inline _ZPMutableStringAbove *_ZPMutableText(unsigned capacity) {
    return _ZPMutableStringAbove::stringWithCapacity(capacity);
}
