// SPDX-License-Identifier: MIT
// Tables from pointers or integers to pointers or integers, whose hashing, equality and ownership the caller
// chooses.
#pragma once

#include <Bedrock/tables/ZPSimpleHashing.h>

ZP_FORWARD(ZPArray);
ZP_FORWARD(ZPString);
struct ZPMapTable;

/// What a table does with its keys. Any function may be null. They must not change the table.
struct ZPMapKeyCallBacks {
    /// Equal keys hash alike; null: the key itself is its hash.
    unsigned (*hash)(ZPMapTable *table, const void *key);
    /// Whether a stored key is equal to another; null: only the identical one.
    BOOL (*isEqual)(ZPMapTable *table, const void *stored, const void *probe);
    /// Called for what enters the table; null: nothing.
    void (*retain)(ZPMapTable *table, const void *key);
    /// Called for what leaves it; null: nothing.
    void (*release)(ZPMapTable *table, void *key);
    /// A key's text for people; null: "0x..." and the key in hexadecimal.
    ZPString *(*describe)(ZPMapTable *table, const void *key);
    const void *notAKeyMarker;  ///< never a key
};

/// What a table does with its values. Any function may be null. They must not change the table.
struct ZPMapValueCallBacks {
    /// Called for what enters the table; null: nothing.
    void (*retain)(ZPMapTable *table, const void *value);
    /// Called for what leaves it; null: nothing.
    void (*release)(ZPMapTable *table, void *value);
    /// A value's text for people; null: "0x..." and the value in hexadecimal.
    ZPString *(*describe)(ZPMapTable *table, const void *value);
};

/// The integer that no integer-keyed table accepts.
inline const void *const ZPNotAnIntMapKey = reinterpret_cast<const void *>(std::uintptr_t(0x80000000));
/// The pointer that no table accepts whose keys may be null: all bits set.
inline const void *const ZPNotAPointerMapKey = reinterpret_cast<const void *>(~std::uintptr_t(0));

/// A table of keys, each with a value, which may be null. Owned by its maker, who frees it and uses it from one
/// thread at a time. Change it only through the functions below; adding pairs raises ZPMallocException when there
/// is no memory.
struct ZPMapTable {
    ZPSimpleDictionary *dictionary;  ///< the pairs
    ZPMapKeyCallBacks keyCallBacks;  ///< the copied record for keys
    ZPMapValueCallBacks valueCallBacks;  ///< the copied record for values
};

/// A walk through a table, which must not change meanwhile. Needs no end.
struct ZPMapEnumerator {
    unsigned remaining;  ///< buckets not yet visited
    void *reserved;  ///< null
    ZPSimpleDictionary *dictionary;  ///< the table's pairs; borrowed
};

extern "C" {
/// Integers of a word; ZPNotAnIntMapKey is none.
ZP_EXPORT extern const ZPMapKeyCallBacks ZPIntMapKeyCallBacks;
/// Pointers that the table does not own; null is no key.
ZP_EXPORT extern const ZPMapKeyCallBacks ZPNonOwnedPointerMapKeyCallBacks;
/// The same, where null is a key and ZPNotAPointerMapKey is none.
ZP_EXPORT extern const ZPMapKeyCallBacks ZPNonOwnedPointerOrNullMapKeyCallBacks;
/// Pointers from `malloc`, which are freed when they leave the table; null is no key.
ZP_EXPORT extern const ZPMapKeyCallBacks ZPOwnedPointerMapKeyCallBacks;
/// Objects, equal by `isEqual:`, that the table does not own; null is no key.
ZP_EXPORT extern const ZPMapKeyCallBacks ZPNonRetainedObjectMapKeyCallBacks;
/// Retained objects, equal by `isEqual:`; null is no key.
ZP_EXPORT extern const ZPMapKeyCallBacks ZPObjectMapKeyCallBacks;
/// Null-terminated byte strings that the table does not own; null is no key.
ZP_EXPORT extern const ZPMapKeyCallBacks _ZPByteStringMapKeyCallBacks;

/// Integers of a word.
ZP_EXPORT extern const ZPMapValueCallBacks ZPIntMapValueCallBacks;
/// Pointers that the table does not own.
ZP_EXPORT extern const ZPMapValueCallBacks ZPNonOwnedPointerMapValueCallBacks;
/// Pointers from `malloc`, which are freed when they leave the table.
ZP_EXPORT extern const ZPMapValueCallBacks ZPOwnedPointerMapValueCallBacks;
/// Objects that the table does not own.
ZP_EXPORT extern const ZPMapValueCallBacks ZPNonRetainedObjectMapValueCallBacks;
/// Retained objects.
ZP_EXPORT extern const ZPMapValueCallBacks ZPObjectMapValueCallBacks;

/// A table with room for `capacity` pairs in a zone (null: the default zone), which the caller frees. Copies the
/// records. A capacity above 357,913,941 raises ZPInvalidArgumentException.
ZP_EXPORT ZPMapTable *ZPCreateMapTableWithZone(ZPMapKeyCallBacks keyCallBacks, ZPMapValueCallBacks valueCallBacks,
                                               unsigned capacity, ZPZone *zone);
/// The same in the default zone.
ZP_EXPORT ZPMapTable *ZPCreateMapTable(ZPMapKeyCallBacks keyCallBacks, ZPMapValueCallBacks valueCallBacks,
                                       unsigned capacity);
/// Releases every pair and frees the table, which must not be null.
ZP_EXPORT void ZPFreeMapTable(ZPMapTable *table);
/// Releases every pair and empties the table, keeping its size.
ZP_EXPORT void ZPResetMapTable(ZPMapTable *table);
/// YES for the same table, and when the counts are equal and each key of the first is in the second by the second's
/// functions, whatever the values.
ZP_EXPORT BOOL ZPCompareMapTables(ZPMapTable *table1, ZPMapTable *table2);
/// A table with the same records and pairs, which it retains; the caller frees it.
ZP_EXPORT ZPMapTable *ZPCopyMapTableWithZone(ZPMapTable *table, ZPZone *zone);
/// YES when the key is there; hands back the stored key and the value, borrowed, through the references that are
/// not null.
ZP_EXPORT BOOL ZPMapMember(ZPMapTable *table, const void *key, void **storedKey, void **value);
/// The value, borrowed; null also when the key is absent.
ZP_EXPORT void *ZPMapGet(ZPMapTable *table, const void *key);
/// Retains the value and sets it for the key, releasing the former one; a new key is retained, a stored one stays.
/// The table's `notAKeyMarker` raises ZPInvalidArgumentException here and below.
ZP_EXPORT void ZPMapInsert(ZPMapTable *table, const void *key, const void *value);
/// Adds and retains a pair; a present key raises ZPInvalidArgumentException.
ZP_EXPORT void ZPMapInsertKnownAbsent(ZPMapTable *table, const void *key, const void *value);
/// Adds and retains a pair and answers null; when the key is there, answers the stored key and changes nothing.
ZP_EXPORT void *ZPMapInsertIfAbsent(ZPMapTable *table, const void *key, const void *value);
/// Removes and releases the pair, if there is one.
ZP_EXPORT void ZPMapRemove(ZPMapTable *table, const void *key);
/// A walk through all pairs, in the table's own order.
ZP_EXPORT ZPMapEnumerator ZPEnumerateMapTable(ZPMapTable *table);
/// NO at the end; else stores the following pair, borrowed, through the references that are not null.
ZP_EXPORT BOOL ZPNextMapEnumeratorPair(ZPMapEnumerator *enumerator, void **key, void **value);
/// The number of pairs.
ZP_EXPORT unsigned ZPCountMapTable(ZPMapTable *table);
/// The table's address and the descriptions of its pairs; autoreleased.
ZP_EXPORT ZPString *ZPStringFromMapTable(ZPMapTable *table);
/// An autoreleased array of the keys, which must be objects.
ZP_EXPORT ZPArray *ZPAllMapTableKeys(ZPMapTable *table);
/// An autoreleased array of the values, which must be objects.
ZP_EXPORT ZPArray *ZPAllMapTableValues(ZPMapTable *table);
}
