// SPDX-License-Identifier: MIT
// The parsers of property lists and of strings files, and the operations of strings that run them.
#include <Bedrock/archiving/propertylists/Reader+Internal.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/platform/kernel/MakeOnce.h>

namespace {

ZPDictionary *propertyListGrammar() {
    static ZPDictionary *grammar;
    return ZPMakeOnce(grammar, [] {
        ZPString *text = "String = parseString; Array = parseArray; Dictionary = parseDictionary; Data = parseData; "
                         "xObject = Dictionary | Array | Data | String;"_zp;
        return ZPParser::parsedGrammarForString(text)->retain().as<ZPDictionary>();
    });
}

struct ZPPropertyListParserMethods : ZPPropertyListParser {
    id initWithString(ZPString *string) {
        ZPParser *parser = self()->initWithGrammar(propertyListGrammar());
        parser->setString(string);
        return parser;
    }
    ZPArray *parseArray() {
        if (!self()->parseSeparatorEqualTo("("_zp)) return nullptr;
        ZPArray *array = self()->parseSuite_separator_allowOmitLastSeparator("xObject"_zp, ","_zp, YES);
        self()->expectSeparatorEqualTo(")"_zp);
        return array;
    }
    ZPString *wordsForRule(ZPString *rule) {
        const std::pair<ZPString *, ZPString *> known[] = {{"xObject"_zp, "a value"_zp},
                                                           {"String"_zp, "a string"_zp},
                                                           {"Array"_zp, "an array"_zp},
                                                           {"Dictionary"_zp, "a dictionary"_zp},
                                                           {"Data"_zp, "data"_zp}};
        for (auto &[name, words] : known)
            if (name->isEqualToString(rule)) return words;
        return ZP_SUPER(ZPPropertyListParser, wordsForRule)(rule);
    }
    ZPDictionary *parseDictionary() {
        if (!self()->parseSeparatorEqualTo("{"_zp)) return nullptr;
        if (self()->parseSeparatorEqualTo("}"_zp)) return ZPDictionary::dictionary();
        ZPDictionary *dictionary = self()->parseSuiteOfPairsKey_separator_value_separator_allowOmitLastSeparator(
            "String"_zp, "="_zp, "xObject"_zp, ";"_zp, YES);
        self()->expectSeparatorEqualTo("}"_zp);
        return dictionary;
    }
};

struct OldStyleMethods : _ZPPListParserOldStyle {
    ZPDictionary *parseDictionary() {
        if (!self()->parseSeparatorEqualTo("{"_zp)) return nullptr;
        ZPDictionary *dictionary = self()->parseDictionaryBracketLess();
        self()->expectSeparatorEqualTo("}"_zp);
        return dictionary;
    }
    ZPDictionary *parseDictionaryBracketLess() {
        ZPMutableDictionary *dictionary = ZPMutableDictionary::dictionaryWithCapacity(12);
        while (id key = self()->parse("String"_zp)) {
            dictionary->setObject_forKey(self()->parseSeparatorEqualTo("="_zp) ? self()->expect("xObject"_zp) : key,
                                         key);
            if (!self()->parseSeparatorEqualTo(";"_zp)) break;
        }
        return dictionary;
    }
};

// Runs a parse in a pool of its own; only the result lives on.
template <class P, class F> id parsed(ZPString *string, const F &parse) {
    ZPRef<ZPObject> result;
    {
        ZPAutoreleasePoolScope pool;
        ZPRef<P> parser = ZPAdopt<P>(P::alloc()->initWithString(string));
        result = parse(parser);
        parser->expectEndOfInput();
    }
    return std::move(result).autoreleased();
}

struct Reading : ZPString {
    id propertyList() {
        if (id tree = _ZPReadPropertyList(this)) return tree->autorelease();
        return parsed<ZPPropertyListParser>(this,
                                            [](ZPPropertyListParser *parser) { return parser->expect("xObject"_zp); });
    }
    ZPDictionary *propertyListFromStringsFileFormat() {
        return parsed<_ZPPListParserOldStyle>(this, [](_ZPPListParserOldStyle *parser) {
            return id(parser->parseDictionaryBracketLess());
        });
    }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPPropertyListParser, ZPPropertyListParserMethods, initWithString, parseArray, parseDictionary,
                  wordsForRule);

ZP_IMPLEMENT_WITH(_ZPPListParserOldStyle, OldStyleMethods, parseDictionary, parseDictionaryBracketLess);

ZP_CATEGORY(ZPString, Reading, propertyList, propertyListFromStringsFileFormat);
