// SPDX-License-Identifier: MIT
// Dictionaries over every storage form: the two concrete classes and a client subclass with the primitives
// only.
#include "Support.h"

ZP_IMPLEMENT(PlainMutableDictionary, init, initWithCapacity, initWithObjects_forKeys_count, count, objectForKey,
             keyEnumerator, setObject_forKey, removeObjectForKey);

ZP_IMPLEMENT(Doer, act, dealloc);

namespace {

std::map<int, int> contentsOf(ZPDictionary *dictionary) {
    std::map<int, int> contents;
    ZPEnumerator *keys = dictionary->keyEnumerator();
    while (id key = keys->nextObject()) contents[valueOf(key)] = valueOf(dictionary->objectForKey(key));
    return contents;
}
using Contents = std::map<int, int>;

ZPDictionary *makePairs(Class cls, const std::vector<id> &objects, const std::vector<id> &keys) {
    return objc_msgSend<id>(cls, "dictionaryWithObjects:forKeys:count:"_sel, objects.data(), keys.data(),
                            unsigned(keys.size()));
}

struct Dictionary : CollectionTest, testing::WithParamInterface<Class> {
    ZPDictionary *make(const Contents &contents) {
        Values keys, values;
        for (auto [key, value] : contents) keys.push_back(key), values.push_back(value);
        return makePairs(GetParam(), itemsOf(values), itemsOf(keys));
    }
};

INSTANTIATE_TEST_SUITE_P(Forms, Dictionary,
                         testing::Values(ZPDictionary::class_(), ZPMutableDictionary::class_(),
                                         PlainMutableDictionary::class_()),
                         nameOfParameter);

struct Uncopyable : ZPObject {
    ZP_CLASS(Uncopyable)
};
ZP_IMPLEMENT(Uncopyable);

// Leaves something on the stack where a frame will lie that must not read it.
[[gnu::noinline]] void soil() {
    volatile char below[4096];
    for (volatile char &c : below) c = 0x5A;
}

using KeysAndElements = CollectionTest;
TEST_F(KeysAndElements, ThatCannotBeCopiedAreRefused) {
    ZPRef<Uncopyable> key = ZPAdopt(Uncopyable::new_());
    auto *dictionary = ZPMutableDictionary::dictionaryWithObject_forKey(TestItem::with(2), TestItem::with(1));
    auto *array = ZPMutableArray::arrayWithObjects(TestItem::with(1), key.get());
    unsigned before = key->retainCount();
    for (int i = 0; i < 3; ++i) {
        soil();
        EXPECT_THROW(dictionary->setObject_forKey(TestItem::with(7), key.get()), ZPException *);
        EXPECT_THROW(ZPDictionary::dictionaryWithObject_forKey(TestItem::with(7), key.get()), ZPException *);
        EXPECT_THROW(array->copy(), ZPException *);
        EXPECT_THROW(ZPArray::arrayWithArray_copyItems(array, YES), ZPException *);
    }
    EXPECT_EQ(contentsOf(dictionary), (Contents{{1, 2}}));
    EXPECT_EQ(key->retainCount(), before);
}

TEST_P(Dictionary, LooksUp) {
    Contents contents;
    for (int n : {0, 1, 3, 4, 7, 8, 12, 1000}) {
        for (int i = int(contents.size()); i < n; ++i) contents[i * 3] = i;
        ZPDictionary *dictionary = make(contents);
        EXPECT_EQ(dictionary->count(), unsigned(n));
        for (int i = 0; i < n; ++i) EXPECT_EQ(valueOf(dictionary->objectForKey(TestItem::with(i * 3))), i);
        EXPECT_EQ(dictionary->objectForKey(TestItem::with(1)), nullptr);
        EXPECT_EQ(dictionary->objectForKey(nullptr), nullptr);
        EXPECT_EQ(contentsOf(dictionary), contents);
        EXPECT_EQ(dictionary->hash(), unsigned(n));
    }
}

TEST_P(Dictionary, LaterPairsWinAndTheFirstKeyStays) {
    std::vector<id> keys = itemsOf({1, 2, 1}), objects = itemsOf({10, 20, 30});
    TestItem::copies = 0;
    EXPECT_EQ(contentsOf(makePairs(GetParam(), objects, keys)), (Contents{{1, 30}, {2, 20}}));
    EXPECT_GE(TestItem::copies, 2) << "keys are copies";
}

TEST_P(Dictionary, KeysAndValues) {
    ZPDictionary *dictionary = make({{1, 10}, {2, 20}, {3, 10}});
    ZPArray *keys = dictionary->allKeys(), *values = dictionary->allValues();
    ASSERT_EQ(keys->count(), 3u);
    for (unsigned i = 0; i < 3; ++i)
        EXPECT_EQ(dictionary->objectForKey(keys->objectAtIndex(i)), values->objectAtIndex(i));
    EXPECT_EQ(valuesOf(dictionary->objectEnumerator()), valuesOf(values));
    EXPECT_EQ(valuesOf(dictionary->keyEnumerator()), valuesOf(keys));
    TestItem *ten = TestItem::with(10), *thirty = TestItem::with(30), *absent = TestItem::with(-5);
    EXPECT_EQ(valuesOf(dictionary->allKeysForObject(ten)->sortedArrayUsingSelector("compare:"_sel)), (Values{1, 3}));
    EXPECT_EQ(dictionary->countForObject(ten), 2u);
    EXPECT_TRUE(dictionary->containsObject(ten) && !dictionary->containsObject(thirty));
    ZPArray *asked = ZPArray::arrayWithObjects(TestItem::with(2), TestItem::with(9));
    EXPECT_EQ(valuesOf(dictionary->objectsForKeys_notFoundMarker(asked, absent)), (Values{20, -5}));
    id o[3], k[3];
    dictionary->getObjects_forKeys(o, k);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(dictionary->objectForKey(k[i]), o[i]);
    dictionary = make({{1, 30}, {2, 10}, {3, 20}});
    EXPECT_EQ(valuesOf(dictionary->keysSortedByValueUsingSelector("compare:"_sel)), (Values{2, 3, 1}));
    EXPECT_EQ(contentsOf(dictionary->invertedDictionary()), (Contents{{30, 1}, {10, 2}, {20, 3}}));
}

TEST_P(Dictionary, Equality) {
    ZPDictionary *dictionary = make({{1, 10}, {2, 20}});
    for (Class cls : {ZPDictionary::class_(), ZPMutableDictionary::class_(), PlainMutableDictionary::class_()}) {
        ZPDictionary *other = objc_msgSend<id>(cls, "dictionaryWithDictionary:"_sel, dictionary);
        EXPECT_TRUE(dictionary->isEqual(other) && other->isEqual(dictionary)) << cls->name;
    }
    for (const Contents &other : {Contents{{1, 10}, {2, 21}}, {{1, 10}, {3, 20}}, {{1, 10}}})
        EXPECT_FALSE(dictionary->isEqual(make(other)));
    EXPECT_FALSE(dictionary->isEqual(nullptr));
}

TEST_P(Dictionary, Copies) {
    ZPDictionary *dictionary = make({{1, 10}, {2, 20}});
    id value = dictionary->objectForKey(TestItem::with(1));
    ZPDictionary *copy = dictionary->copy()->autorelease(), *mutableCopy = dictionary->mutableCopy()->autorelease();
    EXPECT_EQ(mutableCopy->objectForKey(TestItem::with(1)), value);
    EXPECT_TRUE(copy->isEqual(dictionary));
    EXPECT_STREQ(copy->isa->name, "ZPConcreteDictionary");
    bool immutable = GetParam() == ZPDictionary::class_();
    EXPECT_EQ(copy == dictionary, immutable);
    EXPECT_EQ(copy->objectForKey(TestItem::with(1)) == value, immutable);
    ZPRef<ZPMutableDictionary> empty = ZPAdopt<ZPMutableDictionary>(make({})->mutableCopy());
    empty->setObject_forKey("v"_zp, "k"_zp);
    EXPECT_EQ(empty->count(), 1u);
}

struct MutableDictionary : Dictionary {
    ZPMutableDictionary *make(Contents contents) { return (ZPMutableDictionary *)Dictionary::make(contents); }
};
INSTANTIATE_TEST_SUITE_P(Forms, MutableDictionary,
                         testing::Values(ZPMutableDictionary::class_(), PlainMutableDictionary::class_()),
                         nameOfParameter);

TEST_P(MutableDictionary, Changes) {
    ZPMutableDictionary *dictionary = make({{1, 10}, {2, 20}, {3, 30}});
    dictionary->addEntriesFromDictionary(make({{3, 33}, {4, 40}}));
    EXPECT_EQ(contentsOf(dictionary), (Contents{{1, 10}, {2, 20}, {3, 33}, {4, 40}}));
    dictionary->removeObjectsForKeys(ZPArray::arrayWithObjects(TestItem::with(1), TestItem::with(9)));
    dictionary->removeKeysForObject(dictionary->objectForKey(TestItem::with(4)));
    dictionary->removeKeysForObject(TestItem::with(20));  // equal is not enough
    EXPECT_EQ(contentsOf(dictionary), (Contents{{2, 20}, {3, 33}}));
    dictionary->invert();
    EXPECT_EQ(contentsOf(dictionary), (Contents{{20, 2}, {33, 3}}));
    dictionary->setDictionary(make({{5, 50}}));
    EXPECT_EQ(contentsOf(dictionary), (Contents{{5, 50}}));
    dictionary->removeAllObjects();
    EXPECT_EQ(dictionary->count(), 0u);
    dictionary->addEntriesFromDictionary(nullptr);
}

TEST_P(MutableDictionary, AgreesWithAMapUnderRandomChanges) {
    std::mt19937 random(5);
    ZPMutableDictionary *dictionary = make({});
    Contents model;
    for (int step = 0; step < 5000; ++step) {
        ZPAutoreleasePoolScope inner;
        int key = int(random() % 60), value = int(random() % 1000);
        bool set = random() % 3;
        if (set) dictionary->setObject_forKey(TestItem::with(value), TestItem::with(key));
        else dictionary->removeObjectForKey(TestItem::with(key));
        if (set) model[key] = value;
        else model.erase(key);
        ASSERT_TRUE(step % 50 || contentsOf(dictionary) == model) << step;
    }
}

struct ConcreteDictionary : CollectionTest {};

TEST_F(ConcreteDictionary, AValueMayTakeItsOwnPlace) {
    TestItem *key = TestItem::with(1), *value = TestItem::with(10);
    ZPMutableDictionary *dictionary = ZPMutableDictionary::dictionary();
    for (int i = 0; i < 2; ++i) dictionary->setObject_forKey(value, key);
    EXPECT_EQ(retained(key, value), (Counts{1, 2})) << "a copy is the key";
}

TEST_F(ConcreteDictionary, Errors) {
    id objects[] = {TestItem::with(1), nullptr}, keys[] = {TestItem::with(2), TestItem::with(3)};
    ZPMutableDictionary *dictionary = ZPMutableDictionary::dictionary();
    const std::pair<const char *, std::function<void()>> cases[] = {
        {"-[ZPConcreteMutableDictionary setObject:forKey:]: attempt to insert nil key",
         [=] { dictionary->setObject_forKey(nullptr, nullptr); }},
        {"-[ZPConcreteMutableDictionary setObject:forKey:]: attempt to insert nil value",
         [=] { dictionary->setObject_forKey(nullptr, "k"_zp); }},
        {"-[ZPConcreteMutableDictionary removeObjectForKey:]: attempt to remove nil key",
         [=] { dictionary->removeObjectForKey(nullptr); }},
        {"-[ZPConcreteMutableDictionary initWithObjects:forKeys:count:]: attempt to insert nil value",
         [&] { ZPMutableDictionary::dictionaryWithObjects_forKeys_count(objects, keys, 2); }},
        {"-[ZPConcreteDictionary initWithObjects:forKeys:count:]: absurd count: 134217728",
         [&] { ZPDictionary::dictionaryWithObjects_forKeys_count(keys, objects, 0x8000000); }},
        {"-[ZPConcreteMutableDictionary initWithCapacity:]: absurd capacity: 134217728",
         [] { ZPMutableDictionary::dictionaryWithCapacity(0x8000000); }},
        {"+[ZPDictionary dictionaryWithObjectsAndKeys:]: second object of each pair must be non-nil",
         [] { ZPDictionary::dictionaryWithObjectsAndKeys("a"_zp, "b"_zp, "c"_zp); }},
        {"-[ZPConcreteDictionary initWithObjects:forKeys:]: number of objects (1) not equal to number of keys (0)",
         [] { ZPDictionary::dictionaryWithObjects_forKeys(ZPArray::arrayWithObject("a"_zp), ZPArray::array()); }},
    };
    for (auto &[reason, body] : cases) EXPECT_EQ(raised(body), invalid(reason));
}

TEST_F(ConcreteDictionary, AnEnumeratorKeepsItsDictionaryUntilTheEnd) {
    ZPDictionary *dictionary = ZPDictionary::dictionaryWithObjectsAndKeys("v"_zp, "k"_zp);
    unsigned count = dictionary->retainCount();
    ZPEnumerator *e = dictionary->objectEnumerator();
    EXPECT_EQ(dictionary->retainCount(), count + 1);
    e->nextObject();
    EXPECT_EQ(e->nextObject(), nullptr);
    EXPECT_EQ(dictionary->retainCount(), count);
}

TEST_F(ConcreteDictionary, MayBeUsedWhileItIsEmptied) {
    ZPMutableDictionary *dictionary = ZPMutableDictionary::dictionary();
    auto useAgain = [=] {
        EXPECT_EQ(dictionary->count(), 0u);
        dictionary->setObject_forKey("again"_zp, "again"_zp);
    };
    dictionary->setObject_forKey(Doer::with({}, useAgain), "k"_zp);
    dictionary->removeAllObjects();
    EXPECT_EQ(dictionary->count(), 1u);
    EXPECT_TRUE(dictionary->containsKey("again"_zp));
}

}  // namespace
