// SPDX-License-Identifier: MIT
// Fronts of what a room sends messages to without its header: classes that lie above, class objects held in a variable,
// and objects of any class that answer a certain message. They say in C++ what a selector's text would say; each has
// what is sent, and no more. Where the real class is in the library, its own file holds the two against each other with
// ZP_SAME_FRONT.
#pragma once

#include <Bedrock/core/ZPObject.h>

#include <cstdarg>

ZP_FORWARD(ZPCoder);
ZP_FORWARD(ZPData);
ZP_FORWARD(ZPDictionary);
ZP_FORWARD(ZPNotificationCenter);
ZP_FORWARD(ZPPortCoder);
ZP_FORWARD(ZPString);
ZP_FORWARD(ZPThread);

// ---- class objects and objects of any class ----

/// A class that is only known when the program runs. What subclasses override is sent.
struct _ZPClassFront : ZPObject {
    id alloc() ZP_ASKS();
    id self() ZP_ASKS();
};
inline _ZPClassFront *_ZPFront(Class cls) { return reinterpret_cast<_ZPClassFront *>(cls); }

/// What describes itself in the words of a locale, when it answers the message.
struct _ZPLocalizable : ZPObject {
    ZPString *descriptionWithLocale(ZPDictionary *locale) ZP_ASKS(locale);
    ZPString *descriptionWithLocale_indent(ZPDictionary *locale, unsigned level) ZP_ASKS(locale, level);
};

// ---- classes that lie above ----

/// The class of a name; looked for until it is there, and null before.
template <objc_text Name> Class _ZPClassAbove() {
    static Class known;
    Class cls = __atomic_load_n(&known, __ATOMIC_ACQUIRE);
    if (!cls) [[unlikely]]
        __atomic_store_n(&known, cls = objc_getClass(Name.text), __ATOMIC_RELEASE);
    return cls;
}

/// Makes a struct, which derives from ZPObject, the front of the class T that lies above: its static members send to
/// the class of that name, and do nothing while there is none. References to it are held to be ones to any class.
// clang-format off
#define ZP_CLASS_ABOVE(T)                                   \
    using objc_StandsFor = struct T##_above;                \
    static Class class_() { return ::_ZPClassAbove<#T>(); } \
    static _##T##Above *alloc() ZP_CLASS_ASKS()             \
    static _##T##Above *new_() ZP_CLASS_ASKS()
// clang-format on

/// Proves, where T is known, that these members of the front `Above` have the C++ types of T's own.
#define ZP_SAME_FRONT(T, Above, ...) OBJC_EACH(OBJC_SAME_MEMBER, T, Above, __VA_ARGS__) static_assert(true)
#define OBJC_SAME_MEMBER(T, Above, member) \
    static_assert(::the_method_has_other_types_than_the_front<&Above::member, &T::member>::checked);

struct _ZPStringAbove : ZPObject {
    ZP_CLASS_ABOVE(ZPString)
    static ZPString *stringWithCString(const char *bytes) ZP_CLASS_ASKS(bytes);
    ZPString *initWithFormat_arguments(ZPString *format, std::va_list arguments) ZP_ASKS(format, arguments);
    unsigned length() ZP_ASKS();
    unichar characterAtIndex(unsigned index) ZP_ASKS(index);
    const char *cString() ZP_ASKS();
    ZPString *displayableString() ZP_ASKS();
};
inline _ZPStringAbove *_ZPAbove(ZPString *string) { return reinterpret_cast<_ZPStringAbove *>(string); }

struct _ZPMutableStringAbove : _ZPStringAbove {
    ZP_CLASS_ABOVE(ZPMutableString)
    static _ZPMutableStringAbove *stringWithCapacity(unsigned capacity) ZP_CLASS_ASKS(capacity);
    _ZPMutableStringAbove *initWithCapacity(unsigned capacity) ZP_ASKS(capacity);
    void appendString(ZPString *string) ZP_TELLS(string);
    void setStringWithFormat_locale_arguments(ZPString *format, id locale, std::va_list arguments)
        ZP_TELLS(format, locale, arguments);
};

struct _ZPArrayAbove : ZPObject {
    ZP_CLASS_ABOVE(ZPArray)
    ZPArray *initWithObjects_count(const id *objects, unsigned count) ZP_ASKS(objects, count);
    unsigned count() ZP_ASKS();
    id objectAtIndex(unsigned index) ZP_ASKS(index);
};
inline _ZPArrayAbove *_ZPAbove(ZPArray *array) { return reinterpret_cast<_ZPArrayAbove *>(array); }

struct _ZPDictionaryAbove : ZPObject {
    ZP_CLASS_ABOVE(ZPDictionary)
    static ZPDictionary *dictionaryWithObjects_forKeys_count(const id *objects, const id *keys, unsigned count)
        ZP_CLASS_ASKS(objects, keys, count);
    id objectForKey(id key) ZP_ASKS(key);
};
struct _ZPMutableDictionaryAbove : _ZPDictionaryAbove {
    void setObject_forKey(id object, id key) ZP_TELLS(object, key);
};

struct _ZPThreadAbove : ZPObject {
    ZP_CLASS_ABOVE(ZPThread)
    static _ZPThreadAbove *currentThread() ZP_CLASS_ASKS();
    _ZPMutableDictionaryAbove *threadDictionary() ZP_ASKS();
};

struct _ZPLockAbove : ZPObject {
    ZP_CLASS_ABOVE(ZPLock)
    void lock() ZP_TELLS();
    void unlock() ZP_TELLS();
};

struct _ZPNotificationCenterAbove : ZPObject {
    ZP_CLASS_ABOVE(ZPNotificationCenter)
    static _ZPNotificationCenterAbove *defaultCenter() ZP_CLASS_ASKS();
    void postNotificationName_object(ZPString *name, id object) ZP_TELLS(name, object);
};

// ---- classes that the library does not have yet ----

struct _ZPMethodSignatureAbove : ZPObject {
    ZP_CLASS_ABOVE(ZPMethodSignature)
    static ZPMethodSignature *signatureWithObjCTypes(const char *types) ZP_CLASS_ASKS(types);
};

struct _ZPInvocationAbove : ZPObject {
    SEL selector() ZP_ASKS();
};
inline _ZPInvocationAbove *_ZPAbove(ZPInvocation *i) { return reinterpret_cast<_ZPInvocationAbove *>(i); }

struct _ZPNumberAbove : ZPObject {
    ZP_CLASS_ABOVE(ZPNumber)
    static id numberWithInt(int value) ZP_CLASS_ASKS(value);
};

struct _ZPValueAbove : ZPObject {
    ZP_CLASS_ABOVE(ZPValue)
    static id valueWithPointer(const void *pointer) ZP_CLASS_ASKS(pointer);
};

struct _ZPUserDefaultsAbove : ZPObject {
    ZP_CLASS_ABOVE(ZPUserDefaults)
    static _ZPUserDefaultsAbove *standardUserDefaults() ZP_CLASS_ASKS();
    ZPDictionary *dictionaryRepresentation() ZP_ASKS();
    id objectForKey(id key) ZP_ASKS(key);
    BOOL boolForKey(ZPString *key) ZP_ASKS(key);
};

struct _ZPDistantObjectAbove : ZPObject {
    ZP_CLASS_ABOVE(ZPDistantObject)
    static id proxyWithLocal_connection(id object, id connection) ZP_CLASS_ASKS(object, connection);
};

/// What archives objects, and what sends them to another process.
struct _ZPCoderAbove : ZPObject {
    void encodeObject(id object) ZP_TELLS(object);
    void encodeDataObject(ZPData *data) ZP_TELLS(data);
    void encodeValueOfObjCType_at(const char *type, const void *address) ZP_TELLS(type, address);
    id decodeObject() ZP_ASKS();
    ZPData *decodeDataObject() ZP_ASKS();
    void decodeValueOfObjCType_at(const char *type, void *address) ZP_TELLS(type, address);
    BOOL isByref() ZP_ASKS();
    id connection() ZP_ASKS();
};
inline _ZPCoderAbove *_ZPAbove(ZPCoder *coder) { return reinterpret_cast<_ZPCoderAbove *>(coder); }
inline _ZPCoderAbove *_ZPAbove(ZPPortCoder *coder) { return reinterpret_cast<_ZPCoderAbove *>(coder); }
