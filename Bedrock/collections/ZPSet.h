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
/// ZPInvalidArgumentException; at most 268,435,455 members. A cluster: `alloc` gives a private class. A
/// subclass supplies `count`, `member:` and `objectEnumerator`. Immutable sets may be read by several threads
/// at once; a mutable one belongs to one thread at a time.
struct ZPSet : ZPObject {
    ZP_CLASS(ZPSet)

    /// The empty set: one shared object.
    static ZPSet *set() { return objc_msgSend<ZPSet *>(class_(), "set"_sel); }
    static ZPSet *setWithObject(id object) { return objc_msgSend<ZPSet *>(class_(), "setWithObject:"_sel, object); }
    static ZPSet *setWithObjects_count(const id *objects, unsigned count) {
        return objc_msgSend<ZPSet *>(class_(), "setWithObjects:count:"_sel, objects, count);
    }
    template <class... A> static ZPSet *setWithObjects(A... objects) {
        return objc_sendObjectList<ZPSet *>(class_(), "setWithObjects:"_sel, objects...);
    }
    static ZPSet *setWithArray(ZPArray *array) { return objc_msgSend<ZPSet *>(class_(), "setWithArray:"_sel, array); }
    static ZPSet *setWithSet(ZPSet *set) { return objc_msgSend<ZPSet *>(class_(), "setWithSet:"_sel, set); }

    /// The initialiser that a subclass supplies. The first of equal objects is the member.
    ZPSet *initWithObjects_count(const id *objects, unsigned count) {
        return objc_msgSend<ZPSet *>(this, "initWithObjects:count:"_sel, objects, count);
    }
    template <class... A> ZPSet *initWithObjects(A... objects) {
        return objc_sendObjectList<ZPSet *>(this, "initWithObjects:"_sel, objects...);
    }
    ZPSet *initWithArray(ZPArray *array) { return objc_msgSend<ZPSet *>(this, "initWithArray:"_sel, array); }
    ZPSet *initWithSet(ZPSet *set) { return objc_msgSend<ZPSet *>(this, "initWithSet:"_sel, set); }
    /// With `copyItems` the members are copies of the other set's.
    ZPSet *initWithSet_copyItems(ZPSet *set, BOOL copyItems) {
        return objc_msgSend<ZPSet *>(this, "initWithSet:copyItems:"_sel, set, copyItems);
    }

    /// The number of distinct members.
    unsigned count() { return objc_msgSend<unsigned>(this, "count"_sel); }
    /// The member that is identical or equal to the object, or null.
    id member(id object) { return objc_msgSend<id>(this, "member:"_sel, object); }
    /// The set must not change while an enumerator is in use.
    ZPEnumerator *objectEnumerator() { return objc_msgSend<ZPEnumerator *>(this, "objectEnumerator"_sel); }
    ZPArray *allObjects() { return objc_msgSend<ZPArray *>(this, "allObjects"_sel); }
    /// Some member; null when there is none.
    id anyObject() { return objc_msgSend<id>(this, "anyObject"_sel); }
    BOOL containsObject(id object) { return objc_msgSend<BOOL>(this, "containsObject:"_sel, object); }
    /// How often the object is a member: 0 or 1, more in a counted set.
    unsigned countForObject(id object) { return objc_msgSend<unsigned>(this, "countForObject:"_sel, object); }
    /// For an array of objects the equal members, the marker for an object that is none.
    ZPArray *members_notFoundMarker(ZPArray *objects, id marker) {
        return objc_msgSend<ZPArray *>(this, "members:notFoundMarker:"_sel, objects, marker);
    }
    BOOL intersectsSet(ZPSet *other) { return objc_msgSend<BOOL>(this, "intersectsSet:"_sel, other); }
    /// The same members, equally often.
    BOOL isEqualToSet(ZPSet *other) { return objc_msgSend<BOOL>(this, "isEqualToSet:"_sel, other); }
    /// Every member lies in the other set at least as often.
    BOOL isSubsetOfSet(ZPSet *other) { return objc_msgSend<BOOL>(this, "isSubsetOfSet:"_sel, other); }

    /// Sends a selector to every member.
    void makeObjectsPerform(SEL selector) { objc_msgSend(this, "makeObjectsPerform:"_sel, selector); }
    void makeObjectsPerform_withObject(SEL selector, id object) { objc_msgSend(this, "makeObjectsPerform:withObject:"_sel, selector, object); }
    void makeObjectsPerformSelector(SEL selector) { objc_msgSend(this, "makeObjectsPerformSelector:"_sel, selector); }
    void makeObjectsPerformSelector_withObject(SEL selector, id object) {
        objc_msgSend(this, "makeObjectsPerformSelector:withObject:"_sel, selector, object);
    }
    /// Class, address and the members' descriptions.
    ZPString *descriptionWithLocale(ZPDictionary *locale) { return objc_msgSend<ZPString *>(this, "descriptionWithLocale:"_sel, locale); }
};

/// A set that can change. A subclass supplies the set's primitives, `addObject:` and `removeObject:`.
struct ZPMutableSet : ZPSet {
    ZP_CLASS(ZPMutableSet)

    /// As ZPSet makes them, but to be changed.
    static ZPMutableSet *set() { return objc_msgSend<ZPMutableSet *>(class_(), "set"_sel); }
    /// Empty, with room for `capacity` members; more fit as well.
    static ZPMutableSet *setWithCapacity(unsigned capacity) { return objc_msgSend<ZPMutableSet *>(class_(), "setWithCapacity:"_sel, capacity); }
    static ZPMutableSet *setWithObject(id object) { return objc_msgSend<ZPMutableSet *>(class_(), "setWithObject:"_sel, object); }
    static ZPMutableSet *setWithObjects_count(const id *objects, unsigned count) {
        return objc_msgSend<ZPMutableSet *>(class_(), "setWithObjects:count:"_sel, objects, count);
    }
    template <class... A> static ZPMutableSet *setWithObjects(A... objects) {
        return objc_sendObjectList<ZPMutableSet *>(class_(), "setWithObjects:"_sel, objects...);
    }
    static ZPMutableSet *setWithArray(ZPArray *array) { return objc_msgSend<ZPMutableSet *>(class_(), "setWithArray:"_sel, array); }
    static ZPMutableSet *setWithSet(ZPSet *set) { return objc_msgSend<ZPMutableSet *>(class_(), "setWithSet:"_sel, set); }

    /// The second initialiser that a subclass supplies.
    ZPMutableSet *initWithCapacity(unsigned capacity) { return objc_msgSend<ZPMutableSet *>(this, "initWithCapacity:"_sel, capacity); }

    /// Nothing happens when an equal object is a member; a counted set counts it once more.
    void addObject(id object) { objc_msgSend(this, "addObject:"_sel, object); }
    /// Nothing happens when there is no equal member; a counted set counts it once less.
    void removeObject(id object) { objc_msgSend(this, "removeObject:"_sel, object); }
    void addObjectsFromArray(ZPArray *array) { objc_msgSend(this, "addObjectsFromArray:"_sel, array); }
    /// Adds the other set's members, as often as it counts them.
    void unionSet(ZPSet *other) { objc_msgSend(this, "unionSet:"_sel, other); }
    /// Removes the other set's members, as often as it counts them.
    void minusSet(ZPSet *other) { objc_msgSend(this, "minusSet:"_sel, other); }
    /// Keeps what lies in the other set too, at most as often as there.
    void intersectSet(ZPSet *other) { objc_msgSend(this, "intersectSet:"_sel, other); }
    void setSet(ZPSet *other) { objc_msgSend(this, "setSet:"_sel, other); }
    /// Keeps the room for members.
    void removeAllObjects() { objc_msgSend(this, "removeAllObjects"_sel); }
};

/// A set that counts how often each member was added.
struct ZPCountedSet : ZPMutableSet {
    ZP_CLASS(ZPCountedSet)
    ZPSimpleDictionary *_table;  ///< member -> its count
    void *_reserved;

    /// As ZPSet makes them; an object given twice is counted twice.
    static ZPCountedSet *set() { return objc_msgSend<ZPCountedSet *>(class_(), "set"_sel); }
    static ZPCountedSet *setWithCapacity(unsigned capacity) { return objc_msgSend<ZPCountedSet *>(class_(), "setWithCapacity:"_sel, capacity); }
    static ZPCountedSet *setWithObject(id object) { return objc_msgSend<ZPCountedSet *>(class_(), "setWithObject:"_sel, object); }
    static ZPCountedSet *setWithObjects_count(const id *objects, unsigned count) {
        return objc_msgSend<ZPCountedSet *>(class_(), "setWithObjects:count:"_sel, objects, count);
    }
    template <class... A> static ZPCountedSet *setWithObjects(A... objects) {
        return objc_sendObjectList<ZPCountedSet *>(class_(), "setWithObjects:"_sel, objects...);
    }
    static ZPCountedSet *setWithArray(ZPArray *array) { return objc_msgSend<ZPCountedSet *>(class_(), "setWithArray:"_sel, array); }
    static ZPCountedSet *setWithSet(ZPSet *set) { return objc_msgSend<ZPCountedSet *>(class_(), "setWithSet:"_sel, set); }
};
