// SPDX-License-Identifier: MIT
// Case mapping: the functions for one unit, and whole strings through them.
#include <Bedrock/strings/characters/Case.h>
#include <Bedrock/strings/characters/Characters.h>
#include <Bedrock/strings/cluster/Cluster.h>

#include <iterator>

namespace {

constexpr unsigned turkish = 1;
constexpr unsigned mostUnits = 3;

struct Expansion {
    unichar unit;
    unichar upper[3], title[3];
};
constexpr Expansion expansions[] = {
    {0xFB00, {'F', 'F'}, {'F', 'f'}},           {0xFB01, {'F', 'I'}, {'F', 'i'}},
    {0xFB02, {'F', 'L'}, {'F', 'l'}},           {0xFB03, {'F', 'F', 'I'}, {'F', 'f', 'i'}},
    {0xFB04, {'F', 'F', 'L'}, {'F', 'f', 'l'}}, {0xFB05, {'S', 'T'}, {'S', 't'}},
    {0xFB06, {'S', 'T'}, {'S', 't'}},
};
constexpr Expansion sharpS = {0xDF, {'S', 'S'}, {'S', 's'}};

const Expansion *expansionOf(unichar u) { return u == sharpS.unit ? &sharpS : &expansions[u - expansions[0].unit]; }

unsigned write(const unichar (&units)[3], unichar *output) {
    unsigned n = units[2] ? 3 : 2;
    std::copy_n(units, n, output);
    return n;
}

unsigned write(unichar unit, unichar *output) {
    *output = unit;
    return 1;
}

ZP_INLINE bool expands(unichar u) {
    return (u == sharpS.unit) | (unichar(u - expansions[0].unit) < std::size(expansions));
}

ZP_INLINE unsigned writeUpper(ZPCaseMapper &mapper, unichar u, unichar *output) {
    return expands(u) ? write(expansionOf(u)->upper, output) : write(mapper.upper(u), output);
}

ZP_INLINE unsigned writeTitle(ZPCaseMapper &mapper, unichar u, unichar *output) {
    return expands(u) ? write(expansionOf(u)->title, output) : write(mapper.title(u), output);
}

// The Turkish mapping of a dotted or dotless I; 0 for any other unit.
unichar turkishCase(unichar u, bool lower) {
    if (lower) return u == 0x130 ? u'i' : u == 'I' ? 0x131 : 0;
    return u == 'i' ? 0x130 : u == 0x131 ? u'I' : 0;
}

using Convert = unsigned (*)(unichar, unichar *, unsigned);

ZPString *adopted(ZPZoneBlock<unichar> &block, std::size_t written) {
    if (written > 0xFFFFFFFF) _ZPRaiseOutOfMemory("a string");
    return _ZPNewStringAdoptingUnits(block.takeShrunk(written), unsigned(written), YES, nullptr)->autorelease();
}

// Maps every unit with `convert(unit, output)`, which answers how many units it has written, into a new Unicode
// string.
template <class F> ZPString *mapped(ZPString *string, F convert) {
    return _ZPWithUnits(string, [&](auto &&units, unsigned length) -> ZPString * {
        if (length == 0) return ""_zp;
        ZPZoneBlock<unichar> block(std::size_t(length) * mostUnits);
        std::size_t written = 0;
        for (unsigned i = 0; i < length; ++i) written += convert(units[i], block + written);
        return adopted(block, written);
    });
}

// The end of the run of units, from `from` on, that do not expand.
template <class Units> unsigned endOfPlain(Units &units, unsigned from, unsigned length) {
    if constexpr (std::is_pointer_v<std::remove_cvref_t<Units>>) {
        typedef std::uint16_t Vector __attribute__((vector_size(16)));
        const Vector lone = Vector{} + std::uint16_t(sharpS.unit), first = Vector{} + std::uint16_t(expansions[0].unit),
                     count = Vector{} + std::uint16_t(std::size(expansions));
        for (constexpr unsigned lanes = 8; length - from >= lanes; from += lanes) {
            Vector some;
            std::memcpy(&some, units + from, sizeof some);
            auto expanding = (some == lone) | (some - first < count);
            std::uint64_t halves[2];
            std::memcpy(halves, &expanding, sizeof halves);
            if (halves[0] | halves[1]) break;
        }
    }
    while (from < length && !expands(units[from])) ++from;
    return from;
}

// The same for a map that most units go through one to one: runs without units that expand are mapped by a loop
// without branches.
template <bool MayExpand> ZPString *mappedByPages(ZPString *string, const ZPCaseMap ZPCaseTables::*direction) {
    return _ZPWithUnits(string, [&](auto &&units, unsigned length) -> ZPString * {
        if (length == 0) return ""_zp;
        ZPCaseMapper mapper;
        for (unsigned i = 0; i < length && !mapper.hasRead(); ++i) mapper.tables(units[i]);
        const ZPCaseMap &map = mapper.tables(0).*direction;
        ZPZoneBlock<unichar> block(std::size_t(length) * (MayExpand ? mostUnits : 1));
        unichar *output = block;
        for (unsigned i = 0; i < length;) {
            for (unsigned end = MayExpand ? endOfPlain(units, i, length) : length; i < end; ++i)
                *output++ = map[units[i]];
            if (MayExpand && i < length) output += write(expansionOf(units[i++])->upper, output);
        }
        return adopted(block, std::size_t(output - block));
    });
}

struct CaseMethods : ZPString {
    ZPString *_caseCopyAux_flags(Convert convert, unsigned flags) {
        return mapped(this, [=](unichar u, unichar *output) { return convert(u, output, flags); });
    }
    ZPString *uppercaseString() { return mappedByPages<true>(this, &ZPCaseTables::upper); }
    ZPString *lowercaseString() { return mappedByPages<false>(this, &ZPCaseTables::lower); }
    ZPString *_capitalizedStringWithFlags(unsigned flags) {
        bool afterLetter = false;
        return mapped(this, [=, mapper = ZPCaseMapper()](unichar u, unichar *output) mutable {
            unichar special = flags & turkish ? turkishCase(u, afterLetter) : 0;
            unsigned n = special       ? write(special, output)
                         : afterLetter ? write(mapper.lower(u), output)
                                       : writeTitle(mapper, u, output);
            afterLetter = _ZPIsInStandardSet(_ZPLetterSet, u);
            return n;
        });
    }
    ZPString *capitalizedString() { return self()->_capitalizedStringWithFlags(0); }
};

}  // namespace

ZP_CATEGORY(ZPString, CaseMethods, _caseCopyAux_flags, uppercaseString, lowercaseString, _capitalizedStringWithFlags,
            capitalizedString);

unsigned ZPConvertToUpper(unichar unit, unichar *output, unsigned flags) {
    if (unichar special = flags & turkish ? turkishCase(unit, false) : 0) return write(special, output);
    ZPCaseMapper mapper;
    return writeUpper(mapper, unit, output);
}

unsigned ZPConvertToTitle(unichar unit, unichar *output, unsigned flags) {
    if (unichar special = flags & turkish ? turkishCase(unit, false) : 0) return write(special, output);
    ZPCaseMapper mapper;
    return writeTitle(mapper, unit, output);
}

unsigned ZPConvertToLower(unichar unit, unichar *output, unsigned flags) {
    if (unichar special = flags & turkish ? turkishCase(unit, true) : 0) return write(special, output);
    return write(ZPCaseMapper().lower(unit), output);
}
