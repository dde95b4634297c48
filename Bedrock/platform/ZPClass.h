// SPDX-License-Identifier: MIT
// Class records, method records and the operations of the object runtime on them.
//
// A class record is a constant-initialised object with a stable address, followed by its
// metaclass's record. Its life: declared (loaded, its method entries queued) -> realized (method
// table built, superclass first) -> initialized (`+initialize` has run, superclass first). Only an
// initialized class fills its method cache.
//
//   isa         the metaclass; of a metaclass, the root's metaclass
//   cache       selector -> implementation, read without a lock; its entries never change once they
//               are published, and it is replaced whole when it grows or when methods change
//   info        flag bits below, changed under the runtime lock, read freely
//   everything else is written before the class is published or under the runtime lock
#pragma once

#include <Bedrock/platform/ZPTypeEncoding.h>

struct Protocol;
struct ZPZone;

/// Calls an implementation with arguments read from a frame; `result` may be null.
using objc_frameInvoker = void (*)(IMP implementation, objc_object *self, SEL selector, void *arguments, void *result);

/// A selector and a type string.
struct objc_methodDescription {
    SEL name;
    const char *types;
};

struct objc_method {
    SEL name;
    const char *types;
    IMP implementation;
    objc_frameInvoker invoker;
    unsigned argumentSize;  ///< bytes of the argument frame, receiver and selector included
};

/// One list of methods: what a class's own file registered, or one category.
struct objc_methodList {
    const objc_methodList *next;
    unsigned count;
    objc_method methods[];
};

struct objc_protocolList {
    const objc_protocolList *next;
    Protocol *protocol;
};

struct objc_cacheBucket {
    SEL selector;
    IMP implementation;
};

struct objc_cache {
    std::uintptr_t mask;  ///< byte offset mask: (buckets - 1) * sizeof(objc_cacheBucket)
    unsigned count;
    objc_cache *retired;  ///< the cache that was replaced before this one, of any class
    objc_cacheBucket buckets[1];
};

extern "C" ZP_EXPORT objc_cache objc_emptyCache;

/// How the C++ fields of an instance come to life and end; null where nothing is to do.
struct objc_fieldHooks {
    void (*construct)(void *instance);
    void (*copy)(void *instance, const void *source);
    void (*destroy)(void *instance);
};

enum objc_classInfo : unsigned {
    objc_isMetaclass = 1,
    objc_isRealized = 2,
    objc_isInitializing = 4,
    objc_isInitialized = 8,
    objc_isRoot = 16,
    objc_countsInHeader = 32,     ///< instances come from the allocator and keep their count before `isa`
    objc_defaultCounting = 64,    ///< retain, release, retainCount and autorelease are the root's own
    objc_hasWideAlignment = 128,  ///< instances need 16-byte alignment
    objc_isPosing = 256,
    objc_defaultAllocation = 512, ///< (metaclass) alloc and allocWithZone: are the root's own
    objc_defaultDealloc = 1024,   ///< dealloc is the root's own
    objc_allocatesPlainly = 2048, ///< initialized, and alloc does nothing but allocate
};

struct objc_class : objc_object {
    objc_cache *cache;
    Class superclass;
    unsigned info;
    int version;
    const char *name;
    unsigned instanceSize;
    unsigned reserved;
    const objc_fieldHooks *fields;
    const objc_methodList *methodLists;
    const objc_protocolList *protocols;
    Class counterpart;  ///< the metaclass of a class, the class of a metaclass
    void *state;        ///< the runtime's own: method index, queued entries, subclasses
};

/// A class record and its metaclass's.
struct objc_classPair {
    objc_class cls;
    objc_class meta;
};

extern "C" {
// Selectors. A selector lives as long as the process; any thread may call these.

/// The selector of a name, registered on first use. A null name gives the null selector.
ZP_EXPORT SEL sel_registerName(const char *name);
/// The same as `sel_registerName`.
ZP_EXPORT SEL sel_getUid(const char *name);
/// The selector of a literal: stores it in `slot` for the next use.
ZP_EXPORT SEL objc_registerSelector(SEL *slot, const char *name);

// Classes. Class records are never freed; any thread may call these.

/// The class of a name, or null. Finds a class that poses under the name.
ZP_EXPORT Class objc_getClass(const char *name);
/// The same as `objc_getClass`.
ZP_EXPORT Class objc_lookUpClass(const char *name);
/// The class that was declared under a name, also when another class poses as it.
ZP_EXPORT Class objc_getOrigClass(const char *name);
/// Registers a class record made at run time. Stops the process when the name is taken.
ZP_EXPORT void objc_addClass(Class cls);
/// A new, unregistered subclass record with `extraBytes` of instance storage behind the
/// superclass's; add methods, then register it with `objc_addClass`. The name is copied.
ZP_EXPORT Class objc_makeClass(Class superclass, const char *name, unsigned extraBytes);
/// A copy of a class record and its metaclass record under another name, not registered.
ZP_EXPORT Class objc_copyClass(Class cls, const char *name);
/// Stores up to `capacity` registered classes and answers how many there are.
ZP_EXPORT unsigned objc_getClasses(Class *classes, unsigned capacity);
/// Tells the runtime that more than one thread exists.
ZP_EXPORT void objc_setMultithreaded(BOOL flag);

/// Adds or replaces a method. `types` must live as long as the process.
ZP_EXPORT void class_addMethod(Class cls, SEL name, IMP implementation, const char *types, objc_frameInvoker invoker,
                               unsigned argumentSize);
/// The method that instances of the class answer a selector with, or null.
ZP_EXPORT const objc_method *class_getInstanceMethod(Class cls, SEL name);
/// The method of the class object itself, or null.
ZP_EXPORT const objc_method *class_getClassMethod(Class cls, SEL name);
/// The implementation for a selector; `_objc_msgForward` when there is none.
ZP_EXPORT IMP class_lookupMethod(Class cls, SEL name);
ZP_EXPORT BOOL class_respondsToMethod(Class cls, SEL name);
/// YES when a class is another, descends from it, or poses as it.
ZP_EXPORT BOOL class_inherits(Class cls, Class ancestor);
/// The class's own method lists, newest category first: start with a null `*iterator`.
ZP_EXPORT const objc_methodList *class_nextMethodList(Class cls, const void **iterator);
/// Makes `impostor`, a direct subclass of `original` without fields of its own, take its place: from
/// then on every instance, subclass and reference of `original` behaves as `impostor`. The former
/// behaviour lives on in a hidden class whose name begins with "%", `impostor`'s new superclass.
ZP_EXPORT Class class_poseAs(Class impostor, Class original);
ZP_EXPORT unsigned method_getSizeOfArguments(const objc_method *method);

/// Stands for "not implemented" among implementations. Never call it: a send takes the forwarding
/// path by itself.
ZP_EXPORT void _objc_msgForward();

// The slow sides of a send.
ZP_EXPORT IMP objc_lookUpForSend(objc_object *receiver, SEL selector);
ZP_EXPORT IMP objc_lookUpForSuper(Class superclass, SEL selector);
ZP_EXPORT void objc_checkSend(Class cls, SEL selector, const char *types);
ZP_EXPORT BOOL objc_typesMatch(const char *a, const char *b);
[[noreturn]] ZP_EXPORT void objc_conversionFailed(objc_object *object, Class wanted);
[[noreturn]] ZP_EXPORT void objc_fatal(const char *format, ...) __attribute__((format(printf, 1, 2)));

// Registration, run by the static initialisers that ZP_IMPLEMENT, ZP_CATEGORY and
// ZP_DEFINE_PROTOCOL write.
using objc_methodDescriber = void (*)(objc_method *method);
ZP_EXPORT void objc_loadClass(Class cls);
ZP_EXPORT void objc_loadCategory(Class cls, const char *category);
ZP_EXPORT void objc_loadMethod(Class cls, const char *name, objc_methodDescriber describe);
ZP_EXPORT void objc_loadProtocol(Class cls, Protocol *protocol);

/// A new instance on the heap, or null when there is no memory.
ZP_EXPORT objc_object *objc_allocateInstance(Class cls);
/// YES when `object` is of the class or answers YES to `-isKindOfClass:`.
ZP_EXPORT BOOL objc_isKindOf(objc_object *object, Class cls);
}

template <class T> void objc_checkConversion(objc_object *object) {
    if constexpr (requires { T::class_(); })
        if (!objc_isKindOf(object, T::class_())) objc_conversionFailed(object, T::class_());
}
