// SPDX-License-Identifier: MIT
// The calendar: fields, arithmetic, and the host's zone.
#include <support/Objects.h>

#include <ctime>
#include <sys/resource.h>

namespace {

ZPTimeZone *gmt() { return ZPTimeZone::timeZoneForSecondsFromGMT(0); }
ZPCalendarDate *on(int year, unsigned month, unsigned day, unsigned hour = 0, unsigned minute = 0, unsigned second = 0,
                   ZPTimeZone *zone = gmt()) {
    return ZPCalendarDate::dateWithYear_month_day_hour_minute_second_timeZone(year, month, day, hour, minute, second,
                                                                              zone);
}
std::string shown(ZPCalendarDate *date, ZPString *format) { return text(date->descriptionWithCalendarFormat(format)); }
// A moment's date in GMT.
ZPCalendarDate *moment(double t) {
    ZPCalendarDate *date = ZPCalendarDate::alloc()->initWithTimeIntervalSinceReferenceDate(t)->autorelease();
    date->setTimeZone(gmt());
    return date;
}
// The units of the difference, each asked for or not.
std::vector<int> difference(ZPCalendarDate *to, ZPCalendarDate *from, unsigned asked = 63) {
    std::vector<int> n(6, 0);
    int *out[6];
    for (unsigned k = 0; k < 6; ++k) out[k] = asked >> k & 1 ? &n[k] : nullptr;
    to->years_months_days_hours_minutes_seconds_sinceDate(out[0], out[1], out[2], out[3], out[4], out[5], from);
    return n;
}
ZPCalendarDate *add(ZPCalendarDate *date, int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
    return date->dateByAddingYears_months_days_hours_minutes_seconds(y, mo, d, h, mi, s);
}

// The host's zone is what the environment says when the process first asks: a zone with changes, everywhere the same.
const int zoneIsSet = setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);

}  // namespace

TEST(Calendar, AgreesWithTheCLibraryOnEveryDay) {
    // Every day of years 1 to 4001: fields at a varying second of the day, and back.
    ZPAutoreleasePoolScope pool;
    ZPCalendarDate *date = moment(0);
    std::tm f{};
    f.tm_mday = 1;
    f.tm_year = 1 - 1900;
    std::time_t first = timegm(&f);
    f.tm_year = 4002 - 1900;
    std::time_t last = timegm(&f);
    long days = 0;
    for (std::time_t day = first; day < last; day += 86400, ++days) {
        std::time_t t = day + (days * 7919) % 86400;
        gmtime_r(&t, &f);
        date->initWithTimeIntervalSinceReferenceDate(double(t) - 978307200.0);
        const long fields[] = {date->yearOfCommonEra(), date->monthOfYear(),  date->dayOfMonth(),
                               date->dayOfWeek(),       date->dayOfYear(),    date->dayOfCommonEra(),
                               date->hourOfDay(),       date->minuteOfHour(), date->secondOfMinute()};
        const long wanted[] = {f.tm_year + 1900, f.tm_mon + 1, f.tm_mday, f.tm_wday, f.tm_yday + 1,
                               days + 1,         f.tm_hour,    f.tm_min,  f.tm_sec};
        ASSERT_TRUE(std::equal(fields, fields + 9, wanted)) << "day " << days << ": " << described(date);
        date->initWithYear_month_day_hour_minute_second_timeZone(f.tm_year + 1900, unsigned(f.tm_mon + 1),
                                                                 unsigned(f.tm_mday), unsigned(f.tm_hour),
                                                                 unsigned(f.tm_min), unsigned(f.tm_sec), gmt());
        ASSERT_EQ(date->_timeIntervalSinceReferenceDate, double(t) - 978307200.0) << "back from day " << days;
    }
    EXPECT_EQ(days, 1461335);
}

TEST(Calendar, KnownDates) {
    EXPECT_EQ(described(on(1900, 2, 29)), "1900-03-01 00:00:00 +0000");
    EXPECT_EQ(described(on(2001, 1, 1, 25, 61, 61)), "2001-01-02 02:02:01 +0000");
    ZPCalendarDate *noon = on(2001, 1, 1, 12, 0, 0, ZPTimeZone::timeZoneForSecondsFromGMT(-5400));
    EXPECT_EQ(noon->timeIntervalSinceReferenceDate(), 13.5 * 3600);
    EXPECT_EQ(described(noon), "2001-01-01 12:00:00 -0130");
    noon->setTimeZone(gmt());
    EXPECT_EQ(described(noon), "2001-01-01 13:30:00 +0000");
    ZPRef<ZPCalendarDate> copy = ZPAdopt((ZPCalendarDate *)noon->copy().pointer());
    copy->setCalendarFormat("%Y"_zp);
    EXPECT_EQ(described(noon), "2001-01-01 13:30:00 +0000") << "the copy has a format of its own";
    EXPECT_EQ(described(copy->addTimeInterval(86400.0 * 366)), "2002");
}

TEST(Calendar, FieldsOfAnyTimeAreDefined) {
    for (double t : {-63113904000.0 - 1, -63113904000.0 - 86400.5, 1e12, 1.85e14, 1.86e14, 1e18, 1e19, -1e19, 1e300,
                     -1e300, HUGE_VAL, -HUGE_VAL, std::nan("")}) {
        ZPCalendarDate *d = moment(t);
        EXPECT_LT(unsigned(d->monthOfYear() - 1), 12u);
        EXPECT_GE(d->yearOfCommonEra(), 1);
        EXPECT_LT(unsigned(d->hourOfDay()), 24u);
        EXPECT_LT(unsigned(d->secondOfMinute()), 60u);
        EXPECT_LT(unsigned(d->dayOfWeek()), 7u);
        d->dayOfCommonEra();
        EXPECT_NE(described(d), "");
        add(d, INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX)->description();
        add(d, INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN)->description();
        difference(d, on(2000, 1, 1), 0b100011);
        difference(on(2000, 1, 1), d, 0b100100);
    }
    ZPCalendarDate *early = moment(-63113904000.0 - 86400);
    EXPECT_EQ(early->dayOfCommonEra(), 0);  // not clamped
    EXPECT_EQ(early->yearOfCommonEra(), 1);
    for (int zone : {INT_MIN, INT_MAX})
        described(on(2000, 1, 1, UINT_MAX, UINT_MAX, UINT_MAX, ZPTimeZone::timeZoneForSecondsFromGMT(zone)));
    described(on(INT_MAX, 255, 255));
    described(on(INT_MIN, 0, 0));
}

TEST(Calendar, Adding) {
    struct {
        ZPCalendarDate *date;
        int years, months, days;
        const char *sum;
    } cases[] = {
        {on(2000, 1, 31), 0, 1, 1, "2000-03-01"},   {on(2001, 3, 31), 0, -1, 0, "2001-02-28"},
        {on(2000, 2, 29), 1, 0, 0, "2001-02-28"},   {on(1999, 11, 30), 0, 3, 0, "2000-02-29"},
        {on(2000, 3, 15), 0, -27, 0, "1997-12-15"}, {on(2000, 1, 1), 0, 0, 146097, "2400-01-01"},
    };
    for (auto &c : cases) EXPECT_EQ(shown(add(c.date, c.years, c.months, c.days), "%Y-%m-%d"_zp), c.sum);
    EXPECT_EQ(described(add(on(2000, 1, 1), 0, 0, 0, 0, 0, -1)), "1999-12-31 23:59:59 +0000");
    EXPECT_EQ(described(add(on(2000, 1, 1), 0, 0, 0, 25, -61, 3661)), "2000-01-02 01:00:01 +0000");
    ZPCalendarDate *half = (ZPCalendarDate *)on(2000, 1, 1)->addTimeInterval(0.25);
    half->setCalendarFormat("%F"_zp);
    ZPCalendarDate *later = add(half, 0, 1, 0);
    EXPECT_EQ(later->timeIntervalSinceReferenceDate(), on(2000, 2, 1)->timeIntervalSinceReferenceDate() + 0.25);
    EXPECT_EQ(described(later), "250");  // the format goes along
}

// The slow way: a low estimate for each unit, then one step after the other until the date is passed.
static std::vector<int> differenceStepByStep(ZPCalendarDate *to, ZPCalendarDate *from, unsigned asked) {
    constexpr double lengths[5] = {31622400, 2678400, 86400, 3600, 60};
    std::vector<int> n(6, 0);
    double r = to->timeIntervalSinceReferenceDate(), base = from->timeIntervalSinceReferenceDate();
    if (r == base) return n;
    int step = r > base ? 1 : -1;
    for (int unit = 0; unit < 5; ++unit) {
        if (!(asked >> unit & 1)) continue;
        double reached = base;
        for (n[unit] = int((r - base) / lengths[unit] - 2 * step);; n[unit] += step) {
            ZPAutoreleasePoolScope pool;
            ZPCalendarDate *c = add(from, n[0], n[1], n[2], n[3], n[4]);
            if (to->compare(c) == -step) break;
            reached = c->timeIntervalSinceReferenceDate();
        }
        n[unit] -= step;
        base = reached;
    }
    if (asked >> 5 & 1) n[5] = int(r - base);
    return n;
}

TEST(Calendar, DifferencesAreThoseOfStepping) {
    std::mt19937_64 random(17);
    for (ZPTimeZone *zone : {gmt(), (ZPTimeZone *)ZPTimeZone::timeZoneForSecondsFromGMT(-12600)})
        for (int i = 0; i < 640; ++i) {
            ZPAutoreleasePoolScope inner;
            auto any = [&] {
                return on(50 + int(random() % 2000), 1 + random() % 12, 1 + random() % 31, random() % 24, random() % 60,
                          random() % 60, zone);
            };
            auto near = [&](ZPCalendarDate *d) {
                return (ZPCalendarDate *)d->addTimeInterval(double(random() % 20000000) / 4 - 2500000);
            };
            ZPCalendarDate *from = any(), *to = i % 2 ? near(from) : any();
            unsigned asked = unsigned(i) % 64;
            if (!(asked & 31) && std::abs(to->timeIntervalSinceDate(from)) > 2e9)
                continue;  // seconds alone are cut to an int
            if (!(asked & 15) && std::abs(to->timeIntervalSinceDate(from)) > 1e8) to = near(from);  // not so many steps
            EXPECT_EQ(difference(to, from, asked), differenceStepByStep(to, from, asked))
                << described(from) << " to " << described(to) << ", units " << asked;
        }
    ZPCalendarDate *january = on(2000, 1, 31);
    EXPECT_EQ(difference(january, january), std::vector<int>(6, 0));
    EXPECT_EQ(difference(on(1, 1, 1), on(4000, 12, 31), 0b10)[1], -47999);
    EXPECT_EQ(difference(january, nullptr, 1)[0], 0);
}

TEST(Calendar, TheHostsZoneChangesItsClocks) {
    ZPCalendarDate *winter = on(2020, 1, 15, 12, 0, 0, nullptr), *summer = on(2020, 7, 15, 12, 0, 0, nullptr);
    EXPECT_EQ(shown(winter, "%H:%M %Z %z"_zp), "12:00 EST -0500");
    EXPECT_EQ(shown(summer, "%H:%M %Z %z"_zp), "12:00 EDT -0400");
    EXPECT_EQ(described(summer->timeZoneDetail()), "EDT offset -14400 (Daylight)");
    EXPECT_TRUE(summer->timeZoneDetail()->isDaylightSavingTimeZone());
    EXPECT_EQ(ZPTimeZone::timeZoneWithAbbreviation("EDT"_zp), summer->timeZoneDetail());
    // The wall clock is kept across a change, and time spans are not.
    EXPECT_EQ(shown(add(winter, 0, 6, 0), "%H:%M %Z"_zp), "12:00 EDT");
    ZPCalendarDate *eve = on(2020, 3, 7, 12, 0, 0, nullptr);
    EXPECT_EQ(add(eve, 0, 0, 1)->timeIntervalSinceDate(eve), 23 * 3600);
    EXPECT_EQ(shown((ZPCalendarDate *)eve->addTimeInterval(86400), "%d %H:%M %Z"_zp), "08 13:00 EDT");
    EXPECT_EQ(described((ZPObject *)summer->copy()->autorelease()), described(summer));
}

/// A client's detail, which looks at the date that it is asked for.
struct OwnDetail : ZPTimeZoneDetail {
    ZP_CLASS(OwnDetail)
    int _offset, _asked;
    ZPString *name() { return "Own"_zp; }
    int timeZoneSecondsFromGMT() { return _offset; }
    ZPTimeZoneDetail *timeZoneDetailForDate(ZPDate *date) {
        if (date->isKindOfClass(ZPCalendarDate::class_())) _asked += ((ZPCalendarDate *)date)->hourOfDay() >= 0;
        return this;
    }
};
ZP_IMPLEMENT(OwnDetail, named(name, "timeZoneName"), named(name, "timeZoneAbbreviation"), timeZoneSecondsFromGMT,
             timeZoneDetailForDate);

TEST(Calendar, AClientsZoneMayAskTheDate) {
    OwnDetail *zone = OwnDetail::alloc()->autorelease();
    zone->_offset = 5 * 3600;
    ZPCalendarDate *date = on(2001, 2, 3, 4, 5, 6, zone);
    EXPECT_EQ(zone->_asked, 1);
    EXPECT_EQ(date->hourOfDay(), 4);
    EXPECT_EQ(date->timeIntervalSinceDate(on(2001, 2, 2, 23, 5, 6)), 0);
    ZPTimeZoneDetail *before = ZPTimeZone::defaultTimeZone();
    ZPTimeZone::setDefaultTimeZone(zone);
    date = ZPCalendarDate::alloc()->initWithTimeIntervalSinceReferenceDate(0)->autorelease();
    EXPECT_EQ(date->hourOfDay(), 5);
    ZPTimeZone::setDefaultTimeZone(before);
}

TEST(HostZone, ItsTableSaysWhatTheCLibrarySays) {
    // In a process of its own: the zone is chosen once.
    if (access("/usr/share/zoneinfo/Europe/Berlin", R_OK) != 0) GTEST_SKIP() << "no time zone database";
    for (const char *name : {"Europe/Berlin", "America/New_York", "Asia/Kathmandu", ":Australia/Lord_Howe",
                             "EST5EDT4,M3.2.0,M11.1.0", "No/Such_Zone", "../etc/passwd", ""})
        IN_A_PROCESS([=] {
            setenv("TZ", name, 1);
            tzset();
            std::mt19937_64 random(5);
            for (int i = 0; i < 20000; ++i) {
                std::time_t t =
                    i % 2 ? std::time_t(random() % 10000000000ull) - 5000000000 : std::time_t(random() % 4000000000u);
                std::tm f;
                localtime_r(&t, &f);
                ZPCalendarDate *date = ZPCalendarDate::alloc()
                                           ->initWithTimeIntervalSinceReferenceDate(double(t) - 978307200)
                                           ->autorelease();
                ZPTimeZoneDetail *d = date->timeZoneDetail();
                ASSERT_EQ(d->timeZoneSecondsFromGMT(), f.tm_gmtoff) << name;
                ASSERT_EQ(d->isDaylightSavingTimeZone() != NO, f.tm_isdst > 0) << name;
                ASSERT_EQ(text(d->timeZoneAbbreviation()), f.tm_zone) << name;
            }
        });
}

TEST(HostZone, ATableOverAeonsIsNotIndexed) {
    // Changes of the clocks millions of years apart.
    std::string file = "TZif2";
    auto number = [&](long long value, int bytes) {
        while (bytes) file += char(value >> --bytes * 8 & 0xFF);
    };
    auto header = [&](int changes) {
        for (int n : {0, 0, 0, changes, 1, 4}) number(n, 4);
    };
    file.append(15, 0);
    header(0);
    std::string kind("\0\0\x0E\x10\0\0AAA\0", 10);
    file += kind + "TZif2" + std::string(15, 0);
    header(3);
    for (long long time : {-600000000000000LL, 0LL, 600000000000000LL}) number(time, 8);
    file.append(3, 0);
    file += kind + "\nAAA-1\n";
    Directory dir;
    dir.write("aeons", file);
    IN_A_PROCESS([&] {
        setenv("TZ", (dir.path / "aeons").c_str(), 1);
        rusage before, after;
        getrusage(RUSAGE_SELF, &before);
        EXPECT_EQ(shown(ZPCalendarDate::calendarDate(), "%z"_zp), "+0100");
        getrusage(RUSAGE_SELF, &after);
        EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 100000);
    });
}
