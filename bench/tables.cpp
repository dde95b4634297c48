// SPDX-License-Identifier: MIT
// Sets of indexes kept as ranges, and heaps.
#include "common.h"

#include <Bedrock/tables/ZPOrderedHeap.h>
#include <Bedrock/tables/ZPSparseIndexArray.h>

#include <map>
#include <queue>
#include <random>
#include <set>
#include <vector>

static constexpr unsigned ranges = 1000;

// Ranges of 5 in every 10 indexes, and 4096 places to ask about.
static const std::vector<unsigned> &places() {
    static const std::vector<unsigned> all = [] {
        std::mt19937 random(1);
        std::vector<unsigned> v(4096);
        for (unsigned &n : v) n = random() % (ranges * 10);
        return v;
    }();
    return all;
}
static ZPSparseIndexArray *filled() {
    ZPSparseIndexArray *array = ZPCreateSparseIndexArray(0);
    for (unsigned i = 0; i < ranges; ++i) ZPSparseIndexArrayAddRange(array, {i * 10, 5});
    return array;
}

static void member_std(State &s) {
    std::map<unsigned, unsigned> model;  // where a range begins, and how long it is
    for (unsigned i = 0; i < ranges; ++i) model[i * 10] = 5;
    auto contains = [&](unsigned n) {
        auto after = model.upper_bound(n);
        return after != model.begin() && n - std::prev(after)->first < std::prev(after)->second;
    };
    for (unsigned n : places()) REQUIRE(contains(n) == (n % 10 < 5));
    std::size_t next = 0;
    for (auto _ : s) DoNotOptimize(contains(places()[next++ & 4095]));
}
static void bedrock_member(State &s) {
    ZPSparseIndexArray *array = filled();
    for (unsigned n : places()) REQUIRE((ZPIndexInSparseIndexArray(array, n) != NO) == (n % 10 < 5));
    std::size_t next = 0;
    for (auto _ : s) DoNotOptimize(ZPIndexInSparseIndexArray(array, places()[next++ & 4095]));
    ZPFreeSparseIndexArray(array);
}
static void bedrock_successor(State &s) {
    ZPSparseIndexArray *array = filled();
    std::size_t next = 0;
    unsigned answer = 0;
    REQUIRE(ZPSparseIndexArrayIndexSuccessor(array, 4, &answer) && answer == 10);
    for (auto _ : s) DoNotOptimize(ZPSparseIndexArrayIndexSuccessor(array, places()[next++ & 4095], &answer));
    ZPFreeSparseIndexArray(array);
}
BENCHMARK(member_std);
BENCHMARK(bedrock_member);
BENCHMARK(bedrock_successor);

// ---- adding single indexes in no order, and taking them away again

static void change_std(State &s) {
    for (auto _ : s) {
        std::set<unsigned> set;
        for (unsigned n : places()) set.insert(n);
        for (unsigned n : places()) set.erase(n);
        REQUIRE(set.empty());
    }
    items(s, 2 * 4096);
}
static void bedrock_change(State &s) {
    for (auto _ : s) {
        ZPSparseIndexArray *array = ZPCreateSparseIndexArray(0);
        for (unsigned n : places()) ZPSparseIndexArrayAddIndex(array, n);
        for (unsigned n : places()) ZPSparseIndexArrayRemoveIndex(array, n);
        REQUIRE(ZPCountSparseIndexArray(array) == 0);
        ZPFreeSparseIndexArray(array);
    }
    items(s, 2 * 4096);
}
BENCHMARK(change_std);
BENCHMARK(bedrock_change);

// ---- heaps

static void heap_std(State &s) {
    for (auto _ : s) {
        std::priority_queue<std::intptr_t, std::vector<std::intptr_t>, std::greater<>> heap;
        for (unsigned n : places()) heap.push(n);
        std::intptr_t last = 0;
        for (; !heap.empty(); heap.pop()) {
            REQUIRE(heap.top() >= last);
            last = heap.top();
        }
    }
    items(s, 4096);
}
static void heap(State &s, ZPHeapComparison order) {
    for (auto _ : s) {
        ZPOrderedHeap *heap = ZPCreateOrderedHeap(order, 0);
        for (unsigned n : places()) ZPAddToOrderedHeap(heap, n);
        ZPHeapElement last = 0;
        while (ZPCountOrderedHeap(heap)) {
            ZPHeapElement n = ZPRemoveMinimumOfOrderedHeap(heap);
            REQUIRE(n >= last);
            last = n;
        }
        ZPFreeOrderedHeap(heap);
    }
    items(s, 4096);
}
static void bedrock_heap(State &s) { heap(s, nullptr); }
static void bedrock_heap_own_order(State &s) {
    heap(s, [](ZPOrderedHeap *, ZPHeapElement a, ZPHeapElement b) { return (a > b) - (a < b); });
}
BENCHMARK(heap_std);
BENCHMARK(bedrock_heap);
BENCHMARK(bedrock_heap_own_order);

BENCHMARK_MAIN();
