// SPDX-License-Identifier: MIT
// The hashing engine of the library in its two shapes: a set of words and a dictionary from words to words.
// Both know nothing about what the words mean: the caller computes hashes and owns items.
//
// The floor of the tables has structures of words and ranges, which are no objects. Read this first, then
// HashingEngine.h, by which the library's own tables and collections search.
#pragma once

#include <Bedrock/core/ZPObject.h>

/// Whether a stored item (or key) equals the probe; `context` is what the caller of the operation gave.
using ZPSimpleEqualFunction = BOOL(void *context, const void *stored, const void *probe);

inline constexpr unsigned ZPSimpleOccupied = 0x80000000;  ///< state bits of a bucket in use
inline constexpr unsigned ZPSimpleDeleted = 0x40000000;  ///< state bits of a bucket that was emptied
inline constexpr unsigned ZPSimpleHashMask = 0x3FFFFFFF;  ///< the part of a hash that is kept
inline constexpr unsigned ZPSimpleCountMask = 0x07FFFFFF;  ///< the part of `info` that counts
inline constexpr unsigned ZPSimpleMaximumCount = 0x07FFFFFF;  ///< of items in one structure
inline constexpr unsigned ZPSimpleMaximumCapacity = 357913941;  ///< that a structure is made for

/// A place for an item.
struct ZPSimpleSetBucket {
    unsigned state;  ///< state bits and hash
    void *item;  ///< null when the bucket is not in use
};

/// A place for a key and its value.
struct ZPSimpleDictionaryBucket {
    unsigned state;  ///< state bits and hash
    void *key;  ///< null when the bucket is not in use
    void *value;  ///< the caller's word
};

/// A set of words in one allocation: 4 << size class buckets lie behind the head. The classes 0 and 1 keep
/// their entries packed at the front in the order of arrival; from class 2 on buckets are found by hash.
struct ZPSimpleSet {
    unsigned info;  ///< size class in the top 5 bits, count in the low 27
    int retainCount;  ///< beyond the first reference; -1: permanent
    ZPSimpleEqualFunction *isEqual;  ///< null: only identical items are equal
    unsigned unused;  ///< as many buckets at the end at least are not in use; 0 when it is not known
    ZPSimpleSetBucket buckets[];  ///< as many as the size class says
};

/// The same with a value beside each key.
struct ZPSimpleDictionary {
    unsigned info;  ///< size class in the top 5 bits, count in the low 27
    int retainCount;  ///< beyond the first reference; -1: permanent
    ZPSimpleEqualFunction *isEqual;  ///< null: only identical keys are equal
    ZPSimpleDictionaryBucket buckets[];  ///< as many as the size class says
};

// A structure belongs to one thread at a time, except that any thread may retain and release it. Structures
// passed as `**` may be replaced by a larger one. Growth goes through the sizes 4, 8, 16, ...; nothing shrinks.
// Beyond 134,217,727 entries an insertion raises ZPMallocException, as any growth does without memory.
extern "C" {
/// A new structure in the zone (null: the default zone) that holds `capacity` items without growing. Without
/// an equality function only identical items are equal. A capacity above 357,913,941 raises
/// ZPInvalidArgumentException.
ZP_EXPORT ZPSimpleSet *ZPCreateSimpleSet(unsigned capacity, ZPSimpleEqualFunction *isEqual, ZPZone *zone);
/// Fills with zeros and frees; items are the caller's.
ZP_EXPORT void ZPFreeSimpleSet(ZPSimpleSet *set);
/// The same buckets in another zone, retain count 0.
ZP_EXPORT ZPSimpleSet *ZPCopySimpleSet(ZPSimpleSet *set, ZPZone *zone);
/// Empties the set, keeping its size; calls `release` (may be null) for each item, last bucket first.
ZP_EXPORT void ZPResetSimpleSet(ZPSimpleSet *set, void (*release)(void *context, void *item), void *context);
/// Adds a reference; YES when the structure is permanent.
ZP_EXPORT BOOL ZPRetainSimpleSet(ZPSimpleSet *set);
/// Gives a reference up; YES when it was the last and the caller has to free the structure.
ZP_EXPORT BOOL ZPReleaseSimpleSet(ZPSimpleSet *set);
/// The number of references; 0 for a permanent structure.
ZP_EXPORT int ZPSimpleSetRetainCount(ZPSimpleSet *set);
/// The number of items.
ZP_EXPORT unsigned ZPSimpleSetCount(ZPSimpleSet *set);
/// The number of buckets, in use or not.
ZP_EXPORT unsigned ZPSimpleSetNumBuckets(ZPSimpleSet *set);
/// The bucket at an index below the number of buckets when it is in use, else null.
ZP_EXPORT ZPSimpleSetBucket *ZPSimpleSetGetBucket(ZPSimpleSet *set, unsigned index);
/// The bucket that holds an equal item, or null.
ZP_EXPORT ZPSimpleSetBucket *ZPSimpleSetLookup(ZPSimpleSet *set, const void *item, unsigned hash, void *context);
/// YES when `*item` was added. NO when an equal item was there, which `*item` then is; with `replace` the
/// given item took its place.
ZP_EXPORT BOOL ZPSimpleSetInsert(ZPSimpleSet **set, void **item, unsigned hash, void *context, BOOL replace);
/// YES when an equal item was there: it is removed and handed back in `*item`.
ZP_EXPORT BOOL ZPSimpleSetDelete(ZPSimpleSet **set, void **item, unsigned hash, void *context);

///@{
/// As the functions of sets of these names, with keys in the place of items.
ZP_EXPORT ZPSimpleDictionary *ZPCreateSimpleDictionary(unsigned capacity, ZPSimpleEqualFunction *isEqual, ZPZone *zone);
ZP_EXPORT void ZPFreeSimpleDictionary(ZPSimpleDictionary *dictionary);
ZP_EXPORT ZPSimpleDictionary *ZPCopySimpleDictionary(ZPSimpleDictionary *dictionary, ZPZone *zone);
ZP_EXPORT void ZPResetSimpleDictionary(ZPSimpleDictionary *dictionary,
                                       void (*release)(void *context, void *key, void *value), void *context);
ZP_EXPORT BOOL ZPRetainSimpleDictionary(ZPSimpleDictionary *dictionary);
ZP_EXPORT BOOL ZPReleaseSimpleDictionary(ZPSimpleDictionary *dictionary);
ZP_EXPORT int ZPSimpleDictionaryRetainCount(ZPSimpleDictionary *dictionary);
ZP_EXPORT unsigned ZPSimpleDictionaryCount(ZPSimpleDictionary *dictionary);
ZP_EXPORT unsigned ZPSimpleDictionaryNumBuckets(ZPSimpleDictionary *dictionary);
ZP_EXPORT ZPSimpleDictionaryBucket *ZPSimpleDictionaryGetBucket(ZPSimpleDictionary *dictionary, unsigned index);
ZP_EXPORT ZPSimpleDictionaryBucket *ZPSimpleDictionaryLookup(ZPSimpleDictionary *dictionary, const void *key,
                                                             unsigned hash, void *context);
///@}
/// YES when the pair was added. NO when the key was there: `*key` and `*value` are then what was stored, and
/// with `replace` the given value (never the key) took the stored one's place.
ZP_EXPORT BOOL ZPSimpleDictionaryInsert(ZPSimpleDictionary **dictionary, void **key, unsigned hash, void **value,
                                        void *context, BOOL replace);
/// YES when the key was there: the pair is removed and handed back; `value` may be null.
ZP_EXPORT BOOL ZPSimpleDictionaryDelete(ZPSimpleDictionary **dictionary, void **key, unsigned hash, void **value,
                                        void *context);
/// YES when the key was added with the value 1; NO when it was there, handed back, and its value grew by one.
ZP_EXPORT BOOL ZPSimpleDictionaryIncrementValue(ZPSimpleDictionary **dictionary, void **key, unsigned hash,
                                                void *context);
/// YES when the key was there and its value fell to 0: the entry is removed, the stored key handed back.
ZP_EXPORT BOOL ZPSimpleDictionaryDecrementValue(ZPSimpleDictionary **dictionary, void **key, unsigned hash,
                                                void *context);
/// Removes every entry with that very value.
ZP_EXPORT void ZPSimpleDictionaryDeleteEntriesWithValue(ZPSimpleDictionary **dictionary, const void *value);
}
