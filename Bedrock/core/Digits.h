// SPDX-License-Identifier: MIT
// Digits as numbers and numbers as digits, and the escapes made of them.
#pragma once

#include <cstdint>

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

/// Writes the digits of a number before `end`, none for 0; answers the first.
template <class C> constexpr C *_ZPPutDecimalBefore(C *end, std::uint64_t value) {
    for (; value; value /= 10) *--end = C('0' + value % 10);
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
