// SPDX-License-Identifier: MIT
// Host file calls and file mappings. Paths are host paths (see ZPPath.h). A call that fails leaves the
// reason in `errno`.
#pragma once

#include <Bedrock/platform/ZPTypes.h>

struct ZPHostStatus {
    unsigned long long size;
    unsigned mode;  ///< permission bits
    BOOL isRegular;
    BOOL isDirectory;
};

enum ZPHostOpening { ZPHostOpenToRead, ZPHostOpenToOverwrite, ZPHostOpenToCreate };

extern "C" {
/// A file descriptor, not inherited by child processes, or -1. To overwrite empties an existing file; to
/// create fails when there is one. `mode` is that of a new file, less the process's mask.
int ZPHostOpenFile(const char *path, ZPHostOpening opening, unsigned mode);
/// Closes and leaves `errno` as it was; NO when the close reports a failed write.
BOOL ZPHostCloseFile(int file);
BOOL ZPHostFileStatus(int file, ZPHostStatus *status);
BOOL ZPHostPathStatus(const char *path, ZPHostStatus *status);
/// Reads from an offset until the buffer is full or the file ends; answers the bytes read, or -1.
long long ZPHostReadAt(int file, void *buffer, std::size_t size, unsigned long long offset);
/// Writes all bytes, or answers NO.
BOOL ZPHostWriteAll(int file, const void *bytes, std::size_t size);
/// Replaces an existing destination in one step.
BOOL ZPHostMoveFile(const char *from, const char *to);
BOOL ZPHostRemoveFile(const char *path);
BOOL ZPHostSetMode(const char *path, unsigned mode);
/// The permission bits that new files do not get.
unsigned ZPHostCreationMask();
/// Up to `size` bytes of a file from its start; -1 when it cannot be read.
long long ZPHostReadFile(const char *path, void *buffer, std::size_t size);

/// Calls `visit` with the name of each entry of a directory but "." and "..", until it answers NO. NO when the
/// directory cannot be read.
BOOL ZPHostListDirectory(const char *path, BOOL (*visit)(void *context, const char *name), void *context);
/// Writes an absolute path with the symbolic links of its longest part resolved that exists and can be reached; what
/// follows that part stays as it is. NO when the result does not fit `size` bytes.
BOOL ZPHostResolvePath(const char *path, char *buffer, std::size_t size);

// Mappings: a descriptor that stands for a file's or anonymous pages, and views of them.

/// A descriptor of zero-filled anonymous pages, or -1.
int ZPHostMakeAnonymousFile(std::size_t length);
int ZPHostDuplicateFile(int file);
enum ZPHostView { ZPHostViewReadOnly, ZPHostViewReadWrite, ZPHostViewCopyOnWrite };
/// A view of the first `length` bytes, at `at` in place of what is mapped there unless that is null. Null on
/// failure. Copy-on-write views of a file see later changes of pages they have not written.
void *ZPHostMapView(int file, std::size_t length, ZPHostView kind, void *at);
BOOL ZPHostUnmapView(void *view, std::size_t length);
}
