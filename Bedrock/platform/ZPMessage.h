// SPDX-License-Identifier: MIT
// Sending messages.
//
// A send reads the receiver's class, its method cache and one bucket, compares the selector and
// calls through the method's exact C++ type. A miss goes to a cold function of the same signature,
// which looks the method up (filling the cache), or gathers the arguments into a frame and sends
// `forward::`.
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
    if constexpr (std::is_class_v<T> && !std::is_same_v<T, id>)
        return !(sizeof(T) == 1 || sizeof(T) == 2 || sizeof(T) == 4 || sizeof(T) == 8);
    else return false;
}

template <class T> using objc_stored = std::conditional_t<std::is_reference_v<T>, std::remove_reference_t<T> *, T>;
template <class T> inline constexpr bool objc_fitsFrame =
    std::is_void_v<T> || std::is_reference_v<T> || std::is_trivially_copyable_v<T>;

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
template <class T> ZP_INLINE char *objc_putSlot(char *slot, T value) {
    if constexpr (std::is_trivially_copyable_v<T>) std::memcpy(slot, &value, sizeof value);
    return slot + objc_slotSize<T>;
}

template <class R, class... A>
ZP_HIDDEN ZP_COLD R objc_sendForward(objc_object *receiver, SEL selector, A... arguments) {
    if constexpr (!(objc_fitsFrame<R> && ... && objc_fitsFrame<A>)) {
        objc_fatal("%s: not implemented, and its C++ types cannot be forwarded", sel_getName(selector));
    } else {
        constexpr unsigned length = objc_frameLength<R, A...>;
        alignas(16) char slots[length];
        alignas(16) char result[std::is_void_v<R> ? 1 : objc_slotSize<objc_stored<R>>] = {};
        char *slot = slots;
        if constexpr (objc_resultIsHidden<R>()) slot = objc_putSlot<void *>(slot, result);
        slot = objc_putSlot(slot, receiver);
        slot = objc_putSlot(slot, selector);
        ((slot = objc_putSlot<objc_stored<A>>(slot,
                                              [](auto &a) -> objc_stored<A> {
                                                  if constexpr (std::is_reference_v<A>) return &a;
                                                  else return a;
                                              }(arguments))),
         ...);
        objc_frame frame{objc_methodTypes<R, A...>(),
                         slots,
                         length,
                         std::is_void_v<R> ? 0u : unsigned(objc_slotSize<objc_stored<R>>),
                         result,
                         objc_resultIsHidden<R>() ? YES : NO};
        objc_forwardFrame(receiver, selector, &frame);
        if constexpr (std::is_reference_v<R>) return **reinterpret_cast<std::remove_reference_t<R> **>(result);
        else if constexpr (!std::is_void_v<R>) {
            union Answer {
                char none;
                R value;
                Answer() : none() {}
                ~Answer() {}
            } answer;
            std::memcpy(static_cast<void *>(&answer), result, sizeof(R));
            return answer.value;
        }
    }
}

template <class R, class... A>
ZP_HIDDEN ZP_COLD R objc_sendSlowly(objc_object *receiver, SEL selector, A... arguments) {
    IMP implementation = objc_lookUpForSend(receiver, selector);
    if (!implementation) return objc_sendForward<R, A...>(receiver, selector, std::forward<A>(arguments)...);
    return reinterpret_cast<R (*)(objc_object *, SEL, A...)>(implementation)(receiver, selector,
                                                                             std::forward<A>(arguments)...);
}

ZP_INLINE objc_cacheBucket *objc_cachedMethod(objc_object *receiver, SEL selector) {
    objc_cache *cache = __atomic_load_n(&receiver->isa->cache, __ATOMIC_ACQUIRE);
    return reinterpret_cast<objc_cacheBucket *>(reinterpret_cast<char *>(cache->buckets) +
                                                ((reinterpret_cast<std::uintptr_t>(selector) >> 1) & cache->mask));
}
/// @endcond

/// As `objc_msgSend`, without comparing the C++ types with the method's, also in checked builds.
template <class R = void, class... A>
ZP_INLINE R objc_msgSendUnchecked(objc_object *receiver, SEL selector, A... arguments) {
    if (!receiver) [[unlikely]] {
        if constexpr (std::is_void_v<R>) return;
        else if constexpr (std::is_reference_v<R>)
            objc_fatal("%s: answers a reference and was sent to null", sel_getName(selector));
        else return R{};
    }
    objc_cacheBucket *bucket = objc_cachedMethod(receiver, selector);
    if (__atomic_load_n(&bucket->selector, __ATOMIC_ACQUIRE) != selector) [[unlikely]]
        return objc_sendSlowly<R, A...>(receiver, selector, std::forward<A>(arguments)...);
    return reinterpret_cast<R (*)(objc_object *, SEL, A...)>(bucket->implementation)(receiver, selector,
                                                                                     std::forward<A>(arguments)...);
}

/// Sends a message and answers its result. A message to null answers a zero of the result type; one that the
/// receiver does not implement goes to its `forward::`, which for most classes raises ZPInvalidArgumentException.
/// The types must be the method's own: in checked builds a send whose types do not match the method's type string
/// stops the process with a message that names both; otherwise it is undefined. Any thread.
template <class R = void, class... A> ZP_INLINE R objc_msgSend(id receiver, SEL selector, A... arguments) {
    objc_object *self = objc_receiver(receiver.pointer());
#if ZP_CHECKED
    if (self) objc_checkSend(self->isa, selector, objc_methodTypes<R, A...>());
#endif
    return objc_msgSendUnchecked<R, A...>(self, selector, std::forward<A>(arguments)...);
}

/// Sends a message, to a receiver that is not null, with the implementation that `superclass` has for it: the
/// superclass of the class whose method sends. See `objc_super`.
template <class R = void, class... A> R objc_msgSendSuper(id receiver, Class superclass, SEL selector, A... arguments) {
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

/// Sends a message to a variadic method whose named arguments have the types N: `objc_sendVariadic<ZPString *,
/// ZPString *>::send(receiver, "stringWithFormat:"_sel, format, 1, 2.5)`.
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
        static_assert(std::is_trivially_copyable_v<R>);
        union Answer {
            char zero[sizeof(R) < 8 ? 8 : sizeof(R)];
            R value;
            Answer() : zero() {}
        } answer;
        if (receiver) objc_sendFrame(receiver.pointer(), selector, length, frame, &answer, sizeof answer);
        return answer.value;
    }
}

#pragma GCC diagnostic pop
