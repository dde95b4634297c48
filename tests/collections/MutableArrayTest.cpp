// SPDX-License-Identifier: MIT
// Changing arrays, over the concrete class and a client subclass with the primitives only.
#include "Support.h"

namespace {

struct MutableArray : CollectionTest, testing::WithParamInterface<Class> {
    ZPMutableArray *make(const std::vector<id> &items) {
        return objc_msgSend<id>(GetParam(), "arrayWithObjects:count:"_sel, items.data(), unsigned(items.size()));
    }
    ZPMutableArray *make(std::initializer_list<int> values) { return make(itemsOf(values)); }
};

INSTANTIATE_TEST_SUITE_P(Forms, MutableArray, testing::Values(ZPMutableArray::class_(), PlainMutableArray::class_()),
                         [](auto &info) { return info.param->name; });

TEST_P(MutableArray, ReplacesRanges) {
    auto replace = [&](ZPRange range, std::initializer_list<int> by) {
        ZPMutableArray *array = make({0, 1, 2, 3, 4});
        array->replaceObjectsInRange_withObjectsFromArray(range, make(by));
        return valuesOf(array);
    };
    EXPECT_EQ(replace({1, 2}, {8, 9}), (Values{0, 8, 9, 3, 4}));
    EXPECT_EQ(replace({1, 3}, {8}), (Values{0, 8, 4}));
    EXPECT_EQ(replace({1, 1}, {7, 8, 9}), (Values{0, 7, 8, 9, 2, 3, 4}));
    EXPECT_EQ(replace({0, 5}, {}), (Values{}));
    EXPECT_REFUSED(replace({4, 2}, {}));
    ZPMutableArray *array = make({0, 1, 2});
    array->replaceObjectsInRange_withObjectsFromArray({1, 1}, array);
    EXPECT_EQ(valuesOf(array), (Values{0, 0, 1, 2, 2})) << "with itself";
    array->replaceObjectsInRange_withObjectsFromArray_range({0, 3}, make({5, 6, 7, 8}), {2, 2});
    EXPECT_EQ(valuesOf(array), (Values{7, 8, 2, 2}));
    EXPECT_REFUSED(array->replaceObjectsInRange_withObjectsFromArray_range({0, 0}, make({5}), {1, 1}));
    EXPECT_REFUSED(array->replaceObjectsInRange_withObjectsFromArray_range({0, 1}, nullptr, {0, 1}));
}

TEST_P(MutableArray, RemovesWhatMatches) {
    TestItem *a = TestItem::with(1), *b = TestItem::with(1);
    a->retain();
    ZPMutableArray *array = make({b, a, TestItem::with(2), a, b});
    array->removeObjectIdenticalTo_inRange(a, {2, 3});
    EXPECT_EQ(valuesOf(array), (Values{1, 1, 2, 1}));
    array->removeObjectIdenticalTo(b);
    EXPECT_EQ(valuesOf(array), (Values{1, 2}));
    array->removeObject(TestItem::with(1));
    EXPECT_EQ(valuesOf(array), (Values{2}));
    array->removeObject(nullptr);
    array->removeObject_inRange(TestItem::with(2), {0, 0});
    EXPECT_EQ(valuesOf(array), (Values{2}));
    EXPECT_REFUSED(array->removeObject_inRange(a, {0, 2}));
    a->release();
}

TEST_P(MutableArray, RemovingStopsWhenTheObjectMayBeGone) {
    // Only the array keeps the searched object: once its references are given up, an equal one stays.
    TestItem *a;
    ZPMutableArray *array;
    {
        ZPAutoreleasePoolScope inner;
        a = TestItem::with(1);
        std::vector<id> items = {TestItem::with(1), a, a, TestItem::with(1)};
        array = make(items)->retain();
    }
    EXPECT_EQ(a->retainCount(), 2u);
    array->removeObject(a);
    EXPECT_EQ(array->count(), 1u);
    array->release();
}

TEST_P(MutableArray, RemovesManyAcrossBlocks) {
    std::vector<id> items;
    for (int i = 0; i < 1000; ++i) items.push_back(TestItem::with(i % 5));
    ZPMutableArray *array = make(items);
    array->removeObject(TestItem::with(3));
    EXPECT_EQ(array->count(), 800u);
    array->removeObjectsInArray(ZPArray::arrayWithObjects(TestItem::with(0), TestItem::with(4)));
    EXPECT_EQ(array->count(), 400u);
    array->removeObjectsInArray(array);
    EXPECT_EQ(array->count(), 0u);
}

TEST_P(MutableArray, RemovesByIndexes) {
    auto remove = [&](std::vector<unsigned> indices) {
        ZPMutableArray *array = make({0, 1, 2, 3, 4, 5, 6});
        array->removeObjectsFromIndices_numIndices(indices.data(), unsigned(indices.size()));
        return valuesOf(array);
    };
    EXPECT_EQ(remove({0, 2, 6}), (Values{1, 3, 4, 5}));
    EXPECT_EQ(remove({2, 2}), (Values{0, 1, 4, 5, 6})) << "equal neighbours in order remove two";
    EXPECT_EQ(remove({5, 2, 5}), (Values{0, 1, 3, 4, 6})) << "out of order each once";
    EXPECT_EQ(remove({}), (Values{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_REFUSED(remove({0, 7}));
    EXPECT_REFUSED(remove({7, 0}));
    ZPMutableArray *array = make({0, 1, 2, 3});
    array->removeObjectsInRange({1, 2});
    EXPECT_EQ(valuesOf(array), (Values{0, 3}));
    EXPECT_REFUSED(array->removeObjectsInRange({1, 2}));
    EXPECT_REFUSED(array->removeObjectsInRange({1, 0xFFFFFFFF}));
    EXPECT_EQ(valuesOf(array), (Values{0, 3}));
}

TEST_P(MutableArray, ExchangesAndSets) {
    ZPMutableArray *array = make({0, 1, 2});
    array->exchangeObjectAtIndex_withObjectAtIndex(0, 2);
    EXPECT_EQ(valuesOf(array), (Values{2, 1, 0}));
    EXPECT_REFUSED(array->exchangeObjectAtIndex_withObjectAtIndex(0, 3));
    array->setArray(make({7, 8}));
    EXPECT_EQ(valuesOf(array), (Values{7, 8}));
    array->addObjectsFromArray(array);
    EXPECT_EQ(valuesOf(array), (Values{7, 8, 7, 8}));
}

TEST_P(MutableArray, AgreesWithAVectorUnderRandomChanges) {
    std::mt19937 random(11);
    ZPMutableArray *array = make({});
    Values model;
    for (int step = 0; step < 5000; ++step) {
        if (step % 500 == 499) {
            array->sortUsingSelector("compare:"_sel);
            std::sort(model.begin(), model.end());
        }
        ZPAutoreleasePoolScope inner;
        unsigned n = unsigned(model.size()), at = n ? random() % n : 0;
        int value = int(random() % 50);
        TestItem *item = TestItem::with(value);
        switch (n ? random() % 8 : 0) {
        case 0:
        case 1: array->addObject(item), model.push_back(value); break;
        case 2: array->insertObject_atIndex(item, at + 1), model.insert(model.begin() + at + 1, value); break;
        case 3: array->removeObjectAtIndex(at), model.erase(model.begin() + at); break;
        case 4: array->removeLastObject(), model.pop_back(); break;
        case 5: array->replaceObjectAtIndex_withObject(at, item), model[at] = value; break;
        case 6:
            if (random() % 4 == 0) array->removeObject(item), std::erase(model, value);
            break;
        case 7: {
            unsigned length = random() % (n - at + 1) % 5;
            Values by(random() % 5, value);
            std::vector<id> items(by.size(), item);
            array->replaceObjectsInRange_withObjectsFromArray(
                {at, length}, ZPArray::arrayWithObjects_count(items.data(), unsigned(items.size())));
            model.erase(model.begin() + at, model.begin() + at + length);
            model.insert(model.begin() + at, by.begin(), by.end());
        }
        }
        ASSERT_EQ(valuesOf(array), model) << step;
    }
}

struct ConcreteMutableArray : CollectionTest {};

TEST_F(ConcreteMutableArray, Errors) {
    ZPMutableArray *array = ZPMutableArray::arrayWithObjects("a"_zp, "b"_zp);
    auto range = [](const char *method, int index, int bound) {
        return "ZPRangeException: *** -[ZPConcreteMutableArray " + std::string(method) + "]: index (" +
               std::to_string(index) + ") beyond bounds (" + std::to_string(bound) + ")";
    };
    auto null = [](const char *method) {
        return "ZPInvalidArgumentException: *** -[ZPConcreteMutableArray " + std::string(method) +
               "]: attempt to insert nil object";
    };
    EXPECT_RAISES(null("addObject:"), array->addObject(nullptr));
    EXPECT_RAISES(null("insertObject:atIndex:"), array->insertObject_atIndex(nullptr, 0));
    EXPECT_RAISES(range("insertObject:atIndex:", 3, 3), array->insertObject_atIndex("c"_zp, 3));
    EXPECT_RAISES(null("replaceObjectAtIndex:withObject:"), array->replaceObjectAtIndex_withObject(0, nullptr));
    EXPECT_RAISES(range("replaceObjectAtIndex:withObject:", 2, 2), array->replaceObjectAtIndex_withObject(2, "c"_zp));
    EXPECT_RAISES(range("removeObjectAtIndex:", 2, 2), array->removeObjectAtIndex(2));
    EXPECT_EQ(array->count(), 2u);
    array->removeAllObjects();
    EXPECT_RAISES(range("removeLastObject", 0, 0), array->removeLastObject());
}

TEST_F(ConcreteMutableArray, ElementsAreRetainedOnce) {
    TestItem *a = TestItem::with(1), *b = TestItem::with(2);
    ZPMutableArray *array = ZPMutableArray::array();
    array->addObject(a);
    array->replaceObjectAtIndex_withObject(0, a);
    EXPECT_EQ(a->retainCount(), 2u);
    array->replaceObjectAtIndex_withObject(0, b);
    EXPECT_EQ(a->retainCount(), 1u);
    array->insertObject_atIndex(a, 0);
    array->exchangeObjectAtIndex_withObjectAtIndex(0, 1);
    EXPECT_EQ(a->retainCount(), 2u);
    array->removeObjectAtIndex(1);
    array->removeLastObject();
    EXPECT_EQ(a->retainCount(), 1u);
    EXPECT_EQ(b->retainCount(), 1u);
}

}  // namespace
