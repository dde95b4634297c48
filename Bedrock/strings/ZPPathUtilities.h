// File paths. The operations are messages of every string (see ZPString.h): a slash and a backslash separate
// components, what they build is written with backslashes, and a path may begin with a drive ("C:") or name a
// network share ("\\server\share").
#pragma once

#include <Bedrock/strings/ZPString.h>

extern "C" {
/// The encoding of file names, decided at the first call and kept for the life of the process.
ZP_EXPORT ZPStringEncoding _ZPDefaultFileSystemEncoding();
}
