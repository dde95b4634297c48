// Locks.
#pragma once

#include <Bedrock/core/ZPObject.h>
#include <Bedrock/platform/ZPZone.h>

ZP_FORWARD(ZPDate);

/// What every lock answers.
struct ZPLocking { ZP_PROTOCOL(ZPLocking) };

/// A lock without an owner: any thread may unlock it, and a thread that locks it twice waits until another
/// unlocks it. Any thread may use it; it must not be deallocated while one waits.
struct ZPLock : ZPObject {
    ZP_CLASS(ZPLock)
    void *_priv;

    /// Waits until the lock is free and takes it.
    void lock() { objc_msgSend(this, "lock"_sel); }
    /// Frees the lock and wakes one waiter. Unlocking a free lock leaves it free.
    void unlock() { objc_msgSend(this, "unlock"_sel); }
    /// Takes the lock if it is free; answers whether it did.
    BOOL tryLock() { return objc_msgSend<BOOL>(this, "tryLock"_sel); }
    /// Waits until the limit date at most; a limit in the past still takes a free lock.
    BOOL lockBeforeDate(ZPDate *limit) { return objc_msgSend<BOOL>(this, "lockBeforeDate:"_sel, limit); }
};
