// SPDX-License-Identifier: MIT
// The room of the parser: tokens (Tokens.cpp), what it does with them (Parser.cpp), and rules by which it reads a text
// (Rules.cpp); and what an error says to a person (Words.cpp). Programs see it as ZPParser.h, the room of property
// lists also takes the limits here, and Escapes.h. Read this first, then Tokens.cpp.
//
// What a parser holds:
//
// The input is bytes or units, with a zero behind it; a zero ends it. A token is pending when it has been read
// and not yet consumed. Its text lies in the input (`tokenStart`) or in one of the buffers; the buffer is narrow,
// with characters below 128 only, until a character above that is stored.
#pragma once

#include <Bedrock/archiving/ZPPropertyList.h>
#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/strings/ZPMutableString.h>
#include <Bedrock/tables/ZPHashTable.h>

#include <bitset>
#include <string>
#include <vector>

inline constexpr unsigned _ZPMaximumRules =
    3003;  ///< nested rules: three a level of a property list, and three for what lies in it
inline constexpr unsigned _ZPMaximumLevels = 1000;  ///< nested arrays and dictionaries
inline constexpr unsigned _ZPAllResults = 0x7FFFFFFF;

/// One element of a grammar; immutable.
struct _ZPParserSyntaxNode : ZPObject {
    ZP_PRIVATE_CLASS(_ZPParserSyntaxNode)
    enum Kind : unsigned { Literal, Sequence, Alternatives, Backtracking, Repetition };
    unsigned _kind;
    unsigned _resultIndex;  ///< of a sequence: whose result it answers, or _ZPAllResults
    id _argument;  ///< the literal, the array of elements, or what is repeated

    static _ZPParserSyntaxNode *node(Kind kind, id argument, unsigned resultIndex = _ZPAllResults);
};

struct _ZPParserState {
    static constexpr unsigned inBuffer = 0x7FFFFFFF;

    ZPZone *zone;
    ZPDictionary *grammar = nullptr;

    // Lexical tables, by character code.
    std::bitset<256> unquotedStart, unquoted, separators, multiFirst, multiSecond;
    std::vector<std::string> multiSeparators;
    bool singleQuotes = false, doubleQuotes = true, integers = false, floats = false;

    // Input.
    std::string narrowInput;
    std::u16string wideInput;
    bool inputIsNarrow = true;
    unsigned length = 0, position = 0, line = 1;

    // The token.
    struct Token {
        bool pending = false;
        bool bufferIsNarrow = true;
        unsigned kind = 0, length = 0, start = inBuffer;
    } token;
    std::string narrowBuffer;
    std::u16string wideBuffer;
    unsigned tokenAt = 0;  ///< where in the input the last token that was read begins

    /// What was looked for in vain where the last token begins, for the words of an error.
    struct Tried {
        ZPString *name;  ///< owned
        bool isRule;  ///< else a literal
    };
    std::vector<Tried> tried;
    ZPString *phrase = nullptr;  ///< the words of the error that is about to be raised, where they are not its message

    std::vector<ZPString *> units;  ///< the names of the rules being parsed, owned
    ZPHashTable *strings = nullptr;

    explicit _ZPParserState(ZPZone *z) : zone(z) {}
    ~_ZPParserState();

    unsigned at(unsigned i) const { return inputIsNarrow ? static_cast<unsigned char>(narrowInput[i]) : wideInput[i]; }
    /// The character at the position, which then moves on; stays behind the end.
    unsigned read() {
        if (position > length) return 0;
        unsigned c = at(position++);
        if (c == '\n') ++line;
        return c;
    }
    unsigned peek() const { return position > length ? 0 : at(position); }
    static bool in(const std::bitset<256> &set, unsigned c) { return c < 256 && set[c]; }

    void load(ZPString *string);
    void store(unsigned character);
    /// Stores a character of the input as it is: a byte by its Unicode value.
    void storeInput(unsigned character);
    void releaseUnits(std::size_t down);
    /// Owns the name.
    void addTried(ZPString *name, bool isRule) { tried.push_back({name, isRule}); }
    void forgetTried(std::size_t down);
    /// "expected a word or ';', found the end of the text", from what was tried; `last` comes behind it.
    ZPString *expectation(ZPParser *parser, ZPString *last = nullptr);
    /// The words with the place, and the line of the input with a mark below it.
    ZPString *explanation(ZPString *words);
    void autoreleaseStrings();
    /// The pending token's text; entered in the string table.
    ZPString *tokenString();
    ZPString *intern(ZPString *owned);
    bool tokenEquals(ZPString *literal);
};
