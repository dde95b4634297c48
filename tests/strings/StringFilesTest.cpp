// SPDX-License-Identifier: MIT
// Texts in files.
#include "StringForms.h"

using namespace strings;

TEST(StringFiles, writtenTextsComeBack) {
    Directory dir;
    ZPString *file = dir / "file";
    for (std::u16string text : {std::u16string(), std::u16string(u"plain text\n"), std::u16string(5000, u'x')})
        for (BOOL atomically : {YES, NO})
            inEveryForm(text, [&](const Form &, ZPString *s) {
                ASSERT_TRUE(s->writeToFile_atomically(file, atomically));
                EXPECT_EQ(dir.read("file"), std::string(text.begin(), text.end()));
                EXPECT_TRUE(ZPString::stringWithContentsOfFile(file)->isEqual(s));
            });
    ZPString *wide = make(u"\u4e2d\u6587 \u00e9");
    ASSERT_TRUE(wide->writeToFile_atomically(file, YES));
    EXPECT_TRUE(ZPString::stringWithContentsOfFile(file)->isEqual(wide));
    EXPECT_FALSE(wide->writeToFile_atomically("/nowhere/at/all/file"_zp, NO));
}

TEST(StringFiles, byteOrderMarksDecide) {
    using namespace std::string_literals;
    Directory dir;
    ZPString *file = dir / "file";
    for (auto &[bytes, wanted] : {std::pair{"\xFF\xFE\x61\0b\0"s, u"ab"}, {"\xFE\xFF\0a"s, u"a"}, {"\xFF\xFE"s, u""}}) {
        dir.write("file", bytes);
        EXPECT_EQ(textOf(ZPString::stringWithContentsOfFile(file)), wanted);
    }
    // Of odd length it is text in the default encoding, or none.
    dir.write("file", "\xFF\xFE\x61");
    ZPString *odd = ZPString::stringWithContentsOfFile(file);
    EXPECT_TRUE(!odd || odd->length() == 3);
    EXPECT_EQ(ZPString::stringWithContentsOfFile("/nowhere/at/all"_zp), nullptr);
}
