// SPDX-License-Identifier: MIT
// Lists of objects that end in null, as `arrayWithObjects:` and its like take them.
#pragma once

#include <Bedrock/core/ZPObject.h>

/// Sends a message whose one named argument begins a null-ended list of objects, here an empty one.
template <class R> ZP_INLINE R objc_sendObjectList(id receiver, SEL selector) {
    return objc_sendVariadic<R, id>::send(receiver, selector, id());
}
/// Sends a message whose one named argument begins a null-ended list of objects, and adds the null. A null among
/// the objects ends the list there; an argument that is no object is a compile error.
template <class R, class... A> ZP_INLINE R objc_sendObjectList(id receiver, SEL selector, id first, A... rest) {
    static_assert((std::is_convertible_v<A, id> && ...), "every element of the list must be an object");
    return objc_sendVariadic<R, id>::send(receiver, selector, first, id(rest)..., id());
}
