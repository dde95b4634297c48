// SPDX-License-Identifier: MIT
// Ranges that carry a value each, whose ownership the caller chooses.
#pragma once

#include <Bedrock/tables/ZPRangeArray.h>

struct ZPRangeValueArray;

/// What an array does with its values. Any function may be null. They must not change the array.
struct ZPRangeValueCallBacks {
    /// Whether two values may merge; null: only identical ones.
    BOOL (*isEqual)(ZPRangeValueArray *array, const void *value1, const void *value2);
    /// Called for what enters the array; null: nothing.
    void (*retain)(ZPRangeValueArray *array, const void *value);
    /// Called for what leaves it; null: nothing.
    void (*release)(ZPRangeValueArray *array, void *value);
    /// A value's text for people; null: the value in hexadecimal.
    ZPString *(*describe)(ZPRangeValueArray *array, const void *value);
};

/// A list of ranges with values (integers, pointers or objects). It is edited either by position, or, when sorted,
/// by adding ranges that merge with their neighbours. Owned by its maker, who frees it and uses it from one thread
/// at a time. Change it only through the functions below. Growing raises ZPMallocException when there is no memory.
struct ZPRangeValueArray {
    ZPRangeArray list;  ///< the ranges
    void **values;  ///< as many as the list has room for
    ZPRangeValueCallBacks callBacks;  ///< the copied record
    BOOL sorted;  ///< how it is edited
};

extern "C" {
/// Integers of a word.
ZP_EXPORT extern const ZPRangeValueCallBacks ZPIntRangeValueCallBacks;
/// Pointers that the array does not own.
ZP_EXPORT extern const ZPRangeValueCallBacks ZPNonOwnedPointerRangeValueCallBacks;
/// Pointers from `malloc`, which are freed when they leave the array.
ZP_EXPORT extern const ZPRangeValueCallBacks ZPOwnedPointerRangeValueCallBacks;
/// Objects, equal by `isEqual:`, that the array does not own.
ZP_EXPORT extern const ZPRangeValueCallBacks ZPNonRetainedObjectRangeValueCallBacks;
/// Retained objects, equal by `isEqual:`.
ZP_EXPORT extern const ZPRangeValueCallBacks ZPObjectRangeValueCallBacks;

/// An empty array in a zone (null: the default zone). Copies the record; the mode stays for life.
ZP_EXPORT ZPRangeValueArray *ZPCreateRangeValueArrayWithZone(ZPRangeValueCallBacks callBacks, unsigned capacity,
                                                             BOOL sorted, ZPZone *zone);
/// The same in the default zone.
ZP_EXPORT ZPRangeValueArray *ZPCreateRangeValueArray(ZPRangeValueCallBacks callBacks, unsigned capacity, BOOL sorted);
/// Frees the array and leaves the values as they are: reset it first to have them released.
ZP_EXPORT void ZPFreeRangeValueArray(ZPRangeValueArray *array);
/// Releases every value, the last one first, and empties the array.
ZP_EXPORT void ZPResetRangeValueArray(ZPRangeValueArray *array);
/// The number of entries.
ZP_EXPORT unsigned ZPCountRangeValueArray(ZPRangeValueArray *array);
/// YES when both hold equal ranges with equal values (by the first's function) in the same order.
ZP_EXPORT BOOL ZPCompareRangeValueArrays(ZPRangeValueArray *array1, ZPRangeValueArray *array2);
/// Retains every value; the caller frees the copy.
ZP_EXPORT ZPRangeValueArray *ZPCopyRangeValueArrayWithZone(ZPRangeValueArray *array, ZPZone *zone);
/// The range at an index. An index at or beyond the count raises ZPRangeException here and below.
ZP_EXPORT ZPRange ZPRangeValueArrayRangeAtIndex(ZPRangeValueArray *array, unsigned index);
/// The value at an index, borrowed.
ZP_EXPORT void *ZPRangeValueArrayValueAtIndex(ZPRangeValueArray *array, unsigned index);

// Editing by position. Raises ZPGenericException when the array is sorted.

/// Replaces the range at an index.
ZP_EXPORT void ZPRangeValueArraySetRangeAtIndex(ZPRangeValueArray *array, ZPRange range, unsigned index);
/// Retains the value, and releases the one in whose place it comes.
ZP_EXPORT void ZPRangeValueArraySetValueAtIndex(ZPRangeValueArray *array, const void *value, unsigned index);
/// Retains the value and inserts an entry before an index, which may be the count.
ZP_EXPORT void ZPRangeValueArrayInsertAtIndex(ZPRangeValueArray *array, ZPRange range, const void *value,
                                              unsigned index);
/// Removes an entry and releases its value.
ZP_EXPORT void ZPRangeValueArrayRemoveAtIndex(ZPRangeValueArray *array, unsigned index);
/// Removes the entries whose value is equal. In a sorted array without any it does nothing.
ZP_EXPORT void ZPRangeValueArrayRemoveRangesWithValue(ZPRangeValueArray *array, const void *value);

// Editing a sorted array. Raises ZPGenericException when the array is not sorted.

/// Adds a range; it merges with entries that it overlaps or touches and whose value is equal, or whatever their
/// value when `mergeByRange`. The merged entry has the new value. Entries that overlap the range and do not merge
/// stay as they are. A range whose end passes 0xFFFFFFFF raises ZPRangeException.
ZP_EXPORT void ZPRangeValueArrayAddRangeValue(ZPRangeValueArray *array, ZPRange range, const void *value,
                                              BOOL mergeByRange);
/// Does nothing but log that, and raises as above.
ZP_EXPORT void ZPRangeValueArrayRemoveRange(ZPRangeValueArray *array, ZPRange range);

// In either mode.

/// Whether a range contains the location; its value goes through `value` unless that is null. Of several the
/// last entry answers; in a sorted array that holds overlapping ranges, one at or just before the location.
ZP_EXPORT BOOL ZPRangeValueArrayValueForLocation(ZPRangeValueArray *array, unsigned location, void **value);
/// Gives every entry with a value equal to `oldValue` the new one.
ZP_EXPORT void ZPRangeValueArrayChangeValueToValue(ZPRangeValueArray *array, const void *oldValue,
                                                   const void *newValue);
/// A line "    {location, length} = <value>" for each entry, in parentheses; an autoreleased mutable string.
ZP_EXPORT ZPString *ZPStringFromRangeValueArray(ZPRangeValueArray *array);
}
