// SPDX-License-Identifier: MIT
// The two concrete dictionary classes. `_table` maps keys to values by the keys' `hash` and `isEqual:`; it
// is null in the shared empty dictionary and may be null in an empty mutable one. The table owns a reference
// to each key (its own copy) and each value. A reader of trees makes dictionaries with the table in the same
// allocation, right behind the fields. References to dictionaries are counted as for every object.
#pragma once

#include <Bedrock/collections/Collections+Internal.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/collections/Makers.h>
#include <Bedrock/strings/cluster/Keys.h>
#include <Bedrock/tables/HashingEngine.h>

inline objc_object *_ZPStored(const void *item) { return static_cast<objc_object *>(const_cast<void *>(item)); }
inline id _ZPKey(const ZPSimpleDictionaryBucket *b) { return id(_ZPStored(b->key)); }
inline id _ZPValue(const ZPSimpleDictionaryBucket *b) { return id(_ZPStored(b->value)); }

/// The equality function of every collection's table.
BOOL _ZPStoredObjectsEqual(void *, const void *stored, const void *probe);
ZP_INLINE bool _ZPIsKeyed(const ZPSimpleDictionary *table) { return table->isEqual == _ZPKeyedObjectsEqual; }

/// Items that an enumerator took out of a table ahead: testing buckets one by one costs a mispredicted branch
/// each, taking them in runs costs none.
struct _ZPTakenItems {
    static constexpr unsigned most = 16;
    unsigned next, count;
    void *items[most + 1];

    /// The next item, `take` giving that of a bucket; null when the table holds no other. `slot` counts the
    /// buckets not yet visited.
    template <class S, class F> ZP_INLINE void *advance(S *table, unsigned &slot, const F &take) {
        if (next == count && !refill(table, slot, take)) return nullptr;
        return items[next++];
    }
    template <class S, class F> bool refill(S *table, unsigned &slot, const F &take) {
        unsigned n = 0, i = slot;
        while (i && n < most) {
            auto *b = &table->buckets[--i];
            items[n] = take(b);
            n += b->state >> 31;
        }
        slot = i;
        next = 0;
        count = n;
        return n;
    }
};

struct ZPConcreteDictionary : ZPDictionary {
    ZP_PRIVATE_CLASS(ZPConcreteDictionary)
    ZPSimpleDictionary *_table;

    /// Where the table lies when it is part of the object's own memory.
    void *room() { return this + 1; }
};

struct ZPConcreteMutableDictionary : ZPMutableDictionary {
    ZP_PRIVATE_CLASS(ZPConcreteMutableDictionary)
    ZPSimpleDictionary *_table;
};

struct _ZPDictionaryEnumerator : ZPEnumerator {
    ZP_PRIVATE_CLASS(_ZPDictionaryEnumerator)
    id _target;  ///< the dictionary, retained until the end
    ZPSimpleDictionary *_table;  ///< of a concrete dictionary
    unsigned _slot;  ///< buckets not yet visited
    ZPEnumerator *_keyEnumerator;  ///< of any other dictionary
    BOOL _fastObjects;
    BOOL _enumerateObjects;
    _ZPTakenItems _taken;

    /// Over a table that belongs to `target`.
    static ZPEnumerator *over(ZPSimpleDictionary *table, id target, BOOL objects);
    /// Over the values of a dictionary that is not concrete.
    static ZPEnumerator *overValues(ZPDictionary *dictionary);
};

/// Whether a dictionary is of a concrete class; then `table` is its table, which is null when it never held
/// an entry.
ZP_INLINE bool _ZPConcreteTable(id dictionary, ZPSimpleDictionary *&table) {
    Class isa = dictionary.pointer()->isa;
    if (isa == ZPConcreteDictionary::class_()) table = dictionary.unchecked<ZPConcreteDictionary>()->_table;
    else if (isa == ZPConcreteMutableDictionary::class_())
        table = dictionary.unchecked<ZPConcreteMutableDictionary>()->_table;
    else return false;
    return true;
}
