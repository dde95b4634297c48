// SPDX-License-Identifier: MIT
// Collections of distinct objects, and of objects with counts.
#pragma once

#include <Bedrock/collections/ZPEnumerator.h>
#include <Bedrock/collections/ZPObjectList.h>

ZP_FORWARD(ZPArray);
ZP_FORWARD(ZPDictionary);
ZP_FORWARD(ZPString);
struct ZPSimpleDictionary;

/// Distinct objects, which it retains: of equal objects one is the member. Never null, which raises
/// ZPInvalidArgumentException; at most 134,217,727 members, beyond which ZPMallocException is raised (for a count
/// above 268,435,455 ZPInvalidArgumentException). A cluster: `alloc` gives a private class. A subclass supplies
/// `count`, `member:` and `objectEnumerator`. The order of members is the set's own. A null collection as argument
/// counts as empty. Collections that are answered are autoreleased, members borrowed. Immutable sets may be read by
/// several threads at once; a mutable one belongs to one thread at a time.
struct ZPSet : ZPObject {
    ZP_CLASS(ZPSet)

    /// The empty set: one shared object.
    static ZPSet *set() ZP_CLASS_ASKS();
    /// One member.
    static ZPSet *setWithObject(id object) ZP_CLASS_ASKS(object);
    /// `count` objects; the first of equal ones is the member, here and below.
    static ZPSet *setWithObjects_count(const id *objects, unsigned count) ZP_CLASS_ASKS(objects, count);
    /// The arguments, up to the first null.
    template <class... A> static ZPSet *setWithObjects(A... objects) ZP_CLASS_ASKS_LIST(objects);
    /// The elements of an array.
    static ZPSet *setWithArray(ZPArray *array) ZP_CLASS_ASKS(array);
    /// The members of another set.
    static ZPSet *setWithSet(ZPSet *set) ZP_CLASS_ASKS(set);

    /// `count` objects, the first of equal ones the member: the initialiser that a subclass supplies.
    ZPSet *initWithObjects_count(const id *objects, unsigned count) ZP_ASKS(objects, count);
    /// The arguments, up to the first null.
    template <class... A> ZPSet *initWithObjects(A... objects) ZP_ASKS_LIST(objects);
    /// The elements of an array.
    ZPSet *initWithArray(ZPArray *array) ZP_ASKS(array);
    /// The members of another set; a counted set takes its counts as well.
    ZPSet *initWithSet(ZPSet *set) ZP_ASKS(set);
    /// With `copyItems` the members are copies of the other set's.
    ZPSet *initWithSet_copyItems(ZPSet *set, BOOL copyItems) ZP_ASKS(set, copyItems);

    /// The number of distinct members.
    unsigned count() ZP_ASKS();
    /// The member that is identical or equal to the object, or null, also for null.
    id member(id object) ZP_ASKS(object);
    /// Enumerates the members, each once; autoreleased.
    ZPEnumerator *objectEnumerator() ZP_ASKS();
    /// The members, each once, in enumeration order.
    ZPArray *allObjects() ZP_ASKS();
    /// Some member; null when there is none.
    id anyObject() ZP_ASKS();
    /// Whether a member is identical or equal to the object; NO for null.
    BOOL containsObject(id object) ZP_ASKS(object);
    /// How often the object is a member: 0 or 1, more in a counted set.
    unsigned countForObject(id object) ZP_ASKS(object);
    /// For an array of objects the equal members, the marker for an object that is none.
    ZPArray *members_notFoundMarker(ZPArray *objects, id marker) ZP_ASKS(objects, marker);
    /// Whether some member is one of the other set too.
    BOOL intersectsSet(ZPSet *other) ZP_ASKS(other);
    /// Whether both have the same members, equally often; NO for null.
    BOOL isEqualToSet(ZPSet *other) ZP_ASKS(other);
    /// Whether every member lies in the other set at least as often.
    BOOL isSubsetOfSet(ZPSet *other) ZP_ASKS(other);

    /// Sends a selector without arguments to every member.
    void makeObjectsPerform(SEL selector) ZP_TELLS(selector);
    /// Sends a selector with one argument to every member.
    void makeObjectsPerform_withObject(SEL selector, id object) ZP_TELLS(selector, object);
    /// As `makeObjectsPerform`.
    void makeObjectsPerformSelector(SEL selector) ZP_TELLS(selector);
    /// As `makeObjectsPerform_withObject`.
    void makeObjectsPerformSelector_withObject(SEL selector, id object) ZP_TELLS(selector, object);
    /// Class, address and the members' descriptions.
    ZPString *descriptionWithLocale(ZPDictionary *locale) ZP_ASKS(locale);
};

/// A set that can change. A subclass supplies the set's primitives, `addObject:` and `removeObject:`. Growing
/// raises ZPMallocException when there is no memory.
struct ZPMutableSet : ZPSet {
    ZP_CLASS(ZPMutableSet)

    /// A new, empty set.
    static ZPMutableSet *set() ZP_CLASS_ASKS();
    /// Empty, with room for `capacity` members; more fit as well. A capacity above 268,435,455 raises
    /// ZPInvalidArgumentException.
    static ZPMutableSet *setWithCapacity(unsigned capacity) ZP_CLASS_ASKS(capacity);
    ///@{
    /// As ZPSet makes them, but to be changed.
    static ZPMutableSet *setWithObject(id object) ZP_CLASS_ASKS(object);
    static ZPMutableSet *setWithObjects_count(const id *objects, unsigned count) ZP_CLASS_ASKS(objects, count);
    template <class... A> static ZPMutableSet *setWithObjects(A... objects) ZP_CLASS_ASKS_LIST(objects);
    static ZPMutableSet *setWithArray(ZPArray *array) ZP_CLASS_ASKS(array);
    static ZPMutableSet *setWithSet(ZPSet *set) ZP_CLASS_ASKS(set);
    ///@}

    /// Empty, with room for `capacity` members: the second initialiser that a subclass supplies.
    ZPMutableSet *initWithCapacity(unsigned capacity) ZP_ASKS(capacity);

    /// Adds an object; nothing happens when an equal one is a member, but a counted set counts it once more.
    void addObject(id object) ZP_TELLS(object);
    /// Removes the equal member; nothing happens when there is none. A counted set counts it once less, and removes
    /// it at 0.
    void removeObject(id object) ZP_TELLS(object);
    /// Adds the elements of an array, the last one first.
    void addObjectsFromArray(ZPArray *array) ZP_TELLS(array);
    /// Adds the other set's members, as often as it counts them.
    void unionSet(ZPSet *other) ZP_TELLS(other);
    /// Removes the other set's members, as often as it counts them.
    void minusSet(ZPSet *other) ZP_TELLS(other);
    /// Keeps what lies in the other set too, at most as often as there.
    void intersectSet(ZPSet *other) ZP_TELLS(other);
    /// Takes another set's members in the place of its own; nothing for null.
    void setSet(ZPSet *other) ZP_TELLS(other);
    /// Removes every member; the room for them stays.
    void removeAllObjects() ZP_TELLS();
};

/// A set that counts how often each member was added.
struct ZPCountedSet : ZPMutableSet {
    ZP_CLASS(ZPCountedSet)
    ZPSimpleDictionary *_table;  ///< member -> its count
    void *_reserved;

    ///@{
    /// As ZPMutableSet makes them; an object given twice is counted twice.
    static ZPCountedSet *set() ZP_CLASS_ASKS();
    static ZPCountedSet *setWithCapacity(unsigned capacity) ZP_CLASS_ASKS(capacity);
    static ZPCountedSet *setWithObject(id object) ZP_CLASS_ASKS(object);
    static ZPCountedSet *setWithObjects_count(const id *objects, unsigned count) ZP_CLASS_ASKS(objects, count);
    template <class... A> static ZPCountedSet *setWithObjects(A... objects) ZP_CLASS_ASKS_LIST(objects);
    static ZPCountedSet *setWithArray(ZPArray *array) ZP_CLASS_ASKS(array);
    static ZPCountedSet *setWithSet(ZPSet *set) ZP_CLASS_ASKS(set);
    ///@}
};
