// SPDX-License-Identifier: MIT
// What all collections share: lists of arguments being gathered, and the words of their exceptions.
#include <Bedrock/collections/Collections+Internal.h>
#include <Bedrock/core/Memory.h>

#include <cstring>

id *_ZPObjectsOnHeap(std::size_t count) {
    void *memory = count > SIZE_MAX / sizeof(id) ? nullptr : std::malloc(count * sizeof(id));
    if (!memory) _ZPRaiseOutOfMemory("a list of objects");
    return static_cast<id *>(memory);
}

void _ZPObjectList::grow() {
    id *larger = _ZPObjectsOnHeap(std::size_t(capacity) * 2);
    std::memcpy(static_cast<void *>(larger), static_cast<void *>(items), count * sizeof(id));
    if (items != local) std::free(static_cast<void *>(items));
    items = larger;
    capacity *= 2;
}

void _ZPGatherList(_ZPObjectList &list, id first, std::va_list rest) {
    for (id object = first; object; object = id(va_arg(rest, objc_object *))) list.add(object);
}

void _ZPRaiseNil(id receiver, SEL selector) {
    ZPException::raise_format(ZPInvalidArgumentException, "%@: attempt to insert nil object"_zp,
                              _ZPMethodExceptionProem(receiver, selector));
}

void _ZPRaiseNoElement(id receiver, unsigned index, unsigned bound) {
    _ZPRaiseBounds(receiver, "objectAtIndex:"_sel, index, bound);
}

void _ZPRaiseBounds(id receiver, SEL selector, unsigned index, unsigned bound) {
    ZPException::raise_format(ZPRangeException, "%@: index (%d) beyond bounds (%d)"_zp,
                              _ZPMethodExceptionProem(receiver, selector), index, bound);
}

void _ZPRaiseAbsurd(id receiver, SEL selector, const char *what, unsigned value) {
    ZPException::raise_format(ZPInvalidArgumentException, "%@: absurd %s: %d"_zp,
                              _ZPMethodExceptionProem(receiver, selector), what, value);
}

void _ZPDestroyAndRaiseAbsurd(ZPObject *receiver, SEL selector, const char *what, unsigned value) {
    ZPString *proem = _ZPMethodExceptionProem(receiver, selector);
    receiver->release();
    ZPException::raise_format(ZPInvalidArgumentException, "%@: absurd %s: %d"_zp, proem, what, value);
}

int _ZPCompareBySelector(id a, id b, void *selector) {
    id result = a->performSelector_withObject(static_cast<SEL>(selector), b);
    return int(reinterpret_cast<std::uintptr_t>(result.pointer()));
}
