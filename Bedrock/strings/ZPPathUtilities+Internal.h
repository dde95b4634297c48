// Path operations on a buffer of units with a length that they read and update. A BOOL answer says whether
// anything was done.
#pragma once

#include <Bedrock/strings/ZPPathUtilities.h>

/// Longest path that an operation builds; the host takes no longer ones.
inline constexpr unsigned _ZPPathCapacity = 4095;

inline bool _ZPIsPathSeparator(unichar u) { return u == '/' || u == '\\'; }
bool _ZPHasDrivePrefix(const unichar *units, unsigned length);
/// Two backslashes.
bool _ZPHasNetworkPrefix(const unichar *units, unsigned length);

/// Drops separators at the end, but not those of "\" and "C:\".
BOOL _ZPStripTrailingPathSlashes(const unichar *units, unsigned *length);
/// Writes every run of separators behind a network prefix as one `separator`.
BOOL _ZPTransmutePathSlashes(unichar *units, unsigned *length, unichar separator);
unsigned _ZPStartOfLastPathComponent(const unichar *units, unsigned length);
unsigned _ZPLengthAfterDeletingLastPathComponent(const unichar *units, unsigned length);
/// NO when the capacity does not suffice, or when a component that names a drive or a share would follow
/// something.
BOOL _ZPAppendPathComponent(unichar *buffer, unsigned *length, unsigned capacity, const unichar *component, unsigned componentLength);
/// The index of the extension's dot, or 0.
unsigned _ZPStartOfPathExtension(const unichar *units, unsigned length);
unsigned _ZPLengthAfterDeletingPathExtension(const unichar *units, unsigned length);
