// SPDX-License-Identifier: MIT
// Tables from pointers or integers to pointers or integers, whose hashing, equality and ownership the caller
// chooses.
#pragma once

#include <Bedrock/tables/ZPSimpleHashing.h>

ZP_FORWARD(ZPArray);
ZP_FORWARD(ZPString);
struct ZPMapTable;

/// What a table does with its keys; null functions as in `ZPHashCallBacks`.
struct ZPMapKeyCallBacks {
    /// Equal keys hash alike; null: by identity.
    unsigned (*hash)(ZPMapTable *table, const void *key);
    BOOL (*isEqual)(ZPMapTable *table, const void *stored, const void *probe);
    void (*retain)(ZPMapTable *table, const void *key);
    void (*release)(ZPMapTable *table, void *key);
    ZPString *(*describe)(ZPMapTable *table, const void *key);
    const void *notAKeyMarker;  ///< never a key
};

/// What a table does with its values.
struct ZPMapValueCallBacks {
    /// Called for what enters and leaves the table, and to describe it; null: nothing.
    void (*retain)(ZPMapTable *table, const void *value);
    void (*release)(ZPMapTable *table, void *value);
    ZPString *(*describe)(ZPMapTable *table, const void *value);
};

/// The integer that no integer-keyed table accepts.
inline const void *const ZPNotAnIntMapKey = reinterpret_cast<const void *>(std::uintptr_t(0x80000000));
/// The pointer that no table accepts whose keys may be null: all bits set.
inline const void *const ZPNotAPointerMapKey = reinterpret_cast<const void *>(~std::uintptr_t(0));

/// A table of keys, each with a value, which may be null. Change it only through the functions below; from
/// one thread at a time.
struct ZPMapTable {
    ZPSimpleDictionary *dictionary;
    ZPMapKeyCallBacks keyCallBacks;
    ZPMapValueCallBacks valueCallBacks;
};

/// A walk through a table, which must not change meanwhile. Needs no end.
struct ZPMapEnumerator {
    unsigned remaining;  ///< buckets not yet visited
    void *reserved;
    ZPSimpleDictionary *dictionary;
};

extern "C" {
/// Integer keys; ZPNotAnIntMapKey is none.
ZP_EXPORT extern const ZPMapKeyCallBacks ZPIntMapKeyCallBacks;
/// Pointers that the table does not own; null is no key.
ZP_EXPORT extern const ZPMapKeyCallBacks ZPNonOwnedPointerMapKeyCallBacks;
/// The same, where null is a key and ZPNotAPointerMapKey is none.
ZP_EXPORT extern const ZPMapKeyCallBacks ZPNonOwnedPointerOrNullMapKeyCallBacks;
/// Pointers that are freed when they leave the table.
ZP_EXPORT extern const ZPMapKeyCallBacks ZPOwnedPointerMapKeyCallBacks;
/// Objects, equal by `isEqual:`.
ZP_EXPORT extern const ZPMapKeyCallBacks ZPNonRetainedObjectMapKeyCallBacks;
ZP_EXPORT extern const ZPMapKeyCallBacks ZPObjectMapKeyCallBacks;
/// Null-terminated byte strings that the table does not own; null is no key.
ZP_EXPORT extern const ZPMapKeyCallBacks _ZPByteStringMapKeyCallBacks;

ZP_EXPORT extern const ZPMapValueCallBacks ZPIntMapValueCallBacks;
ZP_EXPORT extern const ZPMapValueCallBacks ZPNonOwnedPointerMapValueCallBacks;
ZP_EXPORT extern const ZPMapValueCallBacks ZPOwnedPointerMapValueCallBacks;
ZP_EXPORT extern const ZPMapValueCallBacks ZPNonRetainedObjectMapValueCallBacks;
ZP_EXPORT extern const ZPMapValueCallBacks ZPObjectMapValueCallBacks;

/// A table with room for `capacity` pairs in a zone (null: the default zone). Copies the records.
ZP_EXPORT ZPMapTable *ZPCreateMapTableWithZone(ZPMapKeyCallBacks keyCallBacks, ZPMapValueCallBacks valueCallBacks, unsigned capacity, ZPZone *zone);
ZP_EXPORT ZPMapTable *ZPCreateMapTable(ZPMapKeyCallBacks keyCallBacks, ZPMapValueCallBacks valueCallBacks, unsigned capacity);
/// Releases every pair and frees the table.
ZP_EXPORT void ZPFreeMapTable(ZPMapTable *table);
/// Releases every pair and empties the table, keeping its size.
ZP_EXPORT void ZPResetMapTable(ZPMapTable *table);
/// YES when the tables have the same keys, whatever their values.
ZP_EXPORT BOOL ZPCompareMapTables(ZPMapTable *table1, ZPMapTable *table2);
ZP_EXPORT ZPMapTable *ZPCopyMapTableWithZone(ZPMapTable *table, ZPZone *zone);
/// YES when the key is there; hands back the stored key and the value through the references that are not null.
ZP_EXPORT BOOL ZPMapMember(ZPMapTable *table, const void *key, void **storedKey, void **value);
/// The value; null also when the key is absent.
ZP_EXPORT void *ZPMapGet(ZPMapTable *table, const void *key);
/// Sets the value of a key; the stored key stays when there is one. The table's `notAKeyMarker` raises
/// ZPInvalidArgumentException here and below.
ZP_EXPORT void ZPMapInsert(ZPMapTable *table, const void *key, const void *value);
/// Adds a pair; a present key raises ZPInvalidArgumentException.
ZP_EXPORT void ZPMapInsertKnownAbsent(ZPMapTable *table, const void *key, const void *value);
/// Adds a pair and answers null; when the key is there, answers the stored key and changes nothing.
ZP_EXPORT void *ZPMapInsertIfAbsent(ZPMapTable *table, const void *key, const void *value);
/// Removes the pair, if there is one.
ZP_EXPORT void ZPMapRemove(ZPMapTable *table, const void *key);
ZP_EXPORT ZPMapEnumerator ZPEnumerateMapTable(ZPMapTable *table);
/// NO at the end; else stores the following pair through the references that are not null.
ZP_EXPORT BOOL ZPNextMapEnumeratorPair(ZPMapEnumerator *enumerator, void **key, void **value);
ZP_EXPORT unsigned ZPCountMapTable(ZPMapTable *table);
/// The table's address and the descriptions of its pairs.
ZP_EXPORT ZPString *ZPStringFromMapTable(ZPMapTable *table);
/// An array of the keys, or of the values, which must be objects.
ZP_EXPORT ZPArray *ZPAllMapTableKeys(ZPMapTable *table);
ZP_EXPORT ZPArray *ZPAllMapTableValues(ZPMapTable *table);
}
