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
void check(ZPString *(ZPString::*operation)(), std::initializer_list<const char16_t *> rows) {
    for (const char16_t *row : rows) {
        auto [path, wanted] = sides(row);
        inEveryForm(path, [&, &wanted = wanted](const Form &form, ZPString *s) {
            if (std::strcmp(form.name, "path store") == 0) s = s->stringByAppendingPathComponent(""_zp);
            EXPECT_EQ(textOf((s->*operation)()), wanted) << make(row)->cString();
        });
    }
}

bool isSeparator(char16_t u) { return u == '/' || u == '\\'; }
bool hasDrive(const std::u16string &p) {
    return p.size() >= 2 && p[1] == ':' && ((p[0] | 32) >= 'a' && (p[0] | 32) <= 'z' && p[0] < 128);
}
bool starts(const std::u16string &p, std::u16string_view head) { return p.compare(0, head.size(), head) == 0; }

// What standardizing does, rule by rule on whole strings.
std::u16string standardized(std::u16string p) {
    auto normalize = [](std::u16string &s) {
        std::u16string out = starts(s, u"\\\\") ? u"\\\\" : u"";
        for (std::size_t i = out.size(); i < s.size(); ++i)
            if (!isSeparator(s[i])) out += s[i];
            else if (i + 1 == s.size() || !isSeparator(s[i + 1])) out += u'\\';
        while (out.size() > (hasDrive(out) ? 3 : 1) && out.back() == '\\') out.pop_back();
        s = out;
    };
    normalize(p);
    bool network = starts(p, u"\\\\");
    while (p.size() >= (network ? 5 : 3) && p.ends_with(u"\\.")) p.erase(p.size() - 2);
    if (!network) {
        std::u16string rest = p;
        while (starts(rest, u".\\")) rest.erase(0, 2);
        p = rest != p && (starts(rest, u"~") || hasDrive(rest)) ? u".\\" + rest : rest;
    }
    for (std::size_t at = network ? 3 : 0; (at = p.find(u"\\.\\", at)) != p.npos;) p.erase(at, 2);

    bool tilde = starts(p, u"~"), drive = hasDrive(p) && p.size() >= 3 && p[2] == '\\';
    if (tilde || drive || network) {
        std::size_t root = drive ? 2 : p.find(u'\\', network ? 2 : 0);
        if (network && root != p.npos) root = p.find(u'\\', root + 1);
        if (root != p.npos) {
            List names{u""};
            for (char16_t u : p.substr(root + 1)) {
                if (u == '\\') names.emplace_back();
                else names.back() += u;
            }
            for (bool again = true; again;) {
                again = false;
                if (!tilde && names[0] == u"..") {
                    names.erase(names.begin());
                    again = true;
                }
                for (std::size_t i = 0; !again && i + 1 < names.size(); ++i)
                    if (names[i] != u".." && names[i + 1] == u"..") {
                        names.erase(names.begin() + i, names.begin() + i + 2);
                        again = true;
                    }
                if (names.empty()) names.emplace_back(), again = false;
            }
            p.resize(root + 1);
            for (std::size_t i = 0; i < names.size(); ++i) p += (i ? u"\\" : u"") + names[i];
        }
    }
    normalize(p);
    return p;
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
        if (!starts(textOf(plain), u"\\\\")) {
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

TEST_F(Paths, AreStandardizedByTheRules) {
    std::mt19937 random(17);
    std::size_t changed = 0;
    for (int i = 0; i < 60000; ++i) {
        Pool each;
        static const char16_t *const heads[] = {u"", u"C:", u"C:\\", u"\\\\s\\h\\", u"\\\\", u".\\", u"~x\\"};
        std::u16string text = heads[random() % 7] + randomText(random, 14, i % 2 ? u"\\\\..a" : u"/\\.a:~C\u00e9");
        ZPString *result = i % 3 ? make(text)->stringByStandardizingPath() : store(text)->stringByStandardizingPath();
        std::u16string wanted = text == u"~" || (text.size() > 1 && text[0] == '~' && isSeparator(text[1]))
                                    ? standardized(u"C:\\Users\\me" + text.substr(1))
                                    : standardized(text);
        ASSERT_EQ(textOf(result), wanted) << make(text)->cString();
        ASSERT_EQ(textOf(result->stringByStandardizingPath()), wanted) << make(text)->cString();
        changed += wanted != text;
    }
    EXPECT_GT(changed, 10000u);
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
