// SPDX-License-Identifier: MIT
// The conversions of C, as the C library's formatter writes them in the "C" locale whatever the process's
// locale is.
#include <Bedrock/strings/formats/Formats+Internal.h>

#include <Bedrock/platform/ASCII.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <cwchar>

namespace {

unsigned padding(const ZPFormatDirective &d, unsigned length) {
    return d.width > 0 && unsigned(d.width) > length ? unsigned(d.width) - length : 0;
}

// prefix (sign or base), then `zeros` zeros, then digits, padded to the width.
void number(ZPFormatText &text, const ZPFormatDirective &d, const char *prefix, unsigned zeros, const char *digits,
            unsigned length, bool padZeros) {
    if (d.width <= 0 && zeros == 0 && !*prefix) {
        text.append(digits, length);
        return;
    }
    unsigned head = unsigned(std::strlen(prefix)), pad = padding(d, head + zeros + length);
    if (pad && !d.left && !padZeros) text.fill(' ', pad);
    text.append(prefix, head);
    if (pad && !d.left && padZeros) zeros += pad;
    if (zeros) text.fill('0', zeros);
    text.append(digits, length);
    if (pad && d.left) text.fill(' ', pad);
}

void integer(ZPFormatText &text, const ZPFormatDirective &d, std::uint64_t magnitude, bool negative) {
    char digits[24], *end = digits + sizeof digits, *p;
    bool isSigned = d.conversion == 'd' || d.conversion == 'i';
    switch (d.conversion) {
    case 'o': p = _ZPPutDigitsBefore<8>(end, magnitude, 0); break;
    case 'x': p = _ZPPutDigitsBefore<16>(end, magnitude, 0); break;
    case 'X': p = _ZPPutDigitsBefore<16>(end, magnitude, 0, _ZPCapitalHexDigits); break;
    default: p = _ZPPutDigitsBefore<10>(end, magnitude, 0);
    }
    unsigned length = unsigned(end - p), least = d.precision < 0 ? 1 : unsigned(d.precision),
             zeros = least > length ? least - length : 0;
    const char *prefix = "";
    if (isSigned) prefix = negative ? "-" : d.plus ? "+" : d.blank ? " " : "";
    else if (d.alternate && d.conversion == 'o')
        zeros = std::max(zeros, 1u);  // without a precision, 0 is a zero already
    else if (d.alternate && magnitude && d.conversion != 'u') prefix = d.conversion == 'x' ? "0x" : "0X";
    number(text, d, prefix, zeros, p, length, d.zeros && d.precision < 0);
}

// Fixed decimals of a number with a fraction, as a whole number of units of the last place: the exact product
// mantissa x 10^precision / 2^shift, rounded half to even. Answers the text's end, or null when the product does
// not fit.
char *shortFixed(double value, int precision, char *buffer) {
    static constexpr std::uint64_t powers[] = {1,      10,      100,      1000,      10000,
                                               100000, 1000000, 10000000, 100000000, 1000000000};
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    int exponent = int(bits >> 52 & 0x7FF);
    std::uint64_t mantissa = (bits & ((1ull << 52) - 1)) | (exponent ? 1ull << 52 : 0);
    int shift = 1075 - (exponent ? exponent : 1);
    if (precision >= int(std::size(powers)) || shift < 1 || shift > 120) return nullptr;
    unsigned __int128 product = static_cast<unsigned __int128>(mantissa) * powers[precision], whole = product >> shift;
    if (whole >> 63) return nullptr;
    unsigned __int128 rest = product - (whole << shift), half = static_cast<unsigned __int128>(1) << (shift - 1);
    auto low = static_cast<std::uint64_t>(whole);
    if (rest > half || (rest == half && (low & 1))) ++low;
    char digits[24], *end = digits + sizeof digits, *p = end;
    for (int n = 0; n < precision; ++n, low /= 10) *--p = char('0' + low % 10);
    if (precision) *--p = '.';
    p = _ZPPutDigitsBefore<10>(p, low, 1);
    std::size_t length = std::size_t(end - p);
    std::memcpy(buffer, p, length);
    return buffer + length;
}

// Decimal text of a finite, non-negative number. `buffer` has room for what the precision asks for.
template <class T> char *decimal(const ZPFormatDirective &d, T value, char *buffer, char *limit) {
    int precision = d.precision < 0 ? 6 : d.precision;
    if constexpr (sizeof(T) == sizeof(double))
        if (d.conversion == 'f' && !d.alternate)
            if (char *end = shortFixed(value, precision, buffer)) return end;
    auto write = [&](std::chars_format format, int digits) {
        return std::to_chars(buffer, limit, value, format, digits).ptr;
    };
    char *end;
    char conversion = d.conversion | 0x20;
    if (conversion == 'g' && d.alternate) {
        // As 'g', and trailing zeros stay.
        precision = std::max(precision, 1);
        end = write(std::chars_format::scientific, precision - 1);
        char *e = std::find(buffer, end, 'e');
        int exponent = 0;
        std::from_chars(e + 1 + (e[1] == '+'), end, exponent);
        if (exponent >= -4 && exponent < precision) end = write(std::chars_format::fixed, precision - 1 - exponent);
    } else {
        end = write(conversion == 'e'   ? std::chars_format::scientific
                    : conversion == 'f' ? std::chars_format::fixed
                                        : std::chars_format::general,
                    precision);
    }
    if (d.alternate && std::find(buffer, end, '.') == end) {
        char *e = std::find(buffer, end, 'e');
        std::memmove(e + 1, e, std::size_t(end - e));
        *e = '.';
        ++end;
    }
    if (conversion != d.conversion)
        for (char *p = buffer; p < end; ++p)
            if (*p == 'e') *p = 'E';
    return end;
}

template <class T> void floating(ZPFormatText &text, const ZPFormatDirective &d, T value, unichar separator) {
    const char *prefix = std::signbit(value) ? "-" : d.plus ? "+" : d.blank ? " " : "";
    bool upper = d.conversion < 'a';
    if (!std::isfinite(value)) {
        number(text, d, prefix, 0, std::isnan(value) ? (upper ? "NAN" : "nan") : (upper ? "INF" : "inf"), 3, false);
        return;
    }
    std::size_t room = (sizeof(T) > sizeof(double) ? 5000u : 330u) + std::size_t(d.precision < 0 ? 6 : d.precision);
    ZPStackBuffer<char, 400> buffer(room);
    char *start = buffer.memory, *end = decimal(d, std::fabs(value), start, start + room), *point = end;
    if (separator != '.') point = std::find(start, end, '.');
    unsigned length = unsigned(end - start);
    if (point == end) {
        number(text, d, prefix, 0, start, length, d.zeros);
        return;
    }
    // The separator may be any unit, so the digits on its sides go in apart.
    ZPFormatDirective before = d, after = d;
    unsigned pad = padding(d, unsigned(std::strlen(prefix)) + length);
    before.width = d.left ? 0 : d.width - int(end - point);
    after.width = d.left ? int(end - point - 1 + pad) : 0;
    number(text, before, prefix, 0, start, unsigned(point - start), d.zeros);
    text.append(&separator, 1);
    number(text, after, "", 0, point + 1, unsigned(end - point - 1), false);
}

void characters(ZPFormatText &text, const ZPFormatDirective &d, const char *bytes, unsigned length) {
    unsigned pad = padding(d, length);
    if (pad && !d.left) text.fill(' ', pad);
    text.appendCText(bytes, length);
    if (pad && d.left) text.fill(' ', pad);
}

void wideCharacters(ZPFormatText &text, const ZPFormatDirective &d, const wchar_t *wide, unsigned length) {
    unsigned pad = padding(d, length);
    if (pad && !d.left) text.fill(' ', pad);
    for (unsigned i = 0; i < length; ++i) {
        auto c = static_cast<std::uint32_t>(wide[i]);
        if (c < 0x80) text.append(char(c));
        else if (c < 0x10000 || c > 0x10FFFF) {
            unichar unit = c < 0x10000 ? unichar(c) : unichar(0xFFFD);
            text.append(&unit, 1);
        } else {
            unichar pair[2] = {unichar(0xD7C0 + (c >> 10)), unichar(0xDC00 + (c & 0x3FF))};
            text.append(pair, 2);
        }
    }
    if (pad && d.left) text.fill(' ', pad);
}

}  // namespace

void _ZPFormatValue(ZPFormatText &text, const ZPFormatDirective &d, const ZPFormatValue &value, unichar separator) {
    switch (d.conversion) {
    case 'd':
    case 'i': {
        long long v = value.integer;
        integer(text, d, v < 0 ? 0 - static_cast<std::uint64_t>(v) : static_cast<std::uint64_t>(v), v < 0);
        break;
    }
    case 'o':
    case 'u':
    case 'x':
    case 'X': integer(text, d, static_cast<std::uint64_t>(value.integer), false); break;
    case 'c':
        if (d.size == ZPFormatSize::long_) {
            auto wide = static_cast<wchar_t>(value.integer);
            wideCharacters(text, d, &wide, 1);
        } else {
            char c = static_cast<char>(value.integer);
            characters(text, d, &c, 1);
        }
        break;
    case 's': {
        std::size_t limit = d.precision < 0 ? _ZPLongestString : unsigned(d.precision);
        if (!value.pointer) {
            characters(text, d, "(null)", limit >= 6 ? 6 : 0);
        } else if (d.size == ZPFormatSize::long_) {
            auto *wide = static_cast<const wchar_t *>(value.pointer);
            unsigned n = 0;
            while (n < limit && wide[n]) ++n;
            wideCharacters(text, d, wide, n);
        } else {
            auto *bytes = static_cast<const char *>(value.pointer);
            std::size_t n;
            if (d.precision < 0) n = std::min(std::strlen(bytes), limit);
            else {
                const void *nul = std::memchr(bytes, 0, limit);
                n = nul ? std::size_t(static_cast<const char *>(nul) - bytes) : limit;
            }
            characters(text, d, bytes, unsigned(n));
        }
        break;
    }
    case 'p': {
        if (!value.pointer) {
            characters(text, d, "(nil)", 5);
            break;
        }
        ZPFormatDirective hex = d;
        hex.conversion = 'x';
        hex.alternate = true;
        integer(text, hex, reinterpret_cast<std::uintptr_t>(value.pointer), false);
        break;
    }
    case '%': text.append('%'); break;
    case 'n': break;  // the caller's count is not written: nothing goes through a pointer that a format names
    default:
        if (d.size == ZPFormatSize::longDouble) floating(text, d, value.longNumber, separator);
        else floating(text, d, value.number, separator);
    }
}
