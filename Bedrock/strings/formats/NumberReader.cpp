// SPDX-License-Identifier: MIT
// Text to integers and floating numbers, for strings, scanners and dates.
#include <Bedrock/strings/ZPNumberReader.h>

#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/strings/characters/Characters.h>
#include <Bedrock/strings/cluster/Cluster.h>

#include <charconv>
#include <limits>
#include <string>

namespace {

template <class Units> unsigned skipMembers(Units &units, unsigned at, unsigned length, const ZPMembership &isSkipped) {
    if (!isSkipped.set) return at;
    while (at < length && units[at] != 0xFFFF && isSkipped(units[at])) ++at;
    return at;
}

template <class T, class Wide> BOOL scanInteger(ZPString *string, ZPCharacterSet *skip, T *result, unsigned *location) {
    return _ZPWithUnitsAndSet(string, skip, [&](auto &&units, unsigned length, const ZPMembership &isSkipped) -> BOOL {
        unsigned at = skipMembers(units, *location, length, isSkipped);
        bool negative = false;
        if (at < length && (units[at] == '-' || units[at] == '+')) {
            negative = units[at] == '-';
            at = skipMembers(units, at + 1, length, isSkipped);
        }
        auto isDigit = [](unichar u) { return u < 0x80 ? _ZPIsDigit(u) : _ZPIsInStandardSet(_ZPDecimalDigitSet, u); };
        if (at >= length || !isDigit(units[at])) return NO;
        const Wide limit = Wide(std::numeric_limits<T>::max()) + negative;
        Wide value = 0;
        bool saturated = false;
        for (; at < length && isDigit(units[at]); ++at) {
            if (saturated) continue;
            unichar u = units[at];
            value = value * 10 + (u < 0x80 ? int(u - '0') : -1);
            saturated = value > limit || value < -limit;
        }
        if (saturated) value = negative ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
        else if (negative) value = -value;
        if (result) *result = T(value);
        *location = at;
        return YES;
    });
}

// Whether a decimal text too large or too small for a double is too large.
bool isHuge(const char *text, const char *end) {
    long long exponent = 0;
    bool point = false, significant = false;
    for (; text < end && *text != 'e' && *text != 'E'; ++text) {
        if (*text == '.') point = true;
        else if (_ZPIsDigit(static_cast<unsigned char>(*text))) {
            significant = significant || *text != '0';
            if (significant && !point) ++exponent;
            if (!significant && point) --exponent;
        }
    }
    if (text < end) {
        bool down = *++text == '-';
        if (*text == '-' || *text == '+') ++text;
        long long e = 0;
        unsigned at = 0;
        _ZPReadNumber(text, at, unsigned(end - text), 1'000'000'000'000, e);
        exponent += down ? -e : e;
    }
    return exponent > 0;
}

// The number that a text of digits, signs, points and E begins with; answers the bytes read, 0 for none.
unsigned readDouble(const char *text, unsigned length, double *result) {
    const char *end = text + length, *start = text;
    bool negative = start < end && *start == '-';
    if (start < end && (*start == '-' || *start == '+')) ++start;
    if (start == end || *start == '-' || *start == '+') return 0;
    double value = 0;
    auto [stop, error] = std::from_chars(start, end, value);
    if (error == std::errc::invalid_argument) return 0;
    if (error == std::errc::result_out_of_range)
        value = isHuge(start, stop) ? std::numeric_limits<double>::infinity() : 0.0;
    if (result) *result = negative ? -value : value;
    return unsigned(stop - text);
}

struct NumberMethods : ZPString {
    int intValue() {
        unsigned at = 0;
        int value = 0;
        _ZPScanIntFromString(this, ZPCharacterSet::whitespaceCharacterSet(), &value, &at);
        return value;
    }
    double doubleValue() {
        unsigned at = 0;
        double value = 0;
        _ZPScanDoubleFromString(this, ZPCharacterSet::whitespaceCharacterSet(), &value, &at, nullptr);
        return value;
    }
    float floatValue() { return float(doubleValue()); }
};

}  // namespace

unichar _ZPDecimalSeparator(id locale) {
    id value = locale.unchecked<ZPDictionary>()->objectForKey("ZPDecimalSeparator"_zp);
    if (!value || !value->isKindOfClass(ZPString::class_())) return '.';
    ZPString *separator = value;
    return separator->length() ? separator->characterAtIndex(0) : u'.';
}

ZP_CATEGORY(ZPString, NumberMethods, intValue, floatValue, doubleValue);

BOOL _ZPScanIntFromString(ZPString *string, ZPCharacterSet *skip, int *result, unsigned *location) {
    return scanInteger<int, long long>(string, skip, result, location);
}

BOOL _ZPScanLongLongFromString(ZPString *string, ZPCharacterSet *skip, long long *result, unsigned *location) {
    return scanInteger<long long, __int128>(string, skip, result, location);
}

BOOL _ZPScanDoubleFromString(ZPString *string, ZPCharacterSet *skip, double *result, unsigned *location,
                             ZPDictionary *locale) {
    unichar separator = _ZPDecimalSeparator(locale);
    return _ZPWithUnitsAndSet(string, skip, [&](auto &&units, unsigned length, const ZPMembership &isSkipped) -> BOOL {
        unsigned start = skipMembers(units, *location, length, isSkipped);
        // White space that is not skipped begins no number, not even where it is the separator.
        if (start < length && (units[start] == ' ' || (units[start] >= 0x09 && units[start] <= 0x0D))) return NO;
        constexpr unsigned most = 64;
        char local[most];
        unsigned gathered = 0;
        std::string longer;
        char last = 0;
        bool point = false, exponent = false;
        // Only what can belong to the number: the rest of a long run must not be read once a number.
        for (unsigned at = start; at < length; ++at) {
            unichar u = units[at];
            char c;
            if (_ZPIsDigit(u)) c = char(u);
            else if (u == '+' || u == '-') {
                if (gathered && last != 'e' && last != 'E') break;
                c = char(u);
            } else if (u == 'e' || u == 'E') {
                if (exponent) break;
                exponent = true;
                c = char(u);
            } else if (u == separator) {
                if (point || exponent) break;
                point = true;
                c = '.';
            } else break;
            last = c;
            if (gathered < most) local[gathered++] = c;
            else {
                if (longer.empty()) longer.assign(local, most);
                longer += c;
            }
        }
        unsigned read = longer.empty() ? readDouble(local, gathered, result)
                                       : readDouble(longer.data(), unsigned(longer.size()), result);
        if (read == 0) return NO;
        *location = start + read;
        return YES;
    });
}
