// Property lists as text: reading to a tree and dropping it, writing.
#include "plists_data.h"

#include <Bedrock/archiving/ZPPropertyList.h>
#include <Bedrock/bridge/ZPCollectionBridge.h>
#include <Bedrock/bridge/ZPMemory.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/strings/ZPString.h>

#include <cstdio>

static ZPString *document() {
    static ZPString *string = [] {
        std::string t = DocumentWriter::text(false);
        return static_cast<ZPString *>(ZPString::stringWithCString_length(t.data(), unsigned(t.size()))->retain());
    }();
    return string;
}

static void text_read_bedrock(State &s) {
    ZPAutoreleasePoolScope outer;
    ZPDictionary *tree = document()->propertyList();
    REQUIRE(tree->count() == 7);
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        DoNotOptimize(document()->propertyList());
    }
    bytes(s, document()->length());
    s.counters["bytes"] = double(document()->length());
}
static void text_read_parser(State &s) {
    ZPAutoreleasePoolScope outer;
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        ZPRef<ZPPropertyListParser> parser = ZPAdopt(ZPPropertyListParser::alloc()->initWithString(document()));
        DoNotOptimize(parser->expect("xObject"_zp));
    }
    bytes(s, document()->length());
}
static void text_write_bedrock(State &s) {
    ZPAutoreleasePoolScope outer;
    ZPDictionary *tree = document()->propertyList();
    REQUIRE(tree->description()->propertyList()->isEqual(tree));
    unsigned length = 0;
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        length = tree->description()->length();
    }
    bytes(s, length);
    s.counters["bytes"] = double(length);
}
// Hostile text fails fast.
static void text_fail_brackets(State &s) {
    ZPAutoreleasePoolScope outer;
    std::string open(1 << 20, '(');
    ZPString *text = ZPString::stringWithCString(open.c_str());
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        try {
            text->propertyList();
            REQUIRE(!"a tree");
        } catch (ZPException *) {
        }
    }
}
BENCHMARK(text_read_bedrock); BENCHMARK(text_read_parser); BENCHMARK(text_write_bedrock); BENCHMARK(text_fail_brackets);

BENCHMARK_MAIN();
