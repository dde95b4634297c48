// SPDX-License-Identifier: MIT
// Searching for strings. Runs are searched for the needle's first and last unit in whole vectors; a text that
// keeps nearly matching, and every other kind of search, goes to a matcher that reads each unit once.
#include <Bedrock/strings/characters/Case.h>
#include <Bedrock/strings/cluster/Cluster.h>

#include <bit>

namespace {

constexpr unsigned stackNeedle = 100;
constexpr unsigned none = ZPNotFound;

// ---- the matcher: Knuth, Morris and Pratt's, over any indexable units ----

template <class At> unsigned matchOnce(At at, unsigned n, const unichar *needle, unsigned m) {
    ZPStackBuffer<unsigned, stackNeedle> table(m);
    unsigned *border = table.memory;
    border[0] = 0;
    for (unsigned i = 1, k = 0; i < m; ++i) {
        while (k && needle[i] != needle[k]) k = border[k - 1];
        if (needle[i] == needle[k]) ++k;
        border[i] = k;
    }
    for (unsigned i = 0, k = 0; i < n; ++i) {
        unichar u = at(i);
        while (k && u != needle[k]) k = border[k - 1];
        if (u == needle[k] && ++k == m) return i + 1 - m;
    }
    return none;
}

// ---- runs ----

// The first place of the needle in a run of U, which is not shorter than it.
template <class U> unsigned findInRun(const U *text, unsigned n, const U *needle, unsigned m) {
    typedef U Vector __attribute__((vector_size(16)));
    constexpr unsigned lanes = 16 / sizeof(U), laneBits = 8 * sizeof(U);
    constexpr std::uint64_t lane = sizeof(U) == 1 ? 0xFF : 0xFFFF;
    unsigned candidates = n - m + 1, i = 0;
    auto matches = [&](unsigned at) {
        return m <= 2 || std::memcmp(text + at + 1, needle + 1, (m - 2) * sizeof(U)) == 0;
    };
    if constexpr (std::endian::native == std::endian::little) {
        Vector first = Vector{} + needle[0], last = Vector{} + needle[m - 1];
        std::uint64_t effort = 0;
        for (; candidates - i >= lanes; i += lanes) {
            Vector a, b;
            std::memcpy(&a, text + i, 16);
            std::memcpy(&b, text + i + m - 1, 16);
            auto both = (a == first) & (b == last);
            std::uint64_t halves[2];
            std::memcpy(halves, &both, 16);
            if (!(halves[0] | halves[1])) [[likely]]
                continue;
            for (unsigned half = 0; half < 2; ++half)
                for (std::uint64_t rest = halves[half]; rest;) {
                    unsigned at = unsigned(std::countr_zero(rest)) / laneBits;
                    rest &= ~(lane << (at * laneBits));
                    at += i + half * (lanes / 2);
                    if (matches(at)) return at;
                    effort += m;
                }
            if (effort > 1024 + 4 * std::uint64_t(i)) [[unlikely]] {
                ZPStackBuffer<unichar, stackNeedle> units(m);
                std::copy_n(needle, m, units.memory);
                i += lanes;
                unsigned found = matchOnce([&](unsigned k) -> unichar { return text[i + k]; }, n - i, units.memory, m);
                return found == none ? none : found + i;
            }
        }
    }
    for (; i < candidates; ++i)
        if (text[i] == needle[0] && text[i + m - 1] == needle[m - 1] && matches(i)) return i;
    return none;
}

// The needle in the storage encoding; false when it has a unit that the encoding lacks.
bool asBytes(const ZPStringView &needle, unsigned char *bytes) {
    for (unsigned i = 0; i < needle.length; ++i) {
        unichar u = needle.units[i];
        if (u < 0x80) bytes[i] = static_cast<unsigned char>(u);
        else if (!ZPPrecompUnicodeToKESTREL(u, &bytes[i]) || _ZPUnitOfByte(bytes[i]) != u) return false;
    }
    return true;
}

// Forwards and exact, both strings showing runs.
unsigned findExactly(const ZPStringView &text, unsigned from, unsigned n, const ZPStringView &needle) {
    unsigned m = needle.length;
    if (text.bytes) {
        if (needle.bytes) return findInRun(text.bytes + from, n, needle.bytes, m);
        ZPStackBuffer<unsigned char, stackNeedle> bytes(m);
        return asBytes(needle, bytes.memory) ? findInRun(text.bytes + from, n, bytes.memory, m) : none;
    }
    auto *units = reinterpret_cast<const std::uint16_t *>(text.units + from);
    if (needle.units) return findInRun(units, n, reinterpret_cast<const std::uint16_t *>(needle.units), m);
    ZPStackBuffer<unichar, stackNeedle> wide(m);
    _ZPCopyUnits(needle, 0, m, wide.memory);
    return findInRun(units, n, reinterpret_cast<const std::uint16_t *>(wide.memory), m);
}

// Every other search: `at(i)` gives the units of the range, folded or not.
template <class At> unsigned find(At at, unsigned n, unichar *needle, unsigned m, unsigned options) {
    bool backwards = options & ZPBackwardsSearch;
    if (options & ZPAnchoredSearch) {
        unsigned start = backwards ? n - m : 0;
        for (unsigned i = 0; i < m; ++i)
            if (at(start + i) != needle[i]) return none;
        return start;
    }
    if (!backwards) return matchOnce(at, n, needle, m);
    std::reverse(needle, needle + m);
    unsigned found = matchOnce([&](unsigned i) { return at(n - 1 - i); }, n, needle, m);
    return found == none ? none : n - m - found;
}

struct SearchMethods : ZPString {
    ZPRange rangeOfString_options_range(ZPString *needle, unsigned options, ZPRange range) {
        return _ZPWithViews(this, needle, [&](const ZPStringView &text, const ZPStringView &sought) {
            return search(needle, text, sought, options, range);
        });
    }
    ZPRange search(ZPString *needle, const ZPStringView &text, const ZPStringView &sought, unsigned options,
                   ZPRange range) {
        _ZPCheckRange(this, "rangeOfString:options:range:"_sel, range, text.length);
        unsigned m = sought.length;
        if (range.length == 0 || m == 0 || m > range.length) return {none, 0};
        unsigned found;
        if (!(options & (ZPCaseInsensitiveSearch | ZPBackwardsSearch | ZPAnchoredSearch)) && text.shown() &&
            sought.shown()) {
            found = findExactly(text, range.location, range.length, sought);
        } else {
            ZPStackBuffer<unichar, stackNeedle> units(m);
            if (sought.shown()) _ZPCopyUnits(sought, 0, m, units.memory);
            else needle->getCharacters_range(units.memory, {0, m});
            bool folding = options & ZPCaseInsensitiveSearch;
            ZPCaseMapper fold;
            if (folding)
                std::transform(units.memory, units.memory + m, units.memory, [&](unichar u) { return fold(u); });
            found = _ZPWithUnitsOf(text, this, [&](auto &&source, unsigned) {
                unsigned from = range.location;
                if (folding)
                    return find([&](unsigned i) { return fold(source[from + i]); }, range.length, units.memory, m,
                                options);
                return find([&](unsigned i) -> unichar { return source[from + i]; }, range.length, units.memory, m,
                            options);
            });
        }
        if (found == none) return {none, 0};
        return {range.location + found, m};
    }
    ZPRange rangeOfString_options(ZPString *needle, unsigned options) {
        return self()->rangeOfString_options_range(needle, options, {0, self()->length()});
    }
    ZPRange rangeOfString(ZPString *needle) {
        return self()->rangeOfString_options_range(needle, 0, {0, self()->length()});
    }
    BOOL hasPrefix(ZPString *prefix) {
        return self()->rangeOfString_options_range(prefix, ZPAnchoredSearch, {0, self()->length()}).length != 0;
    }
    BOOL hasSuffix(ZPString *suffix) {
        return self()
                   ->rangeOfString_options_range(suffix, ZPAnchoredSearch | ZPBackwardsSearch, {0, self()->length()})
                   .length != 0;
    }
    BOOL _containsString(ZPString *needle) {
        return self()->rangeOfString_options_range(needle, 0, {0, self()->length()}).length != 0;
    }
    BOOL _containsChar(char character) {
        return _containsString(ZPString::stringWithCString_length(&character, character ? 1 : 0));
    }
};

}  // namespace

ZP_CATEGORY(ZPString, SearchMethods, rangeOfString_options_range, rangeOfString_options, rangeOfString, hasPrefix,
            hasSuffix, _containsString, _containsChar);
