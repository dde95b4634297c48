// SPDX-License-Identifier: MIT
// The one mapping between this system's paths and the host's.
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/platform/ZPPath.h>

#include <cstring>

namespace {

bool isSeparator(char c) { return c == '/' || c == '\\'; }

// Writes prefix and path, every separator turned to `to`.
BOOL write(const char *prefix, const char *path, char to, char *buffer, unsigned size) {
    std::size_t head = std::strlen(prefix), tail = std::strlen(path);
    if (head + tail == 0 || head + tail >= size) return NO;
    std::memcpy(buffer, prefix, head);
    for (std::size_t i = 0; i <= tail; ++i) buffer[head + i] = isSeparator(path[i]) ? to : path[i];
    return YES;
}

}  // namespace

BOOL ZPHostPathFromPath(const char *path, char *buffer, unsigned size) {
    if (size) *buffer = 0;
    if (!path || !*path) return NO;
    if (path[0] == '\\' && path[1] == '\\') return NO;
    if (!_ZPIsLetter(path[0]) || path[1] != ':') return write("", path, '/', buffer, size);
    if (path[0] != 'C' && path[0] != 'c') return NO;
    return write(path[2] ? "" : ".", path + 2, '/', buffer, size);
}

BOOL ZPPathFromHostPath(const char *hostPath, char *buffer, unsigned size) {
    if (size) *buffer = 0;
    if (!hostPath || !*hostPath || std::strchr(hostPath, '\\')) return NO;
    bool looksSpecial = hostPath[0] == '~' || (_ZPIsLetter(hostPath[0]) && hostPath[1] == ':');
    return write(hostPath[0] == '/' ? "C:" : looksSpecial ? ".\\" : "", hostPath, '\\', buffer, size);
}
