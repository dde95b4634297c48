// SPDX-License-Identifier: MIT
// Membership in character sets and case mapping.
#include "common.h"

#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/strings/ZPCharacterSet.h>
#include <Bedrock/strings/ZPMutableString.h>

#include "charsets_data.h"

#include <string>

namespace {

ZPCharacterSet *setNamed(char which) {
    switch (which) {
    case 'l': return ZPCharacterSet::letterCharacterSet();
    case 'd': return ZPCharacterSet::decimalDigitCharacterSet();
    case 'w': return ZPCharacterSet::whitespaceAndNewlineCharacterSet();
    default: return ZPCharacterSet::controlCharacterSet();
    }
}

void membership(State &s, char which, const std::u16string &units) {
    ZPCharacterSet *set = setNamed(which);
    unsigned expected = 0;
    for (char16_t u : units) expected += set->characterIsMember(u);
    for (auto _ : s) {
        unsigned found = 0;
        for (char16_t u : units) found += set->characterIsMember(u);
        REQUIRE(found == expected);
    }
    items(s, std::int64_t(units.size()));
}

std::u16string latin() {
    std::u16string units;
    for (unsigned i = 0, x = 1; i < 10000; ++i, x = x * 1664525 + 1013904223) units += char16_t(x >> 24);
    return units;
}

std::u16string anywhere() {
    std::u16string units;
    for (unsigned i = 0, x = 1; i < 10000; ++i, x = x * 1664525 + 1013904223) units += char16_t(0x100 + (x >> 8) % 0xFEFF);
    return units;
}

ZPString *make(const std::u16string &units) { return ZPString::stringWithCharacters_length(units.data(), unsigned(units.size())); }

}  // namespace

static void latin_letters_bedrock(State &s) { membership(s, 'l', latin()); }
static void latin_digits_bedrock(State &s) { membership(s, 'd', latin()); }
static void any_letters_bedrock(State &s) { membership(s, 'l', anywhere()); }
static void any_digits_bedrock(State &s) { membership(s, 'd', anywhere()); }
static void any_spaces_bedrock(State &s) { membership(s, 'w', anywhere()); }
static void any_controls_bedrock(State &s) { membership(s, 'c', anywhere()); }
// The worst case: every unit passes the summary and is searched for; in order, and in none.
static std::u16string digits() {
    std::u16string units;
    for (unsigned u = 0x100; u < 0xFFFF; ++u)
        if (ZPCharacterSet::decimalDigitCharacterSet()->characterIsMember(unichar(u))) units += char16_t(u);
    return units;
}
static void digits_digits_bedrock(State &s) { membership(s, 'd', digits()); }
static void mixed_digits_bedrock(State &s) {
    std::u16string some = digits(), units;
    for (unsigned i = 0, x = 1; i < 10000; ++i, x = x * 1664525 + 1013904223) units += some[(x >> 8) % some.size()];
    membership(s, 'd', units);
}
BENCHMARK(latin_letters_bedrock);
BENCHMARK(latin_digits_bedrock);
BENCHMARK(any_letters_bedrock);
BENCHMARK(any_digits_bedrock);
BENCHMARK(any_spaces_bedrock);
BENCHMARK(any_controls_bedrock);
BENCHMARK(digits_digits_bedrock);
BENCHMARK(mixed_digits_bedrock);

static void upper10k_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    std::u16string units = mixedUnits(10000);
    ZPString *text = make(units), *upper = text->uppercaseString();
    REQUIRE(upper->rangeOfString(make(u"\u041c\u042f\u0413\u041a\u0418\u0425")).length == 6);
    REQUIRE(upper->lowercaseString()->rangeOfString(make(u"\u03ba\u03cc\u03c3\u03bc\u03b5")).length == 5);
    for (auto _ : s) {
        ZPAutoreleasePoolScope inner;
        REQUIRE(text->uppercaseString()->length() == upper->length());
    }
    items(s, std::int64_t(units.size()));
}
BENCHMARK(upper10k_bedrock);

static void lower10k_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    std::u16string units = mixedUnits(10000);
    ZPString *text = make(units);
    for (auto _ : s) {
        ZPAutoreleasePoolScope inner;
        REQUIRE(text->lowercaseString()->length() == units.size());
    }
    items(s, std::int64_t(units.size()));
}
BENCHMARK(lower10k_bedrock);

static void search10k_ignoring_case_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    std::u16string units = mixedUnits(10000);
    ZPString *text = make(units), *needle = make(u"\u043c\u044f\u0433\u043a\u0438\u0425\u0421");
    for (auto _ : s) REQUIRE(text->rangeOfString_options(needle, ZPCaseInsensitiveSearch).length == 0);
    items(s, std::int64_t(units.size()));
}
BENCHMARK(search10k_ignoring_case_bedrock);

BENCHMARK_MAIN();
