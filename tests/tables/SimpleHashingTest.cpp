// SPDX-License-Identifier: MIT
// The engine itself: sizes, places of entries, growth and removal. Expected places are worked out by hand
// from the probe rule: start at hash & mask, odd step ((hash >> 1) & mask) + ((hash >> 1) & 1) - 1.
#include <support/Objects.h>

namespace {

void *word(std::uintptr_t n) { return reinterpret_cast<void *>(n); }
std::uintptr_t number(void *p) { return reinterpret_cast<std::uintptr_t>(p); }

using L = std::vector<std::uintptr_t>;

L layout(ZPSimpleSet *set) {  // items by bucket, 0: none
    L items;
    for (unsigned i = 0; i < ZPSimpleSetNumBuckets(set); ++i) {
        auto *bucket = ZPSimpleSetGetBucket(set, i);
        items.push_back(bucket ? number(bucket->item) : 0);
    }
    return items;
}

struct Set {
    ZPSimpleSet *set;
    explicit Set(unsigned capacity = 0, ZPSimpleEqualFunction *isEqual = nullptr)
        : set(ZPCreateSimpleSet(capacity, isEqual, nullptr)) {}
    ~Set() { ZPFreeSimpleSet(set); }
    operator ZPSimpleSet *() { return set; }
    bool insert(std::uintptr_t n, unsigned hash) {
        void *item = word(n);
        return ZPSimpleSetInsert(&set, &item, hash, nullptr, NO);
    }
    bool remove(std::uintptr_t n, unsigned hash) {
        void *item = word(n);
        return ZPSimpleSetDelete(&set, &item, hash, nullptr);
    }
    auto *find(std::uintptr_t n, unsigned hash, void *context = nullptr) {
        return ZPSimpleSetLookup(set, word(n), hash, context);
    }
};

TEST(SimpleHashing, CapacityAndCountChooseTheSizeClass) {
    const std::pair<unsigned, unsigned> cases[] = {{0, 4},    {3, 4},       {4, 8},      {7, 8},   {8, 16},
                                                   {11, 16},  {12, 32},     {21, 32},    {22, 64}, {43, 64},
                                                   {44, 128}, {1365, 2048}, {1366, 4096}};
    for (auto [capacity, buckets] : cases) {
        EXPECT_EQ(ZPSimpleSetNumBuckets(Set(capacity)), buckets) << capacity;
    }
    Set set;
    for (unsigned n = 1; n <= 1366; ++n) {
        set.insert(n, n);
        EXPECT_EQ(ZPSimpleSetNumBuckets(set), ZPSimpleSetNumBuckets(Set(n))) << n;
    }
}

TEST(SimpleHashing, LinearClassesPackAndRemovalMovesTheLastEntry) {
    Set set;
    for (unsigned n : {1, 2, 3}) set.insert(n, 77);
    EXPECT_EQ(layout(set), (L{1, 2, 3, 0}));
    set.insert(4, 77);  // growth enters the entries last first
    EXPECT_EQ(layout(set), (L{4, 3, 2, 1, 0, 0, 0, 0}));
    EXPECT_TRUE(set.remove(3, 77));
    EXPECT_EQ(layout(set), (L{4, 1, 2, 0, 0, 0, 0, 0}));
    EXPECT_TRUE(set.remove(2, 77));
    EXPECT_FALSE(set.remove(2, 77));
    set.insert(9, 77);
    EXPECT_EQ(layout(set), (L{4, 1, 9, 0, 0, 0, 0, 0}));
}

TEST(SimpleHashing, HashedClassesFollowTheProbeSequence) {
    Set set(8);  // 16 buckets
    set.insert(1, 5);  // step (2 & 15) + 0 - 1 = 1
    set.insert(2, 5);
    set.insert(3, 5);
    set.insert(4, 0x15);  // start 5, step (10 & 15) + 0 - 1 = 9: 5, 14
    set.insert(5, 0);  // step -1 is 15
    set.insert(6, 0);
    EXPECT_EQ(layout(set), (L{5, 0, 0, 0, 0, 1, 2, 3, 0, 0, 0, 0, 0, 0, 4, 6}));
    EXPECT_TRUE(set.remove(2, 5));  // leaves a deleted bucket that the search for 3 passes
    EXPECT_TRUE(set.find(3, 5));
    set.insert(7, 5);  // and that the next insertion takes
    EXPECT_EQ(layout(set), (L{5, 0, 0, 0, 0, 1, 7, 3, 0, 0, 0, 0, 0, 0, 4, 6}));
    EXPECT_FALSE(set.find(3, 6)) << "another hash starts elsewhere";
}

TEST(SimpleHashing, OnlyThirtyBitsOfAHashCount) {
    Set set(100, [](void *, const void *, const void *) -> BOOL { return YES; });
    set.insert(1, 0xC0000005);
    auto *b = set.find(2, 5);
    ASSERT_TRUE(b);
    EXPECT_EQ(number(b->item), 1u);
    EXPECT_EQ(b->state, 0x80000005u);
}

TEST(SimpleHashing, IdentityIsTriedBeforeEquality) {
    static int calls;
    calls = 0;
    auto isEqual = [](void *context, const void *, const void *) -> BOOL {
        ++calls;
        return context != nullptr;
    };
    for (unsigned capacity : {7u, 20u}) {
        Set set(capacity, isEqual);
        set.insert(1, 9);
        set.insert(2, 9);
        calls = 0;
        EXPECT_EQ(number(set.find(1, 9, word(1))->item), 1u);
        // In a packed class an identical entry wins over an earlier equal one, whatever its hash.
        EXPECT_TRUE(capacity != 7 || number(set.find(2, 4, word(1))->item) == 2);
        EXPECT_FALSE(set.find(3, 10, word(1))) << "another hash is not compared";
        EXPECT_EQ(calls, 0);
        void *item = word(3);
        EXPECT_FALSE(ZPSimpleSetInsert(&set.set, &item, 9, word(1), YES));
        EXPECT_EQ(number(item), 1u) << "the stored item comes back";
        EXPECT_TRUE(set.find(3, 9));
    }
}

TEST(SimpleHashing, DictionaryHandsBackWhatWasStored) {
    auto same = [](void *, const void *a, const void *b) -> BOOL {
        return number(const_cast<void *>(a)) / 10 == number(const_cast<void *>(b)) / 10;
    };
    ZPSimpleDictionary *d = ZPCreateSimpleDictionary(2, same, nullptr);
    void *key = word(11), *value = word(100);
    EXPECT_TRUE(ZPSimpleDictionaryInsert(&d, &key, 1, &value, nullptr, YES));
    for (BOOL replaces : {NO, YES}) {
        key = word(12), value = word(200);
        EXPECT_FALSE(ZPSimpleDictionaryInsert(&d, &key, 1, &value, nullptr, replaces));
        EXPECT_EQ(number(value), 100u);
        EXPECT_EQ(number(ZPSimpleDictionaryLookup(d, word(13), 1, nullptr)->value), replaces ? 200u : 100u);
    }
    key = word(19);
    EXPECT_TRUE(ZPSimpleDictionaryDelete(&d, &key, 1, &value, nullptr));
    EXPECT_EQ(number(key), 11u) << "only the value was replaced";
    EXPECT_EQ(number(value), 200u);
    EXPECT_EQ(ZPSimpleDictionaryCount(d), 0u);
    ZPFreeSimpleDictionary(d);
}

TEST(SimpleHashing, CountingValues) {
    ZPSimpleDictionary *d = ZPCreateSimpleDictionary(0, nullptr, nullptr);
    void *key = word(5);
    for (bool first : {true, false}) EXPECT_EQ(ZPSimpleDictionaryIncrementValue(&d, &key, 5, nullptr) != NO, first);
    EXPECT_EQ(number(ZPSimpleDictionaryLookup(d, key, 5, nullptr)->value), 2u);
    for (bool last : {false, true, false})
        EXPECT_EQ(ZPSimpleDictionaryDecrementValue(&d, &key, 5, nullptr) != NO, last);
    for (unsigned size : {6u, 40u}) {
        for (unsigned n = 1; n <= size; ++n) {
            void *k = word(n), *v = word(n % 3);
            ZPSimpleDictionaryInsert(&d, &k, n, &v, nullptr, NO);
        }
        ZPSimpleDictionaryDeleteEntriesWithValue(&d, word(1));
        for (unsigned n = 1; n <= size; ++n)
            EXPECT_EQ(ZPSimpleDictionaryLookup(d, word(n), n, nullptr) != nullptr, n % 3 != 1) << n;
        ZPResetSimpleDictionary(d, nullptr, nullptr);
    }
    ZPFreeSimpleDictionary(d);
}

TEST(SimpleHashing, ResetReleasesFromTheLastBucketAndKeepsTheSize) {
    Set set(7);
    for (unsigned n : {1, 2, 3}) set.insert(n, 0);
    L released;
    ZPResetSimpleSet(
        set, [](void *context, void *item) { static_cast<L *>(context)->push_back(number(item)); }, &released);
    EXPECT_EQ(released, (L{3, 2, 1}));
    EXPECT_EQ(ZPSimpleSetCount(set), 0u);
    EXPECT_EQ(ZPSimpleSetNumBuckets(set), 8u);
    EXPECT_FALSE(ZPSimpleSetGetBucket(set, 0));
}

TEST(SimpleHashing, RetainCounts) {
    Set set;
    EXPECT_EQ(ZPSimpleSetRetainCount(set), 1);
    EXPECT_FALSE(ZPRetainSimpleSet(set));
    for (unsigned n = 1; n < 20; ++n) set.insert(n, n);
    EXPECT_EQ(ZPSimpleSetRetainCount(set), 2) << "growth carries the count over";
    ZPSimpleSet *copy = ZPCopySimpleSet(set, nullptr);
    EXPECT_EQ(ZPSimpleSetRetainCount(copy), 1);
    EXPECT_EQ(layout(copy), layout(set));
    EXPECT_FALSE(ZPReleaseSimpleSet(set));
    EXPECT_TRUE(ZPReleaseSimpleSet(set));
    copy->retainCount = -1;
    EXPECT_TRUE(ZPRetainSimpleSet(copy));
    EXPECT_FALSE(ZPReleaseSimpleSet(copy));
    EXPECT_EQ(copy->retainCount, -1);
    ZPFreeSimpleSet(copy);
}

TEST(SimpleHashing, AgreesWithAMapUnderRandomChanges) {
    std::mt19937 random(7);
    for (unsigned spread : {8u, 64u, 4096u}) {  // few distinct hashes up to nearly none shared
        Set set;
        std::map<std::uintptr_t, unsigned> model;
        for (int i = 0; i < 20000; ++i) {
            std::uintptr_t n = 1 + random() % 300;
            unsigned hash = unsigned(n * 2654435761u) % spread;
            if (random() % 2) EXPECT_EQ(set.insert(n, hash), model.emplace(n, hash).second);
            else EXPECT_EQ(set.remove(n, hash), model.erase(n) == 1);
        }
        ASSERT_EQ(ZPSimpleSetCount(set), model.size());
        for (auto [n, hash] : model) EXPECT_TRUE(set.find(n, hash));
        unsigned seen = 0;
        for (auto n : layout(set)) seen += n != 0;
        EXPECT_EQ(seen, model.size());
    }
}

TEST(SimpleHashing, RemovedEntriesDoNotSlowSearchesForEver) {
    // A window of 1,000 live entries slides over a million keys; without care every bucket has been in use
    // after a while and each search for an absent key walks through all of them.
    Set set(1365);
    auto begin = std::chrono::steady_clock::now();
    auto hash = [](std::uintptr_t n) { return unsigned(n * 2654435761u) >> 2; };
    for (std::uintptr_t n = 1; n <= 1000000; ++n) {
        ASSERT_TRUE(set.insert(n, hash(n)));
        ASSERT_TRUE(n <= 1000 || set.remove(n - 1000, hash(n - 1000)));
    }
    auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    EXPECT_EQ(ZPSimpleSetNumBuckets(set), 2048u);
    for (std::uintptr_t n = 999001; n <= 1000000; ++n) EXPECT_TRUE(set.find(n, hash(n)));
    EXPECT_LT(seconds, 5);
}

}  // namespace
