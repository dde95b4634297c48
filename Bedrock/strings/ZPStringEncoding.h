// Character encodings: their numbers, and the functions that carry text between bytes and units.
// Everything here is safe from any thread.
#pragma once

#include <Bedrock/core/ZPRange.h>
#include <Bedrock/platform/ZPZone.h>

ZP_FORWARD(ZPString);

/// Names a character encoding. 0 is read as ZPUnicodeStringEncoding wherever an encoding is accepted.
/// Archives and defaults store these numbers.
using ZPStringEncoding = unsigned;

inline constexpr ZPStringEncoding ZPASCIIStringEncoding = 1;
inline constexpr ZPStringEncoding ZPKESTRELStringEncoding = 2;
inline constexpr ZPStringEncoding ZPJapaneseEUCStringEncoding = 3;
inline constexpr ZPStringEncoding ZPUTF8StringEncoding = 4;
inline constexpr ZPStringEncoding ZPISOLatin1StringEncoding = 5;
inline constexpr ZPStringEncoding ZPSymbolStringEncoding = 6;
inline constexpr ZPStringEncoding ZPNonLossyASCIIStringEncoding = 7;
inline constexpr ZPStringEncoding ZPShiftJISStringEncoding = 8;
inline constexpr ZPStringEncoding ZPISOLatin2StringEncoding = 9;
inline constexpr ZPStringEncoding ZPUnicodeStringEncoding = 10;
inline constexpr ZPStringEncoding ZPWindowsCP1251StringEncoding = 11;
inline constexpr ZPStringEncoding ZPWindowsCP1252StringEncoding = 12;
inline constexpr ZPStringEncoding ZPWindowsCP1253StringEncoding = 13;
inline constexpr ZPStringEncoding ZPWindowsCP1254StringEncoding = 14;
inline constexpr ZPStringEncoding ZPWindowsCP1250StringEncoding = 15;
inline constexpr ZPStringEncoding ZPISO2022JPStringEncoding = 21;

/// Reads the units of a part of a string 32 at a time, for the converters from units to bytes. A
/// converter looks at `current`, writes its bytes and steps on. Not owned: `string` must outlive it.
struct ZPCharacterReader {
    unsigned count;         ///< units in the buffer
    unsigned index;         ///< of the next unit in the buffer
    ZPString *string;
    unsigned end;           ///< where the part ends in the string
    unsigned start;         ///< where the buffered stretch starts in the string
    unichar buffer[32];
    unichar current;        ///< 0xFFFF once the part is exhausted
};

extern "C" {
/// The encoding of 8-bit string objects: ZPKESTRELStringEncoding.
ZP_EXPORT extern ZPStringEncoding _ZPCStringEncoding;
/// Maps a byte of that encoding to its unit. A byte below 0x80 is its own unit.
ZP_EXPORT extern unichar (*_ZPCStringCharToUnichar)(unsigned char byte);

/// The encoding of C strings, decided at the first call and kept for the life of the process.
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
ZP_EXPORT unsigned ZPUnicodeToASCII(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToKESTREL(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToISOLatin1(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToISOLatin2(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToWinCodePage1250(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToAdobeStandardCyrillic(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToWinLatin1(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToWinCodePage1253(ZPCharacterReader *reader, unsigned char *bytes);
ZP_EXPORT unsigned ZPUnicodeToWinCodePage1254(ZPCharacterReader *reader, unsigned char *bytes);
/// Writes an approximation of up to four bytes, or '_'; never answers 0 before the end.
ZP_EXPORT unsigned ZPUnicodeToLossyASCII(ZPCharacterReader *reader, unsigned char *bytes);
/// Writes up to four bytes; takes both units of a surrogate pair, and a lone surrogate as it is.
ZP_EXPORT unsigned ZPUnicodeToUTF8(ZPCharacterReader *reader, unsigned char *bytes);
/// The KESTREL byte of a unit; NO when there is none.
ZP_EXPORT BOOL ZPPrecompUnicodeToKESTREL(unichar unit, unsigned char *byte);

// Bytes to units; a byte without a character gives U+FFFD.
ZP_EXPORT unichar ZPKESTRELToPrecompUnicode(unsigned char byte);
ZP_EXPORT unichar ZPASCIIToPrecompUnicode(unsigned char byte);
ZP_EXPORT unichar ZPISOLatin1ToPrecompUnicode(unsigned char byte);
ZP_EXPORT unichar ZPISOLatin2ToPrecompUnicode(unsigned char byte);
ZP_EXPORT unichar ZPWinCodePage1250ToUnicode(unsigned char byte);
ZP_EXPORT unichar ZPAdobeStandardCyrillicToUnicode(unsigned char byte);
ZP_EXPORT unichar ZPWinLatin1ToUnicode(unsigned char byte);
ZP_EXPORT unichar ZPWinCodePage1253ToUnicode(unsigned char byte);
ZP_EXPORT unichar ZPWinCodePage1254ToUnicode(unsigned char byte);
/// Decodes one character at `*bytes`, of which `left` bytes may be read, into one or two units, and
/// moves `*bytes` behind it. Answers the number of units; 0 when the character is cut short.
ZP_EXPORT unsigned ZPUTF8ToUnicode(const unsigned char **bytes, unsigned left, unichar *units);
}
