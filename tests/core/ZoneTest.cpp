// SPDX-License-Identifier: MIT
// Zones, pages and zombies.
#include <support/Objects.h>

#include <fstream>

TEST(Zone, BlocksKeepTheirBytesAndTheirZone) {
    ZPZone *zone = ZPCreateZone(0, 0, YES);
    ASSERT_NE(zone, nullptr);
    std::mt19937 random(5);
    struct Piece {
        unsigned char *p;
        std::size_t size;
        unsigned char mark;
        bool isWhole(std::size_t n) {
            return std::all_of(p, p + n, [this](unsigned char c) { return c == mark; });
        }
    };
    std::vector<Piece> pieces;
    for (int i = 0; i < 3000; ++i) {
        if (pieces.empty() || random() % 3) {
            std::size_t size = random() % 5000;
            auto *p = static_cast<unsigned char *>(ZPZoneMalloc(zone, size));
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(p) % 16, 0u);
            ASSERT_EQ(ZPZoneFromPointer(p), zone);
            std::memset(p, i & 255, size);
            pieces.push_back({p, size, static_cast<unsigned char>(i)});
            continue;
        }
        std::size_t at = random() % pieces.size(), size = random() % 9000 + 1;
        Piece &piece = pieces[at];
        ASSERT_TRUE(piece.isWhole(piece.size));
        if (random() % 2) {
            piece.p = static_cast<unsigned char *>(ZPZoneRealloc(zone, piece.p, size));
            ASSERT_TRUE(piece.isWhole(std::min(size, piece.size)));
            piece.size = size;
            std::memset(piece.p, piece.mark, size);
        } else {
            ZPZoneFree(zone, piece.p);
            pieces.erase(pieces.begin() + at);
        }
    }
    // After the zone is handed back its blocks are the default zone's, and live on.
    ZPRecycleZone(zone);
    for (Piece &piece : pieces) {
        ASSERT_EQ(ZPZoneFromPointer(piece.p), ZPDefaultMallocZone());
        ASSERT_TRUE(piece.isWhole(piece.size));
        ZPZoneFree(nullptr, piece.p);
    }
    ZPRecycleZone(nullptr);
    ZPRecycleZone(ZPDefaultMallocZone());
    EXPECT_EQ(ZPZoneCalloc(nullptr, std::size_t(-1), 2), nullptr);
}

TEST(Zone, TakesWhatItNeedsAndGivesItBack) {
    struct Pages {
        unsigned long all, used;
        Pages() { std::ifstream("/proc/self/statm") >> all >> used; }
    };
    Pages before;
    for (int round = 0; round < 500; ++round) {  // the last block may go before the zone, or after it
        ZPZone *zone = ZPCreateZone(0, 0, round % 4 != 0);
        void *blocks[40];
        for (void *&block : blocks) block = ZPZoneMalloc(zone, 1000);
        if (round % 2) ZPRecycleZone(zone);
        for (void *block : blocks) ZPZoneFree(nullptr, block);
        if (round % 2 == 0) ZPRecycleZone(zone);
    }
    EXPECT_LT(Pages().used, before.used + 1000);
    // Blocks of a little less than a page.
    ZPZone *zone = ZPCreateZone(0, 0, YES);
    before = Pages();
    std::vector<void *> blocks(10000);
    for (void *&block : blocks) block = ZPZoneMalloc(zone, 4000);
    EXPECT_LT(Pages().all, before.all + blocks.size() * 4112 / ZPPageSize() * 11 / 10);
    ZPRecycleZone(zone);
    onThreads(4, [&](int t) {
        for (std::size_t i = std::size_t(t); i < blocks.size(); i += 4) ZPZoneFree(nullptr, blocks[i]);
    });
#if !defined(__SANITIZE_THREAD__)  // whose shadow of the blocks stays
    EXPECT_LT(Pages().used, before.used + 2000);
#endif
}

TEST(Zone, InstancesLiveInTheirZone) {
    ZPZone *zone = ZPCreateZone(100000, 4096, YES);
    ZPSetZoneName(zone, "Shed"_zp);
    EXPECT_STREQ(ZPZoneName(zone)->cString(), "Shed");
    EXPECT_STREQ(ZPZoneName(nullptr)->cString(), "ZPDefaultZone");
    ZPObject *here = ZPObject::allocWithZone(zone)->init();
    ZPRef<ZPObject> there = ZPAdopt(ZPObject::new_());
    EXPECT_EQ(here->zone(), zone);
    EXPECT_EQ(there->zone(), ZPDefaultMallocZone());
    EXPECT_TRUE(ZPShouldRetainWithZone(here, zone));
    EXPECT_FALSE(ZPShouldRetainWithZone(there.get(), zone));
    EXPECT_TRUE(ZPShouldRetainWithZone(here, nullptr));
    here->release();
    ZPRecycleZone(zone);
}

TEST(Pages, RoundAndFail) {
    unsigned page = ZPPageSize();
    EXPECT_EQ(1u << ZPLogPageSize(), page);
    EXPECT_EQ(ZPRoundUpToMultipleOfPageSize(1), page);
    EXPECT_EQ(ZPRoundDownToMultipleOfPageSize(2 * page - 1), page);
    char *pages = static_cast<char *>(ZPAllocateMemoryPages(3 * page));
    EXPECT_EQ(pages[3 * page - 1], 0);
    ZPCopyMemoryPages("hello", pages, 6);
    ZPCopyMemoryPages(pages, pages + 1, 6);
    EXPECT_STREQ(pages, "hhello");
    ZPDeallocateMemoryPages(pages, 3 * page);
    EXPECT_REASON("*** ZPAllocateMemoryPages(0) failed", ZPAllocateMemoryPages(0));
    for (auto [n, log] : {std::pair{0u, 0}, {1u, 0}, {4096u, 12}, {0x80000001u, 31}}) EXPECT_EQ(ZPLog2(n), log);
}

struct Ghost : ZPObject {
    ZP_CLASS(Ghost)
    std::string _text = "fields end with the object";
};
ZP_IMPLEMENT(Ghost);

TEST(Zombie, ReportsEveryMessageToAFreedObject) {
    ZPZombieEnabled = YES;
    Ghost *ghost = Ghost::new_(), *second = Ghost::new_();
    ghost->release();
    second->release();
    ZPZombieEnabled = NO;
    EXPECT_STREQ(ghost->isa->name, "ZPZombie_Ghost");
    EXPECT_EQ(ghost->isa, second->isa);
    EXPECT_EQ(objc_getClass("ZPZombie_Ghost"), ghost->isa);
    for (std::string selector : {"bar", "retain", "autorelease"}) {
        LogCapture log;
        ZPString *report =
            ZPString::stringWithFormat("*** Selector '%s' sent to dealloced instance 0x%lx of class Ghost.\n"
                                       "Break at '-[_ZPZombie %s]' to debug."_zp,
                                       selector.c_str(), reinterpret_cast<unsigned long>(ghost),
                                       selector == "bar" ? "methodSignatureForSelector:" : selector.c_str());
        EXPECT_RAISES("ZPGenericException: " + text(report),
                      objc_msgSend<id>(id((objc_object *)ghost), sel_registerName(selector.c_str())));
        EXPECT_EQ(log.text, "*** " + text(report));
    }
    std::free(objc_headerOf(ghost));
    std::free(objc_headerOf(second));
}
