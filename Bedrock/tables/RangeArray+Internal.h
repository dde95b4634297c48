// SPDX-License-Identifier: MIT
// What the lists of ranges share: the arithmetic of ranges, the search by location, memory, and text.
#pragma once

#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/Memory.h>
#include <Bedrock/tables/ZPRangeArray.h>
#include <Bedrock/tables/Tables+Internal.h>

#include <bit>
#include <cstring>
#include <string>

// ---- ranges: ends take 33 bits ----

inline std::uint64_t _ZPRangeEnd(ZPRange r) { return std::uint64_t(r.location) + r.length; }
/// Overlap or touch.
inline bool _ZPRangesCoalesce(ZPRange a, ZPRange b) {
    return a.location <= b.location ? b.location <= _ZPRangeEnd(a) : a.location <= _ZPRangeEnd(b);
}
/// From the smaller location to the larger end; both ends must fit 32 bits.
inline ZPRange _ZPUnionOfRanges(ZPRange a, ZPRange b) {
    unsigned start = a.location < b.location ? a.location : b.location;
    std::uint64_t end = _ZPRangeEnd(a) > _ZPRangeEnd(b) ? _ZPRangeEnd(a) : _ZPRangeEnd(b);
    return {start, unsigned(end - start)};
}
inline bool _ZPRangeContains(ZPRange r, unsigned location) {
    return location - r.location < r.length && location >= r.location;
}
/// Raises ZPRangeException for a range whose end does not fit.
inline void _ZPCheckRangeEnd(ZPRange r, const char *function) {
    if (_ZPRangeEnd(r) > 0xFFFFFFFF) [[unlikely]]
        ZPException::raise_format(ZPRangeException, "*** %s(): the end of {%u, %u} passes 0xFFFFFFFF"_zp, function,
                                  r.location, r.length);
}
[[noreturn]] ZP_COLD inline void _ZPRaiseRangeIndex() { ZPException::raise_format(ZPRangeException, ""_zp); }

/// The position of the first range whose location is not less than `location`, or the count.
inline unsigned _ZPPositionOfLocation(const ZPRangeArray *list, unsigned location) {
    const ZPRange *ranges = list->ranges;
    unsigned count = list->count;
    if (count < 4) {
        unsigned p = 0;
        while (p < count && ranges[p].location < location) ++p;
        return p;
    }
    if (ranges[count - 1].location < location) return count;
    if (ranges[0].location >= location) return 0;
    // The range at `before` is always one that begins before the location. Both steps of a pair of halves are
    // computed, none is jumped over: where the search goes cannot be predicted.
    unsigned before = 0;
    for (unsigned step = std::bit_floor(count); step; step >>= 1) {
        unsigned next = before + step;
        unsigned probe = next < count ? next : before;
        before = ranges[probe].location < location ? probe : before;
    }
    return before + 1;
}

// ---- memory ----

/// Cleared memory of a zone; raises ZPMallocException.
template <class T> T *_ZPRangeMemory(std::size_t count, ZPZone *zone) {
    return _ZPAllocateCleared<T>(count, zone, "%lu ranges", static_cast<unsigned long>(count));
}
/// Capacity for a request.
unsigned _ZPRangeCapacity(unsigned request);
/// Readies a list that lies in a record of the zone.
void _ZPStartRangeList(ZPRangeArray *list, unsigned capacity, ZPZone *zone);
void _ZPEndRangeList(ZPRangeArray *list);
/// The capacity of a full list once it has grown; raises when there is none.
unsigned _ZPGrownRangeCapacity(const ZPRangeArray *list);
/// The capacity after `run` removals, each of which may halve it first.
unsigned _ZPShrunkRangeCapacity(const ZPRangeArray *list, unsigned run);
/// Grows a full list; inserting a range raises nothing then.
void _ZPMakeRoomForRange(ZPRangeArray *list);
void _ZPInsertRange(ZPRangeArray *list, ZPRange range, unsigned index);
/// Removes a run of ranges, as many single removals would.
void _ZPRemoveRanges(ZPRangeArray *list, unsigned index, unsigned run);

// ---- text ----

/// A mutable string written through a buffer.
struct _ZPRangeText {
    _ZPMutableStringAbove *text;
    std::string buffer;

    explicit _ZPRangeText(std::uint64_t expected)
        : text(_ZPMutableText(unsigned(expected < 1 << 20 ? expected : 1 << 20))) {}
    void add(const char *format, ...) __attribute__((format(printf, 2, 3)));
    void addString(ZPString *string);
    void flush();
    ZPString *finish() { return flush(), id(text); }
};
