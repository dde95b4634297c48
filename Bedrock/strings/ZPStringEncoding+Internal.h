// The tables of the single-byte encodings.
#pragma once

#include <Bedrock/strings/ZPStringEncoding.h>

constexpr unichar _ZPNoCharacter = 0xFFFD;

struct _ZPEncodingPair {
    unichar unit;
    unsigned char byte;
};

/// A single-byte encoding with an ASCII lower half: bytes below `first` are their own units, `units` holds the
/// rest up to 0xFF or `first + count`, behind which bytes are their own units again.
struct _ZPByteTable {
    unsigned first, count;
    const unichar *units;
    const _ZPEncodingPair *pairs;  ///< sorted by unit
    unsigned pairCount;

    unichar unitOf(unsigned char byte) const { return byte - first < count ? units[byte - first] : byte; }
    /// -1 when the encoding lacks the unit.
    int byteOf(unichar unit) const;
};

extern const _ZPByteTable _ZPTableKESTREL, _ZPTableISOLatin2, _ZPTableWindows1250, _ZPTableWindows1251, _ZPTableWindows1252,
    _ZPTableWindows1253, _ZPTableWindows1254;

/// The table of an encoding, or null.
const _ZPByteTable *_ZPTableOfEncoding(ZPStringEncoding encoding);
/// Up to four ASCII bytes that stand for a KESTREL byte from 0x80 on; empty where nothing does.
const char *_ZPApproximationOfKESTREL(unsigned char byte);
/// YES when the library converts to and from the encoding.
BOOL _ZPEncodingIsKnown(ZPStringEncoding encoding);
/// YES for the encodings in which a byte below 0x80 is always the ASCII character.
inline bool _ZPEncodingHasASCIIHalf(ZPStringEncoding e) { return e < 16 && (0xFA36u >> e & 1); }
/// The byte of a unit from 0x80 on in such an encoding (UTF-8 excepted), or -1.
int _ZPByteOfUnit(ZPStringEncoding encoding, unichar unit);
/// The bytes before the first one from 0x80 on.
unsigned _ZPLengthOfASCII(const void *bytes, unsigned length);
/// Widens bytes below 0x80, or bytes that are their own units.
void _ZPWidenBytes(const void *bytes, unsigned length, unichar *units);
/// The same backwards within one buffer that has room for the units.
void _ZPWidenBytesInPlace(void *buffer, unsigned length);
/// UTF-8 of one character: takes one or two of `left` units, writes up to four bytes.
inline unsigned _ZPEncodeUTF8(const unichar *units, unsigned left, unsigned char *out, unsigned *taken) {
    unsigned c = units[0];
    *taken = 1;
    if (c < 0x80) {
        out[0] = static_cast<unsigned char>(c);
        return 1;
    }
    if (c < 0x800) {
        out[0] = static_cast<unsigned char>(0xC0 | c >> 6);
        out[1] = static_cast<unsigned char>(0x80 | (c & 0x3F));
        return 2;
    }
    if ((c & 0xFC00) == 0xD800 && left > 1 && (units[1] & 0xFC00) == 0xDC00) {
        c = 0x10000 + ((c - 0xD800) << 10) + (units[1] - 0xDC00u);
        *taken = 2;
        out[0] = static_cast<unsigned char>(0xF0 | c >> 18);
        out[1] = static_cast<unsigned char>(0x80 | (c >> 12 & 0x3F));
        out[2] = static_cast<unsigned char>(0x80 | (c >> 6 & 0x3F));
        out[3] = static_cast<unsigned char>(0x80 | (c & 0x3F));
        return 4;
    }
    out[0] = static_cast<unsigned char>(0xE0 | c >> 12);
    out[1] = static_cast<unsigned char>(0x80 | (c >> 6 & 0x3F));
    out[2] = static_cast<unsigned char>(0x80 | (c & 0x3F));
    return 3;
}
