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

void membership(State &s, char which, const std::u16string &units, unsigned expected) {
    ZPCharacterSet *set = setNamed(which);
    auto members = [&] {
        unsigned found = 0;
        for (char16_t u : units) found += set->characterIsMember(u);
        return found;
    };
    REQUIRE(members() == expected);
    for (auto _ : s) DoNotOptimize(members());
    items(s, std::int64_t(units.size()));
}

std::u16string latin() {
    std::u16string units;
    for (unsigned i = 0, x = 1; i < 10000; ++i, x = x * 1664525 + 1013904223) units += char16_t(x >> 24);
    return units;
}

// How many of the units lie in one of the ranges, both ends included.
unsigned within(const std::u16string &units, std::initializer_list<std::pair<unsigned, unsigned>> ranges) {
    unsigned found = 0;
    for (char16_t u : units)
        for (auto [first, last] : ranges) found += u >= first && u <= last;
    return found;
}

std::uint32_t sumOfString(ZPString *text) {
    std::u16string units(text->length(), u'\0');
    text->getCharacters(reinterpret_cast<unichar *>(units.data()));
    return sumOf(units);
}
ZPString *make(const std::u16string &units) {
    return ZPString::stringWithCharacters_length(units.data(), unsigned(units.size()));
}

}  // namespace

static void latin_letters_bedrock(State &s) {
    membership(s, 'l', latin(),
               within(latin(), {{'A', 'Z'},
                                {'^', '^'},
                                {'`', 'z'},
                                {0xA8, 0xA8},
                                {0xAA, 0xAA},
                                {0xAF, 0xAF},
                                {0xB4, 0xB5},
                                {0xB8, 0xB8},
                                {0xBA, 0xBA},
                                {0xC0, 0xD6},
                                {0xD8, 0xF6},
                                {0xF8, 0xFF}}));
}
static void latin_digits_bedrock(State &s) { membership(s, 'd', latin(), within(latin(), {{'0', '9'}})); }
static void any_letters_bedrock(State &s) { membership(s, 'l', unitsAnywhere(), lettersAnywhere); }
static void any_digits_bedrock(State &s) { membership(s, 'd', unitsAnywhere(), 44); }
static void any_spaces_bedrock(State &s) {
    membership(s, 'w', unitsAnywhere(),
               within(unitsAnywhere(), {{0x1680, 0x1680},
                                        {0x2000, 0x200A},
                                        {0x2028, 0x2029},
                                        {0x202F, 0x202F},
                                        {0x205F, 0x205F},
                                        {0x3000, 0x3000}}));
}
static void any_controls_bedrock(State &s) { membership(s, 'c', unitsAnywhere(), 6); }
// The worst case: every unit passes the summary and is searched for; in order, and in none.
static std::u16string digits() {
    std::u16string units;
    for (unsigned u = 0x100; u < 0xFFFF; ++u)
        if (ZPCharacterSet::decimalDigitCharacterSet()->characterIsMember(unichar(u))) units += char16_t(u);
    return units;
}
static void digits_digits_bedrock(State &s) { membership(s, 'd', digits(), unsigned(digits().size())); }
static void mixed_digits_bedrock(State &s) {
    std::u16string some = digits(), units;
    for (unsigned i = 0, x = 1; i < 10000; ++i, x = x * 1664525 + 1013904223) units += some[(x >> 8) % some.size()];
    membership(s, 'd', units, 10000);
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
    REQUIRE(sumOfString(upper) == upperSum &&
            upper->lowercaseString()->rangeOfString(make(u"\u03ba\u03cc\u03c3\u03bc\u03b5")).length == 5);
    for (auto _ : s) {
        ZPAutoreleasePoolScope inner;
        DoNotOptimize(text->uppercaseString());
    }
    items(s, std::int64_t(units.size()));
}
BENCHMARK(upper10k_bedrock);

static void lower10k_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    std::u16string units = mixedUnits(10000);
    ZPString *text = make(units);
    REQUIRE(sumOfString(text->lowercaseString()) == lowerSum);
    for (auto _ : s) {
        ZPAutoreleasePoolScope inner;
        DoNotOptimize(text->lowercaseString());
    }
    items(s, std::int64_t(units.size()));
}
BENCHMARK(lower10k_bedrock);

static void search10k_ignoring_case_bedrock(State &s) {
    ZPAutoreleasePoolScope pool;
    std::u16string units = mixedUnits(10000);
    ZPString *text = make(units), *needle = make(u"\u043c\u044f\u0433\u043a\u0438\u0425\u0421");
    REQUIRE(text->rangeOfString_options(needle, ZPCaseInsensitiveSearch).length == 0);
    REQUIRE(
        text->rangeOfString_options(make(u"\u043c\u044f\u0433\u043a\u0438\u0425"), ZPCaseInsensitiveSearch).length ==
        6);
    for (auto _ : s) DoNotOptimize(text->rangeOfString_options(needle, ZPCaseInsensitiveSearch));
    items(s, std::int64_t(units.size()));
}
BENCHMARK(search10k_ignoring_case_bedrock);

BENCHMARK_MAIN();
