// SPDX-License-Identifier: MIT
// Reading 100,000 numbers from one text.
#include "common.h"

#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/strings/ZPScanner.h>
#include <Bedrock/strings/ZPString.h>

#include <charconv>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr unsigned count = 100'000;

struct Numbers {
    std::string text;
    std::vector<int> integers;
    std::vector<double> doubles;
};

const Numbers &integers() {
    static const Numbers made = [] {
        Numbers n;
        std::mt19937 random(1);
        for (unsigned i = 0; i < count; ++i) {
            n.integers.push_back(int(random()) >> random() % 32);
            n.text += std::to_string(n.integers.back()) + " ";
        }
        return n;
    }();
    return made;
}

const Numbers &doubles() {
    static const Numbers made = [] {
        Numbers n;
        std::mt19937 random(2);
        for (unsigned i = 0; i < count; ++i) {
            char digits[64];
            int length = std::snprintf(digits, sizeof digits, "%.*g", int(random() % 17 + 1),
                                       (double(random()) - 2e9) / double(random() % 1000 + 1));
            double value;
            std::from_chars(digits, digits + length, value);
            n.doubles.push_back(value);
            n.text += std::string(digits) + " ";
        }
        return n;
    }();
    return made;
}

ZPString *make(const std::string &s) { return ZPString::stringWithCString_length(s.data(), unsigned(s.size())); }

}  // namespace

static void integers_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    ZPScanner *scanner = ZPScanner::scannerWithString(make(integers().text));
    for (auto _ : s) {
        scanner->setScanLocation(0);
        for (int expected : integers().integers) {
            int value;
            REQUIRE(scanner->scanInt(&value) && value == expected);
        }
        REQUIRE(scanner->isAtEnd());
    }
    items(s, count);
}
BENCHMARK(integers_bedrock);

static void integers_std(State &s) {
    const Numbers &n = integers();
    for (auto _ : s) {
        const char *at = n.text.data(), *end = at + n.text.size();
        for (int expected : n.integers) {
            while (*at == ' ') ++at;
            int value;
            at = std::from_chars(at, end, value).ptr;
            REQUIRE(value == expected);
        }
    }
    items(s, count);
}
BENCHMARK(integers_std);

static void doubles_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    ZPScanner *scanner = ZPScanner::scannerWithString(make(doubles().text));
    for (auto _ : s) {
        scanner->setScanLocation(0);
        for (double expected : doubles().doubles) {
            double value;
            REQUIRE(scanner->scanDouble(&value) && value == expected);
        }
        REQUIRE(scanner->isAtEnd());
    }
    items(s, count);
}
BENCHMARK(doubles_bedrock);

static void doubles_std(State &s) {
    const Numbers &n = doubles();
    for (auto _ : s) {
        const char *at = n.text.data(), *end = at + n.text.size();
        for (double expected : n.doubles) {
            while (*at == ' ') ++at;
            double value;
            at = std::from_chars(at, end, value).ptr;
            REQUIRE(value == expected);
        }
    }
    items(s, count);
}
BENCHMARK(doubles_std);

// The worst case: a run of signs, in which no number is longer than two units.
static void signs_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    std::string text;
    for (unsigned i = 0; i < count; ++i) text += "-1";
    ZPScanner *scanner = ZPScanner::scannerWithString(make(text));
    for (auto _ : s) {
        scanner->setScanLocation(0);
        for (unsigned i = 0; i < count; ++i) {
            double value;
            REQUIRE(scanner->scanDouble(&value) && value == -1);
        }
    }
    items(s, count);
}
BENCHMARK(signs_bedrock);

BENCHMARK_MAIN();
