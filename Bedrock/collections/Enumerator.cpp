// SPDX-License-Identifier: MIT
// Enumerators: the front, and the one over a list of references.
#include <Bedrock/collections/Array+Internal.h>

namespace {

struct ZPEnumeratorMethods : ZPEnumerator {
    id nextObject() { ZPRequestConcreteImplementation(this, "nextObject"_sel, ZPEnumerator::class_()); }
    ZPArray *allObjects() {
        _ZPObjectList list;
        while (id object = self()->nextObject()) list.add(object);
        return _ZPMakeArray(list.items, list.count);
    }
};

struct ZPIdEnumeratorMethods : ZPIdEnumerator {
    id initWithObjects_count_target_reverse_freeWhenDone(id *list, unsigned count, id target, BOOL reverse, BOOL free) {
        _list = list;
        _free = free;
        _slot = reverse ? count : 0;
        _limit = reverse ? 0 : count;
        if (count) _target = target->retain();
        return this;
    }
    void dealloc() {
        invalidate();
        ZP_SUPER(ZPIdEnumerator, dealloc)();
    }
    id nextObject() {
        if (_slot == _limit) return nullptr;
        id object = _slot < _limit ? _list[_slot++] : _list[--_slot];
        if (_slot == _limit) {
            object->retain();
            object->autorelease();
            invalidate();
        }
        return object;
    }
    ZPArray *allObjects() {
        ZPArray *array;
        if (_slot <= _limit) array = _ZPMakeArray(_list + _slot, _limit - _slot);
        else {
            _ZPObjectBuffer reversed(_slot);
            for (unsigned i = 0; i < _slot; ++i) reversed.items[i] = _list[_slot - 1 - i];
            array = _ZPMakeArray(reversed.items, _slot);
        }
        invalidate();
        return array;
    }
    void invalidate() {
        _slot = _limit = 0;
        if (_list && _free) ZPZoneFree(ZPZoneFromPointer(_list), _list);
        _list = nullptr;
        id target = _target;
        _target = nullptr;
        if (target) target->release();
    }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPEnumerator, ZPEnumeratorMethods, nextObject, allObjects);

ZP_IMPLEMENT_WITH(ZPIdEnumerator, ZPIdEnumeratorMethods, initWithObjects_count_target_reverse_freeWhenDone, dealloc,
                  nextObject, allObjects, invalidate);
