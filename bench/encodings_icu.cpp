// SPDX-License-Identifier: MIT
#include "common.h"
#include "encodings_data.h"

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

static void decode_icu(State &s, const std::string &t, const char *name) {
    UErrorCode error = U_ZERO_ERROR;
    UConverter *converter = ucnv_open(name, &error);
    icu::UnicodeString text = icu::UnicodeString::fromUTF8(t);
    std::string source(t.size() * 2, '\0');
    source.resize(std::size_t(
        ucnv_fromUChars(converter, source.data(), int32_t(source.size()), text.getBuffer(), text.length(), &error)));
    REQUIRE(U_SUCCESS(error));
    std::u16string to(source.size() + 16, u'\0');
    int32_t units =
        ucnv_toUChars(converter, to.data(), int32_t(to.size()), source.data(), int32_t(source.size()), &error);
    REQUIRE(U_SUCCESS(error) && icu::UnicodeString(to.data(), units) == text);
    for (auto _ : s) {
        DoNotOptimize(
            ucnv_toUChars(converter, to.data(), int32_t(to.size()), source.data(), int32_t(source.size()), &error));
        DoNotOptimize(to.data());
    }
    REQUIRE(U_SUCCESS(error));
    ucnv_close(converter);
    bytes(s, std::int64_t(source.size()));
}
static void encode_icu(State &s, const std::string &t, const char *name) {
    UErrorCode error = U_ZERO_ERROR;
    UConverter *converter = ucnv_open(name, &error);
    icu::UnicodeString text = icu::UnicodeString::fromUTF8(t);
    std::string to(t.size() * 2, '\0');
    int32_t made = ucnv_fromUChars(converter, to.data(), int32_t(to.size()), text.getBuffer(), text.length(), &error);
    REQUIRE(U_SUCCESS(error) && icu::UnicodeString(to.data(), made, converter, error) == text);
    for (auto _ : s) {
        made = ucnv_fromUChars(converter, to.data(), int32_t(to.size()), text.getBuffer(), text.length(), &error);
        DoNotOptimize(to.data());
    }
    REQUIRE(U_SUCCESS(error));
    ucnv_close(converter);
    bytes(s, made);
}
#define BOTH(name, text, encoding)                         \
    BENCHMARK_CAPTURE(decode_icu, name, text(), encoding); \
    BENCHMARK_CAPTURE(encode_icu, name, text(), encoding)
BOTH(utf8_mixed, mixedText, "UTF-8");
BOTH(utf8_cyrillic, cyrillicText, "UTF-8");
BOTH(utf8_japanese, japaneseText, "UTF-8");
BOTH(utf8_ascii, asciiText, "UTF-8");
BOTH(latin1_western, westernText, "ISO-8859-1");
BOTH(cp1252_western, westernText, "windows-1252");
BOTH(cp1251_cyrillic, cyrillicText, "windows-1251");
BOTH(eucjp, japaneseText, "EUC-JP");
BOTH(shiftjis, japaneseText, "Shift_JIS");
BOTH(iso2022jp, japaneseText, "ISO-2022-JP");
