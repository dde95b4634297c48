// SPDX-License-Identifier: MIT
// Paths: between the library and the host nothing is lost, standardizing is done once, pieces fit together again.
#include <Bedrock/Bedrock.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}
bool same(ZPString *a, ZPString *b) { return a->isEqualToString(b); }
bool looksLikeDrive(ZPString *s) { return s->length() >= 2 && s->characterAtIndex(1) == ':'; }

// Bytes that a host path may have: there and back through a string.
void goThroughTheHost(const std::string &host) {
    char own[4200], back[4200];
    require(ZPPathFromHostPath(host.c_str(), own, sizeof own) == (!host.empty() && host.size() < 4190 && host.find('\\') == host.npos));
    if (!*own) return;
    ZPString *path = _ZPStringFromHostBytes(own, unsigned(std::strlen(own)), _ZPDefaultFileSystemEncoding());
    char bytes[4200];
    require(path->getFileSystemRepresentation_maxLength(bytes, sizeof bytes) && !std::strcmp(bytes, own));
    require(ZPHostPathFromPath(bytes, back, sizeof back) && (back == host || back == "./" + host));
}

void takeApart(ZPString *path) {
    ZPString *plain = path->stringByAppendingPathComponent(""_zp), *last = plain->lastPathComponent(), *directory = plain->stringByDeletingLastPathComponent();
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const bool quiet = (_ZPSetLogCStringFunction([](const char *, unsigned, BOOL) {}), true);
    (void)quiet;
    ZPAutoreleasePoolScope pool;
    std::string bytes(reinterpret_cast<const char *>(data), size < 4000 ? size : 4000);
    goThroughTheHost(bytes.substr(0, bytes.find('\0')));
    for (char &c : bytes)
        if (!c) c = '\\';
    ZPString *path = _ZPStringFromHostBytes(bytes.data(), unsigned(bytes.size()), ZPUTF8StringEncoding);
    takeApart(path);
    standardize(path);
    return 0;
}
