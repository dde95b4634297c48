// Splitting and joining paths, and their form for the file system.
#include "StringForms.h"

using namespace strings;

namespace {

struct Paths : testing::Test {
    Pool pool;
};

void check(ZPString *(ZPString::*operation)(), const char16_t *path, const char16_t *wanted) {
    inEveryForm(path, [&](const Form &, ZPString *s) { EXPECT_EQ(textOf((s->*operation)()), wanted) << make(path)->cString(); });
}

}  // namespace

TEST_F(Paths, AreSplit) {
    using S = ZPString;
    const char16_t *last[][2] = {{u"C:\\dir\\file.txt", u"file.txt"}, {u"C:x", u"x"}, {u"\\", u"\\"}, {u"a", u"a"}, {u"a/b//", u"b"}, {u"", u""},
                                 {u"C:\\", u"\\"}, {u"\\\\srv\\share", u"share"}, {u"/usr/caf\u00e9", u"caf\u00e9"}};
    for (auto &c : last) check(&S::lastPathComponent, c[0], c[1]);
    const char16_t *directory[][2] = {{u"C:\\dir", u"C:\\"}, {u"\\dir", u"\\"}, {u"dir", u""}, {u"C:\\dir\\sub", u"C:\\dir"}, {u"C:x", u"C:"},
                                      {u"a//b/", u"a"}, {u"C:/a/b", u"C:\\a"}, {u"", u""}};
    for (auto &c : directory) check(&S::stringByDeletingLastPathComponent, c[0], c[1]);
    const char16_t *extension[][2] = {{u"archive.tar.gz", u"gz"}, {u"dir.d\\file", u""}, {u".profile", u""}, {u"a//b.txt", u"txt"}, {u"C:.txt", u""},
                                      {u"a.", u""}, {u"", u""}, {u"x.\u4e2d", u"\u4e2d"}};
    for (auto &c : extension) check(&S::pathExtension, c[0], c[1]);
    check(&S::stringByDeletingPathExtension, u"dir\\archive.tar.gz", u"dir\\archive.tar");
}

TEST_F(Paths, AreJoined) {
    auto joined = [](const char16_t *a, const char16_t *b) { return textOf(make(a)->stringByAppendingPathComponent(make(b))); };
    EXPECT_EQ(joined(u"C:\\dir", u"D:\\x"), u"C:\\dir");
    EXPECT_EQ(joined(u"C:", u"x"), u"C:x");
    EXPECT_EQ(joined(u"", u"x"), u"x");
    EXPECT_EQ(joined(u"", u"C:\\x"), u"C:\\x");
    EXPECT_EQ(joined(u"/", u"x"), u"\\x");
    EXPECT_EQ(joined(u"a/", u"/b/"), u"a\\b");
    EXPECT_EQ(joined(u"\\\\", u"srv"), u"\\\\srv");
    EXPECT_EQ(joined(u"dir", u""), u"dir");
    std::u16string longest(3000, u'd'), more(2000, u'e');
    EXPECT_EQ(joined(longest.c_str(), u"x").size(), 3002u);
    EXPECT_EQ(joined(longest.c_str(), more.c_str()), longest);
}

TEST_F(Paths, GoToTheFileSystemInItsEncoding) {
    EXPECT_STREQ("C:/x/y"_zp->fileSystemRepresentation(), "C:\\x\\y");
    EXPECT_STREQ(make(u"/caf\u00e9/\u4e2d")->fileSystemRepresentation(), "\\caf\xC3\xA9\\\xE4\xB8\xAD");
    char buffer[5];
    EXPECT_TRUE("/abc"_zp->getFileSystemRepresentation_maxLength(buffer, 5));
    EXPECT_STREQ(buffer, "\\abc");
    EXPECT_FALSE("/abcd"_zp->getFileSystemRepresentation_maxLength(buffer, 5));
    EXPECT_FALSE(""_zp->getFileSystemRepresentation_maxLength(buffer, 5));
    EXPECT_FALSE(make(std::u16string(u"a\0b", 3))->getFileSystemRepresentation_maxLength(buffer, 5)) << "no name has a NUL";
    EXPECT_NE(raised([] { ""_zp->fileSystemRepresentation(); }), "");
}
