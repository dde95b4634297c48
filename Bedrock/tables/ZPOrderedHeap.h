// SPDX-License-Identifier: MIT
// Binary min-heaps of words whose order the caller chooses.
#pragma once

#include <Bedrock/platform/ZPZone.h>

struct ZPOrderedHeap;

/// An integer or a pointer.
using ZPHeapElement = std::intptr_t;
/// Negative when a orders before b, 0 when they are equal, positive when a orders after b.
using ZPHeapComparison = int (*)(ZPOrderedHeap *heap, ZPHeapElement a, ZPHeapElement b);

/// A heap: no element orders before its parent, which is at (i - 1) / 2. Owned by its maker, who frees it and uses
/// it from one thread at a time; the elements are not owned. Change it only through the functions below; the
/// comparison must not.
struct ZPOrderedHeap {
    ZPHeapComparison comparison;  ///< never null
    unsigned count;  ///< of the elements
    unsigned capacity;  ///< in elements
    ZPHeapElement *storage;  ///< null while the capacity is 0
};

extern "C" {
/// A heap with room for `capacity` elements in a zone (null: the default zone). A null comparison orders integers
/// of 32 bits by their difference with wrap-around, other words likewise by their full width. This and adding
/// raise ZPMallocException when there is no memory, and beyond 4,294,967,295 elements.
ZP_EXPORT ZPOrderedHeap *ZPCreateOrderedHeapFromZone(ZPHeapComparison comparison, unsigned capacity, ZPZone *zone);
/// The same in the default zone.
ZP_EXPORT ZPOrderedHeap *ZPCreateOrderedHeap(ZPHeapComparison comparison, unsigned capacity);
/// Frees the heap, which must not be null, and leaves what the elements stand for.
ZP_EXPORT void ZPFreeOrderedHeap(ZPOrderedHeap *heap);
/// The number of elements.
ZP_EXPORT unsigned ZPCountOrderedHeap(ZPOrderedHeap *heap);
/// Adds an element, also one that is there already.
ZP_EXPORT void ZPAddToOrderedHeap(ZPOrderedHeap *heap, ZPHeapElement element);
/// Adds n elements in their order; the storage grows at most once.
ZP_EXPORT void ZPAddMultipleToOrderedHeap(ZPOrderedHeap *heap, const ZPHeapElement *elements, unsigned n);
/// A least element, or 0 when the heap is empty.
ZP_EXPORT ZPHeapElement ZPMinimumOfOrderedHeap(ZPOrderedHeap *heap);
/// Removes and answers a least element; 0 when the heap is empty.
ZP_EXPORT ZPHeapElement ZPRemoveMinimumOfOrderedHeap(ZPOrderedHeap *heap);
/// Removes up to n least elements into the buffer, in ascending order, and fills the rest of it with 0.
ZP_EXPORT void ZPRemoveMultipleFromOrderedHeap(ZPOrderedHeap *heap, ZPHeapElement *buffer, unsigned n);
/// Removes and answers the element that costs least to remove; 0 when the heap is empty.
ZP_EXPORT ZPHeapElement ZPRemoveRandomInOrderedHeap(ZPOrderedHeap *heap);
/// Removes and answers the least element that does not order before `value`; 0 when there is none. An element
/// 0 is not found.
ZP_EXPORT ZPHeapElement ZPRemoveLeastGreaterOfOrderedHeap(ZPOrderedHeap *heap, ZPHeapElement value);
}
