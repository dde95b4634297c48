// SPDX-License-Identifier: MIT
// ZPLock and ZPRecursiveLock. Each is one word:
//
//   0 -> 1   taken free            1 -> 2   a waiter announces itself
//   2 -> 2   a woken waiter takes it (others may still wait)
//   1 -> 0   given back            2 -> 0   given back, one waiter woken
//
// A free lock is taken and given back by one atomic operation, by none while the process has one thread; waiting is
// the kernel's. The recursive lock adds the owner, which only the owner's own thread finds equal to itself, and how
// often it has taken the lock.
#include <Bedrock/threads/Lock+Internal.h>
#include <Bedrock/core/Fronts.h>

namespace {

struct Word {
    unsigned value = 0;

    bool take() {
        if (__libc_single_threaded) {
            if (value) return false;
            value = 1;
            return true;
        }
        unsigned free = 0;
        return __atomic_compare_exchange_n(&value, &free, 1u, false, __ATOMIC_ACQUIRE, __ATOMIC_RELAXED);
    }
    void wait() {
        // A lock is mostly held for a few instructions: look a little before asking the kernel.
        for (int i = 0; i < 60; ++i) {
            if (__atomic_load_n(&value, __ATOMIC_RELAXED) == 0 && take()) return;
            cthread_relax();
        }
        while (__atomic_exchange_n(&value, 2u, __ATOMIC_ACQUIRE) != 0) cthread_wait(&value, 2, -1);
    }
    // Looks at the lock before the clock: who was woken takes it, or leaves word for who holds it now. Given up
    // without that, the waking would be lost to the others who wait.
    bool waitUntil(double limit) {
        for (;;) {
            if (__atomic_exchange_n(&value, 2u, __ATOMIC_ACQUIRE) == 0) return true;
            double remaining = limit - cthread_time();
            if (remaining < 0 || !cthread_wait(&value, 2, remaining)) return false;
        }
    }
    void giveBack() {
        if (__libc_single_threaded) value = 0;
        else if (__atomic_exchange_n(&value, 0u, __ATOMIC_RELEASE) == 2) cthread_wake(&value, 1);
    }
    BOOL isTaken() const { return __atomic_load_n(&value, __ATOMIC_RELAXED) != 0; }
};

struct RecursiveWord : Word {
    int count = 0;
    const void *owner = nullptr;

    // Enough to tell the threads that exist apart.
    static const void *self() { return ZPCurrentThreadData(); }
    bool isMine() const { return __atomic_load_n(&owner, __ATOMIC_RELAXED) == self(); }
    void taken() {
        __atomic_store_n(&owner, self(), __ATOMIC_RELAXED);
        setCount(1);
    }
    int getCount() const { return __atomic_load_n(&count, __ATOMIC_RELAXED); }
    void setCount(int n) { __atomic_store_n(&count, n, __ATOMIC_RELAXED); }
};

struct LockMethods : _ZPLockMethods<ZPLock, Word> {
    BOOL tryLock() { return part().take(); }
    void lock() {
        if (!part().take()) part().wait();
    }
    void unlock() { part().giveBack(); }
    BOOL lockBeforeDate(ZPDate *limit) {
        double until = limit->timeIntervalSinceReferenceDate();
        return part().take() || part().waitUntil(until);
    }
    ZPString *description() { return describe("%s(0x%lx) locked: %s"_zp, part().isTaken() ? "YES" : "NO"); }
};

struct RecursiveLockMethods : _ZPLockMethods<ZPRecursiveLock, RecursiveWord> {
    void lock() {
        RecursiveWord &r = part();
        if (r.isMine()) {
            r.setCount(r.getCount() + 1);
            return;
        }
        if (!r.take()) r.wait();
        r.taken();
    }
    BOOL lockBeforeDate(ZPDate *limit) {
        RecursiveWord &r = part();
        double until = limit->timeIntervalSinceReferenceDate();
        if (r.isMine()) {
            r.setCount(r.getCount() + 1);
            return YES;
        }
        if (!r.take() && !r.waitUntil(until)) return NO;
        r.taken();
        return YES;
    }
    BOOL tryLock() {
        RecursiveWord &r = part();
        if (r.isMine() || !r.take()) return NO;
        r.taken();
        return YES;
    }
    void unlock() {
        RecursiveWord &r = part();
        int count = r.getCount();
        if (count) r.setCount(count - 1);
        if (count != 1) return;
        __atomic_store_n(&r.owner, nullptr, __ATOMIC_RELAXED);
        r.giveBack();
    }
    ZPString *description() {
        RecursiveWord &r = part();
        BOOL locked = __atomic_load_n(&r.owner, __ATOMIC_RELAXED) != nullptr;
        return describe("%s(0x%lx) locked: %s  recursion count: %d"_zp, locked ? "YES" : "NO",
                        locked ? r.getCount() : 0);
    }
};

}  // namespace

ZP_DEFINE_PROTOCOL(ZPLocking, lock, unlock);

ZP_SAME_FRONT(ZPLock, _ZPLockAbove, lock, unlock);
ZP_IMPLEMENT_WITH(ZPLock, LockMethods, adopts(ZPLocking), lock, unlock, tryLock, lockBeforeDate, description,
                  classMethods(allocWithZone));

ZP_IMPLEMENT_WITH(ZPRecursiveLock, RecursiveLockMethods, adopts(ZPLocking), lock, unlock, tryLock, lockBeforeDate,
                  description, classMethods(allocWithZone));
