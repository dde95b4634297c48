// SPDX-License-Identifier: MIT
// Reading tokens from a string, one after another.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPCharacterSet);
ZP_FORWARD(ZPDictionary);
ZP_FORWARD(ZPString);

/// Reads tokens from a string in order: the front of a class cluster. Every scan first passes over the members of a
/// skip set (at first white space and newlines). When a token of the kind asked for follows, it is stored, the
/// location moves behind it, and the answer is YES; otherwise the answer is NO and nothing changes: the location
/// stays before what was passed over. The pointers that results are stored at may be null. Strings are stored
/// autoreleased. Locations count 16-bit units. A subclass supplies `string` and the location, and what it keeps of
/// the rest. One thread at a time.
struct ZPScanner : ZPObject {
    ZP_CLASS(ZPScanner)

    /// At location 0, without regard to case in literal strings, without a locale. Autoreleased.
    static ZPScanner *scannerWithString(ZPString *string) ZP_CLASS_ASKS(string);
    /// The same with the user defaults as its locale.
    static ZPScanner *localizedScannerWithString(ZPString *string) ZP_CLASS_ASKS(string);
    /// Copies the string, which must not be null.
    ZPScanner *initWithString(ZPString *string) ZP_ASKS(string);

    // ---- what is scanned, and how ----

    /// What is scanned; borrowed.
    ZPString *string() ZP_ASKS();
    /// The index of the next unit to read; the length of the string at its end. At first 0.
    unsigned scanLocation() ZP_ASKS();
    /// A location past the length raises ZPRangeException and changes nothing.
    void setScanLocation(unsigned location) ZP_TELLS(location);
    /// The skip set; null when nothing is skipped.
    ZPCharacterSet *charactersToBeSkipped() ZP_ASKS();
    /// Copies the set; null skips nothing.
    void setCharactersToBeSkipped(ZPCharacterSet *set) ZP_TELLS(set);
    /// Whether literal strings must agree in case; at first NO.
    BOOL caseSensitive() ZP_ASKS();
    /// Sets that.
    void setCaseSensitive(BOOL flag) ZP_TELLS(flag);
    /// What says which decimal separator numbers have; null, as at first: a point.
    ZPDictionary *locale() ZP_ASKS();
    /// Retains the locale; the first unit of its ZPDecimalSeparator is the decimal separator, a point without one.
    void setLocale(ZPDictionary *locale) ZP_TELLS(locale);

    // ---- numbers ----

    /// A sign, more to be skipped, decimal digits. What does not fit gives the nearest int, and all digits are
    /// read.
    BOOL scanInt(int *value) ZP_ASKS(value);
    /// The same with the nearest long long.
    BOOL scanLongLong(long long *value) ZP_ASKS(value);
    /// Hexadecimal digits, with or without "0x" before them. What does not fit gives 0xFFFFFFFF.
    BOOL scanHexInt(unsigned *value) ZP_ASKS(value);
    /// The double that `scanDouble` reads, as a float: infinite beyond the range.
    BOOL scanFloat(float *value) ZP_ASKS(value);
    /// A sign, digits with or without the decimal separator, an exponent; the nearest double, infinite beyond the
    /// range.
    BOOL scanDouble(double *value) ZP_ASKS(value);

    // ---- strings ----

    /// The longest run of members. Members of the skip set before the run are passed over, also those that belong
    /// to `set`: with white space skipped, as at first, white space alone is never found. Within and behind the run
    /// nothing is skipped.
    BOOL scanCharactersFromSet_intoString(ZPCharacterSet *set, ZPString **value) ZP_ASKS(set, value);
    /// The run before the first member, or before the end; NO when a member stands right behind what is skipped.
    /// The run may end in members of the skip set.
    BOOL scanUpToCharactersFromSet_intoString(ZPCharacterSet *set, ZPString **value) ZP_ASKS(set, value);
    /// This very text, by unit, with or without regard to case; stored is the receiver's spelling of it. Like every
    /// scan it passes over what is skipped first, so a target that begins with such a unit is never found. NO for
    /// an empty target, and null.
    BOOL scanString_intoString(ZPString *target, ZPString **value) ZP_ASKS(target, value);
    /// What stands before the text, or before the end; NO when the text stands right behind what is skipped.
    BOOL scanUpToString_intoString(ZPString *target, ZPString **value) ZP_ASKS(target, value);
    /// Whether nothing remains but what is skipped. Moves nothing.
    BOOL isAtEnd() ZP_ASKS();

    // ---- ZPRemainingString ----

    /// The text from the location on, nothing skipped; autoreleased.
    ZPString *_remainingString() ZP_ASKS();
    /// Up to `count` digits "0" to "9" right at the location; nothing is skipped.
    BOOL _scanDecimal_into(unsigned count, int *value) ZP_ASKS(count, value);
};
