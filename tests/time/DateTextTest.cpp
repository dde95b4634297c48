// SPDX-License-Identifier: MIT
// Dates to text and back.
#include <support/Objects.h>

namespace {

ZPString *zp(const std::string &s) { return ZPString::stringWithCString(s.c_str()); }
ZPTimeZone *gmt() { return ZPTimeZone::timeZoneForSecondsFromGMT(0); }
ZPCalendarDate *sample() {
    return ZPCalendarDate::dateWithYear_month_day_hour_minute_second_timeZone(2003, 9, 4, 15, 6, 7, gmt());
}
std::string shown(const char *format, ZPDictionary *locale = nullptr, ZPCalendarDate *date = sample()) {
    return date->descriptionWithCalendarFormat_locale(zp(format), locale)->cString();
}
/// The date read; "null" when it does not match.
std::string read(const std::string &given, const std::string &format, ZPDictionary *locale = nullptr) {
    ZPCalendarDate *date = ZPCalendarDate::dateWithString_calendarFormat_locale(zp(given), zp(format), locale);
    return date ? text(date->descriptionWithCalendarFormat("%Y-%m-%d %H:%M:%S"_zp)) : "null";
}
ZPDictionary *german() {
    return "{ZPWeekDayNameArray = (Sonntag, Montag, Dienstag, Mittwoch, Donnerstag, Freitag, Samstag); "
           "ZPMonthNameArray = (Januar);"
           "ZPAMPMDesignation = (vorm, nachm); ZPTimeDateFormatString = \"%A, %d.%m.%Y %H:%M\";}"_zp->propertyList();
}

}  // namespace

TEST(DateText, EveryDirective) {
    const std::pair<const char *, const char *> cases[] = {
        {"%a %A %b %B", "Thu Thursday Sep September"},
        {"%d|%e|%j|%m|%y|%Y|%w", "04|4|247|09|03|2003|4"},
        {"%H|%I|%p|%M|%S|%F", "15|03|PM|06|07|000"},
        {"%Z|%z|%%", "GMT+0000|+0000|%"},
        {"%c", "Thu Sep 04 15:06:07 GMT+0000 2003"},
        {"%x %X", "Thu Sep 04 2003 15:06:07 GMT+0000"},
        {"%5d|%05d|%0d|%1Y|%3y|%12Q|%5A", "    4|00004|4|2003|  3|?|Thursday"},
        {"%q %\xC3\xA9 plain %", "? ? plain "},
        {"%12", ""},
        {"", ""},
    };
    for (auto &[format, text] : cases) EXPECT_EQ(shown(format), text) << format;
    ZPCalendarDate *date = (ZPCalendarDate *)sample()->addTimeInterval(-15 * 3600);
    EXPECT_EQ(shown("%I %p", nullptr, date), "12 AM");
    date->setTimeZone(ZPTimeZone::timeZoneForSecondsFromGMT(-12600));
    EXPECT_EQ(shown("%H:%M %z", nullptr, date), "20:36 -0330");
    EXPECT_EQ(shown("%F", nullptr, (ZPCalendarDate *)date->addTimeInterval(0.1234)), "123");
    EXPECT_EQ(shown("%F", nullptr, (ZPCalendarDate *)date->addTimeInterval(0.9996)), "000");
    ZPDate *plain = ZPDate::dateWithTimeIntervalSinceReferenceDate(0.5);
    ZPTimeZone *east = ZPTimeZone::timeZoneForSecondsFromGMT(3600);
    EXPECT_EQ(text(plain->descriptionWithCalendarFormat_timeZone_locale("%Y %z"_zp, east, nullptr)), "2001 +0100");
}

TEST(DateText, Locales) {
    ZPDictionary *locale = german();
    EXPECT_EQ(shown("%A %p", locale), "Donnerstag nachm");
    EXPECT_EQ(shown("%a %B", locale), "Thu September");  // absent, and too short
    EXPECT_EQ(shown("%c", locale), "Donnerstag, 04.09.2003 15:06");
    EXPECT_EQ(text(sample()->descriptionWithLocale(locale)), "2003-09-04 15:06:07 +0000");
    EXPECT_EQ(read("Donnerstag, 04.09.2003 15:06", "%c", locale), "2003-09-04 15:06:00");
    EXPECT_EQ(read("DONNERSTAG 3 nachm", "%A %I %p", locale).substr(11), "15:00:00");
    ZPDictionary *circle = ZPDictionary::dictionaryWithObject_forKey("%c"_zp, ZPTimeDateFormatString);
    EXPECT_EQ(shown("<%c>", circle), "<?>");
    EXPECT_EQ(read("x", "%c", circle), "null");
    std::string many;
    for (int i = 0; i < 1000; ++i) many += "%c";
    ZPDictionary *wide = ZPDictionary::dictionaryWithObject_forKey(zp(many), ZPTimeDateFormatString);
    EXPECT_EQ(read("x", "%c", wide), "null");
    ZPDictionary *broken =
        "{ZPMonthNameArray = {a = b;}; ZPAMPMDesignation = x; ZPTimeDateFormatString = (1);}"_zp->propertyList();
    EXPECT_EQ(shown("%B %p %x", broken), "September PM Thu Sep 04 2003");
    ZPDictionary *english = _ZPDefaultEnglishLanguageDict();
    EXPECT_EQ(english->count(), 30u);
    EXPECT_TRUE(english->objectForKey(ZPTimeDateFormatString)->isEqual("%A, %B %d, %Y %H:%M:%S %Z"_zp));
}

TEST(DateText, Reading) {
    // "text | format -> date", at midnight unless it says more.
    for (auto &[given, date] : rows(
             "1999-12-31 | %Y-%m-%d -> 1999-12-31", "  1999 - 12-31 | %Y-%m-%d -> 1999-12-31",
             "1999-12 | %Y-%m-%d -> null", "0000-12-31 | %Y-%m-%d -> null", "05/03/29 | %m/%d/%y -> 2029-05-03",
             "05/03/31 | %m/%d/%y -> 1931-05-03", "2000 12:15 AM | %Y %I:%M %p -> 2000-01-01 00:15:00",
             "2000 12:15 PM | %Y %I:%M %p -> 2000-01-01 12:15:00", "2000 03:15 pm | %Y %I:%M %p -> 2000-01-01 15:15:00",
             "2000 03:15 xm | %Y %I:%M %p -> null", "Thursday, 4 SEPTEMBER 2003 | %A, %e %B %Y -> 2003-09-04",
             "Mon Feb 2 2004 | %a %b %d %Y -> 2004-02-02", "Xxx Feb 2 2004 | %a %b %d %Y -> null",
             "2004 060 | %Y %j -> 2004-02-29", "2004 060 02 | %Y %j %m -> 2004-02-29", "2004 060 03 | %Y %j %m -> null",
             "2004 4 | %Y %w -> 2004-01-01", "2004 7 | %Y %w -> null", "100% 2004 | 100%% %Y -> 2004-01-01",
             "2004-1-2 3:4:5 | %Y-%m-%d %H:%M:%S -> 2004-01-02 03:04:05", "20041231 | %Y%m%d -> 2004-12-31",
             "Thu Sep 04 15:06:07 GMT 2003 | %c -> 2003-09-04 15:06:07", "2004 | %Y%Q -> null", "2004 | %Y% -> null")) {
        std::size_t bar = given.find(" | ");
        EXPECT_EQ(read(given.substr(0, bar), given.substr(bar + 3)), date.size() == 10 ? date + " 00:00:00" : date)
            << given;
    }
    auto date = [](const char *text, const char *format) {
        return ZPCalendarDate::dateWithString_calendarFormat(zp(text), zp(format));
    };
    EXPECT_EQ(date("1999-12-31 and more", "%Y-%m-%d")->calendarFormat()->length(),
              8u);  // the rest is ignored, the format kept
    EXPECT_EQ(date("2001-01-01 01:00 +0100", "%Y-%m-%d %H:%M %z")->timeIntervalSinceReferenceDate(), 0);
    EXPECT_EQ(date("2001-01-01 01:00 -0130", "%Y-%m-%d %H:%M %z")->timeIntervalSinceReferenceDate(), 2.5 * 3600);
    EXPECT_EQ(date("2001-01-01 01:00 GMT", "%Y-%m-%d %H:%M %Z")->timeIntervalSinceReferenceDate(), 3600);
    EXPECT_NEAR(date("2001 GMT 250", "%Y %Z %F")->timeIntervalSinceReferenceDate(), 0.2501, 1e-9);
    EXPECT_EQ(ZPCalendarDate::calendarDate()->yearOfCommonEra(), date("5", "%d")->yearOfCommonEra());
    EXPECT_EQ(date("", "%Y"), nullptr);
    EXPECT_NE(date("", ""), nullptr);
    EXPECT_EQ(ZPCalendarDate::dateWithString_calendarFormat(nullptr, "%Y"_zp), nullptr);
    EXPECT_NE(date("2147483647", "%e"), nullptr);
    EXPECT_NE(date("-2147483648", "%j"), nullptr);
    EXPECT_NE(date("1 -99999999999", "%d %z"), nullptr);
}

TEST(DateText, RoundTrips) {
    std::mt19937_64 random(11);
    for (const char *format : {"%Y-%m-%d %H:%M:%S %z", "%a %b %e %H:%M:%S %Y %z", "%z %A, %B %d, %Y %I:%M:%S %p",
                               "%j of %Y, %H.%M.%S %z", "%Y%m%d%H%M%S%z"}) {
        for (int i = 0; i < 200; ++i) {
            ZPAutoreleasePoolScope inner;
            // Years of four digits: what %Y reads.
            double t = -31556908800.0 + double(random() % 94670208000ull);
            ZPCalendarDate *date = ZPCalendarDate::alloc()->initWithTimeIntervalSinceReferenceDate(t)->autorelease();
            date->setTimeZone(ZPTimeZone::timeZoneForSecondsFromGMT(int(random() % 1440) * 60 - 43200));
            ZPString *text = date->descriptionWithCalendarFormat(zp(format));
            ZPCalendarDate *back = ZPCalendarDate::dateWithString_calendarFormat(text, zp(format));
            ASSERT_NE(back, nullptr) << text->cString();
            ASSERT_EQ(back->timeIntervalSinceReferenceDate(), t) << text->cString();
            ASSERT_TRUE(back->description()->isEqualToString(text));
        }
    }
}

TEST(DateText, StampsTheLog) {
    ZPTimeZoneDetail *before = ZPTimeZone::defaultTimeZone();
    for (int offset : {0, 13 * 3600 + 1800, -11 * 3600}) {
        ZPTimeZone::setDefaultTimeZone(ZPTimeZone::timeZoneForSecondsFromGMT(offset));
        std::string line, expected;
        for (int tries = 0; tries < 3 && (tries == 0 || line.find(expected) != 0);
             ++tries) {  // the second may end in between
            expected = ZPCalendarDate::calendarDate()->descriptionWithCalendarFormat("%b %d %H:%M:%S "_zp)->cString();
            testing::internal::CaptureStderr();
            ZPLog("hello"_zp);
            line = testing::internal::GetCapturedStderr();
        }
        EXPECT_EQ(line.find(expected), 0u) << line << expected;
    }
    ZPTimeZone::setDefaultTimeZone(before);
}
