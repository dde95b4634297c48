// SPDX-License-Identifier: MIT
// What every string does on the primitives, apart from the themes that have files of their own: making,
// reading, copying.
#include <Bedrock/strings/cluster/Mutable.h>
#include <Bedrock/core/Fronts.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/strings/paths/Paths.h>

namespace {

ZPString *newFormatted(ZPString *format, ZPDictionary *locale, std::va_list arguments) {
    return _ZPPlaceholderStringFromZone(nullptr)->initWithFormat_locale_arguments(format, locale, arguments);
}

// Making a string of bytes or of a format may fail.
ZPString *autoreleased(ZPString *string) { return string ? string->autorelease() : id(); }

struct ZPStringClassMethods {
    static id alloc(Class self) {
        if (self == ZPString::class_()) [[likely]]
            return _ZPPlaceholderStringFromZone(nullptr);
        return ZPString::allocFrom(self);
    }
    static id allocWithZone(Class self, ZPZone *zone) {
        if (self == ZPString::class_()) return _ZPPlaceholderStringFromZone(zone);
        return ZPAllocateObject(self, 0, zone);
    }
    static ZPString *string(Class self) { return _ZPFront(self)->alloc()->init()->autorelease(); }
    static ZPString *stringWithString(Class self, ZPString *other) {
        return _ZPFront(self)->alloc().unchecked<ZPString>()->initWithString(other)->autorelease();
    }
    static ZPString *stringWithCharacters_length(Class, const unichar *characters, unsigned length) {
        return _ZPNewStringWithUnits(characters, length, nullptr)->autorelease();
    }
    static ZPString *stringWithCString(Class self, const char *bytes) {
        if (!bytes) _ZPRaiseNullCString(self, "stringWithCString:"_sel);
        return ZPString::stringWithCString_length(bytes, _ZPCheckedLength(std::strlen(bytes)));
    }
    static ZPString *stringWithCString_length(Class, const char *bytes, unsigned length) {
        return autoreleased(_ZPPlaceholderStringFromZone(nullptr)->initWithCString_length(bytes, length));
    }
    static ZPString *stringWithFormat(Class, ZPString *format, std::va_list arguments) {
        return autoreleased(newFormatted(format, nullptr, arguments));
    }
    static ZPString *stringWithFormat_locale(Class, ZPString *format, ZPDictionary *locale, std::va_list arguments) {
        return autoreleased(newFormatted(format, locale, arguments));
    }
    static ZPString *localizedStringWithFormat(Class, ZPString *format, std::va_list arguments) {
        return autoreleased(newFormatted(format, _ZPUserLocale(), arguments));
    }
};

struct ZPStringMethods : ZPString {
    // Ends an initialiser that cannot go on.
    ZPString *giveUp() {
        self()->release();
        return nullptr;
    }

    ZPString *initWithCharactersNoCopy_length_freeWhenDone(unichar *, unsigned, BOOL) {
        _ZPRequestConcreteObject(this, "initWithCharactersNoCopy:length:freeWhenDone:"_sel);
    }
    ZPString *initWithCStringNoCopy_length_freeWhenDone(char *, unsigned, BOOL) {
        _ZPRequestConcreteObject(this, "initWithCStringNoCopy:length:freeWhenDone:"_sel);
    }
    ZPString *initWithCString_length(const char *bytes, unsigned length) {
        return self()->initWithBytes_length_encoding(bytes, length, _ZPDefaultCStringEncoding());
    }
    ZPString *initWithCString(const char *bytes) {
        if (!bytes) _ZPRaiseNullCString(this, "initWithCString:"_sel);
        return self()->initWithBytes_length_encoding(bytes, _ZPCheckedLength(std::strlen(bytes)),
                                                     _ZPDefaultCStringEncoding());
    }
    ZPString *initWithCharacters_length(const unichar *characters, unsigned length) {
        ZPZoneBlock<unichar> block(length, self()->zone());
        std::copy_n(characters, length, block.get());
        return self()->initWithCharactersNoCopy_length_freeWhenDone(block.take(), length, YES);
    }
    ZPString *initWithString(ZPString *other) {
        unsigned length = other->length();
        ZPZoneBlock<unichar> block(length, self()->zone());
        other->getCharacters_range(block.get(), {0, length});
        return self()->initWithCharactersNoCopy_length_freeWhenDone(block.take(), length, YES);
    }
    ZPString *initWithFormat(ZPString *format, std::va_list arguments) {
        return self()->initWithFormat_locale_arguments(format, nullptr, arguments);
    }
    ZPString *initWithFormat_arguments(ZPString *format, std::va_list arguments) {
        return self()->initWithFormat_locale_arguments(format, nullptr, arguments);
    }
    ZPString *initWithFormat_locale(ZPString *format, ZPDictionary *locale, std::va_list arguments) {
        return self()->initWithFormat_locale_arguments(format, locale, arguments);
    }
    ZPString *initWithFormat_locale_arguments(ZPString *format, ZPDictionary *locale, std::va_list arguments) {
        ZPRef<ZPString> formatted = ZPAdopt(newFormatted(format, locale, arguments));
        return self()->initWithString(formatted);
    }
    ZPString *initWithData_encoding(ZPData *data, ZPStringEncoding encoding) {
        unsigned length = data->length();
        return self()->initWithBytes_length_encoding(data->bytes(), length, encoding);
    }
    ZPString *initWithBytes_length_encoding(const void *bytes, unsigned length, ZPStringEncoding encoding) {
        void *buffer = nullptr;
        unsigned count = 0;
        BOOL isASCII = NO;
        if (!_ZPConvertToASCIIorUnicode(bytes, length, encoding, &buffer, &count, &isASCII, self()->zone()))
            return giveUp();
        if (isASCII) return self()->initWithCStringNoCopy_length_freeWhenDone(static_cast<char *>(buffer), count, YES);
        return self()->initWithCharactersNoCopy_length_freeWhenDone(static_cast<unichar *>(buffer), count, YES);
    }

    unsigned length() { ZPRequestConcreteImplementation(this, "length"_sel, ZPString::class_()); }
    unichar characterAtIndex(unsigned) {
        ZPRequestConcreteImplementation(this, "characterAtIndex:"_sel, ZPString::class_());
    }
    void getCharacters_range(unichar *buffer, ZPRange range) {
        for (unsigned i = 0; i < range.length; ++i) buffer[i] = self()->characterAtIndex(range.location + i);
    }
    void getCharacters(unichar *buffer) { self()->getCharacters_range(buffer, {0, self()->length()}); }
    const char *_fastCStringContents() { return nullptr; }
    ZPStringEncoding fastestEncoding() { return ZPUnicodeStringEncoding; }
    ZPStringEncoding smallestEncoding() {
        if (self()->canBeConvertedToEncoding(ZPASCIIStringEncoding)) return ZPASCIIStringEncoding;
        ZPStringEncoding ours = _ZPDefaultCStringEncoding();
        return self()->canBeConvertedToEncoding(ours) ? ours : ZPUnicodeStringEncoding;
    }

    ZPString *description() { return this; }
    Class classForCoder() { return ZPString::class_(); }
    id replacementObjectForPortCoder(id) { return this; }
    id copyWithZone(ZPZone *zone) { return _ZPPlaceholderStringFromZone(zone)->initWithString(this); }
    id mutableCopyWithZone(ZPZone *zone) { return ZPMutableString::allocWithZone(zone)->initWithString(this); }
};

}  // namespace

ZP_SAME_FRONT(ZPString, _ZPStringAbove, stringWithCString, initWithFormat_arguments, length, characterAtIndex, cString,
              displayableString);
ZP_IMPLEMENT_WITH(ZPString, ZPStringMethods, version(1), adopts(ZPCopying, ZPMutableCopying),
                  initWithCharactersNoCopy_length_freeWhenDone, initWithCStringNoCopy_length_freeWhenDone,
                  initWithCString_length, initWithCString, initWithCharacters_length, initWithString,
                  variadic(initWithFormat), variadic(initWithFormat_locale), initWithFormat_arguments,
                  initWithFormat_locale_arguments, initWithData_encoding, initWithBytes_length_encoding, length,
                  characterAtIndex, getCharacters_range, getCharacters, _fastCStringContents, fastestEncoding,
                  smallestEncoding, description, classForCoder, replacementObjectForPortCoder, copyWithZone,
                  mutableCopyWithZone,
                  classMethodsOf(ZPStringClassMethods, alloc, allocWithZone, string, stringWithString,
                                 stringWithCharacters_length, stringWithCString, stringWithCString_length,
                                 variadic(stringWithFormat), variadic(stringWithFormat_locale),
                                 variadic(localizedStringWithFormat)));

ZPStringView _ZPViewOfOtherString(ZPString *string) {
    Class cls = string->isa;
    if (cls == ZPPathStore2::class_()) {
        auto *store = static_cast<ZPPathStore2 *>(string);
        return {nullptr, _ZPUnitsOfPathStore(store), store->_lengthAndRefCount};
    }
    if (cls == ZPConcreteMutableString::class_()) {
        string = static_cast<ZPConcreteMutableString *>(string)->_contents;
        if (!string || (string->isa != ZPCStringWithGap::class_() && string->isa != ZPUnicodeStringWithGap::class_()))
            return _ZPViewOfString(string);
        cls = string->isa;
    }
    if (cls == ZPCStringWithGap::class_()) {
        auto *s = static_cast<ZPCStringWithGap *>(string);
        _ZPPackGap(s);
        return {reinterpret_cast<unsigned char *>(s->bytes), nullptr, s->numBytes};
    }
    if (cls == ZPUnicodeStringWithGap::class_()) {
        auto *s = static_cast<ZPUnicodeStringWithGap *>(string);
        _ZPPackGap(s);
        return {nullptr, s->characters, s->numCharacters};
    }
    while (cls && cls != ZPSimpleString::class_() && cls != ZPString::class_()) cls = cls->superclass;
    if (cls == ZPSimpleString::class_()) {
        unsigned length = string->length();
        return {nullptr, static_cast<ZPSimpleString *>(string)->_characters(), length};
    }
    unsigned length = string->length();
    auto *bytes = cls ? reinterpret_cast<const unsigned char *>(string->_fastCStringContents()) : nullptr;
    return {bytes, nullptr, length};
}

void ZPHeldView::hold(ZPString *string) {
    Class cls = string->isa;
    if (cls == ZPConcreteMutableString::class_()) {
        owner = ZPAdopt<ZPString>(string->copyWithZone(nullptr));
        string = owner;
        cls = string->isa;
    }
    bool parts = cls == ZPCSubstring::class_() || cls == ZPUnicodeSubstring::class_();
    bool gap = cls == ZPCStringWithGap::class_() || cls == ZPUnicodeStringWithGap::class_();
    if ((parts || gap) && !owner) owner = string;
    ZPStringView &view = *this;
    if (_ZPViewFields(string, view)) return;
    if (gap || cls == ZPPathStore2::class_()) view = _ZPViewOfOtherString(string);
    else length = string->length();
}

void _ZPCopyUnits(const ZPStringView &view, unsigned from, unsigned count, unichar *buffer) {
    if (view.units) {
        std::copy_n(view.units + from, count, buffer);
        return;
    }
    const unsigned char *p = view.bytes + from;
    unsigned char all = 0;
    for (unsigned i = 0; i < count; ++i) {
        all |= p[i];
        buffer[i] = p[i];
    }
    if (all >= 0x80)
        for (unsigned i = 0; i < count; ++i) buffer[i] = _ZPUnitOfByte(p[i]);
}

bool _ZPIsASCII(const void *bytes, unsigned length) {
    auto *p = static_cast<const unsigned char *>(bytes);
    constexpr std::uint64_t high = 0x8080808080808080;
    std::uint64_t word;
    if (length < 8) {
        unsigned char all = 0;
        for (unsigned i = 0; i < length; ++i) all |= p[i];
        return all < 0x80;
    }
    for (unsigned i = 0; length - i >= 8; i += 8) {
        std::memcpy(&word, p + i, 8);
        if (word & high) return false;
    }
    std::memcpy(&word, p + length - 8, 8);
    return !(word & high);
}

ZPDictionary *_ZPUserLocale() { return _ZPUserDefaultsAbove::standardUserDefaults()->dictionaryRepresentation(); }

void _ZPRaiseTooLong(std::uint64_t length) {
    _ZPRaiseMalloc("a string of %llu characters is too long", static_cast<unsigned long long>(length));
}

void _ZPRaiseOutOfBounds(id receiver, SEL selector) {
    ZPException::raise_format(ZPRangeException, "[%s %s]: Out of bounds"_zp, receiver.pointer()->isa->name,
                              sel_getName(selector));
}

void _ZPRaiseNullCString(id receiver, SEL selector) {
    ZPException::raise_format(ZPInvalidArgumentException, "[%s %s]: NULL cString"_zp, receiver.pointer()->isa->name,
                              sel_getName(selector));
}

ZPString *ZPStringFromBOOL(BOOL flag) { return flag ? "YES"_zp : "NO"_zp; }
