// SPDX-License-Identifier: MIT
// Autorelease pools: deferred releases, per thread.
#pragma once

#include <Bedrock/core/ZPObject.h>

#include <exception>

/// A pool on the calling thread's stack of pools, and what it releases when it is popped. A pool
/// belongs to the thread that made it. See `ZPAutoreleasePoolScope` for the C++ form.
struct ZPAutoreleasePool : ZPObject {
    ZP_CLASS(ZPAutoreleasePool)
    std::uintptr_t _token;  ///< the level index of the pool
    void *_reserved3;
    void *_reserved2;
    void *_reserved;

    /// Opens a new innermost pool; the hint is not used.
    ZPAutoreleasePool *initWithCapacity(unsigned capacity) { return objc_msgSend<ZPAutoreleasePool *>(this, "initWithCapacity:"_sel, capacity); }
    /// Adds an object to this pool, also when it is not the innermost; null is ignored.
    void addObject(id object) { objc_msgSend(this, "addObject:"_sel, object); }

    /// Adds an object to the innermost pool.
    static void addObjectToInnermost(id object) { objc_msgSend(class_(), "addObject:"_sel, object); }
    /// Pops every pool of the calling thread.
    static void releaseAllPools() { objc_msgSend(class_(), "releaseAllPools"_sel); }
    static void showPools() { objc_msgSend(class_(), "showPools"_sel); }
    static unsigned autoreleasedObjectCount() { return objc_msgSend<unsigned>(class_(), "autoreleasedObjectCount"_sel); }
    static unsigned topAutoreleasePoolCount() { return objc_msgSend<unsigned>(class_(), "topAutoreleasePoolCount"_sel); }
    /// NO: pops of the calling thread drop objects without releasing them.
    static void enableRelease(BOOL enable) { objc_msgSend(class_(), "enableRelease:"_sel, enable); }
    static void enableFreedObjectCheck(BOOL enable) { objc_msgSend(class_(), "enableFreedObjectCheck:"_sel, enable); }
    /// The object count from which the calling thread's pools are reported; 0: never.
    static unsigned poolCountHighWaterMark() { return objc_msgSend<unsigned>(class_(), "poolCountHighWaterMark"_sel); }
    static void setPoolCountHighWaterMark(unsigned mark) { objc_msgSend(class_(), "setPoolCountHighWaterMark:"_sel, mark); }
    /// The step between reports above the mark; 0: report once.
    static unsigned poolCountHighWaterResolution() { return objc_msgSend<unsigned>(class_(), "poolCountHighWaterResolution"_sel); }
    static void setPoolCountHighWaterResolution(unsigned step) { objc_msgSend(class_(), "setPoolCountHighWaterResolution:"_sel, step); }
    static void setPoolCountThreshold(unsigned value) { objc_msgSend(class_(), "setPoolCountThreshold:"_sel, value); }
    /// Objects autoreleased in the process since start or reset.
    static unsigned totalAutoreleasedObjects() { return objc_msgSend<unsigned>(class_(), "totalAutoreleasedObjects"_sel); }
    static void resetTotalAutoreleasedObjects() { objc_msgSend(class_(), "resetTotalAutoreleasedObjects"_sel); }
};

extern "C" {
/// Opens a new innermost pool on the calling thread and answers its token; the hint is ignored.
ZP_EXPORT unsigned ZPPushAutoreleasePool(unsigned capacityHint);
/// Closes the pool with that token and every later one, releasing what they hold. Never raises.
ZP_EXPORT void ZPPopAutoreleasePool(unsigned token);
/// Records the object in the innermost pool; without one it is reported and leaks.
ZP_EXPORT void ZPAutoreleaseObject(id object);
ZP_EXPORT unsigned ZPAutoreleasePoolCount();
ZP_EXPORT unsigned ZPTopAutoreleasePoolCount();
ZP_EXPORT unsigned ZPAutoreleasePoolCountForObject(id object);
/// Writes the calling thread's pools to standard error.
ZP_EXPORT void ZPPrintAutoreleasePools();

// Reports, apart so that a debugger can stop in them.
ZP_EXPORT void _ZPAutoreleaseNoPool(id object);
ZP_EXPORT void _ZPAutoreleaseFreedObject(id object);
ZP_EXPORT void _ZPAutoreleaseHighWaterLog(unsigned count);
}

/// An autorelease pool for the life of a scope, on the thread that entered it. When an exception ends the
/// scope, its objects wait for the end of the enclosing pool: the exception is one of them.
class ZPAutoreleasePoolScope {
    unsigned _token = ZPPushAutoreleasePool(0);
    int _exceptions = std::uncaught_exceptions();

  public:
    ZPAutoreleasePoolScope() = default;
    ZPAutoreleasePoolScope(const ZPAutoreleasePoolScope &) = delete;
    ZPAutoreleasePoolScope &operator=(const ZPAutoreleasePoolScope &) = delete;
    ~ZPAutoreleasePoolScope() {
        if (std::uncaught_exceptions() <= _exceptions) ZPPopAutoreleasePool(_token);
    }
};
