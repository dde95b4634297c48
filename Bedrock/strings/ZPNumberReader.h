// SPDX-License-Identifier: MIT
// Reading numbers from a place in a string.
#pragma once

#include <Bedrock/core/ZPRange.h>

ZP_FORWARD(ZPCharacterSet);
ZP_FORWARD(ZPDictionary);
ZP_FORWARD(ZPString);

// Each starts at `*location`, passes over members of the skip set (null: over nothing), and answers NO, changing
// nothing, when no number stands there; else it stores the number (at a pointer that may be null) and moves the
// location behind it. Any thread.
extern "C" {
/// A sign, more to be skipped, decimal digits. What does not fit gives the nearest int, and all digits are read.
ZP_EXPORT BOOL _ZPScanIntFromString(ZPString *string, ZPCharacterSet *skip, int *result, unsigned *location);
/// The same with the nearest long long.
ZP_EXPORT BOOL _ZPScanLongLongFromString(ZPString *string, ZPCharacterSet *skip, long long *result, unsigned *location);
/// The decimal separator is the first unit of the locale's ZPDecimalSeparator, or a point. The result is the
/// nearest double, infinite beyond the range.
ZP_EXPORT BOOL _ZPScanDoubleFromString(ZPString *string, ZPCharacterSet *skip, double *result, unsigned *location,
                                       ZPDictionary *locale);
}
