// SPDX-License-Identifier: MIT
// What the lock classes share: the private part, which lies behind the object in one block, and their limits in time.
#pragma once

#include <Bedrock/threads/ZPLock.h>

#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/platform/kernel/Kernel.h>
#include <Bedrock/strings/ZPString.h>
#include <Bedrock/time/ZPDate.h>

#include <new>

/// A lock class of front T whose private part is a P, which has a function `description` of its own.
template <class T, class P> struct _ZPLockMethods : T {
    P &part() { return *static_cast<P *>(T::_priv); }

    static id allocWithZone(Class self, ZPZone *zone) {
        constexpr unsigned align = alignof(P);
        unsigned size = (self->instanceSize + align - 1) / align * align;
        id lock = ZPAllocateObject(self, size - self->instanceSize + sizeof(P), zone);
        if (auto *object = lock.unchecked<T>()) object->_priv = new (reinterpret_cast<char *>(object) + size) P;
        return lock;
    }
    void dealloc() {
        part().~P();
        ZP_SUPER(T, dealloc)();
    }
    template <class... A> ZPString *describe(ZPString *format, A... arguments) {
        return ZPString::stringWithFormat(format, this->isa->name, reinterpret_cast<unsigned long>(this), arguments...);
    }
};
