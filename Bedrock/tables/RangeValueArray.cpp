// SPDX-License-Identifier: MIT
// Ranges with values. `values` has the capacity of the list, the value of a range at its position. The caller's
// functions are called while ranges and values belong together: a new value is retained before anything
// changes, an old one is released after it has left.
#include <Bedrock/tables/ZPRangeValueArray.h>
#include <Bedrock/core/Scope.h>

#include <Bedrock/core/Memory.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/tables/RangeArray+Internal.h>

#include <algorithm>
#include <vector>

const ZPRangeValueCallBacks ZPIntRangeValueCallBacks = {};
const ZPRangeValueCallBacks ZPNonOwnedPointerRangeValueCallBacks = {};
const ZPRangeValueCallBacks ZPOwnedPointerRangeValueCallBacks = {nullptr, nullptr,
                                                                 _ZPPointerItemFree<ZPRangeValueArray>, nullptr};
const ZPRangeValueCallBacks ZPNonRetainedObjectRangeValueCallBacks = {
    _ZPObjectItemsEqual<ZPRangeValueArray>, nullptr, nullptr, _ZPObjectItemDescribe<ZPRangeValueArray>};
const ZPRangeValueCallBacks ZPObjectRangeValueCallBacks = {_ZPObjectItemsEqual<ZPRangeValueArray>,
                                                           _ZPObjectItemRetain<ZPRangeValueArray>,
                                                           _ZPObjectItemRelease<ZPRangeValueArray>,
                                                           _ZPObjectItemDescribe<ZPRangeValueArray>};

namespace {

void retain(ZPRangeValueArray *array, const void *value) {
    if (array->callBacks.retain) array->callBacks.retain(array, value);
}
void release(ZPRangeValueArray *array, void *value) {
    if (array->callBacks.release) array->callBacks.release(array, value);
}
bool equal(ZPRangeValueArray *array, const void *value1, const void *value2) {
    return value1 == value2 || (array->callBacks.isEqual && array->callBacks.isEqual(array, value1, value2));
}

// The entries of a value, last first. All are compared before any is released: the value may be one of the array's own.
std::vector<unsigned> entriesOf(ZPRangeValueArray *array, const void *value) {
    std::vector<unsigned> found;
    for (unsigned i = array->list.count; i--;)
        if (equal(array, array->values[i], value)) found.push_back(i);
    return found;
}

void checkMode(ZPRangeValueArray *array, BOOL sorted) {
    if (!array->sorted != !sorted) ZPException::raise_format(ZPGenericException, ""_zp);
}
void checkIndex(unsigned index, unsigned limit) {
    if (index >= limit) _ZPRaiseRangeIndex();
}

// Gives the values the room that the list is going to have.
void growValues(ZPRangeValueArray *array) {
    unsigned capacity = _ZPGrownRangeCapacity(&array->list), former = array->list.capacity;
    if (capacity == former) return;
    array->values = _ZPReallocate(array->values, capacity, ZPZoneFromPointer(array->values), "%u ranges", capacity);
    std::fill(array->values + former, array->values + capacity, nullptr);
}

void setValue(ZPRangeValueArray *array, const void *value, unsigned index) {
    retain(array, value);
    release(array, std::exchange(array->values[index], const_cast<void *>(value)));
}

void insert(ZPRangeValueArray *array, ZPRange range, const void *value, unsigned index) {
    ZPRangeArray *list = &array->list;
    growValues(array);
    _ZPMakeRoomForRange(list);
    retain(array, value);
    _ZPInsertRange(list, range, index);
    void **at = array->values + index;
    std::memmove(at + 1, at, (list->count - 1 - index) * sizeof *at);
    *at = const_cast<void *>(value);
}

void removeRun(ZPRangeValueArray *array, unsigned index, unsigned run) {
    if (!run) return;
    ZPRangeArray *list = &array->list;
    void **at = array->values + index, *first = *at;
    std::vector<void *> others(at + 1, at + run);
    std::memmove(at, at + run, (list->count - index - run) * sizeof *at);
    std::fill_n(array->values + list->count - run, run, nullptr);
    unsigned former = list->capacity;
    _ZPRemoveRanges(list, index, run);
    if (list->capacity < former)
        if (void *smaller =
                ZPZoneRealloc(ZPZoneFromPointer(array->values), array->values, list->capacity * sizeof(void *)))
            array->values = static_cast<void **>(smaller);
    release(array, first);
    for (void *value : others) release(array, value);
}

}  // namespace

ZPRangeValueArray *ZPCreateRangeValueArrayWithZone(ZPRangeValueCallBacks callBacks, unsigned capacity, BOOL sorted,
                                                   ZPZone *zone) {
    _ZPBlock array(_ZPRangeMemory<ZPRangeValueArray>(1, zone), zone);
    _ZPStartRangeList(&array->list, capacity, zone);
    ZPScope list{&array->list, _ZPEndRangeList};
    array->values = _ZPRangeMemory<void *>(array->list.capacity, zone);
    (void)list.take();
    array->callBacks = callBacks;
    array->sorted = sorted ? YES : NO;
    return array.take();
}

ZPRangeValueArray *ZPCreateRangeValueArray(ZPRangeValueCallBacks callBacks, unsigned capacity, BOOL sorted) {
    return ZPCreateRangeValueArrayWithZone(callBacks, capacity, sorted, nullptr);
}

void ZPFreeRangeValueArray(ZPRangeValueArray *array) {
    std::fill_n(array->values, array->list.capacity, nullptr);
    ZPZoneFree(ZPZoneFromPointer(array->values), array->values);
    _ZPEndRangeList(&array->list);
    ZPZoneFree(ZPZoneFromPointer(array), array);
}

void ZPResetRangeValueArray(ZPRangeValueArray *array) {
    while (array->list.count) {
        unsigned last = --array->list.count;
        release(array, std::exchange(array->values[last], nullptr));
    }
    ZPResetRangeArray(&array->list);
}

unsigned ZPCountRangeValueArray(ZPRangeValueArray *array) { return array->list.count; }

BOOL ZPCompareRangeValueArrays(ZPRangeValueArray *array1, ZPRangeValueArray *array2) {
    if (!ZPCompareRangeArrays(&array1->list, &array2->list)) return NO;
    for (unsigned i = 0; i < array1->list.count; ++i)
        if (!equal(array1, array1->values[i], array2->values[i])) return NO;
    return YES;
}

ZPRangeValueArray *ZPCopyRangeValueArrayWithZone(ZPRangeValueArray *array, ZPZone *zone) {
    ZPRangeValueArray *copy = ZPCreateRangeValueArrayWithZone(array->callBacks, array->list.count, array->sorted, zone);
    for (unsigned i = 0; i < array->list.count; ++i) {
        retain(array, array->values[i]);
        copy->values[i] = array->values[i];
    }
    std::copy_n(array->list.ranges, array->list.count, copy->list.ranges);
    copy->list.count = array->list.count;
    return copy;
}

ZPRange ZPRangeValueArrayRangeAtIndex(ZPRangeValueArray *array, unsigned index) {
    return ZPRangeArrayRangeAtIndex(&array->list, index);
}

void *ZPRangeValueArrayValueAtIndex(ZPRangeValueArray *array, unsigned index) {
    checkIndex(index, array->list.count);
    return array->values[index];
}

void ZPRangeValueArraySetRangeAtIndex(ZPRangeValueArray *array, ZPRange range, unsigned index) {
    checkMode(array, NO);
    ZPRangeArraySetRangeAtIndex(&array->list, range, index);
}

void ZPRangeValueArraySetValueAtIndex(ZPRangeValueArray *array, const void *value, unsigned index) {
    checkMode(array, NO);
    checkIndex(index, array->list.count);
    setValue(array, value, index);
}

void ZPRangeValueArrayInsertAtIndex(ZPRangeValueArray *array, ZPRange range, const void *value, unsigned index) {
    checkMode(array, NO);
    checkIndex(index, array->list.count + 1);
    insert(array, range, value, index);
}

void ZPRangeValueArrayRemoveAtIndex(ZPRangeValueArray *array, unsigned index) {
    checkMode(array, NO);
    checkIndex(index, array->list.count);
    removeRun(array, index, 1);
}

void ZPRangeValueArrayRemoveRangesWithValue(ZPRangeValueArray *array, const void *value) {
    for (unsigned i : entriesOf(array, value)) ZPRangeValueArrayRemoveAtIndex(array, i);
}

void ZPRangeValueArrayAddRangeValue(ZPRangeValueArray *array, ZPRange range, const void *value, BOOL mergeByRange) {
    checkMode(array, YES);
    if (!range.length) return;
    _ZPCheckRangeEnd(range, __func__);
    ZPRangeArray *list = &array->list;
    auto accepts = [&](unsigned i, ZPRange r) {
        return _ZPRangesCoalesce(list->ranges[i], r) && (mergeByRange || equal(array, value, array->values[i]));
    };
    unsigned p = _ZPPositionOfLocation(list, range.location), target = p;
    if (p && accepts(p - 1, range)) target = p - 1;
    else if (p == list->count || !accepts(p, range)) return insert(array, range, value, p);

    ZPRange whole = list->ranges[target] = _ZPUnionOfRanges(list->ranges[target], range);
    setValue(array, value, target);
    unsigned next = target + 1;
    for (; next < list->count && accepts(next, whole); ++next) whole = _ZPUnionOfRanges(whole, list->ranges[next]);
    list->ranges[target] = whole;
    removeRun(array, target + 1, next - target - 1);
}

void ZPRangeValueArrayRemoveRange(ZPRangeValueArray *array, ZPRange) {
    checkMode(array, YES);
    ZPLog("*** WARNING: ZPRangeValueArrayRemoveRange() unimplemented"_zp);
}

BOOL ZPRangeValueArrayValueForLocation(ZPRangeValueArray *array, unsigned location, void **value) {
    ZPRange *ranges = array->list.ranges;
    unsigned at = array->list.count;
    if (array->sorted) {
        unsigned p = _ZPPositionOfLocation(&array->list, location);
        if (p < at && _ZPRangeContains(ranges[p], location)) at = p;
        else if (p && _ZPRangeContains(ranges[p - 1], location)) at = p - 1;
        else return NO;
    } else {
        do
            if (!at--) return NO;
        while (!_ZPRangeContains(ranges[at], location));
    }
    if (value) *value = array->values[at];
    return YES;
}

void ZPRangeValueArrayChangeValueToValue(ZPRangeValueArray *array, const void *oldValue, const void *newValue) {
    for (unsigned i : entriesOf(array, oldValue)) setValue(array, newValue, i);
}

ZPString *ZPStringFromRangeValueArray(ZPRangeValueArray *array) {
    _ZPRangeText text(40 * std::uint64_t(array->list.count));
    text.add("(\n");
    for (unsigned i = 0; i < array->list.count; ++i) {
        ZPRange r = array->list.ranges[i];
        text.add("%s    {%u, %u} = <", i ? ",\n" : "", r.location, r.length);
        if (array->callBacks.describe) text.addString(array->callBacks.describe(array, array->values[i]));
        else text.add("0x%lx", reinterpret_cast<unsigned long>(array->values[i]));
        text.add(">");
    }
    text.add("\n)");
    return text.finish();
}
