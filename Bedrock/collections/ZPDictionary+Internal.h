// The two concrete dictionary classes. `_table` maps keys to values by the keys' `hash` and `isEqual:`; it
// is null in the shared empty dictionary and may be null in an empty mutable one. The table owns a reference
// to each key (its own copy) and each value. References to dictionaries are counted as for every object.
#pragma once

#include <Bedrock/collections/ZPCollections+Internal.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/strings/ZPString+Internal.h>
#include <Bedrock/tables/ZPSimpleHashing+Internal.h>

inline objc_object *_ZPStored(const void *item) { return static_cast<objc_object *>(const_cast<void *>(item)); }
inline id _ZPKey(const ZPSimpleDictionaryBucket *b) { return id(_ZPStored(b->key)); }
inline id _ZPValue(const ZPSimpleDictionaryBucket *b) { return id(_ZPStored(b->value)); }

/// The equality function of every collection's table.
BOOL _ZPStoredObjectsEqual(void *, const void *stored, const void *probe);

// Most keys are 8-bit strings of one class: their hash and equality are taken without messages, with the
// result that the messages have.

ZP_INLINE unsigned _ZPHashOfObject(id object) {
    if (object.pointer()->isa == ZPInlineCString::class_()) {
        auto *string = reinterpret_cast<ZPInlineCString *>(object.pointer());
        return ZPHashCString(string->contents(), string->_flags.numBytes);
    }
    return object->hash();
}

ZP_INLINE bool _ZPSameBytes(const char *a, const char *b, unsigned length) {
    std::uint64_t x, y;
    if (length < 8) {
        while (length--)
            if (a[length] != b[length]) return false;
        return true;
    }
    for (unsigned i = 0; i + 8 < length; i += 8) {
        std::memcpy(&x, a + i, 8);
        std::memcpy(&y, b + i, 8);
        if (x != y) return false;
    }
    std::memcpy(&x, a + length - 8, 8);
    std::memcpy(&y, b + length - 8, 8);
    return x == y;
}

struct _ZPObjectEquality {
    ZP_INLINE bool operator()(const void *stored, const void *probe) const {
        objc_object *a = _ZPStored(stored), *b = _ZPStored(probe);
        if (a->isa == ZPInlineCString::class_() && b->isa == ZPInlineCString::class_()) {
            auto *x = reinterpret_cast<ZPInlineCString *>(a), *y = reinterpret_cast<ZPInlineCString *>(b);
            return x->_flags.numBytes == y->_flags.numBytes && _ZPSameBytes(x->contents(), y->contents(), x->_flags.numBytes);
        }
        return objc_msgSend<BOOL>(a, "isEqual:"_sel, id(b)) != NO;
    }
};

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
    _ZPTakenItems _taken;

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
