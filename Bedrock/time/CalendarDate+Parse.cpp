// SPDX-License-Identifier: MIT
// Text to dates.
#include <Bedrock/time/CalendarDate+Internal.h>

#include <Bedrock/platform/ASCII.h>
#include <Bedrock/core/Fronts.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/platform/kernel/Kernel.h>
#include <Bedrock/strings/ZPCharacterSet.h>
#include <Bedrock/strings/ZPNumberReader.h>
#include <Bedrock/strings/ZPString.h>
#include <Bedrock/time/ZPLocale.h>

#include <cstdlib>

namespace {

// Whether a year of two digits below 30 is one of this century; the user can say no.
BOOL splitsCenturies() {
    enum Answer : unsigned char { unknown, no, yes };
    static Answer answer;
    Answer known = __atomic_load_n(&answer, __ATOMIC_RELAXED);
    if (known == unknown) {
        ZPAutoreleasePoolScope pool;
        auto *defaults = _ZPUserDefaultsAbove::standardUserDefaults();
        ZPString *key = "ZPUseExcelTwoDigitYearSemantics"_zp;
        known = !defaults->objectForKey(key) || defaults->boolForKey(key) ? yes : no;
        __atomic_store_n(&answer, known, __ATOMIC_RELAXED);
    }
    return known == yes;
}

bool isSpace(unichar u) {
    if (u < 0x100) return u == ' ' || u == '\t' || u == '\n' || u == 0xA0;
    return ZPCharacterSet::whitespaceAndNewlineCharacterSet()->characterIsMember(u);
}

/// A string's units and a place among them.
struct Text : _ZPUnitsOf {
    ZPString *string;
    unsigned at = 0;

    explicit Text(ZPString *s) : _ZPUnitsOf(s), string(s) {}
    bool skip() {
        while (at < length && isSpace(units[at])) ++at;
        return at < length;
    }
    bool digits(unsigned most, int &value) { return _ZPReadDigits(units, at, length, most, value); }
    bool number(int &value) {
        return _ZPScanIntFromString(string, ZPCharacterSet::whitespaceAndNewlineCharacterSet(), &value, &at);
    }
    bool name(ZPString *wanted) {
        ZPRange found = string->rangeOfString_options_range(wanted, ZPAnchoredSearch | ZPCaseInsensitiveSearch,
                                                            ZPMakeRange(at, length - at));
        at += found.length;
        return found.length != 0;
    }
};

struct Parser {
    Text text;
    ZPDictionary *locale;
    bool hasYear = false, hasOffset = false;
    int year = 0, month = 0, day = 0, dayOfYear = 0, hour = 0, minute = 0, second = 0, milliseconds = 0, offset = 0;
    ZPString *zoneName = nullptr;
    int expansions = 0;

    Parser(ZPString *t, ZPDictionary *l) : text(t), locale(l) {}

    bool oneOf(ZPString *key, unsigned count, int *index) {
        for (unsigned i = 0; i < count; ++i)
            if (text.name(_ZPLocaleName(locale, key, i, count))) {
                if (index) *index = int(i + 1);
                return true;
            }
        return false;
    }

    bool directive(unichar which) {
        switch (which) {
        case '%': return text.units[text.at] == '%' && ++text.at;
        case 'a': return oneOf(ZPShortWeekDayNameArray, 7, nullptr);
        case 'A': return oneOf(ZPWeekDayNameArray, 7, nullptr);
        case 'b': return oneOf(ZPShortMonthNameArray, 12, &month);
        case 'B': return oneOf(ZPMonthNameArray, 12, &month);
        case 'd': return text.digits(2, day);
        case 'm': return text.digits(2, month);
        case 'H':
        case 'I': return text.digits(2, hour);
        case 'M': return text.digits(2, minute);
        case 'S': return text.digits(2, second);
        case 'F': return text.digits(3, milliseconds);
        case 'Y': return hasYear = text.digits(4, year) && year != 0;
        case 'y':
            if (!text.digits(2, year)) return false;
            year += splitsCenturies() && year < 30 ? 2000 : 1900;
            return hasYear = true;
        case 'e': return text.number(day);
        case 'j': return text.number(dayOfYear);
        case 'p':
            if (text.name(_ZPLocaleName(locale, ZPAMPMDesignation, 1, 2))) {
                if (hour < 12) hour += 12;
                return true;
            }
            if (!text.name(_ZPLocaleName(locale, ZPAMPMDesignation, 0, 2))) return false;
            if (hour == 12) hour = 0;
            return true;
        case 'w': return text.units[text.at] >= '0' && text.units[text.at] <= '6' && ++text.at;
        case 'Z': {
            unsigned from = text.at;
            while (text.at < text.length && !isSpace(text.units[text.at])) ++text.at;
            zoneName = text.string->substringWithRange(ZPMakeRange(from, text.at - from));
            return text.at > from;
        }
        case 'z': {
            int value;
            if (!text.number(value)) return false;
            long long v = std::abs(static_cast<long long>(value)), seconds = v / 100 * 3600 + v % 100 * 60;
            offset = int(std::min(seconds, 2147483647LL));
            if (value < 0) offset = -offset;
            return hasOffset = true;
        }
        default: return false;
        }
    }

    bool run(ZPString *formatString) {
        Text format(formatString);
        while (format.skip()) {
            if (!text.skip()) return false;
            unichar c = format.units[format.at++];
            if (c != '%') {
                if (text.units[text.at++] != c) return false;
                continue;
            }
            if (format.at >= format.length) return false;
            unichar which = format.units[format.at++];
            if (which == 'c' || which == 'x' || which == 'X') {
                ZPString *own = _ZPLocaleFormat(locale);
                if (own && expansions++ >= _ZPMostExpansions) return false;
                if (!own)
                    own = which == 'c'   ? "%a %b %d %H:%M:%S %Z %Y"_zp
                          : which == 'x' ? "%a %b %d %Y"_zp
                                         : "%H:%M:%S %Z"_zp;
                if (!run(own)) return false;
            } else if (!directive(which)) {
                return false;
            }
        }
        return true;
    }

    bool finish(ZPCalendarDate *date, ZPString *format) {
        ZPTimeZone *zone = nullptr;
        if (zoneName) zone = ZPTimeZone::timeZoneWithAbbreviation(zoneName);
        else if (hasOffset) zone = ZPTimeZone::timeZoneForSecondsFromGMT(offset);
        if (!hasYear) year = ZPCalendarDate::calendarDate()->yearOfCommonEra();
        if (dayOfYear) {
            _ZPGregorian g = _gregorian_from_absolute(std::max(1LL, _absolute_from_year_day(year, dayOfYear)));
            if ((month && month != g.month) || (day && day != g.day)) return false;
            month = g.month;
            day = g.day;
        }
        ZPCalendarDate *made =
            date->initWithYear_month_day_hour_minute_second_timeZone(year, month ? unsigned(month) : 1,
                                                                     day ? unsigned(day) : 1, unsigned(hour),
                                                                     unsigned(minute), unsigned(second), zone);
        if (made != date) return false;
        date->setCalendarFormat(format);
        if (milliseconds) date->_timeIntervalSinceReferenceDate += milliseconds / 1000.0 + 0.0001;
        return true;
    }
};

}  // namespace

BOOL _ZPParseDate(ZPCalendarDate *date, ZPString *text, ZPString *format, ZPDictionary *locale) {
    if (!text) return NO;
    if (!format) format = _ZPDefaultCalendarFormat();
    Parser parser(text, locale);
    return parser.run(format) && parser.finish(date, format);
}

BOOL _ZPParseFixedDate(ZPString *string, double *time, int *offset) {
    if (!string) return NO;
    Text text(string);
    long long numbers[6], sign, hoursAndMinutes;
    auto number = [&](long long &value) { return _ZPReadNumber(text.units, text.at, text.length, 2147483647, value); };
    for (long long &n : numbers)
        if (!number(n) || text.at++ >= text.length) return NO;
    if (text.at >= text.length || (text.units[text.at] != '+' && text.units[text.at] != '-')) return NO;
    sign = text.units[text.at++] == '-' ? -1 : 1;
    if (!number(hoursAndMinutes)) return NO;
    long long distance = std::min((hoursAndMinutes % 100 + hoursAndMinutes / 100 * 60) * 60, 2147483647LL);
    *offset = int(sign * distance);
    double days =
        double(_absolute_from_gregorian(numbers[0], unsigned(numbers[1] & 0xFF), numbers[2] & 0xFF) - _ZPReferenceDay);
    *time = days * double(_ZPSecondsPerDay) + double(numbers[3]) * 3600 + double(numbers[4]) * 60 + double(numbers[5]) -
            *offset;
    return YES;
}
