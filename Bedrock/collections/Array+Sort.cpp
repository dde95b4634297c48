// SPDX-License-Identifier: MIT
// Sorting: a stable merge sort over lists of references, and the array operations on it.
#include <Bedrock/collections/Array+Internal.h>
#include <Bedrock/collections/MergeSort.h>
#include <Bedrock/core/Scope.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/tables/ZPMapTable.h>

#include <cstring>

id *_ZPMergeSort(unsigned count, id *source, id *result, id *scratch, ZPSortFunction *compare, void *context,
                 BOOL checkPresorted) {
    auto order = [=](id a, id b) { return compare(a, b, context); };
    return _ZPMergeSorted(count, source, result, scratch, order, checkPresorted != NO);
}

namespace {

struct ZPArraySorting : ZPArray {
    ZPArray *sortedArrayUsingFunction_context(ZPSortFunction *compare, void *context) {
        // The new array keeps what is compared, also when the comparison takes it out of this one.
        _ZPElements elements(this);
        ZPArray *sorted = _ZPMakeArray(elements.items, elements.count);
        unsigned count = 0;
        id *items = _ZPConcreteItems(sorted, count);
        _ZPObjectBufferOf<2 * 128> room(2 * std::size_t(count));
        id *list = _ZPMergeSort(count, items, room.items, room.items + count, compare, context, count > 63);
        if (list != items) _ZPCopyList(items, list, count);
        return sorted;
    }
    ZPArray *sortedArrayUsingSelector(SEL selector) {
        return self()->sortedArrayUsingFunction_context(_ZPCompareBySelector, const_cast<objc_selector *>(selector));
    }

    // A hint holds the hash of each element in element order, as little-endian 32-bit words.
    ZPData *sortedArrayHint() {
        _ZPWalk walk(this);
        ZPMutableData *data = ZPMutableData::dataWithCapacity(4 * walk.count());
        for (unsigned i = 0; i < walk.count(); ++i) {
            unsigned hash = walk.at(i)->hash();
            unsigned char word[4] = {static_cast<unsigned char>(hash), static_cast<unsigned char>(hash >> 8),
                                     static_cast<unsigned char>(hash >> 16), static_cast<unsigned char>(hash >> 24)};
            data->appendBytes_length(word, 4);
        }
        return data;
    }
    // Puts the elements that the hint knows into its order first; what it does not know follows, then, at
    // the end, the elements whose hashes cannot be told apart.
    ZPArray *sortedArrayUsingFunction_context_hint(ZPSortFunction *compare, void *context, ZPData *sortedArrayHint) {
        unsigned count = self()->count();
        if (count < 4) return self()->sortedArrayUsingFunction_context(compare, context);
        _ZPObjectBufferOf<4 * 128> buffer(4 * std::size_t(count));
        id *work = buffer.items, *gathered = work + count;
        self()->getObjects_range(gathered, {0, count});
        std::vector<ZPRef<ZPObject>> kept;  // while they are asked
        for (unsigned i = 0; i < count; ++i) kept.emplace_back(gathered[i].unchecked<ZPObject>());
        unsigned front = 0, back = count;
        ZPScope map{ZPCreateMapTable(ZPIntMapKeyCallBacks, ZPNonOwnedPointerMapValueCallBacks, 3 * count),
                    ZPFreeMapTable};
        auto key = [](unsigned hash) { return reinterpret_cast<const void *>(std::uintptr_t(hash)); };
        for (unsigned i = 0; i < count; ++i) {
            const void *hash = key(gathered[i]->hash());
            if (hash == ZPNotAnIntMapKey || ZPMapMember(map, hash, nullptr, nullptr)) work[--back] = gathered[i];
            else ZPMapInsertKnownAbsent(map, hash, gathered[i].pointer());
        }
        auto *bytes = static_cast<const unsigned char *>(sortedArrayHint->bytes());
        for (unsigned words = sortedArrayHint->length() / 4; words; --words, bytes += 4) {
            const void *hash = key(bytes[0] | bytes[1] << 8 | bytes[2] << 16 | unsigned(bytes[3]) << 24);
            if (hash == ZPNotAnIntMapKey) continue;
            if (void *element = ZPMapGet(map, hash)) {
                work[front++] = id(static_cast<objc_object *>(element));
                ZPMapRemove(map, hash);
            }
        }
        ZPMapEnumerator rest = ZPEnumerateMapTable(map);
        for (void *element; ZPNextMapEnumeratorPair(&rest, nullptr, &element);)
            work[front++] = id(static_cast<objc_object *>(element));
        if (front != back)
            ZPLog("%@: broken invariant, %d != %d"_zp,
                  _ZPMethodExceptionProem(this, "sortedArrayUsingFunction:context:hint:"_sel), front, back);
        return _ZPMakeArray(
            _ZPMergeSort(count, work, work + count, work + 2 * std::size_t(count), compare, context, YES), count);
    }
    ZPArray *sortedArrayUsingSelector_hint(SEL selector, ZPData *sortedArrayHint) {
        return self()->sortedArrayUsingFunction_context_hint(_ZPCompareBySelector,
                                                             const_cast<objc_selector *>(selector), sortedArrayHint);
    }
};

// The elements of an array, sorted: three lists in one block, on the stack up to 128 elements. They are kept: a
// comparison may take them out of the array.
struct Sorted {
    _ZPObjectBufferOf<3 * 128> buffer;
    id *items = buffer.items;
    _ZPReleaser releaser{items, 0};
    Sorted(ZPArray *array, unsigned count, ZPSortFunction *compare, void *context) : buffer(3 * std::size_t(count)) {
        array->getObjects_range(items, {0, count});
        for (; releaser.count < count; ++releaser.count) items[releaser.count]->retain();
        items = _ZPMergeSort(count, buffer.items, buffer.items + count, buffer.items + 2 * std::size_t(count), compare,
                             context, count > 63);
    }
};

struct ZPMutableArraySorting : ZPMutableArray {
    void sortUsingFunction_context(ZPSortFunction *compare, void *context) {
        unsigned count = self()->count();
        if (count < 2) return;
        Sorted sorted(this, count, compare, context);
        unsigned now;
        if (id *items = _ZPConcreteItems(this, now)) {
            // A comparison that changed the array has made this order worthless.
            if (now != count) return;
            // The references change hands: what lies there now is released instead.
            id *former = sorted.buffer.items + 2 * std::size_t(count);
            _ZPCopyList(former, items, count);
            _ZPCopyList(items, sorted.items, count);
            sorted.releaser.items = former;
            return;
        }
        for (unsigned i = 0; i < count; ++i) self()->replaceObjectAtIndex_withObject(i, sorted.items[i]);
    }
    void sortUsingSelector(SEL selector) {
        self()->sortUsingFunction_context(_ZPCompareBySelector, const_cast<objc_selector *>(selector));
    }
};

}  // namespace

ZP_CATEGORY(ZPArray, ZPArraySorting, sortedArrayUsingFunction_context, sortedArrayUsingSelector, sortedArrayHint,
            sortedArrayUsingFunction_context_hint, sortedArrayUsingSelector_hint);

ZP_CATEGORY(ZPMutableArray, ZPMutableArraySorting, sortUsingFunction_context, sortUsingSelector);
