// SPDX-License-Identifier: MIT
// The two concrete array classes.
//
//   _info    bits 0 to 26: the number of elements. References are counted as for every object, outside.
//   _items   the elements: of an immutable array right behind the fields, in the same allocation, with room
//            for 4 as `allocWithZone:` makes it; of a mutable array a block of the array's zone, null until
//            the first element arrives
//   _size    (mutable) the elements that the block has room for; what to allocate first while there is none
#pragma once

#include <Bedrock/core/ZPRef.h>
#include <Bedrock/collections/Collections+Internal.h>

#include <vector>

struct ZPConcreteArray : ZPArray {
    ZP_PRIVATE_CLASS(ZPConcreteArray)
    unsigned _info;
    id *_items;

    static ZPConcreteArray *allocate(unsigned room, ZPZone *zone) {
        auto *array = ZPAllocateObject(class_(), room * unsigned(sizeof(id)), zone).unchecked<ZPConcreteArray>();
        array->_items = reinterpret_cast<id *>(array + 1);
        return array;
    }

    id init();
    id initWithObjects_count(const id *objects, unsigned count);
    void dealloc();
    unsigned count() { return _info; }
    id objectAtIndex(unsigned index) {
        if (index >= _info) [[unlikely]]
            _ZPRaiseNoElement(this, index, _info);
        return _items[index];
    }
    id copyWithZone(ZPZone *) { return self()->retain(); }
};

struct ZPConcreteMutableArray : ZPMutableArray {
    ZP_PRIVATE_CLASS(ZPConcreteMutableArray)
    unsigned _info;
    id *_items;
    unsigned _size;

    /// An empty array that the caller owns.
    static ZPConcreteMutableArray *allocate(ZPZone *zone) {
        return ZPAllocateObject(class_(), 0, zone).unchecked<ZPConcreteMutableArray>();
    }
    id init() { return this; }
    id initWithCapacity(unsigned capacity);
    id initWithObjects_count(const id *objects, unsigned count);
    void dealloc();
    unsigned count() { return _info; }
    id objectAtIndex(unsigned index) {
        if (index >= _info) [[unlikely]]
            _ZPRaiseNoElement(this, index, _info);
        return _items[index];
    }
    void addObject(id object) {
        if (!object) [[unlikely]]
            _ZPRaiseNil(this, "addObject:"_sel);
        if (_info >= _size || !_items) [[unlikely]]
            makeRoom(1);
        object->retain();
        _items[_info++] = object;
    }
    void insertObject_atIndex(id object, unsigned index);
    void replaceObjectAtIndex_withObject(unsigned index, id object);
    void removeLastObject();
    void removeObjectAtIndex(unsigned index);
    void removeAllObjects();
    void addObjectsFromArray(ZPArray *array);
    void exchangeObjectAtIndex_withObjectAtIndex(unsigned index1, unsigned index2);

    ZP_COLD void makeRoom(unsigned more);
    void addRetained(const id *objects, unsigned count);
    /// Adds objects and takes over a reference of each; when it raises it has taken none.
    void adopt(const id *objects, unsigned count);
    /// Closes the gap of a range whose elements have been dealt with.
    void closeGap(unsigned location, unsigned length);
    /// Makes `length` places at `location`, to be filled at once.
    id *openGap(unsigned location, unsigned length);
};

/// The storage of an array of a concrete class, whose count it sets; null for any other array.
ZP_INLINE id *_ZPConcreteItems(id array, unsigned &count) {
    Class isa = array.pointer()->isa;
    if (isa == ZPConcreteArray::class_()) {
        auto *a = array.unchecked<ZPConcreteArray>();
        count = a->_info;
        return a->_items;
    }
    if (isa == ZPConcreteMutableArray::class_()) {
        auto *a = array.unchecked<ZPConcreteMutableArray>();
        count = a->_info;
        return a->_items ? a->_items : reinterpret_cast<id *>(a);  // never read: the count is 0
    }
    return nullptr;
}

/// The elements of an array, or of a range of it, for a walk on which messages are sent that may change the array: a
/// concrete array's own storage, looked at anew at each step, else a list that keeps the elements. The array is kept.
class _ZPWalk {
    ZPRef<ZPArray> _array;
    ZPRange _range;
    bool _isConcrete;
    ZPRef<ZPObject> _current;
    std::vector<ZPRef<ZPObject>> _list;

  public:
    explicit _ZPWalk(ZPArray *array);
    /// The range lies within the array.
    _ZPWalk(ZPArray *array, ZPRange range);
    unsigned count() const { return _range.length; }
    /// The element at an index below the count, kept until another is asked for; null when the array has become too
    /// short meanwhile.
    id at(unsigned index) {
        if (!_isConcrete) return _list[index].get();
        unsigned count = 0;
        id *items = _ZPConcreteItems(_array.get(), count);
        index += _range.location;
        _current = index < count ? items[index].unchecked<ZPObject>() : nullptr;
        return _current.get();
    }
    /// The index of the identical object, else (unless `identical`) of an equal one; ZPNotFound otherwise. Forward:
    /// the lowest, else the highest.
    unsigned indexOf(id object, bool identical, bool forward = true);
};
