// SPDX-License-Identifier: MIT
// Notification centers: who wants to hear of what. The folder has notifications and their centers; nothing of it but
// the public headers is for others. Read this first, then NotificationCenter.cpp.
#pragma once

#include <Bedrock/runloop/ZPNotification.h>

ZP_FORWARD(ZPLock);
struct ZPObserverRecord;

/// A table of observers. A post calls every matching one, on the posting thread, before it returns. Any thread may
/// post, add and remove, also an observer that is being called: who is added meanwhile is not called by that post,
/// who is removed still is. The center retains neither observers nor senders: each must be removed before it goes.
struct ZPNotificationCenter : ZPObject {
    ZP_CLASS(ZPNotificationCenter)
    ZPLock *_lock;
    ZPObserverRecord *_registry;
    unsigned _registry_size, _registry_count;
    int *_niltable;
    unsigned _niltable_size, _niltable_count;
    int *_hashtable;
    unsigned _hashtable_size, _hashtable_count;
    unsigned _deleted_count;
    objc_object **_observers;

    /// The process's center, or a subclass's own; made on first use. The process's first one is never deallocated, one
    /// that was set lasts until the caller's pool goes.
    static ZPNotificationCenter *defaultCenter() ZP_CLASS_ASKS();
    /// Replaces the default center of this class or of a subclass; null for a subclass drops its center. Any other
    /// class raises ZPInvalidArgumentException.
    static void setDefaultCenter_forClass(ZPNotificationCenter *center, Class cls) ZP_CLASS_TELLS(center, cls);

    /// Has the observer sent the selector, with the notification as its argument, for every post of the name (null: of
    /// any) by the object (null: by any). Registered twice, it is called twice. A null observer does nothing. The
    /// method is looked up now: one that a category replaces later is not seen before a bundle is loaded.
    void addObserver_selector_name_object(id observer, SEL selector, ZPString *name, id object)
        ZP_TELLS(observer, selector, name, object);
    /// Removes the observer altogether.
    void removeObserver(id observer) ZP_TELLS(observer);
    /// Removes the observer's registrations for that name (null: all of them) and that object (null: all of them).
    void removeObserver_name_object(id observer, ZPString *name, id object) ZP_TELLS(observer, name, object);

    /// Calls the matching observers: first those for any name, then those for this one. When observers raise, the
    /// others are called all the same, and then the first exception is raised again.
    void postNotification(ZPNotification *notification) ZP_TELLS(notification);
    /// The same with a notification of that name and object, made only when an observer matches.
    void postNotificationName_object(ZPString *name, id object) ZP_TELLS(name, object);
    /// The same with information.
    void postNotificationName_object_userInfo(ZPString *name, id object, ZPDictionary *userInfo)
        ZP_TELLS(name, object, userInfo);
};

extern "C" {
/// Posted when a bundle has been loaded.
ZP_EXPORT extern ZPString *const ZPBundleDidLoadNotification;

/// Not zero: centers report what they do to the function below.
ZP_EXPORT extern char ZPKeepNotificationStatistics;
/// Event 0: (notification, number of observers called); 1: (observer, selector, name, object) added; 2: (observer,
/// name, object) removed. It does nothing: a debugger stops here.
ZP_EXPORT void ZPRecordNotificationEvent(int event, ...);
}
