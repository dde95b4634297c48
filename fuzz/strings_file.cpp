// SPDX-License-Identifier: MIT
// Strings files, in the encoding that the first byte names: what is read is written and read back to an equal
// dictionary; and the calculator's grammar over any text.
#include <Bedrock/Bedrock.h>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (!size) return 0;
    ZPAutoreleasePoolScope pool;
    const ZPStringEncoding *encodings = ZPString::availableStringEncodings();
    ZPStringEncoding encoding = data[0] < 16 ? encodings[data[0]] : ZPUTF8StringEncoding;
    ZPString *text = ZPString::alloc()->initWithData_encoding(ZPData::dataWithBytes_length(data, unsigned(size)), encoding);
    if (!text) return 0;
    text->autorelease();
    try {
        if (ZPDictionary *table = text->propertyListFromStringsFileFormat()) {
            ZPDictionary *again = table->descriptionInStringsFileFormat()->propertyListFromStringsFileFormat();
            if (!again->isEqual(table)) std::abort();
        }
    } catch (ZPException *) {
    }
    try {
        ZPParser *parser = ZPParser::alloc()->initWithGrammar(
            ZPParser::parsedGrammarForString(// No rule is tried again within another that is tried again: that takes twice the time for each level.
            "Sums = Pair || Sum; Pair = Sum '=' Sum; Sum = < Part >; Part = Sign | Term; Sign = '+' Term; Term = '(' Sum ')' | parseNumber | parseString;"_zp));
        parser->autorelease();
        parser->setEnableIntegerParsing(YES);
        parser->setEnableFloatParsing(YES);
        parser->setString(text);
        parser->parse("Sums"_zp);
    } catch (ZPException *) {
    }
    return 0;
}
