// SPDX-License-Identifier: MIT
// Protocols: named promises of methods, which classes adopt and objects are asked about.
//
//     struct Shape { ZP_PROTOCOL(Shape) };                       // in the header
//     ZP_DEFINE_PROTOCOL(Shape).method<double()>("area");        // once, in a source file
//     ZP_IMPLEMENT(Circle).adopts<Shape>()...
#pragma once

#include <Bedrock/platform/ZPImplement.h>

/// @cond machinery
struct objc_protocolMethod {
    const objc_protocolMethod *next;
    objc_methodDescription description;
    BOOL isClassMethod;
};
/// @endcond

/// A protocol object. Lives as long as the process; answers `conformsTo:`,
/// `descriptionForInstanceMethod:`, `descriptionForClassMethod:` and `name`.
struct Protocol : objc_object {
    const char *_name;
    const objc_protocolList *_parents;
    const objc_protocolMethod *_methods;

    /// The class of protocol objects.
    static Class class_();
    /// The protocol's name; lives as long as the process.
    const char *name() { return _name; }
    /// YES for the protocol itself and for every protocol it includes; NO for null.
    BOOL conformsTo(Protocol *other) { return objc_msgSend<BOOL>(this, "conformsTo:"_sel, other); }
    /// The description of an instance method that the protocol or one it includes promises; null when there is
    /// none.
    const objc_methodDescription *descriptionForInstanceMethod(SEL name) {
        return objc_msgSend<const objc_methodDescription *>(this, "descriptionForInstanceMethod:"_sel, name);
    }
    /// The same for a method of the class object.
    const objc_methodDescription *descriptionForClassMethod(SEL name) {
        return objc_msgSend<const objc_methodDescription *>(this, "descriptionForClassMethod:"_sel, name);
    }
};

extern "C" {
/// The class record of protocol objects.
ZP_EXPORT extern objc_classPair objc_protocolClass;
/// The protocol of a name, or null. Any thread.
ZP_EXPORT Protocol *objc_getProtocol(const char *name);
/// Adds a promise to a protocol. Both texts must live as long as the process.
ZP_EXPORT void objc_loadProtocolMethod(Protocol *protocol, const char *name, const char *types, BOOL isClassMethod);
/// Has a protocol include another's promises.
ZP_EXPORT void objc_loadProtocolParent(Protocol *protocol, Protocol *parent);
/// Makes a protocol known by its name.
ZP_EXPORT void objc_registerProtocol(Protocol *protocol);
}

inline Class Protocol::class_() { return &objc_protocolClass.cls; }

/// Declares a protocol inside a struct of its name; ZP_DEFINE_PROTOCOL defines it.
#define ZP_PROTOCOL(P)                                                          \
    ZP_EXPORT static ::Protocol protocolRecord_that_ZP_DEFINE_PROTOCOL_defines; \
    /** The protocol object. */                                                 \
    static ::Protocol *protocol() { return &protocolRecord_that_ZP_DEFINE_PROTOCOL_defines; }

/// @cond machinery
template <class F> struct objc_promise;
template <class R, class... A> struct objc_promise<R(A...)> {
    static constexpr unsigned count = sizeof...(A);
    static constexpr const char *types() { return objc_methodTypes<R, A...>(); }
};
/// @endcond

/// Lists the promises of a protocol; made by ZP_DEFINE_PROTOCOL, before `main`.
struct objc_protocolDefiner {
    Protocol *protocol;  ///< the protocol that gets the promises
    /// A promised instance method with its C++ type: `.method<id(ZPZone *)>("copyWithZone:")`.
    template <class F> const objc_protocolDefiner &method(objc_selectorText<objc_promise<F>::count> name) const {
        objc_loadProtocolMethod(protocol, name.text, objc_promise<F>::types(), NO);
        return *this;
    }
    /// A promised method of the class object.
    template <class F> const objc_protocolDefiner &classMethod(objc_selectorText<objc_promise<F>::count> name) const {
        objc_loadProtocolMethod(protocol, name.text, objc_promise<F>::types(), YES);
        return *this;
    }
    /// Includes the promises of other protocols.
    template <class... P> const objc_protocolDefiner &includes() const {
        (objc_loadProtocolParent(protocol, P::protocol()), ...);
        return *this;
    }
};

/// @cond machinery
inline objc_protocolDefiner objc_defineProtocol(Protocol *protocol) {
    objc_registerProtocol(protocol);
    return {protocol};
}
/// @endcond

/// Defines a protocol that ZP_PROTOCOL declared; once, in a source file.
#define ZP_DEFINE_PROTOCOL(P)                                                        \
    constinit ::Protocol P::protocolRecord_that_ZP_DEFINE_PROTOCOL_defines = {       \
        {&::objc_protocolClass.cls}, #P, nullptr, nullptr};                          \
    [[maybe_unused]] static const ::objc_protocolDefiner ZP_UNIQUE(objc_protocol_) = \
        ::objc_defineProtocol(P::protocol())
