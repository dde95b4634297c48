// SPDX-License-Identifier: MIT
// C strings, the scratch memory they live in, and the displayable form.
#include <Bedrock/strings/cluster/Cluster.h>

#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/core/ZPAutoreleasePool.h>

namespace {

constexpr unsigned everything = 0x7FFFFFFE;

// ---- scratch memory: blocks that autorelease pools free ----
//
// Small requests are carved from the thread's current block; a request that would waste much of it gets a block
// of its own. `current` is that block, or null once its pool has been emptied.

constexpr unsigned scratchBlock = 500;

struct _ZPAutoreleasedMallocMemory : ZPObject {
    ZP_PRIVATE_CLASS(_ZPAutoreleasedMallocMemory)
    char *_block;
    unsigned _used;
};

thread_local _ZPAutoreleasedMallocMemory *current;

struct ScratchMethods : _ZPAutoreleasedMallocMemory {
    static ScratchMethods *make(unsigned capacity) {
        ZPZoneBlock<char> block(capacity);
        auto *object = ZPAllocateObject(_ZPAutoreleasedMallocMemory::class_(), 0, nullptr).unchecked<ScratchMethods>();
        object->_block = block.take();
        object->self()->autorelease();
        return object;
    }
    char *handOut(unsigned bytes) {
        char *p = _block + _used;
        _used += bytes;
        return p;
    }
    static void *mallocMemoryWithCapacity(Class, unsigned n) {
        if (n > scratchBlock) return make(n)->handOut(n);
        unsigned left = current ? scratchBlock - current->_used : 0;
        if (left >= n && current) return static_cast<ScratchMethods *>(current)->handOut(n);
        if (left >= scratchBlock - n) return make(n)->handOut(n);
        ScratchMethods *fresh = make(scratchBlock);
        current = fresh;
        return fresh->handOut(n);
    }
    void dealloc() {
        if (current == this) current = nullptr;
        ZPZoneFree(nullptr, _block);
        ZP_SUPER(_ZPAutoreleasedMallocMemory, dealloc)();
    }
};

[[noreturn]] void raiseConversionFailure(ZPString *string) {
    unsigned length = string->length();
    ZPString *shown = length > 23 ? string->substringToIndex(20) : string;
    ZPString *reason = ZPString::stringWithFormat("Conversion to cString failed for string \"%@%s\""_zp, shown,
                                                  length > 23 ? "..." : "");
    ZPDictionary *info = ZPDictionary::dictionaryWithObject_forKey(string, "_ZPString"_zp);
    ZPException::exceptionWithName_reason_userInfo(ZPCharacterConversionException, reason, info)->raise();
}

// ---- display ----

bool isDisplayable(unichar u, unsigned char *byte, bool kestrel) {
    *byte = static_cast<unsigned char>(u);
    if (u < 0x80) return (u >= 0x20 && u <= 0x7E) || u == 0x09 || u == 0x0A || u == 0x0D;
    return kestrel && ZPPrecompUnicodeToKESTREL(u, byte);
}

struct CStringMethods : ZPString {
    bool convert(void *buffer, unsigned maxLength, unsigned *filled, BOOL lossy, ZPRange range, ZPRange *remaining) {
        return self()->getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
            buffer, maxLength, filled, _ZPDefaultCStringEncoding(), lossy, range, remaining);
    }
    void getCString_maxLength_range_remainingRange(char *buffer, unsigned maxLength, ZPRange range,
                                                   ZPRange *remaining) {
        unsigned filled = 0;
        if (!convert(buffer, maxLength, &filled, NO, range, remaining)) raiseConversionFailure(this);
        buffer[filled] = '\0';
    }
    void getCString_maxLength(char *buffer, unsigned maxLength) {
        self()->getCString_maxLength_range_remainingRange(buffer, maxLength, {0, self()->length()}, nullptr);
    }
    void getCString(char *buffer) {
        self()->getCString_maxLength_range_remainingRange(buffer, everything, {0, self()->length()}, nullptr);
    }

    // Counts the bytes of the whole; false when a character has none.
    bool measure(unsigned *bytes, BOOL lossy) {
        ZPRange whole{0, self()->length()}, rest{};
        if (!convert(nullptr, everything, bytes, lossy, whole, &rest)) return false;
        if (rest.length) _ZPRaiseTooLong(whole.length);
        return true;
    }
    const char *converted(BOOL lossy) {
        unsigned bytes = 0;
        if (!measure(&bytes, lossy)) raiseConversionFailure(this);
        char *text = _ZPAutoreleasedScratch(bytes + 1);
        convert(text, bytes, &bytes, lossy, {0, self()->length()}, nullptr);
        text[bytes] = '\0';
        return text;
    }
    const char *cString() { return converted(NO); }
    const char *lossyCString() { return self()->length() == 0 ? "" : converted(YES); }
    unsigned cStringLength() {
        unsigned bytes = 0;
        return measure(&bytes, NO) ? bytes : 0;
    }

    ZPString *displayableString() {
        bool kestrel = _ZPDefaultCStringEncoding() == ZPKESTRELStringEncoding;
        return _ZPWithUnits(this, [&](auto &&units, unsigned length) -> ZPString * {
            unsigned char byte;
            unsigned plain = 0;
            while (plain < length && isDisplayable(units[plain], &byte, kestrel)) ++plain;
            if (plain == length) return this;
            ZPZoneBlock<char> block(std::size_t(length) * 6);
            char *out = block.get();
            for (unsigned i = 0; i < length; ++i) {
                unichar u = units[i];
                if (isDisplayable(u, &byte, kestrel)) *out++ = char(byte);
                else out = u < 0x80 ? _ZPPutByteEscape(out, static_cast<unsigned char>(u)) : _ZPPutUnitEscape(out, u);
            }
            std::size_t written = out - block.get();
            if (written > 0xFFFFFFFF) _ZPRaiseOutOfMemory("a string");
            return _ZPPlaceholderStringFromZone(nullptr)
                ->initWithCStringNoCopy_length_freeWhenDone(block.takeShrunk(written), unsigned(written), YES)
                ->autorelease();
        });
    }
};

}  // namespace

ZP_IMPLEMENT_WITH(_ZPAutoreleasedMallocMemory, ScratchMethods, dealloc, classMethods(mallocMemoryWithCapacity));

ZP_CATEGORY(ZPString, CStringMethods, getCString_maxLength_range_remainingRange, getCString_maxLength, getCString,
            cString, lossyCString, cStringLength, displayableString);

char *_ZPAutoreleasedScratch(unsigned bytes) {
    return static_cast<char *>(ScratchMethods::mallocMemoryWithCapacity(nullptr, bytes));
}
