// SPDX-License-Identifier: MIT
// Autorelease pools: deferred releases, per thread.
#pragma once

#include <Bedrock/core/ZPObject.h>

#include <exception>

/// A pool on the calling thread's stack of pools. It belongs to the thread that made it; releasing it closes it and
/// every later one, and releases what they hold. It cannot be retained or autoreleased, which raises
/// ZPInvalidArgumentException. See `ZPAutoreleasePoolScope` for the C++ form.
struct ZPAutoreleasePool : ZPObject {
    ZP_CLASS(ZPAutoreleasePool)
    std::uintptr_t _token;  ///< the level index of the pool
    void *_reserved3;
    void *_reserved2;
    void *_reserved;

    /// Opens a new innermost pool; the hint is not used.
    ZPAutoreleasePool *initWithCapacity(unsigned capacity) ZP_ASKS(capacity);
    /// Adds an object to this pool, also when it is not the innermost; null is ignored.
    void addObject(id object) ZP_TELLS(object);

    /// Adds an object to the innermost pool, as `ZPAutoreleaseObject`.
    static void addObjectToInnermost(id object) ZP_CLASS_TELLS_AS("addObject:", object);
    /// Closes every pool of the calling thread.
    static void releaseAllPools() ZP_CLASS_TELLS();
    /// Writes the calling thread's pools to standard error.
    static void showPools() ZP_CLASS_TELLS();
    /// The objects in all pools of the calling thread; one that is there twice counts twice.
    static unsigned autoreleasedObjectCount() ZP_CLASS_ASKS();
    /// The objects in its innermost pool.
    static unsigned topAutoreleasePoolCount() ZP_CLASS_ASKS();
    /// For the calling thread; NO: closing a pool drops the objects without releasing them.
    static void enableRelease(BOOL enable) ZP_CLASS_TELLS(enable);
    /// For the calling thread; YES: a freed object that a pool holds is reported, where it can be told, instead of
    /// released.
    static void enableFreedObjectCheck(BOOL enable) ZP_CLASS_TELLS(enable);
    /// The number of objects in the calling thread's pools from which on it is reported; 0, as at first: never.
    static unsigned poolCountHighWaterMark() ZP_CLASS_ASKS();
    /// Sets the mark for the calling thread.
    static void setPoolCountHighWaterMark(unsigned mark) ZP_CLASS_TELLS(mark);
    /// The step between reports above the mark; 0: one report, at the mark.
    static unsigned poolCountHighWaterResolution() ZP_CLASS_ASKS();
    /// Sets the step for the calling thread.
    static void setPoolCountHighWaterResolution(unsigned step) ZP_CLASS_TELLS(step);
    /// Sets mark and step both.
    static void setPoolCountThreshold(unsigned value) ZP_CLASS_TELLS(value);
    /// Objects autoreleased in the process since start or reset, modulo 4,294,967,296; an estimate when threads
    /// run.
    static unsigned totalAutoreleasedObjects() ZP_CLASS_ASKS();
    /// Begins that count again.
    static void resetTotalAutoreleasedObjects() ZP_CLASS_TELLS();
};

extern "C" {
/// Opens a new innermost pool on the calling thread and answers its token, 0 for the outermost; the hint is
/// ignored. Raises ZPMallocException when there is no memory.
ZP_EXPORT unsigned ZPPushAutoreleasePool(unsigned capacityHint);
/// Closes the calling thread's pool with that token and every later one, releasing what they hold, the last one
/// first, and what is autoreleased meanwhile. What a release raises is logged, and nothing is raised; what was
/// recorded before that object then waits for the enclosing pool, and the outermost pool goes on. No pool with the
/// token: nothing.
ZP_EXPORT void ZPPopAutoreleasePool(unsigned token);
/// The same while an exception leaves the pool: the exceptions among what it holds go to the enclosing pool instead,
/// or, where there is none, stay until the thread opens a pool and handles none.
ZP_EXPORT void _ZPPopAutoreleasePoolForRaise(unsigned token);
/// Records the object in the calling thread's innermost pool, which will release it; null is ignored. Without a
/// pool that is logged, and the object leaks.
ZP_EXPORT void ZPAutoreleaseObject(id object);
/// The objects in all pools of the calling thread; one that is there twice counts twice.
ZP_EXPORT unsigned ZPAutoreleasePoolCount();
/// The objects in the calling thread's innermost pool; 0 without one.
ZP_EXPORT unsigned ZPTopAutoreleasePoolCount();
/// How often the calling thread's pools hold the object.
ZP_EXPORT unsigned ZPAutoreleasePoolCountForObject(id object);
/// Writes the calling thread's pools to standard error.
ZP_EXPORT void ZPPrintAutoreleasePools();

// Reports, apart so that a debugger can stop in them.
/// Logs that an object was autoreleased without a pool.
ZP_EXPORT void _ZPAutoreleaseNoPool(id object);
/// Writes to standard error that a pool held a freed object.
ZP_EXPORT void _ZPAutoreleaseFreedObject(id object);
/// Writes to standard error how many objects the pools hold.
ZP_EXPORT void _ZPAutoreleaseHighWaterLog(unsigned count);
}

/// An autorelease pool for the life of a scope, on the thread that entered it; scopes end in the reverse order of
/// their beginnings. When an exception ends the scope, the pool closes as well, and the exception goes to the enclosing
/// pool; other objects of the pool that the handler is to use must be retained. The destructor raises nothing, and it
/// cannot be left by the unwinding of `+[ZPThread exit]`: a `dealloc` that it runs must not send that, which ends the
/// process.
class ZPAutoreleasePoolScope {
    unsigned _token = ZPPushAutoreleasePool(0);
    int _exceptions = std::uncaught_exceptions();

  public:
    /// Opens the pool.
    ZPAutoreleasePoolScope() = default;
    /// A scope has one pool.
    ZPAutoreleasePoolScope(const ZPAutoreleasePoolScope &) = delete;
    /// A scope has one pool.
    ZPAutoreleasePoolScope &operator=(const ZPAutoreleasePoolScope &) = delete;
    /// Closes the pool and every later one.
    ~ZPAutoreleasePoolScope() {
        if (std::uncaught_exceptions() <= _exceptions) [[likely]]
            ZPPopAutoreleasePool(_token);
        else _ZPPopAutoreleasePoolForRaise(_token);
    }
};
