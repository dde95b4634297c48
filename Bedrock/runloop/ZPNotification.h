// SPDX-License-Identifier: MIT
// Notifications: an event's name, who sends it, and what there is to know.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPDictionary);

/// A name, an object and information, which do not change. A subclass of this cluster's front supplies the three.
/// Any thread may read it.
struct ZPNotification : ZPObject {
    ZP_CLASS(ZPNotification)

    /// An autoreleased notification, which copies the name and retains the object, which may be null. Null for a
    /// null name.
    static ZPNotification *notificationWithName_object(ZPString *name, id object) {
        return objc_msgSend<ZPNotification *>(class_(), "notificationWithName:object:"_sel, name, object);
    }
    /// The same with information, which it retains and which may be null.
    static ZPNotification *notificationWithName_object_userInfo(ZPString *name, id object, ZPDictionary *userInfo) {
        return objc_msgSend<ZPNotification *>(class_(), "notificationWithName:object:userInfo:"_sel, name, object,
                                              userInfo);
    }
    /// As the class message.
    ZPNotification *initWithName_object_userInfo(ZPString *name, id object, ZPDictionary *userInfo) {
        return objc_msgSend<ZPNotification *>(this, "initWithName:object:userInfo:"_sel, name, object, userInfo);
    }

    /// The name it was made with; borrowed, as the two others.
    ZPString *name() { return objc_msgSend<ZPString *>(this, "name"_sel); }
    /// The object, mostly the sender; may be null.
    id object() { return objc_msgSend<id>(this, "object"_sel); }
    /// What the sender gave along; may be null.
    ZPDictionary *userInfo() { return objc_msgSend<ZPDictionary *>(this, "userInfo"_sel); }
};
