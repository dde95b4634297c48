// SPDX-License-Identifier: MIT
// Ordered collections of objects. The folder has arrays, dictionaries, sets and their enumerators. Other rooms of the
// library loop by ZPElements.h and make by ZPMakers.h; the concrete classes' fields are the folder's own. Read this
// first, then ZPArray.cpp: the other families are built alike.
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
    static ZPArray *array() { return objc_msgSend<ZPArray *>(class_(), "array"_sel); }
    /// The elements of another array.
    static ZPArray *arrayWithArray(ZPArray *array) {
        return objc_msgSend<ZPArray *>(class_(), "arrayWithArray:"_sel, array);
    }
    /// The elements of another array; with `copyItems` their copies, which `copyWithZone:` makes.
    static ZPArray *arrayWithArray_copyItems(ZPArray *array, BOOL copyItems) {
        return objc_msgSend<ZPArray *>(class_(), "arrayWithArray:copyItems:"_sel, array, copyItems);
    }
    /// Reads a property list; null when the file cannot be read or holds no array.
    static ZPArray *arrayWithContentsOfFile(ZPString *path) {
        return objc_msgSend<ZPArray *>(class_(), "arrayWithContentsOfFile:"_sel, path);
    }
    /// One element.
    static ZPArray *arrayWithObject(id object) {
        return objc_msgSend<ZPArray *>(class_(), "arrayWithObject:"_sel, object);
    }
    /// `count` elements from `objects` on.
    static ZPArray *arrayWithObjects_count(const id *objects, unsigned count) {
        return objc_msgSend<ZPArray *>(class_(), "arrayWithObjects:count:"_sel, objects, count);
    }
    /// The arguments as elements, up to the first null.
    template <class... A> static ZPArray *arrayWithObjects(A... objects) {
        return objc_sendObjectList<ZPArray *>(class_(), "arrayWithObjects:"_sel, objects...);
    }

    /// `count` elements from `objects` on: the initialiser that a subclass supplies.
    ZPArray *initWithObjects_count(const id *objects, unsigned count) {
        return objc_msgSend<ZPArray *>(this, "initWithObjects:count:"_sel, objects, count);
    }
    /// The arguments as elements, up to the first null.
    template <class... A> ZPArray *initWithObjects(A... objects) {
        return objc_sendObjectList<ZPArray *>(this, "initWithObjects:"_sel, objects...);
    }
    /// The elements of another array.
    ZPArray *initWithArray(ZPArray *array) { return objc_msgSend<ZPArray *>(this, "initWithArray:"_sel, array); }
    /// The same; with `copyItems` the elements' copies.
    ZPArray *initWithArray_copyItems(ZPArray *array, BOOL copyItems) {
        return objc_msgSend<ZPArray *>(this, "initWithArray:copyItems:"_sel, array, copyItems);
    }
    /// Null when the file cannot be read or holds no array.
    ZPArray *initWithContentsOfFile(ZPString *path) {
        return objc_msgSend<ZPArray *>(this, "initWithContentsOfFile:"_sel, path);
    }

    /// The number of elements.
    unsigned count() { return objc_msgSend<unsigned>(this, "count"_sel); }
    /// The element at an index.
    id objectAtIndex(unsigned index) { return objc_msgSend<id>(this, "objectAtIndex:"_sel, index); }
    /// Null when there is none.
    id lastObject() { return objc_msgSend<id>(this, "lastObject"_sel); }
    /// Stores the elements, not retained, at `objects`, which has room for them.
    void getObjects(id *objects) { objc_msgSend(this, "getObjects:"_sel, objects); }
    /// The same for a range.
    void getObjects_range(id *objects, ZPRange range) { objc_msgSend(this, "getObjects:range:"_sel, objects, range); }

    /// Whether an element is identical or equal to the object.
    BOOL containsObject(id object) { return objc_msgSend<BOOL>(this, "containsObject:"_sel, object); }
    /// The first index of the identical object, else the first of an equal one.
    unsigned indexOfObject(id object) { return objc_msgSend<unsigned>(this, "indexOfObject:"_sel, object); }
    /// The same within a range; the answer counts from the array's beginning.
    unsigned indexOfObject_inRange(id object, ZPRange range) {
        return objc_msgSend<unsigned>(this, "indexOfObject:inRange:"_sel, object, range);
    }
    /// The first index of the very object.
    unsigned indexOfObjectIdenticalTo(id object) {
        return objc_msgSend<unsigned>(this, "indexOfObjectIdenticalTo:"_sel, object);
    }
    /// The same within a range.
    unsigned indexOfObjectIdenticalTo_inRange(id object, ZPRange range) {
        return objc_msgSend<unsigned>(this, "indexOfObjectIdenticalTo:inRange:"_sel, object, range);
    }
    /// The search within a range for the very object, or also for an equal one.
    unsigned indexOfObject_range_identical(id object, ZPRange range, BOOL identical) {
        return objc_msgSend<unsigned>(this, "indexOfObject:range:identical:"_sel, object, range, identical);
    }
    /// Searches from `index` to the end, or back to 0; `indexOf:::`.
    unsigned indexOf(id object, int index, BOOL forward) {
        return objc_msgSend<unsigned>(this, "indexOf:::"_sel, object, index, forward);
    }
    /// The first index whose element answers the selector with something that `object` finds equal.
    unsigned indexOfAttributeBySelector_equalToObject(SEL selector, id object) {
        return objc_msgSend<unsigned>(this, "indexOfAttributeBySelector:equalToObject:"_sel, selector, object);
    }
    /// The first element that the other array contains too, or null.
    id firstObjectCommonWithArray(ZPArray *array) {
        return objc_msgSend<id>(this, "firstObjectCommonWithArray:"_sel, array);
    }
    /// Equal elements in the same order.
    BOOL isEqualToArray(ZPArray *array) { return objc_msgSend<BOOL>(this, "isEqualToArray:"_sel, array); }

    /// The elements with one more behind them.
    ZPArray *arrayByAddingObject(id object) {
        return objc_msgSend<ZPArray *>(this, "arrayByAddingObject:"_sel, object);
    }
    /// The elements with `count` more behind them.
    ZPArray *arrayByAddingObjects_count(const id *objects, unsigned count) {
        return objc_msgSend<ZPArray *>(this, "arrayByAddingObjects:count:"_sel, objects, count);
    }
    /// The elements with those of another array behind them.
    ZPArray *arrayByAddingObjectsFromArray(ZPArray *array) {
        return objc_msgSend<ZPArray *>(this, "arrayByAddingObjectsFromArray:"_sel, array);
    }
    /// What the elements answer the selector with, nulls left out.
    ZPArray *arrayByApplyingSelector(SEL selector) {
        return objc_msgSend<ZPArray *>(this, "arrayByApplyingSelector:"_sel, selector);
    }
    /// The elements to which no element of the other array is equal.
    ZPArray *arrayByExcludingObjectsInArray(ZPArray *array) {
        return objc_msgSend<ZPArray *>(this, "arrayByExcludingObjectsInArray:"_sel, array);
    }
    /// The elements that are not themselves in the other array.
    ZPArray *arrayByExcludingIdenticalObjectsInArray(ZPArray *array) {
        return objc_msgSend<ZPArray *>(this, "arrayByExcludingIdenticalObjectsInArray:"_sel, array);
    }
    /// The one or the other.
    ZPArray *arrayByExcludingObjectsInArray_identical(ZPArray *array, BOOL identical) {
        return objc_msgSend<ZPArray *>(this, "arrayByExcludingObjectsInArray:identical:"_sel, array, identical);
    }
    /// The elements of a range.
    ZPArray *subarrayWithRange(ZPRange range) { return objc_msgSend<ZPArray *>(this, "subarrayWithRange:"_sel, range); }
    /// The descriptions of the elements with the separator (null: nothing) between them.
    ZPString *componentsJoinedByString(ZPString *separator) {
        return objc_msgSend<ZPString *>(this, "componentsJoinedByString:"_sel, separator);
    }
    /// ZPArrayPathExtensions: the paths whose extension is among the given ones, in order.
    ZPArray *pathsMatchingExtensions(ZPArray *extensions) {
        return objc_msgSend<ZPArray *>(this, "pathsMatchingExtensions:"_sel, extensions);
    }

    /// Sends a selector without arguments to every element in index order.
    void makeObjectsPerform(SEL selector) { objc_msgSend(this, "makeObjectsPerform:"_sel, selector); }
    /// Sends a selector with one argument to every element in index order.
    void makeObjectsPerform_withObject(SEL selector, id object) {
        objc_msgSend(this, "makeObjectsPerform:withObject:"_sel, selector, object);
    }
    /// As `makeObjectsPerform`.
    void makeObjectsPerformSelector(SEL selector) { objc_msgSend(this, "makeObjectsPerformSelector:"_sel, selector); }
    /// As `makeObjectsPerform_withObject`.
    void makeObjectsPerformSelector_withObject(SEL selector, id object) {
        objc_msgSend(this, "makeObjectsPerformSelector:withObject:"_sel, selector, object);
    }

    /// Enumerates the elements in index order; autoreleased.
    ZPEnumerator *objectEnumerator() { return objc_msgSend<ZPEnumerator *>(this, "objectEnumerator"_sel); }
    /// Enumerates from the last element to the first; autoreleased.
    ZPEnumerator *reverseObjectEnumerator() {
        return objc_msgSend<ZPEnumerator *>(this, "reverseObjectEnumerator"_sel);
    }

    /// The elements in ascending order; equal elements keep their order.
    ZPArray *sortedArrayUsingFunction_context(ZPSortFunction *function, void *context) {
        return objc_msgSend<ZPArray *>(this, "sortedArrayUsingFunction:context:"_sel, function, context);
    }
    /// The elements in ascending order, equal ones in theirs; the selector is sent to one element with another and
    /// answers a comparison result.
    ZPArray *sortedArrayUsingSelector(SEL selector) {
        return objc_msgSend<ZPArray *>(this, "sortedArrayUsingSelector:"_sel, selector);
    }
    /// A memory of the receiver's order that speeds up sorting a similar array: the elements' hashes.
    ZPData *sortedArrayHint() { return objc_msgSend<ZPData *>(this, "sortedArrayHint"_sel); }
    /// Sorts with such a memory, which may be null.
    ZPArray *sortedArrayUsingFunction_context_hint(ZPSortFunction *function, void *context, ZPData *hint) {
        return objc_msgSend<ZPArray *>(this, "sortedArrayUsingFunction:context:hint:"_sel, function, context, hint);
    }
    /// The same by a selector.
    ZPArray *sortedArrayUsingSelector_hint(SEL selector, ZPData *hint) {
        return objc_msgSend<ZPArray *>(this, "sortedArrayUsingSelector:hint:"_sel, selector, hint);
    }

    /// Property-list text; numbers and dates take the locale (may be null).
    ZPString *descriptionWithLocale(ZPDictionary *locale) {
        return objc_msgSend<ZPString *>(this, "descriptionWithLocale:"_sel, locale);
    }
    /// The same for an array that lies `level` levels deep.
    ZPString *descriptionWithLocale_indent(ZPDictionary *locale, unsigned level) {
        return objc_msgSend<ZPString *>(this, "descriptionWithLocale:indent:"_sel, locale, level);
    }
    /// Writes the description; with `atomically` the file is there whole or not at all. NO when it fails.
    BOOL writeToFile_atomically(ZPString *path, BOOL atomically) {
        return objc_msgSend<BOOL>(this, "writeToFile:atomically:"_sel, path, atomically);
    }
};

/// An array that can change. A subclass supplies the array's primitives and `addObject:`, `insertObject:atIndex:`,
/// `removeLastObject`, `removeObjectAtIndex:` and `replaceObjectAtIndex:withObject:`. What raises for its arguments
/// changes nothing. Growing raises ZPMallocException when there is no memory.
struct ZPMutableArray : ZPArray {
    ZP_CLASS(ZPMutableArray)

    /// A new, empty array.
    static ZPMutableArray *array() { return objc_msgSend<ZPMutableArray *>(class_(), "array"_sel); }
    /// Empty, with room for `capacity` elements; more fit as well. A capacity above 134,217,727 raises
    /// ZPInvalidArgumentException.
    static ZPMutableArray *arrayWithCapacity(unsigned capacity) {
        return objc_msgSend<ZPMutableArray *>(class_(), "arrayWithCapacity:"_sel, capacity);
    }
    ///@{
    /// As ZPArray makes them, but to be changed.
    static ZPMutableArray *arrayWithArray(ZPArray *array) {
        return objc_msgSend<ZPMutableArray *>(class_(), "arrayWithArray:"_sel, array);
    }
    static ZPMutableArray *arrayWithArray_copyItems(ZPArray *array, BOOL copyItems) {
        return objc_msgSend<ZPMutableArray *>(class_(), "arrayWithArray:copyItems:"_sel, array, copyItems);
    }
    static ZPMutableArray *arrayWithContentsOfFile(ZPString *path) {
        return objc_msgSend<ZPMutableArray *>(class_(), "arrayWithContentsOfFile:"_sel, path);
    }
    static ZPMutableArray *arrayWithObject(id object) {
        return objc_msgSend<ZPMutableArray *>(class_(), "arrayWithObject:"_sel, object);
    }
    static ZPMutableArray *arrayWithObjects_count(const id *objects, unsigned count) {
        return objc_msgSend<ZPMutableArray *>(class_(), "arrayWithObjects:count:"_sel, objects, count);
    }
    template <class... A> static ZPMutableArray *arrayWithObjects(A... objects) {
        return objc_sendObjectList<ZPMutableArray *>(class_(), "arrayWithObjects:"_sel, objects...);
    }
    ///@}

    /// Empty, with room for `capacity` elements: the second initialiser that a subclass supplies.
    ZPMutableArray *initWithCapacity(unsigned capacity) {
        return objc_msgSend<ZPMutableArray *>(this, "initWithCapacity:"_sel, capacity);
    }

    /// Adds behind the last element.
    void addObject(id object) { objc_msgSend(this, "addObject:"_sel, object); }
    /// Inserts before an index, which may be the count.
    void insertObject_atIndex(id object, unsigned index) {
        objc_msgSend(this, "insertObject:atIndex:"_sel, object, index);
    }
    /// Puts an object in the place of an element, which is released.
    void replaceObjectAtIndex_withObject(unsigned index, id object) {
        objc_msgSend(this, "replaceObjectAtIndex:withObject:"_sel, index, object);
    }
    /// Removes the last element; an empty array raises ZPRangeException.
    void removeLastObject() { objc_msgSend(this, "removeLastObject"_sel); }
    /// Removes the element at an index.
    void removeObjectAtIndex(unsigned index) { objc_msgSend(this, "removeObjectAtIndex:"_sel, index); }
    /// Removes every element, the last one first; the room for them stays.
    void removeAllObjects() { objc_msgSend(this, "removeAllObjects"_sel); }
    /// Adds the elements of an array, also of the receiver, behind the last one.
    void addObjectsFromArray(ZPArray *array) { objc_msgSend(this, "addObjectsFromArray:"_sel, array); }
    /// Has two elements change places.
    void exchangeObjectAtIndex_withObjectAtIndex(unsigned index1, unsigned index2) {
        objc_msgSend(this, "exchangeObjectAtIndex:withObjectAtIndex:"_sel, index1, index2);
    }
    /// Puts the elements of the other array, which may be more or fewer, in the place of the range.
    void replaceObjectsInRange_withObjectsFromArray(ZPRange range, ZPArray *array) {
        objc_msgSend(this, "replaceObjectsInRange:withObjectsFromArray:"_sel, range, array);
    }
    /// The same with the elements of a range of the other array.
    void replaceObjectsInRange_withObjectsFromArray_range(ZPRange range, ZPArray *array, ZPRange arrayRange) {
        objc_msgSend(this, "replaceObjectsInRange:withObjectsFromArray:range:"_sel, range, array, arrayRange);
    }
    /// Removes every element that is identical or equal to the object; nothing when there is none. Ends when the
    /// object has lost its last reference by that.
    void removeObject(id object) { objc_msgSend(this, "removeObject:"_sel, object); }
    /// The same within a range.
    void removeObject_inRange(id object, ZPRange range) {
        objc_msgSend(this, "removeObject:inRange:"_sel, object, range);
    }
    /// Removes the very object wherever it is.
    void removeObjectIdenticalTo(id object) { objc_msgSend(this, "removeObjectIdenticalTo:"_sel, object); }
    /// The same within a range.
    void removeObjectIdenticalTo_inRange(id object, ZPRange range) {
        objc_msgSend(this, "removeObjectIdenticalTo:inRange:"_sel, object, range);
    }
    /// The removal within a range of the very object, or also of equal ones.
    void removeObject_range_identical(id object, ZPRange range, BOOL identical) {
        objc_msgSend(this, "removeObject:range:identical:"_sel, object, range, identical);
    }
    /// Removes the elements of a range, the last one first.
    void removeObjectsInRange(ZPRange range) { objc_msgSend(this, "removeObjectsInRange:"_sel, range); }
    /// Removes by `count` indexes. Ascending ones are removed from the last to the first, an equal one as often as
    /// it is there; others, once each, from the greatest to the least. An index beyond the elements raises
    /// ZPRangeException.
    void removeObjectsFromIndices_numIndices(const unsigned *indices, unsigned count) {
        objc_msgSend(this, "removeObjectsFromIndices:numIndices:"_sel, indices, count);
    }
    /// Removes every element that is equal to one of the other array.
    void removeObjectsInArray(ZPArray *array) { objc_msgSend(this, "removeObjectsInArray:"_sel, array); }
    /// Takes the elements of an array in the place of its own.
    void setArray(ZPArray *array) { objc_msgSend(this, "setArray:"_sel, array); }

    /// Sorts in place; equal elements keep their order. What the function raises leaves the order as it was.
    void sortUsingFunction_context(ZPSortFunction *function, void *context) {
        objc_msgSend(this, "sortUsingFunction:context:"_sel, function, context);
    }
    /// The same by a selector, which is sent to one element with another and answers a comparison result.
    void sortUsingSelector(SEL selector) { objc_msgSend(this, "sortUsingSelector:"_sel, selector); }
};

extern "C" {
/// Sorts `count` references stably and answers the list that holds them in order: `source` or `result`, each
/// with room for `count`, as is `scratch`. `checkPresorted` skips merges of halves that are in order already.
ZP_EXPORT id *_ZPMergeSort(unsigned count, id *source, id *result, id *scratch, ZPSortFunction *compare, void *context,
                           BOOL checkPresorted);
}
