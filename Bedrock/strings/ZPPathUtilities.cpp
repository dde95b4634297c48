#include <Bedrock/strings/ZPPathUtilities+Internal.h>

#include <Bedrock/core/ZPLog.h>
#include <Bedrock/platform/ZPFile.h>
#include <Bedrock/platform/ZPHost.h>
#include <Bedrock/strings/ZPString+Internal.h>

#include <algorithm>
#include <atomic>
#include <string>

// ---- buffers ------------------------------------------------------------------------------------

bool _ZPHasDrivePrefix(const unichar *units, unsigned length) {
    return length >= 2 && units[1] == ':' && ((units[0] >= 'A' && units[0] <= 'Z') || (units[0] >= 'a' && units[0] <= 'z'));
}

bool _ZPHasNetworkPrefix(const unichar *units, unsigned length) { return length >= 2 && units[0] == '\\' && units[1] == '\\'; }

BOOL _ZPStripTrailingPathSlashes(const unichar *units, unsigned *length) {
    unsigned n = *length, least = _ZPHasDrivePrefix(units, n) ? 3 : 1;
    while (n > least && _ZPIsPathSeparator(units[n - 1])) --n;
    return n == *length ? NO : (*length = n, YES);
}

BOOL _ZPTransmutePathSlashes(unichar *units, unsigned *length, unichar separator) {
    unsigned to = _ZPHasNetworkPrefix(units, *length) ? 2 : 0;
    for (unsigned from = to; from < *length; ++from) {
        if (!_ZPIsPathSeparator(units[from])) units[to++] = units[from];
        else if (from + 1 == *length || !_ZPIsPathSeparator(units[from + 1])) units[to++] = separator;
    }
    return to == *length ? NO : (*length = to, YES);
}

// The last separator before the last unit, or -1.
static int lastSeparator(const unichar *units, unsigned length) {
    for (int i = int(length) - 2; i >= 0; --i)
        if (_ZPIsPathSeparator(units[i])) return i;
    return -1;
}

unsigned _ZPStartOfLastPathComponent(const unichar *units, unsigned length) {
    if (length < 2) return 0;
    int p = lastSeparator(units, length);
    if (p >= 0) return unsigned(p) + 1;
    return length >= 3 && _ZPHasDrivePrefix(units, length) ? 2 : 0;
}

unsigned _ZPLengthAfterDeletingLastPathComponent(const unichar *units, unsigned length) {
    if (length < 2) return 0;
    int p = lastSeparator(units, length);
    bool drive = _ZPHasDrivePrefix(units, length);
    if (p < 0) return length >= 3 && drive ? 2 : 0;
    return p == 0 ? 1 : drive && p == 2 ? 3 : unsigned(p);
}

BOOL _ZPAppendPathComponent(unichar *buffer, unsigned *length, unsigned capacity, const unichar *component, unsigned componentLength) {
    if (componentLength == 0) return YES;
    unsigned n = *length;
    if (std::uint64_t(n) + 1 + componentLength > capacity) return NO;
    if (n && (_ZPHasDrivePrefix(component, componentLength) || _ZPHasNetworkPrefix(component, componentLength))) return NO;
    bool joins = n == 0 || (n == 1 && _ZPIsPathSeparator(buffer[0])) ||
                 (n == 2 && (_ZPHasDrivePrefix(buffer, n) || _ZPHasNetworkPrefix(buffer, n)));
    if (!joins) buffer[n++] = '\\';
    std::copy_n(component, componentLength, buffer + n);
    *length = n + componentLength;
    return YES;
}

unsigned _ZPStartOfPathExtension(const unichar *units, unsigned length) {
    if (length < 2) return 0;
    for (unsigned i = length - 1; i >= 1; --i) {
        if (_ZPIsPathSeparator(units[i - 1])) return 0;
        if (units[i] == '.') return i == 2 && _ZPHasDrivePrefix(units, length) ? 0 : i;
    }
    return 0;
}

unsigned _ZPLengthAfterDeletingPathExtension(const unichar *units, unsigned length) {
    unsigned start = _ZPStartOfPathExtension(units, length);
    return start ? start : length;
}

// ---- strings ------------------------------------------------------------------------------------

namespace {

// A path's units, with room for more behind them.
struct PathBuffer {
    unsigned length;
    ZPStackBuffer<unichar, 300> units;

    explicit PathBuffer(ZPString *path, unsigned extra = 0) : length(path->length()), units(std::size_t(length) + extra) {
        path->getCharacters_range(units.memory, {0, length});
    }
    PathBuffer &normalize() {
        _ZPTransmutePathSlashes(units.memory, &length, '\\');
        _ZPStripTrailingPathSlashes(units.memory, &length);
        return *this;
    }
    ZPString *string(unsigned from, unsigned to) const {
        const unichar *start = units.memory + from;
        unsigned count = to - from;
        if (!std::all_of(start, start + count, [](unichar u) { return u < 0x80; })) return ZPString::stringWithCharacters_length(start, count);
        ZPStackBuffer<char, 300> bytes(count);
        std::copy_n(start, count, bytes.memory);
        return ZPString::stringWithCString_length(bytes.memory, count);
    }
};

struct PathMethods : ZPString {
    ZPString *lastPathComponent() {
        PathBuffer path(this);
        path.normalize();
        return path.string(_ZPStartOfLastPathComponent(path.units.memory, path.length), path.length);
    }
    ZPString *deletingLast() {
        PathBuffer path(this);
        path.normalize();
        return path.string(0, _ZPLengthAfterDeletingLastPathComponent(path.units.memory, path.length));
    }
    ZPString *pathExtension() {
        PathBuffer path(this);
        path.normalize();
        unsigned dot = _ZPStartOfPathExtension(path.units.memory, path.length);
        return dot ? path.string(dot + 1, path.length) : ""_zp;
    }
    ZPString *deletingExtension() {
        PathBuffer path(this);
        path.normalize();
        return path.string(0, _ZPLengthAfterDeletingPathExtension(path.units.memory, path.length));
    }
    ZPString *appending(ZPString *component) {
        PathBuffer part(component), path(this, part.length + 1);
        unsigned capacity = std::min(path.length + part.length + 1, _ZPPathCapacity);
        if (!_ZPAppendPathComponent(path.units.memory, &path.length, capacity, part.units.memory, part.length)) {
            ZPLog("%@: cannot append path '%@' to path '%@'"_zp, _ZPMethodExceptionProem(this, "stringByAppendingPathComponent:"_sel), component, this);
            return this;
        }
        path.normalize();
        return path.string(0, path.length);
    }

    // The path in the file system's encoding; answers its length without the NUL, or -1.
    int representation(char *buffer, unsigned size) {
        PathBuffer path(this);
        for (unsigned i = 0; i < path.length; ++i) {
            // What lies behind a NUL the host would not see.
            if (path.units.memory[i] == 0) return -1;
            if (path.units.memory[i] == '/') path.units.memory[i] = '\\';
        }
        struct Owned { ZPString *string; ~Owned() { string->release(); } };
        Owned text{_ZPNewStringWithUnits(path.units.memory, path.length, nullptr)};
        unsigned filled;
        ZPRange remaining;
        if (size == 0 || !text.string->getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
                             buffer, size - 1, &filled, _ZPDefaultFileSystemEncoding(), NO, {0, path.length}, &remaining) ||
            remaining.length)
            return -1;
        buffer[filled] = 0;
        return int(filled);
    }
    const char *fileSystemRepresentation() {
        SEL selector = "fileSystemRepresentation"_sel;
        char buffer[_ZPPathCapacity + 1];
        if (length() == 0) ZPException::raise_format(ZPInvalidArgumentException, "empty string passed to fileSystemRepresentationWithPath:"_zp);
        int filled = representation(buffer, sizeof buffer);
        if (filled < 0)
            ZPException::raise_format(ZPInvalidArgumentException, "%@: conversion failed for %@"_zp, _ZPMethodExceptionProem(this, selector), this);
        char *scratch = _ZPAutoreleasedScratch(unsigned(filled) + 1);
        std::memcpy(scratch, buffer, unsigned(filled) + 1);
        return scratch;
    }
    BOOL getFileSystemRepresentation(char *buffer, unsigned maxLength) {
        return length() && representation(buffer, maxLength) >= 0 ? YES : NO;
    }
};

}  // namespace

ZP_CATEGORY(ZPString, ZPPathUtilities)
    .method<&PathMethods::lastPathComponent>("lastPathComponent")
    .method<&PathMethods::deletingLast>("stringByDeletingLastPathComponent")
    .method<&PathMethods::pathExtension>("pathExtension")
    .method<&PathMethods::deletingExtension>("stringByDeletingPathExtension")
    .method<&PathMethods::appending>("stringByAppendingPathComponent:")
    .method<&PathMethods::fileSystemRepresentation>("fileSystemRepresentation")
    .method<&PathMethods::getFileSystemRepresentation>("getFileSystemRepresentation:maxLength:");

ZPStringEncoding _ZPDefaultFileSystemEncoding() {
    static std::atomic<ZPStringEncoding> encoding{0};
    ZPStringEncoding e = encoding.load(std::memory_order_relaxed);
    if (!e) {
        char text[3] = {};
        std::string path = std::string(ZPRootDirectory()) + "/CorvidLibrary/Frameworks/Bedrock.framework/Resources/FileSystemEncoding";
        long long length = ZPHostReadFile(path.c_str(), text, 2);
        for (long long i = 0; i < length && text[i] >= '0' && text[i] <= '9'; ++i) e = e * 10 + unsigned(text[i] - '0');
        if (e < 1) e = _ZPDefaultCStringEncoding();
        encoding.store(e, std::memory_order_relaxed);
    }
    return e;
}
