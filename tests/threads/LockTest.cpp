// SPDX-License-Identifier: MIT
// Locks.
#include <support/Objects.h>

#include <sys/resource.h>

namespace {

// Any object that tells an absolute time can be a limit.
struct Moment : ZPObject {
    ZP_CLASS(Moment)
    double _time;
    double timeIntervalSinceReferenceDate() { return _time; }
    static double now() {
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count() - 978307200;
    }
    double timeIntervalSinceNow() { return _time - now(); }
    static ZPDate *in(double seconds) {
        Moment *m = Moment::new_();
        m->_time = now() + seconds;
        return (ZPDate *)m->autorelease().pointer();
    }
};
ZP_IMPLEMENT(Moment, timeIntervalSinceReferenceDate, timeIntervalSinceNow);

}  // namespace

template <class L> class EveryLock : public testing::Test {};
using Locks = testing::Types<ZPLock, ZPRecursiveLock, ZPConditionLock, ZPCondition>;
TYPED_TEST_SUITE(EveryLock, Locks);

TYPED_TEST(EveryLock, ExcludesThreads) {
    ZPRef<TypeParam> lock = ZPAdopt(TypeParam::new_());
    long counter = 0;
    onThreads(8, [&](int) {
        for (int i = 0; i < 5000; ++i) {
            lock->lock();
            ++counter;
            lock->unlock();
            if constexpr (!std::is_same_v<TypeParam, ZPCondition>)
                if ((i % 16 == 0 && lock->tryLock()) || (i % 256 == 1 && lock->lockBeforeDate(Moment::in(0.0005)))) {
                    ++counter;
                    --counter;
                    lock->unlock();
                }
        }
    });
    EXPECT_EQ(counter, 40000);
    EXPECT_TRUE(lock->conformsToProtocol(ZPLocking::protocol()));
}

TEST(Lock, LimitsAndMisuse) {
    ZPRef<ZPLock> lock = ZPAdopt(ZPLock::new_());
    EXPECT_TRUE(lock->lockBeforeDate(Moment::in(-5)));  // free: taken even so late
    EXPECT_FALSE(lock->tryLock());
    EXPECT_FALSE(lock->lockBeforeDate(Moment::in(-5)));
    auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(lock->lockBeforeDate(Moment::in(0.05)));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(45));
    std::thread other([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        lock->unlock();  // a lock has no owner
    });
    EXPECT_TRUE(lock->lockBeforeDate(Moment::in(30)));
    other.join();
    std::string text = described(lock);
    EXPECT_TRUE(text.starts_with("ZPLock(0x") && text.ends_with(" locked: YES")) << text;
    lock->unlock();
    lock->unlock();
    EXPECT_TRUE(lock->tryLock());
}

template <class L> class WordLock : public testing::Test {};
using WordLocks = testing::Types<ZPLock, ZPRecursiveLock>;
TYPED_TEST_SUITE(WordLock, WordLocks);

TYPED_TEST(WordLock, AWaiterWhoseTimeIsUpKeepsNoOneFromBeingWoken) {
    ZPRef<TypeParam> lock = ZPAdopt(TypeParam::new_());
    std::mt19937 random(4);
    for (int round = 0; round < 150; ++round) {
        lock->lock();
        std::atomic<int> ready{0};
        bool taken = false;
        double soon = Moment::now() + 0.0008;
        std::thread waiters([&] {
            onThreads(2, [&](int patient) {
                if (!patient) {
                    ++ready;
                    if (lock->lockBeforeDate(Moment::in(soon - Moment::now()))) lock->unlock();
                    return;
                }
                while (!ready) std::this_thread::yield();
                std::this_thread::sleep_for(std::chrono::microseconds(100));
                taken = lock->lockBeforeDate(Moment::in(5));
                if (taken) lock->unlock();
            });
        });
        double until = soon + int(random() % 120) * 1e-6 - 60e-6;
        while (Moment::now() < until) {}
        lock->unlock();
        waiters.join();
        ASSERT_TRUE(taken) << "the lock was free, in round " << round;
    }
}

TEST(RecursiveLock, CountsTheOwnersLocks) {
    ZPRef<ZPRecursiveLock> lock = ZPAdopt(ZPRecursiveLock::new_());
    EXPECT_TRUE(lock->tryLock());
    EXPECT_FALSE(lock->tryLock());  // also for the owner
    lock->lock();
    EXPECT_TRUE(lock->lockBeforeDate(Moment::in(-1)));
    EXPECT_HAS(described(lock), " locked: YES  recursion count: 3");
    auto elsewhere = [&] {
        bool taken = false;
        std::thread([&] {
            ZPAutoreleasePoolScope inner;
            taken = lock->lockBeforeDate(Moment::in(0.01));
            if (taken) lock->unlock();
        }).join();
        return taken;
    };
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(elsewhere());
        lock->unlock();
    }
    EXPECT_TRUE(elsewhere());
    lock->unlock();  // of a free lock: it stays free
    EXPECT_TRUE(elsewhere());
    EXPECT_HAS(described(lock), " locked: NO  recursion count: 0");
}

TEST(ConditionLock, WaitsForItsCondition) {
    ZPRef<ZPConditionLock> lock = ZPAdopt(ZPConditionLock::new_());
    EXPECT_EQ(lock->condition(), 0);
    lock->lock();
    EXPECT_FALSE(lock->tryLock());
    EXPECT_HAS(described(lock), " locked: YES  condition: 0");
    lock->unlockWithCondition(5);
    EXPECT_FALSE(lock->tryLockWhenCondition(4));
    EXPECT_FALSE(lock->lockWhenCondition_beforeDate(4, Moment::in(0.02)));
    EXPECT_TRUE(lock->tryLockWhenCondition(5));
    EXPECT_FALSE(lock->lockWhenCondition_beforeDate(5, Moment::in(-1)));
    lock->unlock();  // from now on any thread: it has no owner
    // A relay: each of six threads waits for its number and passes the next one on.
    std::vector<int> order;
    std::vector<std::thread> threads;
    for (int n = 10; n > 4; --n)
        threads.emplace_back([&, n] {
            lock->lockWhenCondition(n);
            order.push_back(n);
            lock->unlockWithCondition(n + 1);
        });
    EXPECT_TRUE(lock->lockWhenCondition_beforeDate(11, Moment::in(30)));
    for (auto &t : threads) t.join();
    EXPECT_EQ(order, (std::vector<int>{5, 6, 7, 8, 9, 10}));
    ZPRef<ZPConditionLock> other = ZPAdopt(ZPConditionLock::alloc()->initWithCondition(-7));
    EXPECT_EQ(other->condition(), -7);
    EXPECT_TRUE(other->lockBeforeDate(Moment::in(-1)));
}

TEST(ConditionLock, WakesThoseWhoseConditionItIs) {
    ZPRef<ZPConditionLock> lock = ZPAdopt(ZPConditionLock::new_());
    std::vector<std::thread> threads;
    for (int n = 1; n <= 64; ++n)
        threads.emplace_back([&, n] {
            lock->lockWhenCondition(n);
            lock->unlockWithCondition(n + 1);
        });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    auto switches = [] {
        rusage usage;
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_nvcsw;
    };
    long before = switches();
    for (int i = 0; i < 2000; ++i) {
        lock->lock();
        lock->unlockWithCondition(-1);
    }
    EXPECT_LT(switches() - before, 1000) << "nobody waits for that";
    lock->lock();
    lock->unlockWithCondition(1);
    EXPECT_TRUE(lock->lockWhenCondition_beforeDate(65, Moment::in(30)));
    lock->unlock();
    for (auto &t : threads) t.join();
}

TEST(ConditionLock, NoWakingIsLostToWaitersThatGiveUp) {
    ZPRef<ZPConditionLock> lock = ZPAdopt(ZPConditionLock::new_());
    constexpr int rounds = 300, workers = 6;
    std::atomic<int> handled{0};
    onThreads(workers + 1, [&](int t) {
        std::mt19937 random{unsigned(t)};
        if (t == workers) {
            for (int i = 0; i < rounds; ++i) {
                lock->lockWhenCondition(0);
                lock->unlockWithCondition(1);
            }
            return;
        }
        while (handled < rounds) {
            ZPAutoreleasePoolScope pool;
            if (!lock->lockWhenCondition_beforeDate(1, Moment::in(double(random() % 100) * 1e-6))) continue;
            ++handled;
            lock->unlockWithCondition(0);
        }
    });
    EXPECT_EQ(handled, rounds);
}

TEST(Condition, WakesWaiters) {
    ZPRef<ZPCondition> condition = ZPAdopt(ZPCondition::new_());
    condition->lock();
    EXPECT_FALSE(condition->waitUntilDate(Moment::in(-1)));
    EXPECT_FALSE(condition->waitUntilDate(Moment::in(0.01)));
    condition->unlock();
    int tokens = 0, taken = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            condition->lock();
            while (!tokens) condition->wait();
            --tokens;
            ++taken;
            condition->unlock();
        });
    for (int i = 0; i < 4; ++i) {
        condition->lock();
        ++tokens;
        if (i < 3) condition->signal();
        else condition->broadcast();
        condition->unlock();
    }
    for (auto &t : threads) t.join();
    EXPECT_EQ(taken, 4);
}
