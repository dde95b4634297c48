// SPDX-License-Identifier: MIT
// Character encodings: their numbers, and the functions that carry text between bytes and units.
// Everything here is safe from any thread.
#pragma once

#include <Bedrock/core/ZPRange.h>
#include <Bedrock/platform/ZPZone.h>

ZP_FORWARD(ZPString);

/// Names a character encoding. 0 is read as ZPUnicodeStringEncoding wherever an encoding is accepted.
/// Archives and defaults store these numbers.
using ZPStringEncoding = unsigned;

inline constexpr ZPStringEncoding ZPASCIIStringEncoding = 1;  ///< bytes below 0x80
inline constexpr ZPStringEncoding ZPKESTRELStringEncoding = 2;  ///< that of 8-bit string objects
inline constexpr ZPStringEncoding ZPJapaneseEUCStringEncoding = 3;  ///< with the characters of KESTREL
inline constexpr ZPStringEncoding ZPUTF8StringEncoding = 4;  ///< of up to six bytes
inline constexpr ZPStringEncoding ZPISOLatin1StringEncoding = 5;  ///< ISO 8859-1
inline constexpr ZPStringEncoding ZPSymbolStringEncoding = 6;  ///< of the font Symbol
inline constexpr ZPStringEncoding ZPNonLossyASCIIStringEncoding = 7;  ///< ASCII with escapes for all other units
inline constexpr ZPStringEncoding ZPShiftJISStringEncoding = 8;  ///< Japanese, code page 932
inline constexpr ZPStringEncoding ZPISOLatin2StringEncoding = 9;  ///< ISO 8859-2
inline constexpr ZPStringEncoding ZPUnicodeStringEncoding =
    10;  ///< UTF-16, with a byte-order mark where bytes are made
inline constexpr ZPStringEncoding ZPWindowsCP1251StringEncoding = 11;  ///< Cyrillic
inline constexpr ZPStringEncoding ZPWindowsCP1252StringEncoding = 12;  ///< Western European
inline constexpr ZPStringEncoding ZPWindowsCP1253StringEncoding = 13;  ///< Greek
inline constexpr ZPStringEncoding ZPWindowsCP1254StringEncoding = 14;  ///< Turkish
inline constexpr ZPStringEncoding ZPWindowsCP1250StringEncoding = 15;  ///< Central European
inline constexpr ZPStringEncoding ZPISO2022JPStringEncoding = 21;  ///< Japanese in 7 bits

/// Reads the units of a part of a string 32 at a time, for the converters from units to bytes. A
/// converter looks at `current`, writes its bytes and steps on. Not owned: `string` must outlive it.
struct ZPCharacterReader {
    unsigned count;  ///< units in the buffer
    unsigned index;  ///< of the next unit in the buffer
    ZPString *string;  ///< whose units are read; borrowed
    unsigned end;  ///< where the part ends in the string
    unsigned start;  ///< where the buffered stretch starts in the string
    unichar buffer[32];  ///< the stretch that is read
    unichar current;  ///< 0xFFFF once the part is exhausted
};

extern "C" {
/// The encoding of 8-bit string objects: ZPKESTRELStringEncoding.
ZP_EXPORT extern ZPStringEncoding _ZPCStringEncoding;
/// Maps a byte of that encoding to its unit. A byte below 0x80 is its own unit.
ZP_EXPORT extern unichar (*_ZPCStringCharToUnichar)(unsigned char byte);

/// The encoding of C strings, decided at the first call and kept for the life of the process: the number in the
/// resource file "CStringEncoding", else that of the host's code page. Always one that the library converts.
ZP_EXPORT ZPStringEncoding _ZPDefaultCStringEncoding();

/// Converts `length` bytes into a new block of the zone, which the caller owns: `*count` bytes below 0x80
/// when `*isASCII`, else `*count` units. Answers NO, and stores nothing, when the bytes cannot be
/// converted; length 0 gives no block. Raises ZPMallocException when there is no memory.
ZP_EXPORT BOOL _ZPConvertToASCIIorUnicode(const void *bytes, unsigned length, ZPStringEncoding encoding, void **buffer,
                                          unsigned *count, BOOL *isASCII, ZPZone *zone);

/// Prepares a reader for a range of a string, which must lie within it, and reads the first unit.
ZP_EXPORT void _ZPStartCharacterReader(ZPCharacterReader *reader, ZPString *string, ZPRange range);

// Units to bytes. Each converts the reader's current unit, steps the reader on and answers the number of
// bytes written; 0, and the reader stays, when the encoding does not have the unit.
///@{
/// The converters of single-byte encodings; each writes one byte.
ZP_EXPORT unsigned ZPUnicodeToASCII(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToKESTREL(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToISOLatin1(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToAdobeStandard(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToSymbol(ZPCharacterReader *reader, unsigned char *bytes);
///@}
/// The encoding of the font Zapf Dingbats; writes one byte.
ZP_EXPORT unsigned ZPUnicodeToDingbat(ZPCharacterReader *reader, unsigned char *bytes);
///@{
/// Further converters of single-byte encodings; each writes one byte.
ZP_EXPORT unsigned ZPUnicodeToISOLatin2(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToWinCodePage1250(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToAdobeStandardCyrillic(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToWinLatin1(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToWinCodePage1253(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToWinCodePage1254(ZPCharacterReader *reader, unsigned char *bytes);
///@}
/// Writes an approximation of up to four bytes, or '_'; never answers 0 before the end.
ZP_EXPORT unsigned ZPUnicodeToLossyASCII(ZPCharacterReader *reader, unsigned char *bytes);
/// Writes up to four bytes; takes both units of a surrogate pair, and a lone surrogate as it is.
ZP_EXPORT unsigned ZPUnicodeToUTF8(ZPCharacterReader *reader, unsigned char *bytes);
/// Writes one or two bytes; answers 0 also when the table "UnicodeToEUC" cannot be read.
ZP_EXPORT unsigned ZPUnicodeToCorvidEUC(ZPCharacterReader *reader, unsigned char *bytes);
/// The same in Shift JIS, where '?' stands for what only the other form holds.
ZP_EXPORT unsigned ZPUnicodeToShiftJIS(ZPCharacterReader *reader, unsigned char *bytes);
/// The KESTREL byte of a unit; NO when there is none.
ZP_EXPORT BOOL ZPPrecompUnicodeToKESTREL(unichar unit, unsigned char *byte);

// Bytes to units; a byte without a character gives U+FFFD.
///@{
/// The unit of a byte in the encoding that the name says; U+FFFD for a byte without a character.
ZP_EXPORT unichar ZPKESTRELToPrecompUnicode(unsigned char byte);
ZP_EXPORT unichar ZPASCIIToPrecompUnicode(unsigned char byte);
ZP_EXPORT unichar ZPISOLatin1ToPrecompUnicode(unsigned char byte);
ZP_EXPORT unichar ZPISOLatin2ToPrecompUnicode(unsigned char byte);
ZP_EXPORT unichar ZPSymbolToPrecompUnicode(unsigned char byte);
ZP_EXPORT unichar ZPZapfDingbatToPrecompUnicode(unsigned char byte);
ZP_EXPORT unichar ZPAdobeStandardToPrecompUnicode(unsigned char byte);
ZP_EXPORT unichar ZPWinCodePage1250ToUnicode(unsigned char byte);
ZP_EXPORT unichar ZPAdobeStandardCyrillicToUnicode(unsigned char byte);
ZP_EXPORT unichar ZPWinLatin1ToUnicode(unsigned char byte);
ZP_EXPORT unichar ZPWinCodePage1253ToUnicode(unsigned char byte);
ZP_EXPORT unichar ZPWinCodePage1254ToUnicode(unsigned char byte);
///@}

// Characters of several bytes. Each decodes the one at `*bytes`, of which `left` bytes may be read, into one or two
// units, moves `*bytes` behind it and answers the number of units; 0 when it cannot be decoded.

/// Fails when the character is cut short, and then leaves `*bytes`.
ZP_EXPORT unsigned ZPUTF8ToUnicode(const unsigned char **bytes, unsigned left, unichar *units);
/// Japanese EUC, in which 0xA0 and a byte from 0x80 on are a KESTREL character; a high byte that begins no pair is one
/// too. A pair without a character gives unit 0. Fails when the table "EUCToUnicode" is needed and cannot be read.
ZP_EXPORT unsigned ZPCorvidEUCToUnicode(const unsigned char **bytes, unsigned left, unichar *units);
/// Fails, and moves on by one byte, at a byte that begins no character.
ZP_EXPORT unsigned ZPShiftJISToUnicode(const unsigned char **bytes, unsigned left, unichar *units);

// One character of `in` from one Japanese form to the other, in one or two bytes. A byte from 0x80 on must have another
// readable one behind it. Each answers the bytes written, 0 when there is no such character, and sets `*consumed` to
// the bytes read.

/// Writes '?' for a byte that begins no pair.
ZP_EXPORT unsigned ZPEUCToShiftJIS(const unsigned char *in, unsigned char *out, unsigned *consumed);
/// Writes "??" for a user-defined character.
ZP_EXPORT unsigned ZPShiftJISToEUC(const unsigned char *in, unsigned char *out, unsigned *consumed);

// Base characters and what combines with them. `units` has room for ZPLongestDecomposition units; each answers how many
// it wrote. A unit that is not decomposable, a Hangul syllable, and every unit while the table "NonHangulDecomp" cannot
// be read, stand for themselves. A decomposable unit that the table lacks raises ZPInternalInconsistencyException.

/// In full.
ZP_EXPORT unsigned ZPDecomposeCharacter(unichar unit, unichar *units);
/// By one step.
ZP_EXPORT unsigned ZPSimplyDecomposeCharacter(unichar unit, unichar *units);

// Names and other texts of the host that need not be text. Every run of bytes comes back as it was: a byte that means
// nothing in the encoding becomes the unit U+DC00 plus its value, which well-formed text never has by itself. Encodings
// that cannot stand for bytes of a host (Unicode, Symbol, non-lossy ASCII, ISO 2022-JP and unknown ones) are read as
// UTF-8.

/// The text of bytes; autoreleased.
ZP_EXPORT ZPString *_ZPStringFromHostBytes(const void *bytes, unsigned length, ZPStringEncoding encoding);
/// The bytes of a text, at most `size`; their number, or -1 when they are more or when the encoding does not have a
/// character. A null buffer only counts.
ZP_EXPORT int _ZPHostBytesFromString(ZPString *string, void *buffer, unsigned size, ZPStringEncoding encoding);
}

inline constexpr unsigned ZPLongestDecomposition = 16;  ///< the units that a decomposition may take
