// SPDX-License-Identifier: MIT
// Hashing, ordering and equality, on runs where strings show them and on blocks of units where not.
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/strings/cluster/Cluster.h>

#include <bit>

namespace {

// ---- hash: unrolled into products that do not wait for each other ----

constexpr unsigned hashedUnits = _ZPHashedUnits;
constexpr const _ZPHashPowers &powers = _ZPPowers;
unsigned finish(unsigned hash, unsigned length) { return _ZPFinishHash(hash, length); }

template <class U> unsigned hashOf(const U *units, unsigned length, unsigned hashed) {
    unsigned hash = length * powers.of[hashed];
    for (unsigned i = 0; i < hashed; ++i) hash += unsigned(units[i]) * powers.of[hashed - 1 - i];
    return finish(hash, length);
}

template <class U> unsigned hashEnds(const U *first, const U *last, unsigned length) {
    unsigned hash = length * powers.of[16];
    for (unsigned i = 0; i < 8; ++i)
        hash += unsigned(first[i]) * powers.of[15 - i] + unsigned(last[i]) * powers.of[7 - i];
    return finish(hash, length);
}

// ---- ordering ----

// The index of the first difference, or n: eight bytes at a time.
template <class U> unsigned firstDifference(const U *a, const U *b, unsigned n) {
    constexpr unsigned step = 8 / sizeof(U);
    unsigned i = 0;
    for (; n - i >= step; i += step) {
        std::uint64_t x, y;
        std::memcpy(&x, a + i, 8);
        std::memcpy(&y, b + i, 8);
        if (x != y) {
            if constexpr (std::endian::native == std::endian::little)
                return i + unsigned(std::countr_zero(x ^ y)) / (8 * sizeof(U));
            else return i + unsigned(std::countl_zero(x ^ y)) / (8 * sizeof(U));
        }
    }
    while (i < n && a[i] == b[i]) ++i;
    return i;
}

template <class U, class Map>
ZPComparisonResult compareRuns(const U *a, const U *b, unsigned lengthA, unsigned lengthB, unsigned options, Map map) {
    unsigned shorter = lengthA < lengthB ? lengthA : lengthB;
    for (unsigned i = 0;; ++i) {
        i += firstDifference(a + i, b + i, shorter - i);
        if (i == shorter) break;
        unichar x = map(a[i]), y = map(b[i]);
        if (options & ZPCaseInsensitiveSearch) {
            x = _ZPInCapitalLetters(x);
            y = _ZPInCapitalLetters(y);
        }
        if (x != y) return x < y ? ZPOrderedAscending : ZPOrderedDescending;
    }
    return lengthA == lengthB ? ZPOrderedSame : lengthA < lengthB ? ZPOrderedAscending : ZPOrderedDescending;
}

void fetch(ZPString *string, const ZPStringView &view, unsigned from, unsigned count, unichar *buffer) {
    if (view.shown()) _ZPCopyUnits(view, from, count, buffer);
    else string->getCharacters_range(buffer, {from, count});
}

// ---- equality ----

// Anything may come as an argument; what stands for a string in another place says so itself.
bool isString(ZPString *object) {
    for (Class c = object->isa; c; c = c->superclass)
        if (c == ZPString::class_()) return true;
    return object->isKindOfClass(ZPString::class_());
}

bool equalBytesAndUnits(const unsigned char *bytes, const unichar *units, unsigned n) {
    unsigned i = 0;
    if constexpr (std::endian::native == std::endian::little)
        for (; n - i >= 4; i += 4) {  // four ASCII bytes, spread to the width of units
            std::uint32_t four;
            std::uint64_t wide;
            std::memcpy(&four, bytes + i, 4);
            std::memcpy(&wide, units + i, 8);
            if (four & 0x80808080) break;
            std::uint64_t spread = (four | std::uint64_t(four) << 16) & 0x0000FFFF0000FFFF;
            spread = (spread | spread << 8) & 0x00FF00FF00FF00FF;
            if (spread != wide) return false;
        }
    for (; i < n; ++i)
        if (_ZPUnitOfByte(bytes[i]) != units[i]) return false;
    return true;
}

ZP_INLINE bool equalRuns(ZPStringView a, ZPStringView b) {
    if (a.length != b.length) return false;
    if (a.length == 0) return true;
    if (a.bytes)
        return b.bytes ? std::memcmp(a.bytes, b.bytes, a.length) == 0 : equalBytesAndUnits(a.bytes, b.units, a.length);
    return b.units ? std::memcmp(a.units, b.units, a.length * sizeof(unichar)) == 0
                   : equalBytesAndUnits(b.bytes, a.units, a.length);
}

// A block at a time, for forms that differ, and for what is no run. By value: the views of their callers stay in
// registers.
[[gnu::noinline]] ZPComparisonResult compareBlocks(ZPString *string, ZPStringView a, ZPString *other, ZPStringView b,
                                                   unsigned options, ZPRange range) {
    unichar mine[_ZPBlockUnits], its[_ZPBlockUnits];
    unsigned longer = std::max(range.length, b.length);
    for (unsigned at = 0; at < longer; at += std::min(longer - at, _ZPBlockUnits)) {
        auto step = [at](unsigned length) { return at >= length ? 0 : std::min(length - at, _ZPBlockUnits); };
        unsigned n = step(range.length), m = step(b.length);
        if (n) fetch(string, a, range.location + at, n, mine);
        if (m) fetch(other, b, at, m, its);
        if (ZPComparisonResult order = ZPCompareCharacters(mine, its, n, m, options)) return order;
    }
    return ZPOrderedSame;
}

[[gnu::noinline]] BOOL equalBlocks(ZPString *string, ZPStringView a, ZPString *other, ZPStringView b) {
    if (!a.shown()) return string->compare_options_range(other, 0, {0, a.length}) == ZPOrderedSame;
    if (a.length != b.length) return NO;
    unichar its[_ZPBlockUnits];
    for (unsigned at = 0, n; at < a.length; at += n) {
        n = std::min(a.length - at, _ZPBlockUnits);
        other->getCharacters_range(its, {at, n});
        ZPStringView piece{a.bytes ? a.bytes + at : nullptr, a.units ? a.units + at : nullptr, n};
        if (!equalRuns(piece, {nullptr, its, n})) return NO;
    }
    return YES;
}

struct CompareMethods : ZPString {
    ZPComparisonResult compare_options_range(ZPString *other, unsigned options, ZPRange range) {
        return _ZPWithViews(this, other, [&](const ZPStringView &a, const ZPStringView &b) -> ZPComparisonResult {
            _ZPCheckRange(this, "compare:options:range:"_sel, range, a.length);
            if (a.bytes && b.bytes)
                return ZPCompareCString(reinterpret_cast<const char *>(a.bytes) + range.location,
                                        reinterpret_cast<const char *>(b.bytes), range.length, b.length, options);
            if (a.units && b.units)
                return ZPCompareCharacters(a.units + range.location, b.units, range.length, b.length, options);
            return compareBlocks(this, a, other, b, options, range);
        });
    }
    ZPComparisonResult compare_options(ZPString *other, unsigned options) {
        // The usual two strings need neither of the messages.
        if (isa == ZPInlineCString::class_() && other && other->isa == isa) {
            ZPStringView a = _ZPViewOfString(this), b = _ZPViewOfString(other);
            return ZPCompareCString(reinterpret_cast<const char *>(a.bytes), reinterpret_cast<const char *>(b.bytes),
                                    a.length, b.length, options);
        }
        return self()->compare_options_range(other, options, {0, self()->length()});
    }
    ZPComparisonResult compare(ZPString *other) { return compare_options(other, 0); }
    ZPComparisonResult caseInsensitiveCompare(ZPString *other) {
        return compare_options(other, ZPCaseInsensitiveSearch);
    }

    BOOL isEqual(id other) {
        if (other.pointer() == this) return YES;
        if (!other) return NO;
        if (other.pointer()->isa != isa && !other->isKindOfClass(ZPString::class_())) return NO;
        return self()->isEqualToString(other.unchecked<ZPString>());
    }
    BOOL isEqualToString(ZPString *other) { return _ZPEqualStrings(this, other); }
    unsigned hash() { return ZPHashString(this); }
};

}  // namespace

ZP_CATEGORY(ZPString, CompareMethods, compare_options_range, compare_options, compare, caseInsensitiveCompare, isEqual,
            isEqualToString, hash);

BOOL _ZPEqualStrings(ZPString *string, ZPString *other) {
    if (other == string) return YES;
    if (!other) return NO;
    if (other->isa != string->isa && !isString(other)) return NO;
    return _ZPWithViews(string, other, [&](const ZPStringView &a, const ZPStringView &b) -> BOOL {
        if (a.shown() && b.shown()) return equalRuns(a, b);
        return equalBlocks(string, a, other, b);
    });
}

unsigned ZPHashCharacters(const unichar *characters, unsigned length) {
    if (length > hashedUnits) return hashEnds(characters, characters + length - 8, length);
    return hashOf(characters, length, length);
}

unsigned ZPHashCString(const char *text, unsigned length) {
    auto *bytes = reinterpret_cast<const unsigned char *>(text);
    unsigned hash;
    if (std::endian::native == std::endian::little && length >= 8) {
        if (_ZPHashWords(bytes, length, hash)) [[likely]]
            return hash;
    } else if (_ZPIsASCII(bytes, length)) [[likely]] {
        return length > hashedUnits ? hashEnds(bytes, bytes + length - 8, length) : hashOf(bytes, length, length);
    }
    unsigned hashed = std::min(length, hashedUnits);
    bool ends = length > hashedUnits;
    unichar units[hashedUnits];
    for (unsigned i = 0; i < hashed; ++i) units[i] = _ZPUnitOfByte(bytes[ends && i >= 8 ? length - 16 + i : i]);
    return hashOf(units, length, hashed);
}

unsigned ZPHashString(ZPString *string) {
    ZPStringView view = _ZPViewOfString(string);
    if (view.bytes) return ZPHashCString(reinterpret_cast<const char *>(view.bytes), view.length);
    if (view.units) return ZPHashCharacters(view.units, view.length);
    unichar units[hashedUnits];
    if (view.length > hashedUnits) {
        string->getCharacters_range(units, {0, 8});
        string->getCharacters_range(units + 8, {view.length - 8, 8});
        return hashOf(units, view.length, hashedUnits);
    }
    if (view.length) string->getCharacters_range(units, {0, view.length});
    return hashOf(units, view.length, view.length);
}

ZPComparisonResult ZPCompareCharacters(const unichar *a, const unichar *b, unsigned lengthA, unsigned lengthB,
                                       unsigned options) {
    return compareRuns(a, b, lengthA, lengthB, options, [](unichar u) { return u; });
}

ZPComparisonResult ZPCompareCString(const char *a, const char *b, unsigned lengthA, unsigned lengthB,
                                    unsigned options) {
    return compareRuns(reinterpret_cast<const unsigned char *>(a), reinterpret_cast<const unsigned char *>(b), lengthA,
                       lengthB, options, [](unsigned char c) { return _ZPUnitOfByte(c); });
}
