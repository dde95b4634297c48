// SPDX-License-Identifier: MIT
// The string over a caller's buffer. `_flags`: bit 0 the contents are units, bit 1 they are freed with the
// object. Bytes are not mapped to units.
#include <Bedrock/strings/cluster/Mutable.h>

namespace {

constexpr unsigned isFat = 1, freesContents = 2;

struct CheapMutable : ZPCheapMutableString {
    unichar *units() { return static_cast<unichar *>(_contents); }
    const unsigned char *bytes() { return static_cast<const unsigned char *>(_contents); }
    bool fat() { return _flags & isFat; }

    void freeContents() {
        if (_flags & freesContents && _contents) ZPZoneFree(ZPZoneFromPointer(_contents), _contents);
    }
    void setContentsNoCopy_length_freeWhenDone_isUnicode(void *contents, unsigned length, BOOL freeWhenDone,
                                                         BOOL isUnicode) {
        if (contents != _contents) freeContents();
        _contents = contents;
        _numCharacters = length;
        _flags = (isUnicode ? isFat : 0) | (freeWhenDone ? freesContents : 0);
    }
    void dealloc() {
        freeContents();
        ZP_SUPER(ZPCheapMutableString, dealloc)();
    }
    unsigned length() { return _numCharacters; }
    unichar characterAtIndex(unsigned index) { return fat() ? units()[index] : bytes()[index]; }
    void getCharacters_range(unichar *buffer, ZPRange range) {
        for (unsigned i = 0; i < range.length; ++i)
            buffer[i] = fat() ? units()[range.location + i] : bytes()[range.location + i];
    }
    ZPStringEncoding fastestEncoding() { return fat() ? ZPUnicodeStringEncoding : _ZPDefaultCStringEncoding(); }
    BOOL getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
        void *buffer, unsigned maxLength, unsigned *filled, ZPStringEncoding encoding, BOOL lossy, ZPRange range,
        ZPRange *remaining) {
        if (fat() || encoding != _ZPDefaultCStringEncoding())
            return ZP_SUPER(ZPCheapMutableString,
                            getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange)(
                buffer, maxLength, filled, encoding, lossy, range, remaining);
        unsigned n = range.length < maxLength ? range.length : maxLength;
        if (buffer && n) std::memcpy(buffer, bytes() + range.location, n);
        if (filled) *filled = n;
        if (remaining) *remaining = {range.location + n, range.length - n};
        return YES;
    }
    const char *cString() {
        return fat() ? ZP_SUPER(ZPCheapMutableString, cString)() : reinterpret_cast<const char *>(bytes());
    }
    const char *lossyCString() {
        return fat() ? ZP_SUPER(ZPCheapMutableString, lossyCString)() : reinterpret_cast<const char *>(bytes());
    }
    unsigned cStringLength() { return fat() ? ZP_SUPER(ZPCheapMutableString, cStringLength)() : _numCharacters; }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPCheapMutableString, CheapMutable, setContentsNoCopy_length_freeWhenDone_isUnicode, dealloc, length,
                  characterAtIndex, getCharacters_range, fastestEncoding,
                  getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange, cString,
                  lossyCString, cStringLength);
