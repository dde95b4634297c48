// SPDX-License-Identifier: MIT
// Ownership the C++ way: references that retain and release by scope.
#pragma once

#include <Bedrock/core/ZPAutoreleasePool.h>

#include <utility>

/// Owns one reference to an object, or none. Copying retains, destroying releases.
///
///     ZPRef<Counter> counter = ZPAdopt(Counter::new_());         // takes the reference over
///     ZPRef<ZPArray> list = ZPAdopt<ZPArray>(ZPArray::alloc()->init());
///     ZPRef<ZPString> name = dictionary->objectForKey(key);      // retains
template <class T> class ZPRef {
    T *_object = nullptr;

    template <class U> friend class ZPRef;

  public:
    ZPRef() = default;
    /// Owns nothing.
    ZPRef(std::nullptr_t) {}
    /// Retains the object.
    ZPRef(T *object) : _object(object) {
        if (_object) _object->retain();
    }
    /// Retains the object; checked to be a T as every conversion from `id` is.
    ZPRef(id object) : ZPRef(static_cast<T *>(object)) {}
    ZPRef(const ZPRef &other) : ZPRef(other._object) {}
    ZPRef(ZPRef &&other) noexcept : _object(std::exchange(other._object, nullptr)) {}
    template <class U>
        requires std::is_convertible_v<U *, T *>
    ZPRef(const ZPRef<U> &other) : ZPRef(static_cast<T *>(other._object)) {}
    template <class U>
        requires std::is_convertible_v<U *, T *>
    ZPRef(ZPRef<U> &&other) noexcept : _object(std::exchange(other._object, nullptr)) {}
    ~ZPRef() {
        if (_object) _object->release();
    }
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
    T *get() const { return _object; }
    T *operator->() const { return _object; }
    operator T *() const { return _object; }
    operator id() const { return _object; }
    explicit operator bool() const { return _object != nullptr; }
    /// Gives the reference up to the caller.
    [[nodiscard]] T *detach() { return std::exchange(_object, nullptr); }
    /// Gives the reference to the innermost autorelease pool.
    T *autoreleased() && {
        if (_object) _object->autorelease();
        return detach();
    }
    /// Whether both own the same object.
    friend bool operator==(const ZPRef &a, const ZPRef &b) { return a._object == b._object; }
    friend bool operator==(const ZPRef &a, std::nullptr_t) { return a._object == nullptr; }
};

/// A `ZPRef` that takes over the reference its argument carries, as alloc, copy and new give it. Keep it in a `ZPRef`: a
/// plain pointer that is made of it outlives the reference.
template <class T> ZPRef<T> ZPAdopt(T *owned) { return ZPRef<T>::adopt(owned); }
template <class T> ZPRef<T> ZPAdopt(id owned) { return ZPRef<T>::adopt(owned); }
