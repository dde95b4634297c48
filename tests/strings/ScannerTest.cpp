// SPDX-License-Identifier: MIT
// Scanners over every form of string, the primitives that a client's scanner supplies, and the number readers.
#include "StringForms.h"

using namespace strings;

namespace {

// A client's scanner: the primitives alone.
struct PlainScanner : ZPScanner {
    ZP_CLASS(PlainScanner)
    ZPString *_text;
    unsigned _at;
    static PlainScanner *over(ZPString *text) {
        PlainScanner *scanner = PlainScanner::new_()->autorelease();
        scanner->_text = text;
        return scanner;
    }
    ZPString *string() { return _text; }
    unsigned scanLocation() { return _at; }
    void setScanLocation(unsigned location) { _at = location; }
};
ZP_IMPLEMENT(PlainScanner, string, scanLocation, setScanLocation);

struct BareScanner : ZPScanner {
    ZP_CLASS(BareScanner)
};
ZP_IMPLEMENT(BareScanner);

// Runs a check over the library's scanner and a client's, in every form of the string.
template <class F> void scanning(const std::u16string &text, F check) {
    inEveryForm(text, [&](const Form &, ZPString *string) {
        check(ZPScanner::scannerWithString(string));
        check(static_cast<ZPScanner *>(PlainScanner::over(string)));
    });
}

std::u16string scanned(ZPString *string) { return string ? textOf(string) : u"(none)"; }

// Rows of "text -> value location": what a scan finds, and where it stops; it finds nothing where it does not move.
template <class T> void check(BOOL (ZPScanner::*scan)(T *) &, std::initializer_list<const char16_t *> rows) {
    for (const char16_t *row : rows) {
        auto [text, found] = sides(row);
        std::istringstream numbers(std::string(found.begin(), found.end()));
        T wanted = 0;
        unsigned location = 0;
        std::string number;
        numbers >> number >> location;
        if constexpr (std::is_integral_v<T>) wanted = T(std::strtoll(number.c_str(), nullptr, 10));
        else wanted = T(std::strtod(number.c_str(), nullptr));
        scanning(text, [&](ZPScanner *scanner) {
            SCOPED_TRACE(make(row)->cString());
            T value = 77;
            EXPECT_EQ((scanner->*scan)(&value) != NO, location != 0);
            EXPECT_EQ(value, location ? wanted : T(77));
            EXPECT_EQ(scanner->scanLocation(), location);
            scanner->setScanLocation(0);
            EXPECT_EQ((scanner->*scan)(nullptr) != NO, location != 0);
            EXPECT_EQ(scanner->scanLocation(), location);
        });
    }
}

}  // namespace

TEST(Scanner, integers) {
    // Digits of other scripts belong to a number, each counting -1.
    check(&ZPScanner::scanInt,
          {u"  42abc -> 42 4", u"- 5 -> -5 3", u"+\n\t7  -> 7 4", u"-x -> 0", u" -> 0", u"    -> 0", u"--5 -> 0",
           u"007 -> 7 3", u"99999999999 -> 2147483647 11", u"-99999999999 -> -2147483648 12",
           u"2147483647 -> 2147483647 10", u"2147483648 -> 2147483647 10", u"-2147483648 -> -2147483648 11",
           u"-2147483649 -> -2147483648 11", u"2147483646. -> 2147483646 10", u"\uffff1 -> 0", u"4\u0663x -> 39 2"});
    std::u16string large = u"1" + std::u16string(500, u'0') + u"  -> 9223372036854775807 501";
    check(&ZPScanner::scanLongLong,
          {u" 9223372036854775807 -> 9223372036854775807 20", u"9223372036854775808 -> 9223372036854775807 19",
           u"-9223372036854775808 -> -9223372036854775808 20", u"-9223372036854775809 -> -9223372036854775808 20",
           u"-9223372036854775807 -> -9223372036854775807 20", u"9223372036854775806x -> 9223372036854775806 19",
           u"10000000000 -> 10000000000 11", large.c_str(), u"x -> 0"});
    check(&ZPScanner::scanHexInt,
          {u"0x1F -> 31 4", u"0xZ -> 0 1", u"ffffffffff -> 4294967295 10", u"g -> 0", u"0 -> 0 1", u"0x -> 0 1",
           u" 0Xab -> 171 5", u"0fx -> 15 2", u"00x1 -> 0 2", u" -> 0", u"DEADBEEF -> 3735928559 8", u"x1 -> 0",
           u"0100000000 -> 4294967295 10", u"\u0661 -> 0", u"0\u01781 -> 0 1"});
}

// The C library's reading of the same text is the standard; this process runs in its "C" locale.
TEST(Scanner, doublesAreTheCLibrarys) {
    std::mt19937_64 random(7);
    std::string zeros(200, '0');
    std::vector<std::string> texts = {"", "1.5 ", "1" + zeros + "e-200", "." + zeros + "1e201x", std::string(400, '9')};
    std::istringstream hard(
        "1,5 1e 1e+ 1-2 1e-2- .5.5 5. . e5 +-5 --1 - -.e1 +5e1e1 0.1e0000000000000000001 -1e400 1e-400 -0 "
        "1e99999999999999999999 1e-99999999999999999999 4.9e-324 2e-324 2.2250738585072011e-308 "
        "9007199254740993 1.7976931348623158079e308");
    for (std::string text; hard >> text;) texts.push_back(text);
    const char alphabet[] = "0123456789012345678900000.+-eE";
    for (unsigned round = 0; round < 20000; ++round) {
        std::string text;
        if (round & 1) {
            for (unsigned n = 1 + random() % 12; n; --n) text += alphabet[random() % (sizeof alphabet - 1)];
        } else {
            std::uint64_t bits = random();
            double any;
            std::memcpy(&any, &bits, 8);
            if (!std::isfinite(any)) continue;
            char digits[64];
            std::snprintf(digits, sizeof digits, "%.*e", int(random() % 20), any);
            text = digits;
        }
        texts.push_back(text);
    }
    for (const std::string &text : texts) {
        Pool pool;
        char *stop;
        double expected = std::strtod(text.c_str(), &stop), value = 77;
        unsigned location = 0;
        BOOL found = _ZPScanDoubleFromString(make(std::u16string(text.begin(), text.end())), nullptr, &value, &location,
                                             nullptr);
        ASSERT_EQ(found != NO, stop != text.c_str()) << text;
        ASSERT_EQ(location, unsigned(stop - text.c_str())) << text;
        ASSERT_TRUE(!found || std::memcmp(&value, &expected, 8) == 0) << text << " gives " << value;
    }
}

TEST(Scanner, doubles) {
    check(&ZPScanner::scanDouble,
          {u" 1.5  -> 1.5 4", u"1,5 -> 1 1", u"inf -> 0", u"nan -> 0", u"0x1F -> 0 1", u"-1e999 -> -inf 6"});
    check(&ZPScanner::scanFloat, {u" 0.1  -> 0.1 4", u"-1e999 -> -inf 6", u"x -> 0"});
    ZPScanner *scanner = ZPScanner::scannerWithString("1,5 2.5"_zp);
    scanner->setLocale(ZPDictionary::dictionaryWithObject_forKey(","_zp, "ZPDecimalSeparator"_zp));
    for (double wanted : {1.5, 2.0}) {  // the point is no separator here
        double value;
        EXPECT_TRUE(scanner->scanDouble(&value));
        EXPECT_EQ(value, wanted);
    }
}

TEST(Scanner, withoutASkipSet) {
    ZPScanner *scanner = ZPScanner::scannerWithString(" 1"_zp);
    scanner->setCharactersToBeSkipped(nullptr);
    EXPECT_EQ(scanner->charactersToBeSkipped(), nullptr);
    EXPECT_FALSE(scanner->scanInt(nullptr) || scanner->scanDouble(nullptr) || scanner->isAtEnd());
    EXPECT_FALSE(scanner->scanString_intoString("1"_zp, nullptr));
    EXPECT_TRUE(scanner->scanString_intoString(" 1"_zp, nullptr));
    EXPECT_TRUE(scanner->isAtEnd());
}

TEST(Scanner, literalStrings) {
    scanning(u"  42abc \u00c4b", [](ZPScanner *scanner) {
        ZPString *text = nullptr;
        EXPECT_TRUE(scanner->scanInt(nullptr));
        EXPECT_FALSE(scanner->scanString_intoString("bc"_zp, &text));
        EXPECT_FALSE(scanner->scanString_intoString(""_zp, &text));
        EXPECT_FALSE(scanner->scanString_intoString("abcdefghijkl"_zp, &text));
        EXPECT_EQ(text, nullptr);
        EXPECT_TRUE(scanner->scanString_intoString("ABC"_zp, &text));
        EXPECT_EQ(scanned(text), u"abc");
        EXPECT_TRUE(scanner->scanString_intoString(make(u"\u00e4B"), &text));
        EXPECT_EQ(scanned(text), u"\u00c4b");
        EXPECT_TRUE(scanner->isAtEnd());
        EXPECT_FALSE(scanner->scanString_intoString("x"_zp, &text));
    });
    scanning(u"key = value; end", [](ZPScanner *scanner) {
        ZPString *text = nullptr;
        EXPECT_TRUE(scanner->scanUpToString_intoString(" = "_zp, &text));
        EXPECT_EQ(scanned(text), u"key");
        EXPECT_FALSE(scanner->scanUpToString_intoString("= "_zp, &text)) << "it stands at the start";
        EXPECT_EQ(scanner->scanLocation(), 3u);
        EXPECT_TRUE(scanner->scanUpToString_intoString("VALUE"_zp, nullptr));
        EXPECT_EQ(scanner->scanLocation(), 6u);
        EXPECT_TRUE(scanner->scanUpToString_intoString("nowhere"_zp, &text));
        EXPECT_EQ(scanned(text), u"value; end");
        EXPECT_FALSE(scanner->scanUpToString_intoString("nowhere"_zp, &text));
    });
    ZPScanner *exact = ZPScanner::scannerWithString("Ab ab"_zp);
    exact->setCaseSensitive(YES);
    EXPECT_FALSE(exact->scanString_intoString("ab"_zp, nullptr));
    EXPECT_TRUE(exact->scanUpToString_intoString("ab"_zp, nullptr));
    EXPECT_EQ(exact->scanLocation(), 3u);
}

TEST(Scanner, runsOfCharacters) {
    ZPCharacterSet *letters = ZPCharacterSet::letterCharacterSet(),
                   *marks = ZPCharacterSet::characterSetWithCharactersInString(";,"_zp);
    scanning(u" ab\u0416c 12; ", [&](ZPScanner *scanner) {
        ZPString *text = nullptr;
        EXPECT_FALSE(scanner->scanCharactersFromSet_intoString(marks, &text));
        EXPECT_EQ(scanner->scanLocation(), 0u);
        EXPECT_TRUE(scanner->scanCharactersFromSet_intoString(letters, &text));
        EXPECT_EQ(scanned(text), u"ab\u0416c");
        EXPECT_TRUE(scanner->scanUpToCharactersFromSet_intoString(marks, &text));
        EXPECT_EQ(scanned(text), u"12");
        EXPECT_FALSE(scanner->scanUpToCharactersFromSet_intoString(marks, &text));
        EXPECT_TRUE(scanner->scanCharactersFromSet_intoString(letters->invertedSet(), &text));
        EXPECT_EQ(scanned(text), u"; ");
        EXPECT_TRUE(scanner->isAtEnd());
        EXPECT_FALSE(scanner->scanUpToCharactersFromSet_intoString(marks, nullptr));
    });
}

TEST(Scanner, keepsAndCopiesWhatItWasGiven) {
    ZPMutableString *text = ZPMutableString::stringWithString("2024-06"_zp);
    ZPScanner *scanner = ZPScanner::scannerWithString(text);
    EXPECT_STREQ(scanner->isa->name, "ZPConcreteScanner");
    text->setString(""_zp);
    int value;
    EXPECT_TRUE(scanner->_scanDecimal_into(2, &value));
    EXPECT_EQ(value, 20);
    ZPScanner *copy = scanner->copy()->autorelease();
    EXPECT_EQ(copy->scanLocation(), 2u);
    EXPECT_EQ(textOf(copy->_remainingString()), u"24-06");
    EXPECT_TRUE(copy->_scanDecimal_into(9, &value));
    EXPECT_EQ(value, 24);
    EXPECT_EQ(scanner->scanLocation(), 2u);
    EXPECT_FALSE(ZPScanner::scannerWithString(" 12"_zp)->_scanDecimal_into(2, &value)) << "nothing is skipped first";

    ZPMutableCharacterSet *skipped = ZPMutableCharacterSet::characterSetWithCharactersInString("2"_zp);
    scanner->setCharactersToBeSkipped(skipped);
    scanner->setCaseSensitive(YES);
    skipped->addCharactersInString("4"_zp);
    copy = scanner->copy()->autorelease();
    EXPECT_TRUE(copy->caseSensitive());
    EXPECT_TRUE(copy->scanInt(&value));
    EXPECT_EQ(value, 4) << "the scanner's set did not change with the client's";

    scanner->setScanLocation(7);
    EXPECT_TRUE(scanner->isAtEnd());
    EXPECT_REASON("[ZPConcreteScanner setScanLocation:]: Out of bounds", scanner->setScanLocation(8));
    EXPECT_EQ(scanner->scanLocation(), 7u);
}

TEST(Scanner, aClientsScannerMustSupplyThePrimitives) {
    ZPScanner *bare = BareScanner::alloc()->initWithString("x"_zp)->autorelease();
    EXPECT_FALSE(bare->caseSensitive() || bare->locale());
    EXPECT_EQ(bare->charactersToBeSkipped(), ZPCharacterSet::whitespaceAndNewlineCharacterSet());
    EXPECT_REASON_HAS("only defined for abstract class.  Define -[BareScanner string]!", bare->isAtEnd());
}
