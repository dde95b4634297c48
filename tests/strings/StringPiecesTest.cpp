// SPDX-License-Identifier: MIT
// Substrings, joining, taking apart, case, numbers and displayable forms, in every storage form.
#include "StringForms.h"

using namespace strings;

TEST(StringPieces, substrings) {
    std::u16string text = u"0123456789abcdefghij\u00e90123456789ABCDEFGHIJ";
    inEveryForm(text, [&](const Form &, ZPString *s) {
        unsigned n = s->length();
        for (unsigned at : {0u, 3u, 20u})
            for (unsigned count : {1u, 5u, 15u, 21u, n})
                if (at + count <= n) {
                    EXPECT_EQ(textOf(s->substringWithRange({at, count})), text.substr(at, count));
                }
        EXPECT_EQ(textOf(s->substringFromIndex(7)) + textOf(s->substringToIndex(7)),
                  text.substr(7) + text.substr(0, 7));
        EXPECT_HAS(raised([&] { s->substringFromIndex(n + 1); }), "ZPRangeException: ");
        EXPECT_REFUSED(s->substringWithRange({1, 0xFFFFFFFF}));
        EXPECT_REFUSED(s->_newSubstringWithRange_zone({n + 1, 0}, nullptr));
    });
}

TEST(StringPieces, joiningAndSplitting) {
    for (std::u16string a : {u"", u"abc", u"\u00e9t\u00e9", u"\u4e2d"})
        for (std::u16string b : {u"", u"x", u"\u00ff", u"\u6587"})
            inEveryForm(a, [&](const Form &, ZPString *s) {
                inEveryForm(b, [&](const Form &, ZPString *t) {
                    EXPECT_EQ(textOf(s->stringByAppendingString(t)), a + b);
                });
                EXPECT_EQ(textOf(s->stringByAppendingFormat("-%d"_zp, 7)), a + u"-7");
            });
    auto split = [](ZPString *s, ZPString *by) { return listOf(s->componentsSeparatedByString(by)); };
    inEveryForm(u", a, , b,", [&](const Form &, ZPString *s) {
        EXPECT_EQ(split(s, ", "_zp), (List{u"", u"a", u"", u"b,"}));
        EXPECT_EQ(split(s, "?"_zp), (List{textOf(s)}));
    });
    EXPECT_EQ(split("aXbX"_zp, "X"_zp), (List{u"a", u"b", u""}));
    EXPECT_EQ(split(""_zp, "X"_zp), (List{u""}));
    ZPCharacterSet *set = ZPCharacterSet::characterSetWithCharactersInString(",;"_zp);
    inEveryForm(u"a,b;c,;", [&](const Form &, ZPString *s) {
        EXPECT_EQ(listOf(s->_componentsSeparatedBySet(set)), (List{u"a", u"b", u"c"}));
    });
}

TEST(StringPieces, groupsAndBuffers) {
    inEveryForm(u"1234567", [](const Form &, ZPString *s) {
        EXPECT_EQ(textOf(s->_stringWithSeparator_atFrequency(',', 3)), u"1,234,567");
        EXPECT_EQ(textOf(s->_stringWithSeparator_atFrequency(',', 1)), u"1,2,3,4,5,6,7");
        unichar *buffer = nullptr;
        int length = -1;
        s->_copyToUnicharBuffer_saveLength(&buffer, &length);
        EXPECT_EQ(std::u16string(buffer, length), u"1234567");
        ""_zp->_copyToUnicharBuffer_saveLength(&buffer, &length);
        EXPECT_EQ(buffer, nullptr);
        EXPECT_EQ(length, 0);
    });
}

TEST(StringPieces, caseOfStrings) {
    inEveryForm(u"hello wORLD 2nd \u00e9\u00dfx stra\u00dfe", [](const Form &, ZPString *s) {
        EXPECT_EQ(textOf(s->uppercaseString()), u"HELLO WORLD 2ND \u00c9SSX STRASSE");
        EXPECT_EQ(textOf(s->lowercaseString()), u"hello world 2nd \u00e9\u00dfx stra\u00dfe");
        EXPECT_EQ(textOf(s->capitalizedString()), u"Hello World 2Nd \u00c9\u00dfx Stra\u00dfe");
    });
}

TEST(StringPieces, caseOfUnits) {
    auto convert = [](unsigned (*by)(unichar, unichar *, unsigned), unsigned u, unsigned flags = 0) {
        unichar out[3];
        unsigned n = by(unichar(u), out, flags);
        return std::u16string(out, n);
    };
    const struct {
        char16_t unit;
        const char16_t *upper, *lower, *title;
    } cases[] = {{0xDF, u"SS", u"\u00df", u"Ss"},          {0xFB03, u"FFI", u"\ufb03", u"Ffi"},
                 {0xB5, u"\u00b5", u"\u00b5", u"\u039c"},  {0xFF, u"\u0178", u"\u00ff", u"\u0178"},
                 {0x142, u"\u0141", u"\u0142", u"\u0141"}, {0x416, u"\u0416", u"\u0436", u"\u0416"},
                 {0x1C6, u"\u01c4", u"\u01c6", u"\u01c5"}, {0x4E2D, u"\u4e2d", u"\u4e2d", u"\u4e2d"}};
    for (auto &c : cases) {
        EXPECT_EQ(convert(ZPConvertToUpper, c.unit), c.upper);
        EXPECT_EQ(convert(ZPConvertToLower, c.unit), c.lower);
        EXPECT_EQ(convert(ZPConvertToTitle, c.unit), c.title);
    }
    EXPECT_EQ(convert(ZPConvertToUpper, 'i', 1) + convert(ZPConvertToTitle, 'i', 1) +
                  convert(ZPConvertToUpper, 0x131, 1) + convert(ZPConvertToTitle, 0x131, 1) +
                  convert(ZPConvertToUpper, 'j', 1),
              u"\u0130\u0130IIJ");
    EXPECT_EQ(convert(ZPConvertToLower, 'I', 1) + convert(ZPConvertToLower, 0x130, 1) +
                  convert(ZPConvertToLower, 0x416, 1),
              u"\u0131i\u0436");
    for (unsigned u = 0; u < 0x10000; ++u) {
        char16_t upper = convert(ZPConvertToUpper, u)[0], lower = convert(ZPConvertToLower, u)[0];
        EXPECT_TRUE(u >= 0x80 || upper == (u >= 'a' && u <= 'z' ? u - 32 : u));
        // Six capitals share their lower case with another.
        if (lower != u && u != 0x130 && u != 0x3F4 && u != 0x1E9E && u != 0x2126 && u != 0x212A && u != 0x212B) {
            EXPECT_EQ(convert(ZPConvertToUpper, lower)[0], upper) << std::hex << u;
        }
    }
}

TEST(StringPieces, numbersInText) {
    inEveryForm(u"  -42abc", [](const Form &, ZPString *s) { EXPECT_EQ(s->intValue(), -42); });
    EXPECT_EQ("2147483648"_zp->intValue(), INT_MAX);
    EXPECT_EQ("\n1"_zp->intValue(), 0);
    unsigned at = 1;
    int small = 5;
    EXPECT_FALSE(_ZPScanIntFromString("1 2"_zp, nullptr, &small, &at));
    EXPECT_TRUE(at == 1 && small == 5);
    EXPECT_TRUE(_ZPScanIntFromString("1 2"_zp, ZPCharacterSet::whitespaceCharacterSet(), nullptr, &at));
    EXPECT_EQ(at, 3u);

    inEveryForm(u" \u00a02.5 ", [](const Form &, ZPString *s) { EXPECT_EQ(s->doubleValue(), 2.5); });
    EXPECT_EQ("1e40"_zp->floatValue(), INFINITY);
    for (ZPString *none : {"0x10"_zp, "inf"_zp}) EXPECT_EQ(none->doubleValue(), 0.0);
    ZPDictionary *locale = ZPDictionary::dictionaryWithObject_forKey(" "_zp, "ZPDecimalSeparator"_zp);
    double value = 0;
    EXPECT_TRUE(_ZPScanDoubleFromString("1 5"_zp, nullptr, &value, &(at = 0), locale));
    EXPECT_EQ(value, 1.5);
    EXPECT_FALSE(_ZPScanDoubleFromString(" 5"_zp, nullptr, &value, &(at = 0), locale))
        << "white space begins no number";
}
