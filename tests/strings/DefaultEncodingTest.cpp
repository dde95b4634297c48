// SPDX-License-Identifier: MIT
// C strings under different default encodings, each in a process of its own.
#include "ResourceRoot.h"

using namespace strings;

namespace {

void checkKESTREL() {
    ZPString *s = ZPString::stringWithCString("\xE9t\xE9");
    EXPECT_STREQ(s->isa->name, "ZPInlineCString");
    EXPECT_EQ(textOf(s), u"\u00e9t\u00e9");
    EXPECT_STREQ(make(u"\u00e9t\u00e9")->cString(), "\xE9t\xE9");
    EXPECT_EQ(s->displayableString(), s);
}

void checkWindowsLatin1() {
    ZPString *s = ZPString::stringWithCString("\xE9\x80");
    EXPECT_STREQ(s->isa->name, "ZPUnicodeString");
    EXPECT_EQ(textOf(s), u"\u00e9\u20ac");
    EXPECT_STREQ(s->cString(), "\xE9\x80");
    EXPECT_EQ(s->cStringLength(), 2u);
    inEveryForm(u"a\u00e9\u0001",
                [](const Form &, ZPString *t) { EXPECT_STREQ(t->displayableString()->cString(), "a\\U00e9\\001"); });

    ZPString *name = nullptr;
    EXPECT_EQ(reasonOf([] { make(u"a text of more than \u0416 units")->cString(); }, &name),
              "Conversion to cString failed for string \"a text of more than ...\"");
    EXPECT_TRUE(name->isEqual(ZPCharacterConversionException));
    char buffer[8];
    EXPECT_THROW(make(u"\u0416")->getCString(buffer), ZPException *);
    EXPECT_EQ(make(u"\u0416")->cStringLength(), 0u);
    EXPECT_STREQ(make(u"\u0416")->lossyCString(), "_");
    std::u16string many(1500, u'x');
    EXPECT_EQ(make(many + u"\u0416")->lossyCString(), std::string(1500, 'x') + "_");
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

}  // namespace

TEST(DefaultEncoding, decidesWhatBytesMean) {
    const std::pair<ZPStringEncoding, void (*)()> checks[] = {{ZPKESTRELStringEncoding, checkKESTREL},
                                                              {ZPWindowsCP1252StringEncoding, checkWindowsLatin1},
                                                              {ZPUTF8StringEncoding, checkUTF8}};
    for (auto [encoding, check] : checks)
        IN_A_ROOT([encoding = encoding, check = check](const ResourceRoot &root) {
            root.write("../CStringEncoding", std::to_string(encoding));
            EXPECT_EQ(ZPString::defaultCStringEncoding(), encoding);
            check();
        });
}

TEST(DefaultEncoding, isThatOfTheLocale) {
    // "LC_ALL/LANG"; what the library has not, or only nearly, is UTF-8.
    const std::pair<ZPStringEncoding, std::vector<std::string>> cases[] = {
        {ZPWindowsCP1252StringEncoding, {"/xx_XX.CP1252"}},
        {ZPWindowsCP1251StringEncoding, {"/xx_XX.microsoft-cp1251"}},
        {ZPISOLatin1StringEncoding, {"/xx_XX.ISO-8859-1@euro"}},
        {ZPISOLatin2StringEncoding, {"xx_XX.iso88592/C.UTF-8"}},
        {ZPJapaneseEUCStringEncoding, {"/xx_XX.eucJP", "/xx_XX.EUC-JP"}},
        {ZPShiftJISStringEncoding, {"/xx_XX.Shift_JIS", "/xx_XX.Windows-31J"}},
        {ZPUTF8StringEncoding,
         {"/xx_XX.KOI8-R", "/xx_XX.ISO-8859-15", "/xx_XX.ISO-8859-13", "/xx_XX.EUC-KR", "/xx_XX.utf8", "C/xx_XX.CP1252",
          "/xx_XX", "/", "/xx_XX."}},
    };
    for (auto &[encoding, locales] : cases)
        for (auto &locale : locales)
            IN_A_ROOT([&, wanted = encoding](const ResourceRoot &) {
                std::size_t at = locale.find('/');
                setenv("LC_ALL", locale.substr(0, at).c_str(), 1);
                unsetenv("LC_CTYPE");
                setenv("LANG", locale.substr(at + 1).c_str(), 1);
                EXPECT_EQ(ZPString::defaultCStringEncoding(), wanted) << locale;
            });
}
