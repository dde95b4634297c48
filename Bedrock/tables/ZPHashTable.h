// SPDX-License-Identifier: MIT
// Sets of pointers or integers whose hashing, equality and ownership the caller chooses.
#pragma once

#include <Bedrock/tables/ZPSimpleHashing.h>

ZP_FORWARD(ZPArray);
ZP_FORWARD(ZPString);
struct ZPHashTable;

/// What a table does with its items. Any function may be null. They must not change the table.
struct ZPHashCallBacks {
    /// Equal items hash alike; null: the item itself is its hash.
    unsigned (*hash)(ZPHashTable *table, const void *item);
    /// Whether a stored item is equal to another; null: only the identical one.
    BOOL (*isEqual)(ZPHashTable *table, const void *stored, const void *probe);
    /// Called for what enters the table; null: nothing.
    void (*retain)(ZPHashTable *table, const void *item);
    /// Called for what leaves it; null: nothing.
    void (*release)(ZPHashTable *table, void *item);
    /// An item's text for people; null: "0x..." and the item in hexadecimal.
    ZPString *(*describe)(ZPHashTable *table, const void *item);
};

/// A table of distinct items, none of them null. Owned by its maker, who frees it and uses it from one thread at a
/// time. Change it only through the functions below; adding items raises ZPMallocException when there is no memory.
struct ZPHashTable {
    ZPSimpleSet *set;  ///< the items
    ZPHashCallBacks callBacks;  ///< the copied record
};

/// A walk through a table, which must not change meanwhile. Needs no end.
struct ZPHashEnumerator {
    unsigned remaining;  ///< buckets not yet visited
    void *reserved;  ///< null
    ZPSimpleSet *set;  ///< the table's items; borrowed
};

extern "C" {
/// Integers of a word, but 0.
ZP_EXPORT extern const ZPHashCallBacks ZPIntHashCallBacks;
/// Pointers that the table does not own.
ZP_EXPORT extern const ZPHashCallBacks ZPNonOwnedPointerHashCallBacks;
/// Pointers from `malloc`, which are freed when they leave the table.
ZP_EXPORT extern const ZPHashCallBacks ZPOwnedPointerHashCallBacks;
/// The same, where pointers are equal when the words they point to are.
ZP_EXPORT extern const ZPHashCallBacks ZPPointerToStructHashCallBacks;
/// Objects, equal by `isEqual:`, that the table does not own.
ZP_EXPORT extern const ZPHashCallBacks ZPNonRetainedObjectHashCallBacks;
/// Retained objects, equal by `isEqual:`.
ZP_EXPORT extern const ZPHashCallBacks ZPObjectHashCallBacks;
/// Retained objects, equal only to themselves.
ZP_EXPORT extern const ZPHashCallBacks ZPOwnedObjectIdentityHashCallBacks;
/// Null-terminated byte strings that the table does not own.
ZP_EXPORT extern const ZPHashCallBacks _ZPByteStringHashCallBacks;

/// A table with room for `capacity` items in a zone (null: the default zone), which the caller frees. Copies the
/// record. A capacity above 357,913,941 raises ZPInvalidArgumentException.
ZP_EXPORT ZPHashTable *ZPCreateHashTableWithZone(ZPHashCallBacks callBacks, unsigned capacity, ZPZone *zone);
/// The same in the default zone.
ZP_EXPORT ZPHashTable *ZPCreateHashTable(ZPHashCallBacks callBacks, unsigned capacity);
/// Releases every item and frees the table, which must not be null.
ZP_EXPORT void ZPFreeHashTable(ZPHashTable *table);
/// Releases every item and empties the table, keeping its size.
ZP_EXPORT void ZPResetHashTable(ZPHashTable *table);
/// YES for the same table, and when the counts are equal and each item of the first is in the second by the
/// second's functions.
ZP_EXPORT BOOL ZPCompareHashTables(ZPHashTable *table1, ZPHashTable *table2);
/// A table with the same record and items, which it retains; the caller frees it.
ZP_EXPORT ZPHashTable *ZPCopyHashTableWithZone(ZPHashTable *table, ZPZone *zone);
/// The stored equal item, borrowed, or null.
ZP_EXPORT void *ZPHashGet(ZPHashTable *table, const void *item);
/// Retains and adds an item; an equal one loses its place to it and is released. A null item raises
/// ZPInvalidArgumentException here and below.
ZP_EXPORT void ZPHashInsert(ZPHashTable *table, const void *item);
/// Adds and retains an item; an equal one in the table raises ZPInvalidArgumentException.
ZP_EXPORT void ZPHashInsertKnownAbsent(ZPHashTable *table, const void *item);
/// Adds and retains an item and answers null; when an equal one is there, answers that and changes nothing.
ZP_EXPORT void *ZPHashInsertIfAbsent(ZPHashTable *table, const void *item);
/// Removes and releases the equal item, if there is one.
ZP_EXPORT void ZPHashRemove(ZPHashTable *table, const void *item);
/// A walk through all items, in the table's own order.
ZP_EXPORT ZPHashEnumerator ZPEnumerateHashTable(ZPHashTable *table);
/// The following item, borrowed, or null at the end.
ZP_EXPORT void *ZPNextHashEnumeratorItem(ZPHashEnumerator *enumerator);
/// The number of items.
ZP_EXPORT unsigned ZPCountHashTable(ZPHashTable *table);
/// The table's address and its items' descriptions; autoreleased.
ZP_EXPORT ZPString *ZPStringFromHashTable(ZPHashTable *table);
/// An autoreleased array of the items, which must be objects.
ZP_EXPORT ZPArray *ZPAllHashTableObjects(ZPHashTable *table);
}
