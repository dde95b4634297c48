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
    static ZPNotification *notificationWithName_object(ZPString *name, id object) ZP_CLASS_ASKS(name, object);
    /// The same with information, which it retains and which may be null.
    static ZPNotification *notificationWithName_object_userInfo(ZPString *name, id object, ZPDictionary *userInfo)
        ZP_CLASS_ASKS(name, object, userInfo);
    /// As the class message.
    ZPNotification *initWithName_object_userInfo(ZPString *name, id object, ZPDictionary *userInfo)
        ZP_ASKS(name, object, userInfo);

    /// The name it was made with; borrowed, as the two others.
    ZPString *name() ZP_ASKS();
    /// The object, mostly the sender; may be null.
    id object() ZP_ASKS();
    /// What the sender gave along; may be null.
    ZPDictionary *userInfo() ZP_ASKS();
};
