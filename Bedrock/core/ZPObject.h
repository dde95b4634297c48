// SPDX-License-Identifier: MIT
// The root class. The floor of the core has what every object does: allocation, counting, pools, exceptions, names,
// the log. Programs and higher floors see the public headers; the library also Fronts.h, Scope.h, CText.h,
// Field.h and LogTimeStamp.h. Read this first, then Object.cpp.
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

    /// Frees the receiver; sent by the last release, never by a client. A class that overrides it gives up what it
    /// owns and ends with `ZP_SUPER(T, dealloc)()`.
    void dealloc() ZP_TELLS();

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
            else static_cast<ZPObject *>(self)->dealloc();
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
    unsigned retainCount() ZP_ASKS();

    /// A copy in the default zone, which the caller owns; a class that does not implement `copyWithZone:` raises
    /// ZPInvalidArgumentException. An immutable object may answer itself.
    id copy() ZP_ASKS();
    /// A changeable copy in the default zone, which the caller owns; as above for `mutableCopyWithZone:`.
    id mutableCopy() ZP_ASKS();
    /// A copy in a zone (null: the default zone), which the caller owns. Not implemented here.
    id copyWithZone(ZPZone *zone) ZP_ASKS(zone);
    /// A changeable copy in a zone (null: the default zone), which the caller owns. Not implemented here.
    id mutableCopyWithZone(ZPZone *zone) ZP_ASKS(zone);

    /// The zone of the receiver's memory; the default zone for what no zone gave.
    ZPZone *zone() ZP_ASKS();
    /// What the receiver says its class is; `isa` is what it really is.
    Class objectClass() ZP_ASKS_AS("class");
    /// The superclass of the receiver's class; null for a root class.
    Class superclass() ZP_ASKS();

    /// The same for objects that are equal, as long as they do not change; from the address unless a class says
    /// otherwise.
    unsigned hash() ZP_ASKS();
    /// Identity, unless a class says otherwise; NO for null.
    BOOL isEqual(id other) ZP_ASKS(other);
    /// Whether the receiver's class is the given one or descends from it; NO for null.
    BOOL isKindOfClass(Class cls) ZP_ASKS(cls);
    /// Whether the receiver's class is exactly the given one. Objects of a class cluster belong to private
    /// subclasses.
    BOOL isMemberOfClass(Class cls) ZP_ASKS(cls);
    /// NO; see ZPProxy.
    BOOL isProxy() ZP_ASKS();
    /// Whether the receiver has a method for the selector; NO for the null selector.
    BOOL respondsToSelector(SEL selector) ZP_ASKS(selector);
    /// Whether the receiver's class, or one it descends from, adopts the protocol, or one that includes it.
    BOOL conformsToProtocol(Protocol *protocol) ZP_ASKS(protocol);

    /// A text for people, which `%@` takes; "<Class: 0xaddress>" unless a class says otherwise.
    ZPString *description() ZP_ASKS();
    /// A text for the debugger; the description unless a class says otherwise.
    ZPString *debugDescription() ZP_ASKS();

    /// Sends a message without arguments that answers an object; what one that answers nothing answers here is
    /// undefined. A null selector raises ZPInvalidArgumentException here and below.
    id performSelector(SEL selector) ZP_ASKS(selector);
    /// The same with one argument, an object.
    id performSelector_withObject(SEL selector, id object) ZP_ASKS(selector, object);
    /// The same with two.
    id performSelector_withObject_withObject(SEL selector, id object1, id object2) ZP_ASKS(selector, object1, object2);
    /// Sends the selector to the receiver with each element of the array, in index order.
    void perform_withEachObjectInArray(SEL selector, ZPArray *array) ZP_TELLS(selector, array);
    /// Sends the selector with an argument frame as `objc_msgSendv` takes it; raises ZPInvalidArgumentException
    /// when the receiver has no such method.
    id performv(SEL selector, void *arguments) ZP_ASKS_AS("performv::", selector, arguments);
    /// The bytes of the method's argument frame; 0 when there is no such method.
    unsigned methodArgSize(SEL selector) ZP_ASKS(selector);
    /// The receiver's implementation; `_objc_msgForward` when there is none.
    IMP methodForSelector(SEL selector) ZP_ASKS(selector);
    /// Whether the receiver has an implementation of its own or an inherited one.
    BOOL implementsSelector(SEL selector) ZP_ASKS(selector);
    /// Selector and type string, from an adopted protocol first; null when neither protocols nor methods have it.
    const objc_methodDescription *methodDescriptionForSelector(SEL selector) ZP_ASKS(selector);
    /// Receives every message that the receiver does not implement; `frame` is valid until it returns. This one
    /// sends `doesNotRecognizeSelector`; override it to pass messages on.
    void forward(SEL selector, objc_frame *frame) ZP_TELLS_AS("forward::", selector, frame);
    /// Logs and raises ZPInvalidArgumentException, "*** -[Class selector]: selector not recognized".
    void doesNotRecognizeSelector(SEL selector) ZP_TELLS(selector);
};

/// The class object itself as an object, for messages to a class held in a variable. Not owned.
inline ZPObject *ZPClassObject(Class cls) { return reinterpret_cast<ZPObject *>(cls); }

/// What can be copied: the keys of dictionaries, for example.
struct ZPCopying {
    ZP_PROTOCOL(ZPCopying)
    /// A copy in a zone (null: the default zone), which the caller owns.
    id copyWithZone(ZPZone *zone);
};
/// What has a changeable copy.
struct ZPMutableCopying {
    ZP_PROTOCOL(ZPMutableCopying)
    /// A changeable copy in a zone (null: the default zone), which the caller owns.
    id mutableCopyWithZone(ZPZone *zone);
};
