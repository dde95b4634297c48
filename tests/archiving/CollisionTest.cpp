// SPDX-License-Identifier: MIT
// Keys from outside that have one hash: the hash of a string reads a part of it.
#include <support/Objects.h>

namespace {

std::string keyOf(int n) {
    char text[32];
    std::snprintf(text, sizeof text, "abcdefgh%08dijklmnop", n);
    return text;
}

/// Another class of string, given only the primitives.
struct Letters : ZPString {
    ZP_CLASS(Letters)
    std::string _text;
    unsigned length() { return unsigned(_text.size()); }
    unichar characterAtIndex(unsigned index) { return static_cast<unsigned char>(_text[index]); }
};
ZP_IMPLEMENT(Letters, length, characterAtIndex);

}  // namespace

TEST(Collisions, OfKeysCostNoMoreThanOtherKeys) {
    constexpr int count = 100000;  // by one chain, five thousand million steps
    ASSERT_EQ(ZPMakeString(keyOf(1))->hash(), ZPMakeString(keyOf(2))->hash());
    std::string source = "{";
    for (int i = 0; i < count; ++i) source += keyOf(i) + "=" + std::to_string(i) + ";";
    ZPMutableDictionary *added = ZPMutableDictionary::dictionary();
    for (int i = 0; i < count; ++i) {
        ZPAutoreleasePoolScope pool;
        added->setObject_forKey(ZPMakeString(std::to_string(i)), ZPMakeString(keyOf(i)));
    }
    ZPDictionary *read = ZPMakeString(source + "}")->propertyList(),
                 *copied = ZPMutableDictionary::dictionaryWithDictionary(read);
    EXPECT_TRUE(read->isEqualToDictionary(added));
    for (ZPDictionary *dictionary : {static_cast<ZPDictionary *>(added), read, copied}) {
        ZPAutoreleasePoolScope pool;
        ASSERT_EQ(dictionary->count(), unsigned(count));
        for (int i = 0; i < count; i += 7)
            ASSERT_EQ(ZPStdString(dictionary->objectForKey(ZPMakeString(keyOf(i)))), std::to_string(i));
        EXPECT_EQ(dictionary->objectForKey(ZPMakeString(keyOf(count))), nullptr);
        ZPRef<Letters> other = ZPAdopt(Letters::new_());
        other->_text = keyOf(77);
        EXPECT_EQ(ZPStdString(dictionary->objectForKey(other.get())), "77");
        EXPECT_EQ(ZPStdString(dictionary->objectForKey(ZPMutableString::stringWithString(other.get()))), "77");
    }
    for (int i = 0; i < count; i += 2) added->removeObjectForKey(ZPMakeString(keyOf(i)));
    EXPECT_EQ(added->count(), unsigned(count) / 2);
}

TEST(Collisions, KeysThatComeOftenChangeNoOrder) {
    // These begin their search at one bucket; there are only two of them.
    std::string source = "{";
    for (int i = 0; i < 100; ++i) source += keyOf(1) + "=a;" + keyOf(2) + "=b;";
    ZPDictionary *read = ZPMakeString(source + "}")->propertyList();
    EXPECT_EQ(read->count(), 2u);
    EXPECT_TRUE(read->isEqualToDictionary(
        ZPMakeDictionary({{ZPMakeString(keyOf(1)), "a"_zp}, {ZPMakeString(keyOf(2)), "b"_zp}})));
}
