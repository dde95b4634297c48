// SPDX-License-Identifier: MIT
// Sending messages.
//
// A send reads one bucket of the receiver's class record, or else one of the class's table, compares the
// selector and calls through the method's exact C++ type. A miss goes to a cold function of the same
// signature, which looks the method up (and remembers what it found), or gathers the arguments into a
// frame and sends `forward::`.
//
// A front's member is declared as any C++ function and says with one word that it sends:
//
//     unsigned count() ZP_ASKS();                          // answers what the message answers
//     void addObject(id object) ZP_TELLS(object);          // answers nothing
//     static ZPArray *array() ZP_CLASS_ASKS();             // sent to the class
//
// The selector follows from the member's name: its words, joined with `_`, each with a colon when there are
// arguments. A trailing `_` keeps a name from being a keyword and does not count.
#pragma once

#include <Bedrock/platform/ZPClass.h>

#include <cstring>
#include <new>
#include <utility>

// g++ warns of va_list's own attributes wherever it is a template argument.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-attributes"
#pragma GCC diagnostic ignored "-Wattributes"

/// @cond machinery
// Hidden, and with it everything that is made for a text: each library has its own.
template <unsigned N> struct ZP_HIDDEN objc_text {
    char text[N];
    consteval objc_text(const char (&s)[N]) {
        for (unsigned i = 0; i < N; ++i) text[i] = s[i];
    }
};

template <objc_text Name> inline constinit SEL objc_selectorSlot = nullptr;
/// @endcond

/// `"objectAtIndex:"_sel`: the selector of a literal name, registered on first use and one load afterwards. Any
/// thread.
template <objc_text Name> ZP_INLINE SEL operator""_sel() {
    SEL selector = __atomic_load_n(&objc_selectorSlot<Name>, __ATOMIC_ACQUIRE);
    if (selector) [[likely]]
        return selector;
    return objc_registerSelector(&objc_selectorSlot<Name>, Name.text);
}

/// The arguments of a message that its receiver does not implement, as `-forward::` receives them.
/// `arguments` holds, in slots of whole words: the address of the result when `hasHiddenResult`, the
/// receiver, the selector, then the rest. The handler stores what the message answers at `result`,
/// which is zeroed and valid, as the frame is, until `-forward::` returns.
struct objc_frame {
    const char *types;  ///< the call site's own type string
    void *arguments;  ///< receiver, selector and the rest, each in its place
    unsigned length;  ///< of the arguments, in bytes
    unsigned resultSize;  ///< in bytes; 0 for none
    void *result;  ///< where the answer goes
    BOOL hasHiddenResult;  ///< the answer is returned in memory
};

/// @cond machinery
template <class T>
inline constexpr unsigned objc_slotSize = (sizeof(T) + sizeof(void *) - 1) / sizeof(void *) * sizeof(void *);
template <> inline constexpr unsigned objc_slotSize<void> = 0;

template <class T> consteval bool objc_resultIsHidden() {
    if constexpr ((std::is_class_v<T> || std::is_union_v<T>)&&!std::is_same_v<T, id>)
        return !(sizeof(T) == 1 || sizeof(T) == 2 || sizeof(T) == 4 || sizeof(T) == 8);
    else return false;
}

template <class T> using objc_stored = std::conditional_t<std::is_reference_v<T>, std::remove_reference_t<T> *, T>;
// What the machine copies as bytes, as arguments and results too; to be assigned is no part of it.
template <class T> inline constexpr bool objc_copiesAsBytes =
    std::is_trivially_copy_constructible_v<T> &&std::is_trivially_destructible_v<T>;
template <class T> inline constexpr bool objc_fitsFrame =
    std::is_void_v<T> || std::is_reference_v<T> || objc_copiesAsBytes<T>;

template <class R, class... A>
inline constexpr unsigned objc_frameLength = (objc_resultIsHidden<R>() ? sizeof(void *) : 0) + 2 * sizeof(void *) +
                                             (0 + ... + objc_slotSize<objc_stored<A>>);
/// @endcond

extern "C" {
/// Sends `forward::` for a message that has no implementation.
ZP_EXPORT void objc_forwardFrame(objc_object *receiver, SEL selector, objc_frame *frame);
/// Sends a message whose arguments lie in a frame, as `objc_frame` describes it; the receiver and the
/// selector in the frame are ignored. `result` (may be null) gets `resultSize` bytes at most.
ZP_EXPORT void objc_sendFrame(objc_object *receiver, SEL selector, unsigned length, void *arguments, void *result,
                              unsigned resultSize);
}

/// @cond machinery
// What each part of a frame needs is made once for a type, not for each signature: every client compiles these.
template <class T> ZP_INLINE char *objc_putSlot(char *slot, T &value) {
    if constexpr (objc_copiesAsBytes<T>) std::memcpy(slot, static_cast<const void *>(&value), sizeof value);
    return slot + objc_slotSize<T>;
}
template <class A> ZP_INLINE char *objc_putArgument(char *slot, std::remove_reference_t<A> &argument) {
    if constexpr (std::is_reference_v<A>) {
        auto *address = &argument;
        return objc_putSlot(slot, address);
    } else return objc_putSlot(slot, argument);
}
ZP_INLINE char *objc_beginSlots(char *slot, void *hiddenResult, objc_object *receiver, SEL selector) {
    if (hiddenResult) slot = objc_putSlot(slot, hiddenResult);
    return objc_putSlot(objc_putSlot(slot, receiver), selector);
}

// Room for what a forwarded message answers.
template <class R> struct objc_answer {
    static constexpr unsigned size = objc_slotSize<objc_stored<R>>;
    alignas(16) char bytes[size] = {};

    ZP_INLINE R take() {
        if constexpr (std::is_reference_v<R>) return **reinterpret_cast<std::remove_reference_t<R> **>(bytes);
        else {
            union Answer {
                char none;
                R value;
                Answer() : none() {}
                ~Answer() {}
            } answer;
            std::memcpy(static_cast<void *>(&answer), bytes, sizeof(R));
            return answer.value;
        }
    }
};
template <> struct objc_answer<void> {
    static constexpr unsigned size = 0;
    alignas(16) char bytes[1] = {};
    ZP_INLINE void take() {}
};

template <class R, class... A>
ZP_HIDDEN ZP_COLD R objc_sendForward(objc_object *receiver, SEL selector, A... arguments) {
    if constexpr (!(objc_fitsFrame<R> && ... && objc_fitsFrame<A>)) {
        objc_fatal("%s: not implemented, and its C++ types cannot be forwarded", sel_getName(selector));
    } else {
        constexpr unsigned length = objc_frameLength<R, A...>;
        alignas(16) char slots[length];
        objc_answer<R> answer;
        constexpr bool isHidden = objc_resultIsHidden<R>();
        [[maybe_unused]] char *slot = objc_beginSlots(slots, isHidden ? answer.bytes : nullptr, receiver, selector);
        ((slot = objc_putArgument<A>(slot, arguments)), ...);
        objc_frame frame{
            objc_types<R, id, SEL, A...>.text, slots, length, answer.size, answer.bytes, isHidden ? YES : NO};
        objc_forwardFrame(receiver, selector, &frame);
        return answer.take();
    }
}

template <class R, class... A>
ZP_HIDDEN ZP_COLD R objc_sendSlowly(objc_object *receiver, SEL selector, A... arguments) {
    IMP implementation = objc_lookUpForSend(receiver, selector);
    if (!implementation) return objc_sendForward<R, A...>(receiver, selector, std::forward<A>(arguments)...);
    return reinterpret_cast<R (*)(objc_object *, SEL, A...)>(implementation)(receiver, selector,
                                                                             std::forward<A>(arguments)...);
}

// The bucket of a class that a send looks at: of the few in the record, then of the table. One that holds another
// selector says nothing about whether the class has a method.
ZP_INLINE const objc_bucket *objc_recordBucket(Class cls, std::uintptr_t selector) {
    return reinterpret_cast<const objc_bucket *>(reinterpret_cast<const char *>(cls->first) +
                                                 ((selector >> 1) & (sizeof cls->first - sizeof(objc_bucket))));
}
ZP_INLINE const objc_bucket *objc_tableBucket(Class cls, std::uintptr_t selector) {
    std::uintptr_t mask = __atomic_load_n(&cls->mask, __ATOMIC_ACQUIRE);  // before the buckets
    const objc_bucket *buckets = __atomic_load_n(&cls->buckets, __ATOMIC_ACQUIRE);
    return reinterpret_cast<const objc_bucket *>(reinterpret_cast<const char *>(buckets) + ((selector >> 1) & mask));
}
// The implementation that the buckets hold for a selector, null when they hold none.
ZP_INLINE IMP objc_cached(Class cls, SEL selector) {
    auto wanted = reinterpret_cast<std::uintptr_t>(selector);
    const objc_bucket *bucket = objc_recordBucket(cls, wanted);
    // The record's bucket is the likelier, so that the send falls through to it; the table stays near.
    if (__builtin_expect_with_probability(__atomic_load_n(&bucket->selector, __ATOMIC_ACQUIRE) != wanted, 0, 0.8)) {
        bucket = objc_tableBucket(cls, wanted);
        if (__atomic_load_n(&bucket->selector, __ATOMIC_ACQUIRE) != wanted) [[unlikely]]
            return nullptr;
    }
    IMP implementation = __atomic_load_n(&bucket->implementation, __ATOMIC_RELAXED);
    if (!implementation) __builtin_unreachable();
    return implementation;
}

// One function a signature, whoever sends: every front that a client includes is an instance.
template <bool isChecked, class R, class... A>
ZP_INLINE R objc_send(objc_object *receiver, SEL selector, A... arguments) {
    if (!receiver) [[unlikely]] {
        if constexpr (std::is_void_v<R>) return;
        else if constexpr (std::is_reference_v<R>)
            objc_fatal("%s: answers a reference and was sent to null", sel_getName(selector));
        else return R{};
    }
    if constexpr (isChecked) objc_checkSend(receiver->isa, selector, objc_types<R, id, SEL, A...>.text);
    IMP implementation = objc_cached(receiver->isa, selector);
    if (!implementation) [[unlikely]]
        return objc_sendSlowly<R, A...>(receiver, selector, static_cast<A &&>(arguments)...);
    return reinterpret_cast<R (*)(objc_object *, SEL, A...)>(implementation)(receiver, selector,
                                                                             static_cast<A &&>(arguments)...);
}
/// @endcond

/// As `objc_msgSend`, without comparing the C++ types with the method's, also in checked builds.
template <class R = void, class... A>
ZP_INLINE R objc_msgSendUnchecked(objc_object *receiver, SEL selector, A... arguments) {
    return objc_send<false, R, A...>(receiver, selector, std::forward<A>(arguments)...);
}

/// Sends a message and answers its result. A message to null answers a zero of the result type; one that the
/// receiver does not implement goes to its `forward::`, which for most classes raises ZPInvalidArgumentException.
/// The types must be the method's own: in checked builds a send whose types do not match the method's type string
/// stops the process with a message that names both; otherwise it is undefined. Any thread.
template <class R = void, class... A> ZP_INLINE R objc_msgSend(id receiver, SEL selector, A... arguments) {
    return objc_send<ZP_CHECKED, R, A...>(objc_receiver(receiver.pointer()), selector, std::forward<A>(arguments)...);
}

/// Sends a message, to a receiver that is not null, with the implementation that `superclass` has for it: the
/// superclass of the class whose method sends. The types must be the method's own. See `objc_super`.
template <class R = void, class... A> R objc_msgSendSuper(id receiver, Class superclass, SEL selector, A... arguments) {
#if ZP_CHECKED
    objc_checkSend(superclass, selector, objc_methodTypes<R, A...>());
#endif
    IMP implementation = objc_lookUpForSuper(superclass, selector);
    if (!implementation) [[unlikely]]
        return objc_sendForward<R, A...>(receiver.pointer(), selector, std::forward<A>(arguments)...);
    return reinterpret_cast<R (*)(objc_object *, SEL, A...)>(implementation)(receiver.pointer(), selector,
                                                                             std::forward<A>(arguments)...);
}

/// An argument as it travels behind the `...` of a variadic method.
template <class T> ZP_INLINE auto objc_variadicArgument(T value) {
    if constexpr (std::is_class_v<T> && std::is_convertible_v<T, id>) return id(value).pointer();
    else {
        static_assert(std::is_scalar_v<T>,
                      "only numbers, pointers and objects can follow the named arguments of a variadic method");
        return value;
    }
}

/// Sends a message to a variadic method that answers R and whose named arguments have the types N:
/// `objc_sendVariadic<ZPString *, ZPString *>::send(receiver, "stringWithFormat:"_sel, format, 1, 2.5)`. A front says
/// it with `ZP_ASKS_WITH`.
template <class R, class... N> struct objc_sendVariadic {
    /// Sends the message; the arguments behind the named ones are the variadic ones: numbers, pointers and objects.
    /// Null answers a zero. A receiver without the method gets a frame of the named arguments alone in `forward::`.
    template <class... A> static ZP_INLINE R send(id receiver, SEL selector, N... named, A... arguments) {
        objc_object *self = objc_receiver(receiver.pointer());
        if (!self) [[unlikely]] {
            if constexpr (std::is_void_v<R>) return;
            else return R{};
        }
#if ZP_CHECKED
        objc_checkSend(self->isa, selector, objc_methodTypes<R, N...>());
#endif
        IMP implementation = objc_lookUpForSend(self, selector);
        if (!implementation) return objc_sendForward<R, N...>(self, selector, named...);
        return reinterpret_cast<R (*)(objc_object *, SEL, N..., ...)>(
            implementation)(self, selector, named..., objc_variadicArgument(arguments)...);
    }
};

/// Sends a message with an argument frame: `length` bytes at `frame` as `objc_frame` describes them. Answers the
/// result as R, which must be trivially copyable, and a zero from null; a hidden structure result goes where the
/// frame's first word points.
template <class R = id> R objc_msgSendv(id receiver, SEL selector, unsigned length, void *frame) {
    if constexpr (std::is_void_v<R>) {
        if (receiver) objc_sendFrame(receiver.pointer(), selector, length, frame, nullptr, 0);
    } else {
        static_assert(objc_copiesAsBytes<R>);
        union Answer {
            char zero[sizeof(R) < 8 ? 8 : sizeof(R)];
            R value;
            Answer() : zero() {}
        } answer;
        if (receiver) objc_sendFrame(receiver.pointer(), selector, length, frame, &answer, sizeof answer);
        return answer.value;
    }
}

// ---- fronts ------------------------------------------------------------------------------------

/// @cond machinery
// The words of a name, 0 when it is no word: what a name must have as many of as there are arguments, or one when
// there are none.
consteval unsigned objc_wordCount(const char *name) {
    while (*name == '_') ++name;
    if (!*name) return 0;
    unsigned words = 1;
    for (; *name; ++name)
        if (*name == '_' && name[1]) ++words;
    return words;
}
consteval bool objc_nameFits(const char *name, unsigned arguments) {
    return objc_wordCount(name) == (arguments ? arguments : 1);
}

consteval unsigned objc_colonsIn(const char *selector) {
    unsigned colons = 0;
    for (; *selector; ++selector) colons += *selector == ':';
    return colons;
}

template <class... A> char (&objc_argumentCount(A &&...))[sizeof...(A) + 1];

// One for each front's member, hidden as what is made for a selector's literal is.
template <class Member> ZP_HIDDEN inline constinit SEL objc_frontSlot = nullptr;

ZP_INLINE SEL objc_frontSelector(SEL &slot, const char *name, unsigned arguments) {
    SEL selector = __atomic_load_n(&slot, __ATOMIC_ACQUIRE);
    if (selector) [[likely]]
        return selector;
    return objc_registerFront(&slot, name, arguments);
}

// A message about to be sent: what it is converted to is its result type.
template <class Send> struct objc_asking {
    Send send;
    template <class R> ZP_INLINE R as() const { return send.template operator()<R>(); }
    template <class R> ZP_INLINE operator R() const { return as<R>(); }
};

template <class Send> objc_asking(Send) -> objc_asking<Send>;

template <class... A> ZP_INLINE auto objc_ask(id receiver, SEL &slot, const char *name, A &...arguments) {
    return objc_asking{
        [receiver, &slot, name, &arguments...]<class R>() __attribute__((always_inline))
            ->R{return objc_send<ZP_CHECKED, R, A...>(objc_receiver(receiver.pointer()),
                                                      objc_frontSelector(slot, name, sizeof...(A)), arguments...);
}
}
;
}
template <class... A> ZP_INLINE void objc_tell(id receiver, SEL &slot, const char *name, A &...arguments) {
    objc_send<ZP_CHECKED, void, A...>(objc_receiver(receiver.pointer()), objc_frontSelector(slot, name, sizeof...(A)),
                                      arguments...);
}

template <class... A> ZP_INLINE auto objc_askAs(id receiver, SEL selector, A &...arguments) {
    return objc_asking{[=, &arguments...]<class R>() __attribute__((always_inline))
                           ->R{return objc_msgSend<R, A...>(receiver, selector, arguments...);
}
}
;
}

// A variadic message about to be sent: called with what follows the named arguments.
template <class... N> ZP_INLINE auto objc_askWith(id receiver, SEL &slot, const char *name, N... named) {
    return [ =, &slot ](auto... rest) __attribute__((always_inline)) {
        return objc_asking{[=, &slot]<class R>() __attribute__((always_inline))
                               ->R{return objc_sendVariadic<R, N...>::send(
                                   receiver, objc_frontSelector(slot, name, sizeof...(N)), named..., rest...);
    }
};
}
;
}

#define OBJC_FRONT(SEND, RECEIVER, ...)                                                              \
    {                                                                                                \
        struct objc_member;                                                                          \
        static_assert(::objc_nameFits(__func__, sizeof(::objc_argumentCount(__VA_ARGS__)) - 1),      \
                      "a front's name has one word for each argument that it sends, joined with _"); \
        return SEND(RECEIVER, ::objc_frontSlot<objc_member>, __func__ __VA_OPT__(, ) __VA_ARGS__);   \
    }
#define OBJC_FRONT_AS(RECEIVER, SELECTOR, TO, ...)                                                \
    {                                                                                             \
        static_assert(::objc_colonsIn(SELECTOR) == sizeof(::objc_argumentCount(__VA_ARGS__)) - 1, \
                      "a selector has one colon for each argument that is sent");                 \
        return ::objc_askAs(RECEIVER, SELECTOR##_sel __VA_OPT__(, ) __VA_ARGS__) TO;              \
    }
#define OBJC_FRONT_WITH(RECEIVER, REST, ...)                                                               \
    {                                                                                                      \
        struct objc_member;                                                                                \
        static_assert(::objc_nameFits(__func__, sizeof(::objc_argumentCount(__VA_ARGS__)) - 1),            \
                      "a front's name has one word for each named argument that it sends, joined with _"); \
        return ::objc_askWith(RECEIVER, ::objc_frontSlot<objc_member>, __func__, __VA_ARGS__) REST;        \
    }
/// @endcond

/// The body of a front's member that answers: sends the message that the member is named for, with these arguments, all
/// of the member's in their order, and answers its result.
#define ZP_ASKS(...) &OBJC_FRONT(::objc_ask, this __VA_OPT__(, ) __VA_ARGS__)
/// The same for a member that answers nothing; its result type is void.
#define ZP_TELLS(...) &OBJC_FRONT(::objc_tell, this __VA_OPT__(, ) __VA_ARGS__)
/// The same for a static member, which sends to the class.
#define ZP_CLASS_ASKS(...) OBJC_FRONT(::objc_ask, class_() __VA_OPT__(, ) __VA_ARGS__)
/// The same for a static member that answers nothing.
#define ZP_CLASS_TELLS(...) OBJC_FRONT(::objc_tell, class_() __VA_OPT__(, ) __VA_ARGS__)

/// The body of a front's member whose selector is not what its name says: `ZP_ASKS_AS("indexOf:::", object, at, back)`.
#define ZP_ASKS_AS(selector, ...) &OBJC_FRONT_AS(this, selector, , __VA_ARGS__)
/// The same for a member that answers nothing; its result type is void.
#define ZP_TELLS_AS(selector, ...) &OBJC_FRONT_AS(this, selector, .template as<void>(), __VA_ARGS__)
/// The same for a static member, which sends to the class.
#define ZP_CLASS_ASKS_AS(selector, ...) OBJC_FRONT_AS(class_(), selector, , __VA_ARGS__)
/// The same for a static member that answers nothing.
#define ZP_CLASS_TELLS_AS(selector, ...) OBJC_FRONT_AS(class_(), selector, .template as<void>(), __VA_ARGS__)

/// The body of a front's member for a method with unnamed arguments, which are a pack of the member's, here named
/// first: `template <class... A> void note(ZPString *format, A... rest) ZP_TELLS_WITH(rest, format)`. They are numbers,
/// pointers and objects.
#define ZP_ASKS_WITH(rest, ...) &OBJC_FRONT_WITH(this, (rest...), __VA_ARGS__)
/// The same for a member that answers nothing; its result type is void.
#define ZP_TELLS_WITH(rest, ...) &OBJC_FRONT_WITH(this, (rest...).template as<void>(), __VA_ARGS__)
/// The same for a static member, which sends to the class.
#define ZP_CLASS_ASKS_WITH(rest, ...) OBJC_FRONT_WITH(class_(), (rest...), __VA_ARGS__)
/// The same for a static member that answers nothing.
#define ZP_CLASS_TELLS_WITH(rest, ...) OBJC_FRONT_WITH(class_(), (rest...).template as<void>(), __VA_ARGS__)

#pragma GCC diagnostic pop
