// SPDX-License-Identifier: MIT
// The room of the string cluster: the storage classes and what every string does with its own characters: reading,
// comparing, searching, taking apart, changing. Other rooms take views of strings and make new ones by what stands
// here, in Mutable.h (changing) and in Keys.h (hash and equality in tables), and leave the fields to the room. Read
// this first, then String.cpp, which has every operation on the primitives; ByteStrings.cpp and UnitStrings.cpp
// override what their storage does faster.
//
// The storage classes:
//
//   ZPSimpleCString    bytes in the 8-bit storage encoding, owned
//     ZPCString        the same; `freeWhenDone` says whether the bytes are owned
//       ZPCSubstring   borrows the bytes of `_referenceString` until it is retained
//     ZPConstantString a literal; never freed
//   ZPInlineCString    1 to 65,535 bytes and a NUL inside the object
//   ZPSimpleString     16-bit units, owned
//     ZPUnicodeString, ZPUnicodeSubstring, _ZPConstantUnicodeString   as their 8-bit counterparts
//
// References are counted beside the instance, so the `refs` and `hasExternalRefCount` bits stay zero.
// Subclasses of ZPCString and ZPUnicodeString whose text is not one run must answer
// `_fastCStringContents` and `_characters` with one run.
#pragma once

#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/Memory.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/strings/ZPString.h>

#include <algorithm>
#include <cstring>

struct ZPStringFlags {
    unsigned refs : 8;
    unsigned freeWhenDone : 1;
    unsigned hasExternalRefCount : 1;
    unsigned unused : 5;
    unsigned canWriteIntoBuffer : 1;
    unsigned capacity : 16;
};

struct ZPSimpleCString : ZPString {
    ZP_PRIVATE_CLASS(ZPSimpleCString)
    char *bytes;
    unsigned numBytes;
};
struct ZPCString : ZPSimpleCString {
    ZP_PRIVATE_CLASS(ZPCString)
    ZPStringFlags _flags;
};
struct ZPCSubstring : ZPCString {
    ZP_PRIVATE_CLASS(ZPCSubstring)
    ZPString *_referenceString;
};
struct ZPConstantString : ZPSimpleCString {
    ZP_CLASS(ZPConstantString)
};
struct ZPInlineCString : ZPString {
    ZP_PRIVATE_CLASS(ZPInlineCString)
    struct {
        unsigned refs : 8;
        unsigned hasExternalRefCount : 1;
        unsigned unused : 7;
        unsigned numBytes : 16;
    } _flags;
    /// Extends behind the fields.
    char *contents() { return reinterpret_cast<char *>(&_flags + 1); }
    unsigned byteCount() const { return _flags.numBytes; }
    /// Gives a new object its bytes; it has room for them and a NUL.
    void fill(const char *bytes, unsigned count) {
        _flags = {};
        _flags.numBytes = count & 0xFFFF;
        std::memcpy(contents(), bytes, count);
        contents()[count] = 0;
    }
};
struct ZPSimpleString : ZPString {
    ZP_PRIVATE_CLASS(ZPSimpleString)
    unichar *characters;
    unsigned numCharacters;

    /// All units, valid while the receiver lives and is not changed.
    const unichar *_characters() ZP_ASKS();
};
struct ZPUnicodeString : ZPSimpleString {
    ZP_PRIVATE_CLASS(ZPUnicodeString)
    ZPStringFlags _flags;

    /// Gives a new object its units, for which it has room behind its fields.
    void fill(const unichar *units, unsigned count) {
        characters = reinterpret_cast<unichar *>(this + 1);
        numCharacters = count;
        _flags = {};
        std::memcpy(characters, units, count * sizeof(unichar));
    }
};
struct ZPUnicodeSubstring : ZPUnicodeString {
    ZP_PRIVATE_CLASS(ZPUnicodeSubstring)
    ZPString *_referenceString;
};
struct _ZPConstantUnicodeString : ZPSimpleString {
    ZP_CLASS(_ZPConstantUnicodeString)
};
struct ZPPlaceholderString : ZPString {
    ZP_PRIVATE_CLASS(ZPPlaceholderString)
    ZPZone *zoneForString;
};

// ---- views ----

/// Substrings below this many units are copied, longer ones share their parent's buffer.
inline constexpr unsigned _ZPShareThreshold = 25;
/// Generic algorithms read units in blocks of this many.
inline constexpr unsigned _ZPBlockUnits = 32;

/// The unit of a byte in the storage encoding.
ZP_INLINE unichar _ZPUnitOfByte(unsigned char byte) { return byte < 0x80 ? byte : _ZPCStringCharToUnichar(byte); }

/// A string's storage as one run: bytes in the storage encoding, or units, or neither when the string shows
/// none. Valid while the string lives, is not changed and is sent nothing: a part that is retained gets other bytes.
/// Where messages are sent beside it, to the string or to an object of a client's, ZPHeldView or _ZPWithViews is taken.
struct ZPStringView {
    const unsigned char *bytes = nullptr;
    const unichar *units = nullptr;
    unsigned length = 0;

    bool shown() const { return bytes || units || length == 0; }
    unichar operator[](unsigned i) const { return bytes ? _ZPUnitOfByte(bytes[i]) : units[i]; }
};

ZP_COLD ZPStringView _ZPViewOfOtherString(ZPString *string);

/// Takes the view of a string whose fields show it; false for another class of string.
inline bool _ZPViewFields(ZPString *string, ZPStringView &view) {
    Class cls = string->isa;
    if (cls == ZPInlineCString::class_()) {
        auto *s = static_cast<ZPInlineCString *>(string);
        view = {reinterpret_cast<unsigned char *>(s->contents()), nullptr, s->_flags.numBytes};
        return true;
    }
    if (cls == ZPConstantString::class_() || cls == ZPCString::class_() || cls == ZPCSubstring::class_()) {
        auto *s = static_cast<ZPSimpleCString *>(string);
        view = {reinterpret_cast<unsigned char *>(s->bytes), nullptr, s->numBytes};
        return true;
    }
    if (cls == ZPUnicodeString::class_() || cls == ZPUnicodeSubstring::class_() ||
        cls == _ZPConstantUnicodeString::class_()) {
        auto *s = static_cast<ZPSimpleString *>(string);
        view = {nullptr, s->characters, s->numCharacters};
        return true;
    }
    return false;
}

/// The view of a string, null included (which is empty).
inline ZPStringView _ZPViewOfString(ZPString *string) {
    ZPStringView view;
    return !string || _ZPViewFields(string, view) ? view : _ZPViewOfOtherString(string);
}

/// A view that stays good while messages are sent: a part gets characters of its own first, of a text that may change
/// there is a copy, and what is no class of the library's is not shown.
struct ZPHeldView : ZPStringView {
    ZPRef<ZPString> owner;
    explicit ZPHeldView(ZPString *string) {
        if (!string) return;
        bool parts = string->isa == ZPCSubstring::class_() || string->isa == ZPUnicodeSubstring::class_();
        if (parts || !_ZPViewFields(string, *this)) [[unlikely]]
            hold(string);
    }

  private:
    ZP_COLD void hold(ZPString *string);
};

/// Calls `f(a, b)` with the views of two strings, either null or not, which stay good while the other one is asked by
/// messages. What shows its text by its fields needs no owner.
template <class F> auto _ZPWithViews(ZPString *first, ZPString *second, F f) {
    ZPStringView a, b;
    if ((!first || _ZPViewFields(first, a)) && (!second || _ZPViewFields(second, b))) [[likely]]
        return f(a, b);
    return [&]() ZP_COLD {
        ZPHeldView heldA(first), heldB(second);
        return f(heldA, heldB);
    }();
}

/// Copies a part of a view as units.
void _ZPCopyUnits(const ZPStringView &view, unsigned from, unsigned count, unichar *buffer);

/// What `isEqualToString:` answers.
BOOL _ZPEqualStrings(ZPString *string, ZPString *other);

// ---- hash: Horner's rule with 257 over at most 16 units, the first and the last 8 of a longer text ----

inline constexpr unsigned _ZPHashedUnits = 16;
struct _ZPHashPowers {
    unsigned of[_ZPHashedUnits + 1];
    constexpr _ZPHashPowers() : of{1} {
        for (unsigned i = 1; i <= _ZPHashedUnits; ++i) of[i] = of[i - 1] * 257;
    }
};
inline constexpr _ZPHashPowers _ZPPowers;
ZP_INLINE unsigned _ZPFinishHash(unsigned hash, unsigned length) { return hash + (hash << (length & 31)); }

/// Eight characters below 128, the first in the lowest byte: pairs, then fours, side by side in one word.
ZP_INLINE unsigned _ZPHashEight(std::uint64_t x) {
    constexpr std::uint64_t bytes = 0x00FF00FF00FF00FF, pairs = 0x0000FFFF0000FFFF;
    x = (x & bytes) * 257 + (x >> 8 & bytes);
    x = (x & pairs) * _ZPPowers.of[2] + (x >> 16 & pairs);
    return unsigned(x) * _ZPPowers.of[4] + unsigned(x >> 32);
}

/// The hash of characters below 128 in eight bytes or more, on a little-endian machine; false when there are
/// others. Bytes that both words hold are shifted out of the first, and count as zeros before it.
ZP_INLINE bool _ZPHashWords(const void *text, unsigned length, unsigned &hash) {
    auto *bytes = static_cast<const unsigned char *>(text);
    std::uint64_t first, last;
    std::memcpy(&first, bytes, 8);
    std::memcpy(&last, bytes + length - 8, 8);
    if ((first | last) & 0x8080808080808080) [[unlikely]]
        return false;
    unsigned hashed = length < _ZPHashedUnits ? length : _ZPHashedUnits, shift = 8 * (_ZPHashedUnits - hashed);
    first = shift == 64 ? 0 : first << shift;
    hash = _ZPFinishHash(length * _ZPPowers.of[hashed] + _ZPHashEight(first) * _ZPPowers.of[8] + _ZPHashEight(last),
                         length);
    return true;
}

bool _ZPIsASCII(const void *bytes, unsigned length);
/// Whether bytes in the default C-string encoding may be kept as they are in an 8-bit object.
inline bool _ZPFitsByteStorage(const void *bytes, unsigned length) {
    return _ZPIsASCII(bytes, length) || _ZPDefaultCStringEncoding() == _ZPCStringEncoding;
}

// ---- units of any string ----

/// Reads the units of a string that shows no run, a block at a time around the index asked for.
struct ZPUnitReader {
    ZPString *string;
    unsigned length, start = 0, count = 0;
    unichar buffer[_ZPBlockUnits];

    ZPUnitReader(ZPString *s, unsigned n) : string(s), length(n) {}
    unichar operator[](unsigned i) {
        if (i - start >= count) [[unlikely]]
            fill(i);
        return buffer[i - start];
    }
    void fill(unsigned i) {
        constexpr unsigned half = _ZPBlockUnits / 2;
        start = i < half ? 0 : i - half;
        if (length - i < half) start = length < _ZPBlockUnits ? 0 : length - _ZPBlockUnits;
        count = length - start < _ZPBlockUnits ? length - start : _ZPBlockUnits;
        string->getCharacters_range(buffer, {start, count});
    }
};

/// The units of bytes in the storage encoding.
struct ZPByteUnits {
    const unsigned char *bytes;
    unichar operator[](unsigned i) const { return _ZPUnitOfByte(bytes[i]); }
};

/// Calls `f(units, length)` with an indexable form of a view of the string, `f` being compiled for each form.
template <class F> auto _ZPWithUnitsOf(const ZPStringView &view, ZPString *string, F f) {
    if (view.bytes) return f(ZPByteUnits{view.bytes}, view.length);
    if (view.units) return f(view.units, view.length);
    return f(ZPUnitReader(string, view.length), view.length);
}
/// The same with the string's own view, for an `f` that sends no messages.
template <class F> auto _ZPWithUnits(ZPString *string, F f) {
    return _ZPWithUnitsOf(_ZPViewOfString(string), string, f);
}
/// The same for an `f` that sends messages.
template <class F> auto _ZPWithHeldUnits(ZPString *string, F f) {
    ZPHeldView view(string);
    return _ZPWithUnitsOf(view, string, f);
}

/// The user's preferences as a locale; null while there are none.
ZPDictionary *_ZPUserLocale();
/// The first unit of a locale's decimal separator; a point without a locale (null), or where it has no such text.
unichar _ZPDecimalSeparator(id locale);

// ---- errors ----

/// "[Class selector]: Out of bounds".
[[noreturn]] ZP_COLD void _ZPRaiseOutOfBounds(id receiver, SEL selector);
[[noreturn]] ZP_COLD void _ZPRaiseNullCString(id receiver, SEL selector);
/// ZPMallocException: more units than a string can have.
[[noreturn]] ZP_COLD void _ZPRaiseTooLong(std::uint64_t length);
/// Texts stay shorter than what a failed search answers.
inline constexpr unsigned _ZPLongestString = 0x7FFFFFFE;
/// A length that a string may have; raises ZPMallocException for another.
inline unsigned _ZPCheckedLength(std::size_t length) {
    if (length > _ZPLongestString) [[unlikely]]
        _ZPRaiseTooLong(length);
    return unsigned(length);
}

inline void _ZPCheckRange(id receiver, SEL selector, ZPRange range, unsigned length) {
    if (range.location > length || range.length > length - range.location) [[unlikely]]
        _ZPRaiseOutOfBounds(receiver, selector);
}

// ---- temporary memory ----

/// A block of the default zone (or of another), freed at the end unless taken out.
template <class T> struct ZPZoneBlock : _ZPBlock<T> {
    explicit ZPZoneBlock(std::size_t count, ZPZone *zone = nullptr)
        : _ZPBlock<T>(_ZPAllocate<T>(count, zone, "a string"), zone) {}
};

struct _ZPFreesWhereItLies {
    void operator()(void *memory) const { ZPZoneFree(ZPZoneFromPointer(memory), memory); }
};
/// A block that a string is given, its own with `freeWhenDone`: freed at the end unless taken out.
template <class T> struct ZPGivenBlock : ZPScope<T, _ZPFreesWhereItLies> {
    ZPGivenBlock(T *block, BOOL freeWhenDone) : ZPScope<T, _ZPFreesWhereItLies>(freeWhenDone ? block : nullptr) {}
};

/// A stack buffer that moves to the default zone when it is too small.
template <class T, unsigned N> struct ZPStackBuffer {
    T local[N];
    T *memory;
    explicit ZPStackBuffer(std::size_t count)
        : memory(count <= N ? local : _ZPAllocate<T>(count, nullptr, "a string")) {}
    ZPStackBuffer(const ZPStackBuffer &) = delete;
    ~ZPStackBuffer() {
        if (memory != local) ZPZoneFree(nullptr, memory);
    }
};

/// A string that adopts a block of units: "" when empty. The caller owns the result.
ZPString *_ZPNewStringAdoptingUnits(unichar *units, unsigned length, BOOL freeWhenDone, ZPZone *zone);
/// A string that adopts a block of bytes in the storage encoding.
ZPString *_ZPNewStringAdoptingBytes(char *bytes, unsigned length, BOOL freeWhenDone, ZPZone *zone);
/// A string of `total` bytes from views that show bytes.
ZPString *_ZPNewStringJoiningBytes(const ZPStringView *views, unsigned count, unsigned total, ZPZone *zone);
/// A string with a copy of the units.
ZPString *_ZPNewStringWithUnits(const unichar *units, unsigned length, ZPZone *zone);

/// Scratch bytes that live as long as the current autorelease pool.
char *_ZPAutoreleasedScratch(unsigned bytes);
