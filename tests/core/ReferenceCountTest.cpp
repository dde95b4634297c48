// SPDX-License-Identifier: MIT
// Counting: in the header, in the side table for objects that lie elsewhere, in words of the instance,
// and under threads.
#include <support/Objects.h>

namespace {

int deallocated;
struct Plain : ZPObject {
    ZP_CLASS(Plain)
    unsigned _word;
    void dealloc() {
        ++deallocated;
        ZP_SUPER(Plain, dealloc)();
    }
};
ZP_IMPLEMENT(Plain, dealloc);

// Instances that are static objects.
struct Fixed : ZPObject {
    ZP_CLASS(Fixed)
    void dealloc() { ++deallocated; }
};
ZP_IMPLEMENT(Fixed, staticInstances(), dealloc);

struct LaterFixed : Fixed {
    ZP_CLASS(LaterFixed)
};
ZP_IMPLEMENT(LaterFixed);

// Counts its own retains, so no shortcut may pass it by.
struct Watched : ZPObject {
    ZP_CLASS(Watched)
    int _retains;
    id retain() {
        ++_retains;
        return ZP_SUPER(Watched, retain)();
    }
};
ZP_IMPLEMENT(Watched, retain);

}  // namespace

TEST(ReferenceCount, OverridesAreNotPassedBy) {
    ZPRef<Watched> watched = ZPAdopt(Watched::new_());
    for (id each : {watched->retain(), id(watched)->retain()}) each->release();
    EXPECT_EQ(watched->_retains, 2);
}

TEST(ReferenceCount, AllocatingIsTheFirstThatAClassHears) {
    // Its record alone does not say that the superclass counts elsewhere.
    objc_object *object = ZPAllocateObject(LaterFixed::class_(), 0, nullptr);
    EXPECT_TRUE(id(object)->isKindOfClass(Fixed::class_()));
    ZPIncrementExtraRefCount(object);
    EXPECT_EQ(ZPExtraRefCount(object), 1u);
    EXPECT_FALSE(ZPDecrementExtraRefCountWasZero(object));
    EXPECT_TRUE(ZPDecrementExtraRefCountWasZero(object));
    ZPDeallocateObject(object);
}

TEST(ReferenceCount, SideTableGrowsShrinksAndKeepsClusters) {
    // Neighbouring addresses share home slots; every third one is given more than two references.
    static Fixed objects[400];
    for (Fixed &object : objects) object.isa = Fixed::class_();
    auto extra = [](unsigned i) { return i % 3 == 0 ? 5u : i % 3; };
    for (unsigned round = 0; round < 3; ++round) {
        for (unsigned i = 0; i < 400; ++i)
            for (unsigned k = 0; k < extra(i); ++k) ZPIncrementExtraRefCount(&objects[i]);
        for (unsigned i = 0; i < 400; ++i) ASSERT_EQ(ZPExtraRefCount(&objects[i]), extra(i));
        // Removed from the middle outward, every other object must stay findable.
        for (unsigned n = 0; n < 400; ++n) {
            unsigned i = (n * 181 + 7) % 400;
            for (unsigned k = 0; k < extra(i); ++k) ASSERT_FALSE(ZPDecrementExtraRefCountWasZero(&objects[i]));
            ASSERT_TRUE(ZPDecrementExtraRefCountWasZero(&objects[i]));
            unsigned next = ((n + 1) * 181 + 7) % 400;
            ASSERT_TRUE(n == 399 || ZPExtraRefCount(&objects[next]) == extra(next));
        }
    }
    deallocated = 0;
    objects[0].release();
    EXPECT_EQ(deallocated, 1);
    EXPECT_EQ(ZPExtraRefCount(nullptr), 0u);
    EXPECT_FALSE(ZPDecrementExtraRefCountWasZero(nullptr));
}

TEST(ReferenceCount, SaturatesAndStays) {
    LogCapture log;
    Plain *object = Plain::new_();
    objc_headerOf(object)->extraReferences = 0xFFFFFFFE;
    object->retain();
    EXPECT_EQ(log.text, "");
    object->retain();
    EXPECT_HAS(log.text, "*** Reference count overflow for '<Plain: 0x");
    object->release();
    EXPECT_EQ(ZPExtraRefCount(object), 0xFFFFFFFFu);
    objc_headerOf(object)->extraReferences = 0;
    object->release();
}

TEST(ReferenceCount, WordsOfTheInstanceSpillOver) {
    Plain *object = Plain::new_();
    constexpr unsigned mask = 3;
    object->_word = 0xF0;
    for (unsigned i = 1; i <= 6; ++i) {
        _ZPIncrementInternalRefCount(object, &object->_word, mask, nullptr);
        EXPECT_EQ(_ZPInternalRefCount(object, object->_word, mask), i + 1);
    }
    EXPECT_EQ(object->_word, 0xF3u);
    EXPECT_EQ(ZPExtraRefCount(object), 3u);
    for (unsigned i = 6; i >= 1; --i) {
        EXPECT_FALSE(_ZPDecrementInternalRefCountWasZero(object, &object->_word, mask, nullptr));
        EXPECT_EQ(_ZPInternalRefCount(object, object->_word, mask), i);
    }
    EXPECT_TRUE(_ZPDecrementInternalRefCountWasZero(object, &object->_word, mask, nullptr));
    EXPECT_EQ(object->_word, 0xF0u);
    object->release();
}

TEST(ReferenceCount, ThreadsLoseNothing) {
    deallocated = 0;
    Plain *object = Plain::new_();
    static Fixed fixed;
    fixed.isa = Fixed::class_();
    onThreads(8, [&](int) {
        for (int i = 0; i < 20000; ++i) {
            object->retain();
            fixed.retain();
            _ZPIncrementInternalRefCount(object, &object->_word, 0xFFFFFFFF, nullptr);
        }
        for (int i = 0; i < 20000; ++i) {
            object->release();
            fixed.release();
            _ZPDecrementInternalRefCountWasZero(object, &object->_word, 0xFFFFFFFF, nullptr);
        }
    });
    EXPECT_EQ(retained(object, &fixed), (Counts{1, 1}));
    EXPECT_EQ(object->_word, 0u);
    object->release();
    EXPECT_EQ(deallocated, 1);
}

TEST(Ref, OwnsOneReference) {
    deallocated = 0;
    {
        ZPRef<Plain> a = ZPAdopt(Plain::new_());
        ZPRef<ZPObject> b = a;
        EXPECT_EQ(a->retainCount(), 2u);
        ZPRef<ZPObject> c = std::move(b);
        EXPECT_FALSE(b);
        ZPRef<Plain> d = id(c);
        EXPECT_EQ(a->retainCount(), 3u);
        d = nullptr;
        a = std::move(a);
        EXPECT_EQ(c->retainCount(), 2u);
        ZPAutoreleasePoolScope pool;  // an owner stands for its object behind a format too
        EXPECT_EQ(ZPString::stringWithFormat("%@"_zp, a)->hash(), c->description()->hash());
    }
    EXPECT_EQ(deallocated, 1);
}
