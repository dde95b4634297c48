// SPDX-License-Identifier: MIT
// Strings beside std::string, std::u16string, streams and unordered containers.
#include <support/Objects.h>

#include <unordered_map>

TEST(StringBridge, textsGoThereAndBack) {
    std::string longText;
    for (int i = 0; i < 2000; ++i) longText += i % 7 ? "a" : "\U0001F600\u00e9\u4e2d";
    for (std::string text : {std::string(), std::string("plain"), std::string("gr\u00fc\u00df \u4e2d \U0001F600"),
                             std::string("nul\0in", 6), longText}) {
        ZPString *s = ZPMakeString(text);
        EXPECT_EQ(ZPStdString(s), text);
        EXPECT_EQ(ZPStdString(ZPMakeString(ZPStdU16String(s))), text);
        ZPMutableString *m = ZPMutableString::stringWithString(s);
        m->appendString("!"_zp);
        EXPECT_EQ(ZPStdString(m), text + "!");
        std::ostringstream out;
        out << s << m;
        EXPECT_EQ(out.str(), text + text + "!");
    }
    EXPECT_EQ(ZPStdU16String(ZPMakeString("\U0001F600")), u"\xD83D\xDE00");
    EXPECT_EQ(ZPMakeString("cut \xE2\x82"), nullptr);
    std::ostringstream out;

    struct Opaque;  // somebody else's
    out.str("");
    out << static_cast<Opaque *>(nullptr);
    EXPECT_EQ(out.str(), "0");
    out.str("");
    ZPRef<ZPObject> object = ZPAdopt(ZPObject::new_());
    out << id("text"_zp) << object.get() << object << static_cast<ZPMutableString *>(nullptr) << id();
    EXPECT_EQ(out.str(),
              "text" + ZPStdString(object->description()) + ZPStdString(object->description()) + "(null)(null)");
}

TEST(Memory, ReferencesCompareWithWhateverRefersToAnObject) {
    ZPRef<ZPString> text = "text"_zp, none;
    ZPRef<ZPObject> object = text;
    ZPString *pointer = "text"_zp;
    const ZPString *other = "other"_zp;
    EXPECT_TRUE(text == pointer && pointer == text && text == id(pointer) && id(pointer) == text && text == object &&
                object == pointer);
    EXPECT_TRUE(text != other && other != text && text != none && none == nullptr && nullptr == none &&
                text != nullptr);
    EXPECT_EQ(&*text, pointer);
}

TEST(StringBridge, unorderedContainers) {
    std::unordered_map<ZPRef<ZPString>, int, ZPStringHash, ZPStringEqual> map;
    map[ZPMakeString("one")] = 1;
    map[ZPMakeString(u"one")] += 1;
    map[ZPMakeString("zw\u00f6lf und noch viel mehr")] = 12;
    map["literal"_zp] = 3;
    EXPECT_EQ(map.size(), 3u);
    EXPECT_EQ(map[ZPMutableString::stringWithString("one"_zp)], 2);
    EXPECT_EQ(map.find(std::string_view("one"))->second, 2);
    EXPECT_EQ(map.find(std::string_view("zw\u00f6lf und noch viel mehr"))->second, 12);
    EXPECT_EQ(map.find(std::u16string_view(u"literal"))->second, 3);
    EXPECT_EQ(map.find(std::string_view("\xE2\x82")), map.end());
    EXPECT_EQ(map.find(std::string_view()), map.end());
}
