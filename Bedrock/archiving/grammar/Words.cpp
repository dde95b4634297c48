// SPDX-License-Identifier: MIT
// What an error says to a person: what was looked for and what is there, in the words of the language that is read, and
// where.
#include <Bedrock/archiving/grammar/Grammar.h>

namespace {

constexpr unsigned mostOfALine = 76, mostOfAToken = 30;

// What the names of this class's own methods mean; a rule of a grammar is known by its name.
ZPString *wordsOf(ZPString *rule) {
    const std::pair<ZPString *, ZPString *> known[] = {
        {"parseString"_zp, "a string"_zp}, {"parseUnquotedString"_zp, "a word"_zp},
        {"parseNumber"_zp, "a number"_zp}, {"parseQuotedString"_zp, "a string in quotes"_zp},
        {"parseData"_zp, "data"_zp},       {"parseSeparator"_zp, "a separator"_zp}};
    for (auto &[method, words] : known)
        if (method->isEqualToString(rule)) return words;
    return rule;
}

struct Words : ZPParser {
    ZPString *wordsForRule(ZPString *rule) { return wordsOf(rule); }
};

ZP_CATEGORY(ZPParser, Words, wordsForRule);

}  // namespace

void _ZPParserState::forgetTried(std::size_t down) {
    while (tried.size() > down) {
        tried.back().name->release();
        tried.pop_back();
    }
}

ZPString *_ZPParserState::expectation(ZPParser *parser, ZPString *last) {
    ZPMutableArray *all = ZPMutableArray::array();
    for (std::size_t i = 0; i < tried.size(); ++i) {
        ZPString *name = tried[i].name->retain()->autorelease();  // the parser's words may be a client's code
        ZPString *words = tried[i].isRule ? parser->wordsForRule(name) : ZPString::stringWithFormat("'%@'"_zp, name);
        if (!all->containsObject(words)) all->addObject(words);
    }
    if (last) all->addObject(last);
    if (!all->count()) all->addObject("something else"_zp);
    ZPMutableString *text = ZPMutableString::stringWithFormat("expected %@"_zp, all->objectAtIndex(0));
    for (unsigned i = 1, count = all->count(); i < count; ++i)
        text->appendFormat(i + 1 == count ? " or %@"_zp : ", %@"_zp, all->objectAtIndex(i));
    if (!token.pending) return text;
    if (token.kind == ZPEndToken) text->appendString(", found the end of the text"_zp);
    else {
        ZPString *found = tokenString();
        bool isLong = found->length() > mostOfAToken;
        if (isLong)
            found = found->substringToIndex(found->rangeOfComposedCharacterSequenceAtIndex(mostOfAToken).location);
        text->appendFormat(token.kind == ZPQuotedToken ? ", found \"%@%@\""_zp : ", found '%@%@'"_zp, found,
                           isLong ? "..."_zp : ""_zp);
    }
    return text;
}

ZPString *_ZPParserState::explanation(ZPString *words) {
    unsigned place = tokenAt;
    // Nothing is found where the text ends, not at the start of an empty line behind it.
    while (token.kind == ZPEndToken && place > 0 &&
           (at(place - 1) == ' ' || (at(place - 1) >= 9 && at(place - 1) <= 13)))
        --place;
    unsigned from = place, to = place, number = 1;
    while (from > 0 && at(from - 1) != '\n') --from;
    while (to < length && at(to) && at(to) != '\n' && at(to) != '\r') ++to;
    for (unsigned i = 0; i < from; ++i) number += at(i) == '\n';
    unsigned column = place - from + 1;
    // Of a long line what is around the place.
    if (place - from > mostOfALine / 2) from = place - mostOfALine / 2;
    to = std::min(to, from + mostOfALine);
    if ((at(from) & 0xFC00) == 0xDC00) ++from;  // half a pair
    ZPMutableString *text = ZPMutableString::stringWithFormat("line %u, column %u: %@"_zp, number, column, words);
    ZPString *line = nullptr;
    if (inputIsNarrow) line = ZPString::stringWithCString_length(narrowInput.data() + from, to - from);
    else line = ZPString::stringWithCharacters_length(reinterpret_cast<unichar *>(wideInput.data()) + from, to - from);
    text->appendFormat("\n%@\n"_zp, line ? line : ""_zp);  // null where a character of several bytes was cut
    for (unsigned i = from; i < place; ++i) text->appendString(at(i) == '\t' ? "\t"_zp : " "_zp);
    text->appendString("^"_zp);
    return text;
}
