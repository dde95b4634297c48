// SPDX-License-Identifier: MIT
// Whole files: reading, writing, and writing through a temporary file.
#include <Bedrock/data/Data+Internal.h>

#include <Bedrock/platform/host/Files.h>
#include <Bedrock/platform/kernel/Kernel.h>
#include <Bedrock/platform/ZPPath.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

namespace {

constexpr unsigned longestPath = 4096;

struct OpenFile {
    int file;
    ~OpenFile() {
        if (file >= 0) ZPHostCloseFile(file);
    }
    BOOL close() {
        BOOL closed = ZPHostCloseFile(file);
        file = -1;
        return closed;
    }
};

BOOL hostPathOf(const char *path, char *host) {
    if (ZPHostPathFromPath(path, host, longestPath)) return YES;
    errno = ENOENT;
    return NO;
}

// Puts a finished temporary file in the place of the path's.
BOOL putInPlace(const char *temporary, const char *path, const char *hostPath, unsigned mode) {
    // The bytes are in place even where the file system keeps no modes.
    auto moved = [&] { return _ZPMoveFile(temporary, path) == 0 && (ZPHostSetMode(hostPath, mode), true); };
    if (moved()) return YES;
    ZPHostStatus former;
    int reason = errno;
    // Some file systems keep a file that may not be written; no mode lets a file take the place of anything else.
    if (reason == EACCES && ZPHostPathStatus(hostPath, &former) && former.isRegular) {
        ZPHostSetMode(hostPath, 0700);
        if (moved()) return YES;
        ZPHostSetMode(hostPath, former.mode);
    }
    errno = reason;
    return NO;
}

}  // namespace

BOOL _ZPHostPathOfString(ZPString *path, char *buffer, unsigned size) {
    char own[longestPath];
    if (path && path->getFileSystemRepresentation_maxLength(own, sizeof own) && ZPHostPathFromPath(own, buffer, size))
        return YES;
    errno = ENOENT;
    return NO;
}

ZPRef<ZPFileMapper> _ZPMapperOfFile(ZPString *path) {
    ZPAutoreleasePoolScope pool;
    ZPRef<ZPFileMapper> mapper = ZPFileMapper::fileMapperForPath(path);
    if (!mapper || mapper->length() <= _ZPLargestData) return mapper;
    errno = EFBIG;
    return nullptr;
}

BOOL _ZPReadBytesFromFile(const char *path, void **bytes, unsigned *length, ZPZone *zone) {
    static char nothing;
    char host[longestPath];
    *bytes = nullptr;
    if (!hostPathOf(path, host)) return NO;
    OpenFile file{ZPHostOpenFile(host, ZPHostOpenToRead, 0)};
    ZPHostStatus status;
    if (file.file < 0 || !ZPHostFileStatus(file.file, &status)) return NO;
    if (!status.isRegular || status.size > _ZPLargestData) {
        errno = status.isRegular ? EFBIG : EACCES;
        return NO;
    }
    if (status.size == 0) {
        *bytes = &nothing;
        *length = 0;
        return YES;
    }
    void *block = ZPZoneMalloc(zone, status.size);
    if (!block) {
        errno = ENOMEM;
        return NO;
    }
    // A file that has become shorter gives what there is.
    long long n = ZPHostReadAt(file.file, block, status.size, 0);
    if (n <= 0) {
        int reason = errno;
        ZPZoneFree(zone, block);
        errno = reason;
        if (n < 0) return NO;
        block = &nothing;
    }
    *bytes = block;
    *length = unsigned(n);
    return YES;
}

BOOL _ZPWriteBytesToFile(ZPString *path, const void *bytes, unsigned length, BOOL atomically) {
    char host[longestPath], own[longestPath], temporary[longestPath + 16] = "";
    if (!_ZPHostPathOfString(path, host, sizeof host)) return NO;
    ZPHostStatus status;
    unsigned mode = 0666 & ~ZPHostCreationMask();
    if (ZPHostPathStatus(host, &status)) mode = status.mode;
    else if (errno != ENOENT) return NO;

    if (!atomically) {
        OpenFile file{ZPHostOpenFile(host, ZPHostOpenToOverwrite, 0666)};
        return file.file >= 0 && ZPHostWriteAll(file.file, bytes, length) && file.close() ? YES : NO;
    }
    ZPString *directory = path->stringByDeletingLastPathComponent();
    if (!path->getFileSystemRepresentation_maxLength(own, sizeof own)) return NO;
    if (directory->length() && !directory->getFileSystemRepresentation_maxLength(temporary, longestPath)) return NO;
    OpenFile file{-1};
    if (_ZPmkstemp83(temporary, "data", &file.file) != 0) return NO;
    if (ZPHostWriteAll(file.file, bytes, length) && file.close() && putInPlace(temporary, own, host, mode)) return YES;
    int reason = errno;
    char hostTemporary[longestPath + 16];
    if (ZPHostPathFromPath(temporary, hostTemporary, sizeof hostTemporary)) ZPHostRemoveFile(hostTemporary);
    errno = reason;
    return NO;
}

int _ZPmkstemp83(char *directory, const char *prefix, int *descriptor) {
    constexpr unsigned names = 4096;
    static std::atomic<unsigned> counter;
    unsigned first = counter.fetch_add(1, std::memory_order_relaxed) % names, number = first;
    unsigned ownThread = unsigned(cthread_number()) & 0xFFFF, thread = ownThread;
    std::size_t head = std::strlen(directory);
    const char *separator = head && directory[head - 1] != '/' && directory[head - 1] != '\\' ? "\\" : "";
    char host[longestPath + 16];
    for (;;) {
        std::snprintf(directory + head, 14, "%s%.4s%04x.%03x", separator, prefix, thread, number);
        if (!ZPHostPathFromPath(directory, host, sizeof host)) {
            errno = ENOENT;
            return -1;
        }
        *descriptor = ZPHostOpenFile(host, ZPHostOpenToCreate, 0600);
        if (*descriptor >= 0) return 0;
        if (errno != EEXIST) return -1;
        number = (number + 1) % names;
        if (number == first) {
            thread = (thread + 1) & 0xFFFF;
            if (thread == ownThread) return -1;
        }
    }
}

int _ZPMoveFile(const char *from, const char *to) {
    char hostFrom[longestPath + 16], hostTo[longestPath + 16];
    if (!ZPHostPathFromPath(from, hostFrom, sizeof hostFrom) || !ZPHostPathFromPath(to, hostTo, sizeof hostTo)) {
        errno = ENOENT;
        return -1;
    }
    return ZPHostMoveFile(hostFrom, hostTo) ? 0 : -1;
}
