// SPDX-License-Identifier: MIT
// Making arrays and dictionaries from what the library has at hand, without a message and without retaining it again.
#pragma once

#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/tables/ZPSimpleHashing.h>

class objc_slabs;

/// The shared empty array and dictionary.
ZPArray *_ZPEmptyArray();
ZPDictionary *_ZPEmptyDictionary();

/// A new immutable array that the caller owns; the shared empty one for no elements.
ZPArray *_ZPNewArray(const id *objects, unsigned count, ZPZone *zone = nullptr);
inline ZPArray *_ZPMakeArray(const id *objects, unsigned count) { return _ZPNewArray(objects, count)->autorelease(); }

/// A new immutable array that owns a reference to each of the objects and takes it over. From the slabs if it is small.
ZPArray *_ZPNewArrayAdopting(const id *owned, unsigned count, objc_slabs &slabs);
/// An empty immutable dictionary whose table has room for `count` entries; until it is shown to anyone the caller may
/// put entries there, whose keys and values the dictionary then owns. From the slabs if it is small.
ZPDictionary *_ZPNewDictionaryToFill(unsigned count, objc_slabs &slabs, ZPSimpleDictionary *&table);

/// A new, empty mutable array of the library's own class, which the caller owns.
ZPMutableArray *_ZPNewMutableArray();
/// Adds objects to such an array and takes over a reference of each; when it raises it has taken none.
void _ZPAddAdopting(ZPMutableArray *array, const id *owned, unsigned count);

/// The equality function of a dictionary's table whose keys are found by `_ZPKeyedHashOfObject`, since too many had one
/// hash.
BOOL _ZPKeyedObjectsEqual(void *, const void *stored, const void *probe);
