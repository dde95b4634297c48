// SPDX-License-Identifier: MIT
// How the lists of ZP_IMPLEMENT, ZP_CATEGORY, ZP_MAKE_CLASS and ZP_DEFINE_PROTOCOL are read by the
// preprocessor. ZPImplement.h says what may stand in a list; nothing here is for use outside these macros.
#pragma once

/// @cond machinery
// clang-format off

// ---- each item of a list -----------------------------------------------------------------------

// OBJC_EACH(M, a, b, x, y, ...): M(a, b, x) M(a, b, y) ..., for at most 128 items. Sixteen items go by one chain of
// macros, and the chain begins again with each of a few further scans; a list that is longer leaves a name that says
// so. The second family is for lists within lists.
#define OBJC_PARENTHESES ()
#define OBJC_NEXT_0(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_1(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_1(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_2(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_2(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_3(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_3(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_4(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_4(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_5(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_5(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_6(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_6(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_7(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_7(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_8(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_8(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_9(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_9(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_10(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_10(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_11(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_11(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_12(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_12(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_13(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_13(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_14(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_14(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_15(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_15(M, a, b, x, ...)                                                                          \
    M(a, b, x) __VA_OPT__(objc_the_list_is_too_long OBJC_PARENTHESES (M, a, b, __VA_ARGS__))
#define objc_the_list_is_too_long() OBJC_NEXT_0
#define OBJC_AGAIN_0(...) __VA_ARGS__
#define OBJC_AGAIN_1(...) OBJC_AGAIN_0(OBJC_AGAIN_0(__VA_ARGS__))
#define OBJC_AGAIN_2(...) OBJC_AGAIN_1(OBJC_AGAIN_1(__VA_ARGS__))
#define OBJC_AGAIN_3(...) OBJC_AGAIN_2(OBJC_AGAIN_2(__VA_ARGS__))
#define OBJC_EACH(M, a, b, ...) __VA_OPT__(OBJC_AGAIN_3(OBJC_NEXT_0(M, a, b, __VA_ARGS__)))

#define OBJC_NEXT_INNER_0(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_1(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_1(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_2(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_2(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_3(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_3(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_4(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_4(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_5(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_5(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_6(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_6(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_7(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_7(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_8(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_8(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_9(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_9(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_10(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_10(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_11(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_11(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_12(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_12(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_13(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_13(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_14(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_14(M, a, b, x, ...) M(a, b, x) __VA_OPT__(OBJC_NEXT_INNER_15(M, a, b, __VA_ARGS__))
#define OBJC_NEXT_INNER_15(M, a, b, x, ...)                                                              \
    M(a, b, x) __VA_OPT__(objc_the_list_is_too_long_INNER OBJC_PARENTHESES (M, a, b, __VA_ARGS__))
#define objc_the_list_is_too_long_INNER() OBJC_NEXT_INNER_0
#define OBJC_AGAIN_INNER_0(...) __VA_ARGS__
#define OBJC_AGAIN_INNER_1(...) OBJC_AGAIN_INNER_0(OBJC_AGAIN_INNER_0(__VA_ARGS__))
#define OBJC_AGAIN_INNER_2(...) OBJC_AGAIN_INNER_1(OBJC_AGAIN_INNER_1(__VA_ARGS__))
#define OBJC_AGAIN_INNER_3(...) OBJC_AGAIN_INNER_2(OBJC_AGAIN_INNER_2(__VA_ARGS__))
#define OBJC_EACH_INNER(M, a, b, ...) __VA_OPT__(OBJC_AGAIN_INNER_3(OBJC_NEXT_INNER_0(M, a, b, __VA_ARGS__)))

// ---- what an item is ---------------------------------------------------------------------------

// A word with parentheses is told from a plain name by a macro of its name, which yields a second argument.
#define OBJC_SECOND(a, b, ...) b
#define OBJC_CHOOSE(...) OBJC_SECOND(__VA_ARGS__, ~)

// What the words hold, without the word.
#define OBJC_INSIDE_classMethods(...) __VA_ARGS__
#define OBJC_INSIDE_classMethodsOf(S, ...) __VA_ARGS__
#define OBJC_INSIDE_methodsOf(S, ...) __VA_ARGS__
#define OBJC_INSIDE_named(...) __VA_ARGS__
#define OBJC_INSIDE_variadic(...) __VA_ARGS__
#define OBJC_INSIDE_adopts(...) __VA_ARGS__
#define OBJC_INSIDE_includes(...) __VA_ARGS__
#define OBJC_INSIDE_version(n) n
#define OBJC_STRUCT_classMethodsOf(S, ...) S
#define OBJC_STRUCT_methodsOf(S, ...) S

// ---- entering what a list says -----------------------------------------------------------------

// Words that hold lists, and those that say something of the class. `T` is the class, `S` the struct of the code.
#define OBJC_ENTER(T, S, item) OBJC_CHOOSE(OBJC_ENTERS_##item, OBJC_ENTER_METHOD)(Member, S, item)
#define OBJC_ENTERS_classMethods(...) ~, OBJC_ENTER_CLASS_METHODS
#define OBJC_ENTERS_classMethodsOf(...) ~, OBJC_ENTER_CLASS_METHODS_OF
#define OBJC_ENTERS_methodsOf(...) ~, OBJC_ENTER_METHODS_OF
#define OBJC_ENTERS_adopts(...) ~, OBJC_ENTER_PROTOCOLS
#define OBJC_ENTERS_version(...) ~, OBJC_ENTER_NOTHING
#define OBJC_ENTERS_staticInstances() ~, OBJC_ENTER_NOTHING
#define OBJC_ENTERS_rootCounting() ~, OBJC_ENTER_NOTHING
#define OBJC_ENTERS_immortal() ~, OBJC_ENTER_IMMORTAL

#define OBJC_ENTER_NOTHING(kind, S, item)
#define OBJC_ENTER_CLASS_METHODS(kind, S, item) OBJC_EACH_INNER(OBJC_ENTER_METHOD, Static, S, OBJC_INSIDE_##item)
#define OBJC_ENTER_CLASS_METHODS_OF(kind, S, item)                                                                     \
    OBJC_EACH_INNER(OBJC_ENTER_METHOD, Static, OBJC_STRUCT_##item, OBJC_INSIDE_##item)
#define OBJC_ENTER_METHODS_OF(kind, S, item)                                                                           \
    OBJC_EACH_INNER(OBJC_ENTER_METHOD, Member, OBJC_STRUCT_##item, OBJC_INSIDE_##item)
#define OBJC_ENTER_PROTOCOLS(kind, S, item) OBJC_EACH_INNER(OBJC_ENTER_PROTOCOL, kind, S, OBJC_INSIDE_##item)
#define OBJC_ENTER_PROTOCOL(kind, S, P) ::objc_enterProtocol(lister, P::protocol());
#define OBJC_ENTER_IMMORTAL(kind, S, item)                                                                             \
    OBJC_EACH_INNER(OBJC_ENTER_METHOD, Member, ::objc_immortal, retain, release, autorelease, retainCount)

// Methods: plain, named and variadic ones. `kind` is Member or Static, for the class.
#define OBJC_ENTER_METHOD(kind, S, item) OBJC_CHOOSE(OBJC_METHOD_##item, OBJC_ENTER_PLAIN)(kind, S, item)
#define OBJC_METHOD_named(...) ~, OBJC_ENTER_NAMED
#define OBJC_METHOD_variadic(...) ~, OBJC_ENTER_VARIADIC
#define OBJC_METHOD_init ~, OBJC_ENTER_INIT

#define OBJC_ENTER_PLAIN(kind, S, name) OBJC_COMPARE(S, name, false) ::objc_list##kind<&S::name>(lister, #name);
#define OBJC_COMPARE(S, name, isNamed)                                 \
    if constexpr (requires { ::objc_oneFunction(&objc_Front::name); }) \
        ::objc_compareWithFront<&S::name, &objc_Front::name, isNamed>();
#define OBJC_ENTER_INIT(kind, S, name) ::objc_list##kind<::objc_initOf<S>()>(lister, #name);
#define OBJC_ENTER_NAMED(kind, S, item) OBJC_ENTER_NAMED2(kind, S, OBJC_INSIDE_##item)
#define OBJC_ENTER_NAMED2(...) OBJC_ENTER_NAMED3(__VA_ARGS__)
#define OBJC_ENTER_NAMED3(kind, S, name, selector) \
    OBJC_COMPARE(S, name, true) ::objc_list##kind##As<&S::name>(lister, selector);
#define OBJC_ENTER_VARIADIC(kind, S, item) OBJC_ENTER_VARIADIC2(kind, S, OBJC_INSIDE_##item)
#define OBJC_ENTER_VARIADIC2(...) OBJC_ENTER_VARIADIC3(__VA_ARGS__)
#define OBJC_ENTER_VARIADIC3(kind, S, name)                                       \
    if constexpr (requires { ::objc_oneFunction(&objc_Front::template name<>); }) \
        ::objc_compareVariadic<&S::name, &objc_Front::template name<>>();         \
    ::objc_listVariadic##kind<&S::name>(lister, #name);

// ---- what a list says of the class's record ----------------------------------------------------

#define OBJC_TRAIT(T, S, item) OBJC_CHOOSE(OBJC_TRAIT_##item, OBJC_TRAIT_NONE)(item)
#define OBJC_TRAIT_version(...) ~, OBJC_TRAIT_VERSION
#define OBJC_TRAIT_staticInstances() ~, OBJC_TRAIT_STATIC
#define OBJC_TRAIT_rootCounting() ~, OBJC_TRAIT_ROOT
#define OBJC_TRAIT_NONE(item)
#define OBJC_TRAIT_VERSION(item) | ::objc_traits{.version = OBJC_INSIDE_##item}
#define OBJC_TRAIT_STATIC(item) | ::objc_traits{.clear = ::objc_countsInHeader}
#define OBJC_TRAIT_ROOT(item) | ::objc_rootTraits

// ---- registrations -----------------------------------------------------------------------------

// The function that enters a list, its registration, and the registration's place in the library's section. `record`
// is what gets the methods. It is a template, so that what a front has not is no error.
#define OBJC_REGISTER(STORAGE, SECTION, n, name, record, T, S, ...)                                                    \
    STORAGE void objc_enters##n(::objc_lister &lister) {                                                               \
        [&lister]<class objc_Class, class objc_Code, class objc_Front>() {                                             \
            OBJC_EACH(OBJC_ENTER, objc_Class, objc_Code __VA_OPT__(, ) __VA_ARGS__)                                    \
            (void)lister;                                                                                              \
        }.template operator()<T, S, ::objc_frontOf<T, S>>();                                                           \
    }                                                                                                                  \
    STORAGE constexpr ::objc_registration objc_registration##n = {name, record, &objc_enters##n};                      \
    [[gnu::section(SECTION), gnu::used]] static const ::objc_registration *const objc_entry##n = &objc_registration##n

#define OBJC_IMPLEMENT(WITH, T, S, n, ...) OBJC_IMPLEMENT_AS_##WITH(T, S, n __VA_OPT__(, ) __VA_ARGS__)
#define OBJC_IMPLEMENT_AS_(...) OBJC_DEFINE_CLASS(static, , __VA_ARGS__)
#define OBJC_IMPLEMENT_AS_instance(T, ...)                                                                             \
    template <> ::objc_classPair T::classRecord_that_ZP_IMPLEMENT_defines;                                             \
    OBJC_DEFINE_CLASS(static, template <>, T, __VA_ARGS__)
#define OBJC_IMPLEMENT_AS_inline(...) OBJC_DEFINE_CLASS(inline, inline, __VA_ARGS__)
#define OBJC_DEFINE_CLASS(STORAGE, PREFIX, T, S, n, ...)                                                               \
    OBJC_REGISTER(STORAGE, "zp_records", n, #T, &T::classRecord_that_ZP_IMPLEMENT_defines.cls, T,                      \
                  S __VA_OPT__(, ) __VA_ARGS__);                                                                       \
    PREFIX constinit ::objc_classPair T::classRecord_that_ZP_IMPLEMENT_defines = ::objc_classRecord<T>(                \
        &objc_registration##n, #T, ::objc_traits{} OBJC_EACH(OBJC_TRAIT, T, S __VA_OPT__(, ) __VA_ARGS__))

#define OBJC_CATEGORY(T, S, n, ...) OBJC_CATEGORY2(T, S, n __VA_OPT__(, ) __VA_ARGS__)
#define OBJC_CATEGORY2(T, S, n, ...)                                                                                   \
    OBJC_REGISTER(static, "zp_categories", n, #S, &T::classRecord_that_ZP_IMPLEMENT_defines.cls, T,                    \
                  S __VA_OPT__(, ) __VA_ARGS__)

// ---- fronts made of code -----------------------------------------------------------------------

// For each method a base with the sending member, so that it has the method's own types; the class gets its name from
// there, before the code's. An item is made a member when it is a plain name, also within classMethods.
#define OBJC_JOIN(a, b) OBJC_JOIN2(a, b)
#define OBJC_JOIN2(a, b) a##b
#define OBJC_FRONT_named(...) ~, NOTHING
#define OBJC_FRONT_variadic(...) ~, NOTHING
#define OBJC_FRONT_adopts(...) ~, NOTHING
#define OBJC_FRONT_version(...) ~, NOTHING
#define OBJC_FRONT_staticInstances() ~, NOTHING
#define OBJC_FRONT_immortal() ~, NOTHING
#define OBJC_FRONT_methodsOf(...) ~, NOTHING
#define OBJC_FRONT_classMethodsOf(...) ~, NOTHING
#define OBJC_FRONT_classMethods(...) ~, STATICS

#define OBJC_SENDER(T, S, item) OBJC_JOIN(OBJC_SENDER_, OBJC_CHOOSE(OBJC_FRONT_##item, PLAIN))(T, S, item)
#define OBJC_SENDER_NOTHING(T, S, item)
#define OBJC_SENDER_STATICS(T, S, item) OBJC_EACH_INNER(OBJC_SENDER_PLAIN, T, S, OBJC_INSIDE_##item)
#define OBJC_SENDER_PLAIN(T, S, name)                                                                                  \
    template <bool objc_IsStatic, class objc_F> struct objc_##T##_##name;                                              \
    template <class objc_R, class... objc_A> struct objc_##T##_##name<false, objc_R(objc_A...)> {                      \
        using objc_Result = ::objc_madeResult<objc_R, T, ::objc_isInitialiser(#name)>;                                 \
        objc_Result name(objc_A... arguments) {                                                                        \
            return ::objc_ask(static_cast<T *>(this), ::objc_frontSlot<objc_##T##_##name>, #name, arguments...)        \
                .template as<objc_Result>();                                                                           \
        }                                                                                                              \
    };                                                                                                                 \
    template <class objc_R, class... objc_A> struct objc_##T##_##name<true, objc_R(objc_A...)> {                       \
        static objc_R name(objc_A... arguments) {                                                                      \
            ::Class to = ::objc_late<T, objc_R>::type::class_();                                                       \
            return ::objc_ask(to, ::objc_frontSlot<objc_##T##_##name>, #name, arguments...).template as<objc_R>();     \
        }                                                                                                              \
    };

#define OBJC_BASE(T, S, item) OBJC_JOIN(OBJC_BASE_, OBJC_CHOOSE(OBJC_FRONT_##item, PLAIN))(T, S, item)
#define OBJC_BASE_NOTHING(T, S, item)
#define OBJC_BASE_STATICS(T, S, item) OBJC_EACH_INNER(OBJC_BASE_PLAIN, T, S, OBJC_INSIDE_##item)
#define OBJC_BASE_PLAIN(T, S, name) , ::objc_madeBase<objc_##T##_##name, decltype(&S::name)>

#define OBJC_USE(T, S, item) OBJC_JOIN(OBJC_USE_, OBJC_CHOOSE(OBJC_FRONT_##item, PLAIN))(T, S, item)
#define OBJC_USE_NOTHING(T, S, item)
#define OBJC_USE_STATICS(T, S, item) OBJC_EACH_INNER(OBJC_USE_PLAIN, T, S, OBJC_INSIDE_##item)
#define OBJC_USE_PLAIN(T, S, name) using ::objc_madeBase<objc_##T##_##name, decltype(&S::name)>::name;

// ---- protocols ---------------------------------------------------------------------------------

#define OBJC_PROMISE(kind, S, item) OBJC_JOIN(OBJC_PROMISE_, OBJC_CHOOSE(OBJC_PROMISES_##item, PLAIN))(kind, S, item)
#define OBJC_PROMISES_includes(...) ~, INCLUDED
#define OBJC_PROMISES_classMethods(...) ~, STATICS
#define OBJC_PROMISES_named(...) ~, NAMED
#define OBJC_PROMISE_INCLUDED(kind, S, item) OBJC_EACH_INNER(OBJC_ENTER_PROTOCOL, kind, S, OBJC_INSIDE_##item)
#define OBJC_PROMISE_STATICS(kind, S, item) OBJC_EACH_INNER(OBJC_PROMISE_PLAIN, Static, S, OBJC_INSIDE_##item)
#define OBJC_PROMISE_PLAIN(kind, S, name) ::objc_promise##kind<decltype(&S::name)>(lister, #name);
#define OBJC_PROMISE_NAMED(kind, S, item) OBJC_PROMISE_NAMED2(kind, S, OBJC_INSIDE_##item)
#define OBJC_PROMISE_NAMED2(...) OBJC_PROMISE_NAMED3(__VA_ARGS__)
#define OBJC_PROMISE_NAMED3(kind, S, name, selector) ::objc_promise##kind##As<decltype(&S::name)>(lister, selector);

// clang-format on
/// @endcond
