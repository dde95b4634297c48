// SPDX-License-Identifier: MIT
// Thread objects hang from the platform layer's per-thread data, so the look-up is one load from thread-local
// storage and stays right whatever becomes of stacks.
//
// One step makes the process multithreaded: flag, hooks in the order of `becomeMultiThreaded`, notification. The
// counts, tables and caches of lower floors need no hook: they ask the C library whether a second thread exists, which
// also covers threads that the library did not start.
#include <Bedrock/threads/ZPThread.h>
#include <Bedrock/platform/kernel/Fork.h>

#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/core/Fronts.h>
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/Field.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/platform/kernel/Kernel.h>
#include <Bedrock/strings/ZPString.h>
#include <Bedrock/time/ZPDate.h>

#include <memory>
#include <utility>

extern "C" {
ZP_STRING_CONSTANT(ZPWillBecomeMultiThreadedNotification, "ZPWillBecomeMultiThreadedNotification");
ZP_STRING_CONSTANT(ZPThreadWillExitNotification, "ZPThreadWillExitNotification");
}

namespace {

BOOL multiThreaded = NO, tellsRuntime = YES;

/// What a thread is told by this file alone.
struct Told : ZPThread {
    void _setThreadName(ZPString *name) ZP_TELLS(name);
    void _exit() ZP_TELLS();
};

/// A class or an object that does something when the process becomes multithreaded.
struct Hooked : ZPObject {
    void _taskNowMultiThreaded() ZP_TELLS();
};

void post(ZPString *name, id object) {
    _ZPNotificationCenterAbove::defaultCenter()->postNotificationName_object(name, object);
}

// Several foreign threads may come here at once: the first takes the step and the others wait for its hooks. The
// notification goes out without the lock, so that an observer may start a thread and wait for it.
constinit recursive_mutex becoming;  // a class's hook may start a thread itself
ZP_MUTEX_AT_FORK(threads, []() -> recursive_mutex & { return becoming; });
void becomeMultiThreaded() {
    {
        ZPHolding hold(becoming);
        if (multiThreaded) return;
        __atomic_store_n(&multiThreaded, YES, __ATOMIC_RELEASE);
        auto tell = [](id what) { what.unchecked<Hooked>()->_taskNowMultiThreaded(); };
        tell(ZPObject::class_());
        tell(ZPAutoreleasePool::class_());
        tell(_ZPNotificationCenterAbove::defaultCenter());
    }
    post(ZPWillBecomeMultiThreadedNotification, nullptr);
}

void endThread(ZPThreadData *data) {
    if (data->thread) reinterpret_cast<ZPThread *>(data->thread)->release();
    data->thread = nullptr;
}

/// What a new thread starts from; owns a reference to target and argument.
struct Start {
    id target;
    SEL selector;
    id argument;

    Start(id t, SEL s, id a) : target(t->retain()), selector(s), argument(a->retain()) {}
    ~Start() {
        target->release();
        argument->release();
    }
};

void body(void *given) {
    {
        std::unique_ptr<Start> start(static_cast<Start *>(given));  // given up also when the method ends the thread
        static_cast<Told *>(ZPThread::currentThread())->_setThreadName("Bedrock-created thread"_zp);
        start->target->performSelector_withObject(start->selector, start->argument);
    }
    ZPThread::exit();
}

struct ThreadMethods : ZPThread {
    static ZPThread *currentThread(Class) {
        ZPThreadData *data = ZPCurrentThreadData();
        if (!data->thread) [[unlikely]] {
            ZPThread *thread = ZPThread::alloc()->init();
            thread->_cthread = cthread_self();
            data->thread = thread;
            ZPCleanUpThread(ZPCleanThreadObject, endThread);
        }
        return static_cast<ZPThread *>(data->thread);
    }
    static BOOL isMultiThreaded(Class) { return __atomic_load_n(&multiThreaded, __ATOMIC_ACQUIRE); }
    static void _enableSetObjcMultiThread(Class, BOOL flag) { __atomic_store_n(&tellsRuntime, flag, __ATOMIC_RELAXED); }

    static void detachNewThreadSelector_toTarget_withObject(Class self, SEL selector, id target, id argument) {
        auto start = std::make_unique<Start>(target, selector, argument);
        if (__atomic_load_n(&tellsRuntime, __ATOMIC_RELAXED)) objc_setMultithreaded(1);
        becomeMultiThreaded();
        unsigned long thread = cthread_fork(body, start.get());
        if (!thread)
            ZPException::raise_format(ZPGenericException, "%@: the system gives no further thread"_zp,
                                      _ZPMethodExceptionProem(id(self),
                                                              "detachNewThreadSelector:toTarget:withObject:"_sel));
        start.release();  // the thread's now
        cthread_detach(thread);
    }

    static void exit(Class) { static_cast<Told *>(currentThread(nullptr))->_exit(); }
    void _exit() {
        post(ZPThreadWillExitNotification, this);
        endThread(ZPCurrentThreadData());
        cthread_exit(0);
    }

    static void sleepUntilDate(Class, ZPDate *date) {
        double milliseconds = date->timeIntervalSinceNow() * 1000.0;
        if (milliseconds > 4294967295.0) cthread_sleep(0xFFFFFFFF);
        else if (milliseconds > 0) cthread_sleep(unsigned(milliseconds));
    }

    ZPMutableDictionary *threadDictionary() {
        if (!_threadDictionary)
            _threadDictionary = ZPMutableDictionary::allocWithZone(self()->zone())->initWithCapacity(3);
        return _threadDictionary;
    }
    ZPRunLoop *runLoop() { return _runLoop; }
    void setRunLoop(ZPRunLoop *runLoop) { ZPReplaceField(_runLoop, runLoop); }
    ZPNotificationQueue *notificationQueue() { return _noteQueue; }
    void setNotificationQueue(ZPNotificationQueue *queue) { ZPReplaceField(_noteQueue, queue); }
    void _setThreadName(ZPString *) {}
    ZPString *_threadName() { return nullptr; }

    ZPString *description() { return ZPString::stringWithFormat("Thread %lu"_zp, _cthread); }

    static objc_object *taken(id &field) { return std::exchange(field, id()).pointer(); }
    template <class T> static objc_object *taken(T *&field) { return id(std::exchange(field, nullptr)).pointer(); }
    // Each field is empty before what it held goes: its end may ask the thread for it, and is given a new one.
    bool releaseHeld() {
        bool any = false;
        auto drop = [&](auto &field) {
            id held(taken(field));
            any |= held.pointer() != nullptr;
            held->release();
        };
        drop(_runLoop);
        drop(_noteQueue);
        drop(_doConversation);
        drop(_doConversationRequest);
        drop(_doQueue);
        drop(_threadDictionary);
        return any;
    }

    // Runs on the thread that ends, unless somebody kept its object: what hangs on it, and what its pools release, may
    // still ask for the current thread meanwhile, and leave something on it once more.
    void dealloc() {
        bool isCurrent = ZPCurrentThreadData()->thread == this;
        bool more = true;
        for (int round = 0; round < 4 && more; ++round) {
            unsigned pool = ZPPushAutoreleasePool(0);
            more = releaseHeld();
            if (round == 0) id(this).unchecked<Told>()->_setThreadName(nullptr);
            ZPPopAutoreleasePool(pool);
            if (isCurrent) ZPAutoreleasePool::releaseAllPools();
            more |= round == 0;
        }
        if (isCurrent) ZPCurrentThreadData()->thread = nullptr;
        ZP_SUPER(ZPThread, dealloc)();
    }
};

}  // namespace

ZP_SAME_FRONT(ZPThread, _ZPThreadAbove, currentThread, threadDictionary);
ZP_IMPLEMENT_WITH(ZPThread, ThreadMethods, _exit, threadDictionary, runLoop, setRunLoop, notificationQueue,
                  setNotificationQueue, _setThreadName, _threadName, description, dealloc,
                  classMethods(currentThread, isMultiThreaded, _enableSetObjcMultiThread,
                               detachNewThreadSelector_toTarget_withObject, exit, sleepUntilDate));
