// SPDX-License-Identifier: MIT
// Character sets: the standard sets, and every kind of set beside one bitmap.
#include "StringForms.h"

#include <bitset>

using namespace strings;

namespace {

using Members = std::bitset<0x10000>;

Members membersOf(ZPCharacterSet *set) {
    Members all;
    for (unsigned u = 0; u < 0x10000; ++u) all[u] = set->characterIsMember(unichar(u)) != NO;
    return all;
}

ZPCharacterSet *setOf(ZPCharacterSetRecord *record) {
    return objc_msgSend<id>(ZPCharacterSet::alloc(), "_initWithSet:"_sel, record);
}

struct OddSet : ZPCharacterSet {
    ZP_CLASS(OddSet)
    BOOL characterIsMember(unichar u) { return u & 1; }
};
ZP_IMPLEMENT(OddSet, characterIsMember);

// What another set has not; it asks by way of the bitmap that a mutable set hands out.
struct RestSet : ZPCharacterSet {
    ZP_CLASS(RestSet)
    ZPCharacterSet *_others;
    ZPData *_seen;
    BOOL characterIsMember(unichar u) {
        _seen = _others->bitmapRepresentation();
        return !_others->characterIsMember(u);
    }
};
ZP_IMPLEMENT(RestSet, characterIsMember);

}  // namespace

TEST(CharacterSet, standardSets) {
    const std::tuple<ZPCharacterSet *, std::u16string, std::u16string> cases[] = {
        {ZPCharacterSet::whitespaceCharacterSet(), u"\t \u00a0\u2003\u3000", u"\n\r\u2028a"},
        {ZPCharacterSet::whitespaceAndNewlineCharacterSet(), u"\t\n \u00a0\u2028\u2029", u"\r\u0085a"},
        {ZPCharacterSet::letterCharacterSet(), u"aZ^`\u00b4\u00e9\u0301\u0416\u4e2d\uac00", u"0_ \u00b2\u20ac\uffff"},
        {ZPCharacterSet::decimalDigitCharacterSet(), u"09\u0660\uff19", u"a\u00b2\u2160"},
        {ZPCharacterSet::uppercaseLetterCharacterSet(), u"A\u00c9\u0416\u01c5", u"a\u00df\u0436"},
        {ZPCharacterSet::lowercaseLetterCharacterSet(), u"a\u00df\u00e9\u0436", u"A\u0416"},
        {ZPCharacterSet::alphanumericCharacterSet(), u"a0\u00b2\u2160\u4e2d", u" -\u20ac"},
        {ZPCharacterSet::nonBaseCharacterSet(), u"\u0301\u0323\u20d0", u"a\u00e9"},
        {ZPCharacterSet::decomposableCharacterSet(), u"\u00e9\u00c0\uac00\u212b", u"e\u00a0\u00b5\ufb01"},
        {ZPCharacterSet::illegalCharacterSet(), u"\uffff\ufffe\u0378", u"a\ue000\ufffd"},
        {ZPCharacterSet::punctuationCharacterSet(), u"!-.\u00ab\u2014\u3001", u"#*@a\u20ac"},
        {ZPCharacterSet::controlCharacterSet(), u"\x01\x7f\u009f\u200e", u" a"},
    };
    for (auto &[set, members, others] : cases) {
        for (char16_t u : members) EXPECT_TRUE(set->characterIsMember(u)) << std::hex << unsigned(u);
        for (char16_t u : others) EXPECT_FALSE(set->characterIsMember(u)) << std::hex << unsigned(u);
        EXPECT_EQ(set->count(), membersOf(set).count());
    }
}

TEST(CharacterSet, kindsOfSetsAgree) {
    std::u16string many;
    for (unsigned u = 0x30; u < 0x71; ++u) many += char16_t(u);
    ZPCharacterSet *range = ZPCharacterSet::characterSetWithRange({0x30, 65}),
                   *longText = ZPCharacterSet::characterSetWithCharactersInString(make(many)),
                   *text = ZPCharacterSet::characterSetWithCharactersInString(make(many.substr(0, 64)));
    EXPECT_STREQ(text->isa->name, "ZPImmutableStringCharacterSet");
    EXPECT_STREQ(longText->isa->name, "ZPConcreteMutableCharacterSet");
    EXPECT_EQ(membersOf(range), membersOf(longText));
    EXPECT_TRUE(range->isEqual(longText) && longText->isEqual(range));
    EXPECT_EQ(text->count(), 64u);
    for (ZPCharacterSet *set : {range, longText, text, ZPCharacterSet::letterCharacterSet(),
                                (ZPCharacterSet *)OddSet::new_()->autorelease()}) {
        ZPCharacterSet *inverted = set->invertedSet();
        EXPECT_EQ(membersOf(inverted), ~membersOf(set));
        EXPECT_TRUE(inverted->invertedSet()->isEqual(set));
    }
    EXPECT_TRUE(ZPCharacterSet::characterSetWithRange({ZPNotFound, 5})->isEmpty());
    EXPECT_EQ(ZPCharacterSet::characterSetWithRange({0xFF00, 0x100})->count(), 0x100u);
}

// Every form in which a concrete set keeps its members: in the middle of a random life, and at its end with few and
// thousands of ranges within a block of 1,024 units, over many blocks and at their edges.
TEST(CharacterSet, changesOfEveryFormLikeABitset) {
    std::mt19937 random(3);
    for (unsigned round = 0; round < 60; ++round) {
        Pool pool;
        ZPMutableCharacterSet *set = ZPMutableCharacterSet::new_()->autorelease();
        EXPECT_TRUE(set->isEmpty());
        Members expected;
        auto assign = [&](unsigned at, unsigned length, bool member) {
            if (member) set->addCharactersInRange({at, length});
            else set->removeCharactersInRange({at, length});
            for (unsigned u = at; u < 0x10000 && u - at < length; ++u) expected[u] = member;
        };
        for (unsigned step = 0; step < 40; ++step) {
            unsigned at = random() % 8 ? random() % 0x10000 : 0xFFFF - random() % 3,
                     length = random() % 4   ? random() % 40
                              : random() % 8 ? random() % 0x20000
                                             : 0xFFFFFFFF;
            switch (random() % 8) {
            case 0:
            case 1:
            case 2: assign(at, length, true); break;
            case 3: assign(at, length, false); break;
            case 4: set->invert(), expected.flip(); break;
            case 5: objc_msgSend(set, "makeCharacterSetCompact"_sel); break;
            case 6: set->bitmapRepresentation(); break;
            default: {
                ZPCharacterSet *other = ZPCharacterSet::characterSetWithRange({at, length});
                Members its = membersOf(other);
                if (random() & 1) set->formUnionWithCharacterSet(other), expected |= its;
                else set->formIntersectionWithCharacterSet(other->invertedSet()), expected &= ~its;
            }
            }
            ASSERT_EQ(set->count(), expected.count());
        }
        const unsigned longest = round % 3 == 0 ? 3 : round % 3 == 1 ? 100 : 5000;
        for (unsigned n = 8u << random() % 10; n; --n) assign(random() % 0x10000, 1 + random() % longest, round & 4);
        for (unsigned n = random() % 20; n; --n) assign(random() % 65 * 1024 - random() % 2 * 2, 2, true);
        if (round & 1) assign(0xFFF0, 16, true);
        ZPCharacterSet *reference = set->copy()->autorelease();
        if (round & 8) set->bitmapRepresentation();
        if (round & 16) objc_msgSend(set, "makeCharacterSetCompact"_sel);
        if (round & 32) set->bitmapRepresentation();
        EXPECT_EQ(objc_msgSend<BOOL>(set, "isCompact"_sel) != NO, !(round & 16) || round & 32);
        ASSERT_EQ(membersOf(set), expected);
        ASSERT_EQ(membersOf(reference), expected);
        EXPECT_TRUE(set->isEqual(reference) && reference->isEqual(set));
        EXPECT_EQ(set->hash(), reference->hash());
        EXPECT_EQ(membersOf(set->invertedSet()), ~expected);
        ZPMutableCharacterSet *copy = set->mutableCopy()->autorelease();
        ZPData *handedOut = set->bitmapRepresentation();
        set->removeCharactersInRange({0, 0x8000});
        EXPECT_EQ(membersOf(copy), expected) << "a copy is apart";
        expected[0xFFFF] = false;  // is in no data
        if (!copy->characterIsMember(0xFFFF)) {
            EXPECT_EQ(membersOf(ZPCharacterSet::characterSetWithBitmapRepresentation(handedOut)), expected)
                << "what was handed out stays";
        }
    }
}

TEST(CharacterSet, combinesWithClientsSets) {
    RestSet *rest = RestSet::new_()->autorelease();
    ZPMutableCharacterSet *set = ZPMutableCharacterSet::characterSetWithCharactersInString("abc"_zp);
    rest->_others = set;
    set->formUnionWithCharacterSet(rest);
    EXPECT_EQ(set->count(), 0xFFFFu) << "all but U+FFFF";
    EXPECT_EQ(ZPCharacterSet::characterSetWithBitmapRepresentation(rest->_seen)->count(), 3u)
        << "what was handed out stays";
    set = ZPMutableCharacterSet::characterSetWithCharactersInString("bc"_zp);
    set->formUnionWithCharacterSet(OddSet::new_()->autorelease());
    EXPECT_TRUE(set->characterIsMember(0x4E01) && !set->characterIsMember(0x4E02) && set->characterIsMember('b'));
    set->formIntersectionWithCharacterSet(ZPCharacterSet::letterCharacterSet()->invertedSet());
    set->removeCharactersInString("13"_zp);
    EXPECT_TRUE(!set->characterIsMember('a') && !set->characterIsMember('1') && set->characterIsMember('5'));
}

TEST(CharacterSet, immutableSetsRefuseChanges) {
    std::u16string many(100, u'x');
    ZPMutableCharacterSet *frozen = ZPMutableCharacterSet::characterSetWithCharactersInString("abc"_zp);
    ZPCharacterSet *copy = frozen->copy()->autorelease();
    EXPECT_TRUE(frozen->isMutable());
    frozen->makeImmutable();
    EXPECT_EQ(frozen->copy()->autorelease(), id(frozen)) << "nothing left to copy for";
    ZPCharacterSet *immutable[] = {frozen, copy, ZPCharacterSet::characterSetWithCharactersInString(make(many)),
                                   ZPCharacterSet::characterSetWithBitmapRepresentation(frozen->bitmapRepresentation()),
                                   ZPCharacterSet::alloc()->initWithRange({3, 4})->autorelease()};
    for (ZPCharacterSet *set : immutable) {
        EXPECT_FALSE(set->isMutable());
        Members before = membersOf(set);
        testing::internal::CaptureStderr();
        EXPECT_RAISES("ZPInvalidArgumentException: ZPConcreteMutableCharacterSet invert: Illegal operation on this "
                      "class or instance",
                      objc_msgSend(set, "invert"_sel));
        EXPECT_HAS(testing::internal::GetCapturedStderr(),
                   "ZPConcreteMutableCharacterSet: attempted mutation of immutable instance\n");
        EXPECT_EQ(membersOf(set), before);
    }
}

TEST(CharacterSet, recordsAndDumps) {
    auto dumped = [](const char *head, const char *singles, const char *ranges) {
        return std::string("{\n\t") + head + "\tsingles = ( " + singles + " );\n\tranges = ( " + ranges + " );\n}\n";
    };
    const std::pair<const char16_t *, std::string> cases[] = {
        {u"", dumped("nsingles = 0;\n\tnranges = 0;\n\tsingmin = 65535;\n\tsingmax = 0;\n", "", "")},
        {u"acdeg\uffff",
         dumped("nsingles = 3;\n\tnranges = 1;\n\tsingmin = 97;\n\tsingmax = 65535;\n", "97, 103, 65535", "99, 101")}};
    auto dump = [](ZPCharacterSetRecord *record) { return text(ZPCharacterSet::_dumpSetRepresentation(record)); };
    for (auto &[members, wanted] : cases) {
        ZPMutableCharacterSet *set = ZPMutableCharacterSet::characterSetWithCharactersInString(make(members));
        objc_msgSend(set, "makeCharacterSetCompact"_sel);
        ZPString *own = objc_msgSend<ZPString *>(set, "dump"_sel);
        EXPECT_EQ(text(own), wanted);
        ZPCharacterSetRecord *record = ZPMakeSetFromDictionary(own->propertyList()),
                             *copy = ZPCopySetStructFromZone(record, nullptr);
        EXPECT_EQ(dump(copy), wanted) << "the dump describes the record";
        ZPZoneFree(nullptr, record);
        ZPCharacterSet::alloc()->init()->release();
        EXPECT_TRUE(ZPRef<ZPCharacterSet>(ZPAdopt(setOf(copy)))->isEqual(set));
    }
    ZPCharacterSetRecord *empty = ZPMakeSetFromDictionary(nullptr);
    EXPECT_EQ(dump(empty), cases[0].second);
    ZPZoneFree(nullptr, empty);
    EXPECT_EQ(dump(nullptr), "<NIL>");
    EXPECT_STREQ(ZPCharacterSet::_dumpBitmapRepresentation(nullptr)->cString(), "<NIL>");

    unsigned char bitmap[8192] = {0x01, 0xC0};
    std::string page = ZPCharacterSet::_dumpBitmapRepresentation(bitmap)->cString();
    const std::string head = "10 10 translate\n256 256 scale\n256 256 1 [256 0 0 -256 0 256]\n{<",
                      tail = ">} image\nshowpage\n";
    EXPECT_EQ(page.substr(0, head.size() + 9), head + "\n7FFCFFFF");
    EXPECT_EQ(page.size(), head.size() + 8192 * 2 + 256 + tail.size());
}

TEST(CharacterSet, numbersInFiles) {
    for (auto &[text, value] : rows("42 -> 42", "  7x -> 7", "0x1F -> 31", "0XfF  -> 255", "1A -> 20", "-1 -> 0",
                                    " -> 0", "0x -> 0", "\t1 -> 0"))
        EXPECT_EQ(ZPParseIntegerFromString(ZPString::stringWithCString(text.c_str())), std::stoul(value)) << text;
}

// Descriptions that lie: what is no unit is left out, and nothing outside the arrays is read.
TEST(CharacterSet, wrongDescriptions) {
    const std::pair<ZPString *, unsigned> cases[] = {
        {"{ nsingles = 5; singles = ( 1, 2 ); }"_zp, 2},
        {"{ nsingles = 1; singles = ( 1, 3, 5 ); }"_zp, 1},
        {"{ singles = ( 70000, 4294967295, a, (1), 7 ); }"_zp, 2},
        {"{ nranges = 99; ranges = ( 10, 12, 20 ); }"_zp, 3},
        {"{ ranges = ( 12, 10, 65530, 99999, 70000, 80000 ); }"_zp, 6},
        {"{ ranges = ( 10, 20, 15, 25 ); }"_zp, 16},
        {"{ singles = 7; ranges = { a = b; }; }"_zp, 0},
        {"{ singmin = 5; singmax = 1; nsingles = 1; singles = ( 3 ); }"_zp, 1},
        {"{}"_zp, 0},
    };
    for (auto &[text, members] : cases) {
        ZPRef<ZPCharacterSet> set = ZPAdopt(setOf(ZPMakeSetFromDictionary(text->propertyList())));
        EXPECT_EQ(set->count(), members) << text->cString();
        EXPECT_EQ(membersOf(set.get()).count(), members) << text->cString();
    }
}

TEST(CharacterSet, bitmaps) {
    ZPCharacterSet *letters = ZPCharacterSet::letterCharacterSet(), *odd = OddSet::new_()->autorelease();
    for (ZPCharacterSet *set :
         {letters, letters->invertedSet(), ZPCharacterSet::characterSetWithRange({0xFFF0, 16}), odd}) {
        ZPData *bitmap = set->bitmapRepresentation();
        ASSERT_EQ(bitmap->length(), 8192u);
        ZPCharacterSet *again = ZPCharacterSet::characterSetWithBitmapRepresentation(bitmap);
        Members expected = membersOf(set);
        if (set == odd) expected[0xFFFF] = false;  // what only answers membership never tells of the last unit
        EXPECT_EQ(membersOf(again), expected);
        EXPECT_TRUE(again->isEqual(set));
        EXPECT_EQ(again->hash(), set->hash());
    }
    std::u16string units{u'a', 0xFFFF};
    ZPCharacterSet *ofString = ZPCharacterSet::characterSetWithCharactersInString(make(units));
    EXPECT_TRUE(ofString->characterIsMember(0xFFFF));
    EXPECT_EQ(ofString->count(), 1u) << "nor does the bitmap of a string's units";
    EXPECT_EQ(static_cast<const unsigned char *>(ofString->bitmapRepresentation()->bytes())[8191], 0);
}
