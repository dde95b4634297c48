// SPDX-License-Identifier: MIT
// Grammars: their text form, their nodes, and running their rules.
#include <Bedrock/archiving/grammar/Grammar.h>
#include <Bedrock/core/ZPRef.h>

#include <Bedrock/platform/ASCII.h>

namespace {

using Node = _ZPParserSyntaxNode;

struct NodeMethods : Node {
    void dealloc() {
        if (_argument) _argument->release();
        ZP_SUPER(Node, dealloc)();
    }
    id copyWithZone(ZPZone *) { return self()->retain(); }
    ZPString *joined(ZPString *separator) { return _argument.as<ZPArray>()->componentsJoinedByString(separator); }
    ZPString *description() {
        switch (_kind) {
        case Literal: return _argument.as<ZPString>()->quotedStringRepresentation();
        case Sequence:
            return _resultIndex == _ZPAllResults
                       ? joined(" "_zp)
                       : ZPString::stringWithFormat("[%d] %@"_zp, _resultIndex, joined(" "_zp));
        case Alternatives: return joined(" | "_zp);
        case Backtracking: return joined(" || "_zp);
        case Repetition: return ZPString::stringWithFormat("< %@ >"_zp, _argument);
        default: return "? ? ?"_zp;
        }
    }
};

// Whether a parse has gone on since this was made; a repetition that does not go on ends.
struct Progress {
    _ZPParserState &state;
    unsigned position;
    bool pending;
    explicit Progress(_ZPParserState &s) : state(s), position(s.position), pending(s.token.pending) {}
    bool made() const { return state.position != position || state.token.pending != pending; }
};

struct Rules : ZPParser {
    _ZPParserState &s() { return *_state; }

    // ---- rules by name ----

    [[gnu::noinline]] void pushUnit(ZPString *name) {
        if (s().units.size() >= _ZPMaximumRules) {
            s().phrase = "nested too deep"_zp;
            self()->parseError("Nesting too deep"_zp);
        }
        s().units.push_back(name->copyWithZone(s().zone));
    }
    id parse(ZPString *name) {
        std::size_t depth = s().units.size(), tried = s().tried.size();
        unsigned at = s().tokenAt;
        pushUnit(name);
        id rule = s().grammar->objectForKey(name), result;
        if (!rule) result = perform(name);
        else if (rule->isKindOfClass(ZPString::class_())) result = self()->parse(rule);
        else result = evaluate(rule);
        if (!result && s().units.size() > depth) {
            // The rule stands for all that it tried.
            s().forgetTried(s().tokenAt == at ? tried : 0);
            s().addTried(s().units[depth]->retain(), true);
        }
        s().releaseUnits(depth);
        return result;
    }
    [[gnu::noinline]] id perform(ZPString *name) {
        SEL selector = ZPSelectorFromString(name);
        if (self()->respondsToSelector(selector)) return self()->performSelector(selector);
        ZPLog("*** Unimplemented ObjC selector '%@'; Could be a misspelled unit name"_zp, name);
        return nullptr;
    }
    id expect(ZPString *name) {
        if (id result = self()->parse(name)) return result;
        pushUnit(name);
        s().phrase = s().expectation(this);
        self()->parseError("%@ expected"_zp, name);
        return nullptr;
    }

    // ---- nodes: apart, so that deep nesting costs little stack ----

    id evaluate(id element) {
        if (element->isKindOfClass(ZPString::class_())) return self()->parse(element);
        auto *node = element.unchecked<Node>();
        switch (node->_kind) {
        case Node::Literal: return self()->parseTokenEqualTo_mask(node->_argument, 62);
        case Node::Sequence: return sequence(node);
        case Node::Alternatives: return alternatives(node->_argument);
        case Node::Backtracking: return backtracking(node->_argument);
        case Node::Repetition: return repetition(node->_argument);
        default: return nullptr;
        }
    }
    [[gnu::noinline]] id sequence(Node *node) {
        ZPArray *elements = node->_argument;
        bool all = node->_resultIndex == _ZPAllResults;
        ZPMutableArray *results = all ? ZPMutableArray::array() : nullptr;
        id chosen;
        for (unsigned i = 0, count = elements->count(); i < count; ++i) {
            id element = elements->objectAtIndex(i), result = evaluate(element);
            if (!result) {
                if (i == 0) return nullptr;
                s().phrase = s().expectation(this);
                self()->parseError("In sequence %@, %@ expected"_zp, elements, element);
            }
            if (all) results->addObject(result);
            else if (i == node->_resultIndex) chosen = result;
        }
        return all ? id(results) : chosen;
    }
    [[gnu::noinline]] id alternatives(ZPArray *list) {
        for (unsigned i = 0, count = list->count(); i < count; ++i)
            if (id result = evaluate(list->objectAtIndex(i))) return result;
        return nullptr;
    }
    [[gnu::noinline]] id backtracking(ZPArray *list) {
        _ZPParserState &state = s();
        auto token = state.token;
        unsigned position = state.position, line = state.line, at = state.tokenAt;
        std::size_t depth = state.units.size();
        std::string narrow;
        std::u16string wide;
        if (token.pending && token.start == _ZPParserState::inBuffer) {
            narrow = state.narrowBuffer;
            wide = state.wideBuffer;
        }
        for (unsigned i = 0, count = list->count(); i < count; ++i) {
            try {
                if (id result = evaluate(list->objectAtIndex(i))) return result;
            } catch (ZPException *) {
                // An alternative that does not fit.
            }
            state.token = token;
            state.position = position;
            state.line = line;
            state.tokenAt = at;
            state.forgetTried(0);
            state.releaseUnits(depth);
            state.narrowBuffer = narrow;
            state.wideBuffer = wide;
        }
        return nullptr;
    }
    [[gnu::noinline]] id repetition(id element) {
        id result = evaluate(element);
        if (!result) return nullptr;
        ZPMutableArray *results = ZPMutableArray::arrayWithObject(result);
        for (;;) {
            Progress progress(s());
            result = evaluate(element);
            if (!result) return results;
            results->addObject(result);
            if (!progress.made()) return results;
        }
    }

    // ---- suites ----

    // Whether another element may follow.
    [[gnu::noinline]] bool separated(ZPString *separator, BOOL omitLast, const Progress &progress) {
        if (!separator) return progress.made();
        if (omitLast) return self()->parseSeparatorEqualTo(separator) != nullptr;
        self()->expectSeparatorEqualTo(separator);
        return true;
    }
    ZPArray *parseSuite_separator_allowOmitLastSeparator(ZPString *rule, ZPString *separator, BOOL omitLast) {
        std::vector<id> elements;
        for (;;) {
            Progress progress(s());
            id element = self()->parse(rule);
            if (!element) break;
            elements.push_back(element);
            if (!separated(separator, omitLast, progress)) break;
        }
        return ZPArray::arrayWithObjects_count(elements.data(), unsigned(elements.size()));
    }
    struct Pairs {
        std::vector<id> keys, values;
    };
    [[gnu::noinline]] static void add(Pairs &pairs, id key, id value) {
        pairs.keys.push_back(key);
        pairs.values.push_back(value);
    }
    ZPDictionary *parseSuiteOfPairsKey_separator_value_separator_allowOmitLastSeparator(
        ZPString *keyRule, ZPString *keySeparator, ZPString *valueRule, ZPString *separator, BOOL omitLast) {
        Pairs pairs;
        for (;;) {
            Progress progress(s());
            id key = self()->parse(keyRule);
            if (!key) break;
            if (keySeparator) self()->expectSeparatorEqualTo(keySeparator);
            add(pairs, key, self()->expect(valueRule));
            if (!separated(separator, omitLast, progress)) break;
        }
        // Of the size of its entries: most dictionaries of a property list are small and many.
        return ZPDictionary::dictionaryWithObjects_forKeys_count(pairs.values.data(), pairs.keys.data(),
                                                                 unsigned(pairs.keys.size()));
    }
    ZPDictionary *parseDictionaryOfKey_value(ZPString *key, ZPString *value) {
        if (!self()->parseSeparatorEqualTo("{"_zp)) return nullptr;
        ZPDictionary *result = self()->parseSuiteOfPairsKey_separator_value_separator_allowOmitLastSeparator(
            key, "="_zp, value, ";"_zp, YES);
        self()->expectSeparatorEqualTo("}"_zp);
        return result;
    }
    ZPData *parseData() {
        if (!self()->parseSeparatorEqualTo("<"_zp)) return nullptr;
        std::vector<unsigned char> bytes;
        while (ZPString *digits = self()->parseUnquotedString()) {
            unsigned count = digits->length();
            if (count % 2) {
                s().phrase = "expected an even number of hexadecimal digits"_zp;
                self()->parseError("Data representation should always contain an even number of hex digits: '%@'"_zp,
                                   digits);
            }
            unsigned byte = 0;
            for (unsigned i = 0; i < count; ++i) {
                unichar c = _ZPInSmallLetters(digits->characterAtIndex(i));
                int digit = _ZPHexValue(c);
                if (digit < 0) {
                    s().tokenAt += i;
                    s().phrase = "expected a hexadecimal digit"_zp;
                    self()->parseError("Incorrect hex digit: %c"_zp, int(c));
                }
                byte = byte << 4 | unsigned(digit);
                if (i % 2) bytes.push_back(static_cast<unsigned char>(byte));
            }
        }
        self()->expectSeparatorEqualTo(">"_zp);
        return ZPMutableData::dataWithBytes_length(bytes.data(), unsigned(bytes.size()));
    }

    // ---- the notation of grammars ----

    id parseMetaSyntaxLeafResultShouldBeSkipped(BOOL *skipped) {
        *skipped = NO;
        if (ZPString *name = self()->parseUnquotedString()) return name;
        if (ZPString *literal = self()->parseQuotedString()) {
            *skipped = YES;
            return Node::node(Node::Literal, literal);
        }
        if (!self()->parseSeparatorEqualTo("<"_zp)) return nullptr;
        id repeated = self()->expect("MetaSyntaxSequence"_zp);
        self()->expectSeparatorEqualTo(">"_zp);
        return Node::node(Node::Repetition, repeated);
    }
    id parseMetaSyntaxSequence() {
        std::vector<id> leaves;
        unsigned answered = _ZPAllResults, results = 0;
        BOOL skipped;
        while (id parseMetaSyntaxLeafResultShouldBeSkipped =
                   self()->parseMetaSyntaxLeafResultShouldBeSkipped(&skipped)) {
            if (!skipped && results++ == 0) answered = unsigned(leaves.size());
            leaves.push_back(parseMetaSyntaxLeafResultShouldBeSkipped);
        }
        if (leaves.empty()) return nullptr;
        if (leaves.size() == 1) return leaves[0];
        return Node::node(Node::Sequence, ZPArray::arrayWithObjects_count(leaves.data(), unsigned(leaves.size())),
                          results == 1 ? answered : _ZPAllResults);
    }
    id parseMetaRuleBody() {
        id first = self()->parse("MetaSyntaxSequence"_zp);
        if (!first) return nullptr;
        for (auto [kind, separator] : {std::pair(Node::Alternatives, "|"_zp), std::pair(Node::Backtracking, "||"_zp)}) {
            if (!self()->parseSeparatorEqualTo(separator)) continue;
            ZPMutableArray *list = ZPMutableArray::arrayWithObject(first);
            do list->addObject(self()->expect("MetaSyntaxSequence"_zp));
            while (self()->parseSeparatorEqualTo(separator));
            return Node::node(kind, ZPArray::arrayWithArray(list));
        }
        return first;
    }
    static ZPDictionary *parsedGrammarForString(Class, ZPString *text) {
        ZPDictionary *notation =
            ZPDictionary::dictionaryWithObjectsAndKeys("parseUnquotedString"_zp, "Token"_zp,
                                                       "parseMetaSyntaxSequence"_zp, "MetaSyntaxSequence"_zp,
                                                       "parseMetaRuleBody"_zp, "MetaRuleBody"_zp);
        ZPRef<ZPParser> parser = ZPAdopt<ZPParser>(ZPParser::alloc()->initWithGrammar(notation));
        parser->setMultipleCharacterSeparators(ZPArray::arrayWithObject("||"_zp));
        parser->setQuotingWithSingleQuote_double(YES, YES);
        parser->setString(text);
        ZPDictionary *grammar = parser->parseSuiteOfPairsKey_separator_value_separator_allowOmitLastSeparator(
            "Token"_zp, "="_zp, "MetaRuleBody"_zp, ";"_zp, NO);
        parser->expectEndOfInput();
        return grammar;
    }
};

}  // namespace

_ZPParserSyntaxNode *_ZPParserSyntaxNode::node(Kind kind, id argument, unsigned resultIndex) {
    _ZPParserSyntaxNode *node = alloc();
    node->autorelease();
    node->_kind = kind;
    node->_resultIndex = resultIndex;
    node->_argument = argument->copyWithZone(nullptr);
    return node;
}

ZP_IMPLEMENT_WITH(_ZPParserSyntaxNode, NodeMethods, adopts(ZPCopying), dealloc, copyWithZone, description);

ZP_CATEGORY(ZPParser, Rules, parse, expect, parseSuite_separator_allowOmitLastSeparator,
            parseSuiteOfPairsKey_separator_value_separator_allowOmitLastSeparator, parseDictionaryOfKey_value,
            parseData, parseMetaSyntaxLeafResultShouldBeSkipped, parseMetaSyntaxSequence, parseMetaRuleBody,
            classMethods(parsedGrammarForString));
