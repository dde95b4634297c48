// SPDX-License-Identifier: MIT
// Substrings, joining, taking apart, case, numbers and displayable forms, in every storage form.
#include "StringForms.h"

using namespace strings;

TEST(StringPieces, substrings) {
    std::u16string text = u"0123456789abcdefghij\u00e90123456789ABCDEFGHIJ";
    inEveryForm(text, [&](const Form &, ZPString *s) {
        unsigned n = s->length();
        for (auto [at, count] : {std::pair{0u, n}, {3u, 1u}, {3u, 15u}, {20u, 5u}})
            EXPECT_EQ(textOf(s->substringWithRange({at, count})), text.substr(at, count));
        EXPECT_EQ(textOf(s->substringFromIndex(7)), text.substr(7));
        EXPECT_EQ(textOf(s->substringToIndex(7)), text.substr(0, 7));
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

// Every single mapping is held against the character data elsewhere; here are words, and what Turkish has of its own.
TEST(StringPieces, caseOfWords) {
    inEveryForm(u"hello wORLD 2nd \u00e9\u00dfx stra\u00dfe", [](const Form &, ZPString *s) {
        EXPECT_EQ(textOf(s->uppercaseString()), u"HELLO WORLD 2ND \u00c9SSX STRASSE");
        EXPECT_EQ(textOf(s->capitalizedString()), u"Hello World 2Nd \u00c9\u00dfx Stra\u00dfe");
    });
    auto turkish = [](unsigned (*convert)(unichar, unichar *, unsigned), std::u16string units) {
        for (char16_t &u : units) {
            unichar out[3];
            EXPECT_EQ(convert(u, out, 1), 1u);
            u = out[0];
        }
        return units;
    };
    EXPECT_EQ(turkish(ZPConvertToUpper, u"i\u0131j"), u"\u0130IJ");
    EXPECT_EQ(turkish(ZPConvertToTitle, u"i\u0131"), u"\u0130I");
    EXPECT_EQ(turkish(ZPConvertToLower, u"I\u0130\u0416"), u"\u0131i\u0436");
}

TEST(StringPieces, numbersInText) {
    inEveryForm(u"  -42abc", [](const Form &, ZPString *s) { EXPECT_EQ(s->intValue(), -42); });
    EXPECT_EQ("\n1"_zp->intValue(), 0);
    inEveryForm(u" \u00a02.5 ", [](const Form &, ZPString *s) { EXPECT_EQ(s->doubleValue(), 2.5); });
    EXPECT_EQ("1e40"_zp->floatValue(), INFINITY);
    ZPDictionary *locale = ZPDictionary::dictionaryWithObject_forKey(" "_zp, "ZPDecimalSeparator"_zp);
    double value = 0;
    unsigned at = 0;
    EXPECT_TRUE(_ZPScanDoubleFromString("1 5"_zp, nullptr, &value, &at, locale));
    EXPECT_EQ(value, 1.5);
    EXPECT_FALSE(_ZPScanDoubleFromString(" 5"_zp, nullptr, &value, &(at = 0), locale))
        << "white space begins no number";
}
