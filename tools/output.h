// SPDX-License-Identifier: MIT
// How every tool ends.
#pragma once

#include <cerrno>
#include <cstdio>
#include <cstring>

/// Writes what is still in standard output's buffer. Answers `status`, or 1 after a complaint when anything that was
/// written did not get through, as on a full disk.
inline int finishOutput(const char *tool, int status) {
    bool failed = std::ferror(stdout) != 0;
    errno = 0;
    if (std::fflush(stdout) == 0 && !failed) return status;
    std::fprintf(stderr, "%s: cannot write: %s\n", tool, std::strerror(errno ? errno : EIO));
    return 1;
}
