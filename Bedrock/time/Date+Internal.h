// SPDX-License-Identifier: MIT
// The proleptic Gregorian calendar as arithmetic. Day 1 is Monday, January 1 of year 1; 2001-01-01 is day 730486. All
// of it works on 64-bit numbers and is defined for every input.
#pragma once

#include <Bedrock/platform/ZPTypes.h>

#include <algorithm>

inline constexpr long long _ZPReferenceDay = 730486, _ZPSecondsPerDay = 86400;

inline long long _ZPFloorDivide(long long a, long long b) { return a / b - (a % b < 0); }

inline int _ZPFloorModulo(long long a, int b) {
    int rest = int(a % b);
    return rest < 0 ? rest + b : rest;
}

/// Toward zero; what no 64-bit number holds gives the nearest, what is no number the smallest.
inline long long _ZPWholeSeconds(double t) {
    if (t >= 9.2e18) return 0x7FFFFFFFFFFFFFFF;
    return t > -9.2e18 ? static_cast<long long>(t) : -0x7FFFFFFFFFFFFFFF - 1;
}

/// Downward, with the same ends.
inline long long _ZPFloorSeconds(double t) {
    long long whole = _ZPWholeSeconds(t);
    return double(whole) > t && whole > -0x7FFFFFFFFFFFFFFF ? whole - 1 : whole;
}

inline bool _leap_year(long long year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

/// Months count from 1; a month past December is one of the following years.
inline int _last_day_of_gregorian_month(unsigned month, long long year) {
    constexpr unsigned char days[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return days[(month - 1) % 12] + (month == 2 && _leap_year(year));
}

inline long long _absolute_from_year_day(long long year, long long dayOfYear) {
    long long before = year - 1;
    return dayOfYear + 365 * before + _ZPFloorDivide(before, 4) - _ZPFloorDivide(before, 100) +
           _ZPFloorDivide(before, 400);
}

/// The number of a day; day and month may lie outside the year's.
inline long long _absolute_from_gregorian(long long year, unsigned month, long long day) {
    for (; month > 12; month -= 12) ++year;
    constexpr short before[13] = {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
    return _absolute_from_year_day(year, before[month] + day + (month > 2 && _leap_year(year)));
}

struct _ZPGregorian {
    long long year;
    int month, day, dayOfYear;
};

inline _ZPGregorian _gregorian_from_absolute(long long number) {
    // Years that begin with March end with the leap day; 400 of them have always the same days.
    long long n = number + 305, era = _ZPFloorDivide(n, 146097);
    int ofEra = int(n - era * 146097);
    int yearOfEra = (ofEra - ofEra / 1460 + ofEra / 36524 - ofEra / 146096) / 365;
    int fromMarch = ofEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    int m = (5 * fromMarch + 2) / 153;
    _ZPGregorian g;
    g.day = fromMarch - (153 * m + 2) / 5 + 1;
    g.month = m < 10 ? m + 3 : m - 9;
    g.year = era * 400 + yearOfEra + (g.month <= 2);
    g.dayOfYear = fromMarch < 306 ? fromMarch + 60 + _leap_year(g.year) : fromMarch - 305;
    return g;
}
