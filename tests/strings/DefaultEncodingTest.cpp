// SPDX-License-Identifier: MIT
// C strings under different default encodings, each in a process of its own.
#include "StringForms.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

using namespace strings;

namespace {

std::string reasonOf(ZPString *s) {
    try {
        s->cString();
    } catch (ZPException *e) {
        if (!e->name()->isEqual(ZPCharacterConversionException)) return "another exception";
        std::u16string reason = textOf(e->reason());
        return {reason.begin(), reason.end()};
    }
    return "";
}

void checkKESTREL() {
    ZPString *s = ZPString::stringWithCString("\xE9t\xE9");
    EXPECT_STREQ(s->isa->name, "ZPInlineCString");
    EXPECT_EQ(textOf(s), u"\u00e9t\u00e9");
    EXPECT_STREQ(make(u"\u00e9t\u00e9")->cString(), "\xE9t\xE9");
    EXPECT_EQ(s->displayableString(), s);
    EXPECT_STREQ(ZPString::alloc()
                     ->initWithCStringNoCopy_length_freeWhenDone(const_cast<char *>("\xE9"), 1, NO)
                     ->autorelease()
                     ->isa->name,
                 "ZPCString");
}

void checkWindowsLatin1() {
    ZPString *s = ZPString::stringWithCString("\xE9\x80");
    EXPECT_STREQ(s->isa->name, "ZPUnicodeString");
    EXPECT_EQ(textOf(s), u"\u00e9\u20ac");
    EXPECT_STREQ(s->cString(), "\xE9\x80");
    EXPECT_EQ(s->cStringLength(), 2u);
    inEveryForm(u"a\u00e9\u0001",
                [](const Form &, ZPString *t) { EXPECT_STREQ(t->displayableString()->cString(), "a\\U00e9\\001"); });

    EXPECT_EQ(reasonOf(make(u"a text of more than \u0416 units")),
              "Conversion to cString failed for string \"a text of more than ...\"");
    char buffer[8];
    EXPECT_THROW(make(u"\u0416")->getCString(buffer), ZPException *);
    EXPECT_EQ(make(u"\u0416")->cStringLength(), 0u);
    EXPECT_STREQ(make(u"\u0416")->lossyCString(), "_");
    std::u16string units(3000, u'x');
    units[1500] = u'\u0416';
    std::string lossy(3000, 'x');
    lossy[1500] = '_';
    EXPECT_EQ(make(units)->lossyCString(), lossy);
}

void checkUTF8() {
    EXPECT_EQ(textOf(ZPString::stringWithCString("\xC3\xA9\xE4\xB8\xAD")), u"\u00e9\u4e2d");
    EXPECT_EQ(ZPString::stringWithCString("\xE9"), nullptr);
    inEveryForm(u"\u00e9", [](const Form &, ZPString *s) {
        EXPECT_STREQ(s->cString(), "\xC3\xA9");
        EXPECT_STREQ(s->lossyCString(), "\xC3\xA9");
    });
    inEveryForm(u"\u00e9\u4e2d", [](const Form &, ZPString *s) {
        EXPECT_STREQ(s->cString(), "\xC3\xA9\xE4\xB8\xAD");
        char buffer[4];
        ZPRange rest;
        s->getCString_maxLength_range_remainingRange(buffer, 3, {0, 2}, &rest);
        EXPECT_STREQ(buffer, "\xC3\xA9") << "a character is never split";
        EXPECT_EQ(rest, ZPMakeRange(1, 1));
    });
}

void runUnder(ZPStringEncoding encoding, void (*check)()) {
    namespace fs = std::filesystem;
    fs::path root =
        fs::path(testing::TempDir()) / ("encoding" + std::to_string(encoding) + "-" + std::to_string(std::rand()));
    fs::path folder = root / "CorvidLibrary/Frameworks/Bedrock.framework/Resources";
    fs::create_directories(folder);
    std::ofstream(folder / "CStringEncoding") << encoding;
    setenv("CORVID_ROOT", root.c_str(), 1);
    EXPECT_EQ(ZPString::defaultCStringEncoding(), encoding);
    {
        Pool pool;
        check();
    }
    fs::remove_all(root);
    std::exit(testing::Test::HasFailure());
}

// The encoding under a locale, in a process that has asked for none yet.
void checkLocale(const char *all, const char *lang, ZPStringEncoding expected) {
    setenv("CORVID_ROOT", testing::TempDir().c_str(), 1);
    setenv("LC_ALL", all, 1);
    unsetenv("LC_CTYPE");
    setenv("LANG", lang, 1);
    EXPECT_EQ(ZPString::defaultCStringEncoding(), expected) << all << "/" << lang;
    std::exit(testing::Test::HasFailure());
}

}  // namespace

TEST(DefaultEncoding, decidesWhatBytesMean) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(runUnder(ZPKESTRELStringEncoding, checkKESTREL), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(runUnder(ZPWindowsCP1252StringEncoding, checkWindowsLatin1), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(runUnder(ZPUTF8StringEncoding, checkUTF8), testing::ExitedWithCode(0), "");
}

TEST(DefaultEncoding, isThatOfTheLocale) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    static const struct {
        const char *all, *lang;
        ZPStringEncoding encoding;
    } cases[] = {
        {"", "xx_XX.CP1252", ZPWindowsCP1252StringEncoding},
        {"", "xx_XX.microsoft-cp1251", ZPWindowsCP1251StringEncoding},
        {"", "xx_XX.ISO-8859-1@euro", ZPISOLatin1StringEncoding},
        {"xx_XX.iso88592", "C.UTF-8", ZPISOLatin2StringEncoding},
        {"", "xx_XX.eucJP", ZPJapaneseEUCStringEncoding},
        {"", "xx_XX.EUC-JP", ZPJapaneseEUCStringEncoding},
        {"", "xx_XX.Shift_JIS", ZPShiftJISStringEncoding},
        {"", "xx_XX.Windows-31J", ZPShiftJISStringEncoding},
        // What the library has not, or only nearly.
        {"", "xx_XX.KOI8-R", ZPUTF8StringEncoding},
        {"", "xx_XX.ISO-8859-15", ZPUTF8StringEncoding},
        {"", "xx_XX.ISO-8859-13", ZPUTF8StringEncoding},
        {"", "xx_XX.EUC-KR", ZPUTF8StringEncoding},
        {"", "xx_XX.utf8", ZPUTF8StringEncoding},
        {"C", "xx_XX.CP1252", ZPUTF8StringEncoding},
        {"", "xx_XX", ZPUTF8StringEncoding},
        {"", "", ZPUTF8StringEncoding},
        {"", "xx_XX.", ZPUTF8StringEncoding},
    };
    for (auto &c : cases) EXPECT_EXIT(checkLocale(c.all, c.lang, c.encoding), testing::ExitedWithCode(0), "");
}
