// SPDX-License-Identifier: MIT
// The root class.
#pragma once

#include <Bedrock/core/ZPLiteral.h>
#include <Bedrock/core/ZPRange.h>
#include <Bedrock/platform/ZPRuntime.h>
#include <Bedrock/platform/ZPZone.h>

ZP_FORWARD(ZPArray);
ZP_FORWARD(ZPMethodSignature);
ZP_FORWARD(ZPInvocation);

extern "C" {
ZP_EXPORT void objc_deallocatePlainly(objc_object *object);
ZP_EXPORT void ZPAutoreleaseObject(id object);
}

/// The root of nearly every class. A new object has retain count 1; it is deallocated by the release
/// that finds no further reference. Operations whose names begin with alloc, copy, mutableCopy or new
/// give an object that the caller owns; all others give one that the innermost autorelease pool keeps.
/// Counting is safe from any thread.
struct ZPObject : objc_object {
    ZP_CLASS(ZPObject)

    /// Prepares a new instance; answers the receiver, or another object in its place.
    id init() { return objc_msgSend<id>(this, "init"_sel); }
    /// Frees the receiver; sent by the last release, never by a client.
    void dealloc() { objc_msgSend(this, "dealloc"_sel); }

    /// Adds a reference and answers the receiver.
    id retain() {
        // Read through the tested pointer only: a compiler may read through `this` before the test.
        objc_object *self = objc_receiver(this);
        if (!self) return nullptr;
        if (__atomic_load_n(&self->isa->info, __ATOMIC_RELAXED) & objc_defaultCounting) [[likely]] {
            objc_retainInHeader(self);
            return self;
        }
        return objc_msgSend<id>(self, "retain"_sel);
    }
    /// Gives a reference up; the last one deallocates the receiver.
    void release() {
        objc_object *self = objc_receiver(this);
        if (!self) return;
        unsigned info = __atomic_load_n(&self->isa->info, __ATOMIC_RELAXED);
        if (info & objc_defaultCounting) [[likely]] {
            if (!objc_releaseInHeader(self)) return;
            if (info & objc_defaultDealloc) objc_deallocatePlainly(self);
            else objc_msgSend(self, "dealloc"_sel);
            return;
        }
        objc_msgSend(self, "release"_sel);
    }
    /// Has the innermost autorelease pool of the calling thread release the receiver later.
    id autorelease() {
        objc_object *self = objc_receiver(this);
        if (!self) return nullptr;
        if (__atomic_load_n(&self->isa->info, __ATOMIC_RELAXED) & objc_defaultCounting) [[likely]] {
            ZPAutoreleaseObject(self);
            return self;
        }
        return objc_msgSend<id>(self, "autorelease"_sel);
    }
    /// One more than the extra references.
    unsigned retainCount() { return objc_msgSend<unsigned>(this, "retainCount"_sel); }

    /// A copy in the default zone, which the caller owns; the class implements `copyWithZone:`.
    id copy() { return objc_msgSend<id>(this, "copy"_sel); }
    /// A changeable copy in the default zone, which the caller owns.
    id mutableCopy() { return objc_msgSend<id>(this, "mutableCopy"_sel); }
    /// A copy in a zone (null: the default zone), which the caller owns.
    id copyWithZone(ZPZone *zone) { return objc_msgSend<id>(this, "copyWithZone:"_sel, zone); }
    id mutableCopyWithZone(ZPZone *zone) { return objc_msgSend<id>(this, "mutableCopyWithZone:"_sel, zone); }

    /// The zone of the receiver's memory.
    ZPZone *zone() { return objc_msgSend<ZPZone *>(this, "zone"_sel); }
    /// What the receiver says its class is; `isa` is what it really is.
    Class objectClass() { return objc_msgSend<Class>(this, "class"_sel); }
    Class superclass() { return objc_msgSend<Class>(this, "superclass"_sel); }
    id self() { return objc_msgSend<id>(this, "self"_sel); }

    /// Equal for objects that are equal.
    unsigned hash() { return objc_msgSend<unsigned>(this, "hash"_sel); }
    /// Identity, unless a class says otherwise.
    BOOL isEqual(id other) { return objc_msgSend<BOOL>(this, "isEqual:"_sel, other); }
    BOOL isKindOfClass(Class cls) { return objc_msgSend<BOOL>(this, "isKindOfClass:"_sel, cls); }
    BOOL isMemberOfClass(Class cls) { return objc_msgSend<BOOL>(this, "isMemberOfClass:"_sel, cls); }
    BOOL isProxy() { return objc_msgSend<BOOL>(this, "isProxy"_sel); }
    BOOL respondsToSelector(SEL selector) { return objc_msgSend<BOOL>(this, "respondsToSelector:"_sel, selector); }
    BOOL conformsToProtocol(Protocol *protocol) { return objc_msgSend<BOOL>(this, "conformsToProtocol:"_sel, protocol); }

    /// A text for people; class name and address unless a class says otherwise.
    ZPString *description() { return objc_msgSend<ZPString *>(this, "description"_sel); }
    ZPString *debugDescription() { return objc_msgSend<ZPString *>(this, "debugDescription"_sel); }

    /// Sends a message without arguments that answers an object. A null selector raises
    /// ZPInvalidArgumentException.
    id performSelector(SEL selector) { return objc_msgSend<id>(this, "performSelector:"_sel, selector); }
    id performSelector_withObject(SEL selector, id object) {
        return objc_msgSend<id>(this, "performSelector:withObject:"_sel, selector, object);
    }
    id performSelector_withObject_withObject(SEL selector, id object1, id object2) {
        return objc_msgSend<id>(this, "performSelector:withObject:withObject:"_sel, selector, object1, object2);
    }
    /// Sends the selector with each element of the array, in index order.
    void perform_withEachObjectInArray(SEL selector, ZPArray *array) {
        objc_msgSend(this, "perform:withEachObjectInArray:"_sel, selector, array);
    }
    /// Sends the selector with an argument frame as `objc_msgSendv` takes it.
    id performv(SEL selector, void *arguments) { return objc_msgSend<id>(this, "performv::"_sel, selector, arguments); }
    /// The bytes of a method's argument frame; 0 when there is no such method.
    unsigned methodArgSize(SEL selector) { return objc_msgSend<unsigned>(this, "methodArgSize:"_sel, selector); }
    /// The implementation; `_objc_msgForward` when there is none.
    IMP methodForSelector(SEL selector) { return objc_msgSend<IMP>(this, "methodForSelector:"_sel, selector); }
    BOOL implementsSelector(SEL selector) { return objc_msgSend<BOOL>(this, "implementsSelector:"_sel, selector); }
    /// Selector and type string, from an adopted protocol first; null when unknown.
    const objc_methodDescription *methodDescriptionForSelector(SEL selector) {
        return objc_msgSend<const objc_methodDescription *>(this, "methodDescriptionForSelector:"_sel, selector);
    }
    /// Receives every message that the receiver does not implement.
    void forward(SEL selector, objc_frame *frame) { objc_msgSend(this, "forward::"_sel, selector, frame); }
    /// Logs and raises ZPInvalidArgumentException.
    void doesNotRecognizeSelector(SEL selector) { objc_msgSend(this, "doesNotRecognizeSelector:"_sel, selector); }
};

/// The class object itself as an object, for messages to a class held in a variable.
inline ZPObject *ZPClassObject(Class cls) { return reinterpret_cast<ZPObject *>(cls); }

/// The promises of copying, which collections rely on.
struct ZPCopying { ZP_PROTOCOL(ZPCopying) };
struct ZPMutableCopying { ZP_PROTOCOL(ZPMutableCopying) };
