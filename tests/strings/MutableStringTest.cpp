// SPDX-License-Identifier: MIT
// Mutable strings: edits against a model, sharing of contents, storage forms, the abstract class.
#include "StringForms.h"

#include <Bedrock/strings/cluster/Mutable.h>

using namespace strings;

namespace {

ZPCStringWithGap *bytesOf(ZPMutableString *s) {
    return static_cast<ZPCStringWithGap *>(static_cast<ZPConcreteMutableString *>(s)->_contents);
}
ZPString *contentsOf(ZPMutableString *s) { return static_cast<ZPConcreteMutableString *>(s)->_contents; }
std::string classOf(id object) { return object.pointer()->isa->name; }

/// A client's mutable string that supplies the primitives alone.
struct ClientMutableString : ZPMutableString {
    ZP_CLASS(ClientMutableString)
    std::u16string _text;
    unsigned length() { return unsigned(_text.size()); }
    unichar characterAtIndex(unsigned index) { return _text.at(index); }
    void replaceCharactersInRange_withString(ZPRange range, ZPString *s) {
        _text.replace(range.location, range.length, textOf(s));
    }
};
ZP_IMPLEMENT(ClientMutableString, length, characterAtIndex, replaceCharactersInRange_withString);

struct Starts {
    const char *name;
    std::function<ZPMutableString *(const std::u16string &)> make;
};
const Starts starts[] = {
    {"foreign", [](const std::u16string &t) { return ZPMutableString::stringWithString(make(t)); }},
    {"adopted units",
     [](const std::u16string &t) {
         return ZPMutableString::stringWithCharacters_length(t.data(), unsigned(t.size()));
     }},
    {"appended",
     [](const std::u16string &t) {
         auto *s = ZPMutableString::stringWithCapacity(3);
         s->appendString("x"_zp);
         s->appendString(make(t));
         s->deleteCharactersInRange({0, 1});
         return s;
     }},
    {"mutable copy",
     [](const std::u16string &t) {
         return static_cast<ZPMutableString *>(
             ZPMutableString::stringWithString(make(t))->mutableCopy()->autorelease());
     }},
    {"client",
     [](const std::u16string &t) -> ZPMutableString * {
         ClientMutableString *s = ClientMutableString::alloc();
         s->_text = t;
         return s->autorelease();
     }},
};

}  // namespace

TEST(MutableString, FollowsAModelThroughRandomEdits) {
    const std::u16string narrow = u"abc ", wide = u"a\u00e9\u4e2d\U0001F600";
    for (const Starts &start : starts) {
        SCOPED_TRACE(start.name);
        std::mt19937 random(7);
        for (int round = 0; round < 30; ++round) {
            Pool pool;
            const std::u16string &alphabet = round % 2 ? wide : narrow;
            std::u16string model = randomText(random, 40, alphabet);
            ZPMutableString *s = start.make(model);
            std::vector<std::pair<ZPString *, std::u16string>> copies;
            for (int step = 0; step < 60; ++step) {
                unsigned at = unsigned(random() % (model.size() + 1)),
                         count = unsigned(random() % (model.size() - at + 1));
                if (random() % 2) count = count % 3;
                // Forms of every kind are put in; the receiver, a copy and a part of it too.
                std::u16string text = randomText(random, 12, random() % 4 ? narrow : alphabet);
                const Form &form = forms()[random() % forms().size()];
                ZPString *piece = form.bytes && !fitsBytes(text) ? make(text) : form.make(text);
                if (int kind = random() % 12; kind == 0 || kind == 1) {
                    if (model.size() > 5000) model.clear(), s->setString(""_zp), at = count = 0;
                    text = model;
                    piece = kind ? s->copy()->autorelease() : id(s);
                } else if (kind == 2 && model.size() > 2) {
                    text = model.substr(1, model.size() - 2);
                    piece = s->substringWithRange({1, unsigned(model.size()) - 2});
                }
                switch (random() % 6) {
                case 0: s->appendString(piece), model += text; break;
                case 1: s->insertString_atIndex(piece, at), model.insert(at, text); break;
                case 2: s->deleteCharactersInRange({at, count}), model.erase(at, count); break;
                case 3:
                    s->replaceCharactersInRange_withCharacters_length({at, count}, text.data(), unsigned(text.size()));
                    model.replace(at, count, text);
                    break;
                default: s->replaceCharactersInRange_withString({at, count}, piece), model.replace(at, count, text);
                }
                ASSERT_EQ(textOf(s), model) << step;
                if (random() % 8 == 0) copies.emplace_back(s->copy()->autorelease(), model);
            }
            EXPECT_TRUE(s->isEqualToString(make(model)));
            EXPECT_EQ(s->hash(), make(model)->hash());
            for (auto &[copy, text] : copies) ASSERT_EQ(textOf(copy), text) << "a copy never changes";
        }
    }
}

TEST(MutableString, SharesContentsUntilAChange) {
    ZPString *original = ZPString::stringWithCString("an immutable string");
    ZPMutableString *s = ZPMutableString::stringWithString(original);
    EXPECT_EQ(contentsOf(s), original);
    s->appendString("!"_zp);
    EXPECT_EQ(textOf(original), u"an immutable string");

    ZPRef<ZPString> copy = ZPAdopt<ZPString>(s->copy());
    ZPRef<ZPMutableString> other = ZPAdopt<ZPMutableString>(s->mutableCopy());
    EXPECT_EQ(copy.get(), contentsOf(s));
    EXPECT_EQ(contentsOf(other.get()), contentsOf(s));
    s->insertString_atIndex(">"_zp, 0);
    EXPECT_NE(copy.get(), contentsOf(s));
    ZPString *own = contentsOf(s);
    s->insertString_atIndex(">"_zp, 0);
    EXPECT_EQ(contentsOf(s), own) << "the second change stays where the first went";
    other->setString("other"_zp);
    EXPECT_EQ(textOf(copy.get()), u"an immutable string!");
}

TEST(MutableString, PassesTo16BitsWhenTextNeedsIt) {
    ZPMutableString *s = ZPMutableString::stringWithCString("abcd");
    EXPECT_NE(s->_fastCStringContents(), nullptr);
    s->insertString_atIndex(s, 2);
    EXPECT_EQ(textOf(s), u"ababcdcd");
    EXPECT_EQ(classOf(contentsOf(s)), "ZPCStringWithGap");
    s->insertString_atIndex(make(u"\u4e2d"), 1);
    EXPECT_EQ(s->_fastCStringContents(), nullptr);
    EXPECT_EQ(s->fastestEncoding(), ZPUnicodeStringEncoding);
    s->deleteCharactersInRange({1, 1});
    EXPECT_EQ(classOf(contentsOf(s)), "ZPUnicodeStringWithGap") << "16-bit stays 16-bit";

    s = ZPMutableString::string();
    s->replaceCharactersInRange_withCString_length({0, 0}, "\xC3\xA9", 2);
    EXPECT_EQ(textOf(s), u"\u00e9");
    EXPECT_RAISES("ZPCharacterConversionException: Bad cString",
                  s->replaceCharactersInRange_withCString_length({0, 0}, "\xC3", 1));
}

TEST(MutableString, RefusesRangesOutside) {
    for (ZPMutableString *s :
         {ZPMutableString::stringWithString("abc"_zp), ZPMutableString::stringWithCString("abc")}) {
        for (ZPRange bad : {ZPRange{4, 0}, ZPRange{2, 2}, ZPRange{1, 0xFFFFFFFF}, ZPRange{0xFFFFFFFF, 2}}) {
            EXPECT_REASON("[ZPConcreteMutableString replaceCharactersInRange:withString:]: Out of bounds",
                          s->replaceCharactersInRange_withString(bad, "x"_zp));
            EXPECT_REFUSED(s->replaceCharactersInRange_withCString_length(bad, "x", 1));
            EXPECT_REFUSED(s->replaceCharactersInRange_withCharacters_length(bad, u"x", 1));
        }
        EXPECT_EQ(textOf(s), u"abc");
    }
    EXPECT_REASON("[ZPMutableString stringWithCString:]: NULL cString", ZPMutableString::stringWithCString(nullptr));
}

TEST(MutableString, ReplacesOccurrences) {
    auto all = [](const char *text, ZPString *target, ZPString *with) {
        ZPMutableString *s = ZPMutableString::stringWithCString(text);
        s->_replaceAllAppearancesOfString_withString(target, with);
        return textOf(s);
    };
    EXPECT_EQ(all("banana", "a"_zp, "aa"_zp), u"baanaanaa");
    EXPECT_EQ(all("aab", "ab"_zp, ""_zp), u"a");
    EXPECT_EQ(all("xx", ""_zp, "y"_zp), u"xx");
    EXPECT_EQ(all("x", "x"_zp, make(u"\u4e2d")), u"\u4e2d");
    ZPMutableString *s = ZPMutableString::stringWithCString("abcabc");
    s->_replaceAllAppearancesOfString_withString(s, "x"_zp);
    EXPECT_EQ(textOf(s), u"x");
    s->setString("abcabc"_zp);
    s->_replaceFirstAppearanceOfString_withString("b"_zp, "1"_zp);
    s->_replaceLastAppearanceOfString_withString("b"_zp, s);
    EXPECT_EQ(textOf(s), u"a1caa1cabcc");
    s->_deleteAllCharactersFromSet(ZPCharacterSet::characterSetWithCharactersInString("ac"_zp));
    EXPECT_EQ(textOf(s), u"11b");

    ZPMutableString *large = ZPMutableString::stringWithCapacity(0);
    for (int i = 0; i < 17; ++i) large->appendString(i ? static_cast<ZPString *>(large) : "ab"_zp);
    large->_replaceAllAppearancesOfString_withString("a"_zp, "abc"_zp);
    EXPECT_EQ(large->length(), 4u << 16) << "linear in the text, or this takes for ever";
}

TEST(MutableString, CheapStringUsesItsCallersBuffer) {
    char text[] = "caller's";
    ZPCheapMutableString *s = ZPCheapMutableString::new_();
    s->autorelease();
    s->setContentsNoCopy_length_freeWhenDone_isUnicode(text, 8, NO, NO);
    EXPECT_EQ(s->cString(), text);
    text[0] = 'C';
    EXPECT_TRUE(s->isEqualToString("Caller's"_zp));
    EXPECT_EQ(s->fastestEncoding(), ZPString::defaultCStringEncoding());
    unichar units[] = {0x4e2d, 'x'};
    s->setContentsNoCopy_length_freeWhenDone_isUnicode(units, 2, NO, YES);
    EXPECT_EQ(textOf(s), u"\u4e2dx");
    s->setContentsNoCopy_length_freeWhenDone_isUnicode(ZPZoneCalloc(nullptr, 4, 1), 3, YES, NO);
}

TEST(MutableString, JoinsUpTo40Strings) {
    ZPString *x = "x"_zp, *wide = make(u"\u4e2d"), *end = nullptr;
    ZPRef<ZPString> joined = ZPAdopt(_ZPNewStringByAppendingStrings(nullptr, x, wide, x, end));
    EXPECT_EQ(textOf(joined.get()), u"x\u4e2dx");
    EXPECT_EQ(_ZPNewStringByAppendingStrings(nullptr, ""_zp, ""_zp, end), ""_zp);
#define TEN x, x, x, x, x, x, x, x, x, x
    joined = ZPAdopt(_ZPNewStringByAppendingStrings(nullptr, TEN, TEN, TEN, TEN, end));
    EXPECT_EQ(joined->length(), 40u);
    EXPECT_REASON("Too many strings to append", _ZPNewStringByAppendingStrings(nullptr, TEN, TEN, TEN, TEN, x, end));
}

TEST(MutableString, IsMadeInAZoneAndCopiedOutOfIt) {
    TestZone zone, elsewhere;
    Pool inner;
    ZPMutableString *s = ZPMutableString::allocWithZone(zone)->initWithCapacity(10);
    s->autorelease();
    for (int i = 0; i < 50; ++i) s->appendString("text "_zp);
    EXPECT_EQ(ZPZoneFromPointer(contentsOf(s)), zone.zone);
    EXPECT_EQ(ZPZoneFromPointer(bytesOf(s)->bytes), zone.zone);
    ZPRef<ZPString> far = ZPAdopt<ZPString>(s->copyWithZone(elsewhere));
    EXPECT_EQ(ZPZoneFromPointer(far.get()), elsewhere.zone);
    EXPECT_TRUE(far->isEqualToString(s));
}
