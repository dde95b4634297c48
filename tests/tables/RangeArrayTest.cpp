// SPDX-License-Identifier: MIT
// Lists of ranges edited by position, and sets of indexes, held against lists and sets of the standard library.
#include <support/Objects.h>

namespace {

struct List {
    ZPRangeArray *array;
    explicit List(unsigned capacity = 0) : array(ZPCreateRangeArray(capacity)) {}
    ~List() { ZPFreeRangeArray(array); }
    operator ZPRangeArray *() { return array; }
};

struct Set {
    ZPSparseIndexArray *array = ZPCreateSparseIndexArray(0);
    ~Set() { ZPFreeSparseIndexArray(array); }
    operator ZPSparseIndexArray *() { return array; }
};

// The index that a query stores, or -1.
template <auto Query> long long answer(ZPSparseIndexArray *array, unsigned argument) {
    unsigned index = 0;
    return Query(array, argument, &index) ? (long long)index : -1;
}
constexpr auto successor = answer<ZPSparseIndexArrayIndexSuccessor>;
constexpr auto predecessor = answer<ZPSparseIndexArrayIndexPredecessor>;
constexpr auto nth = answer<ZPSparseIndexArrayNthIndex>;

}  // namespace

TEST(RangeArrays, DoWhatAVectorDoes) {
    std::mt19937 random(3);
    for (unsigned capacity : {0u, 5u, 8u}) {
        List list(capacity);
        std::vector<ZPRange> model;
        for (unsigned step = 0; step < 2000; ++step) {
            unsigned n = unsigned(model.size()), at = random() % (n + 1);
            ZPRange range{unsigned(random()), unsigned(random())};
            if (n == 0 || random() % 40 < 20 + step / 60 % 2) {
                ZPRangeArrayInsertRangeAtIndex(list, range, at);
                model.insert(model.begin() + at, range);
            } else if (at < n && random() % 4) {
                ZPRangeArrayRemoveRangeAtIndex(list, at);
                model.erase(model.begin() + at);
            } else if (at < n) ZPRangeArraySetRangeAtIndex(list, range, at), model[at] = range;
            ASSERT_EQ(list.array->count, model.size());
            for (unsigned i = 0; i < model.size(); ++i) ASSERT_EQ(ZPRangeArrayRangeAtIndex(list, i), model[i]);
        }
        ZPResetRangeArray(list);
        EXPECT_EQ(text(ZPStringFromRangeArray(list)), "()");
        for (unsigned n : {1, 2}) ZPRangeArrayInsertRangeAtIndex(list, {n, 1}, 0);
        EXPECT_EQ(text(ZPStringFromRangeArray(list)), "(\n    {2, 1},\n    {1, 1}\n)");
    }
}

TEST(RangeArrays, RefuseIndexesPastTheEnd) {
    List list;
    ZPRangeArrayInsertRangeAtIndex(list, {7, 2}, 0);
    EXPECT_RAISES("ZPRangeException: ", ZPRangeArrayInsertRangeAtIndex(list, {}, 2));
    EXPECT_REFUSED(ZPRangeArrayRangeAtIndex(list, 1));
    EXPECT_REFUSED(ZPRangeArraySetRangeAtIndex(list, {}, 1));
    EXPECT_REFUSED(ZPRangeArrayRemoveRangeAtIndex(list, 1));
    EXPECT_REFUSED(ZPCreateRangeArray(0xFFFFFFFE)) << "no capacity is above this one";
    TestZone zone;
    ZPRangeArray *copy = ZPCopyRangeArrayWithZone(list, zone);
    EXPECT_EQ(ZPZoneFromPointer(copy->ranges), zone.zone);
    EXPECT_TRUE(ZPCompareRangeArrays(list, copy));
    ZPRangeArraySetRangeAtIndex(copy, {8, 4}, 0);
    EXPECT_FALSE(ZPCompareRangeArrays(list, copy));
    ZPFreeRangeArray(copy);
}

TEST(SparseIndexArrays, EndAtTheLastIndex) {
    Set set;
    ZPSparseIndexArrayAddRange(set, {0xFFFFFFF0, 15});
    EXPECT_EQ(successor(set, 0xFFFFFFFD), 0xFFFFFFFE);
    EXPECT_EQ(successor(set, 0xFFFFFFFE), -1);
    EXPECT_EQ(successor(set, 0xFFFFFFFF), -1);
    EXPECT_EQ(predecessor(set, 0xFFFFFFFF), 0xFFFFFFFE);
    EXPECT_FALSE(ZPRangeInSparseIndexArray(set, {0xFFFFFFFE, 0x20}));
    EXPECT_REFUSED(ZPSparseIndexArrayAddIndex(set, 0xFFFFFFFF));
    EXPECT_REFUSED(ZPSparseIndexArrayAddRange(set, {5, 0xFFFFFFFF}));
    EXPECT_EQ(ZPCountSparseIndexArray(set), 15u);
    ZPSparseIndexArrayAddRange(set, {0, 0xFFFFFFFF});
    EXPECT_EQ(ZPCountSparseIndexArray(set), 0xFFFFFFFF);
    ZPSparseIndexArrayRemoveRange(set, {1, 0xFFFFFFFF});
    EXPECT_EQ(text(ZPStringFromSparseIndexArray(set)), "(0)");
    ZPSparseIndexArrayAddRange(set, {8, 2});
    EXPECT_EQ(text(ZPStringFromSparseIndexArray(set)), "(0, 8, 9)");
}

TEST(SparseIndexArrays, DoWhatASetDoes) {
    std::mt19937 random(11);
    for (unsigned span : {40u, 400u}) {
        Set set;
        std::set<unsigned> model;
        for (int step = 0; step < 4000; ++step) {
            ZPRange r{unsigned(random() % span), unsigned(random() % (step % 16 ? 4 : span / 2))};
            bool add = random() % 5 < (step / 500 % 2 ? 2 : 3);
            if (add) ZPSparseIndexArrayAddRange(set, r);
            else ZPSparseIndexArrayRemoveRange(set, r);
            for (unsigned i = 0; i < r.length; ++i) {
                if (add) model.insert(r.location + i);
                else model.erase(r.location + i);
            }
            ASSERT_EQ(ZPCountSparseIndexArray(set), model.size());
            for (unsigned i = 1; i < set.array->list.count; ++i) {
                ZPRange a = set.array->list.ranges[i - 1], b = set.array->list.ranges[i];
                ASSERT_TRUE(a.length && b.length && a.location + a.length < b.location);
            }
            unsigned at = random() % (span + 10);
            auto after = model.upper_bound(at), here = model.lower_bound(at);
            ASSERT_EQ(ZPIndexInSparseIndexArray(set, at) != NO, model.count(at) != 0);
            ASSERT_EQ(successor(set, at), after == model.end() ? -1 : (long long)*after);
            ASSERT_EQ(predecessor(set, at), here == model.begin() ? -1 : (long long)*std::prev(here));
            unsigned first, n = random() % (span + 10);
            ASSERT_EQ(ZPSparseIndexArrayFirstIndex(set, &first) ? int(first) : -1,
                      model.empty() ? -1 : int(*model.begin()));
            ASSERT_EQ(nth(set, n), n < model.size() ? (long long)*std::next(model.begin(), n) : -1);
            bool whole = true;
            for (unsigned i = 0; i < r.length; ++i) whole = whole && model.count(r.location + i);
            ASSERT_TRUE(!r.length || (ZPRangeInSparseIndexArray(set, r) != NO) == whole);
        }
        ZPSparseIndexArray *copy = ZPCopySparseIndexArrayWithZone(set, nullptr);
        EXPECT_TRUE(ZPCompareSparseIndexArrays(set, copy));
        ZPSparseIndexArrayAddIndex(copy, span * 2);
        EXPECT_FALSE(ZPCompareSparseIndexArrays(set, copy));
        ZPResetSparseIndexArray(copy);
        EXPECT_EQ(ZPCountSparseIndexArray(copy), 0u);
        ZPFreeSparseIndexArray(copy);
    }
}
