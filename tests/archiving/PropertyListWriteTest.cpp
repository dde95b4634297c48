// SPDX-License-Identifier: MIT
// Writing property lists as text, and reading them back.
#include <support/Objects.h>

namespace {

std::string bare(ZPString *string) { return text(string->_stringRepresentation()); }

TEST(PropertyListWriting, StringsAreBareWhereTheyCanBe) {
    for (ZPString *string : {"abc"_zp, "x.y"_zp, "x/y"_zp, "$x"_zp, "_1"_zp, "/"_zp})
        EXPECT_EQ(bare(string), text(string));
    for (ZPString *string : {""_zp, "a b"_zp, "x//y"_zp, "x:y"_zp, "x-y"_zp})
        EXPECT_EQ(bare(string), "\"" + text(string) + "\"");
    EXPECT_EQ(bare("a\n\v\f\b\t\a\"\\\r\x7f~"_zp), "\"a\\n\\v\\f\\b\\t\\a\\\"\\\\\\015\\177~\"");
    unsigned char byte;
    char octal[4];
    EXPECT_TRUE(ZPPrecompUnicodeToKESTREL(0xe9, &byte));
    std::snprintf(octal, sizeof octal, "%03o", byte);
    EXPECT_EQ(text("\u3042\u00e9"_zp->quotedStringRepresentation()), "\"\\U3042\\" + std::string(octal) + "\"");
    EXPECT_EQ(text("abc"_zp->quotedStringRepresentation()), "\"abc\"");
    std::string longText = std::string(1000, 'x') + " " + std::string(1000, 'x');
    EXPECT_EQ(bare(ZPString::stringWithCString(longText.c_str())), "\"" + longText + "\"");
}

TEST(PropertyListWriting, ListsOfUpTo79CharactersTakeOneLine) {
    EXPECT_EQ(described(ZPMakeDictionary({{"b"_zp, "2"_zp}, {"a"_zp, "1 2"_zp}})), "{a = \"1 2\"; b = 2; }")
        << "keys in order";
    EXPECT_EQ(described(ZPMakeArray({ZPData::dataWithBytes_length("\1\2\3\4\5", 5), ZPMakeArray({""_zp})})),
              "(<01020304 05>, (\"\"))");
    auto list = [](unsigned length) {  // "(a, " and a string and ")"
        return ZPMakeArray({"a"_zp, ZPString::stringWithCString(std::string(length - 5, 'b').c_str())});
    };
    EXPECT_EQ(described(list(79)).size(), 79u);
    EXPECT_EQ(described(list(80)), "(\n    a, \n    " + std::string(75, 'b') + "\n)");
    auto pair = [](unsigned length) {  // "{a = " and a string and "; }"
        return ZPMakeDictionary({{"a"_zp, ZPString::stringWithCString(std::string(length - 8, 'b').c_str())}});
    };
    EXPECT_EQ(described(pair(79)).size(), 79u);
    EXPECT_EQ(described(pair(80)), "{\n    a = " + std::string(72, 'b') + "; \n}");
    // Short elements that make many lines.
    std::string expected = "(\n";
    std::vector<id> many(30, "x"_zp);
    for (int i = 0; i < 30; ++i) expected += i < 29 ? "    x, \n" : "    x\n";
    EXPECT_EQ(described(ZPArray::arrayWithObjects_count(many.data(), 30)), expected + ")");
}

TEST(PropertyListWriting, NestedListsAreIndented) {
    std::string wide(80, 'w');
    ZPString *w = ZPString::stringWithCString(wide.c_str());
    ZPDictionary *tree = ZPMakeDictionary({{"list"_zp, ZPMakeArray({"s"_zp, ZPMakeDictionary({{"k"_zp, w}})})},
                                           {"short"_zp, ZPMakeArray({"1"_zp, "2"_zp})}});
    EXPECT_EQ(described(tree), "{\n    list = (\n        s, \n        {\n            k = " + wide +
                                   "; \n        }\n    ); \n    short = (1, 2); \n}");
    EXPECT_EQ(text(ZPMakeArray({w})->descriptionWithLocale_indent(nullptr, 2)),
              "(\n            " + wide + "\n        )");
    EXPECT_EQ(text(_ZPIndentSpace(3)), std::string(12, ' '));
}

// Objects that describe themselves in one of three ways.
struct Indented : ZPObject {
    ZP_CLASS(Indented)
    ZPString *descriptionWithLocale_indent(ZPDictionary *locale, unsigned level) {
        return ZPString::stringWithFormat("<%@ %d>"_zp, locale, level);
    }
};
ZP_IMPLEMENT(Indented, descriptionWithLocale_indent);
struct Localized : ZPObject {
    ZP_CLASS(Localized)
    ZPString *descriptionWithLocale(ZPDictionary *locale) { return locale ? "local\u00e9"_zp : "none\u3042"_zp; }
};
ZP_IMPLEMENT(Localized, descriptionWithLocale);

TEST(PropertyListWriting, OtherObjectsDescribeThemselves) {
    ZPArray *list = ZPMakeArray(
        {Indented::new_()->autorelease(), "x"_zp, ZPMakeArray({Localized::new_()->autorelease()}), "a b"_zp});
    EXPECT_TRUE(
        list->descriptionWithLocale(ZPDictionary::dictionary())->isEqual("(<{} 1>, x, (local\u00e9), \"a b\")"_zp));
    ZPString *text = list->description();
    EXPECT_TRUE(text->hasPrefix("(<"_zp));
    EXPECT_TRUE(text->hasSuffix(", (none\u3042), \"a b\")"_zp)) << "characters outside ASCII stay as they are";
    std::string wide(100, 'w');
    ZPArray *tall = ZPMakeArray({ZPString::stringWithCString(wide.c_str()), Localized::new_()->autorelease(), "y"_zp});
    EXPECT_TRUE(tall->description()->isEqual(
        ZPString::stringWithFormat("(\n    %s, \n    %@, \n    y\n)"_zp, wide.c_str(), "none\u3042"_zp)));
    // Keys that do not compare keep the dictionary's order; keys of several kinds of storage are sorted as strings.
    EXPECT_EQ(described(ZPMakeDictionary({{"b"_zp, "1"_zp}, {"\u00e9"_zp, "2"_zp}, {"a"_zp, "3"_zp}})).substr(0, 14),
              "{a = 3; b = 1;");
}

TEST(PropertyListWriting, DeepTreesRaiseInsteadOfOverflowing) {
    ZPArray *deep = ZPArray::array();
    for (int i = 0; i < 999; ++i) deep = ZPMakeArray({deep});
    EXPECT_TRUE(deep->description()->propertyList()->isEqual(deep));
    EXPECT_EQ(_ZPIsPList(deep, YES), 3u);
    deep = ZPMakeArray({deep});
    EXPECT_RAISES(invalid("a property list nested more than 1000 levels deep"), deep->description());
    EXPECT_EQ(_ZPIsPList(deep, YES), 0u);
    ZPMutableArray *loop = ZPMutableArray::array();
    loop->addObject(loop);
    EXPECT_REFUSED(loop->description());
    loop->removeAllObjects();
}

TEST(PropertyListWriting, StringsFiles) {
    ZPDictionary *table = ZPMakeDictionary({{"a b"_zp, "c\n"_zp}});
    EXPECT_EQ(text(table->descriptionInStringsFileFormat()), "\"a b\" = \"c\\n\";\n");
    table = ZPMakeDictionary({{"k"_zp, ZPMakeArray({"x"_zp})}, {"l"_zp, "v"_zp}, {"\u3042"_zp, "\u00e9"_zp}});
    EXPECT_TRUE(table->descriptionInStringsFileFormat()->propertyListFromStringsFileFormat()->isEqual(table));
}

TEST(PropertyListWriting, Files) {
    Directory dir;
    ZPString *path = dir / "list";
    ZPArray *array = ZPMakeArray({"a"_zp, "caf\u00e9"_zp, ZPMakeArray({})});
    EXPECT_TRUE(array->writeToFile_atomically(path, YES));
    for (ZPArray *read :
         {ZPArray::arrayWithContentsOfFile(path), (ZPArray *)ZPMutableArray::arrayWithContentsOfFile(path)})
        EXPECT_TRUE(read->isEqual(array));
    EXPECT_EQ(ZPDictionary::dictionaryWithContentsOfFile(path), nullptr) << "no dictionary";
    EXPECT_TRUE(ZPString::stringWithContentsOfFile(path)->hasSuffix(")\n"_zp));
    ZPDictionary *dictionary = ZPMakeDictionary({{"k"_zp, array}});
    EXPECT_TRUE(dictionary->writeToFile_atomically(path, NO));
    EXPECT_TRUE(ZPMutableDictionary::dictionaryWithContentsOfFile(path)->isEqual(dictionary));
    EXPECT_TRUE("{a = "_zp->writeToFile_atomically(path, NO));
    EXPECT_EQ(ZPDictionary::dictionaryWithContentsOfFile(path), nullptr) << "an error";
    EXPECT_EQ(ZPArray::arrayWithContentsOfFile(dir / "none"), nullptr);
}

TEST(PropertyListWriting, Classification) {
    id mixed = ZPMakeArray({"a"_zp, Localized::new_()->autorelease()});
    const std::pair<id, unsigned> cases[] = {{"a"_zp->mutableCopy()->autorelease(), 1},
                                             {ZPData::data(), 2},
                                             {ZPMakeDictionary({{"k"_zp, ZPMakeArray({"x"_zp})}}), 4},
                                             {nullptr, 0},
                                             {mixed, 0},
                                             {ZPMakeDictionary({{"k"_zp, mixed}}), 0},
                                             {ZPMakeDictionary({{mixed, "v"_zp}}), 0}};
    for (auto &[object, kind] : cases) EXPECT_EQ(_ZPIsPList(object, YES), kind);
    EXPECT_EQ(_ZPIsPList(mixed, NO), 3u);
}

}  // namespace
