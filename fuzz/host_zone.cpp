// SPDX-License-Identifier: MIT
// The host's time zone: from a file, or, where the first byte is odd, from a rule or name. The library says what the C
// library says, the same each time, and its answers fit each other. A process has one such zone, so each input has its
// own.
#include "child.h"

#include <ctime>

namespace {

// The ends of what rules can say, and of what zone files are to say.
constexpr int leastOffset = -25 * 3600, mostOffset = 26 * 3600;

bool same(ZPString *a, ZPString *b) { return a->isEqualToString(b); }

// A longer setting names no zone: its details go by their abbreviations.
constexpr std::size_t longestName = 255;
bool isNamed;
bool sameName(ZPTimeZone *a, ZPTimeZone *b) { return !isNamed || same(a->timeZoneName(), b->timeZoneName()); }

void checkMoment(long long moment) {
    ZPDate *date = ZPDate::dateWithTimeIntervalSinceReferenceDate(double(moment) - ZPTimeIntervalSince1970);
    ZPTimeZone *zone = ZPTimeZone::defaultTimeZone();
    ZPTimeZoneDetail *detail = zone->timeZoneDetailForDate(date);
    require(detail && zone->timeZoneDetailForDate(date) == detail && detail->timeZoneDetailForDate(date) == detail);
    int offset = detail->timeZoneSecondsFromGMT();
    require(offset > leastOffset && offset < mostOffset);
    require(detail->description() && detail->timeZoneAbbreviation());
    // What cannot be placed is GMT. Of a damaged file the C library itself must not be asked.
    if (same(detail->timeZoneName(), "GMT"_zp)) require(offset == 0);
    else {
        require(sameName(detail, zone));
        std::time_t t = moment;
        std::tm fields;
        require(localtime_r(&t, &fields) && fields.tm_gmtoff == offset &&
                (fields.tm_isdst > 0) == (detail->isDaylightSavingTimeZone() != NO));
    }

    // What is written with the offset is read back as the same moment, of the years that a format can say.
    ZPCalendarDate *calendar = date->dateWithCalendarFormat_timeZone("%Y-%m-%d %H:%M:%S %z"_zp, zone);
    require(calendar->timeZoneDetail() == detail);
    constexpr long long firstMoment = -62135596800, endOfMoments = 253402300800;
    if (moment + offset >= firstMoment && moment + offset < endOfMoments && offset % 60 == 0) {
        ZPCalendarDate *again =
            ZPCalendarDate::dateWithString_calendarFormat(calendar->description(), calendar->calendarFormat());
        require(again && again->timeIntervalSinceReferenceDate() == date->timeIntervalSinceReferenceDate());
    }
    // Reckoned from the fields in the zone the moment may be another where the clock was put back, never the fields.
    ZPCalendarDate *reckoned = calendar->dateByAddingYears_months_days_hours_minutes_seconds(0, 0, 0, 0, 0, 0);
    require(reckoned && reckoned->description());
}

void check(const std::uint8_t *data, std::size_t size) {
    static const long long ends[] = {0,
                                     1,
                                     -1,
                                     978307200,
                                     1700000000,
                                     4102444800,
                                     -2208988800,
                                     253402300799,
                                     -62135596800,
                                     0x7FFFFFFF,
                                     -0x80000000LL};
    for (long long moment : ends) checkMoment(moment);
    // Numbers of the input that may be moments of changes, and those beside them.
    for (std::size_t at = size % 8, tried = 0; at + 8 <= size && tried < 40; at += 8) {
        long long moment = 0;
        for (int i = 0; i < 8; ++i)
            moment = static_cast<long long>(static_cast<unsigned long long>(moment) << 8 | data[at + i]);
        if (moment < -(1LL << 50) || moment > 1LL << 50) continue;
        for (int beside = -1; beside <= 1; ++beside) checkMoment(moment + beside);
        ++tried;
    }
    ZPTimeZone *zone = ZPTimeZone::defaultTimeZone();
    ZPTimeZoneDetail *now = zone->timeZoneDetailForDate(ZPDate::date());
    ZPTimeZoneDetail *known = ZPTimeZone::timeZoneWithAbbreviation(now->timeZoneAbbreviation());
    require(known && same(known->timeZoneAbbreviation(), now->timeZoneAbbreviation()));
    ZPTimeZone *named = ZPTimeZone::timeZoneWithName(now->timeZoneName());
    require(!isNamed || (named && sameName(named, now)));
    ZPArray *details = now->timeZoneDetailArray();
    bool listed = details->containsObject(now);
    require(listed);
    for (unsigned i = 0; i < details->count(); ++i)
        require(sameName((ZPTimeZoneDetail *)details->objectAtIndex(i), now));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 1 || size > 1 << 18) return 0;
    bool isRule = data[0] & 1;
    ++data;
    --size;
    MemoryFile file(data, isRule ? 0 : size);
    std::string rule(reinterpret_cast<const char *>(data), size);
    // The variable as the C library wants it; it reads it, and the file, at the first question of the child.
    std::string set = isRule ? rule.substr(0, rule.find('\0')) : ":" + file.path();
    isNamed = set.size() <= longestName;
    runInChild([&] {
        setenv("TZ", set.c_str(), 1);
        unsetenv("TZDIR");
        check(data, size);
    });
    return 0;
}
