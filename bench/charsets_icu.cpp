// SPDX-License-Identifier: MIT
// ICU's case mapping and properties.
#include "common.h"

#include "charsets_data.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

static void upper10k_icu(State &s) {
    std::u16string units = mixedUnits(10000), upper(30000, u'\0');
    UErrorCode error = U_ZERO_ERROR;
    int made = u_strToUpper(upper.data(), int(upper.size()), units.data(), int(units.size()), "", &error);
    REQUIRE(U_SUCCESS(error) && sumOf({upper.data(), std::size_t(made)}) == upperSum);
    for (auto _ : s) {
        DoNotOptimize(u_strToUpper(upper.data(), int(upper.size()), units.data(), int(units.size()), "", &error));
        DoNotOptimize(upper.data());
    }
    items(s, std::int64_t(units.size()));
}
BENCHMARK(upper10k_icu);

static void lower10k_icu(State &s) {
    std::u16string units = mixedUnits(10000), lower(30000, u'\0');
    UErrorCode error = U_ZERO_ERROR;
    int made = u_strToLower(lower.data(), int(lower.size()), units.data(), int(units.size()), "", &error);
    REQUIRE(U_SUCCESS(error) && sumOf({lower.data(), std::size_t(made)}) == lowerSum);
    for (auto _ : s) {
        DoNotOptimize(u_strToLower(lower.data(), int(lower.size()), units.data(), int(units.size()), "", &error));
        DoNotOptimize(lower.data());
    }
    items(s, std::int64_t(units.size()));
}
BENCHMARK(lower10k_icu);

static void letters_icu(State &s) {
    std::u16string units = unitsAnywhere();
    auto members = [&] {
        unsigned found = 0;
        for (char16_t u : units) found += (U_GET_GC_MASK(u) & (U_GC_L_MASK | U_GC_M_MASK | U_GC_SK_MASK)) != 0;
        return found;
    };
    REQUIRE(members() == lettersAnywhere);
    for (auto _ : s) DoNotOptimize(members());
    items(s, std::int64_t(units.size()));
}
BENCHMARK(letters_icu);
