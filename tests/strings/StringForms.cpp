// SPDX-License-Identifier: MIT
#include "StringForms.h"

namespace strings {

ZP_IMPLEMENT(ClientString, length, characterAtIndex);

namespace {

std::string bytesOf(const std::u16string &text) { return {text.begin(), text.end()}; }

ZPString *make8(const char *cls, const std::u16string &text) {
    std::string bytes = bytesOf(text);
    ZPString *s = objc_msgSend<id>(objc_getClass(cls), "alloc"_sel);
    return s->initWithCString_length(bytes.data(), unsigned(bytes.size()))->autorelease();
}

ZPString *inlineCString(const std::u16string &text) {
    std::string bytes = bytesOf(text);
    return _ZPNewInlineCString(bytes.data(), unsigned(bytes.size()), nullptr)->autorelease();
}
ZPString *cString(const std::u16string &text) { return make8("ZPCString", text); }
ZPString *simpleCString(const std::u16string &text) { return make8("ZPSimpleCString", text); }

// A part of a longer string: long enough to borrow, with other text on both sides.
template <class Maker> ZPString *partOf(const std::u16string &text, Maker maker) {
    std::u16string parent = u"before " + text + u" and enough text behind it to stay a part";
    return maker(parent)->substringWithRange({7, unsigned(text.size())});
}
ZPString *cSubstring(const std::u16string &text) { return partOf(text, inlineCString); }

template <class Literal, class Unit> ZPString *literal(Class cls, const std::basic_string<Unit> &text) {
    struct Holder {
        std::basic_string<Unit> text;
        Literal literal;
    };
    static std::vector<std::unique_ptr<Holder>> holders;
    auto &h = *holders.emplace_back(new Holder{text, {}});
    h.literal = {cls, h.text.data(), unsigned(h.text.size())};
    return reinterpret_cast<ZPString *>(&h.literal);
}
ZPString *constantString(const std::u16string &text) {
    return literal<objc_literal8>(objc_getClass("ZPConstantString"), bytesOf(text));
}
ZPString *constantUnicodeString(const std::u16string &text) {
    return literal<objc_literal16>(objc_getClass("_ZPConstantUnicodeString"), text);
}

ZPString *unicodeSubstring(const std::u16string &text) { return partOf(text, make); }

ZPString *client(const std::u16string &text) {
    ClientString *s = ClientString::alloc();
    s->_text = text;
    return s->autorelease();
}

// A mutable string with its gap in the middle.
ZPString *withGap(const std::u16string &text, ZPString *(*piece)(const std::u16string &)) {
    std::size_t half = text.size() / 2;
    ZPMutableString *s = ZPMutableString::stringWithCapacity(0);
    s->appendString(piece(text.substr(0, half)));
    s->appendString(piece(u"##" + text.substr(half)));
    s->deleteCharactersInRange({unsigned(half), 2});
    return s;
}
ZPString *mutable8(const std::u16string &text) { return withGap(text, inlineCString); }
ZPString *mutable16(const std::u16string &text) { return withGap(text, make); }
ZPString *formatted(const std::u16string &text) { return ZPString::stringWithFormat("%@"_zp, make(text)); }

// A path keeps no separators at its end; such a text is no path store's.
ZPString *pathStore(const std::u16string &text) {
    ZPString *path = ZPPathStore2::pathStoreWithCharacters_length(text.data(), unsigned(text.size()));
    return path->length() == text.size() ? path : make(text);
}

}  // namespace

const std::vector<Form> &forms() {
    static const std::vector<Form> all = {
        {"inline", inlineCString, true},
        {"C string", cString, true},
        {"simple C string", simpleCString, true},
        {"C substring", cSubstring, true},
        {"constant", constantString, true},
        {"mutable 8-bit", mutable8, true},
        {"Unicode", make, false},
        {"Unicode substring", unicodeSubstring, false},
        {"constant Unicode", constantUnicodeString, false},
        {"client", client, false},
        {"mutable 16-bit", mutable16, false},
        {"formatted", formatted, false},
        {"path store", pathStore, false},
    };
    return all;
}

}  // namespace strings
