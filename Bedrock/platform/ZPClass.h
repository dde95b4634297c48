// SPDX-License-Identifier: MIT
// Class records, method records and the operations of the object runtime on them.
//
// A class record is a constant-initialised object with a stable address, followed by its
// metaclass's record. Its life: declared (nothing has run) -> realized (its methods entered from the
// list of its file and from the categories, superclass first) -> initialized (`+initialize` has run,
// superclass first). Only an initialized class fills its caches.
//
//   isa             the metaclass; of a metaclass, the root's metaclass, once the class is realized
//   first           a few selectors and their implementations inside the record: a send that finds its
//                   selector here reads nothing of the class but one line
//   buckets, mask   every other selector that was looked up. The table only grows: readers load the mask
//                   before the buckets, the runtime stores them in the other order, so that a mask never
//                   reaches beyond the buckets that are read with it
//   info            flag bits below, changed under the runtime lock, read freely
//   everything else is written before the class is published or under the runtime lock
//
// A bucket's selector never changes once it is published; its implementation does when methods change.
#pragma once

#include <Bedrock/platform/ZPTypeEncoding.h>

struct Protocol;
struct ZPZone;

/// Calls an implementation with arguments read from a frame, as `objc_frame` describes it; `result` may be null.
/// Answers where the result went: `result`, or for one that is returned in memory the place that the frame names.
using objc_frameInvoker = void *(*)(IMP implementation, objc_object *self, SEL selector, void *arguments, void *result);

/// A method by name and type. Both texts live as long as the process.
struct objc_methodDescription {
    SEL name;  ///< what it is called by
    const char *types;  ///< the type string: result, receiver, selector, arguments
};

/// A method of a class. Records live as long as the process and do not change once they are published.
struct objc_method {
    SEL name;  ///< what it is called by
    const char *types;  ///< the type string: result, receiver, selector, arguments
    IMP implementation;  ///< the function; call it only through its real type
    objc_frameInvoker invoker;  ///< calls it with a frame
    unsigned argumentSize;  ///< bytes of the argument frame, receiver and selector included
};

/// One list of methods: what a class's own file registered, or one category. Lives as long as the process.
struct objc_methodList {
    const objc_methodList *next;  ///< the list that was there before; null for the oldest
    unsigned count;  ///< of the methods
    objc_method methods[];  ///< the methods themselves
};

/// @cond machinery
struct objc_protocolList {
    const objc_protocolList *next;
    Protocol *protocol;
};

/// What a free bucket holds: no selector has this address, and null would match a send of the null selector.
inline constexpr std::uintptr_t objc_noSelector = ~std::uintptr_t(0);

struct objc_bucket {
    std::uintptr_t selector = objc_noSelector;
    IMP implementation = nullptr;
};

/// What `buckets` points to while a class has none; each library has its own, and nobody writes to it.
ZP_HIDDEN inline constinit objc_bucket objc_noBuckets;

/// How the C++ fields of an instance come to life and end; null where nothing is to do.
struct objc_fieldHooks {
    void (*construct)(void *instance);
    void (*copy)(void *instance, const void *source);
    void (*destroy)(void *instance);
};
/// @endcond

/// Bits of a class record's `info`.
enum objc_classInfo : unsigned {
    objc_isMetaclass = 1,  ///< the record describes a class object
    objc_isRealized = 2,  ///< its method table is built
    objc_isInitializing = 4,  ///< `+initialize` is running
    objc_isInitialized = 8,  ///< `+initialize` has run
    objc_isRoot = 16,  ///< it has no superclass
    objc_countsInHeader = 32,  ///< instances come from the allocator and keep their count before `isa`
    objc_defaultCounting = 64,  ///< retain, release, retainCount and autorelease are the root's own
    objc_hasWideAlignment = 128,  ///< instances need 16-byte alignment
    objc_isPosing = 256,  ///< it took the place of another class
    objc_defaultAllocation = 512,  ///< (metaclass) alloc and allocWithZone: are the root's own
    objc_defaultDealloc = 1024,  ///< dealloc is the root's own
    objc_allocatesPlainly = 2048,  ///< initialized, and alloc does nothing but allocate
    objc_isReplaced = 4096,  ///< another class took its place: its superclass is what it was before
};

struct objc_registration;

/// The record of a class or of its metaclass. Read `superclass`, `name`, `version` and `instanceSize`; the runtime
/// alone changes a record, by the functions below.
struct alignas(64) objc_class : objc_object {
    objc_bucket *buckets;  ///< selectors already looked up, beyond those in `first`
    std::uintptr_t mask;  ///< byte offset mask of `buckets`: (how many - 1) * sizeof(objc_bucket)
    Class superclass;  ///< null for a root class
    unsigned info;  ///< bits of `objc_classInfo`
    int version;  ///< what `version` was given at registration, else 0; archives record it
    const char *name;  ///< the class's name, UTF-8
    unsigned instanceSize;  ///< in bytes, `isa` included
    unsigned cached;  ///< how many selectors `buckets` holds
    const objc_fieldHooks *fields;  ///< the C++ fields' construction and destruction; null when there is nothing to do
    objc_bucket first[4];  ///< selectors already looked up, by the low bits of their hash
    const objc_registration *registration;  ///< the list of its methods; null for a class made at run time
    const objc_methodList *methodLists;  ///< newest category first
    const objc_protocolList *protocols;  ///< what the class itself adopts
    void *state;  ///< the runtime's own: method index, categories, subclasses
};

/// A class record and its metaclass's, as ZP_IMPLEMENT defines them: static, at a stable address.
struct objc_classPair {
    objc_class cls;  ///< the class
    objc_class meta;  ///< its metaclass
};

/// @cond machinery
/// A record as it is before the class is realized.
constexpr objc_class objc_unrealized(Class isa, Class superclass, unsigned info, const char *name, unsigned size,
                                     const objc_registration *registration) {
    objc_class record{};
    record.isa = isa;
    record.buckets = &objc_noBuckets;
    record.superclass = superclass;
    record.info = info;
    record.name = name;
    record.instanceSize = size;
    record.registration = registration;
    return record;
}
/// The records of a class and its metaclass. What leads from one record to another is kept to what is needed before
/// the class is realized: each such address is found by the dynamic linker at start-up.
constexpr objc_classPair objc_unrealizedPair(objc_classPair &self, Class superclass, unsigned info, unsigned metaInfo,
                                             const char *name, unsigned size, const objc_registration *registration) {
    return {objc_unrealized(&self.meta, superclass, info, name, size, registration),
            objc_unrealized(nullptr, nullptr, metaInfo | objc_isMetaclass, name, sizeof(objc_class), registration)};
}
/// @endcond

/// @cond machinery
// What other threads may change meanwhile.
inline unsigned objc_infoOf(Class cls) { return __atomic_load_n(&cls->info, __ATOMIC_ACQUIRE); }
inline Class objc_superRecordOf(Class cls) { return __atomic_load_n(&cls->superclass, __ATOMIC_ACQUIRE); }
/// @endcond

/// The metaclass of a class, the class of a metaclass: they lie side by side.
inline Class objc_counterpart(Class cls) { return objc_infoOf(cls) & objc_isMetaclass ? cls - 1 : cls + 1; }

/// @cond machinery
/// Gathers what a registration lists; the runtime's own.
struct objc_lister;

/// What a ZP_IMPLEMENT, ZP_CATEGORY or ZP_DEFINE_PROTOCOL says: constant data, read when the class or the protocol is
/// first used.
struct objc_registration {
    const char *name;  ///< of the class, the category or the protocol
    objc_object *record;  ///< the class that gets the methods, or the protocol
    void (*list)(objc_lister &lister);  ///< enters the methods or the promises
};

/// What a library registers, in the chain of all libraries.
struct objc_library {
    const objc_registration *const *records, *const *endOfRecords;
    const objc_registration *const *categories, *const *endOfCategories;
    objc_library *next;
};
/// @endcond

extern "C" {
// Selectors. A selector lives as long as the process; any thread may call these.

/// The selector of a name, registered on first use; the name is copied. A null name gives the null selector.
ZP_EXPORT SEL sel_registerName(const char *name);
/// The same as `sel_registerName`.
ZP_EXPORT SEL sel_getUid(const char *name);
/// The selector of a literal, also stored in `slot` for the next use. `name` must live as long as the process.
ZP_EXPORT SEL objc_registerSelector(SEL *slot, const char *name);

// Classes. Class records are never freed; any thread may call these.

/// The class of a name, or null, also for a null name. Finds a class that poses under the name.
ZP_EXPORT Class objc_getClass(const char *name);
/// The same as `objc_getClass`.
ZP_EXPORT Class objc_lookUpClass(const char *name);
/// The class that was declared under a name, also when another class poses as it; null when there is none.
ZP_EXPORT Class objc_getOrigClass(const char *name);
/// Registers a class record made at run time. Stops the process when the name is taken.
ZP_EXPORT void objc_addClass(Class cls);
/// A new, unregistered subclass record with `extraBytes` of instance storage behind the superclass's; add methods,
/// then register it with `objc_addClass`. The name is copied. Lives as long as the process.
ZP_EXPORT Class objc_makeClass(Class superclass, const char *name, unsigned extraBytes);
/// A copy of a class record and its metaclass record under another name, not registered.
ZP_EXPORT Class objc_copyClass(Class cls, const char *name);
/// Stores up to `capacity` registered classes (`classes` may be null when it is 0) and answers how many there are.
ZP_EXPORT unsigned objc_getClasses(Class *classes, unsigned capacity);
/// Kept for its callers, and does nothing: the runtime is safe from the first thread on.
ZP_EXPORT void objc_setMultithreaded(BOOL flag);

/// Adds a method to instances, or replaces one, for messages sent from now on; given a metaclass, to the class
/// object. `types` must live as long as the process, `invoker` is null for a method that no frame may call, and
/// `argumentSize` counts the bytes of its frame.
ZP_EXPORT void class_addMethod(Class cls, SEL name, IMP implementation, const char *types, objc_frameInvoker invoker,
                               unsigned argumentSize);
/// The method that instances of the class answer a selector with, inherited ones included; null when there is none,
/// or when either argument is null.
ZP_EXPORT const objc_method *class_getInstanceMethod(Class cls, SEL name);
/// The same for the class object itself.
ZP_EXPORT const objc_method *class_getClassMethod(Class cls, SEL name);
/// The implementation that instances answer a selector with; `_objc_msgForward` when there is none.
ZP_EXPORT IMP class_lookupMethod(Class cls, SEL name);
/// YES when instances of the class have a method for the selector; NO for null.
ZP_EXPORT BOOL class_respondsToMethod(Class cls, SEL name);
/// YES when a class is another, descends from it, or poses as it; NO for null.
ZP_EXPORT BOOL class_inherits(Class cls, Class ancestor);
/// The class's own method lists, newest category first: start with a null `*iterator`. Null at the end. The class
/// must not get methods meanwhile.
ZP_EXPORT const objc_methodList *class_nextMethodList(Class cls, const void **iterator);
/// Makes `impostor`, a direct subclass of `original` without fields of its own (or the process is stopped), take
/// its place, and answers the class that does: from then on every instance, subclass and reference of `original`
/// behaves as `impostor`, with the methods that it gets later too. The former behaviour lives on in a hidden class
/// whose name begins with "%", `impostor`'s new superclass.
ZP_EXPORT Class class_poseAs(Class impostor, Class original);
/// The bytes of a method's argument frame, receiver and selector included; 0 for null.
ZP_EXPORT unsigned method_getSizeOfArguments(const objc_method *method);

/// Stands for "not implemented" among implementations. Never call it: a send takes the forwarding
/// path by itself.
ZP_EXPORT void _objc_msgForward();

// The slow sides of a send.
/// The implementation for a message to this receiver, which must not be null; initializes its class and fills its
/// cache. Null when there is none.
ZP_EXPORT IMP objc_lookUpForSend(objc_object *receiver, SEL selector);
/// The same for a message to the superclass given. Null when there is none.
ZP_EXPORT IMP objc_lookUpForSuper(Class superclass, SEL selector);
/// Stops the process, naming both type strings, when the class's method for the selector has other types than
/// these.
ZP_EXPORT void objc_checkSend(Class cls, SEL selector, const char *types);
/// Whether a call with the one type string may reach a method with the other: integers of one width match whatever
/// their sign, and `^v` matches every pointer.
ZP_EXPORT BOOL objc_typesMatch(const char *a, const char *b);
/// Stops the process with a message that names the object's class and the wanted one.
[[noreturn]] ZP_EXPORT void objc_conversionFailed(objc_object *object, Class wanted);
/// Writes a printf text to standard error and stops the process.
[[noreturn]] ZP_EXPORT void objc_fatal(const char *format, ...) __attribute__((format(printf, 1, 2)));

/// @cond machinery
// Registration. A library's registrations lie in two sections of it: classes and protocols, and categories.
/// Makes a library's classes and protocols known by name, and adds its categories to their classes. Once a library, by
/// what ZPImplement.h has in every file. The library stays loaded for good.
ZP_EXPORT void objc_loadLibrary(objc_library &library);
/// Enters a method while its class is realized, or a promise of a protocol. `bits` holds `objc_listing` flags, the
/// number of arguments and the size of the frame.
ZP_EXPORT void objc_enterMethod(objc_lister &lister, const char *name, unsigned long bits, const char *types,
                                IMP implementation, objc_frameInvoker invoker);
/// Enters a protocol that a class adopts, or that a protocol includes.
ZP_EXPORT void objc_enterProtocol(objc_lister &lister, Protocol *protocol);
/// The selector of a front's member by its name, also stored in `slot`.
ZP_EXPORT SEL objc_registerFront(SEL *slot, const char *name, unsigned arguments);

/// What `bits` of `objc_enterMethod` are made of.
enum objc_listing : unsigned long {
    objc_listsClassMethod = 1,  ///< it belongs to the class object
    objc_listsSelector = 2,  ///< the name is the selector's text
    objc_listsArguments = 8,  ///< the number of arguments begins at this bit
    objc_listsFrame = 16,  ///< the bytes of the frame begin at this bit
};
/// @endcond

/// A new instance on the heap, zero-filled but for its C++ fields, with retain count 1; null when there is no
/// memory.
ZP_EXPORT objc_object *objc_allocateInstance(Class cls);
/// YES when `object`, which must not be null, is of the class or answers YES to `-isKindOfClass:`.
ZP_EXPORT BOOL objc_isKindOf(objc_object *object, Class cls);
}

template <class T> void objc_checkConversion(objc_object *object) {
    if constexpr (requires { T::class_(); })
        if (!objc_isKindOf(object, T::class_())) objc_conversionFailed(object, T::class_());
}
