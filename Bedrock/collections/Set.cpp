// SPDX-License-Identifier: MIT
// What every set does, on `count`, `member:` and `objectEnumerator`, and every mutable one, on `addObject:`
// and `removeObject:` too. The set algebra counts members, so that it is multiset algebra when a counted set
// takes part.
#include <Bedrock/collections/Set+Internal.h>
#include <Bedrock/platform/kernel/MakeOnce.h>
#include <Bedrock/strings/ZPMutableString.h>

static ZPSet *emptySet;
ZPSet *_ZPEmptySet() {
    return ZPMakeOnce(
        emptySet, []() -> ZPSet * { return ZPAllocateObject(ZPConcreteSet::class_(), 0, nullptr); },
        ZPDeallocateObject);
}

namespace {

struct ZPSetClassMethods {
    static id allocWithZone(Class self, ZPZone *zone) {
        if (self == ZPSet::class_()) self = ZPConcreteSet::class_();
        else if (self == ZPMutableSet::class_()) self = ZPConcreteMutableSet::class_();
        return ZPAllocateObject(self, 0, zone);
    }
    struct New : _ZPNewInstance {
        ZPSet *set;
        explicit New(Class self) : New(_ZPFront(self)->alloc().as<ZPSet>()) {}
        explicit New(ZPSet *s)
            : _ZPNewInstance(s, s->isa == ZPConcreteSet::class_() || s->isa == ZPConcreteMutableSet::class_() ||
                                    s->isa == ZPCountedSet::class_()),
              set(s) {}
        ZPSet *operator->() const { return set; }
    };
    static id set(Class self) {
        if (self == ZPSet::class_()) return _ZPEmptySet();
        New made(self);
        return made.finish(made->init());
    }
    static id setWithObjects_count(Class self, const id *objects, unsigned count) {
        New made(self);
        return made.finish(made->initWithObjects_count(objects, count));
    }
    static id setWithObject(Class self, id object) { return setWithObjects_count(self, &object, 1); }
    static id setWithObjects(Class self, id first, std::va_list rest) {
        _ZPObjectList list;
        _ZPGatherList(list, first, rest);
        return setWithObjects_count(self, list.items, list.count);
    }
    static id setWithArray(Class self, ZPArray *array) {
        New made(self);
        return made.finish(made->initWithArray(array));
    }
    static id setWithSet(Class self, ZPSet *other) {
        New made(self);
        return made.finish(made->initWithSet(other));
    }
    static id setWithCapacity(Class self, unsigned capacity) {
        New made(self);
        return made.finish(static_cast<ZPMutableSet *>(made.set)->initWithCapacity(capacity));
    }
};

struct ZPSetMethods : ZPSet {
    // ---- initialisers ----
    id initWithObjects_count(const id *, unsigned) { _ZPRequestConcreteObject(this, "initWithObjects:count:"_sel); }
    id initWithObjects(id first, std::va_list rest) {
        _ZPObjectList list;
        _ZPGatherList(list, first, rest);
        return self()->initWithObjects_count(list.items, list.count);
    }
    id initWithArray(ZPArray *array) {
        _ZPElements elements(array);
        return self()->initWithObjects_count(elements.items, elements.count);
    }
    id initWithSet(ZPSet *other) { return self()->initWithSet_copyItems(other, NO); }
    id initWithSet_copyItems(ZPSet *other, BOOL copyItems) {
        _ZPObjectList members;
        _ZPForEachMember(other, [&](id member, unsigned) {
            members.add(member);
            return true;
        });
        if (!copyItems) return self()->initWithObjects_count(members.items, members.count);
        _ZPObjectBuffer copies(members.count);
        _ZPReleaser releaser{copies.items, 0};
        ZPZone *zone = self()->zone();
        for (; releaser.count < members.count; ++releaser.count)
            copies.items[releaser.count] = members.items[releaser.count]->copyWithZone(zone);
        return self()->initWithObjects_count(copies.items, members.count);
    }

    // ---- primitives ----
    unsigned count() { ZPRequestConcreteImplementation(this, "count"_sel, ZPSet::class_()); }
    id member(id) { ZPRequestConcreteImplementation(this, "member:"_sel, ZPSet::class_()); }
    ZPEnumerator *objectEnumerator() { ZPRequestConcreteImplementation(this, "objectEnumerator"_sel, ZPSet::class_()); }

    // ---- members ----
    ZPArray *allObjects() {
        _ZPObjectList list;
        _ZPForEachMember(this, [&](id member, unsigned) {
            list.add(member);
            return true;
        });
        return _ZPMakeArray(list.items, list.count);
    }
    id anyObject() {
        id any;
        ZPSimpleSet *table;
        if (_ZPConcreteTable(this, table)) {
            ZPSimpleSetBucket *first = table ? ZPSimpleFirst(table) : nullptr;
            return first ? _ZPMember(first) : any;
        }
        _ZPForEachMember(this, [&](id member, unsigned) {
            any = member;
            return false;
        });
        return any;
    }
    BOOL containsObject(id object) { return object && self()->member(object); }
    unsigned countForObject(id object) { return object && self()->member(object) ? 1 : 0; }
    ZPArray *members_notFoundMarker(ZPArray *objects, id marker) {
        _ZPElements o(objects);
        _ZPObjectBuffer found(o.count);
        for (unsigned i = 0; i < o.count; ++i) {
            id member = self()->member(o.items[i]);
            found.items[i] = member ? member : marker;
        }
        return _ZPMakeArray(found.items, o.count);
    }

    // ---- relations ----
    BOOL intersectsSet(ZPSet *other) {
        BOOL meets = NO;
        if (other)
            _ZPForEachMember(this, [&](id member, unsigned) {
                meets = other->member(member) != nullptr;
                return !meets;
            });
        return meets;
    }
    BOOL isEqualToSet(ZPSet *other) {
        if (other == this) return YES;
        if (!other || self()->count() != other->count()) return NO;
        BOOL equal = YES;
        _ZPForEachMember(this, [&](id member, unsigned count) {
            equal = other->countForObject(member) == count;
            return bool(equal);
        });
        return equal;
    }
    BOOL isSubsetOfSet(ZPSet *other) {
        if (other == this) return YES;
        if (self()->count() > (other ? other->count() : 0)) return NO;
        BOOL within = YES;
        _ZPForEachMember(this, [&](id member, unsigned count) {
            within = count <= other->countForObject(member);
            return bool(within);
        });
        return within;
    }
    BOOL isEqual(id other) {
        if (other.pointer() == this) return YES;
        if (!other || !other->isKindOfClass(ZPSet::class_())) return NO;
        return self()->isEqualToSet(other);
    }
    unsigned hash() { return self()->count(); }

    // ---- messages to all ----
    void makeObjectsPerform(SEL selector) { makeObjectsPerform_withObject(selector, nullptr); }
    void makeObjectsPerformSelector(SEL selector) { makeObjectsPerform_withObject(selector, nullptr); }
    void makeObjectsPerformSelector_withObject(SEL selector, id object) {
        makeObjectsPerform_withObject(selector, object);
    }
    void makeObjectsPerform_withObject(SEL selector, id object) {
        _ZPMembers members(this);
        for (auto &member : members.list) member.object->performSelector_withObject(selector, object);
    }

    // ---- description ----
    ZPString *description() { return self()->descriptionWithLocale(nullptr); }
    ZPString *descriptionWithLocale(ZPDictionary *locale) {
        bool counted = self()->isKindOfClass(ZPCountedSet::class_());
        ZPMutableString *text =
            ZPMutableString::stringWithFormat("<%s: 0x%lx> ("_zp, isa->name, reinterpret_cast<unsigned long>(this));
        bool first = true;
        for (auto &member : _ZPMembers(this).list) {
            if (!first) text->appendString(", "_zp);
            first = false;
            auto *object = id(member.object.get()).unchecked<_ZPLocalizable>();
            bool localized = object->respondsToSelector("descriptionWithLocale:"_sel);
            text->appendString(localized ? object->descriptionWithLocale(locale) : object->description());
            if (counted) text->appendFormat(" [%d]"_zp, member.count);
        }
        text->appendString(")"_zp);
        return text;
    }

    // ---- copies ----
    id copyWithZone(ZPZone *zone) { return ZPSet::allocWithZone(zone)->initWithSet_copyItems(this, YES); }
    id mutableCopyWithZone(ZPZone *zone) { return ZPMutableSet::allocWithZone(zone)->initWithSet_copyItems(this, NO); }
    Class classForCoder() { return ZPSet::class_(); }
};

struct ZPMutableSetMethods : ZPMutableSet {
    id initWithCapacity(unsigned) { _ZPRequestConcreteObject(this, "initWithCapacity:"_sel); }
    void addObject(id) { ZPRequestConcreteImplementation(this, "addObject:"_sel, ZPMutableSet::class_()); }
    void removeObject(id) { ZPRequestConcreteImplementation(this, "removeObject:"_sel, ZPMutableSet::class_()); }
    void addObjectsFromArray(ZPArray *array) {
        for (unsigned i = array ? array->count() : 0; i-- > 0;) self()->addObject(array->objectAtIndex(i));
    }
    // The library's own classes need no message for each time.
    void addTimes(id object, unsigned times) {
        if (isa == ZPCountedSet::class_()) return _ZPCountMore(id(this).unchecked<ZPCountedSet>(), object, times);
        if (isa == ZPConcreteMutableSet::class_()) times = 1;
        for (; times; --times) self()->addObject(object);
    }
    void removeTimes(id object, unsigned times) {
        if (isa == ZPCountedSet::class_()) return _ZPCountLess(id(this).unchecked<ZPCountedSet>(), object, times);
        if (isa == ZPConcreteMutableSet::class_()) times = 1;
        for (; times; --times) self()->removeObject(object);
    }
    void unionSet(ZPSet *other) {
        for (auto &member : _ZPMembers(other).list) addTimes(member.object.get(), member.count);
    }
    void minusSet(ZPSet *other) {
        if (other == this) return self()->removeAllObjects();
        for (auto &member : _ZPMembers(other).list) removeTimes(member.object.get(), member.count);
    }
    void intersectSet(ZPSet *other) {
        if (other == this) return;
        if (!other || !other->count()) return self()->removeAllObjects();
        std::vector<_ZPMembers::Member> excess;
        _ZPForEachMember(this, [&](id member, unsigned count) {
            unsigned there = other->countForObject(member);
            if (count > there) excess.push_back({ZPRef<ZPObject>(member), count - there});
            return true;
        });
        for (auto at = excess.rbegin(); at != excess.rend(); ++at) removeTimes(at->object.get(), at->count);
    }
    void setSet(ZPSet *other) {
        if (!other || other == this) return;
        self()->removeAllObjects();
        self()->unionSet(other);
    }
    void removeAllObjects() {
        _ZPMembers members(this);
        for (auto at = members.list.rbegin(); at != members.list.rend(); ++at) removeTimes(at->object.get(), at->count);
    }
    Class classForCoder() { return ZPMutableSet::class_(); }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPSet, ZPSetMethods, adopts(ZPCopying, ZPMutableCopying), initWithObjects_count,
                  variadic(initWithObjects), initWithArray, initWithSet, initWithSet_copyItems, count, member,
                  objectEnumerator, allObjects, anyObject, containsObject, countForObject, members_notFoundMarker,
                  intersectsSet, isEqualToSet, isSubsetOfSet, isEqual, hash, makeObjectsPerform,
                  makeObjectsPerform_withObject, makeObjectsPerformSelector, makeObjectsPerformSelector_withObject,
                  description, descriptionWithLocale, copyWithZone, mutableCopyWithZone, classForCoder,
                  classMethodsOf(ZPSetClassMethods, allocWithZone, set, setWithObject, setWithObjects_count,
                                 variadic(setWithObjects), setWithArray, setWithSet));

ZP_IMPLEMENT_WITH(ZPMutableSet, ZPMutableSetMethods, initWithCapacity, addObject, removeObject, addObjectsFromArray,
                  unionSet, minusSet, intersectSet, setSet, removeAllObjects, classForCoder,
                  classMethodsOf(ZPSetClassMethods, setWithCapacity));
