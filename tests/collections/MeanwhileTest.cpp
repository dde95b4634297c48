// SPDX-License-Identifier: MIT
// Collections whose elements do as they like while they are asked.
#include <support/Objects.h>

namespace {

/// Does something when it is sent one of these.
struct Actor : ZPObject {
    ZP_CLASS(Actor)
    std::function<void()> _does;
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
    unsigned hash() { return 7; }
    BOOL isEqual(id other) { return other->isKindOfClass(class_()) && other.unchecked<Actor>()->_number == _number; }
    id copyWithZone(ZPZone *) { return _copies ? _copies(this) : self()->retain(); }
    void dealloc() {
        --live;
        objc_super<Actor>(this).send("dealloc"_sel);
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
            if (what == 1) {
                EXPECT_HAS(text(set->description()), "7");
            }
            if (what == 2) set->removeAllObjects();
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
