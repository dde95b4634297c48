// SPDX-License-Identifier: MIT
// The text that the library and its peers map.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

inline std::u16string mixedUnits(std::size_t count) {
    static const char16_t *parts[] = {
        u"The report for the third quarter is ready. ",
        u"Gr\u00f6\u00dfe und Ma\u00df \u00fcberpr\u00fcfen. ",
        u"\u039a\u03b1\u03bb\u03b7\u03bc\u03ad\u03c1\u03b1 \u03ba\u03cc\u03c3\u03bc\u03b5. ",
        u"\u0421\u044a\u0435\u0448\u044c \u0436\u0435 \u0435\u0449\u0451 \u044d\u0442\u0438\u0445 "
        u"\u043c\u044f\u0433\u043a\u0438\u0445 \u0431\u0443\u043b\u043e\u043a. ",
        u"\u65e5\u672c\u8a9e\u306e\u6587\u5b57\u5217\u3067\u3059\u3002",
        u"voil\u00e0, \u00e7a marche d\u00e9j\u00e0! "};
    std::u16string units;
    for (unsigned i = 0; units.size() < count; i = i * 1664525 + 1013904223) units += parts[(i >> 16) % 6];
    units.resize(count);
    return units;
}

/// 10,000 units from U+0100 on, and how many of them are letters, marks or modifiers: what the set of letters holds.
inline std::u16string unitsAnywhere() {
    std::u16string units;
    for (unsigned i = 0, x = 1; i < 10000; ++i, x = x * 1664525 + 1013904223)
        units += char16_t(0x100 + (x >> 8) % 0xFEFF);
    return units;
}
constexpr unsigned lettersAnywhere = 7735;

/// A sum of the units, and what it is for `mixedUnits(10000)` in upper and in lower case.
constexpr std::uint32_t sumOf(std::u16string_view units) {
    std::uint32_t sum = 2166136261;
    for (char16_t u : units) sum = (sum ^ u) * 16777619;
    return sum;
}
constexpr std::uint32_t upperSum = 2455204364, lowerSum = 2197625526;
