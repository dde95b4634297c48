// SPDX-License-Identifier: MIT
// The library's own arrays: the elements lie behind an immutable one, and a mutable one grows by doubling.
#include <Bedrock/collections/Array+Internal.h>
#include <Bedrock/platform/objects/Slabs.h>
#include <Bedrock/core/Memory.h>

#include <algorithm>
#include <cstring>

static void move(id *to, const id *from, unsigned count) {
    if (count) std::memmove(static_cast<void *>(to), static_cast<const void *>(from), count * sizeof(id));
}

// ---- immutable -----------------------------------------------------------------------------------

// Retains the objects into the storage; a null one destroys the array and raises.
static void fill(ZPConcreteArray *array, const id *objects, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        if (!objects[i]) [[unlikely]] {
            array->_info = i;
            ZPString *proem = _ZPMethodExceptionProem(array, "initWithObjects:count:"_sel);
            array->release();
            ZPException::raise_format(ZPInvalidArgumentException, "%@: attempt to insert nil object"_zp, proem);
        }
        array->_items[i] = objects[i]->retain();
    }
    array->_info = count;
}

ZPArray *_ZPNewArray(const id *objects, unsigned count, ZPZone *zone) {
    if (count == 0) return _ZPEmptyArray()->retain();
    if (count >= _ZPCollectionLimit)
        _ZPDestroyAndRaiseAbsurd(ZPConcreteArray::allocate(0, zone), "initWithObjects:count:"_sel, "count", count);
    ZPConcreteArray *array = ZPConcreteArray::allocate(count, zone);
    fill(array, objects, count);
    return array;
}

ZPArray *_ZPNewArrayAdopting(const id *owned, unsigned count, objc_slabs &slabs) {
    auto *array = static_cast<ZPConcreteArray *>(slabs.allocate(ZPConcreteArray::class_(), count * sizeof(id)));
    if (!array) array = ZPConcreteArray::allocate(count, nullptr);
    array->_items = reinterpret_cast<id *>(array + 1);
    move(array->_items, owned, count);
    array->_info = count;
    return array;
}

id ZPConcreteArray::init() { return initWithObjects_count(nullptr, 0); }

id ZPConcreteArray::initWithObjects_count(const id *objects, unsigned count) {
    if (count >= _ZPCollectionLimit) _ZPDestroyAndRaiseAbsurd(this, "initWithObjects:count:"_sel, "count", count);
    if (count == 0 || count > 4) {
        ZPZone *zone = self()->zone();
        self()->release();
        return _ZPNewArray(objects, count, zone);
    }
    fill(this, objects, count);
    return this;
}

// The last element first; nobody sees the array any more.
static void releaseAll(id *items, unsigned count) {
    while (count) items[--count]->release();
}

void ZPConcreteArray::dealloc() {
    releaseAll(_items, _info);
    ZP_SUPER(ZPConcreteArray, dealloc)();
}

// ---- mutable -------------------------------------------------------------------------------------

id ZPConcreteMutableArray::initWithCapacity(unsigned capacity) {
    if (capacity >= _ZPCollectionLimit) _ZPDestroyAndRaiseAbsurd(this, "initWithCapacity:"_sel, "capacity", capacity);
    _size = capacity < 4 ? 4 : capacity;
    return this;
}

id ZPConcreteMutableArray::initWithObjects_count(const id *objects, unsigned count) {
    if (count >= _ZPCollectionLimit) _ZPDestroyAndRaiseAbsurd(this, "initWithObjects:count:"_sel, "count", count);
    if (count) makeRoom(count);
    for (unsigned i = 0; i < count; ++i) {
        if (!objects[i]) [[unlikely]] {
            ZPString *proem = _ZPMethodExceptionProem(this, "initWithObjects:count:"_sel);
            self()->release();
            ZPException::raise_format(ZPInvalidArgumentException, "%@: attempt to insert nil object"_zp, proem);
        }
        _items[_info++] = objects[i]->retain();
    }
    return this;
}

void ZPConcreteMutableArray::dealloc() {
    releaseAll(_items, _info);
    if (_items) ZPZoneFree(ZPZoneFromPointer(_items), _items);
    ZP_SUPER(ZPConcreteMutableArray, dealloc)();
}

void ZPConcreteMutableArray::makeRoom(unsigned more) {
    if (more >= _ZPCollectionLimit - _info) _ZPRaiseAbsurd(this, "addObject:"_sel, "count", _info + more);
    unsigned size;
    id *block;
    if (!_items) {
        size = std::max({_size, 4u, more});
        block = _ZPTryAllocate<id>(size, self()->zone());
    } else {
        if (_info + more <= _size) return;
        size = std::max(2 * _size, _info + more);
        block = _ZPTryReallocate(_items, size, ZPZoneFromPointer(_items));
    }
    if (!block) _ZPRaiseOutOfMemory("an array of %u elements", size);
    _items = block;
    _size = size;
}

id *ZPConcreteMutableArray::openGap(unsigned location, unsigned length) {
    makeRoom(length);
    move(_items + location + length, _items + location, _info - location);
    _info += length;
    return _items + location;
}

void ZPConcreteMutableArray::closeGap(unsigned location, unsigned length) {
    _info -= length;
    move(_items + location, _items + location + length, _info - location);
}

void ZPConcreteMutableArray::insertObject_atIndex(id object, unsigned index) {
    if (!object) _ZPRaiseNil(this, "insertObject:atIndex:"_sel);
    if (index > _info) _ZPRaiseBounds(this, "insertObject:atIndex:"_sel, index, _info + 1);
    object->retain();
    *openGap(index, 1) = object;
}

void ZPConcreteMutableArray::replaceObjectAtIndex_withObject(unsigned index, id object) {
    if (!object) _ZPRaiseNil(this, "replaceObjectAtIndex:withObject:"_sel);
    if (index >= _info) _ZPRaiseBounds(this, "replaceObjectAtIndex:withObject:"_sel, index, _info);
    id old = _items[index];
    if (old == object) return;
    _items[index] = object->retain();
    old->release();
}

void ZPConcreteMutableArray::removeLastObject() {
    if (!_info) _ZPRaiseBounds(this, "removeLastObject"_sel, 0, 0);
    _items[--_info]->release();
}

void ZPConcreteMutableArray::removeObjectAtIndex(unsigned index) {
    if (index >= _info) _ZPRaiseBounds(this, "removeObjectAtIndex:"_sel, index, _info);
    id old = _items[index];
    closeGap(index, 1);
    old->release();
}

void ZPConcreteMutableArray::removeAllObjects() {
    while (_info) _items[--_info]->release();
}

void ZPConcreteMutableArray::addRetained(const id *objects, unsigned count) {
    for (unsigned i = 0; i < count; ++i) objects[i]->retain();
    move(_items + _info, objects, count);
    _info += count;
}

void ZPConcreteMutableArray::adopt(const id *objects, unsigned count) {
    if (count) makeRoom(count);
    move(_items + _info, objects, count);
    _info += count;
}

ZPMutableArray *_ZPNewMutableArray() { return ZPConcreteMutableArray::allocate(nullptr); }

void _ZPAddAdopting(ZPMutableArray *array, const id *owned, unsigned count) {
    static_cast<ZPConcreteMutableArray *>(array)->adopt(owned, count);
}

void ZPConcreteMutableArray::addObjectsFromArray(ZPArray *array) {
    unsigned count = array ? array->count() : 0;
    if (!count) return;
    makeRoom(count);
    // Gathered after the growth: the array may be the receiver.
    _ZPElements elements(array, {0, count});
    addRetained(elements.items, count);
}

void ZPConcreteMutableArray::exchangeObjectAtIndex_withObjectAtIndex(unsigned index1, unsigned index2) {
    for (unsigned index : {index1, index2})
        if (index >= _info) _ZPRaiseBounds(this, "exchangeObjectAtIndex:withObjectAtIndex:"_sel, index, _info);
    std::swap(_items[index1], _items[index2]);
}

ZP_IMPLEMENT(ZPConcreteArray, init, initWithObjects_count, dealloc, count, objectAtIndex, copyWithZone);

ZP_IMPLEMENT(ZPConcreteMutableArray, init, initWithCapacity, initWithObjects_count, dealloc, count, objectAtIndex,
             addObject, insertObject_atIndex, replaceObjectAtIndex_withObject, removeLastObject, removeObjectAtIndex,
             removeAllObjects, addObjectsFromArray, exchangeObjectAtIndex_withObjectAtIndex);
