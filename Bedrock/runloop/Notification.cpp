// SPDX-License-Identifier: MIT
// Notifications: the front, and the concrete class.
#include <Bedrock/runloop/ZPNotification.h>

#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/core/Fronts.h>
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/strings/ZPMutableString.h>

namespace {

struct ZPConcreteNotification : ZPNotification {
    ZP_PRIVATE_CLASS(ZPConcreteNotification)
    ZPString *_name;
    id _object;
    ZPDictionary *_userInfo;

    id initWithName_object_userInfo(ZPString *name, id object, ZPDictionary *userInfo) {
        if (!name) {
            dealloc();
            return nullptr;
        }
        _name = name->copyWithZone(nullptr).as<ZPString>();
        _object = object->retain();
        _userInfo = userInfo;
        userInfo->retain();
        return this;
    }
    ZPString *name() { return _name; }
    id object() { return _object; }
    ZPDictionary *userInfo() { return _userInfo; }
    void dealloc() {
        _name->release();
        _object->release();
        _userInfo->release();
        ZP_SUPER(ZPConcreteNotification, dealloc)();
    }
};

struct NotificationMethods : ZPNotification {
    static id allocWithZone(Class self, ZPZone *zone) {
        return ZPAllocateObject(self == ZPNotification::class_() ? ZPConcreteNotification::class_() : self, 0, zone);
    }
    static ZPNotification *notificationWithName_object_userInfo(Class self, ZPString *name, id object,
                                                                ZPDictionary *userInfo) {
        return ZPNotification::allocFrom(self)
            ->initWithName_object_userInfo(name, object, userInfo)
            ->autorelease()
            .as<ZPNotification>();
    }
    static ZPNotification *notificationWithName_object(Class self, ZPString *name, id object) {
        return notificationWithName_object_userInfo(self, name, object, nullptr);
    }

    id init() {
        ZPException::raise_format(ZPGenericException, "%@: should never be used"_zp,
                                  _ZPMethodExceptionProem(this, "init"_sel));
    }
    [[noreturn]] void abstract(SEL selector) {
        ZPRequestConcreteImplementation(this, selector, ZPNotification::class_());
    }
    ZPString *name() { abstract("name"_sel); }
    id object() { abstract("object"_sel); }
    ZPDictionary *userInfo() { abstract("userInfo"_sel); }

    unsigned hash() { return self()->name()->hash(); }
    BOOL isEqual(id other) {
        if (other == this) return YES;
        if (!other || !other->isKindOfClass(ZPNotification::class_())) return NO;
        auto *o = other.as<ZPNotification>();
        return self()->name()->isEqualToString(o->name()) && self()->object() == o->object() &&
               self()->userInfo()->isEqualToDictionary(o->userInfo());
    }
    id copyWithZone(ZPZone *) { return self()->retain(); }

    void encodeWithCoder(ZPCoder *coder) {
        for (id part : {id(self()->name()), self()->object(), id(self()->userInfo())})
            _ZPAbove(coder)->encodeObject(part);
    }
    id initWithCoder(ZPCoder *coder) {
        id parts[3];
        for (id &part : parts) part = _ZPAbove(coder)->decodeObject();
        Class cls = self()->objectClass();
        ZPZone *zone = self()->zone();
        self()->dealloc();
        return ZPNotification::allocFrom(cls, zone)->initWithName_object_userInfo(parts[0], parts[1], parts[2]);
    }
    Class classForCoder() { return ZPNotification::class_(); }
    id replacementObjectForPortCoder(ZPPortCoder *) { return this; }

    ZPString *description() {
        id object = self()->object();
        ZPDictionary *userInfo = self()->userInfo();
        ZPMutableString *text = ZPMutableString::stringWithCapacity(256);
        text->appendFormat("%@ %lx {name = %@"_zp, id(isa), reinterpret_cast<unsigned long>(this), self()->name());
        if (object) text->appendFormat("; object = %@"_zp, object);
        if (userInfo) text->appendFormat("; userInfo = %@"_zp, userInfo);
        text->appendString("}"_zp);
        return text;
    }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPNotification, NotificationMethods, adopts(ZPCopying), init, name, object, userInfo, hash, isEqual,
                  copyWithZone, encodeWithCoder, initWithCoder, classForCoder, replacementObjectForPortCoder,
                  description,
                  classMethods(allocWithZone, notificationWithName_object, notificationWithName_object_userInfo));

ZP_IMPLEMENT(ZPConcreteNotification, initWithName_object_userInfo, name, object, userInfo, dealloc);
