// SPDX-License-Identifier: MIT
// What the calendar date's code shares.
#pragma once

#include <Bedrock/time/ZPCalendarDate.h>
#include <Bedrock/time/Date+Internal.h>

#include <Bedrock/strings/ZPString.h>

#include <vector>

/// A copy of a string's units; few need no memory.
struct _ZPUnitsOf {
    unsigned length;
    std::vector<unichar> longer;
    unichar shorter[96];
    const unichar *units = shorter;

    explicit _ZPUnitsOf(ZPString *string) : length(string->length()) {
        unichar *to = shorter;
        if (length > std::size(shorter)) {
            longer.resize(length);
            units = to = longer.data();
        }
        string->getCharacters_range(to, ZPMakeRange(0, length));
    }
    _ZPUnitsOf(const _ZPUnitsOf &) = delete;
};

/// All fields of a date in its zone.
struct _ZPDateFields : _ZPGregorian {
    int hour, minute, second, milliseconds, dayOfWeek;
};

/// Local seconds since the reference date, rounded down; what no number holds gives the nearest.
long long _ZPLocalSeconds(ZPCalendarDate *date);
_ZPDateFields _ZPFieldsOf(ZPCalendarDate *date);
/// Sets time and zone of a date from fields in a zone (null: the default zone); all fields may lie outside their
/// ranges.
void _ZPSetDateFields(ZPCalendarDate *date, long long year, unsigned month, long long day, double secondsOfDay,
                      ZPTimeZone *zone);
/// The class's own format.
inline ZPString *_ZPDefaultCalendarFormat() { return "%Y-%m-%d %H:%M:%S %z"_zp; }

/// Element `index` of the list of `count` strings that a locale has under the key; of the English list when the locale
/// has no such list.
ZPString *_ZPLocaleName(ZPDictionary *locale, ZPString *key, unsigned index, unsigned count);
/// The locale's format for date and time; null when it has none.
ZPString *_ZPLocaleFormat(ZPDictionary *locale);
/// A locale's format may name itself: in one date it is followed so often.
inline constexpr int _ZPMostExpansions = 16;

ZPString *_ZPFormatDate(ZPCalendarDate *date, ZPString *format, ZPDictionary *locale);
/// Answers NO when the text does not match.
BOOL _ZPParseDate(ZPCalendarDate *date, ZPString *text, ZPString *format, ZPDictionary *locale);
/// The fixed form of `description`: seconds since the reference date, and the offset that the text names.
BOOL _ZPParseFixedDate(ZPString *text, double *time, int *offset);
