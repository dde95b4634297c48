// SPDX-License-Identifier: MIT
// The concrete classes with 16-bit storage: units in `characters`, freed by
//
//   ZPSimpleString            always the object
//   ZPUnicodeString           the object when `freeWhenDone` is set
//   ZPUnicodeSubstring        its parent while `_referenceString` is set, then the object
//   _ZPConstantUnicodeString  nobody
//
// A ZPUnicodeSubstring of less than nine tenths of its parent goes from borrowing to owning at its first
// retain; a longer one borrows for its whole life.
#include <Bedrock/strings/cluster/Substring+Internal.h>

#include <algorithm>
#include <utility>

namespace {

struct SimpleStringMethods : ZPSimpleString {
    ZPString *init() { return initWithCharactersNoCopy_length_freeWhenDone(nullptr, 0, NO); }
    ZPString *initWithCharactersNoCopy_length_freeWhenDone(unichar *_characters, unsigned length, BOOL) {
        characters = _characters;
        numCharacters = length;
        return this;
    }
    void dealloc() {
        if (characters) ZPZoneFree(ZPZoneFromPointer(characters), characters);
        ZP_SUPER(ZPSimpleString, dealloc)();
    }
    unsigned length() { return numCharacters; }
    unichar characterAtIndex(unsigned index) {
        if (index >= numCharacters) [[unlikely]]
            _ZPRaiseOutOfBounds(this, "characterAtIndex:"_sel);
        return characters[index];
    }
    void getCharacters_range(unichar *buffer, ZPRange range) {
        _ZPCheckRange(this, "getCharacters:range:"_sel, range, numCharacters);
        std::copy_n(characters + range.location, range.length, buffer);
    }
    const unichar *_characters() { return characters; }
    id copyWithZone(ZPZone *zone) {
        if (ZPShouldRetainWithZone(this, zone)) return self()->retain();
        return _ZPPlaceholderStringFromZone(zone)->initWithString(this);
    }
};

struct UnicodeStringMethods : ZPUnicodeString {
    ZPString *initWithCharactersNoCopy_length_freeWhenDone(unichar *units, unsigned length, BOOL freeWhenDone) {
        characters = units;
        numCharacters = length;
        _flags.freeWhenDone = freeWhenDone != NO;
        return this;
    }
    void dealloc() {
        if (!_flags.freeWhenDone) characters = nullptr;
        ZP_SUPER(ZPUnicodeString, dealloc)();
    }
};

struct UnicodeSubstringMethods : ZPSubstringMethods<ZPUnicodeSubstring> {
    id retain() {
        if (mayPart()) detachFromLargerParent();
        ZPIncrementExtraRefCount(this);
        return this;
    }
    void detachFromLargerParent() {
        unsigned whole = _referenceString->length();
        if (numCharacters >= whole - whole / 10) return;
        ZPZoneBlock<unichar> block(numCharacters, self()->zone());
        std::copy_n(characters, numCharacters, block.get());
        characters = block.take();
        _flags.freeWhenDone = 1;
        std::exchange(_referenceString, nullptr)->release();
    }
    ZPString *substringWithRange(ZPRange range) {
        _ZPCheckRange(this, "substringWithRange:"_sel, range, numCharacters);
        if (range.length == 0) return ""_zp;
        if (range.length == numCharacters) return self()->copyWithZone(self()->zone())->autorelease();
        auto s = ZPAdopt<ZPUnicodeSubstring>(ZPAllocateObject(ZPUnicodeSubstring::class_(), 0, self()->zone()));
        ZPString *outer = _referenceString ? _referenceString : this;
        s->_referenceString = outer->copyWithZone(outer->zone());
        s->characters = characters + range.location;
        s->numCharacters = range.length;
        return std::move(s).autoreleased();
    }
};

struct ConstantUnicodeStringMethods : _ZPConstantUnicodeString {
    id copyWithZone(ZPZone *) { return this; }
    void dealloc() { ZPLog("*** dealloc called for %s"_zp, isa->name); }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPSimpleString, SimpleStringMethods, init, initWithCharactersNoCopy_length_freeWhenDone, dealloc,
                  length, characterAtIndex, getCharacters_range, _characters, copyWithZone);

ZP_IMPLEMENT_WITH(ZPUnicodeString, UnicodeStringMethods, initWithCharactersNoCopy_length_freeWhenDone, dealloc);

ZP_IMPLEMENT_WITH(ZPUnicodeSubstring, UnicodeSubstringMethods, initWithCharactersNoCopy_length_freeWhenDone,
                  initWithCStringNoCopy_length_freeWhenDone, retain, dealloc, substringWithRange);

ZP_IMPLEMENT_WITH(_ZPConstantUnicodeString, ConstantUnicodeStringMethods, staticInstances(), immortal(), copyWithZone,
                  dealloc);

ZPString *_ZPNewStringAdoptingUnits(unichar *units, unsigned length, BOOL freeWhenDone, ZPZone *zone) {
    ZPGivenBlock given(units, freeWhenDone);
    if (length == 0) return ""_zp;
    ZPUnicodeString *s = ZPAllocateObject(ZPUnicodeString::class_(), 0, zone);
    (void)given.take();
    s->characters = units;
    s->numCharacters = length;
    s->_flags.freeWhenDone = freeWhenDone != NO;
    return s;
}

ZPString *_ZPNewStringWithUnits(const unichar *units, unsigned length, ZPZone *zone) {
    if (length == 0) return ""_zp;
    ZPZoneBlock<unichar> block(length, zone);
    std::copy_n(units, length, block.get());
    return _ZPNewStringAdoptingUnits(block.take(), length, YES, zone);
}
