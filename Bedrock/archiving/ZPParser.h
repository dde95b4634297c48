// SPDX-License-Identifier: MIT
// A parser for small languages: a tokenizer with settable character classes, and a grammar given as text.
//
//     ZPDictionary *grammar = ZPParser::parsedGrammarForString("Sum = Term '+' Sum | Term; Term = parseNumber;"_zp);
//     ZPParser *parser = ZPParser::alloc()->initWithGrammar(grammar);
//     parser->setString(text);
//     id tree = parser->expect("Sum"_zp);
//     parser->expectEndOfInput();
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPArray);
ZP_FORWARD(ZPData);
ZP_FORWARD(ZPDictionary);
ZP_FORWARD(ZPString);
struct _ZPParserState;

/// In the user information of a parse error: what it says to a person, a string of three lines, such as
///
///     line 2, column 7: expected ';' or '}', found 'size'
///     name size = 3;
///          ^
ZP_EXPORT extern ZPString *const ZPParseErrorExplanationKey;

/// Kinds of tokens, which combine into masks.
enum : unsigned {
    ZPEndToken = 1,  ///< the end of the text
    ZPQuotedToken = 2,  ///< a string in quotes
    ZPUnquotedToken = 4,  ///< a string without
    ZPIntegerToken = 8,  ///< an integer, where `setEnableIntegerParsing:` is on
    ZPFloatToken = 16,  ///< another number, where `setEnableFloatParsing:` is on
    ZPSeparatorToken = 32,  ///< a character that separates
    ZPOtherToken = 128,  ///< a single character that is nothing else
};

/// Reads a text token by token and by the rules of a grammar.
///
/// A grammar maps a rule's name to what it stands for. As text, a rule is `name = body ;`. A body is a sequence,
/// or several joined by `|` (the first that succeeds) or by `||` (the same, where a later one begins again at
/// the start when an earlier one raises). A sequence is one or more of: the name of a rule or of a method of the
/// parser without arguments, a token in quotes, and `< sequence >`, which stands for one or more. Its result is
/// that of its only element that is not a token in quotes, else an array of all results.
///
/// Operations that parse answer null, and consume nothing, when the text does not begin as they want it; those
/// that expect raise ZPParseErrorException, as any error later on does; a parser that has raised is of no
/// further use. Rules nested more than 3,003 deep are an error. Strings that a parser answers belong to it:
/// equal ones are one object, and `setString:` and deallocation autorelease them. For one thread at a time.
struct ZPParser : ZPObject {
    ZP_CLASS(ZPParser)
    _ZPParserState *_state;

    /// The grammar that a text describes; raises ZPParseErrorException.
    static ZPDictionary *parsedGrammarForString(ZPString *text) ZP_CLASS_ASKS(text);
    /// Copies the grammar (null: none). Unquoted strings are of letters, digits and `_$/:.`, ASCII punctuation
    /// separates, double quotes quote, and numbers are not told apart.
    ZPParser *initWithGrammar(ZPDictionary *grammar) ZP_ASKS(grammar);

    // ---- what tokens are made of; each takes the place of what was set before ----

    /// What unquoted strings begin with: the characters, and the kinds that are YES.
    void setUnquotedStringStartCharacters_lowerCaseLetters_upperCaseLetters_digits(ZPString *characters, BOOL lower,
                                                                                   BOOL upper, BOOL digits)
        ZP_TELLS(characters, lower, upper, digits);
    /// What unquoted strings hold behind their first character, by the same means.
    void setUnquotedStringCharacters_lowerCaseLetters_upperCaseLetters_digits(ZPString *characters, BOOL lower,
                                                                              BOOL upper, BOOL digits)
        ZP_TELLS(characters, lower, upper, digits);
    /// What stands for itself as a token: the characters, and ASCII punctuation when `punctuation`.
    void setMonoCharacterSeparatorCharacters_usualPunctuation(ZPString *characters, BOOL punctuation)
        ZP_TELLS(characters, punctuation);
    /// Separators of two or more characters, else ZPInvalidArgumentException. The longest that fits is taken.
    void setMultipleCharacterSeparators(ZPArray *separators) ZP_TELLS(separators);
    /// Which quotes quote.
    void setQuotingWithSingleQuote_double(BOOL single, BOOL twofold) ZP_TELLS(single, twofold);
    /// Whether runs of digits are tokens of their own kind.
    void setEnableIntegerParsing(BOOL flag) ZP_TELLS(flag);
    /// Whether numbers with a point or an exponent are tokens of their own kind.
    void setEnableFloatParsing(BOOL flag) ZP_TELLS(flag);

    // ---- tokens ----

    /// The text to parse from now on, copied.
    void setString(ZPString *string) ZP_TELLS(string);
    /// Reads a token, whatever is pending.
    void nextToken() ZP_TELLS();
    /// The kind of the pending token, which is read when there is none.
    unsigned peekTokenType() ZP_ASKS();
    /// The pending token's text, not consumed, when its kind is in the mask.
    ZPString *peekTokenWithMask(unsigned mask) ZP_ASKS(mask);
    /// Consumes a token whose kind is in the mask.
    ZPString *parseTokenWithMask(unsigned mask) ZP_ASKS(mask);
    /// Consumes an unquoted string.
    ZPString *parseUnquotedString() ZP_ASKS();
    /// Consumes a quoted string, of which it answers the inside.
    ZPString *parseQuotedString() ZP_ASKS();
    /// Consumes an unquoted or a quoted string.
    ZPString *parseString() ZP_ASKS();
    /// Consumes a number, whose text it answers; where numbers are told apart.
    ZPString *parseNumber() ZP_ASKS();
    /// Consumes a separator.
    ZPString *parseSeparator() ZP_ASKS();
    /// Consumes a token of those kinds with the literal's text, and answers the literal.
    ZPString *parseTokenEqualTo_mask(ZPString *literal, unsigned mask) ZP_ASKS(literal, mask);
    /// Consumes that separator, and answers it.
    ZPString *parseSeparatorEqualTo(ZPString *literal) ZP_ASKS(literal);
    /// The same, or raises.
    ZPString *expectSeparatorEqualTo(ZPString *literal) ZP_ASKS(literal);
    /// As `parseTokenEqualTo_mask`, or raises.
    ZPString *expectTokenEqualTo_mask(ZPString *literal, unsigned mask) ZP_ASKS(literal, mask);
    /// Raises unless nothing but white space and comments is left.
    void expectEndOfInput() ZP_TELLS();

    // ---- rules ----

    /// Runs a rule, or the method of that name when the grammar has no such rule; a name of neither kind is logged,
    /// and nothing found.
    id parse(ZPString *rule) ZP_ASKS(rule);
    /// The same, or raises "... expected".
    id expect(ZPString *rule) ZP_ASKS(rule);
    /// A rule any number of times. Without a separator (null) the elements follow each other; else a separator
    /// follows each element, where `omitLast` allows the last element to end without one.
    ZPArray *parseSuite_separator_allowOmitLastSeparator(ZPString *rule, ZPString *separator, BOOL omitLast)
        ZP_ASKS(rule, separator, omitLast);
    /// Pairs of a key and a value, by the same rules; of equal keys the last one counts.
    ZPDictionary *parseSuiteOfPairsKey_separator_value_separator_allowOmitLastSeparator(
        ZPString *key, ZPString *keySeparator, ZPString *value, ZPString *separator, BOOL omitLast)
        ZP_ASKS(key, keySeparator, value, separator, omitLast);
    /// The same in braces, `{ key = value; ... }`.
    ZPDictionary *parseDictionaryOfKey_value(ZPString *key, ZPString *value) ZP_ASKS(key, value);
    /// Hexadecimal digits in angle brackets; an odd number of them raises.
    ZPData *parseData() ZP_ASKS();
    /// What a person calls what a rule stands for, as in "expected a value"; the rule's name unless the parser knows
    /// better. For subclasses to override.
    ZPString *wordsForRule(ZPString *rule) ZP_ASKS(rule);
    /// Raises ZPParseErrorException with a formatted message, line, position, rules and next token; what it says to a
    /// person is under ZPParseErrorExplanationKey in its user information.
    template <class... A> void parseError(ZPString *format, A... arguments) ZP_TELLS_WITH(arguments, format);

    // ---- the notation of grammars itself ----

    /// One element of a sequence, and whether its result counts. Answers the node it makes; null when the text
    /// begins with none.
    id parseMetaSyntaxLeafResultShouldBeSkipped(BOOL *skipped) ZP_ASKS(skipped);
    /// A sequence, as the above.
    id parseMetaSyntaxSequence() ZP_ASKS();
    /// What a rule says, as the above.
    id parseMetaRuleBody() ZP_ASKS();
};
