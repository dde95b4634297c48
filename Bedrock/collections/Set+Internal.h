// SPDX-License-Identifier: MIT
// The two concrete set classes. `_table` holds the members by their `hash` and `isEqual:` and owns a
// reference to each; it is null in the shared empty set and may be null in an empty mutable or counted one.
// References to sets are counted as for every object.
#pragma once

#include <Bedrock/collections/Array+Internal.h>
#include <Bedrock/collections/Dictionary+Internal.h>
#include <Bedrock/collections/ZPSet.h>

#include <vector>

/// More members than this are refused.
inline constexpr unsigned _ZPSetLimit = 0x10000000;

struct ZPConcreteSet : ZPSet {
    ZP_PRIVATE_CLASS(ZPConcreteSet)
    ZPSimpleSet *_table;
};

struct ZPConcreteMutableSet : ZPMutableSet {
    ZP_PRIVATE_CLASS(ZPConcreteMutableSet)
    ZPSimpleSet *_table;
};

struct _ZPSetEnumerator : ZPEnumerator {
    ZP_PRIVATE_CLASS(_ZPSetEnumerator)
    id _target;  ///< the set, retained until the end
    void *_table;  ///< a simple set; of a counted set, a simple dictionary
    unsigned _slot;  ///< buckets not yet visited
    BOOL _countedSet;
    _ZPTakenItems _taken;

    static ZPEnumerator *over(ZPSimpleSet *table, id target) {
        return over(table, target, NO, table ? ZPSimpleCount(table) : 0, table ? ZPSimpleBuckets(table) : 0);
    }
    static ZPEnumerator *over(ZPSimpleDictionary *table, id target) {
        return over(table, target, YES, table ? ZPSimpleCount(table) : 0, table ? ZPSimpleBuckets(table) : 0);
    }

  private:
    static ZPEnumerator *over(void *table, id target, BOOL counted, unsigned count, unsigned buckets);
};

ZPSet *_ZPEmptySet();

/// Whether a set is of a concrete class, and its table.
ZP_INLINE bool _ZPConcreteTable(id set, ZPSimpleSet *&table) {
    Class isa = set.pointer()->isa;
    if (isa == ZPConcreteSet::class_()) table = set.unchecked<ZPConcreteSet>()->_table;
    else if (isa == ZPConcreteMutableSet::class_()) table = set.unchecked<ZPConcreteMutableSet>()->_table;
    else return false;
    return true;
}

inline id _ZPMember(const ZPSimpleSetBucket *b) { return id(_ZPStored(b->item)); }
inline unsigned _ZPMemberCount(const ZPSimpleDictionaryBucket *b) {
    return unsigned(reinterpret_cast<std::uintptr_t>(b->value));
}

/// Counts an object, not null, `times` more or less in a counted set of the exact class.
void _ZPCountMore(ZPCountedSet *set, id object, unsigned times);
void _ZPCountLess(ZPCountedSet *set, id object, unsigned times);

/// Calls f(member, count) for each member of a set (may be null) in its enumeration order, until f answers
/// false.
template <class F> void _ZPForEachMember(ZPSet *set, const F &f) {
    if (!set) return;
    ZPSimpleSet *table;
    if (_ZPConcreteTable(set, table)) {
        if (table) ZPSimpleForEach(table, [&](ZPSimpleSetBucket *b) -> bool { return f(_ZPMember(b), 1u); });
    } else if (set->isa == ZPCountedSet::class_()) {
        if (auto *counts = static_cast<ZPCountedSet *>(set)->_table)
            ZPSimpleForEach(counts,
                            [&](ZPSimpleDictionaryBucket *b) -> bool { return f(_ZPKey(b), _ZPMemberCount(b)); });
    } else {
        ZPEnumerator *members = set->objectEnumerator();
        while (id member = members->nextObject())
            if (!f(member, set->countForObject(member))) return;
    }
}

/// The members of a set, each with its count, as a list that stands by itself and keeps them: messages to one may take
/// others out of the set.
struct _ZPMembers {
    struct Member {
        ZPRef<ZPObject> object;
        unsigned count;
    };
    std::vector<Member> list;
    explicit _ZPMembers(ZPSet *set) {
        _ZPForEachMember(set, [this](id member, unsigned count) {
            list.push_back({ZPRef<ZPObject>(member), count});
            return true;
        });
    }
};
