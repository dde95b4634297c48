// Character sets: the fronts, and what every set does on `characterIsMember:`.
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/strings/ZPCharacterSet+Internal.h>
#include <Bedrock/strings/ZPString+Internal.h>

#include <algorithm>
#include <bit>

namespace {

constexpr unsigned bitmapBytes = 8192, unitCount = 0x10000;

struct Bitmap {
    unsigned char bits[bitmapBytes] = {};

    explicit Bitmap(ZPCharacterSet *set) {
        ZPMembership isMember(set);
        if (isMember.bits) std::memcpy(bits, isMember.bits, bitmapBytes);
        else if (isMember.standard < _ZPStandardSetCount)
            for (unsigned high = 0; high < 256; ++high) std::memcpy(bits + high * 32, _ZPSetRows[_ZPSetIndexes[isMember.standard][high]], 32);
        else
            for (unsigned u = 0; u < lastAsked(isMember.set); ++u)
                if (isMember.set->characterIsMember(unichar(u))) bits[u >> 3] |= 1 << (u & 7);
        if (isMember.inverted)
            for (unsigned char &byte : bits) byte = ~byte;
    }
    // The bitmap of a set that is known by its membership alone never holds U+FFFF.
    static unsigned lastAsked(ZPCharacterSet *set) { return set->isa == ZPImmutableRangeCharacterSet::class_() ? unitCount : unitCount - 1; }
    unsigned count() const {
        unsigned n = 0;
        for (unsigned char byte : bits) n += unsigned(std::popcount(byte));
        return n;
    }
};

void setBits(unsigned char *bits, ZPRange range, bool value) {
    std::uint64_t end = std::min<std::uint64_t>(std::uint64_t(range.location) + range.length, unitCount);
    for (std::uint64_t u = range.location; u < end; ++u) {
        if (value) bits[u >> 3] |= 1 << (u & 7);
        else bits[u >> 3] &= ~(1 << (u & 7));
    }
}

void setBits(unsigned char *bits, ZPString *string, bool value) {
    _ZPWithUnits(string, [&](auto &&units, unsigned length) {
        for (unsigned i = 0; i < length; ++i) setBits(bits, ZPRange{units[i], 1}, value);
    });
}

ZPConcreteMutableCharacterSet *newConcrete(ZPZone *zone) { return ZPAllocateObject(ZPConcreteMutableCharacterSet::class_(), 0, zone); }

template <unsigned Offset> ZPCharacterSet *standardSet(Class) {
    static ZPBuiltinCharacterSet *const set = [] {
        ZPBuiltinCharacterSet *made = ZPAllocateObject(ZPBuiltinCharacterSet::class_(), 0, nullptr);
        made->offset = Offset;
        return made;
    }();
    return set;
}

struct CharacterSetClassMethods {
    static id allocWithZone(Class self, ZPZone *zone) {
        if (self == ZPCharacterSet::class_() || self == ZPMutableCharacterSet::class_()) return newConcrete(zone);
        return ZPAllocateObject(self, 0, zone);
    }
    static ZPCharacterSet *withRange(Class, ZPRange range) {
        ZPImmutableRangeCharacterSet *set = ZPAllocateObject(ZPImmutableRangeCharacterSet::class_(), 0, nullptr);
        if (range.location < unitCount && range.length) {
            set->low = range.location;
            set->high = range.location + std::min(range.length, unitCount - range.location);
        }
        return set->autorelease();
    }
    static ZPCharacterSet *withString(Class, ZPString *string) {
        unsigned length = string ? string->length() : 0;
        if (length > 64) return concreteWithString(nullptr, string);
        ZPImmutableStringCharacterSet *set = ZPAllocateObject(ZPImmutableStringCharacterSet::class_(), 0, nullptr);
        if (length) string->getCharacters_range(set->buffer, {0, length});
        set->numChars = static_cast<unsigned short>(length);
        std::sort(set->buffer, set->buffer + length);
        return set->autorelease();
    }
    static ZPCharacterSet *withBitmap(Class, ZPData *data) {
        ZPConcreteMutableCharacterSet *set = newConcrete(nullptr);
        unsigned length = data ? std::min(data->length(), bitmapBytes) : 0;
        if (length) std::memcpy(set->bits, data->bytes(), length);
        return set->autorelease();
    }
    static ZPCharacterSet *withFile(Class self, ZPString *path) {
        ZPData *data = path && path->hasSuffix(".bitmap"_zp) ? ZPData::dataWithContentsOfFile(path) : nullptr;
        return data ? withBitmap(self, data) : nullptr;
    }
    static ZPCharacterSet *concreteWithRange(Class, ZPRange range) {
        ZPConcreteMutableCharacterSet *set = newConcrete(nullptr);
        setBits(set->bits, range, true);
        return set->autorelease();
    }
    static ZPCharacterSet *concreteWithString(Class, ZPString *string) {
        ZPConcreteMutableCharacterSet *set = newConcrete(nullptr);
        setBits(set->bits, string, true);
        return set->autorelease();
    }
};

[[noreturn]] void refuse(ZPCharacterSet *set, SEL selector) {
    ZPLog("Abstract class %s does not implement method %s; it must be implemented in subclasses."_zp, set->isa->name, sel_getName(selector));
    set->doesNotRecognizeSelector(selector);
    __builtin_unreachable();
}

struct CharacterSetMethods : ZPCharacterSet {
    BOOL characterIsMember(unichar) { refuse(this, "characterIsMember:"_sel); }
    ZPCharacterSet *invertedSet() {
        ZPInvertedCharacterSet *set = ZPAllocateObject(ZPInvertedCharacterSet::class_(), 0, nullptr);
        set->realset = ZPObject::copyWithZone(nullptr);
        return set->autorelease();
    }
    ZPData *bitmapRepresentation() {
        Bitmap bitmap(this);
        return ZPData::dataWithBytes_length(bitmap.bits, bitmapBytes);
    }
    BOOL isEmpty() { return Bitmap(this).count() == 0; }
    unsigned count() { return Bitmap(this).count(); }
    BOOL isMutable() { return NO; }
    void makeImmutable() {}
    id copyWithZone(ZPZone *) { return retain(); }
    id mutableCopyWithZone(ZPZone *zone) {
        ZPConcreteMutableCharacterSet *set = newConcrete(zone);
        std::memcpy(set->bits, Bitmap(this).bits, bitmapBytes);
        return set;
    }
    BOOL isEqual(id other) {
        if (other.pointer() == this) return YES;
        if (!other || !objc_msgSend<BOOL>(other, "isKindOfClass:"_sel, ZPCharacterSet::class_())) return NO;
        Bitmap mine(this), its(static_cast<ZPCharacterSet *>(other.pointer()));
        return std::memcmp(mine.bits, its.bits, bitmapBytes) == 0;
    }
    unsigned hash() { return ZPCharacterSet::bitmapRepresentation()->hash(); }
};

struct MutableCharacterSetMethods : ZPMutableCharacterSet {
    BOOL isMutable() { return YES; }
    id copyWithZone(ZPZone *zone) {
        ZPCharacterSet *copy = ZPObject::mutableCopyWithZone(zone);
        copy->makeImmutable();
        return copy;
    }
    void addRange(ZPRange) { refuse(this, "addCharactersInRange:"_sel); }
    void removeRange(ZPRange) { refuse(this, "removeCharactersInRange:"_sel); }
    void addString(ZPString *) { refuse(this, "addCharactersInString:"_sel); }
    void removeString(ZPString *) { refuse(this, "removeCharactersInString:"_sel); }
    void formUnion(ZPCharacterSet *) { refuse(this, "formUnionWithCharacterSet:"_sel); }
    void formIntersection(ZPCharacterSet *) { refuse(this, "formIntersectionWithCharacterSet:"_sel); }
    void invert() { refuse(this, "invert"_sel); }
};

struct BuiltinCharacterSetMethods : ZPBuiltinCharacterSet {
    BOOL characterIsMember(unichar u) { return _ZPIsInStandardSet(offset, u); }
    BOOL isEmpty() { return NO; }
    id self() { return this; }
    void nothing() {}
    unsigned retainCount() { return 0xFFFFFFFF; }
    void dealloc() { ZPLog("*** dealloc called for %s"_zp, isa->name); }
};

struct RangeCharacterSetMethods : ZPImmutableRangeCharacterSet {
    BOOL characterIsMember(unichar u) { return low <= u && u < high; }
    BOOL isEmpty() { return low == high; }
    unsigned count() { return high - low; }
};

struct StringCharacterSetMethods : ZPImmutableStringCharacterSet {
    BOOL characterIsMember(unichar u) { return std::find(buffer, buffer + numChars, u) != buffer + numChars; }
    id mutableCopyWithZone(ZPZone *zone) {
        ZPConcreteMutableCharacterSet *set = newConcrete(zone);
        for (unsigned i = 0; i < numChars; ++i) setBits(set->bits, ZPRange{buffer[i], 1}, true);
        return set;
    }
};

struct InvertedCharacterSetMethods : ZPInvertedCharacterSet {
    id init() {
        ZPObject::dealloc();
        return nullptr;
    }
    void dealloc() {
        if (realset) realset->release();
        objc_super<ZPInvertedCharacterSet>(this).send("dealloc"_sel);
    }
    BOOL characterIsMember(unichar u) { return !realset->characterIsMember(u); }
    ZPCharacterSet *invertedSet() { return realset; }
    BOOL isEmpty() { return realset->count() == unitCount; }
    unsigned count() { return unitCount - realset->count(); }
};

struct ConcreteCharacterSetMethods : ZPConcreteMutableCharacterSet {
    BOOL characterIsMember(unichar u) { return bits[u >> 3] >> (u & 7) & 1; }
    BOOL isMutable() { return NO; }
    void addRange(ZPRange range) { setBits(bits, range, true); }
    void removeRange(ZPRange range) { setBits(bits, range, false); }
    void addString(ZPString *string) { setBits(bits, string, true); }
    void removeString(ZPString *string) { setBits(bits, string, false); }
    void formUnion(ZPCharacterSet *set) {
        if (!set) return;
        Bitmap its(set);
        for (unsigned i = 0; i < bitmapBytes; ++i) bits[i] |= its.bits[i];
    }
    void formIntersection(ZPCharacterSet *set) {
        if (!set) return;
        Bitmap its(set);
        for (unsigned i = 0; i < bitmapBytes; ++i) bits[i] &= its.bits[i];
    }
    void invert() {
        for (unsigned char &byte : bits) byte = ~byte;
    }
};

}  // namespace

ZP_IMPLEMENT(ZPCharacterSet)
    .adopts<ZPCopying, ZPMutableCopying>()
    .classMethod<&CharacterSetClassMethods::allocWithZone>("allocWithZone:")
    .classMethod<&standardSet<_ZPControlSet>>("controlCharacterSet")
    .classMethod<&standardSet<_ZPWhitespaceSet>>("whitespaceCharacterSet")
    .classMethod<&standardSet<_ZPWhitespaceAndNewlineSet>>("whitespaceAndNewlineCharacterSet")
    .classMethod<&standardSet<_ZPDecimalDigitSet>>("decimalDigitCharacterSet")
    .classMethod<&standardSet<_ZPLetterSet>>("letterCharacterSet")
    .classMethod<&standardSet<_ZPLowercaseLetterSet>>("lowercaseLetterCharacterSet")
    .classMethod<&standardSet<_ZPUppercaseLetterSet>>("uppercaseLetterCharacterSet")
    .classMethod<&standardSet<_ZPAlphanumericSet>>("alphanumericCharacterSet")
    .classMethod<&standardSet<_ZPNonBaseSet>>("nonBaseCharacterSet")
    .classMethod<&standardSet<_ZPDecomposableSet>>("decomposableCharacterSet")
    .classMethod<&standardSet<_ZPIllegalSet>>("illegalCharacterSet")
    .classMethod<&standardSet<_ZPPunctuationSet>>("punctuationCharacterSet")
    .classMethod<&CharacterSetClassMethods::withRange>("characterSetWithRange:")
    .classMethod<&CharacterSetClassMethods::withString>("characterSetWithCharactersInString:")
    .classMethod<&CharacterSetClassMethods::withBitmap>("characterSetWithBitmapRepresentation:")
    .classMethod<&CharacterSetClassMethods::withFile>("characterSetWithContentsOfFile:")
    .method<&CharacterSetMethods::characterIsMember>("characterIsMember:")
    .method<&CharacterSetMethods::invertedSet>("invertedSet")
    .method<&CharacterSetMethods::bitmapRepresentation>("bitmapRepresentation")
    .method<&CharacterSetMethods::isEmpty>("isEmpty")
    .method<&CharacterSetMethods::count>("count")
    .method<&CharacterSetMethods::isMutable>("isMutable")
    .method<&CharacterSetMethods::makeImmutable>("makeImmutable")
    .method<&CharacterSetMethods::copyWithZone>("copyWithZone:")
    .method<&CharacterSetMethods::mutableCopyWithZone>("mutableCopyWithZone:")
    .method<&CharacterSetMethods::isEqual>("isEqual:")
    .method<&CharacterSetMethods::hash>("hash");

ZP_IMPLEMENT(ZPMutableCharacterSet)
    .classMethod<&CharacterSetClassMethods::concreteWithRange>("characterSetWithRange:")
    .classMethod<&CharacterSetClassMethods::concreteWithString>("characterSetWithCharactersInString:")
    .method<&MutableCharacterSetMethods::isMutable>("isMutable")
    .method<&MutableCharacterSetMethods::copyWithZone>("copyWithZone:")
    .method<&MutableCharacterSetMethods::addRange>("addCharactersInRange:")
    .method<&MutableCharacterSetMethods::removeRange>("removeCharactersInRange:")
    .method<&MutableCharacterSetMethods::addString>("addCharactersInString:")
    .method<&MutableCharacterSetMethods::removeString>("removeCharactersInString:")
    .method<&MutableCharacterSetMethods::formUnion>("formUnionWithCharacterSet:")
    .method<&MutableCharacterSetMethods::formIntersection>("formIntersectionWithCharacterSet:")
    .method<&MutableCharacterSetMethods::invert>("invert");

ZP_IMPLEMENT(ZPBuiltinCharacterSet)
    .method<&BuiltinCharacterSetMethods::characterIsMember>("characterIsMember:")
    .method<&BuiltinCharacterSetMethods::isEmpty>("isEmpty")
    .method<&BuiltinCharacterSetMethods::self>("retain")
    .method<&BuiltinCharacterSetMethods::self>("autorelease")
    .method<&BuiltinCharacterSetMethods::nothing>("release")
    .method<&BuiltinCharacterSetMethods::retainCount>("retainCount")
    .method<&BuiltinCharacterSetMethods::dealloc>("dealloc");

ZP_IMPLEMENT(ZPImmutableRangeCharacterSet)
    .method<&RangeCharacterSetMethods::characterIsMember>("characterIsMember:")
    .method<&RangeCharacterSetMethods::isEmpty>("isEmpty")
    .method<&RangeCharacterSetMethods::count>("count");

ZP_IMPLEMENT(ZPImmutableStringCharacterSet)
    .method<&StringCharacterSetMethods::characterIsMember>("characterIsMember:")
    .method<&StringCharacterSetMethods::mutableCopyWithZone>("mutableCopyWithZone:");

ZP_IMPLEMENT(ZPInvertedCharacterSet)
    .method<&InvertedCharacterSetMethods::init>("init")
    .method<&InvertedCharacterSetMethods::dealloc>("dealloc")
    .method<&InvertedCharacterSetMethods::characterIsMember>("characterIsMember:")
    .method<&InvertedCharacterSetMethods::invertedSet>("invertedSet")
    .method<&InvertedCharacterSetMethods::isEmpty>("isEmpty")
    .method<&InvertedCharacterSetMethods::count>("count");

ZP_IMPLEMENT(ZPConcreteMutableCharacterSet)
    .method<&ConcreteCharacterSetMethods::characterIsMember>("characterIsMember:")
    .method<&ConcreteCharacterSetMethods::isMutable>("isMutable")
    .method<&ConcreteCharacterSetMethods::addRange>("addCharactersInRange:")
    .method<&ConcreteCharacterSetMethods::removeRange>("removeCharactersInRange:")
    .method<&ConcreteCharacterSetMethods::addString>("addCharactersInString:")
    .method<&ConcreteCharacterSetMethods::removeString>("removeCharactersInString:")
    .method<&ConcreteCharacterSetMethods::formUnion>("formUnionWithCharacterSet:")
    .method<&ConcreteCharacterSetMethods::formIntersection>("formIntersectionWithCharacterSet:")
    .method<&ConcreteCharacterSetMethods::invert>("invert");
