// SPDX-License-Identifier: MIT
// Small value types that every subsystem shares.
#pragma once

#include <Bedrock/platform/ZPTypeEncoding.h>

/// A run of positions. Nothing keeps its end, location + length, from passing 0xFFFFFFFF: who takes one checks it.
struct ZPRange {
    unsigned location;  ///< the first position
    unsigned length;  ///< how many there are
    /// Equal location and length.
    friend constexpr bool operator==(const ZPRange &, const ZPRange &) = default;
};
/// A range in type strings.
template <> struct objc_structEncoding<ZPRange> {
    static constexpr char text[] = "{_ZPRange=II}";  ///< null-terminated
};

/// The range of these two numbers.
inline constexpr ZPRange ZPMakeRange(unsigned location, unsigned length) { return {location, length}; }

/// What every search answers that finds nothing.
inline constexpr unsigned ZPNotFound = 0x7FFFFFFF;

/// How one object follows another: one of the three below, or any number of the same sign.
using ZPComparisonResult = int;
inline constexpr ZPComparisonResult ZPOrderedAscending = -1;  ///< the receiver, or the first, comes before the other
inline constexpr ZPComparisonResult ZPOrderedSame = 0;  ///< neither comes before the other
inline constexpr ZPComparisonResult ZPOrderedDescending = 1;  ///< the receiver, or the first, comes after the other
