// SPDX-License-Identifier: MIT
// Text from bytes and to bytes: UTF-8, single-byte encodings, the Japanese ones. Bytes a second count the encoded form.
#include "common.h"
#include "encodings_data.h"

#include <Bedrock/bridge/ZPMemory.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/strings/ZPString.h>

#include <iconv.h>

namespace {

ZPRef<ZPString> textOf(const std::string &utf8) {
    return ZPAdopt(
        ZPString::alloc()->initWithBytes_length_encoding(utf8.data(), unsigned(utf8.size()), ZPUTF8StringEncoding));
}

std::string encoded(ZPString *text, ZPStringEncoding encoding) {
    ZPAutoreleasePoolScope pool;
    ZPData *data = text->dataUsingEncoding(encoding);
    REQUIRE(data);
    return {static_cast<const char *>(data->bytes()), data->length()};
}

// What the C library calls an encoding.
const char *nameOf(ZPStringEncoding encoding) {
    switch (encoding) {
    case ZPISOLatin1StringEncoding: return "ISO-8859-1";
    case ZPWindowsCP1252StringEncoding: return "CP1252";
    case ZPWindowsCP1251StringEncoding: return "CP1251";
    case ZPJapaneseEUCStringEncoding: return "EUC-JP";
    case ZPShiftJISStringEncoding: return "SHIFT_JIS";
    default: return "ISO-2022-JP";
    }
}
std::string converted(const std::string &from, const char *fromName, const char *toName) {
    iconv_t converter = iconv_open(toName, fromName);
    REQUIRE(converter != iconv_t(-1));
    std::string to(from.size() * 3 + 16, '\0');
    char *in = const_cast<char *>(from.data()), *out = to.data();
    std::size_t inLeft = from.size(), outLeft = to.size();
    REQUIRE(iconv(converter, &in, &inLeft, &out, &outLeft) != std::size_t(-1));
    iconv_close(converter);
    to.resize(to.size() - outLeft);
    return to;
}

void decode(State &s, const std::string &utf8, ZPStringEncoding encoding) {
    ZPRef<ZPString> text = textOf(utf8);
    std::string source = encoded(text, encoding);
    auto decoded = [&] {
        return ZPString::alloc()->initWithBytes_length_encoding(source.data(), unsigned(source.size()), encoding);
    };
    REQUIRE(ZPAdopt(decoded())->isEqualToString(text));
    for (auto _ : s) {
        ZPString *x = decoded();
        DoNotOptimize(x);
        x->release();
    }
    bytes(s, std::int64_t(source.size()));
}

void encode(State &s, const std::string &utf8, ZPStringEncoding encoding) {
    ZPRef<ZPString> text = textOf(utf8);
    std::string made = encoded(text, encoding);
    REQUIRE(encoding == ZPUTF8StringEncoding ? made == utf8 : made == converted(utf8, "UTF-8", nameOf(encoding)));
    std::int64_t size = std::int64_t(made.size());
    for (auto _ : s) {
        ZPAutoreleasePoolScope pool;
        ZPData *x = text->dataUsingEncoding(encoding);
        DoNotOptimize(x);
    }
    bytes(s, size);
}

void convert_libc(State &s, const std::string &utf8, const char *fromName, const char *toName, bool countsInput) {
    std::string source = converted(utf8, "UTF-8", fromName), to(source.size() * 3 + 16, '\0');
    std::size_t made = 0;
    REQUIRE(converted(converted(source, fromName, toName), toName, "UTF-8") == utf8);
    iconv_t converter = iconv_open(toName, fromName);
    for (auto _ : s) {
        char *in = source.data(), *out = to.data();
        std::size_t inLeft = source.size(), outLeft = to.size();
        REQUIRE(iconv(converter, &in, &inLeft, &out, &outLeft) != std::size_t(-1));
        made = to.size() - outLeft;
        DoNotOptimize(to.data());
    }
    iconv_close(converter);
    bytes(s, std::int64_t(countsInput ? source.size() : made));
}

}  // namespace

BENCHMARK_CAPTURE(decode, utf8_mixed, mixedText(), ZPUTF8StringEncoding);
BENCHMARK_CAPTURE(decode, utf8_ascii, asciiText(), ZPUTF8StringEncoding);
BENCHMARK_CAPTURE(decode, utf8_cyrillic, cyrillicText(), ZPUTF8StringEncoding);
BENCHMARK_CAPTURE(decode, utf8_japanese, japaneseText(), ZPUTF8StringEncoding);
BENCHMARK_CAPTURE(encode, utf8_mixed, mixedText(), ZPUTF8StringEncoding);
BENCHMARK_CAPTURE(encode, utf8_cyrillic, cyrillicText(), ZPUTF8StringEncoding);
BENCHMARK_CAPTURE(encode, utf8_japanese, japaneseText(), ZPUTF8StringEncoding);
BENCHMARK_CAPTURE(decode, latin1_western, westernText(), ZPISOLatin1StringEncoding);
BENCHMARK_CAPTURE(decode, cp1252_western, westernText(), ZPWindowsCP1252StringEncoding);
BENCHMARK_CAPTURE(decode, cp1251_cyrillic, cyrillicText(), ZPWindowsCP1251StringEncoding);
BENCHMARK_CAPTURE(encode, latin1_western, westernText(), ZPISOLatin1StringEncoding);
BENCHMARK_CAPTURE(encode, cp1252_western, westernText(), ZPWindowsCP1252StringEncoding);
BENCHMARK_CAPTURE(encode, cp1251_cyrillic, cyrillicText(), ZPWindowsCP1251StringEncoding);
BENCHMARK_CAPTURE(decode, eucjp, japaneseText(), ZPJapaneseEUCStringEncoding);
BENCHMARK_CAPTURE(encode, eucjp, japaneseText(), ZPJapaneseEUCStringEncoding);
BENCHMARK_CAPTURE(decode, shiftjis, japaneseText(), ZPShiftJISStringEncoding);
BENCHMARK_CAPTURE(encode, shiftjis, japaneseText(), ZPShiftJISStringEncoding);
BENCHMARK_CAPTURE(decode, iso2022jp, japaneseText(), ZPISO2022JPStringEncoding);
BENCHMARK_CAPTURE(encode, iso2022jp, japaneseText(), ZPISO2022JPStringEncoding);

BENCHMARK_CAPTURE(convert_libc, decode_latin1_western, westernText(), "ISO-8859-1", "UTF-16LE", true);
BENCHMARK_CAPTURE(convert_libc, encode_latin1_western, westernText(), "UTF-16LE", "ISO-8859-1", false);
BENCHMARK_CAPTURE(convert_libc, decode_cp1251_cyrillic, cyrillicText(), "CP1251", "UTF-16LE", true);
BENCHMARK_CAPTURE(convert_libc, encode_cp1251_cyrillic, cyrillicText(), "UTF-16LE", "CP1251", false);
BENCHMARK_CAPTURE(convert_libc, decode_cp1252_western, westernText(), "CP1252", "UTF-16LE", true);
BENCHMARK_CAPTURE(convert_libc, encode_cp1252_western, westernText(), "UTF-16LE", "CP1252", false);
BENCHMARK_CAPTURE(convert_libc, decode_eucjp, japaneseText(), "EUC-JP", "UTF-16LE", true);
BENCHMARK_CAPTURE(convert_libc, encode_eucjp, japaneseText(), "UTF-16LE", "EUC-JP", false);
BENCHMARK_CAPTURE(convert_libc, decode_shiftjis, japaneseText(), "SHIFT_JIS", "UTF-16LE", true);
BENCHMARK_CAPTURE(convert_libc, encode_shiftjis, japaneseText(), "UTF-16LE", "SHIFT_JIS", false);
BENCHMARK_CAPTURE(convert_libc, decode_iso2022jp, japaneseText(), "ISO-2022-JP", "UTF-16LE", true);
BENCHMARK_CAPTURE(convert_libc, encode_iso2022jp, japaneseText(), "UTF-16LE", "ISO-2022-JP", false);

BENCHMARK_MAIN();
