// SPDX-License-Identifier: MIT
// Property lists: trees of strings, data objects, arrays and dictionaries with string keys, and their text.
//
//     { name = "A. Nother"; sizes = (1, 2, 3); key = <0fbd77>; }    // and comments
//
// `-[ZPString propertyList]` reads the text; `description` of arrays and dictionaries writes it. Arrays and
// dictionaries nested more than 1,000 deep are an error on reading, and raise ZPInvalidArgumentException on writing.
#pragma once

#include <Bedrock/archiving/ZPParser.h>

/// The parser of property lists: rules xObject, Dictionary, Array, Data and String.
struct ZPPropertyListParser : ZPParser {
    ZP_CLASS(ZPPropertyListParser)
    /// Prepares to read the string, which the parser retains.
    ZPPropertyListParser *initWithString(ZPString *string) ZP_ASKS(string);
    /// An array in parentheses. Null when the text does not begin with one; raises for an error inside.
    ZPArray *parseArray() ZP_ASKS();
    /// A dictionary in braces. Null when the text does not begin with one; raises for an error inside.
    ZPDictionary *parseDictionary() ZP_ASKS();
};

/// The parser of strings files: a key without a value stands for itself, and the whole text is the inside of a
/// dictionary.
struct _ZPPListParserOldStyle : ZPPropertyListParser {
    ZP_CLASS(_ZPPListParserOldStyle)
    /// The entries of a dictionary without its brackets, as strings files have them.
    ZPDictionary *parseDictionaryBracketLess() ZP_ASKS();
};

extern "C" {
/// 1 for a string, 2 for data, 3 for an array, 4 for a dictionary, 0 for anything else; with `deep` also 0 when
/// something inside is no property list. Any thread.
ZP_EXPORT unsigned _ZPIsPList(id object, BOOL deep);
/// 4 spaces a level, at most 1,000 levels; the string lives as long as the process.
ZP_EXPORT ZPString *_ZPIndentSpace(unsigned level);
}
