// SPDX-License-Identifier: MIT
// Lists of ranges: `count` ranges, then cleared room up to the capacity, in the zone of the record. A full list
// doubles; a removal from a list that is less than half full first halves an even capacity above 4.
#include <Bedrock/tables/RangeArray+Internal.h>
#include <Bedrock/core/Scope.h>
#include <Bedrock/core/Memory.h>

#include <algorithm>
#include <cstdio>

namespace {

void resize(ZPRangeArray *list, unsigned capacity) {
    ZPRange *ranges = _ZPTryReallocate(list->ranges, capacity, ZPZoneFromPointer(list->ranges));
    if (!ranges) {
        // Room that cannot be given back is kept.
        if (capacity < list->capacity) return;
        _ZPRaiseOutOfMemoryIn("ZPRangeArrayInsertRangeAtIndex", "%u ranges", capacity);
    }
    list->ranges = ranges;
    if (capacity > list->capacity) std::fill(list->ranges + list->capacity, list->ranges + capacity, ZPRange{});
    list->capacity = capacity;
}

}  // namespace

unsigned _ZPRangeCapacity(unsigned request) {
    if (request > 0xFFFFFFFBu) _ZPRaiseOutOfMemory("%u ranges", request);
    return (request & ~3u) + 4;
}

void _ZPStartRangeList(ZPRangeArray *list, unsigned capacity, ZPZone *zone) {
    unsigned slots = _ZPRangeCapacity(capacity);
    *list = {_ZPRangeMemory<ZPRange>(slots, zone), 0, slots};
}

void _ZPEndRangeList(ZPRangeArray *list) {
    std::fill_n(list->ranges, list->capacity, ZPRange{});
    ZPZoneFree(ZPZoneFromPointer(list->ranges), list->ranges);
}

unsigned _ZPGrownRangeCapacity(const ZPRangeArray *list) {
    if (list->count < list->capacity) return list->capacity;
    if (list->capacity > 0x7FFFFFFF) _ZPRaiseOutOfMemory("%u ranges", list->capacity);
    return list->capacity * 2;
}

unsigned _ZPShrunkRangeCapacity(const ZPRangeArray *list, unsigned run) {
    unsigned capacity = list->capacity;
    for (unsigned count = list->count; run; --run, --count) {
        if (2 * std::uint64_t(count) < capacity && capacity > 4 && capacity % 2 == 0) capacity /= 2;
        else if (capacity <= 4 || capacity % 2) break;
    }
    return capacity;
}

void _ZPMakeRoomForRange(ZPRangeArray *list) {
    unsigned capacity = _ZPGrownRangeCapacity(list);
    if (capacity != list->capacity) resize(list, capacity);
}

void _ZPInsertRange(ZPRangeArray *list, ZPRange range, unsigned index) {
    _ZPMakeRoomForRange(list);
    ZPRange *at = list->ranges + index;
    std::memmove(at + 1, at, (list->count - index) * sizeof *at);
    *at = range;
    list->count++;
}

void _ZPRemoveRanges(ZPRangeArray *list, unsigned index, unsigned run) {
    if (!run) return;
    unsigned capacity = _ZPShrunkRangeCapacity(list, run);
    ZPRange *at = list->ranges + index;
    std::memmove(at, at + run, (list->count - index - run) * sizeof *at);
    list->count -= run;
    std::fill_n(list->ranges + list->count, run, ZPRange{});
    if (capacity != list->capacity) resize(list, capacity);
}

void _ZPRangeText::add(const char *format, ...) {
    char piece[96];
    std::va_list arguments;
    va_start(arguments, format);
    int length = std::vsnprintf(piece, sizeof piece, format, arguments);
    va_end(arguments);
    buffer.append(piece, std::min(std::size_t(length), sizeof piece - 1));
    if (buffer.size() > 4000) flush();
}

void _ZPRangeText::addString(ZPString *string) {
    flush();
    text->appendString(string ? string : "*nil*"_zp);
}

void _ZPRangeText::flush() {
    if (!buffer.empty()) text->appendString(_ZPStringWithCText("%s", buffer.c_str()));
    buffer.clear();
}

// ---- the exported functions ----

ZPRangeArray *ZPCreateRangeArrayWithZone(unsigned capacity, ZPZone *zone) {
    _ZPBlock array(_ZPRangeMemory<ZPRangeArray>(1, zone), zone);
    _ZPStartRangeList(array, capacity, zone);
    return array.take();
}

ZPRangeArray *ZPCreateRangeArray(unsigned capacity) { return ZPCreateRangeArrayWithZone(capacity, nullptr); }

void ZPFreeRangeArray(ZPRangeArray *array) {
    _ZPEndRangeList(array);
    ZPZoneFree(ZPZoneFromPointer(array), array);
}

void ZPResetRangeArray(ZPRangeArray *array) {
    std::fill_n(array->ranges, array->capacity, ZPRange{});
    array->count = 0;
}

unsigned ZPCountRangeArray(ZPRangeArray *array) { return array->count; }

ZPRange ZPRangeArrayRangeAtIndex(ZPRangeArray *array, unsigned index) {
    if (index >= array->count) _ZPRaiseRangeIndex();
    return array->ranges[index];
}

void ZPRangeArraySetRangeAtIndex(ZPRangeArray *array, ZPRange range, unsigned index) {
    if (index >= array->count) _ZPRaiseRangeIndex();
    array->ranges[index] = range;
}

void ZPRangeArrayInsertRangeAtIndex(ZPRangeArray *array, ZPRange range, unsigned index) {
    if (index > array->count) _ZPRaiseRangeIndex();
    _ZPInsertRange(array, range, index);
}

void ZPRangeArrayRemoveRangeAtIndex(ZPRangeArray *array, unsigned index) {
    if (index >= array->count) _ZPRaiseRangeIndex();
    _ZPRemoveRanges(array, index, 1);
}

BOOL ZPCompareRangeArrays(ZPRangeArray *array1, ZPRangeArray *array2) {
    return array1->count == array2->count && std::equal(array1->ranges, array1->ranges + array1->count, array2->ranges)
               ? YES
               : NO;
}

ZPRangeArray *ZPCopyRangeArrayWithZone(ZPRangeArray *array, ZPZone *zone) {
    ZPRangeArray *copy = ZPCreateRangeArrayWithZone(array->count, zone);
    std::copy_n(array->ranges, array->count, copy->ranges);
    copy->count = array->count;
    return copy;
}

ZPString *ZPStringFromRangeArray(ZPRangeArray *array) {
    _ZPRangeText text(24 * std::uint64_t(array->count));
    if (array->count == 0) text.add("()");
    for (unsigned i = 0; i < array->count; ++i)
        text.add("%s    {%u, %u}", i ? ",\n" : "(\n", array->ranges[i].location, array->ranges[i].length);
    if (array->count) text.add("\n)");
    return text.finish();
}
