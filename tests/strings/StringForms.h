// SPDX-License-Identifier: MIT
// Every form in which a text can be stored, made from the same units, and what the tests of strings share.
#pragma once

#include <support/Objects.h>

namespace strings {

using Pool = ZPAutoreleasePoolScope;

inline std::u16string textOf(ZPString *s) {
    std::u16string text(s->length(), u'\0');
    s->getCharacters_range(text.data(), {0, s->length()});
    return text;
}

inline ZPString *make(const std::u16string &text) {
    return ZPString::stringWithCharacters_length(text.data(), unsigned(text.size()));
}

using List = std::vector<std::u16string>;
inline List listOf(ZPArray *array) {
    List list;
    for (unsigned i = 0; i < array->count(); ++i) list.push_back(textOf(array->objectAtIndex(i)));
    return list;
}

/// A client's string that supplies the primitives alone.
struct ClientString : ZPString {
    ZP_CLASS(ClientString)
    std::u16string _text;
    unsigned length() { return unsigned(_text.size()); }
    unichar characterAtIndex(unsigned index) { return _text.at(index); }
};

/// Answers an autoreleased string of some form with the text, or null when the form cannot hold it.
struct Form {
    const char *name;
    ZPString *(*make)(const std::u16string &text);
    bool bytes;
};

const std::vector<Form> &forms();

/// Whether the storage encoding of 8-bit forms surely holds the text.
inline bool fitsBytes(const std::u16string &text) {
    for (char16_t u : text)
        if (u >= 0x100 || (u >= 0x80 && u < 0xA0)) return false;
    return true;
}

/// Calls `f(form, string)` for every form that can hold the text.
template <class F> void inEveryForm(const std::u16string &text, F f) {
    for (const Form &form : forms()) {
        if (form.bytes && !fitsBytes(text)) continue;
        SCOPED_TRACE(form.name);
        Pool pool;
        f(form, form.make(text));
    }
}

inline std::u16string randomText(std::mt19937 &random, unsigned most, const std::u16string &alphabet) {
    std::u16string text(random() % (most + 1), u'\0');
    for (char16_t &u : text) u = alphabet[random() % alphabet.size()];
    return text;
}

}  // namespace strings
