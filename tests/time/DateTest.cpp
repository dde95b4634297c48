// SPDX-License-Identifier: MIT
// Dates, and zones at fixed distances.
#include <support/Objects.h>

namespace {

ZPDate *at(double t) { return ZPDate::dateWithTimeIntervalSinceReferenceDate(t); }

struct OwnDate : ZPDate {  // a client's subclass: the primitives alone
    ZP_CLASS(OwnDate)
    double _own;
    id initWithTimeIntervalSinceReferenceDate(double t) {
        _own = t;
        return this;
    }
    double timeIntervalSinceReferenceDate() { return _own; }
};
ZP_IMPLEMENT(OwnDate, initWithTimeIntervalSinceReferenceDate, timeIntervalSinceReferenceDate);

}  // namespace

TEST(Date, PointsInTime) {
    EXPECT_EQ(at(0)->timeIntervalSince1970(), 978307200.0);
    EXPECT_EQ(ZPDate::dateWithTimeIntervalSince1970(978307200.5)->timeIntervalSinceReferenceDate(), 0.5);
    EXPECT_EQ(at(0.1)->timeIntervalSinceReferenceDate(), 0.1);  // exactly as given
    double clock = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    EXPECT_NEAR(ZPDate::date()->timeIntervalSince1970(), clock, 5);
    EXPECT_NEAR(ZPDate::dateWithTimeIntervalSinceNow(100)->timeIntervalSinceNow(), 100, 5);
    ZPDate *a = at(10), *b = at(12.5);
    EXPECT_EQ(ZPDate::dateWithTimeInterval_sinceDate(2.5, a)->compare(b), 0);
    EXPECT_EQ(a->compare(b), -1);
    EXPECT_EQ(b->compare(a), 1);
    EXPECT_TRUE(a->earlierDate(b)->isEqual(a));
    EXPECT_TRUE(a->laterDate(b)->isEqual(b));
    EXPECT_FALSE(a->isEqual(nullptr));
    EXPECT_EQ(a->copy(), a);
    a->release();
    EXPECT_EQ(at(-3.9)->hash(), unsigned(-3));
    for (double t : {1e300, -1e300, std::numeric_limits<double>::infinity(), std::nan("")}) at(t)->hash();
    // A date of another class with the same time is equal, and hashes the same.
    ZPDate *own = ((ZPDate *)OwnDate::alloc())->initWithTimeIntervalSinceReferenceDate(12.5)->autorelease(),
           *calendar = ZPCalendarDate::alloc()->initWithTimeIntervalSinceReferenceDate(12.5)->autorelease();
    for (ZPDate *x : {own, calendar, b})
        for (ZPDate *y : {own, calendar, b}) {
            EXPECT_TRUE(x->isEqual(y));
            EXPECT_EQ(x->hash(), y->hash());
        }
    EXPECT_TRUE(own->addTimeInterval(1)->isKindOfClass(OwnDate::class_()));
    ZPRef<ZPDate> copy = ZPAdopt((ZPDate *)own->copy().pointer());
    EXPECT_TRUE(copy->isEqual(own));
}

TEST(Date, DistantDates) {
    ZPDate *future = ZPDate::distantFuture(), *past = ZPDate::distantPast(), *now = ZPDate::date();
    EXPECT_EQ(future->timeIntervalSinceNow(), 63113990400.0);
    EXPECT_EQ(past->timeIntervalSince1970(), -63113817600.0);
    ZPTimeZone *gmt = ZPTimeZone::timeZoneForSecondsFromGMT(0);
    EXPECT_EQ(described(future->dateWithCalendarFormat_timeZone(nullptr, gmt)), "4001-01-02 00:00:00 +0000");
    EXPECT_EQ(described(past->dateWithCalendarFormat_timeZone("%Y-%m-%d"_zp, gmt)), "1-01-02");
    ZPDate *order[] = {past, now, future};
    for (int i : {0, 1, 2})
        for (int j : {0, 1, 2}) EXPECT_EQ(order[i]->compare(order[j]), (i > j) - (i < j));
    EXPECT_EQ(past->earlierDate(now), past);
    EXPECT_EQ(future->laterDate(now), future);
    EXPECT_TRUE(future->earlierDate(now)->isEqual(now));
    future->release();
    EXPECT_EQ(future->retainCount(), 0xFFFFFFFFu);
    EXPECT_EQ(future->addTimeInterval(5), future);
    EXPECT_REASON("*** -[ZPDistantDate init]: shouldn't be called", future->init());
}

TEST(Date, ReadsItsOwnDescription) {
    EXPECT_EQ(ZPDate::dateWithString("2001-01-01 10:00:00 +0100"_zp)->timeIntervalSinceReferenceDate(), 9 * 3600);
    ZPDate *calendar =
        objc_msgSend<ZPDate *>(id(ZPCalendarDate::class_()), "dateWithString:"_sel, "1999/12/31T23.59.58 -0430"_zp);
    EXPECT_EQ(described(calendar), "1999-12-31 23:59:58 -0430");
    for (double t : {0.0, 1e9, -5e10, 6.2e10})
        EXPECT_EQ(ZPDate::dateWithString(at(t)->description())->timeIntervalSinceReferenceDate(), t);
    for (const char *bad : {"", "2001", "2001-01-01 10:00:00", "2001-01-01 10:00:00 ", "2001-01-01 10:00:00 0100",
                            "2001-01-01 10:00:00 +", "a-b-c d:e:f +1", "2001--01 10:00:00 +0100"})
        EXPECT_EQ(ZPDate::dateWithString(ZPString::stringWithCString(bad)), nullptr) << bad;
    EXPECT_EQ(ZPDate::dateWithString(nullptr), nullptr);
    // Numbers of any size are defined.
    ZPDate::dateWithString(
        "99999999999999999999-999-999 99999999999:999999999999:99999999999999 +99999999999999999"_zp);
}

TEST(TimeZone, FixedDistances) {
    ZPTimeZoneDetail *zone = ZPTimeZone::timeZoneForSecondsFromGMT(49530);
    for (auto [seconds, name] :
         {std::pair{49530, "GMT+1345"}, {-16200, "GMT-0430"}, {0, "GMT+0000"}, {INT_MIN, "GMT-59652314"}})
        EXPECT_EQ(text(ZPTimeZone::timeZoneForSecondsFromGMT(seconds)->timeZoneName()), name);
    EXPECT_EQ(ZPTimeZone::timeZoneForSecondsFromGMT(49500), zone);  // the same hours and minutes
    EXPECT_EQ(ZPTimeZone::timeZoneWithAbbreviation("GMT+1345"_zp), zone);
    EXPECT_EQ(ZPTimeZone::timeZoneWithName("GMT+1345"_zp), nullptr);
    EXPECT_NE(ZPTimeZone::timeZoneForSecondsFromGMT(-1), ZPTimeZone::timeZoneForSecondsFromGMT(1));
    EXPECT_EQ(described(ZPTimeZone::timeZoneForSecondsFromGMT(-14400)), "GMT-0400 offset -14400");
    EXPECT_EQ(zone->timeZoneDetailArray()->count(), 1u);
    ZPRef<ZPTimeZoneDetail> own = ZPAdopt(
        ZPTimeZoneDetail::alloc()->initWithName_abbreviation_secondsFromGMT("GMT+1345"_zp, "GMT+1345"_zp, 49530));
    EXPECT_TRUE(own->isEqual(zone));
    EXPECT_EQ(own->hash(), 49530u);
    EXPECT_EQ(ZPTimeZone::timeZoneWithAbbreviation("UTC"_zp)->timeZoneSecondsFromGMT(), 0);
    EXPECT_EQ(ZPTimeZone::timeZoneWithAbbreviation("no such zone"_zp), nullptr);
    EXPECT_EQ(ZPTimeZone::timeZoneWithName("ZPLocalTimeZone"_zp), ZPTimeZone::localTimeZone());
    EXPECT_EQ(((ZPObject *)ZPTimeZone::alloc())->init(), nullptr);
}

TEST(TimeZone, TheDefaultFollowsWhatIsSet) {
    ZPTimeZoneDetail *before = ZPTimeZone::defaultTimeZone(), *local = ZPTimeZone::localTimeZone();
    ASSERT_NE(before, nullptr);
    EXPECT_EQ(local->timeZoneSecondsFromGMT(), before->timeZoneSecondsFromGMT());
    ZPTimeZone::setDefaultTimeZone(ZPTimeZone::timeZoneForSecondsFromGMT(7200));
    EXPECT_EQ(local->timeZoneSecondsFromGMT(), 7200);
    EXPECT_EQ(text(local->timeZoneName()), "ZPLocalTimeZone");
    EXPECT_EQ(described(at(0)), "2001-01-01 02:00:00 +0200");
    ZPTimeZone::setDefaultTimeZone(nullptr);
    EXPECT_EQ(ZPTimeZone::defaultTimeZone()->timeZoneSecondsFromGMT(), before->timeZoneSecondsFromGMT());
    ZPTimeZone::setDefaultTimeZone(before);
}

TEST(TimeZoneThread, TheDefaultIsExchangedMeanwhile) {
    ZPTimeZoneDetail *before = ZPTimeZone::defaultTimeZone();
    std::atomic<int> left{1000};
    onThreads(4, [&](int t) {
        while (left > 0) {
            ZPAutoreleasePoolScope pool;
            if (t == 0) {
                --left;
                ZPRef<ZPTimeZoneDetail> made =
                    ZPAdopt(ZPTimeZoneDetail::alloc()->initWithName_abbreviation_secondsFromGMT("made"_zp, "MADE"_zp,
                                                                                                60 * left));
                ZPTimeZone::setDefaultTimeZone(made.get());
            } else {
                ZPTimeZoneDetail *zone = ZPTimeZone::defaultTimeZone();
                std::this_thread::yield();
                ASSERT_EQ(zone->timeZoneSecondsFromGMT() % 60, 0);
            }
        }
    });
    ZPTimeZone::setDefaultTimeZone(before);
}

TEST(TimeZoneThread, DetailsAreMadeOnce) {
    std::vector<ZPTimeZoneDetail *> seen(8);
    onThreads(8, [&](int t) {
        for (int i = 0; i < 200; ++i) {
            ZPTimeZone::timeZoneForSecondsFromGMT(i * 60);
            ZPCalendarDate::calendarDate()->addTimeInterval(i * 86400.0)->description();
            ZPTimeZone::timeZoneWithAbbreviation("GMT+0001"_zp);
        }
        seen[t] = ZPTimeZone::timeZoneForSecondsFromGMT(77 * 60);
    });
    for (auto *zone : seen) EXPECT_EQ(zone, seen[0]);
}
