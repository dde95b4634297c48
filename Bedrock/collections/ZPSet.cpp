// SPDX-License-Identifier: MIT
// What every set does, on `count`, `member:` and `objectEnumerator`, and every mutable one, on `addObject:`
// and `removeObject:` too. The set algebra counts members, so that it is multiset algebra when a counted set
// takes part.
#include <Bedrock/collections/ZPSet+Internal.h>
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
        explicit New(Class self) : New(static_cast<ZPSet *>(objc_msgSend<id>(self, "alloc"_sel))) {}
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
    static id withObjectsCount(Class self, const id *objects, unsigned count) {
        New made(self);
        return made.finish(made->initWithObjects_count(objects, count));
    }
    static id withObject(Class self, id object) { return withObjectsCount(self, &object, 1); }
    static id withObjects(Class self, id first, std::va_list rest) {
        _ZPObjectList list;
        _ZPGatherList(list, first, rest);
        return withObjectsCount(self, list.items, list.count);
    }
    static id withArray(Class self, ZPArray *array) {
        New made(self);
        return made.finish(made->initWithArray(array));
    }
    static id withSet(Class self, ZPSet *other) {
        New made(self);
        return made.finish(made->initWithSet(other));
    }
    static id withCapacity(Class self, unsigned capacity) {
        New made(self);
        return made.finish(static_cast<ZPMutableSet *>(made.set)->initWithCapacity(capacity));
    }
};

struct ZPSetMethods : ZPSet {
    // ---- initialisers ----
    id initWithObjectsCount(const id *, unsigned) { _ZPRequestConcreteObject(this, "initWithObjects:count:"_sel); }
    id initWithObjectList(id first, std::va_list rest) {
        _ZPObjectList list;
        _ZPGatherList(list, first, rest);
        return ZPSet::initWithObjects_count(list.items, list.count);
    }
    id initWithArray(ZPArray *array) {
        _ZPElements elements(array);
        return ZPSet::initWithObjects_count(elements.items, elements.count);
    }
    id initWithSet(ZPSet *other) { return ZPSet::initWithSet_copyItems(other, NO); }
    id initWithSet_copyItems(ZPSet *other, BOOL copyItems) {
        _ZPObjectList members;
        _ZPForEachMember(other, [&](id member, unsigned) {
            members.add(member);
            return true;
        });
        if (!copyItems) return ZPSet::initWithObjects_count(members.items, members.count);
        _ZPObjectBuffer copies(members.count);
        _ZPReleaser releaser{copies.items, 0};
        ZPZone *zone = this->zone();
        for (; releaser.count < members.count; ++releaser.count)
            copies.items[releaser.count] = members.items[releaser.count]->copyWithZone(zone);
        return ZPSet::initWithObjects_count(copies.items, members.count);
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
        _ZPForEachMember(this, [&](id member, unsigned) {
            any = member;
            return false;
        });
        return any;
    }
    BOOL containsObject(id object) { return object && ZPSet::member(object); }
    unsigned countForObject(id object) { return object && ZPSet::member(object) ? 1 : 0; }
    ZPArray *members(ZPArray *objects, id marker) {
        _ZPElements o(objects);
        _ZPObjectBuffer found(o.count);
        for (unsigned i = 0; i < o.count; ++i) {
            id member = ZPSet::member(o.items[i]);
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
        if (!other || ZPSet::count() != other->count()) return NO;
        BOOL equal = YES;
        _ZPForEachMember(this, [&](id member, unsigned count) {
            equal = other->countForObject(member) == count;
            return bool(equal);
        });
        return equal;
    }
    BOOL isSubsetOfSet(ZPSet *other) {
        if (other == this) return YES;
        if (ZPSet::count() > (other ? other->count() : 0)) return NO;
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
        return ZPSet::isEqualToSet(other);
    }
    unsigned hash() { return ZPSet::count(); }

    // ---- messages to all ----
    void perform(SEL selector) { performWith(selector, nullptr); }
    void makeObjectsPerformSelector(SEL selector) { performWith(selector, nullptr); }
    void makeObjectsPerformSelector_withObject(SEL selector, id object) { performWith(selector, object); }
    void performWith(SEL selector, id object) {
        _ZPMembers members(this);
        for (auto &member : members.list) member.object->performSelector_withObject(selector, object);
    }

    // ---- description ----
    ZPString *description() { return ZPSet::descriptionWithLocale(nullptr); }
    ZPString *descriptionWithLocale(ZPDictionary *locale) {
        bool counted = ZPObject::isKindOfClass(ZPCountedSet::class_());
        ZPMutableString *text =
            ZPMutableString::stringWithFormat("<%s: 0x%lx> ("_zp, isa->name, reinterpret_cast<unsigned long>(this));
        bool first = true;
        for (auto &member : _ZPMembers(this).list) {
            if (!first) text->appendString(", "_zp);
            first = false;
            SEL selector = "descriptionWithLocale:"_sel;
            bool localized = member.object->respondsToSelector(selector);
            text->appendString(localized ? objc_msgSend<ZPString *>(member.object, selector, locale)
                                         : member.object->description());
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
        for (unsigned i = array ? array->count() : 0; i-- > 0;) ZPMutableSet::addObject(array->objectAtIndex(i));
    }
    // The library's own classes need no message for each time.
    void addTimes(id object, unsigned times) {
        if (isa == ZPCountedSet::class_()) return _ZPCountMore(id(this).unchecked<ZPCountedSet>(), object, times);
        if (isa == ZPConcreteMutableSet::class_()) times = 1;
        for (; times; --times) ZPMutableSet::addObject(object);
    }
    void removeTimes(id object, unsigned times) {
        if (isa == ZPCountedSet::class_()) return _ZPCountLess(id(this).unchecked<ZPCountedSet>(), object, times);
        if (isa == ZPConcreteMutableSet::class_()) times = 1;
        for (; times; --times) ZPMutableSet::removeObject(object);
    }
    void unionSet(ZPSet *other) {
        for (auto &member : _ZPMembers(other).list) addTimes(member.object, member.count);
    }
    void minusSet(ZPSet *other) {
        if (other == this) return ZPMutableSet::removeAllObjects();
        for (auto &member : _ZPMembers(other).list) removeTimes(member.object, member.count);
    }
    void intersectSet(ZPSet *other) {
        if (other == this) return;
        if (!other || !other->count()) return ZPMutableSet::removeAllObjects();
        std::vector<_ZPMembers::Member> excess;
        _ZPForEachMember(this, [&](id member, unsigned count) {
            unsigned there = other->countForObject(member);
            if (count > there) excess.push_back({member, count - there});
            return true;
        });
        for (auto at = excess.rbegin(); at != excess.rend(); ++at) removeTimes(at->object, at->count);
    }
    void setSet(ZPSet *other) {
        if (!other || other == this) return;
        ZPMutableSet::removeAllObjects();
        ZPMutableSet::unionSet(other);
    }
    void removeAllObjects() {
        _ZPMembers members(this);
        for (auto at = members.list.rbegin(); at != members.list.rend(); ++at) removeTimes(at->object, at->count);
    }
    Class classForCoder() { return ZPMutableSet::class_(); }
};

}  // namespace

ZP_IMPLEMENT(ZPSet)
    .adopts<ZPCopying, ZPMutableCopying>()
    .classMethod<&ZPSetClassMethods::allocWithZone>("allocWithZone:")
    .classMethod<&ZPSetClassMethods::set>("set")
    .classMethod<&ZPSetClassMethods::withObject>("setWithObject:")
    .classMethod<&ZPSetClassMethods::withObjectsCount>("setWithObjects:count:")
    .variadicClassMethod<&ZPSetClassMethods::withObjects>("setWithObjects:")
    .classMethod<&ZPSetClassMethods::withArray>("setWithArray:")
    .classMethod<&ZPSetClassMethods::withSet>("setWithSet:")
    .method<&ZPSetMethods::initWithObjectsCount>("initWithObjects:count:")
    .variadic<&ZPSetMethods::initWithObjectList>("initWithObjects:")
    .method<&ZPSetMethods::initWithArray>("initWithArray:")
    .method<&ZPSetMethods::initWithSet>("initWithSet:")
    .method<&ZPSetMethods::initWithSet_copyItems>("initWithSet:copyItems:")
    .method<&ZPSetMethods::count>("count")
    .method<&ZPSetMethods::member>("member:")
    .method<&ZPSetMethods::objectEnumerator>("objectEnumerator")
    .method<&ZPSetMethods::allObjects>("allObjects")
    .method<&ZPSetMethods::anyObject>("anyObject")
    .method<&ZPSetMethods::containsObject>("containsObject:")
    .method<&ZPSetMethods::countForObject>("countForObject:")
    .method<&ZPSetMethods::members>("members:notFoundMarker:")
    .method<&ZPSetMethods::intersectsSet>("intersectsSet:")
    .method<&ZPSetMethods::isEqualToSet>("isEqualToSet:")
    .method<&ZPSetMethods::isSubsetOfSet>("isSubsetOfSet:")
    .method<&ZPSetMethods::isEqual>("isEqual:")
    .method<&ZPSetMethods::hash>("hash")
    .method<&ZPSetMethods::perform>("makeObjectsPerform:")
    .method<&ZPSetMethods::performWith>("makeObjectsPerform:withObject:")
    .method<&ZPSetMethods::makeObjectsPerformSelector>("makeObjectsPerformSelector:")
    .method<&ZPSetMethods::makeObjectsPerformSelector_withObject>("makeObjectsPerformSelector:withObject:")
    .method<&ZPSetMethods::description>("description")
    .method<&ZPSetMethods::descriptionWithLocale>("descriptionWithLocale:")
    .method<&ZPSetMethods::copyWithZone>("copyWithZone:")
    .method<&ZPSetMethods::mutableCopyWithZone>("mutableCopyWithZone:")
    .method<&ZPSetMethods::classForCoder>("classForCoder");

ZP_IMPLEMENT(ZPMutableSet)
    .classMethod<&ZPSetClassMethods::withCapacity>("setWithCapacity:")
    .method<&ZPMutableSetMethods::initWithCapacity>("initWithCapacity:")
    .method<&ZPMutableSetMethods::addObject>("addObject:")
    .method<&ZPMutableSetMethods::removeObject>("removeObject:")
    .method<&ZPMutableSetMethods::addObjectsFromArray>("addObjectsFromArray:")
    .method<&ZPMutableSetMethods::unionSet>("unionSet:")
    .method<&ZPMutableSetMethods::minusSet>("minusSet:")
    .method<&ZPMutableSetMethods::intersectSet>("intersectSet:")
    .method<&ZPMutableSetMethods::setSet>("setSet:")
    .method<&ZPMutableSetMethods::removeAllObjects>("removeAllObjects")
    .method<&ZPMutableSetMethods::classForCoder>("classForCoder");
