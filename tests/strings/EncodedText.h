// SPDX-License-Identifier: MIT
// Text to bytes and back, as the tests of encodings look at it.
#pragma once

#include "StringForms.h"

#include <iconv.h>

namespace strings {

/// Bytes as units, or u"<fails>".
inline std::u16string decoded(const std::string &bytes, ZPStringEncoding encoding) {
    // The exact size lets a sanitizer see a read past the end.
    std::vector<char> exact(bytes.begin(), bytes.end());
    void *buffer = nullptr;
    unsigned count = 99;
    BOOL isASCII;
    if (!_ZPConvertToASCIIorUnicode(exact.data(), unsigned(exact.size()), encoding, &buffer, &count, &isASCII, nullptr))
        return u"<fails>";
    std::u16string text;
    for (unsigned i = 0; i < count; ++i)
        text += isASCII ? char16_t(static_cast<unsigned char *>(buffer)[i]) : static_cast<unichar *>(buffer)[i];
    if (buffer) ZPZoneFree(nullptr, buffer);
    return text;
}

inline std::string bytesOf(ZPData *data) {
    return data ? std::string(static_cast<const char *>(data->bytes()), data->length()) : "<fails>";
}

/// Units as bytes, or "<fails>", the same from every form.
inline std::string encoded(const std::u16string &text, ZPStringEncoding encoding, BOOL lossy = NO) {
    std::string result;
    bool first = true;
    inEveryForm(text, [&](const Form &, ZPString *s) {
        ZPData *data = s->dataUsingEncoding_allowLossyConversion(encoding, lossy);
        std::string bytes = bytesOf(data);
        EXPECT_TRUE(first || bytes == result);
        result = bytes;
        first = false;
        EXPECT_TRUE(lossy || s->canBeConvertedToEncoding(encoding) == (data ? YES : NO));
    });
    return result;
}

inline bool getBytes(ZPString *s, void *buffer, unsigned most, unsigned *filled, ZPStringEncoding encoding, BOOL lossy,
                     ZPRange range, ZPRange *rest) {
    return s->getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
        buffer, most, filled, encoding, lossy, range, rest);
}

/// The same from one form, for loops over many texts.
inline std::string encodedOnce(const std::u16string &text, ZPStringEncoding encoding) {
    return bytesOf(make(text)->dataUsingEncoding(encoding));
}

/// What the C library's converter makes of bytes, or u"<fails>".
inline std::u16string decodedByLibc(const std::string &bytes, const char *name) {
    iconv_t converter = iconv_open("UTF-16LE", name);
    if (converter == iconv_t(-1)) return u"<no converter>";
    std::u16string text(bytes.size() * 2 + 2, u'\0');
    char *in = const_cast<char *>(bytes.data()), *out = reinterpret_cast<char *>(text.data());
    std::size_t inLeft = bytes.size(), outLeft = text.size() * 2;
    bool done = iconv(converter, &in, &inLeft, &out, &outLeft) != std::size_t(-1);
    iconv_close(converter);
    text.resize(text.size() - outLeft / 2);
    return done ? text : u"<fails>";
}

constexpr ZPStringEncoding everyEncoding[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 21};

}  // namespace strings
