// SPDX-License-Identifier: MIT
// Paths and the host's files: names in the file system's encoding, directories, completion, symbolic links. The one
// mapping of paths is platform/ZPPath.h; bytes of names that are no text in the encoding come and go as the units
// U+DC80 to U+DCFF.
#include <Bedrock/strings/paths/Paths.h>
#include <Bedrock/core/ZPRef.h>

#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/platform/host/Files.h>
#include <Bedrock/platform/host/Host.h>
#include <Bedrock/platform/ZPPath.h>
#include <Bedrock/strings/encodings/Encodings.h>

#include <algorithm>
#include <atomic>
#include <exception>

namespace {

constexpr unsigned longestHostPath = 4096;

long separatorsOf(ZPString *path) {
    _ZPPathBuffer units(path, 0);
    return std::count_if(units.units, units.units + units.length, _ZPIsPathSeparator);
}

}  // namespace

ZPStringEncoding _ZPDefaultFileSystemEncoding() {
    static std::atomic<ZPStringEncoding> encoding{0};
    ZPStringEncoding e = encoding.load(std::memory_order_relaxed);
    if (e) [[likely]]
        return e;
    e = _ZPEncodingNumberInResource("FileSystemEncoding");
    if (!e) e = _ZPDefaultCStringEncoding();
    encoding.store(e, std::memory_order_relaxed);
    return e;
}

int _ZPGetFileSystemBytes(ZPString *path, char *buffer, unsigned size) {
    int length = size ? _ZPHostBytesFromString(path, buffer, size - 1, _ZPDefaultFileSystemEncoding()) : -1;
    // What lies behind a NUL the host would not see.
    if (length < 0 || std::memchr(buffer, 0, unsigned(length))) return -1;
    // The second byte of a character may be that of a backslash, where the host would see a name end.
    if (_ZPDefaultFileSystemEncoding() == ZPShiftJISStringEncoding &&
        separatorsOf(path) != std::count_if(buffer, buffer + length, _ZPIsPathSeparator))
        return -1;
    std::replace(buffer, buffer + length, '/', '\\');
    buffer[length] = 0;
    return length;
}

BOOL _ZPGetHostPath(ZPString *path, char *buffer, unsigned size) {
    char own[longestHostPath];
    int length = _ZPGetFileSystemBytes(path, own, sizeof own);
    if (length == 0) std::strcpy(own, ".");
    return length >= 0 ? ZPHostPathFromPath(own, buffer, size) : NO;
}

ZPString *_ZPPathFromHost(const char *hostPath) {
    char own[longestHostPath + 2];
    if (!ZPPathFromHostPath(hostPath, own, sizeof own)) return nullptr;
    ZPString *path = _ZPStringFromHostBytes(own, unsigned(std::strlen(own)), _ZPDefaultFileSystemEncoding());
    _ZPPathBuffer units(path, 0);
    return _ZPPathStore(units.units, units.length);
}

ZPMutableArray *_ZPDirectoryContents(ZPString *directory) {
    char host[longestHostPath];
    if (!_ZPGetHostPath(directory, host, sizeof host)) return nullptr;
    ZPMutableArray *names = ZPMutableArray::array();
    // An error in the visitor must not unwind through the host's walk.
    struct Walk {
        ZPMutableArray *names;
        std::exception_ptr error;
    } walk{names, nullptr};
    auto visit = [](void *context, const char *name) -> BOOL {
        auto *w = static_cast<Walk *>(context);
        try {
            if (!std::strchr(name, '\\'))
                w->names->addObject(
                    _ZPStringFromHostBytes(name, unsigned(std::strlen(name)), _ZPDefaultFileSystemEncoding()));
        } catch (...) {
            w->error = std::current_exception();
            return NO;
        }
        return YES;
    };
    BOOL read = ZPHostListDirectory(host, visit, &walk);
    if (walk.error) std::rethrow_exception(walk.error);
    return read ? names : nullptr;
}

BOOL _ZPFileExists(ZPString *path, BOOL *isDirectory) {
    char host[longestHostPath];
    ZPHostStatus status;
    if (!_ZPGetHostPath(path, host, sizeof host) || !ZPHostPathStatus(host, &status)) return NO;
    if (isDirectory) *isDirectory = status.isDirectory;
    return YES;
}

// The host has symbolic links, and no other spelling of a name than the one on disk. So this is where links are
// resolved: in the part of the path that exists and can be reached, the rest stays as it is. A path that begins with
// a single separator is one of the host's own and takes part; it stays without a drive. Shares, drives other than C
// and home directories that nobody knows have no files here: they only get their one spelling.
BOOL _ZPConvertPathToLongFileSystemName(unichar *units, unsigned *length, unsigned capacity) {
    unsigned n = *length;
    bool rooted = n && !_ZPHasNetworkPrefix(units, n) && _ZPIsPathSeparator(units[0]);
    if (!rooted && !_ZPIsAbsolutePath(units, n)) return NO;
    if (units[0] == '~') return NO;
    if (_ZPHasNetworkPrefix(units, n)) {
        unsigned separators = 0;
        for (unsigned i = 2; i < n && (separators += _ZPIsPathSeparator(units[i])) < 2; ++i)
            units[i] = _ZPInSmallLetters(units[i]);
        return YES;
    }
    ZPRef<ZPString> path = ZPAdopt(_ZPNewStringWithUnits(units, n, nullptr));
    char host[longestHostPath], real[longestHostPath], own[longestHostPath + 2];
    if (_ZPGetFileSystemBytes(path, own, longestHostPath) < 0) return NO;
    if (!rooted) units[0] = _ZPInCapitalLetters(units[0]);
    if (!ZPHostPathFromPath(own, host, sizeof host)) return rooted ? NO : YES;
    if (!ZPHostResolvePath(host, real, sizeof real) || !ZPPathFromHostPath(real, own, sizeof own)) return YES;
    ZPString *resolved = _ZPStringFromHostBytes(own, unsigned(std::strlen(own)), _ZPDefaultFileSystemEncoding());
    _ZPPathBuffer found(resolved, 0);
    unsigned drive = rooted ? 2 : 0;
    if (found.length - drive > capacity) return YES;
    *length = found.length - drive;
    std::copy_n(found.units + drive, *length, units);
    return YES;
}

// ---- completion ---------------------------------------------------------------------------------

static ZPMutableArray *_ZPDirectoryContentsMatchingPrefixAndSuffixes(ZPString *directory, ZPString *prefix,
                                                                     ZPArray *extensions) {
    ZPMutableArray *matches = ZPMutableArray::array(),
                   *entries = _ZPDirectoryContents(directory->stringByExpandingTildeInPath());
    bool any = !prefix || !prefix->length(), all = !extensions || !extensions->count();
    for (unsigned i = 0, count = entries ? entries->count() : 0; i < count; ++i) {
        ZPString *entry = entries->objectAtIndex(i);
        if (!any && !entry->hasPrefix(prefix)) continue;
        // No path continues with a name that looks like a drive.
        if (_ZPPathBuffer name(entry, 0); _ZPHasDrivePrefix(name.units, name.length)) continue;
        ZPString *path = directory->stringByAppendingPathComponent(entry), *extension = entry->pathExtension();
        // Too long to be named; the directory itself must not be taken for its entry.
        if (path == directory) continue;
        BOOL isDirectory = NO;
        if (all || extensions->containsObject(extension) ||
            (!extension->length() && _ZPFileExists(path->stringByExpandingTildeInPath(), &isDirectory) && isDirectory))
            matches->addObject(path);
    }
    return matches;
}

static ZPString *_ZPFindCommonPrefixInStringArray(ZPArray *strings, BOOL caseSensitive) {
    unsigned count = strings->count(),
             options = ZPAnchoredSearch | (caseSensitive ? 0u : unsigned(ZPCaseInsensitiveSearch));
    if (!count) return ""_zp;
    ZPString *first = strings->objectAtIndex(0), *common = count == 1 ? first : ""_zp;
    for (unsigned length = 0; count > 1 && length < first->length();) {
        ZPRange next = first->rangeOfComposedCharacterSequenceAtIndex(length);
        length = std::max(length + 1, next.location + next.length);
        ZPString *longer = first->substringToIndex(length);
        for (unsigned i = 1; i < count; ++i) {
            ZPString *other = strings->objectAtIndex(i);
            if (other->rangeOfString_options_range(longer, options, {0, other->length()}).length == 0) return common;
        }
        common = longer;
    }
    return common;
}

namespace {

struct FileSystemMethods : ZPString {
    const char *fileSystemRepresentation() {
        SEL selector = "fileSystemRepresentation"_sel;
        char buffer[longestHostPath];
        if (self()->length() == 0)
            ZPException::raise_format(ZPInvalidArgumentException,
                                      "empty string passed to fileSystemRepresentationWithPath:"_zp);
        int filled = _ZPGetFileSystemBytes(this, buffer, sizeof buffer);
        if (filled < 0)
            ZPException::raise_format(ZPInvalidArgumentException, "%@: conversion failed for %@"_zp,
                                      _ZPMethodExceptionProem(this, selector), this);
        char *scratch = _ZPAutoreleasedScratch(unsigned(filled) + 1);
        std::memcpy(scratch, buffer, unsigned(filled) + 1);
        return scratch;
    }
    BOOL getFileSystemRepresentation_maxLength(char *buffer, unsigned maxLength) {
        return self()->length() && _ZPGetFileSystemBytes(this, buffer, maxLength) >= 0 ? YES : NO;
    }

    unsigned completePathIntoString_caseSensitive_matchesIntoArray_filterTypes(ZPString **completion,
                                                                               BOOL caseSensitive, ZPArray **matchesOut,
                                                                               ZPArray *extensions) {
        _ZPPathBuffer path(this);
        unsigned n = path.length;
        if (n && path.units[0] == '~' && std::none_of(path.units, path.units + n, _ZPIsPathSeparator)) return 0;
        bool whole = n && _ZPIsPathSeparator(path.units[n - 1]);
        ZPString *directory = whole ? this : self()->stringByDeletingLastPathComponent(),
                 *prefix = whole ? ""_zp : self()->lastPathComponent();
        ZPString *candidate = nullptr;
        ZPArray *matches;
        unsigned count;
        for (;;) {
            matches = _ZPDirectoryContentsMatchingPrefixAndSuffixes(directory, prefix, extensions);
            count = matches->count();
            if (count > 1) break;
            if (count == 0 && !candidate) return 0;
            if (count == 1) candidate = matches->objectAtIndex(0);
            BOOL isDirectory = NO;
            if (count == 0 ||
                (_ZPFileExists(candidate->stringByExpandingTildeInPath(), &isDirectory) && !isDirectory)) {
                if (completion) *completion = candidate;
                if (matchesOut) *matchesOut = ZPArray::arrayWithObject(candidate);
                return 1;
            }
            directory = candidate;
            prefix = ""_zp;
        }
        if (completion) *completion = _ZPFindCommonPrefixInStringArray(matches, caseSensitive);
        if (matchesOut) *matchesOut = matches;
        return count;
    }
};

}  // namespace

ZP_CATEGORY(ZPString, FileSystemMethods, fileSystemRepresentation, getFileSystemRepresentation_maxLength,
            completePathIntoString_caseSensitive_matchesIntoArray_filterTypes);
