// SPDX-License-Identifier: MIT
// Declaring and implementing classes, categories and protocols.
//
//     struct Counter : ZPObject {                       // in the header
//         ZP_CLASS(Counter)
//         int _value;
//         void add(int amount) { _value += amount; }
//         static Counter *counterWithValue(Class self, int value);
//     };
//
//     ZP_IMPLEMENT(Counter)                             // once, in a source file
//         .method<&Counter::add>("add:")
//         .classMethod<&Counter::counterWithValue>("counterWithValue:");
//
// The methods may live in another struct derived from the class's front, which is how a class whose
// front sends messages keeps its code: `.method<&CounterMethods::add>("add:")`.
#pragma once

#include <Bedrock/platform/ZPMessage.h>

// g++ warns of va_list's own attributes wherever it is a template argument.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-attributes"
#pragma GCC diagnostic ignored "-Wattributes"

/// Joins two tokens as they stand; ZP_JOIN is the one to use.
#define ZP_JOIN2(a, b) a##b
/// Joins two tokens after expanding them.
#define ZP_JOIN(a, b) ZP_JOIN2(a, b)
/// A name that no other use in the file has.
#define ZP_UNIQUE(prefix) ZP_JOIN(prefix, __COUNTER__)

/// @cond machinery
template <class X> std::type_identity<void> objc_nearest(X *, const objc_object *);
/// @endcond

/// The nearest superclass of T that was declared with ZP_CLASS; void for a root.
template <class T> using objc_superclassOf =
    typename decltype(objc_nearest(static_cast<T *>(nullptr), static_cast<T *>(nullptr)))::type;

/// What ZP_CLASS and ZP_PRIVATE_CLASS declare, with the record's visibility.
#define ZP_CLASS_MEMBERS(T, VISIBILITY)                                                                           \
    VISIBILITY static ::objc_classPair classRecord_that_ZP_IMPLEMENT_defines;                                     \
    /** The class object. */                                                                                      \
    static ::Class class_() { return &classRecord_that_ZP_IMPLEMENT_defines.cls; }                                \
    /** A new instance that the caller owns; initialise it before use. */                                         \
    static T *alloc() { return ::objc_allocate<T>(class_()); }                                                    \
    /** A new instance in a zone (null: the default zone) that the caller owns. */                                \
    static T *allocWithZone(::ZPZone *zone) { return ::objc_msgSend<T *>(class_(), "allocWithZone:"_sel, zone); } \
    /** A new, initialised instance that the caller owns. */                                                      \
    static T *new_() { return ::objc_msgSend<T *>(class_(), "new"_sel); }                                         \
    static void *operator new(::std::size_t) = delete;                                                            \
    template <class X>                                                                                            \
        requires(!::std::is_same_v<X, T>)                                                                         \
    friend ::std::type_identity<T> objc_nearest(X *, const T *) { return {}; }

/// Declares a struct to be a class: write it first in a struct that derives from another class. ZP_IMPLEMENT
/// defines it; without that the program does not link.
#define ZP_CLASS(T) ZP_CLASS_MEMBERS(T, ZP_EXPORT)
/// The same for a class that only its own library names.
#define ZP_PRIVATE_CLASS(T) ZP_CLASS_MEMBERS(T, )

/// @cond machinery
// A class that allocates as the root does is spared the message.
template <class T> ZP_INLINE T *objc_allocate(Class cls) {
    if (__atomic_load_n(&cls->info, __ATOMIC_ACQUIRE) & objc_allocatesPlainly) [[likely]]
        if (objc_object *object = objc_allocateInstance(cls)) return (T *)object;
    return objc_msgSend<T *>(cls, "alloc"_sel);
}

// ---- what a method's C++ type says -------------------------------------------------------------

template <class F> struct objc_function;
template <class C, class R, class... A> struct objc_member { static constexpr unsigned count = sizeof...(A); };
template <class R, class... A> struct objc_function<R (*)(A...)> { static constexpr unsigned count = sizeof...(A); };
template <class R, class... A> struct objc_function<R (*)(A...) noexcept> : objc_function<R (*)(A...)> {};
template <class C, class R, class... A> struct objc_function<R (C::*)(A...)> : objc_member<C, R, A...> {};
template <class C, class R, class... A> struct objc_function<R (C::*)(A...) const> : objc_member<C, R, A...> {};
template <class C, class R, class... A> struct objc_function<R (C::*)(A...) noexcept> : objc_member<C, R, A...> {};
template <class C, class R, class... A> struct objc_function<R (C::*)(A...) const noexcept> : objc_member<C, R, A...> {
};

constexpr int objc_colonCount(const char *s) {
    int n = 0;
    for (; *s; ++s) n += *s == ':';
    return n;
}

// Not constexpr: reaching it while a selector is checked is the compile error that names the mistake.
void the_selector_must_have_one_colon_for_each_argument();
void a_selector_must_not_be_empty();

/// A selector's text, checked at compile time to have `Colons` colons, or one less when the function
/// may take its receiver as a parameter.
template <unsigned Colons, unsigned OrColons = Colons> struct objc_selectorText {
    const char *text;
    consteval objc_selectorText(const char *s) : text(s) {
        if (!*s) a_selector_must_not_be_empty();
        unsigned n = objc_colonCount(s);
        if (n != Colons && n != OrColons) the_selector_must_have_one_colon_for_each_argument();
    }
};

// ---- implementations and frame invokers --------------------------------------------------------

template <class T> ZP_INLINE T objc_takeSlot(char *&slot) {
    using S = objc_stored<T>;
    union Value {
        char none;
        S value;
        Value() : none() {}
    } v;
    std::memcpy(static_cast<void *>(&v), slot, sizeof(S));
    slot += objc_slotSize<S>;
    if constexpr (std::is_reference_v<T>) return static_cast<T>(*v.value);
    else return v.value;
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
        auto call = [&](auto... values) -> R {
            return reinterpret_cast<R (*)(objc_object *, SEL, A...)>(implementation)(self, selector,
                                                                                     static_cast<A>(*values)...);
        };
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
            void *of[sizeof...(A) + 1];
        } taken{{slots.next(objc_slotSize<objc_stored<A>>)..., nullptr}};
        [&]<std::size_t... I>(std::index_sequence<I...>) {
            auto value = []<class T>(std::type_identity<T>, void *p) {
                if constexpr (std::is_reference_v<T>) return *static_cast<std::remove_reference_t<T> **>(p);
                else return static_cast<std::remove_const_t<T> *>(p);
            };
            if constexpr (std::is_void_v<R>) call(value(std::type_identity<A>{}, taken.of[I])...);
            else if constexpr (std::is_reference_v<R>) {
                auto *p = &call(value(std::type_identity<A>{}, taken.of[I])...);
                if (result) std::memcpy(result, &p, sizeof p);
            } else {
                R answer = call(value(std::type_identity<A>{}, taken.of[I])...);
                if (result) std::memcpy(result, static_cast<void *>(&answer), sizeof answer);
            }
        }
        (std::index_sequence_for<A...>{});
        return result;
    }
}

template <class R, class... A> void objc_describe(objc_method *m, IMP implementation) {
    m->types = objc_methodTypes<R, A...>();
    m->implementation = implementation;
    m->invoker = &objc_invokeFrame<R, A...>;
    m->argumentSize = objc_frameLength<R, A...>;
}

/// Writes the record of method M: a member function, or a function that takes its receiver first.
template <auto M, bool TakesSelf, class F = decltype(M)> struct objc_describer;

template <auto M, class C, class R, class... A> struct objc_memberDescriber {
    static R implementation(objc_object *self, SEL, A... arguments) {
        return (static_cast<C *>(self)->*M)(std::forward<A>(arguments)...);
    }
    static void describe(objc_method *m) { objc_describe<R, A...>(m, reinterpret_cast<IMP>(&implementation)); }
};
template <auto M, class C, class R, class... A> struct objc_describer<M, false, R (C::*)(A...)>
    : objc_memberDescriber<M, C, R, A...> {};
template <auto M, class C, class R, class... A> struct objc_describer<M, false, R (C::*)(A...) const>
    : objc_memberDescriber<M, C, R, A...> {};
template <auto M, class C, class R, class... A> struct objc_describer<M, false, R (C::*)(A...) noexcept>
    : objc_memberDescriber<M, C, R, A...> {};
template <auto M, class C, class R, class... A> struct objc_describer<M, false, R (C::*)(A...) const noexcept>
    : objc_memberDescriber<M, C, R, A...> {};
template <auto M, class S, class R, class... A> struct objc_describer<M, true, R (*)(S, A...)> {
    static R implementation(objc_object *self, SEL, A... arguments) {
        return M((S)self, std::forward<A>(arguments)...);
    }
    static void describe(objc_method *m) { objc_describe<R, A...>(m, reinterpret_cast<IMP>(&implementation)); }
};
template <auto M, class S, class R, class... A> struct objc_describer<M, true, R (*)(S, A...) noexcept>
    : objc_describer<M, true, R (*)(S, A...)> {};
template <auto M, class R, class... A> struct objc_describer<M, false, R (*)(A...)> {
    static R implementation(objc_object *, SEL, A... arguments) { return M(std::forward<A>(arguments)...); }
    static void describe(objc_method *m) { objc_describe<R, A...>(m, reinterpret_cast<IMP>(&implementation)); }
};
template <auto M, class R, class... A> struct objc_describer<M, false, R (*)(A...) noexcept>
    : objc_describer<M, false, R (*)(A...)> {};

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
/// A variadic method: M takes the named arguments and the rest as a `va_list`.
template <auto M, class C, class R, class Named> struct objc_variadicImplementation;
template <auto M, class C, class R, class... N> struct objc_variadicImplementation<M, C, R, objc_typeList<N...>> {
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
    static void describe(objc_method *m) {
        objc_describe<R, N...>(m, reinterpret_cast<IMP>(&implementation));
        m->invoker = nullptr;  // what follows the named arguments is in no frame
    }
};
#pragma GCC diagnostic pop
template <auto M, class F = decltype(M)> struct objc_variadicDescriber;
template <auto M, class C, class R, class... A> struct objc_variadicDescriber<M, R (C::*)(A...)>
    : objc_variadicImplementation<M, C, R, typename objc_dropLast<objc_typeList<>, A...>::type> {};
template <auto M, class S, class R, class... A> struct objc_variadicDescriber<M, R (*)(S, A...)>
    : objc_variadicImplementation<M, S, R, typename objc_dropLast<objc_typeList<>, A...>::type> {};

struct objc_immortal : objc_object {
    id same() { return this; }
    void nothing() {}
    unsigned forEver() { return 0xFFFFFFFF; }
};
/// @endcond

// ---- registration ------------------------------------------------------------------------------

/// Registers methods with a class or a category; made by ZP_IMPLEMENT and ZP_CATEGORY, before `main`. A selector
/// whose colons do not fit the function's arguments is a compile error; a method that is registered twice stops the
/// process when the class is first used. Its templates are always inlined: g++ gives their instances external
/// linkage even when M belongs to an unnamed namespace, so methods of two files' local classes with the same names
/// would be taken for each other.
struct objc_implementer {
    Class cls;  ///< the class that gets the methods

    /// An instance method: a member function of the class or of a struct derived from its front.
    template <auto M>
        requires(std::is_member_function_pointer_v<decltype(M)>)
    ZP_INLINE const objc_implementer &method(objc_selectorText<objc_function<decltype(M)>::count> name) const {
        objc_loadMethod(cls, name.text, &objc_describer<M, false>::describe);
        return *this;
    }
    /// An instance method: a function whose first parameter is the receiver.
    template <auto M>
        requires(!std::is_member_function_pointer_v<decltype(M)>)
    ZP_INLINE const objc_implementer &method(objc_selectorText<objc_function<decltype(+M)>::count - 1> name) const {
        objc_loadMethod(cls, name.text, &objc_describer<+M, true>::describe);
        return *this;
    }
    /// A class method: a static function whose first parameter is the receiving `Class`.
    template <auto M> ZP_INLINE const objc_implementer &classMethod(
        objc_selectorText<objc_function<decltype(+M)>::count - 1> name) const {
        objc_loadMethod(cls->counterpart, name.text, &objc_describer<+M, true>::describe);
        return *this;
    }
    /// A class method that has no use for its receiver: a static function of the arguments alone.
    template <auto M> ZP_INLINE const objc_implementer &plainClassMethod(
        objc_selectorText<objc_function<decltype(+M)>::count> name) const {
        objc_loadMethod(cls->counterpart, name.text, &objc_describer<+M, false>::describe);
        return *this;
    }
    /// An instance method with unnamed arguments behind the named ones, which M takes as a `va_list`.
    template <auto M>
    ZP_INLINE const objc_implementer &variadic(objc_selectorText<objc_function<decltype(M)>::count - 1> name) const {
        objc_loadMethod(cls, name.text, &objc_variadicDescriber<M>::describe);
        return *this;
    }
    /// A class method of that kind: M takes the receiving class first.
    template <auto M> ZP_INLINE const objc_implementer &variadicClassMethod(
        objc_selectorText<objc_function<decltype(+M)>::count - 2> name) const {
        objc_loadMethod(cls->counterpart, name.text, &objc_variadicDescriber<+M>::describe);
        return *this;
    }
    /// The class adopts the protocols P, which `conformsToProtocol:` then answers; whether it has their methods is
    /// not checked.
    template <class... P> const objc_implementer &adopts() const {
        (objc_loadProtocol(cls, P::protocol()), ...);
        return *this;
    }
    /// A root class whose retain, release and retainCount count in the header, and whose alloc and
    /// allocWithZone: only allocate.
    const objc_implementer &defaultCounting() const {
        cls->info |= objc_defaultCounting | objc_defaultDealloc;
        cls->counterpart->info |= objc_defaultAllocation;
        return *this;
    }
    /// The class version that archives record; 0 when not said.
    const objc_implementer &version(int number) const {
        cls->version = number;
        return *this;
    }
    /// Instances may live outside the allocator (static objects): their extra references are kept in
    /// the side table instead of beside the instance.
    const objc_implementer &staticInstances() const {
        cls->info &= ~objc_countsInHeader;
        return *this;
    }
    /// Instances live as long as the process: `retain`, `autorelease` and `release` do nothing, and `retainCount`
    /// answers 0xFFFFFFFF.
    const objc_implementer &immortal() const {
        return method<&objc_immortal::same>("retain")
            .method<&objc_immortal::same>("autorelease")
            .method<&objc_immortal::nothing>("release")
            .method<&objc_immortal::forEver>("retainCount");
    }
};

/// @cond machinery
template <class T> inline constexpr objc_fieldHooks objc_hooksOf = {
    std::is_trivially_default_constructible_v<T> ? nullptr : +[](void *p) {
        if constexpr (!std::is_trivially_default_constructible_v<T>) ::new (p) T;
    },
    std::is_trivially_copyable_v<T> ? nullptr : +[](void *p, const void *source) {
        if constexpr (!std::is_trivially_copyable_v<T> && std::is_copy_constructible_v<T>)
            ::new (p) T(*static_cast<const T *>(source));
        else if constexpr (!std::is_trivially_copyable_v<T>)
            objc_fatal("an instance whose C++ fields cannot be copied was copied");
    },
    std::is_trivially_destructible_v<T> ? nullptr : +[](void *p) {
        if constexpr (!std::is_trivially_destructible_v<T>) static_cast<T *>(p)->~T();
    },
};

template <class T> constexpr objc_class *objc_rootMetaclass() {
    if constexpr (std::is_void_v<objc_superclassOf<T>>) return &T::classRecord_that_ZP_IMPLEMENT_defines.meta;
    else return objc_rootMetaclass<objc_superclassOf<T>>();
}

template <class T> constexpr objc_classPair objc_classRecord(const char *name) {
    using Super = objc_superclassOf<T>;
    static_assert(!std::is_polymorphic_v<T>,
                  "a class has no virtual functions: its methods are what subclasses override");
    static_assert(sizeof(T) < 0x7FFFFFFF && alignof(T) <= 16, "instances are aligned to 16 bytes at most");
    constexpr bool root = std::is_void_v<Super>;
    constexpr bool plain = std::is_trivially_default_constructible_v<T> && std::is_trivially_copyable_v<T> &&
                           std::is_trivially_destructible_v<T>;
    objc_classPair &self = T::classRecord_that_ZP_IMPLEMENT_defines;
    Class superclass = nullptr, superMeta = &self.cls;
    if constexpr (!root) {
        superclass = &Super::classRecord_that_ZP_IMPLEMENT_defines.cls;
        superMeta = &Super::classRecord_that_ZP_IMPLEMENT_defines.meta;
    }
    unsigned info = objc_countsInHeader | (root ? unsigned(objc_isRoot) : 0u) |
                    (alignof(T) > 8 ? unsigned(objc_hasWideAlignment) : 0u);
    return {
        {{&self.meta},
         &objc_emptyCache,
         superclass,
         info,
         0,
         name,
         sizeof(T),
         0,
         plain ? nullptr : &objc_hooksOf<T>,
         nullptr,
         nullptr,
         &self.meta,
         nullptr},
        {{objc_rootMetaclass<T>()},
         &objc_emptyCache,
         superMeta,
         objc_isMetaclass | (root ? unsigned(objc_isRoot) : 0u),
         0,
         name,
         sizeof(objc_class),
         0,
         nullptr,
         nullptr,
         nullptr,
         &self.cls,
         nullptr},
    };
}

template <class T> objc_implementer objc_implement() {
    objc_loadClass(&T::classRecord_that_ZP_IMPLEMENT_defines.cls);
    return {&T::classRecord_that_ZP_IMPLEMENT_defines.cls};
}
/// @endcond

/// Defines a class that ZP_CLASS declared and begins the list of its methods; once, in a source file.
#define ZP_IMPLEMENT(...)                                                           \
    constinit ::objc_classPair __VA_ARGS__::classRecord_that_ZP_IMPLEMENT_defines = \
        ::objc_classRecord<__VA_ARGS__>(#__VA_ARGS__);                              \
    [[maybe_unused]] static const ::objc_implementer ZP_UNIQUE(objc_methodsOf_) = ::objc_implement<__VA_ARGS__>()

/// The same for one instance of a class template: ZP_IMPLEMENT_INSTANCE(Box<int>), before its first use.
#define ZP_IMPLEMENT_INSTANCE(...)                                                              \
    template <> constinit ::objc_classPair __VA_ARGS__::classRecord_that_ZP_IMPLEMENT_defines = \
        ::objc_classRecord<__VA_ARGS__>(#__VA_ARGS__);                                          \
    [[maybe_unused]] static const ::objc_implementer ZP_UNIQUE(objc_methodsOf_) = ::objc_implement<__VA_ARGS__>()

/// @cond machinery
inline objc_implementer objc_category(Class cls, const char *name) {
    objc_loadCategory(cls, name);
    return {cls};
}
/// @endcond

/// Begins a list of methods that a file adds to a class of another file. A category's methods take the place of the
/// class's own of the same selector; of two categories with one selector, those of the file whose initialisers run
/// later.
#define ZP_CATEGORY(T, Name) \
    [[maybe_unused]] static const ::objc_implementer ZP_UNIQUE(objc_category_) = ::objc_category(T::class_(), #Name)

/// Sends to the superclass of T's implementation: `objc_super<T>(this).send<void>("dealloc"_sel)`. T is the class
/// whose method sends.
template <class T> struct objc_super {
    objc_object *self;  ///< the receiver
    /// The receiver of the messages, which must not be null and is not retained.
    explicit objc_super(objc_object *receiver) : self(receiver) {}
    /// Sends the message to the superclass's method; the types must be the method's own.
    template <class R = void, class... A> R send(SEL selector, A... arguments) const {
        return objc_msgSendSuper<R>(self, T::class_()->superclass, selector, arguments...);
    }
};

#pragma GCC diagnostic pop
