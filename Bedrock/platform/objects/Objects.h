// SPDX-License-Identifier: MIT
// The object runtime: classes and how they come to be (Classes.cpp), what a send falls back on (Dispatch.cpp),
// selectors, protocols, instances. Begin with platform/ZPClass.h, which says what a class record is and how it lives;
// outside this room only the headers of platform/ are used.
//
// One recursive lock guards every table and every change of a record. Readers on the way of a message take none: what
// they read is published whole (a method index, a bucket) and stays valid for good.
#pragma once

#include <Bedrock/platform/ZPProtocol.h>

#include <pthread.h>

/// The methods of one class by selector, open addressing; null entries are free. Entries are replaced in place, and the
/// index whole when it grows: readers of the former one still find what it has.
struct objc_methodIndex {
    unsigned mask, count;
    const objc_method *methods[];
};

/// The runtime's private side of a class record, guarded by the runtime lock but for `index`.
struct objc_classState {
    objc_methodIndex *index;
    Class firstSubclass, nextSibling;
    pthread_t initializer;
    Class posedAs;  ///< the class that this one took the place of
    struct objc_waitingCategory *categories;  ///< to be entered when the class is realized, the first one first
};

/// A category of a class that is not realized yet.
struct objc_waitingCategory {
    objc_waitingCategory *next;
    const objc_registration *registration;
};

namespace objc {

/// Holds the runtime lock, which is recursive.
struct Lock {
    Lock();
    ~Lock();
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;
};

pthread_mutex_t &runtimeMutex();
/// Memory of the runtime that is never freed, zero-filled, aligned to 64 bytes, or to 32 when it is shorter. Lock held.
void *allocatePermanently(std::size_t bytes);
/// The selector of a front's or a listed method's name: its words, a colon behind each when there are arguments.
SEL selectorOfName(const char *name, unsigned arguments);
objc_classState &stateOf(Class cls);
/// Builds the method tables of a class and its metaclass, superclasses first. Takes no lock when that is done.
void realize(Class cls);
/// The method for a selector in a class or its superclasses; the class is realized. Any thread, without a lock.
const objc_method *findMethod(Class cls, SEL selector);
/// Enters methods in front of what a class has. Lock held.
void addMethods(Class cls, objc_methodList *list);
/// Has the buckets of a class and of all its subclasses say again what the methods are. Lock held.
void refreshCaches(Class cls);
/// The same for one selector.
void refreshCaches(Class cls, SEL selector);
/// Enters what a protocol promises, once.
void listPromises(Protocol *protocol);
/// Keeps a protocol by its name; the first of a name is the one that is found. Lock held.
void addProtocol(Protocol *protocol);
/// The protocol of a name, or null. Lock held.
Protocol *findProtocol(const char *name);
inline unsigned infoOf(Class cls) { return __atomic_load_n(&cls->info, __ATOMIC_ACQUIRE); }
inline void setInfo(Class cls, unsigned bits) { __atomic_or_fetch(&cls->info, bits, __ATOMIC_RELEASE); }
inline void clearInfo(Class cls, unsigned bits) { __atomic_and_fetch(&cls->info, ~bits, __ATOMIC_RELEASE); }
inline Class superclassOf(Class cls) { return __atomic_load_n(&cls->superclass, __ATOMIC_ACQUIRE); }
inline std::uintptr_t hashOf(SEL selector) { return reinterpret_cast<std::uintptr_t>(selector) >> 5; }
/// Counts every change of a method or a class, for caches of check results.
extern unsigned generation;

}  // namespace objc
