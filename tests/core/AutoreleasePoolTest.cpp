// SPDX-License-Identifier: MIT
// Autorelease pools: order, nesting, pages, reports, errors inside a pop, threads.
#include <support/Objects.h>

#include <array>

ZP_IMPLEMENT(Doer, act, dealloc);

namespace {

std::vector<int> died;
struct Mortal : ZPObject {
    ZP_CLASS(Mortal)
    int _name;
    Mortal *_heir;
    int _raises;  // 1: an exception, 2: a code
    ZPAutoreleasePool *_gives;  // gets an object that has the negative name
    void dealloc() {
        died.push_back(_name);
        if (_heir) _heir->autorelease();
        if (_gives) {
            Mortal *given = Mortal::new_();
            given->_name = -_name;
            _gives->addObject(given);
        }
        int raises = _raises;
        ZP_SUPER(Mortal, dealloc)();
        if (raises == 1) ZPException::raise_format(ZPGenericException, "no rest for %d"_zp, 7);
        if (raises == 2) _QLRaiseError(42, 1, 2);
    }
};
ZP_IMPLEMENT(Mortal, dealloc);

Mortal *make(int name) {
    Mortal *m = Mortal::new_();
    m->_name = name;
    return m;
}

struct Pools : testing::Test {
    LogCapture log;
    Pools() {
        ZPAutoreleasePool::releaseAllPools();
        ZPPushAutoreleasePool(0);
        died.clear();
    }
    ~Pools() { ZPAutoreleasePool::releaseAllPools(); }
    static unsigned perPage() { return (ZPPageSize() - 24) / 8; }
};

using Died = std::vector<int>;

/// A pool with more fields than the library's.
struct WidePool : ZPAutoreleasePool {
    ZP_CLASS(WidePool)
    std::array<std::uint64_t, 60> _more;
    std::string _text = "text";
};
ZP_IMPLEMENT(WidePool);

}  // namespace

TEST_F(Pools, SubclassesGetPoolsOfTheirOwn) {
    for (int round = 0; round < 8; ++round) {
        ZPAutoreleasePool *plain = ZPAutoreleasePool::new_();
        WidePool *wide = WidePool::new_();
        EXPECT_EQ(plain->isa, ZPAutoreleasePool::class_());
        EXPECT_EQ(wide->isa, WidePool::class_());
        wide->_more.fill(~0ull);
        wide->_text += " that is too long to lie inside the string";
        plain->release();  // and the other with it
    }
}

TEST_F(Pools, ReleaseNewestFirstAndWithTheOuterPoolTheInner) {
    ZPAutoreleasePool::releaseAllPools();
    EXPECT_EQ(ZPPushAutoreleasePool(0), 0u);
    unsigned outer = ZPPushAutoreleasePool(0);
    make(1)->autorelease();
    ZPAutoreleasePool *inner = ZPAutoreleasePool::new_();
    for (int i : {2, 3}) make(i)->autorelease();
    EXPECT_EQ(ZPTopAutoreleasePoolCount(), 2u);
    ZPPopAutoreleasePool(outer);
    EXPECT_EQ(died, (Died{3, 2, 1}));
    inner->release();  // already popped: nothing
    ZPPopAutoreleasePool(5);
    EXPECT_EQ(died.size(), 3u);
    ZPPopAutoreleasePool(0);
}

TEST_F(Pools, WhatReleasesAutoreleaseGoesWithTheSamePop) {
    unsigned inner = ZPPushAutoreleasePool(0);
    Mortal *first = make(1);
    first->_heir = make(2);
    first->_heir->_heir = make(3);
    first->autorelease();
    ZPPopAutoreleasePool(inner);
    EXPECT_EQ(died, (Died{1, 2, 3}));
}

TEST_F(Pools, DoWhatAStackOfListsDoes) {
    struct Level {
        ZPAutoreleasePool *pool;
        unsigned fill = 0;
        Died names;
    };
    std::mt19937 random(5);
    std::vector<Level> model;
    Mortal *filler = make(0);
    for (int step = 1; step < 10000; ++step) {
        switch (model.empty() ? 0 : random() % 8) {
        case 0:
        case 1: model.push_back({ZPAutoreleasePool::new_()}); break;
        case 2:
        case 3:
            make(step)->autorelease();
            model.back().names.push_back(step);
            break;
        case 4: {  // to the end of a page, or nearly
            unsigned fill = (2 * perPage() - ZPAutoreleasePoolCount() % perPage() - random() % 4) % perPage();
            for (unsigned i = 0; i < fill; ++i) filler->retain()->autorelease();
            model.back().fill += fill;
            break;
        }
        case 5: {
            std::size_t at = random() % 20 ? model.size() - 1 - random() % std::min<std::size_t>(2, model.size()) : 0;
            died.clear();
            model[at].pool->release();
            auto from = died.begin();
            for (; model.size() > at; model.pop_back()) {  // what was added to an outer pool has any place in it
                Died &wanted = model.back().names;
                ASSERT_GE(died.end() - from, long(wanted.size())) << step;
                std::sort(from, from + long(wanted.size()));
                ASSERT_TRUE(std::equal(wanted.begin(), wanted.end(), from)) << step;
                from += long(wanted.size());
            }
            ASSERT_EQ(from, died.end()) << step;
            break;
        }
        default: {
            Level &level = model[random() % model.size()];
            level.pool->addObject(make(step));
            level.names.push_back(step);
        }
        }
        unsigned filled = 0;
        for (Level &level : model) filled += level.fill;
        ASSERT_EQ(filler->retainCount(), filled + 1) << step;
        ASSERT_EQ(ZPAutoreleasePoolCountForObject(filler), filled);
        ASSERT_EQ(ZPTopAutoreleasePoolCount(), model.empty() ? 0 : model.back().fill + model.back().names.size());
    }
    ZPAutoreleasePool::releaseAllPools();
    filler->release();
}

TEST_F(Pools, AReleaseMayPopOuterPools) {
    for (unsigned outer : {1u, 0u}) {
        died.clear();
        ZPPushAutoreleasePool(0);
        ZPPushAutoreleasePool(0);
        make(1)->autorelease();
        unsigned inner = ZPPushAutoreleasePool(0);
        make(2)->autorelease();
        Doer::with({}, [=] { ZPPopAutoreleasePool(outer); })->retain()->autorelease();
        ZPPopAutoreleasePool(inner);
        EXPECT_EQ(died, (Died{2, 1})) << outer;
        EXPECT_EQ(ZPAutoreleasePoolCount(), 0u) << outer;
        EXPECT_EQ(ZPPushAutoreleasePool(0), outer);
        make(3)->autorelease();
        ZPPopAutoreleasePool(0);
        EXPECT_EQ(died.back(), 3) << outer;
    }
}

TEST_F(Pools, AReleaseMayGiveToOuterPools) {
    Mortal *filler = make(0);
    for (unsigned fill = 0; fill <= perPage() + 4; fill += fill == 4 ? perPage() - 8 : 1)
        for (int count : {1, 3, int(perPage()), int(perPage()) + 2}) {
            ZPAutoreleasePool *outer = ZPAutoreleasePool::new_();
            for (unsigned i = 0; i < fill; ++i) filler->retain()->autorelease();
            ZPAutoreleasePool *between = ZPAutoreleasePool::new_(), *inner = ZPAutoreleasePool::new_();
            died.clear();
            Died wanted, given;
            for (int i = count; i > 0; --i) {
                Mortal *m = make(i);
                if (i % 2) m->_gives = i % 4 == 1 ? outer : between;
                m->autorelease();
            }
            for (int i = 1; i <= count; ++i) wanted.push_back(i);
            inner->release();
            std::sort(died.begin(), died.end());  // giving changes the order
            ASSERT_EQ(died, wanted) << fill << " " << count;
            ASSERT_EQ(ZPAutoreleasePoolCount(), fill + unsigned(count + 1) / 2);
            died.clear();
            between->release();
            outer->release();
            for (int i = 3; i <= count; i += 4) given.push_back(-i);
            std::sort(died.begin(), died.begin() + long(given.size()), std::greater());
            for (int i = 1; i <= count; i += 4) given.push_back(-i);
            std::sort(died.begin() + (count + 1) / 4, died.end(), std::greater());
            ASSERT_EQ(died, given) << fill << " " << count;
            ASSERT_EQ(ZPAutoreleasePoolCount(), 0u);
        }
    EXPECT_EQ(filler->retainCount(), 1u);
    filler->release();
}

TEST_F(Pools, AReleaseMayPopItsPoolAndPushAgain) {
    for (unsigned fill : {0u, 2 * perPage()}) {
        unsigned pool = ZPPushAutoreleasePool(0);
        Mortal *filler = make(0);
        for (unsigned i = 0; i < fill; ++i) filler->retain()->autorelease();
        auto popAndPush = [=] {
            ZPPopAutoreleasePool(pool);
            EXPECT_EQ(ZPPushAutoreleasePool(0), pool);
            for (int i = 0; i < 3; ++i) filler->retain()->autorelease();
        };
        Doer::with({}, popAndPush)->retain()->autorelease();
        ZPPopAutoreleasePool(pool);
        EXPECT_EQ(ZPTopAutoreleasePoolCount(), 3u) << "the pool of the same depth stays";
        EXPECT_EQ(filler->retainCount(), 4u);
        ZPPopAutoreleasePool(pool);
        EXPECT_EQ(filler->retainCount(), 1u);
        filler->release();
    }
}

TEST_F(Pools, NoPoolIsReportedAndLeaks) {
    ZPAutoreleasePool::releaseAllPools();
    Mortal *m = make(1);
    m->autorelease();
    EXPECT_HAS(log.text, "*** _ZPAutoreleaseNoPool(): Object 0x");
    EXPECT_HAS(log.text, "of class Mortal autoreleased with no pool in place - just leaking\n");
    ZPPopAutoreleasePool(ZPPushAutoreleasePool(0));
    EXPECT_EQ(m->retainCount(), 1u);
    m->release();
}

TEST_F(Pools, AnExceptionStopsThePopAndGoesNoFurther) {
    const char *reports[] = {"", "ZPGenericException no rest for 7\n",
                             "ZPOldStyleException Old style exception with code 42"};
    auto leave = [](int number, int raises) {
        Mortal *m = make(number);
        m->_raises = raises;
        m->autorelease();
    };
    for (int raises : {1, 2}) {
        died.clear();
        ZPPushAutoreleasePool(0);
        unsigned inner = ZPPushAutoreleasePool(0);
        for (int i : {1, 2, 3}) leave(i, i == 2 ? raises : 0);
        EXPECT_NO_THROW(ZPPopAutoreleasePool(inner));
        EXPECT_EQ(died, (Died{3, 2}));
        EXPECT_HAS(log.text, std::string("Exception ignored while releasing an object in an autorelease pool: ") +
                                 reports[raises]);
        ZPPopAutoreleasePool(0);
        EXPECT_EQ(died, (Died{3, 2, 1}));
    }
    for (int round = 0; round < 3; ++round) {  // the outermost goes on
        died.clear();
        ZPPushAutoreleasePool(0);
        for (int i = 1; i <= 6; ++i) leave(i, i % 3);
        ZPAutoreleasePool::releaseAllPools();
        EXPECT_EQ(died, (Died{6, 5, 4, 3, 2, 1}));
        EXPECT_EQ(ZPAutoreleasePoolCount(), 0u);
    }
}

TEST_F(Pools, ScopesCloseWhenAnExceptionLeavesThem) {
    auto raiseInScope = [](int name) {
        ZPAutoreleasePoolScope scope, inner;
        make(name)->autorelease();
        ZPException::raise_format(ZPGenericException, "raised by %d"_zp, name);
    };
    for (bool hasPool : {true, false}) {
        died.clear();
        if (!hasPool) ZPAutoreleasePool::releaseAllPools();
        for (int i = 1; i <= 1000; ++i) try {
                raiseInScope(i);
            } catch (ZPException *e) {
                ASSERT_EQ(died.size(), unsigned(2 * i - 1));
                try {
                    raiseInScope(0);  // while the other is handled
                } catch (ZPException *) {}
                ZPAutoreleasePoolScope pool;
                ASSERT_EQ(text(e->reason()), "raised by " + std::to_string(i));
            }
        unsigned pools = ZPPushAutoreleasePool(0);
        EXPECT_EQ(pools, hasPool ? 1u : 0u);
        EXPECT_EQ(ZPAutoreleasePoolCount() > 0, hasPool);
        ZPPopAutoreleasePool(pools);
    }
    EXPECT_EQ(log.text, "");
}

TEST_F(Pools, SettingsOfTheThread) {
    Mortal *m = make(1);
    unsigned token = ZPPushAutoreleasePool(0);
    EXPECT_REASON("*** -[ZPAutoreleasePool retain]: Cannot retain an autorelease pool",
                  ZPAutoreleasePool::new_()->retain());
    ZPPopAutoreleasePool(token);

    token = ZPPushAutoreleasePool(0);
    ZPAutoreleasePool::enableRelease(NO);  // what is in a pool popped now is never released
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
        EXPECT_HAS(reports, line);
    EXPECT_FALSE(has(reports, "(): 101"));
    EXPECT_EQ(ZPAutoreleasePool::totalAutoreleasedObjects(), 125u);
    ZPPopAutoreleasePool(token);

    ZPObject::new_()->autorelease();
    testing::internal::CaptureStderr();
    ZPPrintAutoreleasePools();
    EXPECT_HAS(testing::internal::GetCapturedStderr(), "Pool (level = 0): 1 objects ====================\n\t0x");
}

TEST_F(Pools, ThreadsHaveTheirOwnAndLeaveNothing) {
    std::thread([] {
        ZPPushAutoreleasePool(0);
        make(1)->autorelease();  // never popped: the end of the thread does it
    }).join();
    EXPECT_EQ(died, (Died{1}));
}
