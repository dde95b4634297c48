// SPDX-License-Identifier: MIT
// The room of characters: character sets, upper and lower case, decomposition, and the files that say what characters
// are. Other rooms ask sets by what stands here and change case by Case.h. Read this first, then CharacterSet.cpp.
//
// The storage classes of character sets:
//
//   ZPBuiltinCharacterSet          a standard set: a row of 256 bits for the units below U+0100; the full set is
//                                  loaded when another unit is first asked about
//   ZPExpandedBuiltinCharacterSet  its class methods load the full standard sets; it has no instances
//   ZPImmutableRangeCharacterSet   low <= unit < high
//   ZPImmutableStringCharacterSet  up to 64 units, sorted
//   ZPInvertedCharacterSet         what another set has not
//   ZPConcreteMutableCharacterSet  a record of single units and ranges, or a bitmap
//
// A bitmap has 8,192 bytes: unit u is bit u mod 8 of byte u / 8.
#pragma once

#include <Bedrock/strings/ZPCharacterSet.h>

#include <cstddef>
#include <cstdint>

enum : unsigned {
    _ZPControlSet,
    _ZPWhitespaceSet,
    _ZPWhitespaceAndNewlineSet,
    _ZPDecimalDigitSet,
    _ZPLetterSet,
    _ZPLowercaseLetterSet,
    _ZPUppercaseLetterSet,
    _ZPAlphanumericSet,
    _ZPNonBaseSet,
    _ZPDecomposableSet,
    _ZPIllegalSet,
    _ZPPunctuationSet,
    _ZPStandardSetCount
};

inline constexpr unsigned _ZPBitmapBytes = 8192, _ZPUnitCount = 0x10000;

ZP_INLINE bool _ZPBit(const unsigned char *bits, unsigned u) { return bits[u >> 3] >> (u & 7) & 1; }

/// The compact form of a set, followed by `singles` single units and `ranges` pairs of a first and a last unit,
/// both in ascending order. Always made of a bitmap: a run of one member is a single, a longer one a range. Many ranges
/// are followed by an index: for each block of 1,024 units, and for the end, the first range that ends there or later.
struct ZPCharacterSetRecord {
    unsigned tag;  ///< 1
    unsigned summary[4];  ///< a bit of the first two words for each block of 1,024 units that has a member
    unsigned singles, ranges;
    unsigned singmin, singmax;  ///< 0xFFFF and 0 without singles

    unsigned *units() { return reinterpret_cast<unsigned *>(this + 1); }
    const unsigned *units() const { return reinterpret_cast<const unsigned *>(this + 1); }
    static constexpr unsigned linearSearch = 10;  ///< below this many entries they are searched one by one
    static constexpr unsigned blocks = 64;
    std::size_t words() const { return singles + 2 * std::size_t(ranges); }
    const std::uint16_t *index() const { return reinterpret_cast<const std::uint16_t *>(units() + words()); }
    std::size_t size() const {
        return sizeof *this + words() * sizeof(unsigned) +
               (ranges < linearSearch ? 0 : (blocks + 1) * sizeof(std::uint16_t));
    }
    bool has(unichar u) const {
        if (!(summary[u >> 15] >> (u >> 10 & 31) & 1)) return false;
        return (singmin <= u && u <= singmax && isSingle(u)) || isInRange(u);
    }
    bool isSingle(unichar u) const;
    ZP_INLINE bool isInRange(unichar u) const {
        const unsigned *range = units() + singles;
        if (ranges < linearSearch) {
            for (const unsigned *end = range + 2 * ranges; range < end && range[0] <= u; range += 2)
                if (u <= range[1]) return true;
            return false;
        }
        const std::uint16_t *block = index() + (u >> 10);
        unsigned at = block[0], end = block[1];
        while (end - at >= linearSearch) {
            unsigned middle = (at + end) / 2;
            if (range[2 * middle + 1] < u) at = middle + 1;
            else end = middle;
        }
        while (at < end && range[2 * at + 1] < u) ++at;
        return at < ranges && range[2 * at] <= u;
    }
    unsigned count() const;
    /// Sets the members' bits in a bitmap.
    void addTo(unsigned char *bits) const;
};

struct ZPBuiltinCharacterSet : ZPCharacterSet {
    ZP_PRIVATE_CLASS(ZPBuiltinCharacterSet)
    int offset;
    ZPCharacterSet *expandedset;  ///< written once: the full set, or the object itself when it cannot be loaded

    /// The full set of that number, or the receiver when it cannot be loaded.
    ZPCharacterSet *expandSetWithOffset(int wanted) ZP_ASKS(wanted);
};
struct ZPExpandedBuiltinCharacterSet : ZPBuiltinCharacterSet {
    ZP_PRIVATE_CLASS(ZPExpandedBuiltinCharacterSet)
};
struct ZPImmutableRangeCharacterSet : ZPCharacterSet {
    ZP_PRIVATE_CLASS(ZPImmutableRangeCharacterSet)
    unsigned low, high;
};
struct ZPImmutableStringCharacterSet : ZPCharacterSet {
    ZP_PRIVATE_CLASS(ZPImmutableStringCharacterSet)
    static constexpr unsigned most = 64;
    unichar buffer[most];
    unsigned short numChars;
};
struct ZPInvertedCharacterSet : ZPCharacterSet {
    ZP_PRIVATE_CLASS(ZPInvertedCharacterSet)
    ZPCharacterSet *realset;
};

/// In one of these states; a change leads to the third from each of them.
///   record   `set`, a block of the default zone
///   shared   `bits` inside `data`, which was handed out or read and must not change
///   bitmap   `bits`, a block of the set's zone
/// An immutable set stays in its state while it is read, so that threads may share it.
struct ZPConcreteMutableCharacterSet : ZPMutableCharacterSet {
    ZP_PRIVATE_CLASS(ZPConcreteMutableCharacterSet)
    ZPCharacterSetRecord *set;
    unsigned char *bits;
    ZPData *data;
    signed char mayChange;

    /// The set of a file of the resources, kept for good; null without one.
    static ZPConcreteMutableCharacterSet *_readAndRetainFileNamed_makeCompact(ZPString *name, BOOL compact)
        ZP_CLASS_ASKS(name, compact);
    /// An empty set that may change, without a record or a bitmap; the caller owns it.
    static ZPConcreteMutableCharacterSet *make(ZPZone *zone);
    bool has(unichar u) const { return bits ? _ZPBit(bits, u) : set && set->has(u); }
    /// Ends in the bitmap state, whatever may change.
    unsigned char *ownBits();
    void makeFast();
    void makeCompact();
    void freeBits();
};

/// Rows of the units below U+0100.
struct ZPLowRows {
    unsigned char of[_ZPStandardSetCount][32];
};
extern const ZPLowRows _ZPLow;

/// The set of an offset.
ZPBuiltinCharacterSet *_ZPStandardSet(unsigned offset);
/// A standard set's answer for a unit from U+0100 up.
bool _ZPIsInFullSet(unsigned offset, unichar u);
/// The full form of a standard set, loaded when it is not yet; null when it cannot be.
ZPConcreteMutableCharacterSet *_ZPFullSet(ZPBuiltinCharacterSet *set);
/// A named set of the resource directory, which lives as long as the process, in the compact form when asked for;
/// null, which is logged once, when there is none.
ZPConcreteMutableCharacterSet *_ZPNamedSet(ZPString *name, bool compact);

inline bool _ZPIsInStandardSet(unsigned offset, unichar u) {
    return u < 0x100 ? _ZPBit(_ZPLow.of[offset], u) : _ZPIsInFullSet(offset, u);
}

/// Sets or clears a range of bits; what lies beyond U+FFFF is left out.
void _ZPSetBits(unsigned char *bits, ZPRange range, bool value);
void _ZPSetBits(unsigned char *bits, ZPString *string, bool value);

/// The bitmap of any set.
struct ZPSetBitmap {
    alignas(16) unsigned char bits[_ZPBitmapBytes];
    explicit ZPSetBitmap(ZPCharacterSet *set);
    unsigned count() const;
    ZPData *data() const;
};

/// Logs that a class does not supply a method, and reports the selector as not recognised.
[[noreturn]] void _ZPRefuse(ZPCharacterSet *set, SEL selector);

/// The set that inverted sets lead to, null for none; turns `inverted` for each on the way.
inline ZPCharacterSet *_ZPBehindInversions(ZPCharacterSet *set, bool &inverted) {
    for (; set && set->isa == ZPInvertedCharacterSet::class_(); inverted = !inverted)
        set = static_cast<ZPInvertedCharacterSet *>(set)->realset;
    return set;
}

/// Asks a set many times: without a message where it is one of the library's own.
struct ZPMembership {
    ZPCharacterSet *set;
    const unsigned char *bits = nullptr, *low = nullptr;
    bool inverted = false;

    explicit ZPMembership(ZPCharacterSet *asked) {
        set = _ZPBehindInversions(asked, inverted);
        if (!set) return;
        ZPCharacterSet *full = set;
        if (set->isa == ZPBuiltinCharacterSet::class_()) {
            auto *standard = static_cast<ZPBuiltinCharacterSet *>(set);
            low = _ZPLow.of[standard->offset];
            full = __atomic_load_n(&standard->expandedset, __ATOMIC_ACQUIRE);
        }
        if (full && full->isa == ZPConcreteMutableCharacterSet::class_())
            bits = static_cast<ZPConcreteMutableCharacterSet *>(full)->bits;
    }
    bool operator()(unichar u) const {
        return (bits ? _ZPBit(bits, u) : low && u < 0x100 ? _ZPBit(low, u) : ask(u)) != inverted;
    }
    bool ask(unichar u) const;
    /// Whether asking sends messages to an object of a client's.
    bool sends() const { return set && !bits && !low; }
};
/// Calls `f(units, length, isMember)` as `_ZPWithUnits` does; the units stay good while the set is asked.
template <class F> auto _ZPWithUnitsAndSet(ZPString *string, ZPCharacterSet *set, F f) {
    ZPMembership isMember(set);
    auto call = [&](auto &&units, unsigned length) { return f(units, length, isMember); };
    return isMember.sends() ? _ZPWithHeldUnits(string, call) : _ZPWithUnits(string, call);
}
