// SPDX-License-Identifier: MIT
// ZPConditionLock and ZPCondition. The condition lock's mutex is held only for the few instructions that look at its
// state: flag, condition, and the queue of those who wait. Each waits on a word of its own; an unlocking wakes the
// first whose condition it is. ZPCondition is a mutex and the kernel's condition themselves.
#include <Bedrock/threads/Lock+Internal.h>

namespace {

struct Pair {
    struct mutex mutex;
    struct condition condition;

    Pair() {
        mutex_init(&mutex);
        condition_init(&condition);
    }
    ~Pair() {
        mutex_clear(&mutex);
        condition_clear(&condition);
    }
};

/// A thread that wants the lock, on its stack.
struct Waiter {
    bool wantsAny;
    int wanted;
    unsigned isWoken = 0;  ///< then it is in the queue no more
    Waiter *next = nullptr;

    bool fits(int value) const { return wantsAny || value == wanted; }
};

struct State {
    struct mutex mutex;
    BOOL locked ZP_GUARDED_BY(mutex) = NO;
    int value ZP_GUARDED_BY(mutex) = 0;  // read without it by `condition`
    Waiter *first ZP_GUARDED_BY(mutex) = nullptr;

    void enqueue(Waiter &waiter) ZP_REQUIRES(mutex) {
        waiter.isWoken = 0;
        waiter.next = nullptr;
        Waiter **at = &first;
        while (*at) at = &(*at)->next;
        *at = &waiter;
    }
    void dequeue(Waiter &waiter) ZP_REQUIRES(mutex) {
        Waiter **at = &first;
        while (*at != &waiter) at = &(*at)->next;
        *at = waiter.next;
    }
    // Under the mutex: the waiter, and whoever takes the lock next and lets it go, come after that.
    void wakeFirst() ZP_REQUIRES(mutex) {
        for (Waiter *waiter = first; waiter; waiter = waiter->next) {
            if (!waiter->fits(value)) continue;
            dequeue(*waiter);
            __atomic_store_n(&waiter->isWoken, 1, __ATOMIC_RELAXED);
            cthread_wake(&waiter->isWoken, 1);
            return;
        }
    }
};

constexpr double unlimited = 1e20;

struct ConditionLockMethods : _ZPLockMethods<ZPConditionLock, State> {
    id initWithCondition(int condition) {
        __atomic_store_n(&part().value, condition, __ATOMIC_RELAXED);
        return ZP_SUPER(ZPConditionLock, init)();
    }
    int condition() { return __atomic_load_n(&part().value, __ATOMIC_RELAXED); }

    // Takes the lock once it is free and the condition the waiter's; an unlimited wait has no time-out.
    BOOL take(Waiter waiter, double limit) {
        State &s = part();
        ZPHolding hold(s.mutex);
        while (s.locked || !waiter.fits(s.value)) {
            double remaining = limit == unlimited ? -1 : limit - cthread_time();
            if (limit != unlimited && remaining < 0) {
                if (!s.locked) s.wakeFirst();  // the waking that this one does not use
                return NO;
            }
            s.enqueue(waiter);
            s.mutex.unlock();
            cthread_wait(&waiter.isWoken, 0, remaining);
            s.mutex.lock();
            if (!waiter.isWoken) s.dequeue(waiter);
        }
        s.locked = YES;
        return YES;
    }
    static constexpr Waiter any{true, 0};
    static Waiter when(int wanted) { return {false, wanted}; }

    void lock() { take(any, unlimited); }
    BOOL lockBeforeDate(ZPDate *limit) { return take(any, limit->timeIntervalSinceReferenceDate()); }
    void lockWhenCondition(int wanted) { take(when(wanted), unlimited); }
    BOOL lockWhenCondition_beforeDate(int wanted, ZPDate *limit) {
        return take(when(wanted), limit->timeIntervalSinceReferenceDate());
    }
    BOOL tryLock() { return take(any, -unlimited); }
    BOOL tryLockWhenCondition(int wanted) { return take(when(wanted), -unlimited); }

    void unlock() { free(nullptr); }
    void unlockWithCondition(int condition) { free(&condition); }
    void free(const int *condition) {
        State &s = part();
        ZPHolding hold(s.mutex);
        if (condition) __atomic_store_n(&s.value, *condition, __ATOMIC_RELAXED);
        s.locked = NO;
        s.wakeFirst();
    }
    ZPString *description() {
        State &s = part();
        BOOL locked;
        int value;
        {
            ZPHolding hold(s.mutex);
            locked = s.locked;
            value = s.value;
        }
        return describe("%s(0x%lx) locked: %s  condition: %d"_zp, locked ? "YES" : "NO", value);
    }
};

// The mutex is held from one message to another, which no analysis follows.
struct ConditionMethods : _ZPLockMethods<ZPCondition, Pair> {
    void lock() ZP_UNCHECKED_LOCKING { mutex_lock(&part().mutex); }
    void unlock() ZP_UNCHECKED_LOCKING { mutex_unlock(&part().mutex); }
    void wait() ZP_UNCHECKED_LOCKING { condition_wait_timeout(&part().condition, &part().mutex, unlimited); }
    BOOL waitUntilDate(ZPDate *limit) ZP_UNCHECKED_LOCKING {
        double seconds = limit->timeIntervalSinceNow();
        return seconds >= 0 && condition_wait_timeout(&part().condition, &part().mutex, seconds);
    }
    void signal() { condition_signal(&part().condition); }
    void broadcast() { condition_broadcast(&part().condition); }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPConditionLock, ConditionLockMethods, adopts(ZPLocking), initWithCondition, condition, lock, tryLock,
                  lockBeforeDate, lockWhenCondition, lockWhenCondition_beforeDate, tryLockWhenCondition, unlock,
                  unlockWithCondition, description, dealloc, classMethods(allocWithZone));

ZP_IMPLEMENT_WITH(ZPCondition, ConditionMethods, adopts(ZPLocking), lock, unlock, wait, waitUntilDate, signal,
                  broadcast, dealloc, classMethods(allocWithZone));
