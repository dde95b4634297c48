// SPDX-License-Identifier: MIT
#include <support/Objects.h>

namespace {

TEST(CollectionBridge, LoopsOverEveryCollection) {
    for (unsigned n : {0u, 1u, 15u, 16u, 17u, 100u}) {
        ZPMutableArray *array = ZPMutableArray::array();
        ZPMutableDictionary *dictionary = ZPMutableDictionary::dictionary();
        for (unsigned i = 0; i < n; ++i) {
            ZPString *name = ZPString::stringWithFormat("name %u"_zp, i);
            array->addObject(name);
            dictionary->setObject_forKey(ZPString::stringWithFormat("%u"_zp, i), name);
        }
        unsigned i = 0;
        for (ZPString *name : array) EXPECT_EQ(id(name), array->objectAtIndex(i++));
        EXPECT_EQ(i, n);
        for (id name : *array->reverseObjectEnumerator()) EXPECT_EQ(name, array->objectAtIndex(--i));
        EXPECT_EQ(i, 0u);
        for (auto [key, value] : dictionary) {
            EXPECT_EQ(dictionary->objectForKey(key), value);
            ++i;
        }
        EXPECT_EQ(i, n);
        ZPRef<ZPSet> set(ZPSet::setWithArray(array));
        for (id name : set) {
            EXPECT_TRUE(array->containsObject(name));
            --i;
        }
        EXPECT_EQ(i, 0u);
    }
    for (id none : static_cast<ZPArray *>(nullptr)) FAIL() << none.pointer();
}

TEST(CollectionBridge, Braces) {
    ZPDictionary *dictionary = ZPMakeDictionary({{"a"_zp, ZPMakeArray({"x"_zp, "y"_zp})}, {"b"_zp, "z"_zp}});
    EXPECT_TRUE(dictionary->objectForKey("a"_zp)->isEqual(ZPArray::arrayWithObjects("x"_zp, "y"_zp)));
    EXPECT_EQ(dictionary->objectForKey("b"_zp), id("z"_zp));
    EXPECT_REFUSED(ZPMakeArray({"a"_zp, nullptr}));
    EXPECT_EQ(ZPMakeDictionary({}), ZPDictionary::dictionary());
}

}  // namespace
