// SPDX-License-Identifier: MIT
// The root class: what every instance and every class object answers.
#include <Bedrock/core/Core+Internal.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

objc_object *_ZPGlobalRetainLock;

namespace {

[[noreturn]] void raiseNullSelector(objc_object *receiver, SEL operation) {
    ZPException::raise_format(ZPInvalidArgumentException, "%@: null selector"_zp,
                              _ZPMethodExceptionProem(receiver, operation));
}

// Method signatures belong to a higher floor; until it is there, nothing has one.
ZPMethodSignature *signatureOf(const objc_methodDescription *description) {
    return description ? _ZPMethodSignatureAbove::signatureWithObjCTypes(description->types) : nullptr;
}

// Sends through whatever C++ type the method has, as one that takes objects and answers one: the
// classic perform operations know nothing of the method's type.
template <class... A> id perform(objc_object *self, SEL selector, A... arguments) {
    return objc_msgSendUnchecked<id>(self, selector, arguments...);
}

/// What forwarding asks of an object, which is no part of the root class's front.
struct Signed : ZPObject {
    ZPMethodSignature *methodSignatureForSelector(SEL selector) ZP_ASKS(selector);
};

struct ZPObjectMethods : ZPObject {
    id init() { return this; }
    void dealloc() { ZPDeallocateObject(this); }
    id retain() {
        ZPIncrementExtraRefCount(this);
        return this;
    }
    void release() {
        if (ZPDecrementExtraRefCountWasZero(this)) self()->dealloc();
    }
    unsigned retainCount() { return ZPExtraRefCount(this) + 1; }
    id autorelease() {
        ZPAutoreleaseObject(this);
        return this;
    }
    id copy() { return self()->copyWithZone(nullptr); }
    id mutableCopy() { return self()->mutableCopyWithZone(nullptr); }
    ZPZone *zone() {
        if (objc_countsInItsHeader(this) && objc_headerOf(this)->origin != objc_fromChildZone)
            return QLDefaultMallocZone();
        ZPZone *zone = QLZoneFromPtr(this);
        return zone ? zone : QLDefaultMallocZone();
    }
    Class class_() { return isa; }
    Class classForCoder() { return isa; }
    Class superclass() { return objc_superRecordOf(isa); }
    id self() { return this; }
    unsigned hash() { return unsigned(reinterpret_cast<std::uintptr_t>(this) >> 2); }
    BOOL isEqual(id other) { return other.pointer() == this; }
    BOOL isKindOfClass(Class cls) { return class_inherits(isa, cls); }
    BOOL isMemberOfClass(Class cls) { return isa == cls; }
    BOOL isProxy() { return NO; }
    BOOL respondsToSelector(SEL selector) { return class_respondsToMethod(isa, selector); }
    BOOL conformsToProtocol(Protocol *protocol) { return _ZPConforms(isa, protocol); }
    ZPString *description() {
        return _ZPStringWithCText("<%s: 0x%lx>", isa->name, reinterpret_cast<unsigned long>(this));
    }
    ZPString *debugDescription() { return self()->description(); }

    id performSelector(SEL selector) {
        if (!selector) raiseNullSelector(this, "performSelector:"_sel);
        return perform(this, selector);
    }
    id performSelector_withObject(SEL selector, id object) {
        if (!selector) raiseNullSelector(this, "performSelector:withObject:"_sel);
        return perform(this, selector, object);
    }
    id performSelector_withObject_withObject(SEL selector, id object1, id object2) {
        if (!selector) raiseNullSelector(this, "performSelector:withObject:withObject:"_sel);
        return perform(this, selector, object1, object2);
    }
    void perform_withEachObjectInArray(SEL selector, ZPArray *array) {
        unsigned count = _ZPAbove(array)->count();
        if (!selector) raiseNullSelector(this, "perform:withEachObjectInArray:"_sel);
        for (unsigned i = 0; i < count; ++i) perform(this, selector, _ZPAbove(array)->objectAtIndex(i));
    }
    id performv(SEL selector, void *arguments) {
        unsigned size = self()->methodArgSize(selector);
        if (size == 0) {
            self()->doesNotRecognizeSelector(selector);
            return nullptr;
        }
        return objc_msgSendv<id>(this, selector, size, arguments);
    }
    unsigned methodArgSize(SEL selector) { return method_getSizeOfArguments(class_getInstanceMethod(isa, selector)); }
    IMP methodForSelector(SEL selector) { return class_lookupMethod(isa, selector); }
    BOOL implementsSelector(SEL selector) { return class_lookupMethod(isa, selector) != &_objc_msgForward; }
    const objc_methodDescription *methodDescriptionForSelector(SEL selector) {
        return _ZPDescribeMethod(isa, selector);
    }
    ZPMethodSignature *methodSignatureForSelector(SEL selector) {
        return signatureOf(self()->methodDescriptionForSelector(selector));
    }
    void forward(SEL selector, objc_frame *) {
        // Without the machinery that makes invocations of messages, nothing is recognized.
        id(this).unchecked<Signed>()->methodSignatureForSelector(selector);
        self()->doesNotRecognizeSelector(selector);
    }
    void forwardInvocation(ZPInvocation *invocation) {
        self()->doesNotRecognizeSelector(_ZPAbove(invocation)->selector());
    }
    id awakeAfterUsingCoder(id) { return this; }
    id replacementObjectForCoder(id) { return this; }
    void doesNotRecognizeSelector(SEL selector) {
        ZPString *proem = _ZPMethodExceptionProem(this, selector);
        ZPLog("%@: selector not recognized"_zp, proem);
        ZPException::raise_format(ZPInvalidArgumentException, "%@: selector not recognized"_zp, proem);
    }
};

// What class objects answer in their own way; everything else they answer as instances do.
struct ZPClassMethods {
    static void initialize(Class) { _ZPStartUp(); }
    static void load(Class) { _ZPStartUp(); }
    static id alloc(Class self) { return ZPObject::allocFrom(self); }
    static id allocWithZone(Class self, ZPZone *zone) { return ZPAllocateObject(self, 0, zone); }
    static id new_(Class self) { return _ZPFront(self)->alloc()->init(); }
    static id init(Class self) { return self; }
    static id self(Class self) { return self; }
    static id retain(Class self) { return self; }
    static id autorelease(Class self) { return self; }
    static id copy(Class self) { return self; }
    static id mutableCopy(Class self) { return self; }
    static Class class_(Class self) { return self; }
    static id copyWithZone(Class self, ZPZone *) { return self; }
    static id mutableCopyWithZone(Class self, ZPZone *) { return self; }
    static void release(Class) {}
    static void dealloc(Class) {}
    static unsigned retainCount(Class) { return 0xFFFFFFFF; }
    static ZPZone *zone(Class) { return QLDefaultMallocZone(); }
    static Class superclass(Class self) { return objc_superRecordOf(self); }
    static BOOL conformsToProtocol(Class self, Protocol *protocol) { return _ZPConforms(self, protocol); }
    static ZPString *description(Class self) { return ZPStringFromClass(self); }
    static ZPString *debugDescription(Class self) { return ZPClassObject(self)->description(); }
    static BOOL instancesRespondToSelector(Class self, SEL selector) { return class_respondsToMethod(self, selector); }
    static IMP instanceMethodForSelector(Class self, SEL selector) { return class_lookupMethod(self, selector); }
    static BOOL instancesImplementSelector(Class self, SEL selector) {
        return class_lookupMethod(self, selector) != &_objc_msgForward;
    }
    static const objc_methodDescription *instanceMethodDescriptionForSelector(Class self, SEL selector) {
        return _ZPDescribeMethod(self, selector);
    }
    static ZPMethodSignature *instanceMethodSignatureForSelector(Class self, SEL selector) {
        return signatureOf(_ZPDescribeMethod(self, selector));
    }
    static id poseAsClass(Class self, Class other) { return class_poseAs(self, other); }
    static int version(Class self) { return self->version; }
    static void setVersion(Class self, int version) { self->version = version; }
    static BOOL isAncestorOfObject(Class self, id object) {
        return object ? class_inherits(object.pointer()->isa, self) : NO;
    }
    static void _taskNowMultiThreaded(Class self);
};

void ZPClassMethods::_taskNowMultiThreaded(Class) {
    // Counts are atomic, so the lock guards only what its other users put under it.
    if (!_ZPGlobalRetainLock) _ZPGlobalRetainLock = _ZPLockAbove::new_();
}

}  // namespace

// What objects of every root that has the library's own reference counts answer, and their classes.
#define OF_OBJECTS                                                                                             \
    copy, mutableCopy, class_, superclass, self, hash, isEqual, isKindOfClass, isMemberOfClass, isProxy,       \
        respondsToSelector, conformsToProtocol, debugDescription, performSelector, performSelector_withObject, \
        performSelector_withObject_withObject, perform_withEachObjectInArray, named(performv, "performv::"),   \
        methodArgSize, methodForSelector, implementsSelector, methodDescriptionForSelector,                    \
        methodSignatureForSelector, named(forward, "forward::"), forwardInvocation, doesNotRecognizeSelector
#define OF_CLASSES                                                                                             \
    initialize, load, self, class_, retain, autorelease, copy, copyWithZone, mutableCopy, mutableCopyWithZone, \
        release, dealloc, retainCount, zone, superclass, conformsToProtocol, description, debugDescription,    \
        instancesRespondToSelector, instanceMethodForSelector, instancesImplementSelector,                     \
        instanceMethodDescriptionForSelector, instanceMethodSignatureForSelector, version, isAncestorOfObject

ZP_IMPLEMENT_WITH(ZPObject, ZPObjectMethods, rootCounting(), OF_OBJECTS, init, dealloc, retain, release, retainCount,
                  autorelease, zone, description, awakeAfterUsingCoder, replacementObjectForCoder, classForCoder,
                  classMethodsOf(ZPClassMethods, OF_CLASSES, alloc, allocWithZone, new_, init, poseAsClass, setVersion,
                                 _taskNowMultiThreaded));

namespace {

struct ProtocolMethods : ZPObject {
    ZPString *description() { return _ZPStringWithCText("%s", reinterpret_cast<Protocol *>(this)->name()); }
    id copyWithZone(ZPZone *) { return this; }
    ZPZone *zone() { return QLDefaultMallocZone(); }
};

// Protocol objects lie below this class and are objects all the same. Nobody makes one by a message.
OBJC_REGISTER(static, "zp_categories", OfProtocolObjects, "ZPObject", &objc_protocolClass.cls, ZPObject,
              ZPObjectMethods, OF_OBJECTS, methodsOf(ProtocolMethods, description, copyWithZone, zone),
              classMethodsOf(ZPClassMethods, OF_CLASSES));

}  // namespace

ZP_DEFINE_PROTOCOL(ZPCopying, copyWithZone);
ZP_DEFINE_PROTOCOL(ZPMutableCopying, mutableCopyWithZone);

const objc_methodDescription *_ZPDescribeMethod(Class cls, SEL selector) {
    if (!selector) return nullptr;
    for (Class c = cls; c; c = objc_superRecordOf(c)) {
        // The root class follows the metaclasses: what it promises of its instances, class objects answer too.
        bool isMeta = objc_infoOf(c) & objc_isMetaclass;
        Class record = isMeta ? objc_counterpart(c) : c;
        for (auto *p = __atomic_load_n(&record->protocols, __ATOMIC_ACQUIRE); p; p = p->next)
            if (auto *d = isMeta ? p->protocol->descriptionForClassMethod(selector)
                                 : p->protocol->descriptionForInstanceMethod(selector))
                return d;
    }
    // A method record begins with its description.
    return reinterpret_cast<const objc_methodDescription *>(class_getInstanceMethod(cls, selector));
}

BOOL _ZPConforms(Class cls, Protocol *protocol) {
    for (Class c = cls; c; c = objc_superRecordOf(c)) {
        Class record = objc_infoOf(c) & objc_isMetaclass ? objc_counterpart(c) : c;
        for (auto *p = __atomic_load_n(&record->protocols, __ATOMIC_ACQUIRE); p; p = p->next)
            if (p->protocol->conformsTo(protocol)) return YES;
    }
    return NO;
}
