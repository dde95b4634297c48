// SPDX-License-Identifier: MIT
// The words every file of the library shares: object, class and selector references, flags and
// character units. Nothing here sends a message.
#pragma once

#if __cplusplus < 202002L
#error "Bedrock is for C++20 and later: compile with -std=c++20"
#endif

#include <cstddef>
#include <cstdint>
#include <type_traits>

/// Makes a declaration part of the interface of its shared library, which hides the rest.
#define ZP_EXPORT __attribute__((visibility("default")))
/// Not visible outside the library or program that it is compiled into, even where a header makes it.
#define ZP_HIDDEN __attribute__((visibility("hidden")))
/// A function that is rarely called: kept apart from those that are, and never inlined.
#define ZP_COLD __attribute__((cold, noinline))
/// A function that is always inlined, also where nothing is optimized.
#define ZP_INLINE __attribute__((always_inline)) inline

/// 1 in builds that check every send's C++ types and every conversion from `id`; follows NDEBUG
/// unless the build says otherwise.
#ifndef ZP_CHECKED
#ifdef NDEBUG
#define ZP_CHECKED 0
#else
#define ZP_CHECKED 1
#endif
#endif

/// A signed 8-bit flag. Any value but NO counts as true: test it for being NO, do not compare it with YES.
using BOOL = signed char;
inline constexpr BOOL YES = 1;  ///< true as a flag
inline constexpr BOOL NO = 0;  ///< false as a flag

/// One 16-bit Unicode code unit.
using unichar = char16_t;

struct objc_class;
struct objc_selector;
struct ZPObject;

/// A class object.
using Class = objc_class *;

/// A selector: the address of its own unique, null-terminated text.
using SEL = const objc_selector *;

/// What every instance begins with. Not to be made or copied as a C++ value.
struct objc_object {
    Class isa;  ///< the class that answers the object's messages; a class object's is its metaclass
};

/// The implementation of a method with its C++ type erased; call it only through its real type,
/// whose first two parameters are the receiver and the selector.
using IMP = void (*)();

// Which pointers are object references. A complete class answers through its base; a class that is
// only declared answers through the overload that ZP_FORWARD adds for it.
/// @cond machinery
std::true_type objc_objectTest(const volatile objc_object *);
std::false_type objc_objectTest(...);
/// @endcond

/// Declares a class of objects without its front, so that a header can name `T *` in a message.
#define ZP_FORWARD(T) \
    struct T;         \
    std::true_type objc_objectTest(const volatile T *)

ZP_FORWARD(ZPObject);

/// @cond machinery
template <class T> consteval bool objc_isObjectClass() {
    if constexpr (std::is_class_v<T>) {
        constexpr bool object = decltype(objc_objectTest(static_cast<T *>(nullptr)))::value;
        static_assert(
            object || requires { sizeof(T); },
            "a class that is only declared cannot be told from an object class here: include its "
            "front, or declare it with ZP_FORWARD");
        return object;
    } else {
        return false;
    }
}
/// @endcond

/// A struct that is a class of objects: it, or one it derives from, was declared with ZP_CLASS or ZP_FORWARD.
template <class T>
concept objc_ObjectClass = objc_isObjectClass<std::remove_cv_t<T>>();

/// A receiver as it is. A front's member may be called on a null pointer, which the compiler otherwise takes
/// for impossible: it must not drop the test that answers a message to null.
ZP_INLINE objc_object *objc_receiver(objc_object *object) {
    __asm__("" : "+r"(object));
    return object;
}

/// Stops the process when `object` is not of class T (checked builds).
template <class T> void objc_checkConversion(objc_object *object);

/// A reference to an object of any class: one pointer, which converts to and from every object
/// pointer. In checked builds a conversion to a class that the object does not belong to stops the
/// process with a message that names both. Does not own what it refers to.
class id {
    objc_object *_object = nullptr;

  public:
    constexpr id() = default;
    /// Any object, or none.
    constexpr id(std::nullptr_t) {}
    constexpr id(objc_object *object) : _object(object) {}  ///< the object, or none for null; not retained
    /// An object of any class, or none for null; not retained.
    template <objc_ObjectClass T> id(T *object) : _object((objc_object *)object) {}
#ifndef __clang__
    // Assigning is code of its own: where the value comes from a call that may raise, g++ 12 takes an assignment of the
    // whole for one that has happened, and leaves out that the field was null before, which who catches reads. It is a
    // template, so that an `id` is copied as a pointer is nevertheless.
    constexpr id(const id &) = default;  ///< the same object; not retained
    id &operator=(const volatile id &) = delete;
    /// Refers to another object from now on; neither is retained or released.
    template <class T>
        requires std::is_convertible_v<const T &, id>
    constexpr id &operator=(const T &other) {
        _object = id(other)._object;
        return *this;
    }
    /// Refers to no object from now on.
    constexpr id &operator=(std::nullptr_t) {
        _object = nullptr;
        return *this;
    }
#endif

    /// The object as a T, null for none. Checked builds stop the process with a message when it is no T and answers
    /// NO to `isKindOfClass:`; others do not look.
    template <objc_ObjectClass T> operator T *() const {
#if ZP_CHECKED
        if (_object) objc_checkConversion<T>(_object);
#endif
        return (T *)_object;
    }
    /// The same by name, for where no type asks for the conversion.
    template <objc_ObjectClass T> T *as() const { return *this; }
    /// The object as a T, null for none, without a look in any build: for an object whose class was just tested, one
    /// that is still being made, and a stand-in that is no T and answers for one.
    template <objc_ObjectClass T> T *unchecked() const { return (T *)_object; }
    /// The plain pointer; null for none.
    constexpr objc_object *pointer() const { return _object; }
    /// Whether it refers to an object.
    constexpr explicit operator bool() const { return _object != nullptr; }
    /// The root class's messages; on null each answers a zero.
    ZPObject *operator->() const { return (ZPObject *)_object; }

    /// Whether both are the same object, or both none; equality is `isEqual`.
    friend constexpr bool operator==(id a, id b) { return a._object == b._object; }
    /// Whether it refers to no object.
    friend constexpr bool operator==(id a, std::nullptr_t) { return a._object == nullptr; }
    /// Whether both are the same object, or both none.
    template <objc_ObjectClass T> friend bool operator==(id a, T *b) { return a._object == (objc_object *)b; }
};

/// The text of a selector, null for the null selector; the pointer lives as long as the process. Any thread.
inline const char *sel_getName(SEL selector) { return reinterpret_cast<const char *>(selector); }
