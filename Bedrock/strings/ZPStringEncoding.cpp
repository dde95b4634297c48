// The default C-string encoding, the converters from bytes to units, and those of single characters.
#include <Bedrock/strings/ZPStringEncoding+Internal.h>

#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/platform/ZPFile.h>
#include <Bedrock/platform/ZPHost.h>
#include <Bedrock/strings/ZPString.h>

#include <atomic>
#include <cstring>
#include <string>

ZPStringEncoding _ZPCStringEncoding = ZPKESTRELStringEncoding;
unichar (*_ZPCStringCharToUnichar)(unsigned char) = ZPKESTRELToPrecompUnicode;

BOOL _ZPEncodingIsKnown(ZPStringEncoding e) {
    return e == 0 || _ZPEncodingHasASCIIHalf(e) || e == ZPUnicodeStringEncoding || e == ZPNonLossyASCIIStringEncoding;
}

// ---- the default C-string encoding -------------------------------------------------------------

static ZPStringEncoding decideDefault() {
    char text[3] = {};
    std::string path = std::string(ZPRootDirectory()) + "/CorvidLibrary/Frameworks/Bedrock.framework/Resources/CStringEncoding";
    long long length = ZPHostReadFile(path.c_str(), text, 2);
    unsigned number = 0;
    for (long long i = 0; i < length && text[i] >= '0' && text[i] <= '9'; ++i) number = number * 10 + unsigned(text[i] - '0');
    if (number < 1) {
        switch (ZPHostCodePage()) {
        case 1251: number = ZPWindowsCP1251StringEncoding; break;
        case 932: number = ZPShiftJISStringEncoding; break;
        case 1250: number = ZPWindowsCP1250StringEncoding; break;
        case 1253: number = ZPWindowsCP1253StringEncoding; break;
        case 1254: number = ZPWindowsCP1254StringEncoding; break;
        case 65001: number = ZPUTF8StringEncoding; break;
        default: number = ZPWindowsCP1252StringEncoding;
        }
    }
    // An encoding that cannot be converted would leave the process without C strings at all.
    return _ZPEncodingIsKnown(number) ? number : ZPWindowsCP1252StringEncoding;
}

ZPStringEncoding _ZPDefaultCStringEncoding() {
    static std::atomic<ZPStringEncoding> encoding{0};
    ZPStringEncoding e = encoding.load(std::memory_order_relaxed);
    if (!e) [[unlikely]] encoding.store(e = decideDefault(), std::memory_order_relaxed);
    return e;
}

// ---- runs of bytes ------------------------------------------------------------------------------

unsigned _ZPLengthOfASCII(const void *bytes, unsigned length) {
    auto *p = static_cast<const unsigned char *>(bytes);
    unsigned i = 0;
    for (; i + 32 <= length; i += 32) {
        std::uint64_t w[4];
        std::memcpy(w, p + i, 32);
        if ((w[0] | w[1] | w[2] | w[3]) & 0x8080808080808080u) break;
    }
    for (; i + 8 <= length; i += 8) {
        std::uint64_t w;
        std::memcpy(&w, p + i, 8);
        if (w & 0x8080808080808080u) break;
    }
    while (i < length && p[i] < 0x80) ++i;
    return i;
}

void _ZPWidenBytes(const void *bytes, unsigned length, unichar *units) {
    auto *p = static_cast<const unsigned char *>(bytes);
    for (unsigned i = 0; i < length; ++i) units[i] = p[i];
}

void _ZPWidenBytesInPlace(void *buffer, unsigned length) {
    auto *bytes = static_cast<unsigned char *>(buffer);
    for (unsigned i = length; i-- > 0;) {
        unichar unit = bytes[i];
        std::memcpy(bytes + 2 * std::size_t(i), &unit, 2);
    }
}

namespace {

// A zone block that is freed unless it is taken.
struct Block {
    ZPZone *zone;
    void *p = nullptr;
    ~Block() {
        if (p) ZPZoneFree(zone, p);
    }
    void resize(std::size_t bytes) {
        void *q = p ? ZPZoneRealloc(zone, p, bytes) : ZPZoneMalloc(zone, bytes);
        if (!q) ZPException::raise_format(ZPMallocException, "*** _ZPConvertToASCIIorUnicode: out of memory for %lu bytes"_zp, bytes);
        p = q;
    }
    unichar *units() { return static_cast<unichar *>(p); }
    unsigned char *bytes() { return static_cast<unsigned char *>(p); }
    void *take() {
        void *q = p;
        p = nullptr;
        return q;
    }
};

// Decodes from the first byte from 0x80 on; answers the units written, or -1.
long long decodeUTF8(const unsigned char *in, const unsigned char *end, unichar *out) {
    unichar *start = out;
    while (in < end) {
        unsigned char b = *in;
        if (b < 0x80) {
            std::uint64_t eight;
            while (end - in >= 8 && (std::memcpy(&eight, in, 8), (eight & 0x8080808080808080u) == 0)) {
                for (int i = 0; i < 8; ++i) out[i] = in[i];
                in += 8;
                out += 8;
            }
            while (in < end && *in < 0x80) *out++ = *in++;
        } else if (b >= 0xC0 && b < 0xE0 && end - in >= 2 && (in[1] & 0xC0) == 0x80) {
            *out++ = static_cast<unichar>((b << 6) + in[1] - 0x3080u);
            in += 2;
        } else if (b >= 0xE0 && b < 0xF0 && end - in >= 3 && (in[1] & in[2] & 0xC0) == 0x80 && !((in[1] | in[2]) & 0x40)) {
            *out++ = static_cast<unichar>((b << 12) + (in[1] << 6) + in[2] - 0xE2080u);
            in += 3;
        } else {
            unsigned n = ZPUTF8ToUnicode(&in, unsigned(end - in), out);
            if (n == 0) return -1;
            out += n;
        }
    }
    return out - start;
}

int upperHexDigit(unsigned char c) { return c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1; }

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

BOOL _ZPConvertToASCIIorUnicode(const void *bytes, unsigned length, ZPStringEncoding encoding, void **buffer, unsigned *count,
                                BOOL *isASCII, ZPZone *zone) {
    if (encoding == 0) encoding = ZPUnicodeStringEncoding;
    if (length && !_ZPEncodingIsKnown(encoding)) return NO;
    auto *in = static_cast<const unsigned char *>(bytes);
    Block block{zone};
    unsigned units = 0;
    bool ascii = true;
    if (length == 0) {
    } else if (_ZPEncodingHasASCIIHalf(encoding)) {
        unsigned run = _ZPLengthOfASCII(in, length);
        if (run == length) {
            block.resize(length);
            std::memcpy(block.p, in, length);
            units = length;
        } else {
            ascii = false;
            block.resize(std::size_t(length) * 2);
            _ZPWidenBytes(in, run, block.units());
            if (encoding == ZPUTF8StringEncoding) {
                long long n = decodeUTF8(in + run, in + length, block.units() + run);
                if (n < 0) return NO;
                units = run + unsigned(n);
            } else {
                const _ZPByteTable *table = _ZPTableOfEncoding(encoding);
                for (unsigned i = run; i < length; ++i) block.units()[i] = table ? table->unitOf(in[i]) : in[i];
                units = length;
            }
        }
    } else if (encoding == ZPUnicodeStringEncoding) {
        ascii = false;
        block.resize(length);
        units = decodeUnicode(in, length, block.units());
    } else {
        ascii = false;
        block.resize(std::size_t(length) * 2);
        long long n = decodeNonLossyASCII(in, in + length, block.units());
        if (n < 0) return NO;
        units = unsigned(n);
    }
    std::size_t used = std::size_t(units) * (ascii ? 1 : 2);
    if (units == 0) *buffer = nullptr;
    else {
        if (used < std::size_t(length)) block.resize(used);
        else if (!ascii && used < std::size_t(length) * 2 && encoding != ZPUnicodeStringEncoding) block.resize(used);
        *buffer = block.take();
    }
    *count = units;
    *isASCII = ascii || units == 0;
    return YES;
}

// ---- single characters, bytes to units ----------------------------------------------------------

unichar ZPKESTRELToPrecompUnicode(unsigned char byte) { return _ZPTableKESTREL.unitOf(byte); }
unichar ZPASCIIToPrecompUnicode(unsigned char byte) { return byte; }
unichar ZPISOLatin1ToPrecompUnicode(unsigned char byte) { return byte; }
unichar ZPISOLatin2ToPrecompUnicode(unsigned char byte) { return _ZPTableISOLatin2.unitOf(byte); }
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

int _ZPByteOfUnit(ZPStringEncoding encoding, unichar unit) {
    if (const _ZPByteTable *table = _ZPTableOfEncoding(encoding)) return table->byteOf(unit);
    if (unit == 0x2029) return 0x0A;
    unsigned limit = encoding == ZPISOLatin1StringEncoding ? 0x100 : 0x80;
    return unit < limit ? unit : -1;
}

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

static unsigned convertOne(ZPCharacterReader *reader, unsigned char *bytes, ZPStringEncoding encoding) {
    if (reader->count == 0) return 0;
    int b = _ZPByteOfUnit(encoding, reader->current);
    if (b < 0) return 0;
    *bytes = static_cast<unsigned char>(b);
    advance(reader);
    return 1;
}

unsigned ZPUnicodeToASCII(ZPCharacterReader *r, unsigned char *bytes) { return convertOne(r, bytes, ZPASCIIStringEncoding); }
unsigned ZPUnicodeToKESTREL(ZPCharacterReader *r, unsigned char *bytes) { return convertOne(r, bytes, ZPKESTRELStringEncoding); }
unsigned ZPUnicodeToISOLatin1(ZPCharacterReader *r, unsigned char *bytes) { return convertOne(r, bytes, ZPISOLatin1StringEncoding); }
unsigned ZPUnicodeToISOLatin2(ZPCharacterReader *r, unsigned char *bytes) { return convertOne(r, bytes, ZPISOLatin2StringEncoding); }
unsigned ZPUnicodeToWinCodePage1250(ZPCharacterReader *r, unsigned char *bytes) { return convertOne(r, bytes, ZPWindowsCP1250StringEncoding); }
unsigned ZPUnicodeToAdobeStandardCyrillic(ZPCharacterReader *r, unsigned char *bytes) { return convertOne(r, bytes, ZPWindowsCP1251StringEncoding); }
unsigned ZPUnicodeToWinLatin1(ZPCharacterReader *r, unsigned char *bytes) { return convertOne(r, bytes, ZPWindowsCP1252StringEncoding); }
unsigned ZPUnicodeToWinCodePage1253(ZPCharacterReader *r, unsigned char *bytes) { return convertOne(r, bytes, ZPWindowsCP1253StringEncoding); }
unsigned ZPUnicodeToWinCodePage1254(ZPCharacterReader *r, unsigned char *bytes) { return convertOne(r, bytes, ZPWindowsCP1254StringEncoding); }

unsigned ZPUnicodeToLossyASCII(ZPCharacterReader *reader, unsigned char *bytes) {
    if (reader->count == 0) return 0;
    if (unsigned n = ZPUnicodeToASCII(reader, bytes)) return n;
    unsigned char kestrel;
    const char *text = ZPPrecompUnicodeToKESTREL(reader->current, &kestrel) ? _ZPApproximationOfKESTREL(kestrel) : "";
    if (!*text) text = "_";
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
