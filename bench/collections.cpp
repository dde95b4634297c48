// SPDX-License-Identifier: MIT
// Dictionaries with string keys, arrays, sorting and sets.
#include "collections_data.h"

#include <Bedrock/bridge/ZPCollectionBridge.h>
#include <Bedrock/bridge/ZPMemory.h>
#include <Bedrock/strings/ZPString.h>
#include <Bedrock/tables/ZPMapTable.h>

#include <memory>
#include <unordered_map>

namespace {

std::vector<ZPString *> strings(const std::vector<std::string> &list) {
    std::vector<ZPString *> made;
    for (const std::string &s : list) made.push_back(_ZPNewInlineCString(s.data(), unsigned(s.size()), nullptr));
    return made;
}

ZPMutableDictionary *filled(const std::vector<ZPString *> &k, id value) {
    ZPMutableDictionary *d = ZPMutableDictionary::new_();
    for (ZPString *key : k) d->setObject_forKey(value, key);
    return d;
}
ZPMutableArray *listed(const std::vector<ZPString *> &objects) {
    ZPMutableArray *a = ZPMutableArray::new_();
    for (ZPString *x : objects) a->addObject(x);
    return a;
}

}  // namespace

static void lookup_std(State &s) {
    std::unordered_map<std::string, const int *> m;
    int value = 0;
    for (auto &k : keys()) m.emplace(k, &value);
    for (auto &k : probes()) REQUIRE(m.count(k));
    for (auto _ : s)
        for (auto &k : probes()) keep(m.find(k)->second);
    items(s, entryCount);
}
static void lookup_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    auto k = strings(keys()), p = strings(probes());
    ZPMutableDictionary *d = filled(k, "value"_zp);
    for (ZPString *probe : p) REQUIRE(d->objectForKey(probe));
    for (auto _ : s)
        for (ZPString *probe : p) keep(d->objectForKey(probe).pointer());
    items(s, entryCount);
}
static void lookup_identical_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    auto k = strings(keys());
    ZPMutableDictionary *d = filled(k, "value"_zp);
    for (ZPString *probe : k) REQUIRE(d->objectForKey(probe));
    for (auto _ : s)
        for (ZPString *probe : k) keep(d->objectForKey(probe).pointer());
    items(s, entryCount);
}
static void lookup_miss_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    auto k = strings(keys());
    std::vector<std::string> other;
    for (auto &x : keys()) other.push_back("x" + x);
    auto p = strings(other);
    ZPMutableDictionary *d = filled(k, "value"_zp);
    for (ZPString *probe : p) REQUIRE(!d->objectForKey(probe));
    for (auto _ : s)
        for (ZPString *probe : p) keep(d->objectForKey(probe).pointer());
    items(s, entryCount);
}
static void insert_std(State &s) {
    int value = 0;
    auto filled = [&] {
        std::unordered_map<std::string, const int *> m;
        for (auto &k : keys()) m.emplace(k, &value);
        return m;
    };
    REQUIRE(filled().size() == entryCount);
    for (auto _ : s) {
        auto m = filled();
        DoNotOptimize(m);
    }
    items(s, entryCount);
}
static void insert_bedrock(State &s) {
    auto k = strings(keys());
    REQUIRE(ZPAdopt(filled(k, "value"_zp))->count() == entryCount);
    for (auto _ : s) {
        ZPMutableDictionary *d = filled(k, "value"_zp);
        DoNotOptimize(d);
        d->release();
    }
    items(s, entryCount);
}
static void iterate_bedrock(State &s) {
    ZPAutoreleasePoolScope outer;
    auto k = strings(keys());
    ZPMutableDictionary *d = filled(k, "value"_zp);
    int seen = 0;
    for (auto [key, value] : d) seen += id(d->objectForKey(key)) == value;
    REQUIRE(seen == entryCount);
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        for (auto [key, value] : d) keep(key.pointer()), keep(value.pointer());
    }
    items(s, entryCount);
}
static void iterate_enumerator_bedrock(State &s) {
    ZPAutoreleasePoolScope outer;
    auto k = strings(keys());
    ZPMutableDictionary *d = filled(k, "value"_zp);
    int seen = 0;
    for (ZPEnumerator *e = d->keyEnumerator(); id key = e->nextObject();) seen += d->objectForKey(key) != nullptr;
    REQUIRE(seen == entryCount);
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        ZPEnumerator *e = d->keyEnumerator();
        while (id key = e->nextObject()) keep(key.pointer());
    }
    items(s, entryCount);
}
BENCHMARK(lookup_std);
BENCHMARK(lookup_bedrock);
BENCHMARK(lookup_identical_bedrock);
BENCHMARK(lookup_miss_bedrock);
BENCHMARK(insert_std);
BENCHMARK(insert_bedrock);
BENCHMARK(iterate_bedrock);
BENCHMARK(iterate_enumerator_bedrock);

// ---- arrays --------------------------------------------------------------------------------------

static void append_std(State &s) {
    int value = 0;
    auto filled = [&] {
        std::vector<int *> v;
        for (int i = 0; i < entryCount; ++i) v.push_back(&value);
        return v;
    };
    REQUIRE(filled().size() == entryCount);
    for (auto _ : s) {
        auto v = filled();
        DoNotOptimize(v.data());
    }
    items(s, entryCount);
}
static void append_shared_ptr(State &s) {
    startOneThread();
    auto p = std::make_shared<int>(1);
    auto filled = [&] {
        std::vector<std::shared_ptr<int>> v;
        for (int i = 0; i < entryCount; ++i) v.push_back(p);
        return v;
    };
    REQUIRE(filled().size() == entryCount);
    REQUIRE(p.use_count() == 1);
    for (auto _ : s) {
        auto v = filled();
        DoNotOptimize(v.data());
    }
    items(s, entryCount);
}
static void append_bedrock(State &s) {
    auto k = strings(keys());
    ZPRef<ZPMutableArray> one = ZPAdopt(listed(k));
    REQUIRE(one->count() == entryCount && one->objectAtIndex(0) == k[0] &&
            one->objectAtIndex(entryCount - 1) == k.back());
    for (auto _ : s) {
        ZPMutableArray *a = listed(k);
        DoNotOptimize(a);
        a->release();
    }
    items(s, entryCount);
}
// An index that is tested, as ours is.
static void index_std(State &s) {
    auto k = strings(keys());
    auto *a = &k;
    REQUIRE(a->at(999) == k[999]);
    for (auto _ : s)
        for (int i = 0; i < entryCount; ++i) {
            DoNotOptimize(a);
            keep(a->at(i));
        }
    items(s, entryCount);
}
static void index_bedrock(State &s) {
    auto k = strings(keys());
    ZPMutableArray *a = listed(k);
    for (int i = 0; i < entryCount; ++i) REQUIRE(a->objectAtIndex(i) == k[i]);
    for (auto _ : s)
        for (int i = 0; i < entryCount; ++i) keep(a->objectAtIndex(i).pointer());
    items(s, entryCount);
}
static void range_for_bedrock(State &s) {
    auto k = strings(keys());
    ZPMutableArray *a = listed(k);
    unsigned at = 0;
    for (id x : a) REQUIRE(x == k[at++]);
    REQUIRE(at == entryCount);
    for (auto _ : s)
        for (id x : a) keep(x.pointer());
    items(s, entryCount);
}
BENCHMARK(append_std);
BENCHMARK(append_bedrock);
BENCHMARK(index_std);
BENCHMARK(index_bedrock);
BENCHMARK(range_for_bedrock);

// ---- stable sorting of strings held by pointer, with a comparison function -----------------------

static void sort10k_std_pointers(State &s) {
    std::vector<const std::string *> v;
    for (auto &w : words()) v.push_back(&w);
    bool (*before)(const std::string *, const std::string *) = [](const std::string *a, const std::string *b) {
        return *a < *b;
    };
    DoNotOptimize(before);
    auto one = v;
    std::stable_sort(one.begin(), one.end(), before);
    for (int i = 0; i < sortCount; ++i) REQUIRE(*one[i] == sortedWords()[i]);
    for (auto _ : s) {
        auto copy = v;
        std::stable_sort(copy.begin(), copy.end(), before);
        DoNotOptimize(copy.data());
    }
    items(s, sortCount);
}
static int compareStrings(id a, id b, void *) { return static_cast<ZPString *>(a)->compare(b); }
static void sort10k_bedrock(State &s) {
    ZPAutoreleasePoolScope outer;
    ZPMutableArray *a = listed(strings(words()));
    ZPArray *one = a->sortedArrayUsingFunction_context(compareStrings, nullptr);
    for (int i = 0; i < sortCount; ++i)
        REQUIRE(sortedWords()[i] == static_cast<ZPString *>(one->objectAtIndex(i))->cString());
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        DoNotOptimize(a->sortedArrayUsingFunction_context(compareStrings, nullptr));
    }
    items(s, sortCount);
}
// The sort alone: the comparison of the standard library's case, on the same strings.
static int compareAddresses(id a, id b, void *) {
    auto *x = reinterpret_cast<const std::string *>(a.pointer()),
         *y = reinterpret_cast<const std::string *>(b.pointer());
    return x->compare(*y);
}
static void sort10k_merge_sort(State &s) {
    std::vector<id> v, copy(sortCount), result(sortCount), scratch(sortCount);
    for (auto &w : words()) v.push_back(id(reinterpret_cast<objc_object *>(const_cast<std::string *>(&w))));
    copy = v;
    id *one = _ZPMergeSort(sortCount, copy.data(), result.data(), scratch.data(), compareAddresses, nullptr, YES);
    for (int i = 0; i < sortCount; ++i)
        REQUIRE(*reinterpret_cast<const std::string *>(one[i].pointer()) == sortedWords()[i]);
    for (auto _ : s) {
        copy = v;
        DoNotOptimize(
            _ZPMergeSort(sortCount, copy.data(), result.data(), scratch.data(), compareAddresses, nullptr, YES));
    }
    items(s, sortCount);
}
BENCHMARK(sort10k_std_pointers);
BENCHMARK(sort10k_bedrock);
BENCHMARK(sort10k_merge_sort);

// ---- the worst cases ------------------------------------------------------------------------------

// A window of entries slides over many keys: every bucket has held an entry after a while.
static void churn_map_table(State &s) {
    ZPMapTable *table = ZPCreateMapTable(ZPIntMapKeyCallBacks, ZPIntMapValueCallBacks, entryCount);
    std::uintptr_t n = 1;
    auto key = [](std::uintptr_t k) { return reinterpret_cast<const void *>(k * 2654435761u & 0x7FFFFFFF); };
    for (auto _ : s) {
        ZPMapInsert(table, key(n), nullptr);
        if (n > entryCount) ZPMapRemove(table, key(n - entryCount));
        ++n;
    }
    REQUIRE(ZPCountMapTable(table) == std::min<std::uintptr_t>(n - 1, entryCount));
    ZPFreeMapTable(table);
}
BENCHMARK(churn_map_table);

// Multithreaded counting; main makes these the last of the program, after the peers' too.
static void append_mt_bedrock(State &s) {
    startOneThread();
    append_bedrock(s);
}
static void insert_mt_bedrock(State &s) {
    startOneThread();
    insert_bedrock(s);
}

int main(int count, char **arguments) {
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 1;
    benchmark::RegisterBenchmark("append_shared_ptr", append_shared_ptr);
    benchmark::RegisterBenchmark("append_mt_bedrock", append_mt_bedrock);
    benchmark::RegisterBenchmark("insert_mt_bedrock", insert_mt_bedrock);
    benchmark::RunSpecifiedBenchmarks();
}
