// The storage classes of character sets and quick membership.
//
//   ZPBuiltinCharacterSet          a standard set: for each high byte of a unit the number of a 256-bit row
//   ZPImmutableRangeCharacterSet   low <= unit < high
//   ZPImmutableStringCharacterSet  up to 64 units, sorted
//   ZPInvertedCharacterSet         what another set has not
//   ZPConcreteMutableCharacterSet  a bitmap of 65,536 bits
#pragma once

#include <Bedrock/strings/ZPCharacterSet.h>

enum : unsigned {
    _ZPControlSet, _ZPWhitespaceSet, _ZPWhitespaceAndNewlineSet, _ZPDecimalDigitSet, _ZPLetterSet, _ZPLowercaseLetterSet,
    _ZPUppercaseLetterSet, _ZPAlphanumericSet, _ZPNonBaseSet, _ZPDecomposableSet, _ZPIllegalSet, _ZPPunctuationSet, _ZPStandardSetCount
};

// Rows of 256 bits, least significant first, and each set's row of a high byte. Made by
// resources/make_unicode_tables.py.
extern const unsigned char _ZPSetRows[][32];
extern const unsigned short _ZPSetIndexes[_ZPStandardSetCount][256];

inline bool _ZPIsInStandardSet(unsigned set, unichar u) { return _ZPSetRows[_ZPSetIndexes[set][u >> 8]][(u & 0xFF) >> 3] >> (u & 7) & 1; }

struct ZPBuiltinCharacterSet : ZPCharacterSet {
    ZP_PRIVATE_CLASS(ZPBuiltinCharacterSet)
    unsigned offset;
};
struct ZPImmutableRangeCharacterSet : ZPCharacterSet {
    ZP_PRIVATE_CLASS(ZPImmutableRangeCharacterSet)
    unsigned low, high;
};
struct ZPImmutableStringCharacterSet : ZPCharacterSet {
    ZP_PRIVATE_CLASS(ZPImmutableStringCharacterSet)
    unichar buffer[64];
    unsigned short numChars;
};
struct ZPInvertedCharacterSet : ZPCharacterSet {
    ZP_PRIVATE_CLASS(ZPInvertedCharacterSet)
    ZPCharacterSet *realset;
};
struct ZPConcreteMutableCharacterSet : ZPMutableCharacterSet {
    ZP_PRIVATE_CLASS(ZPConcreteMutableCharacterSet)
    unsigned char bits[8192];
};

/// Asks a set many times: without a message where the set is a standard one, a bitmap, or their inverse.
struct ZPMembership {
    ZPCharacterSet *set;
    const unsigned char *bits = nullptr;
    unsigned standard = _ZPStandardSetCount;
    bool inverted = false;

    explicit ZPMembership(ZPCharacterSet *asked) : set(asked) {
        while (set && set->isa == ZPInvertedCharacterSet::class_()) {
            set = static_cast<ZPInvertedCharacterSet *>(set)->realset;
            inverted = !inverted;
        }
        if (!set) return;
        if (set->isa == ZPBuiltinCharacterSet::class_()) standard = static_cast<ZPBuiltinCharacterSet *>(set)->offset;
        else if (set->isa == ZPConcreteMutableCharacterSet::class_()) bits = static_cast<ZPConcreteMutableCharacterSet *>(set)->bits;
    }
    bool operator()(unichar u) const {
        bool member = standard < _ZPStandardSetCount ? _ZPIsInStandardSet(standard, u)
                      : bits                         ? bits[u >> 3] >> (u & 7) & 1
                                                     : set && set->characterIsMember(u);
        return member != inverted;
    }
};
