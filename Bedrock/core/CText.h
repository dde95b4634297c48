// SPDX-License-Identifier: MIT
// Strings from C text and back, for floors below the strings: through messages to a class found by name.
#pragma once

struct ZPString;

/// An autoreleased string of a formatted C text.
ZPString *_ZPStringWithCText(const char *format, ...) __attribute__((format(printf, 1, 2)));
/// The pointer of a string's `-cString`.
const char *_ZPCText(ZPString *string);
