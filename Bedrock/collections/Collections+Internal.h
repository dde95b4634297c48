// SPDX-License-Identifier: MIT
// What the collection classes share beside what other rooms use (Elements.h, Makers.h): temporary lists of objects,
// equality tests and error messages.
#pragma once

#include <Bedrock/collections/Elements.h>
#include <Bedrock/collections/Makers.h>
#include <Bedrock/core/Fronts.h>
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPNames.h>

#include <cstdlib>
#include <memory>

/// A list of object references, growing as objects are added.
struct _ZPObjectList {
    union {
        id local[128];
    };
    id *items = local;
    unsigned count = 0, capacity = 128;
    _ZPObjectList() {}
    _ZPObjectList(const _ZPObjectList &) = delete;
    ~_ZPObjectList() {
        if (items != local) std::free(static_cast<void *>(items));
    }
    void add(id object) {
        if (count == capacity) [[unlikely]]
            grow();
        items[count++] = object;
    }
    void grow();
};

/// Gathers the null-ended list that begins with `first`.
void _ZPGatherList(_ZPObjectList &list, id first, std::va_list rest);

/// Releases what it was given when the scope ends.
struct _ZPReleaser {
    id *items;
    unsigned count;
    ~_ZPReleaser() {
        while (count) items[--count]->release();
    }
};

/// `isEqual:` sent to one object many times, looked up once.
struct _ZPEqualTo {
    objc_object *object;
    IMP implementation;
    explicit _ZPEqualTo(id o) : object(o.pointer()), implementation(class_lookupMethod(object->isa, "isEqual:"_sel)) {
        if (implementation == &_objc_msgForward) implementation = nullptr;
    }
    bool operator()(id other) const {
        if (!implementation) [[unlikely]]
            return id(object)->isEqual(other);
        return reinterpret_cast<BOOL (*)(objc_object *, SEL, id)>(implementation)(object, "isEqual:"_sel, other);
    }
};

inline bool _ZPSameOrEqual(id a, id b) { return a == b || a->isEqual(b); }

[[noreturn]] ZP_COLD void _ZPRaiseNil(id receiver, SEL selector);
[[noreturn]] ZP_COLD void _ZPRaiseBounds(id receiver, SEL selector, unsigned index, unsigned bound);
/// The same for `objectAtIndex:`, which would save registers for looking the selector up.
[[noreturn]] ZP_COLD void _ZPRaiseNoElement(id receiver, unsigned index, unsigned bound);
/// `what` is "count" or "capacity".
[[noreturn]] ZP_COLD void _ZPRaiseAbsurd(id receiver, SEL selector, const char *what, unsigned value);
/// Deallocates a receiver whose initialisation failed, then raises.
[[noreturn]] ZP_COLD void _ZPDestroyAndRaiseAbsurd(ZPObject *receiver, SEL selector, const char *what, unsigned value);

/// Releases a new instance of one of the library's classes when its initialiser raises.
struct _ZPNewInstance {
    ZPObject *instance;
    bool ours;
    template <class T> _ZPNewInstance(T *object, bool isOurs) : instance(object), ours(isOurs) {}
    ~_ZPNewInstance() {
        if (instance && ours) instance->release();
    }
    id finish(id initialised) {
        instance = nullptr;
        return initialised ? initialised->autorelease() : initialised;
    }
};

/// The zone of a collection's own memory; null for the default zone.
inline ZPZone *_ZPZoneOf(ZPObject *object) {
    return objc_countsInItsHeader(object) && objc_headerOf(object)->origin != objc_fromChildZone ? nullptr
                                                                                                 : object->zone();
}

inline void _ZPCheckElements(id receiver, SEL selector, ZPRange range, unsigned count) {
    if (range.location > count || range.length > count - range.location) [[unlikely]]
        _ZPRaiseBounds(receiver, selector, range.location + range.length - 1, count);
}

/// The comparison that sends a selector: `context` is the SEL.
int _ZPCompareBySelector(id a, id b, void *selector);
