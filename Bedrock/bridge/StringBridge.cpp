// SPDX-License-Identifier: MIT
// Strings from and to the standard library's, in UTF-8 and UTF-16.
#include <Bedrock/bridge/ZPStringBridge.h>

#include <Bedrock/core/ZPException.h>
#include <Bedrock/strings/cluster/Cluster.h>

#include <ostream>

namespace {

// The units of UTF-8 text; false when it is not well cut. Pure ASCII never comes here.
bool decode(std::string_view utf8, std::u16string &units) {
    auto *p = reinterpret_cast<const unsigned char *>(utf8.data()), *end = p + utf8.size();
    units.reserve(utf8.size());
    while (p < end) {
        unichar pair[2];
        unsigned n = ZPUTF8ToUnicode(&p, unsigned(end - p), pair);
        if (n == 0) return false;
        units.append(pair, n);
    }
    return true;
}

}  // namespace

ZPString *ZPMakeString(std::string_view utf8) {
    unsigned length = _ZPCheckedLength(utf8.size());
    ZPString *s = ZPString::alloc()->initWithBytes_length_encoding(utf8.data(), length, ZPUTF8StringEncoding);
    return s ? s->autorelease() : id();
}

ZPString *ZPMakeString(std::u16string_view utf16) {
    return ZPString::stringWithCharacters_length(utf16.data(), _ZPCheckedLength(utf16.size()));
}

std::string ZPStdString(ZPString *string) {
    std::string text;
    if (!string) return text;
    ZPStringView view = _ZPViewOfString(string);
    if (view.bytes && _ZPIsASCII(view.bytes, view.length)) {
        text.assign(reinterpret_cast<const char *>(view.bytes), view.length);
        return text;
    }
    char piece[512];
    for (ZPRange rest{0, view.length}; rest.length;) {
        unsigned filled = 0;
        string->getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
            piece, sizeof piece, &filled, ZPUTF8StringEncoding, YES, rest, &rest);
        if (filled == 0) break;
        text.append(piece, filled);
    }
    return text;
}

std::u16string ZPStdU16String(ZPString *string) {
    std::u16string units;
    if (!string) return units;
    units.resize(string->length());
    string->getCharacters_range(units.data(), {0, unsigned(units.size())});
    return units;
}

std::ostream &operator<<(std::ostream &stream, ZPString *string) {
    return stream << (string ? ZPStdString(string) : "(null)");
}

std::size_t ZPStringHash::operator()(ZPString *string) const { return string ? string->hash() : 0; }
std::size_t ZPStringHash::operator()(std::u16string_view text) const {
    return ZPHashCharacters(text.data(), unsigned(text.size()));
}
std::size_t ZPStringHash::operator()(std::string_view utf8) const {
    if (utf8.size() <= _ZPLongestString && _ZPIsASCII(utf8.data(), unsigned(utf8.size())))
        return ZPHashCString(utf8.data(), unsigned(utf8.size()));
    std::u16string units;
    return decode(utf8, units) ? (*this)(std::u16string_view(units)) : 0;
}

bool ZPStringEqual::operator()(ZPString *a, ZPString *b) const { return a == b || (a && b && a->isEqualToString(b)); }
bool ZPStringEqual::operator()(ZPString *a, std::u16string_view b) const {
    if (!a || a->length() != b.size()) return false;
    ZPStringView view = _ZPViewOfString(a);
    if (view.units) return std::u16string_view(view.units, view.length) == b;
    return _ZPWithUnits(a, [&](auto &&units, unsigned length) {
        for (unsigned i = 0; i < length; ++i)
            if (units[i] != b[i]) return false;
        return true;
    });
}
bool ZPStringEqual::operator()(ZPString *a, std::string_view utf8) const {
    if (!a || utf8.size() > _ZPLongestString) return false;
    ZPStringView view = _ZPViewOfString(a);
    if (_ZPIsASCII(utf8.data(), unsigned(utf8.size()))) {
        if (view.length != utf8.size()) return false;
        if (view.bytes) return std::string_view(reinterpret_cast<const char *>(view.bytes), view.length) == utf8;
    }
    std::u16string units;
    return decode(utf8, units) && (*this)(a, std::u16string_view(units));
}
