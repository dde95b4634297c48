// SPDX-License-Identifier: MIT
// Strings files, in the encoding that the first byte names: what is read is written and read back to an equal
// dictionary; the calculator's grammar over any text; and, where the first byte is odd, the text as a grammar.
#include <Bedrock/Bedrock.h>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (!size) return 0;
    ZPAutoreleasePoolScope pool;
    const ZPStringEncoding *encodings = ZPString::availableStringEncodings();
    ZPStringEncoding encoding = data[0] < 16 ? encodings[data[0]] : ZPUTF8StringEncoding;
    ZPString *text =
        ZPString::alloc()->initWithData_encoding(ZPData::dataWithBytes_length(data, unsigned(size)), encoding);
    if (!text) return 0;
    text->autorelease();
    ZPDictionary *table = nullptr;
    try {
        table = text->propertyListFromStringsFileFormat();
    } catch (ZPException *) {}
    if (table) {
        ZPDictionary *again = table->descriptionInStringsFileFormat()->propertyListFromStringsFileFormat();
        if (!again || !again->isEqual(table)) std::abort();
    }
    if (data[0] & 1) {
        // Read only: a grammar of the client's own may try again within what is tried again, for ever longer.
        ZPString *rules = text->substringFromIndex(1);
        ZPDictionary *grammar = nullptr;
        try {
            grammar = ZPParser::parsedGrammarForString(rules);
        } catch (ZPException *) {}
        // Rules are equal when they are the same object: what they say is compared.
        if (grammar && !grammar->description()->isEqual(ZPParser::parsedGrammarForString(rules)->description()))
            std::abort();
        return 0;
    }
    try {
        ZPParser *parser = ZPParser::alloc()->initWithGrammar(
            // No rule is tried again within another that is tried again: that takes twice the time for each level.
            ZPParser::parsedGrammarForString("Sums = Pair || Sum; Pair = Sum '=' Sum; Sum = < Part >; "
                                             "Part = Sign | Term; Sign = '+' Term; "
                                             "Term = '(' Sum ')' | parseNumber | parseString;"_zp));
        parser->autorelease();
        parser->setEnableIntegerParsing(YES);
        parser->setEnableFloatParsing(YES);
        parser->setString(text);
        parser->parse("Sums"_zp);
    } catch (ZPException *) {}
    return 0;
}
