// SPDX-License-Identifier: MIT
// The object runtime: classes and how they come to be (Classes.cpp), what a send falls back on (Dispatch.cpp),
// selectors, protocols, instances. Begin with platform/ZPClass.h, which says what a class record is and how it lives;
// outside this room the headers of platform/ are used, and Slabs.h.
//
// One recursive lock guards every table and every change of a record. Readers on the way of a message take none: what
// they read is published whole (a method index, a bucket) and stays valid for good.
#pragma once

#include <Bedrock/platform/ZPProtocol.h>
#include <Bedrock/platform/kernel/Lock.h>

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
    Class waitsForThis, nextWaiting;  ///< subclasses whose `+initialize` has run inside this one's
    bool waitsForSuper;  ///< one of those
    Class posedAs;  ///< the class that this one took the place of
    Class poser;  ///< the class that took the place of this one, or what was made of it when another took its own
    struct objc_waitingCategory *categories;  ///< to be entered when the class is realized, the first one first
};

/// A category of a class that is not realized yet.
struct objc_waitingCategory {
    objc_waitingCategory *next;
    const objc_registration *registration;
};

namespace objc {

extern recursive_mutex runtimeLock;
using Holding = ZPHolding<recursive_mutex>;

/// Memory of the runtime that is never freed, zero-filled, aligned to 64 bytes, or to 32 when it is shorter.
void *allocatePermanently(std::size_t bytes) ZP_REQUIRES(runtimeLock);
/// Frees a table that another took the place of, or keeps it for good where another thread may be reading it. Tables
/// double, so what is kept is less than what is in use.
void retire(void *table) ZP_REQUIRES(runtimeLock);
/// The selector of a front's or a listed method's name: its words, a colon behind each when there are arguments.
SEL selectorOfName(const char *name, unsigned arguments);
objc_classState &stateOf(Class cls) ZP_REQUIRES(runtimeLock);
/// The same for a reader without the lock; null while the class has none.
inline objc_classState *knownStateOf(Class cls) {
    return static_cast<objc_classState *>(__atomic_load_n(&cls->state, __ATOMIC_ACQUIRE));
}
/// Builds the method tables of a class and its metaclass, superclasses first. Takes no lock when that is done.
void realizeNow(Class cls);
inline void realize(Class cls) {
    if (!(objc_infoOf(cls) & objc_isRealized)) [[unlikely]]
        realizeNow(cls);
}
/// The method for a selector in a class or its superclasses; the class is realized. Any thread, without a lock.
const objc_method *findMethod(Class cls, SEL selector);
/// Enters methods in front of what a class has.
void addMethods(Class cls, objc_methodList *list) ZP_REQUIRES(runtimeLock);
/// Has the buckets of a class and of all its subclasses say again what the methods are.
void refreshCaches(Class cls) ZP_REQUIRES(runtimeLock);
/// The same for one selector.
void refreshCaches(Class cls, SEL selector) ZP_REQUIRES(runtimeLock);
/// Enters what a protocol promises, once.
void listPromises(Protocol *protocol);
/// Keeps a protocol by its name; the first of a name is the one that is found.
void addProtocol(Protocol *protocol) ZP_REQUIRES(runtimeLock);
/// The protocol of a name, or null.
Protocol *findProtocol(const char *name) ZP_REQUIRES(runtimeLock);
inline unsigned infoOf(Class cls) { return objc_infoOf(cls); }
inline void setInfo(Class cls, unsigned bits) { __atomic_or_fetch(&cls->info, bits, __ATOMIC_RELEASE); }
inline void clearInfo(Class cls, unsigned bits) { __atomic_and_fetch(&cls->info, ~bits, __ATOMIC_RELEASE); }
inline Class superclassOf(Class cls) { return objc_superRecordOf(cls); }
inline std::uintptr_t hashOf(SEL selector) { return reinterpret_cast<std::uintptr_t>(selector) >> 5; }
/// Counts every change of a method or a class, for caches of check results.
extern unsigned generation;

}  // namespace objc
