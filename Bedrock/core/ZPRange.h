// SPDX-License-Identifier: MIT
// Small value types that every subsystem shares.
#pragma once

#include <Bedrock/platform/ZPTypeEncoding.h>

/// A run of positions: `length` of them from `location` on.
struct ZPRange {
    unsigned location;
    unsigned length;
    /// Equal location and length.
    friend constexpr bool operator==(const ZPRange &, const ZPRange &) = default;
};
template <> struct objc_structEncoding<ZPRange> {
    static constexpr char text[] = "{_ZPRange=II}";
};

inline constexpr ZPRange ZPMakeRange(unsigned location, unsigned length) { return {location, length}; }

/// What every search answers that finds nothing.
inline constexpr unsigned ZPNotFound = 0x7FFFFFFF;

using ZPComparisonResult = int;
inline constexpr ZPComparisonResult ZPOrderedAscending = -1;
inline constexpr ZPComparisonResult ZPOrderedSame = 0;
inline constexpr ZPComparisonResult ZPOrderedDescending = 1;
