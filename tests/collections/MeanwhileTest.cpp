// SPDX-License-Identifier: MIT
// Collections whose elements do as they like while they are asked.
#include <support/Objects.h>

namespace {

/// Does something when it is sent one of these.
struct Actor : ZPObject {
    ZP_CLASS(Actor)
    std::function<void()> _does, _asked;
    std::function<id(Actor *)> _copies;
    int _number;
    static inline int live = 0;

    static ZPRef<Actor> with(int number) {
        ZPRef<Actor> actor = ZPAdopt(Actor::new_());
        actor->_number = number;
        ++live;
        return actor;
    }
    void act() {
        if (_does) _does();
    }
    ZPString *description() {
        act();
        return ZPString::stringWithFormat("%d"_zp, _number);
    }
    unsigned hash() {
        if (_asked) _asked();
        return 7;
    }
    BOOL isEqual(id other) {
        if (_asked) _asked();
        return other->isKindOfClass(class_()) && other.unchecked<Actor>()->_number == _number;
    }
    id copyWithZone(ZPZone *) {
        if (_asked) _asked();
        return _copies ? _copies(this) : self()->retain();
    }
    void dealloc() {
        --live;
        ZP_SUPER(Actor, dealloc)();
    }
};
ZP_IMPLEMENT(Actor, act, description, hash, isEqual, copyWithZone, dealloc);

/// An array that says it has more than there can be.
struct Boaster : ZPArray {
    ZP_CLASS(Boaster)
    unsigned count() { return 0xFFFFFFFF; }
    id objectAtIndex(unsigned) { return "boast"_zp; }
};
ZP_IMPLEMENT(Boaster, count, objectAtIndex);
struct LongString : ZPString {
    ZP_CLASS(LongString)
    static inline unsigned asked = 0;
    unsigned length() { return 0x7FFFFFFE; }
    unichar characterAtIndex(unsigned) { return ++asked, u'x'; }
};
ZP_IMPLEMENT(LongString, length, characterAtIndex);

}  // namespace

TEST(Meanwhile, MembersLeaveTheSetThatWalksThem) {
    for (bool counted : {false, true})
        for (int what = 0; what < 3; ++what) {
            ZPMutableSet *set = counted ? ZPCountedSet::set() : ZPMutableSet::set();
            for (int i = 0; i < 20; ++i) {
                ZPRef<Actor> actor = Actor::with(i);
                actor->_does = [=] { set->removeAllObjects(); };
                set->addObject(actor.get());
            }
            if (what == 0) set->makeObjectsPerform("act"_sel);
            else if (what == 1) EXPECT_HAS(text(set->description()), "7");
            else set->removeAllObjects();
            EXPECT_EQ(set->count(), 0u);
        }
    EXPECT_EQ(Actor::live, 0);
}

TEST(Meanwhile, CopyingAKeyChangesTheDictionary) {
    ZPMutableDictionary *dictionary = ZPMutableDictionary::dictionary();
    for (int i = 0; i < 3; ++i) dictionary->setObject_forKey("old"_zp, Actor::with(i).get());
    // One comes and another goes, so that the count stays; then the key itself is entered, then there is none.
    ZPRef<Actor> key = Actor::with(10), same = Actor::with(10), none = Actor::with(11);
    key->_copies = [&](Actor *self) {
        dictionary->removeObjectForKey(Actor::with(1).get());
        dictionary->setObject_forKey("other"_zp, Actor::with(20).get());
        return self->retain();
    };
    dictionary->setObject_forKey("new"_zp, key.get());
    EXPECT_EQ(dictionary->count(), 4u);
    id objects[8], keys[8];
    dictionary->getObjects_forKeys(objects, keys);
    for (int i : {0, 2, 10, 20}) EXPECT_TRUE(dictionary->objectForKey(Actor::with(i).get())) << i;
    dictionary->removeObjectForKey(key.get());
    key->_copies = [&](Actor *self) {
        dictionary->setObject_forKey("first"_zp, same.get());
        return self->retain();
    };
    dictionary->setObject_forKey("second"_zp, key.get());
    EXPECT_EQ(dictionary->count(), 4u);
    EXPECT_EQ(dictionary->objectForKey(key.get()), "second"_zp);
    none->_copies = [](Actor *) { return id(); };
    EXPECT_RAISES(invalid("-[ZPConcreteMutableDictionary setObject:forKey:]: attempt to insert nil key"),
                  dictionary->setObject_forKey("value"_zp, none.get()));
    EXPECT_EQ(dictionary->count(), 4u);
}

TEST(Meanwhile, CountsThatCannotBe) {
    ZPRef<Boaster> boaster = ZPAdopt(Boaster::new_());
    EXPECT_REASON_HAS("absurd count", boaster->arrayByAddingObject("x"_zp));
    EXPECT_REASON_HAS("absurd count", boaster->arrayByAddingObjectsFromArray(ZPArray::arrayWithObject("x"_zp)));
    ZPRef<LongString> boast = ZPAdopt(LongString::new_());
    ZPMutableString *text = ZPMutableString::string();
    text->setString("a little"_zp);
    EXPECT_REASON_HAS("is too long", text->appendString(boast.get()));
    EXPECT_REASON_HAS("is too long", ZPString::stringWithFormat("and %@"_zp, boast.get()));
    EXPECT_EQ(LongString::asked, 0u);
}

TEST(Meanwhile, TheValueIsTheArraysOwn) {
    for (bool change : {false, true}) {
        ZPRangeValueArray *array = ZPCreateRangeValueArray(ZPObjectRangeValueCallBacks, 0, NO);
        for (int i = 0; i < 4; ++i)
            ZPRangeValueArrayInsertAtIndex(array, {unsigned(i), 1}, Actor::with(i / 3).get(), 0);
        void *last = ZPRangeValueArrayValueAtIndex(array, 3);
        if (change) ZPRangeValueArrayChangeValueToValue(array, last, ZPRangeValueArrayValueAtIndex(array, 0));
        else ZPRangeValueArrayRemoveRangesWithValue(array, last);
        EXPECT_EQ(ZPCountRangeValueArray(array), change ? 4u : 1u);
        EXPECT_EQ(static_cast<Actor *>(ZPRangeValueArrayValueAtIndex(array, 0))->_number, 1);
        ZPResetRangeValueArray(array);
        ZPFreeRangeValueArray(array);
    }
    EXPECT_EQ(Actor::live, 0);
}

TEST(Meanwhile, ElementsChangeTheArrayThatIsSearched) {
    using A = ZPMutableArray *;
    const std::pair<const char *, void (*)(A array, A unequal, id other)> cases[] = {
        {"search", [](A a, A, id other) { a->indexOfObject(other); }},
        {"search back", [](A a, A, id other) { objc_msgSend<unsigned>(a, "indexOf:::"_sel, other, 39, NO); }},
        {"common", [](A a, A unequal, id) { unequal->firstObjectCommonWithArray(a); }},
        {"equal", [](A a, A unequal, id) { a->isEqualToArray(unequal); }},
        {"excluding", [](A a, A unequal, id) { a->arrayByExcludingObjectsInArray(unequal); }},
        {"remove", [](A a, A, id other) { a->removeObject(other); }},
        {"remove all", [](A a, A unequal, id) { a->removeObjectsInArray(unequal); }},
        {"join", [](A a, A, id) { a->componentsJoinedByString(","_zp); }},
        {"copy", [](A a, A, id) { ZPAdopt(ZPArray::alloc()->initWithArray_copyItems(a, YES)); }},
        {"hint", [](A a, A, id) { a->sortedArrayHint(); }},
        {"perform", [](A a, A, id) { a->makeObjectsPerformSelector("act"_sel); }},
    };
    for (auto &[name, run] : cases)
        for (int what = 0; what < 3; ++what) {
            SCOPED_TRACE(name);
            int before = Actor::live;
            {
                ZPAutoreleasePoolScope pool;
                ZPMutableArray *array = ZPMutableArray::array();
                std::vector<ZPRef<Actor>> unequal;
                int left = 40;
                auto change = [&, what] {
                    if (--left % 3 || left < 0) return;
                    if (what == 0) array->removeAllObjects();
                    if (what == 1) array->removeObjectAtIndex(0);
                    for (int i = 0; what == 2 && i < 50; ++i) array->addObject(Actor::with(100 + i).get());
                };
                for (int i = 0; i < 40; ++i) {
                    ZPRef<Actor> actor = Actor::with(i);
                    actor->_does = actor->_asked = change;
                    array->addObject(actor.get());
                    unequal.push_back(Actor::with(1000 + i));
                    unequal.back()->_asked = change;
                }
                ZPMutableArray *copy = ZPMutableArray::array();
                for (auto &actor : unequal) copy->addObject(actor.get());
                try {
                    run(array, copy, unequal[0].get());
                } catch (ZPException *) {}
            }
            EXPECT_EQ(Actor::live, before);
        }
}

TEST(Meanwhile, AComparisonReplacesWhatIsSorted) {
    for (unsigned count : {2u, 3u, 40u, 200u}) {
        int before = Actor::live;
        {
            ZPAutoreleasePoolScope pool;
            ZPMutableArray *array = ZPMutableArray::array();
            for (unsigned i = 0; i < count; ++i) array->addObject(Actor::with(int(i * 7919 % count)).get());
            array->sortUsingFunction_context(
                [](id a, id b, void *context) {
                    auto *array = static_cast<ZPMutableArray *>(context);
                    array->replaceObjectAtIndex_withObject(0, Actor::with(5000).get());
                    return a.unchecked<Actor>()->_number - b.unchecked<Actor>()->_number;
                },
                array);
            EXPECT_EQ(array->count(), count);
            for (id each : *array) EXPECT_GE(each->retainCount(), 1u);
        }
        EXPECT_EQ(Actor::live, before);
    }
}

TEST(Meanwhile, KeysChangeTheDictionaryThatIsSearched) {
    for (int what = 0; what < 4; ++what)
        for (int operation = 0; operation < 4; ++operation) {
            SCOPED_TRACE(what * 10 + operation);
            int before = Actor::live;
            {
                ZPAutoreleasePoolScope pool;
                ZPMutableDictionary *dictionary = ZPMutableDictionary::dictionary();
                int left = 60;
                auto change = [&, what] {
                    if (--left % 4 || left < 0) return;
                    if (what == 0) dictionary->removeAllObjects();
                    if (what == 1) dictionary->removeObjectForKey(dictionary->keyEnumerator()->nextObject());
                    for (int i = 0; what >= 2 && i < 40; ++i)
                        dictionary->setObject_forKey(
                            "value"_zp, what == 2 ? id(Actor::with(1000 * left + i).get())
                                                  : id(ZPString::stringWithFormat("%d"_zp, 1000 * left + i)));
                };
                std::vector<ZPRef<Actor>> keys;
                for (int i = 0; i < 30; ++i) {
                    keys.push_back(Actor::with(i));
                    dictionary->setObject_forKey("value"_zp, keys.back().get());
                }
                for (auto &key : keys) key->_asked = change;
                ZPRef<Actor> other = Actor::with(29), unknown = Actor::with(-1);
                other->_asked = unknown->_asked = change;
                try {
                    for (Actor *key : {other.get(), unknown.get()}) {
                        if (operation == 0) dictionary->objectForKey(key);
                        if (operation == 1) dictionary->setObject_forKey("new"_zp, key);
                        if (operation == 2) dictionary->removeObjectForKey(key);
                        if (operation == 3) dictionary->objectForKey(key)->description();
                    }
                } catch (ZPException *) {}
                left = 0;
                EXPECT_EQ(dictionary->count(), dictionary->allKeys()->count());
            }
            EXPECT_EQ(Actor::live, before);
        }
}
