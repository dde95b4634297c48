// SPDX-License-Identifier: MIT
// Encodings: both directions, tables and their inverses, loss, cut-off and damaged input.
#include "EncodedText.h"

using namespace strings;

constexpr ZPStringEncoding singleByte[] = {ZPASCIIStringEncoding,         ZPKESTRELStringEncoding,
                                           ZPISOLatin1StringEncoding,     ZPISOLatin2StringEncoding,
                                           ZPWindowsCP1250StringEncoding, ZPWindowsCP1251StringEncoding,
                                           ZPWindowsCP1252StringEncoding, ZPWindowsCP1253StringEncoding,
                                           ZPWindowsCP1254StringEncoding};

TEST(Encoding, TablesAreInversesOfEachOther) {
    for (ZPStringEncoding e : singleByte) {
        SCOPED_TRACE(e);
        unsigned assigned = 0;
        for (unsigned b = 0; b < 256; ++b) {
            std::u16string unit = decoded(std::string(1, char(b)), e);
            ASSERT_EQ(unit.size(), 1u);
            if (unit == u"\ufffd" || (e == ZPASCIIStringEncoding && b >= 0x80)) continue;
            ++assigned;
            EXPECT_EQ(encoded(unit, e), std::string(1, char(b))) << b;
        }
        EXPECT_EQ(encoded(u"\u2029", e), "\n");
        unsigned convertible = 0;
        for (unsigned u = 0; u < 0x10000; ++u) {
            char16_t unit = char16_t(u);
            convertible += ZPString::stringWithCharacters_length(&unit, 1)->canBeConvertedToEncoding(e);
        }
        bool keepsControls = e == ZPWindowsCP1250StringEncoding || e == ZPWindowsCP1251StringEncoding ||
                             e == ZPWindowsCP1253StringEncoding || e == ZPWindowsCP1254StringEncoding;
        EXPECT_EQ(convertible, assigned + 1 + (keepsControls ? 32 : 0));
        EXPECT_EQ(encoded(u"\u0081", e) == "\x81",
                  keepsControls || e == ZPISOLatin1StringEncoding || e == ZPISOLatin2StringEncoding);
    }
    for (unsigned b = 0xA0; b < 0x100; ++b) EXPECT_EQ(ZPKESTRELToPrecompUnicode(static_cast<unsigned char>(b)), b);
}

TEST(Encoding, AgreesWithTheCLibrary) {
    const std::pair<ZPStringEncoding, const char *> names[] = {
        {ZPISOLatin1StringEncoding, "ISO-8859-1"}, {ZPISOLatin2StringEncoding, "ISO-8859-2"},
        {ZPWindowsCP1250StringEncoding, "CP1250"}, {ZPWindowsCP1251StringEncoding, "CP1251"},
        {ZPWindowsCP1252StringEncoding, "CP1252"}, {ZPWindowsCP1253StringEncoding, "CP1253"},
        {ZPWindowsCP1254StringEncoding, "CP1254"}};
    for (auto [e, name] : names)
        for (unsigned b = 0; b < 256; ++b) {
            std::string byte(1, char(b));
            std::u16string wanted = decodedByLibc(byte, name);
            // Three bytes of Greek and two of Latin have characters of their own here, or none.
            if (e == ZPWindowsCP1253StringEncoding && (b == 0xAA || b == 0xD2 || b == 0xFF))
                wanted = std::u16string(1, char16_t(b == 0xAA ? 0xF8F9 : b == 0xD2 ? 0xF8FA : 0xF8FB));
            if (e == ZPWindowsCP1252StringEncoding && (b == 0x8E || b == 0x9E)) wanted = u"\ufffd";
            EXPECT_EQ(decoded(byte, e), wanted == u"<fails>" ? u"\ufffd" : wanted) << name << " " << b;
        }
}

TEST(Encoding, KnowsTheFontsCharacters) {
    struct Font {
        unichar (*decode)(unsigned char);
        unsigned (*encode)(ZPCharacterReader *, unsigned char *);
        unsigned pairs;
    };
    for (Font font : {Font{ZPSymbolToPrecompUnicode, ZPUnicodeToSymbol, 164},
                      Font{ZPZapfDingbatToPrecompUnicode, ZPUnicodeToDingbat, 188},
                      Font{ZPAdobeStandardToPrecompUnicode, ZPUnicodeToAdobeStandard, 160 + 53}}) {
        std::u16string all(0x10000, u'\0');
        for (unsigned u = 0; u < 0x10000; ++u) all[u] = char16_t(u);
        ZPString *text = make(all);
        unsigned n = 0;
        for (unsigned u = 0; u < 0x10000; ++u) {
            ZPCharacterReader reader;
            unsigned char byte;
            _ZPStartCharacterReader(&reader, text, {u, 1});
            if (!font.encode(&reader, &byte)) continue;
            ++n;
            EXPECT_EQ(font.decode(byte), u == 0x2029 ? font.decode(10) : u);
        }
        // Of the standard encoding, two units have their byte below 0xA0, and the line feed is there twice.
        EXPECT_EQ(n, font.pairs);
    }
    EXPECT_EQ(encoded(u"\u03b1 \u2029", ZPSymbolStringEncoding), "a \n");
    EXPECT_EQ(encoded(u"A\u0391", ZPSymbolStringEncoding, YES), "_A");
    EXPECT_EQ(decoded("\t", ZPSymbolStringEncoding), u"\ufffd");
}

TEST(Encoding, ConvertsUnicodeWithAMark) {
    using namespace std::string_literals;
    EXPECT_EQ(encoded(u"ab", ZPUnicodeStringEncoding), "\xFF\xFE\x61\0\x62\0"s);
    EXPECT_EQ(encoded(u"", ZPUnicodeStringEncoding), "");
    EXPECT_EQ(decoded("\xFE\xFF\0\x61\0\x62"s, 0), u"ab");
    // Big-endian without a mark; half a unit is dropped.
    for (auto &[bytes, units] : {std::pair{"\xFF\xFE\x61\0\x62\0"s, u"ab"},
                                 {"\0\x61\0\x62"s, u"ab"},
                                 {"\xFF\xFE\x61\0\x62"s, u"a"},
                                 {"\xFF\xFE"s, u""},
                                 {"\xFF"s, u""}})
        EXPECT_EQ(decoded(bytes, ZPUnicodeStringEncoding), units);
    for (ZPStringEncoding e : {0u, 1u, 2u, 4u, 5u, 7u, 10u, 12u, 99u}) EXPECT_EQ(decoded("", e), u"");
}

// Every unit and every pair, and damaged bytes, through the conversion of runs and through that of single characters.
TEST(Encoding, ConvertsAllOfUTF8) {
    std::u16string text;
    std::string wanted;
    for (unsigned c = 0; c < 0x110000; ++c) {
        if (c < 0x10000) text += char16_t(c);
        else (text += char16_t(0xD7C0 + (c >> 10))) += char16_t(0xDC00 + (c & 0x3FF));
        if (c == 0xDBFF) text += u'.';
        if (c < 0x80) wanted += char(c);
        else if (c < 0x800) (wanted += char(0xC0 | c >> 6)) += char(0x80 | (c & 63));
        else {
            if (c < 0x10000) wanted += char(0xE0 | c >> 12);
            else (wanted += char(0xF0 | c >> 18)) += char(0x80 | (c >> 12 & 63));
            (wanted += char(0x80 | (c >> 6 & 63))) += char(0x80 | (c & 63));
        }
        if (c == 0xDBFF) wanted += '.';
    }
    EXPECT_TRUE(encodedOnce(text, ZPUTF8StringEncoding) == wanted);
    EXPECT_TRUE(decoded(wanted, ZPUTF8StringEncoding) == text);

    std::mt19937 random(11);
    for (int i = 0; i < 20000; ++i) {
        std::string bytes;
        for (unsigned n = random() % 60; n; --n) {
            static const char *const pieces[] = {
                "a",    "some plain words ",    "\xC3\xA9", "\xD0\x96", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80", "\x80",
                "\xE0", "\xF8\x88\x80\x80\x80", "\xFF"};
            bytes += pieces[random() % (i % 2 ? 6 : 10)];
        }
        auto *in = reinterpret_cast<const unsigned char *>(bytes.data()), *end = in + bytes.size();
        std::u16string one;
        while (in < end) {
            unichar units[2];
            unsigned n = ZPUTF8ToUnicode(&in, unsigned(end - in), units);
            if (!n) {
                one = u"<fails>";
                break;
            }
            one.append(reinterpret_cast<char16_t *>(units), n);
        }
        ASSERT_EQ(decoded(bytes, ZPUTF8StringEncoding), one);
        if (one == u"<fails>") continue;
        ZPCharacterReader reader;
        std::string back;
        unsigned char out[8];
        _ZPStartCharacterReader(&reader, make(one), {0, unsigned(one.size())});
        while (unsigned n = ZPUnicodeToUTF8(&reader, out)) back.append(reinterpret_cast<char *>(out), n);
        ASSERT_EQ(encodedOnce(one, ZPUTF8StringEncoding), back);
    }
    for (unsigned cut = 1; cut < 4; ++cut)
        EXPECT_EQ(decoded(std::string("x\xF0\x9F\x98\x80", 1 + cut), ZPUTF8StringEncoding), u"<fails>");
    for (const char *bad : {"\xF5\x80\x80\x80", "\xE0\x01\x01", "\xFC\x84\x80\x80\x80\x80"})
        EXPECT_EQ(decoded(bad, ZPUTF8StringEncoding), u"\ufffd");
    EXPECT_EQ(decoded("\x80", ZPUTF8StringEncoding), u"\u0080");
}

TEST(Encoding, EscapesInNonLossyASCII) {
    std::u16string text = u"\\\u00e9\u4e2d\t\u0001x";
    EXPECT_EQ(encoded(text, ZPNonLossyASCIIStringEncoding), "\\\\\\351\\U4E2D\t\\001x");
    EXPECT_EQ(decoded("\\\\\\351\\U4E2D\t\\001x", ZPNonLossyASCIIStringEncoding), text);
    for (const char *bad : {"\\", "\\1", "\\12", "\\189", "\\U4e2d", "\\U4E2", "\\x12"})
        EXPECT_EQ(decoded(bad, ZPNonLossyASCIIStringEncoding), u"<fails>") << bad;
    std::mt19937 random(5);
    for (int i = 0; i < 2000; ++i) {
        std::u16string units(random() % 30, u'\0');
        for (char16_t &u : units) u = char16_t(random() % 2 ? random() % 0x100 : random());
        ASSERT_EQ(decoded(encoded(units, ZPNonLossyASCIIStringEncoding), ZPNonLossyASCIIStringEncoding), units);
    }
}

TEST(Encoding, ApproximatesWhereLossIsAllowed) {
    EXPECT_EQ(encoded(u"\u00e9\u00df\u2026\ufb01\u4e2d", ZPASCIIStringEncoding, YES), "ess...fi_");
    EXPECT_EQ(encoded(u"a\u0100", ZPISOLatin1StringEncoding), "<fails>");
    EXPECT_EQ(encoded(u"a\u0100b", ZPISOLatin1StringEncoding, YES), "a_b");
    EXPECT_EQ(encoded(u"\u20ac", ZPWindowsCP1252StringEncoding), "\x80");
    EXPECT_EQ(encoded(u"\u017d", ZPWindowsCP1252StringEncoding), "<fails>");
    for (unsigned b = 0x80; b < 0x100; ++b) {
        unichar unit = ZPKESTRELToPrecompUnicode(static_cast<unsigned char>(b));
        std::string ascii = encoded(std::u16string(1, unit), ZPASCIIStringEncoding, YES);
        EXPECT_LE(ascii.size(), 4u);
        for (char c : ascii) EXPECT_TRUE(c >= 0x20 && c < 0x7F);
    }
}

TEST(Encoding, StopsBeforeACharacterThatDoesNotFit) {
    inEveryForm(u"ab\u4e2dc", [](const Form &, ZPString *s) {
        char buffer[4];
        unsigned filled;
        ZPRange rest;
        EXPECT_TRUE(getBytes(s, buffer, 4, &filled, ZPUTF8StringEncoding, NO, {0, 4}, &rest));
        EXPECT_EQ(std::string(buffer, filled), "ab");
        EXPECT_EQ(rest, ZPMakeRange(2, 2));
        EXPECT_FALSE(getBytes(s, buffer, 4, &filled, ZPISOLatin1StringEncoding, NO, {0, 4}, &rest));
        EXPECT_EQ(filled, 2u) << "left alone";
        EXPECT_REFUSED(getBytes(s, nullptr, 9, nullptr, 10, NO, {3, 2}, nullptr));
    });
}

// In pieces of any size the text comes out whole, and no byte behind the buffer changes.
TEST(Encoding, NeverWritesPastTheBuffer) {
    for (ZPStringEncoding e : everyEncoding) {
        SCOPED_TRACE(e);
        inEveryForm(u"ab\u00e9\u65e5\u672c\uff71\u03b1 \U0001F600z, plain words, \u00e9",
                    [&](const Form &, ZPString *s) {
                        unsigned length = s->length();
                        std::u16string whole = decoded(bytesOf(s->dataUsingEncoding_allowLossyConversion(e, YES)), e);
                        for (unsigned room = 0; room < 60; ++room) {
                            std::u16string text;
                            ZPRange rest{0, length};
                            for (bool moves = true; moves && rest.length;) {
                                unsigned char buffer[80];
                                std::memset(buffer, 0xA5, sizeof buffer);
                                unsigned filled = 0, at = rest.location;
                                ASSERT_TRUE(getBytes(s, buffer, room, &filled, e, YES, rest, &rest));
                                ASSERT_LE(filled, room);
                                ASSERT_EQ(rest.location + rest.length, length);
                                for (unsigned i = room; i < sizeof buffer; ++i)
                                    ASSERT_EQ(buffer[i], 0xA5) << "room " << room;
                                text += decoded(std::string(reinterpret_cast<char *>(buffer), filled), e);
                                moves = rest.location > at;
                                unsigned counted;
                                ZPRange same{at, length - at};
                                getBytes(s, nullptr, room, &counted, e, YES, same, &same);
                                ASSERT_EQ(counted, filled);
                                ASSERT_EQ(same, rest);
                            }
                            if (room >= 12) {
                                ASSERT_EQ(text, whole) << "room " << room;
                            }
                        }
                    });
    }
}

TEST(Encoding, AnswersForWhatItDoesNotKnow) {
    EXPECT_EQ(make(u"x")->dataUsingEncoding(99), nullptr);
    EXPECT_FALSE(make(u"x")->canBeConvertedToEncoding(99));
    EXPECT_EQ(decoded("x", 99), u"<fails>");
    const ZPStringEncoding *list = ZPString::availableStringEncodings();
    unsigned n = 0;
    while (list[n]) EXPECT_GT(ZPString::localizedNameOfStringEncoding(list[n++])->length(), 0u);
    EXPECT_EQ(std::u16string(textOf(ZPString::localizedNameOfStringEncoding(ZPWindowsCP1251StringEncoding))),
              u"Adobe Cyrillic");
    EXPECT_EQ(ZPString::localizedNameOfStringEncoding(99), ""_zp);
}

TEST(Encoding, ReadersConvertOneCharacterAtATime) {
    std::u16string text(40, u'\u00e9');
    text += u"\U0001F600\u0151\uffff";
    inEveryForm(text, [&](const Form &, ZPString *s) {
        ZPCharacterReader reader;
        unsigned char bytes[8];
        _ZPStartCharacterReader(&reader, s, {1, unsigned(text.size()) - 1});
        for (int i = 0; i < 39; ++i) EXPECT_EQ(ZPUnicodeToISOLatin1(&reader, bytes), 1u);
        EXPECT_EQ(ZPUnicodeToISOLatin1(&reader, bytes), 0u) << "stays at what it cannot convert";
        EXPECT_EQ(ZPUnicodeToUTF8(&reader, bytes), 4u);
        EXPECT_EQ(ZPUnicodeToLossyASCII(&reader, bytes), 1u);
        EXPECT_EQ(ZPUnicodeToUTF8(&reader, bytes), 3u);
        EXPECT_EQ(ZPUnicodeToLossyASCII(&reader, bytes), 0u);
    });
}
