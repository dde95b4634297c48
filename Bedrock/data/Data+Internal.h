// SPDX-License-Identifier: MIT
// The concrete data classes.
//
// Storage of a ZPConcreteData, by its flags:
//
//   inline                  in the object from `_bytes` on: copies below a page
//   (none)                  borrowed, or nothing when empty
//   freeWhenDone            a zone's block: copies from a page up to what is worth a mapping, adopted blocks
//   freeWhenDone, pages     `_capacity` bytes of pages; with `_mapper` a view of it
//
// Storage of a ZPConcreteMutableData: null until first needed; a zone's block; with `pages` a view of `_mapper`;
// with `sharedView` besides, a copy-on-write view of a mapping that another object views too.
//
// Pages of a mapping cost many times what a block costs to fill, and a view of them pays only where large data is
// copied: blocks are used up to 32 MiB, mappings beyond. References are counted beside the instance, so the upper
// bits of `_flags` stay zero.
#pragma once

#include <Bedrock/core/Memory.h>
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/data/DataView.h>
#include <Bedrock/data/ZPFileMapper.h>
#include <Bedrock/strings/ZPString.h>

#include <algorithm>
#include <cstring>

inline constexpr unsigned _ZPLargestData = 0x3FFFFFFF;
/// A mapper of a file that is not too large for a data object; null, with `errno`, when there is none.
ZPRef<ZPFileMapper> _ZPMapperOfFile(ZPString *path);
inline constexpr unsigned _ZPWorthMapping = 32u << 20;

enum : unsigned { _ZPDataInline = 1, _ZPDataFreeWhenDone = 2, _ZPDataSharedView = 2, _ZPDataPages = 4 };

struct ZPConcreteData : ZPData {
    ZP_PRIVATE_CLASS(ZPConcreteData)
    unsigned _flags, _length, _capacity;
    ZPFileMapper *_mapper;
    void *_bytes;

    void *contents() { return _flags & _ZPDataInline ? static_cast<void *>(&_bytes) : _bytes; }
};

struct ZPConcreteMutableData : ZPMutableData {
    ZP_PRIVATE_CLASS(ZPConcreteMutableData)
    unsigned _flags, _length, _capacity;
    ZPFileMapper *_mapper;
    void *_bytes;
};

struct ZPSubrangeData : ZPData {
    ZP_PRIVATE_CLASS(ZPSubrangeData)
    unsigned _flags, _location, _length;
    ZPData *_data;
};

/// The bytes and length of a data object, null included.
inline ZPDataView _ZPViewOfData(ZPData *data) {
    if (!data) return {};
    if (data->isa == ZPConcreteData::class_()) {
        auto *d = static_cast<ZPConcreteData *>(data);
        return {static_cast<unsigned char *>(d->contents()), d->_length};
    }
    unsigned length = data->length();
    return {static_cast<const unsigned char *>(data->bytes()), length};
}

[[noreturn]] ZP_COLD void _ZPRaiseDataSize(ZPData *receiver, SEL selector, const char *what, unsigned value,
                                           bool releases);
/// Raises when `value` is more than data can hold; `what` names it.
inline void _ZPCheckDataSize(ZPData *receiver, SEL selector, const char *what, unsigned value) {
    if (value > _ZPLargestData) [[unlikely]]
        _ZPRaiseDataSize(receiver, selector, what, value, false);
}
/// The same in an initialiser, which gives the receiver up.
inline void _ZPCheckInitialDataSize(ZPData *receiver, SEL selector, const char *what, unsigned value) {
    if (value > _ZPLargestData) [[unlikely]]
        _ZPRaiseDataSize(receiver, selector, what, value, true);
}
[[noreturn]] ZP_COLD void _ZPRaiseDataLocation(id receiver, SEL selector, unsigned location, unsigned length);
[[noreturn]] ZP_COLD void _ZPRaiseDataRange(id receiver, SEL selector, ZPRange range, unsigned length);
[[noreturn]] ZP_COLD void _ZPRaiseDataMemory(unsigned bytes);
/// The host path of a path; NO, with `errno` set, when there is none.
BOOL _ZPHostPathOfString(ZPString *path, char *buffer, unsigned size);
