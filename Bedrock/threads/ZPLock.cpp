// ZPLock. The lock is one word behind the object: 0 free, 1 held, 2 held and perhaps waited for. A
// free lock is taken and given back by one atomic exchange; waiting is the kernel's.
//
//   0 -> 1   taken free            1 -> 2   a waiter announces itself
//   2 -> 2   a woken waiter takes it (others may still wait)
//   1 -> 0   given back            2 -> 0   given back, one waiter woken
#include <Bedrock/threads/ZPLock.h>

#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/platform/ZPKernel.h>

namespace {

struct LockMethods : ZPLock {
    unsigned *word() { return static_cast<unsigned *>(_priv); }

    static id allocWithZone(Class self, ZPZone *zone) {
        id lock = ZPAllocateObject(self, sizeof(unsigned) * 2, zone);
        auto *object = reinterpret_cast<ZPLock *>(lock.pointer());
        object->_priv = reinterpret_cast<char *>(object) + self->instanceSize;
        return lock;
    }
    BOOL tryLock() {
        unsigned free = 0;
        return __atomic_compare_exchange_n(word(), &free, 1u, false, __ATOMIC_ACQUIRE, __ATOMIC_RELAXED);
    }
    void lock() {
        if (tryLock()) return;
        while (__atomic_exchange_n(word(), 2u, __ATOMIC_ACQUIRE) != 0) cthread_wait(word(), 2, -1);
    }
    void unlock() {
        if (__atomic_exchange_n(word(), 0u, __ATOMIC_RELEASE) == 2) cthread_wake(word(), 1);
    }
    BOOL lockBeforeDate(ZPDate *limit) {
        double until = objc_msgSend<double>(id((objc_object *)limit), "timeIntervalSinceReferenceDate"_sel);
        if (tryLock()) return YES;
        for (;;) {
            double remaining = until - cthread_time();
            if (remaining < 0) return NO;
            if (__atomic_exchange_n(word(), 2u, __ATOMIC_ACQUIRE) == 0) return YES;
            if (!cthread_wait(word(), 2, remaining)) return NO;
        }
    }
    ZPString *description() {
        return objc_sendVariadic<ZPString *, ZPString *>::send(
            objc_getClass("ZPString"), "stringWithFormat:"_sel, "%s(0x%lx) locked: %s"_zp, isa->name, reinterpret_cast<unsigned long>(this),
            __atomic_load_n(word(), __ATOMIC_RELAXED) ? "YES" : "NO");
    }
};

}  // namespace

ZP_DEFINE_PROTOCOL(ZPLocking).method<void()>("lock").method<void()>("unlock");

ZP_IMPLEMENT(ZPLock)
    .adopts<ZPLocking>()
    .classMethod<&LockMethods::allocWithZone>("allocWithZone:")
    .method<&LockMethods::lock>("lock")
    .method<&LockMethods::unlock>("unlock")
    .method<&LockMethods::tryLock>("tryLock")
    .method<&LockMethods::lockBeforeDate>("lockBeforeDate:")
    .method<&LockMethods::description>("description");
