// SPDX-License-Identifier: MIT
// ZPCalendarDate: its fields, what is built of them, and arithmetic. A day is found from local seconds, rounded down,
// in whole numbers; what lies outside days 1 to 2,147,483,647 shows the fields of day 1 or of day 1,460,972.
#include <Bedrock/time/CalendarDate+Internal.h>
#include <Bedrock/core/ZPRef.h>

#include <Bedrock/core/Fronts.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/Field.h>
#include <Bedrock/platform/kernel/Kernel.h>
#include <Bedrock/strings/ZPString.h>
#include <Bedrock/time/TimeZone+Internal.h>

#include <cmath>

namespace {

long long clampedDay(long long day) { return day > 2147483647 ? 1460972 : day < 1 ? 1 : day; }
int clampedInt(double value) {
    return !(value > -2147483648.0) ? -2147483647 - 1 : value >= 2147483647.0 ? 2147483647 : int(value);
}

long long dayOf(ZPCalendarDate *date) {
    return clampedDay(_ZPFloorDivide(_ZPLocalSeconds(date), _ZPSecondsPerDay) + _ZPReferenceDay);
}

// The calendar's fields once they were asked for: year in the low 24 bits, then month, day, hour, minute and second; 0
// while they are not known, as after a change of zone. Two threads may both find them.
struct Packed {
    unsigned long long bits;

    explicit Packed(ZPCalendarDate *date) : bits(__atomic_load_n(&date->_fields, __ATOMIC_RELAXED)) {
        if (bits) return;
        _ZPDateFields f = _ZPFieldsOf(date);
        auto at = [](int value, int shift) { return static_cast<unsigned long long>(value) << shift; };
        bits = static_cast<unsigned long long>(f.year) | at(f.month, 24) | at(f.day, 32) | at(f.hour, 40) |
               at(f.minute, 48) | at(f.second, 56);
        __atomic_store_n(&date->_fields, bits, __ATOMIC_RELAXED);
    }
    int field(int shift) const { return int(bits >> shift & 0xFF); }
};

// The difference of two dates by one unit at a time; see `difference`.
struct Counts {
    int values[6] = {};

    ZPCalendarDate *addedTo(ZPCalendarDate *date) const {
        return date->dateByAddingYears_months_days_hours_minutes_seconds(values[0], values[1], values[2], values[3],
                                                                         values[4], values[5]);
    }
};

struct CalendarMethods : ZPCalendarDate {
    static ZPCalendarDate *make(Class self) { return ZPCalendarDate::allocFrom(self); }
    static ZPCalendarDate *calendarDate(Class self) {
        return make(self)->initWithTimeIntervalSinceReferenceDate(cthread_time())->autorelease().as<ZPCalendarDate>();
    }
    static ZPCalendarDate *dateWithYear_month_day_hour_minute_second_timeZone(Class self, int yearOfCommonEra,
                                                                              unsigned monthOfYear, unsigned dayOfMonth,
                                                                              unsigned hourOfDay, unsigned minuteOfHour,
                                                                              unsigned secondOfMinute,
                                                                              ZPTimeZone *zone) {
        return make(self)
            ->initWithYear_month_day_hour_minute_second_timeZone(yearOfCommonEra, monthOfYear, dayOfMonth, hourOfDay,
                                                                 minuteOfHour, secondOfMinute, zone)
            ->autorelease()
            .as<ZPCalendarDate>();
    }
    static ZPCalendarDate *dateWithString_calendarFormat(Class self, ZPString *text, ZPString *format) {
        return dateWithString_calendarFormat_locale(self, text, format, nullptr);
    }
    static ZPCalendarDate *dateWithString_calendarFormat_locale(Class self, ZPString *text, ZPString *format,
                                                                ZPDictionary *locale) {
        return make(self)
            ->initWithString_calendarFormat_locale(text, format, locale)
            ->autorelease()
            .as<ZPCalendarDate>();
    }

    id initWithTimeIntervalSinceReferenceDate(double seconds) {
        _timeIntervalSinceReferenceDate = seconds;
        _fields = 0;
        if (!_timeZone) setTimeZone(nullptr);
        if (!_formatString) _formatString = _ZPDefaultCalendarFormat();
        return this;
    }
    id initWithYear_month_day_hour_minute_second_timeZone(int yearOfCommonEra, unsigned monthOfYear,
                                                          unsigned dayOfMonth, unsigned hourOfDay,
                                                          unsigned minuteOfHour, unsigned secondOfMinute,
                                                          ZPTimeZone *zone) {
        _ZPSetDateFields(this, yearOfCommonEra, monthOfYear & 0xFF, dayOfMonth & 0xFF,
                         hourOfDay * 3600.0 + minuteOfHour * 60.0 + secondOfMinute, zone);
        return this;
    }
    id initWithString_calendarFormat(ZPString *text, ZPString *format) {
        return self()->initWithString_calendarFormat_locale(text, format, nullptr);
    }
    id initWithString_calendarFormat_locale(ZPString *text, ZPString *format, ZPDictionary *locale) {
        if (_ZPParseDate(this, text, format, locale)) return this;
        self()->release();
        return nullptr;
    }

    double timeIntervalSinceReferenceDate() { return _timeIntervalSinceReferenceDate; }
    ZPTimeZoneDetail *timeZoneDetail() { return _timeZone; }
    void setTimeZone(ZPTimeZone *zone) {
        ZPReplaceField(_timeZone, _ZPDetailAt(zone, _timeIntervalSinceReferenceDate, this));
        _fields = 0;
    }
    ZPString *calendarFormat() { return _formatString; }
    void setCalendarFormat(ZPString *format) {
        ZPString *old = _formatString;
        _formatString = format ? format->copyWithZone(nullptr).as<ZPString>() : _ZPDefaultCalendarFormat();
        old->release();
    }

    // ---- fields ----

    int dayOfCommonEra() {
        double dayOfMonth = (_timeIntervalSinceReferenceDate + _ZPOffsetOf(_timeZone)) / double(_ZPSecondsPerDay) +
                            double(_ZPReferenceDay);
        return dayOfMonth >= 1 && dayOfMonth < 2147483647.0 ? int(dayOf(this)) : clampedInt(dayOfMonth);
    }
    int yearOfCommonEra() { return int(Packed(this).bits & 0xFFFFFF); }
    int monthOfYear() { return Packed(this).field(24); }
    int dayOfMonth() { return Packed(this).field(32); }
    int dayOfWeek() { return int(dayOf(this) % 7); }
    int dayOfYear() { return _gregorian_from_absolute(dayOf(this)).dayOfYear; }
    int hourOfDay() { return Packed(this).field(40); }
    int minuteOfHour() { return Packed(this).field(48); }
    int secondOfMinute() { return Packed(this).field(56); }

    // ---- arithmetic ----

    ZPCalendarDate *dateByAddingYears_months_days_hours_minutes_seconds(int years, int months, int days, int hours,
                                                                        int minutes, int seconds) {
        _ZPDateFields f = _ZPFieldsOf(this);
        long long monthOfYear = f.month - 1LL + months,
                  yearOfCommonEra = f.year + years + _ZPFloorDivide(monthOfYear, 12);
        auto ofYear = unsigned(_ZPFloorModulo(monthOfYear, 12) + 1);
        long long dayOfMonth =
            std::min(f.day, _last_day_of_gregorian_month(ofYear, yearOfCommonEra)) + static_cast<long long>(days);
        long long secondOfMinute = (f.hour + static_cast<long long>(hours)) * 3600 +
                                   (f.minute + static_cast<long long>(minutes)) * 60 + f.second + seconds;
        ZPCalendarDate *sum = make(self()->objectClass());
        _ZPSetDateFields(sum, yearOfCommonEra, ofYear, dayOfMonth + _ZPFloorDivide(secondOfMinute, _ZPSecondsPerDay),
                         double(_ZPFloorModulo(secondOfMinute, 86400)), _timeZone);
        sum->_timeIntervalSinceReferenceDate +=
            _timeIntervalSinceReferenceDate - std::floor(_timeIntervalSinceReferenceDate);
        sum->setCalendarFormat(_formatString);
        return sum->autorelease().as<ZPCalendarDate>();
    }

    // For each unit asked for, the greatest count with which the other date does not pass this one.
    void years_months_days_hours_minutes_seconds_sinceDate(int *years, int *months, int *days, int *hours, int *minutes,
                                                           int *seconds, ZPDate *other) {
        int *outputs[6] = {years, months, days, hours, minutes, seconds};
        constexpr double lengths[5] = {31556952, 2629746, 86400, 3600, 60};
        for (int *output : outputs)
            if (output) *output = 0;
        if (!other) return;
        double mine = _timeIntervalSinceReferenceDate, base = other->timeIntervalSinceReferenceDate();
        if (mine == base || !std::isfinite(mine) || !std::isfinite(base)) return;
        int step = mine > base ? 1 : -1;
        ZPAutoreleasePoolScope pool;
        auto *from = id(other).unchecked<ZPCalendarDate>();
        if (!other->isKindOfClass(ZPCalendarDate::class_())) {
            from = other->dateWithCalendarFormat_timeZone(nullptr, nullptr);
            from->setTimeZone(_timeZone);
        }
        Counts counts;
        for (int unit = 0; unit < 5; ++unit) {
            if (!outputs[unit]) continue;
            int &count = counts.values[unit];
            auto timeAt = [&](int n) {
                count = n;
                return counts.addedTo(from)->_timeIntervalSinceReferenceDate;
            };
            auto passes = [&](double timeIntervalSinceReferenceDate) {
                return step > 0 ? timeIntervalSinceReferenceDate > mine : timeIntervalSinceReferenceDate < mine;
            };
            // The mean length leads near the answer; no unit strays from it by more than a few of its own.
            constexpr double most = 2147483000.0;
            int n = int(std::clamp((mine - base) / lengths[unit], -most, most));
            double timeIntervalSinceReferenceDate = timeAt(n);
            for (int tries = 0; tries < 64 && passes(timeIntervalSinceReferenceDate) && n != 0; ++tries)
                timeIntervalSinceReferenceDate = timeAt(n -= step);
            for (int tries = 0; tries < 64; ++tries) {
                if (std::abs(double(n)) >= most) break;
                double next = timeAt(n + step);
                if (passes(next)) break;
                n += step;
                timeIntervalSinceReferenceDate = next;
            }
            count = n;
            *outputs[unit] = n;
            base = timeIntervalSinceReferenceDate;
        }
        if (seconds) *seconds = clampedInt(mine - base);
    }

    ZPDate *addTimeInterval(double interval) {
        auto *sum = id(ZP_SUPER(ZPCalendarDate, addTimeInterval)(interval)).unchecked<ZPCalendarDate>();
        sum->setTimeZone(_timeZone);
        sum->setCalendarFormat(_formatString);
        return sum;
    }

    // ---- text ----

    ZPString *description() { return _ZPFormatDate(this, _formatString, nullptr); }
    ZPString *descriptionWithLocale(ZPDictionary *locale) { return _ZPFormatDate(this, _formatString, locale); }
    ZPString *descriptionWithCalendarFormat(ZPString *format) {
        return self()->descriptionWithCalendarFormat_locale(format, nullptr);
    }
    ZPString *descriptionWithCalendarFormat_locale(ZPString *format, ZPDictionary *locale) {
        return _ZPFormatDate(this, format, locale);
    }

    // ---- the object ----

    id copyWithZone(ZPZone *zone) {
        auto *copy = ZPCalendarDate::allocFrom(self()->objectClass(), zone);
        ZPReplaceField(copy->_timeZone, _timeZone);
        copy->_timeIntervalSinceReferenceDate = _timeIntervalSinceReferenceDate;
        copy->setCalendarFormat(_formatString);
        return copy;
    }
    void encodeWithCoder(ZPCoder *coder) {
        auto *to = _ZPAbove(coder);
        to->encodeValueOfObjCType_at("d", &_timeIntervalSinceReferenceDate);
        to->encodeValueOfObjCType_at("@", &_timeZone);
        to->encodeValueOfObjCType_at("@", &_formatString);
    }
    id initWithCoder(ZPCoder *coder) {
        auto *from = _ZPAbove(coder);
        double timeIntervalSinceReferenceDate = 0;
        from->decodeValueOfObjCType_at("d", &timeIntervalSinceReferenceDate);
        from->decodeValueOfObjCType_at("@", &_timeZone);
        from->decodeValueOfObjCType_at("@", &_formatString);
        return self()->initWithTimeIntervalSinceReferenceDate(timeIntervalSinceReferenceDate);
    }
    Class classForCoder() { return ZPCalendarDate::class_(); }
    id replacementObjectForPortCoder(ZPPortCoder *coder) {
        if (!_ZPAbove(coder)->isByref()) return this;
        return _ZPDistantObjectAbove::proxyWithLocal_connection(this, _ZPAbove(coder)->connection());
    }
    void dealloc() {
        _timeZone->release();
        _formatString->release();
        ZP_SUPER(ZPCalendarDate, dealloc)();
    }
};

// What every date does by way of a calendar date.
struct DateExtras : ZPDate {
    ZPCalendarDate *dateWithCalendarFormat_timeZone(ZPString *format, ZPTimeZone *zone) {
        double time = self()->timeIntervalSinceReferenceDate();
        auto date = ZPAdopt<ZPCalendarDate>(ZPCalendarDate::alloc()->initWithTimeIntervalSinceReferenceDate(time));
        if (zone) date->setTimeZone(zone);
        if (format) date->setCalendarFormat(format);
        return std::move(date).autoreleased();
    }
    ZPString *descriptionWithLocale(ZPDictionary *locale) {
        ZPCalendarDate *date = dateWithCalendarFormat_timeZone(nullptr, nullptr);
        return locale ? date->descriptionWithCalendarFormat_locale("%c"_zp, locale) : date->description();
    }
    ZPString *descriptionWithCalendarFormat_timeZone_locale(ZPString *format, ZPTimeZone *zone, ZPDictionary *locale) {
        return dateWithCalendarFormat_timeZone(format, zone)->descriptionWithLocale(locale);
    }
    id initWithString(ZPString *text) {
        double time;
        int offset;
        if (!_ZPParseFixedDate(text, &time, &offset)) {
            self()->release();
            return nullptr;
        }
        ZPDate *date = self()->initWithTimeIntervalSinceReferenceDate(time);
        if (date->respondsToSelector("setTimeZone:"_sel))
            id(date).unchecked<ZPCalendarDate>()->setTimeZone(ZPTimeZone::timeZoneForSecondsFromGMT(offset));
        return date;
    }
};

}  // namespace

long long _ZPLocalSeconds(ZPCalendarDate *date) {
    return _ZPFloorSeconds(date->_timeIntervalSinceReferenceDate + _ZPOffsetOf(date->_timeZone));
}

_ZPDateFields _ZPFieldsOf(ZPCalendarDate *date) {
    long long local = _ZPLocalSeconds(date), days = _ZPFloorDivide(local, _ZPSecondsPerDay);
    long long number = clampedDay(days + _ZPReferenceDay);
    int second = _ZPFloorModulo(local, 86400);
    double time = date->_timeIntervalSinceReferenceDate, fraction = time - double(_ZPFloorSeconds(time));
    int milliseconds = fraction >= 0 && fraction < 1 ? int(1000 * fraction + 0.5) : 0;
    return {
        _gregorian_from_absolute(number), second / 3600, second / 60 % 60, second % 60, milliseconds, int(number % 7)};
}

void _ZPSetDateFields(ZPCalendarDate *date, long long year, unsigned month, long long day, double secondsOfDay,
                      ZPTimeZone *zone) {
    double time =
        double(_absolute_from_gregorian(year, month, day) - _ZPReferenceDay) * double(_ZPSecondsPerDay) + secondsOfDay;
    // A client's zone may ask the date for its fields at any step.
    auto setTime = [date](double t) {
        date->_timeIntervalSinceReferenceDate = t;
        date->_fields = 0;
    };
    setTime(time);
    if (!zone) zone = ZPTimeZone::defaultTimeZone();
    ZPTimeZoneDetail *first = zone->isKindOfClass(ZPTimeZoneDetail::class_()) ? static_cast<ZPTimeZoneDetail *>(zone)
                                                                              : _ZPDetailAt(zone, time, date);
    setTime(time -= _ZPOffsetOf(first));
    // On the other side of a change of the zone's clocks the fields mean another moment.
    ZPTimeZoneDetail *second = _ZPDetailAt(first, time, date);
    if (second != first) time += double(_ZPOffsetOf(first)) - _ZPOffsetOf(second);
    ZPReplaceField(date->_timeZone, second);
    setTime(time);
    if (!date->_formatString) date->_formatString = _ZPDefaultCalendarFormat();
}

ZP_IMPLEMENT_WITH(ZPCalendarDate, CalendarMethods, initWithTimeIntervalSinceReferenceDate,
                  initWithYear_month_day_hour_minute_second_timeZone, initWithString_calendarFormat,
                  initWithString_calendarFormat_locale, timeIntervalSinceReferenceDate, timeZoneDetail, setTimeZone,
                  calendarFormat, setCalendarFormat, dayOfCommonEra, yearOfCommonEra, monthOfYear, dayOfMonth,
                  dayOfWeek, dayOfYear, hourOfDay, minuteOfHour, secondOfMinute,
                  dateByAddingYears_months_days_hours_minutes_seconds,
                  years_months_days_hours_minutes_seconds_sinceDate, addTimeInterval, description,
                  descriptionWithLocale, descriptionWithCalendarFormat, descriptionWithCalendarFormat_locale,
                  copyWithZone, encodeWithCoder, initWithCoder, classForCoder, replacementObjectForPortCoder, dealloc,
                  classMethods(calendarDate, dateWithYear_month_day_hour_minute_second_timeZone,
                               dateWithString_calendarFormat, dateWithString_calendarFormat_locale));

ZP_CATEGORY(ZPDate, DateExtras, descriptionWithLocale, descriptionWithCalendarFormat_timeZone_locale,
            dateWithCalendarFormat_timeZone, initWithString);
