// SPDX-License-Identifier: MIT
// Paths: between the library and the host nothing is lost, standardizing is done once, pieces fit together again, and
// what completes a path is how all its matches begin.
#include <Bedrock/Bedrock.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}
bool same(ZPString *a, ZPString *b) { return a->isEqualToString(b); }
bool looksLikeDrive(ZPString *s) { return s->length() >= 2 && s->characterAtIndex(1) == ':'; }

// Bytes that a host path may have: there and back through a string.
void goThroughTheHost(const std::string &host) {
    char own[4200], back[4200];
    require(ZPPathFromHostPath(host.c_str(), own, sizeof own) ==
            (!host.empty() && host.size() < 4190 && host.find('\\') == host.npos));
    if (!*own) return;
    ZPString *path = _ZPStringFromHostBytes(own, unsigned(std::strlen(own)), _ZPDefaultFileSystemEncoding());
    char bytes[4200];
    require(path->getFileSystemRepresentation_maxLength(bytes, sizeof bytes) && !std::strcmp(bytes, own));
    require(ZPHostPathFromPath(bytes, back, sizeof back) && (back == host || back == "./" + host));
}

void takeApart(ZPString *path) {
    ZPString *plain = path->stringByAppendingPathComponent(""_zp), *last = plain->lastPathComponent(),
             *directory = plain->stringByDeletingLastPathComponent();
    bool network = plain->length() >= 2 && plain->characterAtIndex(0) == '\\' && plain->characterAtIndex(1) == '\\';
    require(plain->length() <= path->length() && same(plain->stringByAppendingPathComponent(""_zp), plain));
    require(same(path->lastPathComponent(), last) && same(path->stringByDeletingLastPathComponent(), directory));
    if (!network && !looksLikeDrive(last)) require(same(directory->stringByAppendingPathComponent(last), plain));

    ZPString *extension = plain->pathExtension(), *stem = plain->stringByDeletingPathExtension();
    require(same(path->pathExtension(), extension) && same(path->stringByDeletingPathExtension(), stem));
    ZPString *extended = stem->stringByAppendingPathExtension(extension);
    if (stem->length() < plain->length() && !same(extended, stem)) require(same(extended, plain));

    unsigned units = 0;
    ZPArray *components = path->pathComponents();
    for (unsigned i = 0; i < components->count(); ++i) {
        ZPString *c = components->objectAtIndex(i);
        require(c->length());
        units += c->length();
    }
    require(units <= plain->length());
}

void standardize(ZPString *path) {
    ZPString *once = path->stringByStandardizingPath();
    require(same(once->stringByStandardizingPath(), once));
    // "C:\." is the drive alone.
    bool drive = once->length() == 2 && looksLikeDrive(once);
    require(drive || once->isAbsolutePath() == path->stringByAppendingPathComponent(""_zp)->isAbsolutePath());
    ZPString *there = path->stringByExpandingTildeInPath()->stringByAbbreviatingWithTildeInPath();
    require(same(there->stringByExpandingTildeInPath()->stringByAbbreviatingWithTildeInPath(), there));
    path->stringByResolvingSymlinksInPath();
}

// Names of a folder's entries, up to eight, of any bytes: all that is found goes on as the completion does.
void complete(const std::string &bytes) {
    static const std::string folder = [] {
        std::string name = (std::filesystem::temp_directory_path() / "fuzz-paths-XXXXXX").string();
        require(mkdtemp(name.data()));
        static std::string kept = name;
        std::atexit([] { std::filesystem::remove_all(kept); });
        return name;
    }();
    std::vector<std::string> made;
    for (std::size_t at = 0; at < bytes.size() && made.size() < 8;
         at += 1 + bytes.find_first_of(std::string("/\0", 2), at) - at) {
        std::string name = bytes.substr(at, bytes.find_first_of(std::string("/\0", 2), at) - at);
        if (std::FILE *file =
                name.empty() || name.size() > 255 ? nullptr : std::fopen((folder + "/" + name).c_str(), "wbx")) {
            std::fclose(file);
            made.push_back(folder + "/" + name);
        }
        if (bytes.find_first_of(std::string("/\0", 2), at) == bytes.npos) break;
    }
    char own[4200];
    require(ZPPathFromHostPath((folder + "/").c_str(), own, sizeof own));
    ZPString *text = nullptr;
    ZPArray *matches = nullptr;
    unsigned count =
        ZPString::stringWithCString(own)->completePathIntoString_caseSensitive_matchesIntoArray_filterTypes(
            &text, YES, &matches, nullptr);
    require(count <= made.size() && (count == 0) == !text && (!count || matches->count() == count));
    for (unsigned i = 0; i < count; ++i) require(((ZPString *)matches->objectAtIndex(i))->hasPrefix(text));
    for (const std::string &path : made) std::remove(path.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const bool quiet = (_ZPSetLogCStringFunction([](const char *, unsigned, BOOL) {}), true);
    (void)quiet;
    ZPAutoreleasePoolScope pool;
    std::string bytes(reinterpret_cast<const char *>(data), size < 4000 ? size : 4000);
    goThroughTheHost(bytes.substr(0, bytes.find('\0')));
    complete(bytes);
    for (char &c : bytes)
        if (!c) c = '\\';
    ZPString *path = _ZPStringFromHostBytes(bytes.data(), unsigned(bytes.size()), ZPUTF8StringEncoding);
    takeApart(path);
    standardize(path);
    return 0;
}
