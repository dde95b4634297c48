// SPDX-License-Identifier: MIT
// Notifications: an event's name, who sends it, and what there is to know.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPDictionary);

/// An immutable value. Any thread may read it.
struct ZPNotification : ZPObject {
    ZP_CLASS(ZPNotification)

    /// An autoreleased notification, which copies the name and retains the object and the information; both may be
    /// null. Null for a null name.
    static ZPNotification *notificationWithName_object(ZPString *name, id object) {
        return objc_msgSend<ZPNotification *>(class_(), "notificationWithName:object:"_sel, name, object);
    }
    static ZPNotification *notificationWithName_object_userInfo(ZPString *name, id object, ZPDictionary *userInfo) {
        return objc_msgSend<ZPNotification *>(class_(), "notificationWithName:object:userInfo:"_sel, name, object, userInfo);
    }
    ZPNotification *initWithName_object_userInfo(ZPString *name, id object, ZPDictionary *userInfo) {
        return objc_msgSend<ZPNotification *>(this, "initWithName:object:userInfo:"_sel, name, object, userInfo);
    }

    /// What it was made with.
    ZPString *name() { return objc_msgSend<ZPString *>(this, "name"_sel); }
    id object() { return objc_msgSend<id>(this, "object"_sel); }
    ZPDictionary *userInfo() { return objc_msgSend<ZPDictionary *>(this, "userInfo"_sel); }
};
