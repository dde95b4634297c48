// SPDX-License-Identifier: MIT
// What the host says about text: the encoding of C strings, and bytes of the host that need not be text.
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/strings/cluster/Cluster.h>
#include <Bedrock/strings/encodings/Encodings.h>

#include <Bedrock/platform/host/Host.h>

#include <atomic>

unsigned _ZPEncodingNumberInResource(const char *name) {
    ZPHostResource file(name);
    unsigned number = 0, at = 0;
    _ZPReadDigits(file.bytes, at, unsigned(file.length), 2, number);
    // An encoding that cannot be converted would leave the process without C strings or file names at all.
    return _ZPEncodingIsKnown(number) ? number : 0;
}

static ZPStringEncoding encodingOfCodePage(unsigned page) {
    switch (page) {
    case 1251: return ZPWindowsCP1251StringEncoding;
    case 932: return ZPShiftJISStringEncoding;
    case 1250: return ZPWindowsCP1250StringEncoding;
    case 1253: return ZPWindowsCP1253StringEncoding;
    case 1254: return ZPWindowsCP1254StringEncoding;
    case 28591: return ZPISOLatin1StringEncoding;
    case 28592: return ZPISOLatin2StringEncoding;
    case 51932: return ZPJapaneseEUCStringEncoding;
    case 65001: return ZPUTF8StringEncoding;
    default: return ZPWindowsCP1252StringEncoding;
    }
}

ZPStringEncoding _ZPDefaultCStringEncoding() {
    static std::atomic<ZPStringEncoding> encoding{0};
    ZPStringEncoding e = encoding.load(std::memory_order_relaxed);
    if (e) [[likely]]
        return e;
    e = _ZPEncodingNumberInResource("CStringEncoding");
    if (!e) e = encodingOfCodePage(ZPHostCodePage());
    encoding.store(e, std::memory_order_relaxed);
    return e;
}

// ---- bytes of the host --------------------------------------------------------------------------

namespace {

constexpr unsigned escapes = 0xDC00;

// The well-formed UTF-8 character at `in`: its bytes, or 0.
unsigned lengthOfUTF8(const unsigned char *in, unsigned left) {
    unsigned b = in[0], more = b < 0x80 ? 0 : b < 0xC2 ? 4 : b < 0xE0 ? 1 : b < 0xF0 ? 2 : b < 0xF5 ? 3 : 4;
    if (more == 4 || more >= left) return 0;
    for (unsigned i = 1; i <= more; ++i)
        if ((in[i] & 0xC0) != 0x80) return 0;
    bool overlong = (b == 0xE0 && in[1] < 0xA0) || (b == 0xF0 && in[1] < 0x90);
    bool surrogate = b == 0xED && in[1] >= 0xA0, beyond = b == 0xF4 && in[1] >= 0x90;
    return overlong || surrogate || beyond ? 0 : more + 1;
}

ZPStringEncoding encodingForHost(ZPStringEncoding e) {
    bool fits = e == ZPJapaneseEUCStringEncoding || e == ZPShiftJISStringEncoding || _ZPEncodingHasASCIIHalf(e);
    return fits ? e : ZPUTF8StringEncoding;
}

// The bytes of the character at `in` that comes back as it is, with its units; 0 when there is none.
unsigned decodeExactly(ZPStringEncoding encoding, const unsigned char *in, unsigned left, unichar *units,
                       unsigned *count) {
    const unsigned char *at = in;
    unsigned char back[4];
    unsigned taken, n;
    if (encoding == ZPUTF8StringEncoding) {
        n = lengthOfUTF8(in, left);
        *count = n ? ZPUTF8ToUnicode(&at, n, units) : 0;
        return n;
    }
    // ASCII is itself whatever a table says, and nothing else is ASCII.
    if (*in < 0x80) return units[0] = *in, *count = 1;
    *count = _ZPDecodeCharacter(encoding, &at, left, units);
    if (*count != 1 || units[0] < 0x80 || (units[0] & 0xFF80) == (escapes | 0x80)) return 0;
    n = _ZPEncodeCharacter(encoding, units, 1, back, &taken);
    return n == unsigned(at - in) && std::memcmp(in, back, n) == 0 ? n : 0;
}

}  // namespace

ZPString *_ZPStringFromHostBytes(const void *bytes, unsigned length, ZPStringEncoding encoding) {
    encoding = encodingForHost(encoding);
    if (_ZPLengthOfASCII(bytes, length) == length)
        return ZPString::alloc()->initWithBytes_length_encoding(bytes, length, ZPASCIIStringEncoding)->autorelease();
    ZPZoneBlock<unichar> units(length);
    auto *in = static_cast<const unsigned char *>(bytes), *end = in + length;
    unsigned written = 0;
    while (in < end) {
        unsigned count, n = decodeExactly(encoding, in, unsigned(end - in), units.get() + written, &count);
        if (!n) units.get()[written] = static_cast<unichar>(escapes + *in), n = count = 1;
        in += n;
        written += count;
    }
    return _ZPNewStringAdoptingUnits(units.takeShrunk(written), written, YES, nullptr)->autorelease();
}

int _ZPHostBytesFromString(ZPString *string, void *buffer, unsigned size, ZPStringEncoding encoding) {
    encoding = encodingForHost(encoding);
    unsigned length = string->length(), written = 0;
    ZPStackBuffer<unichar, 300> units(length);
    string->getCharacters_range(units.memory, {0, length});
    for (unsigned i = 0, taken; i < length; i += taken) {
        unichar u = units.memory[i];
        unsigned char bytes[4];
        unsigned n;
        bool low = i + 1 < length && (units.memory[i + 1] & 0xFC00) == 0xDC00, pair = (u & 0xFC00) == 0xD800 && low;
        if (u < 0x80 || (u & 0xFF80) == (escapes | 0x80)) bytes[0] = static_cast<unsigned char>(u), n = taken = 1;
        else if ((u & 0xF800) == 0xD800 && !(pair && encoding == ZPUTF8StringEncoding)) return -1;
        else n = _ZPEncodeCharacter(encoding, units.memory + i, length - i, bytes, &taken);
        if (n == 0 || n > 0x7FFFFFFF - written) return -1;
        if (buffer) {
            if (n > size - written) return -1;
            std::memcpy(static_cast<unsigned char *>(buffer) + written, bytes, n);
        }
        written += n;
    }
    return int(written);
}
