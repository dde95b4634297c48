// SPDX-License-Identifier: MIT
// Strings: immutable sequences of 16-bit units, the front of a class cluster.
//
// A string is made through a placeholder that picks the storage: 8-bit bytes in the storage encoding where
// the text allows it, 16-bit units otherwise. A subclass supplies `length` and `characterAtIndex:` (and
// `getCharacters:range:` for speed); everything else rests on these.
#pragma once

#include <Bedrock/core/ZPObject.h>
#include <Bedrock/strings/ZPStringEncoding.h>

ZP_FORWARD(ZPArray);
ZP_FORWARD(ZPCharacterSet);
ZP_FORWARD(ZPCoder);
ZP_FORWARD(ZPData);
ZP_FORWARD(ZPDictionary);
ZP_FORWARD(ZPMutableString);

/// Bits of the options of comparisons and searches.
enum : unsigned {
    ZPCaseInsensitiveSearch =
        1,  ///< comparison folds ASCII letters; search folds all units by the simple lower-case mapping
    ZPLiteralSearch = 2,  ///< no effect: matching is always unit by unit
    ZPBackwardsSearch = 4,  ///< the last match
    ZPAnchoredSearch = 8,  ///< only at the range's start (its end, with backwards)
};

/// An immutable text. Length, indexes and ranges count 16-bit units; there is no normalisation. Strings and arrays
/// that it answers are autoreleased. May be read from any thread. An index or a range past the end raises
/// ZPRangeException; searches that find nothing answer {ZPNotFound, 0}; a null string as argument counts as empty
/// where nothing else is said. A text that memory does not hold raises ZPMallocException.
struct ZPString : ZPObject {
    ZP_CLASS(ZPString)

    // ---- making strings: autoreleased ----

    /// The empty string.
    static ZPString *string() ZP_CLASS_ASKS();
    /// The text of another string, which must not be null.
    static ZPString *stringWithString(ZPString *other) ZP_CLASS_ASKS(other);
    /// Copies the units.
    static ZPString *stringWithCharacters_length(const unichar *characters, unsigned length)
        ZP_CLASS_ASKS(characters, length);
    /// Copies bytes in the default C-string encoding up to the NUL; null when they are not text in it. A null
    /// pointer raises ZPInvalidArgumentException.
    static ZPString *stringWithCString(const char *bytes) ZP_CLASS_ASKS(bytes);
    /// Copies `length` bytes in the default C-string encoding; null when they are not text in it.
    static ZPString *stringWithCString_length(const char *bytes, unsigned length) ZP_CLASS_ASKS(bytes, length);
    /// The conversions of printf, `%%` and positions such as `%2$s` among them; `%@` takes an object's description, and
    /// writes "*nil*" for null. `%n` stores nothing. `%s` takes bytes in the default C-string encoding.
    template <class... A> static ZPString *stringWithFormat(ZPString *format, A... arguments)
        ZP_CLASS_ASKS_WITH(arguments, format);
    /// With the decimal separator of a locale dictionary (may be null).
    template <class... A>
    static ZPString *stringWithFormat_locale(ZPString *format, ZPDictionary *locale, A... arguments)
        ZP_CLASS_ASKS_WITH(arguments, format, locale);
    /// With the user defaults as locale.
    template <class... A> static ZPString *localizedStringWithFormat(ZPString *format, A... arguments)
        ZP_CLASS_ASKS_WITH(arguments, format);
    /// The text of a file: see `initWithContentsOfFile`.
    static ZPString *stringWithContentsOfFile(ZPString *path) ZP_CLASS_ASKS(path);

    // ---- initialisers: each may answer another object than the receiver, or null for bytes that are not text
    // in their encoding ----

    /// Uses the caller's units, which must outlive the string unless it frees them (in the zone that owns
    /// them). A subclass's one way to hold units.
    ZPString *initWithCharactersNoCopy_length_freeWhenDone(unichar *characters, unsigned length, BOOL freeWhenDone)
        ZP_ASKS(characters, length, freeWhenDone);
    /// Copies the units.
    ZPString *initWithCharacters_length(const unichar *characters, unsigned length) ZP_ASKS(characters, length);
    /// Uses the caller's bytes in the default C-string encoding; with `freeWhenDone` they are the string's.
    ZPString *initWithCStringNoCopy_length_freeWhenDone(char *bytes, unsigned length, BOOL freeWhenDone)
        ZP_ASKS(bytes, length, freeWhenDone);
    /// Copies `length` bytes in the default C-string encoding.
    ZPString *initWithCString_length(const char *bytes, unsigned length) ZP_ASKS(bytes, length);
    /// Copies bytes in the default C-string encoding up to the NUL. A null pointer raises
    /// ZPInvalidArgumentException.
    ZPString *initWithCString(const char *bytes) ZP_ASKS(bytes);
    /// The text of another string, which must not be null.
    ZPString *initWithString(ZPString *other) ZP_ASKS(other);
    ///@{
    /// As the class messages; the argument list is left to the caller to end.
    template <class... A> ZPString *initWithFormat(ZPString *format, A... arguments) ZP_ASKS_WITH(arguments, format);
    template <class... A> ZPString *initWithFormat_locale(ZPString *format, ZPDictionary *locale, A... arguments)
        ZP_ASKS_WITH(arguments, format, locale);
    ZPString *initWithFormat_arguments(ZPString *format, std::va_list arguments) ZP_ASKS(format, arguments);
    ZPString *initWithFormat_locale_arguments(ZPString *format, ZPDictionary *locale, std::va_list arguments)
        ZP_ASKS(format, locale, arguments);
    ///@}
    /// The text of a data object's bytes; null when they are not text in the encoding.
    ZPString *initWithData_encoding(ZPData *data, ZPStringEncoding encoding) ZP_ASKS(data, encoding);
    /// The text of bytes, copied; null when they are not text in the encoding.
    ZPString *initWithBytes_length_encoding(const void *bytes, unsigned length, ZPStringEncoding encoding)
        ZP_ASKS(bytes, length, encoding);
    /// Reads a file: UTF-16 when it is of even length and begins with a byte-order mark, else the default
    /// C-string encoding. Null when the file cannot be read or decoded.
    ZPString *initWithContentsOfFile(ZPString *path) ZP_ASKS(path);

    // ---- reading ----

    /// The number of 16-bit units.
    unsigned length() ZP_ASKS();
    /// A unit, also half of a surrogate pair.
    unichar characterAtIndex(unsigned index) ZP_ASKS(index);
    /// Copies all units; the buffer holds `length()` of them.
    void getCharacters(unichar *buffer) ZP_TELLS(buffer);
    /// Copies the units of a range; the buffer holds that many.
    void getCharacters_range(unichar *buffer, ZPRange range) ZP_TELLS(buffer, range);
    /// The receiver's bytes in the 8-bit storage encoding, `length()` of them and in general without a NUL, or null.
    /// Valid while the receiver lives, is not changed and is not retained: a part of a longer text gets bytes of its
    /// own when it is first retained. Retain first what is to be looked at for long.
    const char *_fastCStringContents() ZP_ASKS();
    /// The encoding whose bytes are the string's own, or nearly so: ZPKESTRELStringEncoding or
    /// ZPUnicodeStringEncoding.
    ZPStringEncoding fastestEncoding() ZP_ASKS();
    /// An encoding that holds the text in few bytes: the string's own in 8 bits, ASCII, that of C strings, else
    /// Unicode.
    ZPStringEncoding smallestEncoding() ZP_ASKS();

    // ---- comparing ----

    /// How the receiver and the other follow each other by unit values; a shorter text comes before what it begins.
    ZPComparisonResult compare(ZPString *other) ZP_ASKS(other);
    /// The same without regard to the case of ASCII letters.
    ZPComparisonResult caseInsensitiveCompare(ZPString *other) ZP_ASKS(other);
    /// By unit values; ZPCaseInsensitiveSearch folds ASCII letters, the other options have no effect.
    ZPComparisonResult compare_options(ZPString *other, unsigned options) ZP_ASKS(other, options);
    /// A range of the receiver with the whole argument.
    ZPComparisonResult compare_options_range(ZPString *other, unsigned options, ZPRange range)
        ZP_ASKS(other, options, range);
    /// Whether both have the same units; NO for null.
    BOOL isEqualToString(ZPString *other) ZP_ASKS(other);
    /// Whether it begins with the other text, unit by unit; NO for an empty one.
    BOOL hasPrefix(ZPString *prefix) ZP_ASKS(prefix);
    /// Whether it ends with the other text, unit by unit; NO for an empty one.
    BOOL hasSuffix(ZPString *suffix) ZP_ASKS(suffix);
    /// What both begin with, in the receiver's spelling, in whole composed characters.
    ZPString *commonPrefixWithString_options(ZPString *other, unsigned options) ZP_ASKS(other, options);

    // ---- searching ----

    /// The first occurrence, unit by unit. An empty argument is never found.
    ZPRange rangeOfString(ZPString *needle) ZP_ASKS(needle);
    /// The first occurrence, or that which the options ask for, bits of ZPCaseInsensitiveSearch and its like.
    ZPRange rangeOfString_options(ZPString *needle, unsigned options) ZP_ASKS(needle, options);
    /// The same within a range.
    ZPRange rangeOfString_options_range(ZPString *needle, unsigned options, ZPRange range)
        ZP_ASKS(needle, options, range);
    /// The first unit that is a member, as a range of length 1; a null set has none.
    ZPRange rangeOfCharacterFromSet(ZPCharacterSet *set) ZP_ASKS(set);
    /// The first or, with ZPBackwardsSearch, the last; with ZPAnchoredSearch only the first unit, or only the last
    /// one.
    ZPRange rangeOfCharacterFromSet_options(ZPCharacterSet *set, unsigned options) ZP_ASKS(set, options);
    /// The same within a range.
    ZPRange rangeOfCharacterFromSet_options_range(ZPCharacterSet *set, unsigned options, ZPRange range)
        ZP_ASKS(set, options, range);
    /// The base character at or before an index with its combining marks; surrogate pairs stay whole.
    ZPRange rangeOfComposedCharacterSequenceAtIndex(unsigned index) ZP_ASKS(index);
    /// Whether the text occurs; NO for an empty one.
    BOOL _containsString(ZPString *needle) ZP_ASKS(needle);
    /// A character in the default C-string encoding; NUL is never found.
    BOOL _containsChar(char character) ZP_ASKS(character);
    /// Whether a scanner that scans up to the first member is then not at its end: white space and newlines before
    /// the search are passed over, and a member with nothing but those from there on does not count.
    BOOL _containsCharFromSet(ZPCharacterSet *set) ZP_ASKS(set);

    // ---- pieces and derived strings ----

    /// A part, which may share the receiver's units.
    ZPString *substringWithRange(ZPRange range) ZP_ASKS(range);
    /// From an index, which may be the length, to the end.
    ZPString *substringFromIndex(unsigned index) ZP_ASKS(index);
    /// The units before an index, which may be the length.
    ZPString *substringToIndex(unsigned index) ZP_ASKS(index);
    /// As `substringWithRange`, in a zone (null: the default zone); the caller owns the result.
    ZPString *_newSubstringWithRange_zone(ZPRange range, ZPZone *zone) ZP_ASKS(range, zone);
    /// The same in the receiver's zone.
    ZPString *_newSubstringFromRange_zone(ZPRange range, ZPZone *zone) ZP_ASKS(range, zone);
    /// The pieces between occurrences of the separator, empty ones too; the whole text when there is none.
    ZPArray *componentsSeparatedByString(ZPString *separator) ZP_ASKS(separator);
    /// The non-empty runs between members of the set.
    ZPArray *_componentsSeparatedBySet(ZPCharacterSet *set) ZP_ASKS(set);
    /// The text with another behind it.
    ZPString *stringByAppendingString(ZPString *other) ZP_ASKS(other);
    /// The text with a formatted one behind it.
    template <class... A> ZPString *stringByAppendingFormat(ZPString *format, A... arguments)
        ZP_ASKS_WITH(arguments, format);
    /// Inserts the separator between groups of `frequency` units counted from the end; nowhere when that is not
    /// positive.
    ZPString *_stringWithSeparator_atFrequency(unichar separator, int frequency) ZP_ASKS(separator, frequency);
    /// Replaces `*buffer` (freed in its zone) by a new block of the default zone with the receiver's units;
    /// null for an empty receiver.
    void _copyToUnicharBuffer_saveLength(unichar **buffer, int *length) ZP_TELLS(buffer, length);
    /// Every unit in upper case by the mapping of single units, which may give up to three; surrogates stay.
    ZPString *uppercaseString() ZP_ASKS();
    /// The same in lower case.
    ZPString *lowercaseString() ZP_ASKS();
    /// Title case for every unit that does not follow a letter, lower case for the rest.
    ZPString *capitalizedString() ZP_ASKS();
    /// Flag bit 1 (value 1) selects Turkish rules.
    ZPString *_capitalizedStringWithFlags(unsigned flags) ZP_ASKS(flags);
    /// Control characters and characters outside the default C-string encoding as `\ooo` and `\Uxxxx`.
    ZPString *displayableString() ZP_ASKS();
    /// A case map is one of the ZPConvertTo... functions.
    ZPString *_caseCopyAux_flags(unsigned (*convert)(unichar, unichar *, unsigned), unsigned flags)
        ZP_ASKS(convert, flags);

    // ---- lines and numbers ----

    /// Any pointer may be null. Lines end with LF, CR, CR LF, U+2028 or U+2029.
    void getLineStart_end_contentsEnd_forRange(unsigned *start, unsigned *end, unsigned *contentsEnd, ZPRange range)
        ZP_TELLS(start, end, contentsEnd, range);
    /// The range of the whole lines, separators included, that a range touches.
    ZPRange lineRangeForRange(ZPRange range) ZP_ASKS(range);
    /// The number the text begins with after white space, newlines not among it; 0 without one, out of range the
    /// nearest int.
    int intValue() ZP_ASKS();
    /// The double of `doubleValue` as a float.
    float floatValue() ZP_ASKS();
    /// The number the text begins with after white space, with a decimal point; 0 without one, infinite beyond the
    /// range.
    double doubleValue() ZP_ASKS();

    // ---- C strings, in the default C-string encoding ----

    /// NUL-terminated; valid until the current autorelease pool is emptied, longer than the receiver if need be.
    /// Raises ZPCharacterConversionException for a character that the encoding lacks.
    const char *cString() ZP_ASKS();
    /// The same with approximations for such characters.
    const char *lossyCString() ZP_ASKS();
    /// Bytes without the NUL; 0 when the text cannot be converted.
    unsigned cStringLength() ZP_ASKS();
    /// Writes the whole text and a NUL, for which the buffer must have room; see `cStringLength`. Raises as
    /// `cString`, here and below.
    void getCString(char *buffer) ZP_TELLS(buffer);
    /// Writes the characters that `maxLength` bytes hold and a NUL: the buffer holds maxLength + 1 bytes.
    void getCString_maxLength(char *buffer, unsigned maxLength) ZP_TELLS(buffer, maxLength);
    /// The same for a range; stores what did not fit in `remaining` (may be null).
    void getCString_maxLength_range_remainingRange(char *buffer, unsigned maxLength, ZPRange range, ZPRange *remaining)
        ZP_TELLS(buffer, maxLength, range, remaining);

    // ---- encodings ----

    /// The encoding of C strings.
    static ZPStringEncoding defaultCStringEncoding() ZP_CLASS_ASKS();
    /// A static list that ends with 0.
    static const ZPStringEncoding *availableStringEncodings() ZP_CLASS_ASKS();
    /// From the library's strings table "EncodingNames"; "" for a number that is no encoding.
    static ZPString *localizedNameOfStringEncoding(ZPStringEncoding encoding) ZP_CLASS_ASKS(encoding);
    /// Converts whole characters until `maxLength` bytes are full; a null buffer only counts. `filled` and
    /// `remaining` may be null. NO when a character has no form in the encoding and loss is not allowed. In Shift JIS
    /// and ISO 2022-JP a character that Japanese EUC holds and they do not, such as an accented letter, counts as one
    /// with a form: it becomes '?' in Shift JIS; in ISO 2022-JP an approximation of one byte without loss, and nothing
    /// with loss.
    BOOL getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
        void *buffer, unsigned maxLength, unsigned *filled, ZPStringEncoding encoding, BOOL lossy, ZPRange range,
        ZPRange *remaining) ZP_ASKS(buffer, maxLength, filled, encoding, lossy, range, remaining);
    /// ISO 2022-JP of a range; a null buffer only counts, another must have room for 5 bytes a unit and 3 more. NO
    /// when a character has no form, as the message above says, and loss is not allowed.
    BOOL _getBytesInJISEncoding_range_usedBytes_lossy(void *buffer, ZPRange range, unsigned *usedBytes, BOOL lossy)
        ZP_ASKS(buffer, range, usedBytes, lossy);
    /// The text's bytes; with `lossy` "_", in ASCII approximations, for characters that the encoding lacks, else null.
    /// Shift JIS and ISO 2022-JP lose some characters either way: see `getBytes`; read the bytes again to be sure.
    /// Unicode begins with a byte-order mark. An encoding that does not exist is logged and gives null.
    ZPData *dataUsingEncoding_allowLossyConversion(ZPStringEncoding encoding, BOOL lossy) ZP_ASKS(encoding, lossy);
    /// The same without loss.
    ZPData *dataUsingEncoding(ZPStringEncoding encoding) ZP_ASKS(encoding);
    /// Whether `dataUsingEncoding` answers bytes. Shift JIS and ISO 2022-JP are asked as Japanese EUC, so YES does not
    /// say for them that the bytes read back as the text.
    BOOL canBeConvertedToEncoding(ZPStringEncoding encoding) ZP_ASKS(encoding);

    // ---- files, archives, property lists ----

    /// Writes the text in the default C-string encoding, or UTF-16 with a byte-order mark where that cannot hold
    /// it; with `atomically` the file is there whole or not at all. NO, with the reason in `errno`, when it fails.
    BOOL writeToFile_atomically(ZPString *path, BOOL atomically) ZP_ASKS(path, atomically);
    /// The class that archives name: ZPString, or ZPMutableString.
    Class classForCoder() ZP_ASKS();
    /// The tree that the text describes, see ZPPropertyList.h; raises ZPParseErrorException when it describes none.
    id propertyList() ZP_ASKS();
    /// The dictionary of a strings file's text, `"key" = "value";` line by line; raises ZPParseErrorException for
    /// other text.
    ZPDictionary *propertyListFromStringsFileFormat() ZP_ASKS();
    /// The text with quotes and escapes where the property-list form needs them.
    ZPString *_stringRepresentation() ZP_ASKS();
    /// The text in double quotes, with escapes, whatever it holds.
    ZPString *quotedStringRepresentation() ZP_ASKS();

    // ---- ZPPathUtilities: file paths, see ZPPathUtilities.h ----

    /// Joins components ("C:", "\\", "a"); one that cannot follow, as a drive behind a name, is logged and left out.
    static ZPString *pathWithComponents(ZPArray *components) ZP_CLASS_ASKS(components);
    /// A drive, a separator before the first name, and the names.
    ZPArray *pathComponents() ZP_ASKS();
    /// Whether the path begins with "~", a network share, or a drive and a separator. A single separator does not
    /// count.
    BOOL isAbsolutePath() ZP_ASKS();
    /// The name behind the last separator that does not end the path; behind the drive when there is none.
    ZPString *lastPathComponent() ZP_ASKS();
    /// The path without that name and the separators before it, but for a root's: "C:\a" gives "C:\", "/a" a separator.
    /// Empty for a name alone and for a lone separator; the root "C:\" itself gives "C:", and of a share the server
    /// stays.
    ZPString *stringByDeletingLastPathComponent() ZP_ASKS();
    /// Logs and answers the receiver when the component cannot follow it, or the result is longer than 4,095 units.
    ZPString *stringByAppendingPathComponent(ZPString *component) ZP_ASKS(component);
    /// What follows the last dot of the last component, unless the component begins with that dot; empty for "..".
    ZPString *pathExtension() ZP_ASKS();
    /// The path without its extension and the dot before it. The extension may be empty: "a." gives "a", ".." gives
    /// ".".
    ZPString *stringByDeletingPathExtension() ZP_ASKS();
    /// Logs and answers the receiver when it has no name to extend.
    ZPString *stringByAppendingPathExtension(ZPString *extension) ZP_ASKS(extension);
    /// With "~" in place of the user's home directory.
    ZPString *stringByAbbreviatingWithTildeInPath() ZP_ASKS();
    /// With the home directory in place of "~" or "~name"; unchanged when there is none.
    ZPString *stringByExpandingTildeInPath() ZP_ASKS();
    /// Expands the tilde and takes out what is not needed: doubled separators, "." and, in an absolute path, "..". A
    /// path that begins with a single separator is not absolute, so "/var/../log" keeps its "..". Looks at no file.
    ZPString *stringByStandardizingPath() ZP_ASKS();
    /// Standardizes; then, in an absolute path and one that begins with a separator, resolves the symbolic links of the
    /// part that exists.
    ZPString *stringByResolvingSymlinksInPath() ZP_ASKS();
    /// The receiver with each of the paths appended.
    ZPArray *stringsByAppendingPaths(ZPArray *paths) ZP_ASKS(paths);
    /// Looks for files whose paths begin with the receiver; with a list of extensions only for directories and
    /// files that have one of them. Answers how many there are; 0 stores nothing. Otherwise `*completion` is what
    /// they have in common, and `*matches` are their paths; either pointer may be null.
    unsigned completePathIntoString_caseSensitive_matchesIntoArray_filterTypes(ZPString **completion,
                                                                               BOOL caseSensitive, ZPArray **matches,
                                                                               ZPArray *extensions)
        ZP_ASKS(completion, caseSensitive, matches, extensions);
    /// The path with backslashes in the file system's encoding, from which `ZPHostPathFromPath` makes the host's;
    /// valid until the current autorelease pool is emptied. U+DC80 to U+DCFF stand for bytes of names that mean
    /// nothing in the encoding. An empty path, and one that the encoding does not hold, raises
    /// ZPInvalidArgumentException.
    const char *fileSystemRepresentation() ZP_ASKS();
    /// The same in a buffer of `maxLength` bytes, NUL included; NO when it does not fit, and where the other
    /// raises.
    BOOL getFileSystemRepresentation_maxLength(char *buffer, unsigned maxLength) ZP_ASKS(buffer, maxLength);
};

extern "C" {
// Units and bytes without a string object; any thread. Comparisons answer -1, 0 or +1 by unit values, and
// ZPCaseInsensitiveSearch folds ASCII letters. Equal texts hash alike in every form.

/// On units.
ZP_EXPORT ZPComparisonResult ZPCompareCharacters(const unichar *a, const unichar *b, unsigned lengthA, unsigned lengthB,
                                                 unsigned options);
/// On bytes in the 8-bit storage encoding.
ZP_EXPORT ZPComparisonResult ZPCompareCString(const char *a, const char *b, unsigned lengthA, unsigned lengthB,
                                              unsigned options);
/// The hash of units: the number of them, and 16 of them at most.
ZP_EXPORT unsigned ZPHashCharacters(const unichar *characters, unsigned length);
/// The hash of bytes in the 8-bit storage encoding.
ZP_EXPORT unsigned ZPHashCString(const char *bytes, unsigned length);
/// The hash of a string, as `hash` answers it.
ZP_EXPORT unsigned ZPHashString(ZPString *string);

// The case mapping of one unit: writes one to three units and answers how many. Flag value 1 selects Turkish
// rules.

/// To upper case.
ZP_EXPORT unsigned ZPConvertToUpper(unichar unit, unichar *output, unsigned flags);
/// To lower case.
ZP_EXPORT unsigned ZPConvertToLower(unichar unit, unichar *output, unsigned flags);
/// To the case at the beginning of a word.
ZP_EXPORT unsigned ZPConvertToTitle(unichar unit, unichar *output, unsigned flags);

/// "YES" for a non-zero flag, else "NO".
ZP_EXPORT ZPString *ZPStringFromBOOL(BOOL flag);

// Constructors whose result the caller owns; a null zone means the default zone.

/// Copies bytes in the 8-bit storage encoding.
ZP_EXPORT ZPString *_ZPNewInlineCString(const char *bytes, unsigned length, ZPZone *zone);
/// An 8-bit copy of a string that the default C-string encoding can hold.
ZP_EXPORT ZPString *_ZPNewInlineCStringFromString(ZPString *string, ZPZone *zone);
/// From bytes in the default C-string encoding up to the NUL.
ZP_EXPORT ZPString *_ZPNewStringFromCString(const char *bytes);
/// The object that `alloc` answers for ZPString in a zone; lives as long as the process.
ZP_EXPORT ZPString *_ZPPlaceholderStringFromZone(ZPZone *zone);
}
