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
    static ZPSet *set() { return objc_msgSend<ZPSet *>(class_(), "set"_sel); }
    /// One member.
    static ZPSet *setWithObject(id object) { return objc_msgSend<ZPSet *>(class_(), "setWithObject:"_sel, object); }
    /// `count` objects; the first of equal ones is the member, here and below.
    static ZPSet *setWithObjects_count(const id *objects, unsigned count) {
        return objc_msgSend<ZPSet *>(class_(), "setWithObjects:count:"_sel, objects, count);
    }
    /// The arguments, up to the first null.
    template <class... A> static ZPSet *setWithObjects(A... objects) {
        return objc_sendObjectList<ZPSet *>(class_(), "setWithObjects:"_sel, objects...);
    }
    /// The elements of an array.
    static ZPSet *setWithArray(ZPArray *array) { return objc_msgSend<ZPSet *>(class_(), "setWithArray:"_sel, array); }
    /// The members of another set.
    static ZPSet *setWithSet(ZPSet *set) { return objc_msgSend<ZPSet *>(class_(), "setWithSet:"_sel, set); }

    /// `count` objects, the first of equal ones the member: the initialiser that a subclass supplies.
    ZPSet *initWithObjects_count(const id *objects, unsigned count) {
        return objc_msgSend<ZPSet *>(this, "initWithObjects:count:"_sel, objects, count);
    }
    /// The arguments, up to the first null.
    template <class... A> ZPSet *initWithObjects(A... objects) {
        return objc_sendObjectList<ZPSet *>(this, "initWithObjects:"_sel, objects...);
    }
    /// The elements of an array.
    ZPSet *initWithArray(ZPArray *array) { return objc_msgSend<ZPSet *>(this, "initWithArray:"_sel, array); }
    /// The members of another set; a counted set takes its counts as well.
    ZPSet *initWithSet(ZPSet *set) { return objc_msgSend<ZPSet *>(this, "initWithSet:"_sel, set); }
    /// With `copyItems` the members are copies of the other set's.
    ZPSet *initWithSet_copyItems(ZPSet *set, BOOL copyItems) {
        return objc_msgSend<ZPSet *>(this, "initWithSet:copyItems:"_sel, set, copyItems);
    }

    /// The number of distinct members.
    unsigned count() { return objc_msgSend<unsigned>(this, "count"_sel); }
    /// The member that is identical or equal to the object, or null, also for null.
    id member(id object) { return objc_msgSend<id>(this, "member:"_sel, object); }
    /// Enumerates the members, each once; autoreleased.
    ZPEnumerator *objectEnumerator() { return objc_msgSend<ZPEnumerator *>(this, "objectEnumerator"_sel); }
    /// The members, each once, in enumeration order.
    ZPArray *allObjects() { return objc_msgSend<ZPArray *>(this, "allObjects"_sel); }
    /// Some member; null when there is none.
    id anyObject() { return objc_msgSend<id>(this, "anyObject"_sel); }
    /// Whether a member is identical or equal to the object; NO for null.
    BOOL containsObject(id object) { return objc_msgSend<BOOL>(this, "containsObject:"_sel, object); }
    /// How often the object is a member: 0 or 1, more in a counted set.
    unsigned countForObject(id object) { return objc_msgSend<unsigned>(this, "countForObject:"_sel, object); }
    /// For an array of objects the equal members, the marker for an object that is none.
    ZPArray *members_notFoundMarker(ZPArray *objects, id marker) {
        return objc_msgSend<ZPArray *>(this, "members:notFoundMarker:"_sel, objects, marker);
    }
    /// Whether some member is one of the other set too.
    BOOL intersectsSet(ZPSet *other) { return objc_msgSend<BOOL>(this, "intersectsSet:"_sel, other); }
    /// Whether both have the same members, equally often; NO for null.
    BOOL isEqualToSet(ZPSet *other) { return objc_msgSend<BOOL>(this, "isEqualToSet:"_sel, other); }
    /// Whether every member lies in the other set at least as often.
    BOOL isSubsetOfSet(ZPSet *other) { return objc_msgSend<BOOL>(this, "isSubsetOfSet:"_sel, other); }

    /// Sends a selector without arguments to every member.
    void makeObjectsPerform(SEL selector) { objc_msgSend(this, "makeObjectsPerform:"_sel, selector); }
    /// Sends a selector with one argument to every member.
    void makeObjectsPerform_withObject(SEL selector, id object) {
        objc_msgSend(this, "makeObjectsPerform:withObject:"_sel, selector, object);
    }
    /// As `makeObjectsPerform`.
    void makeObjectsPerformSelector(SEL selector) { objc_msgSend(this, "makeObjectsPerformSelector:"_sel, selector); }
    /// As `makeObjectsPerform_withObject`.
    void makeObjectsPerformSelector_withObject(SEL selector, id object) {
        objc_msgSend(this, "makeObjectsPerformSelector:withObject:"_sel, selector, object);
    }
    /// Class, address and the members' descriptions.
    ZPString *descriptionWithLocale(ZPDictionary *locale) {
        return objc_msgSend<ZPString *>(this, "descriptionWithLocale:"_sel, locale);
    }
};

/// A set that can change. A subclass supplies the set's primitives, `addObject:` and `removeObject:`. Growing
/// raises ZPMallocException when there is no memory.
struct ZPMutableSet : ZPSet {
    ZP_CLASS(ZPMutableSet)

    /// A new, empty set.
    static ZPMutableSet *set() { return objc_msgSend<ZPMutableSet *>(class_(), "set"_sel); }
    /// Empty, with room for `capacity` members; more fit as well. A capacity above 268,435,455 raises
    /// ZPInvalidArgumentException.
    static ZPMutableSet *setWithCapacity(unsigned capacity) {
        return objc_msgSend<ZPMutableSet *>(class_(), "setWithCapacity:"_sel, capacity);
    }
    ///@{
    /// As ZPSet makes them, but to be changed.
    static ZPMutableSet *setWithObject(id object) {
        return objc_msgSend<ZPMutableSet *>(class_(), "setWithObject:"_sel, object);
    }
    static ZPMutableSet *setWithObjects_count(const id *objects, unsigned count) {
        return objc_msgSend<ZPMutableSet *>(class_(), "setWithObjects:count:"_sel, objects, count);
    }
    template <class... A> static ZPMutableSet *setWithObjects(A... objects) {
        return objc_sendObjectList<ZPMutableSet *>(class_(), "setWithObjects:"_sel, objects...);
    }
    static ZPMutableSet *setWithArray(ZPArray *array) {
        return objc_msgSend<ZPMutableSet *>(class_(), "setWithArray:"_sel, array);
    }
    static ZPMutableSet *setWithSet(ZPSet *set) {
        return objc_msgSend<ZPMutableSet *>(class_(), "setWithSet:"_sel, set);
    }
    ///@}

    /// Empty, with room for `capacity` members: the second initialiser that a subclass supplies.
    ZPMutableSet *initWithCapacity(unsigned capacity) {
        return objc_msgSend<ZPMutableSet *>(this, "initWithCapacity:"_sel, capacity);
    }

    /// Adds an object; nothing happens when an equal one is a member, but a counted set counts it once more.
    void addObject(id object) { objc_msgSend(this, "addObject:"_sel, object); }
    /// Removes the equal member; nothing happens when there is none. A counted set counts it once less, and removes
    /// it at 0.
    void removeObject(id object) { objc_msgSend(this, "removeObject:"_sel, object); }
    /// Adds the elements of an array, the last one first.
    void addObjectsFromArray(ZPArray *array) { objc_msgSend(this, "addObjectsFromArray:"_sel, array); }
    /// Adds the other set's members, as often as it counts them.
    void unionSet(ZPSet *other) { objc_msgSend(this, "unionSet:"_sel, other); }
    /// Removes the other set's members, as often as it counts them.
    void minusSet(ZPSet *other) { objc_msgSend(this, "minusSet:"_sel, other); }
    /// Keeps what lies in the other set too, at most as often as there.
    void intersectSet(ZPSet *other) { objc_msgSend(this, "intersectSet:"_sel, other); }
    /// Takes another set's members in the place of its own; nothing for null.
    void setSet(ZPSet *other) { objc_msgSend(this, "setSet:"_sel, other); }
    /// Removes every member; the room for them stays.
    void removeAllObjects() { objc_msgSend(this, "removeAllObjects"_sel); }
};

/// A set that counts how often each member was added.
struct ZPCountedSet : ZPMutableSet {
    ZP_CLASS(ZPCountedSet)
    ZPSimpleDictionary *_table;  ///< member -> its count
    void *_reserved;

    ///@{
    /// As ZPMutableSet makes them; an object given twice is counted twice.
    static ZPCountedSet *set() { return objc_msgSend<ZPCountedSet *>(class_(), "set"_sel); }
    static ZPCountedSet *setWithCapacity(unsigned capacity) {
        return objc_msgSend<ZPCountedSet *>(class_(), "setWithCapacity:"_sel, capacity);
    }
    static ZPCountedSet *setWithObject(id object) {
        return objc_msgSend<ZPCountedSet *>(class_(), "setWithObject:"_sel, object);
    }
    static ZPCountedSet *setWithObjects_count(const id *objects, unsigned count) {
        return objc_msgSend<ZPCountedSet *>(class_(), "setWithObjects:count:"_sel, objects, count);
    }
    template <class... A> static ZPCountedSet *setWithObjects(A... objects) {
        return objc_sendObjectList<ZPCountedSet *>(class_(), "setWithObjects:"_sel, objects...);
    }
    static ZPCountedSet *setWithArray(ZPArray *array) {
        return objc_msgSend<ZPCountedSet *>(class_(), "setWithArray:"_sel, array);
    }
    static ZPCountedSet *setWithSet(ZPSet *set) {
        return objc_msgSend<ZPCountedSet *>(class_(), "setWithSet:"_sel, set);
    }
    ///@}
};
