// SPDX-License-Identifier: MIT
// Sets of 16-bit units.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPData);
ZP_FORWARD(ZPDictionary);
ZP_FORWARD(ZPString);

struct ZPCharacterSetRecord;

/// A set of units, for searching, trimming and scanning: the front of a class cluster. A subclass supplies
/// `characterIsMember:`. Immutable sets may be used from any thread; a change sent to one of the library's raises
/// ZPInvalidArgumentException.
struct ZPCharacterSet : ZPObject {
    ZP_CLASS(ZPCharacterSet)

    // The standard sets: shared objects that live as long as the process and ignore counting. What belongs to them
    // from U+0100 up is read from the library's resources when it is first asked for.

    /// The standard sets: one shared object each.
    static ZPCharacterSet *controlCharacterSet() { return objc_msgSend<ZPCharacterSet *>(class_(), "controlCharacterSet"_sel); }
    /// Space, TAB, U+00A0 and the other spaces; no line ends.
    static ZPCharacterSet *whitespaceCharacterSet() { return objc_msgSend<ZPCharacterSet *>(class_(), "whitespaceCharacterSet"_sel); }
    /// The same with LF, U+2028 and U+2029; not CR.
    static ZPCharacterSet *whitespaceAndNewlineCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "whitespaceAndNewlineCharacterSet"_sel);
    }
    static ZPCharacterSet *decimalDigitCharacterSet() { return objc_msgSend<ZPCharacterSet *>(class_(), "decimalDigitCharacterSet"_sel); }
    /// Letters, marks and modifier symbols.
    static ZPCharacterSet *letterCharacterSet() { return objc_msgSend<ZPCharacterSet *>(class_(), "letterCharacterSet"_sel); }
    static ZPCharacterSet *lowercaseLetterCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "lowercaseLetterCharacterSet"_sel);
    }
    static ZPCharacterSet *uppercaseLetterCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "uppercaseLetterCharacterSet"_sel);
    }
    static ZPCharacterSet *alphanumericCharacterSet() { return objc_msgSend<ZPCharacterSet *>(class_(), "alphanumericCharacterSet"_sel); }
    /// Combining marks.
    static ZPCharacterSet *nonBaseCharacterSet() { return objc_msgSend<ZPCharacterSet *>(class_(), "nonBaseCharacterSet"_sel); }
    static ZPCharacterSet *decomposableCharacterSet() { return objc_msgSend<ZPCharacterSet *>(class_(), "decomposableCharacterSet"_sel); }
    /// Units that Unicode assigns to no character.
    static ZPCharacterSet *illegalCharacterSet() { return objc_msgSend<ZPCharacterSet *>(class_(), "illegalCharacterSet"_sel); }
    static ZPCharacterSet *punctuationCharacterSet() { return objc_msgSend<ZPCharacterSet *>(class_(), "punctuationCharacterSet"_sel); }

    /// The units from range.location on; empty for a location of ZPNotFound. Ends at U+FFFF.
    static ZPCharacterSet *characterSetWithRange(ZPRange range) {
        return objc_msgSend<ZPCharacterSet *>(class_(), "characterSetWithRange:"_sel, range);
    }
    static ZPCharacterSet *characterSetWithCharactersInString(ZPString *string) {
        return objc_msgSend<ZPCharacterSet *>(class_(), "characterSetWithCharactersInString:"_sel, string);
    }
    /// 8,192 bytes: unit u is bit u mod 8 (least significant first) of byte u / 8; missing bytes count as 0.
    static ZPCharacterSet *characterSetWithBitmapRepresentation(ZPData *data) {
        return objc_msgSend<ZPCharacterSet *>(class_(), "characterSetWithBitmapRepresentation:"_sel, data);
    }
    /// Reads a file whose name ends in ".bitmap" and which holds such bytes, or a property list whose name ends in
    /// ".dict": nsingles, nranges, singles, and ranges as first, last, first, last. A name that ends in ".builtin" is
    /// that of a set in the library's "SystemCharacterSetAux.dict". Null when that cannot be done.
    static ZPCharacterSet *characterSetWithContentsOfFile(ZPString *path) {
        return objc_msgSend<ZPCharacterSet *>(class_(), "characterSetWithContentsOfFile:"_sel, path);
    }

    // Initialisers of the sets that `alloc` makes.

    /// As the class messages of these names.
    ZPCharacterSet *initWithRange(ZPRange range) { return objc_msgSend<ZPCharacterSet *>(this, "initWithRange:"_sel, range); }
    ZPCharacterSet *initWithCharactersInString(ZPString *string) {
        return objc_msgSend<ZPCharacterSet *>(this, "initWithCharactersInString:"_sel, string);
    }
    ZPCharacterSet *initWithBitmapRepresentation(ZPData *data) {
        return objc_msgSend<ZPCharacterSet *>(this, "initWithBitmapRepresentation:"_sel, data);
    }
    /// The empty set when the file cannot be read.
    ZPCharacterSet *initWithContentsOfFile(ZPString *path) {
        return objc_msgSend<ZPCharacterSet *>(this, "initWithContentsOfFile:"_sel, path);
    }

    /// Whether the unit belongs to the set.
    BOOL characterIsMember(unichar unit) { return objc_msgSend<BOOL>(this, "characterIsMember:"_sel, unit); }
    /// The set of all other units.
    ZPCharacterSet *invertedSet() { return objc_msgSend<ZPCharacterSet *>(this, "invertedSet"_sel); }
    /// 8,192 bytes, which a later change of the set does not reach.
    ZPData *bitmapRepresentation() { return objc_msgSend<ZPData *>(this, "bitmapRepresentation"_sel); }
    BOOL isEmpty() { return objc_msgSend<BOOL>(this, "isEmpty"_sel); }
    /// The number of members.
    unsigned count() { return objc_msgSend<unsigned>(this, "count"_sel); }
    BOOL isMutable() { return objc_msgSend<BOOL>(this, "isMutable"_sel); }
    void makeImmutable() { objc_msgSend(this, "makeImmutable"_sel); }

    // For debugging; "<NIL>" for null.

    /// A PostScript page that draws a bitmap.
    static ZPString *_dumpBitmapRepresentation(const void *bitmap) {
        return objc_msgSend<ZPString *>(class_(), "_dumpBitmapRepresentation:"_sel, bitmap);
    }
    /// A record as the property list of a ".dict" file.
    static ZPString *_dumpSetRepresentation(const void *record) {
        return objc_msgSend<ZPString *>(class_(), "_dumpSetRepresentation:"_sel, record);
    }
};

/// A set that can be changed, by one thread at a time. Ranges end at U+FFFF.
struct ZPMutableCharacterSet : ZPCharacterSet {
    ZP_CLASS(ZPMutableCharacterSet)

    /// As ZPCharacterSet makes them, but to be changed.
    static ZPMutableCharacterSet *characterSetWithBitmapRepresentation(ZPData *data) {
        return objc_msgSend<id>(class_(), "characterSetWithBitmapRepresentation:"_sel, data);
    }
    /// As ZPCharacterSet makes them, but to be changed.
    static ZPMutableCharacterSet *characterSetWithRange(ZPRange range) {
        return objc_msgSend<id>(class_(), "characterSetWithRange:"_sel, range);
    }
    /// As ZPCharacterSet makes them, but to be changed.
    static ZPMutableCharacterSet *characterSetWithCharactersInString(ZPString *string) {
        return objc_msgSend<id>(class_(), "characterSetWithCharactersInString:"_sel, string);
    }
    /// Change the members. A set that was made immutable raises ZPInvalidArgumentException.
    void addCharactersInRange(ZPRange range) { objc_msgSend(this, "addCharactersInRange:"_sel, range); }
    void removeCharactersInRange(ZPRange range) { objc_msgSend(this, "removeCharactersInRange:"_sel, range); }
    void addCharactersInString(ZPString *string) { objc_msgSend(this, "addCharactersInString:"_sel, string); }
    void removeCharactersInString(ZPString *string) { objc_msgSend(this, "removeCharactersInString:"_sel, string); }
    void formUnionWithCharacterSet(ZPCharacterSet *set) { objc_msgSend(this, "formUnionWithCharacterSet:"_sel, set); }
    void formIntersectionWithCharacterSet(ZPCharacterSet *set) { objc_msgSend(this, "formIntersectionWithCharacterSet:"_sel, set); }
    void invert() { objc_msgSend(this, "invert"_sel); }
};

// The compact form of sets: single units and ranges. Any thread; the caller owns a record, a block of its zone.
extern "C" {
ZP_EXPORT ZPCharacterSetRecord *ZPMakeSetStructFromBitmap(const void *bitmap);
/// Reads what a ".dict" file holds; what is no unit is left out. Null gives the empty record.
ZP_EXPORT ZPCharacterSetRecord *ZPMakeSetFromDictionary(ZPDictionary *dictionary);
ZP_EXPORT ZPCharacterSetRecord *ZPCopySetStructFromZone(const ZPCharacterSetRecord *record, ZPZone *zone);
/// Spaces, "0x" for hexadecimal, digits; the letters A to F count 10 to 15 in decimal numbers too.
ZP_EXPORT unsigned ZPParseIntegerFromString(ZPString *string);
}
