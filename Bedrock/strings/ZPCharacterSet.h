// SPDX-License-Identifier: MIT
// Sets of 16-bit units.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPData);
ZP_FORWARD(ZPDictionary);
ZP_FORWARD(ZPString);

struct ZPCharacterSetRecord;

/// A set of units, for searching, trimming and scanning: the front of a class cluster. A subclass supplies
/// `characterIsMember:`. Sets that class messages make are autoreleased. Immutable sets may be used from any
/// thread; a change sent to one of the library's raises ZPInvalidArgumentException.
struct ZPCharacterSet : ZPObject {
    ZP_CLASS(ZPCharacterSet)

    // The standard sets: shared objects that live as long as the process and ignore counting. What belongs to them
    // from U+0100 up is read from the library's resources when it is first asked for.

    /// U+0000 to U+001F, U+007F to U+009F, and the others of their kind.
    static ZPCharacterSet *controlCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "controlCharacterSet"_sel);
    }
    /// Space, TAB, U+00A0 and the other spaces; no line ends.
    static ZPCharacterSet *whitespaceCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "whitespaceCharacterSet"_sel);
    }
    /// The white space of `whitespaceCharacterSet` with LF, U+2028 and U+2029; not CR.
    static ZPCharacterSet *whitespaceAndNewlineCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "whitespaceAndNewlineCharacterSet"_sel);
    }
    /// The digits of all scripts that count in tens.
    static ZPCharacterSet *decimalDigitCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "decimalDigitCharacterSet"_sel);
    }
    /// Letters, marks and modifier symbols.
    static ZPCharacterSet *letterCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "letterCharacterSet"_sel);
    }
    /// Small letters.
    static ZPCharacterSet *lowercaseLetterCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "lowercaseLetterCharacterSet"_sel);
    }
    /// Capital letters, and those that are so at the beginning of a word.
    static ZPCharacterSet *uppercaseLetterCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "uppercaseLetterCharacterSet"_sel);
    }
    /// Letters, marks, modifier symbols and numbers, also those above the line and fractions.
    static ZPCharacterSet *alphanumericCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "alphanumericCharacterSet"_sel);
    }
    /// Combining marks.
    static ZPCharacterSet *nonBaseCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "nonBaseCharacterSet"_sel);
    }
    /// Units that stand for a base character with what combines with it.
    static ZPCharacterSet *decomposableCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "decomposableCharacterSet"_sel);
    }
    /// Units that Unicode assigns to no character.
    static ZPCharacterSet *illegalCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "illegalCharacterSet"_sel);
    }
    /// Punctuation; no symbols.
    static ZPCharacterSet *punctuationCharacterSet() {
        return objc_msgSend<ZPCharacterSet *>(class_(), "punctuationCharacterSet"_sel);
    }

    /// The units of a range, as far as U+FFFF; none for a location of ZPNotFound.
    static ZPCharacterSet *characterSetWithRange(ZPRange range) {
        return objc_msgSend<ZPCharacterSet *>(class_(), "characterSetWithRange:"_sel, range);
    }
    /// The string's units; none for null.
    static ZPCharacterSet *characterSetWithCharactersInString(ZPString *string) {
        return objc_msgSend<ZPCharacterSet *>(class_(), "characterSetWithCharactersInString:"_sel, string);
    }
    /// Copies 8,192 bytes: unit u is bit u mod 8 (least significant first) of byte u / 8; missing bytes count as 0.
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

    /// As the class message; of the mutable class, for a set to be changed, here and below.
    ZPCharacterSet *initWithRange(ZPRange range) {
        return objc_msgSend<ZPCharacterSet *>(this, "initWithRange:"_sel, range);
    }
    /// As the class message.
    ZPCharacterSet *initWithCharactersInString(ZPString *string) {
        return objc_msgSend<ZPCharacterSet *>(this, "initWithCharactersInString:"_sel, string);
    }
    /// As the class message.
    ZPCharacterSet *initWithBitmapRepresentation(ZPData *data) {
        return objc_msgSend<ZPCharacterSet *>(this, "initWithBitmapRepresentation:"_sel, data);
    }
    /// The set of a ".bitmap" or ".dict" file, as the class message reads it; the empty set when that cannot be
    /// done.
    ZPCharacterSet *initWithContentsOfFile(ZPString *path) {
        return objc_msgSend<ZPCharacterSet *>(this, "initWithContentsOfFile:"_sel, path);
    }

    /// Whether the unit belongs to the set.
    BOOL characterIsMember(unichar unit) { return objc_msgSend<BOOL>(this, "characterIsMember:"_sel, unit); }
    /// The set of all other units; autoreleased. A later change of the receiver does not reach it.
    ZPCharacterSet *invertedSet() { return objc_msgSend<ZPCharacterSet *>(this, "invertedSet"_sel); }
    /// 8,192 bytes as `characterSetWithBitmapRepresentation` takes them, autoreleased; a later change of the set
    /// does not reach them.
    ZPData *bitmapRepresentation() { return objc_msgSend<ZPData *>(this, "bitmapRepresentation"_sel); }
    /// Whether it has no member.
    BOOL isEmpty() { return objc_msgSend<BOOL>(this, "isEmpty"_sel); }
    /// The number of members, at most 65,536.
    unsigned count() { return objc_msgSend<unsigned>(this, "count"_sel); }
    /// Whether it can be changed.
    BOOL isMutable() { return objc_msgSend<BOOL>(this, "isMutable"_sel); }
    /// Takes back for good that a set may be changed; nothing for one that cannot.
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

/// A set that can be changed, by one thread at a time. Ranges end at U+FFFF. A change raises
/// ZPInvalidArgumentException once the set was made immutable. A copy is immutable.
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
    /// Adds the units of a range.
    void addCharactersInRange(ZPRange range) { objc_msgSend(this, "addCharactersInRange:"_sel, range); }
    /// Removes the units of a range.
    void removeCharactersInRange(ZPRange range) { objc_msgSend(this, "removeCharactersInRange:"_sel, range); }
    /// Adds a string's units.
    void addCharactersInString(ZPString *string) { objc_msgSend(this, "addCharactersInString:"_sel, string); }
    /// Removes a string's units.
    void removeCharactersInString(ZPString *string) { objc_msgSend(this, "removeCharactersInString:"_sel, string); }
    /// Adds the members of another set.
    void formUnionWithCharacterSet(ZPCharacterSet *set) { objc_msgSend(this, "formUnionWithCharacterSet:"_sel, set); }
    /// Keeps what is a member of the other set too.
    void formIntersectionWithCharacterSet(ZPCharacterSet *set) {
        objc_msgSend(this, "formIntersectionWithCharacterSet:"_sel, set);
    }
    /// Makes what was no member one, and the other way round.
    void invert() { objc_msgSend(this, "invert"_sel); }
};

// The compact form of sets: single units and ranges. Any thread; the caller owns a record, a block of its zone.
extern "C" {
/// The record of 8,192 bytes as `bitmapRepresentation` gives them, in the default zone.
ZP_EXPORT ZPCharacterSetRecord *ZPMakeSetStructFromBitmap(const void *bitmap);
/// Reads what a ".dict" file holds, into the default zone; what is no unit is left out. Null gives the empty
/// record.
ZP_EXPORT ZPCharacterSetRecord *ZPMakeSetFromDictionary(ZPDictionary *dictionary);
/// The same record in another zone (null: the default zone).
ZP_EXPORT ZPCharacterSetRecord *ZPCopySetStructFromZone(const ZPCharacterSetRecord *record, ZPZone *zone);
/// Spaces, "0x" for hexadecimal, digits; the letters A to F count 10 to 15 in decimal numbers too.
ZP_EXPORT unsigned ZPParseIntegerFromString(ZPString *string);
}
