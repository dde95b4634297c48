// SPDX-License-Identifier: MIT
// The mutable string. `_contents` is one of:
//
//   foreign          any string, the argument of an initialiser for example; never changed
//   mine, 8-bit      a ZPCStringWithGap
//   mine, 16-bit     a ZPUnicodeStringWithGap
//
// foreign -> mine at the first change, 8-bit -> 16-bit when text comes that 8-bit storage does not hold; a
// whole replacement of foreign contents takes the new text as it is. Mine stays mine, 16-bit stays 16-bit.
// Contents with further references (copies, substrings) are left for new ones at the next change.
#include <Bedrock/strings/cluster/Mutable.h>
#include <Bedrock/core/Scope.h>
#include <Bedrock/core/ZPRef.h>

namespace {

struct ConcreteMutable : ZPConcreteMutableString {
    bool isMine() const { return _flags.contentsIsMine; }
    bool is8Bit() const { return _flags.contentsIsCString; }
    ZPCStringWithGap *gap8() const { return static_cast<ZPCStringWithGap *>(_contents); }
    ZPUnicodeStringWithGap *gap16() const { return static_cast<ZPUnicodeStringWithGap *>(_contents); }

    unsigned count() const {
        return !isMine() ? _contents->length() : is8Bit() ? gap8()->numBytes : gap16()->numCharacters;
    }
    void _pack() {
        if (!isMine()) return;
        if (is8Bit()) _ZPPackGap(gap8());
        else _ZPPackGap(gap16());
    }
    ZPString *packedContents() {
        _pack();
        return _contents;
    }
    ZPStringView view() {
        if (!isMine()) return _ZPViewOfString(_contents);
        _pack();
        if (is8Bit()) return {reinterpret_cast<unsigned char *>(gap8()->bytes), nullptr, gap8()->numBytes};
        return {nullptr, gap16()->characters, gap16()->numCharacters};
    }

    // Takes a string, of which the caller gives up its reference, as contents.
    void takeContents(ZPString *string) {
        if (_contents) _contents->release();
        _contents = string;
        Class cls = string->isa;
        _flags.contentsIsCString = cls == ZPCStringWithGap::class_() || string->_fastCStringContents() != nullptr;
        _flags.contentsIsMine = cls == ZPCStringWithGap::class_() || cls == ZPUnicodeStringWithGap::class_();
    }
    void takeMine(ZPString *gapString, bool eightBit) {
        if (_contents) _contents->release();
        _contents = gapString;
        _flags.contentsIsMine = 1;
        _flags.contentsIsCString = eightBit;
    }

    // ---- initialisers ----

    id initWithCapacity(unsigned n) {
        _contents = ""_zp;
        _flags.contentsIsCString = 1;
        _flags.capacity = _capacityToInternal(n) & 0xFFFF;
        return this;
    }
    id init() { return ConcreteMutable::initWithCapacity(32); }
    ZPString *initWithString(ZPString *string) {
        _flags.capacity = 32;
        ZPRef<ZPString> own = ZPRef<ZPString>::adopt(this);  // copying may run anybody's code
        takeContents(string ? string->copyWithZone(self()->zone()).as<ZPString>() : ""_zp);
        return own.detach();
    }
    ZPString *initWithBytes_length_encoding(const void *bytes, unsigned length, ZPStringEncoding encoding) {
        void *buffer;
        unsigned n;
        BOOL isASCII;
        if (!_ZPConvertToASCIIorUnicode(bytes, length, encoding, &buffer, &n, &isASCII, self()->zone())) {
            self()->release();
            return nullptr;
        }
        return isASCII ? adoptBytes(static_cast<char *>(buffer), n, YES)
                       : initWithCharactersNoCopy_length_freeWhenDone(static_cast<unichar *>(buffer), n, YES);
    }
    template <class S> void adopt(typename S::Unit *buffer, unsigned length, BOOL freeWhenDone) {
        ZPGivenBlock given(buffer, freeWhenDone);
        _flags.capacity = 32;
        S *s = _ZPNewStringWithGap<S>(32, self()->zone());
        (void)given.take();
        _ZPBufferOf(s) = buffer;
        _ZPLengthOf(s) = s->gapBegin = s->gapEnd = length;
        s->_flags.freeWhenDone = freeWhenDone != NO;
        takeMine(s, sizeof(typename S::Unit) == 1);
    }
    ZPString *adoptBytes(char *bytes, unsigned length, BOOL freeWhenDone) {
        adopt<ZPCStringWithGap>(bytes, length, freeWhenDone);
        return this;
    }
    ZPString *initWithCharactersNoCopy_length_freeWhenDone(unichar *units, unsigned length, BOOL freeWhenDone) {
        adopt<ZPUnicodeStringWithGap>(units, length, freeWhenDone);
        return this;
    }
    ZPString *initWithCStringNoCopy_length_freeWhenDone(char *bytes, unsigned length, BOOL freeWhenDone) {
        if (_ZPFitsByteStorage(bytes, length)) return adoptBytes(bytes, length, freeWhenDone);
        ZPGivenBlock given(bytes, freeWhenDone);
        return self()->initWithBytes_length_encoding(bytes, length, _ZPDefaultCStringEncoding());
    }
    ZPString *initWithFormat_locale_arguments(ZPString *format, ZPDictionary *locale, std::va_list arguments) {
        ConcreteMutable::initWithCapacity(100);
        ZPRef<ZPString> own = ZPRef<ZPString>::adopt(this);
        self()->setStringWithFormat_locale_arguments(format, locale, arguments);
        return own.detach();
    }
    void dealloc() {
        if (_contents) _contents->release();
        ZP_SUPER(ZPConcreteMutableString, dealloc)();
    }

    // ---- editing ----

    static unsigned newLength(unsigned length, unsigned removed, unsigned added) {
        std::uint64_t n = std::uint64_t(length) - removed + added;
        if (n > _ZPLongestString) [[unlikely]]
            _ZPRaiseTooLong(n);
        return unsigned(n);
    }

    template <class S> void edit(ZPRange range, const ZPStringView &text, unsigned total) {
        S *s = _ZPSetRequiredLength(static_cast<S *>(_contents), total, range.location, range.length, true);
        _contents = s;
        _ZPCopyToGap(s, text, 0, text.length);
    }
    template <class S> void rebuild(ZPRange range, const ZPStringView &text, unsigned total) {
        ZPStringView old = view();
        ZPStackBuffer<unichar, 128> units(old.shown() ? 0 : old.length);
        if (!old.shown()) {
            _contents->getCharacters_range(units.memory, {0, old.length});
            old.units = units.memory;
        }
        ZPRef<S> empty = ZPAdopt(_ZPNewStringWithGap<S>(_flags.capacity, self()->zone()));
        S *s = _ZPSetRequiredLength(empty.get(), total, 0, 0, true);
        (void)empty.detach();
        _ZPCopyToGap(s, old, 0, range.location);
        _ZPCopyToGap(s, text, 0, text.length);
        unsigned behind = range.location + range.length;
        _ZPCopyToGap(s, old, behind, old.length - behind);
        takeMine(s, sizeof(typename S::Unit) == 1);
    }
    // Replaces checked units; the text is one run and none of the contents' own that may move.
    void replaceUnits(ZPRange range, unsigned length, const ZPStringView &text) {
        unsigned total = newLength(length, range.length, text.length);
        bool fits8 = text.length == 0 || text.bytes;
        if (isMine() && (!is8Bit() || fits8)) {
            if (is8Bit()) edit<ZPCStringWithGap>(range, text, total);
            else edit<ZPUnicodeStringWithGap>(range, text, total);
        } else if (fits8 && (range.length == length || is8Bit())) rebuild<ZPCStringWithGap>(range, text, total);
        else rebuild<ZPUnicodeStringWithGap>(range, text, total);
    }

    void replaceCharactersInRange_withString(ZPRange range, ZPString *string) {
        replaceFrom("replaceCharactersInRange:withString:"_sel, range, string);
    }
    void replaceFrom(SEL selector, ZPRange range, ZPString *string) {
        unsigned length = count();
        if (range.location == 0 && range.length == length && !isMine()) {
            takeContents(string ? string->copyWithZone(self()->zone()).as<ZPString>() : ""_zp);
            return;
        }
        _ZPCheckRange(this, selector, range, length);
        if (string == this) {
            // The copy makes the edit go to a new buffer, so its text stays as it is.
            ZPRef<ZPString> kept = packedContents();
            replaceUnits(range, length, view());
            return;
        }
        ZPStringView text = _ZPViewOfString(string);
        if (text.shown()) {
            // What a client's string does when it is asked may have changed this one.
            if (count() != length) _ZPCheckRange(this, selector, range, length = count());
            replaceUnits(range, length, text);
            return;
        }
        newLength(length, range.length, text.length);  // refused before it is read
        ZPStackBuffer<unichar, 128> units(text.length);
        string->getCharacters_range(units.memory, {0, text.length});
        _ZPCheckRange(this, selector, range, length = count());
        replaceUnits(range, length, {nullptr, units.memory, text.length});
    }
    void replaceCharactersInRange_withCString_length(ZPRange range, const char *bytes, unsigned n) {
        unsigned length = count();
        _ZPCheckRange(this, "replaceCharactersInRange:withCString:length:"_sel, range, length);
        if (_ZPFitsByteStorage(bytes, n)) {
            replaceUnits(range, length, {reinterpret_cast<const unsigned char *>(bytes), nullptr, n});
            return;
        }
        _ZPBlock<void> buffer;
        unsigned units;
        BOOL isASCII;
        if (!_ZPConvertToASCIIorUnicode(bytes, n, _ZPDefaultCStringEncoding(), buffer.place(), &units, &isASCII,
                                        nullptr))
            ZPException::raise_format(ZPCharacterConversionException, "Bad cString"_zp);
        if (isASCII) replaceUnits(range, length, {static_cast<unsigned char *>(buffer.get()), nullptr, units});
        else replaceCharactersInRange_withCharacters_length(range, static_cast<unichar *>(buffer.get()), units);
    }
    void replaceCharactersInRange_withCharacters_length(ZPRange range, const unichar *characters, unsigned n) {
        unsigned length = count();
        _ZPCheckRange(this, "replaceCharactersInRange:withCharacters:length:"_sel, range, length);
        ZPStringView text{nullptr, characters, n};
        unsigned total = newLength(length, range.length, n);
        if (isMine() && !is8Bit()) edit<ZPUnicodeStringWithGap>(range, text, total);
        else rebuild<ZPUnicodeStringWithGap>(range, text, total);
    }

    // Appending to a gap at the end that has room, where nothing has to move.
    template <class S> static bool appendInPlace(S *s, const ZPStringView &text) {
        unsigned n = text.length;
        if (s->gapBegin != _ZPLengthOf(s) || n > s->gapEnd - s->gapBegin || !s->_flags.canWriteIntoBuffer ||
            objc_headerOf(s)->extraReferences)
            return false;
        // A buffer that has become far too large is shrunk by the general way.
        std::uint64_t twice = 2 * (std::uint64_t(s->gapBegin) + n);
        if (twice < s->gapEnd && _capacityToExternal(s->_flags.capacity) < s->gapEnd) return false;
        if (sizeof(typename S::Unit) == 1 && n == 1) {
            _ZPBufferOf(s)[s->gapBegin] = static_cast<typename S::Unit>(*text.bytes);
            _ZPLengthOf(s) = ++s->gapBegin;
        } else _ZPCopyToGap(s, text, 0, n);
        return true;
    }
    void appendString(ZPString *string) {
        if (isa == ZPConcreteMutableString::class_()) [[likely]] {
            // What shows its text by its fields is no text that changes, this one least.
            ZPStringView text;
            if (isMine() && string && _ZPViewFields(string, text) &&
                (is8Bit() ? text.bytes && appendInPlace(gap8(), text)
                          : (text.bytes || text.units) && appendInPlace(gap16(), text)))
                return;
            replaceFrom("appendString:"_sel, {count(), 0}, string);
            return;
        }
        self()->replaceCharactersInRange_withString({self()->length(), 0}, string);
    }

    void setStringWithFormat_locale_arguments(ZPString *format, id locale, std::va_list arguments) {
        ZPString *text = _ZPNewFormattedString(self()->zone(), format, locale, arguments);
        if (!isMine()) takeContents(text);
        else {
            ZPRef<ZPString> owned = ZPAdopt(text);
            self()->replaceCharactersInRange_withString({0, self()->length()}, text);
        }
    }

    // ---- reading ----

    unsigned length() { return count(); }
    unsigned cStringLength() { return _contents->cStringLength(); }
    unichar characterAtIndex(unsigned index) {
        if (index >= count()) [[unlikely]]
            _ZPRaiseOutOfBounds(this, "characterAtIndex:"_sel);
        return _contents->characterAtIndex(index);
    }
    void getCharacters_range(unichar *buffer, ZPRange range) {
        _ZPCheckRange(this, "getCharacters:range:"_sel, range, count());
        _contents->getCharacters_range(buffer, range);
    }
    BOOL getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
        void *buffer, unsigned maxLength, unsigned *filled, ZPStringEncoding encoding, BOOL lossy, ZPRange range,
        ZPRange *remaining) {
        return _contents->getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
            buffer, maxLength, filled, encoding, lossy, range, remaining);
    }
    ZPStringEncoding fastestEncoding() { return _contents->fastestEncoding(); }
    ZPStringEncoding smallestEncoding() { return _contents->smallestEncoding(); }
    const char *_fastCStringContents() { return is8Bit() ? packedContents()->_fastCStringContents() : nullptr; }
    ZPComparisonResult compare_options_range(ZPString *other, unsigned options, ZPRange range) {
        return packedContents()->compare_options_range(other, options, range);
    }
    ZPRange rangeOfString_options_range(ZPString *needle, unsigned options, ZPRange range) {
        return packedContents()->rangeOfString_options_range(needle, options, range);
    }
    ZPRange rangeOfCharacterFromSet_options_range(ZPCharacterSet *set, unsigned options, ZPRange range) {
        return packedContents()->rangeOfCharacterFromSet_options_range(set, options, range);
    }
    BOOL isEqualToString(ZPString *other) { return other == this ? YES : packedContents()->isEqualToString(other); }
    unsigned hash() { return packedContents()->hash(); }
    ZPString *_newSubstringWithRange_zone(ZPRange range, ZPZone *zone) {
        return packedContents()->_newSubstringWithRange_zone(range, zone);
    }
    ZPString *stringByAppendingString(ZPString *other) { return packedContents()->stringByAppendingString(other); }
    id copyWithZone(ZPZone *zone) { return packedContents()->copyWithZone(zone); }
    id mutableCopyWithZone(ZPZone *zone) {
        return ZPMutableString::allocWithZone(zone)->initWithString(packedContents());
    }

    ZPString *_copyAndRelease() {
        bool mine = isMine(), eightBit = is8Bit();
        ZPString *contents = packedContents(), *copy = contents->copyWithZone(nullptr);
        self()->release();
        if (!mine || copy != contents) return copy;
        if (eightBit) return trimmed(static_cast<ZPCStringWithGap *>(copy));
        return trimmed(static_cast<ZPUnicodeStringWithGap *>(copy));
    }
    template <class S> static ZPString *trimmed(S *s) {
        return _ZPSetRequiredLength(s, _ZPLengthOf(s), _ZPLengthOf(s), 0, false);
    }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPConcreteMutableString, ConcreteMutable, init, initWithCapacity, initWithString,
                  initWithBytes_length_encoding, initWithCharactersNoCopy_length_freeWhenDone,
                  initWithCStringNoCopy_length_freeWhenDone, initWithFormat_locale_arguments, dealloc,
                  replaceCharactersInRange_withString, replaceCharactersInRange_withCString_length,
                  replaceCharactersInRange_withCharacters_length, appendString, setStringWithFormat_locale_arguments,
                  length, cStringLength, characterAtIndex, getCharacters_range,
                  getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange, fastestEncoding,
                  smallestEncoding, _fastCStringContents, compare_options_range, rangeOfString_options_range,
                  rangeOfCharacterFromSet_options_range, isEqualToString, hash, _newSubstringWithRange_zone,
                  stringByAppendingString, copyWithZone, mutableCopyWithZone, _pack, _copyAndRelease);
