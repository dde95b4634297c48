// SPDX-License-Identifier: MIT
// Locks: free and contended, in a process that has threads; and the current thread.
#include "common.h"

#include <Bedrock/Bedrock.h>

#include <mutex>
#include <vector>

namespace {

struct StdMutex {
    std::mutex m;
    void lock() { m.lock(); }
    bool tryLock() { return m.try_lock(); }
    void unlock() { m.unlock(); }
};
struct StdRecursive {
    std::recursive_mutex m;
    void lock() { m.lock(); }
    bool tryLock() { return m.try_lock(); }
    void unlock() { m.unlock(); }
};
template <class T> struct Ours {
    T *l = (T *)T::new_();
    void lock() { l->lock(); }
    bool tryLock() { return l->tryLock(); }
    void unlock() { l->unlock(); }
};
using Lock = Ours<ZPLock>;
using Recursive = Ours<ZPRecursiveLock>;
using Conditional = Ours<ZPConditionLock>;

template <class L> struct Shared {
    static L &lock() {
        static L l;
        return l;
    }
    alignas(64) static inline volatile long count;
};

// Two threads that add under the lock lose nothing.
template <class L> void checkExclusion(L &l) {
    long sum = 0;
    auto add = [&] {
        for (int i = 0; i < 20000; ++i) {
            l.lock();
            sum = sum + 1;
            l.unlock();
        }
    };
    std::thread other(add);
    add();
    other.join();
    REQUIRE(sum == 40000);
}
template <class L> void lockUnlock(State &s) {
    startOneThread();
    L &l = Shared<L>::lock();
    static const bool right = (checkExclusion(l), true);
    DoNotOptimize(right);
    for (auto _ : s) {
        l.lock();
        Shared<L>::count = Shared<L>::count + 1;
        l.unlock();
    }
}
template <class L> void nested(State &s) {
    startOneThread();
    L &l = Shared<L>::lock();
    l.lock();
    l.lock();
    l.unlock();
    std::thread([&] { REQUIRE(!l.tryLock()); }).join();
    for (auto _ : s) {
        l.lock();
        l.unlock();
    }
    l.unlock();
}
void currentThread(State &s) {
    startOneThread();
    std::vector<std::thread> others;
    std::atomic<bool> done{false};
    for (int i = 0; i < s.range(0); ++i)
        others.emplace_back([&] {
            ZPThread::currentThread();
            while (!done) std::this_thread::sleep_for(std::chrono::milliseconds(20));
        });
    ZPThread *me = ZPThread::currentThread();
    for (auto _ : s) {
        ZPThread *t = ZPThread::currentThread();
        DoNotOptimize(t);
    }
    REQUIRE(ZPThread::currentThread() == me);
    done = true;
    for (auto &t : others) t.join();
}

}  // namespace

BENCHMARK(lockUnlock<StdMutex>)->Name("lock, unlock, free: std::mutex");
BENCHMARK(lockUnlock<Lock>)->Name("lock, unlock, free: ZPLock");
BENCHMARK(lockUnlock<StdMutex>)->Name("lock, unlock, two threads: std::mutex")->Threads(2)->UseRealTime();
BENCHMARK(lockUnlock<Lock>)->Name("lock, unlock, two threads: ZPLock")->Threads(2)->UseRealTime();
BENCHMARK(lockUnlock<StdRecursive>)->Name("lock, unlock, free: std::recursive_mutex");
BENCHMARK(lockUnlock<Recursive>)->Name("lock, unlock, free: ZPRecursiveLock");
BENCHMARK(nested<StdRecursive>)->Name("lock, unlock, nested: std::recursive_mutex");
BENCHMARK(nested<Recursive>)->Name("lock, unlock, nested: ZPRecursiveLock");
BENCHMARK(lockUnlock<Conditional>)->Name("lock, unlock, free: ZPConditionLock");
BENCHMARK(currentThread)->Name("currentThread, other threads")->Arg(0)->Arg(50);

BENCHMARK_MAIN();
