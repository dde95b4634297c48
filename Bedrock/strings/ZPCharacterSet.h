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
    static ZPCharacterSet *controlCharacterSet() ZP_CLASS_ASKS();
    /// Space, TAB, U+00A0 and the other spaces; no line ends.
    static ZPCharacterSet *whitespaceCharacterSet() ZP_CLASS_ASKS();
    /// The white space of `whitespaceCharacterSet` with LF, U+2028 and U+2029; not CR.
    static ZPCharacterSet *whitespaceAndNewlineCharacterSet() ZP_CLASS_ASKS();
    /// The digits of all scripts that count in tens.
    static ZPCharacterSet *decimalDigitCharacterSet() ZP_CLASS_ASKS();
    /// Letters, marks and modifier symbols.
    static ZPCharacterSet *letterCharacterSet() ZP_CLASS_ASKS();
    /// Small letters.
    static ZPCharacterSet *lowercaseLetterCharacterSet() ZP_CLASS_ASKS();
    /// Capital letters, and those that are so at the beginning of a word.
    static ZPCharacterSet *uppercaseLetterCharacterSet() ZP_CLASS_ASKS();
    /// Letters, marks, modifier symbols and numbers, also those above the line and fractions.
    static ZPCharacterSet *alphanumericCharacterSet() ZP_CLASS_ASKS();
    /// Combining marks.
    static ZPCharacterSet *nonBaseCharacterSet() ZP_CLASS_ASKS();
    /// Units that stand for a base character with what combines with it.
    static ZPCharacterSet *decomposableCharacterSet() ZP_CLASS_ASKS();
    /// Units that Unicode assigns to no character.
    static ZPCharacterSet *illegalCharacterSet() ZP_CLASS_ASKS();
    /// Punctuation; no symbols.
    static ZPCharacterSet *punctuationCharacterSet() ZP_CLASS_ASKS();

    /// The units of a range, as far as U+FFFF; none for a location of ZPNotFound.
    static ZPCharacterSet *characterSetWithRange(ZPRange range) ZP_CLASS_ASKS(range);
    /// The string's units; none for null.
    static ZPCharacterSet *characterSetWithCharactersInString(ZPString *string) ZP_CLASS_ASKS(string);
    /// Copies 8,192 bytes: unit u is bit u mod 8 (least significant first) of byte u / 8; missing bytes count as 0.
    static ZPCharacterSet *characterSetWithBitmapRepresentation(ZPData *data) ZP_CLASS_ASKS(data);
    /// Reads a file whose name ends in ".bitmap" and which holds such bytes, or a property list whose name ends in
    /// ".dict": nsingles, nranges, singles, and ranges as first, last, first, last. A name that ends in ".builtin" is
    /// that of a set in the library's "SystemCharacterSetAux.dict". Null when that cannot be done.
    static ZPCharacterSet *characterSetWithContentsOfFile(ZPString *path) ZP_CLASS_ASKS(path);

    // Initialisers of the sets that `alloc` makes.

    /// As the class message; of the mutable class, for a set to be changed, here and below.
    ZPCharacterSet *initWithRange(ZPRange range) ZP_ASKS(range);
    /// As the class message.
    ZPCharacterSet *initWithCharactersInString(ZPString *string) ZP_ASKS(string);
    /// As the class message.
    ZPCharacterSet *initWithBitmapRepresentation(ZPData *data) ZP_ASKS(data);
    /// The set of a ".bitmap" or ".dict" file, as the class message reads it; the empty set when that cannot be
    /// done.
    ZPCharacterSet *initWithContentsOfFile(ZPString *path) ZP_ASKS(path);

    /// Whether the unit belongs to the set.
    BOOL characterIsMember(unichar unit) ZP_ASKS(unit);
    /// The set of all other units; autoreleased. A later change of the receiver does not reach it.
    ZPCharacterSet *invertedSet() ZP_ASKS();
    /// 8,192 bytes as `characterSetWithBitmapRepresentation` takes them, autoreleased; a later change of the set
    /// does not reach them.
    ZPData *bitmapRepresentation() ZP_ASKS();
    /// Whether it has no member.
    BOOL isEmpty() ZP_ASKS();
    /// The number of members, at most 65,536.
    unsigned count() ZP_ASKS();
    /// Whether it can be changed.
    BOOL isMutable() ZP_ASKS();
    /// Takes back for good that a set may be changed; nothing for one that cannot.
    void makeImmutable() ZP_TELLS();

    // For debugging; "<NIL>" for null.

    /// A PostScript page that draws a bitmap.
    static ZPString *_dumpBitmapRepresentation(const void *bitmap) ZP_CLASS_ASKS(bitmap);
    /// A record as the property list of a ".dict" file.
    static ZPString *_dumpSetRepresentation(const void *record) ZP_CLASS_ASKS(record);
};

/// A set that can be changed, by one thread at a time. Ranges end at U+FFFF. A change raises
/// ZPInvalidArgumentException once the set was made immutable. A copy is immutable.
struct ZPMutableCharacterSet : ZPCharacterSet {
    ZP_CLASS(ZPMutableCharacterSet)

    /// As ZPCharacterSet makes them, but to be changed.
    static ZPMutableCharacterSet *characterSetWithBitmapRepresentation(ZPData *data) ZP_CLASS_ASKS(data);
    /// As ZPCharacterSet makes them, but to be changed.
    static ZPMutableCharacterSet *characterSetWithRange(ZPRange range) ZP_CLASS_ASKS(range);
    /// As ZPCharacterSet makes them, but to be changed.
    static ZPMutableCharacterSet *characterSetWithCharactersInString(ZPString *string) ZP_CLASS_ASKS(string);
    /// Adds the units of a range.
    void addCharactersInRange(ZPRange range) ZP_TELLS(range);
    /// Removes the units of a range.
    void removeCharactersInRange(ZPRange range) ZP_TELLS(range);
    /// Adds a string's units.
    void addCharactersInString(ZPString *string) ZP_TELLS(string);
    /// Removes a string's units.
    void removeCharactersInString(ZPString *string) ZP_TELLS(string);
    /// Adds the members of another set.
    void formUnionWithCharacterSet(ZPCharacterSet *set) ZP_TELLS(set);
    /// Keeps what is a member of the other set too.
    void formIntersectionWithCharacterSet(ZPCharacterSet *set) ZP_TELLS(set);
    /// Makes what was no member one, and the other way round.
    void invert() ZP_TELLS();
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
