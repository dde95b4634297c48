// SPDX-License-Identifier: MIT
// What stands behind a backslash in quotes: read by the tokenizer and by the direct reader of property lists.
#pragma once

#include <Bedrock/platform/ASCII.h>
#include <Bedrock/strings/ZPStringEncoding.h>

/// Turns `c`, the character behind the backslash, into what it stands for, reading on for the digits of a number;
/// false, and it stays, for a character that stands for itself. The text is read by `peek()`, which answers 0 at its
/// end, and `read()`.
template <class Text> bool _ZPReadEscape(Text &text, unsigned &c) {
    if (c == 'U') {
        c = 0;
        for (int i = 0, digit; i < 4 && (digit = _ZPHexValue(text.peek())) >= 0; ++i, text.read())
            c = c << 4 | unsigned(digit);
    } else if (unsigned control = _ZPControlOfEscape(c)) {
        c = control;
    } else if (_ZPIsOctalDigit(c)) {
        c -= '0';
        for (int i = 0; i < 2 && _ZPIsOctalDigit(text.peek()); ++i) c = c << 3 | (text.read() - '0');
        c = ZPKESTRELToPrecompUnicode(static_cast<unsigned char>(c));
    } else return false;
    return true;
}
