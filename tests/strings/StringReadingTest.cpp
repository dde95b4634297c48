// SPDX-License-Identifier: MIT
// Reading, hashing, equality and order, the same in every storage form.
#include "StringForms.h"

using namespace strings;

namespace {

const std::u16string samples[] = {
    u"",
    u"a",
    u"hello",
    u"H\u00e9llo w\u00f6rld \u00ff\u00a0",
    u"exactly sixteen!",
    u"seventeen units!!",
    u"0123456789012345678901234",
    u"a text of more than thirty-two units, so that block readers must fetch twice or more",
    u"\u4e2d\u6587 \u0416\u0436 \u20ac mixed",
    std::u16string(70, u'x') + u"\u00e9" + std::u16string(70, u'y'),
    std::u16string(u"nul\0inside", 10),
};

int sign(int n) { return (n > 0) - (n < 0); }

int order(std::u16string a, std::u16string b, bool folding) {
    if (folding)
        for (auto *s : {&a, &b})
            for (char16_t &u : *s)
                if (u >= 'a' && u <= 'z') u -= 0x20;
    return sign(a.compare(b));
}

unsigned hashByDefinition(const std::u16string &s) {
    unsigned n = unsigned(s.size()), h = n;
    for (unsigned i = 0; i < n; ++i)
        if (n <= 16 || i < 8 || i >= n - 8) h = h * 257 + s[i];
    return h + (h << (n & 31));
}

}  // namespace

TEST(StringReading, unitsAndBounds) {
    for (auto &text : samples)
        inEveryForm(text, [&](const Form &form, ZPString *s) {
            ASSERT_EQ(s->length(), text.size());
            EXPECT_EQ(textOf(s), text);
            std::u16string all(text.size(), u'?');
            s->getCharacters(all.data());
            EXPECT_EQ(all, text);
            if (std::strcmp(form.name, "client") == 0) return;
            unsigned n = s->length();
            unichar buffer[4];
            ZPString *name = nullptr;
            auto outside = [&](const char *method, unsigned index) {
                std::string at = "(" + std::to_string(index) + ")", cls = s->isa->name;
                return cls == "ZPPathStore2" ? "*** -[" + cls + " " + method + "]: index " + at + " beyond bounds " + at
                                             : "[" + cls + " " + method + "]: Out of bounds";
            };
            EXPECT_EQ(reasonOf([&] { s->characterAtIndex(n); }, &name), outside("characterAtIndex:", n));
            EXPECT_TRUE(name->isEqual(ZPRangeException));
            ZPRange past{n, 1};
            EXPECT_REASON(outside("getCharacters:range:", n + 1), s->getCharacters_range(buffer, past));
            EXPECT_REFUSED(s->getCharacters_range(buffer, {1, 0xFFFFFFFF}));
        });
}

TEST(StringReading, hashFollowsItsDefinitionInEveryForm) {
    for (auto &text : samples)
        inEveryForm(text, [&](const Form &, ZPString *s) { EXPECT_EQ(s->hash(), hashByDefinition(text)); });
    std::u16string a = u"01234567_01234567", b = u"01234567#01234567";
    EXPECT_EQ(make(a)->hash(), make(b)->hash());
    EXPECT_NE(make(a.substr(1))->hash(), make(b.substr(1))->hash()) << "sixteen units all count";
}

TEST(StringReading, equalTextsAreEqualAcrossForms) {
    for (auto &text : samples)
        inEveryForm(text, [&](const Form &, ZPString *s) {
            inEveryForm(text, [&](const Form &, ZPString *t) {
                EXPECT_TRUE(s->isEqual(t));
                EXPECT_TRUE(s->isEqualToString(t));
                EXPECT_EQ(s->compare(t), ZPOrderedSame);
            });
            EXPECT_FALSE(s->isEqual(nullptr));
            EXPECT_FALSE(s->isEqualToString(nullptr));
            ZPObject *object = ZPObject::new_()->autorelease();
            EXPECT_FALSE(s->isEqual(object));
            EXPECT_FALSE(s->isEqualToString(reinterpret_cast<ZPString *>(object)));
            for (unsigned at : {0u, unsigned(text.size()) - 1}) {
                if (at >= text.size()) continue;
                std::u16string other = text;
                other[at] ^= 1;
                inEveryForm(other, [&](const Form &, ZPString *t) { EXPECT_FALSE(s->isEqual(t)); });
            }
            inEveryForm(text + u"!", [&](const Form &, ZPString *t) { EXPECT_FALSE(s->isEqualToString(t)); });
        });
}

TEST(StringReading, orderAgreesWithUnitOrderAcrossForms) {
    std::mt19937 random(7);
    for (int round = 0; round < 60; ++round) {
        std::u16string head = randomText(random, 40, u"aAbBzZ[`\u00e9"),
                       a = head + randomText(random, 3, u"aAbBzZ[`\u00e9"),
                       b = head + randomText(random, 3, u"aAbBzZ[`\u00ff");
        for (char16_t &u : b)
            if (random() % 4 == 0 && u < 0x80 && u >= 'A') u ^= 0x20;
        inEveryForm(a, [&](const Form &, ZPString *s) {
            for (ZPString *t : {make(b), ZPString::stringWithString(make(b)), forms()[9].make(b), forms()[0].make(b)}) {
                EXPECT_EQ(s->compare(t), order(a, b, false));
                EXPECT_EQ(s->caseInsensitiveCompare(t), order(a, b, true));
                EXPECT_EQ(s->compare_options(t, ZPLiteralSearch | ZPBackwardsSearch | ZPAnchoredSearch),
                          order(a, b, false));
                unsigned from = unsigned(random() % (a.size() + 1)), count = unsigned(random() % (a.size() - from + 1));
                EXPECT_EQ(s->compare_options_range(t, 0, {from, count}), order(a.substr(from, count), b, false));
            }
            EXPECT_REASON_HAS("compare:options:range:]: Out of bounds",
                              s->compare_options_range("x"_zp, 0, {1, s->length()}));
        });
    }
}
