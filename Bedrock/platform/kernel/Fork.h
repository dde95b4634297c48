// SPDX-License-Identifier: MIT
// What `fork` needs. The child has one thread and the memory as it was: a lock that another thread held would stay held
// for ever, and what it guards half changed. So the library's own locks are taken before the process divides, in the
// order in which they nest, and given back on both sides.
#pragma once

#include <Bedrock/platform/kernel/Lock.h>

/// The library's locks, each before those that may be taken while it is held.
enum class ZPLockOrder {
    threads,
    centers,
    placeholders,
    timeZones,
    log,
    zombies,
    runtime,
    counts,
    zones,
    hostZone,
    last = hostZone
};

/// How the locks of one order are taken and given back.
struct ZPForkHook {
    ZPLockOrder order;
    void (*hold)();
    void (*release)(bool isChild);  ///< in the child nothing waits, and no other thread is there
};

/// Enters a hook, once, in a source file.
#define ZP_AT_FORK(order, hold, release)                                          \
    static constexpr ZPForkHook zpForkHook = {ZPLockOrder::order, hold, release}; \
    [[gnu::section("zp_forks"), gnu::used]] static const ZPForkHook *const zpForkEntry = &zpForkHook

/// The same for a mutex alone: `of` is a function that answers it, and that makes what it lies in at the first call.
#define ZP_MUTEX_AT_FORK(order, of) \
    ZP_AT_FORK(                     \
        order, []() ZP_UNCHECKED_LOCKING { of().lock(); }, [](bool) ZP_UNCHECKED_LOCKING { of().unlock(); })
