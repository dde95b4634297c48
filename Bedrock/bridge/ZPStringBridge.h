// SPDX-License-Identifier: MIT
// Strings and the standard library's texts. Bytes are UTF-8 here, whatever the default C-string encoding. Any thread.
#pragma once

#include <Bedrock/strings/ZPString.h>

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

/// An autoreleased string of UTF-8 text, which may hold NULs. Null when its last character is cut short.
/// More than 2,147,483,646 bytes raise ZPMallocException.
ZP_EXPORT ZPString *ZPMakeString(std::string_view utf8);
/// An autoreleased string of UTF-16 text, lone surrogates as they are. More than 2,147,483,646 units raise
/// ZPMallocException.
ZP_EXPORT ZPString *ZPMakeString(std::u16string_view utf16);
/// The text in UTF-8; empty for null. A lone surrogate is written as three bytes.
ZP_EXPORT std::string ZPStdString(ZPString *string);
/// The text's units; empty for null.
ZP_EXPORT std::u16string ZPStdU16String(ZPString *string);

///@{
/// Writes a string's text, any other object's `description`, in UTF-8; "(null)" for null.
ZP_EXPORT std::ostream &operator<<(std::ostream &stream, ZPString *string);
template <class T>
requires std::is_same_v<T, id> std::ostream &operator<<(std::ostream &stream, T object) {
    return stream << (object ? object->description() : nullptr);
}
template <class T>
    requires requires {
        sizeof(T);
} && std::is_base_of_v<ZPObject, T> std::ostream &operator<<(std::ostream &stream, T *object) {
    return stream << (object ? object->description() : nullptr);
}
///@}

/// Hash and equality by text, for unordered containers of strings: `std::unordered_map<ZPRef<ZPString>, int,
/// ZPStringHash, ZPStringEqual>`. Also takes UTF-8 and UTF-16 views, so that a look-up makes no string. Null is
/// equal to null alone.
struct ZPStringHash {
    /// Keys are found by views as well.
    using is_transparent = void;
    /// The hash of the text, the same whatever holds it.
    ZP_EXPORT std::size_t operator()(ZPString *string) const;
    /// The hash of UTF-16 text.
    ZP_EXPORT std::size_t operator()(std::u16string_view text) const;
    /// The hash of UTF-8 text.
    ZP_EXPORT std::size_t operator()(std::string_view utf8) const;
};
/// Equality of texts, for unordered containers.
struct ZPStringEqual {
    /// Keys are found by views as well.
    using is_transparent = void;
    ///@{
    /// Whether both texts have the same units.
    ZP_EXPORT bool operator()(ZPString *a, ZPString *b) const;
    ZP_EXPORT bool operator()(ZPString *a, std::u16string_view b) const;
    ZP_EXPORT bool operator()(ZPString *a, std::string_view utf8) const;
    bool operator()(std::u16string_view a, ZPString *b) const { return (*this)(b, a); }
    bool operator()(std::string_view utf8, ZPString *b) const { return (*this)(b, utf8); }
    ///@}
};
