// SPDX-License-Identifier: MIT
// A format and a text, with a NUL between them: reading by the format, writing by it, and what was written read again.
#include <Bedrock/Bedrock.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

ZPString *text(const std::uint8_t *bytes, std::size_t length) {
    return (ZPString *)ZPString::alloc()
        ->initWithData_encoding(ZPData::dataWithBytes_length(bytes, unsigned(length)), ZPISOLatin1StringEncoding)
        ->autorelease()
        .pointer();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size > 4096) return 0;
    ZPAutoreleasePoolScope pool;
    const auto *end = size ? static_cast<const std::uint8_t *>(std::memchr(data, 0, size)) : nullptr;
    std::size_t first = end ? std::size_t(end - data) : size;
    ZPString *format = text(data, first), *given = text(data + first, size - first);
    ZPDictionary *locale =
        ZPDictionary::dictionaryWithObject_forKey(format, ZPTimeDateFormatString);  // a format may name itself
    ZPDate::dateWithString(given);
    ZPCalendarDate *date = ZPCalendarDate::dateWithString_calendarFormat_locale(given, format, locale);
    if (date) date->dateByAddingYears_months_days_hours_minutes_seconds(-1, 13, 400, -25, 61, -3601)->description();
    ZPCalendarDate *some = ZPCalendarDate::dateWithYear_month_day_hour_minute_second_timeZone(
        2004, 2, 29, 23, 59, 58, ZPTimeZone::timeZoneForSecondsFromGMT(-12600));
    some->descriptionWithCalendarFormat_locale(format, locale);
    // What a full format writes, it reads back as the same moment.
    if (date) {
        ZPString *full = "%Y-%m-%d %H:%M:%S %z"_zp, *written = date->descriptionWithCalendarFormat(full);
        int year = date->yearOfCommonEra(), offset = date->timeZoneDetail()->timeZoneSecondsFromGMT();
        if (year > 0 && year < 10000 && offset % 60 == 0 && offset > -360000 && offset < 360000) {
            ZPCalendarDate *again = ZPCalendarDate::dateWithString_calendarFormat(written, full);
            if (!again || !again->descriptionWithCalendarFormat(full)->isEqualToString(written)) std::abort();
        }
    }
    return 0;
}
