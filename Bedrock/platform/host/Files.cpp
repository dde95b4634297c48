// SPDX-License-Identifier: MIT
// The host's files: opening, reading and writing, names and directories, views of them in memory.
#include <Bedrock/platform/host/Files.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

void fill(ZPHostStatus *status, const struct stat &s) {
    status->size = s.st_size < 0 ? 0 : static_cast<unsigned long long>(s.st_size);
    status->mode = s.st_mode & 07777;
    status->isRegular = S_ISREG(s.st_mode) ? YES : NO;
    status->isDirectory = S_ISDIR(s.st_mode) ? YES : NO;
}

// Kernels refuse more than this in one call.
constexpr std::size_t largestTransfer = 0x7FFFF000;

}  // namespace

int ZPHostOpenFile(const char *path, ZPHostOpening opening, unsigned mode) {
    // Opening a FIFO to read must not wait for a writer.
    int flags = O_CLOEXEC | (opening == ZPHostOpenToRead        ? O_RDONLY | O_NONBLOCK | O_NOCTTY
                             : opening == ZPHostOpenToOverwrite ? O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY
                                                                : O_RDWR | O_CREAT | O_EXCL);
    int file;
    do file = open(path, flags, mode);
    while (file < 0 && errno == EINTR);
    return file;
}

BOOL ZPHostCloseFile(int file) {
    int saved = errno;
    if (close(file) < 0 && errno != EINTR) return NO;
    errno = saved;
    return YES;
}

BOOL ZPHostFileStatus(int file, ZPHostStatus *status) {
    struct stat s;
    if (fstat(file, &s) < 0) return NO;
    fill(status, s);
    return YES;
}

BOOL ZPHostPathStatus(const char *path, ZPHostStatus *status) {
    struct stat s;
    if (stat(path, &s) < 0) return NO;
    fill(status, s);
    return YES;
}

long long ZPHostReadAt(int file, void *buffer, std::size_t size, unsigned long long offset) {
    std::size_t done = 0;
    while (done < size) {
        std::size_t piece = size - done < largestTransfer ? size - done : largestTransfer;
        ssize_t n = pread(file, static_cast<char *>(buffer) + done, piece, static_cast<off_t>(offset + done));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return -1;
        if (n == 0) break;
        done += static_cast<std::size_t>(n);
    }
    return static_cast<long long>(done);
}

BOOL ZPHostWriteAll(int file, const void *bytes, std::size_t size) {
    auto *at = static_cast<const char *>(bytes);
    while (size) {
        ssize_t n = write(file, at, size < largestTransfer ? size : largestTransfer);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return NO;
        at += n;
        size -= static_cast<std::size_t>(n);
    }
    return YES;
}

BOOL ZPHostMoveFile(const char *from, const char *to) { return rename(from, to) == 0; }
BOOL ZPHostRemoveFile(const char *path) { return unlink(path) == 0; }
BOOL ZPHostSetMode(const char *path, unsigned mode) { return chmod(path, mode & 07777) == 0; }

unsigned ZPHostCreationMask() {
    // Asking the kernel by setting the mask would lay it bare to other threads meanwhile.
    char text[1024] = {};
    ZPHostReadFile("/proc/self/status", text, sizeof text - 1);
    unsigned mask;
    const char *line = std::strstr(text, "Umask:");
    return line && std::sscanf(line + 6, "%o", &mask) == 1 ? mask & 0777 : 022;
}

long long ZPHostReadFile(const char *path, void *buffer, std::size_t size) {
    int file = ZPHostOpenFile(path, ZPHostOpenToRead, 0);
    if (file < 0) return -1;
    long long n = ZPHostReadAt(file, buffer, size, 0);
    ZPHostCloseFile(file);
    return n;
}

BOOL ZPHostListDirectory(const char *path, BOOL (*visit)(void *context, const char *name), void *context) {
    DIR *directory = opendir(path);
    if (!directory) return NO;
    errno = 0;
    while (dirent *entry = readdir(directory)) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) continue;
        if (!visit(context, entry->d_name)) break;
        errno = 0;
    }
    int reason = errno;
    closedir(directory);
    errno = reason;
    return reason ? NO : YES;
}

BOOL ZPHostResolvePath(const char *path, char *buffer, std::size_t size) {
    char part[PATH_MAX], real[PATH_MAX];
    std::size_t length = std::strlen(path), end = length;
    if (path[0] != '/' || length >= sizeof part) return NO;
    std::memcpy(part, path, length + 1);
    // A name that no library path can hold is as good as one that cannot be reached.
    while (!realpath(part, real) || std::strchr(real, '\\')) {
        if (end <= 1) return NO;
        while (end > 1 && part[end - 1] == '/') --end;
        while (end > 1 && part[end - 1] != '/') --end;
        part[end] = 0;
    }
    const char *rest = path + end;
    while (*rest == '/') ++rest;
    std::size_t head = std::strlen(real), tail = std::strlen(rest);
    bool joins = tail && real[head - 1] != '/';
    if (head + joins + tail >= size) return NO;
    std::memcpy(buffer, real, head);
    if (joins) buffer[head++] = '/';
    std::memcpy(buffer + head, rest, tail + 1);
    return YES;
}

int ZPHostMakeAnonymousFile(std::size_t length) {
    int file = memfd_create("bedrock", MFD_CLOEXEC);
    if (file < 0) return -1;
    if (ftruncate(file, static_cast<off_t>(length)) < 0) {
        ZPHostCloseFile(file);
        return -1;
    }
    return file;
}

int ZPHostDuplicateFile(int file) { return fcntl(file, F_DUPFD_CLOEXEC, 0); }

void *ZPHostMapView(int file, std::size_t length, ZPHostView kind, void *at) {
    int access = kind == ZPHostViewReadOnly ? PROT_READ : PROT_READ | PROT_WRITE;
    int sharing = kind == ZPHostViewCopyOnWrite ? MAP_PRIVATE : MAP_SHARED;
    void *view = mmap(at, length, access, sharing | (at ? MAP_FIXED : 0), file, 0);
    return view == MAP_FAILED ? nullptr : view;
}

BOOL ZPHostUnmapView(void *view, std::size_t length) { return munmap(view, length) == 0; }
