// SPDX-License-Identifier: MIT
// Japanese EUC, Shift JIS and ISO 2022-JP: every pair, the library's own forms, damaged text.
#include "EncodedText.h"

using namespace strings;

namespace {

constexpr ZPStringEncoding euc = ZPJapaneseEUCStringEncoding, sjis = ZPShiftJISStringEncoding,
                           jis = ZPISO2022JPStringEncoding;

std::string pair(unsigned first, unsigned second) { return {char(first), char(second)}; }

template <auto Convert> std::string converted(const std::string &in) {
    unsigned char out[2];
    unsigned consumed = 99, n = Convert(reinterpret_cast<const unsigned char *>(in.c_str()), out, &consumed);
    return std::string(reinterpret_cast<char *>(out), n) + " " + std::to_string(consumed);
}
constexpr auto toShiftJIS = converted<ZPEUCToShiftJIS>, toEUC = converted<ZPShiftJISToEUC>;

}  // namespace

TEST(JapaneseEncoding, HoldsTheStandardAndComesBack) {
    unsigned standard = 0, extension = 0;
    for (unsigned first = 0xA1; first < 0xFF; ++first)
        for (unsigned second = 0xA1; second < 0xFF; ++second) {
            std::string bytes = pair(first, second);
            std::u16string unit = decoded(bytes, euc), wanted = decodedByLibc(bytes, "EUC-JP");
            if (unit == std::u16string(1, u'\0')) {
                EXPECT_EQ(wanted, u"<fails>") << first << " " << second;
                continue;
            }
            if (first == 0xFE) ++extension;
            else {
                ++standard;
                ASSERT_EQ(unit, wanted) << first << " " << second;
            }
            ASSERT_EQ(encodedOnce(unit, euc), bytes);
            std::string shifted = encodedOnce(unit, sjis);
            ASSERT_EQ(decoded(shifted, sjis), unit) << first << " " << second;
            if (first == 0xFE || shifted[0] == '\x87') {
                EXPECT_EQ(decodedByLibc(shifted, "CP932"), unit);
            }
            ASSERT_EQ(decoded(encodedOnce(unit, jis), jis), unit);
        }
    EXPECT_EQ(standard, 6879u);
    EXPECT_EQ(extension, 49u);
    for (unsigned b = 0xA1; b <= 0xDF; ++b) {
        std::u16string kana(1, char16_t(0xFF61 + b - 0xA1));
        EXPECT_EQ(decoded(pair(0x8E, b), euc), kana);
        EXPECT_EQ(decoded(std::string(1, char(b)), sjis), kana);
        EXPECT_EQ(encodedOnce(kana, euc), pair(0x8E, b));
        EXPECT_EQ(encodedOnce(kana, sjis), std::string(1, char(b)));
        EXPECT_EQ(encodedOnce(kana, jis), "\x1B(I" + std::string(1, char(b & 0x7F)) + "\x1B(B");
    }
    // Everything that converts comes back, but for what the encodings only stand for.
    for (unsigned u = 0; u < 0x10000; ++u) {
        std::u16string unit(1, char16_t(u));
        std::string bytes = encodedOnce(unit, euc);
        if (bytes == "<fails>" || u == 0x2029) continue;
        ASSERT_EQ(decoded(bytes, euc), unit) << u;
        std::u16string back = decoded(encodedOnce(unit, sjis), sjis);
        EXPECT_TRUE(back == unit || (bytes[0] == '\xA0' && back == u"?")) << u;
    }
}

TEST(JapaneseEncoding, CarriesKESTRELInEUC) {
    EXPECT_EQ(encoded(u"\u00d7\u2029", euc), "\xA1\xDF\n") << "the standard's own sign goes first";
    EXPECT_EQ(encoded(u"\u00e9", sjis), "?");
    EXPECT_EQ(encoded(u"\u0416\u05d0", euc), "<fails>");
    EXPECT_EQ(encoded(u"\u0416\u05d0x", euc, YES), "\xA7\xA8_x");
    EXPECT_EQ(encoded(u"\u00e9a\u20ac", euc), "\xA0\xE9\x61\xA0\x80");
    // The same back, and high bytes that begin no pair.
    for (auto &[bytes, units] : {std::pair{"\xA0\xE9\x61\xA0\x80", u"\u00e9a\u20ac"},
                                 {"\xE9", u"\u00e9"},
                                 {"\xE9z", u"\u00e9z"},
                                 {"\x8E\x41\xA0\x41\x82", u"\u017dA\u00a0A\u201a"},
                                 {"\x8E\xE5", u"\ufffd"}})
        EXPECT_EQ(decoded(bytes, euc), units);
    EXPECT_EQ(decoded("\xFF\xA1", euc), std::u16string(1, u'\0'));
}

TEST(JapaneseEncoding, ConvertsBetweenTheTwoByteForms) {
    // Both ways, and what the source counts in bytes.
    for (auto &[in, shifted] :
         rows("\xA4\xA2 -> \x82\xA0", "\x8E\xB1 -> \xB1", "\xA2\xDC -> \x87\x97", "\xA2\xDD -> \x87\x96",
              "\xA2\xE1 -> \x87\x91", "\xA2\xE2 -> \x87\x90", "\xA2\xE5 -> \x87\x95", "\xA2\xE9 -> \x87\x92",
              "\xFE\xA2 -> \x87\x41", "\xFE\xD6 -> \x87\x75", "\xFE\xE0 -> \x87\x80", "\xFE\xF9 -> \x87\x99")) {
        EXPECT_EQ(toShiftJIS(in), shifted + " 2");
        EXPECT_EQ(toEUC(shifted), in + (shifted.size() == 2 ? " 2" : " 1"));
    }
    EXPECT_EQ(toShiftJIS("a"), "a 1");
    for (const char *none : {"\x87\x40", "\x87\x4A", "\x87\x76", "\x87\x7E", "\x87\x9A", "\x80\x41", "\xA0\x41",
                             "\xFD\x41", "\x82\x7F", "\x82\x3F", "\x82\xFD"})
        EXPECT_EQ(toEUC(none), " 1") << none;
    EXPECT_EQ(toEUC("\xF0\x40"), "?? 2");
    for (const char *none : {"\xA4z", "\xA0\xE9", "\x8Ez", "\x85\xA1"}) EXPECT_EQ(toShiftJIS(none), "? 1");
    // Outside the extension row the arithmetic is one to one.
    for (unsigned first = 0xA1; first < 0xFE; ++first)
        for (unsigned second = 0xA1; second < 0xFF; ++second) {
            if (first == 0xAD || first == 0xAE) continue;  // lie under the lead of the extension row
            std::string there = toShiftJIS(pair(first, second)).substr(0, 2);
            ASSERT_EQ(toEUC(there).substr(0, 2), pair(first, second)) << first << " " << second;
        }
}

TEST(JapaneseEncoding, FailsOnDamagedShiftJIS) {
    for (const char *bad : {"x\x82", "\x80", "\xA0z", "\xFD\x80", "\x82\x20", "\x87\x40"})
        EXPECT_EQ(decoded(bad, sjis), u"<fails>") << bad;
    EXPECT_EQ(decoded("\xF0\x40z", sjis), u"?z");
    const unsigned char bytes[] = {0x80, 0x41};
    const unsigned char *at = bytes;
    unichar unit;
    EXPECT_EQ(ZPShiftJISToUnicode(&at, 2, &unit), 0u);
    EXPECT_EQ(at, bytes + 1);
}

TEST(JapaneseEncoding, SwitchesInJIS) {
    EXPECT_EQ(encoded(u"a\u65e5\u672cb\uff71\u65e5", jis),
              "a\x1B$B\x46\x7C\x4B\x5C\x1B(Bb\x1B(I\x31\x1B$B\x46\x7C\x1B(B");
    EXPECT_EQ(encoded(u"\u00e9x", jis), "ex") << "approximated";
    EXPECT_EQ(encoded(u"\u00e9x", jis, YES), "x") << "dropped";
    EXPECT_EQ(encoded(u"\u05d0", jis), "<fails>");
    EXPECT_EQ(encoded(u"\u65e5\u05d0", jis, YES), "\x1B$B\x46\x7C\x1B(B_");
    // An unknown escape loses its ESC alone, and what is cut off is left out.
    for (auto &[bytes, units] :
         {std::pair{"a\x1B$B\x46\x7C\x1B(Jb\x1B)I\x31\x1B$@\x46\x7C\x1B(Hc", u"a\u65e5b\uff71\u65e5c"},
          {"ab\x1B", u"ab"},
          {"ab\x1B(", u"ab"},
          {"ab\x1B(Zc", u"ab(Zc"},
          {"\x1B$B\x46\x7C\x46", u"\u65e5"}})
        EXPECT_EQ(decoded(bytes, jis), units);
    inEveryForm(u"\u65e5", [](const Form &, ZPString *s) {
        char buffer[9] = "########";
        unsigned used;
        EXPECT_TRUE(s->_getBytesInJISEncoding_range_usedBytes_lossy(buffer, {0, 1}, &used, NO));
        EXPECT_EQ(std::string(buffer, used), "\x1B$B\x46\x7C\x1B(B");
        // What does not fit with the way back to ASCII is not begun.
        ZPRange rest;
        EXPECT_TRUE(getBytes(s, buffer, 7, &used, jis, NO, {0, 1}, &rest));
        EXPECT_EQ(used, 0u);
        EXPECT_EQ(rest, ZPMakeRange(0, 1));
    });
}
