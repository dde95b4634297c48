// SPDX-License-Identifier: MIT
// Things that are made at their first use and then shared by all threads, without a lock. Threads that come together
// may each make one; the first is kept. The library has no function's static that runs code to be made: in the child
// of a fork, one that another thread was at would stay half made, and whoever asks for it wait for ever.
#pragma once

#include <Bedrock/platform/ZPZone.h>

/// Gives up what came too late: an object is released, anything else deleted.
struct ZPDrop {
    template <class T> void operator()(T *late) const {
        if constexpr (requires { late->release(); }) late->release();
        else delete late;
    }
};

/// Puts `made`, which may be null, into an empty slot; answers what the slot holds then.
template <class T, class Drop = ZPDrop> T *ZPKeepFirst(T *&slot, std::type_identity_t<T> *made, Drop drop = {}) {
    T *kept = nullptr;
    if (!made) return __atomic_load_n(&slot, __ATOMIC_ACQUIRE);
    if (__atomic_compare_exchange_n(&slot, &kept, made, false, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE)) return made;
    drop(made);
    return kept;
}

/// What the slot holds, made at the first call; null when `make` answered it.
template <class T, class Make, class Drop = ZPDrop> ZP_INLINE T *ZPMakeOnce(T *&slot, Make make, Drop drop = {}) {
    if (T *kept = __atomic_load_n(&slot, __ATOMIC_ACQUIRE)) [[likely]]
        return kept;
    return ZPKeepFirst(slot, make(), drop);
}

/// The one T of the process, made without arguments by the first who asks; it is never destroyed.
template <class T> ZP_INLINE T &ZPTheOnly() {
    constinit static T *slot = nullptr;
    return *ZPMakeOnce(slot, [] { return new T; });
}

/// For what no message releases: its memory goes back as it is.
struct ZPDropMemory {
    void operator()(id late) const { _dealloc(late.pointer()); }
};
