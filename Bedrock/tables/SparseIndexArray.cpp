// SPDX-License-Identifier: MIT
// Sets of indexes as ranges: sorted by location, none empty, at least one index between two. No end passes
// 0xFFFFFFFF, so neither a union of ranges nor the total can overflow.
#include <Bedrock/tables/ZPSparseIndexArray.h>
#include <Bedrock/core/Scope.h>

#include <Bedrock/tables/RangeArray+Internal.h>

#include <algorithm>

namespace {

ZPRange *rangesOf(ZPSparseIndexArray *array) { return array->list.ranges; }

// The position of the first range that ends behind a location: the only one that may contain it.
unsigned positionAround(ZPSparseIndexArray *array, unsigned location) {
    unsigned p = _ZPPositionOfLocation(&array->list, location);
    return p && _ZPRangeEnd(rangesOf(array)[p - 1]) > location ? p - 1 : p;
}

BOOL store(unsigned *to, unsigned index) {
    *to = index;
    return YES;
}

}  // namespace

ZPSparseIndexArray *ZPCreateSparseIndexArrayWithZone(unsigned capacity, ZPZone *zone) {
    _ZPBlock array(_ZPRangeMemory<ZPSparseIndexArray>(1, zone), zone);
    _ZPStartRangeList(&array->list, capacity, zone);
    return array.take();
}

ZPSparseIndexArray *ZPCreateSparseIndexArray(unsigned capacity) {
    return ZPCreateSparseIndexArrayWithZone(capacity, nullptr);
}

void ZPFreeSparseIndexArray(ZPSparseIndexArray *array) {
    _ZPEndRangeList(&array->list);
    ZPZoneFree(ZPZoneFromPointer(array), array);
}

void ZPResetSparseIndexArray(ZPSparseIndexArray *array) {
    ZPResetRangeArray(&array->list);
    array->total = 0;
}

ZPSparseIndexArray *ZPCopySparseIndexArrayWithZone(ZPSparseIndexArray *array, ZPZone *zone) {
    ZPSparseIndexArray *copy = ZPCreateSparseIndexArrayWithZone(array->list.count, zone);
    std::copy_n(array->list.ranges, array->list.count, copy->list.ranges);
    copy->list.count = array->list.count;
    copy->total = array->total;
    return copy;
}

BOOL ZPCompareSparseIndexArrays(ZPSparseIndexArray *array1, ZPSparseIndexArray *array2) {
    return array1->total == array2->total ? ZPCompareRangeArrays(&array1->list, &array2->list) : NO;
}

unsigned ZPCountSparseIndexArray(ZPSparseIndexArray *array) { return array->total; }

void ZPSparseIndexArrayAddRange(ZPSparseIndexArray *array, ZPRange range) {
    if (!range.length) return;
    _ZPCheckRangeEnd(range, __func__);
    ZPRangeArray *list = &array->list;
    unsigned target = _ZPPositionOfLocation(list, range.location);
    if (target && _ZPRangesCoalesce(list->ranges[target - 1], range)) --target;
    else if (target == list->count || !_ZPRangesCoalesce(list->ranges[target], range)) {
        _ZPInsertRange(list, range, target);
        array->total += range.length;
        return;
    }
    ZPRange *ranges = list->ranges, whole = _ZPUnionOfRanges(ranges[target], range);
    unsigned held = ranges[target].length, next = target + 1;
    for (; next < list->count && _ZPRangesCoalesce(whole, ranges[next]); ++next) {
        held += ranges[next].length;
        whole = _ZPUnionOfRanges(whole, ranges[next]);
    }
    ranges[target] = whole;
    array->total += whole.length - held;
    _ZPRemoveRanges(list, target + 1, next - target - 1);
}

void ZPSparseIndexArrayAddIndex(ZPSparseIndexArray *array, unsigned index) {
    ZPSparseIndexArrayAddRange(array, {index, 1});
}

void ZPSparseIndexArrayRemoveRange(ZPSparseIndexArray *array, ZPRange range) {
    if (!range.length) return;
    ZPRangeArray *list = &array->list;
    unsigned from = range.location, k = positionAround(array, from);
    // Beyond 0xFFFFFFFF nothing is held.
    auto end = unsigned(std::min<std::uint64_t>(_ZPRangeEnd(range), 0xFFFFFFFF));
    if (k == list->count) return;
    if (ZPRange &r = list->ranges[k]; r.location < from) {
        auto oldEnd = unsigned(_ZPRangeEnd(r));
        if (oldEnd > end) {
            _ZPInsertRange(list, {end, oldEnd - end}, k + 1);
            list->ranges[k].length = from - list->ranges[k].location;
            array->total -= end - from;
            return;
        }
        array->total -= oldEnd - from;
        r.length = from - r.location;
        ++k;
    }
    unsigned next = k;
    for (; next < list->count && _ZPRangeEnd(list->ranges[next]) <= end; ++next)
        array->total -= list->ranges[next].length;
    if (next < list->count && list->ranges[next].location < end) {
        ZPRange &r = list->ranges[next];
        unsigned gone = end - r.location;
        array->total -= gone;
        r = {end, r.length - gone};
    }
    _ZPRemoveRanges(list, k, next - k);
}

void ZPSparseIndexArrayRemoveIndex(ZPSparseIndexArray *array, unsigned index) {
    ZPSparseIndexArrayRemoveRange(array, {index, 1});
}

BOOL ZPRangeInSparseIndexArray(ZPSparseIndexArray *array, ZPRange range) {
    unsigned p = _ZPPositionOfLocation(&array->list, range.location);
    ZPRange *ranges = rangesOf(array);
    auto contains = [&](ZPRange r) { return r.location <= range.location && _ZPRangeEnd(range) <= _ZPRangeEnd(r); };
    return (p < array->list.count && contains(ranges[p])) || (p && contains(ranges[p - 1])) ? YES : NO;
}

BOOL ZPIndexInSparseIndexArray(ZPSparseIndexArray *array, unsigned index) {
    unsigned p = _ZPPositionOfLocation(&array->list, index);
    ZPRange *ranges = rangesOf(array);
    return (p < array->list.count && ranges[p].location == index) || (p && _ZPRangeContains(ranges[p - 1], index)) ? YES
                                                                                                                   : NO;
}

BOOL ZPSparseIndexArrayFirstIndex(ZPSparseIndexArray *array, unsigned *index) {
    return array->total ? store(index, rangesOf(array)->location) : NO;
}

BOOL ZPSparseIndexArrayIndexSuccessor(ZPSparseIndexArray *array, unsigned index, unsigned *successor) {
    if (index == 0xFFFFFFFF) return NO;
    unsigned k = positionAround(array, index + 1);
    if (k == array->list.count) return NO;
    return store(successor, std::max(index + 1, rangesOf(array)[k].location));
}

BOOL ZPSparseIndexArrayIndexPredecessor(ZPSparseIndexArray *array, unsigned index, unsigned *predecessor) {
    // The range before the first one that begins at or behind the index.
    unsigned p = _ZPPositionOfLocation(&array->list, index);
    if (!p) return NO;
    return store(predecessor, unsigned(std::min<std::uint64_t>(index, _ZPRangeEnd(rangesOf(array)[p - 1]))) - 1);
}

BOOL ZPSparseIndexArrayNthIndex(ZPSparseIndexArray *array, unsigned n, unsigned *index) {
    if (n >= array->total) return NO;
    ZPRange *r = rangesOf(array);
    for (; n >= r->length; ++r) n -= r->length;
    return store(index, r->location + n);
}

ZPString *ZPStringFromSparseIndexArray(ZPSparseIndexArray *array) {
    _ZPRangeText text(10 * std::uint64_t(array->total));
    const char *before = "(";
    for (unsigned i = 0; i < array->list.count; ++i) {
        ZPRange r = rangesOf(array)[i];
        for (unsigned n = 0; n < r.length; ++n, before = ", ") text.add("%s%u", before, r.location + n);
    }
    text.add(array->total ? ")" : "()");
    return text.finish();
}
