// SPDX-License-Identifier: MIT
// String literals: `"text"_zp` is a static string object, ready before any code runs. The text is
// UTF-8. ASCII text is kept in the 8-bit storage encoding, any other text in 16-bit units: what bytes from
// 0x80 on mean as a C string is only known at run time.
#pragma once

#include <Bedrock/platform/ZPMessage.h>

ZP_FORWARD(ZPString);

/// The layout of a literal string object in 8-bit storage.
struct objc_literal8 {
    Class isa;  ///< ZPConstantString
    const char *bytes;  ///< ASCII
    unsigned numBytes;  ///< how many there are
};

/// The layout of a literal string object in 16-bit storage.
struct objc_literal16 {
    Class isa;  ///< _ZPConstantUnicodeString
    const unichar *characters;  ///< UTF-16
    unsigned numCharacters;  ///< how many units there are
};

/// @cond machinery
// The class records of ZPConstantString and _ZPConstantUnicodeString, named without their fronts.
ZP_EXPORT extern objc_classPair ZPConstantStringRecord __asm__(
    "_ZN16ZPConstantString37classRecord_that_ZP_IMPLEMENT_definesE");
ZP_EXPORT extern objc_classPair ZPConstantUnicodeStringRecord __asm__(
    "_ZN24_ZPConstantUnicodeString37classRecord_that_ZP_IMPLEMENT_definesE");
/// @endcond

/// The empty string: the one object that every empty literal and every operation with an empty result gives.
extern "C" ZP_EXPORT objc_literal8 ZPEmptyStringLiteral;

/// @cond machinery
template <unsigned N> struct objc_literalUnits {
    unichar of[N] = {};
    unsigned count = 0;
    bool isASCII = true;

    consteval objc_literalUnits(const char (&s)[N]) {
        for (unsigned i = 0; i + 1 < N;) {
            unsigned b = static_cast<unsigned char>(s[i]);
            unsigned more = b < 0x80 ? 0 : b < 0xE0 ? 1 : b < 0xF0 ? 2 : 3;
            unsigned c = more == 0 ? b : more == 1 ? b & 0x1F : more == 2 ? b & 0x0F : b & 0x07;
            if ((b >= 0x80 && b < 0xC2) || b > 0xF4 || i + more + 1 >= N) throw "the literal is not well-formed UTF-8";
            for (unsigned k = 1; k <= more; ++k) {
                unsigned t = static_cast<unsigned char>(s[i + k]);
                if ((t & 0xC0) != 0x80) throw "the literal is not well-formed UTF-8";
                c = c << 6 | (t & 0x3F);
            }
            i += more + 1;
            if (c >= 0x80) isASCII = false;
            if (c >= 0x10000) {
                of[count++] = unichar(0xD7C0 + (c >> 10));
                of[count++] = unichar(0xDC00 + (c & 0x3FF));
            } else of[count++] = unichar(c);
        }
    }
};

template <objc_text Text> struct objc_literal {
    static inline constinit objc_literal8 object = {&ZPConstantStringRecord.cls, Text.text, sizeof Text.text - 1};
};
template <objc_text Text>
    requires(!objc_literalUnits(Text.text).isASCII)
struct objc_literal<Text> {
    static constexpr objc_literalUnits units{Text.text};
    static inline constinit objc_literal16 object = {&ZPConstantUnicodeStringRecord.cls, units.of, units.count};
};
/// @endcond

/// `"text"_zp`: a literal string object, equal texts of one program the same one. Lives as long as the process and
/// ignores counting. Text that is not well-formed UTF-8 is a compile error.
template <objc_text Text> ZP_INLINE ZPString *operator""_zp() {
    if constexpr (sizeof Text.text == 1) return reinterpret_cast<ZPString *>(&ZPEmptyStringLiteral);
    else return reinterpret_cast<ZPString *>(&objc_literal<Text>::object);
}

/// Defines a constant that holds a literal, not an empty one, and is ready before any code runs:
/// `ZP_STRING_CONSTANT(KeyOfName, "name");` for a header's `extern ZPString *const KeyOfName;`.
#define ZP_STRING_CONSTANT(Name, Text) ZPString *const Name = reinterpret_cast<ZPString *>(&objc_literal<Text>::object)
