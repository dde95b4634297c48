// SPDX-License-Identifier: MIT
// Thread objects, threads that the library starts, and the step to many threads.
#include <support/Objects.h>

ZP_IMPLEMENT(Doer, act, dealloc);

namespace {

std::atomic<int> unwound{0};

struct Unwound {
    ~Unwound() { ++unwound; }
};

void waitUntil(std::function<bool()> done) {
    for (int i = 0; i < 2000 && !done(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

// Leaves an object with the thread, or in its pool.
void leave(const ZPRef<Doer> &held, ZPString *name) {
    ZPThread::currentThread()->threadDictionary()->setObject_forKey(held.get(), name);
}
void leave(const ZPRef<Doer> &held) { held->retain()->autorelease(); }

/// At its end it leaves something with its thread and in its pool.
ZPRef<Doer> leaving() {
    return Doer::with({}, [] {
        leave(Doer::with(), "left"_zp);
        leave(Doer::with());
    });
}

void observe(const ZPRef<Doer> &observer, ZPString *name) {
    ZPNotificationCenter::defaultCenter()->addObserver_selector_name_object(observer.get(), "act:"_sel, name, nullptr);
}

void detach(const ZPRef<Doer> &worker, id argument) {
    ZPThread::detachNewThreadSelector_toTarget_withObject("act:"_sel, worker.get(), argument);
}

[[noreturn]] void exitThread() {
    try {
        ZPThread::exit();
    } catch (ZPException *) {
        ADD_FAILURE() << "leaving a thread is no exception";
    }
    ADD_FAILURE() << "back from exit";
    std::abort();
}

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
    for (BOOL exits : {NO, YES}) {
        ZPRef<ZPConditionLock> ended = ZPAdopt(ZPConditionLock::new_());
        ZPThread *thread = nullptr;
        ZPRef<Doer> worker = Doer::with([&](id argument) {
            Unwound outer;
            ZPAutoreleasePoolScope pool;
            leave(Doer::with());
            thread = ZPThread::currentThread();
            EXPECT_TRUE(ZPThread::isMultiThreaded());
            EXPECT_EQ(argument, "argument"_zp);
            leave(Doer::with(), "held"_zp);
            if (!exits) return;
            Unwound inner;
            exitThread();
        });
        ZPRef<Doer> observer = Doer::with([&](id note) {
            auto *ending = (ZPThread *)note.unchecked<ZPNotification>()->object().pointer();
            EXPECT_TRUE(ending == thread && ending == ZPThread::currentThread());
            EXPECT_TRUE(ending->threadDictionary()->objectForKey("held"_zp));
            ended->lock();
            ended->unlockWithCondition(1);
        });
        unwound = 0;
        observe(observer, ZPThreadWillExitNotification);
        detach(worker, "argument"_zp);
        ended->lockWhenCondition(1);
        EXPECT_NE(thread, ZPThread::currentThread());
        ZPNotificationCenter::defaultCenter()->removeObserver(observer.get());
        ended->unlock();
        waitUntil([&] { return Doer::live == 2 && unwound == 1 + exits && worker->retainCount() == 1; });
        EXPECT_EQ(Doer::live, 2) << "what hung on the thread is released";
        EXPECT_EQ(unwound, 1 + exits) << "the frames of the thread are unwound";
        EXPECT_EQ(worker->retainCount(), 1u);
    }
}

TEST(Thread, WhatEndsWithAThreadMayStillUseIt) {
    std::thread([] {
        ZPPushAutoreleasePool(0);  // popped by the end of the thread
        leave(leaving());
        leave(leaving(), "first"_zp);
    }).join();
    EXPECT_EQ(Doer::live, 0);
}

TEST(Thread, EndsInsideADelivery) {
    std::atomic<int> heard{0};
    auto quit = [&](id) {
        Unwound unwound;
        ZPAutoreleasePoolScope pool;
        leave(Doer::with());
        ++heard;
        exitThread();
    };
    ZPRef<Doer> quitters[] = {Doer::with(quit), Doer::with(quit)},
                worker = Doer::with([](id) {
                    Unwound unwound;
                    ZPAutoreleasePoolScope pool;
                    leave(leaving());
                    ZPAutoreleasePoolScope inner;
                    leave(Doer::with());
                    ZPNotificationCenter::defaultCenter()->postNotificationName_object("quit"_zp,
                                                                                       ZPThread::currentThread());
                    ADD_FAILURE() << "back from exit";
                });
    for (auto &quitter : quitters) observe(quitter, "quit"_zp);
    unwound = 0;
    constexpr int threads = 4;
    for (int i = 0; i < threads; ++i) detach(worker, nullptr);
    waitUntil([&] { return Doer::live == 3 && unwound == 2 * threads && worker->retainCount() == 1; });
    for (auto &quitter : quitters) ZPNotificationCenter::defaultCenter()->removeObserver(quitter.get());
    EXPECT_EQ(unwound, 2 * threads);
    EXPECT_EQ(Doer::live, 3);
    EXPECT_EQ(heard, threads) << "the delivery ended with its thread";
    EXPECT_EQ(worker->retainCount(), 1u);
}

TEST(Thread, AKeptThreadObjectIsReleasedElsewhereWithoutHarm) {
    ZPRef<ZPThread> kept;
    std::thread([&] {
        ZPAutoreleasePoolScope inner;
        kept = ZPThread::currentThread();
    }).join();
    leave(Doer::with());
    kept = nullptr;
    EXPECT_EQ(Doer::live, 1) << "the pools of this thread are its own";
}

TEST(Thread, TheStepToManyThreadsComesOnce) {
    IN_A_PROCESS([] {
        int heard = 0;
        ZPRef<ZPConditionLock> ended = ZPAdopt(ZPConditionLock::new_());
        ZPRef<Doer> becoming = Doer::with([&](id note) {
            heard += note.unchecked<ZPNotification>()->object() || !ZPThread::isMultiThreaded() ? 100 : 1;
        });
        ZPRef<Doer> ending = Doer::with([&](id) {
            ended->lock();
            ended->unlockWithCondition(1);
        });
        observe(becoming, ZPWillBecomeMultiThreadedNotification);
        observe(ending, ZPThreadWillExitNotification);
        ZPNotificationCenter *center = ZPNotificationCenter::defaultCenter();
        EXPECT_FALSE(ZPThread::isMultiThreaded() || center->_lock);
        for (int i = 0; i < 3; ++i) {
            ZPThread::detachNewThreadSelector_toTarget_withObject("self"_sel, "target"_zp, nullptr);
            ended->lockWhenCondition(1);
            ended->unlockWithCondition(0);
        }
        EXPECT_TRUE(ZPThread::isMultiThreaded() && center->_lock);
        EXPECT_EQ(heard, 1);
        center->removeObserver(ending.get());
    });
}
