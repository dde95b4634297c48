// SPDX-License-Identifier: MIT
// Property-list text of about 1 MB: reading it to a tree and dropping the tree, writing it; beside the same
// tree in JSON. The texts differ in size, so what is told is the time for one tree, with giving the result back.
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
    ZPPopAutoreleasePool(outer);
}
BOTH_TREES(read_bedrock);

static void write_bedrock(State &s, Tree which) {
    ZPAutoreleasePoolScope outer;
    std::string text = makeDocument(which, Notation::propertyList);
    ZPDictionary *tree = id(ZPMakeString(text)->propertyList());
    REQUIRE(int(tree->count()) == topLevelCount(which) && id(tree->description()->propertyList())->isEqual(tree));
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        DoNotOptimize(tree->description());
    }
}
BOTH_TREES(write_bedrock);

// The table-driven parser, which reads what the direct reader does not.
static void read_bedrock_parser(State &s, Tree which) {
    ZPAutoreleasePoolScope outer;
    std::string text = makeDocument(which, Notation::propertyList);
    ZPString *string = ZPMakeString(text);
    {
        ZPAutoreleasePoolScope pool;
        ZPRef<ZPPropertyListParser> parser = ZPAdopt(ZPPropertyListParser::alloc()->initWithString(string));
        REQUIRE(id(parser->expect("xObject"_zp))->isEqual(string->propertyList()));
    }
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        ZPRef<ZPPropertyListParser> parser = ZPAdopt(ZPPropertyListParser::alloc()->initWithString(string));
        DoNotOptimize(parser->expect("xObject"_zp));
    }
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
        } catch (ZPException *) {}
    }
}
BENCHMARK(fail_bedrock_brackets);

#ifdef HAVE_RAPIDJSON
static void read_rapidjson(State &s, Tree which) {
    std::string text = makeDocument(which, Notation::json);
    rapidjson::Document one;
    one.Parse(text.data(), text.size());
    REQUIRE(!one.HasParseError() && int(one.MemberCount()) == topLevelCount(which));
    for (auto _ : s) {
        rapidjson::Document d;
        d.Parse(text.data(), text.size());
        DoNotOptimize(d);
    }
}
BOTH_TREES(read_rapidjson);

static void write_rapidjson(State &s, Tree which) {
    std::string text = makeDocument(which, Notation::json);
    rapidjson::Document d;
    d.Parse(text.data(), text.size());
    {
        rapidjson::StringBuffer b;
        rapidjson::Writer<rapidjson::StringBuffer> w(b);
        rapidjson::Document back;
        d.Accept(w);
        back.Parse(b.GetString(), b.GetSize());
        REQUIRE(!back.HasParseError() && int(back.MemberCount()) == topLevelCount(which) && back == d);
    }
    for (auto _ : s) {
        rapidjson::StringBuffer b;
        rapidjson::Writer<rapidjson::StringBuffer> w(b);
        d.Accept(w);
        DoNotOptimize(b);
    }
}
BOTH_TREES(write_rapidjson);
#endif

BENCHMARK_MAIN();
