// SPDX-License-Identifier: MIT
// Dates to text.
#include <Bedrock/time/CalendarDate+Internal.h>

#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/core/LogTimeStamp.h>
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/platform/kernel/Kernel.h>
#include <Bedrock/strings/ZPMutableString.h>
#include <Bedrock/time/ZPLocale.h>
#include <Bedrock/time/TimeZone+Internal.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

ZPString *_ZPLocaleName(ZPDictionary *locale, ZPString *key, unsigned index, unsigned count) {
    for (ZPDictionary *names : {locale, _ZPDefaultEnglishLanguageDict()}) {
        id list = names->objectForKey(key);
        if (!list || !list->isKindOfClass(ZPArray::class_()) || list.as<ZPArray>()->count() < count) continue;
        id name = list.as<ZPArray>()->objectAtIndex(index);
        if (name->isKindOfClass(ZPString::class_())) return name.as<ZPString>();
    }
    return ZPString::string();
}

ZPString *_ZPLocaleFormat(ZPDictionary *locale) {
    id format = locale->objectForKey(ZPTimeDateFormatString);
    return format && format->isKindOfClass(ZPString::class_()) ? format.as<ZPString>() : nullptr;
}

namespace {

constexpr unsigned mostWidth = 1000;  // of a number, whatever the format says

/// Units being written; the first lie in place.
class Output {
    unichar _inPlace[192];
    std::vector<unichar> _more;
    unichar *_units = _inPlace;
    unsigned _length = 0, _capacity = std::size(_inPlace);

    unichar *extend(unsigned count) {
        if (_length + count > _capacity) [[unlikely]] {
            bool first = _more.empty();
            _capacity = (_length + count) * 2;
            _more.resize(_capacity);
            if (first) std::copy_n(_inPlace, _length, _more.data());
            _units = _more.data();
        }
        _length += count;
        return _units + _length - count;
    }

  public:
    Output() {}
    Output(const Output &) = delete;
    void add(const unichar *units, unsigned count) { std::copy_n(units, count, extend(count)); }
    void add(char c) { *extend(1) = unichar(static_cast<unsigned char>(c)); }
    void add(ZPString *text) {
        unsigned length = text->length();
        text->getCharacters_range(extend(length), ZPMakeRange(0, length));
    }
    void addNumber(long long value, unsigned width, char fill) {
        if (value >= 0 && value < 100 && width == 2 && fill == '0') {
            unichar *to = extend(2);
            to[0] = unichar('0' + unsigned(value) / 10);
            to[1] = unichar('0' + unsigned(value) % 10);
            return;
        }
        unichar digits[24], *end = std::end(digits);
        unsigned long long rest =
            value < 0 ? 0ull - static_cast<unsigned long long>(value) : static_cast<unsigned long long>(value);
        const unichar *first = _ZPPutDigitsBefore<10>(end, rest, 1);
        bool isNegative = value < 0;
        unsigned length = unsigned(end - first) + isNegative, filling = width > length ? width - length : 0;
        unichar *to = extend(length + filling);
        if (isNegative && fill == '0') *to++ = '-';
        to = std::fill_n(to, filling, unichar(fill));
        if (isNegative && fill != '0') *to++ = '-';
        std::copy(first, static_cast<const unichar *>(end), to);
    }
    ZPString *string() { return ZPMutableString::stringWithCharacters_length(_units, _length); }
};

struct Formatter {
    ZPCalendarDate *date;
    ZPDictionary *locale;
    _ZPDateFields fields;
    Output output;
    int expansions = 0;

    Formatter(ZPCalendarDate *d, ZPDictionary *l) : date(d), locale(l), fields(_ZPFieldsOf(d)) {}

    void name(ZPString *key, unsigned index, unsigned count) { output.add(_ZPLocaleName(locale, key, index, count)); }

    // The locale's format, or what stands here.
    void expand(ZPString *standard) {
        ZPString *format = _ZPLocaleFormat(locale);
        if (!format) run(standard);
        else if (expansions++ < _ZPMostExpansions) run(format);
        else output.add('?');
    }

    void run(ZPString *format) {
        _ZPUnitsOf text(format);
        const unichar *units = text.units;
        unsigned length = text.length, at = 0;
        while (at < length) {
            unsigned plain = at;
            while (at < length && units[at] != '%') ++at;
            output.add(units + plain, at - plain);
            if (at++ >= length) return;
            char fill = at < length && units[at] == '0' ? '0' : ' ';
            unsigned width = 0;
            bool hasWidth = _ZPReadNumber(units, at, length, mostWidth, width);
            if (at >= length) return;
            auto number = [&](long long value, unsigned ownWidth) {
                output.addNumber(value, hasWidth ? width : ownWidth, hasWidth ? fill : '0');
            };
            const _ZPDateFields &f = fields;
            switch (units[at++]) {
            case '%': output.add('%'); break;
            case 'a': name(ZPShortWeekDayNameArray, unsigned(f.dayOfWeek), 7); break;
            case 'A': name(ZPWeekDayNameArray, unsigned(f.dayOfWeek), 7); break;
            case 'b': name(ZPShortMonthNameArray, unsigned(f.month - 1), 12); break;
            case 'B': name(ZPMonthNameArray, unsigned(f.month - 1), 12); break;
            case 'c': expand("%a %b %d %H:%M:%S %Z %Y"_zp); break;
            case 'd': number(f.day, 2); break;
            case 'e': number(f.day, 1); break;
            case 'F': output.addNumber(f.milliseconds % 1000, 3, '0'); break;
            case 'H': number(f.hour, 2); break;
            case 'I': number(f.hour % 12 ? f.hour % 12 : 12, 2); break;
            case 'j': number(f.dayOfYear, 3); break;
            case 'm': number(f.month, 2); break;
            case 'M': number(f.minute, 2); break;
            case 'p': name(ZPAMPMDesignation, f.hour > 11, 2); break;
            case 'S': number(f.second, 2); break;
            case 'w': number(f.dayOfWeek, 1); break;
            case 'x': expand("%a %b %d %Y"_zp); break;
            case 'X': expand("%H:%M:%S %Z"_zp); break;
            case 'y': number(f.year % 100, 2); break;
            case 'Y': number(f.year, 1); break;
            case 'Z': output.add(date->_timeZone->timeZoneAbbreviation()); break;
            case 'z': {
                long long offset = date->_timeZone->timeZoneSecondsFromGMT(), distance = std::abs(offset);
                output.add(offset < 0 ? '-' : '+');
                output.addNumber(distance / 3600, 2, '0');
                output.addNumber(distance / 60 % 60, 2, '0');
                break;
            }
            default: output.add('?');
            }
        }
    }
};

}  // namespace

ZPString *_ZPFormatDate(ZPCalendarDate *date, ZPString *format, ZPDictionary *locale) {
    Formatter f(date, locale);
    f.run(format ? format : _ZPDefaultCalendarFormat());
    return f.output.string();
}

// "%b %d %H:%M:%S" of a calendar date in the default zone, without making one.
void _ZPLogTimeStamp(char text[32]) {
    constexpr char months[12][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    double now = cthread_time();
    ZPDate *holder = nullptr;
    ZPTimeZoneDetail *zone = ZPTimeZone::defaultTimeZone();
    if (!_ZPIsOwnDetail(zone))
        holder = ZPDate::dateWithTimeIntervalSinceReferenceDate(now);  // a client's zone asks the date
    long long local = _ZPFloorSeconds(now + _ZPOffsetOf(_ZPDetailAt(zone, now, holder)));
    int second = _ZPFloorModulo(local, 86400);
    _ZPGregorian g = _gregorian_from_absolute(_ZPFloorDivide(local, 86400) + _ZPReferenceDay);
    std::snprintf(text, 32, "%s %02d %02d:%02d:%02d", months[g.month - 1], g.day, second / 3600, second / 60 % 60,
                  second % 60);
}
