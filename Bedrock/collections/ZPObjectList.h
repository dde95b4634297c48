// SPDX-License-Identifier: MIT
// Lists of objects that end in null, as `arrayWithObjects:` and its like take them.
#pragma once

#include <Bedrock/core/ZPObject.h>

/// @cond machinery
template <class... A> ZP_INLINE auto objc_askList(id receiver, SEL &slot, const char *name, A... objects) {
    static_assert((std::is_convertible_v<A, id> && ...), "every element of the list must be an object");
    if constexpr (sizeof...(A) == 0) return objc_askWith(receiver, slot, name, id())();
    else
        return [&](id first, auto... rest) {
            return objc_askWith(receiver, slot, name, first)(id(rest)..., id());
        }(objects...);
}
#define OBJC_FRONT_LIST(RECEIVER, OBJECTS)                                                    \
    {                                                                                         \
        struct objc_member;                                                                   \
        static_assert(::objc_nameFits(__func__, 1), "a list is sent as one argument");        \
        return ::objc_askList(RECEIVER, ::objc_frontSlot<objc_member>, __func__, OBJECTS...); \
    }
/// @endcond

/// The body of a front's member whose pack of objects is sent as a list that ends in null, by a message of one named
/// argument: `template <class... A> static ZPArray *arrayWithObjects(A... objects) ZP_CLASS_ASKS_LIST(objects)`. A null
/// among the objects ends the list there; an argument that is no object is a compile error.
#define ZP_ASKS_LIST(objects) &OBJC_FRONT_LIST(this, objects)
/// The same for a static member, which sends to the class.
#define ZP_CLASS_ASKS_LIST(objects) OBJC_FRONT_LIST(class_(), objects)
