// SPDX-License-Identifier: MIT
// Mutexes and the one guard that holds them. What a mutex guards says so with ZP_GUARDED_BY, a function that its caller
// must lock for with ZP_REQUIRES; clang's thread-safety analysis then finds every access without the lock, and other
// compilers see nothing. Both mutexes are initialised by a constant, so that one in static memory works before any
// constructor has run, and neither needs to be destroyed while it is in static memory.
#pragma once

#include <pthread.h>

#if defined(__clang__)
#define ZP_THREAD_SAFETY(...) __attribute__((__VA_ARGS__))
#else
#define ZP_THREAD_SAFETY(...)
#endif

/// A type whose objects are locks.
#define ZP_LOCKABLE ZP_THREAD_SAFETY(capability("mutex"))
/// A type whose objects hold a lock as long as they live.
#define ZP_SCOPED_LOCK ZP_THREAD_SAFETY(scoped_lockable)
/// A variable or field that may be read and written only with the lock.
#define ZP_GUARDED_BY(lock) ZP_THREAD_SAFETY(guarded_by(lock))
/// A pointer to what may be read and written only with the lock.
#define ZP_PT_GUARDED_BY(lock) ZP_THREAD_SAFETY(pt_guarded_by(lock))
/// A function that is called with the locks held, and leaves them so.
#define ZP_REQUIRES(...) ZP_THREAD_SAFETY(requires_capability(__VA_ARGS__))
/// A function that is called without the locks, since it takes them.
#define ZP_EXCLUDES(...) ZP_THREAD_SAFETY(locks_excluded(__VA_ARGS__))
/// A function that takes a lock, without argument its own object, and returns with it.
#define ZP_ACQUIRES(...) ZP_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
/// A function that gives a lock back, without argument its own object or what that holds.
#define ZP_RELEASES(...) ZP_THREAD_SAFETY(release_capability(__VA_ARGS__))
/// A function that answers a reference to the lock.
#define ZP_ANSWERS_LOCK(lock) ZP_THREAD_SAFETY(lock_returned(lock))
/// A function that the analysis cannot follow; a comment says why it is right.
#define ZP_UNCHECKED_LOCKING ZP_THREAD_SAFETY(no_thread_safety_analysis)

/// A mutex that the thread holding it must not take again.
struct ZP_LOCKABLE mutex {
    pthread_mutex_t native = PTHREAD_MUTEX_INITIALIZER;

    void lock() ZP_ACQUIRES() { pthread_mutex_lock(&native); }
    void unlock() ZP_RELEASES() { pthread_mutex_unlock(&native); }
};

/// A mutex that the thread holding it may take again; free when given back as often. It knows its owner by the handle,
/// which stays the thread's in a forked child; the system's recursive mutexes know the number, which does not.
class ZP_LOCKABLE recursive_mutex {
    pthread_mutex_t _native = PTHREAD_MUTEX_INITIALIZER;
    pthread_t _owner = 0;  ///< only the owner's own thread finds itself here
    unsigned _depth = 0;

    void own(unsigned depth) {
        __atomic_store_n(&_owner, depth ? pthread_self() : 0, __ATOMIC_RELAXED);
        _depth = depth;
    }

  public:
    void lock() ZP_ACQUIRES() ZP_UNCHECKED_LOCKING {
        if (__atomic_load_n(&_owner, __ATOMIC_RELAXED) == pthread_self()) {
            ++_depth;
            return;
        }
        pthread_mutex_lock(&_native);
        own(1);
    }
    void unlock() ZP_RELEASES() ZP_UNCHECKED_LOCKING {
        if (_depth > 1) {
            --_depth;
            return;
        }
        own(0);
        pthread_mutex_unlock(&_native);
    }
    /// Waits for the condition with the lock given back, however often it is held.
    void wait(pthread_cond_t &condition) ZP_REQUIRES(this) {
        unsigned depth = _depth;
        own(0);
        pthread_cond_wait(&condition, &_native);
        own(depth);
    }
};

/// Holds a lock to the end of the block: anything with `lock` and `unlock`.
template <class L> class ZP_SCOPED_LOCK ZPHolding {
    L &_lock;

  public:
    explicit ZPHolding(L &lock) ZP_ACQUIRES(lock) : _lock(lock) { lock.lock(); }
    ~ZPHolding() ZP_RELEASES() { _lock.unlock(); }
    ZPHolding(const ZPHolding &) = delete;
    ZPHolding &operator=(const ZPHolding &) = delete;
};
