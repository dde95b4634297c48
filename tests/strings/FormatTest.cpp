// SPDX-License-Identifier: MIT
// Formats: against the C library's formatter, objects, positions, locales, malformed directives.
#include "StringForms.h"

#include <cfloat>

using namespace strings;

namespace {

template <class... A> std::u16string formatted(ZPString *format, A... arguments) {
    return textOf(ZPString::stringWithFormat(format, arguments...));
}

// The same directive through the C library and through the engine.
template <class... A> void expectLikeC(const std::string &format, A... arguments) {
    char wanted[2048];
    int n = std::snprintf(wanted, sizeof wanted, format.c_str(), arguments...);
    ASSERT_LT(n, int(sizeof wanted));
    std::u16string got = formatted(ZPString::stringWithCString(format.c_str()), arguments...);
    EXPECT_EQ(std::string(got.begin(), got.end()), std::string(wanted, std::size_t(n))) << format;
}

/// Answers what it was asked with.
struct Described : ZPObject {
    ZP_CLASS(Described)
    ZPString *description() { return make(u"plain \u4e2d"); }
};
struct Localized : Described {
    ZP_CLASS(Localized)
    ZPString *descriptionWithLocale(id locale) { return locale ? "localized"_zp : "no locale"_zp; }
};
struct Raising : Described {
    ZP_CLASS(Raising)
    ZPString *description() { ZPException::raise_format(ZPGenericException, "no description"_zp); }
};
ZP_IMPLEMENT(Described, description);
ZP_IMPLEMENT(Localized, descriptionWithLocale);
ZP_IMPLEMENT(Raising, description);

}  // namespace

#pragma GCC diagnostic ignored "-Wformat"
#pragma GCC diagnostic ignored "-Wformat-security"

TEST(Format, WritesWhatTheCLibraryWrites) {
    const char *flags[] = {"", "-", "+", " ", "#", "0", "-0", "+0", "-+", "# ", "#0", "#+0"};
    const char *sizes[] = {"", "1", "8", "14", ".0", ".1", ".7", "12.3", "5.9", "9.0", ".20"};
    for (std::string flag : flags)
        for (std::string size : sizes) {
            for (char c : std::string("dioxXu")) {
                if ((c == 'd' || c == 'i' || c == 'u') && flag.find('#') != std::string::npos) continue;
                for (int v : {0, 1, -1, 8, 255, 123456, INT_MIN, INT_MAX}) expectLikeC("<%" + flag + size + c + ">", v);
                for (long v : {0l, -5l, LONG_MIN, LONG_MAX}) {
                    expectLikeC("<%" + flag + size + "l" + c + ">", v);
                    expectLikeC("<%" + flag + size + "ll" + c + ">", static_cast<long long>(v));
                    expectLikeC("<%" + flag + size + "z" + c + ">", static_cast<std::size_t>(v));
                    expectLikeC("<%" + flag + size + "hh" + c + ">", int(v & 0xFFF));
                    expectLikeC("<%" + flag + size + "h" + c + ">", int(v & 0xFFFFF));
                }
            }
            for (char c : std::string("eEfgG"))
                for (double v :
                     {0.0, -0.0, 1.0, 0.5, 1.5, 2.5, -3.14159, 99999.95, 123456789.0, 1e-5, 0.000123456, 1e15, 1e100,
                      DBL_MAX, DBL_MIN, 5e-324, double(INFINITY), -double(INFINITY), std::nan("")}) {
                    expectLikeC("<%" + flag + size + c + ">", v);
                    expectLikeC("<%" + flag + size + "L" + c + ">", static_cast<long double>(v));
                }
            if (flag == "" || flag == "-") {
                expectLikeC("<%" + flag + size + "s>", "some text");
                if (size.find('.') == std::string::npos) {
                    expectLikeC("<%" + flag + size + "c>", 'x');
                    expectLikeC("<%" + flag + size + "p>", static_cast<void *>(&flags));
                }
            }
        }
    expectLikeC("%*d|%-*d|%*.*f|%.*s", 7, 1, 7, 2, -9, 2, 2.25, -1, "all of it");
    expectLikeC("%d %s %.2f %c%%", -3, "x", 1.005, 'q');
}

TEST(Format, RoundsFixedDecimalsExactly) {
    std::mt19937_64 random(23);
    for (int i = 0; i < 20000; ++i) {
        double v;
        switch (i % 4) {
        case 0: v = double(std::int64_t(random() % 2000001) - 1000000) / double(1 << (i % 11)); break;  // many ties
        case 1: v = double(random() % 10000000) / 1000; break;
        case 2: v = std::ldexp(double(random() >> 11), int(random() % 140) - 130); break;
        default: {
            std::uint64_t bits = random();
            std::memcpy(&v, &bits, 8);
            if (std::isnan(v)) v = 0;
        }
        }
        expectLikeC("%." + std::to_string(random() % 12) + "f", v);
    }
}

TEST(Format, TakesArgumentsOfEverySizeInOrder) {
    EXPECT_EQ(formatted("%d %@ %f %s %ld %@ %g %x %@ %f %d %s %lld"_zp, 1, "two"_zp, 3.0, "four", 5l, "six"_zp, 7.5, 8u,
                        "nine"_zp, 10.0, 11, "twelve", 13ll),
              u"1 two 3.000000 four 5 six 7.5 8 nine 10.000000 11 twelve 13");
    int untouched = 7;
    EXPECT_EQ(formatted("%d%n%d"_zp, 1, &untouched, 2), u"12");
    EXPECT_EQ(untouched, 7);
}

TEST(Format, DescribesObjects) {
    EXPECT_EQ(formatted("%d %s %@"_zp, 5, "C", static_cast<ZPString *>(nullptr)), u"5 C *nil*");
    ZPObject *plain = Described::new_()->autorelease(), *localized = Localized::new_()->autorelease();
    EXPECT_EQ(formatted("[%@|%@]"_zp, plain, localized), u"[plain \u4e2d|no locale]");
    ZPDictionary *locale = ZPDictionary::dictionary();
    EXPECT_EQ(textOf(ZPString::stringWithFormat_locale("%@"_zp, locale, localized)), u"localized");
    EXPECT_REASON("no description", ZPString::stringWithFormat("text before %@"_zp, Raising::new_()->autorelease()));
    EXPECT_EQ(formatted("%@"_zp, ZPString::class_()), u"ZPString");
    inEveryForm(u"caf\u00e9 text of some length", [](const Form &, ZPString *s) {
        EXPECT_EQ(formatted("<%@>"_zp, s), u"<caf\u00e9 text of some length>");
        EXPECT_EQ(textOf(ZPString::stringWithFormat(s)), textOf(s));
    });
    inEveryForm(u"%d\u00b7%@", [](const Form &, ZPString *s) { EXPECT_EQ(formatted(s, 1, "x"_zp), u"1\u00b7x"); });
}

TEST(Format, SurvivesCTextThatIsNoText) {
    EXPECT_EQ(formatted("%s|%5.3s|%.2s"_zp, static_cast<const char *>(nullptr), "abcdef", "abcdef"),
              u"(null)|  abc|ab");
    EXPECT_EQ(formatted("%s"_zp, "\xC3\xA9\xE4\xB8\xAD"), u"\u00e9\u4e2d");
    EXPECT_EQ(formatted("a%sb"_zp, "\xC3"), u"a\ufffdb");
    EXPECT_EQ(formatted("%.1s!"_zp, "\xC3\xA9"), u"\ufffd!");
    EXPECT_EQ(formatted("%ls%lc"_zp, L"w\u4e2d\U0001F600", L'\u00e9'), u"w\u4e2d\U0001F600\u00e9");
    const char unterminated[3] = {'a', 'b', 'c'};
    EXPECT_EQ(formatted("%.3s"_zp, unterminated), u"abc");
    EXPECT_EQ(formatted("%c"_zp, 0).size(), 1u);
}

TEST(Format, TakesArgumentsByPositionAndLeavesMalformedDirectives) {
    for (auto &[format, wanted] :
         rows(u"50% -> 50%", u"%5 -> %5", u"%5\u4e2dd %d -> %5\u4e2dd 3", u"%!d %d -> %!d 3", u"%% %%%d%% -> % %3%",
              u"%0000000000000000000000000000000000005d %d -> %0000000000000000000000000000000000005d 3",
              u"%10$d -> %10$d", u"%d %1$d -> 3 %1$d",
              u"%1$d%1$d%1$d%1$d%1$d%1$d%1$d%1$d%1$d|%1$d %% -> 333333333|%1$d %%"))
        EXPECT_EQ(formatted(make(format), 3), wanted);
    EXPECT_EQ(ZPString::stringWithFormat(""_zp), ""_zp);
    EXPECT_EQ(ZPString::stringWithFormat("%s"_zp, ""), ""_zp);
    EXPECT_EQ(formatted("%2$@ %1$d"_zp, 7, "x"_zp), u"x 7");
    EXPECT_EQ(formatted("%3$s-%1$f-%3$s"_zp, 1.5, 2, "s"), u"s-1.500000-s");
    EXPECT_EQ(formatted("100%% %1$*2$d|%3$.*2$f"_zp, 5, 4, 2.0), u"100%    5|2.0000");
    EXPECT_EQ(formatted("%1$*2$d|"_zp, 5, -9), u"5|");
    EXPECT_EQ(formatted("%9$d"_zp, 1, 2, 3, 4, 5, 6, 7, 8, 9), u"9");
    EXPECT_EQ(formatted("%1$@ %d"_zp, "x"_zp), u"x %d") << "one without a position does not fit here";
}

TEST(Format, UsesTheLocalesDecimalSeparator) {
    const std::tuple<ZPString *, id, double, std::u16string> cases[] = {
        {"%5.2f"_zp, ","_zp, 3.14159, u" 3,14"},
        {"%-9.2e|"_zp, ","_zp, 1234.5, u"1,23e+03 |"},
        {"%08.2f"_zp, make(u"\u066b"), -3.14159, u"-0003\u066b14"},
        {"%.0f"_zp, ","_zp, 3.0, u"3"},
        {"%f %%.d"_zp, ","_zp, 0.5, u"0,500000 %.d"},
        {"%f"_zp, ""_zp, 0.5, u"0.500000"},
        {"%f"_zp, ZPData::data(), 0.5, u"0.500000"},
    };
    for (auto &[format, separator, value, wanted] : cases) {
        ZPDictionary *locale = ZPDictionary::dictionaryWithObject_forKey(separator, "ZPDecimalSeparator"_zp);
        EXPECT_EQ(textOf(ZPString::stringWithFormat_locale(format, locale, value)), wanted);
    }
}

TEST(Format, FillsMutableStrings) {
    ZPMutableString *s = ZPMutableString::stringWithFormat("%d"_zp, 5);
    s->appendFormat(" and %@"_zp, s);
    EXPECT_EQ(textOf(s), u"5 and 5");
    auto set = [](ZPMutableString *target, ZPString *format, ...) {
        std::va_list list;
        va_start(list, format);
        static_cast<ZPConcreteMutableString *>(target)->setStringWithFormat_locale_arguments(format, nullptr, list);
        va_end(list);
    };
    set(s, "<%@>"_zp, s);
    EXPECT_EQ(textOf(s), u"<5 and 5>");
    EXPECT_STREQ(ZPString::stringWithFormat("%d"_zp, 1)->isa->name, "ZPCStringWithGap");
    std::string large(100000, 'x');
    EXPECT_EQ(ZPString::stringWithFormat("%s%s%@"_zp, large.c_str(), large.c_str(), make(u"\u4e2d"))->length(),
              200001u);
}
