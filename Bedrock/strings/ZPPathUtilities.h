// SPDX-License-Identifier: MIT
// File paths. The operations are messages of every string (see ZPString.h): a slash and a backslash separate
// components, what they build is written with backslashes, and a path may begin with a drive ("C:"), name a
// network share ("\\server\share"), or begin with "~" or "~name" for a home directory. A path is absolute when
// it begins with "~", a share, or a drive and a separator.
#pragma once

#include <Bedrock/strings/ZPString.h>

/// What path operations answer: a string whose units lie inside the object. Immutable; may be shared between
/// threads. Made without separators at the end, but for "\" and "C:\". An index past the end raises
/// ZPRangeException.
struct ZPPathStore2 : ZPString {
    ZP_CLASS(ZPPathStore2)
    unsigned _lengthAndRefCount;  ///< the length; references are counted beside the instance

    /// Copies the units; autoreleased.
    static ZPPathStore2 *pathStoreWithCharacters_length(const unichar *characters, unsigned length)
        ZP_CLASS_ASKS(characters, length);
    /// From bytes in the default C-string encoding; null when they are not text in it. Autoreleased.
    static ZPPathStore2 *pathStoreWithCString(const char *bytes) ZP_CLASS_ASKS(bytes);
    /// As of ZPString.
    static ZPString *pathWithComponents(ZPArray *components) ZP_CLASS_ASKS(components);
};

extern "C" {
/// The encoding of file names, decided at the first call and kept for the life of the process: the number in the
/// resource file "FileSystemEncoding", else the encoding of C strings.
ZP_EXPORT ZPStringEncoding _ZPDefaultFileSystemEncoding();

// The user and the places that programs ask for; paths in the library's form. Any thread may call these.

/// The login name, else the environment's "USERNAME"; null when there is neither. Kept once found.
ZP_EXPORT ZPString *ZPUserName();
/// The user's full name; null when the host knows none. Kept once found.
ZP_EXPORT ZPString *ZPFullUserName();
/// The home directory of a user, by default (null) the current one; null when there is none. For the current user
/// the environment's "HOMEDRIVE" and "HOMEPATH" come first, then "HOME".
ZP_EXPORT ZPString *ZPHomeDirectoryForUser(ZPString *name);
/// The current user's home directory; null when there is none. Kept once found.
ZP_EXPORT ZPString *ZPHomeDirectory();
/// A directory for temporary files.
ZP_EXPORT ZPString *ZPTemporaryDirectory();
/// The installation root; "/" when there is none.
ZP_EXPORT ZPString *ZPLodestarRootDirectory();
/// The same as `ZPLodestarRootDirectory`.
ZP_EXPORT ZPString *ZPCorvidRootDirectory();
/// Where applications are looked for, the user's own first.
ZP_EXPORT ZPArray *ZPStandardApplicationPaths();
/// Where libraries are looked for, the user's own first.
ZP_EXPORT ZPArray *ZPStandardLibraryPaths();
}
