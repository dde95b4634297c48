// SPDX-License-Identifier: MIT
// Walking through the elements of a collection, once.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPArray);

/// Answers the elements of a collection one after another. The collection must not change while one of its
/// enumerators is in use, which retains it until the end. For one thread at a time. A subclass supplies
/// `nextObject`.
struct ZPEnumerator : ZPObject {
    ZP_CLASS(ZPEnumerator)

    /// The next element, borrowed; null when there is none left.
    id nextObject() ZP_ASKS();
    /// The elements not answered yet, in enumeration order, in an autoreleased array; leaves nothing to enumerate.
    ZPArray *allObjects() ZP_ASKS();
};

/// An enumerator over a list of objects in memory.
struct ZPIdEnumerator : ZPEnumerator {
    ZP_CLASS(ZPIdEnumerator)
    unsigned _slot;
    unsigned _limit;
    id _target;  ///< the collection, retained while elements are left
    id *_list;
    BOOL _free;

    /// Walks `count` objects at `list`, from the last to the first when `reverse`. Retains `target` until the
    /// end is reached; the list must last as long. With `free` the list is a block of a zone, which the
    /// enumerator frees at the end.
    ZPIdEnumerator *initWithObjects_count_target_reverse_freeWhenDone(id *list, unsigned count, id target, BOOL reverse,
                                                                      BOOL free)
        ZP_ASKS(list, count, target, reverse, free);
    /// Ends the enumeration: gives up the target and a list that it owns.
    void invalidate() ZP_TELLS();
};
