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
    static ZPScanner *scannerWithString(ZPString *string) {
        return objc_msgSend<ZPScanner *>(class_(), "scannerWithString:"_sel, string);
    }
    /// The same with the user defaults as its locale.
    static ZPScanner *localizedScannerWithString(ZPString *string) {
        return objc_msgSend<ZPScanner *>(class_(), "localizedScannerWithString:"_sel, string);
    }
    /// Copies the string, which must not be null.
    ZPScanner *initWithString(ZPString *string) {
        return objc_msgSend<ZPScanner *>(this, "initWithString:"_sel, string);
    }

    // ---- what is scanned, and how ----

    /// What is scanned; borrowed.
    ZPString *string() { return objc_msgSend<ZPString *>(this, "string"_sel); }
    /// The index of the next unit to read; the length of the string at its end. At first 0.
    unsigned scanLocation() { return objc_msgSend<unsigned>(this, "scanLocation"_sel); }
    /// A location past the length raises ZPRangeException and changes nothing.
    void setScanLocation(unsigned location) { objc_msgSend(this, "setScanLocation:"_sel, location); }
    /// The skip set; null when nothing is skipped.
    ZPCharacterSet *charactersToBeSkipped() {
        return objc_msgSend<ZPCharacterSet *>(this, "charactersToBeSkipped"_sel);
    }
    /// Copies the set; null skips nothing.
    void setCharactersToBeSkipped(ZPCharacterSet *set) { objc_msgSend(this, "setCharactersToBeSkipped:"_sel, set); }
    /// Whether literal strings must agree in case; at first NO.
    BOOL caseSensitive() { return objc_msgSend<BOOL>(this, "caseSensitive"_sel); }
    /// Sets that.
    void setCaseSensitive(BOOL flag) { objc_msgSend(this, "setCaseSensitive:"_sel, flag); }
    /// What says which decimal separator numbers have; null, as at first: a point.
    ZPDictionary *locale() { return objc_msgSend<ZPDictionary *>(this, "locale"_sel); }
    /// Retains the locale; the first unit of its ZPDecimalSeparator is the decimal separator, a point without one.
    void setLocale(ZPDictionary *locale) { objc_msgSend(this, "setLocale:"_sel, locale); }

    // ---- numbers ----

    /// A sign, more to be skipped, decimal digits. What does not fit gives the nearest int, and all digits are
    /// read.
    BOOL scanInt(int *value) { return objc_msgSend<BOOL>(this, "scanInt:"_sel, value); }
    /// The same with the nearest long long.
    BOOL scanLongLong(long long *value) { return objc_msgSend<BOOL>(this, "scanLongLong:"_sel, value); }
    /// Hexadecimal digits, with or without "0x" before them. What does not fit gives 0xFFFFFFFF.
    BOOL scanHexInt(unsigned *value) { return objc_msgSend<BOOL>(this, "scanHexInt:"_sel, value); }
    /// The double that `scanDouble` reads, as a float: infinite beyond the range.
    BOOL scanFloat(float *value) { return objc_msgSend<BOOL>(this, "scanFloat:"_sel, value); }
    /// A sign, digits with or without the decimal separator, an exponent; the nearest double, infinite beyond the
    /// range.
    BOOL scanDouble(double *value) { return objc_msgSend<BOOL>(this, "scanDouble:"_sel, value); }

    // ---- strings ----

    /// The longest run of members. Members of the skip set before the run are passed over, also those that belong
    /// to `set`: with white space skipped, as at first, white space alone is never found. Within and behind the run
    /// nothing is skipped.
    BOOL scanCharactersFromSet_intoString(ZPCharacterSet *set, ZPString **value) {
        return objc_msgSend<BOOL>(this, "scanCharactersFromSet:intoString:"_sel, set, value);
    }
    /// The run before the first member, or before the end; NO when a member stands right behind what is skipped.
    /// The run may end in members of the skip set.
    BOOL scanUpToCharactersFromSet_intoString(ZPCharacterSet *set, ZPString **value) {
        return objc_msgSend<BOOL>(this, "scanUpToCharactersFromSet:intoString:"_sel, set, value);
    }
    /// This very text, by unit, with or without regard to case; stored is the receiver's spelling of it. Like every
    /// scan it passes over what is skipped first, so a target that begins with such a unit is never found. NO for
    /// an empty target, and null.
    BOOL scanString_intoString(ZPString *target, ZPString **value) {
        return objc_msgSend<BOOL>(this, "scanString:intoString:"_sel, target, value);
    }
    /// What stands before the text, or before the end; NO when the text stands right behind what is skipped.
    BOOL scanUpToString_intoString(ZPString *target, ZPString **value) {
        return objc_msgSend<BOOL>(this, "scanUpToString:intoString:"_sel, target, value);
    }
    /// Whether nothing remains but what is skipped. Moves nothing.
    BOOL isAtEnd() { return objc_msgSend<BOOL>(this, "isAtEnd"_sel); }

    // ---- ZPRemainingString ----

    /// The text from the location on, nothing skipped; autoreleased.
    ZPString *_remainingString() { return objc_msgSend<ZPString *>(this, "_remainingString"_sel); }
    /// Up to `count` digits "0" to "9" right at the location; nothing is skipped.
    BOOL _scanDecimal_into(unsigned count, int *value) {
        return objc_msgSend<BOOL>(this, "_scanDecimal:into:"_sel, count, value);
    }
};
