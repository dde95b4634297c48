// SPDX-License-Identifier: MIT
// What the library's code owns for the life of a scope, beside objects of a known class (ZPRef.h) and blocks of memory
// (Memory.h): also an exception ends it.
#pragma once

#include <Bedrock/core/ZPObject.h>

#include <utility>

/// Calls a function on a pointer when the scope ends, unless it is null or was taken.
///
///     ZPScope table{ZPCreateHashTable(callBacks, 0), ZPFreeHashTable};
///     ZPHashInsert(table, item);
template <class T, class F> class ZPScope {
  protected:
    T *_held;
    [[no_unique_address]] F _end;

  public:
    explicit ZPScope(T *held = nullptr, F end = F()) : _held(held), _end(end) {}
    ZPScope(const ZPScope &) = delete;
    ~ZPScope() {
        if (_held) _end(_held);
    }

    T *get() const { return _held; }
    operator T *() const { return _held; }
    T *operator->() const { return _held; }
    /// The place of the pointer, which is null, for a function that fills it.
    T **place() { return &_held; }
    /// Gives what is held up to the caller.
    [[nodiscard]] T *take() { return std::exchange(_held, nullptr); }
};

struct ZPReleases {
    void operator()(objc_object *object) const { id(object)->release(); }
};
/// A reference to an object of any class, proxies among them, or none.
using ZPOwnedObject = ZPScope<objc_object, ZPReleases>;
