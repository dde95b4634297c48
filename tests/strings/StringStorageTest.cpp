// SPDX-License-Identifier: MIT
// Which class keeps a text, who owns its buffer, and when a substring lets its parent go.
#include "StringForms.h"

using namespace strings;

namespace {

std::string classOf(ZPString *s) { return s->isa->name; }

ZPString *ascii(unsigned length) { return ZPString::stringWithCString_length(std::string(length, 'x').data(), length); }

char *zoneBytes(const char *text) {
    std::size_t n = std::strlen(text);
    return static_cast<char *>(std::memcpy(ZPZoneMalloc(nullptr, n), text, n));
}

}  // namespace

TEST(StringStorage, theInitialiserPicksTheClass) {
    auto *units = static_cast<unichar *>(ZPZoneMalloc(nullptr, 4));
    units[0] = units[1] = 'u';
    // From bytes of an encoding: short ASCII inline, longer ASCII in the converted buffer, the rest in units.
    auto decoded = [](std::string bytes, ZPStringEncoding e) {
        return (ZPString *)ZPString::alloc()
            ->initWithBytes_length_encoding(bytes.data(), unsigned(bytes.size()), e)
            ->autorelease();
    };
    const std::pair<ZPString *, const char *> cases[] = {
        {"x"_zp, "ZPConstantString"},
        {"\u4e2d"_zp, "_ZPConstantUnicodeString"},
        {ZPString::stringWithCString("abc"), "ZPInlineCString"},
        {ascii(65535), "ZPInlineCString"},
        {ascii(65536), "ZPCString"},
        {make(u"abc"), "ZPUnicodeString"},
        {ZPString::alloc()->initWithCStringNoCopy_length_freeWhenDone(zoneBytes("abc"), 3, YES)->autorelease(),
         "ZPCString"},
        {ZPString::alloc()->initWithCharactersNoCopy_length_freeWhenDone(units, 2, YES)->autorelease(),
         "ZPUnicodeString"},
        {decoded(std::string(24, 'x'), ZPUTF8StringEncoding), "ZPInlineCString"},
        {decoded(std::string(25, 'x'), ZPUTF8StringEncoding), "ZPCString"},
        {decoded("\xC3\xA9", ZPUTF8StringEncoding), "ZPUnicodeString"},
    };
    for (auto &[string, cls] : cases) EXPECT_EQ(classOf(string), cls) << string->cString();
    EXPECT_EQ(ZPString::alloc()->initWithBytes_length_encoding("\xE2\x82", 2, ZPUTF8StringEncoding), nullptr);
}

TEST(StringStorage, emptyResultsAreTheEmptyLiteral) {
    ZPString *empty = ""_zp;
    unichar none[1];
    for (ZPString *s : {ZPString::string(), ZPString::stringWithCString(""), ZPString::stringWithString(make(u"")),
                        ZPString::stringWithCharacters_length(none, 0), empty->stringByAppendingString(make(u"")),
                        ZPString::alloc()->initWithCStringNoCopy_length_freeWhenDone(zoneBytes("a"), 0, YES),
                        ZPString::alloc()->initWithBytes_length_encoding("", 0, ZPUTF8StringEncoding)})
        EXPECT_EQ(s, empty);
    inEveryForm(u"abc", [&](const Form &, ZPString *s) {
        EXPECT_TRUE(s->substringFromIndex(3) == empty && s->substringWithRange({1, 0}) == empty);
    });
}

TEST(StringStorage, copiesShareAndLiteralsIgnoreCounting) {
    for (ZPString *s : {ZPString::stringWithCString("abc"), ascii(70000), make(u"abc")}) {
        EXPECT_EQ(ZPString::stringWithString(s), s);
        EXPECT_EQ(s->copy()->autorelease(), id(s));
    }
    ZPString *literal = "abc"_zp, *made = ZPString::stringWithString(literal);
    EXPECT_NE(made, literal);
    EXPECT_EQ(classOf(made), "ZPInlineCString");
    EXPECT_EQ(literal->copy(), id(literal));
    TestZone zone;
    ZPRef<ZPString> inZone = ZPAdopt<ZPString>(made->copyWithZone(zone)),
                    wide = ZPAdopt<ZPString>(make(u"wide")->copyWithZone(zone));
    EXPECT_TRUE(inZone->zone() == zone && wide->zone() == zone);
    EXPECT_EQ(ZPAdopt<ZPString>(inZone->copyWithZone(zone)), inZone);
    EXPECT_TRUE(inZone->isEqual("abc"_zp) && wide->isEqual("wide"_zp));
    for (ZPString *s : {"abc"_zp, "\u4e2d\u6587"_zp}) {
        s->release();
        s->release();
        EXPECT_EQ(s->retain(), id(s));
        EXPECT_EQ(s->autorelease(), id(s));
        EXPECT_EQ(s->retainCount(), 0xFFFFFFFF);
    }
}

TEST(StringStorage, placeholdersLiveForEverAndAreNoStrings) {
    ZPString *p = ZPString::alloc();
    EXPECT_EQ(p, ZPString::alloc());
    p->release();
    EXPECT_EQ(p->retainCount(), 0xFFFFFFFF);
    EXPECT_REASON_HAS("length", p->length());
    TestZone zone;
    ZPString *inZone = ZPString::allocWithZone(zone);
    EXPECT_NE(inZone, p);
    EXPECT_EQ(inZone, ZPString::allocWithZone(zone));
    ZPRef<ZPString> s = ZPAdopt(inZone->initWithCString("in its zone"));
    EXPECT_EQ(s->zone(), zone.zone);
    EXPECT_REASON("[ZPPlaceholderString initWithCString:]: NULL cString", ZPString::alloc()->initWithCString(nullptr));
}

TEST(StringStorage, byteSubstringsBorrowUntilTheyAreRetained) {
    std::string text(100, 'p');
    text[40] = 'q';
    ZPString *parent = ZPString::alloc()->initWithCString_length(text.data(), 100);
    EXPECT_EQ(classOf(parent->substringWithRange({0, 24})), "ZPInlineCString");
    EXPECT_EQ(parent->retainCount(), 1u);
    ZPString *part = parent->substringWithRange({40, 25});
    EXPECT_EQ(classOf(part), "ZPCSubstring");
    EXPECT_EQ(parent->retainCount(), 2u);
    EXPECT_EQ(part->_fastCStringContents(), parent->_fastCStringContents() + 40);
    part->retain();
    EXPECT_EQ(parent->retainCount(), 1u);
    EXPECT_EQ(part->retainCount(), 2u);
    parent->release();
    EXPECT_EQ(part->characterAtIndex(0), u'q');
    part->release();
}

TEST(StringStorage, unitSubstringsOfNearlyAllStayAttached) {
    ZPString *parent = make(std::u16string(100, u'p'));
    for (auto [length, attached] : {std::pair{25u, 0u}, {89u, 0u}, {90u, 1u}, {95u, 1u}}) {
        unsigned before = parent->retainCount();
        ZPString *part = parent->substringWithRange({1, length});
        EXPECT_EQ(classOf(part), "ZPUnicodeSubstring");
        EXPECT_EQ(parent->retainCount(), before + 1);
        part->retain();
        EXPECT_EQ(parent->retainCount(), before + attached) << length;
        part->release();
    }
    // A part of an attached part holds the outermost string.
    unsigned before = parent->retainCount();
    ZPString *inner = parent->substringWithRange({5, 95})->substringWithRange({3, 10});
    EXPECT_EQ(classOf(inner), "ZPUnicodeSubstring");
    EXPECT_EQ(parent->retainCount(), before + 2);
    EXPECT_EQ(classOf(parent->substringWithRange({0, 24})), "ZPUnicodeString");
}

TEST(StringStorage, substringsSurviveTheirParentAndEachOther) {
    std::mt19937 random(3);
    inEveryForm(u"The quick brown fox jumps over the lazy dog, twice over the hedge", [&](const Form &, ZPString *s) {
        std::u16string text = textOf(s);
        std::vector<std::pair<ZPString *, std::u16string>> parts = {{s->retain(), text}};
        for (int i = 0; i < 40; ++i) {
            auto &[from, whole] = parts[random() % parts.size()];
            unsigned at = unsigned(random() % (whole.size() + 1)), n = unsigned(random() % (whole.size() - at + 1));
            Pool inner;
            ZPString *part = from->_newSubstringWithRange_zone({at, n}, nullptr);
            if (random() % 2) part->retain()->release();
            parts.push_back({part, whole.substr(at, n)});
        }
        for (auto &[part, whole] : parts) {
            EXPECT_EQ(textOf(part), whole);
            part->release();
        }
    });
}

TEST(StringStorage, partsRetainedByManyThreads) {
    std::string text(1000, 't');
    for (int round = 0; round < 50; ++round) {
        ZPString *parent = ZPString::alloc()->initWithCString_length(text.data(), 1000);
        ZPString *part = parent->_newSubstringWithRange_zone({10, 500}, nullptr);
        parent->release();
        onThreads(4, [part](int) {
            for (int i = 0; i < 20; ++i) part->retain();
            for (int i = 0; i < 20; ++i) part->release();
        });
        EXPECT_EQ(part->retainCount(), 1u);
        EXPECT_EQ(part->length(), 500u);
        part->release();
    }
}

TEST(StringStorage, partsOfAPartThatAnotherThreadRetains) {
    for (int round = 0; round < 1000; ++round) {
        ZPString *parent = make(std::u16string(1000, u't'))->retain(),
                 *part = parent->_newSubstringWithRange_zone({10, 500}, nullptr);
        std::atomic<int> together{2}, divided{1}, released{1};
        auto meet = [](std::atomic<int> &waiting) {
            for (--waiting; waiting;) std::this_thread::yield();
        };
        std::thread retains([&] {
            Pool own;
            meet(together);
            part->retain();
        });
        std::thread divides([&] {
            Pool own;
            meet(together);
            ZPString *inner = part->substringWithRange({100, 300});
            --divided;
            while (released) std::this_thread::yield();
            EXPECT_EQ(textOf(inner), std::u16string(300, u't')) << "it outlives what it was taken from";
        });
        retains.join();
        while (divided) std::this_thread::yield();
        part->release();
        part->release();
        parent->release();
        --released;
        divides.join();
    }
}
