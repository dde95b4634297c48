// SPDX-License-Identifier: MIT
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

static void read_bedrock(State &s, Tree which) {
    unsigned outer = ZPPushAutoreleasePool(0);
    std::string text = makeDocument(which, Notation::propertyList);
    ZPRef<ZPString> string = ZPMakeString(text);
    {
        ZPAutoreleasePoolScope pool;
        ZPDictionary *tree = id(string->propertyList());
        REQUIRE(int(tree->count()) == topLevelCount(which));
    }
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        DoNotOptimize(string->propertyList());
    }
    bytes(s, std::int64_t(text.size()));
    ZPPopAutoreleasePool(outer);
}
BOTH_TREES(read_bedrock);

static void write_bedrock(State &s, Tree which) {
    ZPAutoreleasePoolScope outer;
    std::string text = makeDocument(which, Notation::propertyList);
    ZPDictionary *tree = id(ZPMakeString(text)->propertyList());
    std::int64_t length = tree->description()->length();
    REQUIRE(id(tree->description()->propertyList())->isEqual(tree));
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        DoNotOptimize(tree->description());
    }
    bytes(s, length);
}
BOTH_TREES(write_bedrock);

// The table-driven parser, which reads what the direct reader does not.
static void read_bedrock_parser(State &s, Tree which) {
    ZPAutoreleasePoolScope outer;
    std::string text = makeDocument(which, Notation::propertyList);
    ZPString *string = ZPMakeString(text);
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        ZPRef<ZPPropertyListParser> parser = ZPAdopt(ZPPropertyListParser::alloc()->initWithString(string));
        DoNotOptimize(parser->expect("xObject"_zp));
    }
    bytes(s, std::int64_t(text.size()));
}
BOTH_TREES(read_bedrock_parser);

// Hostile text fails fast.
static void fail_bedrock_brackets(State &s) {
    ZPAutoreleasePoolScope outer;
    ZPString *text = ZPMakeString(std::string(1 << 20, '('));
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        try {
            text->propertyList();
            REQUIRE(!"a tree");
        } catch (ZPException *) {
        }
    }
}
BENCHMARK(fail_bedrock_brackets);

#ifdef HAVE_RAPIDJSON
static void read_rapidjson(State &s, Tree which) {
    std::string text = makeDocument(which, Notation::json);
    for (auto _ : s) {
        rapidjson::Document d;
        d.Parse(text.data(), text.size());
        REQUIRE(!d.HasParseError());
        DoNotOptimize(d);
    }
    bytes(s, std::int64_t(text.size()));
}
BOTH_TREES(read_rapidjson);

static void write_rapidjson(State &s, Tree which) {
    std::string text = makeDocument(which, Notation::json);
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
BOTH_TREES(write_rapidjson);
#endif

BENCHMARK_MAIN();
