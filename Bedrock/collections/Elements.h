// SPDX-License-Identifier: MIT
// Reading arrays and dictionaries without a message for each element: for the library's own loops over collections of
// any class, their own storage being read where it shows one. What is read is borrowed and lasts as long as the
// collection is not changed.
#pragma once

#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/collections/ZPEnumerator.h>
#include <Bedrock/tables/HashingEngine.h>

#include <cstdlib>

/// More elements or entries than this are refused.
inline constexpr unsigned _ZPCollectionLimit = 0x8000000;

/// Uninitialised room for references from the heap.
ZP_COLD id *_ZPObjectsOnHeap(std::size_t count);

/// A list of object references on the stack, or on the heap beyond N.
template <unsigned N> struct _ZPObjectBufferOf {
    union {
        id local[N];
    };
    id *items;
    explicit _ZPObjectBufferOf(std::size_t count) : items(local) {
        if (count > N) [[unlikely]]
            items = _ZPObjectsOnHeap(count);
    }
    _ZPObjectBufferOf(const _ZPObjectBufferOf &) = delete;
    ~_ZPObjectBufferOf() {
        if (items != local) std::free(static_cast<void *>(items));
    }
};
using _ZPObjectBuffer = _ZPObjectBufferOf<128>;

/// The storage of an array of a concrete class, whose count it sets; null for any other array.
id *_ZPItemsOfArray(id array, unsigned &count);

/// The elements of an array, or of a range of it: its own storage for a concrete array, else a copy of the
/// references.
struct _ZPElements {
    id *items;
    unsigned count;
    _ZPObjectBuffer *gathered = nullptr;
    alignas(_ZPObjectBuffer) char room[sizeof(_ZPObjectBuffer)];

    /// Null has no elements.
    explicit _ZPElements(ZPArray *array);
    /// The range lies within the array.
    _ZPElements(ZPArray *array, ZPRange range);
    _ZPElements(const _ZPElements &) = delete;
    ~_ZPElements() {
        if (gathered) gathered->~_ZPObjectBuffer();
    }
    id *begin() const { return items; }
    id *end() const { return items + count; }

  private:
    ZP_COLD void gather(ZPArray *array, ZPRange range);
};

/// Whether a dictionary is of a concrete class; then `table` is its table, which is null when it never held
/// an entry.
bool _ZPTableOfDictionary(id dictionary, ZPSimpleDictionary *&table);

/// Calls f(key, value) for each entry of a dictionary (may be null) in its enumeration order, until f
/// answers false.
template <class F> void _ZPForEachEntry(ZPDictionary *dictionary, const F &f) {
    ZPSimpleDictionary *table;
    if (!dictionary) return;
    if (_ZPTableOfDictionary(dictionary, table)) {
        if (table)
            ZPSimpleForEach(table, [&](ZPSimpleDictionaryBucket *b) -> bool {
                return f(id(static_cast<objc_object *>(b->key)), id(static_cast<objc_object *>(b->value)));
            });
        return;
    }
    ZPEnumerator *keys = dictionary->keyEnumerator();
    while (id key = keys->nextObject())
        if (!f(key, dictionary->objectForKey(key))) return;
}
