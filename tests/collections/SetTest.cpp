// SPDX-License-Identifier: MIT
// Sets over every storage form, and multisets.
#include "Support.h"

#include <numeric>

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
    ZPArray *asked = ZPArray::arrayWithObjects(TestItem::with(2), TestItem::with(7));
    EXPECT_EQ(valuesOf(set->members_notFoundMarker(asked, TestItem::with(-9))), (Values{2, -9}));
    TestItem *sum = TestItem::with(0);
    set->makeObjectsPerformSelector_withObject("add:"_sel, sum);
    EXPECT_EQ(sum->value, 3);
}

TEST_P(Set, Relations) {
    ZPSet *set = make({1, 2, 3});
    for (Class cls : {ZPSet::class_(), ZPMutableSet::class_(), ZPCountedSet::class_(), PlainMutableSet::class_()}) {
        auto its = [&](const Values &values) { return makeSet(cls, values); };
        EXPECT_TRUE(set->isEqual(its({3, 2, 1}))) << cls->name;
        EXPECT_FALSE(set->isEqual(its({1, 2, 4})) || set->isEqual(its({1, 2}))) << cls->name;
        EXPECT_TRUE(set->isSubsetOfSet(its({0, 1, 2, 3})) && !set->isSubsetOfSet(its({1, 2, 4, 5}))) << cls->name;
        EXPECT_TRUE(set->intersectsSet(its({3, 4})) && !set->intersectsSet(its({4}))) << cls->name;
    }
    EXPECT_FALSE(set->isEqual(nullptr));
    EXPECT_FALSE(set->isSubsetOfSet(nullptr));
    EXPECT_TRUE(make({})->isSubsetOfSet(nullptr));
    EXPECT_FALSE(set->intersectsSet(nullptr));
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

TEST_P(Set, CountsSurviveIntoACountedSet) {
    ZPCountedSet *counted = ZPCountedSet::setWithSet(make({1, 1, 2}));
    EXPECT_EQ(contentsOf(counted), counts() ? (Contents{1, 1, 2}) : (Contents{1, 2}));
    EXPECT_EQ(contentsOf(ZPSet::setWithSet(counted)), (Contents{1, 2}));
}

TEST_P(MutableSet, IsEmptiedInTheOrderOfEnumeration) {
    Values values(500);
    std::iota(values.begin(), values.end(), 0);
    ZPMutableSet *set = make(values);
    std::mt19937 random(2);
    for (int step = 0; id member = set->anyObject(); ++step) {
        ASSERT_EQ(member, set->objectEnumerator()->nextObject());
        set->removeObject(member);
        if (step < 300 && random() % 3 == 0) set->addObject(TestItem::with(1000 + step));
    }
    EXPECT_EQ(set->count(), 0u);
}

TEST_P(MutableSet, Algebra) {
    auto apply = [&](void (ZPMutableSet::*operation)(ZPSet *), std::initializer_list<int> a, ZPSet *b) {
        ZPMutableSet *set = make(a);
        (set->*operation)(b);
        return contentsOf(set);
    };
    ZPSet *plain = makeSet(ZPSet::class_(), {2, 3}), *counted = makeSet(ZPCountedSet::class_(), {2, 2, 3});
    bool c = counts();
    EXPECT_EQ(apply(&ZPMutableSet::unionSet, {1, 2}, plain), c ? (Contents{1, 2, 2, 3}) : (Contents{1, 2, 3}));
    EXPECT_EQ(apply(&ZPMutableSet::unionSet, {1, 2}, counted), c ? (Contents{1, 2, 2, 2, 3}) : (Contents{1, 2, 3}));
    EXPECT_EQ(apply(&ZPMutableSet::minusSet, {1, 2, 2, 2}, counted), c ? (Contents{1, 2}) : (Contents{1}));
    EXPECT_EQ(apply(&ZPMutableSet::intersectSet, {1, 2, 2, 2, 3}, counted), c ? (Contents{2, 2, 3}) : (Contents{2, 3}));
    EXPECT_EQ(apply(&ZPMutableSet::intersectSet, {1, 2}, nullptr), (Contents{}));
    EXPECT_EQ(apply(&ZPMutableSet::setSet, {1, 2}, plain), (Contents{2, 3}));
    EXPECT_EQ(apply(&ZPMutableSet::setSet, {1, 2}, nullptr), (Contents{1, 2}));
    ZPMutableSet *set = make({1, 2, 2});
    Contents before = contentsOf(set);
    set->intersectSet(set);
    set->setSet(set);
    EXPECT_EQ(contentsOf(set), before);
    set->unionSet(set);
    EXPECT_EQ(set->countForObject(TestItem::with(2)), c ? 4u : 1u);
    set->minusSet(set);
    EXPECT_EQ(set->count(), 0u);
    set->addObjectsFromArray(ZPArray::arrayWithObjects(TestItem::with(1), TestItem::with(1)));
    EXPECT_EQ(set->countForObject(TestItem::with(1)), c ? 2u : 1u);
    for (unsigned left : {c ? 1u : 0u, 0u, 0u}) {
        set->removeObject(TestItem::with(1));
        EXPECT_EQ(set->count(), left);
    }
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

TEST_F(ConcreteSet, CountedSubsets) {
    ZPCountedSet *two = ZPCountedSet::setWithObjects("x"_zp, "x"_zp);
    EXPECT_FALSE(two->isSubsetOfSet(ZPSet::setWithObject("x"_zp)));
    EXPECT_TRUE(ZPSet::setWithObject("x"_zp)->isSubsetOfSet(two));
    EXPECT_FALSE(two->isEqual(ZPSet::setWithObject("x"_zp)));
}

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
