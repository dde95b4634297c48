// SPDX-License-Identifier: MIT
// What the runtime's own files share about class records.
#pragma once

#include <Bedrock/platform/ZPMessage.h>

#include <pthread.h>

/// A method as its file registered it, before the class is realized.
struct objc_queuedMethod {
    objc_queuedMethod *next;
    const char *name;
    objc_methodDescriber describe;
    unsigned list;  ///< 0: the class's own list; else a category's number
};

/// The runtime's private side of a class record, guarded by the runtime lock.
struct objc_classState {
    objc_queuedMethod *queue, **queueEnd;
    objc_method **index;  ///< open addressing by selector; null entries are free
    unsigned indexMask, indexCount;
    Class firstSubclass, nextSibling;
    pthread_t initializer;
    Class nextLoaded;
    Class posedAs;  ///< the class that this one took the place of
};

namespace objc {

/// Holds the runtime lock, which is recursive and guards every class record and table.
struct Lock {
    Lock();
    ~Lock();
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;
};

pthread_mutex_t &runtimeMutex();
/// Memory of the runtime that is never freed, zero-filled, aligned to 32 bytes.
void *allocatePermanently(std::size_t bytes);
objc_classState &stateOf(Class cls);
/// Builds the method tables of a class and its metaclass, superclasses first. Lock held.
void realize(Class cls);
/// The method for a selector in a class or its superclasses; the class is realized. Lock held.
objc_method *findMethod(Class cls, SEL selector);
void addMethods(Class cls, objc_methodList *list);
/// Forgets the cached methods of a class and all its subclasses. Lock held.
void flushCaches(Class cls);
void retireCache(objc_cache *cache);
inline unsigned infoOf(Class cls) { return __atomic_load_n(&cls->info, __ATOMIC_ACQUIRE); }
inline void setInfo(Class cls, unsigned bits) { __atomic_or_fetch(&cls->info, bits, __ATOMIC_RELEASE); }
inline void clearInfo(Class cls, unsigned bits) { __atomic_and_fetch(&cls->info, ~bits, __ATOMIC_RELEASE); }
inline std::uintptr_t hashOf(SEL selector) { return reinterpret_cast<std::uintptr_t>(selector) >> 5; }
/// Counts every change of a method or a class, for caches of check results.
extern unsigned generation;

}  // namespace objc
