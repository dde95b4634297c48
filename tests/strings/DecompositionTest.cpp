// SPDX-License-Identifier: MIT
// Decompositions, and the converters without their data files.
#include "EncodedText.h"
#include "ResourceRoot.h"

using namespace strings;

namespace {

std::u16string decomposed(unichar unit, unsigned (*decompose)(unichar, unichar *) = ZPDecomposeCharacter) {
    unichar units[ZPLongestDecomposition];
    unsigned n = decompose(unit, units);
    return {reinterpret_cast<char16_t *>(units), n};
}

// The check, and what it logs meanwhile.
void check(std::function<void(const ResourceRoot &)> work, const std::vector<std::string> &lines) {
    IN_A_ROOT([&](const ResourceRoot &root) {
        testing::internal::CaptureStderr();
        work(root);
        std::string logged = testing::internal::GetCapturedStderr();
        for (auto &line : lines) EXPECT_EQ(countOf(logged, line), 1u) << line;
    });
}
const char noTable[] = "Warning: unable to load character decomposition table.\n";

void checkMissing(const ResourceRoot &root) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(decoded("\xC6\xFC", ZPJapaneseEUCStringEncoding), u"<fails>");
        EXPECT_EQ(decoded("\x93\xFA", ZPShiftJISStringEncoding), u"<fails>");
        EXPECT_EQ(encodedOnce(u"\u65e5", ZPJapaneseEUCStringEncoding), "<fails>");
        EXPECT_EQ(decomposed(0xE9), u"\u00e9");
    }
    EXPECT_EQ(decoded("plain", ZPJapaneseEUCStringEncoding), u"plain");
    EXPECT_EQ(textOf(ZPString::localizedNameOfStringEncoding(1)), u"ASCII");
    // A file that comes later is found, also under the bare name.
    root.write("EUCToUnicode", std::string("\xFC\xC6\xE5\x65", 4));
    root.write("UnicodeToEUC-L.data", std::string("\xE5\x65\xFC\xC6", 4));
    EXPECT_EQ(decoded("\xC6\xFC", ZPJapaneseEUCStringEncoding), u"\u65e5");
    EXPECT_EQ(encodedOnce(u"\u65e5", ZPJapaneseEUCStringEncoding), "\xC6\xFC");
    EXPECT_EQ(decomposed(0xE9), u"\u00e9") << "the decompositions are not tried again";
}

void checkDamaged(const ResourceRoot &root) {
    // One entry whose list never ends; pairs whose codes are no pairs; half a pair.
    root.write("NonHangulDecomp.data", std::string("\0\0\0\0\1\0\0\0\xE9\0\6\0eee", 15));
    root.write("EUCToUnicode-L.data", std::string("\x41\x41\x42\x42\xFC\xC6\xE5\x65\xA1", 9));
    root.write("UnicodeToEUC-L.data", std::string("\xE5\x65\x20\x20\xE5\x66\xFC\xC6", 8));
    EXPECT_EQ(decomposed(0xE9), u"\u00e9");
    EXPECT_EQ(decoded("AA\xC6\xFC\xA1\xA1", ZPJapaneseEUCStringEncoding), std::u16string(u"AA\u65e5\0", 4));
    EXPECT_EQ(encodedOnce(u"\u65e5", ZPJapaneseEUCStringEncoding), "<fails>");
}

// A decomposable unit that a sound table lacks.
void checkHole(const ResourceRoot &root) {
    root.write("NonHangulDecomp.data", std::string("\0\0\0\0\1\0\0\0\xE9\0\6\0e\0\1\3\0\0", 18));
    EXPECT_EQ(decomposed(0xE9), u"e\u0301");
    EXPECT_REASON("Internal error in ZPDecomposeCharacter().", decomposed(0xE8));
    EXPECT_REASON("Internal error in ZPSimpleDecomposeCharacter().", decomposed(0xE8, ZPSimplyDecomposeCharacter));
}

}  // namespace

TEST(Decomposition, SeparatesWhatCombines) {
    EXPECT_EQ(decomposed('a'), u"a");
    EXPECT_EQ(decomposed(0x00E9), u"e\u0301");
    EXPECT_EQ(decomposed(0x01D6), u"u\u0308\u0304");
    EXPECT_EQ(decomposed(0x01D6, ZPSimplyDecomposeCharacter), u"\u00fc\u0304");
    EXPECT_EQ(decomposed(0x1FA7), u"\u03c9\u0314\u0342\u0345");
    EXPECT_EQ(decomposed(0x212B), u"A\u030a");
    EXPECT_EQ(decomposed(0xFACF), u"\U0002284a");
    EXPECT_EQ(decomposed(0xAC00), u"\uac00") << "Hangul stays";
    EXPECT_EQ(decomposed(0x4E2D), u"\u4e2d");
    // The set and the table agree about every unit, and two steps are always enough.
    for (unsigned u = 0; u < 0x10000; ++u)
        for (char16_t part : decomposed(static_cast<unichar>(u)))
            ASSERT_EQ(decomposed(part), std::u16string(1, part)) << u;
}

TEST(Decomposition, GoesOnWithoutSoundFiles) {
    check(checkMissing, {"ZPCharConversion: could not load EUCToUnicode conversion table.\n",
                         "ZPCharConversion: could not load UnicodeToEUC conversion table.\n", noTable});
    check(checkDamaged, {noTable});
    check(checkHole, {});
}
