// SPDX-License-Identifier: MIT
// Sets of pointers or integers whose hashing, equality and ownership the caller chooses.
#pragma once

#include <Bedrock/tables/ZPSimpleHashing.h>

ZP_FORWARD(ZPArray);
ZP_FORWARD(ZPString);
struct ZPHashTable;

/// What a table does with its items. Null functions: the item itself is its hash; identity; nothing to
/// retain or release; "0x..." as description.
struct ZPHashCallBacks {
    /// Equal items hash alike; null: by identity.
    unsigned (*hash)(ZPHashTable *table, const void *item);
    BOOL (*isEqual)(ZPHashTable *table, const void *stored, const void *probe);
    void (*retain)(ZPHashTable *table, const void *item);
    void (*release)(ZPHashTable *table, void *item);
    ZPString *(*describe)(ZPHashTable *table, const void *item);
};

/// A table of distinct items, none of them null. Change it only through the functions below; from one thread
/// at a time.
struct ZPHashTable {
    ZPSimpleSet *set;
    ZPHashCallBacks callBacks;
};

/// A walk through a table, which must not change meanwhile. Needs no end.
struct ZPHashEnumerator {
    unsigned remaining;  ///< buckets not yet visited
    void *reserved;
    ZPSimpleSet *set;
};

extern "C" {
/// Integers and pointers that the table does not own.
ZP_EXPORT extern const ZPHashCallBacks ZPIntHashCallBacks;
ZP_EXPORT extern const ZPHashCallBacks ZPNonOwnedPointerHashCallBacks;
/// Pointers that are freed when they leave the table.
ZP_EXPORT extern const ZPHashCallBacks ZPOwnedPointerHashCallBacks;
/// The same, where pointers are equal when the words they point to are.
ZP_EXPORT extern const ZPHashCallBacks ZPPointerToStructHashCallBacks;
/// Objects, equal by `isEqual:`.
ZP_EXPORT extern const ZPHashCallBacks ZPNonRetainedObjectHashCallBacks;
ZP_EXPORT extern const ZPHashCallBacks ZPObjectHashCallBacks;
/// Retained objects, equal only to themselves.
ZP_EXPORT extern const ZPHashCallBacks ZPOwnedObjectIdentityHashCallBacks;
/// Null-terminated byte strings that the table does not own.
ZP_EXPORT extern const ZPHashCallBacks _ZPByteStringHashCallBacks;

/// A table with room for `capacity` items in a zone (null: the default zone). Copies the record.
ZP_EXPORT ZPHashTable *ZPCreateHashTableWithZone(ZPHashCallBacks callBacks, unsigned capacity, ZPZone *zone);
ZP_EXPORT ZPHashTable *ZPCreateHashTable(ZPHashCallBacks callBacks, unsigned capacity);
/// Releases every item and frees the table.
ZP_EXPORT void ZPFreeHashTable(ZPHashTable *table);
/// Releases every item and empties the table, keeping its size.
ZP_EXPORT void ZPResetHashTable(ZPHashTable *table);
/// YES when each item of the one is in the other, by the second's functions, and the counts are equal.
ZP_EXPORT BOOL ZPCompareHashTables(ZPHashTable *table1, ZPHashTable *table2);
ZP_EXPORT ZPHashTable *ZPCopyHashTableWithZone(ZPHashTable *table, ZPZone *zone);
/// The stored equal item, or null.
ZP_EXPORT void *ZPHashGet(ZPHashTable *table, const void *item);
/// Adds an item, in the place of an equal one. A null item raises ZPInvalidArgumentException here and below.
ZP_EXPORT void ZPHashInsert(ZPHashTable *table, const void *item);
/// Adds an item; an equal one in the table raises ZPInvalidArgumentException.
ZP_EXPORT void ZPHashInsertKnownAbsent(ZPHashTable *table, const void *item);
/// Adds an item and answers null; when an equal one is there, answers that and changes nothing.
ZP_EXPORT void *ZPHashInsertIfAbsent(ZPHashTable *table, const void *item);
/// Removes the equal item, if there is one.
ZP_EXPORT void ZPHashRemove(ZPHashTable *table, const void *item);
ZP_EXPORT ZPHashEnumerator ZPEnumerateHashTable(ZPHashTable *table);
/// The following item, or null at the end.
ZP_EXPORT void *ZPNextHashEnumeratorItem(ZPHashEnumerator *enumerator);
ZP_EXPORT unsigned ZPCountHashTable(ZPHashTable *table);
/// The table's address and its items' descriptions.
ZP_EXPORT ZPString *ZPStringFromHashTable(ZPHashTable *table);
/// An array of the items, which must be objects.
ZP_EXPORT ZPArray *ZPAllHashTableObjects(ZPHashTable *table);
}
