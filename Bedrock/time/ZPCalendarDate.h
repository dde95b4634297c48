// SPDX-License-Identifier: MIT
// Calendar dates: dates in a time zone, by the Gregorian calendar.
//
// Formats are texts with directives:
//   %a %A weekday (short, full)   %b %B month (short, full)   %d %e day (with, without zero)   %j day of the year
//   %m month   %y %Y year (of two digits, whole and not padded: "1" in year 1)   %w weekday from 0, Sunday
//   %H %I hour of 24, of 12   %p AM or PM   %M minute   %S second   %F milliseconds
//   %Z zone's abbreviation   %z zone as +HHMM   %% percent sign
//   %c %x %X the locale's format for date and time, else "%a %b %d %H:%M:%S %Z %Y", "%a %b %d %Y", "%H:%M:%S %Z"
// In output digits between the percent sign and a number's directive set its width ("%5d", with "%05d" zeros). Names
// come from the locale; where it has no list, or its list is too short, they are English.
//
// Where a zone's clocks change, a local time may name no moment or two. With the offset from before the change such a
// time is turned into a moment, and when another offset is in force there, the same local time is taken with that one.
// So a local time in the hour that is left out gives one that looks the same, with the offset from after the change: up
// to an hour before the change. In Berlin, 2024-03-31 02:30 becomes 02:30 +0200, which is the moment 01:30 +0100. Of
// two moments either may come out, mostly the later one; a detail of the zone in place of the zone chooses.
#pragma once

#include <Bedrock/time/ZPDate.h>
#include <Bedrock/time/ZPTimeZone.h>

/// A date with a zone's detail and a format. The calendar is the Gregorian one also for the time before it was
/// introduced. The date itself does not change; one thread at a time may change zone and format. A null zone is the
/// default one, a null format "%Y-%m-%d %H:%M:%S %z", a null locale English.
struct ZPCalendarDate : ZPDate {
    ZP_CLASS(ZPCalendarDate)
    double _timeIntervalSinceReferenceDate;
    ZPTimeZoneDetail *_timeZone;
    ZPString *_formatString;
    unsigned long long _fields;

    /// Now, autoreleased, as are the dates of all class messages.
    static ZPCalendarDate *calendarDate() ZP_CLASS_ASKS();
    /// A date by the calendar of a zone. Months and days count from 1. Nothing is checked: a day past the month's end
    /// is one of the next month, hour 25 is 1 of the next day. For changes of the zone's clocks see above.
    static ZPCalendarDate *dateWithYear_month_day_hour_minute_second_timeZone(int year, unsigned month, unsigned day,
                                                                              unsigned hour, unsigned minute,
                                                                              unsigned second, ZPTimeZone *zone)
        ZP_CLASS_ASKS(year, month, day, hour, minute, second, zone);
    /// As the class message.
    ZPCalendarDate *initWithYear_month_day_hour_minute_second_timeZone(int year, unsigned month, unsigned day,
                                                                       unsigned hour, unsigned minute, unsigned second,
                                                                       ZPTimeZone *zone)
        ZP_ASKS(year, month, day, hour, minute, second, zone);
    /// Reads a text by a format. White space before a token is passed over, names are read in either case, what
    /// follows the format's end is ignored. What the text does not say: this year, January, the first, midnight, the
    /// default zone. Null when the text does not match. Numbers are not checked against the calendar, but for a day of
    /// the year that contradicts a month or day: "32/01/2024" is February 1.
    static ZPCalendarDate *dateWithString_calendarFormat(ZPString *text, ZPString *format) ZP_CLASS_ASKS(text, format);
    /// The same with the names of a locale.
    static ZPCalendarDate *dateWithString_calendarFormat_locale(ZPString *text, ZPString *format, ZPDictionary *locale)
        ZP_CLASS_ASKS(text, format, locale);
    /// As the class message.
    ZPCalendarDate *initWithString_calendarFormat(ZPString *text, ZPString *format) ZP_ASKS(text, format);
    /// As the class message.
    ZPCalendarDate *initWithString_calendarFormat_locale(ZPString *text, ZPString *format, ZPDictionary *locale)
        ZP_ASKS(text, format, locale);

    /// The detail of the date's zone that is in force at it; borrowed.
    ZPTimeZoneDetail *timeZoneDetail() ZP_ASKS();
    /// Takes the zone's detail for this date, which stays the same point in time; retained.
    void setTimeZone(ZPTimeZone *zone) ZP_TELLS(zone);
    /// The format of its description; borrowed.
    ZPString *calendarFormat() ZP_ASKS();
    /// Keeps a copy of the format.
    void setCalendarFormat(ZPString *format) ZP_TELLS(format);

    // ---- the calendar, in the date's zone. Of a date before year 1 the fields are those of January 1 of year 1, of
    // one beyond day 2,147,483,647 those of 4001-01-02; the time of the day is its own ----

    /// The number of the day; 1 is January 1 of year 1, a Monday, and the days before it are 0 and negative.
    int dayOfCommonEra() ZP_ASKS();
    /// The year, from 1: also a date before year 1 answers 1.
    int yearOfCommonEra() ZP_ASKS();
    /// From 1 to 12.
    int monthOfYear() ZP_ASKS();
    /// From 1 to 31.
    int dayOfMonth() ZP_ASKS();
    /// From 0, Sunday, to 6.
    int dayOfWeek() ZP_ASKS();
    /// From 1 to 366.
    int dayOfYear() ZP_ASKS();
    /// From 0 to 23.
    int hourOfDay() ZP_ASKS();
    /// From 0 to 59.
    int minuteOfHour() ZP_ASKS();
    /// From 0 to 59; the fraction is cut off.
    int secondOfMinute() ZP_ASKS();

    /// An autoreleased date: years and months are added first, and the day cut to the length of the month that gives;
    /// then days, then the rest. Each may be negative. All of it happens to the fields of the date's zone, which are
    /// then made a moment as those of a new date: across a change of the zone's clocks an hour more on the clock is not
    /// an hour of time. In Berlin 2024-03-31 01:59 +0100 and 60 seconds give 02:00 +0200, 3,540 seconds earlier. What
    /// is meant as time is added by `addTimeInterval`.
    ZPCalendarDate *dateByAddingYears_months_days_hours_minutes_seconds(int years, int months, int days, int hours,
                                                                        int minutes, int seconds)
        ZP_ASKS(years, months, days, hours, minutes, seconds);
    /// What must be added to the other date, by the message above and in its zone, to come to this one, in the units
    /// whose pointers are not null. Hours and minutes are therefore those of the clock: a day has 24 hours also when
    /// the clocks change in it. `timeIntervalSinceDate` measures time.
    void years_months_days_hours_minutes_seconds_sinceDate(int *years, int *months, int *days, int *hours, int *minutes,
                                                           int *seconds, ZPDate *date)
        ZP_TELLS(years, months, days, hours, minutes, seconds, date);

    /// The date in another format than its own; autoreleased.
    ZPString *descriptionWithCalendarFormat(ZPString *format) ZP_ASKS(format);
    /// The same with the names of a locale.
    ZPString *descriptionWithCalendarFormat_locale(ZPString *format, ZPDictionary *locale) ZP_ASKS(format, locale);
};
