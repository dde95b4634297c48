// SPDX-License-Identifier: MIT
// The number readers against plain ones: the first byte chooses the reader, the rest is text with digits of other
// scripts mapped in from bytes above 0x7F.
#include <Bedrock/Bedrock.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

using Text = std::u16string;

bool isSpace(char16_t u) { return u == ' ' || u == '\t' || u == '\n'; }
bool isDigit(char16_t u) { return (u >= '0' && u <= '9') || (u >= 0x660 && u <= 0x669); }

std::size_t skip(const Text &text, std::size_t at) {
    while (at < text.size() && isSpace(text[at])) ++at;
    return at;
}

// Digit by digit as it is told: the result stops at the end of its range.
bool integer(const Text &text, long long lowest, long long highest, long long &value, unsigned &end) {
    std::size_t at = skip(text, 0);
    bool negative = false;
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) negative = text[at] == '-', at = skip(text, at + 1);
    if (at >= text.size() || !isDigit(text[at])) return false;
    __int128 sum = 0;
    bool full = false;
    for (; at < text.size() && isDigit(text[at]); ++at) {
        if (full) continue;
        sum = sum * 10 + (text[at] <= '9' ? text[at] - '0' : -1);
        full = sum > (negative ? -(__int128)lowest : (__int128)highest) ||
               -sum > (negative ? -(__int128)lowest : (__int128)highest);
    }
    value = full ? (negative ? lowest : highest) : (long long)(negative ? -sum : sum);
    end = unsigned(at);
    return true;
}

bool hexadecimal(const Text &text, unsigned &value, unsigned &end) {
    auto digit = [&](std::size_t i) {
        static const char digits[] = "0123456789abcdef";
        if (i >= text.size() || text[i] >= 0x80) return -1;
        const char *found = std::strchr(digits, text[i] >= 'A' && text[i] <= 'F' ? text[i] + 0x20 : text[i]);
        return found && *found ? int(found - digits) : -1;
    };
    std::size_t at = skip(text, 0);
    if (digit(at) < 0) return false;
    value = 0;
    if (text[at] == '0') {
        ++at;
        if (at < text.size() && (text[at] == 'x' || text[at] == 'X') && digit(at + 1) >= 0) ++at;
    }
    unsigned long long sum = 0;
    for (; digit(at) >= 0; ++at) sum = sum > 0xFFFFFFFF ? sum : sum * 16 + unsigned(digit(at));
    value = sum > 0xFFFFFFFF ? 0xFFFFFFFF : unsigned(sum);
    end = unsigned(at);
    return true;
}

bool floating(const Text &text, double &value, unsigned &end) {
    std::size_t at = skip(text, 0);
    std::string gathered;
    for (std::size_t i = at; i < text.size() && text[i] < 0x80 && text[i] && std::strchr("+-.0123456789Ee", text[i]);
         ++i)
        gathered += char(text[i]);
    char *stop;
    value = std::strtod(gathered.c_str(), &stop);
    end = unsigned(at + std::size_t(stop - gathered.c_str()));
    return stop != gathered.c_str();
}

void require(bool holds) {
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 1 || size > 1 << 16) return 0;
    ZPAutoreleasePoolScope pool;
    Text text;
    for (std::size_t i = 1; i < size; ++i) text += data[i] < 0x80 ? char16_t(data[i]) : char16_t(0x660 + data[i] % 16);
    ZPString *string = ZPString::stringWithCharacters_length(text.data(), unsigned(text.size()));
    if (data[0] & 8) string = string->mutableCopy()->autorelease();
    ZPScanner *scanner = ZPScanner::scannerWithString(string);
    unsigned end = 0;
    bool expected = false;
    switch (data[0] & 3) {
    case 0: {
        int value = 0;
        long long wanted = 0;
        expected = integer(text, INT_MIN, INT_MAX, wanted, end);
        require((scanner->scanInt(&value) != NO) == expected && value == wanted);
        break;
    }
    case 1: {
        long long value = 0, wanted = 0;
        expected = integer(text, LLONG_MIN, LLONG_MAX, wanted, end);
        require((scanner->scanLongLong(&value) != NO) == expected && value == wanted);
        break;
    }
    case 2: {
        unsigned value = 0, wanted = 0;
        expected = hexadecimal(text, wanted, end);
        require((scanner->scanHexInt(&value) != NO) == expected && value == wanted);
        break;
    }
    default: {
        double value = 0, wanted = 0;
        expected = floating(text, wanted, end);
        require((scanner->scanDouble(&value) != NO) == expected);
        require(!expected || std::memcmp(&value, &wanted, sizeof value) == 0);
    }
    }
    require(scanner->scanLocation() == (expected ? end : 0));
    // Nothing is lost between the pieces that scanning by sets gives.
    unsigned before = scanner->scanLocation();
    ZPCharacterSet *digits = ZPCharacterSet::decimalDigitCharacterSet();
    scanner->setCharactersToBeSkipped(nullptr);
    while (!scanner->isAtEnd()) {
        ZPString *piece = nullptr;
        require(scanner->scanUpToCharactersFromSet_intoString(digits, &piece) ||
                scanner->scanCharactersFromSet_intoString(digits, &piece));
        require(piece->length() == scanner->scanLocation() - before &&
                piece->isEqual(string->substringWithRange({before, piece->length()})));
        before = scanner->scanLocation();
    }
    require(before == text.size());
    return 0;
}
