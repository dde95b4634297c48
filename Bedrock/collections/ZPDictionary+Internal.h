// SPDX-License-Identifier: MIT
// The two concrete dictionary classes. `_table` maps keys to values by the keys' `hash` and `isEqual:`; it
// is null in the shared empty dictionary and may be null in an empty mutable one. The table owns a reference
// to each key (its own copy) and each value. A reader of trees makes dictionaries with the table in the same
// allocation, right behind the fields. References to dictionaries are counted as for every object.
#pragma once

#include <Bedrock/collections/ZPCollections+Internal.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/strings/cluster/Cluster.h>
#include <Bedrock/tables/ZPSimpleHashing+Internal.h>

#include <bit>

inline objc_object *_ZPStored(const void *item) { return static_cast<objc_object *>(const_cast<void *>(item)); }
inline id _ZPKey(const ZPSimpleDictionaryBucket *b) { return id(_ZPStored(b->key)); }
inline id _ZPValue(const ZPSimpleDictionaryBucket *b) { return id(_ZPStored(b->value)); }

/// The equality function of every collection's table.
BOOL _ZPStoredObjectsEqual(void *, const void *stored, const void *probe);

// Most keys are 8-bit strings of one class: their hash and equality are taken without messages, with the
// result that the messages have.

static_assert(sizeof(ZPInlineCString) == 16, "short strings are read as whole words");
/// The hash of 3 to 32 bytes below 128 in an inline string; false for any others. Fewer than 8 are read as a word
/// that ends inside the object (4 bytes of the fields' own room and the NUL lie behind them) and shifted into place.
ZP_INLINE bool _ZPHashShortBytes(const char *bytes, unsigned length, unsigned &hash) {
    if (std::endian::native != std::endian::little || length - 3 > 29) return false;
    if (length >= 8) [[likely]]
        return _ZPHashWords(bytes, length, hash);
    std::uint64_t word;
    std::memcpy(&word, bytes, 8);
    word <<= 8 * (8 - length);
    if (word & 0x8080808080808080) return false;
    hash = _ZPFinishHash(length * _ZPPowers.of[length] + _ZPHashEight(word), length);
    return true;
}

/// Whether such bytes are the same. Four words that overlap cover 8 to 32 bytes: no branch depends on the length.
ZP_INLINE bool _ZPSameShortBytes(const char *a, const char *b, unsigned length) {
    auto differ = [=](unsigned at) {
        std::uint64_t x, y;
        std::memcpy(&x, a + at, 8);
        std::memcpy(&y, b + at, 8);
        return x ^ y;
    };
    if (length < 8) return !(differ(0) << 8 * (8 - length));
    unsigned last = length - 8, second = last < 8 ? last : 8, third = length < 16 ? 0 : length - 16;
    return !(differ(0) | differ(second) | differ(third) | differ(last));
}

ZP_INLINE unsigned _ZPHashOfObject(id object) {
    if (object.pointer()->isa == ZPInlineCString::class_()) {
        auto *string = object.unchecked<ZPInlineCString>();
        unsigned hash, length = string->_flags.numBytes;
        if (_ZPHashShortBytes(string->contents(), length, hash)) [[likely]]
            return hash;
        return ZPHashCString(string->contents(), length);
    }
    return object->hash();
}

struct _ZPObjectEquality {
    ZP_INLINE bool operator()(const void *stored, const void *probe) const {
        objc_object *a = _ZPStored(stored), *b = _ZPStored(probe);
        if (a->isa == ZPInlineCString::class_() && b->isa == ZPInlineCString::class_()) {
            auto *x = reinterpret_cast<ZPInlineCString *>(a), *y = reinterpret_cast<ZPInlineCString *>(b);
            return x->_flags.numBytes == y->_flags.numBytes &&
                   !std::memcmp(x->contents(), y->contents(), x->_flags.numBytes);
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

ZPDictionary *_ZPEmptyDictionary();

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

/// Calls f(key, value) for each entry of a dictionary (may be null) in its enumeration order, until f
/// answers false.
template <class F> void _ZPForEachEntry(ZPDictionary *dictionary, const F &f) {
    ZPSimpleDictionary *table;
    if (!dictionary) return;
    if (_ZPConcreteTable(dictionary, table)) {
        if (table)
            ZPSimpleForEach(table, [&](ZPSimpleDictionaryBucket *b) -> bool { return f(_ZPKey(b), _ZPValue(b)); });
        return;
    }
    ZPEnumerator *keys = dictionary->keyEnumerator();
    while (id key = keys->nextObject())
        if (!f(key, dictionary->objectForKey(key))) return;
}
