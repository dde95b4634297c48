// SPDX-License-Identifier: MIT
// The tokenizer.
#include <Bedrock/archiving/grammar/Escapes.h>
#include <Bedrock/archiving/grammar/Grammar.h>
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/strings/cluster/Cluster.h>

namespace {

struct Tokenizer : ZPParser {
    _ZPParserState &s() { return *_state; }

    // Answers the first character of a token, or 0 at the end.
    unsigned skip() {
        for (;;) {
            unsigned c = s().read();
            if ((c >= 9 && c <= 13) || c == ' ') continue;
            if (c != '/') return c;
            if (s().peek() == '/') {
                while (unsigned next = s().peek()) {
                    if (next == '\n') break;
                    s().read();
                }
            } else if (s().peek() == '*') {
                s().read();
                for (unsigned last = 0;;) {
                    c = s().read();
                    if (!c) return 0;
                    if (last == '*' && c == '/') break;
                    last = c;
                }
            } else return c;
        }
    }

    void quoted(unsigned quote) {
        for (;;) {
            unsigned c = s().read();
            if (c == quote) return;
            if (!c) unterminated();
            if (c == '\\') escape();
            else if (c >= 0x80 && s().inputIsNarrow) narrowCharacter(c);
            else s().store(c);
        }
    }
    void unterminated() {
        s().phrase = "the string that begins here does not end"_zp;
        self()->parseError("Unterminated string constant"_zp);
    }

    // A byte above 127: by the storage encoding, or the sequence of Japanese EUC that it begins.
    void narrowCharacter(unsigned byte) {
        if (_ZPDefaultCStringEncoding() != ZPJapaneseEUCStringEncoding || !sequence(byte))
            s().store(ZPKESTRELToPrecompUnicode(static_cast<unsigned char>(byte)));
    }
    // Apart: few texts have one, and what it owns costs who reads tokens.
    [[gnu::noinline]] bool sequence(unsigned byte) {
        unsigned size = byte == 0x8F ? 3 : 2, first = s().position - 1, count;
        _ZPBlock<void> decoded;
        BOOL isASCII;
        if (s().length - first < size ||
            !_ZPConvertToASCIIorUnicode(s().narrowInput.data() + first, size, ZPJapaneseEUCStringEncoding,
                                        decoded.place(), &count, &isASCII, nullptr))
            return false;
        for (unsigned i = 0; i < count; ++i)
            s().store(isASCII ? static_cast<unsigned char *>(decoded.get())[i]
                              : static_cast<unichar *>(decoded.get())[i]);
        s().position = first + size;
        return true;
    }

    void escape() {
        unsigned c = s().read();
        if (!c) return unterminated();
        bool isItself = !_ZPReadEscape(s(), c);
        if (isItself && c >= 0x80 && s().inputIsNarrow) return narrowCharacter(c);
        s().store(c);
    }

    unsigned digitsFrom(unsigned i) {
        while (i < s().length && _ZPIsDigit(s().at(i))) ++i;
        return i;
    }
    // Answers the token's kind, 0 when there is no number.
    unsigned number() {
        unsigned start = s().position - 1, integerEnd = start, floatEnd = start;
        if (s().integers) integerEnd = digitsFrom(start);
        if (s().floats) {
            unsigned whole = digitsFrom(start), i = whole;
            bool any = whole > start;
            if (i < s().length && s().at(i) == '.') {
                unsigned fraction = digitsFrom(i + 1);
                any |= fraction > i + 1;
                if (any) i = fraction;
            }
            if (any && i < s().length && (s().at(i) | 0x20) == 'e') {
                unsigned digits = i + 1;
                if (digits < s().length && (s().at(digits) == '+' || s().at(digits) == '-')) ++digits;
                unsigned end = digitsFrom(digits);
                if (end > digits) i = end;
            }
            if (any) floatEnd = i;
        }
        unsigned end = floatEnd > integerEnd ? floatEnd : integerEnd;
        if (end == start) return 0;
        inInput(start, end);
        return floatEnd > integerEnd ? ZPFloatToken : ZPIntegerToken;
    }
    void inInput(unsigned start, unsigned end) {
        s().token.start = start;
        s().token.length = end - start;
        s().position = end;
    }

    void unquotedInInput() {
        unsigned start = s().position - 1, i = s().position;
        for (; i < s().length; ++i) {
            unsigned c = s().at(i);
            if (!_ZPParserState::in(s().unquoted, c)) break;
            if (c >= 0x80) {
                s().storeInput(s().at(start));
                return unquotedCopied();
            }
        }
        inInput(start, i);
    }
    void unquotedCopied() {
        while (s().position < s().length && _ZPParserState::in(s().unquoted, s().peek())) s().storeInput(s().read());
    }

    bool multiSeparator(unsigned first) {
        if (!_ZPParserState::in(s().multiFirst, first) || !_ZPParserState::in(s().multiSecond, s().peek()))
            return false;
        for (const std::string &separator : s().multiSeparators) {
            unsigned i = 0;
            for (; i < separator.size(); ++i)
                if (s().position - 1 + i >= s().length ||
                    s().at(s().position - 1 + i) != static_cast<unsigned char>(separator[i]))
                    break;
            if (i < separator.size()) continue;
            for (i = 1; i < separator.size(); ++i) s().storeInput(s().read());
            return true;
        }
        return false;
    }

    unsigned readToken() {
        unsigned c = skip();
        s().tokenAt = std::min(s().position - 1, s().length);
        s().forgetTried(0);
        s().token = {};
        s().narrowBuffer.clear();
        if (!c) return ZPEndToken;
        if ((c == '"' && s().doubleQuotes) || (c == '\'' && s().singleQuotes)) {
            quoted(c);
            return ZPQuotedToken;
        }
        if ((_ZPIsDigit(c) && (s().integers || s().floats)) || (c == '.' && s().floats))
            if (unsigned peekTokenType = number()) return peekTokenType;
        bool starts = _ZPParserState::in(s().unquotedStart, c);
        if (starts && c < 0x80) {
            unquotedInInput();
            return ZPUnquotedToken;
        }
        s().storeInput(c);
        if (starts) {
            unquotedCopied();
            return ZPUnquotedToken;
        }
        if (multiSeparator(c) || _ZPParserState::in(s().separators, c)) return ZPSeparatorToken;
        return ZPOtherToken;
    }

    void nextToken() {
        s().token.pending = false;
        unsigned peekTokenType = readToken();
        s().token.kind = peekTokenType;
        s().token.pending = true;
    }

    unsigned peekTokenType() {
        if (!s().token.pending) self()->nextToken();
        return s().token.kind;
    }
    ZPString *peekTokenWithMask(unsigned mask) { return peekTokenType() & mask ? s().tokenString() : nullptr; }
    ZPString *parseTokenWithMask(unsigned mask) {
        if (!(peekTokenType() & mask)) return nullptr;
        ZPString *text = s().tokenString();
        s().token.pending = false;
        return text;
    }
    ZPString *parseUnquotedString() { return self()->parseTokenWithMask(ZPUnquotedToken); }
    ZPString *parseQuotedString() { return self()->parseTokenWithMask(ZPQuotedToken); }
    ZPString *parseString() { return self()->parseTokenWithMask(ZPQuotedToken | ZPUnquotedToken); }
    ZPString *parseNumber() { return self()->parseTokenWithMask(ZPIntegerToken | ZPFloatToken); }
    ZPString *parseSeparator() { return self()->parseTokenWithMask(ZPSeparatorToken); }
    ZPString *inVain(ZPString *literal) {
        s().addTried(literal->copyWithZone(s().zone), false);
        return nullptr;
    }
    ZPString *parseTokenEqualTo_mask(ZPString *literal, unsigned mask) {
        if (!(peekTokenType() & mask) || !s().tokenEquals(literal)) return inVain(literal);
        s().token.pending = false;
        s().intern(literal->retain());
        return literal;
    }
    ZPString *parseSeparatorEqualTo(ZPString *literal) {
        if (!(peekTokenType() & ZPSeparatorToken) || !s().token.bufferIsNarrow || !s().tokenEquals(literal))
            return inVain(literal);
        s().token.pending = false;
        return literal;
    }
    ZPString *expectSeparatorEqualTo(ZPString *literal) {
        if (!self()->parseSeparatorEqualTo(literal)) {
            s().phrase = s().expectation(this);
            self()->parseError("Separator '%@' expected"_zp, literal);
        }
        return literal;
    }
    ZPString *expectTokenEqualTo_mask(ZPString *literal, unsigned mask) {
        if (!self()->parseTokenEqualTo_mask(literal, mask)) {
            s().phrase = s().expectation(this);
            self()->parseError("Token '%@' expected"_zp, literal);
        }
        return literal;
    }
    void expectEndOfInput() {
        if (peekTokenType() == ZPEndToken) return;
        s().phrase = s().expectation(this, "the end of the text"_zp);
        self()->parseError("End of input expected"_zp);
    }
};

}  // namespace

void _ZPParserState::load(ZPString *string) {
    std::string narrow;
    std::u16string wide;
    bool isNarrow = !string || string->fastestEncoding() == _ZPDefaultCStringEncoding();
    unsigned count = 0;
    if (string && isNarrow) {
        count = string->cStringLength();
        narrow.resize(count + 1);
        string->getCString(narrow.data());
    } else if (string) {
        count = string->length();
        wide.resize(count);
        string->getCharacters(wide.data());
    }
    narrow.resize(isNarrow ? count + 1 : 0);
    if (isNarrow) narrow[count] = 0;
    else wide.push_back(0);
    narrowInput = std::move(narrow);
    wideInput = std::move(wide);
    inputIsNarrow = isNarrow;
    length = count;
    position = tokenAt = 0;
    line = 1;
    phrase = nullptr;
    forgetTried(0);
    token = {};
    releaseUnits(0);
    autoreleaseStrings();
}

void _ZPParserState::store(unsigned character) {
    if (token.bufferIsNarrow) {
        if (character < 0x80) {
            narrowBuffer.push_back(static_cast<char>(character));
            ++token.length;
            return;
        }
        token.bufferIsNarrow = false;
        wideBuffer.assign(narrowBuffer.begin(), narrowBuffer.end());
    }
    wideBuffer.push_back(static_cast<unichar>(character));
    ++token.length;
}

void _ZPParserState::storeInput(unsigned character) {
    store(inputIsNarrow && character >= 0x80 ? ZPKESTRELToPrecompUnicode(static_cast<unsigned char>(character))
                                             : character);
}

// The hash of a string reads only its ends; a hostile text has many strings that differ in the middle.
static unsigned wholeHash(ZPHashTable *, const void *item) {
    return _ZPWithUnits(static_cast<ZPString *>(const_cast<void *>(item)), [](auto &&units, unsigned length) {
        std::uint64_t hash = length;
        for (unsigned i = 0; i < length; ++i) hash = (hash ^ units[i]) * 0x100000001B3;
        return unsigned(hash ^ hash >> 32);
    });
}

ZPString *_ZPParserState::intern(ZPString *owned) {
    ZPRef<ZPString> own = ZPAdopt(owned);
    if (!strings) {
        ZPHashCallBacks callBacks = ZPNonRetainedObjectHashCallBacks;
        callBacks.hash = wholeHash;
        strings = ZPCreateHashTableWithZone(callBacks, 6, zone);
    }
    void *known = ZPHashInsertIfAbsent(strings, own.get());
    return known ? static_cast<ZPString *>(known) : own.detach();
}

ZPString *_ZPParserState::tokenString() {
    const char *bytes = nullptr;
    const unichar *wide = nullptr;
    if (token.start == inBuffer) {
        if (token.bufferIsNarrow) bytes = narrowBuffer.data();
        else wide = wideBuffer.data();
    } else if (inputIsNarrow) bytes = narrowInput.data() + token.start;
    else wide = wideInput.data() + token.start;
    if (!token.length) return ""_zp;
    // What lies in the input, or in the narrow buffer, is ASCII.
    std::string narrowed;
    if (wide && token.start != inBuffer) {
        narrowed.assign(wide, wide + token.length);
        bytes = narrowed.data();
    }
    if (bytes) return intern(_ZPNewInlineCString(bytes, token.length, zone));
    return intern(ZPString::allocWithZone(zone)->initWithCharacters_length(wide, token.length));
}

bool _ZPParserState::tokenEquals(ZPString *literal) {
    unsigned n = literal->length();
    if (n != token.length) return false;
    bool buffered = token.start == inBuffer;
    for (unsigned i = 0; i < n; ++i) {
        unsigned c = !buffered              ? at(token.start + i)
                     : token.bufferIsNarrow ? static_cast<unsigned char>(narrowBuffer[i])
                                            : wideBuffer[i];
        if (c != literal->characterAtIndex(i)) return false;
    }
    return true;
}

void _ZPParserState::releaseUnits(std::size_t down) {
    while (units.size() > down) {
        units.back()->release();
        units.pop_back();
    }
}

void _ZPParserState::autoreleaseStrings() {
    if (!strings) return;
    ZPHashEnumerator e = ZPEnumerateHashTable(strings);
    while (void *string = ZPNextHashEnumeratorItem(&e)) static_cast<ZPString *>(string)->autorelease();
    ZPFreeHashTable(strings);
    strings = nullptr;
}

_ZPParserState::~_ZPParserState() {
    releaseUnits(0);
    forgetTried(0);
    autoreleaseStrings();
    if (grammar) grammar->release();
}

ZP_CATEGORY(ZPParser, Tokenizer, nextToken, peekTokenType, peekTokenWithMask, parseTokenWithMask, parseUnquotedString,
            parseQuotedString, parseString, parseNumber, parseSeparator, parseTokenEqualTo_mask, parseSeparatorEqualTo,
            expectSeparatorEqualTo, expectTokenEqualTo_mask, expectEndOfInput);
