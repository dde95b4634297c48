// SPDX-License-Identifier: MIT
// Autorelease pools: order, nesting, pages, reports, errors inside a pop, threads.
#include <Bedrock/bridge/ZPMemory.h>
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/strings/ZPString.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

std::vector<int> died;
struct Mortal : ZPObject {
    ZP_CLASS(Mortal)
    int _name;
    Mortal *_heir;
    BOOL _raises;
    void dealloc() {
        died.push_back(_name);
        if (_heir) _heir->autorelease();
        bool raises = _raises;
        objc_super<Mortal>(this).send("dealloc"_sel);
        if (raises) ZPException::raise_format(ZPGenericException, "no rest for %d"_zp, 7);
    }
};
ZP_IMPLEMENT(Mortal).method<&Mortal::dealloc>("dealloc");

Mortal *make(int name) {
    Mortal *m = Mortal::new_();
    m->_name = name;
    return m;
}

std::string logged;
void keepLog(const char *bytes, unsigned length, BOOL) { logged.append(bytes, length); }

struct Pools : testing::Test {
    void SetUp() override {
        ZPAutoreleasePool::releaseAllPools();
        died.clear();
        logged.clear();
        _ZPSetLogCStringFunction(keepLog);
    }
    void TearDown() override {
        _ZPSetLogCStringFunction(nullptr);
        ZPAutoreleasePool::releaseAllPools();
    }
};

using Died = std::vector<int>;

}  // namespace

TEST_F(Pools, ReleaseNewestFirstAndWithTheOuterPoolTheInner) {
    EXPECT_EQ(ZPPushAutoreleasePool(0), 0u);
    unsigned outer = ZPPushAutoreleasePool(0);
    make(1)->autorelease();
    ZPAutoreleasePool *inner = ZPAutoreleasePool::new_();
    make(2)->autorelease();
    make(3)->autorelease();
    EXPECT_EQ(ZPAutoreleasePoolCount(), 3u);
    EXPECT_EQ(ZPTopAutoreleasePoolCount(), 2u);
    ZPPopAutoreleasePool(outer);
    EXPECT_EQ(died, (Died{3, 2, 1}));
    EXPECT_EQ(ZPAutoreleasePoolCount(), 0u);
    inner->release();  // already popped: nothing
    ZPPopAutoreleasePool(5);
    EXPECT_EQ(died.size(), 3u);
    ZPPopAutoreleasePool(0);
}

TEST_F(Pools, WhatReleasesAutoreleaseGoesWithTheSamePop) {
    ZPPushAutoreleasePool(0);
    unsigned inner = ZPPushAutoreleasePool(0);
    Mortal *first = make(1);
    first->_heir = make(2);
    first->_heir->_heir = make(3);
    first->autorelease();
    ZPPopAutoreleasePool(inner);
    EXPECT_EQ(died, (Died{1, 2, 3}));
}

TEST_F(Pools, SpanPagesAndReuseThem) {
    ZPPushAutoreleasePool(0);
    unsigned perPage = (ZPPageSize() - 24) / 8;
    for (int round = 0; round < 3; ++round) {
        unsigned token = ZPPushAutoreleasePool(0);
        Mortal *m = make(1);
        for (unsigned i = 0; i < 3 * perPage + 1; ++i) m->retain()->autorelease();
        EXPECT_EQ(ZPTopAutoreleasePoolCount(), 3 * perPage + 1);
        EXPECT_EQ(ZPAutoreleasePoolCountForObject(m), 3 * perPage + 1);
        ZPPopAutoreleasePool(token);
        EXPECT_EQ(m->retainCount(), 1u);
        m->release();
    }
    EXPECT_EQ(ZPAutoreleasePoolCount(), 0u);
    // More levels than the record begins with.
    for (int i = 1; i <= 40; ++i) {
        ZPPushAutoreleasePool(0);
        make(100 + i)->autorelease();
    }
    died.clear();
    ZPPopAutoreleasePool(20);
    EXPECT_EQ(died.size(), 21u);
    EXPECT_EQ(died.front(), 140);
}

TEST_F(Pools, AddObjectToAnOuterPoolKeepsEveryOtherWhereItWas) {
    unsigned perPage = (ZPPageSize() - 24) / 8;
    for (unsigned fill : {0u, perPage - 3, perPage - 2, perPage - 1, perPage}) {
        died.clear();
        ZPAutoreleasePool *outer = ZPAutoreleasePool::new_();
        Mortal *filler = make(0);
        for (unsigned i = 0; i < fill; ++i) filler->retain()->autorelease();
        ZPAutoreleasePool *middle = ZPAutoreleasePool::new_();
        make(1)->autorelease();
        make(2)->autorelease();
        ZPAutoreleasePool *inner = ZPAutoreleasePool::new_();
        make(3)->autorelease();
        make(4)->autorelease();
        outer->addObject(make(9));
        middle->addObject(make(8));
        inner->release();
        EXPECT_EQ(std::vector<int>(died).size(), 2u) << fill;
        EXPECT_EQ(died[0] + died[1], 7) << fill;
        middle->release();
        EXPECT_EQ(died.size(), 5u) << fill;
        EXPECT_EQ(died[2] + died[3] + died[4], 11) << fill;
        outer->release();
        EXPECT_EQ(died.size(), 6u) << fill;
        EXPECT_EQ(died[5], 9) << fill;
        EXPECT_EQ(filler->retainCount(), 1u) << fill;
        filler->release();
    }
}

TEST_F(Pools, APoolThatBeginsOnAnEmptyPageReleasesNothingOfOuterPools) {
    unsigned perPage = (ZPPageSize() - 24) / 8;
    ZPPushAutoreleasePool(0);
    ZPAutoreleasePool *outer = ZPAutoreleasePool::new_();
    Mortal *filler = make(0);
    for (unsigned i = 0; i + 1 < perPage; ++i) filler->retain()->autorelease();
    ZPAutoreleasePool *inner = ZPAutoreleasePool::new_();
    outer->addObject(make(9));  // fills the page, so the inner pool now begins on a new one
    ZPPopAutoreleasePool(ZPPushAutoreleasePool(0));
    inner->release();
    EXPECT_EQ(filler->retainCount(), perPage);
    EXPECT_TRUE(died.empty());
    outer->release();
    EXPECT_EQ(filler->retainCount(), 1u);
    EXPECT_EQ(died, (Died{9}));
    filler->release();
}

namespace {

struct Popper : ZPObject {
    ZP_CLASS(Popper)
    unsigned _outer;
    void dealloc() {
        ZPPopAutoreleasePool(_outer);
        objc_super<Popper>(this).send("dealloc"_sel);
    }
};
ZP_IMPLEMENT(Popper).method<&Popper::dealloc>("dealloc");

}  // namespace

TEST_F(Pools, AReleaseMayPopOuterPools) {
    for (unsigned outer : {1u, 0u}) {
        died.clear();
        ZPPushAutoreleasePool(0);
        ZPPushAutoreleasePool(0);
        make(1)->autorelease();
        unsigned inner = ZPPushAutoreleasePool(0);
        make(2)->autorelease();
        Popper *popper = Popper::new_();
        popper->_outer = outer;
        popper->autorelease();
        ZPPopAutoreleasePool(inner);
        EXPECT_EQ(died, (Died{2, 1})) << outer;
        EXPECT_EQ(ZPAutoreleasePoolCount(), 0u) << outer;
        if (outer) EXPECT_EQ(ZPPushAutoreleasePool(0), 1u);
        else EXPECT_EQ(ZPPushAutoreleasePool(0), 0u);
        make(3)->autorelease();
        ZPPopAutoreleasePool(0);
        EXPECT_EQ(died.back(), 3) << outer;
    }
}

TEST_F(Pools, NoPoolIsReportedAndLeaks) {
    Mortal *m = make(1);
    m->autorelease();
    EXPECT_NE(logged.find("*** _ZPAutoreleaseNoPool(): Object 0x"), std::string::npos);
    EXPECT_NE(logged.find("of class Mortal autoreleased with no pool in place - just leaking\n"), std::string::npos);
    ZPPopAutoreleasePool(ZPPushAutoreleasePool(0));
    EXPECT_EQ(m->retainCount(), 1u);
    m->release();
}

TEST_F(Pools, AnExceptionStopsThePopAndGoesNoFurther) {
    ZPPushAutoreleasePool(0);
    unsigned inner = ZPPushAutoreleasePool(0);
    make(1)->autorelease();
    Mortal *bad = make(2);
    bad->_raises = YES;
    bad->autorelease();
    make(3)->autorelease();
    EXPECT_NO_THROW(ZPPopAutoreleasePool(inner));
    EXPECT_EQ(died, (Died{3, 2}));
    EXPECT_NE(
        logged.find(
            "Exception ignored while releasing an object in an autorelease pool: ZPGenericException no rest for 7\n"),
        std::string::npos);
    ZPPopAutoreleasePool(0);
    EXPECT_EQ(died, (Died{3, 2, 1}));
}

namespace {

struct OldStyle : ZPObject {
    ZP_CLASS(OldStyle)
    void dealloc() {
        objc_super<OldStyle>(this).send("dealloc"_sel);
        _QLRaiseError(42, 1, 2);
    }
};
ZP_IMPLEMENT(OldStyle).method<&OldStyle::dealloc>("dealloc");

}  // namespace

TEST_F(Pools, ARaiseByCodeIsReportedByName) {
    ZPPushAutoreleasePool(0);
    unsigned inner = ZPPushAutoreleasePool(0);
    OldStyle::new_()->autorelease();
    EXPECT_NO_THROW(ZPPopAutoreleasePool(inner));
    EXPECT_NE(logged.find("in an autorelease pool: ZPOldStyleException Old style exception with code 42"),
              std::string::npos)
        << logged;
}

TEST_F(Pools, SettingsOfTheThread) {
    ZPPushAutoreleasePool(0);
    Mortal *m = make(1);
    ZPAutoreleasePool::enableRelease(NO);
    unsigned token = ZPPushAutoreleasePool(0);
    m->retain()->autorelease();
    ZPPopAutoreleasePool(token);
    EXPECT_EQ(m->retainCount(), 2u);
    m->release();
    ZPAutoreleasePool::enableRelease(YES);
    m->release();

    ZPAutoreleasePool::setPoolCountHighWaterMark(100);
    ZPAutoreleasePool::setPoolCountHighWaterResolution(10);
    ZPAutoreleasePool::resetTotalAutoreleasedObjects();
    testing::internal::CaptureStderr();
    token = ZPPushAutoreleasePool(0);
    for (int i = 0; i < 125; ++i) ZPObject::new_()->autorelease();
    std::string reports = testing::internal::GetCapturedStderr();
    for (const char *line : {"_ZPAutoreleaseHighWaterLog(): 100 objects in top", "(): 110 objects", "(): 120 objects"})
        EXPECT_NE(reports.find(line), std::string::npos) << line;
    EXPECT_EQ(reports.find("(): 101"), std::string::npos);
    EXPECT_EQ(ZPAutoreleasePool::totalAutoreleasedObjects(), 125u);
    ZPPopAutoreleasePool(token);

    testing::internal::CaptureStderr();
    ZPObject::new_()->autorelease();
    ZPPrintAutoreleasePools();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Pool (level = 0): 1 objects ====================\n\t0x"),
              std::string::npos);
}

TEST_F(Pools, PoolObjectsRefuseToBeShared) {
    ZPPushAutoreleasePool(0);
    ZPAutoreleasePool *pool = ZPAutoreleasePool::new_();
    try {
        pool->retain();
        FAIL();
    } catch (ZPException *e) {
        EXPECT_STREQ(e->reason()->cString(), "*** -[ZPAutoreleasePool retain]: Cannot retain an autorelease pool");
    }
    EXPECT_THROW(pool->autorelease(), ZPException *);
    EXPECT_EQ(pool->retainCount(), 1u);
    pool->release();
}

TEST_F(Pools, ThreadsHaveTheirOwnAndLeaveNothing) {
    std::thread([] {
        ZPPushAutoreleasePool(0);
        make(1)->autorelease();  // never popped: the end of the thread does it
        EXPECT_EQ(ZPAutoreleasePoolCount(), 1u);
    }).join();
    EXPECT_EQ(died, (Died{1}));
    EXPECT_EQ(ZPAutoreleasePoolCount(), 0u);
}
