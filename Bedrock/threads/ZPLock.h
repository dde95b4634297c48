// SPDX-License-Identifier: MIT
// Locks. None is recursive but ZPRecursiveLock, none reports misuse, and none promises who comes next. Any thread may
// use one. It must not be freed while a thread is inside one of its operations, `unlock` included: the thread that it
// let in may be ahead of the one that let it in. What a lock guards must therefore not be what keeps the lock alive.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPDate);

/// What every lock answers: `lock` and `unlock`.
struct ZPLocking {
    ZP_PROTOCOL(ZPLocking)
    /// Waits until the lock is free, and takes it.
    void lock();
    /// Gives the lock up.
    void unlock();
};

/// A lock without an owner: any thread may unlock it, and a thread that locks it twice waits until another unlocks it.
/// Any thread may use it; free it when no thread is inside one of its operations, `unlock` included.
struct ZPLock : ZPObject {
    ZP_CLASS(ZPLock)
    void *_priv;

    /// Waits until the lock is free and takes it.
    void lock() ZP_TELLS();
    /// Frees the lock and wakes one waiter. Unlocking a free lock leaves it free.
    void unlock() ZP_TELLS();
    /// Takes the lock if it is free; answers whether it did.
    BOOL tryLock() ZP_ASKS();
    /// Waits until the limit date at most, by the clock of the host; answers whether it took the lock. A limit in
    /// the past still takes a free lock.
    BOOL lockBeforeDate(ZPDate *limit) ZP_ASKS(limit);
};

/// A lock without an owner that carries a number, its condition, for which a thread can wait. Any thread may use it;
/// free it when no thread is inside one of its operations, `unlock` included.
struct ZPConditionLock : ZPObject {
    ZP_CLASS(ZPConditionLock)
    void *_priv;

    /// A free lock with the condition; `init` gives 0.
    ZPConditionLock *initWithCondition(int condition) ZP_ASKS(condition);
    /// The condition as it is now; only the holder knows that it stays so.
    int condition() ZP_ASKS();
    /// Waits until the lock is free and takes it, whatever its condition.
    void lock() ZP_TELLS();
    /// Takes the lock if it is free, whatever its condition; answers whether it did.
    BOOL tryLock() ZP_ASKS();
    /// Waits until the limit date at most, whatever the condition; answers whether it took the lock.
    BOOL lockBeforeDate(ZPDate *limit) ZP_ASKS(limit);
    /// Waits until the lock is free and has the condition, and takes it.
    void lockWhenCondition(int condition) ZP_TELLS(condition);
    /// The same until the limit date at most; answers whether it took the lock.
    BOOL lockWhenCondition_beforeDate(int condition, ZPDate *limit) ZP_ASKS(condition, limit);
    /// Takes the lock if it is free and has the condition; answers whether it did.
    BOOL tryLockWhenCondition(int condition) ZP_ASKS(condition);
    /// Frees the lock, with its condition as it is, and wakes every waiter.
    void unlock() ZP_TELLS();
    /// The same with a new condition.
    void unlockWithCondition(int condition) ZP_TELLS(condition);
};

/// A lock that the thread holding it may take again; it is free when it has been unlocked as often. Any thread may use
/// it; free it when no thread is inside one of its operations, `unlock` included.
struct ZPRecursiveLock : ZPObject {
    ZP_CLASS(ZPRecursiveLock)
    void *_priv;

    /// Takes the lock, once more when the calling thread holds it.
    void lock() ZP_TELLS();
    /// Gives back one taking; only the thread that holds the lock may send it.
    void unlock() ZP_TELLS();
    /// Takes the lock if nobody holds it; NO also for the thread that does.
    BOOL tryLock() ZP_ASKS();
    /// Waits until the limit date at most; answers whether it took the lock, once more when the calling thread
    /// holds it.
    BOOL lockBeforeDate(ZPDate *limit) ZP_ASKS(limit);
};

/// A mutex and the condition that its holder can wait for. A waiter holds the lock, tests what it waits for, and
/// tests it again after each wait: a wait may end without cause. Any thread may use it; free it when no thread is
/// inside one of its operations.
struct ZPCondition : ZPObject {
    ZP_CLASS(ZPCondition)
    void *_priv;

    /// Waits until the mutex is free and takes it.
    void lock() ZP_TELLS();
    /// Frees the mutex; only the thread that holds it may send it.
    void unlock() ZP_TELLS();
    /// Frees the mutex, waits for a signal, and takes the mutex again; the caller holds it.
    void wait() ZP_TELLS();
    /// The same until the limit date at most; NO when that has passed.
    BOOL waitUntilDate(ZPDate *limit) ZP_ASKS(limit);
    /// Wakes one waiter, if there is one.
    void signal() ZP_TELLS();
    /// Wakes all waiters.
    void broadcast() ZP_TELLS();
};
