// The two concrete dictionary classes. `_table` maps keys to values by the keys' `hash` and `isEqual:`; it
// is null in the shared empty dictionary and may be null in an empty mutable one. The table owns a reference
// to each key (its own copy) and each value. References to dictionaries are counted as for every object.
#pragma once

#include <Bedrock/collections/ZPCollections+Internal.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/tables/ZPSimpleHashing+Internal.h>

inline objc_object *_ZPStored(const void *item) { return static_cast<objc_object *>(const_cast<void *>(item)); }
inline id _ZPKey(const ZPSimpleDictionaryBucket *b) { return id(_ZPStored(b->key)); }
inline id _ZPValue(const ZPSimpleDictionaryBucket *b) { return id(_ZPStored(b->value)); }

/// The equality function of every collection's table.
BOOL _ZPStoredObjectsEqual(void *, const void *stored, const void *probe);

struct _ZPObjectEquality {
    ZP_INLINE bool operator()(const void *stored, const void *probe) const {
        return objc_msgSend<BOOL>(_ZPStored(stored), "isEqual:"_sel, id(_ZPStored(probe))) != NO;
    }
};

struct ZPConcreteDictionary : ZPDictionary {
    ZP_PRIVATE_CLASS(ZPConcreteDictionary)
    ZPSimpleDictionary *_table;
};

struct ZPConcreteMutableDictionary : ZPMutableDictionary {
    ZP_PRIVATE_CLASS(ZPConcreteMutableDictionary)
    ZPSimpleDictionary *_table;
};

struct _ZPDictionaryEnumerator : ZPEnumerator {
    ZP_PRIVATE_CLASS(_ZPDictionaryEnumerator)
    id _target;                 ///< the dictionary, retained until the end
    ZPSimpleDictionary *_table; ///< of a concrete dictionary
    unsigned _slot;             ///< buckets not yet visited
    ZPEnumerator *_keyEnumerator; ///< of any other dictionary
    BOOL _fastObjects;
    BOOL _enumerateObjects;

    /// Over a table that belongs to `target`.
    static ZPEnumerator *over(ZPSimpleDictionary *table, id target, BOOL objects);
    /// Over the values of a dictionary that is not concrete.
    static ZPEnumerator *overValues(ZPDictionary *dictionary);
};

ZPDictionary *_ZPEmptyDictionary();

/// Whether a dictionary is of a concrete class; then `table` is its table, which is null when it never held
/// an entry.
ZP_INLINE bool _ZPConcreteTable(id dictionary, ZPSimpleDictionary *&table) {
    Class isa = dictionary.pointer()->isa;
    if (isa == ZPConcreteDictionary::class_()) table = reinterpret_cast<ZPConcreteDictionary *>(dictionary.pointer())->_table;
    else if (isa == ZPConcreteMutableDictionary::class_()) table = reinterpret_cast<ZPConcreteMutableDictionary *>(dictionary.pointer())->_table;
    else return false;
    return true;
}

/// Calls f(key, value) for each entry of a dictionary (may be null) in its enumeration order, until f
/// answers false.
template <class F> void _ZPForEachEntry(ZPDictionary *dictionary, const F &f) {
    ZPSimpleDictionary *table;
    if (!dictionary) return;
    if (_ZPConcreteTable(dictionary, table)) {
        if (table) ZPSimpleForEach(table, [&](ZPSimpleDictionaryBucket *b) -> bool { return f(_ZPKey(b), _ZPValue(b)); });
        return;
    }
    ZPEnumerator *keys = dictionary->keyEnumerator();
    while (id key = keys->nextObject())
        if (!f(key, dictionary->objectForKey(key))) return;
}
