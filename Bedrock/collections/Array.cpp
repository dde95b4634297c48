// SPDX-License-Identifier: MIT
// What every array does, on `count` and `objectAtIndex:`; a concrete array lends its storage instead.
#include <Bedrock/collections/Array+Internal.h>
#include <Bedrock/core/Scope.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/core/Memory.h>
#include <Bedrock/platform/kernel/MakeOnce.h>
#include <Bedrock/strings/ZPString.h>

#include <algorithm>
#include <cstring>

id *_ZPItemsOfArray(id array, unsigned &count) { return _ZPConcreteItems(array, count); }

_ZPElements::_ZPElements(ZPArray *array) : items(nullptr), count(0) {
    if (!array || (items = _ZPConcreteItems(array, count))) return;
    count = array->count();
    gather(array, {0, count});
}

_ZPElements::_ZPElements(ZPArray *array, ZPRange range) {
    if ((items = _ZPConcreteItems(array, count))) items += range.location;
    else gather(array, range);
    count = range.length;
}

void _ZPElements::gather(ZPArray *array, ZPRange range) {
    gathered = new (room) _ZPObjectBuffer(range.length);
    items = gathered->items;
    if (range.length) array->getObjects_range(items, range);
}

_ZPWalk::_ZPWalk(ZPArray *array) : _ZPWalk(array, {0, array ? array->count() : 0}) {}

_ZPWalk::_ZPWalk(ZPArray *array, ZPRange range) : _array(array), _range(range) {
    unsigned count;
    _isConcrete = array && _ZPConcreteItems(array, count);
    if (_isConcrete || !range.length) return;
    _ZPElements elements(array, range);
    for (id element : elements) _list.emplace_back(element.unchecked<ZPObject>());
}

unsigned _ZPWalk::indexOf(id object, bool identical, bool forward) {
    unsigned length = _range.length;
    if (!object || !length) return ZPNotFound;
    auto step = [&](unsigned i) { return forward ? i : length - 1 - i; };
    if (_isConcrete) {
        unsigned count = 0;
        const id *items = _ZPConcreteItems(_array.get(), count);
        length = _range.location < count ? std::min(length, count - _range.location) : 0;
        items += _range.location;
        for (unsigned i = 0; i < length; ++i)
            if (items[step(i)] == object) return step(i);
    } else {
        for (unsigned i = 0; i < length; ++i)
            if (_list[step(i)].get() == object) return step(i);
    }
    if (identical) return ZPNotFound;
    _ZPEqualTo equals(object);
    for (unsigned i = 0; i < length; ++i)
        if (id element = at(step(i)); element && equals(element)) return step(i);
    return ZPNotFound;
}

static ZPArray *emptyArray;
ZPArray *_ZPEmptyArray() {
    return ZPMakeOnce(
        emptyArray, []() -> ZPArray * { return ZPConcreteArray::allocate(0, nullptr); }, ZPDeallocateObject);
}

namespace {

struct ZPArrayClassMethods {
    static id allocWithZone(Class self, ZPZone *zone) {
        if (self == ZPArray::class_() || self == ZPConcreteArray::class_()) return ZPConcreteArray::allocate(4, zone);
        if (self == ZPMutableArray::class_()) self = ZPConcreteMutableArray::class_();
        return ZPAllocateObject(self, 0, zone);
    }
    static ZPArray *alloc(Class self) { return _ZPFront(self)->alloc(); }
    static id array(Class self) {
        if (self == ZPArray::class_()) return _ZPEmptyArray();
        return alloc(self)->init()->autorelease();
    }
    // A failed initialisation answers null.
    static id finished(id array) { return array ? array->autorelease() : array; }
    static id arrayWithArray(Class self, ZPArray *array) { return finished(alloc(self)->initWithArray(array)); }
    static id arrayWithArray_copyItems(Class self, ZPArray *array, BOOL copyItems) {
        return finished(alloc(self)->initWithArray_copyItems(array, copyItems));
    }
    static id arrayWithContentsOfFile(Class self, ZPString *path) {
        return finished(alloc(self)->initWithContentsOfFile(path));
    }
    static id arrayWithObjects_count(Class self, const id *objects, unsigned count) {
        if (self == ZPArray::class_()) return _ZPMakeArray(objects, count);
        return finished(alloc(self)->initWithObjects_count(objects, count));
    }
    static id arrayWithObject(Class self, id object) { return arrayWithObjects_count(self, &object, 1); }
    static id arrayWithObjects(Class self, id first, std::va_list rest) {
        _ZPObjectList list;
        _ZPGatherList(list, first, rest);
        return arrayWithObjects_count(self, list.items, list.count);
    }
};

struct ZPArrayMethods : ZPArray {
    // ---- initialisers ----
    id initWithObjects_count(const id *, unsigned) { _ZPRequestConcreteObject(this, "initWithObjects:count:"_sel); }
    id initWithObjects(id first, std::va_list rest) {
        _ZPObjectList list;
        _ZPGatherList(list, first, rest);
        return self()->initWithObjects_count(list.items, list.count);
    }
    id initWithArray(ZPArray *array) { return self()->initWithArray_copyItems(array, NO); }
    id initWithArray_copyItems(ZPArray *array, BOOL copyItems) {
        if (!copyItems) {
            _ZPElements elements(array);
            return self()->initWithObjects_count(elements.items, elements.count);
        }
        _ZPWalk walk(array);
        _ZPObjectBuffer copies(walk.count());
        _ZPReleaser releaser{copies.items, 0};
        ZPZone *zone = self()->zone();
        ZPRef<ZPArray> self = ZPAdopt<ZPArray>(static_cast<ZPArray *>(this));
        for (unsigned i = 0; i < walk.count(); ++i) copies.items[releaser.count++] = walk.at(i)->copyWithZone(zone);
        return self.detach()->initWithObjects_count(copies.items, walk.count());
    }

    // ---- primitives ----
    unsigned count() { ZPRequestConcreteImplementation(this, "count"_sel, ZPArray::class_()); }
    id objectAtIndex(unsigned) { ZPRequestConcreteImplementation(this, "objectAtIndex:"_sel, ZPArray::class_()); }

    // ---- elements ----
    unsigned size() {
        unsigned count;
        return _ZPConcreteItems(this, count) ? count : self()->count();
    }
    id lastObject() {
        unsigned count;
        if (id *items = _ZPConcreteItems(this, count)) return count ? items[count - 1] : id();
        count = self()->count();
        return count ? self()->objectAtIndex(count - 1) : id();
    }
    void getObjects(id *objects) { self()->getObjects_range(objects, {0, size()}); }
    void getObjects_range(id *objects, ZPRange range) {
        unsigned count;
        id *items = _ZPConcreteItems(this, count);
        if (!items) count = self()->count();
        _ZPCheckElements(this, "getObjects:range:"_sel, range, count);
        if (!range.length) return;
        if (items)
            std::memcpy(static_cast<void *>(objects), static_cast<void *>(items + range.location),
                        range.length * sizeof(id));
        else
            for (unsigned i = 0; i < range.length; ++i) objects[i] = self()->objectAtIndex(range.location + i);
    }

    // ---- searching ----
    unsigned search(SEL selector, id object, ZPRange range, bool identical) {
        _ZPCheckElements(this, selector, range, size());
        if (!object || !range.length) return ZPNotFound;
        unsigned index = _ZPWalk(this, range).indexOf(object, identical);
        return index == ZPNotFound ? index : range.location + index;
    }
    BOOL containsObject(id object) { return search("containsObject:"_sel, object, {0, size()}, false) != ZPNotFound; }
    unsigned indexOfObject(id object) { return search("indexOfObject:"_sel, object, {0, size()}, false); }
    unsigned indexOfObject_inRange(id object, ZPRange range) {
        return search("indexOfObject:inRange:"_sel, object, range, false);
    }
    unsigned indexOfObjectIdenticalTo(id object) {
        return search("indexOfObjectIdenticalTo:"_sel, object, {0, size()}, true);
    }
    unsigned indexOfObjectIdenticalTo_inRange(id object, ZPRange range) {
        return search("indexOfObjectIdenticalTo:inRange:"_sel, object, range, true);
    }
    unsigned indexOfObject_range_identical(id object, ZPRange range, BOOL identical) {
        return search("indexOfObject:range:identical:"_sel, object, range, identical);
    }
    unsigned indexOf(id object, int index, BOOL forward) {
        unsigned count = size();
        if (unsigned(index) >= count || index < 0) _ZPRaiseBounds(this, "indexOf:::"_sel, unsigned(index), count);
        if (!object) return ZPNotFound;
        unsigned first = forward ? unsigned(index) : 0;
        _ZPWalk walk(this, {first, forward ? count - first : unsigned(index) + 1});
        unsigned found = walk.indexOf(object, false, forward);
        return found == ZPNotFound ? found : first + found;
    }
    unsigned indexOfAttributeBySelector_equalToObject(SEL selector, id object) {
        _ZPWalk walk(this);
        for (unsigned i = 0; i < walk.count(); ++i)
            if (id element = walk.at(i); element && object->isEqual(element->performSelector(selector))) return i;
        return ZPNotFound;
    }
    id firstObjectCommonWithArray(ZPArray *array) {
        _ZPWalk walk(this), others(array);
        for (unsigned i = 0; i < walk.count(); ++i)
            if (id element = walk.at(i); others.indexOf(element, false) != ZPNotFound) return element;
        return nullptr;
    }
    BOOL isEqual(id other) {
        if (other.pointer() == this) return YES;
        if (!other) return NO;
        unsigned count;
        if (!_ZPConcreteItems(other, count) && !other->isKindOfClass(ZPArray::class_())) return NO;
        return self()->isEqualToArray(other);
    }
    BOOL isEqualToArray(ZPArray *array) {
        if (array == this) return YES;
        if (!array) return NO;
        unsigned ours = size(), theirs;
        if (!_ZPConcreteItems(array, theirs)) theirs = array->count();
        if (ours != theirs) return NO;
        _ZPWalk walk(this, {0, ours}), others(array, {0, ours});
        for (unsigned i = 0; i < ours; ++i) {
            id mine = walk.at(i), other = others.at(i);
            if (mine != other && (!mine || !other || !mine->isEqual(other))) return NO;
        }
        return YES;
    }
    unsigned hash() { return size(); }

    // ---- derived arrays ----
    ZPArray *arrayByAddingObject(id object) { return self()->arrayByAddingObjects_count(&object, 1); }
    ZPArray *arrayByAddingObjects_count(const id *objects, unsigned count) {
        unsigned ours = size();
        if (ours >= _ZPCollectionLimit || count >= _ZPCollectionLimit - ours)
            _ZPRaiseAbsurd(this, "arrayByAddingObjects:count:"_sel, "count", ours + count);
        _ZPObjectBuffer all(ours + count);
        if (ours) self()->getObjects_range(all.items, {0, ours});
        std::copy_n(objects, count, all.items + ours);
        return _ZPMakeArray(all.items, ours + count);
    }
    ZPArray *arrayByAddingObjectsFromArray(ZPArray *array) {
        _ZPElements others(array);
        return self()->arrayByAddingObjects_count(others.items, others.count);
    }
    ZPArray *arrayByApplyingSelector(SEL selector) {
        _ZPWalk walk(this);
        _ZPObjectList results;
        for (unsigned i = 0; i < walk.count(); ++i)
            if (id result = walk.at(i)->performSelector(selector)) results.add(result);
        return _ZPMakeArray(results.items, results.count);
    }
    ZPArray *arrayByExcludingObjectsInArray(ZPArray *array) {
        return self()->arrayByExcludingObjectsInArray_identical(array, NO);
    }
    ZPArray *arrayByExcludingIdenticalObjectsInArray(ZPArray *array) {
        return self()->arrayByExcludingObjectsInArray_identical(array, YES);
    }
    ZPArray *arrayByExcludingObjectsInArray_identical(ZPArray *array, BOOL identical) {
        _ZPWalk walk(this), others(array);
        if (!walk.count()) return _ZPEmptyArray();
        if (!others.count()) return self()->copy()->autorelease();
        std::vector<ZPRef<ZPObject>> kept;
        for (unsigned i = 0; i < walk.count(); ++i)
            if (id element = walk.at(i); element && others.indexOf(element, identical) == ZPNotFound)
                kept.emplace_back(element.unchecked<ZPObject>());
        _ZPObjectBuffer list(kept.size());
        for (std::size_t i = 0; i < kept.size(); ++i) list.items[i] = kept[i].get();
        return _ZPMakeArray(list.items, unsigned(kept.size()));
    }
    ZPArray *subarrayWithRange(ZPRange range) {
        _ZPCheckElements(this, "subarrayWithRange:"_sel, range, size());
        if (!range.length) return _ZPEmptyArray();
        _ZPElements elements(this, range);
        return _ZPMakeArray(elements.items, elements.count);
    }
    ZPString *componentsJoinedByString(ZPString *separator) {
        _ZPWalk walk(this);
        unsigned count = walk.count();
        if (!count) return ""_zp;
        if (count == 1) return walk.at(0)->description()->copy()->autorelease();
        unsigned gap = separator->length();
        std::vector<ZPRef<ZPString>> texts;
        texts.reserve(count);
        std::uint64_t length = std::uint64_t(gap) * (count - 1);
        for (unsigned i = 0; i < count; ++i) {
            texts.emplace_back(walk.at(i)->description());
            length += texts.back()->length();
        }
        if (length > 0x7FFFFFFF) _ZPRaiseAbsurd(this, "componentsJoinedByString:"_sel, "count", unsigned(length));
        _ZPBlock block(_ZPAllocate<unichar>(length, nullptr, "a string of %u characters", unsigned(length)));
        unichar *at = block, *end = at + length;
        for (unsigned i = 0; i < count; ++i) {
            ZPString *text = texts[i].get();
            // A text that changes its length meanwhile does not run past the buffer.
            auto put = [&](ZPString *s) {
                unsigned n = s->length();
                if (n > end - at) n = unsigned(end - at);
                if (n) s->getCharacters_range(at, {0, n});
                at += n;
            };
            if (i) put(separator);
            put(text);
        }
        unichar *units = block.take();
        return ZPString::alloc()
            ->initWithCharactersNoCopy_length_freeWhenDone(units, unsigned(at - units), YES)
            ->autorelease();
    }

    // ---- messages to all ----
    void makeObjectsPerform(SEL selector) { makeObjectsPerform_withObject(selector, nullptr); }
    void makeObjectsPerformSelector(SEL selector) { makeObjectsPerform_withObject(selector, nullptr); }
    void makeObjectsPerformSelector_withObject(SEL selector, id object) {
        makeObjectsPerform_withObject(selector, object);
    }
    void makeObjectsPerform_withObject(SEL selector, id object) {
        for (unsigned i = 0; i < size(); ++i) {
            unsigned count;
            id *items = _ZPConcreteItems(this, count);
            ZPRef<ZPObject> element = (items ? items[i] : self()->objectAtIndex(i)).unchecked<ZPObject>();
            element->performSelector_withObject(selector, object);
        }
    }

    // ---- enumeration ----
    ZPEnumerator *enumerator(BOOL reverse) {
        unsigned count;
        if (id *items = _ZPConcreteItems(this, count))
            return ZPIdEnumerator::alloc()
                ->initWithObjects_count_target_reverse_freeWhenDone(items, count, this, reverse, NO)
                ->autorelease();
        count = self()->count();
        id *list = _ZPAllocateCleared<id>(count, nullptr, "a list of objects");
        ZPIdEnumerator *e = ZPIdEnumerator::alloc()
                                ->initWithObjects_count_target_reverse_freeWhenDone(list, count, this, reverse, YES)
                                ->autorelease();
        if (count) self()->getObjects_range(list, {0, count});
        return e;
    }
    ZPEnumerator *objectEnumerator() { return enumerator(NO); }
    ZPEnumerator *reverseObjectEnumerator() { return enumerator(YES); }

    // ---- copies ----
    id copyWithZone(ZPZone *zone) { return ZPArray::allocWithZone(zone)->initWithArray_copyItems(this, YES); }
    id mutableCopyWithZone(ZPZone *zone) {
        return ZPMutableArray::allocWithZone(zone)->initWithArray_copyItems(this, NO);
    }
    Class classForCoder() { return ZPArray::class_(); }
};

}  // namespace

ZP_SAME_FRONT(ZPArray, _ZPArrayAbove, initWithObjects_count, count, objectAtIndex);
ZP_IMPLEMENT_WITH(ZPArray, ZPArrayMethods, adopts(ZPCopying, ZPMutableCopying), initWithObjects_count,
                  variadic(initWithObjects), initWithArray, initWithArray_copyItems, count, objectAtIndex, lastObject,
                  getObjects, getObjects_range, containsObject, indexOfObject, indexOfObject_inRange,
                  indexOfObjectIdenticalTo, indexOfObjectIdenticalTo_inRange, indexOfObject_range_identical,
                  named(indexOf, "indexOf:::"), indexOfAttributeBySelector_equalToObject, firstObjectCommonWithArray,
                  isEqual, isEqualToArray, hash, arrayByAddingObject, arrayByAddingObjects_count,
                  arrayByAddingObjectsFromArray, arrayByApplyingSelector, arrayByExcludingObjectsInArray,
                  arrayByExcludingIdenticalObjectsInArray, arrayByExcludingObjectsInArray_identical, subarrayWithRange,
                  componentsJoinedByString, makeObjectsPerform, makeObjectsPerform_withObject,
                  makeObjectsPerformSelector, makeObjectsPerformSelector_withObject, objectEnumerator,
                  reverseObjectEnumerator, copyWithZone, mutableCopyWithZone, classForCoder,
                  classMethodsOf(ZPArrayClassMethods, allocWithZone, array, arrayWithArray, arrayWithArray_copyItems,
                                 arrayWithContentsOfFile, arrayWithObject, arrayWithObjects_count,
                                 variadic(arrayWithObjects)));
