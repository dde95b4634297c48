// SPDX-License-Identifier: MIT
// The room of paths: their text, path strings (PathStore.cpp), the users' directories and what the host's file system
// makes of a path. Other rooms use what stands here and in ZPPathUtilities.h. Read this first, then Paths.cpp.
//
// The operations work on a buffer of units with a length that they read and update. A BOOL answer says whether
// anything was done.
#pragma once

#include <Bedrock/strings/ZPPathUtilities.h>
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/strings/cluster/Cluster.h>

ZP_FORWARD(ZPMutableArray);

/// Longest path that appending builds; the host takes no longer ones.
inline constexpr unsigned _ZPPathCapacity = 4095;

inline bool _ZPIsPathSeparator(unichar u) { return u == '/' || u == '\\'; }
/// A letter of ASCII and a colon.
template <class U> inline bool _ZPHasDrivePrefix(const U *units, unsigned length) {
    return length >= 2 && units[1] == ':' && _ZPIsLetter(units[0]);
}
/// Two backslashes.
inline bool _ZPHasNetworkPrefix(const unichar *units, unsigned length) {
    return length >= 2 && units[0] == '\\' && units[1] == '\\';
}
BOOL _ZPIsAbsolutePath(const unichar *units, unsigned length);

/// Drops separators at the end, but not those of "\" and "C:\".
BOOL _ZPStripTrailingPathSlashes(const unichar *units, unsigned *length);
/// Writes every run of separators behind a network prefix as one `separator`.
BOOL _ZPTransmutePathSlashes(unichar *units, unsigned *length, unichar separator);
unsigned _ZPStartOfLastPathComponent(const unichar *units, unsigned length);
unsigned _ZPLengthAfterDeletingLastPathComponent(const unichar *units, unsigned length);
/// NO when the capacity does not suffice, or when a component that names a drive or a share would follow
/// something.
BOOL _ZPAppendPathComponent(unichar *buffer, unsigned *length, unsigned capacity, const unichar *component,
                            unsigned componentLength);
/// The index of the extension's dot, or 0.
unsigned _ZPStartOfPathExtension(const unichar *units, unsigned length);
unsigned _ZPLengthAfterDeletingPathExtension(const unichar *units, unsigned length);
/// NO when the capacity does not suffice, when the extension begins with a separator or a drive, or when the path
/// has no name.
BOOL _ZPAppendPathExtension(unichar *buffer, unsigned *length, unsigned capacity, const unichar *extension,
                            unsigned extensionLength);
BOOL _ZPAbbreviatePathWithTilde(unichar *units, unsigned *length);
/// Leaves the path as it is when there is no home directory, or not enough room.
BOOL _ZPExpandTildeInPath(unichar *units, unsigned *length, unsigned capacity);
/// A mutable array of the components; autoreleased. The second is for a path in the storage encoding.
ZPMutableArray *_ZPPathComponents(const unichar *units, unsigned length);
ZPMutableArray *_ZPPathComponents(const unsigned char *bytes, unsigned length);
/// Whether an absolute path has a ".." behind its root.
BOOL __pathHasDotDot(const unichar *units, unsigned length, BOOL isNetworkPath);
BOOL _ZPStandardizePath(unichar *units, unsigned *length);
/// NO: symbolic links are resolved with the host's spelling of a path.
BOOL _ZPResolveSymlinksInPath(unichar *units, unsigned *length);
/// Gives a standardized path that begins at a root the host's spelling of the part that exists, links resolved.
BOOL _ZPConvertPathToLongFileSystemName(unichar *units, unsigned *length, unsigned capacity);

/// A path's units, with room for more behind them.
struct _ZPPathBuffer {
    unsigned length, capacity;
    ZPStackBuffer<unichar, _ZPPathCapacity> memory;
    unichar *units;

    /// Room for what the longest path on the host needs, and for all of a longer one.
    explicit _ZPPathBuffer(ZPString *path) : _ZPPathBuffer(_ZPViewOfString(path), path, _ZPPathCapacity) {}
    _ZPPathBuffer(ZPString *path, unsigned room) : _ZPPathBuffer(_ZPViewOfString(path), path, room) {}
    _ZPPathBuffer &normalize() {
        _ZPTransmutePathSlashes(units, &length, '\\');
        _ZPStripTrailingPathSlashes(units, &length);
        return *this;
    }

  private:
    _ZPPathBuffer(const ZPStringView &view, ZPString *path, unsigned room)
        : length(view.length), capacity(std::max(view.length, room)), memory(capacity), units(memory.memory) {
        if (view.shown()) _ZPCopyUnits(view, 0, length, units);
        else path->getCharacters_range(units, {0, length});
    }
};

/// A path store of the units; the caller owns it.
ZPPathStore2 *_ZPNewPathStore(const unichar *units, unsigned length, ZPZone *zone);
inline ZPString *_ZPPathStore(const unichar *units, unsigned length) {
    return _ZPNewPathStore(units, length, nullptr)->autorelease();
}
inline unichar *_ZPUnitsOfPathStore(ZPPathStore2 *store) {
    return reinterpret_cast<unichar *>(&store->_lengthAndRefCount + 1);
}
/// Log what `selector` refuses.
ZP_COLD void _ZPLogPathRefusal(id receiver, SEL selector, ZPString *part, id path);

// ---- the file system ----

/// A path in the file system's encoding with backslashes and a NUL; answers its length without the NUL, or -1.
int _ZPGetFileSystemBytes(ZPString *path, char *buffer, unsigned size);
/// The host's path of a path; "." for the empty one.
BOOL _ZPGetHostPath(ZPString *path, char *buffer, unsigned size);
/// The library's path of a host path; null when there is none. Autoreleased.
ZPString *_ZPPathFromHost(const char *hostPath);
/// The names in a directory, in the host's order and without "." and ".."; null when it cannot be read. A name
/// that holds a backslash is left out: a path with it would name another file.
ZPMutableArray *_ZPDirectoryContents(ZPString *directory);
BOOL _ZPFileExists(ZPString *path, BOOL *isDirectory);

/// The text behind "NAME=" in the process environment, or null.
const char *_ZPGetEnvironmentVariable(const char *name);
