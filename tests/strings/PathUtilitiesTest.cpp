// SPDX-License-Identifier: MIT
// Splitting, joining, standardizing and abbreviating paths. The home directory of the process is C:\Users\me.
#include "StringForms.h"

using namespace strings;

namespace {

[[maybe_unused]] const bool homeIsSet = !setenv("HOMEDRIVE", "C:", 1) && !setenv("HOMEPATH", "\\Users\\me", 1);

struct Paths : testing::Test {
    LogCapture log;
};

ZPPathStore2 *store(const std::u16string &text) {
    return ZPPathStore2::pathStoreWithCharacters_length(text.data(), unsigned(text.size()));
}

// Rows of "path -> answer". A path store works on its own units, which operations have written with backslashes.
void check(ZPString *(ZPString::*operation)() &, std::initializer_list<const char16_t *> rows) {
    for (const char16_t *row : rows) {
        auto [path, wanted] = sides(row);
        inEveryForm(path, [&, &wanted = wanted](const Form &form, ZPString *s) {
            if (std::strcmp(form.name, "path store") == 0) s = s->stringByAppendingPathComponent(""_zp);
            EXPECT_EQ(textOf((s->*operation)()), wanted) << make(row)->cString();
        });
    }
}

}  // namespace

TEST_F(Paths, AreSplit) {
    check(&ZPString::lastPathComponent,
          {u"C:\\dir\\file.txt -> file.txt", u"C:x -> x", u"\\ -> \\", u"a -> a", u"a/b// -> b", u" -> ", u"C:\\ -> \\",
           u"\\\\srv\\share -> share", u"/usr/caf\u00e9 -> caf\u00e9"});
    check(&ZPString::stringByDeletingLastPathComponent,
          {u"C:\\dir -> C:\\", u"\\dir -> \\", u"dir -> ", u"C:\\dir\\sub -> C:\\dir", u"C:x -> C:", u"a//b/ -> a",
           u"C:/a/b -> C:\\a", u" -> "});
    check(&ZPString::pathExtension, {u"archive.tar.gz -> gz", u"dir.d\\file -> ", u".profile -> ", u"a//b.txt -> txt",
                                     u"C:.txt -> ", u"a. -> ", u" -> ", u"x.\u4e2d -> \u4e2d"});
    check(&ZPString::stringByDeletingPathExtension,
          {u"dir\\archive.tar.gz -> dir\\archive.tar", u"C:\\.profile -> C:\\.profile", u"a.b/ -> a"});
    ZPPathStore2 *one = store(u"name");
    EXPECT_EQ(one->lastPathComponent(), one) << "nothing to cut";
    EXPECT_STREQ("C:\\a\\b"_zp->lastPathComponent()->isa->name, "ZPPathStore2");
}

TEST_F(Paths, AreTakenToPiecesAndPutTogether) {
    for (auto &[path, wanted] : {std::pair{u"C:\\a", List{u"C:", u"\\", u"a"}},
                                 {u"C:\\a\\\\b\\", {u"C:", u"\\", u"a", u"b"}},
                                 {u"\\\\server\\share", {u"\\", u"server", u"share"}},
                                 {u"/\u4e2d", {u"/", u"\u4e2d"}},
                                 {u"c:x", {u"c:", u"x"}},
                                 {u"", {}}})
        inEveryForm(path,
                    [&, &parts = wanted](const Form &, ZPString *s) { EXPECT_EQ(listOf(s->pathComponents()), parts); });
    auto joined = [](std::initializer_list<ZPString *> parts) {
        ZPMutableArray *list = ZPMutableArray::array();
        for (ZPString *p : parts) list->addObject(p);
        return textOf(ZPString::pathWithComponents(list));
    };
    EXPECT_EQ(joined({}), u"");
    EXPECT_EQ(joined({"C:"_zp, "\\"_zp, "a"_zp, ""_zp, "b/"_zp}), u"C:\\a\\b");
    EXPECT_EQ(joined({"a"_zp, "D:\\x"_zp, "b"_zp}), u"a\\b") << "a drive behind a name is left out";
    EXPECT_EQ(log.text, "*** +[ZPPathStore2 pathWithComponents:]: cannot append path 'D:\\x' to path 'a'");

    std::mt19937 random(3);
    for (int i = 0; i < 2000; ++i) {
        std::u16string text = randomText(random, 10, u"a./\\\u00e9");
        if (i % 3 == 0) text = u"C:" + text;
        ZPString *plain = make(text)->stringByAppendingPathComponent(""_zp);
        if (!textOf(plain).starts_with(u"\\\\")) {
            EXPECT_EQ(textOf(ZPString::pathWithComponents(make(text)->pathComponents())), textOf(plain));
        }
    }
}

TEST_F(Paths, AreJoined) {
    auto joined = [&](const std::u16string &a, const std::u16string &b) {
        log.text.clear();
        return textOf(make(a)->stringByAppendingPathComponent(make(b)));
    };
    EXPECT_EQ(joined(u"C:\\dir", u"D:\\x"), u"C:\\dir");
    const std::string refused = " stringByAppendingPathComponent:]: cannot append path 'D:\\x' to path 'C:\\dir'";
    EXPECT_EQ(log.text, "*** -[ZPUnicodeString" + refused);
    for (auto &[both, wanted] : rows(u"C:+x -> C:x", u"+x -> x", u"+C:\\x -> C:\\x", u"/+x -> \\x", u"a/+/b/ -> a\\b",
                                     u"\\\\+srv -> \\\\srv", u"a+\\\\srv -> a", u"dir+ -> dir"))
        EXPECT_EQ(joined(both.substr(0, both.find('+')), both.substr(both.find('+') + 1)), wanted);
    std::u16string longest(3000, u'd'), more(2000, u'e');
    EXPECT_EQ(joined(longest, u"x").size(), 3002u);
    EXPECT_EQ(joined(longest, more), longest);
    EXPECT_EQ(store(longest)->stringByAppendingPathComponent(make(more))->length(), 5001u)
        << "only what cannot follow is refused";
    ZPPathStore2 *dir = store(u"C:\\dir");
    log.text.clear();
    EXPECT_EQ(dir->stringByAppendingPathComponent("D:\\x"_zp), dir);
    EXPECT_EQ(log.text, "*** -[ZPPathStore2" + refused);
    ZPArray *paths = ZPArray::arrayWithObjects("a"_zp, "D:"_zp);
    EXPECT_EQ(listOf(dir->stringsByAppendingPaths(paths)), (List{u"C:\\dir\\a", u"C:\\dir"}));
    EXPECT_EQ(listOf(store(u"")->stringsByAppendingPaths(paths)), (List{u"a", u"D:"}));
}

TEST_F(Paths, TakeExtensions) {
    auto extended = [](const char16_t *path, const char16_t *extension) {
        std::u16string result = textOf(make(path)->stringByAppendingPathExtension(make(extension)));
        if (textOf(store(path)) == path) {
            EXPECT_EQ(textOf(store(path)->stringByAppendingPathExtension(make(extension))), result);
        }
        return result;
    };
    EXPECT_EQ(extended(u"a/", u"txt"), u"a.txt");
    EXPECT_EQ(extended(u"C:\\a", u""), u"C:\\a.");
    EXPECT_EQ(extended(u"~\\a", u"txt"), u"~\\a.txt");
    for (const char16_t *path : {u"", u"/", u"\\", u"~", u"~me", u"C:", u"\\\\", u"C:\\"}) {
        log.text.clear();
        EXPECT_EQ(extended(path, u"txt"), path);
        EXPECT_HAS(log.text, "PathExtension:]: cannot append extension 'txt' to path '");
    }
    for (const char16_t *none : {u"/b", u"C:b"}) EXPECT_EQ(extended(u"a", none), u"a");
    ZPArray *files = ZPArray::arrayWithObjects("a.txt"_zp, "b.c"_zp, "txt"_zp, "d/e.txt"_zp, "f."_zp);
    EXPECT_EQ(listOf(files->pathsMatchingExtensions(ZPArray::arrayWithObjects("txt"_zp, ""_zp))),
              (List{u"a.txt", u"d/e.txt"}));
}

TEST_F(Paths, AreAbsoluteOrNot) {
    for (const char16_t *path : {u"C:\\x", u"z:/", u"\\\\srv\\share", u"~", u"~me\\x"})
        inEveryForm(path, [](const Form &, ZPString *s) { EXPECT_TRUE(s->isAbsolutePath()); });
    for (const char16_t *path : {u"/usr", u"C:", u"x", u"", u"//srv", u"C:x", u"1:\\", u"\u0143:\\"})
        inEveryForm(path, [](const Form &, ZPString *s) { EXPECT_FALSE(s->isAbsolutePath()); });
}

TEST_F(Paths, KnowTheHomeDirectory) {
    check(&ZPString::stringByExpandingTildeInPath,
          {u"~\\docs -> C:\\Users\\me\\docs", u"~ -> C:\\Users\\me", u"~/a//b -> C:\\Users\\me\\a\\b",
           u"~nobody at all\\x -> ~nobody at all\\x", u"a~ -> a~", u" -> "});
    check(&ZPString::stringByAbbreviatingWithTildeInPath,
          {u"C:\\Users\\me\\docs -> ~\\docs", u"C:\\Users\\me -> ~", u"C:/Users/me/ -> ~",
           u"C:\\Users\\meX -> C:\\Users\\meX", u"c:\\Users\\me -> c:\\Users\\me", u"C:\\Users -> C:\\Users",
           u"\\ -> \\", u" -> "});
    std::u16string tail(5000, u't');
    EXPECT_EQ(textOf(make(u"~\\" + tail)->stringByExpandingTildeInPath()).substr(0, 3), u"~\\t")
        << "no room, so nothing is lost";
}

TEST_F(Paths, AreStandardized) {
    check(&ZPString::stringByStandardizingPath,
          {u"a/b//c/ -> a\\b\\c", u"C:/x/./y/../z -> C:\\x\\z", u"C:\\a\\..\\..\\b -> C:\\b", u"C:\\..\\b -> C:\\b",
           u"C:\\a\\b\\.. -> C:\\a", u"C:\\x\\. -> C:\\x", u"\\\\srv\\share\\..\\b -> \\\\srv\\share\\b",
           u".\\.\\a -> a", u"a\\..\\b -> a\\..\\b", u"\\a\\..\\b -> \\a\\..\\b", u"C:\\a\\.. -> C:\\",
           u"\\\\srv\\share\\a\\.. -> \\\\srv\\share", u"\\\\srv\\..\\x -> \\\\srv\\..\\x",
           u"C:\\.\\..\\...\\..a -> C:\\...\\..a", u"~/../x -> C:\\Users\\x", u" -> ", u"/ -> \\", u"C:\\. -> C:",
           // What is taken away leaves the same file named.
           u".\\~ -> .\\~", u"././/c:x -> .\\c:x", u"~nobody at all\\..\\a\\..\\b -> ~nobody at all\\..\\b"});
}

// With a drive as the host's own are, but for `C:\.`; whatever comes out is standardized.
TEST_F(Paths, AreStandardizedLikeTheHosts) {
    std::mt19937 random(17);
    static const char16_t *const heads[] = {u"C:\\", u"", u"C:", u"\\\\s\\h\\", u"\\\\", u".\\", u"~x\\"};
    for (int i = 0; i < 60000; ++i) {
        Pool each;
        std::u16string names = randomText(random, 14, i % 2 ? u"\\\\..a" : u"/\\.a~C\u00e9"),
                       text = heads[i % 7] + names;
        ZPString *path = i % 3 ? make(text) : store(text), *result = path->stringByStandardizingPath();
        ASSERT_EQ(textOf(result->stringByStandardizingPath()), textOf(result)) << make(text)->cString();
        if (i % 7 || textOf(result) == u"C:") continue;
        std::replace(names.begin(), names.end(), u'\\', u'/');
        std::u16string wanted = std::filesystem::path(u"/" + names).lexically_normal().u16string();
        while (wanted.size() > 1 && wanted.back() == '/') wanted.pop_back();
        std::replace(wanted.begin(), wanted.end(), u'/', u'\\');
        ASSERT_EQ(textOf(result), u"C:" + wanted) << make(text)->cString();
    }
}

TEST_F(Paths, MayBeLongerThanTheHostsLongest) {
    std::u16string text = u"C:\\";
    for (int i = 0; i < 20000; ++i) text += u"name\\.\\x\\..\\";
    ZPString *path = make(text)->stringByStandardizingPath();
    EXPECT_EQ(path->length(), 3u + 20000 * 5 - 1);
    EXPECT_EQ(path->pathComponents()->count(), 20002u);
    EXPECT_EQ(textOf(path->lastPathComponent()), u"name");
    EXPECT_EQ(path->stringByResolvingSymlinksInPath()->length(), path->length());
}

TEST_F(Paths, AreStringsOfTheirOwn) {
    ZPPathStore2 *path = store(u"C:\\caf\u00e9\\\\");
    EXPECT_EQ(textOf(path), u"C:\\caf\u00e9");
    EXPECT_EQ(textOf(ZPPathStore2::pathStoreWithCString("a/\xE4\xB8\xAD/")), u"a/\u4e2d");
    EXPECT_EQ(ZPPathStore2::pathStoreWithCString("\xFF"), nullptr);
    EXPECT_EQ(path->hash(), make(u"C:\\caf\u00e9")->hash());
    TestZone zone;
    ZPRef<ZPString> elsewhere = ZPAdopt<ZPString>(path->copyWithZone(zone));
    EXPECT_EQ(ZPZoneFromPointer(elsewhere.get()), zone.zone);
    EXPECT_TRUE(elsewhere->isEqual(path));
}
