// SPDX-License-Identifier: MIT
// Lists of ranges edited by position, and sets of indexes, held against lists and sets of the standard library.
#include <support/Objects.h>

#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/tables/ZPSparseIndexArray.h>

#include <random>
#include <set>
#include <vector>

namespace {

struct RangeArrays : testing::Test {
    ZPAutoreleasePoolScope pool;
};
using SparseIndexArrays = RangeArrays;

struct List {
    ZPRangeArray *array;
    explicit List(unsigned capacity = 0) : array(ZPCreateRangeArray(capacity)) {}
    ~List() { ZPFreeRangeArray(array); }
    operator ZPRangeArray *() { return array; }
};

struct Set {
    ZPSparseIndexArray *array = ZPCreateSparseIndexArray(0);
    Set(std::initializer_list<ZPRange> ranges = {}) {
        for (ZPRange r : ranges) ZPSparseIndexArrayAddRange(array, r);
    }
    ~Set() { ZPFreeSparseIndexArray(array); }
    operator ZPSparseIndexArray *() { return array; }
    std::string ranges() {
        std::string text;
        for (unsigned i = 0; i < array->list.count; ++i) {
            ZPRange r = array->list.ranges[i];
            text += "{" + std::to_string(r.location) + ", " + std::to_string(r.length) + "}";
        }
        return text + " " + std::to_string(ZPCountSparseIndexArray(array));
    }
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

TEST_F(RangeArrays, GrowAndShrinkByHalves) {
    List list(5);
    EXPECT_EQ(list.array->capacity, 8u);
    for (unsigned n = 0; n < 9; ++n) ZPRangeArrayInsertRangeAtIndex(list, {n, 1}, n);
    EXPECT_EQ(list.array->capacity, 16u);
    ZPRangeArrayRemoveRangeAtIndex(list, 0);
    ZPRangeArrayRemoveRangeAtIndex(list, 7);
    EXPECT_EQ(list.array->capacity, 16u) << "half full";
    ZPRangeArrayRemoveRangeAtIndex(list, 0);
    EXPECT_EQ(list.array->capacity, 8u);
    EXPECT_EQ(text(ZPStringFromRangeArray(list)),
              "(\n    {2, 1},\n    {3, 1},\n    {4, 1},\n    {5, 1},\n    {6, 1},\n    {7, 1}\n)");

    List odd(8);
    EXPECT_EQ(odd.array->capacity, 12u);
    ZPRangeArrayInsertRangeAtIndex(odd, {1, 1}, 0);
    ZPRangeArrayInsertRangeAtIndex(odd, {0, 1}, 0);
    ZPRangeArrayRemoveRangeAtIndex(odd, 0);
    EXPECT_EQ(odd.array->capacity, 6u);
    ZPRangeArrayRemoveRangeAtIndex(odd, 0);
    EXPECT_EQ(odd.array->capacity, 3u);
    for (unsigned n = 0; n < 4; ++n) ZPRangeArrayInsertRangeAtIndex(odd, {n, n}, 0);
    EXPECT_EQ(odd.array->capacity, 6u);
    ZPResetRangeArray(odd);
    EXPECT_EQ(odd.array->capacity, 6u);
    EXPECT_EQ(text(ZPStringFromRangeArray(odd)), "()");
    EXPECT_EQ(odd.array->ranges[3], (ZPRange{0, 0}));
}

TEST_F(RangeArrays, RefuseIndexesPastTheEnd) {
    List list;
    ZPRangeArrayInsertRangeAtIndex(list, {7, 2}, 0);
    ZPRangeArraySetRangeAtIndex(list, {8, 3}, 0);
    EXPECT_EQ(ZPRangeArrayRangeAtIndex(list, 0), (ZPRange{8, 3}));
    EXPECT_EQ(raised([&] { ZPRangeArrayInsertRangeAtIndex(list, {}, 2); }), "ZPRangeException: ");
    EXPECT_EQ(raised([&] { ZPRangeArrayRangeAtIndex(list, 1); }), "ZPRangeException: ");
    EXPECT_EQ(raised([&] { ZPRangeArraySetRangeAtIndex(list, {}, 1); }), "ZPRangeException: ");
    EXPECT_EQ(raised([&] { ZPRangeArrayRemoveRangeAtIndex(list, 1); }), "ZPRangeException: ");
    EXPECT_NE(raised([] { ZPCreateRangeArray(0xFFFFFFFE); }), "") << "no capacity is above this one";
    ZPZone *zone = ZPCreateZone(0, 0, YES);
    ZPRangeArray *copy = ZPCopyRangeArrayWithZone(list, zone);
    EXPECT_EQ(ZPZoneFromPointer(copy->ranges), zone);
    EXPECT_TRUE(ZPCompareRangeArrays(list, copy));
    ZPRangeArraySetRangeAtIndex(copy, {8, 4}, 0);
    EXPECT_FALSE(ZPCompareRangeArrays(list, copy));
    ZPFreeRangeArray(copy);
    ZPRecycleZone(zone);
}

TEST_F(SparseIndexArrays, MergeWhatTouchesAndSplitWhatIsCut) {
    EXPECT_EQ((Set{{5, 3}, {8, 2}}.ranges()), "{5, 5} 5");
    EXPECT_EQ((Set{{2, 1}, {5, 1}, {0, 10}}.ranges()), "{0, 10} 10");
    EXPECT_EQ((Set{{0, 1}}.ranges()), "{0, 1} 1");
    EXPECT_EQ((Set{{7, 0}}.ranges()), " 0");
    Set cut{{0, 10}};
    ZPSparseIndexArrayRemoveRange(cut, {3, 4});
    EXPECT_EQ(cut.ranges(), "{0, 3}{7, 3} 6");
    Set gone{{0, 2}, {3, 2}, {6, 2}};
    ZPSparseIndexArrayRemoveRange(gone, {0, 10});
    EXPECT_EQ(gone.ranges(), " 0");
}

TEST_F(SparseIndexArrays, AnswerForNeighbours) {
    Set set{{0, 5}};
    EXPECT_TRUE(ZPIndexInSparseIndexArray(set, 3));
    EXPECT_EQ(successor(set, 2), 3);
    EXPECT_EQ(successor(set, 4), -1);
    ZPSparseIndexArrayAddIndex(set, 9);
    EXPECT_EQ(successor(set, 4), 9);
    EXPECT_EQ(predecessor(set, 9), 4);
    EXPECT_EQ(predecessor(set, 0), -1);
    EXPECT_EQ(nth(set, 0), 0);
    EXPECT_EQ(nth(set, 5), 9);
    EXPECT_EQ(nth(set, 6), -1);
    EXPECT_EQ(text(ZPStringFromSparseIndexArray(Set{{0, 3}, {9, 1}})), "(0, 1, 2, 9)");
    Set empty;
    EXPECT_EQ(text(ZPStringFromSparseIndexArray(empty)), "()");
    unsigned first = 77;
    EXPECT_FALSE(ZPSparseIndexArrayFirstIndex(empty, &first));
    EXPECT_EQ(predecessor(empty, 5), -1);
    EXPECT_TRUE(ZPSparseIndexArrayFirstIndex(set, &first));
    EXPECT_EQ(first, 0u);
}

TEST_F(SparseIndexArrays, EndAtTheLastIndex) {
    Set set{{0xFFFFFFF0, 15}};
    EXPECT_EQ(successor(set, 0xFFFFFFFD), 0xFFFFFFFE);
    EXPECT_EQ(successor(set, 0xFFFFFFFE), -1);
    EXPECT_EQ(successor(set, 0xFFFFFFFF), -1);
    EXPECT_EQ(predecessor(set, 0xFFFFFFFF), 0xFFFFFFFE);
    EXPECT_FALSE(ZPRangeInSparseIndexArray(set, {0xFFFFFFFE, 0x20}));
    EXPECT_NE(raised([&] { ZPSparseIndexArrayAddIndex(set, 0xFFFFFFFF); }), "");
    EXPECT_NE(raised([&] { ZPSparseIndexArrayAddRange(set, {5, 0xFFFFFFFF}); }), "");
    EXPECT_EQ(set.ranges(), "{4294967280, 15} 15");
    ZPSparseIndexArrayAddRange(set, {0, 0xFFFFFFFF});
    EXPECT_EQ(ZPCountSparseIndexArray(set), 0xFFFFFFFF);
    ZPSparseIndexArrayRemoveRange(set, {1, 0xFFFFFFFF});
    EXPECT_EQ(set.ranges(), "{0, 1} 1");
}

TEST_F(SparseIndexArrays, DoWhatASetDoes) {
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
            unsigned n = random() % (span + 10);
            ASSERT_EQ(nth(set, n), n < model.size() ? (long long)*std::next(model.begin(), n) : -1);
            bool whole = r.length != 0;
            for (unsigned i = 0; i < r.length; ++i) whole = whole && model.count(r.location + i);
            if (r.length) {
                ASSERT_EQ(ZPRangeInSparseIndexArray(set, r) != NO, whole);
            }
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
