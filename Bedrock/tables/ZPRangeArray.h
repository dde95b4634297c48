// SPDX-License-Identifier: MIT
// Growable lists of ranges, edited by position.
#pragma once

#include <Bedrock/core/ZPRange.h>
#include <Bedrock/platform/ZPZone.h>

ZP_FORWARD(ZPString);

/// A list of ranges. Owned by its maker, who frees it and uses it from one thread at a time. Change it only through
/// the functions below. Growing raises ZPMallocException when there is no memory.
struct ZPRangeArray {
    ZPRange *ranges;  ///< in order of their positions
    unsigned count;  ///< of the ranges
    unsigned capacity;  ///< in ranges
};

// An index at or beyond the count, or beyond it where a range is inserted, raises ZPRangeException; growing
// raises ZPMallocException when there is no memory.
extern "C" {
/// An empty list in a zone (null: the default zone). Its capacity is the next multiple of 4 above the request.
ZP_EXPORT ZPRangeArray *ZPCreateRangeArrayWithZone(unsigned capacity, ZPZone *zone);
/// The same in the default zone.
ZP_EXPORT ZPRangeArray *ZPCreateRangeArray(unsigned capacity);
/// Frees the list, which must not be null.
ZP_EXPORT void ZPFreeRangeArray(ZPRangeArray *array);
/// Empties the list and keeps its capacity.
ZP_EXPORT void ZPResetRangeArray(ZPRangeArray *array);
/// The number of ranges.
ZP_EXPORT unsigned ZPCountRangeArray(ZPRangeArray *array);
/// The range at an index; one at or beyond the count raises ZPRangeException.
ZP_EXPORT ZPRange ZPRangeArrayRangeAtIndex(ZPRangeArray *array, unsigned index);
/// Replaces the range at an index; one at or beyond the count raises ZPRangeException.
ZP_EXPORT void ZPRangeArraySetRangeAtIndex(ZPRangeArray *array, ZPRange range, unsigned index);
/// Inserts before an index, or behind the last range; an index beyond the count raises ZPRangeException. A full
/// list doubles its capacity.
ZP_EXPORT void ZPRangeArrayInsertRangeAtIndex(ZPRangeArray *array, ZPRange range, unsigned index);
/// Removes the range at an index; one at or beyond the count raises ZPRangeException. A list that is less than half
/// full first gives half its capacity back.
ZP_EXPORT void ZPRangeArrayRemoveRangeAtIndex(ZPRangeArray *array, unsigned index);
/// YES when both hold equal ranges in the same order.
ZP_EXPORT BOOL ZPCompareRangeArrays(ZPRangeArray *array1, ZPRangeArray *array2);
/// The caller frees the copy.
ZP_EXPORT ZPRangeArray *ZPCopyRangeArrayWithZone(ZPRangeArray *array, ZPZone *zone);
/// A line "    {location, length}" for each range, in parentheses; an autoreleased mutable string.
ZP_EXPORT ZPString *ZPStringFromRangeArray(ZPRangeArray *array);
}
