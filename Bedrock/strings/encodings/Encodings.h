// SPDX-License-Identifier: MIT
// The room of the encodings: their tables, their names, and the conversions between bytes and units, of single
// characters and of runs. Other rooms use what stands here and in ZPStringEncoding.h. Read this first, then
// Encodings.cpp; Japanese.cpp has the encodings of several bytes, Host.cpp what the host's texts are in.
#pragma once

#include <Bedrock/strings/ZPStringEncoding.h>

constexpr unichar _ZPNoCharacter = 0xFFFD;

/// A single-byte encoding: the unit of every byte, and the byte of every unit by way of pages of 256 units. Page 0 is
/// empty; byte 0 in a page means none, except for unit 0.
struct _ZPByteTable {
    const unichar *units;
    const unsigned char *pageOf;
    const unsigned char (*pages)[256];
    bool asciiHalf;  ///< bytes below 0x80 are ASCII

    unichar unitOf(unsigned char byte) const { return units[byte]; }
    /// -1 when the encoding lacks the unit.
    int byteOf(unichar unit) const {
        int byte = pages[pageOf[unit >> 8]][unit & 0xFF];
        return byte || (unit == 0 && units[0] == 0) ? byte : -1;
    }
};

extern const _ZPByteTable _ZPTableASCII, _ZPTableISOLatin1, _ZPTableKESTREL, _ZPTableISOLatin2, _ZPTableWindows1250,
    _ZPTableWindows1251, _ZPTableWindows1252, _ZPTableWindows1253, _ZPTableWindows1254, _ZPTableSymbol,
    _ZPTableDingbats, _ZPTableAdobeStandard;

/// The table of a single-byte encoding, or null.
const _ZPByteTable *_ZPTableOfEncoding(ZPStringEncoding encoding);
/// Up to four ASCII bytes that stand for a KESTREL byte from 0x80 on; empty where nothing does.
const char *_ZPApproximationOfKESTREL(unsigned char byte);
/// What stands for such a byte where there is room for one.
unsigned char _ZPShortApproximationOfKESTREL(unsigned char byte);
/// The ASCII form of a unit: itself, a line feed, an approximation of up to four characters, or "_".
inline const char *_ZPLossyASCII(unichar unit) {
    int byte = unit < 0x80 ? -1 : _ZPTableKESTREL.byteOf(unit);
    const char *text = byte >= 0x80 ? _ZPApproximationOfKESTREL(static_cast<unsigned char>(byte)) : "";
    return *text ? text : "_";
}
/// YES when the library converts to and from the encoding; 0 counts as Unicode.
BOOL _ZPEncodingIsKnown(ZPStringEncoding encoding);
/// YES for the encodings in which a byte below 0x80 is always the ASCII character and only it gives one.
inline bool _ZPEncodingHasASCIIHalf(ZPStringEncoding e) { return e < 16 && (0xFA36u >> e & 1); }
/// The encoding whose number a resource file holds in its first two bytes; 0 when there is none that is known.
unsigned _ZPEncodingNumberInResource(const char *name);

// ---- one character, for every encoding but Unicode, ISO 2022-JP and non-lossy ASCII ----

/// As ZPUTF8ToUnicode.
unsigned _ZPDecodeCharacter(ZPStringEncoding encoding, const unsigned char **bytes, unsigned left, unichar *units);
/// Takes one or two of `left` units and writes up to four bytes; answers their number, 0 when there is no such
/// character.
unsigned _ZPEncodeCharacter(ZPStringEncoding encoding, const unichar *units, unsigned left, unsigned char *bytes,
                            unsigned *taken);

// ---- runs ----

/// The bytes before the first one from 0x80 on.
unsigned _ZPLengthOfASCII(const void *bytes, unsigned length);
/// The same, and copies them.
unsigned _ZPCopyASCII(const void *bytes, unsigned length, void *copy);
/// Widens bytes below 0x80, or bytes that are their own units.
void _ZPWidenBytes(const void *bytes, unsigned length, unichar *units);
/// Narrows units while they are below 0x80, and stores no more; answers how many.
unsigned _ZPNarrowASCII(const unichar *units, unsigned count, unsigned char *bytes);
/// The units of bytes in a single-byte encoding.
void _ZPDecodeBytes(const _ZPByteTable &table, const unsigned char *in, unsigned length, unichar *out);
/// The bytes of units, up to the first that the encoding lacks; answers how many. With a null `out` only counts.
unsigned _ZPEncodeBytes(const _ZPByteTable &table, const unichar *in, unsigned count, unsigned char *out);
/// The units of well-formed UTF-8.
unsigned _ZPUnitsOfUTF8(const unsigned char *in, unsigned length);
/// Decodes UTF-8; answers the units, of which there are at most as many as bytes. -1 when the last character is cut
/// short, -2 when there is no room.
long long _ZPDecodeUTF8(const unsigned char *in, unsigned length, unichar *out, unsigned room);
/// Encodes most of the units that surely fit, the last one never, so that pairs are whole; answers the bytes and sets
/// `*taken`.
unsigned _ZPEncodeUTF8Run(const unichar *units, unsigned count, unsigned char *out, unsigned room, unsigned *taken);
/// The bytes of units in UTF-8, of which the last is no high surrogate that a low one may follow.
std::uint64_t _ZPLengthInUTF8(const unichar *units, unsigned count);

// ---- Japanese ----

/// The units of the pairs of EUC bytes, by the lower seven bits of both, 0 where there is none; and those of the pairs
/// of Shift JIS bytes below 0xF0, by what follows 0x81 and 0x40, or `_ZPNotDirect` for what takes a closer look.
constexpr unichar _ZPNotDirect = 0xFFFF;
struct _ZPEUCDecoder {
    unichar units[128 * 128];
    unichar shiftJIS[0xF0 - 0x81][0x100 - 0x40];
    unichar of(unsigned first, unsigned second) const { return units[(first & 0x7F) << 7 | (second & 0x7F)]; }
};
/// The pairs of bytes of units in both forms, the first byte in the high half, by pages as above; 0 where there is
/// none.
struct _ZPEUCEncoder {
    bool plainASCII;  ///< no unit below 0x80 has a pair
    unsigned char pageOf[256];
    struct Page {
        unichar euc[256], shiftJIS[256];
    } *pages = nullptr;
    ~_ZPEUCEncoder() { delete[] pages; }
    unsigned of(unichar unit) const { return pages[pageOf[unit >> 8]].euc[unit & 0xFF]; }
};
/// The tables, read at the first call; null, which is logged once, when the files cannot be read.
const _ZPEUCDecoder *_ZPSharedEUCDecoder();
const _ZPEUCEncoder *_ZPSharedEUCEncoder();
/// EUC bytes of a unit; 0 when there are none.
unsigned _ZPEncodeEUC(const _ZPEUCEncoder &encoder, unichar unit, unsigned char *bytes);
/// Shift JIS bytes of a unit; 0 when there are none.
unsigned _ZPEncodeShiftJIS(const _ZPEUCEncoder &encoder, unichar unit, unsigned char *bytes);
/// Encodes ASCII and pairs while two more bytes fit, in EUC or in Shift JIS; answers the bytes and sets `*taken`.
unsigned _ZPEncodePairs(const _ZPEUCEncoder &encoder, bool shiftJIS, const unichar *units, unsigned count,
                        unsigned char *out, unsigned room, unsigned *taken);
/// Whole texts, into at most as many units as there are bytes; answer the units, or -1.
long long _ZPDecodeEUC(const unsigned char *in, unsigned length, unichar *out);
long long _ZPDecodeShiftJIS(const unsigned char *in, unsigned length, unichar *out);
/// Into at most two units a byte.
long long _ZPDecodeISO2022JP(const unsigned char *in, unsigned length, unichar *out);

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
