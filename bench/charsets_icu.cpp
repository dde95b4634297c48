// SPDX-License-Identifier: MIT
// ICU's case mapping and properties.
#include "common.h"

#include "charsets_data.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

static void upper10k_icu(State &s) {
    std::u16string units = mixedUnits(10000), upper(30000, u'\0');
    for (auto _ : s) {
        UErrorCode error = U_ZERO_ERROR;
        REQUIRE(u_strToUpper(upper.data(), int(upper.size()), units.data(), int(units.size()), "", &error) >= int(units.size()));
    }
    items(s, std::int64_t(units.size()));
}
BENCHMARK(upper10k_icu);

static void upper10k_by_unit_icu(State &s) {
    std::u16string units = mixedUnits(10000), upper(10000, u'\0');
    for (auto _ : s) {
        for (std::size_t i = 0; i < units.size(); ++i) upper[i] = char16_t(u_toupper(units[i]));
        DoNotOptimize(upper.data());
        benchmark::ClobberMemory();
    }
    items(s, std::int64_t(units.size()));
}
BENCHMARK(upper10k_by_unit_icu);

static void lower10k_icu(State &s) {
    std::u16string units = mixedUnits(10000), lower(30000, u'\0');
    for (auto _ : s) {
        UErrorCode error = U_ZERO_ERROR;
        REQUIRE(u_strToLower(lower.data(), int(lower.size()), units.data(), int(units.size()), "", &error) >= int(units.size()));
    }
    items(s, std::int64_t(units.size()));
}
BENCHMARK(lower10k_icu);

static void letters_icu(State &s) {
    std::u16string units;
    for (unsigned i = 0, x = 1; i < 10000; ++i, x = x * 1664525 + 1013904223) units += char16_t(0x100 + (x >> 8) % 0xFEFF);
    unsigned expected = 0;
    for (char16_t u : units) expected += u_isalpha(u) != 0;
    for (auto _ : s) {
        unsigned found = 0;
        for (char16_t u : units) found += u_isalpha(u) != 0;
        REQUIRE(found == expected);
    }
    items(s, std::int64_t(units.size()));
}
BENCHMARK(letters_icu);
