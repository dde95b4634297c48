// SPDX-License-Identifier: MIT
// Threads: the object of each thread, new threads, and the process's one step from one thread to many. Locks are in
// ZPLock.h. Nothing of the folder but the public headers is for others. Read this first, then Thread.cpp.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPDate);
ZP_FORWARD(ZPMutableDictionary);
ZP_FORWARD(ZPNotificationQueue);
ZP_FORWARD(ZPRunLoop);

/// The object of one thread, made when the thread first asks for it; also threads that were started
/// outside the library have one. It lives until the thread ends. Only its own thread may use it, but any may ask for
/// its description.
struct ZPThread : ZPObject {
    ZP_CLASS(ZPThread)
    unsigned long _cthread;
    ZPMutableDictionary *_threadDictionary;
    ZPRunLoop *_runLoop;
    ZPNotificationQueue *_noteQueue;
    id _doQueue, _doConversation;
    unsigned _doConversationCount;
    id _doConversationRequest;

    /// The calling thread's object.
    static ZPThread *currentThread() ZP_CLASS_ASKS();
    /// NO until the first `detachNewThreadSelector`, then YES for good. Threads started outside the library do not
    /// count; the library's own state is safe with them as well.
    static BOOL isMultiThreaded() ZP_CLASS_ASKS();
    /// Starts a thread that sends the selector to the target with the argument (which may be null) and then ends. The
    /// method makes its own autorelease pool. Target and argument are retained until it returns. The first call makes
    /// the process multithreaded before the new thread exists, and posts `ZPWillBecomeMultiThreadedNotification`.
    /// Raises ZPGenericException when the system gives no further thread.
    static void detachNewThreadSelector_toTarget_withObject(SEL selector, id target, id argument)
        ZP_CLASS_TELLS(selector, target, argument);
    /// Ends the calling thread: posts `ZPThreadWillExitNotification`, releases the thread's object with all that
    /// hangs on it and its autorelease pools, and unwinds its frames. Does not return. Code between may not swallow
    /// that unwinding, and no destructor that cannot be left by it may send this: not that of a
    /// ZPAutoreleasePoolScope, and with it no `dealloc` that it runs, which ends the process.
    static void exit() ZP_CLASS_TELLS();
    /// Blocks the calling thread for the whole milliseconds that are left until the date, so that up to one may be
    /// left after it; returns at once when the date has passed. A date more than 4,294,967,295 milliseconds away
    /// blocks for ever.
    static void sleepUntilDate(ZPDate *date) ZP_CLASS_TELLS(date);

    /// A dictionary for the application's own use on this thread, made on first request; borrowed.
    ZPMutableDictionary *threadDictionary() ZP_ASKS();
    /// The thread's run loop, null until it has one; borrowed.
    ZPRunLoop *runLoop() ZP_ASKS();
    /// Retains the run loop and releases the former one.
    void setRunLoop(ZPRunLoop *runLoop) ZP_TELLS(runLoop);
    /// The thread's default notification queue, null until it has one; borrowed.
    ZPNotificationQueue *notificationQueue() ZP_ASKS();
    /// Retains the queue and releases the former one.
    void setNotificationQueue(ZPNotificationQueue *queue) ZP_TELLS(queue);
};

extern "C" {
/// Posted once, with no object, by the thread that starts the second one, before it exists.
ZP_EXPORT extern ZPString *const ZPWillBecomeMultiThreadedNotification;
/// Posted by a thread that ends through `exit`, or whose method returned, with its object.
ZP_EXPORT extern ZPString *const ZPThreadWillExitNotification;
}
