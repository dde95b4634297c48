// SPDX-License-Identifier: MIT
// The proxy root, and the zombies made of it: with ZPZombieEnabled, a freed object gets a class that
// reports every message it still receives.
#include <Bedrock/core/ZPProxy.h>
#include <Bedrock/platform/kernel/Fork.h>

#include <Bedrock/core/Core+Internal.h>
#include <Bedrock/platform/kernel/MakeOnce.h>

#include <string>
#include <unordered_map>

namespace {

struct ZPProxyMethods : ZPProxy {
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
    ZPZone *zone() { return ZPZoneFromPointer(this); }
    Class class_() { return isa; }
    Class superclass() { return isa->superclass; }
    id self() { return this; }
    unsigned hash() { return unsigned(reinterpret_cast<std::uintptr_t>(this) >> 2); }
    BOOL isEqual(id other) { return other.pointer() == this; }
    BOOL isProxy() { return YES; }
    ZPString *description() {
        return _ZPStringWithCText("<%s: 0x%lx>", self()->objectClass()->name, reinterpret_cast<unsigned long>(this));
    }
    ZPString *debugDescription() { return self()->description(); }
    id performSelector(SEL selector) { return objc_msgSendUnchecked<id>(this, selector); }
    id performSelector_withObject(SEL selector, id object) { return objc_msgSendUnchecked<id>(this, selector, object); }
    id performSelector_withObject_withObject(SEL selector, id object1, id object2) {
        return objc_msgSendUnchecked<id>(this, selector, object1, object2);
    }

    // The object behind the proxy is asked.
    template <class A> BOOL ask(SEL selector, A argument) {
        return objc_sendForward<BOOL, A>(this, selector, argument);
    }
    BOOL isKindOfClass(Class cls) { return ask("isKindOfClass:"_sel, cls); }
    BOOL isMemberOfClass(Class cls) { return ask("isMemberOfClass:"_sel, cls); }
    BOOL conformsToProtocol(Protocol *protocol) { return ask("conformsToProtocol:"_sel, protocol); }
    BOOL respondsToSelector(SEL selector) { return ask("respondsToSelector:"_sel, selector); }

    BOOL willForwardSelector(SEL selector) { return !class_respondsToMethod(isa, selector); }
    ZPMethodSignature *methodSignatureForSelector(SEL) {
        ZPException::raise_format(ZPInvalidArgumentException, "*** -[ZPProxy methodSignatureForSelector:] called!"_zp);
    }
    void forwardInvocation(ZPInvocation *) {
        ZPException::raise_format(ZPInvalidArgumentException, "*** -[ZPProxy forwardInvocation:] called!"_zp);
    }
    void doesNotRecognizeSelector(SEL selector) {
        ZPException::raise_format(ZPInvalidArgumentException, "*** -[ZPProxy doesNotRecognizeSelector:%s] called!"_zp,
                                  sel_getName(selector));
    }
};

struct ZPProxyClassMethods {
    // Proxies forward as the root object does at this moment.
    static void initialize(Class self) {
        _ZPStartUp();
        if (self != ZPProxy::class_()) return;
        const objc_method *m = class_getInstanceMethod(ZPObject::class_(), "forward::"_sel);
        class_addMethod(self, m->name, m->implementation, m->types, m->invoker, m->argumentSize);
    }
    static void load(Class self) { initialize(self); }
    static id alloc(Class self) { return ZPProxy::allocFrom(self); }
    static id allocWithZone(Class self, ZPZone *zone) { return ZPAllocateObject(self, 0, zone); }
    static id self(Class self) { return self; }
    static id retain(Class self) { return self; }
    static id autorelease(Class self) { return self; }
    static Class class_(Class self) { return self; }
    static id copyWithZone(Class self, ZPZone *) { return self; }
    static id mutableCopyWithZone(Class self, ZPZone *) { return self; }
    static void release(Class) {}
    static void dealloc(Class) {}
    static unsigned retainCount(Class) { return 0xFFFFFFFF; }
    static BOOL respondsToSelector(Class self, SEL selector) { return class_respondsToMethod(self->isa, selector); }
    static BOOL isKindOfClass(Class self, Class cls) { return class_inherits(self->isa, cls); }
    static BOOL isMemberOfClass(Class self, Class cls) { return self->isa == cls; }
    static BOOL conformsToProtocol(Class self, Protocol *protocol) { return _ZPConforms(self, protocol); }
    static BOOL isAncestorOfObject(Class self, id object) {
        return object ? class_inherits(object.pointer()->isa, self) : NO;
    }
    static BOOL isProxy(Class) { return NO; }
    static ZPString *description(Class self) { return ZPStringFromClass(self); }
    static ZPString *debugDescription(Class self) { return ZPStringFromClass(self); }
    static Class superclass(Class self) { return self->superclass; }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPProxy, ZPProxyMethods, rootCounting(), dealloc, retain, release, retainCount, autorelease, zone,
                  class_, superclass, self, hash, isEqual, isProxy, description, debugDescription, performSelector,
                  performSelector_withObject, performSelector_withObject_withObject, isKindOfClass, isMemberOfClass,
                  conformsToProtocol, respondsToSelector, willForwardSelector, methodSignatureForSelector,
                  forwardInvocation, doesNotRecognizeSelector,
                  classMethodsOf(ZPProxyClassMethods, initialize, load, alloc, allocWithZone, self, class_, retain,
                                 autorelease, copyWithZone, mutableCopyWithZone, release, dealloc, retainCount,
                                 respondsToSelector, isKindOfClass, isMemberOfClass, conformsToProtocol,
                                 isAncestorOfObject, isProxy, description, debugDescription, superclass));

// ---- zombies -----------------------------------------------------------------------------------

namespace {

struct _ZPZombie : ZPProxy {
    ZP_PRIVATE_CLASS(_ZPZombie)
};

// A freed object's class -> its zombie class.
struct Zombies {
    struct mutex mutex;
    std::unordered_map<Class, Class> classes ZP_GUARDED_BY(mutex);
};
Zombies &zombies() { return ZPTheOnly<Zombies>(); }

ZP_MUTEX_AT_FORK(zombies, []() -> mutex & { return zombies().mutex; });

[[noreturn]] void report(objc_object *zombie, SEL sent, SEL caught) {
    const char *former = "(unknown)";
    {
        Zombies &z = zombies();
        ZPHolding hold(z.mutex);
        for (auto &[cls, trap] : z.classes)
            if (trap == zombie->isa) former = cls->name;
    }
    ZPString *text = _ZPStringWithCText(
        "*** Selector '%s' sent to dealloced instance 0x%lx of class %s.\nBreak at '-[_ZPZombie %s]' to debug.",
        sent ? sel_getName(sent) : "(null)", reinterpret_cast<unsigned long>(zombie), former, sel_getName(caught));
    ZPLog("*** %@"_zp, text);
    ZPException::exceptionWithName_reason_userInfo(ZPGenericException, text, nullptr)->raise();
}

struct ZombieMethods : _ZPZombie {
    ZPMethodSignature *methodSignatureForSelector(SEL selector) {
        report(this, selector, "methodSignatureForSelector:"_sel);
    }
    void forwardInvocation(ZPInvocation *invocation) {
        report(this, _ZPAbove(invocation)->selector(), "forwardInvocation:"_sel);
    }
    id retain() { report(this, "retain"_sel, "retain"_sel); }
    unsigned retainCount() { report(this, "retainCount"_sel, "retainCount"_sel); }
    void release() { report(this, "release"_sel, "release"_sel); }
    id autorelease() { report(this, "autorelease"_sel, "autorelease"_sel); }
    void dealloc() { report(this, "dealloc"_sel, "dealloc"_sel); }
    id stringByAppendingFormat(ZPString *, std::va_list) {
        report(this, "stringByAppendingFormat:"_sel, "stringByAppendingFormat:"_sel);
    }
    void appendFormat(ZPString *, std::va_list) { report(this, "appendFormat:"_sel, "appendFormat:"_sel); }
};

ZP_IMPLEMENT_WITH(_ZPZombie, ZombieMethods, methodSignatureForSelector, forwardInvocation, retain, retainCount, release,
                  autorelease, dealloc, variadic(stringByAppendingFormat), variadic(appendFormat));

}  // namespace

BOOL _ZPIsZombie(objc_object *object) {
    Class super = object->isa ? object->isa->superclass : nullptr;
    return super == ZPProxy::class_() && std::strncmp(object->isa->name, "ZPZombie_", 9) == 0;
}

BOOL _ZPMakeZombie(objc_object *object) {
    Class trap;
    {
        Zombies &z = zombies();
        ZPHolding hold(z.mutex);
        Class &entry = z.classes[object->isa];
        if (!entry) {
            _ZPFront(_ZPZombie::class_())->self();  // initialize the template before it is copied
            std::string name = std::string("ZPZombie_") + object->isa->name;
            entry = objc_copyClass(_ZPZombie::class_(), name.c_str());
            objc_addClass(entry);
        }
        trap = entry;
    }
    if (ZPDeallocateZombies) return NO;
    objc_destroyFields(object);
    object->isa = trap;
    return YES;
}
