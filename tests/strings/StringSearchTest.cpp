// SPDX-License-Identifier: MIT
// Searching, in every storage form, beside a search that tries every place.
#include "StringForms.h"

using namespace strings;

namespace {

std::u16string folded(std::u16string s) {
    for (char16_t &u : s) {
        unichar lower[3];
        if (u < 0x80) u = u >= 'A' && u <= 'Z' ? char16_t(u + 0x20) : u;
        else ZPConvertToLower(u, lower, 0), u = lower[0];
    }
    return s;
}

ZPRange search(std::u16string text, std::u16string needle, unsigned options, ZPRange range) {
    ZPRange none{ZPNotFound, 0};
    unsigned m = unsigned(needle.size());
    if (m == 0 || m > range.length) return none;
    if (options & ZPCaseInsensitiveSearch) text = folded(text), needle = folded(needle);
    unsigned places = range.length - m + 1;
    for (unsigned i = 0; i < (options & ZPAnchoredSearch ? 1 : places); ++i) {
        unsigned at = range.location + (options & ZPBackwardsSearch ? places - 1 - i : i);
        if (text.compare(at, m, needle) == 0) return {at, m};
    }
    return none;
}

}  // namespace

TEST(StringSearch, agreesWithTryingEveryPlace) {
    std::mt19937 random(11);
    const std::u16string alphabets[] = {u"ab", u"abAB", u"a\u00e9\u00c9 ", u"\u0416\u0436a\u4e2d"};
    for (int round = 0; round < 150; ++round) {
        auto &alphabet = alphabets[round % 4];
        std::u16string text = randomText(random, 120, alphabet), needle;
        if (random() % 2 && !text.empty()) needle = text.substr(random() % text.size(), 1 + random() % 40);
        else needle = randomText(random, 4, alphabet);
        unsigned from = unsigned(random() % (text.size() + 1)) / 4, count = unsigned(text.size()) - from;
        if (random() % 2) count -= unsigned(random() % (count + 1)) / 3;
        inEveryForm(text, [&](const Form &, ZPString *s) {
            for (ZPString *n : {make(needle), forms()[fitsBytes(needle) ? 0 : 9].make(needle), forms()[9].make(needle)})
                for (unsigned options = 0; options < 16; ++options) {
                    ZPRange found = s->rangeOfString_options_range(n, options, {from, count});
                    ZPRange expected = search(text, needle, options, {from, count});
                    ASSERT_TRUE(found == expected)
                        << "options " << options << " found " << found.location << " expected " << expected.location;
                }
        });
    }
}

TEST(StringSearch, longNearMatches) {
    // Texts on which a search that starts anew at each place would read everything again and again.
    std::u16string text(40000, u'a'), needle(2000, u'a');
    needle[1000] = u'b';
    std::u16string hit = text + needle;
    for (auto *maker : {forms()[0].make, forms()[6].make, forms()[1].make}) {
        Pool pool;
        ZPString *s = maker(text), *h = maker(hit);
        EXPECT_EQ(s->rangeOfString(make(needle)).location, ZPNotFound);
        EXPECT_EQ(h->rangeOfString(maker(needle)), ZPMakeRange(40000, 2000));
        EXPECT_EQ(h->rangeOfString_options(maker(needle), ZPBackwardsSearch | ZPCaseInsensitiveSearch),
                  ZPMakeRange(40000, 2000));
    }
}

TEST(StringSearch, prefixesSuffixesAndOptions) {
    inEveryForm(u"abcab", [](const Form &, ZPString *s) {
        EXPECT_TRUE(s->hasPrefix("abc"_zp) && s->hasSuffix("cab"_zp) && s->hasPrefix(s) && s->hasSuffix(s));
        EXPECT_FALSE(s->hasPrefix("b"_zp) || s->hasSuffix("a"_zp) || s->hasPrefix(""_zp) || s->hasPrefix("abcabc"_zp));
        EXPECT_EQ(s->rangeOfString_options("b"_zp, ZPBackwardsSearch | ZPAnchoredSearch), ZPMakeRange(4, 1));
        EXPECT_EQ(s->rangeOfString_options("c"_zp, ZPBackwardsSearch | ZPAnchoredSearch).location, ZPNotFound);
        EXPECT_EQ(s->rangeOfString(""_zp), ZPMakeRange(ZPNotFound, 0));
        EXPECT_FALSE(s->_containsString(""_zp) || s->_containsChar('\0') || s->_containsChar('x'));
        EXPECT_REFUSED(s->rangeOfString_options_range("a"_zp, 0, {4, 2}));
        EXPECT_EQ(textOf(s->commonPrefixWithString_options("ABCX"_zp, ZPCaseInsensitiveSearch)), u"abc");
        EXPECT_EQ(s->commonPrefixWithString_options("x"_zp, 0), ""_zp);
    });
    EXPECT_FALSE(""_zp->hasPrefix(""_zp));
    EXPECT_EQ("stra\u00dfe"_zp->rangeOfString_options("STRASSE"_zp, ZPCaseInsensitiveSearch).location, ZPNotFound);
    // A combining mark stays with its base: "e" is not a common prefix of "e" with an acute.
    Pool pool;
    EXPECT_EQ(textOf(make(u"xe\u0301")->commonPrefixWithString_options(make(u"xe"), 0)), u"x");
    EXPECT_EQ(textOf(make(u"xe\u0301y")->commonPrefixWithString_options(make(u"xe\u0301z"), 0)), u"xe\u0301");
    // A high surrogate takes along what follows it, whatever that is.
    std::u16string highs{0xD800, 0xD800, u'x'}, other{0xD800, 0xD800, u'y'};
    EXPECT_EQ(make(highs)->commonPrefixWithString_options(make(other), 0)->length(), 2u);
    EXPECT_EQ(make(highs)->commonPrefixWithString_options(make(other.substr(0, 1)), 0), ""_zp);
    // A byte of the storage encoding that stands for another character is not found for it.
    EXPECT_EQ("a\nb"_zp->rangeOfString(make(u"\u2029")).location, ZPNotFound);
}

TEST(StringSearch, membersOfASet) {
    ZPCharacterSet *digits = ZPCharacterSet::decimalDigitCharacterSet();
    inEveryForm(u"ab12 cd3", [&](const Form &, ZPString *s) {
        EXPECT_EQ(s->rangeOfCharacterFromSet(digits), ZPMakeRange(2, 1));
        EXPECT_EQ(s->rangeOfCharacterFromSet_options(digits, ZPBackwardsSearch), ZPMakeRange(7, 1));
        EXPECT_EQ(s->rangeOfCharacterFromSet_options(digits, ZPAnchoredSearch).location, ZPNotFound);
        EXPECT_EQ(s->rangeOfCharacterFromSet_options(digits, ZPAnchoredSearch | ZPBackwardsSearch), ZPMakeRange(7, 1));
        EXPECT_EQ(s->rangeOfCharacterFromSet_options_range(digits->invertedSet(), 0, {2, 4}), ZPMakeRange(4, 1));
        EXPECT_EQ(s->rangeOfCharacterFromSet_options_range(digits, 0, {3, 0}).location, ZPNotFound);
        EXPECT_REFUSED(s->rangeOfCharacterFromSet_options_range(digits, 0, {8, 1}));
        EXPECT_TRUE(s->_containsCharFromSet(digits));
        EXPECT_FALSE(s->_containsCharFromSet(ZPCharacterSet::punctuationCharacterSet()));
    });
    // What a scanner passes over does not count: leading white space, and white space up to the end.
    ZPCharacterSet *blank = ZPCharacterSet::whitespaceCharacterSet();
    EXPECT_FALSE("  ab"_zp->_containsCharFromSet(blank));
    EXPECT_FALSE("ab  "_zp->_containsCharFromSet(blank));
    EXPECT_TRUE("a b"_zp->_containsCharFromSet(blank));
}

TEST(StringSearch, composedCharacters) {
    const std::tuple<std::u16string, unsigned, ZPRange> cases[] = {{u"abc", 1, {1, 1}},
                                                                   {u"ae\u0301\u0323b", 1, {1, 3}},
                                                                   {u"ae\u0301\u0323b", 3, {1, 3}},
                                                                   {u"\u0301a", 0, {0, 1}},
                                                                   {u"x\xD83D\xDE00y", 1, {1, 2}},
                                                                   {u"x\xD83D\xDE00y", 2, {1, 2}},
                                                                   {u"x\xD83D\xDE00\u0301", 3, {1, 3}},
                                                                   {u"x\xD83D", 1, {1, 1}}};
    for (auto &c : cases)
        inEveryForm(std::get<0>(c), [&](const Form &, ZPString *s) {
            ZPRange r = s->rangeOfComposedCharacterSequenceAtIndex(std::get<1>(c));
            EXPECT_EQ(r, std::get<2>(c)) << r.location << " " << r.length;
            EXPECT_REFUSED(s->rangeOfComposedCharacterSequenceAtIndex(s->length()));
        });
}

TEST(StringSearch, lines) {
    using Lines = std::array<unsigned, 3>;  // start, end, end of the contents
    std::u16string longText = std::u16string(40, u'x') + u"\r\n" + std::u16string(40, u'y');
    const std::pair<std::u16string, std::vector<std::pair<ZPRange, Lines>>> cases[] = {
        {u"ab\r\ncd", {{{3, 0}, {0, 4, 2}}, {{2, 0}, {0, 4, 2}}, {{4, 0}, {4, 6, 6}}, {{0, 6}, {0, 6, 6}}}},
        {u"a\nb\nc", {{{1, 1}, {0, 2, 1}}, {{2, 2}, {2, 4, 3}}, {{5, 0}, {4, 5, 5}}}},
        {u"a\n", {{{2, 0}, {2, 2, 2}}}},
        {u"\n", {{{0, 0}, {0, 1, 0}}}},
        {u"a\u2028b\u2029c", {{{2, 1}, {2, 4, 3}}}},
        {u"", {{{0, 0}, {0, 0, 0}}}},
        {u"a\rb", {{{0, 0}, {0, 2, 1}}}},
        {longText, {{{41, 1}, {0, 42, 40}}}}};
    for (auto &c : cases)
        inEveryForm(c.first, [&](const Form &, ZPString *s) {
            for (auto &[range, wanted] : c.second) {
                Lines got = {99, 99, 99};
                s->getLineStart_end_contentsEnd_forRange(&got[0], &got[1], &got[2], range);
                EXPECT_EQ(got, wanted);
                EXPECT_EQ(s->lineRangeForRange(range), ZPMakeRange(wanted[0], wanted[1] - wanted[0]));
                s->getLineStart_end_contentsEnd_forRange(nullptr, nullptr, nullptr, range);
            }
            EXPECT_REFUSED(s->lineRangeForRange({s->length(), 1}));
        });
}
