// SPDX-License-Identifier: MIT
// Ranges with values: who owns them, what merges, and which mode allows what.
#include <support/Objects.h>

namespace {

struct RangeValueArrays : testing::Test {
    TestItem *a = TestItem::with(1), *sameAsA = TestItem::with(1), *b = TestItem::with(2);
};

struct Array {
    ZPRangeValueArray *array;
    explicit Array(BOOL sorted, ZPRangeValueCallBacks callBacks = ZPObjectRangeValueCallBacks)
        : array(ZPCreateRangeValueArray(callBacks, 0, sorted)) {}
    ~Array() { ZPFreeRangeValueArray(array); }
    operator ZPRangeValueArray *() { return array; }
    // "0+5=1 ..." with the numbers of the items.
    std::string entries() {
        std::string text;
        for (unsigned i = 0; i < ZPCountRangeValueArray(array); ++i) {
            ZPRange r = ZPRangeValueArrayRangeAtIndex(array, i);
            text += std::to_string(r.location) + "+" + std::to_string(r.length) + "=" +
                    std::to_string(static_cast<TestItem *>(ZPRangeValueArrayValueAtIndex(array, i))->value) + " ";
        }
        return text;
    }
};

void *number(std::uintptr_t n) { return reinterpret_cast<void *>(n); }

}  // namespace

TEST_F(RangeValueArrays, MergeEqualNeighboursWhenSorted) {
    Array array(YES);
    ZPRangeValueArrayAddRangeValue(array, {0, 5}, a, NO);
    ZPRangeValueArrayAddRangeValue(array, {5, 5}, sameAsA, NO);
    EXPECT_EQ(array.entries(), "0+10=1 ");
    EXPECT_EQ(ZPRangeValueArrayValueAtIndex(array, 0), sameAsA) << "the new value stays";
    EXPECT_EQ(a->retainCount(), 1u);
    ZPRangeValueArrayAddRangeValue(array, {10, 0}, b, YES);
    ZPRangeValueArrayAddRangeValue(array, {10, 5}, b, NO);
    ZPRangeValueArrayAddRangeValue(array, {3, 30}, b, YES);
    EXPECT_EQ(array.entries(), "0+33=2 ");
    EXPECT_EQ(b->retainCount(), 2u);
    EXPECT_EQ(sameAsA->retainCount(), 1u);
    EXPECT_REFUSED(ZPRangeValueArrayAddRangeValue(array, {9, 0xFFFFFFFF}, b, YES));
    EXPECT_EQ(array.entries(), "0+33=2 ");
    ZPResetRangeValueArray(array);
    EXPECT_EQ(b->retainCount(), 1u);
    for (ZPRange r : {ZPRange{10, 5}, {8, 2}, {20, 2}, {24, 2}, {12, 20}})
        ZPRangeValueArrayAddRangeValue(array, r, b, NO);
    EXPECT_EQ(array.entries(), "8+24=2 ") << "also with entries behind";
    EXPECT_EQ(b->retainCount(), 2u);
    ZPResetRangeValueArray(array);
}

TEST_F(RangeValueArrays, AreEditedByPosition) {
    Array array(NO);
    ZPRangeValueArrayInsertAtIndex(array, {5, 5}, b, 0);
    ZPRangeValueArrayInsertAtIndex(array, {0, 7}, a, 0);
    ZPRangeValueArrayInsertAtIndex(array, {6, 1}, sameAsA, 2);
    EXPECT_EQ(array.entries(), "0+7=1 5+5=2 6+1=1 ");
    void *value = nullptr;
    EXPECT_TRUE(ZPRangeValueArrayValueForLocation(array, 6, &value));
    EXPECT_EQ(value, sameAsA) << "the last entry wins";
    EXPECT_FALSE(ZPRangeValueArrayValueForLocation(array, 10, nullptr));
    ZPRangeValueArraySetValueAtIndex(array, b, 0);
    EXPECT_EQ(a->retainCount(), 1u);
    ZPRangeValueArraySetRangeAtIndex(array, {1, 1}, 0);
    ZPRangeValueArrayChangeValueToValue(array, a, a);
    EXPECT_EQ(ZPRangeValueArrayValueAtIndex(array, 2), a) << "an equal value changes too";
    EXPECT_EQ(sameAsA->retainCount(), 1u);
    ZPRangeValueArrayRemoveRangesWithValue(array, b);
    EXPECT_EQ(array.entries(), "6+1=1 ");
    EXPECT_EQ(b->retainCount(), 1u);
    EXPECT_RAISES("ZPRangeException: ", ZPRangeValueArrayInsertAtIndex(array, {}, a, 2));
    EXPECT_RAISES("ZPRangeException: ", ZPRangeValueArrayRemoveAtIndex(array, 1));
    EXPECT_RAISES("ZPRangeException: ", ZPRangeValueArrayValueAtIndex(array, 1));
    EXPECT_EQ(a->retainCount(), 2u);
    ZPRangeValueArrayRemoveAtIndex(array, 0);
    EXPECT_EQ(a->retainCount(), 1u);
}

TEST_F(RangeValueArrays, KeepToTheirMode) {
    Array sorted(YES), positional(NO);
    ZPRangeValueArrayAddRangeValue(sorted, {0, 10}, a, NO);
#define EXPECT_WRONG_MODE(...) EXPECT_RAISES("ZPGenericException: ", __VA_ARGS__)
    EXPECT_WRONG_MODE(ZPRangeValueArraySetRangeAtIndex(sorted, {}, 9));  // before the index is looked at
    EXPECT_WRONG_MODE(ZPRangeValueArraySetValueAtIndex(sorted, b, 0));
    EXPECT_WRONG_MODE(ZPRangeValueArrayInsertAtIndex(sorted, {}, b, 0));
    EXPECT_WRONG_MODE(ZPRangeValueArrayRemoveAtIndex(sorted, 0));
    EXPECT_WRONG_MODE(ZPRangeValueArrayRemoveRangesWithValue(sorted, a));
    EXPECT_WRONG_MODE(ZPRangeValueArrayAddRangeValue(positional, {0, 1}, a, NO));
    EXPECT_WRONG_MODE(ZPRangeValueArrayRemoveRange(positional, {0, 1}));
    ZPRangeValueArrayRemoveRangesWithValue(sorted, b);  // nothing to remove
    void *value = nullptr;
    EXPECT_TRUE(ZPRangeValueArrayValueForLocation(sorted, 7, &value));
    EXPECT_EQ(value, a);
    EXPECT_FALSE(ZPRangeValueArrayValueForLocation(sorted, 10, &value));
    ZPRangeValueArrayChangeValueToValue(sorted, a, b);
    LogCapture log;
    ZPRangeValueArrayRemoveRange(sorted, {0, 5});
    EXPECT_EQ(log.text.find("*** WARNING: ZPRangeValueArrayRemoveRange() unimplemented"), 0u);
    EXPECT_EQ(sorted.entries(), "0+10=2 ");
    ZPResetRangeValueArray(sorted);
}

TEST_F(RangeValueArrays, OwnWhatTheirFunctionsSay) {
    {
        Array array(NO);
        ZPRangeValueArrayInsertAtIndex(array, {0, 1}, a, 0);
    }
    EXPECT_EQ(a->retainCount(), 2u) << "freeing releases nothing";
    a->release();
    Array array(NO);
    for (unsigned i = 0; i < 9; ++i) ZPRangeValueArrayInsertAtIndex(array, {i, 1}, a, 0);
    ZPRangeValueArray *copy = ZPCopyRangeValueArrayWithZone(array, nullptr);
    EXPECT_EQ(a->retainCount(), 19u);
    EXPECT_TRUE(ZPCompareRangeValueArrays(array, copy));
    ZPRangeValueArraySetValueAtIndex(copy, sameAsA, 3);
    EXPECT_TRUE(ZPCompareRangeValueArrays(array, copy));
    ZPRangeValueArraySetValueAtIndex(copy, b, 3);
    EXPECT_FALSE(ZPCompareRangeValueArrays(array, copy));
    for (auto *each : {copy, array.array}) ZPResetRangeValueArray(each);
    ZPFreeRangeValueArray(copy);
    EXPECT_EQ(a->retainCount(), 1u);

    Array heap(NO, ZPOwnedPointerRangeValueCallBacks);
    for (unsigned i = 0; i < 3; ++i) ZPRangeValueArrayInsertAtIndex(heap, {i, 1}, ZPZoneMalloc(nullptr, 8), i);
    ZPRangeValueArrayRemoveAtIndex(heap, 1);
    ZPResetRangeValueArray(heap);
}

TEST_F(RangeValueArrays, DescribeThemselves) {
    Array numbers(NO, ZPIntRangeValueCallBacks), strings(NO);
    EXPECT_EQ(text(ZPStringFromRangeValueArray(numbers)), "(\n\n)");
    ZPRangeValueArrayInsertAtIndex(numbers, {0, 5}, number(255), 0);
    ZPRangeValueArrayInsertAtIndex(numbers, {7, 1}, number(0), 1);
    EXPECT_EQ(text(ZPStringFromRangeValueArray(numbers)), "(\n    {0, 5} = <0xff>,\n    {7, 1} = <0x0>\n)");
    ZPRangeValueArrayInsertAtIndex(strings, {0, 5}, "caf\u00e9"_zp, 0);
    EXPECT_TRUE(ZPStringFromRangeValueArray(strings)->isEqual("(\n    {0, 5} = <caf\u00e9>\n)"_zp));
}

TEST_F(RangeValueArrays, DoWhatAnArrayOfValuesDoes) {
    std::mt19937 random(5);
    Array array(YES, ZPIntRangeValueCallBacks);
    // Ranges that never overlap one of another value, so that every location has one value.
    std::vector<std::uintptr_t> model(300);
    for (int step = 0; step < 3000; ++step) {
        unsigned location = random() % 290;
        std::uintptr_t value = random() % 3 + 1;
        unsigned length = 0;
        while (length < 6 && location + length < 300 &&
               (!model[location + length] || model[location + length] == value))
            ++length;
        ZPRangeValueArrayAddRangeValue(array, {location, length}, number(value), NO);
        std::fill_n(model.begin() + location, length, value);
        if (step % 700 == 699) {
            ZPResetRangeValueArray(array);
            model.assign(300, 0);
        }
        for (unsigned i = 0; i < 300; ++i) {
            void *found = nullptr;
            ASSERT_EQ(ZPRangeValueArrayValueForLocation(array, i, &found) != NO, model[i] != 0);
            ASSERT_EQ(found, number(model[i]));
        }
        for (unsigned i = 1; i < ZPCountRangeValueArray(array); ++i) {
            ZPRange before = ZPRangeValueArrayRangeAtIndex(array, i - 1),
                    here = ZPRangeValueArrayRangeAtIndex(array, i);
            ASSERT_LE(before.location + before.length, here.location);
            if (before.location + before.length == here.location) {
                ASSERT_NE(ZPRangeValueArrayValueAtIndex(array, i - 1), ZPRangeValueArrayValueAtIndex(array, i));
            }
        }
    }
}
