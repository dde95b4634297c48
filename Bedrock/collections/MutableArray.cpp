// SPDX-License-Identifier: MIT
// What every mutable array does, on the primitives; where it pays, on the storage of a concrete array.
#include <Bedrock/collections/Array+Internal.h>
#include <Bedrock/core/Scope.h>
#include <Bedrock/tables/ZPHashTable.h>
#include <Bedrock/tables/ZPOrderedHeap.h>

#include <algorithm>
#include <vector>

namespace {

ZPConcreteMutableArray *concrete(ZPMutableArray *array) {
    return array->isa == ZPConcreteMutableArray::class_() ? static_cast<ZPConcreteMutableArray *>(array) : nullptr;
}

struct ZPMutableArrayClassMethods {
    static id arrayWithCapacity(Class self, unsigned capacity) {
        ZPMutableArray *array = _ZPFront(self)->alloc();
        return array->initWithCapacity(capacity)->autorelease();
    }
};

// Takes elements out of the storage of a concrete array while a scan decides which. What was kept moves down
// as the scan goes on; the array is whole again, and the taken elements are released, when this ends.
struct Compaction {
    ZPConcreteMutableArray *array;
    unsigned from, to, end;
    _ZPObjectList taken;
    Compaction(ZPConcreteMutableArray *a, ZPRange range)
        : array(a), from(range.location), to(range.location), end(range.location + range.length) {}
    id current() const { return array->_items[from]; }
    void keep() { array->_items[to++] = array->_items[from++]; }
    void take() {
        taken.add(array->_items[from]);
        ++from;
    }
    ~Compaction() {
        array->closeGap(to, from - to);
        for (unsigned i = 0; i < taken.count; ++i) taken.items[i]->release();
    }
};

struct ZPMutableArrayMethods : ZPMutableArray {
    id initWithCapacity(unsigned) { _ZPRequestConcreteObject(this, "initWithCapacity:"_sel); }

    // ---- primitives ----
    void addObject(id) { ZPRequestConcreteImplementation(this, "addObject:"_sel, ZPMutableArray::class_()); }
    void insertObject_atIndex(id, unsigned) {
        ZPRequestConcreteImplementation(this, "insertObject:atIndex:"_sel, ZPMutableArray::class_());
    }
    void removeLastObject() { ZPRequestConcreteImplementation(this, "removeLastObject"_sel, ZPMutableArray::class_()); }
    void removeObjectAtIndex(unsigned) {
        ZPRequestConcreteImplementation(this, "removeObjectAtIndex:"_sel, ZPMutableArray::class_());
    }
    void replaceObjectAtIndex_withObject(unsigned, id) {
        ZPRequestConcreteImplementation(this, "replaceObjectAtIndex:withObject:"_sel, ZPMutableArray::class_());
    }

    // ---- adding ----
    void addObjectsFromArray(ZPArray *array) {
        unsigned count = array ? array->count() : 0;
        for (unsigned i = 0; i < count; ++i) self()->addObject(array->objectAtIndex(i));
    }
    void setArray(ZPArray *array) {
        self()->removeAllObjects();
        self()->addObjectsFromArray(array);
    }

    // ---- replacing ----
    void exchangeObjectAtIndex_withObjectAtIndex(unsigned index1, unsigned index2) {
        unsigned count = self()->count();
        for (unsigned index : {index1, index2})
            if (index >= count) _ZPRaiseBounds(this, "exchangeObjectAtIndex:withObjectAtIndex:"_sel, index, count);
        ZPOwnedObject first(self()->objectAtIndex(index1)->retain().pointer());
        self()->replaceObjectAtIndex_withObject(index1, self()->objectAtIndex(index2));
        self()->replaceObjectAtIndex_withObject(index2, first.get());
    }
    void replaceObjectsInRange_withObjectsFromArray(ZPRange range, ZPArray *array) {
        self()->replaceObjectsInRange_withObjectsFromArray_range(range, array, {0, array ? array->count() : 0});
    }
    void replaceObjectsInRange_withObjectsFromArray_range(ZPRange range, ZPArray *array, ZPRange arrayRange) {
        SEL selector = "replaceObjectsInRange:withObjectsFromArray:range:"_sel;
        _ZPCheckElements(this, selector, range, self()->count());
        _ZPCheckElements(this, selector, arrayRange, array ? array->count() : 0);
        // A list of its own, retained: the array may be the receiver, or go away with what is replaced.
        _ZPObjectBuffer added(arrayRange.length);
        if (arrayRange.length) array->getObjects_range(added.items, arrayRange);
        _ZPReleaser releaser{added.items, 0};
        for (; releaser.count < arrayRange.length; ++releaser.count) added.items[releaser.count]->retain();
        if (auto *c = concrete(this)) {
            // The references change hands: what lay in the range is released instead of what was added.
            _ZPObjectBuffer removed(range.length);
            if (arrayRange.length > range.length)
                c->openGap(range.location + range.length, arrayRange.length - range.length);
            std::copy_n(c->_items + range.location, range.length, removed.items);
            std::copy_n(added.items, arrayRange.length, c->_items + range.location);
            releaser.count = 0;
            if (arrayRange.length < range.length)
                c->closeGap(range.location + arrayRange.length, range.length - arrayRange.length);
            for (unsigned i = 0; i < range.length; ++i) removed.items[i]->release();
            return;
        }
        unsigned at = range.location, taken = 0;
        for (; range.length && taken < arrayRange.length; --range.length)
            self()->replaceObjectAtIndex_withObject(at++, added.items[taken++]);
        for (; range.length; --range.length) self()->removeObjectAtIndex(at);
        for (; taken < arrayRange.length;) self()->insertObject_atIndex(added.items[taken++], at++);
    }

    // ---- removing ----
    void removeAllObjects() {
        for (unsigned count = self()->count(); count; --count) self()->removeLastObject();
    }
    void removeObject(id object) { removeMatching("removeObject:"_sel, object, {0, self()->count()}, false); }
    void removeObject_inRange(id object, ZPRange range) {
        removeMatching("removeObject:inRange:"_sel, object, range, false);
    }
    void removeObjectIdenticalTo(id object) {
        removeMatching("removeObjectIdenticalTo:"_sel, object, {0, self()->count()}, true);
    }
    void removeObjectIdenticalTo_inRange(id object, ZPRange range) {
        removeMatching("removeObjectIdenticalTo:inRange:"_sel, object, range, true);
    }
    void removeObject_range_identical(id object, ZPRange range, BOOL identical) {
        removeMatching("removeObject:range:identical:"_sel, object, range, identical);
    }
    // The object may be kept alive by the receiver alone: the scan ends when as many references to it as it
    // had have been given up.
    void removeMatching(SEL selector, id object, ZPRange range, bool identical) {
        _ZPCheckElements(this, selector, range, self()->count());
        if (!object || !range.length) return;
        unsigned references = object->retainCount();
        _ZPEqualTo equals(object);
        auto matches = [&](id element) {
            if (element == object) {
                --references;
                return true;
            }
            return !identical && equals(element);
        };
        if (auto *c = concrete(this)) {
            // The identical ones without a message, equal ones in two steps: whoever is asked may change the array.
            std::vector<std::pair<unsigned, id>> found;
            ZPOwnedObject kept(identical ? nullptr : object->retain().pointer());
            if (!identical) {
                _ZPWalk walk(this, range);
                for (unsigned i = 0; i < range.length && references; ++i)
                    if (id element = walk.at(i); element && matches(element))
                        found.emplace_back(range.location + i, element);
            }
            Compaction scan(c, range);
            scan.end = std::min(scan.end, c->_info);
            for (auto at = found.begin(); scan.from < scan.end && (identical ? references != 0 : at != found.end());) {
                bool isFound = !identical && at->first == scan.from;
                if (identical ? matches(scan.current()) : isFound && at->second == scan.current()) scan.take();
                else scan.keep();
                at += isFound;
            }
            return;
        }
        ZPOwnedObject kept(object->retain().pointer());
        while (range.length && references) {
            unsigned n = std::min(range.length, 128u), marked = 0, marks[128];
            id elements[128];
            self()->getObjects_range(elements, {range.location, n});
            for (unsigned i = 0; i < n && references; ++i)
                if (matches(elements[i])) marks[marked++] = range.location + i;
            range = {range.location + n - marked, range.length - n};
            while (marked) self()->removeObjectAtIndex(marks[--marked]);
        }
    }
    void removeObjectsInRange(ZPRange range) {
        if (!range.length) return;
        if (auto *c = concrete(this)) {
            _ZPCheckElements(this, "removeObjectAtIndex:"_sel, range, c->_info);
            Compaction scan(c, range);
            while (scan.from < scan.end) scan.take();
            std::reverse(scan.taken.items, scan.taken.items + scan.taken.count);
            return;
        }
        if (range.length && range.location + range.length - 1 < range.location)
            _ZPRaiseBounds(this, "removeObjectsInRange:"_sel, range.location + range.length - 1, self()->count());
        while (range.length) self()->removeObjectAtIndex(range.location + --range.length);
    }
    void removeObjectsFromIndices_numIndices(const unsigned *indices, unsigned count) {
        unsigned size = self()->count();
        bool ascending = std::is_sorted(indices, indices + count);
        auto *c = concrete(this);
        if (ascending && c && std::adjacent_find(indices, indices + count) != indices + count)
            return removeRepeated(indices, count, size);
        if (ascending && c && count && indices[count - 1] < size) {
            Compaction scan(c, {indices[0], size - indices[0]});
            for (unsigned next = 0; next < count;) {
                if (scan.from == indices[next]) {
                    scan.take();
                    ++next;
                } else scan.keep();
            }
            std::reverse(scan.taken.items, scan.taken.items + scan.taken.count);
            return;
        }
        if (ascending) {
            while (count) self()->removeObjectAtIndex(indices[--count]);
            return;
        }
        ZPScope heap{ZPCreateOrderedHeap(nullptr, count), ZPFreeOrderedHeap};
        for (unsigned i = 0; i < count; ++i) {
            if (indices[i] >= size) _ZPRaiseBounds(this, "removeObjectsFromIndices:numIndices:"_sel, indices[i], size);
            ZPAddToOrderedHeap(heap, ZPHeapElement(indices[i]));
        }
        std::vector<unsigned> sorted;
        sorted.reserve(count);
        while (ZPCountOrderedHeap(heap)) {
            auto index = unsigned(ZPRemoveMinimumOfOrderedHeap(heap));
            if (sorted.empty() || sorted.back() != index) sorted.push_back(index);
        }
        self()->removeObjectsFromIndices_numIndices(sorted.data(), unsigned(sorted.size()));
    }
    // Ascending indexes, some more than once: from the last one on, each takes what is then at the index, so that an
    // index that comes again takes the next element that is left.
    void removeRepeated(const unsigned *indices, unsigned count, unsigned size) {
        std::vector<unsigned> left(size + 1), taken;  // left: from each place, where the next element that stays may be
        for (unsigned i = 0; i <= size; ++i) left[i] = i;
        auto next = [&](unsigned i) {
            unsigned end = i;
            while (left[end] != end) end = left[end];
            while (left[i] != end) i = std::exchange(left[i], end);
            return end;
        };
        unsigned beyond = ZPNotFound;
        while (count && beyond == ZPNotFound) {
            unsigned index = indices[--count], at = index < size ? next(index) : size;
            if (at == size) beyond = index;
            else taken.push_back(at), left[at] = at + 1;
        }
        std::sort(taken.begin(), taken.end());
        self()->removeObjectsFromIndices_numIndices(taken.data(), unsigned(taken.size()));
        if (beyond != ZPNotFound) self()->removeObjectAtIndex(beyond);  // which raises
    }
    void removeObjectsInArray(ZPArray *array) {
        _ZPWalk others(array);
        if (!others.count()) return;
        if (others.count() == 1) return self()->removeObject(others.at(0));
        std::vector<unsigned> indices;
        {
            ZPScope known{ZPCreateHashTable(ZPObjectHashCallBacks, others.count()), ZPFreeHashTable};
            for (unsigned i = 0; i < others.count(); ++i)
                if (id other = others.at(i)) ZPHashInsertIfAbsent(known, other.pointer());
            _ZPWalk walk(this);
            for (unsigned i = 0; i < walk.count(); ++i)
                if (id element = walk.at(i); element && ZPHashGet(known, element.pointer())) indices.push_back(i);
        }
        self()->removeObjectsFromIndices_numIndices(indices.data(), unsigned(indices.size()));
    }
    Class classForCoder() { return ZPMutableArray::class_(); }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPMutableArray, ZPMutableArrayMethods, initWithCapacity, addObject, insertObject_atIndex,
                  removeLastObject, removeObjectAtIndex, replaceObjectAtIndex_withObject, addObjectsFromArray, setArray,
                  exchangeObjectAtIndex_withObjectAtIndex, replaceObjectsInRange_withObjectsFromArray,
                  replaceObjectsInRange_withObjectsFromArray_range, removeAllObjects, removeObject,
                  removeObject_inRange, removeObjectIdenticalTo, removeObjectIdenticalTo_inRange,
                  removeObject_range_identical, removeObjectsInRange, removeObjectsFromIndices_numIndices,
                  removeObjectsInArray, classForCoder, classMethodsOf(ZPMutableArrayClassMethods, arrayWithCapacity));
