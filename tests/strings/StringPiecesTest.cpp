// SPDX-License-Identifier: MIT
// Substrings, joining, taking apart, case, numbers and displayable forms, in every storage form.
#include "StringForms.h"

#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/strings/ZPCharacterSet.h>
#include <Bedrock/strings/ZPNumberReader.h>

#include <climits>
#include <cmath>
#include <cstdlib>

using namespace strings;

namespace {

std::vector<std::u16string> textsOf(ZPArray *array) {
    std::vector<std::u16string> all;
    for (unsigned i = 0; i < array->count(); ++i) all.push_back(textOf(array->objectAtIndex(i)));
    return all;
}

std::u16string converted(unsigned (*convert)(unichar, unichar *, unsigned), unichar u, unsigned flags = 0) {
    unichar out[3];
    return {out, convert(u, out, flags)};
}

}  // namespace

TEST(StringPieces, substrings) {
    std::u16string text = u"0123456789abcdefghij\u00e90123456789ABCDEFGHIJ";
    inEveryForm(text, [&](const Form &, ZPString *s) {
        unsigned n = s->length();
        for (unsigned at : {0u, 3u, 20u})
            for (unsigned count : {1u, 5u, 15u, 21u, n})
                if (at + count <= n) {
                    EXPECT_EQ(textOf(s->substringWithRange({at, count})), text.substr(at, count));
                }
        EXPECT_EQ(textOf(s->substringFromIndex(7)), text.substr(7));
        EXPECT_EQ(textOf(s->substringToIndex(7)), text.substr(0, 7));
        ZPString *name = nullptr;
        EXPECT_NE(raised([&] { s->substringFromIndex(n + 1); }, &name), "");
        EXPECT_TRUE(name && name->isEqual(ZPRangeException));
        EXPECT_NE(raised([&] { s->substringWithRange({1, 0xFFFFFFFF}); }), "");
        EXPECT_NE(raised([&] { s->_newSubstringWithRange_zone({n + 1, 0}, nullptr); }), "");
    });
}

TEST(StringPieces, joining) {
    for (std::u16string a : {u"", u"abc", u"\u00e9t\u00e9", u"\u4e2d"})
        for (std::u16string b : {u"", u"x", u"\u00ff", u"\u6587"})
            inEveryForm(a, [&](const Form &, ZPString *s) {
                inEveryForm(b, [&](const Form &, ZPString *t) {
                    EXPECT_EQ(textOf(s->stringByAppendingString(t)), a + b);
                });
                EXPECT_EQ(textOf(s->stringByAppendingFormat("-%d"_zp, 7)), a + u"-7");
            });
}

TEST(StringPieces, components) {
    using Texts = std::vector<std::u16string>;
    auto split = [](ZPString *s, ZPString *by) { return textsOf(s->componentsSeparatedByString(by)); };
    inEveryForm(u", a, , b,", [&](const Form &, ZPString *s) {
        EXPECT_EQ(split(s, ", "_zp), (Texts{u"", u"a", u"", u"b,"}));
        EXPECT_EQ(split(s, "?"_zp), (Texts{textOf(s)}));
    });
    EXPECT_EQ(split("aXbX"_zp, "X"_zp), (Texts{u"a", u"b", u""}));
    EXPECT_EQ(split(""_zp, "X"_zp), (Texts{u""}));
    ZPCharacterSet *set = ZPCharacterSet::characterSetWithCharactersInString(",;"_zp);
    inEveryForm(u"a,b;c,;", [&](const Form &, ZPString *s) {
        EXPECT_EQ(textsOf(s->_componentsSeparatedBySet(set)), (Texts{u"a", u"b", u"c"}));
    });
}

TEST(StringPieces, groupsAndBuffers) {
    inEveryForm(u"1234567", [](const Form &, ZPString *s) {
        EXPECT_EQ(textOf(s->_stringWithSeparator_atFrequency(',', 3)), u"1,234,567");
        EXPECT_EQ(textOf(s->_stringWithSeparator_atFrequency(',', 1)), u"1,2,3,4,5,6,7");
        EXPECT_EQ(textOf(s->_stringWithSeparator_atFrequency(',', 7)), u"1234567");
        EXPECT_EQ(textOf(s->_stringWithSeparator_atFrequency(',', 0)), u"1234567");
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
    inEveryForm(u"hello wORLD 2nd \u00e9\u00dfx", [](const Form &, ZPString *s) {
        EXPECT_EQ(textOf(s->uppercaseString()), u"HELLO WORLD 2ND \u00c9SSX");
        EXPECT_EQ(textOf(s->lowercaseString()), u"hello world 2nd \u00e9\u00dfx");
        EXPECT_EQ(textOf(s->capitalizedString()), u"Hello World 2Nd \u00c9\u00dfx");
        EXPECT_STREQ(s->uppercaseString()->isa->name, "ZPUnicodeString");
        EXPECT_EQ(textOf(s->_caseCopyAux_flags(ZPConvertToUpper, 1)), u"HELLO WORLD 2ND \u00c9SSX");
    });
    EXPECT_EQ(textOf("istanbul"_zp->_capitalizedStringWithFlags(1)), u"\u0130stanbul");
}

TEST(StringPieces, caseOfUnits) {
    EXPECT_EQ(converted(ZPConvertToUpper, 0xDF), u"SS");
    EXPECT_EQ(converted(ZPConvertToTitle, 0xDF), u"Ss");
    EXPECT_EQ(converted(ZPConvertToLower, 0xDF), u"\u00df");
    EXPECT_EQ(converted(ZPConvertToUpper, 0xFB03), u"FFI");
    EXPECT_EQ(converted(ZPConvertToTitle, 0xFB05), u"St");
    EXPECT_EQ(converted(ZPConvertToUpper, 0xB5), u"\u00b5") << "the micro sign keeps its place";
    EXPECT_EQ(converted(ZPConvertToUpper, 0xFF), u"\u0178");
    EXPECT_EQ(converted(ZPConvertToLower, 0x178), u"\u00ff");
    EXPECT_EQ(converted(ZPConvertToUpper, 0x142), u"\u0141");
    EXPECT_EQ(converted(ZPConvertToUpper, 0x3C9), u"\u03a9");
    EXPECT_EQ(converted(ZPConvertToLower, 0x416), u"\u0436");
    EXPECT_EQ(converted(ZPConvertToTitle, 0x1C6), u"\u01c5") << "the digraphs have a title case of their own";
    EXPECT_EQ(converted(ZPConvertToUpper, 0x1C6), u"\u01c4");
    EXPECT_EQ(converted(ZPConvertToUpper, 0x4E2D), u"\u4e2d");
    EXPECT_EQ(converted(ZPConvertToUpper, 'i', 1), u"\u0130");
    EXPECT_EQ(converted(ZPConvertToTitle, 0x131, 1), u"I");
    EXPECT_EQ(converted(ZPConvertToLower, 'I', 1), u"\u0131");
    EXPECT_EQ(converted(ZPConvertToLower, 0x130, 1), u"i");
    EXPECT_EQ(converted(ZPConvertToLower, 0x130), u"i");
    for (unsigned u = 0; u < 0x10000; ++u) {
        std::u16string upper = converted(ZPConvertToUpper, unichar(u)), lower = converted(ZPConvertToLower, unichar(u));
        if (u < 0x80) {
            EXPECT_EQ(upper[0], u >= 'a' && u <= 'z' ? u - 32 : u);
        }
        // Six capitals share their lower case with another.
        if (lower[0] != u && u != 0x130 && u != 0x3F4 && u != 0x1E9E && u != 0x2126 && u != 0x212A && u != 0x212B) {
            EXPECT_EQ(converted(ZPConvertToUpper, lower[0])[0], upper[0]) << std::hex << u;
        }
    }
}

TEST(StringPieces, integersInText) {
    struct {
        const char *text;
        int value;
    } cases[] = {
        {"42", 42},
        {"  -42abc", -42},
        {"+ 7", 7},
        {"- 5", -5},
        {"", 0},
        {"abc", 0},
        {"-", 0},
        {"2147483647", INT_MAX},
        {"-2147483648", INT_MIN},
        {"2147483648", INT_MAX},
        {"-2147483649", INT_MIN},
        {"99999999999999999999", INT_MAX},
        {"-99999999999999999999", INT_MIN},
        {"\n1", 0},
    };
    for (auto &c : cases)
        inEveryForm(std::u16string(c.text, c.text + std::strlen(c.text)),
                    [&](const Form &, ZPString *s) { EXPECT_EQ(s->intValue(), c.value) << c.text; });
    long long big = 0;
    unsigned at = 0;
    EXPECT_TRUE(_ZPScanLongLongFromString("9223372036854775807x"_zp, nullptr, &big, &at));
    EXPECT_EQ(big, LLONG_MAX);
    EXPECT_EQ(at, 19u);
    at = 0;
    EXPECT_TRUE(_ZPScanLongLongFromString("-9223372036854775809"_zp, nullptr, &big, &at));
    EXPECT_EQ(big, LLONG_MIN);
    EXPECT_EQ(at, 20u);
    at = 1;
    int small = 5;
    EXPECT_FALSE(_ZPScanIntFromString("1 2"_zp, nullptr, &small, &at));
    EXPECT_EQ(at, 1u);
    EXPECT_EQ(small, 5);
    EXPECT_TRUE(_ZPScanIntFromString("1 2"_zp, ZPCharacterSet::whitespaceCharacterSet(), nullptr, &at));
    EXPECT_EQ(at, 3u);
}

TEST(StringPieces, doublesReadAsTheBestConversionDoes) {
    std::vector<std::string> texts = {
        "1",
        "1.5",
        "-2.5e3x",
        ".5",
        "5.",
        "+.5e-1",
        "1e",
        "1e+",
        "1-2",
        "1.2.3",
        "1e400",
        "-1e400",
        "1e-400",
        "-0",
        "4.9e-324",
        "2e-324",
        "2.2250738585072011e-308",
        "9007199254740993",
        "0.1e0000000000000000001",
        "1e99999999999999999999",
        "1e-99999999999999999999",
        "1797693134862315807937289714053034150799341327100378269361737789804449682927647509466490179775872070"
        "9633028641669288791094655554785194040263065748867150582068190890200070838367627385484581771153176447"
        "5730270069855571366959622842914819860834936475292719074168444365510704342711559699508093042880",
        "0." + std::string(400, '0') + "1",
        std::string(400, '9'),
        "1" + std::string(70, '0') + "e-70",
        "+-1",
        "-",
        "e5",
        ".",
        "",
        "--1"};
    std::mt19937_64 random(5);
    for (int i = 0; i < 3000; ++i) {
        double d;
        std::uint64_t bits = random();
        std::memcpy(&d, &bits, 8);
        if (!std::isfinite(d)) continue;
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, i % 2 ? "%.17g" : "%.20e", d);
        texts.push_back(buffer);
    }
    for (auto &text : texts) {
        Pool pool;
        double value = 77, expected;
        unsigned at = 0;
        char *end;
        expected = std::strtod(text.c_str(), &end);
        unsigned length = unsigned(end - text.c_str());
        BOOL read = _ZPScanDoubleFromString(ZPString::stringWithCString(text.c_str()), nullptr, &value, &at, nullptr);
        EXPECT_EQ(read != NO, length > 0) << text;
        EXPECT_EQ(at, length) << text;
        if (length) {
            EXPECT_TRUE(std::memcmp(&value, &expected, 8) == 0) << text << " " << value;
        }
    }
    inEveryForm(u" \u00a02.5 ", [](const Form &, ZPString *s) { EXPECT_EQ(s->doubleValue(), 2.5); });
    EXPECT_EQ("1e40"_zp->floatValue(), INFINITY);
    EXPECT_EQ("0x10"_zp->doubleValue(), 0.0);
    ZPDictionary *locale = ZPDictionary::dictionaryWithObject_forKey(" "_zp, "ZPDecimalSeparator"_zp);
    double value = 0;
    unsigned at = 0;
    EXPECT_TRUE(_ZPScanDoubleFromString("1 5"_zp, nullptr, &value, &at, locale));
    EXPECT_EQ(value, 1.5);
    at = 0;
    EXPECT_FALSE(_ZPScanDoubleFromString(" 5"_zp, nullptr, &value, &at, locale)) << "white space begins no number";
    EXPECT_EQ("inf"_zp->doubleValue(), 0.0);
}
