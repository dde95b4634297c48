// SPDX-License-Identifier: MIT
// The parser with grammars and tokens of one's own.
#include <support/Objects.h>

namespace {

struct Calculator : ZPParser {
    ZP_CLASS(Calculator)
    id word() { return self()->parseUnquotedString(); }
};
ZP_IMPLEMENT(Calculator, word);

struct ParserTest : testing::Test {
    ZPParser *parser(ZPString *grammar, ZPString *input) {
        ZPParser *made =
            Calculator::alloc()->initWithGrammar(grammar ? ZPParser::parsedGrammarForString(grammar) : nullptr);
        made->autorelease();
        made->setEnableIntegerParsing(YES);
        made->setEnableFloatParsing(YES);
        made->setString(input);
        return made;
    }
    std::string result(ZPString *grammar, ZPString *input) {
        std::string out;
        std::string error = raised([&] {
            id tree = parser(grammar, input)->parse("Main"_zp);
            out = tree ? text(tree->description()) : "null";
        });
        return error.empty() ? out : error;
    }
    static std::string tokens(ZPParser *p) {
        std::string list;
        while (p->peekTokenType() != 1) {
            list += std::to_string(p->peekTokenType()) + ":";
            list += text(p->parseTokenWithMask(255)) + " ";
        }
        return list;
    }
};

TEST_F(ParserTest, Tokens) {
    auto kinds = [&](const char *input) { return tokens(parser(nullptr, ZPString::stringWithCString(input))); };
    EXPECT_EQ(kinds("12 1.5 .5 1. 1e3 1e 2.5E-7x ."), "8:12 16:1.5 16:.5 16:1. 16:1e3 8:1 4:e 16:2.5E-7 4:x 4:. ");
    EXPECT_EQ(kinds("a'b\"c d\"+\x01"), "4:a 32:' 4:b 2:c d 32:+ 128:\x01 ");
    EXPECT_EQ(kinds("a/b/*c*/d//e\n/f"), "4:a/b/ 32:* 4:c 32:* 4:/d//e 4:/f ")
        << "bare strings take in the slash, not the star";
}

TEST_F(ParserTest, CharacterClasses) {
    ZPParser *p = parser(nullptr, nullptr);
    p->setEnableIntegerParsing(NO);
    p->setEnableFloatParsing(NO);
    p->setUnquotedStringStartCharacters_lowerCaseLetters_upperCaseLetters_digits("#"_zp, YES, NO, NO);
    p->setUnquotedStringCharacters_lowerCaseLetters_upperCaseLetters_digits("-"_zp, YES, NO, YES);
    p->setMonoCharacterSeparatorCharacters_usualPunctuation("A"_zp, NO);
    p->setMultipleCharacterSeparators(ZPArray::arrayWithObjects("<="_zp, "<=>"_zp, "=="_zp));
    p->setQuotingWithSingleQuote_double(YES, NO);
    p->setString("#a-1B A 'q\"' <=> <= < == \""_zp);
    EXPECT_EQ(tokens(p), "4:#a-1 128:B 32:A 2:q\" 32:<=> 32:<= 128:< 32:== 128:\" ");
    EXPECT_RAISES(
        invalid("-[Calculator setMultipleCharacterSeparators:]: Separator strings expected to be at least 2 characters "
                "in length: x"),
        p->setMultipleCharacterSeparators(ZPArray::arrayWithObjects("ok"_zp, "x"_zp)));
}

TEST_F(ParserTest, PeekingDoesNotConsume) {
    ZPParser *p = parser(nullptr, "a 'b"_zp);
    EXPECT_EQ(text(p->peekTokenWithMask(4)), "a");
    EXPECT_FALSE(p->peekTokenWithMask(2) || p->parseQuotedString() || p->parseTokenEqualTo_mask("b"_zp, 62));
    EXPECT_EQ(id(p->parseTokenEqualTo_mask("a"_zp, 62)), id("a"_zp));
    EXPECT_EQ(p->parseSeparatorEqualTo("+"_zp), nullptr);
    EXPECT_NE(p->parseSeparatorEqualTo("'"_zp), nullptr);
    EXPECT_RAISES("ZPParseErrorException: *** Separator '+' expected;\nParse error line 1 (position 4) for units: ();\n"
                  "Next token is 'b'",
                  p->expectSeparatorEqualTo("+"_zp));
    EXPECT_REASON_HAS("Token 'c' expected", p->expectTokenEqualTo_mask("c"_zp, 62));
    EXPECT_EQ(text(p->parseString()), "b");
    p->expectEndOfInput();
}

TEST_F(ParserTest, GrammarsAreWrittenBack) {
    auto rule = [&](ZPString *body) {
        ZPDictionary *grammar = ZPParser::parsedGrammarForString(ZPString::stringWithFormat("R = %@;"_zp, body));
        return text(grammar->objectForKey("R"_zp)->description());
    };
    for (auto &[body, wanted] :
         rows("A -> A", "'x' -> \"x\"", "A 'x' B -> A \"x\" B", "'(' A ')' -> [1] \"(\" A \")\"",
              "A B | 'c' -> A B | \"c\"", "A || B || C -> A || B || C", "< A B > C -> < A B > C"))
        EXPECT_EQ(rule(ZPString::stringWithCString(body.c_str())), wanted);
    EXPECT_REFUSED(rule("A | B || C"_zp));
    EXPECT_REASON_HAS("Separator ';' expected", ZPParser::parsedGrammarForString("R = A"_zp));
    EXPECT_REASON_HAS("MetaRuleBody expected", ZPParser::parsedGrammarForString("R = ;"_zp));
    std::string deep = "R = " + std::string(100000, '<');
    EXPECT_REASON_HAS("Nesting too deep", ZPParser::parsedGrammarForString(ZPString::stringWithCString(deep.c_str())));
}

TEST_F(ParserTest, Rules) {
    const std::tuple<ZPString *, ZPString *, std::string> cases[] = {
        {"Main = Term '+' Main || Term; Term = '(' Main ')' | parseNumber;"_zp, "1+(2+3.5)"_zp,
         "(1, \"+\", (2, \"+\", 3.5))"},
        {"Main = Other; Other = word;"_zp, "hello"_zp, "hello"},  // an alias, then a method of the subclass
        {"Main = < word >;"_zp, "a b c"_zp, "(a, b, c)"},
        {"Main = 'if' word 'then' word;"_zp, "if a then b"_zp, "(if, a, then, b)"},  // two results: all of them
        {"Main = A || B; A = 'x' 'y'; B = 'x' 'z';"_zp, "x z"_zp, "(x, z)"},
        {"Main = A || B; A = word \"quo\\\"ted\" 'y'; B = word word;"_zp, "w /* \n */ v"_zp, "(w, v)"},
    };
    for (auto &[grammar, input, wanted] : cases) EXPECT_EQ(result(grammar, input), wanted);
    EXPECT_HAS(result("Main = 'if' word 'then' word;"_zp, "if a b"_zp), "ZPParseErrorException: ");
    EXPECT_HAS(result("Main = A | B; A = 'x' 'y'; B = 'x' 'z';"_zp, "x z"_zp), "ZPParseErrorException: ")
        << "no way back";
    EXPECT_HAS(result("Main = A; A = Main;"_zp, "x"_zp), "Nesting too deep");
    // A rule that consumes nothing does not go on for ever.
    EXPECT_NE(result("Main = < Empty >; Empty = parseNothing | Suite; Suite = self;"_zp, "x"_zp), "");
}

TEST_F(ParserTest, Backtracking) {
    // A token that lies in the buffer, and a line, come back as they were.
    ZPParser *p = parser("Main = A || B; A = parseString word word; B = parseString;"_zp, "\"q\\n\" \n x"_zp);
    EXPECT_EQ(text(p->peekTokenWithMask(2)), "q\n");
    EXPECT_EQ(text(p->parse("Main"_zp)->description()), "q\n");
    EXPECT_EQ(text(p->parseString()), "x");
    EXPECT_REASON_HAS("*** 7;\nParse error line 2 ", p->parseError("%d"_zp, 7));
}

TEST_F(ParserTest, Suites) {
    const std::tuple<ZPString *, ZPString *, BOOL, const char *> cases[] = {{"a b c"_zp, nullptr, NO, "(a, b, c)"},
                                                                            {"a, b, c,"_zp, ","_zp, NO, "(a, b, c)"},
                                                                            {"a, b, c"_zp, ","_zp, NO, ""},
                                                                            {"a, b, c"_zp, ","_zp, YES, "(a, b, c)"},
                                                                            {"a, b c"_zp, ","_zp, YES, ""}};
    for (auto &[input, separator, omit, wanted] : cases) {
        std::string out;
        raised([&, &input = input, &separator = separator, &omit = omit] {
            ZPParser *p = parser("X = word;"_zp, input);
            id suite = p->parseSuite_separator_allowOmitLastSeparator("X"_zp, separator, omit);
            p->expectEndOfInput();
            out = described(suite);
        });
        EXPECT_EQ(out, wanted);
    }
    ZPParser *p = parser("K = word; V = parseNumber;"_zp, "{a = 1; b = 2; a = 3}"_zp);
    EXPECT_EQ(described(p->parseDictionaryOfKey_value("K"_zp, "V"_zp)), "{a = 3; b = 2; }");
}

TEST_F(ParserTest, StringsOutliveTheInputUntilThePoolEnds) {
    ZPParser *p = Calculator::alloc()->initWithGrammar(nullptr);
    p->setString("one two one"_zp);
    id one = p->parseString(), two = p->parseString();
    EXPECT_EQ(p->parseString(), static_cast<ZPString *>(one)) << "equal strings are one object";
    p->setString("three"_zp);
    p->release();
    EXPECT_EQ(text(one->description()) + text(two->description()), "onetwo");
}

}  // namespace
