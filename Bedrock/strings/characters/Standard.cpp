// SPDX-License-Identifier: MIT
// The standard sets. Below U+0100 they answer from tables; the full sets are published once, with release order,
// and read with acquire, so that any number of threads may be the first to ask.
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/platform/kernel/MakeOnce.h>
#include <Bedrock/strings/characters/Characters.h>
#include <Bedrock/strings/cluster/Cluster.h>

#include <array>
#include <cstdint>

namespace {

// ---- below U+0100 ----

// Hexadecimal units and runs of them: "41-5A 5E".
consteval void add(unsigned char (&row)[32], const char *text) {
    for (unsigned first = 0, value = 0, run = 0;; ++text) {
        if (int digit = _ZPHexValue(static_cast<unsigned char>(*text)); digit >= 0)
            value = value * 16 + unsigned(digit);
        else if (*text == '-') first = value, value = 0, run = 1;
        else {
            for (unsigned u = run ? first : value; u <= value; ++u)
                row[u >> 3] = static_cast<unsigned char>(row[u >> 3] | 1 << (u & 7));
            if (!*text) break;
            value = run = 0;
        }
    }
}

consteval ZPLowRows makeLowRows() {
    ZPLowRows made = {};
    add(made.of[_ZPControlSet], "00-1F 7F-9F");
    add(made.of[_ZPWhitespaceSet], "09 20 A0");
    add(made.of[_ZPWhitespaceAndNewlineSet], "09 0A 20 A0");
    add(made.of[_ZPDecimalDigitSet], "30-39");
    add(made.of[_ZPLetterSet], "41-5A 5E 60-7A A8 AA AF B4-B5 B8 BA C0-D6 D8-F6 F8-FF");
    add(made.of[_ZPLowercaseLetterSet], "61-7A AA B5 BA DF-F6 F8-FF");
    add(made.of[_ZPUppercaseLetterSet], "41-5A C0-D6 D8-DE");
    add(made.of[_ZPAlphanumericSet], "30-39 41-5A 5E 60-7A A8 AA AF B2-B5 B8-BA BC-BE C0-D6 D8-F6 F8-FF");
    add(made.of[_ZPDecomposableSet], "C0-C5 C7-CF D1-D6 D9-DD E0-E5 E7-EF F1-F6 F9-FD FF");
    add(made.of[_ZPPunctuationSet], "21-22 25 27-29 2C-2F 3A-3B 3F 5B-5D 7B 7D A1 AB AD B7 BB BF");
    return made;
}

// ---- the full sets ----

struct Standard {
    ZPString *name;
    SEL selector;
    bool compact;
};

Standard standard(unsigned offset) {
    const Standard sets[_ZPStandardSetCount] = {
        {"controlCharacterSet"_zp, "controlCharacterSet"_sel, true},
        {"whitespaceCharacterSet"_zp, "whitespaceCharacterSet"_sel, true},
        {"whitespaceAndNewlineCharacterSet"_zp, "whitespaceAndNewlineCharacterSet"_sel, true},
        {"decimalDigitCharacterSet"_zp, "decimalDigitCharacterSet"_sel, true},
        {"letterCharacterSet"_zp, "letterCharacterSet"_sel, false},
        {"lowercaseLetterCharacterSet"_zp, "lowercaseLetterCharacterSet"_sel, false},
        {"uppercaseLetterCharacterSet"_zp, "uppercaseLetterCharacterSet"_sel, false},
        {"alphanumericCharacterSet"_zp, "alphanumericCharacterSet"_sel, false},
        {"nonBaseCharacterSet"_zp, "nonBaseCharacterSet"_sel, false},
        {"decomposableCharacterSet"_zp, "decomposableCharacterSet"_sel, false},
        {"illegalCharacterSet"_zp, "illegalCharacterSet"_sel, false},
        {"punctuationCharacterSet"_zp, "punctuationCharacterSet"_sel, false},
    };
    return sets[offset];
}

// The file's set, or a copy of it where it does not agree with what the library knows itself.
ZPConcreteMutableCharacterSet *agreeing(ZPConcreteMutableCharacterSet *set, unsigned offset, bool compact) {
    ZPSetBitmap bitmap(set);
    const unsigned char last = bitmap.bits[_ZPBitmapBytes - 1];
    const unsigned char right = static_cast<unsigned char>((last & 0x7F) | (offset == _ZPIllegalSet ? 0x80 : 0));
    if (last == right && std::memcmp(bitmap.bits, _ZPLow.of[offset], sizeof _ZPLow.of[0]) == 0) return set;
    std::memcpy(bitmap.bits, _ZPLow.of[offset], sizeof _ZPLow.of[0]);
    bitmap.bits[_ZPBitmapBytes - 1] = right;
    auto *copy = ZPConcreteMutableCharacterSet::make(nullptr);
    std::memcpy(copy->ownBits(), bitmap.bits, _ZPBitmapBytes);
    if (compact) copy->makeCompact();
    copy->mayChange = false;
    return copy;
}

ZPBuiltinCharacterSet *standardSets[_ZPStandardSetCount];

template <unsigned Offset> ZPCharacterSet *standardSet(Class) { return _ZPStandardSet(Offset); }

template <unsigned Offset> ZPCharacterSet *fullSet(Class) {
    return ZPConcreteMutableCharacterSet::_readAndRetainFileNamed_makeCompact(standard(Offset).name,
                                                                              BOOL(standard(Offset).compact));
}

struct BuiltinCharacterSetMethods : ZPBuiltinCharacterSet {
    BOOL characterIsMember(unichar u) {
        if (u < 0x100) return _ZPBit(_ZPLow.of[offset], u);
        ZPCharacterSet *full = __atomic_load_n(&expandedset, __ATOMIC_ACQUIRE);
        // Both kinds of objects that may stand there are told apart without another load.
        if (!full || full == this || u == 0xFFFF) [[unlikely]]
            return _ZPIsInFullSet(unsigned(offset), u);
        return static_cast<ZPConcreteMutableCharacterSet *>(full)->has(u);
    }
    ZPCharacterSet *expandSetWithOffset(int wanted) {
        if (wanted < 0 || wanted >= int(_ZPStandardSetCount)) {
            ZPLog("ZPExpandedBuiltinCharacterSet: illegal offset %d encountered.\n"_zp, wanted);
            ZPException::raise_format(ZPInvalidArgumentException,
                                      "%s %s: Illegal operation on this class or instance"_zp, isa->name,
                                      sel_getName("expandSetWithOffset:"_sel));
        }
        const Standard which = standard(unsigned(wanted));
        ZPConcreteMutableCharacterSet *file = objc_msgSend<id>(ZPExpandedBuiltinCharacterSet::class_(), which.selector),
                                      *full = file;
        if (file) full = agreeing(file, unsigned(wanted), which.compact);
        ZPCharacterSet *made = full ? static_cast<ZPCharacterSet *>(full) : this;
        if (wanted != offset) {
            if (full != file) full->autorelease();
            return made;
        }
        return ZPKeepFirst(expandedset, made, [&](ZPCharacterSet *late) {
            if (late == full && full != file) full->release();
        });
    }
    ZPData *bitmapRepresentation() { return ZPSetBitmap(this).data(); }
    BOOL isEmpty() { return NO; }
    BOOL isEqual(id other) {
        auto *set = other.unchecked<ZPBuiltinCharacterSet>();
        if (set && set->isa == isa && offset == set->offset) return YES;
        return ZP_SUPER(ZPBuiltinCharacterSet, isEqual)(other);
    }
    void dealloc() { ZPLog("*** dealloc called for %s"_zp, isa->name); }
};

struct ExpandedCharacterSetMethods : ZPExpandedBuiltinCharacterSet {
    BOOL characterIsMember(unichar) { _ZPRefuse(this, "characterIsMember:"_sel); }
    ZPCharacterSet *expandSetWithOffset(int) { _ZPRefuse(this, "expandSetWithOffset:"_sel); }
    ZPData *bitmapRepresentation() { _ZPRefuse(this, "bitmapRepresentation"_sel); }
    ZPCharacterSet *invertedSet() { _ZPRefuse(this, "invertedSet"_sel); }
    BOOL isEmpty() { _ZPRefuse(this, "isEmpty"_sel); }
    unsigned count() { _ZPRefuse(this, "count"_sel); }
    BOOL isEqual(id) { _ZPRefuse(this, "isEqual:"_sel); }
    unsigned hash() { _ZPRefuse(this, "hash"_sel); }
    id mutableCopyWithZone(ZPZone *) { _ZPRefuse(this, "mutableCopyWithZone:"_sel); }
};

struct ZPStandardCharacterSets {
    static ZPCharacterSet *controlCharacterSet(Class self) { return standardSet<_ZPControlSet>(self); }
    static ZPCharacterSet *whitespaceCharacterSet(Class self) { return standardSet<_ZPWhitespaceSet>(self); }
    static ZPCharacterSet *whitespaceAndNewlineCharacterSet(Class self) {
        return standardSet<_ZPWhitespaceAndNewlineSet>(self);
    }
    static ZPCharacterSet *decimalDigitCharacterSet(Class self) { return standardSet<_ZPDecimalDigitSet>(self); }
    static ZPCharacterSet *letterCharacterSet(Class self) { return standardSet<_ZPLetterSet>(self); }
    static ZPCharacterSet *lowercaseLetterCharacterSet(Class self) { return standardSet<_ZPLowercaseLetterSet>(self); }
    static ZPCharacterSet *uppercaseLetterCharacterSet(Class self) { return standardSet<_ZPUppercaseLetterSet>(self); }
    static ZPCharacterSet *alphanumericCharacterSet(Class self) { return standardSet<_ZPAlphanumericSet>(self); }
    static ZPCharacterSet *nonBaseCharacterSet(Class self) { return standardSet<_ZPNonBaseSet>(self); }
    static ZPCharacterSet *decomposableCharacterSet(Class self) { return standardSet<_ZPDecomposableSet>(self); }
    static ZPCharacterSet *illegalCharacterSet(Class self) { return standardSet<_ZPIllegalSet>(self); }
    static ZPCharacterSet *punctuationCharacterSet(Class self) { return standardSet<_ZPPunctuationSet>(self); }
};

struct ExpandedSets {
    static ZPCharacterSet *controlCharacterSet(Class self) { return fullSet<_ZPControlSet>(self); }
    static ZPCharacterSet *whitespaceCharacterSet(Class self) { return fullSet<_ZPWhitespaceSet>(self); }
    static ZPCharacterSet *whitespaceAndNewlineCharacterSet(Class self) {
        return fullSet<_ZPWhitespaceAndNewlineSet>(self);
    }
    static ZPCharacterSet *decimalDigitCharacterSet(Class self) { return fullSet<_ZPDecimalDigitSet>(self); }
    static ZPCharacterSet *letterCharacterSet(Class self) { return fullSet<_ZPLetterSet>(self); }
    static ZPCharacterSet *lowercaseLetterCharacterSet(Class self) { return fullSet<_ZPLowercaseLetterSet>(self); }
    static ZPCharacterSet *uppercaseLetterCharacterSet(Class self) { return fullSet<_ZPUppercaseLetterSet>(self); }
    static ZPCharacterSet *alphanumericCharacterSet(Class self) { return fullSet<_ZPAlphanumericSet>(self); }
    static ZPCharacterSet *nonBaseCharacterSet(Class self) { return fullSet<_ZPNonBaseSet>(self); }
    static ZPCharacterSet *decomposableCharacterSet(Class self) { return fullSet<_ZPDecomposableSet>(self); }
    static ZPCharacterSet *illegalCharacterSet(Class self) { return fullSet<_ZPIllegalSet>(self); }
    static ZPCharacterSet *punctuationCharacterSet(Class self) { return fullSet<_ZPPunctuationSet>(self); }
};

}  // namespace

constinit const ZPLowRows _ZPLow = makeLowRows();

ZPBuiltinCharacterSet *_ZPStandardSet(unsigned offset) {
    return ZPMakeOnce(
        standardSets[offset],
        [&] {
            ZPBuiltinCharacterSet *set = ZPAllocateObject(ZPBuiltinCharacterSet::class_(), 0, nullptr);
            set->offset = int(offset);
            return set;
        },
        ZPDeallocateObject);
}

ZPConcreteMutableCharacterSet *_ZPFullSet(ZPBuiltinCharacterSet *set) {
    ZPCharacterSet *full = __atomic_load_n(&set->expandedset, __ATOMIC_ACQUIRE);
    if (!full) [[unlikely]]
        full = set->expandSetWithOffset(set->offset);
    return full == set ? nullptr : static_cast<ZPConcreteMutableCharacterSet *>(full);
}

bool _ZPIsInFullSet(unsigned offset, unichar u) {
    if (u == 0xFFFF) return offset == _ZPIllegalSet;
    ZPConcreteMutableCharacterSet *full = _ZPFullSet(_ZPStandardSet(offset));
    return full && full->has(u);
}

ZP_CATEGORY(ZPCharacterSet, ZPStandardCharacterSets,
            classMethods(controlCharacterSet, whitespaceCharacterSet, whitespaceAndNewlineCharacterSet,
                         decimalDigitCharacterSet, letterCharacterSet, lowercaseLetterCharacterSet,
                         uppercaseLetterCharacterSet, alphanumericCharacterSet, nonBaseCharacterSet,
                         decomposableCharacterSet, illegalCharacterSet, punctuationCharacterSet));

ZP_IMPLEMENT_WITH(ZPBuiltinCharacterSet, BuiltinCharacterSetMethods, immortal(), characterIsMember, expandSetWithOffset,
                  bitmapRepresentation, isEmpty, isEqual, dealloc);

ZP_IMPLEMENT_WITH(ZPExpandedBuiltinCharacterSet, ExpandedCharacterSetMethods, characterIsMember, expandSetWithOffset,
                  bitmapRepresentation, invertedSet, isEmpty, count, isEqual, hash, mutableCopyWithZone,
                  classMethodsOf(ExpandedSets, controlCharacterSet, whitespaceCharacterSet,
                                 whitespaceAndNewlineCharacterSet, decimalDigitCharacterSet, letterCharacterSet,
                                 lowercaseLetterCharacterSet, uppercaseLetterCharacterSet, alphanumericCharacterSet,
                                 nonBaseCharacterSet, decomposableCharacterSet, illegalCharacterSet,
                                 punctuationCharacterSet));
