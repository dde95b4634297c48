// SPDX-License-Identifier: MIT
// Paths and the host: names of any bytes, links, completion, users and directories.
#include "ResourceRoot.h"

#include <optional>

using namespace strings;
namespace fs = std::filesystem;

namespace {

std::u16string pathOf(const fs::path &host) {
    char buffer[4200];
    EXPECT_TRUE(ZPPathFromHostPath(host.c_str(), buffer, sizeof buffer));
    return textOf(ZPString::stringWithCString(buffer));
}

std::string hostOf(ZPString *path) {
    char buffer[4200];
    return ZPHostPathFromPath(path->fileSystemRepresentation(), buffer, sizeof buffer) ? buffer : "<none>";
}

// A variable of the environment while it lives; null: none.
struct Setting {
    const char *name;
    std::optional<std::string> before;
    Setting(const char *name, const char *value) : name(name) {
        if (const char *old = std::getenv(name)) before = old;
        value ? setenv(name, value, 1) : unsetenv(name);
    }
    ~Setting() { before ? setenv(name, before->c_str(), 1) : unsetenv(name); }
};

struct PathFiles : testing::Test {
    Directory dir;
    fs::path root = fs::canonical(dir.path);

    PathFiles() {
        fs::create_directories(root / "docs/deep/only");
        for (const char *file : {"docs/deep/only/file", "report.txt", "report.doc", "Readme", "RELEASE"})
            std::ofstream(root / file);
        fs::create_directory(root / "reports");
    }
    ZPString *path(const char *below = "") { return make(pathOf(root / below)); }

    struct Completion {
        unsigned count;
        std::u16string text;
        List matches;
    };
    Completion complete(const std::u16string &start, BOOL caseSensitive = YES, ZPArray *extensions = nullptr) {
        ZPString *text = nullptr;
        ZPArray *matches = nullptr;
        Completion c{make(start)->completePathIntoString_caseSensitive_matchesIntoArray_filterTypes(
                         &text, caseSensitive, &matches, extensions),
                     u"",
                     {}};
        EXPECT_EQ(make(start)->completePathIntoString_caseSensitive_matchesIntoArray_filterTypes(nullptr, caseSensitive,
                                                                                                 nullptr, extensions),
                  c.count);
        EXPECT_EQ(c.count != 0, text != nullptr);
        if (!text) return c;
        EXPECT_EQ(matches->count(), c.count);
        std::u16string top = pathOf(root) + u"\\";
        c.text = textOf(text).substr(top.size());
        for (auto &match : listOf(matches)) c.matches.push_back(match.substr(top.size()));
        std::sort(c.matches.begin(), c.matches.end());
        return c;
    }
};

}  // namespace

TEST_F(PathFiles, GoToTheFileSystemInItsEncoding) {
    EXPECT_STREQ("C:/x/y"_zp->fileSystemRepresentation(), "C:\\x\\y");
    inEveryForm(u"/caf\u00e9/\u4e2d", [](const Form &, ZPString *s) {
        EXPECT_STREQ(s->fileSystemRepresentation(), "\\caf\xC3\xA9\\\xE4\xB8\xAD");
    });
    EXPECT_STREQ(make(u"a\xDCFF\xDC80")->fileSystemRepresentation(), "a\xFF\x80");
    char buffer[5];
    EXPECT_TRUE("/abc"_zp->getFileSystemRepresentation_maxLength(buffer, 5));
    EXPECT_STREQ(buffer, "\\abc");
    EXPECT_FALSE("/abcd"_zp->getFileSystemRepresentation_maxLength(buffer, 5));
    EXPECT_FALSE("a"_zp->getFileSystemRepresentation_maxLength(buffer, 0));
    EXPECT_FALSE(""_zp->getFileSystemRepresentation_maxLength(buffer, 5));
    EXPECT_FALSE(make(std::u16string(u"a\0b", 3))->getFileSystemRepresentation_maxLength(buffer, 5))
        << "no name has a NUL";
    EXPECT_FALSE(make(u"\xD800")->getFileSystemRepresentation_maxLength(buffer, 5));
    EXPECT_REFUSED(""_zp->fileSystemRepresentation());
}

TEST_F(PathFiles, NamesOfAnyBytesAreListedOpenedAndRemoved) {
    const std::string names[] = {"\xFF", "caf\xE9", "\xED\xA0\x80", "\xC0\xAF", "a\xE2\x82", "\xF0\x9F\x98\x80\x80"};
    fs::path folder = root / "bytes";
    fs::create_directory(folder);
    for (auto &name : names) std::ofstream(folder / name) << name;
    ZPArray *matches = nullptr;
    ZPString *start = make(pathOf(folder) + u"\\");
    ASSERT_EQ(start->completePathIntoString_caseSensitive_matchesIntoArray_filterTypes(nullptr, YES, &matches, nullptr),
              std::size(names));
    for (unsigned i = 0; i < matches->count(); ++i) {
        ZPString *file = matches->objectAtIndex(i);
        EXPECT_EQ(hostOf(file->stringByResolvingSymlinksInPath()), hostOf(file));
        ZPData *data = ZPData::dataWithContentsOfFile(file);
        ASSERT_TRUE(data);
        std::string name(static_cast<const char *>(data->bytes()), data->length());
        EXPECT_EQ(hostOf(file), folder / name);
        EXPECT_TRUE(fs::remove(hostOf(file)));
    }
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(PathFiles, LinksAreResolved) {
    fs::create_directory_symlink(root / "docs/deep", root / "shortcut");
    fs::create_symlink("loop", root / "loop");
    fs::create_symlink("nowhere", root / "dangling");
    fs::create_directory(root / "a\\b");
    fs::create_directory_symlink(root / "a\\b", root / "unnamed");
    auto resolved = [&](const std::u16string &below) {
        std::u16string top = pathOf(root), real = textOf(make(top + below)->stringByResolvingSymlinksInPath());
        // A path without a drive is the host's own too, and stays so.
        EXPECT_EQ(textOf(make(top.substr(2) + below)->stringByResolvingSymlinksInPath()), real.substr(2));
        EXPECT_EQ(textOf(make(u"c" + top.substr(1) + below)->stringByResolvingSymlinksInPath()), real)
            << "the drive's one spelling";
        return real.substr(top.size());
    };
    // What is not there stays, and so does what leads where no path can say.
    for (auto &[below, wanted] :
         rows(u"\\shortcut\\only -> \\docs\\deep\\only", u"\\shortcut\\new\\file -> \\docs\\deep\\new\\file",
              u"\\Readme\\x -> \\Readme\\x", u"\\loop\\x -> \\loop\\x", u"\\dangling -> \\dangling",
              u"\\unnamed\\x -> \\unnamed\\x", u" -> "))
        EXPECT_EQ(resolved(below), wanted);
    for (auto &[path, wanted] : rows(u"\\\\SRV\\Share\\Dir -> \\\\srv\\share\\Dir", u"d:\\x -> D:\\x", u"C:\\ -> C:\\",
                                     u"C:\\nothing such\\x -> C:\\nothing such\\x", u"/ -> \\",
                                     u"relative\\x -> relative\\x", u"~nobody at all\\x -> ~nobody at all\\x", u" -> "))
        EXPECT_EQ(textOf(make(path)->stringByResolvingSymlinksInPath()), wanted);
}

TEST_F(PathFiles, AreCompleted) {
    std::u16string top = pathOf(root) + u"\\";
    Completion reports = complete(top + u"rep");
    EXPECT_EQ(reports.text, u"report");
    EXPECT_EQ(reports.matches, (List{u"report.doc", u"report.txt", u"reports"}));
    EXPECT_EQ(complete(top + u"Re").text, u"Readme") << "case counts when names are looked for";
    EXPECT_EQ(complete(top + u"R").text, u"R");
    EXPECT_EQ(complete(top + u"R", NO).count, 2u);
    EXPECT_EQ(complete(top + u"nothing").count, 0u);
    EXPECT_EQ(complete(u"~me").count, 0u);
    Completion deep = complete(top + u"do");
    EXPECT_EQ(deep.count, 1u);
    EXPECT_EQ(deep.text, u"docs\\deep\\only\\file") << "through directories with one entry";
    EXPECT_EQ(complete(top + u"reports").text, u"reports") << "an empty directory";
    EXPECT_EQ(complete(top + u"report.d").matches, (List{u"report.doc"}));
    Completion filtered = complete(top + u"rep", YES, ZPArray::arrayWithObject("txt"_zp));
    EXPECT_EQ(filtered.matches, (List{u"report.txt", u"reports"})) << "directories can lead to such a file";
    EXPECT_EQ(complete(top + u"R", YES, ZPArray::arrayWithObject("txt"_zp)).count, 0u);
    std::ofstream(root / "docs/c:odd");
    EXPECT_EQ(complete(top + u"docs/").text, u"docs\\deep\\only\\file") << "no path continues with a drive";
    for (const char16_t *name : {u"e\u0301x", u"e\u0300y"}) std::ofstream(root / "reports" / name);
    EXPECT_EQ(complete(top + u"reports/").text, u"reports\\") << "whole composed characters";
}

TEST_F(PathFiles, CompletionEndsWherePathsBecomeTooLong) {
    // A chain of directories, each the only one in its parent; no path names the last.
    fs::path start = fs::current_path(), below = root / "chain";
    fs::create_directory(below);
    fs::current_path(below);
    const std::string name(250, 'n');
    while (below.native().size() + 2 + 251 <= 4095) {
        fs::create_directory(name);
        fs::current_path(name);
        below /= name;
    }
    fs::create_directory(name);
    fs::current_path(start);
    EXPECT_EQ(complete(pathOf(root) + u"\\ch").count, 1u);
    LogCapture log;
    EXPECT_EQ(complete(pathOf(below) + u"\\").count, 0u);
}

TEST_F(PathFiles, UsersHaveHomes) {
    ZPString *me = ZPUserName();
    ASSERT_TRUE(me);
    EXPECT_EQ(ZPUserName(), me);
    EXPECT_EQ(textOf(ZPHomeDirectory()), u"C:\\Users\\me");
    EXPECT_TRUE(ZPHomeDirectoryForUser(me)->isEqual(ZPHomeDirectory()));
    EXPECT_EQ(ZPHomeDirectoryForUser("nobody at all"_zp), nullptr);
    auto homeUnder = [&](const char *drive, const char *path, const char *host) {
        Setting driveIs("HOMEDRIVE", drive), pathIs("HOMEPATH", path), hostIs("HOME", host);
        ZPString *found = ZPHomeDirectoryForUser(me);
        return found ? textOf(found) : u"<none>";
    };
    EXPECT_EQ(homeUnder("D:", "/a/../b/", "/x"), u"D:\\b");
    EXPECT_EQ(homeUnder("D:", nullptr, "/home/\xFFx/"), u"C:\\home\\\xDCFFx");
    EXPECT_EQ(homeUnder("", "", "/home/x"), u"C:\\home\\x") << "an empty home is none";
    EXPECT_EQ(homeUnder("", "~", "/home/x"), u"<none>") << "nor is one that names itself";
    EXPECT_NE(homeUnder("", "", "relative"), u"relative");
    EXPECT_EQ(textOf(ZPHomeDirectory()), u"C:\\Users\\me") << "kept";
}

TEST_F(PathFiles, DirectoriesThatProgramsAskFor) {
    auto temporary = [](const char *directory) {
        Setting is("TMPDIR", directory);
        return ZPTemporaryDirectory();
    };
    EXPECT_EQ(textOf(temporary("/var//tmp/./x/")), u"C:\\var\\tmp\\x");
    EXPECT_EQ(textOf(temporary(nullptr)), u"C:\\tmp");
    for (const char *root : {"/.", "/", "/./", "//.", "/.."}) {
        ZPString *path = temporary(root);
        EXPECT_TRUE(path->isAbsolutePath()) << root;
        EXPECT_EQ(text(path->stringByStandardizingPath()), text(path)) << root;
    }
    std::u16string installed = textOf(ZPLodestarRootDirectory());
    EXPECT_TRUE(fs::is_directory(hostOf(ZPCorvidRootDirectory())));
    EXPECT_EQ(textOf(ZPStandardApplicationPaths()->objectAtIndex(3)), installed + u"\\CorvidDeveloper\\Apps");
    EXPECT_EQ(textOf(ZPStandardLibraryPaths()->objectAtIndex(0)), u"C:\\Users\\me\\Library");
}

namespace {

// Shift JIS has characters whose second byte is that of a backslash.
void nameInShiftJIS(const ResourceRoot &root) {
    root.write("../FileSystemEncoding", "08");
    fs::remove(root.folder());
    fs::path sources = fs::path(__FILE__).parent_path().parent_path().parent_path();
    fs::create_directory_symlink(sources / "Bedrock/resources/data/CharacterSets", root.folder());
    char bytes[16];
    EXPECT_TRUE(make(u"a/\u5B57")->getFileSystemRepresentation_maxLength(bytes, sizeof bytes));
    EXPECT_STREQ(bytes, "a\\\x8E\x9A");
    EXPECT_FALSE(make(u"a/\u8868")->getFileSystemRepresentation_maxLength(bytes, sizeof bytes))
        << "it would name another file";
    EXPECT_EQ(ZPData::dataWithContentsOfFile(make(u"a/\u8868")), nullptr);
}

}  // namespace

TEST_F(PathFiles, FileNamesMayHaveAnEncodingOfTheirOwn) {
    // What a file called "caf\xE9" is named when the resource file holds a number, of an encoding or of none.
    for (auto [number, wanted] : {std::pair{"05", u"caf\u00e9"}, {"77", u"caf\xDCE9"}})
        IN_A_ROOT([&, number = number, wanted = wanted](const ResourceRoot &resources) {
            resources.write("../FileSystemEncoding", number);
            std::ofstream(root / "docs/deep/caf\xE9");
            ZPString *text = nullptr;
            make(pathOf(root) + u"\\docs\\deep\\c")
                ->completePathIntoString_caseSensitive_matchesIntoArray_filterTypes(&text, YES, nullptr, nullptr);
            EXPECT_EQ(textOf(text->lastPathComponent()), wanted);
            EXPECT_TRUE(fs::exists(hostOf(text)));
            fs::remove_all(root);
        });
    IN_A_ROOT(nameInShiftJIS);
}
