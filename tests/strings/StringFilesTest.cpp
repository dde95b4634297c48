// SPDX-License-Identifier: MIT
// Texts in files.
#include "StringForms.h"

using namespace strings;

namespace {

struct TemporaryFile {
    std::filesystem::path path =
        std::filesystem::path(testing::TempDir()) / ("strings" + std::to_string(std::random_device()()));
    ~TemporaryFile() { std::filesystem::remove(path); }
    ZPString *name() { return ZPString::stringWithCString(path.c_str()); }
    void write(const std::string &bytes) { std::ofstream(path, std::ios::binary) << bytes; }
    std::string read() {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
};

}  // namespace

TEST(StringFiles, writtenTextsComeBack) {
    TemporaryFile file;
    for (std::u16string text : {std::u16string(), std::u16string(u"plain text\n"), std::u16string(5000, u'x')})
        for (BOOL atomically : {YES, NO})
            inEveryForm(text, [&](const Form &, ZPString *s) {
                ASSERT_TRUE(s->writeToFile_atomically(file.name(), atomically));
                EXPECT_EQ(file.read(), std::string(text.begin(), text.end()));
                EXPECT_TRUE(ZPString::stringWithContentsOfFile(file.name())->isEqual(s));
            });
    ZPString *wide = make(u"\u4e2d\u6587 \u00e9");
    ASSERT_TRUE(wide->writeToFile_atomically(file.name(), YES));
    EXPECT_TRUE(ZPString::stringWithContentsOfFile(file.name())->isEqual(wide));
    EXPECT_FALSE(wide->writeToFile_atomically("/nowhere/at/all/file"_zp, NO));
}

TEST(StringFiles, byteOrderMarksDecide) {
    TemporaryFile file;
    file.write(std::string("\xFF\xFE"
                           "a\0b\0",
                           6));
    EXPECT_EQ(textOf(ZPString::stringWithContentsOfFile(file.name())), u"ab");
    file.write(std::string("\xFE\xFF\0a", 4));
    EXPECT_EQ(textOf(ZPString::stringWithContentsOfFile(file.name())), u"a");
    file.write("\xFF\xFE");
    EXPECT_EQ(ZPString::stringWithContentsOfFile(file.name()), ""_zp);
    // Of odd length it is text in the default encoding, or none.
    file.write("\xFF\xFE"
               "a");
    ZPString *odd = ZPString::stringWithContentsOfFile(file.name());
    EXPECT_TRUE(!odd || odd->length() == 3);
    EXPECT_EQ(ZPString::stringWithContentsOfFile("/nowhere/at/all"_zp), nullptr);
}
