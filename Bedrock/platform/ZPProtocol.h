// SPDX-License-Identifier: MIT
// Protocols: named promises of methods, which classes adopt and objects are asked about.
//
//     struct Shape {                                             // in the header
//         ZP_PROTOCOL(Shape)
//         double area();                                         // declared alone: a promise, by its C++ type
//     };
//     ZP_DEFINE_PROTOCOL(Shape, area);                           // once, in a source file
//     ZP_IMPLEMENT(Circle, adopts(Shape), area);
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
    const objc_registration *_registration;
    const objc_protocolList *_parents;
    const objc_protocolMethod *_methods;
    BOOL _isListed;

    /// The class of protocol objects.
    static Class class_();
    /// The protocol's name; lives as long as the process.
    const char *name() { return _name; }
    /// YES for the protocol itself and for every protocol it includes; NO for null.
    BOOL conformsTo(Protocol *other) ZP_ASKS(other);
    /// The description of an instance method that the protocol or one it includes promises; null when there is
    /// none.
    const objc_methodDescription *descriptionForInstanceMethod(SEL name) ZP_ASKS(name);
    /// The same for a method of the class object.
    const objc_methodDescription *descriptionForClassMethod(SEL name) ZP_ASKS(name);
};

extern "C" {
/// The class record of protocol objects.
ZP_EXPORT extern objc_classPair objc_protocolClass;
/// The protocol of a name, or null. Any thread.
ZP_EXPORT Protocol *objc_getProtocol(const char *name);
}

inline Class Protocol::class_() { return &objc_protocolClass.cls; }

/// Declares a protocol inside a struct of its name; ZP_DEFINE_PROTOCOL defines it.
#define ZP_PROTOCOL(P)                                                          \
    ZP_EXPORT static ::Protocol protocolRecord_that_ZP_DEFINE_PROTOCOL_defines; \
    /** The protocol object. */                                                 \
    static ::Protocol *protocol() { return &protocolRecord_that_ZP_DEFINE_PROTOCOL_defines; }

/// @cond machinery
template <class R, class... A> void objc_promise(objc_lister &lister, const char *name, unsigned long bits) {
    objc_enterMethod(lister, name, bits | sizeof...(A) << objc_listsArguments, objc_methodTypes<R, A...>(), nullptr,
                     nullptr);
}
template <class F> struct objc_promised;
template <class R, class... A> struct objc_promised<R(A...)> { static constexpr auto enter = &objc_promise<R, A...>; };
// F is the type of the declared function, which has no definition.
template <class F>
ZP_INLINE void objc_promiseMember(objc_lister &lister, objc_methodName<objc_function<F>::count> name) {
    objc_promised<typename objc_function<F>::type>::enter(lister, name.text, 0);
}
template <class F>
ZP_INLINE void objc_promiseStatic(objc_lister &lister, objc_methodName<objc_function<F>::count> name) {
    objc_promised<typename objc_function<F>::type>::enter(lister, name.text, objc_listsClassMethod);
}
template <class F>
ZP_INLINE void objc_promiseMemberAs(objc_lister &lister, objc_selectorText<objc_function<F>::count> selector) {
    objc_promised<typename objc_function<F>::type>::enter(lister, selector.text, objc_listsSelector);
}
/// @endcond

/// Defines a protocol that ZP_PROTOCOL declared and lists the promised methods, which are declared in the struct; once,
/// in a source file: `ZP_DEFINE_PROTOCOL(Shape, area, classMethods(unit), includes(Named))`. A selector that is not
/// what the function's name says is given by `named(area, "surface")`.
#define ZP_DEFINE_PROTOCOL(P, ...) OBJC_DEFINE_PROTOCOL(P, __COUNTER__ __VA_OPT__(, ) __VA_ARGS__)
/// @cond machinery
#define OBJC_DEFINE_PROTOCOL(...) OBJC_DEFINE_PROTOCOL2(__VA_ARGS__)
#define OBJC_DEFINE_PROTOCOL2(P, n, ...)                                                              \
    static void objc_promises##n(::objc_lister &lister) {                                             \
        OBJC_EACH(OBJC_PROMISE, Member, P __VA_OPT__(, ) __VA_ARGS__)                                 \
        (void)lister;                                                                                 \
    }                                                                                                 \
    static constexpr ::objc_registration objc_registration##n = {                                     \
        #P, &P::protocolRecord_that_ZP_DEFINE_PROTOCOL_defines, &objc_promises##n};                   \
    constinit ::Protocol P::protocolRecord_that_ZP_DEFINE_PROTOCOL_defines = {                        \
        {&::objc_protocolClass.cls}, #P, &objc_registration##n, nullptr, nullptr, NO};                \
    [[gnu::section("zp_records"), gnu::used]] static const ::objc_registration *const objc_entry##n = \
        &objc_registration##n
/// @endcond
