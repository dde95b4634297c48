// SPDX-License-Identifier: MIT
// Ownership the C++ way: references that retain and release by scope.
#pragma once

#include <Bedrock/core/ZPObject.h>

#include <cstddef>
#include <utility>

// What is borrowed of a temporary ends with it: clang says so where a pointer is kept that will dangle.
#ifdef __has_cpp_attribute
#if __has_cpp_attribute(clang::lifetimebound)
#define ZP_BORROWED [[clang::lifetimebound]]
#endif
#endif
#ifndef ZP_BORROWED
/// Marks a member function whose result is of use only as long as the object it was asked of.
#define ZP_BORROWED
#endif

/// Owns one reference to an object, or none. Copying retains, destroying releases. A reference belongs to one thread at
/// a time; the object's count is safe from any. It converts to the object's pointer, which it goes on owning: a
/// temporary may be passed as an argument, for it lives to the end of the statement, but a plain pointer that is
/// initialised from one dangles. `ZPString *s = ZPAdopt(...)` is that mistake; clang warns of it, g++ does not.
/// Where a reference and a pointer are to have one type, as behind `?`, write `reference.get()`.
///
///     ZPRef<Counter> counter = ZPAdopt(Counter::new_());         // takes the reference over
///     ZPRef<ZPArray> list = ZPAdopt<ZPArray>(ZPArray::alloc()->init());
///     ZPRef<ZPString> name = dictionary->objectForKey(key);      // retains
template <class T> class ZPRef {
    T *_object = nullptr;

    template <class U> friend class ZPRef;

  public:
    /// Owns nothing.
    ZPRef() = default;
    /// Owns nothing.
    ZPRef(std::nullptr_t) {}
    /// Retains the object.
    ZPRef(T *object) : _object(object) {
        if (_object) _object->retain();
    }
    /// Retains the object; checked to be a T as every conversion from `id` is.
    ZPRef(id object) : ZPRef(static_cast<T *>(object)) {}
    /// Owns the same object, retained once more.
    ZPRef(const ZPRef &other) : ZPRef(other._object) {}
    /// Takes the reference over; the other owns nothing then.
    ZPRef(ZPRef &&other) noexcept : _object(std::exchange(other._object, nullptr)) {}
    /// Owns the same object, retained once more, as one of its superclasses.
    template <class U>
        requires std::is_convertible_v<U *, T *> ZPRef(const ZPRef<U> &other)
            : ZPRef(static_cast<T *>(other._object)) {}
        /// Takes the reference over, as one to a superclass.
        template <class U>
            requires std::is_convertible_v<U *, T *> ZPRef(ZPRef<U> &&other)
        noexcept : _object(std::exchange(other._object, nullptr)) {}
        /// Releases the object.
        ~ZPRef() {
            if (_object) _object->release();
        }
        /// Owns what the other does, and releases what it owned before.
        ZPRef &operator=(ZPRef other) noexcept {
            std::swap(_object, other._object);
            return *this;
        }

        /// Takes over a reference that the caller owns.
        static ZPRef adopt(T *owned) {
            ZPRef result;
            result._object = owned;
            return result;
        }

        /// The object itself, not retained; null when there is none.
        T *get() const ZP_BORROWED { return _object; }
        /// The object, to send it a message; null answers zeros.
        T *operator->() const { return _object; }
        /// The object, for a debugger's `print *reference`; not for null.
        T &operator*() const ZP_BORROWED { return *_object; }
        /// The object itself, not retained.
        operator T *() const ZP_BORROWED { return _object; }
        /// The object itself, not retained.
        operator id() const ZP_BORROWED { return _object; }
        /// Whether it owns an object.
        explicit operator bool() const { return _object != nullptr; }
        /// Gives the reference up to the caller, who then releases the object; null when there is none.
        [[nodiscard]] T *detach() { return std::exchange(_object, nullptr); }
        /// Gives the reference to the innermost autorelease pool of the calling thread, and answers the object.
        T *autoreleased() && {
            if (_object) _object->autorelease();
            return detach();
        }
        /// Whether both own the same object, or both nothing.
        friend bool operator==(const ZPRef &a, const ZPRef &b) { return a._object == b._object; }
        /// Whether it owns that object; it is not asked whether they are equal.
        template <class U>
            requires std::is_convertible_v<U, id>
        friend bool operator==(const ZPRef &a, U b) { return id(a._object).pointer() == id(b).pointer(); }
        /// Whether it owns nothing.
        friend bool operator==(const ZPRef &a, std::nullptr_t) { return a._object == nullptr; }
        /// Writes the object to a stream as a pointer to it is written.
        template <class S>
            requires requires(S &stream, T *object) { stream << object; }
        friend decltype(auto) operator<<(S &stream, const ZPRef &a) { return stream << a._object; }
};

/// A `ZPRef` that takes over the reference its argument (null: none) carries, as alloc, copy and new give it. Keep
/// it in a `ZPRef`: a plain pointer that is made of it outlives the reference.
template <class T> ZPRef<T> ZPAdopt(T *owned) { return ZPRef<T>::adopt(owned); }
/// The same for an object that is checked to be a T as every conversion from `id` is:
/// `ZPAdopt<ZPString>(text->copy())`.
template <class T> ZPRef<T> ZPAdopt(id owned) { return ZPRef<T>::adopt(owned); }
