// SPDX-License-Identifier: MIT
// The library's paths and the host's. The library's own paths use drive letters and backslashes (a slash
// separates too). Drive C is the host's root, and so is a path that begins with a single separator.
#pragma once

#include <Bedrock/platform/ZPTypes.h>

extern "C" {
/// Writes the host path that a library path names, both NUL-terminated UTF-8: "C:\home\me" and "/home/me"
/// give "/home/me", "a\b" gives "a/b". Answers NO, and an empty buffer, for a drive other than C, a
/// network path, an empty path, and a result that does not fit `size` bytes with its NUL.
ZP_EXPORT BOOL ZPHostPathFromPath(const char *path, char *buffer, unsigned size);
/// The other direction: "/home/me" gives "C:\home\me", "a/b" gives "a\b"; a relative path that looks as if it began
/// with a drive or a home directory, as "c:x" and "~a" do, gets ".\" before it. Answers NO for a host path that
/// holds a backslash, which no library path can name, and in the cases above.
ZP_EXPORT BOOL ZPPathFromHostPath(const char *hostPath, char *buffer, unsigned size);
}
