// Property-list text of about 1 MB: reading it to a tree and dropping the tree, writing it; beside the same
// tree in JSON. Times include giving the result back.
#include "common.h"
#include "documents_data.h"

#include <Bedrock/Bedrock.h>

#if __has_include(<rapidjson/document.h>)
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#define HAVE_RAPIDJSON
#endif

static void read_bedrock(State &s) {
    unsigned outer = ZPPushAutoreleasePool(0);
    std::string text = makeDocument(Notation::propertyList);
    ZPRef<ZPString> string = ZPMakeString(text);
    {
        ZPAutoreleasePoolScope pool;
        ZPDictionary *tree = id(string->propertyList());
        REQUIRE(tree->count() == 3200);
        REQUIRE(static_cast<ZPDictionary *>(tree->objectForKey("record7"_zp))->count() == 5);
    }
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        DoNotOptimize(string->propertyList());
    }
    bytes(s, std::int64_t(text.size()));
    ZPPopAutoreleasePool(outer);
}
BENCHMARK(read_bedrock);

static void write_bedrock(State &s) {
    ZPAutoreleasePoolScope outer;
    std::string text = makeDocument(Notation::propertyList);
    ZPDictionary *tree = id(ZPMakeString(text)->propertyList());
    std::int64_t length = tree->description()->length();
    REQUIRE(id(tree->description()->propertyList())->isEqual(tree));
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        DoNotOptimize(tree->description());
    }
    bytes(s, length);
}
BENCHMARK(write_bedrock);

#ifdef HAVE_RAPIDJSON
static void read_rapidjson(State &s) {
    std::string text = makeDocument(Notation::json);
    for (auto _ : s) {
        rapidjson::Document d;
        d.Parse(text.data(), text.size());
        REQUIRE(!d.HasParseError());
        DoNotOptimize(d);
    }
    bytes(s, std::int64_t(text.size()));
}
BENCHMARK(read_rapidjson);

static void write_rapidjson(State &s) {
    std::string text = makeDocument(Notation::json);
    rapidjson::Document d;
    d.Parse(text.data(), text.size());
    std::size_t n = 0;
    for (auto _ : s) {
        rapidjson::StringBuffer b;
        rapidjson::Writer<rapidjson::StringBuffer> w(b);
        d.Accept(w);
        n = b.GetSize();
        DoNotOptimize(b);
    }
    bytes(s, std::int64_t(n));
}
BENCHMARK(write_rapidjson);
#endif

BENCHMARK_MAIN();
