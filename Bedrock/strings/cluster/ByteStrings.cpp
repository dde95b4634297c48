// SPDX-License-Identifier: MIT
// The concrete classes with 8-bit storage. Bytes lie in `bytes` (ZPSimpleCString and its subclasses) or
// behind the fields (ZPInlineCString). Who frees `bytes`:
//
//   ZPSimpleCString    always the object
//   ZPCString          the object when `freeWhenDone` is set
//   ZPCSubstring       its parent while `_referenceString` is set, then the object
//   ZPConstantString   nobody
//
// A ZPCSubstring goes from borrowing to owning at its first retain and never back; see Substring+Internal.h.
#include <Bedrock/strings/cluster/Substring+Internal.h>

#include <utility>

namespace {

unsigned countOf(ZPSimpleCString *s) { return s->numBytes; }
unsigned countOf(ZPInlineCString *s) { return s->_flags.numBytes; }
char *bytesOf(ZPSimpleCString *s) { return s->bytes; }
char *bytesOf(ZPInlineCString *s) { return s->contents(); }

// What both layouts do on their bytes.
template <class S> struct ByteStringMethods : S {
    ZPStringView view() { return {reinterpret_cast<unsigned char *>(bytesOf(this)), nullptr, countOf(this)}; }

    unsigned length() { return countOf(this); }
    unichar characterAtIndex(unsigned index) {
        if (index >= countOf(this)) [[unlikely]]
            _ZPRaiseOutOfBounds(this, "characterAtIndex:"_sel);
        return _ZPUnitOfByte(static_cast<unsigned char>(bytesOf(this)[index]));
    }
    void getCharacters_range(unichar *buffer, ZPRange range) {
        _ZPCheckRange(this, "getCharacters:range:"_sel, range, countOf(this));
        _ZPCopyUnits(view(), range.location, range.length, buffer);
    }
    const char *_fastCStringContents() { return bytesOf(this); }
    ZPStringEncoding fastestEncoding() { return _ZPCStringEncoding; }
    ZPStringEncoding smallestEncoding() { return _ZPCStringEncoding; }
    unsigned cStringLength() { return countOf(this); }
    // The object's own bytes, where they mean the same as a C string.
    bool ownBytesAreCString() { return _ZPFitsByteStorage(bytesOf(this), countOf(this)); }
    const char *cString() { return ownBytesAreCString() ? bytesOf(this) : ZP_SUPER(S, cString)(); }
    const char *lossyCString() { return ownBytesAreCString() ? bytesOf(this) : ZP_SUPER(S, lossyCString)(); }
    BOOL canBeConvertedToEncoding(ZPStringEncoding encoding) {
        return encoding == _ZPCStringEncoding ? YES : ZP_SUPER(S, canBeConvertedToEncoding)(encoding);
    }
    BOOL getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
        void *buffer, unsigned maxLength, unsigned *filled, ZPStringEncoding encoding, BOOL lossy, ZPRange range,
        ZPRange *remaining) {
        _ZPCheckRange(this, "getBytes:maxLength:filledLength:encoding:allowLossyConversion:range:remainingRange:"_sel,
                      range, countOf(this));
        // Bytes of the storage encoding, and ASCII text in every encoding that extends ASCII, are copied.
        constexpr unsigned extendsASCII = 1u << ZPASCIIStringEncoding | 1u << ZPUTF8StringEncoding |
                                          1u << ZPISOLatin1StringEncoding | 1u << ZPISOLatin2StringEncoding |
                                          0x1Fu << ZPWindowsCP1251StringEncoding;
        const char *from = bytesOf(this) + range.location;
        bool plain = encoding == _ZPCStringEncoding ||
                     (encoding < 32 && (extendsASCII >> encoding & 1) && _ZPIsASCII(from, range.length));
        if (!plain)
            return ZP_SUPER(S, getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange)(
                buffer, maxLength, filled, encoding, lossy, range, remaining);
        unsigned n = range.length < maxLength ? range.length : maxLength;
        if (buffer && n) std::memcpy(buffer, from, n);
        if (filled) *filled = n;
        if (remaining) *remaining = {range.location + n, range.length - n};
        return YES;
    }
    id copyWithZone(ZPZone *zone) {
        if (ZPShouldRetainWithZone(this, zone)) return this->self()->retain();
        return _ZPNewInlineCString(bytesOf(this), countOf(this), zone);
    }
};

using InlineMethods = ByteStringMethods<ZPInlineCString>;
using SimpleMethods = ByteStringMethods<ZPSimpleCString>;

struct SimpleCStringMethods : ZPSimpleCString {
    ZPString *init() { return initWithCStringNoCopy_length_freeWhenDone(nullptr, 0, NO); }
    ZPString *initWithCStringNoCopy_length_freeWhenDone(char *b, unsigned length, BOOL) {
        bytes = b;
        numBytes = length;
        return this;
    }
    ZPString *initWithCString_length(const char *b, unsigned length) {
        ZPZoneBlock<char> block(length, self()->zone());
        std::copy_n(b, length, block.get());
        return self()->initWithCStringNoCopy_length_freeWhenDone(block.take(), length, YES);
    }
    void dealloc() {
        if (bytes) ZPZoneFree(ZPZoneFromPointer(bytes), bytes);
        ZP_SUPER(ZPSimpleCString, dealloc)();
    }
};

struct CStringMethods : ZPCString {
    ZPString *initWithCStringNoCopy_length_freeWhenDone(char *b, unsigned length, BOOL freeWhenDone) {
        bytes = b;
        numBytes = length;
        _flags.freeWhenDone = freeWhenDone != NO;
        return this;
    }
    void dealloc() {
        if (!_flags.freeWhenDone) bytes = nullptr;
        ZP_SUPER(ZPCString, dealloc)();
    }
};

struct CSubstringMethods : ZPSubstringMethods<ZPCSubstring> {
    id retain() {
        if (mayPart()) detach();
        ZPIncrementExtraRefCount(this);
        return this;
    }
    void detach() {
        char *copy = nullptr;
        if (numBytes) {
            ZPZoneBlock<char> block(numBytes, self()->zone());
            std::memcpy(block.get(), bytes, numBytes);
            copy = block.take();
        }
        bytes = copy;
        std::exchange(_referenceString, nullptr)->release();
    }
};

struct ConstantStringMethods : ZPConstantString {
    id copyWithZone(ZPZone *) { return this; }
    void dealloc() { ZPLog("*** dealloc called for %s"_zp, isa->name); }
    ZPString *initWithCharactersNoCopy_length(unichar *, unsigned) {
        self()->doesNotRecognizeSelector("initWithCharactersNoCopy:length:"_sel);
        return nullptr;
    }
};

struct InlineCStringMethods : ZPInlineCString {
    // The most common class meets itself most of the time.
    BOOL isEqualToString(ZPString *other) {
        if (!other || other->isa != isa) return _ZPEqualStrings(this, other);
        auto *same = static_cast<ZPInlineCString *>(other);
        unsigned n = _flags.numBytes;
        return n == same->_flags.numBytes && std::memcmp(contents(), same->contents(), n) == 0;
    }
    unsigned hash() { return ZPHashCString(contents(), _flags.numBytes); }
    ZPString *substringWithRange(ZPRange range) {
        _ZPCheckRange(this, "substringWithRange:"_sel, range, _flags.numBytes);
        return self()->_newSubstringWithRange_zone(range, nullptr)->autorelease();
    }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPSimpleCString, SimpleMethods, length, characterAtIndex, getCharacters_range, _fastCStringContents,
                  fastestEncoding, smallestEncoding, cStringLength, canBeConvertedToEncoding,
                  getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange, copyWithZone,
                  methodsOf(SimpleCStringMethods, init, initWithCStringNoCopy_length_freeWhenDone,
                            initWithCString_length, dealloc));

ZP_IMPLEMENT_WITH(ZPCString, CStringMethods, initWithCStringNoCopy_length_freeWhenDone, dealloc);

ZP_IMPLEMENT_WITH(ZPCSubstring, CSubstringMethods, initWithCStringNoCopy_length_freeWhenDone,
                  initWithCharactersNoCopy_length_freeWhenDone, retain, dealloc);

ZP_IMPLEMENT_WITH(ZPConstantString, ConstantStringMethods, staticInstances(), immortal(), copyWithZone, dealloc,
                  initWithCharactersNoCopy_length, methodsOf(SimpleMethods, cString, lossyCString));

ZP_IMPLEMENT_WITH(ZPInlineCString, InlineMethods, length, characterAtIndex, getCharacters_range, _fastCStringContents,
                  fastestEncoding, smallestEncoding, cStringLength, cString, lossyCString, canBeConvertedToEncoding,
                  getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange, copyWithZone,
                  methodsOf(InlineCStringMethods, isEqualToString, hash, substringWithRange));

constinit objc_literal8 ZPEmptyStringLiteral = {&ZPConstantStringRecord.cls, "", 0};

ZPString *_ZPNewInlineCString(const char *bytes, unsigned length, ZPZone *zone) {
    if (length == 0) return ""_zp;
    if (length > 0xFFFF)
        return ZPAllocateObject(ZPCString::class_(), 0, zone).as<ZPString>()->initWithCString_length(bytes, length);
    auto *s = static_cast<ZPInlineCString *>(_zoneAllocBare(ZPInlineCString::class_(), length + 1, zone));
    if (!s) [[unlikely]]
        _ZPRaiseOutOfMemory("a string");
    s->_flags = {0, 0, 0, length & 0xFFFF};
    char *contents = s->contents();
    std::memcpy(contents, bytes, length);
    contents[length] = '\0';
    return s;
}

ZPString *_ZPNewStringAdoptingBytes(char *bytes, unsigned length, BOOL freeWhenDone, ZPZone *zone) {
    ZPGivenBlock given(bytes, freeWhenDone);
    if (length == 0) return ""_zp;
    ZPCString *s = ZPAllocateObject(ZPCString::class_(), 0, zone);
    (void)given.take();
    s->bytes = bytes;
    s->numBytes = length;
    s->_flags.freeWhenDone = freeWhenDone != NO;
    return s;
}
