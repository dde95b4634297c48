// SPDX-License-Identifier: MIT
// Making parsers, the settings of their tokenizer, and errors.
#include <Bedrock/archiving/grammar/Grammar.h>

#include <algorithm>
#include <utility>

ZP_STRING_CONSTANT(ZPParseErrorExplanationKey, "Explanation");

namespace {

using Set = std::bitset<256>;

void addRange(Set &set, char first, char last) {
    for (unsigned c = static_cast<unsigned char>(first); c <= static_cast<unsigned char>(last); ++c) set.set(c);
}
void addCharacters(Set &set, ZPString *characters) {
    if (!characters) return;
    for (const char *c = characters->cString(); *c; ++c) set.set(static_cast<unsigned char>(*c));
}
void setUnquoted(Set &set, ZPString *characters, BOOL lower, BOOL upper, BOOL digits) {
    Set made;
    if (lower) addRange(made, 'a', 'z');
    if (upper) addRange(made, 'A', 'Z');
    if (digits) addRange(made, '0', '9');
    addCharacters(made, characters);
    set = made;
}

struct ZPParserMethods : ZPParser {
    _ZPParserState &s() { return *_state; }

    id init() { return self()->initWithGrammar(nullptr); }
    id initWithGrammar(ZPDictionary *grammar) {
        ZPZone *zone = self()->zone();
        if (!_state) _state = new _ZPParserState(zone);
        if (grammar) {
            if (s().grammar) s().grammar->release();
            s().grammar = grammar->copyWithZone(zone);
        }
        self()->setUnquotedStringStartCharacters_lowerCaseLetters_upperCaseLetters_digits("_$/:."_zp, YES, YES, YES);
        self()->setUnquotedStringCharacters_lowerCaseLetters_upperCaseLetters_digits("_$/:."_zp, YES, YES, YES);
        self()->setMonoCharacterSeparatorCharacters_usualPunctuation(nullptr, YES);
        self()->setQuotingWithSingleQuote_double(NO, YES);
        s().load(nullptr);
        return this;
    }
    void dealloc() {
        delete _state;
        ZP_SUPER(ZPParser, dealloc)();
    }

    void setUnquotedStringStartCharacters_lowerCaseLetters_upperCaseLetters_digits(ZPString *characters, BOOL lower,
                                                                                   BOOL upper, BOOL digits) {
        setUnquoted(s().unquotedStart, characters, lower, upper, digits);
    }
    void setUnquotedStringCharacters_lowerCaseLetters_upperCaseLetters_digits(ZPString *characters, BOOL lower,
                                                                              BOOL upper, BOOL digits) {
        setUnquoted(s().unquoted, characters, lower, upper, digits);
    }
    void setMonoCharacterSeparatorCharacters_usualPunctuation(ZPString *characters, BOOL punctuation) {
        Set made;
        if (punctuation)
            for (auto [first, last] :
                 {std::pair('!', '/'), std::pair(':', '@'), std::pair('[', '`'), std::pair('{', '~')})
                addRange(made, first, last);
        addCharacters(made, characters);
        s().separators = made;
    }
    void setMultipleCharacterSeparators(ZPArray *separators) {
        unsigned count = separators ? separators->count() : 0;
        for (unsigned i = 0; i < count; ++i) {
            ZPString *separator = separators->objectAtIndex(i);
            if (separator->length() < 2)
                ZPException::raise_format(ZPInvalidArgumentException,
                                          "%@: Separator strings expected to be at least 2 characters in length: %@"_zp,
                                          _ZPMethodExceptionProem(this, "setMultipleCharacterSeparators:"_sel),
                                          separator);
        }
        ZPArray *sorted = separators->sortedArrayUsingSelector("compare:"_sel);
        std::vector<std::string> list;
        Set first, second;
        // The last first, so that a separator is tried before one that it begins with.
        for (unsigned i = count; i-- > 0;) {
            const std::string &text = list.emplace_back(sorted->objectAtIndex(i).as<ZPString>()->cString());
            first.set(static_cast<unsigned char>(text[0]));
            second.set(static_cast<unsigned char>(text[1]));
        }
        s().multiSeparators = std::move(list);
        s().multiFirst = first;
        s().multiSecond = second;
    }
    void setQuotingWithSingleQuote_double(BOOL single, BOOL twofold) {
        s().singleQuotes = single;
        s().doubleQuotes = twofold;
    }
    void setEnableIntegerParsing(BOOL flag) { s().integers = flag; }
    void setEnableFloatParsing(BOOL flag) { s().floats = flag; }
    void setString(ZPString *string) { s().load(string); }

    void parseError(ZPString *format, std::va_list arguments) {
        ZPString *message = ZPString::alloc()->initWithFormat_arguments(format, arguments)->autorelease();
        std::vector<id> names(s().units.begin(), s().units.end());
        ZPArray *units = ZPArray::arrayWithObjects_count(names.data(), unsigned(names.size()));
        ZPString *token = s().token.pending ? s().tokenString() : ""_zp;
        ZPString *reason = ZPString::stringWithFormat(
            "*** %@;\nParse error line %d (position %d) for units: %@;\nNext token is '%@'"_zp, message, s().line,
            s().position, units, token);
        ZPString *phrase = std::exchange(s().phrase, nullptr);
        ZPString *explanation = s().explanation(phrase ? phrase : message);
        ZPException::exceptionWithName_reason_userInfo(
            ZPParseErrorException, reason,
            ZPDictionary::dictionaryWithObject_forKey(explanation, ZPParseErrorExplanationKey))
            ->raise();
    }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPParser, ZPParserMethods, init, initWithGrammar, dealloc,
                  setUnquotedStringStartCharacters_lowerCaseLetters_upperCaseLetters_digits,
                  setUnquotedStringCharacters_lowerCaseLetters_upperCaseLetters_digits,
                  setMonoCharacterSeparatorCharacters_usualPunctuation, setMultipleCharacterSeparators,
                  setQuotingWithSingleQuote_double, setEnableIntegerParsing, setEnableFloatParsing, setString,
                  variadic(parseError));
