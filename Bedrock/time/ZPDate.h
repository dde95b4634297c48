// SPDX-License-Identifier: MIT
// Dates: points in time. The folder has dates, the calendar, time zones and the English locale; nothing of it but the
// public headers is for others. Read this first, then Date.cpp; the calendar's arithmetic is in Date+Internal.h.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPCalendarDate);
ZP_FORWARD(ZPDictionary);
ZP_FORWARD(ZPTimeZone);

/// An immutable point in time: seconds, with fractions, since the reference date 2001-01-01 00:00:00 UTC. The front
/// of a class cluster; a subclass supplies `timeIntervalSinceReferenceDate` and
/// `initWithTimeIntervalSinceReferenceDate`. Any thread may use a date. Dates made by class messages are
/// autoreleased. All times are in seconds; those of the past are negative.
struct ZPDate : ZPObject {
    ZP_CLASS(ZPDate)

    /// Now.
    static ZPDate *date() ZP_CLASS_ASKS();
    /// So many seconds after the reference date.
    static ZPDate *dateWithTimeIntervalSinceReferenceDate(double seconds) ZP_CLASS_ASKS(seconds);
    /// So many seconds from now.
    static ZPDate *dateWithTimeIntervalSinceNow(double seconds) ZP_CLASS_ASKS(seconds);
    /// So many seconds after 1970-01-01 00:00:00 UTC.
    static ZPDate *dateWithTimeIntervalSince1970(double seconds) ZP_CLASS_ASKS(seconds);
    /// So many seconds after another date.
    static ZPDate *dateWithTimeInterval_sinceDate(double seconds, ZPDate *date) ZP_CLASS_ASKS(seconds, date);
    /// The same point in time as another date.
    static ZPDate *dateWithDate(ZPDate *date) ZP_CLASS_ASKS(date);
    /// A date as `description` writes it without a locale, "2001-01-01 10:00:00 +0100"; any single characters may
    /// separate the numbers. Null when the text has another form. Numbers are not checked: hour 25 is 1 of the next
    /// day.
    static ZPDate *dateWithString(ZPString *text) ZP_CLASS_ASKS(text);
    /// Later than every date that matters, 4001-01-02. Always the same object, whose distance from any date is that
    /// from the reference date; it ignores counting.
    static ZPDate *distantFuture() ZP_CLASS_ASKS();
    /// Earlier than every date that matters, January 2 of year 1, which `description` writes as "1-01-02"; likewise.
    static ZPDate *distantPast() ZP_CLASS_ASKS();
    /// Seconds from the reference date to now.
    static double currentTimeIntervalSinceReferenceDate() ZP_CLASS_ASKS_AS("timeIntervalSinceReferenceDate");

    /// So many seconds after the reference date: the designated initialiser. `init` takes the current time.
    ZPDate *initWithTimeIntervalSinceReferenceDate(double seconds) ZP_ASKS(seconds);
    /// So many seconds from now.
    ZPDate *initWithTimeIntervalSinceNow(double seconds) ZP_ASKS(seconds);
    /// So many seconds after 1970-01-01 00:00:00 UTC.
    ZPDate *initWithTimeIntervalSince1970(double seconds) ZP_ASKS(seconds);
    /// So many seconds after another date.
    ZPDate *initWithTimeInterval_sinceDate(double seconds, ZPDate *date) ZP_ASKS(seconds, date);
    /// As `dateWithString`.
    ZPDate *initWithString(ZPString *text) ZP_ASKS(text);

    /// Seconds from the reference date to the receiver.
    double timeIntervalSinceReferenceDate() ZP_ASKS();
    /// Seconds from the other date to the receiver: positive when the receiver is the later one.
    double timeIntervalSinceDate(ZPDate *other) ZP_ASKS(other);
    /// Seconds from now to the receiver.
    double timeIntervalSinceNow() ZP_ASKS();
    /// Seconds from 1970-01-01 00:00:00 UTC to the receiver.
    double timeIntervalSince1970() ZP_ASKS();

    /// An autoreleased date of the receiver's class, that many seconds later.
    ZPDate *addTimeInterval(double seconds) ZP_ASKS(seconds);
    /// -1 when the receiver is earlier, 0 when both are equal, 1 when it is later.
    int compare(ZPDate *other) ZP_ASKS(other);
    /// Whether both are the same point in time, to the last bit.
    BOOL isEqualToDate(ZPDate *other) ZP_ASKS(other);
    /// An autoreleased copy of the earlier of the two; of the argument when they are equal.
    ZPDate *earlierDate(ZPDate *other) ZP_ASKS(other);
    /// An autoreleased copy of the later of the two; of the argument when they are equal.
    ZPDate *laterDate(ZPDate *other) ZP_ASKS(other);

    // ---- by the calendar; see ZPCalendarDate.h ----

    /// The date in the default zone: "%Y-%m-%d %H:%M:%S %z" without a locale, "%c" with one.
    ZPString *descriptionWithLocale(ZPDictionary *locale) ZP_ASKS(locale);
    /// The date in a zone (null: the default one) and format (null: the one above).
    ZPString *descriptionWithCalendarFormat_timeZone_locale(ZPString *format, ZPTimeZone *zone, ZPDictionary *locale)
        ZP_ASKS(format, zone, locale);
    /// An autoreleased calendar date of the same time.
    ZPCalendarDate *dateWithCalendarFormat_timeZone(ZPString *format, ZPTimeZone *zone) ZP_ASKS(format, zone);
};

/// Seconds from 1970-01-01 to 2001-01-01.
inline constexpr double ZPTimeIntervalSince1970 = 978307200.0;

extern "C" {
/// Now, in seconds since the reference date.
ZP_EXPORT double _ZPCurrentTime();
}
