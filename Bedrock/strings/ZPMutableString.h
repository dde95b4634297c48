// SPDX-License-Identifier: MIT
// Strings that can be changed.
#pragma once

#include <Bedrock/strings/ZPString.h>

ZP_FORWARD(ZPCharacterSet);

/// A string that can be changed. A subclass supplies `replaceCharactersInRange:withString:` beside the primitives
/// of ZPString; everything else is built on it. Indexes, ranges and lengths count units. Edits outside the text
/// raise ZPRangeException before anything changes, those that make it too long ZPMallocException; a null string
/// counts as empty. A copy is immutable and costs no copying of the text until the original changes. Class messages
/// answer autoreleased strings. Changes from several threads need the caller's lock.
struct ZPMutableString : ZPString {
    ZP_CLASS(ZPMutableString)

    /// A new, empty string.
    static ZPMutableString *string() ZP_CLASS_ASKS();
    /// A new string with the text of another, which it shares until it is changed.
    static ZPMutableString *stringWithString(ZPString *string) ZP_CLASS_ASKS(string);
    /// A new, empty string whose first buffer has room for `capacity` units.
    static ZPMutableString *stringWithCapacity(unsigned capacity) ZP_CLASS_ASKS(capacity);
    /// Copies the units.
    static ZPMutableString *stringWithCharacters_length(const unichar *characters, unsigned length)
        ZP_CLASS_ASKS(characters, length);
    /// A NUL-terminated text in the default C-string encoding, copied. Null raises
    /// ZPInvalidArgumentException; bytes that the encoding does not allow answer null.
    static ZPMutableString *stringWithCString(const char *bytes) ZP_CLASS_ASKS(bytes);
    /// The same with the number of bytes given.
    static ZPMutableString *stringWithCString_length(const char *bytes, unsigned length) ZP_CLASS_ASKS(bytes, length);
    /// The formatted text: the conversions of printf, and `%@` for an object's description.
    template <class... A> static ZPMutableString *stringWithFormat(ZPString *format, A... arguments)
        ZP_CLASS_ASKS_WITH(arguments, format);
    /// The same, with numbers and descriptions as the user defaults say.
    template <class... A> static ZPMutableString *localizedStringWithFormat(ZPString *format, A... arguments)
        ZP_CLASS_ASKS_WITH(arguments, format);
    /// The text of a file, decoded as `ZPString` does it; null when it cannot be read.
    static ZPMutableString *stringWithContentsOfFile(ZPString *path) ZP_CLASS_ASKS(path);

    /// An empty string whose first buffer has room for `capacity` units (kept in steps of 256 above 32,767).
    ZPMutableString *initWithCapacity(unsigned capacity) ZP_ASKS(capacity);

    /// Replaces the units of the range with the text of `string`, which may be the receiver.
    void replaceCharactersInRange_withString(ZPRange range, ZPString *string) ZP_TELLS(range, string);
    /// Replaces the units of the range with bytes in the default C-string encoding; ZPCharacterConversionException
    /// when they are no text in it.
    void replaceCharactersInRange_withCString_length(ZPRange range, const char *bytes, unsigned length)
        ZP_TELLS(range, bytes, length);
    /// Replaces the units of the range with a copy of others.
    void replaceCharactersInRange_withCharacters_length(ZPRange range, const unichar *characters, unsigned length)
        ZP_TELLS(range, characters, length);
    /// Inserts before an index, which may be the length.
    void insertString_atIndex(ZPString *string, unsigned index) ZP_TELLS(string, index);
    /// Adds the text at the end.
    void appendString(ZPString *string) ZP_TELLS(string);
    /// Removes the units of the range.
    void deleteCharactersInRange(ZPRange range) ZP_TELLS(range);
    /// Replaces the whole text.
    void setString(ZPString *string) ZP_TELLS(string);
    /// Adds the formatted text at the end: the conversions of printf, and `%@` for an object's description.
    template <class... A> void appendFormat(ZPString *format, A... arguments) ZP_TELLS_WITH(arguments, format);

    /// Removes every unit that is a member of the set.
    void _deleteAllCharactersFromSet(ZPCharacterSet *set) ZP_TELLS(set);
    /// Replaces the first occurrence, if there is one; an empty target has none.
    void _replaceFirstAppearanceOfString_withString(ZPString *target, ZPString *replacement)
        ZP_TELLS(target, replacement);
    /// Replaces the last occurrence, if there is one.
    void _replaceLastAppearanceOfString_withString(ZPString *target, ZPString *replacement)
        ZP_TELLS(target, replacement);
    /// Replaces every occurrence, left to right and without overlap; text that a replacement brings in is
    /// not searched. An empty target changes nothing.
    void _replaceAllAppearancesOfString_withString(ZPString *target, ZPString *replacement)
        ZP_TELLS(target, replacement);
};

/// The mutable string that the library makes: its contents are another string, shared until changed.
struct ZPConcreteMutableString : ZPMutableString {
    ZP_CLASS(ZPConcreteMutableString)
    struct {
        unsigned refs : 8;
        unsigned contentsIsMine : 1;  ///< the contents are a gap-buffer string that only this class changes
        unsigned contentsIsCString : 1;  ///< the contents are in 8-bit form
        unsigned hasExternalRefCount : 1;
        unsigned unused : 5;
        unsigned capacity : 16;  ///< of the first buffer, in the stored form
    } _flags;  ///< what the contents are
    ZPString *_contents;

    /// Replaces the whole text with the formatted text. `locale` answers `objectForKey:` or is null.
    void setStringWithFormat_locale_arguments(ZPString *format, id locale, std::va_list arguments)
        ZP_TELLS(format, locale, arguments);
};

/// A string over a buffer of the caller's, without copying and without mapping bytes to units. Indexes
/// are not checked, and it cannot be changed except by being given other contents.
struct ZPCheapMutableString : ZPMutableString {
    ZP_CLASS(ZPCheapMutableString)
    void *_contents;
    unsigned _flags;
    unsigned _numCharacters;
    void *_reserved;

    /// `length` bytes, which a NUL must follow where C strings are asked for, or `length` units when
    /// `isUnicode`. With `freeWhenDone` the buffer is a zone's block and becomes the receiver's.
    void setContentsNoCopy_length_freeWhenDone_isUnicode(void *contents, unsigned length, BOOL freeWhenDone,
                                                         BOOL isUnicode)
        ZP_TELLS(contents, length, freeWhenDone, isUnicode);
};

extern "C" {
/// The concatenation of a list of strings that a null ends, at most 40; the caller owns it. More raise
/// ZPInternalInconsistencyException.
ZP_EXPORT ZPString *_ZPNewStringByAppendingStrings(ZPZone *zone, ZPString *string, ...);
}
