// SPDX-License-Identifier: MIT
// Ordered collections of objects. The folder has arrays, dictionaries, sets and their enumerators. Other rooms of the
// library loop by Elements.h and make by Makers.h; the concrete classes' fields are the folder's own. Read this
// first, then Array.cpp: the other families are built alike.
#pragma once

#include <Bedrock/collections/ZPEnumerator.h>
#include <Bedrock/collections/ZPObjectList.h>

ZP_FORWARD(ZPDictionary);
ZP_FORWARD(ZPMutableArray);
ZP_FORWARD(ZPMutableData);
ZP_FORWARD(ZPData);
ZP_FORWARD(ZPString);

/// Compares two elements: negative, zero or positive as the first comes before, with or after the second. Gets the
/// context of the sorting operation. Must not change the array.
using ZPSortFunction = int(id, id, void *);

/// An ordered list of objects, which it retains; at most 134,217,727 of them, never null. A cluster: `alloc` gives
/// a private class that keeps the elements inside the object. A subclass supplies `count` and `objectAtIndex:`. An
/// index or range beyond the elements raises ZPRangeException, a null element ZPInvalidArgumentException; a null
/// array as argument counts as empty. Searches answer ZPNotFound when they find nothing, and never find null.
/// Arrays that are answered are autoreleased, elements borrowed. `copy` of a mutable array sends `copyWithZone:` to its
/// elements, and raises ZPInvalidArgumentException for one that does not implement it; an array of the elements
/// themselves is made by `arrayWithArray`. Immutable arrays may be read by several threads at once; a mutable one
/// belongs to one thread at a time.
struct ZPArray : ZPObject {
    ZP_CLASS(ZPArray)

    /// The empty array: one shared object.
    static ZPArray *array() ZP_CLASS_ASKS();
    /// The elements of another array.
    static ZPArray *arrayWithArray(ZPArray *array) ZP_CLASS_ASKS(array);
    /// The elements of another array; with `copyItems` their copies, which `copyWithZone:` makes.
    static ZPArray *arrayWithArray_copyItems(ZPArray *array, BOOL copyItems) ZP_CLASS_ASKS(array, copyItems);
    /// Reads a property list; null when the file cannot be read or holds no array.
    static ZPArray *arrayWithContentsOfFile(ZPString *path) ZP_CLASS_ASKS(path);
    /// One element.
    static ZPArray *arrayWithObject(id object) ZP_CLASS_ASKS(object);
    /// `count` elements from `objects` on.
    static ZPArray *arrayWithObjects_count(const id *objects, unsigned count) ZP_CLASS_ASKS(objects, count);
    /// The arguments as elements, up to the first null.
    template <class... A> static ZPArray *arrayWithObjects(A... objects) ZP_CLASS_ASKS_LIST(objects);

    /// `count` elements from `objects` on: the initialiser that a subclass supplies.
    ZPArray *initWithObjects_count(const id *objects, unsigned count) ZP_ASKS(objects, count);
    /// The arguments as elements, up to the first null.
    template <class... A> ZPArray *initWithObjects(A... objects) ZP_ASKS_LIST(objects);
    /// The elements of another array.
    ZPArray *initWithArray(ZPArray *array) ZP_ASKS(array);
    /// The same; with `copyItems` the elements' copies.
    ZPArray *initWithArray_copyItems(ZPArray *array, BOOL copyItems) ZP_ASKS(array, copyItems);
    /// Null when the file cannot be read or holds no array.
    ZPArray *initWithContentsOfFile(ZPString *path) ZP_ASKS(path);

    /// The number of elements.
    unsigned count() ZP_ASKS();
    /// The element at an index.
    id objectAtIndex(unsigned index) ZP_ASKS(index);
    /// Null when there is none.
    id lastObject() ZP_ASKS();
    /// Stores the elements, not retained, at `objects`, which has room for them.
    void getObjects(id *objects) ZP_TELLS(objects);
    /// The same for a range.
    void getObjects_range(id *objects, ZPRange range) ZP_TELLS(objects, range);

    /// Whether an element is identical or equal to the object.
    BOOL containsObject(id object) ZP_ASKS(object);
    /// The first index of the identical object, else the first of an equal one.
    unsigned indexOfObject(id object) ZP_ASKS(object);
    /// The same within a range; the answer counts from the array's beginning.
    unsigned indexOfObject_inRange(id object, ZPRange range) ZP_ASKS(object, range);
    /// The first index of the very object.
    unsigned indexOfObjectIdenticalTo(id object) ZP_ASKS(object);
    /// The same within a range.
    unsigned indexOfObjectIdenticalTo_inRange(id object, ZPRange range) ZP_ASKS(object, range);
    /// The search within a range for the very object, or also for an equal one.
    unsigned indexOfObject_range_identical(id object, ZPRange range, BOOL identical) ZP_ASKS(object, range, identical);
    /// Searches from `index` to the end, or back to 0; `indexOf:::`.
    unsigned indexOf(id object, int index, BOOL forward) ZP_ASKS_AS("indexOf:::", object, index, forward);
    /// The first index whose element answers the selector with something that `object` finds equal.
    unsigned indexOfAttributeBySelector_equalToObject(SEL selector, id object) ZP_ASKS(selector, object);
    /// The first element that the other array contains too, or null.
    id firstObjectCommonWithArray(ZPArray *array) ZP_ASKS(array);
    /// Equal elements in the same order.
    BOOL isEqualToArray(ZPArray *array) ZP_ASKS(array);

    /// The elements with one more behind them.
    ZPArray *arrayByAddingObject(id object) ZP_ASKS(object);
    /// The elements with `count` more behind them.
    ZPArray *arrayByAddingObjects_count(const id *objects, unsigned count) ZP_ASKS(objects, count);
    /// The elements with those of another array behind them.
    ZPArray *arrayByAddingObjectsFromArray(ZPArray *array) ZP_ASKS(array);
    /// What the elements answer the selector with, nulls left out.
    ZPArray *arrayByApplyingSelector(SEL selector) ZP_ASKS(selector);
    /// The elements to which no element of the other array is equal.
    ZPArray *arrayByExcludingObjectsInArray(ZPArray *array) ZP_ASKS(array);
    /// The elements that are not themselves in the other array.
    ZPArray *arrayByExcludingIdenticalObjectsInArray(ZPArray *array) ZP_ASKS(array);
    /// The one or the other.
    ZPArray *arrayByExcludingObjectsInArray_identical(ZPArray *array, BOOL identical) ZP_ASKS(array, identical);
    /// The elements of a range.
    ZPArray *subarrayWithRange(ZPRange range) ZP_ASKS(range);
    /// The descriptions of the elements with the separator (null: nothing) between them.
    ZPString *componentsJoinedByString(ZPString *separator) ZP_ASKS(separator);
    /// ZPArrayPathExtensions: the paths whose extension is among the given ones, in order.
    ZPArray *pathsMatchingExtensions(ZPArray *extensions) ZP_ASKS(extensions);

    /// Sends a selector without arguments to every element in index order.
    void makeObjectsPerform(SEL selector) ZP_TELLS(selector);
    /// Sends a selector with one argument to every element in index order.
    void makeObjectsPerform_withObject(SEL selector, id object) ZP_TELLS(selector, object);
    /// As `makeObjectsPerform`.
    void makeObjectsPerformSelector(SEL selector) ZP_TELLS(selector);
    /// As `makeObjectsPerform_withObject`.
    void makeObjectsPerformSelector_withObject(SEL selector, id object) ZP_TELLS(selector, object);

    /// Enumerates the elements in index order; autoreleased.
    ZPEnumerator *objectEnumerator() ZP_ASKS();
    /// Enumerates from the last element to the first; autoreleased.
    ZPEnumerator *reverseObjectEnumerator() ZP_ASKS();

    /// The elements in ascending order; equal elements keep their order.
    ZPArray *sortedArrayUsingFunction_context(ZPSortFunction *function, void *context) ZP_ASKS(function, context);
    /// The elements in ascending order, equal ones in theirs; the selector is sent to one element with another and
    /// answers a comparison result.
    ZPArray *sortedArrayUsingSelector(SEL selector) ZP_ASKS(selector);
    /// A memory of the receiver's order that speeds up sorting a similar array: the elements' hashes.
    ZPData *sortedArrayHint() ZP_ASKS();
    /// Sorts with such a memory, which may be null.
    ZPArray *sortedArrayUsingFunction_context_hint(ZPSortFunction *function, void *context, ZPData *hint)
        ZP_ASKS(function, context, hint);
    /// The same by a selector.
    ZPArray *sortedArrayUsingSelector_hint(SEL selector, ZPData *hint) ZP_ASKS(selector, hint);

    /// Property-list text; numbers and dates take the locale (may be null).
    ZPString *descriptionWithLocale(ZPDictionary *locale) ZP_ASKS(locale);
    /// The same for an array that lies `level` levels deep.
    ZPString *descriptionWithLocale_indent(ZPDictionary *locale, unsigned level) ZP_ASKS(locale, level);
    /// Writes the description; with `atomically` the file is there whole or not at all. NO when it fails.
    BOOL writeToFile_atomically(ZPString *path, BOOL atomically) ZP_ASKS(path, atomically);
};

/// An array that can change. A subclass supplies the array's primitives and `addObject:`, `insertObject:atIndex:`,
/// `removeLastObject`, `removeObjectAtIndex:` and `replaceObjectAtIndex:withObject:`. What raises for its arguments
/// changes nothing. Growing raises ZPMallocException when there is no memory.
struct ZPMutableArray : ZPArray {
    ZP_CLASS(ZPMutableArray)

    /// A new, empty array.
    static ZPMutableArray *array() ZP_CLASS_ASKS();
    /// Empty, with room for `capacity` elements; more fit as well. A capacity above 134,217,727 raises
    /// ZPInvalidArgumentException.
    static ZPMutableArray *arrayWithCapacity(unsigned capacity) ZP_CLASS_ASKS(capacity);
    ///@{
    /// As ZPArray makes them, but to be changed.
    static ZPMutableArray *arrayWithArray(ZPArray *array) ZP_CLASS_ASKS(array);
    static ZPMutableArray *arrayWithArray_copyItems(ZPArray *array, BOOL copyItems) ZP_CLASS_ASKS(array, copyItems);
    static ZPMutableArray *arrayWithContentsOfFile(ZPString *path) ZP_CLASS_ASKS(path);
    static ZPMutableArray *arrayWithObject(id object) ZP_CLASS_ASKS(object);
    static ZPMutableArray *arrayWithObjects_count(const id *objects, unsigned count) ZP_CLASS_ASKS(objects, count);
    template <class... A> static ZPMutableArray *arrayWithObjects(A... objects) ZP_CLASS_ASKS_LIST(objects);
    ///@}

    /// Empty, with room for `capacity` elements: the second initialiser that a subclass supplies.
    ZPMutableArray *initWithCapacity(unsigned capacity) ZP_ASKS(capacity);

    /// Adds behind the last element.
    void addObject(id object) ZP_TELLS(object);
    /// Inserts before an index, which may be the count.
    void insertObject_atIndex(id object, unsigned index) ZP_TELLS(object, index);
    /// Puts an object in the place of an element, which is released.
    void replaceObjectAtIndex_withObject(unsigned index, id object) ZP_TELLS(index, object);
    /// Removes the last element; an empty array raises ZPRangeException.
    void removeLastObject() ZP_TELLS();
    /// Removes the element at an index.
    void removeObjectAtIndex(unsigned index) ZP_TELLS(index);
    /// Removes every element, the last one first; the room for them stays.
    void removeAllObjects() ZP_TELLS();
    /// Adds the elements of an array, also of the receiver, behind the last one.
    void addObjectsFromArray(ZPArray *array) ZP_TELLS(array);
    /// Has two elements change places.
    void exchangeObjectAtIndex_withObjectAtIndex(unsigned index1, unsigned index2) ZP_TELLS(index1, index2);
    /// Puts the elements of the other array, which may be more or fewer, in the place of the range.
    void replaceObjectsInRange_withObjectsFromArray(ZPRange range, ZPArray *array) ZP_TELLS(range, array);
    /// The same with the elements of a range of the other array.
    void replaceObjectsInRange_withObjectsFromArray_range(ZPRange range, ZPArray *array, ZPRange arrayRange)
        ZP_TELLS(range, array, arrayRange);
    /// Removes every element that is identical or equal to the object; nothing when there is none. Ends when the
    /// object has lost its last reference by that.
    void removeObject(id object) ZP_TELLS(object);
    /// The same within a range.
    void removeObject_inRange(id object, ZPRange range) ZP_TELLS(object, range);
    /// Removes the very object wherever it is.
    void removeObjectIdenticalTo(id object) ZP_TELLS(object);
    /// The same within a range.
    void removeObjectIdenticalTo_inRange(id object, ZPRange range) ZP_TELLS(object, range);
    /// The removal within a range of the very object, or also of equal ones.
    void removeObject_range_identical(id object, ZPRange range, BOOL identical) ZP_TELLS(object, range, identical);
    /// Removes the elements of a range, the last one first.
    void removeObjectsInRange(ZPRange range) ZP_TELLS(range);
    /// Removes by `count` indexes. Ascending ones are removed from the last to the first, an equal one as often as
    /// it is there; others, once each, from the greatest to the least. An index beyond the elements raises
    /// ZPRangeException.
    void removeObjectsFromIndices_numIndices(const unsigned *indices, unsigned count) ZP_TELLS(indices, count);
    /// Removes every element that is equal to one of the other array.
    void removeObjectsInArray(ZPArray *array) ZP_TELLS(array);
    /// Takes the elements of an array in the place of its own.
    void setArray(ZPArray *array) ZP_TELLS(array);

    /// Sorts in place; equal elements keep their order. What the function raises leaves the order as it was.
    void sortUsingFunction_context(ZPSortFunction *function, void *context) ZP_TELLS(function, context);
    /// The same by a selector, which is sent to one element with another and answers a comparison result.
    void sortUsingSelector(SEL selector) ZP_TELLS(selector);
};

extern "C" {
/// Sorts `count` references stably and answers the list that holds them in order: `source` or `result`, each
/// with room for `count`, as is `scratch`. `checkPresorted` skips merges of halves that are in order already.
ZP_EXPORT id *_ZPMergeSort(unsigned count, id *source, id *result, id *scratch, ZPSortFunction *compare, void *context,
                           BOOL checkPresorted);
}
