// SPDX-License-Identifier: MIT
// Dates in New York: to text, from text, to fields; and now. Moments from 1970 to 2030.
#include "common.h"

#include <Bedrock/Bedrock.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <ctime>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int N = 1000;
const int zoneIsSet = setenv("TZ", "America/New_York", 1);

const std::vector<std::time_t> &moments() {
    static const auto v = [] {
        std::mt19937 random(42);
        std::vector<std::time_t> all;
        for (int i = 0; i < N; ++i) all.push_back(random() % 1893456000);
        return all;
    }();
    return v;
}
const std::vector<std::string> &texts() {
    static const auto v = [] {
        std::vector<std::string> all;
        for (std::time_t t : moments()) {
            std::tm f;
            localtime_r(&t, &f);
            char text[64];
            all.emplace_back(text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &f));
        }
        return all;
    }();
    return v;
}
template <class F> void eachPooled(State &s, F f) {
    each(s, N, [&](int i) {
        ZPAutoreleasePoolScope pool;  // what each makes goes at once, as it does with the peers
        f(i);
    });
}

ZPCalendarDate *dateAt(std::time_t t) {
    return (ZPCalendarDate *)ZPCalendarDate::alloc()
        ->initWithTimeIntervalSinceReferenceDate(double(t) - 978307200)
        ->autorelease()
        .pointer();
}

void toText(State &s) {
    ZPAutoreleasePoolScope pool;
    for (int i = 0; i < N; ++i)
        REQUIRE(texts()[i] == dateAt(moments()[i])->descriptionWithCalendarFormat("%Y-%m-%d %H:%M:%S"_zp)->cString());
    eachPooled(s, [](int i) {
        ZPString *text = dateAt(moments()[i])->descriptionWithCalendarFormat("%Y-%m-%d %H:%M:%S"_zp);
        DoNotOptimize(text);
    });
}
void toTextC(State &s) {
    each(s, N, [](int i) {
        std::tm f;
        localtime_r(&moments()[i], &f);
        char text[64];
        std::string x(text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &f));
        DoNotOptimize(x);
    });
}
void fromText(State &s) {
    ZPAutoreleasePoolScope pool;
    std::vector<ZPString *> strings;
    for (auto &t : texts()) strings.push_back(ZPString::stringWithCString(t.c_str()));
    int repeated = 0;  // the hour that the clocks show twice may be read either way
    for (int i = 0; i < N; ++i)
        repeated += ZPCalendarDate::dateWithString_calendarFormat(strings[i], "%Y-%m-%d %H:%M:%S"_zp)
                        ->timeIntervalSince1970() != double(moments()[i]);
    REQUIRE(repeated <= 2);
    eachPooled(s, [&](int i) {
        ZPCalendarDate *date = ZPCalendarDate::dateWithString_calendarFormat(strings[i], "%Y-%m-%d %H:%M:%S"_zp);
        DoNotOptimize(date);
    });
}
void fromTextC(State &s) {
    int repeated = 0;
    for (int i = 0; i < N; ++i) {
        std::tm f{};
        REQUIRE(strptime(texts()[i].c_str(), "%Y-%m-%d %H:%M:%S", &f));
        f.tm_isdst = -1;
        repeated += mktime(&f) != moments()[i];
    }
    REQUIRE(repeated <= 2);
    each(s, N, [](int i) {
        std::tm f{};
        REQUIRE(strptime(texts()[i].c_str(), "%Y-%m-%d %H:%M:%S", &f));
        f.tm_isdst = -1;
        DoNotOptimize(mktime(&f));
    });
}
template <class F> void fields(State &s, F dateFor) {
    {
        ZPAutoreleasePoolScope pool;
        for (int i = 0; i < N; ++i) {
            ZPCalendarDate *d = dateFor(i);
            std::tm f;
            localtime_r(&moments()[i], &f);
            REQUIRE(d->yearOfCommonEra() == f.tm_year + 1900 && d->monthOfYear() == f.tm_mon + 1 &&
                    d->dayOfMonth() == f.tm_mday);
            REQUIRE(d->hourOfDay() == f.tm_hour && d->minuteOfHour() == f.tm_min && d->secondOfMinute() == f.tm_sec);
        }
    }
    eachPooled(s, [&](int i) {
        ZPCalendarDate *date = dateFor(i);
        int sum = date->yearOfCommonEra() + date->monthOfYear() + date->dayOfMonth() + date->hourOfDay() +
                  date->minuteOfHour() + date->secondOfMinute();
        DoNotOptimize(sum);
    });
}
void toFields(State &s) {
    fields(s, [](int i) { return dateAt(moments()[i]); });
}
void fieldsOfDate(State &s) {
    ZPAutoreleasePoolScope pool;
    std::vector<ZPCalendarDate *> dates;
    for (auto t : moments()) dates.push_back(dateAt(t));
    fields(s, [&](int i) { return dates[i]; });
}
void toFieldsC(State &s) {
    each(s, N, [](int i) {
        std::tm f;
        localtime_r(&moments()[i], &f);
        DoNotOptimize(f);
    });
}
void now(State &s) {
    REQUIRE(std::abs(_ZPCurrentTime() + 978307200 - double(std::time(nullptr))) < 2);
    for (auto _ : s) DoNotOptimize(_ZPCurrentTime());
}
void nowDate(State &s) {
    ZPDate *one = ZPDate::new_();
    REQUIRE(std::abs(one->timeIntervalSince1970() - double(std::time(nullptr))) < 2);
    one->release();
    for (auto _ : s) {
        ZPDate *date = ZPDate::new_();
        DoNotOptimize(date);
        date->release();
    }
}
void nowChrono(State &s) {
    for (auto _ : s) DoNotOptimize(std::chrono::system_clock::now());
}

}  // namespace

BENCHMARK(toText)->Name("moment to text: bedrock");
BENCHMARK(toTextC)->Name("moment to text: C library");
BENCHMARK(fromText)->Name("text to moment: bedrock");
BENCHMARK(fromTextC)->Name("text to moment: C library");
BENCHMARK(toFields)->Name("moment to fields: bedrock");
BENCHMARK(fieldsOfDate)->Name("date to fields: bedrock");
BENCHMARK(toFieldsC)->Name("moment to fields: C library");
BENCHMARK(now)->Name("now: bedrock, number");
BENCHMARK(nowDate)->Name("now: bedrock, object");
BENCHMARK(nowChrono)->Name("now: system_clock");

BENCHMARK_MAIN();
