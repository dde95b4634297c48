// SPDX-License-Identifier: MIT
// ZPConditionLock and ZPCondition. The condition lock's mutex is held only for the few instructions that look at its
// state, flag and condition; waiting is done on the kernel's condition, which every unlocking wakes whole. ZPCondition
// is the mutex and the condition themselves.
#include <Bedrock/threads/ZPLock+Internal.h>

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

struct State : Pair {
    BOOL locked ZP_GUARDED_BY(mutex) = NO;
    int value ZP_GUARDED_BY(mutex) = 0;  // read without it by `condition`
};

constexpr double unlimited = 1e20;

struct ConditionLockMethods : _ZPLockMethods<ZPConditionLock, State> {
    id initWithCondition(int condition) {
        __atomic_store_n(&part().value, condition, __ATOMIC_RELAXED);
        return objc_super<ZPConditionLock>(this).send<id>("init"_sel);
    }
    int condition() { return __atomic_load_n(&part().value, __ATOMIC_RELAXED); }

    // Takes the lock once `fits` and it is free; an unlimited wait has no time-out.
    template <class F> BOOL takeWhen(F fits, double limit) {
        State &s = part();
        ZPHolding hold(s.mutex);
        while (s.locked || !fits(s.value)) {
            double remaining = limit == unlimited ? unlimited : limit - cthread_time();
            if (remaining < 0 || !condition_wait_timeout(&s.condition, &s.mutex, remaining)) return NO;
        }
        s.locked = YES;
        return YES;
    }
    static bool always(int) { return true; }
    static auto equals(int wanted) {
        return [wanted](int value) { return value == wanted; };
    }

    void lock() { takeWhen(always, unlimited); }
    BOOL lockBeforeDate(ZPDate *limit) { return takeWhen(always, limit->timeIntervalSinceReferenceDate()); }
    void lockWhenCondition(int wanted) { takeWhen(equals(wanted), unlimited); }
    BOOL lockWhenCondition_beforeDate(int wanted, ZPDate *limit) {
        return takeWhen(equals(wanted), limit->timeIntervalSinceReferenceDate());
    }
    BOOL tryLock() { return takeWhen(always, -unlimited); }
    BOOL tryLockWhenCondition(int wanted) { return takeWhen(equals(wanted), -unlimited); }

    void unlock() { free(nullptr); }
    void unlockWithCondition(int condition) { free(&condition); }
    void free(const int *condition) {
        // Waking under the mutex: whoever takes the lock next may deallocate it.
        State &s = part();
        ZPHolding hold(s.mutex);
        if (condition) __atomic_store_n(&s.value, *condition, __ATOMIC_RELAXED);
        s.locked = NO;
        condition_broadcast(&s.condition);
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
