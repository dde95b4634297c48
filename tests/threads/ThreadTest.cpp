// SPDX-License-Identifier: MIT
// Thread objects, threads that the library starts, and the step to many threads.
#include <support/Objects.h>

namespace {

std::atomic<int> living{0}, unwound{0};

struct Unwound {
    ~Unwound() { ++unwound; }
};

void waitUntil(std::function<bool()> done) {
    for (int i = 0; i < 2000 && !done(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

struct Held : ZPObject {
    ZP_CLASS(Held)
    id init() {
        ++living;
        return ZP_SUPER(Held, init)();
    }
    void dealloc() {
        --living;
        ZP_SUPER(Held, dealloc)();
    }
};
ZP_IMPLEMENT(Held, init, dealloc);

void leave(ZPThread *thread, ZPObject *held, ZPString *name) {
    thread->threadDictionary()->setObject_forKey(held, name);
    held->release();
}

/// At its end it leaves something with its thread.
struct Leaving : Held {
    ZP_CLASS(Leaving)
    void dealloc() {
        leave(ZPThread::currentThread(), Held::new_(), "left"_zp);
        Held::new_()->autorelease();
        ZP_SUPER(Leaving, dealloc)();
    }
};
ZP_IMPLEMENT(Leaving, dealloc);

/// Ends its thread from inside a delivery.
struct Quitter : ZPObject {
    ZP_CLASS(Quitter)
    std::atomic<int> _heard;
    void run(id) {
        Unwound unwound;
        ZPAutoreleasePoolScope pool;
        Leaving::new_()->autorelease();
        {
            ZPAutoreleasePoolScope inner;
            Held::new_()->autorelease();
            ZPNotificationCenter::defaultCenter()->postNotificationName_object("quit"_zp, ZPThread::currentThread());
        }
        ADD_FAILURE() << "back from exit";
    }
    void quit(ZPNotification *) {
        Unwound unwound;
        ZPAutoreleasePoolScope pool;
        Held::new_()->autorelease();
        ++_heard;
        ZPThread::exit();
    }
};
ZP_IMPLEMENT(Quitter, run, quit);

/// What a started thread does, and what was heard of it.
struct Worker : ZPObject {
    ZP_CLASS(Worker)
    ZPConditionLock *_ended;
    ZPThread *_thread, *_ending;
    id _argument;
    BOOL _wasMulti, _exits, _hadDictionary;
    int _heard;

    void run(id argument) {
        Unwound unwound;
        ZPAutoreleasePoolScope pool;
        Held::new_()->autorelease();
        _thread = ZPThread::currentThread();
        _argument = argument;
        _wasMulti = ZPThread::isMultiThreaded();
        leave(_thread, Held::new_(), "held"_zp);
        if (_exits) deeper();
    }
    void deeper() {
        Unwound unwound;
        try {
            ZPThread::exit();
        } catch (ZPException *) {
            ADD_FAILURE() << "leaving a thread is no exception";
        }
        ADD_FAILURE() << "back from exit";
    }
    void willExit(ZPNotification *note) {
        _ending = (ZPThread *)note->object().pointer();
        _hadDictionary = ZPThread::currentThread() == _ending && _ending->threadDictionary()->objectForKey("held"_zp);
        _ended->lock();
        _ended->unlockWithCondition(1);
    }
    void becoming(ZPNotification *note) {
        ++_heard;
        if (note->object() || !ZPThread::isMultiThreaded()) _heard += 100;
    }
};
ZP_IMPLEMENT(Worker, run, willExit, becoming);

}  // namespace

TEST(Thread, EveryThreadHasItsOwnObjectAndDictionary) {
    ZPThread *mine = ZPThread::currentThread();
    mine->threadDictionary()->setObject_forKey("main"_zp, "who"_zp);
    std::atomic<int> wrong{0};
    for (int round = 0; round < 3; ++round) {  // stacks are reused by the following round
        onThreads(8, [&](int) {
            ZPThread *own = ZPThread::currentThread();
            if (own == mine || own->threadDictionary()->objectForKey("who"_zp)) ++wrong;
            own->threadDictionary()->setObject_forKey("other"_zp, "who"_zp);
            if (ZPThread::currentThread() != own) ++wrong;
        });
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(mine->threadDictionary()->objectForKey("who"_zp)->isEqual("main"_zp));
}

TEST(Thread, StringsCollectionsAndClassesFromManyThreads) {
    // Placeholders, literals, caches of classes seen for the first time, shared immutable objects.
    ZPRef<ZPArray> shared = ZPArray::arrayWithObjects("one"_zp, ZPString::stringWithFormat("%d"_zp, 2),
                                                      "drei und mehr Zeichen als in ein kleines Stück passen"_zp);
    std::atomic<int> wrong{0};
    onThreads(8, [&](int t) {
        for (int i = 0; i < 300; ++i) {
            ZPAutoreleasePoolScope inner;
            ZPString *text = ZPString::stringWithFormat("%@ %d %@"_zp, shared->objectAtIndex(i % 3), t, "λόγος"_zp);
            ZPMutableDictionary *map = ZPMutableDictionary::dictionary();
            map->setObject_forKey(text, shared->objectAtIndex(1));
            map->setObject_forKey(shared.get(), text);
            if (map->count() != 2 || !map->objectForKey("2"_zp)->isEqual(text)) ++wrong;
            if (!text->hasSuffix(ZPRef<ZPString>(text->substringFromIndex(1)))) ++wrong;
            if (!text->uppercaseString()->hasSuffix("ΛΌΓΟΣ"_zp)) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(shared->retainCount(), 2u);
}

TEST(Thread, StartsAndEnds) {
    ZPNotificationCenter *center = ZPNotificationCenter::defaultCenter();
    for (BOOL exits : {NO, YES}) {
        ZPRef<Worker> worker = ZPAdopt(Worker::new_());
        worker->_ended = (ZPConditionLock *)ZPConditionLock::new_();
        worker->_exits = exits;
        unwound = 0;
        center->addObserver_selector_name_object(worker.get(), "willExit:"_sel, ZPThreadWillExitNotification, nullptr);
        ZPThread::detachNewThreadSelector_toTarget_withObject("run:"_sel, worker.get(), "argument"_zp);
        worker->_ended->lockWhenCondition(1);
        EXPECT_EQ(worker->_ending, worker->_thread);
        EXPECT_NE(worker->_thread, ZPThread::currentThread());
        EXPECT_TRUE(worker->_hadDictionary);
        EXPECT_TRUE(worker->_wasMulti);
        EXPECT_EQ(worker->_argument, "argument"_zp);
        center->removeObserver(worker.get());
        worker->_ended->unlock();
        worker->_ended->release();
        waitUntil([&] { return !living && unwound == 1 + exits && worker->retainCount() == 1; });
        EXPECT_EQ(living, 0) << "what hung on the thread is released";
        EXPECT_EQ(unwound, 1 + exits) << "the frames of the thread are unwound";
        EXPECT_EQ(worker->retainCount(), 1u);
    }
}

TEST(Thread, WhatEndsWithAThreadMayStillUseIt) {
    std::thread([] {
        ZPPushAutoreleasePool(0);  // popped by the end of the thread
        Leaving::new_()->autorelease();
        leave(ZPThread::currentThread(), Leaving::new_(), "first"_zp);
    }).join();
    EXPECT_EQ(living, 0);
}

TEST(Thread, EndsInsideADelivery) {
    ZPNotificationCenter *center = ZPNotificationCenter::defaultCenter();
    ZPRef<Quitter> first = ZPAdopt(Quitter::new_()), second = ZPAdopt(Quitter::new_());
    for (auto &q : {first, second}) center->addObserver_selector_name_object(q.get(), "quit:"_sel, "quit"_zp, nullptr);
    unwound = 0;
    constexpr int threads = 4;
    for (int i = 0; i < threads; ++i)
        ZPThread::detachNewThreadSelector_toTarget_withObject("run:"_sel, first.get(), nullptr);
    waitUntil([&] { return !living && unwound == 2 * threads && first->retainCount() == 1; });
    for (auto &q : {first, second}) center->removeObserver(q.get());
    EXPECT_EQ(unwound, 2 * threads);
    EXPECT_EQ(living, 0);
    EXPECT_EQ(second->_heard, 0);  // the delivery ended with its thread
    EXPECT_EQ(first->retainCount(), 1u);
}

TEST(Thread, AKeptThreadObjectIsReleasedElsewhereWithoutHarm) {
    ZPThread *kept = nullptr;
    std::thread([&] {
        ZPAutoreleasePoolScope inner;
        kept = (ZPThread *)ZPThread::currentThread()->retain().pointer();
    }).join();
    ZPObject *mine = (ZPObject *)Held::new_()->autorelease().pointer();
    kept->release();
    EXPECT_EQ(living, 1) << "the pools of this thread are its own";
    EXPECT_EQ(mine->retainCount(), 1u);
}

TEST(Thread, TheStepToManyThreadsComesOnce) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            ZPAutoreleasePoolScope pool;
            ZPRef<Worker> worker = ZPAdopt(Worker::new_());
            worker->_ended = (ZPConditionLock *)ZPConditionLock::new_();
            ZPNotificationCenter *center = ZPNotificationCenter::defaultCenter();
            center->addObserver_selector_name_object(worker.get(), "becoming:"_sel,
                                                     ZPWillBecomeMultiThreadedNotification, nullptr);
            center->addObserver_selector_name_object(worker.get(), "willExit:"_sel, ZPThreadWillExitNotification,
                                                     nullptr);
            BOOL before = ZPThread::isMultiThreaded();
            BOOL locked = center->_lock != nullptr;
            for (int i = 0; i < 3; ++i) {
                ZPThread::detachNewThreadSelector_toTarget_withObject("self"_sel, "target"_zp, nullptr);
                worker->_ended->lockWhenCondition(1);
                worker->_ended->unlockWithCondition(0);
            }
            std::fprintf(stderr, "%d %d %d %d %d", before, locked, ZPThread::isMultiThreaded(),
                         center->_lock != nullptr, worker->_heard);
            _exit(0);
        },
        testing::ExitedWithCode(0), "0 0 1 1 1");
}
