// SPDX-License-Identifier: MIT
// Whole texts from bytes to units, and the converters of single characters in both directions.
#include <Bedrock/strings/encodings/Encodings.h>

#include <Bedrock/platform/ASCII.h>
#include <Bedrock/core/Memory.h>
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/strings/ZPString.h>

#include <algorithm>
#include <cstring>

ZPStringEncoding _ZPCStringEncoding = ZPKESTRELStringEncoding;
unichar (*_ZPCStringCharToUnichar)(unsigned char) = ZPKESTRELToPrecompUnicode;

BOOL _ZPEncodingIsKnown(ZPStringEncoding e) {
    return e <= ZPWindowsCP1250StringEncoding || e == ZPISO2022JPStringEncoding;
}

namespace {

// A zone block that is freed unless it is taken.
struct Block : _ZPBlock<unsigned char> {
    explicit Block(ZPZone *zone) : _ZPBlock(nullptr, zone) {}
    void resize(std::size_t bytes) {
        if (!tryResize(bytes)) _ZPRaiseMalloc("_ZPConvertToASCIIorUnicode: out of memory for %lu bytes", bytes);
    }
    unichar *units() { return reinterpret_cast<unichar *>(get()); }
};

int upperHexDigit(unsigned char c) { return c >= 'a' ? -1 : _ZPHexValue(c); }

long long decodeNonLossyASCII(const unsigned char *in, const unsigned char *end, unichar *out) {
    unichar *start = out;
    while (in < end) {
        if (*in != '\\') {
            *out++ = *in++;
            continue;
        }
        if (++in == end) return -1;
        if (*in == '\\') {
            *out++ = *in++;
            continue;
        }
        unsigned digits = 3, shift = 3, value = 0;
        if (*in == 'U') digits = 4, shift = 4, ++in;
        if (unsigned(end - in) < digits) return -1;
        for (; digits; --digits) {
            int d = upperHexDigit(*in++);
            if (d < 0 || d >= 1 << shift) return -1;
            value = value << shift | unsigned(d);
        }
        *out++ = static_cast<unichar>(value);
    }
    return out - start;
}

unsigned decodeUnicode(const unsigned char *in, unsigned length, unichar *out) {
    bool little = false;
    if (length >= 2 && ((in[0] == 0xFF && in[1] == 0xFE) || (in[0] == 0xFE && in[1] == 0xFF))) {
        little = in[0] == 0xFF;
        in += 2;
        length -= 2;
    }
    unsigned count = length / 2;
    if (little == (__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__)) std::memcpy(out, in, std::size_t(count) * 2);
    else
        for (unsigned i = 0; i < count; ++i)
            out[i] = static_cast<unichar>(little ? in[2 * i] | in[2 * i + 1] << 8 : in[2 * i] << 8 | in[2 * i + 1]);
    return count;
}

}  // namespace

BOOL _ZPConvertToASCIIorUnicode(const void *bytes, unsigned length, ZPStringEncoding encoding, void **buffer,
                                unsigned *count, BOOL *isASCII, ZPZone *zone) {
    if (encoding == 0) encoding = ZPUnicodeStringEncoding;
    if (length && !_ZPEncodingIsKnown(encoding)) return NO;
    auto *in = static_cast<const unsigned char *>(bytes);
    bool japanese = encoding == ZPJapaneseEUCStringEncoding || encoding == ZPShiftJISStringEncoding;
    Block block(zone);
    if (_ZPEncodingHasASCIIHalf(encoding) || japanese || length == 0) {
        // Most texts that begin with a page of ASCII are ASCII.
        unsigned run = length ? _ZPLengthOfASCII(in, std::min(length, 4096u)) : 0;
        if (run == length || run == 4096) {
            if (length) block.resize(length);
            if (_ZPCopyASCII(in, length, block.get()) == length) {
                *buffer = block.take();
                *count = length;
                *isASCII = YES;
                return YES;
            }
        }
    }
    long long units;
    // UTF-8 is counted first: damaged text may take more than the count.
    bool utf8 = encoding == ZPUTF8StringEncoding;
    std::size_t room = std::size_t(length) * (encoding == ZPISO2022JPStringEncoding ? 4
                                              : encoding == ZPUnicodeStringEncoding ? 1
                                                                                    : 2);
    if (utf8) room = std::size_t(_ZPUnitsOfUTF8(in, length)) * 2;
    block.resize(room ? room : 1);
    switch (encoding) {
    case ZPUTF8StringEncoding:
        units = _ZPDecodeUTF8(in, length, block.units(), unsigned(room / 2));
        if (units == -2) {
            block.resize(room = std::size_t(length) * 2);
            units = _ZPDecodeUTF8(in, length, block.units(), length);
        }
        break;
    case ZPJapaneseEUCStringEncoding: units = _ZPDecodeEUC(in, length, block.units()); break;
    case ZPShiftJISStringEncoding: units = _ZPDecodeShiftJIS(in, length, block.units()); break;
    case ZPISO2022JPStringEncoding: units = _ZPDecodeISO2022JP(in, length, block.units()); break;
    case ZPUnicodeStringEncoding: units = decodeUnicode(in, length, block.units()); break;
    case ZPNonLossyASCIIStringEncoding: units = decodeNonLossyASCII(in, in + length, block.units()); break;
    default: _ZPDecodeBytes(*_ZPTableOfEncoding(encoding), in, length, block.units()); units = length;
    }
    if (units < 0 || units > 0xFFFFFFFFll) return NO;
    std::size_t used = std::size_t(units) * 2;
    if (used && used < room) block.resize(used);
    *buffer = used ? block.take() : nullptr;
    *count = unsigned(units);
    *isASCII = units == 0;
    return YES;
}

// ---- single characters, bytes to units ----------------------------------------------------------

unichar ZPKESTRELToPrecompUnicode(unsigned char byte) { return _ZPTableKESTREL.unitOf(byte); }
unichar ZPASCIIToPrecompUnicode(unsigned char byte) { return byte; }
unichar ZPISOLatin1ToPrecompUnicode(unsigned char byte) { return byte; }
unichar ZPISOLatin2ToPrecompUnicode(unsigned char byte) { return _ZPTableISOLatin2.unitOf(byte); }
unichar ZPSymbolToPrecompUnicode(unsigned char byte) { return _ZPTableSymbol.unitOf(byte); }
unichar ZPZapfDingbatToPrecompUnicode(unsigned char byte) { return _ZPTableDingbats.unitOf(byte); }
unichar ZPAdobeStandardToPrecompUnicode(unsigned char byte) { return _ZPTableAdobeStandard.unitOf(byte); }
unichar ZPWinCodePage1250ToUnicode(unsigned char byte) { return _ZPTableWindows1250.unitOf(byte); }
unichar ZPAdobeStandardCyrillicToUnicode(unsigned char byte) { return _ZPTableWindows1251.unitOf(byte); }
unichar ZPWinLatin1ToUnicode(unsigned char byte) { return _ZPTableWindows1252.unitOf(byte); }
unichar ZPWinCodePage1253ToUnicode(unsigned char byte) { return _ZPTableWindows1253.unitOf(byte); }
unichar ZPWinCodePage1254ToUnicode(unsigned char byte) { return _ZPTableWindows1254.unitOf(byte); }

unsigned ZPUTF8ToUnicode(const unsigned char **bytes, unsigned left, unichar *units) {
    static constexpr std::uint32_t offsets[] = {0, 0x3080, 0xE2080, 0x3C82080, 0xFA082080, 0x82082080};
    if (left == 0) return 0;
    const unsigned char *in = *bytes;
    unsigned more = in[0] < 0xC0 ? 0 : in[0] < 0xE0 ? 1 : in[0] < 0xF0 ? 2 : in[0] < 0xF8 ? 3 : in[0] < 0xFC ? 4 : 5;
    if (more >= left) return 0;
    std::uint32_t c = 0;
    for (unsigned i = 0; i <= more; ++i) c = (c << 6) + in[i];
    c -= offsets[more];
    *bytes = in + more + 1;
    if (c < 0x10000) {
        units[0] = static_cast<unichar>(c);
        return 1;
    }
    if (c > 0x10FFFF) {
        units[0] = _ZPNoCharacter;
        return 1;
    }
    units[0] = static_cast<unichar>(0xD7C0 + (c >> 10));
    units[1] = static_cast<unichar>(0xDC00 + (c & 0x3FF));
    return 2;
}

// ---- single characters, units to bytes ----------------------------------------------------------

BOOL ZPPrecompUnicodeToKESTREL(unichar unit, unsigned char *byte) {
    if (unit >= 0x80 && (unit < 0xA0 || unit > 0xFFFD)) return NO;
    int b = _ZPTableKESTREL.byteOf(unit);
    if (b < 0) return NO;
    *byte = static_cast<unsigned char>(b);
    return YES;
}

// The reader is exhausted when its buffer is empty; U+FFFF may also be a unit of the string.
static void advance(ZPCharacterReader *reader) {
    if (reader->index >= reader->count) {
        reader->start += reader->count;
        reader->index = 0;
        reader->count = reader->end - reader->start < 32 ? reader->end - reader->start : 32;
        if (reader->count == 0) {
            reader->current = 0xFFFF;
            return;
        }
        reader->string->getCharacters_range(reader->buffer, {reader->start, reader->count});
    }
    reader->current = reader->buffer[reader->index++];
}

void _ZPStartCharacterReader(ZPCharacterReader *reader, ZPString *string, ZPRange range) {
    reader->string = string;
    reader->start = range.location;
    reader->end = range.location + range.length;
    reader->count = reader->index = 0;
    advance(reader);
}

static unsigned convertOne(ZPCharacterReader *reader, unsigned char *bytes, const _ZPByteTable &table) {
    if (reader->count == 0) return 0;
    int b = table.byteOf(reader->current);
    if (b < 0) return 0;
    *bytes = static_cast<unsigned char>(b);
    advance(reader);
    return 1;
}

unsigned ZPUnicodeToASCII(ZPCharacterReader *r, unsigned char *bytes) { return convertOne(r, bytes, _ZPTableASCII); }
unsigned ZPUnicodeToKESTREL(ZPCharacterReader *r, unsigned char *bytes) {
    return convertOne(r, bytes, _ZPTableKESTREL);
}
unsigned ZPUnicodeToISOLatin1(ZPCharacterReader *r, unsigned char *bytes) {
    return convertOne(r, bytes, _ZPTableISOLatin1);
}
unsigned ZPUnicodeToISOLatin2(ZPCharacterReader *r, unsigned char *bytes) {
    return convertOne(r, bytes, _ZPTableISOLatin2);
}
unsigned ZPUnicodeToAdobeStandard(ZPCharacterReader *r, unsigned char *bytes) {
    return convertOne(r, bytes, _ZPTableAdobeStandard);
}
unsigned ZPUnicodeToSymbol(ZPCharacterReader *r, unsigned char *bytes) { return convertOne(r, bytes, _ZPTableSymbol); }
unsigned ZPUnicodeToDingbat(ZPCharacterReader *r, unsigned char *bytes) {
    return convertOne(r, bytes, _ZPTableDingbats);
}
unsigned ZPUnicodeToWinCodePage1250(ZPCharacterReader *r, unsigned char *bytes) {
    return convertOne(r, bytes, _ZPTableWindows1250);
}
unsigned ZPUnicodeToAdobeStandardCyrillic(ZPCharacterReader *r, unsigned char *bytes) {
    return convertOne(r, bytes, _ZPTableWindows1251);
}
unsigned ZPUnicodeToWinLatin1(ZPCharacterReader *r, unsigned char *bytes) {
    return convertOne(r, bytes, _ZPTableWindows1252);
}
unsigned ZPUnicodeToWinCodePage1253(ZPCharacterReader *r, unsigned char *bytes) {
    return convertOne(r, bytes, _ZPTableWindows1253);
}
unsigned ZPUnicodeToWinCodePage1254(ZPCharacterReader *r, unsigned char *bytes) {
    return convertOne(r, bytes, _ZPTableWindows1254);
}

template <auto encode> static unsigned convertJapanese(ZPCharacterReader *reader, unsigned char *bytes) {
    const _ZPEUCEncoder *encoder = reader->count ? _ZPSharedEUCEncoder() : nullptr;
    unsigned n = encoder ? encode(*encoder, reader->current, bytes) : 0;
    if (n) advance(reader);
    return n;
}

unsigned ZPUnicodeToCorvidEUC(ZPCharacterReader *r, unsigned char *bytes) {
    return convertJapanese<_ZPEncodeEUC>(r, bytes);
}
unsigned ZPUnicodeToShiftJIS(ZPCharacterReader *r, unsigned char *bytes) {
    return convertJapanese<_ZPEncodeShiftJIS>(r, bytes);
}

unsigned ZPUnicodeToLossyASCII(ZPCharacterReader *reader, unsigned char *bytes) {
    if (reader->count == 0) return 0;
    if (unsigned n = ZPUnicodeToASCII(reader, bytes)) return n;
    const char *text = _ZPLossyASCII(reader->current);
    unsigned n = unsigned(std::strlen(text));
    std::memcpy(bytes, text, n);
    advance(reader);
    return n;
}

unsigned ZPUnicodeToUTF8(ZPCharacterReader *reader, unsigned char *bytes) {
    if (reader->count == 0) return 0;
    unichar units[2] = {reader->current, 0};
    advance(reader);
    bool pair = (units[0] & 0xFC00) == 0xD800 && reader->count && (reader->current & 0xFC00) == 0xDC00;
    if (pair) {
        units[1] = reader->current;
        advance(reader);
    }
    unsigned taken;
    return _ZPEncodeUTF8(units, pair ? 2 : 1, bytes, &taken);
}

// ---- one character, by encoding -----------------------------------------------------------------

unsigned _ZPDecodeCharacter(ZPStringEncoding encoding, const unsigned char **bytes, unsigned left, unichar *units) {
    if (encoding == ZPUTF8StringEncoding) return ZPUTF8ToUnicode(bytes, left, units);
    if (encoding == ZPJapaneseEUCStringEncoding) return ZPCorvidEUCToUnicode(bytes, left, units);
    if (encoding == ZPShiftJISStringEncoding) return ZPShiftJISToUnicode(bytes, left, units);
    const _ZPByteTable *table = _ZPTableOfEncoding(encoding);
    if (!table || left == 0) return 0;
    units[0] = table->unitOf(*(*bytes)++);
    return 1;
}

unsigned _ZPEncodeCharacter(ZPStringEncoding encoding, const unichar *units, unsigned left, unsigned char *bytes,
                            unsigned *taken) {
    *taken = 1;
    if (encoding == ZPUTF8StringEncoding) return _ZPEncodeUTF8(units, left, bytes, taken);
    if (encoding == ZPJapaneseEUCStringEncoding || encoding == ZPShiftJISStringEncoding) {
        const _ZPEUCEncoder *encoder = _ZPSharedEUCEncoder();
        if (!encoder) return 0;
        return encoding == ZPShiftJISStringEncoding ? _ZPEncodeShiftJIS(*encoder, *units, bytes)
                                                    : _ZPEncodeEUC(*encoder, *units, bytes);
    }
    const _ZPByteTable *table = _ZPTableOfEncoding(encoding);
    int byte = table ? table->byteOf(*units) : -1;
    if (byte < 0) return 0;
    *bytes = static_cast<unsigned char>(byte);
    return 1;
}
