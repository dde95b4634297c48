// SPDX-License-Identifier: MIT
// What `alloc` answers for ZPString: one object a zone, whose initialisers pick the storage class.
//
//   defaultPlaceholder   that of the default zone, made once
//   placeholdersOfZones  those of other zones, with the one answered last in front; under a mutex
//
// A zone that is recycled leaves its placeholder behind, so that another zone at the same address finds it.
#include <Bedrock/platform/kernel/MakeOnce.h>
#include <Bedrock/strings/cluster/Mutable.h>

#include <Bedrock/data/ZPData.h>
#include <Bedrock/platform/kernel/Fork.h>

#include <vector>

namespace {

ZPPlaceholderString *defaultPlaceholder;

constinit mutex placeholdersMutex;
std::vector<ZPPlaceholderString *> *placeholdersOfZones ZP_GUARDED_BY(placeholdersMutex);
ZP_MUTEX_AT_FORK(placeholders, []() -> mutex & { return placeholdersMutex; });

ZPPlaceholderString *makePlaceholder(ZPZone *zone) {
    // The object itself lives in the default zone: a recycled zone must not take it along.
    ZPPlaceholderString *p = ZPAllocateObject(ZPPlaceholderString::class_(), 0, nullptr);
    p->zoneForString = zone;
    return p;
}

struct ZPPlaceholderStringMethods : ZPPlaceholderString {
    void dealloc() {}
    unsigned length() { complain("length"_sel); }
    unichar characterAtIndex(unsigned) { complain("characterAtIndex:"_sel); }
    [[noreturn]] void complain(SEL selector) {
        ZPLog("Did you forget to nest [ZPString allocWithZone:NULL] and init?"_zp);
        ZPRequestConcreteImplementation(this, selector, ZPString::class_());
    }

    ZPString *init() { return ""_zp; }
    ZPString *initWithCharactersNoCopy_length_freeWhenDone(unichar *units, unsigned length, BOOL freeWhenDone) {
        return _ZPNewStringAdoptingUnits(units, length, freeWhenDone, zoneForString);
    }
    ZPString *initWithCharacters_length(const unichar *units, unsigned length) {
        return _ZPNewStringWithUnits(units, length, zoneForString);
    }
    ZPString *initWithCStringNoCopy_length_freeWhenDone(char *bytes, unsigned length, BOOL freeWhenDone) {
        if (_ZPFitsByteStorage(bytes, length))
            return _ZPNewStringAdoptingBytes(bytes, length, freeWhenDone, zoneForString);
        ZPString *result = converted(bytes, length, _ZPDefaultCStringEncoding());
        if (freeWhenDone) ZPZoneFree(ZPZoneFromPointer(bytes), bytes);
        return result;
    }
    ZPString *initWithCString_length(const char *bytes, unsigned length) {
        if (_ZPFitsByteStorage(bytes, length)) [[likely]]
            return _ZPNewInlineCString(bytes, length, zoneForString);
        return converted(bytes, length, _ZPDefaultCStringEncoding());
    }
    ZPString *initWithCString(const char *bytes) {
        if (!bytes) _ZPRaiseNullCString(this, "initWithCString:"_sel);
        return initWithCString_length(bytes, _ZPCheckedLength(std::strlen(bytes)));
    }
    ZPString *initWithString(ZPString *source) {
        if (!source) return ""_zp;
        Class cls = source->isa;
        bool shared =
            cls == ZPInlineCString::class_() || cls == ZPCString::class_() || cls == ZPUnicodeString::class_();
        if (shared && ZPShouldRetainWithZone(source, zoneForString)) return source->retain();
        if (source->fastestEncoding() == _ZPCStringEncoding)
            return _ZPNewInlineCStringFromString(source, zoneForString);
        unsigned length = source->length();
        ZPZoneBlock<unichar> block(length, zoneForString);
        source->getCharacters_range(block.get(), {0, length});
        return _ZPNewStringAdoptingUnits(block.take(), length, YES, zoneForString);
    }
    ZPString *initWithFormat_locale_arguments(ZPString *format, ZPDictionary *locale, std::va_list arguments) {
        return _ZPNewFormattedString(zoneForString, format, id(reinterpret_cast<objc_object *>(locale)), arguments);
    }
    ZPString *initWithData_encoding(ZPData *data, ZPStringEncoding encoding) {
        unsigned length = data->length();
        const void *bytes = data->bytes();
        if (encoding == _ZPCStringEncoding && _ZPFitsByteStorage(bytes, length))
            return _ZPNewInlineCString(static_cast<const char *>(bytes), length, zoneForString);
        return self()->initWithBytes_length_encoding(bytes, length, encoding);
    }
    ZPString *initWithBytes_length_encoding(const void *bytes, unsigned length, ZPStringEncoding encoding) {
        return converted(bytes, length, encoding);
    }

    ZPString *converted(const void *bytes, unsigned length, ZPStringEncoding encoding) {
        if (length == 0) return ""_zp;
        _ZPBlock<void> buffer(nullptr, zoneForString);
        unsigned count = 0;
        BOOL isASCII = NO;
        if (!_ZPConvertToASCIIorUnicode(bytes, length, encoding, buffer.place(), &count, &isASCII, zoneForString))
            return nullptr;
        if (!isASCII)
            return _ZPNewStringAdoptingUnits(static_cast<unichar *>(buffer.take()), count, YES, zoneForString);
        if (count >= _ZPShareThreshold)
            return _ZPNewStringAdoptingBytes(static_cast<char *>(buffer.take()), count, YES, zoneForString);
        return _ZPNewInlineCString(static_cast<char *>(buffer.get()), count, zoneForString);
    }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPPlaceholderString, ZPPlaceholderStringMethods, immortal(), dealloc, length, characterAtIndex, init,
                  initWithCharactersNoCopy_length_freeWhenDone, initWithCharacters_length,
                  initWithCStringNoCopy_length_freeWhenDone, initWithCString_length, initWithCString, initWithString,
                  initWithFormat_locale_arguments, initWithData_encoding, initWithBytes_length_encoding);

ZPString *_ZPPlaceholderStringFromZone(ZPZone *zone) {
    if (!zone || zone == QLDefaultMallocZone()) {
        return ZPMakeOnce(
            defaultPlaceholder, [] { return makePlaceholder(QLDefaultMallocZone()); }, ZPDropMemory());
    }
    ZPHolding hold(placeholdersMutex);
    if (!placeholdersOfZones) placeholdersOfZones = new std::vector<ZPPlaceholderString *>;
    auto &placeholders = *placeholdersOfZones;
    for (std::size_t i = placeholders.size(); i-- > 0;)
        if (placeholders[i]->zoneForString == zone) {
            std::swap(placeholders[i], placeholders.back());
            return placeholders.back();
        }
    placeholders.push_back(makePlaceholder(zone));
    return placeholders.back();
}

ZPString *_ZPNewInlineCStringFromString(ZPString *string, ZPZone *zone) {
    ZPStringView view = _ZPViewOfString(string);
    if (view.bytes || view.length == 0)
        return _ZPNewInlineCString(reinterpret_cast<const char *>(view.bytes), view.length, zone);
    unsigned length = string->cStringLength();
    ZPZoneBlock<char> block(std::size_t(length) + 1, zone);
    ZPRange rest;
    string->getCString_maxLength_range_remainingRange(block.get(), length, {0, view.length}, &rest);
    if (length > 0xFFFF) return _ZPNewStringAdoptingBytes(block.take(), length, YES, zone);
    return _ZPNewInlineCString(block.get(), length, zone);
}

ZPString *_ZPNewStringFromCString(const char *bytes) {
    return _ZPPlaceholderStringFromZone(nullptr)->initWithCString_length(bytes, _ZPCheckedLength(std::strlen(bytes)));
}
