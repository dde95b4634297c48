// SPDX-License-Identifier: MIT
// What every string does on the primitives, apart from the themes that have files of their own: making,
// reading, copying.
#include <Bedrock/strings/cluster/Mutable.h>
#include <Bedrock/core/ZPRef.h>
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
        return objc_msgSend<id>(self, "allocWithZone:"_sel, static_cast<ZPZone *>(nullptr));
    }
    static id allocWithZone(Class self, ZPZone *zone) {
        if (self == ZPString::class_()) return _ZPPlaceholderStringFromZone(zone);
        return ZPAllocateObject(self, 0, zone);
    }
    static ZPString *string(Class self) {
        return objc_msgSend<id>(objc_msgSend<id>(objc_msgSend<id>(self, "alloc"_sel), "init"_sel), "autorelease"_sel);
    }
    static ZPString *stringWithString(Class self, ZPString *other) {
        return objc_msgSend<id>(objc_msgSend<ZPString *>(objc_msgSend<id>(self, "alloc"_sel), "initWithString:"_sel,
                                                         other),
                                "autorelease"_sel);
    }
    static ZPString *stringWithCharacters(Class, const unichar *characters, unsigned length) {
        return _ZPNewStringWithUnits(characters, length, nullptr)->autorelease();
    }
    static ZPString *stringWithCString(Class self, const char *bytes) {
        if (!bytes) _ZPRaiseNullCString(self, "stringWithCString:"_sel);
        return ZPString::stringWithCString_length(bytes, unsigned(std::strlen(bytes)));
    }
    static ZPString *stringWithCStringLength(Class, const char *bytes, unsigned length) {
        return autoreleased(_ZPPlaceholderStringFromZone(nullptr)->initWithCString_length(bytes, length));
    }
    static ZPString *stringWithFormat(Class, ZPString *format, std::va_list arguments) {
        return autoreleased(newFormatted(format, nullptr, arguments));
    }
    static ZPString *stringWithFormatLocale(Class, ZPString *format, ZPDictionary *locale, std::va_list arguments) {
        return autoreleased(newFormatted(format, locale, arguments));
    }
    static ZPString *localizedStringWithFormat(Class, ZPString *format, std::va_list arguments) {
        return autoreleased(newFormatted(format, _ZPUserLocale(), arguments));
    }
};

struct ZPStringMethods : ZPString {
    // Ends an initialiser that cannot go on.
    ZPString *giveUp() {
        release();
        return nullptr;
    }

    ZPString *initWithCharactersNoCopy(unichar *, unsigned, BOOL) {
        _ZPRequestConcreteObject(this, "initWithCharactersNoCopy:length:freeWhenDone:"_sel);
    }
    ZPString *initWithCStringNoCopy(char *, unsigned, BOOL) {
        _ZPRequestConcreteObject(this, "initWithCStringNoCopy:length:freeWhenDone:"_sel);
    }
    ZPString *initWithCStringLength(const char *bytes, unsigned length) {
        return initWithBytes_length_encoding(bytes, length, _ZPDefaultCStringEncoding());
    }
    ZPString *initWithCString(const char *bytes) {
        if (!bytes) _ZPRaiseNullCString(this, "initWithCString:"_sel);
        return initWithBytes_length_encoding(bytes, unsigned(std::strlen(bytes)), _ZPDefaultCStringEncoding());
    }
    ZPString *initWithCharacters(const unichar *characters, unsigned length) {
        ZPZoneBlock<unichar> block(length, zone());
        std::copy_n(characters, length, block.memory);
        return initWithCharactersNoCopy_length_freeWhenDone(block.take(), length, YES);
    }
    ZPString *initWithString(ZPString *other) {
        unsigned length = other->length();
        ZPZoneBlock<unichar> block(length, zone());
        other->getCharacters_range(block.memory, {0, length});
        return initWithCharactersNoCopy_length_freeWhenDone(block.take(), length, YES);
    }
    ZPString *initWithFormat(ZPString *format, std::va_list arguments) {
        return initWithFormat_locale_arguments(format, nullptr, arguments);
    }
    ZPString *initWithFormat_arguments(ZPString *format, std::va_list arguments) {
        return initWithFormat_locale_arguments(format, nullptr, arguments);
    }
    ZPString *initWithFormatLocale(ZPString *format, ZPDictionary *locale, std::va_list arguments) {
        return initWithFormat_locale_arguments(format, locale, arguments);
    }
    ZPString *initWithFormatLocaleArguments(ZPString *format, ZPDictionary *locale, std::va_list arguments) {
        ZPRef<ZPString> formatted = ZPAdopt(newFormatted(format, locale, arguments));
        return ZPString::initWithString(formatted);
    }
    ZPString *initWithData(ZPData *data, ZPStringEncoding encoding) {
        return initWithBytes_length_encoding(objc_msgSend<const void *>(data, "bytes"_sel),
                                             objc_msgSend<unsigned>(data, "length"_sel), encoding);
    }
    ZPString *initWithBytes(const void *bytes, unsigned length, ZPStringEncoding encoding) {
        void *buffer = nullptr;
        unsigned count = 0;
        BOOL isASCII = NO;
        if (!_ZPConvertToASCIIorUnicode(bytes, length, encoding, &buffer, &count, &isASCII, zone())) return giveUp();
        if (isASCII) return initWithCStringNoCopy_length_freeWhenDone(static_cast<char *>(buffer), count, YES);
        return initWithCharactersNoCopy_length_freeWhenDone(static_cast<unichar *>(buffer), count, YES);
    }

    unsigned length() { ZPRequestConcreteImplementation(this, "length"_sel, ZPString::class_()); }
    unichar characterAtIndex(unsigned) {
        ZPRequestConcreteImplementation(this, "characterAtIndex:"_sel, ZPString::class_());
    }
    void getCharactersRange(unichar *buffer, ZPRange range) {
        for (unsigned i = 0; i < range.length; ++i) buffer[i] = ZPString::characterAtIndex(range.location + i);
    }
    void getCharacters(unichar *buffer) { getCharacters_range(buffer, {0, ZPString::length()}); }
    const char *fastCStringContents() { return nullptr; }
    ZPStringEncoding fastestEncoding() { return ZPUnicodeStringEncoding; }
    ZPStringEncoding smallestEncoding() {
        if (canBeConvertedToEncoding(ZPASCIIStringEncoding)) return ZPASCIIStringEncoding;
        ZPStringEncoding ours = _ZPDefaultCStringEncoding();
        return canBeConvertedToEncoding(ours) ? ours : ZPUnicodeStringEncoding;
    }

    ZPString *description() { return this; }
    Class classForCoder() { return ZPString::class_(); }
    id replacementObjectForPortCoder(id) { return this; }
    id copyWithZone(ZPZone *zone) { return _ZPPlaceholderStringFromZone(zone)->initWithString(this); }
    id mutableCopyWithZone(ZPZone *zone) { return ZPMutableString::allocWithZone(zone)->initWithString(this); }
};

}  // namespace

ZP_IMPLEMENT(ZPString)
    .version(1)
    .adopts<ZPCopying, ZPMutableCopying>()
    .classMethod<&ZPStringClassMethods::alloc>("alloc")
    .classMethod<&ZPStringClassMethods::allocWithZone>("allocWithZone:")
    .classMethod<&ZPStringClassMethods::string>("string")
    .classMethod<&ZPStringClassMethods::stringWithString>("stringWithString:")
    .classMethod<&ZPStringClassMethods::stringWithCharacters>("stringWithCharacters:length:")
    .classMethod<&ZPStringClassMethods::stringWithCString>("stringWithCString:")
    .classMethod<&ZPStringClassMethods::stringWithCStringLength>("stringWithCString:length:")
    .variadicClassMethod<&ZPStringClassMethods::stringWithFormat>("stringWithFormat:")
    .variadicClassMethod<&ZPStringClassMethods::stringWithFormatLocale>("stringWithFormat:locale:")
    .variadicClassMethod<&ZPStringClassMethods::localizedStringWithFormat>("localizedStringWithFormat:")
    .method<&ZPStringMethods::initWithCharactersNoCopy>("initWithCharactersNoCopy:length:freeWhenDone:")
    .method<&ZPStringMethods::initWithCStringNoCopy>("initWithCStringNoCopy:length:freeWhenDone:")
    .method<&ZPStringMethods::initWithCStringLength>("initWithCString:length:")
    .method<&ZPStringMethods::initWithCString>("initWithCString:")
    .method<&ZPStringMethods::initWithCharacters>("initWithCharacters:length:")
    .method<&ZPStringMethods::initWithString>("initWithString:")
    .variadic<&ZPStringMethods::initWithFormat>("initWithFormat:")
    .variadic<&ZPStringMethods::initWithFormatLocale>("initWithFormat:locale:")
    .method<&ZPStringMethods::initWithFormat_arguments>("initWithFormat:arguments:")
    .method<&ZPStringMethods::initWithFormatLocaleArguments>("initWithFormat:locale:arguments:")
    .method<&ZPStringMethods::initWithData>("initWithData:encoding:")
    .method<&ZPStringMethods::initWithBytes>("initWithBytes:length:encoding:")
    .method<&ZPStringMethods::length>("length")
    .method<&ZPStringMethods::characterAtIndex>("characterAtIndex:")
    .method<&ZPStringMethods::getCharactersRange>("getCharacters:range:")
    .method<&ZPStringMethods::getCharacters>("getCharacters:")
    .method<&ZPStringMethods::fastCStringContents>("_fastCStringContents")
    .method<&ZPStringMethods::fastestEncoding>("fastestEncoding")
    .method<&ZPStringMethods::smallestEncoding>("smallestEncoding")
    .method<&ZPStringMethods::description>("description")
    .method<&ZPStringMethods::classForCoder>("classForCoder")
    .method<&ZPStringMethods::replacementObjectForPortCoder>("replacementObjectForPortCoder:")
    .method<&ZPStringMethods::copyWithZone>("copyWithZone:")
    .method<&ZPStringMethods::mutableCopyWithZone>("mutableCopyWithZone:");

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
        const unichar *units = objc_msgSend<const unichar *>(string, "_characters"_sel);
        return {nullptr, units, string->length()};
    }
    if (cls)
        if (const char *bytes = string->_fastCStringContents())
            return {reinterpret_cast<const unsigned char *>(bytes), nullptr, string->cStringLength()};
    return {nullptr, nullptr, string->length()};
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

ZPDictionary *_ZPUserLocale() {
    id defaults = objc_msgSend<id>(objc_getClass("ZPUserDefaults"), "standardUserDefaults"_sel);
    return objc_msgSend<ZPDictionary *>(defaults, "dictionaryRepresentation"_sel);
}

void _ZPRaiseTooLong(std::uint64_t length) {
    _ZPRaiseTooMuch("a string of %llu characters is too long", static_cast<unsigned long long>(length));
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
