// SPDX-License-Identifier: MIT
// Map tables over the simple dictionaries, with a client's functions for keys and values.
#include <Bedrock/tables/ZPMapTable.h>
#include <Bedrock/core/Memory.h>
#include <Bedrock/tables/Tables+Internal.h>

using T = ZPMapTable;

const ZPMapKeyCallBacks ZPIntMapKeyCallBacks = {.notAKeyMarker =
                                                    reinterpret_cast<const void *>(std::uintptr_t(0x80000000))};
const ZPMapKeyCallBacks ZPNonOwnedPointerMapKeyCallBacks = {};
const ZPMapKeyCallBacks ZPNonOwnedPointerOrNullMapKeyCallBacks = {
    .notAKeyMarker = reinterpret_cast<const void *>(~std::uintptr_t(0))};
const ZPMapKeyCallBacks ZPOwnedPointerMapKeyCallBacks = {.release = _ZPPointerItemFree<T>};
const ZPMapKeyCallBacks ZPNonRetainedObjectMapKeyCallBacks = {
    _ZPObjectItemHash<T>, _ZPObjectItemsEqual<T>, nullptr, nullptr, _ZPObjectItemDescribe<T>, nullptr};
const ZPMapKeyCallBacks ZPObjectMapKeyCallBacks = {_ZPObjectItemHash<T>,     _ZPObjectItemsEqual<T>,
                                                   _ZPObjectItemRetain<T>,   _ZPObjectItemRelease<T>,
                                                   _ZPObjectItemDescribe<T>, nullptr};
const ZPMapKeyCallBacks _ZPByteStringMapKeyCallBacks = {
    _ZPByteStringItemHash<T>, _ZPByteStringItemsEqual<T>, nullptr, nullptr, _ZPByteStringItemDescribe<T>, nullptr};

const ZPMapValueCallBacks ZPIntMapValueCallBacks = {};
const ZPMapValueCallBacks ZPNonOwnedPointerMapValueCallBacks = {};
const ZPMapValueCallBacks ZPOwnedPointerMapValueCallBacks = {.release = _ZPPointerItemFree<T>};
const ZPMapValueCallBacks ZPNonRetainedObjectMapValueCallBacks = {.describe = _ZPObjectItemDescribe<T>};
const ZPMapValueCallBacks ZPObjectMapValueCallBacks = {_ZPObjectItemRetain<T>, _ZPObjectItemRelease<T>,
                                                       _ZPObjectItemDescribe<T>};

static BOOL isEqual(void *context, const void *stored, const void *probe) {
    auto *table = static_cast<ZPMapTable *>(context);
    return table->keyCallBacks.isEqual(table, stored, probe);
}

static unsigned hashOf(ZPMapTable *table, const void *key) { return _ZPItemHash(table, table->keyCallBacks, key); }
static void retainKey(ZPMapTable *table, const void *key) {
    if (table->keyCallBacks.retain) table->keyCallBacks.retain(table, key);
}
static void retainValue(ZPMapTable *table, const void *value) {
    if (table->valueCallBacks.retain) table->valueCallBacks.retain(table, value);
}
static void releasePair(ZPMapTable *table, void *key, void *value) {
    if (table->keyCallBacks.release) table->keyCallBacks.release(table, key);
    if (table->valueCallBacks.release) table->valueCallBacks.release(table, value);
}
static ZPSimpleDictionaryBucket *find(ZPMapTable *table, const void *key, unsigned hash,
                                      ZPSimpleDictionaryBucket **place = nullptr) {
    return _ZPFindItem(table, table->keyCallBacks, table->dictionary, key, hash, place);
}
static ZPSimpleDictionaryBucket *findStored(ZPMapTable *table, const void *key) {
    return ZPSimpleCount(table->dictionary) ? find(table, key, hashOf(table, key)) : nullptr;
}
static void add(ZPMapTable *table, ZPSimpleDictionaryBucket *place, const void *key, unsigned hash, const void *value) {
    ZPSimpleAdd(&table->dictionary, place,
                {(hash & ZPSimpleHashMask) | ZPSimpleOccupied, const_cast<void *>(key), const_cast<void *>(value)});
}

ZPMapTable *ZPCreateMapTableWithZone(ZPMapKeyCallBacks keyCallBacks, ZPMapValueCallBacks valueCallBacks,
                                     unsigned capacity, ZPZone *zone) {
    ZPSimpleDictionary *dictionary = ZPCreateSimpleDictionary(capacity, keyCallBacks.isEqual ? isEqual : nullptr, zone);
    auto *table = _ZPTryAllocate<ZPMapTable>(1, zone);
    if (!table) {
        ZPFreeSimpleDictionary(dictionary);
        _ZPRaiseMalloc("ZPCreateMapTableWithZone(): out of memory");
    }
    *table = {dictionary, keyCallBacks, valueCallBacks};
    return table;
}

ZPMapTable *ZPCreateMapTable(ZPMapKeyCallBacks keyCallBacks, ZPMapValueCallBacks valueCallBacks, unsigned capacity) {
    return ZPCreateMapTableWithZone(keyCallBacks, valueCallBacks, capacity, nullptr);
}

static void releaseAll(ZPMapTable *table) {
    if (table->keyCallBacks.release || table->valueCallBacks.release)
        ZPSimpleForEach(table->dictionary, [=](ZPSimpleDictionaryBucket *b) { releasePair(table, b->key, b->value); });
}

void ZPFreeMapTable(ZPMapTable *table) {
    releaseAll(table);
    ZPFreeSimpleDictionary(table->dictionary);
    ZPZoneFree(ZPZoneFromPointer(table), table);
}

void ZPResetMapTable(ZPMapTable *table) {
    releaseAll(table);
    ZPResetSimpleDictionary(table->dictionary, nullptr, nullptr);
}

BOOL ZPCompareMapTables(ZPMapTable *table1, ZPMapTable *table2) {
    if (table1 == table2) return YES;
    if (ZPCountMapTable(table1) != ZPCountMapTable(table2)) return NO;
    BOOL same = YES;
    ZPSimpleForEach(table1->dictionary, [&](ZPSimpleDictionaryBucket *b) -> bool {
        return (same = findStored(table2, b->key) != nullptr);
    });
    return same;
}

ZPMapTable *ZPCopyMapTableWithZone(ZPMapTable *table, ZPZone *zone) {
    ZPMapTable *copy =
        ZPCreateMapTableWithZone(table->keyCallBacks, table->valueCallBacks, ZPCountMapTable(table), zone);
    ZPSimpleForEach(table->dictionary,
                    [=](ZPSimpleDictionaryBucket *b) { ZPMapInsertIfAbsent(copy, b->key, b->value); });
    return copy;
}

BOOL ZPMapMember(ZPMapTable *table, const void *key, void **storedKey, void **value) {
    ZPSimpleDictionaryBucket *b = findStored(table, key);
    if (!b) return NO;
    if (storedKey) *storedKey = b->key;
    if (value) *value = b->value;
    return YES;
}

void *ZPMapGet(ZPMapTable *table, const void *key) {
    ZPSimpleDictionaryBucket *b = findStored(table, key);
    return b ? b->value : nullptr;
}

static void refuseMarker(ZPMapTable *table, const void *key, const char *function, const char *verb) {
    if (key == table->keyCallBacks.notAKeyMarker) [[unlikely]]
        ZPException::raise_format(ZPInvalidArgumentException, "*** %s(): attempt to %s notAKeyMarker"_zp, function,
                                  verb);
}

void ZPMapInsert(ZPMapTable *table, const void *key, const void *value) {
    refuseMarker(table, key, "ZPMapInsert", "insert");
    unsigned hash = hashOf(table, key);
    retainValue(table, value);
    ZPSimpleDictionaryBucket *place, *b = find(table, key, hash, &place);
    if (!b) {
        add(table, place, key, hash, value);
        retainKey(table, key);
        return;
    }
    void *old = b->value;
    b->value = const_cast<void *>(value);
    if (table->valueCallBacks.release) table->valueCallBacks.release(table, old);
}

void ZPMapInsertKnownAbsent(ZPMapTable *table, const void *key, const void *value) {
    refuseMarker(table, key, "ZPMapInsertKnownAbsent", "insert");
    unsigned hash = hashOf(table, key);
    ZPSimpleDictionaryBucket *place;
    if (find(table, key, hash, &place))
        ZPException::raise_format(ZPInvalidArgumentException,
                                  "*** ZPMapInsertKnownAbsent(): key already in table: %@"_zp,
                                  _ZPDescribeItem(table, table->keyCallBacks, key));
    add(table, place, key, hash, value);
    retainKey(table, key);
    retainValue(table, value);
}

void *ZPMapInsertIfAbsent(ZPMapTable *table, const void *key, const void *value) {
    refuseMarker(table, key, "ZPMapInsertIfAbsent", "insert");
    unsigned hash = hashOf(table, key);
    ZPSimpleDictionaryBucket *place;
    if (ZPSimpleDictionaryBucket *b = find(table, key, hash, &place)) return b->key;
    add(table, place, key, hash, value);
    retainKey(table, key);
    retainValue(table, value);
    return nullptr;
}

void ZPMapRemove(ZPMapTable *table, const void *key) {
    refuseMarker(table, key, "ZPMapRemove", "remove");
    ZPSimpleDictionaryBucket *b = findStored(table, key);
    if (!b) return;
    void *storedKey = b->key, *value = b->value;
    ZPSimpleRemove(table->dictionary, b);
    releasePair(table, storedKey, value);
}

ZPMapEnumerator ZPEnumerateMapTable(ZPMapTable *table) {
    return {ZPSimpleBuckets(table->dictionary), nullptr, table->dictionary};
}

BOOL ZPNextMapEnumeratorPair(ZPMapEnumerator *enumerator, void **key, void **value) {
    while (enumerator->remaining) {
        ZPSimpleDictionaryBucket *b = &enumerator->dictionary->buckets[--enumerator->remaining];
        if (!(b->state & ZPSimpleOccupied)) continue;
        if (key) *key = b->key;
        if (value) *value = b->value;
        return YES;
    }
    return NO;
}

unsigned ZPCountMapTable(ZPMapTable *table) { return ZPSimpleCount(table->dictionary); }

ZPString *ZPStringFromMapTable(ZPMapTable *table) {
    unsigned count = ZPCountMapTable(table);
    auto address = reinterpret_cast<unsigned long>(table);
    if (!count) return _ZPStringWithCText("<ZPMapTable: 0x%lx> {}", address);
    auto *text = _ZPMutableText(count < 0x2000000 ? count * 64 : 0);
    text->appendString(_ZPStringWithCText("<ZPMapTable: 0x%lx> {", address));
    ZPSimpleForEach(table->dictionary, [&](ZPSimpleDictionaryBucket *b) {
        text->appendString(_ZPDescribeItem(table, table->keyCallBacks, b->key));
        text->appendString(" = "_zp);
        text->appendString(_ZPDescribeItem(table, table->valueCallBacks, b->value));
        text->appendString(";\n"_zp);
    });
    text->appendString("}"_zp);
    return id(text);
}

ZPArray *ZPAllMapTableKeys(ZPMapTable *table) {
    return _ZPArrayOfItems(table->dictionary, [](ZPSimpleDictionaryBucket *b) { return b->key; });
}
ZPArray *ZPAllMapTableValues(ZPMapTable *table) {
    return _ZPArrayOfItems(table->dictionary, [](ZPSimpleDictionaryBucket *b) { return b->value; });
}
