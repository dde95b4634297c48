// SPDX-License-Identifier: MIT
// Changing arrays, over the concrete class and a client subclass with the primitives only.
#include "Support.h"

#include <numeric>

namespace {

struct MutableArray : CollectionTest, testing::WithParamInterface<Class> {
    ZPMutableArray *make(const std::vector<id> &items) {
        return ::make<ZPMutableArray>(GetParam(), "arrayWithObjects:count:"_sel, items);
    }
    ZPMutableArray *make(const Values &values) { return make(itemsOf(values)); }
    ZPMutableArray *make(std::initializer_list<int> values) { return make(Values(values)); }
};

INSTANTIATE_TEST_SUITE_P(Forms, MutableArray, testing::Values(ZPMutableArray::class_(), PlainMutableArray::class_()),
                         nameOfParameter);

TEST_P(MutableArray, RefusesRangesOutsideAndTakesItself) {
    ZPMutableArray *array = make({0, 1, 2});
    EXPECT_REFUSED(array->replaceObjectsInRange_withObjectsFromArray({2, 2}, make({})));
    EXPECT_REFUSED(array->replaceObjectsInRange_withObjectsFromArray_range({0, 0}, make({5}), {1, 1}));
    EXPECT_REFUSED(array->replaceObjectsInRange_withObjectsFromArray_range({0, 1}, nullptr, {0, 1}));
    EXPECT_REFUSED(array->removeObject_inRange("x"_zp, {0, 4}));
    EXPECT_REFUSED(array->exchangeObjectAtIndex_withObjectAtIndex(0, 3));
    EXPECT_REFUSED(array->removeObjectsInRange({2, 2}));
    EXPECT_REFUSED(array->removeObjectsInRange({1, 0xFFFFFFFF}));
    array->removeObject(nullptr);
    EXPECT_EQ(valuesOf(array), (Values{0, 1, 2}));
    array->replaceObjectsInRange_withObjectsFromArray({1, 1}, array);
    EXPECT_EQ(valuesOf(array), (Values{0, 0, 1, 2, 2}));
    array->addObjectsFromArray(array);
    array->removeObjectsInArray(array);
    EXPECT_EQ(array->count(), 0u);
}

TEST_P(MutableArray, RemovesWhatMatches) {
    TestItem *a = TestItem::with(1), *b = TestItem::with(1);
    a->retain();
    ZPMutableArray *array = make({b, a, TestItem::with(2), a, b});
    array->removeObjectIdenticalTo_inRange(a, {2, 3});
    EXPECT_EQ(valuesOf(array), (Values{1, 1, 2, 1}));
    array->removeObjectIdenticalTo(b);
    EXPECT_EQ(valuesOf(array), (Values{1, 2}));
    array->removeObject_inRange(TestItem::with(2), {0, 0});
    EXPECT_EQ(valuesOf(array), (Values{1, 2}));
    a->release();
    // Only the array keeps the searched object: once its references are given up, an equal one stays.
    {
        ZPAutoreleasePoolScope inner;
        a = TestItem::with(1);
        array = make({TestItem::with(1), a, a, TestItem::with(1)})->retain();
    }
    EXPECT_EQ(a->retainCount(), 2u);
    array->removeObject(a);
    EXPECT_EQ(array->count(), 1u);
    array->release();
}

TEST_P(MutableArray, RemovesManyAcrossBlocks) {
    Values values(1000);
    for (int i = 0; i < 1000; ++i) values[i] = i % 5;
    ZPMutableArray *array = make(values);
    array->removeObject(TestItem::with(3));
    array->removeObjectsInArray(ZPArray::arrayWithObjects(TestItem::with(0), TestItem::with(4)));
    EXPECT_EQ(array->count(), 400u);
}

TEST_P(MutableArray, RemovesByIndexes) {
    auto remove = [&](std::vector<unsigned> indices) {
        ZPMutableArray *array = make({0, 1, 2, 3, 4, 5, 6});
        array->removeObjectsFromIndices_numIndices(indices.data(), unsigned(indices.size()));
        return valuesOf(array);
    };
    EXPECT_EQ(remove({5, 2, 5}), (Values{0, 1, 3, 4, 6})) << "out of order each once";
    EXPECT_REFUSED(remove({0, 7}));
    EXPECT_REFUSED(remove({7, 0}));
    std::mt19937 random(4);
    for (int round = 0; round < 200; ++round) {  // ascending, some more than once, one by one from the last
        std::vector<unsigned> indices(1 + random() % 40);
        for (unsigned &index : indices) index = random() % 60;
        std::sort(indices.begin(), indices.end());
        Values wanted(100);
        std::iota(wanted.begin(), wanted.end(), 0);
        ZPMutableArray *array = make(wanted);
        for (auto at = indices.rbegin(); at != indices.rend(); ++at) wanted.erase(wanted.begin() + *at);
        array->removeObjectsFromIndices_numIndices(indices.data(), unsigned(indices.size()));
        ASSERT_EQ(valuesOf(array), wanted);
    }
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
        unsigned n = unsigned(model.size()), at = n ? random() % n : 0, other = n ? random() % n : 0;
        int value = int(random() % 50);
        TestItem *item = TestItem::with(value);
        unsigned length = n ? random() % (n - at + 1) % 5 : 0;
        Values by{value, value + 50, value, 1};
        by.resize(random() % 5);
        switch (n ? random() % 12 : 0) {
        case 0:
        case 1:
        case 2: array->addObject(item), model.push_back(value); break;
        case 3: array->insertObject_atIndex(item, at + 1), model.insert(model.begin() + at + 1, value); break;
        case 4: array->removeObjectAtIndex(at), model.erase(model.begin() + at); break;
        case 5: array->removeLastObject(), model.pop_back(); break;
        case 6: array->replaceObjectAtIndex_withObject(at, item), model[at] = value; break;
        case 7:
            if (random() % 4 == 0) array->removeObject(item), std::erase(model, value);
            break;
        case 8: array->exchangeObjectAtIndex_withObjectAtIndex(at, other), std::swap(model[at], model[other]); break;
        case 9:
            if (random() % 100 == 0) array->setArray(make(by)), model = by;
            else
                array->removeObjectsInRange({at, length}), model.erase(model.begin() + at, model.begin() + at + length);
            break;
        default: {
            unsigned from = unsigned(random() % (by.size() + 1)), count = unsigned(by.size()) - from;
            if (from) array->replaceObjectsInRange_withObjectsFromArray_range({at, length}, make(by), {from, count});
            else array->replaceObjectsInRange_withObjectsFromArray({at, length}, make(by));
            model.erase(model.begin() + at, model.begin() + at + length);
            model.insert(model.begin() + at, by.begin() + from, by.end());
        }
        }
        ASSERT_EQ(valuesOf(array), model) << step;
    }
}

struct ConcreteMutableArray : CollectionTest {};

TEST_F(ConcreteMutableArray, Errors) {
    ZPMutableArray *array = ZPMutableArray::arrayWithObjects("a"_zp, "b"_zp);
    auto null = [](const char *method) { return std::string(method) + "]: attempt to insert nil object"; };
    auto range = [](const char *method, char index) {
        return std::string(method) + "]: index (" + index + ") beyond bounds (" + index + ")";
    };
    const std::pair<std::string, std::function<void()>> cases[] = {
        {null("addObject:"), [=] { array->addObject(nullptr); }},
        {null("insertObject:atIndex:"), [=] { array->insertObject_atIndex(nullptr, 0); }},
        {null("replaceObjectAtIndex:withObject:"), [=] { array->replaceObjectAtIndex_withObject(0, nullptr); }},
        {range("insertObject:atIndex:", '3'), [=] { array->insertObject_atIndex("c"_zp, 3); }},
        {range("replaceObjectAtIndex:withObject:", '2'), [=] { array->replaceObjectAtIndex_withObject(2, "c"_zp); }},
        {range("removeObjectAtIndex:", '2'), [=] { array->removeObjectAtIndex(2); }},
        {range("removeLastObject", '0'), [] { ZPMutableArray::array()->removeLastObject(); }},
    };
    for (auto &[reason, body] : cases) EXPECT_EQ(reasonOf(body), "*** -[ZPConcreteMutableArray " + reason);
    EXPECT_EQ(array->count(), 2u);
}

TEST_F(ConcreteMutableArray, AnElementMayTakeItsOwnPlace) {
    TestItem *a = TestItem::with(1);
    ZPMutableArray *array = ZPMutableArray::arrayWithObject(a);
    array->replaceObjectAtIndex_withObject(0, a);
    array->exchangeObjectAtIndex_withObjectAtIndex(0, 0);
    EXPECT_EQ(a->retainCount(), 2u);
}

}  // namespace
