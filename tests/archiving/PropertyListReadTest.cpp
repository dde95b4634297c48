// SPDX-License-Identifier: MIT
// Reading property-list text: the direct reader, and the parser that it must agree with in everything.
#include <support/Objects.h>

namespace {

std::string error(const char *line, const char *units, const char *message, const char *next) {
    return std::string("ZPParseErrorException: *** ") + message + ";\nParse error line " + line +
           " for units: " + units + ";\nNext token is '" + next + "'";
}

ZPString *textOf(const std::string &bytes) {
    return ZPString::stringWithCString_length(bytes.data(), unsigned(bytes.size()));
}

// By the tables and the grammar alone.
id parsed(ZPString *text) {
    ZPRef<ZPPropertyListParser> parser = ZPAdopt(ZPPropertyListParser::alloc()->initWithString(text));
    ZPRef<ZPObject> tree(parser->expect("xObject"_zp));
    parser->expectEndOfInput();
    return std::move(tree).autoreleased();
}

// Everything there is to see of a tree: classes, texts, the order of entries, and which strings are one object.
void dump(id node, std::string &out, std::map<objc_object *, unsigned> &seen) {
    out += node.pointer()->isa->name;
    if (node->isKindOfClass(ZPString::class_())) {
        auto [at, isNew] = seen.emplace(node.pointer(), unsigned(seen.size()));
        ZPString *string = node;
        out += " #" + std::to_string(at->second) + (isNew ? " " + text(string->quotedStringRepresentation()) : "");
    } else if (node->isKindOfClass(ZPArray::class_())) {
        out += " (";
        for (id element : static_cast<ZPArray *>(node)) dump(element, out, seen), out += ", ";
        out += ")";
    } else if (node->isKindOfClass(ZPDictionary::class_())) {
        out += " {";
        for (auto [key, value] : static_cast<ZPDictionary *>(node)) {
            dump(key, out, seen);
            out += " = ";
            dump(value, out, seen);
            out += "; ";
        }
        out += "}";
    } else out += text(node->description());
}

template <class F> std::string resultOf(F read) {
    std::string out, error = raised([&] {
                         std::map<objc_object *, unsigned> seen;
                         dump(read(), out, seen);
                     });
    return error.empty() ? out : error;
}

// Both readers give the same on a text, also when it is kept in units.
void expectAgreement(ZPString *text) {
    ZPAutoreleasePoolScope pool;
    EXPECT_EQ(resultOf([=] { return text->propertyList(); }), resultOf([=] { return parsed(text); }))
        << ::text(text->quotedStringRepresentation());
}

TEST(PropertyListReading, Trees) {
    for (auto &[input, wanted] :
         rows("{k = v; w = (1, 2, <0a0b>);} -> {k = v; w = (1, 2, <0a0b>); }", "{k = (x, y,)} -> {k = (x, y); }",
              "( ) -> ()", "{ } -> {}", "<> -> <>", "{b = 1; a = 2; b = 3;} -> {a = 2; b = 3; }",
              "\"\\101\\U00e9\" -> A\u00e9", "\"a\\\nb\nc\" -> a\nb\nc",
              "\"\\a\\b\\f\\n\\r\\t\\v\\\"\\\\\\'\\q\" -> \a\b\f\n\r\t\v\"\\'q", "\"\\1012\\18\" -> A2\0018",
              "\"\\U41g\\U20AC1\" -> Ag\u20ac1", "\"\u3042\u00e9\" -> \u3042\u00e9", "x//y -> x//y",
              "// c\n/* ** / */ x /**/ // end -> x", "/usr/lib -> /usr/lib"))
        EXPECT_TRUE(textOf(input)->propertyList()->description()->isEqual(textOf(wanted))) << input;
    EXPECT_TRUE(textOf("\"\\777\"")->propertyList()->isEqual(textOf("\"\\377\"")->propertyList()));
    EXPECT_EQ(static_cast<ZPString *>(textOf("\"a\\0\"")->propertyList())->length(), 2u);
    EXPECT_TRUE(textOf(std::string("abc\0(((", 7))->propertyList()->isEqual("abc"_zp)) << "a zero ends the text";
}

TEST(PropertyListReading, Errors) {
    const char data[] = "(xObject, Data, parseData)", dictionary[] = "(xObject, Dictionary, parseDictionary)";
    const std::pair<const char *, std::string> cases[] = {
        {"<0a0>", error("1 (position 4)", data,
                        "Data representation should always contain an even number of hex digits: '0a0'", "")},
        {"<0G>", error("1 (position 3)", data, "Incorrect hex digit: g", "")},
        {"(x, \"y)", error("1 (position 8)", "(xObject, Array, parseArray, xObject, Dictionary, parseDictionary)",
                           "Unterminated string constant", "")},
        {"// one\n( /* two\n*/ a b)",
         error("3 (position 22)", "(xObject, Array, parseArray)", "Separator ')' expected", "b")},
        {"{a = }", error("1 (position 6)", "(xObject, Dictionary, parseDictionary, xObject)", "xObject expected", "}")},
        {"{a b}", error("1 (position 4)", dictionary, "Separator '=' expected", "b")},
        {"a b", error("1 (position 3)", "()", "End of input expected", "b")},
        {"", error("1 (position 1)", "(xObject)", "xObject expected", "")},
        {"\"abc\\", error("1 (position 6)", dictionary, "Unterminated string constant", "")},
    };
    for (auto &row : cases) EXPECT_RAISES(row.second, textOf(row.first)->propertyList());
}

TEST(PropertyListReading, ErrorsInWords) {
    for (auto &[input, wanted] : rows(
             "{a = 1; b = ;} -> line 1, column 13: expected a value, found ';'\n{a = 1; b = ;}\n            ^",
             "(a, b -> line 1, column 6: expected ',' or ')', found the end of the text\n(a, b\n     ^",
             "{\n\tk = {x = 1 yy = 2;};\n} -> line 2, column 13: expected ';' or '}', found 'yy'\n"
             "\tk = {x = 1 yy = 2;};\n\t           ^",
             "{a = 1; (b) = 2;} -> line 1, column 9: expected a string or '}', found '('\n{a = 1; (b) = 2;}\n        ^",
             "(a) \"two words\" -> line 1, column 5: expected the end of the text, found \"two words\"\n"
             "(a) \"two words\"\n    ^",
             "(<0a0g>) -> line 1, column 6: expected a hexadecimal digit\n(<0a0g>)\n     ^",
             "(é, \"x) -> line 1, column 2: expected a value or ')', found 'é'\n(é, \"x)\n ^"))
        try {
            textOf(input)->propertyList();
            ADD_FAILURE() << input;
        } catch (ZPException *e) {
            EXPECT_EQ(ZPStdString(e->userInfo()->objectForKey(ZPParseErrorExplanationKey)), wanted);
        }
}

TEST(PropertyListReading, NestingIsBounded) {
    auto nested = [](unsigned levels, char open, const char *middle, char close) {
        return textOf(std::string(levels, open) + middle + std::string(levels, close));
    };
    EXPECT_RAISES("", nested(1000, '(', "x", ')')->propertyList());
    EXPECT_RAISES("", parsed(nested(1000, '(', "x", ')')));
    std::string message = raised([&] { nested(1001, '(', "x", ')')->propertyList(); });
    EXPECT_HAS(message, "*** Nesting too deep;\nParse error line 1 (position 1001)") << message.substr(0, 200);
    for (char open : {'(', '{', '<'}) {
        auto begin = std::chrono::steady_clock::now();
        EXPECT_REFUSED(nested(100000, open, "", ')')->propertyList());
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
    }
    std::string keys;
    for (int i = 0; i < 100000; ++i) keys += "{a=";
    EXPECT_REASON_HAS("Nesting too deep", textOf(keys)->propertyList());
    EXPECT_REFUSED(textOf(keys)->propertyListFromStringsFileFormat());
}

TEST(PropertyListReading, EqualStringsAreOneObject) {
    ZPArray *list = "(abc, \"abc\", {abc = abc;}, \"\u3042\", \"\\U3042\", \"\\141bc\")"_zp->propertyList();
    id abc = list->objectAtIndex(0);
    EXPECT_TRUE(list->objectAtIndex(1) == abc && list->objectAtIndex(5) == abc);
    EXPECT_EQ(static_cast<ZPDictionary *>(list->objectAtIndex(2))->objectForKey("abc"_zp), abc);
    EXPECT_EQ(list->objectAtIndex(3), list->objectAtIndex(4));
}

TEST(PropertyListReading, PartsOutliveTheirTree) {
    // The objects of a tree are made together; each goes on alone, also on another thread.
    std::string big = "{";
    for (int i = 0; i < 2000; ++i)
        big += text(ZPString::stringWithFormat(
            "key%d = (value%d, {inner = \"longer text \\U3042 %d\"; other = <0a0b>; }, x); "_zp, i, i, i));
    std::vector<ZPRef<ZPObject>> kept;
    {
        ZPAutoreleasePoolScope inner;
        ZPDictionary *tree = textOf(big + "}")->propertyList();
        ASSERT_EQ(tree->count(), 2000u);
        for (int i = 0; i < 2000; i += 7) {
            ZPArray *list = tree->objectForKey(ZPString::stringWithFormat("key%d"_zp, i));
            ZPDictionary *entry = list->objectAtIndex(1);
            kept.emplace_back(list->objectAtIndex(0));
            kept.emplace_back(entry->mutableCopy()->autorelease());
            kept.emplace_back(static_cast<ZPString *>(entry->objectForKey("inner"_zp))->substringFromIndex(5));
        }
    }
    std::thread([&] {
        ZPAutoreleasePoolScope inner;
        for (std::size_t k = 0; k < kept.size(); k += 3) {
            int i = int(k) / 3 * 7;
            EXPECT_TRUE(kept[k]->isEqual(ZPString::stringWithFormat("value%d"_zp, i)));
            ZPMutableDictionary *changed = id(kept[k + 1].get());
            changed->setObject_forKey("x"_zp, "new"_zp);
            EXPECT_TRUE(static_cast<ZPString *>(changed->objectForKey("inner"_zp))->hasSuffix(id(kept[k + 2].get())));
        }
        kept.clear();
    }).join();
}

TEST(PropertyListReading, ReplacedEntriesMayBeUsedElsewhere) {
    ZPDictionary *tree =
        "{a = (shared); list = x; a = \"two\"; list = (shared, x, a); b = {c = d; c = shared;}; }"_zp->propertyList();
    EXPECT_EQ(text(tree->description()), "{a = two; b = {c = shared; }; list = (shared, x, a); }");
    for (int i = 0; i < 50; ++i) {
        ZPAutoreleasePoolScope inner;
        EXPECT_REFUSED("{a = (s, \"\\U3042\"); a = s; a = (t, t, s); b = "_zp->propertyList());
    }
}

// ---- agreement of the two readers ----------------------------------------------------------------

// A random text: mostly well formed, of pieces that matter to the tokenizer.
struct Generator {
    std::mt19937 random;
    std::string out;
    template <class T> const T &oneOf(std::initializer_list<T> list) { return list.begin()[random() % list.size()]; }

    void blank() {
        while (random() % 3 == 0)
            out += oneOf<const char *>({" ", "\n", "\t", "/* x */", "// y\n", "/**/", "\r\n", "\v\f"});
    }
    void string() {
        switch (random() % 6) {
        case 0:
        case 1:
            out += oneOf<const char *>(
                {"a", "b1", "key", "$x", "/usr/lib", "a//b", "x:y.z", "_", "0", "12.5", "ab", "0f"});
            break;
        case 2: out += "\"" + std::string(oneOf<const char *>({"a", "key", "", "b1", "two words", "0f"})) + "\""; break;
        case 3: {
            out += '"';
            for (unsigned n = random() % 6; n; --n) {
                char unit[8];
                std::snprintf(unit, sizeof unit, "\\U%04x", unsigned(1 + random() % 0xD7FF));
                out += oneOf<const char *>({"\\n",         "\\101",        "\\U00e9", "\\U3042", "\\7",  "\\400",
                                            "\\0",         "\\U",          "\\Ug",    "\\\n",    "\n",   "\\q",
                                            "caf\xc3\xa9", "\xe3\x81\x82", "x",       "'",       "\\\"", "\\\\",
                                            unit,          unit,           "\\177",   "\\1"});
            }
            out += '"';
            break;
        }
        default: out += 'k' + std::to_string(random() % 40);
        }
    }
    template <class F> void list(const char *ends, char separator, unsigned n, F element) {
        out += ends[0];
        for (unsigned i = 0; i < n; ++i) {
            element();
            if (i + 1 < n || random() % 2) out += separator;
        }
        blank();
        out += ends[1];
    }
    void value(int depth) {
        blank();
        switch (depth > 0 ? random() % 8 : 7) {
        case 0:
        case 1: list("()", ',', random() % 5, [&] { value(depth - 1); }); break;
        case 2:
        case 3:
            list("{}", ';', random() % 4 ? random() % 5 : random() % 60, [&] {
                blank();
                string();
                blank();
                out += '=';
                value(depth - 1);
            });
            break;
        case 4:
            out += '<';
            for (unsigned n = random() % 5; n; --n) {
                blank();
                out += oneOf<const char *>({"00", "0aFF", "1234567890", "ab cd"});
            }
            blank();
            out += '>';
            break;
        default: string();
        }
        blank();
    }
    void damage() {
        for (unsigned n = 1 + random() % 3; n && !out.empty(); --n) {
            std::size_t at = random() % out.size();
            switch (random() % 4) {
            case 0: out.erase(at, 1 + random() % 4); break;
            case 1:
                out.insert(at, 1,
                           oneOf<char>({'(', ')', '{', '}', '<', '>', ',', ';', '=', '"', '\\', '/', '*', ' ', '\n',
                                        '-', 'x', '\0', '\x7f'}));
                break;
            case 2: out.resize(at); break;
            case 3: out.insert(at, out.substr(random() % out.size(), random() % 20)); break;
            }
        }
    }
};

TEST(PropertyListReading, BothReadersAgreeAndTheWriterWithThem) {
    std::istringstream cases("| |/|//|/*|/* *|/**|/*/|a|a/|\"|\"\\|\"\\U|\"\\1|<|<0|<00|<00>|<0 0>|"
                             "<00,>|<\"00\">|<00/**/11>|<00//11\n>|<0g>|<g0>|<000>|<:>|(|(a|(a,|(a,,|()|(,)|"
                             "{|{}|{;}|{a}|{a=}|{a=b|{a=b;|{a=b;;}|{\"\"=\"\";}|{(a)=b;}|{a=b;a=c;a=d}|a b|a,|"
                             "() ()|'a'|-1|a-b|#|@\"x\"|(a;b)|{a=b,}|\x01|\"\x01\"|\\|a\\");
    for (std::string text; std::getline(cases, text, '|');) expectAgreement(textOf(text));
    for (unsigned seed = 0; seed < 2500; ++seed) {
        ZPAutoreleasePoolScope inner;
        Generator g{std::mt19937(seed)};
        g.value(4);
        if (seed % 2) g.damage();
        ZPString *text = textOf(g.out);
        if (!text) continue;  // the damage hit a character of several bytes
        expectAgreement(text);
        // The same text kept in units, and inside a mutable string.
        std::u16string units(text->length(), 0);
        text->getCharacters(units.data());
        expectAgreement(ZPString::stringWithCharacters_length(units.data(), unsigned(units.size())));
        expectAgreement(text->mutableCopy()->autorelease());
        // What is written of the tree reads back as it.
        id tree;
        if (raised([&] { tree = text->propertyList(); }).empty() && !tree->isKindOfClass(ZPString::class_()) &&
            !tree->isKindOfClass(ZPData::class_())) {
            EXPECT_TRUE(tree->description()->propertyList()->isEqual(tree));
        }
        if (testing::Test::HasFailure()) FAIL() << "seed " << seed;
    }
}

TEST(PropertyListReading, ManyStringsOfOneHashDoNotSlowReading) {
    // Equal in length and at both ends, which is all that the hash of a string reads.
    std::string list = "(";
    for (int i = 100000; i < 130000; ++i) list += "aaaaaaaa" + std::to_string(i) + "zzzzzzzz,";
    auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(static_cast<ZPArray *>(textOf(list + ")")->propertyList())->count(), 30000u);
    EXPECT_REFUSED(textOf(list + "(")->propertyList());
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

// ---- strings files -------------------------------------------------------------------------------

TEST(PropertyListReading, StringsFiles) {
    ZPDictionary *table =
        "x; y = z; /* c */ \"a b\" = \"c\\nd\"; n = {k; l = (1)}"_zp->propertyListFromStringsFileFormat();
    EXPECT_TRUE(table->isEqual(
        ZPMakeDictionary({{"x"_zp, "x"_zp},
                          {"y"_zp, "z"_zp},
                          {"a b"_zp, "c\nd"_zp},
                          {"n"_zp, ZPMakeDictionary({{"k"_zp, "k"_zp}, {"l"_zp, ZPMakeArray({"1"_zp})}})}})));
    EXPECT_TRUE(table->isKindOfClass(ZPMutableDictionary::class_()));
    EXPECT_EQ(static_cast<ZPDictionary *>(""_zp->propertyListFromStringsFileFormat())->count(), 0u);
    EXPECT_REFUSED("x y"_zp->propertyListFromStringsFileFormat());
    EXPECT_REFUSED("{x;}"_zp->propertyList()) << "not in a property list";
}

}  // namespace
