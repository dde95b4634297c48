// Character sets: the standard sets, and every kind of set beside one bitmap.
#include "StringForms.h"

#include <Bedrock/data/ZPData.h>
#include <Bedrock/strings/ZPCharacterSet.h>

#include <bitset>

using namespace strings;

namespace {

using Members = std::bitset<0x10000>;

Members membersOf(ZPCharacterSet *set) {
    Members all;
    for (unsigned u = 0; u < 0x10000; ++u) all[u] = set->characterIsMember(unichar(u)) != NO;
    return all;
}

struct OddSet : ZPCharacterSet {
    ZP_CLASS(OddSet)
    BOOL characterIsMember(unichar u) { return u & 1; }
};
ZP_IMPLEMENT(OddSet).method<&OddSet::characterIsMember>("characterIsMember:");

struct UnchangingSet : ZPMutableCharacterSet {
    ZP_CLASS(UnchangingSet)
};
ZP_IMPLEMENT(UnchangingSet);

}  // namespace

TEST(CharacterSet, standardSets) {
    struct { ZPCharacterSet *set; std::u16string members, others; } cases[] = {
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
    for (auto &c : cases) {
        for (char16_t u : c.members) EXPECT_TRUE(c.set->characterIsMember(u)) << std::hex << unsigned(u);
        for (char16_t u : c.others) EXPECT_FALSE(c.set->characterIsMember(u)) << std::hex << unsigned(u);
        c.set->release();
        EXPECT_EQ(c.set->retainCount(), 0xFFFFFFFF);
        EXPECT_FALSE(c.set->isEmpty());
        EXPECT_EQ(c.set->count(), membersOf(c.set).count());
    }
}

TEST(CharacterSet, kindsOfSetsAgree) {
    Pool pool;
    std::u16string many;
    for (unsigned u = 0x30; u < 0x71; ++u) many += char16_t(u);
    ZPCharacterSet *range = ZPCharacterSet::characterSetWithRange({0x30, 65}), *longText = ZPCharacterSet::characterSetWithCharactersInString(make(many)),
                   *text = ZPCharacterSet::characterSetWithCharactersInString(make(many.substr(0, 64)));
    EXPECT_STREQ(text->isa->name, "ZPImmutableStringCharacterSet");
    EXPECT_STREQ(longText->isa->name, "ZPConcreteMutableCharacterSet");
    EXPECT_EQ(membersOf(range), membersOf(longText));
    EXPECT_TRUE(range->isEqual(longText) && longText->isEqual(range));
    EXPECT_FALSE(range->isEqual(text));
    EXPECT_EQ(text->count(), 64u);
    for (ZPCharacterSet *set : {range, longText, text, ZPCharacterSet::letterCharacterSet(), (ZPCharacterSet *)OddSet::new_()->autorelease()}) {
        ZPCharacterSet *inverted = set->invertedSet();
        EXPECT_EQ(membersOf(inverted), ~membersOf(set));
        EXPECT_TRUE(inverted->invertedSet()->isEqual(set));
        EXPECT_EQ(inverted->count() + set->count(), 0x10000u);
        ZPMutableCharacterSet *changed = set->mutableCopy();
        changed->invert();
        EXPECT_NE(changed->characterIsMember('Z'), set->characterIsMember('Z'));
        changed->release();
    }
    EXPECT_TRUE(ZPCharacterSet::characterSetWithRange({ZPNotFound, 5})->isEmpty());
    EXPECT_EQ(ZPCharacterSet::characterSetWithRange({0xFF00, 0x100})->count(), 0x100u);
    ZPMutableCharacterSet *all = ZPMutableCharacterSet::characterSetWithRange({0, 0x10000});
    EXPECT_TRUE(all->invertedSet()->isEmpty());
}

TEST(CharacterSet, changes) {
    Pool pool;
    ZPMutableCharacterSet *set = ZPMutableCharacterSet::characterSetWithCharactersInString("abc"_zp);
    ZPCharacterSet *before = set->copy()->autorelease(), *inverted = set->invertedSet();
    set->addCharactersInRange({0xFF00, 0x100});
    set->addCharactersInRange({0xFFFF, 0xFFFFFFFF});
    set->removeCharactersInString("b"_zp);
    EXPECT_EQ(set->count(), 0x102u);
    EXPECT_TRUE(set->characterIsMember(0xFFFF) && !set->characterIsMember('b'));
    EXPECT_TRUE(before->characterIsMember('b') && before->count() == 3 && !inverted->characterIsMember('b'));
    set->formIntersectionWithCharacterSet(ZPCharacterSet::letterCharacterSet()->invertedSet());
    EXPECT_FALSE(set->characterIsMember('a'));
    set->formUnionWithCharacterSet(ZPCharacterSet::characterSetWithCharactersInString("xyz"_zp));
    EXPECT_TRUE(set->characterIsMember('z'));
}

TEST(CharacterSet, aClientsMutableSetMustSayHowItChanges) {
    Pool pool;
    ZPMutableCharacterSet *set = UnchangingSet::new_()->autorelease();
    testing::internal::CaptureStderr();
    EXPECT_NE(raised([&] { set->invert(); }).find("selector not recognized"), std::string::npos);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Abstract class UnchangingSet does not implement method invert; it must be implemented in subclasses."),
              std::string::npos);
    EXPECT_NE(raised([&] { set->addCharactersInRange({0, 1}); }), "");
}

TEST(CharacterSet, bitmaps) {
    ZPCharacterSet *letters = ZPCharacterSet::letterCharacterSet(), *odd = OddSet::new_()->autorelease();
    for (ZPCharacterSet *set : {letters, letters->invertedSet(), ZPCharacterSet::characterSetWithRange({0xFFF0, 16}), odd}) {
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
    ZPMutableCharacterSet *both = ofString->mutableCopy();
    EXPECT_EQ(both->count(), 2u);
    both->release();
    ZPCharacterSet *shortened = ZPCharacterSet::characterSetWithBitmapRepresentation(ZPData::dataWithBytes_length("\x03", 1));
    EXPECT_EQ(shortened->count(), 2u);
    ZPString *path = ZPString::stringWithCString((testing::TempDir() + "set" + std::to_string(std::random_device()()) + ".bitmap").c_str());
    ASSERT_TRUE(letters->bitmapRepresentation()->writeToFile_atomically(path, NO));
    EXPECT_TRUE(ZPCharacterSet::characterSetWithContentsOfFile(path)->isEqual(letters));
    std::remove(path->cString());
    EXPECT_EQ(ZPCharacterSet::characterSetWithContentsOfFile(path), nullptr);
}
