// SPDX-License-Identifier: MIT
#include "common.h"
#include "encodings_data.h"

#include <glib.h>

static void decode_glib(State &s, const std::string &t) {
    glong count = 0;
    gunichar2 *one = g_utf8_to_utf16(t.data(), glong(t.size()), nullptr, &count, nullptr);
    char *back = g_utf16_to_utf8(one, count, nullptr, nullptr, nullptr);
    REQUIRE(t == back);
    g_free(one);
    g_free(back);
    for (auto _ : s) {
        gunichar2 *x = g_utf8_to_utf16(t.data(), glong(t.size()), nullptr, nullptr, nullptr);
        DoNotOptimize(x);
        g_free(x);
    }
    bytes(s, std::int64_t(t.size()));
}
static void encode_glib(State &s, const std::string &t) {
    glong count = 0;
    gunichar2 *text = g_utf8_to_utf16(t.data(), glong(t.size()), nullptr, &count, nullptr);
    char *one = g_utf16_to_utf8(text, count, nullptr, nullptr, nullptr);
    REQUIRE(t == one);
    g_free(one);
    for (auto _ : s) {
        char *x = g_utf16_to_utf8(text, count, nullptr, nullptr, nullptr);
        DoNotOptimize(x);
        g_free(x);
    }
    g_free(text);
    bytes(s, std::int64_t(t.size()));
}
BENCHMARK_CAPTURE(decode_glib, utf8_mixed, mixedText());
BENCHMARK_CAPTURE(decode_glib, utf8_ascii, asciiText());
BENCHMARK_CAPTURE(decode_glib, utf8_cyrillic, cyrillicText());
BENCHMARK_CAPTURE(decode_glib, utf8_japanese, japaneseText());
BENCHMARK_CAPTURE(encode_glib, utf8_mixed, mixedText());
BENCHMARK_CAPTURE(encode_glib, utf8_cyrillic, cyrillicText());
BENCHMARK_CAPTURE(encode_glib, utf8_japanese, japaneseText());
