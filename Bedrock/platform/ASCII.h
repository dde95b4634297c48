// SPDX-License-Identifier: MIT
// Letters and digits of ASCII, digits as numbers and numbers as digits, and the escapes made of them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

// ---- letters ----

constexpr bool _ZPIsSmallLetter(unsigned c) { return c >= 'a' && c <= 'z'; }
constexpr bool _ZPIsCapitalLetter(unsigned c) { return c >= 'A' && c <= 'Z'; }
constexpr bool _ZPIsLetter(unsigned c) { return _ZPIsSmallLetter(c | 0x20); }
/// A letter as a small one, and as a capital one; any other character as it is.
template <class C> constexpr C _ZPInSmallLetters(C c) { return _ZPIsCapitalLetter(unsigned(c)) ? C(c | 0x20) : c; }
template <class C> constexpr C _ZPInCapitalLetters(C c) { return _ZPIsSmallLetter(unsigned(c)) ? C(c & ~0x20) : c; }

// ---- digits ----

/// Hexadecimal digits by value, in small and in capital letters.
inline constexpr char _ZPHexDigits[] = "0123456789abcdef", _ZPCapitalHexDigits[] = "0123456789ABCDEF";

constexpr bool _ZPIsDigit(unsigned c) { return c >= '0' && c <= '9'; }
constexpr bool _ZPIsOctalDigit(unsigned c) { return c >= '0' && c <= '7'; }
/// The value of a hexadecimal digit, small or capital; -1 for another character.
constexpr int _ZPHexValue(unsigned c) {
    if (_ZPIsDigit(c)) return int(c - '0');
    c |= 0x20;
    return c >= 'a' && c <= 'f' ? int(c - 'a' + 10) : -1;
}

/// Moves `at` behind the decimal digits that stand there, `most` at most and none from `end` on, and answers whether
/// there was one; the value, which is then set, is what N makes of them.
template <class Units, class N>
constexpr bool _ZPReadDigits(Units &&units, unsigned &at, unsigned end, unsigned most, N &value) {
    unsigned from = at;
    N sum = 0;
    for (; at < end && at - from < most && _ZPIsDigit(units[at]); ++at) sum = sum * 10 + N(units[at] - '0');
    if (at == from) return false;
    value = sum;
    return true;
}
/// The same for however many digits; a value above `limit`, of which N holds ten times as much and 9, is the limit.
template <class Units, class N>
constexpr bool _ZPReadNumber(Units &&units, unsigned &at, unsigned end, std::type_identity_t<N> limit, N &value) {
    unsigned from = at;
    N sum = 0;
    for (; at < end && _ZPIsDigit(units[at]); ++at) sum = std::min(sum * 10 + N(units[at] - '0'), limit);
    if (at == from) return false;
    value = sum;
    return true;
}

/// Writes the digits of a number before `end`, `least` of them at least; answers the first.
template <unsigned base, class C>
constexpr C *_ZPPutDigitsBefore(C *end, std::uint64_t value, unsigned least, const char *digits = _ZPHexDigits) {
    for (C *limit = end - least; value || end > limit; value /= base)
        *--end = base > 10 ? C(digits[value % base]) : C('0' + value % base);
    return end;
}
/// Writes the last `count` digits of base 2^bits; answers the end.
template <unsigned bits, class C>
constexpr C *_ZPPutDigits(C *at, unsigned value, unsigned count, const char *digits = _ZPHexDigits) {
    while (count-- > 0) *at++ = static_cast<C>(digits[value >> bits * count & ((1u << bits) - 1)]);
    return at;
}
/// The two digits of a byte.
template <class C> constexpr C *_ZPPutHexByte(C *at, unsigned char byte) {
    at[0] = static_cast<C>(_ZPHexDigits[byte >> 4]);
    at[1] = static_cast<C>(_ZPHexDigits[byte & 15]);
    return at + 2;
}

// ---- escapes ----

/// A backslash and three octal digits; answers the end.
constexpr char *_ZPPutByteEscape(char *at, unsigned char byte) {
    *at++ = '\\';
    return _ZPPutDigits<3>(at, byte, 3);
}
/// A backslash, U and four hexadecimal digits; answers the end.
constexpr char *_ZPPutUnitEscape(char *at, unsigned unit, const char *digits = _ZPHexDigits) {
    *at++ = '\\';
    *at++ = 'U';
    return _ZPPutDigits<4>(at, unit, 4, digits);
}
/// The control character that a letter stands for after a backslash; 0 for another character.
constexpr unsigned _ZPControlOfEscape(unsigned letter) {
    switch (letter) {
    case 'a': return '\a';
    case 'b': return '\b';
    case 'f': return '\f';
    case 'n': return '\n';
    case 'r': return '\r';
    case 't': return '\t';
    case 'v': return '\v';
    default: return 0;
    }
}
