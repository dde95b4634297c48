// SPDX-License-Identifier: MIT
// Character sets: the fronts, what every set does on `characterIsMember:`, and the sets that are a range, a few
// units or the inverse of another.
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/strings/characters/Characters.h>
#include <Bedrock/strings/cluster/Cluster.h>

namespace {

struct CharacterSetClassMethods {
    // What the mutable front makes may change.
    static ZPConcreteMutableCharacterSet *make(Class self, ZPZone *zone) {
        auto *set = ZPConcreteMutableCharacterSet::make(zone);
        set->mayChange = false;
        for (Class c = self; c; c = c->superclass) set->mayChange |= c == ZPMutableCharacterSet::class_();
        return set;
    }
    static id allocWithZone(Class self, ZPZone *zone) {
        if (self == ZPCharacterSet::class_() || self == ZPMutableCharacterSet::class_()) return make(self, zone);
        return ZPAllocateObject(self, 0, zone);
    }
    static ZPCharacterSet *characterSetWithRange(Class, ZPRange range) {
        ZPImmutableRangeCharacterSet *set = ZPAllocateObject(ZPImmutableRangeCharacterSet::class_(), 0, nullptr);
        if (range.location < _ZPUnitCount && range.length) {
            set->low = range.location;
            set->high = range.location + std::min(range.length, _ZPUnitCount - range.location);
        }
        return set->autorelease();
    }
    static ZPCharacterSet *characterSetWithCharactersInString(Class self, ZPString *string) {
        unsigned length = string ? string->length() : 0;
        if (length > ZPImmutableStringCharacterSet::most)
            return make(self, nullptr)->initWithCharactersInString(string)->autorelease();
        ZPRef<ZPImmutableStringCharacterSet> set = ZPAdopt<ZPImmutableStringCharacterSet>(
            ZPAllocateObject(ZPImmutableStringCharacterSet::class_(), 0, nullptr));
        if (length) string->getCharacters_range(set->buffer, {0, length});
        set->numChars = static_cast<unsigned short>(length);
        std::sort(set->buffer, set->buffer + length);
        return std::move(set).autoreleased();
    }
    static ZPCharacterSet *characterSetWithBitmapRepresentation(Class self, ZPData *data) {
        return make(self, nullptr)->initWithBitmapRepresentation(data)->autorelease();
    }
};

struct MutableCharacterSetClassMethods : CharacterSetClassMethods {
    static ZPCharacterSet *characterSetWithRange(Class self, ZPRange range) {
        return make(self, nullptr)->initWithRange(range)->autorelease();
    }
    static ZPCharacterSet *characterSetWithCharactersInString(Class self, ZPString *string) {
        return make(self, nullptr)->initWithCharactersInString(string)->autorelease();
    }
};

struct CharacterSetMethods : ZPCharacterSet {
    BOOL characterIsMember(unichar) { _ZPRefuse(this, "characterIsMember:"_sel); }
    ZPCharacterSet *invertedSet() {
        ZPInvertedCharacterSet *set = ZPAllocateObject(ZPInvertedCharacterSet::class_(), 0, nullptr);
        set->autorelease();
        set->realset = self()->copyWithZone(nullptr);
        return set;
    }
    ZPData *bitmapRepresentation() {
        unsigned char bits[_ZPBitmapBytes] = {};
        for (unsigned u = 0; u < _ZPUnitCount - 1; ++u)
            if (self()->characterIsMember(unichar(u))) _ZPSetBits(bits, {u, 1}, true);
        return ZPData::dataWithBytes_length(bits, sizeof bits);
    }
    BOOL isEmpty() { return ZPSetBitmap(this).count() == 0; }
    unsigned count() { return ZPSetBitmap(this).count(); }
    BOOL isMutable() { return NO; }
    void makeImmutable() {}
    id copyWithZone(ZPZone *) { return self()->retain(); }
    id mutableCopyWithZone(ZPZone *zone) {
        ZPSetBitmap its(this);
        auto *set = ZPConcreteMutableCharacterSet::make(zone);
        std::memcpy(set->ownBits(), its.bits, sizeof its.bits);
        return set;
    }
    BOOL isEqual(id other) {
        if (other.pointer() == this) return YES;
        if (!other || !other->respondsToSelector("bitmapRepresentation"_sel)) return NO;
        ZPSetBitmap mine(this);
        if (other->isKindOfClass(ZPCharacterSet::class_()))
            return std::memcmp(mine.bits, ZPSetBitmap(other).bits, sizeof mine.bits) == 0;
        return mine.data()->isEqual(other.unchecked<ZPCharacterSet>()->bitmapRepresentation());
    }
    unsigned hash() { return ZPSetBitmap(this).data()->hash(); }
};

struct MutableCharacterSetMethods : ZPMutableCharacterSet {
    BOOL isMutable() { return YES; }
    id copyWithZone(ZPZone *zone) {
        ZPRef<ZPCharacterSet> copy = ZPAdopt<ZPCharacterSet>(self()->mutableCopyWithZone(zone));
        copy->makeImmutable();
        return copy.detach();
    }
    void addCharactersInRange(ZPRange) { _ZPRefuse(this, "addCharactersInRange:"_sel); }
    void removeCharactersInRange(ZPRange) { _ZPRefuse(this, "removeCharactersInRange:"_sel); }
    void addCharactersInString(ZPString *) { _ZPRefuse(this, "addCharactersInString:"_sel); }
    void removeCharactersInString(ZPString *) { _ZPRefuse(this, "removeCharactersInString:"_sel); }
    void formUnionWithCharacterSet(ZPCharacterSet *) { _ZPRefuse(this, "formUnionWithCharacterSet:"_sel); }
    void formIntersectionWithCharacterSet(ZPCharacterSet *) {
        _ZPRefuse(this, "formIntersectionWithCharacterSet:"_sel);
    }
    void invert() { _ZPRefuse(this, "invert"_sel); }
};

struct RangeCharacterSetMethods : ZPImmutableRangeCharacterSet {
    BOOL characterIsMember(unichar u) { return low <= u && u < high; }
    BOOL isEmpty() { return low == high; }
    unsigned count() { return high - low; }
    BOOL isEqual(id other) {
        auto *set = other.unchecked<ZPImmutableRangeCharacterSet>();
        if (set && set->isa == isa)
            return (low == set->low && high == set->high) || (low == high && set->low == set->high);
        return ZP_SUPER(ZPImmutableRangeCharacterSet, isEqual)(other);
    }
    ZPData *bitmapRepresentation() { return ZPSetBitmap(this).data(); }
};

struct StringCharacterSetMethods : ZPImmutableStringCharacterSet {
    BOOL characterIsMember(unichar u) { return std::find(buffer, buffer + numChars, u) != buffer + numChars; }
    id mutableCopyWithZone(ZPZone *zone) {
        auto *set = ZPConcreteMutableCharacterSet::make(zone);
        unsigned char *bits = set->ownBits();
        for (unsigned i = 0; i < numChars; ++i) _ZPSetBits(bits, {buffer[i], 1}, true);
        return set;
    }
    ZPData *bitmapRepresentation() { return ZPSetBitmap(this).data(); }
    BOOL isEqual(id other) {
        auto *set = other.unchecked<ZPImmutableStringCharacterSet>();
        if (set && set->isa == isa && set->numChars == numChars && std::equal(buffer, buffer + numChars, set->buffer))
            return YES;
        return ZP_SUPER(ZPImmutableStringCharacterSet, isEqual)(other);
    }
};

struct InvertedCharacterSetMethods : ZPInvertedCharacterSet {
    id init() {
        self()->dealloc();
        return nullptr;
    }
    void dealloc() {
        realset->release();
        ZP_SUPER(ZPInvertedCharacterSet, dealloc)();
    }
    BOOL characterIsMember(unichar u) { return !realset->characterIsMember(u); }
    ZPCharacterSet *invertedSet() { return realset; }
    BOOL isEmpty() { return realset->count() == _ZPUnitCount; }
    unsigned count() { return _ZPUnitCount - realset->count(); }
    id mutableCopyWithZone(ZPZone *zone) {
        ZPRef<ZPMutableCharacterSet> copy = ZPAdopt<ZPMutableCharacterSet>(realset->mutableCopyWithZone(zone));
        copy->invert();
        return copy.detach();
    }
    BOOL isEqual(id other) {
        auto *set = other.unchecked<ZPInvertedCharacterSet>();
        if (set && set->isa == isa && realset == set->realset) return YES;
        return ZP_SUPER(ZPInvertedCharacterSet, isEqual)(other);
    }
    ZPData *bitmapRepresentation() { return ZPSetBitmap(this).data(); }
};

}  // namespace

void _ZPRefuse(ZPCharacterSet *set, SEL selector) {
    ZPLog("Abstract class %s does not implement method %s; it must be implemented in subclasses."_zp, set->isa->name,
          sel_getName(selector));
    set->doesNotRecognizeSelector(selector);
    __builtin_unreachable();
}

bool ZPMembership::ask(unichar u) const {
    if (!set) return false;
    if (low) return _ZPIsInFullSet(unsigned(static_cast<ZPBuiltinCharacterSet *>(set)->offset), u);
    if (set->isa == ZPConcreteMutableCharacterSet::class_())
        return static_cast<ZPConcreteMutableCharacterSet *>(set)->has(u);
    return set->characterIsMember(u);
}

ZP_IMPLEMENT_WITH(ZPCharacterSet, CharacterSetMethods, adopts(ZPCopying, ZPMutableCopying), characterIsMember,
                  invertedSet, bitmapRepresentation, isEmpty, count, isMutable, makeImmutable, copyWithZone,
                  mutableCopyWithZone, isEqual, hash,
                  classMethodsOf(CharacterSetClassMethods, allocWithZone, characterSetWithRange,
                                 characterSetWithCharactersInString, characterSetWithBitmapRepresentation));

ZP_IMPLEMENT_WITH(ZPMutableCharacterSet, MutableCharacterSetMethods, isMutable, copyWithZone, addCharactersInRange,
                  removeCharactersInRange, addCharactersInString, removeCharactersInString, formUnionWithCharacterSet,
                  formIntersectionWithCharacterSet, invert,
                  classMethodsOf(MutableCharacterSetClassMethods, characterSetWithRange,
                                 characterSetWithCharactersInString));

ZP_IMPLEMENT_WITH(ZPImmutableRangeCharacterSet, RangeCharacterSetMethods, characterIsMember, isEmpty, count, isEqual,
                  bitmapRepresentation);

ZP_IMPLEMENT_WITH(ZPImmutableStringCharacterSet, StringCharacterSetMethods, characterIsMember, bitmapRepresentation,
                  mutableCopyWithZone, isEqual);

ZP_IMPLEMENT_WITH(ZPInvertedCharacterSet, InvertedCharacterSetMethods, init, dealloc, characterIsMember, invertedSet,
                  isEmpty, count, mutableCopyWithZone, isEqual, bitmapRepresentation);
