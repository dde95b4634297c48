// SPDX-License-Identifier: MIT
// Sets of 32-bit indexes, kept as ranges.
#pragma once

#include <Bedrock/tables/ZPRangeArray.h>

/// A set of indexes from 0 to 0xFFFFFFFE. Its ranges are sorted, not empty, and at least one index apart. Owned by
/// its maker, who frees it and uses it from one thread at a time. Change it only through the functions below.
/// Growing raises ZPMallocException when there is no memory.
struct ZPSparseIndexArray {
    ZPRangeArray list;  ///< the ranges
    unsigned total;  ///< how many indexes the ranges hold
};

extern "C" {
/// An empty set with room for `capacity` ranges in a zone (null: the default zone).
ZP_EXPORT ZPSparseIndexArray *ZPCreateSparseIndexArrayWithZone(unsigned capacity, ZPZone *zone);
/// The same in the default zone.
ZP_EXPORT ZPSparseIndexArray *ZPCreateSparseIndexArray(unsigned capacity);
/// Frees the set, which must not be null.
ZP_EXPORT void ZPFreeSparseIndexArray(ZPSparseIndexArray *array);
/// Empties the set and keeps its capacity.
ZP_EXPORT void ZPResetSparseIndexArray(ZPSparseIndexArray *array);
/// The caller frees the copy.
ZP_EXPORT ZPSparseIndexArray *ZPCopySparseIndexArrayWithZone(ZPSparseIndexArray *array, ZPZone *zone);
/// YES when both hold the same indexes.
ZP_EXPORT BOOL ZPCompareSparseIndexArrays(ZPSparseIndexArray *array1, ZPSparseIndexArray *array2);
/// The number of indexes.
ZP_EXPORT unsigned ZPCountSparseIndexArray(ZPSparseIndexArray *array);
/// Adds the indexes of a range. One that is not empty and whose end passes 0xFFFFFFFF raises ZPRangeException.
ZP_EXPORT void ZPSparseIndexArrayAddRange(ZPSparseIndexArray *array, ZPRange range);
/// Adds an index; 0xFFFFFFFF raises ZPRangeException.
ZP_EXPORT void ZPSparseIndexArrayAddIndex(ZPSparseIndexArray *array, unsigned index);
/// Removes those indexes of a range that are there.
ZP_EXPORT void ZPSparseIndexArrayRemoveRange(ZPSparseIndexArray *array, ZPRange range);
/// Removes an index, if it is there.
ZP_EXPORT void ZPSparseIndexArrayRemoveIndex(ZPSparseIndexArray *array, unsigned index);
/// YES when one stored range contains the whole range.
ZP_EXPORT BOOL ZPRangeInSparseIndexArray(ZPSparseIndexArray *array, ZPRange range);
/// Whether the index is there.
ZP_EXPORT BOOL ZPIndexInSparseIndexArray(ZPSparseIndexArray *array, unsigned index);

// Each stores an index through its last argument and answers YES, or answers NO when there is none.

/// The least index.
ZP_EXPORT BOOL ZPSparseIndexArrayFirstIndex(ZPSparseIndexArray *array, unsigned *index);
/// The least stored index above `index`.
ZP_EXPORT BOOL ZPSparseIndexArrayIndexSuccessor(ZPSparseIndexArray *array, unsigned index, unsigned *successor);
/// The greatest stored index below `index`.
ZP_EXPORT BOOL ZPSparseIndexArrayIndexPredecessor(ZPSparseIndexArray *array, unsigned index, unsigned *predecessor);
/// The stored index with n smaller ones.
ZP_EXPORT BOOL ZPSparseIndexArrayNthIndex(ZPSparseIndexArray *array, unsigned n, unsigned *index);

/// Every index, ascending: "(0, 1, 2, 9)"; an autoreleased mutable string.
ZP_EXPORT ZPString *ZPStringFromSparseIndexArray(ZPSparseIndexArray *array);
}
