// SPDX-License-Identifier: MIT
// Arrays over every storage form: the two concrete classes and client subclasses with the primitives only.
#include "Support.h"

ZP_IMPLEMENT(TestItem, dealloc, hash, isEqual, copyWithZone, compare, half, add);

ZP_IMPLEMENT(PlainArray, initWithObjects_count, count, objectAtIndex);

ZP_IMPLEMENT(PlainMutableArray, initWithObjects_count, initWithCapacity, count, objectAtIndex, addObject,
             insertObject_atIndex, removeLastObject, removeObjectAtIndex, replaceObjectAtIndex_withObject);

namespace {

std::string bounds(const std::string &method, int index, int bound) {
    return "ZPRangeException: *** -[" + method + "]: index (" + std::to_string(index) + ") beyond bounds (" +
           std::to_string(bound) + ")";
}

struct Array : CollectionTest, testing::WithParamInterface<Class> {
    ZPArray *make(const std::vector<id> &items) { return ::make(GetParam(), "arrayWithObjects:count:"_sel, items); }
    ZPArray *make(std::initializer_list<int> values) { return make(itemsOf(values)); }
};

INSTANTIATE_TEST_SUITE_P(Forms, Array,
                         testing::Values(ZPArray::class_(), ZPMutableArray::class_(), PlainArray::class_(),
                                         PlainMutableArray::class_()),
                         nameOfParameter);

TEST_P(Array, Elements) {
    ZPArray *some = make({1, 2, 3});
    EXPECT_EQ(make({})->lastObject(), nullptr);
    EXPECT_EQ(valueOf(some->lastObject()), 3);
    id objects[5];
    some->getObjects(objects);
    EXPECT_EQ(valueOf(objects[2]), 3);
    some->getObjects_range(objects, {1, 2});
    EXPECT_EQ(valueOf(objects[0]), 2);
    if (GetParam()->name[0] == 'Z') {
        std::string name = some->isa->name;
        EXPECT_RAISES(bounds(name + " objectAtIndex:", 3, 3), some->objectAtIndex(3));
        EXPECT_RAISES(bounds(name + " getObjects:range:", 3, 3), some->getObjects_range(objects, {2, 2}));
    }
    EXPECT_REFUSED(some->getObjects_range(objects, {0xFFFFFFFF, 2}));
    EXPECT_RAISES("", some->getObjects_range(objects, {3, 0}));
    EXPECT_REFUSED(some->subarrayWithRange({4, 0}));
    TestItem *sum = TestItem::with(0);
    some->makeObjectsPerformSelector_withObject("add:"_sel, sum);
    some->makeObjectsPerform_withObject("add:"_sel, sum);
    EXPECT_EQ(sum->value, 12);
}

TEST_P(Array, Searches) {
    TestItem *a = TestItem::with(1), *b = TestItem::with(1), *c = TestItem::with(2);
    ZPArray *array = make({c, a, b, a});
    EXPECT_EQ(array->indexOfObject(b), 2u) << "not the equal one before it";
    EXPECT_EQ(array->indexOfObject_inRange(b, {0, 2}), 1u);
    EXPECT_EQ(array->indexOfObject_inRange(a, {2, 2}), 3u);
    EXPECT_EQ(array->indexOfObjectIdenticalTo_inRange(a, {2, 1}), ZPNotFound);
    EXPECT_EQ(array->indexOfObject_range_identical(c, {0, 4}, YES), 0u);
    EXPECT_EQ(array->indexOf(a, 2, YES), 3u);
    EXPECT_EQ(array->indexOf(a, 2, NO), 1u);
    EXPECT_EQ(array->indexOf(TestItem::with(1), 2, NO), 2u) << "backward: the highest first";
    EXPECT_EQ(array->indexOf(c, 0, NO), 0u);
    EXPECT_REFUSED(array->indexOf(c, 4, NO));
    EXPECT_EQ(array->indexOfObject(nullptr), ZPNotFound);
    EXPECT_REFUSED(array->indexOfObject_inRange(a, {3, 2}));
    EXPECT_EQ(array->indexOfAttributeBySelector_equalToObject("half"_sel, TestItem::with(1)), 0u);
    // Beyond one block.
    std::vector<id> items;
    for (int i = 0; i < 1000; ++i) items.push_back(TestItem::with(i));
    array = make(items);
    EXPECT_EQ(array->indexOfObject(TestItem::with(999)), 999u);
    EXPECT_EQ(array->indexOfObjectIdenticalTo(items[500]), 500u);
    EXPECT_EQ(array->indexOfObjectIdenticalTo(TestItem::with(1)), ZPNotFound);
    EXPECT_EQ(array->firstObjectCommonWithArray(make({5000, 300, 200})), items[200]);
}

TEST_P(Array, Equality) {
    ZPArray *array = make({1, 2});
    EXPECT_TRUE(array->isEqual(ZPMutableArray::arrayWithArray(make({1, 2}))));
    EXPECT_TRUE(PlainArray::arrayWithArray(array)->isEqual(array));
    for (ZPArray *other : {make({2, 1}), make({1}), make({}), static_cast<ZPArray *>(nullptr)})
        EXPECT_FALSE(array->isEqual(other));
    EXPECT_FALSE(make({})->isEqualToArray(nullptr));
}

TEST_P(Array, DerivedArrays) {
    ZPArray *array = make({4, 3, 2}), *empty = ZPArray::array();
    EXPECT_EQ(valuesOf(array->arrayByAddingObject(TestItem::with(1))), (Values{4, 3, 2, 1}));
    EXPECT_EQ(valuesOf(array->arrayByAddingObjectsFromArray(array)), (Values{4, 3, 2, 4, 3, 2}));
    EXPECT_EQ(valuesOf(array->arrayByApplyingSelector("half"_sel)), (Values{2, 1})) << "nulls are left out";
    EXPECT_EQ(valuesOf(array->arrayByExcludingObjectsInArray(make({3}))), (Values{4, 2}));
    EXPECT_EQ(valuesOf(array->arrayByExcludingIdenticalObjectsInArray(make({3}))), (Values{4, 3, 2}));
    EXPECT_EQ(valuesOf(array->subarrayWithRange({1, 2})), (Values{3, 2}));
    EXPECT_REFUSED(array->arrayByAddingObject(nullptr));
    // Every empty result is the one shared object.
    for (ZPArray *result :
         {array->subarrayWithRange({3, 0}), array->arrayByExcludingObjectsInArray(array),
          make({})->sortedArrayUsingSelector("compare:"_sel), ZPArray::arrayWithObjects(),
          ZPArray::alloc()->initWithObjects(), ZPArray::alloc()->init(), ZPArray::arrayWithArray(nullptr)})
        EXPECT_EQ(result, empty);
}

TEST_P(Array, Joining) {
    auto join = [&](std::vector<id> items, ZPString *separator) {
        return text(make(items)->componentsJoinedByString(separator));
    };
    EXPECT_EQ(join({}, ","_zp), "");
    EXPECT_EQ(join({"a"_zp, "bc"_zp, ""_zp}, nullptr), "abc");
    EXPECT_TRUE(
        make({"\u3042"_zp, "b"_zp, ""_zp})->componentsJoinedByString("\u20ac"_zp)->isEqual("\u3042\u20acb\u20ac"_zp));
}

TEST_P(Array, Enumeration) {
    ZPArray *array = make({1, 2, 3});
    EXPECT_EQ(valuesOf(array->objectEnumerator()), (Values{1, 2, 3}));
    EXPECT_EQ(valuesOf(array->reverseObjectEnumerator()), (Values{3, 2, 1}));
    ZPEnumerator *e = array->reverseObjectEnumerator();
    e->nextObject();
    EXPECT_EQ(valuesOf(e->allObjects()), (Values{2, 1}));
    EXPECT_EQ(e->nextObject(), nullptr);
    unsigned count = array->retainCount();
    e = array->objectEnumerator();
    for (unsigned i = 0; i < 4; ++i) {
        EXPECT_EQ(array->retainCount(), i < 3 ? count + 1 : count) << "the last element lets the array go";
        EXPECT_EQ(e->nextObject() == nullptr, i == 3);
    }
    {  // the last element outlives its array
        ZPAutoreleasePoolScope inner;
        e = make({1, 2})->objectEnumerator()->retain();
    }
    e->autorelease();
    e->nextObject();
    EXPECT_EQ(valueOf(e->nextObject()), 2);
}

TEST_P(Array, SortingIsStable) {
    std::mt19937 random(6);
    std::vector<unsigned> lengths{127, 128, 129, 400};
    for (unsigned n = 0; n < 300; ++n) lengths.push_back(n % 75);
    for (unsigned n : lengths) {
        std::vector<id> some, expected;
        for (unsigned i = 0; i < n; ++i) some.push_back(TestItem::with(int(random() % (n / 2 + 2))));
        expected = some;
        std::stable_sort(expected.begin(), expected.end(), [](id a, id b) { return valueOf(a) < valueOf(b); });
        ZPArray *sorted = make(some)->sortedArrayUsingSelector("compare:"_sel);
        for (unsigned i = 0; i < n; ++i) ASSERT_EQ(sorted->objectAtIndex(i), expected[i]) << n << " " << i;
        EXPECT_STREQ(sorted->isa->name, "ZPConcreteArray");
    }
}

TEST_P(Array, Copies) {
    ZPArray *array = make({1, 2}), *copy = array->copy()->autorelease();
    TestItem::copies = 0;
    ZPMutableArray *mutableCopy = array->mutableCopy()->autorelease();
    EXPECT_EQ(TestItem::copies, 0);
    EXPECT_EQ(mutableCopy->objectAtIndex(0), array->objectAtIndex(0));
    EXPECT_TRUE(copy->isEqual(array));
    EXPECT_EQ(copy == array, GetParam() == ZPArray::class_());
    EXPECT_EQ(copy->objectAtIndex(0) == array->objectAtIndex(0), copy == array) << "copies of the elements";
    ZPArray *withCopies = objc_msgSend<id>(GetParam(), "arrayWithArray:copyItems:"_sel, array, YES);
    EXPECT_NE(withCopies->objectAtIndex(1), array->objectAtIndex(1));
}

// ---- the immutable class -------------------------------------------------------------------------

struct ConcreteArray : CollectionTest {};

struct BareArray : ZPMutableArray {
    ZP_CLASS(BareArray)
};
ZP_IMPLEMENT(BareArray);

TEST_F(ConcreteArray, AFailedInitialiserGivesEverythingBack) {
    TestItem *a = TestItem::with(1);
    std::vector<id> items = {a, a, nullptr, a};
    for (Class cls : {ZPArray::class_(), ZPMutableArray::class_()}) {
        auto made = [&](unsigned count) {
            return raised(
                [&] { objc_msgSend<id>(cls, "arrayWithObjects:count:"_sel, (const id *)items.data(), count); });
        };
        std::string head =
            "ZPInvalidArgumentException: *** -[ZPConcrete" + std::string(cls->name + 2) + " initWithObjects:count:]: ";
        EXPECT_EQ(made(4), head + "attempt to insert nil object");
        EXPECT_EQ(made(0x8000000), head + "absurd count: 134217728");
    }
    EXPECT_RAISES("", ZPMutableArray::arrayWithCapacity(0x7FFFFFF));
    EXPECT_RAISES(invalid("-[ZPConcreteMutableArray initWithCapacity:]: absurd capacity: 134217728"),
                  ZPMutableArray::arrayWithCapacity(0x8000000));
    EXPECT_EQ(a->retainCount(), 1u);
}

TEST_F(ConcreteArray, LargeArraysLieInTheZoneAskedFor) {
    std::vector<id> list = itemsOf({1, 2, 3, 4, 5});
    TestZone zone;
    ZPArray *five = ZPArray::allocWithZone(zone)->initWithObjects_count(list.data(), 5);
    EXPECT_EQ(ZPZoneFromPointer(five), zone.zone);
    five->release();
}

TEST_F(ConcreteArray, AbstractInitialisersAndPrimitivesSayWhatIsMissing) {
    ZPMutableArray *array = BareArray::alloc()->autorelease();
    EXPECT_RAISES(invalid("-count only defined for abstract class.  Define -[BareArray count]!"), array->count());
    EXPECT_RAISES(invalid("-addObject: only defined for abstract class.  Define -[BareArray addObject:]!"),
                  array->addObject("x"_zp));
    EXPECT_REASON_HAS("-initWithCapacity: cannot be sent to an abstract object of class BareArray",
                      array->initWithCapacity(3));
}

TEST_F(ConcreteArray, SortsWithAHint) {
    std::vector<id> items;
    for (int i = 0; i < 200; ++i) items.push_back(TestItem::with(i * 7919 % 211));
    auto compare = [](id a, id b, void *calls) {
        ++*static_cast<int *>(calls);
        return valueOf(a) - valueOf(b);
    };
    int calls = 0;
    ZPArray *sorted =
        ZPArray::arrayWithObjects_count(items.data(), 200)->sortedArrayUsingFunction_context(compare, &calls);
    EXPECT_GT(calls, 800);
    id hint = sorted->sortedArrayHint();
    EXPECT_EQ(objc_msgSend<unsigned>(hint, "length"_sel), 800u);
    items[20] = TestItem::with(500);
    items[21] = TestItem::with(500);  // shares its hash
    ZPArray *changed = ZPArray::arrayWithObjects_count(items.data(), 200);
    calls = 0;
    ZPArray *again = changed->sortedArrayUsingFunction_context_hint(compare, &calls, hint);
    EXPECT_LT(calls, 450);
    EXPECT_TRUE(again->isEqual(changed->sortedArrayUsingFunction_context(compare, &calls)));
    EXPECT_TRUE(again->isEqual(changed->sortedArrayUsingSelector_hint("compare:"_sel, nullptr)));
}

TEST(MergeSort, AnswersOneOfItsLists) {
    auto compare = [](id a, id b, void *) { return valueOf(a) - valueOf(b); };
    std::vector<id> source, result(9), scratch(9);
    for (int i = 0; i < 9; ++i) source.push_back(TestItem::with(i));
    EXPECT_EQ(_ZPMergeSort(9, source.data(), result.data(), scratch.data(), compare, nullptr, YES), source.data());
    EXPECT_EQ(_ZPMergeSort(9, source.data(), result.data(), scratch.data(), compare, nullptr, NO), result.data());
}

}  // namespace
