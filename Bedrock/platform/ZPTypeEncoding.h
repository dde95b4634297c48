// SPDX-License-Identifier: MIT
// Type strings: one character a type, computed at compile time from C++ signatures.
#pragma once

#include <Bedrock/platform/ZPTypes.h>

#include <cstdarg>

// g++ warns of va_list's own attributes wherever it is a template argument.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-attributes"
#pragma GCC diagnostic ignored "-Wattributes"

/// Gives a structure its own type string: specialise with `static constexpr char text[] = "{Name=II}";`.
/// A structure without one is written as that many bytes.
template <class T> struct objc_structEncoding;

/// @cond machinery
struct objc_typeWriter {
    char text[256] = {};
    unsigned length = 0;
    consteval void put(char c) {
        if (length == sizeof text - 1) throw "the type string of this method is too long";
        text[length++] = c;
    }
    consteval void put(const char *s) {
        while (*s) put(*s++);
    }
    consteval void putNumber(std::size_t n) {
        if (n >= 10) putNumber(n / 10);
        put(char('0' + n % 10));
    }
};

template <class T> consteval void objc_encodeType(objc_typeWriter &w);

template <class P> consteval void objc_encodePointer(objc_typeWriter &w) {
    using T = std::remove_cv_t<P>;
    if constexpr (std::is_same_v<T, objc_class>) w.put('#');
    else if constexpr (std::is_same_v<T, objc_selector>) w.put(':');
    else if constexpr (std::is_same_v<T, char>) {
        if (std::is_const_v<P>) w.put('r');
        w.put('*');
    } else if constexpr (std::is_function_v<T>) w.put("^?");
    else if constexpr (std::is_void_v<T>) w.put("^v");
    else if constexpr (std::is_same_v<T, objc_object>) w.put('@');
    else if constexpr (std::is_union_v<T>) w.put("^v");
    else if constexpr (std::is_class_v<T>) {
        if constexpr (std::is_same_v<T, id>) w.put("^@");
        else if constexpr (decltype(objc_objectTest(static_cast<T *>(nullptr)))::value) w.put('@');
        else w.put("^v");
    } else {
        w.put('^');
        objc_encodeType<P>(w);
    }
}

template <class Q> consteval void objc_encodeType(objc_typeWriter &w) {
    using T = std::remove_cv_t<Q>;
    if constexpr (std::is_void_v<T>) w.put('v');
    else if constexpr (std::is_reference_v<T>) w.put("^v");
    else if constexpr (std::is_same_v<T, id>) w.put('@');
    else if constexpr (std::is_same_v<T, std::nullptr_t>) w.put("^v");
    else if constexpr (std::is_same_v<T, std::decay_t<std::va_list>>) w.put("^v");
    else if constexpr (std::is_pointer_v<T>) objc_encodePointer<std::remove_pointer_t<T>>(w);
    else if constexpr (std::is_enum_v<T>) objc_encodeType<std::underlying_type_t<T>>(w);
    else if constexpr (std::is_same_v<T, float>) w.put('f');
    else if constexpr (std::is_same_v<T, double>) w.put('d');
    else if constexpr (std::is_integral_v<T>) {
        constexpr bool isSigned = std::is_signed_v<T>;
        switch (sizeof(T)) {
        case 1: w.put(isSigned ? 'c' : 'C'); break;
        case 2: w.put(isSigned ? 's' : 'S'); break;
        case 4: w.put(isSigned ? 'i' : 'I'); break;
        case 8: w.put(isSigned ? 'q' : 'Q'); break;
        default: w.put("{?=[16C]}");
        }
    } else if constexpr (std::is_array_v<T>) {
        w.put('[');
        w.putNumber(std::extent_v<T>);
        objc_encodeType<std::remove_extent_t<T>>(w);
        w.put(']');
    } else if constexpr (requires { objc_structEncoding<T>::text; }) {
        w.put(objc_structEncoding<T>::text);
    } else {
        w.put("{?=[");
        w.putNumber(sizeof(T));
        w.put("C]}");
    }
}

template <unsigned N> struct objc_typeText {
    static constexpr unsigned length = N;
    char text[N + 1] = {};
};

template <class T> consteval objc_typeWriter objc_writeType() {
    objc_typeWriter w;
    objc_encodeType<T>(w);
    return w;
}

template <class T> consteval auto objc_typeOf() {
    constexpr objc_typeWriter w = objc_writeType<T>();
    objc_typeText<w.length> result;
    for (unsigned i = 0; i < w.length; ++i) result.text[i] = w.text[i];
    return result;
}

template <class T> ZP_HIDDEN inline constexpr auto objc_type = objc_typeOf<T>();

consteval char *objc_appendType(char *to, const char *text) {
    while (*text) *to++ = *text++;
    return to;
}

// Each type is spelt once, however many signatures have it.
template <class... T> consteval auto objc_joinTypes() {
    constexpr unsigned length = (0 + ... + objc_type<T>.length);
    static_assert(length < sizeof objc_typeWriter::text, "the type string of this method is too long");
    objc_typeText<length> result;
    char *to = result.text;
    ((to = objc_appendType(to, objc_type<T>.text)), ...);
    return result;
}
/// @endcond

/// The type strings of a list of types, one after another.
template <class... T> ZP_HIDDEN inline constexpr auto objc_types = objc_joinTypes<T...>();

/// The type string of one C++ type, null-terminated; lives as long as the process. A structure without an
/// `objc_structEncoding` is that many bytes, "{?=[12C]}"; a text of more than 255 characters is a compile error.
template <class T> constexpr const char *ZPEncode() { return objc_type<T>.text; }

/// The type string of a method with result R and arguments A after the receiver and the selector.
template <class R, class... A> constexpr const char *objc_methodTypes() { return objc_types<R, id, SEL, A...>.text; }

#pragma GCC diagnostic pop
