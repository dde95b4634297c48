// SPDX-License-Identifier: MIT
// A binary heap in one block:
//
//   capacity    grows to 2 * capacity + 1
//   storage     `count` elements in heap order, then free room; in the zone of the record, null while the
//               capacity is 0
//
// A comparison may raise: the element on its way is then put into the gap that it left, so the heap stays whole.
#include <Bedrock/tables/ZPOrderedHeap.h>

#include <Bedrock/core/Memory.h>
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPException.h>

#include <algorithm>

namespace {

int compareWords(ZPOrderedHeap *, ZPHeapElement a, ZPHeapElement b) {
    if (int(a) == a && int(b) == b) return int(unsigned(a) - unsigned(b));
    auto difference = ZPHeapElement(std::uintptr_t(a) - std::uintptr_t(b));
    return (difference > 0) - (difference < 0);
}

// The order of a heap, compiled once with the default comparison inline and once for the caller's.
struct OrderOfWords {
    explicit OrderOfWords(ZPOrderedHeap *) {}
    int operator()(ZPHeapElement a, ZPHeapElement b) const { return compareWords(nullptr, a, b); }
};
struct OrderOfCaller {
    ZPOrderedHeap *heap;
    explicit OrderOfCaller(ZPOrderedHeap *h) : heap(h) {}
    int operator()(ZPHeapElement a, ZPHeapElement b) const { return heap->comparison(heap, a, b); }
};
template <class F> auto ordered(ZPOrderedHeap *heap, F f) {
    return heap->comparison == compareWords ? f(OrderOfWords(heap)) : f(OrderOfCaller(heap));
}

// The gap that an element on its way leaves; it ends where the gap is at last.
struct Gap {
    ZPHeapElement *storage;
    unsigned at;
    ZPHeapElement moving;
    ~Gap() { storage[at] = moving; }
    void moveTo(unsigned position) {
        storage[at] = storage[position];
        at = position;
    }
};

template <class Order> void moveUp(ZPOrderedHeap *heap, unsigned position, ZPHeapElement element, Order order) {
    Gap gap{heap->storage, position, element};
    while (gap.at) {
        unsigned parent = (gap.at - 1) / 2;
        if (order(gap.storage[parent], element) <= 0) break;
        gap.moveTo(parent);
    }
}

template <class Order> unsigned moveDown(ZPOrderedHeap *heap, unsigned position, ZPHeapElement element, Order order) {
    Gap gap{heap->storage, position, element};
    for (;;) {
        std::uint64_t left = 2 * std::uint64_t(gap.at) + 1;
        if (left >= heap->count) break;
        auto child = unsigned(left);
        if (child + 1 < heap->count && order(gap.storage[child], gap.storage[child + 1]) > 0) ++child;
        if (order(gap.storage[child], element) >= 0) break;
        gap.moveTo(child);
    }
    return gap.at;
}

template <class Order> ZPHeapElement removeLeast(ZPOrderedHeap *heap, Order order) {
    if (!heap->count) return 0;
    ZPHeapElement least = heap->storage[0];
    if (--heap->count) moveDown(heap, 0, heap->storage[heap->count], order);
    return least;
}

// The least element that does not order before a value, depth first; of equal ones the last.
template <class Order> struct LeastGreater {
    ZPOrderedHeap *heap;
    ZPHeapElement value;
    Order order;
    ZPHeapElement found = 0;
    unsigned position = 0;

    void visit(std::uint64_t at) {
        if (at >= heap->count) return;
        ZPHeapElement element = heap->storage[at];
        if (found && order(found, element) < 0) return;
        if (order(value, element) <= 0) {
            found = element;
            position = unsigned(at);
            return;
        }
        visit(2 * at + 1);
        visit(2 * at + 2);
    }
};

void makeRoom(ZPOrderedHeap *heap, unsigned more) {
    std::uint64_t needed = std::uint64_t(heap->count) + more, capacity = heap->capacity;
    if (needed <= capacity) return;
    while (capacity < needed) capacity = 2 * capacity + 1;
    ZPHeapElement *storage = nullptr;
    if (capacity <= 0xFFFFFFFF) {
        ZPZone *zone = ZPZoneFromPointer(heap);
        storage = heap->storage ? _ZPTryReallocate(heap->storage, capacity, zone)
                                : _ZPTryAllocate<ZPHeapElement>(capacity, zone);
    }
    if (!storage) _ZPRaiseOutOfMemoryIn("ZPAddToOrderedHeap", "%llu elements", static_cast<unsigned long long>(needed));
    heap->storage = storage;
    heap->capacity = unsigned(capacity);
}

}  // namespace

ZPOrderedHeap *ZPCreateOrderedHeapFromZone(ZPHeapComparison comparison, unsigned capacity, ZPZone *zone) {
    _ZPBlock heap(_ZPTryAllocate<ZPOrderedHeap>(1, zone), zone);
    auto *storage = heap && capacity ? _ZPTryAllocate<ZPHeapElement>(capacity, zone) : nullptr;
    if (!heap || (capacity && !storage)) _ZPRaiseOutOfMemoryIn("ZPCreateOrderedHeap", "%u elements", capacity);
    *heap = {comparison ? comparison : compareWords, 0, capacity, storage};
    return heap.take();
}

ZPOrderedHeap *ZPCreateOrderedHeap(ZPHeapComparison comparison, unsigned capacity) {
    return ZPCreateOrderedHeapFromZone(comparison, capacity, nullptr);
}

void ZPFreeOrderedHeap(ZPOrderedHeap *heap) {
    if (heap->storage) ZPZoneFree(ZPZoneFromPointer(heap->storage), heap->storage);
    ZPZoneFree(ZPZoneFromPointer(heap), heap);
}

unsigned ZPCountOrderedHeap(ZPOrderedHeap *heap) { return heap->count; }

void ZPAddToOrderedHeap(ZPOrderedHeap *heap, ZPHeapElement element) { ZPAddMultipleToOrderedHeap(heap, &element, 1); }

void ZPAddMultipleToOrderedHeap(ZPOrderedHeap *heap, const ZPHeapElement *elements, unsigned n) {
    makeRoom(heap, n);
    ordered(heap, [&](auto order) {
        for (unsigned i = 0; i < n; ++i) moveUp(heap, heap->count++, elements[i], order);
    });
}

ZPHeapElement ZPMinimumOfOrderedHeap(ZPOrderedHeap *heap) { return heap->count ? heap->storage[0] : 0; }

ZPHeapElement ZPRemoveMinimumOfOrderedHeap(ZPOrderedHeap *heap) {
    return ordered(heap, [&](auto order) { return removeLeast(heap, order); });
}

void ZPRemoveMultipleFromOrderedHeap(ZPOrderedHeap *heap, ZPHeapElement *buffer, unsigned n) {
    std::fill_n(buffer, n, 0);
    ordered(heap, [&](auto order) {
        for (unsigned i = 0; i < n && heap->count; ++i) buffer[i] = removeLeast(heap, order);
    });
}

ZPHeapElement ZPRemoveRandomInOrderedHeap(ZPOrderedHeap *heap) {
    return heap->count ? heap->storage[--heap->count] : 0;
}

ZPHeapElement ZPRemoveLeastGreaterOfOrderedHeap(ZPOrderedHeap *heap, ZPHeapElement value) {
    return ordered(heap, [&](auto order) -> ZPHeapElement {
        LeastGreater<decltype(order)> search{heap, value, order};
        search.visit(0);
        if (!search.found) return 0;
        unsigned at = search.position, last = --heap->count;
        if (at != last) {
            ZPHeapElement moving = heap->storage[last];
            if (moveDown(heap, at, moving, order) == at) moveUp(heap, at, moving, order);
        }
        return search.found;
    });
}
