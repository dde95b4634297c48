// SPDX-License-Identifier: MIT
// when: dates by the calendar.
#include <Bedrock/Bedrock.h>
#include "output.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr int failureStatus = 1, usageStatus = 2;

const char usage[] =
    "usage: when [OPTION...] COMMAND\n"
    "       when show [DATE]             write a date; now unless one is given\n"
    "       when add DATE COUNT UNIT...  write the date that comes COUNT UNITs later (earlier: -COUNT)\n"
    "       when between DATE DATE       write what must be added to the first to come to the second\n"
    "\n"
    "       --format FORMAT              how dates are written, instead of \"%Y-%m-%d %H:%M:%S %z\"\n"
    "       --input FORMAT               how DATEs are written\n"
    "       --zone ZONE                  the time zone, instead of the host's: +0130, GMT or another abbreviation\n"
    "\n"
    "DATE is now, @SECONDS since 1970, or a date as --input says; without --input one of\n"
    "\"2001-01-01 10:00:00 +0100\", \"2001-01-01 10:00:00\", \"2001-01-01 10:00\", \"2001-01-01\". UNIT is years,\n"
    "months, weeks, days, hours, minutes or seconds. Formats are those of strftime, with %F for milliseconds.\n"
    "The exit status is 0, 1 when something is no date or zone, or 2 for a wrong call.\n";

ZPString *format, *inputFormat;

[[noreturn]] void fail(const std::string &what) {
    std::fprintf(stderr, "when: %s\n", what.c_str());
    std::exit(failureStatus);
}
[[noreturn]] void wrongCall() {
    std::fputs(usage, stderr);
    std::exit(usageStatus);
}

/// +0130, -05:00, Z, an abbreviation or a name.
ZPTimeZone *zoneNamed(const char *text) {
    if (*text == '+' || *text == '-') {
        std::string digits;
        for (const char *c = text + 1; *c; ++c)
            if (*c != ':') digits += *c;
        bool isNumber =
            !digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos && digits.size() <= 4;
        if (!isNumber) fail(std::string(text) + ": no time zone");
        int value = std::atoi(digits.c_str());
        int seconds = digits.size() <= 2 ? value * 3600 : value / 100 * 3600 + value % 100 * 60;
        return ZPTimeZone::timeZoneForSecondsFromGMT(*text == '-' ? -seconds : seconds);
    }
    ZPTimeZone *zone = ZPTimeZone::timeZoneForKey(std::strcmp(text, "Z") == 0 ? "GMT"_zp : ZPMakeString(text));
    if (!zone) fail(std::string(text) + ": no time zone that is known");
    return zone;
}

ZPCalendarDate *inDefaultZone(ZPDate *date) { return date->dateWithCalendarFormat_timeZone(format, nullptr); }

ZPCalendarDate *dateNamed(const char *text) {
    if (std::strcmp(text, "now") == 0) return inDefaultZone(ZPDate::date());
    if (*text == '@') {
        char *end;
        double seconds = std::strtod(text + 1, &end);
        if (end == text + 1 || *end) fail(std::string(text) + ": no number of seconds");
        return inDefaultZone(ZPDate::dateWithTimeIntervalSince1970(seconds));
    }
    ZPString *given = ZPMakeString(text);
    ZPString *const formats[] = {"%Y-%m-%d %H:%M:%S %z"_zp, "%Y-%m-%d %H:%M:%S"_zp, "%Y-%m-%d %H:%M"_zp, "%Y-%m-%d"_zp};
    if (inputFormat) {
        if (ZPCalendarDate *date = ZPCalendarDate::dateWithString_calendarFormat(given, inputFormat))
            return inDefaultZone(date);
    } else {
        for (ZPString *f : formats)
            if (ZPCalendarDate *date = ZPCalendarDate::dateWithString_calendarFormat(given, f))
                return inDefaultZone(date);
    }
    fail(std::string(text) + ": no date in the form expected");
}

void show(ZPDate *date) { std::printf("%s\n", ZPStdString(date->description()).c_str()); }

int countNamed(const char *text) {
    char *end;
    errno = 0;
    long count = std::strtol(text, &end, 10);
    if (end == text || *end || errno || count < INT_MIN || count > INT_MAX) fail(std::string(text) + ": no count");
    return int(count);
}

ZPCalendarDate *adding(ZPCalendarDate *date, int count, std::string_view unit) {
    if (!unit.empty() && unit.back() == 's') unit.remove_suffix(1);
    auto add = [&](int y, int mo, int d, int h, int mi, int s) {
        return date->dateByAddingYears_months_days_hours_minutes_seconds(y, mo, d, h, mi, s);
    };
    if (unit == "year") return add(count, 0, 0, 0, 0, 0);
    if (unit == "month") return add(0, count, 0, 0, 0, 0);
    if (unit == "week")
        return count > INT_MAX / 7 || count < INT_MIN / 7 ? (fail("too many weeks"), date)
                                                          : add(0, 0, count * 7, 0, 0, 0);
    if (unit == "day") return add(0, 0, count, 0, 0, 0);
    if (unit == "hour") return add(0, 0, 0, count, 0, 0);
    if (unit == "minute") return add(0, 0, 0, 0, count, 0);
    if (unit == "second") return add(0, 0, 0, 0, 0, count);
    fail(std::string(unit) + ": no unit");
}

void between(ZPCalendarDate *from, ZPCalendarDate *to) {
    int counts[6];
    to->years_months_days_hours_minutes_seconds_sinceDate(&counts[0], &counts[1], &counts[2], &counts[3], &counts[4],
                                                          &counts[5], from);
    const char *names[6] = {"year", "month", "day", "hour", "minute", "second"};
    std::string text;
    for (int i = 0; i < 6; ++i)
        if (counts[i])
            text += (text.empty() ? "" : " ") + std::to_string(counts[i]) + " " + names[i] +
                    (counts[i] == 1 || counts[i] == -1 ? "" : "s");
    std::printf("%s\n", text.empty() ? "0 seconds" : text.c_str());
}

}  // namespace

int main(int count, char **arguments) {
    ZPAutoreleasePoolScope pool;
    int at = 1;
    for (; at < count && std::strncmp(arguments[at], "--", 2) == 0; at += 2) {
        std::string_view option = arguments[at];
        if (option == "--help") {
            std::fputs(usage, stdout);
            return finishOutput("when", 0);
        }
        if (at + 1 >= count) wrongCall();
        const char *value = arguments[at + 1];
        if (option == "--format") format = ZPMakeString(value);
        else if (option == "--input") inputFormat = ZPMakeString(value);
        else if (option == "--zone") ZPTimeZone::setDefaultTimeZone(zoneNamed(value));
        else wrongCall();
    }
    char **rest = arguments + at;
    int given = count - at;
    std::string_view command = given ? rest[0] : "";
    if (command == "show" && given <= 2) {
        show(dateNamed(given == 2 ? rest[1] : "now"));
    } else if (command == "add" && given >= 4 && given % 2 == 0) {
        ZPCalendarDate *date = dateNamed(rest[1]);
        for (int i = 2; i < given; i += 2) date = adding(date, countNamed(rest[i]), rest[i + 1]);
        show(date);
    } else if (command == "between" && given == 3) {
        between(dateNamed(rest[1]), dateNamed(rest[2]));
    } else {
        wrongCall();
    }
    return finishOutput("when", 0);
}
