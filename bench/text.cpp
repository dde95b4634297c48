// SPDX-License-Identifier: MIT
// Growing, joining and formatting text; data objects.
#include "common.h"

#include <Bedrock/bridge/ZPMemory.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/strings/ZPMutableString.h>

#include <cstring>
#include <string>

namespace {

ZPString *make(const std::string &s) { return ZPString::stringWithCString_length(s.data(), unsigned(s.size())); }

}  // namespace

static void append10k_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    ZPString *letters[26];
    for (int i = 0; i < 26; ++i) {
        char c = char('a' + i);
        letters[i] = ZPString::stringWithCString_length(&c, 1);
    }
    auto grown = [&] {
        ZPMutableString *x = ZPMutableString::alloc()->initWithCapacity(0);
        for (int i = 0; i < 10000; ++i) x->appendString(letters[i % 26]);
        return x;
    };
    ZPMutableString *one = grown();
    REQUIRE(one->length() == 10000 && one->characterAtIndex(0) == 'a' &&
            one->characterAtIndex(9999) == 'a' + 9999 % 26);
    one->release();
    for (auto _ : s) {
        ZPMutableString *x = grown();
        DoNotOptimize(x);
        x->release();
    }
    items(s, 10000);
}
BENCHMARK(append10k_bedrock);

static void concat50_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    ZPString *a = make(ascii(50)), *b = make(ascii(50));
    REQUIRE(a->stringByAppendingString(b)->isEqualToString(make(ascii(50) + ascii(50))));
    for (auto _ : s) {
        ZPAutoreleasePoolScope inner;
        DoNotOptimize(a);
        ZPString *c = a->stringByAppendingString(b);
        DoNotOptimize(c);
    }
}
BENCHMARK(concat50_bedrock);

static void concat50_bedrock_owned(State &s) {
    ZPAutoreleasePoolScope pool;
    ZPString *a = make(ascii(50)), *b = make(ascii(50));
    ZPString *one = _ZPNewStringByAppendingStrings(nullptr, a, b, static_cast<ZPString *>(nullptr));
    REQUIRE(one->isEqualToString(make(ascii(50) + ascii(50))));
    one->release();
    for (auto _ : s) {
        DoNotOptimize(a);
        ZPString *c = _ZPNewStringByAppendingStrings(nullptr, a, b, static_cast<ZPString *>(nullptr));
        DoNotOptimize(c);
        c->release();
    }
}
BENCHMARK(concat50_bedrock_owned);

static const char *name = "Warehouse 7";
static int count = 1234;
static double price = 98.765;
static void format_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    REQUIRE(ZPString::stringWithFormat("%s has %d items (%.2f)"_zp, name, count, price)
                ->isEqualToString("Warehouse 7 has 1234 items (98.77)"_zp));
    for (auto _ : s) {
        ZPAutoreleasePoolScope inner;
        DoNotOptimize(count);
        ZPString *x = ZPString::stringWithFormat("%s has %d items (%.2f)"_zp, name, count, price);
        DoNotOptimize(x);
    }
}
BENCHMARK(format_bedrock);
static void format_bedrock_object(State &s) {
    ZPAutoreleasePoolScope pool;
    ZPString *n = make(name);
    REQUIRE(ZPString::stringWithFormat("%@ has %d items (%.2f)"_zp, n, count, price)
                ->isEqualToString("Warehouse 7 has 1234 items (98.77)"_zp));
    for (auto _ : s) {
        ZPAutoreleasePoolScope inner;
        DoNotOptimize(count);
        ZPString *x = ZPString::stringWithFormat("%@ has %d items (%.2f)"_zp, n, count, price);
        DoNotOptimize(x);
    }
}
BENCHMARK(format_bedrock_object);

static void data_bedrock(State &s) {
    std::string source = ascii(std::size_t(s.range(0)));
    ZPData *one = ZPData::alloc()->initWithBytes_length(source.data(), unsigned(source.size()));
    REQUIRE(one->length() == source.size() && one->bytes() != source.data() &&
            !std::memcmp(one->bytes(), source.data(), source.size()));
    one->release();
    for (auto _ : s) {
        ZPData *d = ZPData::alloc()->initWithBytes_length(source.data(), unsigned(source.size()));
        DoNotOptimize(d->bytes());
        d->release();
    }
}
BENCHMARK(data_bedrock)->Arg(16)->Arg(1000)->Arg(65536)->Arg(4 << 20);
static void data_malloc_memcpy(State &s) {
    std::string source = ascii(std::size_t(s.range(0)));
    for (auto _ : s) {
        void *p = std::malloc(source.size());
        std::memcpy(p, source.data(), source.size());
        DoNotOptimize(p);
        benchmark::ClobberMemory();
        std::free(p);
    }
}
BENCHMARK(data_malloc_memcpy)->Arg(16)->Arg(1000)->Arg(65536)->Arg(4 << 20);
static void subdata_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    std::string source = ascii(std::size_t(s.range(0)));
    ZPData *d = ZPData::dataWithBytes_length(source.data(), unsigned(source.size()));
    ZPData *part = d->subdataWithRange({1, unsigned(source.size()) - 1});
    REQUIRE(part->length() == source.size() - 1 && !std::memcmp(part->bytes(), source.data() + 1, part->length()));
    for (auto _ : s) {
        ZPAutoreleasePoolScope inner;
        DoNotOptimize(d->subdataWithRange({1, unsigned(source.size()) - 1}));
    }
}
BENCHMARK(subdata_bedrock)->Arg(1000)->Arg(4 << 20);

BENCHMARK_MAIN();
