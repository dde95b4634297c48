// SPDX-License-Identifier: MIT
// Hash tables over the simple sets, with a client's functions for hash, equality and ownership.
#include <Bedrock/tables/ZPHashTable.h>
#include <Bedrock/core/Memory.h>
#include <Bedrock/tables/Tables+Internal.h>

#include <cstring>

using T = ZPHashTable;

const ZPHashCallBacks ZPIntHashCallBacks = {};
const ZPHashCallBacks ZPNonOwnedPointerHashCallBacks = {};
const ZPHashCallBacks ZPOwnedPointerHashCallBacks = {.release = _ZPPointerItemFree<T>};
const ZPHashCallBacks ZPPointerToStructHashCallBacks = {
    .hash =
        [](T *, const void *item) {
            std::uintptr_t word;
            std::memcpy(&word, item, sizeof word);
            return unsigned(word);
        },
    .isEqual = [](T *, const void *stored, const void *probe) -> BOOL {
        return std::memcmp(stored, probe, sizeof(std::uintptr_t)) == 0;
    },
    .release = _ZPPointerItemFree<T>,
};
const ZPHashCallBacks ZPNonRetainedObjectHashCallBacks = {_ZPObjectItemHash<T>, _ZPObjectItemsEqual<T>, nullptr,
                                                          nullptr, _ZPObjectItemDescribe<T>};
const ZPHashCallBacks ZPObjectHashCallBacks = {_ZPObjectItemHash<T>, _ZPObjectItemsEqual<T>, _ZPObjectItemRetain<T>,
                                               _ZPObjectItemRelease<T>, _ZPObjectItemDescribe<T>};
const ZPHashCallBacks ZPOwnedObjectIdentityHashCallBacks = {nullptr, nullptr, _ZPObjectItemRetain<T>,
                                                            _ZPObjectItemRelease<T>, _ZPObjectItemDescribe<T>};
const ZPHashCallBacks _ZPByteStringHashCallBacks = {_ZPByteStringItemHash<T>, _ZPByteStringItemsEqual<T>, nullptr,
                                                    nullptr, _ZPByteStringItemDescribe<T>};

unsigned _ZPByteStringHash(const void *bytes) {
    auto *b = static_cast<const signed char *>(bytes);
    if (!b) return 0;
    unsigned hash = 0;
    for (;; b += 4) {
        if (!b[0]) return hash;
        hash ^= unsigned(int(b[0]));
        if (!b[1]) return hash;
        hash ^= unsigned(int(b[1])) << 8;
        if (!b[2]) return hash;
        hash ^= unsigned(int(b[2])) << 16;
        if (!b[3]) return hash;
        hash ^= unsigned(static_cast<unsigned char>(b[3])) << 24;
    }
}

bool _ZPByteStringsEqual(const void *bytes1, const void *bytes2) {
    if (bytes1 == bytes2) return true;
    if (!bytes1 || !bytes2) return false;
    return std::strcmp(static_cast<const char *>(bytes1), static_cast<const char *>(bytes2)) == 0;
}

static BOOL isEqual(void *context, const void *stored, const void *probe) {
    auto *table = static_cast<ZPHashTable *>(context);
    return table->callBacks.isEqual(table, stored, probe);
}

static unsigned hashOf(ZPHashTable *table, const void *item) { return _ZPItemHash(table, table->callBacks, item); }
static void retain(ZPHashTable *table, const void *item) {
    if (table->callBacks.retain) table->callBacks.retain(table, item);
}
static void release(ZPHashTable *table, void *item) {
    if (table->callBacks.release) table->callBacks.release(table, item);
}
static ZPSimpleSetBucket *find(ZPHashTable *table, const void *item, unsigned hash,
                               ZPSimpleSetBucket **place = nullptr) {
    return _ZPFindItem(table, table->callBacks, table->set, item, hash, place);
}
static void add(ZPHashTable *table, ZPSimpleSetBucket *place, const void *item, unsigned hash) {
    ZPSimpleAdd(&table->set, place, {(hash & ZPSimpleHashMask) | ZPSimpleOccupied, const_cast<void *>(item)});
}

ZPHashTable *ZPCreateHashTableWithZone(ZPHashCallBacks callBacks, unsigned capacity, ZPZone *zone) {
    ZPSimpleSet *set = ZPCreateSimpleSet(capacity, callBacks.isEqual ? isEqual : nullptr, zone);
    auto *table = _ZPTryAllocate<ZPHashTable>(1, zone);
    if (!table) {
        ZPFreeSimpleSet(set);
        _ZPRaiseMalloc("ZPCreateHashTableWithZone(): out of memory");
    }
    *table = {set, callBacks};
    return table;
}

ZPHashTable *ZPCreateHashTable(ZPHashCallBacks callBacks, unsigned capacity) {
    return ZPCreateHashTableWithZone(callBacks, capacity, nullptr);
}

static void releaseAll(ZPHashTable *table) {
    if (table->callBacks.release)
        ZPSimpleForEach(table->set, [=](ZPSimpleSetBucket *b) { table->callBacks.release(table, b->item); });
}

void ZPFreeHashTable(ZPHashTable *table) {
    releaseAll(table);
    ZPFreeSimpleSet(table->set);
    ZPZoneFree(ZPZoneFromPointer(table), table);
}

void ZPResetHashTable(ZPHashTable *table) {
    releaseAll(table);
    ZPResetSimpleSet(table->set, nullptr, nullptr);
}

BOOL ZPCompareHashTables(ZPHashTable *table1, ZPHashTable *table2) {
    if (table1 == table2) return YES;
    if (ZPCountHashTable(table1) != ZPCountHashTable(table2)) return NO;
    BOOL same = YES;
    ZPSimpleForEach(table1->set, [&](ZPSimpleSetBucket *b) -> bool {
        return (same = find(table2, b->item, hashOf(table2, b->item)) != nullptr);
    });
    return same;
}

ZPHashTable *ZPCopyHashTableWithZone(ZPHashTable *table, ZPZone *zone) {
    ZPHashTable *copy = ZPCreateHashTableWithZone(table->callBacks, ZPCountHashTable(table), zone);
    ZPSimpleForEach(table->set, [=](ZPSimpleSetBucket *b) { ZPHashInsertIfAbsent(copy, b->item); });
    return copy;
}

void *ZPHashGet(ZPHashTable *table, const void *item) {
    if (!ZPSimpleCount(table->set)) return nullptr;
    ZPSimpleSetBucket *b = find(table, item, hashOf(table, item));
    return b ? b->item : nullptr;
}

static void refuseNull(const void *item, const char *function, const char *verb) {
    if (!item) [[unlikely]]
        ZPException::raise_format(ZPInvalidArgumentException, "*** %s(): attempt to %s NULL pointer"_zp, function,
                                  verb);
}

void ZPHashInsert(ZPHashTable *table, const void *item) {
    refuseNull(item, "ZPHashInsert", "insert");
    unsigned hash = hashOf(table, item);
    retain(table, item);
    ZPSimpleSetBucket *place, *b = find(table, item, hash, &place);
    if (!b) return add(table, place, item, hash);
    void *old = b->item;
    b->item = const_cast<void *>(item);
    release(table, old);
}

void ZPHashInsertKnownAbsent(ZPHashTable *table, const void *item) {
    refuseNull(item, "ZPHashInsertKnownAbsent", "insert");
    unsigned hash = hashOf(table, item);
    ZPSimpleSetBucket *place;
    if (find(table, item, hash, &place))
        ZPException::raise_format(ZPInvalidArgumentException,
                                  "*** ZPHashInsertKnownAbsent(): item already in table: %@"_zp,
                                  _ZPDescribeItem(table, table->callBacks, item));
    add(table, place, item, hash);
    retain(table, item);
}

void *ZPHashInsertIfAbsent(ZPHashTable *table, const void *item) {
    refuseNull(item, "ZPHashInsertIfAbsent", "insert");
    unsigned hash = hashOf(table, item);
    ZPSimpleSetBucket *place;
    if (ZPSimpleSetBucket *b = find(table, item, hash, &place)) return b->item;
    add(table, place, item, hash);
    retain(table, item);
    return nullptr;
}

void ZPHashRemove(ZPHashTable *table, const void *item) {
    refuseNull(item, "ZPHashRemove", "remove");
    ZPSimpleSetBucket *b = ZPSimpleCount(table->set) ? find(table, item, hashOf(table, item)) : nullptr;
    if (!b) return;
    void *stored = b->item;
    ZPSimpleRemove(table->set, b);
    release(table, stored);
}

ZPHashEnumerator ZPEnumerateHashTable(ZPHashTable *table) { return {ZPSimpleBuckets(table->set), nullptr, table->set}; }

void *ZPNextHashEnumeratorItem(ZPHashEnumerator *enumerator) {
    while (enumerator->remaining) {
        ZPSimpleSetBucket *b = &enumerator->set->buckets[--enumerator->remaining];
        if (b->state & ZPSimpleOccupied) return b->item;
    }
    return nullptr;
}

unsigned ZPCountHashTable(ZPHashTable *table) { return ZPSimpleCount(table->set); }

ZPString *ZPStringFromHashTable(ZPHashTable *table) {
    unsigned count = ZPCountHashTable(table);
    auto address = reinterpret_cast<unsigned long>(table);
    if (!count) return _ZPStringWithCText("<ZPHashTable: 0x%lx> ()", address);
    auto *text = _ZPMutableText(count < 0x2000000 ? count * 64 : 0);
    text->appendString(_ZPStringWithCText("<ZPHashTable: 0x%lx> (", address));
    bool first = true;
    ZPSimpleForEach(table->set, [&](ZPSimpleSetBucket *b) {
        if (!first) text->appendString(", "_zp);
        first = false;
        text->appendString(_ZPDescribeItem(table, table->callBacks, b->item));
    });
    text->appendString(")"_zp);
    return id(text);
}

ZPArray *ZPAllHashTableObjects(ZPHashTable *table) {
    return _ZPArrayOfItems(table->set, [](ZPSimpleSetBucket *b) { return b->item; });
}
