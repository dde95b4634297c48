// SPDX-License-Identifier: MIT
// Growing, joining, formatting and converting text; data objects.
#include "common.h"

#include <Bedrock/bridge/ZPMemory.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/strings/ZPMutableString.h>

#include <cstring>
#include <string>

namespace {

std::string ascii(std::size_t n) {
    static const char words[] = "the quick brown fox jumps over the lazy dog and then rests near a river ";
    std::string r;
    while (r.size() < n) r += words;
    r.resize(n);
    return r;
}

ZPString *make(const std::string &s) { return ZPString::stringWithCString_length(s.data(), unsigned(s.size())); }

struct Pool {
    unsigned token = ZPPushAutoreleasePool(0);
    ~Pool() { ZPPopAutoreleasePool(token); }
};

ZPRef<ZPString> mixed1M() {
    static const char *parts[] = {"The report for the third quarter is ready. ", "Größe und Maß überprüfen. ", "Καλημέρα κόσμε. ",
                                  "Съешь же ещё этих мягких булок. ", "日本語の文字列です。", "voilà, ça marche déjà! ", "done 🎉🚀 "};
    std::string r;
    for (unsigned i = 0; r.size() < 1 << 20; i = i * 1664525 + 1013904223) r += parts[(i >> 16) % 7];
    return ZPAdopt(ZPString::alloc()->initWithBytes_length_encoding(r.data(), unsigned(r.size()), ZPUTF8StringEncoding));
}

}  // namespace

static void append10k_bedrock(State &s) {
    Pool pool;
    ZPString *letters[26];
    for (int i = 0; i < 26; ++i) {
        char c = char('a' + i);
        letters[i] = ZPString::stringWithCString_length(&c, 1);
    }
    for (auto _ : s) {
        ZPMutableString *x = ZPMutableString::alloc()->initWithCapacity(0);
        for (int i = 0; i < 10000; ++i) x->appendString(letters[i % 26]);
        DoNotOptimize(x);
        REQUIRE(x->length() == 10000);
        x->release();
    }
    items(s, 10000);
}
BENCHMARK(append10k_bedrock);

static void concat50_bedrock(State &s) {
    Pool pool;
    ZPString *a = make(ascii(50)), *b = make(ascii(50));
    REQUIRE(a->stringByAppendingString(b)->length() == 100);
    for (auto _ : s) {
        Pool inner;
        DoNotOptimize(a);
        ZPString *c = a->stringByAppendingString(b);
        DoNotOptimize(c);
    }
}
BENCHMARK(concat50_bedrock);

static void concat50_bedrock_owned(State &s) {
    Pool pool;
    ZPString *a = make(ascii(50)), *b = make(ascii(50));
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
    Pool pool;
    REQUIRE(ZPString::stringWithFormat("%s has %d items (%.2f)"_zp, name, count, price)->isEqualToString("Warehouse 7 has 1234 items (98.77)"_zp));
    for (auto _ : s) {
        Pool inner;
        DoNotOptimize(count);
        ZPString *x = ZPString::stringWithFormat("%s has %d items (%.2f)"_zp, name, count, price);
        DoNotOptimize(x);
    }
}
BENCHMARK(format_bedrock);
static void format_bedrock_object(State &s) {
    Pool pool;
    ZPString *n = make(name);
    for (auto _ : s) {
        Pool inner;
        DoNotOptimize(count);
        ZPString *x = ZPString::stringWithFormat("%@ has %d items (%.2f)"_zp, n, count, price);
        DoNotOptimize(x);
    }
}
BENCHMARK(format_bedrock_object);

static void encode_bedrock_mixed(State &s) {
    ZPRef<ZPString> t = mixed1M();
    for (auto _ : s) {
        Pool inner;
        ZPData *x = t->dataUsingEncoding(ZPUTF8StringEncoding);
        DoNotOptimize(x);
    }
    bytes(s, 1 << 20);
}
BENCHMARK(encode_bedrock_mixed);
static void decode_bedrock_mixed(State &s) {
    Pool pool;
    ZPData *d = mixed1M()->dataUsingEncoding(ZPUTF8StringEncoding);
    for (auto _ : s) {
        ZPString *x = ZPString::alloc()->initWithBytes_length_encoding(d->bytes(), d->length(), ZPUTF8StringEncoding);
        DoNotOptimize(x);
        x->release();
    }
    bytes(s, 1 << 20);
}
BENCHMARK(decode_bedrock_mixed);

static void data_bedrock(State &s) {
    std::string source = ascii(std::size_t(s.range(0)));
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
    Pool pool;
    std::string source = ascii(std::size_t(s.range(0)));
    ZPData *d = ZPData::dataWithBytes_length(source.data(), unsigned(source.size()));
    for (auto _ : s) {
        Pool inner;
        DoNotOptimize(d->subdataWithRange({1, unsigned(source.size()) - 1}));
    }
}
BENCHMARK(subdata_bedrock)->Arg(1000)->Arg(4 << 20);

BENCHMARK_MAIN();
