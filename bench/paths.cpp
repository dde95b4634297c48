// SPDX-License-Identifier: MIT
// Splitting, joining and standardizing paths.
#include "common.h"

#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/strings/ZPPathUtilities.h>

#include <filesystem>
#include <string>

namespace fs = std::filesystem;

static const char plain[] = "C:\\home\\me\\Projects\\Northern Region\\reports\\summary.tar.gz";
static const char dotted[] =
    "C:\\home\\.\\me\\Projects\\..\\Projects\\Northern Region\\\\reports\\x\\..\\summary.tar.gz";
static const char hostPlain[] = "/home/me/Projects/Northern Region/reports/summary.tar.gz";
static const char hostDotted[] = "/home/./me/Projects/../Projects/Northern Region//reports/x/../summary.tar.gz";

// Runs `f` a hundred times between two pops of a pool, as a program does.
template <class F> void pooled(State &s, F f) {
    unsigned outer = ZPPushAutoreleasePool(0);
    for (auto _ : s) {
        unsigned pool = ZPPushAutoreleasePool(0);
        for (int i = 0; i < 100; ++i) f();
        ZPPopAutoreleasePool(pool);
    }
    items(s, 100);
    ZPPopAutoreleasePool(outer);
}
template <class F> void plainly(State &s, F f) {
    for (auto _ : s)
        for (int i = 0; i < 100; ++i) f();
    items(s, 100);
}
static ZPString *text(const char *t) { return ZPString::stringWithCString(t)->retain(); }
static ZPString *store(const char *t) { return ZPPathStore2::pathStoreWithCString(t)->retain(); }

// ---- standardizing

static void standardize_std(State &s) {
    fs::path path(hostDotted);
    REQUIRE(path.lexically_normal() == hostPlain);
    plainly(s, [&] {
        fs::path p = path.lexically_normal();
        DoNotOptimize(p);
    });
}
template <auto Make> void standardize(State &s) {
    ZPAutoreleasePoolScope pool;
    ZPString *path = Make(dotted);
    REQUIRE(path->stringByStandardizingPath()->isEqualToString(text(plain)));
    pooled(s, [&] { DoNotOptimize(path->stringByStandardizingPath()); });
}
static void bedrock_standardize(State &s) { standardize<text>(s); }
static void bedrock_standardize_store(State &s) { standardize<store>(s); }
BENCHMARK(standardize_std);
BENCHMARK(bedrock_standardize);
BENCHMARK(bedrock_standardize_store);

// ---- into components: the peer parses a text, or walks a path that is parsed already and copies each name

static void components_std(State &s) {
    std::string path = hostPlain;
    auto names = [&] {
        std::vector<std::string> all;
        for (const fs::path &name : fs::path(path)) all.push_back(name.string());
        return all;
    };
    REQUIRE(names().size() == 7 && names().back() == "summary.tar.gz");
    plainly(s, [&] { DoNotOptimize(names()); });
}
static void components_parsed_std(State &s) {
    fs::path path(hostPlain);
    auto names = [&] {
        std::vector<std::string> all;
        for (const fs::path &name : path) all.push_back(name.string());
        return all;
    };
    REQUIRE(names().size() == 7 && names().back() == "summary.tar.gz");
    plainly(s, [&] { DoNotOptimize(names()); });
}
template <auto Make> void components(State &s) {
    ZPAutoreleasePoolScope pool;
    ZPString *path = Make(plain);
    REQUIRE(path->pathComponents()->count() == 8 &&
            ZPString::pathWithComponents(path->pathComponents())->isEqualToString(path));
    pooled(s, [&] { DoNotOptimize(path->pathComponents()); });
}
static void bedrock_components(State &s) { components<text>(s); }
static void bedrock_components_store(State &s) { components<store>(s); }
BENCHMARK(components_std);
BENCHMARK(components_parsed_std);
BENCHMARK(bedrock_components);
BENCHMARK(bedrock_components_store);

// ---- directory and name

static void split_std(State &s) {
    fs::path path(hostPlain);
    REQUIRE(path.filename() == "summary.tar.gz" && path.parent_path() == "/home/me/Projects/Northern Region/reports");
    plainly(s, [&] {
        fs::path directory = path.parent_path(), name = path.filename();
        DoNotOptimize(directory);
        DoNotOptimize(name);
    });
}
template <auto Make> void split(State &s) {
    ZPAutoreleasePoolScope pool;
    ZPString *path = Make(plain);
    REQUIRE(path->stringByDeletingLastPathComponent()
                ->stringByAppendingPathComponent(path->lastPathComponent())
                ->isEqualToString(path));
    pooled(s, [&] {
        DoNotOptimize(path->stringByDeletingLastPathComponent());
        DoNotOptimize(path->lastPathComponent());
    });
}
static void bedrock_split(State &s) { split<text>(s); }
static void bedrock_split_store(State &s) { split<store>(s); }
BENCHMARK(split_std);
BENCHMARK(bedrock_split);
BENCHMARK(bedrock_split_store);

// ---- joining

static void join_std(State &s) {
    fs::path directory = fs::path(hostPlain).parent_path(), name = "summary.tar.gz";
    REQUIRE(directory / name == hostPlain);
    plainly(s, [&] {
        fs::path p = directory / name;
        DoNotOptimize(p);
    });
}
template <auto Make> void join(State &s) {
    ZPAutoreleasePoolScope pool;
    ZPString *directory = Make("C:\\home\\me\\Projects\\Northern Region\\reports"), *name = text("summary.tar.gz");
    REQUIRE(directory->stringByAppendingPathComponent(name)->isEqualToString(text(plain)));
    pooled(s, [&] { DoNotOptimize(directory->stringByAppendingPathComponent(name)); });
}
static void bedrock_join(State &s) { join<text>(s); }
static void bedrock_join_store(State &s) { join<store>(s); }
BENCHMARK(join_std);
BENCHMARK(bedrock_join);
BENCHMARK(bedrock_join_store);

BENCHMARK_MAIN();
