// SPDX-License-Identifier: MIT
// Sets over every storage form, and multisets.
#include "Support.h"

ZP_IMPLEMENT(PlainMutableSet, init, initWithCapacity, initWithObjects_count, count, member, objectEnumerator, addObject,
             removeObject);

namespace {

std::multiset<int> contentsOf(ZPSet *set) {
    std::multiset<int> contents;
    ZPEnumerator *e = set->objectEnumerator();
    while (id member = e->nextObject())
        for (unsigned i = set->countForObject(member); i; --i) contents.insert(valueOf(member));
    return contents;
}
using Contents = std::multiset<int>;

ZPSet *makeSet(Class cls, const Values &values) {
    return make<ZPSet>(cls, "setWithObjects:count:"_sel, itemsOf(values));
}

struct Set : CollectionTest, testing::WithParamInterface<Class> {
    ZPSet *make(const Values &values) { return makeSet(GetParam(), values); }
    bool counts() { return GetParam() == ZPCountedSet::class_(); }
};
struct MutableSet : Set {
    ZPMutableSet *make(const Values &values) { return (ZPMutableSet *)Set::make(values); }
};
INSTANTIATE_TEST_SUITE_P(Forms, Set,
                         testing::Values(ZPSet::class_(), ZPMutableSet::class_(), ZPCountedSet::class_(),
                                         PlainMutableSet::class_()),
                         nameOfParameter);
INSTANTIATE_TEST_SUITE_P(Forms, MutableSet,
                         testing::Values(ZPMutableSet::class_(), ZPCountedSet::class_(), PlainMutableSet::class_()),
                         nameOfParameter);

TEST_P(Set, Members) {
    std::vector<id> objects = itemsOf({1, 1, 2, 1});
    id first = objects[0];
    ZPSet *set = ::make<ZPSet>(GetParam(), "setWithObjects:count:"_sel, objects);
    EXPECT_EQ(set->count(), 2u);
    EXPECT_EQ(set->member(objects[3]), first) << "the first of equal objects is the member";
    EXPECT_EQ(first->retainCount(), 2u);
    EXPECT_EQ(set->member(TestItem::with(3)), nullptr);
    EXPECT_EQ(set->countForObject(first), counts() ? 3u : 1u);
    EXPECT_EQ(set->hash(), 2u);
    EXPECT_EQ(set->anyObject(), set->allObjects()->objectAtIndex(0));
    EXPECT_EQ(make({})->anyObject(), nullptr);
    EXPECT_TRUE(set->containsObject(first) && !set->containsObject(TestItem::with(3)));
    ZPArray *asked = ZPArray::arrayWithObjects(TestItem::with(2), TestItem::with(7));
    EXPECT_EQ(valuesOf(set->members_notFoundMarker(asked, TestItem::with(-9))), (Values{2, -9}));
    TestItem *sum = TestItem::with(0);
    set->makeObjectsPerformSelector_withObject("add:"_sel, sum);
    EXPECT_EQ(sum->value, 3);
}

TEST_P(Set, Copies) {
    ZPSet *set = make({1, 2});
    id one = set->member(TestItem::with(1));
    ZPSet *copy = set->copy()->autorelease(), *mutableCopy = set->mutableCopy()->autorelease();
    EXPECT_TRUE(copy->isEqual(set));
    EXPECT_EQ(mutableCopy->member(one), one);
    EXPECT_STREQ(copy->isa->name, counts() ? "ZPCountedSet" : "ZPConcreteSet");
    EXPECT_STREQ(mutableCopy->isa->name, counts() ? "ZPCountedSet" : "ZPConcreteMutableSet");
    EXPECT_EQ(copy == set, GetParam() == ZPSet::class_());
    // A mutable set's copy shares the members, a counted or a client's set's copies them.
    EXPECT_EQ(copy->member(one) == one, GetParam() == ZPSet::class_() || GetParam() == ZPMutableSet::class_());
}

// Relations and changes, beside multisets; a set that does not count has each member once.
TEST_P(MutableSet, AgreesWithAMultisetUnderRandomChanges) {
    const Class classes[] = {ZPSet::class_(), ZPMutableSet::class_(), ZPCountedSet::class_(),
                             PlainMutableSet::class_()};
    auto once = [](Contents c) {
        for (auto it = c.begin(); it != c.end();) it = c.count(*it) > 1 ? c.erase(it) : std::next(it);
        return c;
    };
    auto includes = [](const Contents &all, const Contents &some) {
        return std::includes(all.begin(), all.end(), some.begin(), some.end());
    };
    std::mt19937 random(2);
    ZPMutableSet *set = make({});
    Contents model;
    for (int step = 0; step < 3000; ++step) {
        ZPAutoreleasePoolScope inner;
        Values values(random() % 6);
        for (int &value : values) value = int(random() % 8);
        Class cls = classes[random() % 4];
        ZPSet *other = random() % 20 ? makeSet(cls, values) : random() % 2 ? set : nullptr;
        Contents its = other ? contentsOf(other) : Contents(), all, common = once(model);
        bool otherCounts = other && other->isKindOfClass(ZPCountedSet::class_());
        std::erase_if(common, [&](int value) { return !its.count(value); });
        EXPECT_EQ(set->intersectsSet(other) != NO, !common.empty());
        if (!counts() || otherCounts || !other) {
            EXPECT_EQ(set->isSubsetOfSet(other) != NO, includes(its, model)) << step;
        }
        if (counts() == otherCounts) {
            EXPECT_EQ(set->isEqual(other) != NO, other && its == model) << step;
        }
        EXPECT_EQ(contentsOf(ZPSet::setWithSet(set)), once(model));
        EXPECT_EQ(contentsOf(ZPCountedSet::setWithSet(set)), model);
        int value = int(random() % 8);
        switch (random() % 6) {
        case 0:
            set->addObject(TestItem::with(value));
            model.insert(value);
            break;
        case 1:
            set->removeObject(TestItem::with(value));
            if (model.count(value)) model.erase(model.find(value));
            break;
        case 2:
            set->unionSet(other);
            model.insert(its.begin(), its.end());
            break;
        case 3:
            set->minusSet(other);
            std::set_difference(model.begin(), model.end(), its.begin(), its.end(), std::inserter(all, all.end()));
            model = all;
            break;
        case 4:
            set->intersectSet(other);
            std::set_intersection(model.begin(), model.end(), its.begin(), its.end(), std::inserter(all, all.end()));
            model = all;
            break;
        default:
            set->addObjectsFromArray(ZPArray::arrayWithObjects_count(itemsOf(values).data(), unsigned(values.size())));
            model.insert(values.begin(), values.end());
        }
        if (!counts()) model = once(model);
        ASSERT_EQ(contentsOf(set), model) << step;
        ASSERT_EQ(set->count(), once(model).size());
        EXPECT_EQ(set->anyObject(), set->objectEnumerator()->nextObject());
        if (random() % 50 == 0 && other) set->setSet(other), model = counts() ? its : once(its);
        if (random() % 30 == 0) set->removeAllObjects(), model.clear();
    }
    while (id member = set->anyObject()) set->removeObject(member);
    EXPECT_EQ(set->count(), 0u);
}

TEST_P(MutableSet, TheFirstOfEqualObjectsIsKept) {
    TestItem *a = TestItem::with(1), *b = TestItem::with(1);
    ZPMutableSet *set = make({});
    for (TestItem *item : {a, b}) set->addObject(item);
    EXPECT_EQ(retained(a, b), (Counts{2, 1}));
    set->removeAllObjects();
    EXPECT_EQ(set->count(), 0u);
}

struct ConcreteSet : CollectionTest {};

TEST_F(ConcreteSet, Errors) {
    const char add[] = " addObject:]: attempt to insert nil object",
               remove[] = " removeObject:]: attempt to remove nil object";
    for (ZPMutableSet *set : {ZPMutableSet::set(), static_cast<ZPMutableSet *>(ZPCountedSet::set())}) {
        EXPECT_RAISES(invalid(std::string("-[") + set->isa->name + add), set->addObject(nullptr));
        EXPECT_RAISES(invalid(std::string("-[") + set->isa->name + remove), set->removeObject(nullptr));
    }
    EXPECT_RAISES(invalid("-[ZPConcreteSet initWithObjects:count:]: attempt to insert nil object"),
                  ZPSet::setWithObject(nullptr));
    EXPECT_RAISES(invalid("-[ZPConcreteMutableSet initWithCapacity:]: absurd capacity: 268435456"),
                  ZPMutableSet::setWithCapacity(0x10000000));
    EXPECT_EQ(ZPSet::setWithObjects(), ZPSet::set());
}

TEST_F(ConcreteSet, Descriptions) {
    auto described = [](ZPSet *set, const char *cls, const char *members) {
        unsigned long at = reinterpret_cast<unsigned long>(set);
        EXPECT_EQ(text(set->description()), text(ZPString::stringWithFormat("<%s: 0x%lx> %s"_zp, cls, at, members)));
    };
    described(ZPSet::set(), "ZPConcreteSet", "()");
    described(ZPSet::setWithObjects("a"_zp, "b"_zp), "ZPConcreteSet", "(b, a)");
    described(ZPCountedSet::setWithObjects("a"_zp, "a"_zp), "ZPCountedSet", "(a [2])");
}

}  // namespace
