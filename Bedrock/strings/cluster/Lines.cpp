// SPDX-License-Identifier: MIT
// Lines, composed characters, and searching for members of a set.
#include <Bedrock/strings/characters/Characters.h>
#include <Bedrock/strings/cluster/Cluster.h>

namespace {

constexpr unichar LF = 0x0A, CR = 0x0D;

bool isLineEnd(unichar u) { return u == LF || u == CR || u == 0x2028 || u == 0x2029; }
bool isHighSurrogate(unichar u) { return (u & 0xFC00) == 0xD800; }
bool isLowSurrogate(unichar u) { return (u & 0xFC00) == 0xDC00; }
bool isNonBase(unichar u) { return u >= 0x300 && _ZPIsInStandardSet(_ZPNonBaseSet, u); }

template <class Units> unsigned lineStart(Units &units, unsigned length, unsigned location) {
    if (location == 0) return 0;
    unsigned i = location;
    if (location < length && units[location] == LF && units[location - 1] == CR) --i;
    while (i > 0 && !isLineEnd(units[i - 1])) --i;
    return i;
}

template <class Units> void lineEnd(Units &units, unsigned length, unsigned at, unsigned *end, unsigned *contentsEnd) {
    unsigned contents, behind;
    if (at < length && units[at] == LF) {
        contents = at > 0 && units[at - 1] == CR ? at - 1 : at;
        behind = at + 1;
    } else {
        contents = at;
        while (contents < length && !isLineEnd(units[contents])) ++contents;
        behind = contents;
        if (contents < length)
            behind += units[contents] == CR && contents + 1 < length && units[contents + 1] == LF ? 2 : 1;
    }
    if (end) *end = behind;
    if (contentsEnd) *contentsEnd = contents;
}

struct LineMethods : ZPString {
    void getLineStart_end_contentsEnd_forRange(unsigned *start, unsigned *end, unsigned *contentsEnd, ZPRange range) {
        lines(start, end, contentsEnd, range, "getLineStart:end:contentsEnd:forRange:"_sel);
    }
    void lines(unsigned *start, unsigned *end, unsigned *contentsEnd, ZPRange range, SEL selector) {
        _ZPWithUnits(this, [&](auto &&units, unsigned length) {
            _ZPCheckRange(this, selector, range, length);
            if (start) *start = lineStart(units, length, range.location);
            if (end || contentsEnd)
                lineEnd(units, length, range.location + range.length - (range.length > 0), end, contentsEnd);
        });
    }
    ZPRange lineRangeForRange(ZPRange range) {
        unsigned start = 0, end = 0;
        lines(&start, &end, nullptr, range, "lineRangeForRange:"_sel);
        return {start, end - start};
    }

    ZPRange rangeOfComposedCharacterSequenceAtIndex(unsigned index) {
        return _ZPWithUnits(this, [&](auto &&units, unsigned length) -> ZPRange {
            if (index >= length) _ZPRaiseOutOfBounds(this, "rangeOfComposedCharacterSequenceAtIndex:"_sel);
            unsigned start = index;
            while (start > 0 && isNonBase(units[start])) --start;
            if (start > 0 && isLowSurrogate(units[start]) && isHighSurrogate(units[start - 1])) --start;
            unsigned end = index + (isHighSurrogate(units[index]) ? 2 : 1);
            if (end > length) end = length;
            while (end < length && isNonBase(units[end])) ++end;
            return {start, end - start};
        });
    }

    ZPRange rangeOfCharacterFromSet_options_range(ZPCharacterSet *set, unsigned options, ZPRange range) {
        return _ZPWithUnitsAndSet(
            this, set, [&](auto &&units, unsigned length, const ZPMembership &isMember) -> ZPRange {
                _ZPCheckRange(this, "rangeOfCharacterFromSet:options:range:"_sel, range, length);
                unsigned examined = (options & ZPAnchoredSearch) && range.length ? 1 : range.length;
                unsigned first = range.location, last = range.location + range.length - 1;
                for (unsigned i = 0; i < examined; ++i) {
                    unsigned index = options & ZPBackwardsSearch ? last - i : first + i;
                    if (isMember(units[index])) return {index, 1};
                }
                return {ZPNotFound, 0};
            });
    }
    ZPRange rangeOfCharacterFromSet_options(ZPCharacterSet *set, unsigned options) {
        return self()->rangeOfCharacterFromSet_options_range(set, options, {0, self()->length()});
    }
    ZPRange rangeOfCharacterFromSet(ZPCharacterSet *set) {
        return self()->rangeOfCharacterFromSet_options_range(set, 0, {0, self()->length()});
    }

    BOOL _containsCharFromSet(ZPCharacterSet *set) {
        return _ZPWithUnitsAndSet(this, set, [&](auto &&units, unsigned length, const ZPMembership &isMember) -> BOOL {
            unsigned i = 0;
            while (i < length && _ZPIsInStandardSet(_ZPWhitespaceAndNewlineSet, units[i])) ++i;
            for (; i < length; ++i)
                if (isMember(units[i])) {
                    // What follows decides only when all of it would be skipped too.
                    while (i < length && _ZPIsInStandardSet(_ZPWhitespaceAndNewlineSet, units[i])) ++i;
                    return i < length;
                }
            return NO;
        });
    }
};

}  // namespace

ZP_CATEGORY(ZPString, LineMethods, getLineStart_end_contentsEnd_forRange, lineRangeForRange,
            rangeOfComposedCharacterSequenceAtIndex, rangeOfCharacterFromSet_options_range,
            rangeOfCharacterFromSet_options, rangeOfCharacterFromSet, _containsCharFromSet);
