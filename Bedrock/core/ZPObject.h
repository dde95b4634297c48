// SPDX-License-Identifier: MIT
// The root class. The floor of the core has what every object does: allocation, counting, pools, exceptions, names,
// the log. Programs and higher floors see the public headers; the library also ZPScope.h, ZPCText.h, ZPField.h and
// ZPLogTimeStamp.h. Read this first, then ZPObject.cpp.
#pragma once

#include <Bedrock/core/ZPLiteral.h>
#include <Bedrock/core/ZPRange.h>
#include <Bedrock/platform/ZPRuntime.h>
#include <Bedrock/platform/ZPZone.h>

ZP_FORWARD(ZPArray);
ZP_FORWARD(ZPMethodSignature);
ZP_FORWARD(ZPInvocation);

extern "C" {
/// Frees an instance, or turns it into a zombie: what `dealloc` of the root class does.
ZP_EXPORT void objc_deallocatePlainly(objc_object *object);
/// Records the object in the innermost pool; see ZPAutoreleasePool.h.
ZP_EXPORT void ZPAutoreleaseObject(id object);
}

/// The root of nearly every class. A new object has retain count 1; it is deallocated by the release that finds no
/// further reference. Operations whose names begin with alloc, copy, mutableCopy or new give an object that the
/// caller owns; all others give one that the innermost autorelease pool keeps. Every message to null does nothing
/// and answers a zero. Counting is safe from any thread, and so are the questions about class and selectors; for
/// the rest see the class.
struct ZPObject : objc_object {
    ZP_CLASS(ZPObject)

    /// Prepares a new instance, and is sent to nothing else; answers the receiver, or another object in its place,
    /// which alone is to be used.
    id init() { return objc_msgSend<id>(this, "init"_sel); }
    /// Frees the receiver; sent by the last release, never by a client. A class that overrides it gives up what it
    /// owns and ends with `objc_super<T>(this).send("dealloc"_sel)`.
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
    /// Has the innermost autorelease pool of the calling thread release the receiver when it ends; answers the
    /// receiver. Without a pool that is logged, and the receiver leaks.
    id autorelease() {
        objc_object *self = objc_receiver(this);
        if (!self) return nullptr;
        if (__atomic_load_n(&self->isa->info, __ATOMIC_RELAXED) & objc_defaultCounting) [[likely]] {
            ZPAutoreleaseObject(self);
            return self;
        }
        return objc_msgSend<id>(self, "autorelease"_sel);
    }
    /// One more than the extra references; 0xFFFFFFFF for classes. Of use for debugging alone.
    unsigned retainCount() { return objc_msgSend<unsigned>(this, "retainCount"_sel); }

    /// A copy in the default zone, which the caller owns; a class that does not implement `copyWithZone:` raises
    /// ZPInvalidArgumentException. An immutable object may answer itself.
    id copy() { return objc_msgSend<id>(this, "copy"_sel); }
    /// A changeable copy in the default zone, which the caller owns; as above for `mutableCopyWithZone:`.
    id mutableCopy() { return objc_msgSend<id>(this, "mutableCopy"_sel); }
    /// A copy in a zone (null: the default zone), which the caller owns. Not implemented here.
    id copyWithZone(ZPZone *zone) { return objc_msgSend<id>(this, "copyWithZone:"_sel, zone); }
    /// A changeable copy in a zone (null: the default zone), which the caller owns. Not implemented here.
    id mutableCopyWithZone(ZPZone *zone) { return objc_msgSend<id>(this, "mutableCopyWithZone:"_sel, zone); }

    /// The zone of the receiver's memory; the default zone for what no zone gave.
    ZPZone *zone() { return objc_msgSend<ZPZone *>(this, "zone"_sel); }
    /// What the receiver says its class is; `isa` is what it really is.
    Class objectClass() { return objc_msgSend<Class>(this, "class"_sel); }
    /// The superclass of the receiver's class; null for a root class.
    Class superclass() { return objc_msgSend<Class>(this, "superclass"_sel); }
    /// The receiver.
    id self() { return objc_msgSend<id>(this, "self"_sel); }

    /// The same for objects that are equal, as long as they do not change; from the address unless a class says
    /// otherwise.
    unsigned hash() { return objc_msgSend<unsigned>(this, "hash"_sel); }
    /// Identity, unless a class says otherwise; NO for null.
    BOOL isEqual(id other) { return objc_msgSend<BOOL>(this, "isEqual:"_sel, other); }
    /// Whether the receiver's class is the given one or descends from it; NO for null.
    BOOL isKindOfClass(Class cls) { return objc_msgSend<BOOL>(this, "isKindOfClass:"_sel, cls); }
    /// Whether the receiver's class is exactly the given one. Objects of a class cluster belong to private
    /// subclasses.
    BOOL isMemberOfClass(Class cls) { return objc_msgSend<BOOL>(this, "isMemberOfClass:"_sel, cls); }
    /// NO; see ZPProxy.
    BOOL isProxy() { return objc_msgSend<BOOL>(this, "isProxy"_sel); }
    /// Whether the receiver has a method for the selector; NO for the null selector.
    BOOL respondsToSelector(SEL selector) { return objc_msgSend<BOOL>(this, "respondsToSelector:"_sel, selector); }
    /// Whether the receiver's class, or one it descends from, adopts the protocol, or one that includes it.
    BOOL conformsToProtocol(Protocol *protocol) {
        return objc_msgSend<BOOL>(this, "conformsToProtocol:"_sel, protocol);
    }

    /// A text for people, which `%@` takes; "<Class: 0xaddress>" unless a class says otherwise.
    ZPString *description() { return objc_msgSend<ZPString *>(this, "description"_sel); }
    /// A text for the debugger; the description unless a class says otherwise.
    ZPString *debugDescription() { return objc_msgSend<ZPString *>(this, "debugDescription"_sel); }

    /// Sends a message without arguments that answers an object; what one that answers nothing answers here is
    /// undefined. A null selector raises ZPInvalidArgumentException here and below.
    id performSelector(SEL selector) { return objc_msgSend<id>(this, "performSelector:"_sel, selector); }
    /// The same with one argument, an object.
    id performSelector_withObject(SEL selector, id object) {
        return objc_msgSend<id>(this, "performSelector:withObject:"_sel, selector, object);
    }
    /// The same with two.
    id performSelector_withObject_withObject(SEL selector, id object1, id object2) {
        return objc_msgSend<id>(this, "performSelector:withObject:withObject:"_sel, selector, object1, object2);
    }
    /// Sends the selector to the receiver with each element of the array, in index order.
    void perform_withEachObjectInArray(SEL selector, ZPArray *array) {
        objc_msgSend(this, "perform:withEachObjectInArray:"_sel, selector, array);
    }
    /// Sends the selector with an argument frame as `objc_msgSendv` takes it; raises ZPInvalidArgumentException
    /// when the receiver has no such method.
    id performv(SEL selector, void *arguments) { return objc_msgSend<id>(this, "performv::"_sel, selector, arguments); }
    /// The bytes of the method's argument frame; 0 when there is no such method.
    unsigned methodArgSize(SEL selector) { return objc_msgSend<unsigned>(this, "methodArgSize:"_sel, selector); }
    /// The receiver's implementation; `_objc_msgForward` when there is none.
    IMP methodForSelector(SEL selector) { return objc_msgSend<IMP>(this, "methodForSelector:"_sel, selector); }
    /// Whether the receiver has an implementation of its own or an inherited one.
    BOOL implementsSelector(SEL selector) { return objc_msgSend<BOOL>(this, "implementsSelector:"_sel, selector); }
    /// Selector and type string, from an adopted protocol first; null when neither protocols nor methods have it.
    const objc_methodDescription *methodDescriptionForSelector(SEL selector) {
        return objc_msgSend<const objc_methodDescription *>(this, "methodDescriptionForSelector:"_sel, selector);
    }
    /// Receives every message that the receiver does not implement; `frame` is valid until it returns. This one
    /// sends `doesNotRecognizeSelector`; override it to pass messages on.
    void forward(SEL selector, objc_frame *frame) { objc_msgSend(this, "forward::"_sel, selector, frame); }
    /// Logs and raises ZPInvalidArgumentException, "*** -[Class selector]: selector not recognized".
    void doesNotRecognizeSelector(SEL selector) { objc_msgSend(this, "doesNotRecognizeSelector:"_sel, selector); }
};

/// The class object itself as an object, for messages to a class held in a variable. Not owned.
inline ZPObject *ZPClassObject(Class cls) { return reinterpret_cast<ZPObject *>(cls); }

/// `copyWithZone:`, which the keys of dictionaries need.
struct ZPCopying {
    ZP_PROTOCOL(ZPCopying)
};
/// `mutableCopyWithZone:`.
struct ZPMutableCopying {
    ZP_PROTOCOL(ZPMutableCopying)
};
