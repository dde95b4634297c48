// SPDX-License-Identifier: MIT
// Declaring and implementing classes, categories and protocols.
//
//     struct Counter : ZPObject {                       // the front, in a header: what others may send
//         ZP_CLASS(Counter)
//         int _value;
//         void add(int amount) ZP_TELLS(amount);
//         int value() ZP_ASKS();
//         static Counter *counterWithValue(int value) ZP_CLASS_ASKS(value);
//     };
//
//     struct CounterMethods : Counter {                 // the code, in a source file: what the messages reach
//         void add(int amount) { _value += amount; }
//         int value() { return _value; }
//         static Counter *counterWithValue(Class, int value) { ... }
//     };
//     ZP_IMPLEMENT_WITH(Counter, CounterMethods, add, value, classMethods(counterWithValue));
//
// The list is of names: the selector, the type string and whether it is a member for the class follow from them, and
// a method whose C++ types differ from those of the front's member does not compile. In the code a bare name is the
// class's own function, called directly; a message to oneself is `self()->add(1)`.
//
// A class that nothing overrides may keep its code in the front: ZP_IMPLEMENT(Counter, add, value). A class whose
// front is to be made from its code needs neither: ZP_MAKE_CLASS(Counter, CounterMethods, add, value).
#pragma once

#include <Bedrock/platform/ZPList.h>
#include <Bedrock/platform/ZPMessage.h>

// g++ warns of va_list's own attributes wherever it is a template argument.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-attributes"
#pragma GCC diagnostic ignored "-Wattributes"

/// @cond machinery
template <class X> std::type_identity<void> objc_nearest(X *, const objc_object *);
/// @endcond

/// The nearest superclass of T that was declared with ZP_CLASS; void for a root.
template <class T> using objc_superclassOf =
    typename decltype(objc_nearest(static_cast<T *>(nullptr), static_cast<T *>(nullptr)))::type;

/// @cond machinery
inline objc_object *objc_allocateFrom(Class cls, ZPZone *zone) {
    return objc_msgSend<id>(cls, "allocWithZone:"_sel, zone).pointer();
}

// clang-format off
#define OBJC_CLASS_MEMBERS(T, RECORD)                                                                                  \
    RECORD;                                                                                                            \
    /** The class object. */                                                                                           \
    static ::Class class_() { return &classRecord_that_ZP_IMPLEMENT_defines.cls; }                                     \
    /** A new instance that the caller owns; initialise it before use. */                                              \
    static T *alloc() { return ::objc_allocate<T>(class_()); }                                                         \
    /** A new instance in a zone (null: the default zone) that the caller owns. */                                     \
    static T *allocWithZone(::ZPZone *zone) ZP_CLASS_ASKS(zone)                                                        \
    /** A new instance of `cls`, this class or a subclass, in a zone (null: the default zone), that the caller */      \
    /** owns; initialise it before use: what a class method that subclasses inherit makes its instance with. */        \
    static T *allocFrom(::Class cls, ::ZPZone *zone = nullptr) { return (T *)::objc_allocateFrom(cls, zone); }         \
    /** A new, initialised instance that the caller owns. */                                                           \
    static T *new_() ZP_CLASS_ASKS()                                                                                   \
    /** Prepares a new instance, and is sent to nothing else; answers the receiver, or another object in its */        \
    /** place, which alone is to be used. */                                                                           \
    template <class = void> T *init() ZP_ASKS()                                                                        \
    static void *operator new(::std::size_t) = delete;                                                                 \
    template <class objc_Sub> requires(!::std::is_same_v<objc_Sub, T>)                                                 \
    friend ::std::type_identity<T> objc_nearest(objc_Sub *, const T *) { return {}; }
// clang-format on
/// @endcond

/// Declares a struct to be a class: write it first in a struct that derives from another class. ZP_IMPLEMENT or
/// ZP_IMPLEMENT_WITH defines it; without that the program does not link.
#define ZP_CLASS(T)                                                                                               \
    OBJC_CLASS_MEMBERS(T, ZP_EXPORT static ::objc_classPair classRecord_that_ZP_IMPLEMENT_defines)                \
    /** The receiver. In a class's code it is how a message to oneself is told from a call: `self()->count()`. */ \
    T *self() { return this; }

/// The same for a class that only its own library names, and whose code is in the struct itself: `self()` answers the
/// receiver as its superclass's front, so that a message through it is one.
#define ZP_PRIVATE_CLASS(T)                                                              \
    OBJC_CLASS_MEMBERS(T, static ::objc_classPair classRecord_that_ZP_IMPLEMENT_defines) \
    auto *self() { return static_cast<::objc_superclassOf<T> *>(this); }

/// @cond machinery
// A class that allocates as the root does is spared the message.
template <class T> ZP_INLINE T *objc_allocate(Class cls) {
    if (__atomic_load_n(&cls->info, __ATOMIC_ACQUIRE) & objc_allocatesPlainly) [[likely]]
        if (objc_object *object = objc_allocateInstance(cls)) return (T *)object;
    return objc_msgSend<T *>(cls, "alloc"_sel);
}

// ---- what a method's C++ type says -------------------------------------------------------------

// A function as a method: its result and its arguments without the receiver. `TakesClass` tells whether a static
// function begins with the receiving class.
template <class F> struct objc_function { static constexpr bool isFunction = false; };
template <class R, class... A> struct objc_signature {
    static constexpr bool isFunction = true, takesClass = false;
    static constexpr unsigned count = sizeof...(A);
    using type = R(A...);
    using result = R;
};
template <class R, class... A> struct objc_function<R (*)(A...)> : objc_signature<R, A...> {};
template <class R, class... A> struct objc_function<R (*)(Class, A...)> : objc_signature<R, A...> {
    static constexpr bool takesClass = true;
};
template <class R, class... A> struct objc_function<R (*)(A...) noexcept> : objc_function<R (*)(A...)> {};
template <class C, class R, class... A> struct objc_memberSignature : objc_signature<R, A...> { using owner = C; };
template <class C, class R, class... A> struct objc_function<R (C::*)(A...)> : objc_memberSignature<C, R, A...> {};
template <class C, class R, class... A> struct objc_function<R (C::*)(A...) const> : objc_memberSignature<C, R, A...> {
};
template <class C, class R, class... A> struct objc_function<R (C::*)(A...) noexcept>
    : objc_memberSignature<C, R, A...> {};
template <class C, class R, class... A> struct objc_function<R (C::*)(A...) const noexcept>
    : objc_memberSignature<C, R, A...> {};
// A front's sending member.
template <class C, class R, class... A> struct objc_function<R (C::*)(A...) &> : objc_memberSignature<C, R, A...> {};

// A reference to an object may be declared as `id`, or as one to a class above or below; everything else is the same
// type.
template <class T> inline constexpr bool objc_isReference = std::is_same_v<T, id>;
template <class T> inline constexpr bool objc_isReference<T *> =
    std::is_class_v<T> &&decltype(objc_objectTest(static_cast<T *>(nullptr)))::value;
template <class A> inline constexpr bool objc_isStandIn = requires {
    typename std::remove_pointer_t<A>::objc_StandsFor;
};
template <class A, class B> consteval bool objc_typesAgreeTo() {
    if constexpr (objc_isReference<A> && objc_isReference<B>)
        return std::is_convertible_v<A, B> || std::is_convertible_v<B, A> || objc_isStandIn<A>;
    else return std::is_same_v<A, B>;
}
template <class A, class B> inline constexpr bool objc_typesAgree = objc_typesAgreeTo<A, B>();

template <class Method, class Front> inline constexpr bool objc_signaturesAgree = false;
template <class R, class... A, class S, class... B>
    requires(sizeof...(A) == sizeof...(B))
inline constexpr bool objc_signaturesAgree<R(A...), S(B...)> = (objc_typesAgree<R, S> && ... && objc_typesAgree<A, B>);

// Both functions are arguments, so that the error names them.
template <auto Method, auto Front, class MethodType = typename objc_function<decltype(Method)>::type,
          class FrontType = typename objc_function<decltype(Front)>::type>
struct the_method_has_other_types_than_the_front {
    static_assert(
        objc_signaturesAgree<MethodType, FrontType>,
        "the method's C++ types are not those of the front's member: the lines around have both, the method's first");
    static constexpr bool checked = true;
};

// Whether an expression names one function, which `&` answers the address of.
template <class F> void objc_oneFunction(F);

// Told as template arguments: g++ does not compare addresses of functions at compile time where they may be null.
template <auto Method, auto Front> inline constexpr bool objc_sameFunction = false;
template <auto Method> inline constexpr bool objc_sameFunction<Method, Method> = true;

// Not constexpr: reaching it is the compile error that names the mistake.
void the_name_is_a_sending_member_of_the_front_and_no_method();

// What a root class can be sent its instances can be sent as well, and everything answers its class.
template <class Front> consteval bool objc_hasBothKinds() {
    if constexpr (requires { typename objc_function<Front>::owner; }) return requires {
            requires std::is_void_v<objc_superclassOf<typename objc_function<Front>::owner>>;
        };
    else return std::is_same_v<typename objc_function<Front>::type, Class()>;
}
template <auto Method, auto Front> struct the_method_is_of_another_kind_than_the_front {
    static_assert(std::is_member_function_pointer_v<decltype(Method)> ==
                          std::is_member_function_pointer_v<decltype(Front)> ||
                      objc_hasBothKinds<decltype(Front)>(),
                  "one is a method of instances and one of the class: the lines around have both, the method first; "
                  "where that is meant, say named(name, \"selector\")");
    static constexpr bool checked = true;
};

template <auto Method, auto Front, bool IsNamed = false> consteval void objc_compareWithFront() {
    if constexpr (objc_function<decltype(Front)>::isFunction) {
        static_assert(the_method_has_other_types_than_the_front<Method, Front>::checked);
        if constexpr (!IsNamed) static_assert(the_method_is_of_another_kind_than_the_front<Method, Front>::checked);
    }
    if constexpr (objc_sameFunction<Method, Front>) the_name_is_a_sending_member_of_the_front_and_no_method();
}

// Not constexpr: reaching it while a name is checked is the compile error that names the mistake.
void the_name_must_have_one_word_for_each_argument();
void the_selector_must_have_one_colon_for_each_argument();

/// A method's name, checked at compile time to fit the number of arguments.
template <unsigned Arguments> struct objc_methodName {
    const char *text;
    consteval objc_methodName(const char *name) : text(name) {
        if (!objc_nameFits(name, Arguments)) the_name_must_have_one_word_for_each_argument();
    }
};
/// A selector's text, checked in the same way.
template <unsigned Arguments> struct objc_selectorText {
    const char *text;
    consteval objc_selectorText(const char *s) : text(s) {
        if (!*s || objc_colonsIn(s) != Arguments) the_selector_must_have_one_colon_for_each_argument();
    }
};

// ---- implementations and frame invokers --------------------------------------------------------

// What a frame holds: its slots are aligned to words, whatever lies in them.
template <class T> ZP_INLINE T objc_takeSlot(const char *slot) {
    if constexpr (std::is_reference_v<T>) return static_cast<T>(*objc_takeSlot<std::remove_reference_t<T> *>(slot));
    else {
        union Value {
            char bytes[sizeof(T)];
            std::remove_const_t<T> of;
            Value() : bytes() {}
        } value;
        std::memcpy(value.bytes, slot, sizeof value.bytes);
        return value.of;
    }
}

template <class R, class... A>
void *objc_invokeFrame(IMP implementation, objc_object *self, SEL selector, void *arguments, void *result) {
    if constexpr (!(objc_fitsFrame<R> && ... && objc_fitsFrame<A>)) {
        objc_fatal("%s: a method with these C++ types cannot be sent with a frame", sel_getName(selector));
    } else {
        char *slot = static_cast<char *>(arguments);
        if constexpr (objc_resultIsHidden<R>()) {
            void *hidden;
            std::memcpy(&hidden, slot, sizeof hidden);
            result = hidden;
            slot += sizeof(void *);
        }
        slot += 2 * sizeof(void *);
        struct Slots {
            char *at;
            char *next(unsigned size) {
                char *p = at;
                at += size;
                return p;
            }
        } slots{slot};
        // Braces fix the order in which the slots are taken.
        struct Pointers {
            char *of[sizeof...(A) + 1];
        } taken{{slots.next(objc_slotSize<objc_stored<A>>)..., nullptr}};
        [&]<std::size_t... I>(std::index_sequence<I...>) {
            auto call = reinterpret_cast<R (*)(objc_object *, SEL, A...)>(implementation);
            if constexpr (std::is_void_v<R>) call(self, selector, objc_takeSlot<A>(taken.of[I])...);
            else if constexpr (std::is_reference_v<R>) {
                auto *p = &call(self, selector, objc_takeSlot<A>(taken.of[I])...);
                if (result) std::memcpy(result, &p, sizeof p);
            } else {
                R answer = call(self, selector, objc_takeSlot<A>(taken.of[I])...);
                if (result) std::memcpy(result, static_cast<void *>(&answer), sizeof answer);
            }
        }
        (std::index_sequence_for<A...>{});
        return result;
    }
}

// ---- listing -----------------------------------------------------------------------------------

template <class R, class... A> ZP_INLINE void objc_enter(objc_lister &lister, const char *name, unsigned long bits,
                                                         IMP implementation, bool hasFrame = true) {
    objc_enterMethod(lister, name,
                     bits | sizeof...(A) << objc_listsArguments |
                         static_cast<unsigned long>(objc_frameLength<R, A...>) << objc_listsFrame,
                     objc_methodTypes<R, A...>(), implementation, hasFrame ? &objc_invokeFrame<R, A...> : nullptr);
}

// The method of a listed function M. F, its type, is a parameter so that what is made for a class of an unnamed
// namespace stays in its file: g++ gives what depends on M alone external linkage.
template <auto M, class F = decltype(M)> struct objc_listed;

template <auto M, class C, class R, class... A> struct objc_listedMember {
    static R implementation(objc_object *self, SEL, A... arguments) {
        return (static_cast<C *>(self)->*M)(std::forward<A>(arguments)...);
    }
    static void enter(objc_lister &lister, const char *name, unsigned long bits) {
        objc_enter<R, A...>(lister, name, bits, reinterpret_cast<IMP>(&implementation));
    }
};
template <auto M, class C, class R, class... A> struct objc_listed<M, R (C::*)(A...)>
    : objc_listedMember<M, C, R, A...> {};
template <auto M, class C, class R, class... A> struct objc_listed<M, R (C::*)(A...) const>
    : objc_listedMember<M, C, R, A...> {};
template <auto M, class C, class R, class... A> struct objc_listed<M, R (C::*)(A...) noexcept>
    : objc_listedMember<M, C, R, A...> {};
template <auto M, class C, class R, class... A> struct objc_listed<M, R (C::*)(A...) const noexcept>
    : objc_listedMember<M, C, R, A...> {};
template <auto M, class C, class R, class... A> struct objc_listed<M, R (C::*)(A...) &>
    : objc_listedMember<M, C, R, A...> {
    static_assert(!std::is_same_v<C, C>,
                  "the name is a sending member of the front and no method: it would send its own message for ever");
};
template <auto M, class R, class... A> struct objc_listed<M, R (*)(A...)> {
    static R implementation(objc_object *, SEL, A... arguments) { return M(std::forward<A>(arguments)...); }
    static void enter(objc_lister &lister, const char *name, unsigned long bits) {
        objc_enter<R, A...>(lister, name, bits, reinterpret_cast<IMP>(&implementation));
    }
};
template <auto M, class R, class... A> struct objc_listed<M, R (*)(Class, A...)> {
    static R implementation(objc_object *self, SEL, A... arguments) {
        return M((Class)self, std::forward<A>(arguments)...);
    }
    static void enter(objc_lister &lister, const char *name, unsigned long bits) {
        objc_enter<R, A...>(lister, name, bits, reinterpret_cast<IMP>(&implementation));
    }
};
template <auto M, class R, class... A> struct objc_listed<M, R (*)(A...) noexcept> : objc_listed<M, R (*)(A...)> {};

template <class... T> struct objc_typeList {};
template <class Done, class... Rest> struct objc_dropLast;
template <class... D, class Last> struct objc_dropLast<objc_typeList<D...>, Last> {
    static_assert(std::is_same_v<Last, std::decay_t<std::va_list>>,
                  "a variadic method takes its unnamed arguments as a va_list, last");
    using type = objc_typeList<D...>;
};
template <class... D, class First, class Second, class... Rest>
struct objc_dropLast<objc_typeList<D...>, First, Second, Rest...>
    : objc_dropLast<objc_typeList<D..., First>, Second, Rest...> {};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wvarargs"
// A variadic method: M takes the named arguments and the rest as a `va_list`; a static one takes the class first.
template <auto M, class C, class R, class Named> struct objc_listedVariadic;
template <auto M, class C, class R, class... N> struct objc_listedVariadic<M, C, R, objc_typeList<N...>> {
    static constexpr unsigned named = sizeof...(N);
    using type = R(N...);
    static R implementation(objc_object *self, SEL selector, N... named, ...) {
        struct Rest {
            std::va_list list;
            ~Rest() { va_end(list); }
        } rest;
        va_start(rest.list, selector);
        if constexpr (std::is_member_function_pointer_v<decltype(M)>)
            return (static_cast<C *>(self)->*M)(named..., rest.list);
        else return M((C)self, named..., rest.list);
    }
    static void enter(objc_lister &lister, const char *name, unsigned long bits) {
        // What follows the named arguments is in no frame.
        objc_enter<R, N...>(lister, name, bits, reinterpret_cast<IMP>(&implementation), false);
    }
};
#pragma GCC diagnostic pop
template <auto M, class F = decltype(M)> struct objc_variadic;
template <auto M, class C, class R, class... A> struct objc_variadic<M, R (C::*)(A...)>
    : objc_listedVariadic<M, C, R, typename objc_dropLast<objc_typeList<>, A...>::type> {};
template <auto M, class R, class... A> struct objc_variadic<M, R (*)(Class, A...)>
    : objc_listedVariadic<M, Class, R, typename objc_dropLast<objc_typeList<>, A...>::type> {};

template <auto M, class F = decltype(M)>
ZP_INLINE void objc_listMember(objc_lister &lister, objc_methodName<objc_function<F>::count> name) {
    static_assert(std::is_member_function_pointer_v<F>, "a static function must be listed within classMethods(...)");
    objc_listed<M>::enter(lister, name.text, 0);
}
template <auto M, class F = decltype(M)>
ZP_INLINE void objc_listStatic(objc_lister &lister, objc_methodName<objc_function<F>::count> name) {
    static_assert(!std::is_member_function_pointer_v<F>, "classMethods(...) lists static functions, and this is none");
    objc_listed<M>::enter(lister, name.text, objc_listsClassMethod);
}
template <auto M, class F = decltype(M)>
ZP_INLINE void objc_listMemberAs(objc_lister &lister, objc_selectorText<objc_function<F>::count> selector) {
    static_assert(std::is_member_function_pointer_v<F>, "a static function must be listed within classMethods(...)");
    objc_listed<M>::enter(lister, selector.text, objc_listsSelector);
}
template <auto M, class F = decltype(M)>
ZP_INLINE void objc_listStaticAs(objc_lister &lister, objc_selectorText<objc_function<F>::count> selector) {
    static_assert(!std::is_member_function_pointer_v<F>, "classMethods(...) lists static functions, and this is none");
    objc_listed<M>::enter(lister, selector.text, objc_listsSelector | objc_listsClassMethod);
}
// A front's member for a method that takes a list of objects has none but these.
template <class Method, class Front> inline constexpr bool objc_variadicsAgree = objc_signaturesAgree<Method, Front>;
template <class R, class S> inline constexpr bool objc_variadicsAgree<R(id), S()> = objc_typesAgree<R, S>;
template <auto Method, auto Front> struct the_variadic_method_has_other_types_than_the_front {
    static_assert(
        objc_variadicsAgree<typename objc_variadic<Method>::type, typename objc_function<decltype(Front)>::type>,
        "the named arguments of the method and the front's member differ: the lines around have both");
    static constexpr bool checked = true;
};
template <auto Method, auto Front> consteval void objc_compareVariadic() {
    static_assert(the_variadic_method_has_other_types_than_the_front<Method, Front>::checked);
    static_assert(the_method_is_of_another_kind_than_the_front<Method, Front>::checked);
}

template <auto M>
ZP_INLINE void objc_listVariadicMember(objc_lister &lister, objc_methodName<objc_variadic<M>::named> name) {
    objc_variadic<M>::enter(lister, name.text, 0);
}
template <auto M>
ZP_INLINE void objc_listVariadicStatic(objc_lister &lister, objc_methodName<objc_variadic<M>::named> name) {
    objc_variadic<M>::enter(lister, name.text, objc_listsClassMethod);
}

// `init` of a struct that also has the one of ZP_CLASS.
template <class S> consteval auto objc_initOf() {
    if constexpr (requires { objc_oneFunction(&S::init); }) {
        static_assert(objc_isReference<typename objc_function<decltype(&S::init)>::result>, "init answers an object");
        return &S::init;
    } else if constexpr (requires { static_cast<id (S::*)()>(&S::init); }) return static_cast<id (S::*)()>(&S::init);
    else return static_cast<S *(S::*)()>(&S::init);
}

struct objc_immortal : objc_object {
    id retain() { return this; }
    id autorelease() { return this; }
    void release() {}
    unsigned retainCount() { return 0xFFFFFFFF; }
};

// ---- class records -----------------------------------------------------------------------------

// What the words of a list that are no methods say of the class.
struct objc_traits {
    unsigned set = 0, clear = 0, metaSet = 0;
    int version = 0;
    constexpr objc_traits operator|(objc_traits other) const {
        return {set | other.set, clear | other.clear, metaSet | other.metaSet, version | other.version};
    }
};

inline constexpr objc_traits objc_rootTraits = {
    .set = objc_defaultCounting | objc_defaultDealloc,
    .metaSet = objc_defaultAllocation,
};

// What the member of a made front answers: an initialiser answers an instance of the class.
consteval bool objc_isInitialiser(const char *name) {
    for (const char *word = "init"; *word; ++word, ++name)
        if (*name != *word) return false;
    return *name < 'a' || *name > 'z';
}
template <class R, class T, bool IsInitialiser> using objc_madeResult =
    std::conditional_t<IsInitialiser && objc_isReference<R>, T *, R>;
// What a made front inherits for a function of type F: the sending member, by F's result and arguments alone.
template <template <bool, class> class Sender, class F> using objc_madeBase =
    Sender<!std::is_member_function_pointer_v<F>, typename objc_function<F>::type>;
// T, once something else is known: it may be incomplete where it is named.
template <class T, class Later> struct objc_late { using type = T; };

template <class T> inline constexpr objc_fieldHooks objc_hooksOf = {
    std::is_trivially_default_constructible_v<T> ? nullptr : +[](void *p) {
        if constexpr (!std::is_trivially_default_constructible_v<T>) ::new (p) T;
    },
    objc_copiesAsBytes<T> ? nullptr : +[](void *p, const void *source) {
        if constexpr (!objc_copiesAsBytes<T> && std::is_copy_constructible_v<T>)
            ::new (p) T(*static_cast<const T *>(source));
        else if constexpr (!objc_copiesAsBytes<T>)
            objc_fatal("an instance whose C++ fields cannot be copied was copied");
    },
    std::is_trivially_destructible_v<T> ? nullptr : +[](void *p) {
        if constexpr (!std::is_trivially_destructible_v<T>) static_cast<T *>(p)->~T();
    },
};

template <class T>
constexpr objc_classPair objc_classRecord(const objc_registration *registration, const char *name, objc_traits traits) {
    using Super = objc_superclassOf<T>;
    static_assert(!std::is_polymorphic_v<T>,
                  "a class has no virtual functions: its methods are what subclasses override");
    static_assert(sizeof(T) < 0x7FFFFFFF && alignof(T) <= 16, "instances are aligned to 16 bytes at most");
    constexpr bool root = std::is_void_v<Super>;
    constexpr bool plain = std::is_trivially_default_constructible_v<T> && objc_copiesAsBytes<T>;
    objc_classPair &self = T::classRecord_that_ZP_IMPLEMENT_defines;
    Class superclass = nullptr;
    if constexpr (!root) superclass = &Super::classRecord_that_ZP_IMPLEMENT_defines.cls;
    unsigned info = objc_countsInHeader | (root ? unsigned(objc_isRoot) : 0u) |
                    (alignof(T) > 8 ? unsigned(objc_hasWideAlignment) : 0u);
    info = (info | traits.set) & ~traits.clear;
    unsigned metaInfo = (root ? unsigned(objc_isRoot) : 0u) | traits.metaSet;
    objc_classPair pair = objc_unrealizedPair(self, superclass, info, metaInfo, name, sizeof(T), registration);
    pair.cls.version = traits.version;
    if constexpr (!plain) pair.cls.fields = &objc_hooksOf<T>;
    return pair;
}

// The front against which a method's types are compared: the class's own where the code's struct derives from it, else
// the superclass's. A made class derives from its code.
template <class T, class Code> using objc_frontOf =
    std::conditional_t<std::is_base_of_v<Code, T>, objc_superclassOf<T>, T>;

// ---- a library's registrations -----------------------------------------------------------------

extern "C" {
// The linker's names for the two sections; null in a library that has none.
extern ZP_HIDDEN const objc_registration *const __start_zp_records[] __attribute__((weak));
extern ZP_HIDDEN const objc_registration *const __stop_zp_records[] __attribute__((weak));
extern ZP_HIDDEN const objc_registration *const __start_zp_categories[] __attribute__((weak));
extern ZP_HIDDEN const objc_registration *const __stop_zp_categories[] __attribute__((weak));
}
ZP_HIDDEN inline constinit objc_library objc_thisLibrary{};

// Runs before the library's other initialisers. Every file that has the function calls it; the first call counts.
#ifndef BEDROCK_LOADS_ITSELF
__attribute__((constructor(101)))
#endif
ZP_HIDDEN inline void
objc_loadThisLibrary() {
    if (objc_thisLibrary.endOfRecords || objc_thisLibrary.endOfCategories) return;
    if (!__stop_zp_records && !__stop_zp_categories) return;
    objc_thisLibrary = {__start_zp_records, __stop_zp_records, __start_zp_categories, __stop_zp_categories, nullptr};
    objc_loadLibrary(objc_thisLibrary);
}
/// @endcond

/// Defines a class that ZP_CLASS declared, whose code is the struct itself, and lists its methods by their names; once,
/// in a source file. A member that says ZP_ASKS or ZP_TELLS is no code, and listed here it would send itself for ever:
/// the code is then in a struct of its own, and ZP_IMPLEMENT_WITH lists it.
///
///     ZP_IMPLEMENT(Counter, add, value, classMethods(counterWithValue));
///
/// The selector follows from the name as it does for a front. What is no plain method is said with a word:
///
/// - `classMethods(a, b)`: static functions that answer messages to the class; they may take the receiving `Class`
///   first.
/// - `classMethodsOf(S, a, b)`, `methodsOf(S, a, b)`: the same, and instance methods, as members of another struct.
/// - `named(a, "a:::")`: a method whose selector is not what its name says.
/// - `variadic(a)`: a method with unnamed arguments behind the named ones, which it takes as a `va_list`, last.
/// - `adopts(P, Q)`: the class adopts these protocols; whether it has their methods is not checked.
/// - `version(2)`: the class version that archives record; 0 when not said.
/// - `staticInstances()`: instances may live outside the allocator (static objects): their extra references are kept in
///   the side table instead of beside the instance.
/// - `immortal()`: instances live as long as the process: `retain`, `autorelease` and `release` do nothing, and
///   `retainCount` answers 0xFFFFFFFF.
/// - `rootCounting()`: a root class whose retain, release and retainCount count in the header, and whose alloc and
///   allocWithZone: only allocate.
///
/// A name that does not fit the function's arguments and a method whose C++ types differ from those of the front's
/// member are compile errors; a method that is listed twice stops the process when the class is first used.
#define ZP_IMPLEMENT(T, ...) OBJC_IMPLEMENT(, T, T, __COUNTER__ __VA_OPT__(, ) __VA_ARGS__)

/// The same for a class whose code is in a struct of its own, derived from the front T.
#define ZP_IMPLEMENT_WITH(T, Methods, ...) OBJC_IMPLEMENT(, T, Methods, __COUNTER__ __VA_OPT__(, ) __VA_ARGS__)

/// The same as ZP_IMPLEMENT for one instance of a class template: ZP_IMPLEMENT_INSTANCE(Box<int>, value), before its
/// first use.
#define ZP_IMPLEMENT_INSTANCE(T, ...) OBJC_IMPLEMENT(instance, T, T, __COUNTER__ __VA_OPT__(, ) __VA_ARGS__)

/// Lists methods that a file adds to a class of another file: members of a struct `Methods` derived from the class's
/// front, whose name is the category's. A category's methods take the place of the class's own of the same selector; of
/// two categories with one selector in one library, either may win.
#define ZP_CATEGORY(T, Methods, ...) OBJC_CATEGORY(T, Methods, __COUNTER__ __VA_OPT__(, ) __VA_ARGS__)

/// Makes a class T of its code alone: a struct `Methods` that derives from the superclass, has the fields, and is no
/// class by itself. T gets the fields, a front's member for each method listed, and the methods. In a header or in a
/// source file. Only what is listed by plain name, and in `classMethods` of `Methods`, becomes a member. T does not
/// exist yet where `Methods` is written: `self()` is the receiver as its superclass there, a message to oneself
/// `objc_msgSend(this, "add:"_sel, 1)`, and with `struct T;` before it `objc_super<T>(this)` sends to the superclass.
#define ZP_MAKE_CLASS(T, Methods, ...)                                                                 \
    struct T;                                                                                          \
    OBJC_EACH(OBJC_SENDER, T, Methods __VA_OPT__(, ) __VA_ARGS__)                                      \
    struct T : Methods OBJC_EACH(OBJC_BASE, T, Methods __VA_OPT__(, ) __VA_ARGS__) {                   \
        OBJC_CLASS_MEMBERS(T, ZP_EXPORT static ::objc_classPair classRecord_that_ZP_IMPLEMENT_defines) \
        T *self() { return this; }                                                                     \
        OBJC_EACH(OBJC_USE, T, Methods __VA_OPT__(, ) __VA_ARGS__)                                     \
    };                                                                                                 \
    OBJC_IMPLEMENT(inline, T, Methods, _##T __VA_OPT__(, ) __VA_ARGS__)

/// Sends to the superclass of T's implementation: `objc_super<T>(this).send<void>("dealloc"_sel)`. T is the class
/// whose method sends; in a class method its receiver is a `Class`.
template <class T> struct objc_super {
    objc_object *self;  ///< the receiver
    Class superclass;  ///< whose method is looked for
    /// The receiver of the messages, which must not be null and is not retained.
    explicit objc_super(objc_object *receiver) : self(receiver), superclass(of()) {}
    /// The same in a class method.
    explicit objc_super(Class receiver) : self(receiver), superclass(objc_counterpart(of())) {}
    /// Sends the message to the superclass's method; the types must be the method's own.
    template <class R = void, class... A> R send(SEL selector, A... arguments) const {
        return objc_msgSendSuper<R>(self, superclass, selector, arguments...);
    }

  private:
    // The superclass that T was written with; T's record has another once a class poses as T. A class that poses
    // itself sends to what its superclass was before, also when another poses as it in turn: its code is then that of
    // the record behind its own.
    static Class of() {
        if (!(objc_infoOf(T::class_()) & objc_isPosing)) return objc_superclassOf<T>::class_();
        Class code = T::class_();
        while (objc_infoOf(code) & objc_isReplaced) code = objc_superRecordOf(code);
        return objc_superRecordOf(code);
    }
};

/// @cond machinery
template <class T, objc_text Name, class Member, class Type = typename objc_function<Member>::type>
struct objc_superMessage;
template <class T, objc_text Name, class Member, class R, class... A>
struct objc_superMessage<T, Name, Member, R(A...)> {
    objc_object *self;
    using Result = objc_madeResult<R, T, objc_isInitialiser(Name.text)>;
    ZP_INLINE Result operator()(A... arguments) const {
        static_assert(objc_nameFits(Name.text, sizeof...(A)));
        SEL selector = objc_frontSelector(objc_frontSlot<objc_superMessage>, Name.text, sizeof...(A));
        return objc_super<T>(self).template send<Result>(selector, arguments...);
    }
};
#define OBJC_SUPER_init ~, template init<>
/// @endcond

/// In a method of T, a message to the receiver that goes to the superclass's method: `ZP_SUPER(T, dealloc)()`,
/// `ZP_SUPER(T, isEqual)(other)`. The superclass's front has the name, and its types are those of the message; what an
/// initialiser answers is a `T *`. T is complete there; in a class method, or where no front has the message,
/// `objc_super` sends it.
#define ZP_SUPER(T, name) \
    ::objc_superMessage<T, #name, decltype(&::objc_superclassOf<T>::OBJC_CHOOSE(OBJC_SUPER_##name, name))> { this }

#pragma GCC diagnostic pop
