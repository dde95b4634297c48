// SPDX-License-Identifier: MIT
// Gap-buffer strings, which hold the text of mutable strings, and what the files of mutable strings share.
//
// The buffer holds the units before the gap, the gap, and the units behind it:
//
//     0 .. gapBegin-1      text
//     gapBegin .. gapEnd-1 the gap
//     gapEnd ..            the rest of the text; the buffer's size is length + gapEnd - gapBegin
//
// `freeWhenDone`: the buffer is freed with the object. `canWriteIntoBuffer`: it may be changed in place; clear
// for an adopted buffer, which the first change leaves. A short formatted string is made with its units behind
// the fields, where they may be changed and are not freed. An object with extra references is never changed:
// its mutable string goes on with a new object. Shared objects have their gap closed, so readers in other
// threads see one run and change nothing. References are counted beside the instance.
#pragma once

#include <Bedrock/strings/ZPMutableString.h>
#include <Bedrock/strings/cluster/Cluster.h>

struct ZPCStringWithGap : ZPCString {
    ZP_PRIVATE_CLASS(ZPCStringWithGap)
    unsigned gapBegin, gapEnd;
    using Unit = char;
};

struct ZPUnicodeStringWithGap : ZPUnicodeString {
    ZP_PRIVATE_CLASS(ZPUnicodeStringWithGap)
    unsigned gapBegin, gapEnd;
    using Unit = unichar;
};

inline char *&_ZPBufferOf(ZPCStringWithGap *s) { return s->bytes; }
inline unichar *&_ZPBufferOf(ZPUnicodeStringWithGap *s) { return s->characters; }
inline unsigned &_ZPLengthOf(ZPCStringWithGap *s) { return s->numBytes; }
inline unsigned &_ZPLengthOf(ZPUnicodeStringWithGap *s) { return s->numCharacters; }

/// A capacity as 16 bits keep it: above 32,767 in units of 256, rounded up.
inline unsigned _capacityToInternal(unsigned n) {
    if (n < 32768) return n;
    unsigned c = ((n - 32513) >> 8) + 32768;
    return c < 65535 ? c : 65535;
}
inline unsigned _capacityToExternal(unsigned c) { return c < 32768 ? c : 256 * (c - 32640); }

/// Prepares a gap-buffer string for an insertion after which it has `length` units: deletes `remove` units at
/// `position`, puts the gap there and makes room. Consumes the caller's reference and answers the object to go
/// on with, which the caller owns. Nothing changes when there is no memory.
template <class S> S *_ZPSetRequiredLength(S *s, unsigned length, unsigned position, unsigned remove, bool extraRoom);
extern template ZPCStringWithGap *_ZPSetRequiredLength(ZPCStringWithGap *, unsigned, unsigned, unsigned, bool);
extern template ZPUnicodeStringWithGap *_ZPSetRequiredLength(ZPUnicodeStringWithGap *, unsigned, unsigned, unsigned,
                                                             bool);

/// A new, empty gap-buffer string; `capacity` in the stored form.
template <class S> S *_ZPNewStringWithGap(unsigned capacity, ZPZone *zone) {
    S *s = ZPAllocateObject(S::class_(), 0, zone);
    s->_flags.capacity = capacity & 0xFFFF;
    return s;
}

/// Closes the gap.
template <class S> void _ZPPackGap(S *s) {
    if (s->gapBegin == _ZPLengthOf(s)) return;
    unsigned tail = _ZPLengthOf(s) - s->gapBegin;
    auto *buffer = _ZPBufferOf(s);
    std::memmove(buffer + s->gapBegin, buffer + s->gapEnd, tail * sizeof *buffer);
    s->gapBegin += tail;
    s->gapEnd += tail;
}

/// Writes a part of a view at the gap, which has room for it; 16-bit text does not go into the 8-bit form.
void _ZPCopyToGap(ZPCStringWithGap *s, const ZPStringView &view, unsigned from, unsigned count);
void _ZPCopyToGap(ZPUnicodeStringWithGap *s, const ZPStringView &view, unsigned from, unsigned count);

/// A string with the formatted text. The caller owns it. `locale` answers `objectForKey:` or is null.
ZPString *_ZPNewFormattedString(ZPZone *zone, ZPString *format, id locale, std::va_list arguments);
