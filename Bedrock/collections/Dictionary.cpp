// SPDX-License-Identifier: MIT
// What every dictionary does, on `count`, `objectForKey:` and `keyEnumerator`, and every mutable one, on
// `setObject:forKey:` and `removeObjectForKey:` too.
#include <Bedrock/collections/Array+Internal.h>
#include <Bedrock/collections/Dictionary+Internal.h>
#include <Bedrock/platform/kernel/MakeOnce.h>

static ZPDictionary *emptyDictionary;
ZPDictionary *_ZPEmptyDictionary() {
    return ZPMakeOnce(
        emptyDictionary,
        []() -> ZPDictionary * { return ZPAllocateObject(ZPConcreteDictionary::class_(), 0, nullptr); },
        ZPDeallocateObject);
}

namespace {

// Objects and keys of all entries, in enumeration order.
struct Entries {
    _ZPObjectList objects, keys;
    explicit Entries(ZPDictionary *dictionary) {
        _ZPForEachEntry(dictionary, [this](id key, id object) {
            keys.add(key);
            objects.add(object);
            return true;
        });
    }
};

// Splits a list of object, key, object, key ...
struct Pairs {
    _ZPObjectList objects, keys;
    Pairs(id receiver, SEL selector, id first, std::va_list rest) {
        _ZPObjectList all;
        _ZPGatherList(all, first, rest);
        if (all.count % 2)
            ZPException::raise_format(ZPInvalidArgumentException, "%@: second object of each pair must be non-nil"_zp,
                                      _ZPMethodExceptionProem(receiver, selector));
        for (unsigned i = 0; i < all.count; i += 2) {
            objects.add(all.items[i]);
            keys.add(all.items[i + 1]);
        }
    }
};

struct ZPDictionaryClassMethods {
    static id allocWithZone(Class self, ZPZone *zone) {
        if (self == ZPDictionary::class_()) self = ZPConcreteDictionary::class_();
        else if (self == ZPMutableDictionary::class_()) self = ZPConcreteMutableDictionary::class_();
        return ZPAllocateObject(self, 0, zone);
    }
    struct New : _ZPNewInstance {
        ZPDictionary *dictionary;
        explicit New(Class self) : New(_ZPFront(self)->alloc().as<ZPDictionary>()) {}
        explicit New(ZPDictionary *d)
            : _ZPNewInstance(d, d->isa == ZPConcreteDictionary::class_() ||
                                    d->isa == ZPConcreteMutableDictionary::class_()),
              dictionary(d) {}
        ZPDictionary *operator->() const { return dictionary; }
    };
    static id dictionary(Class self) {
        if (self == ZPDictionary::class_()) return _ZPEmptyDictionary();
        New made(self);
        return made.finish(made->init());
    }
    static id dictionaryWithObjects_forKeys_count(Class self, const id *objects, const id *keys, unsigned count) {
        New made(self);
        return made.finish(made->initWithObjects_forKeys_count(objects, keys, count));
    }
    static id dictionaryWithObject_forKey(Class self, id object, id key) {
        return dictionaryWithObjects_forKeys_count(self, &object, &key, 1);
    }
    static id dictionaryWithObjects_forKeys(Class self, ZPArray *objects, ZPArray *keys) {
        New made(self);
        return made.finish(made->initWithObjects_forKeys(objects, keys));
    }
    static id dictionaryWithObjectsAndKeys(Class self, id first, std::va_list rest) {
        Pairs pairs(self, "dictionaryWithObjectsAndKeys:"_sel, first, rest);
        return dictionaryWithObjects_forKeys_count(self, pairs.objects.items, pairs.keys.items, pairs.keys.count);
    }
    static id dictionaryWithContentsOfFile(Class self, ZPString *path) {
        New made(self);
        return made.finish(made->initWithContentsOfFile(path));
    }
    static id dictionaryWithDictionary(Class self, ZPDictionary *other) {
        New made(self);
        return made.finish(made->initWithDictionary(other));
    }
    static id dictionaryWithCapacity(Class self, unsigned capacity) {
        New made(self);
        return made.finish(static_cast<ZPMutableDictionary *>(made.dictionary)->initWithCapacity(capacity));
    }
};

struct ZPDictionaryMethods : ZPDictionary {
    // ---- initialisers ----
    id initWithObjects_forKeys_count(const id *, const id *, unsigned) {
        _ZPRequestConcreteObject(this, "initWithObjects:forKeys:count:"_sel);
    }
    id initWithObjectsAndKeys(id first, std::va_list rest) {
        Pairs pairs(this, "initWithObjectsAndKeys:"_sel, first, rest);
        return self()->initWithObjects_forKeys_count(pairs.objects.items, pairs.keys.items, pairs.keys.count);
    }
    id initWithObjects_forKeys(ZPArray *objects, ZPArray *keys) {
        _ZPElements o(objects), k(keys);
        if (o.count != k.count)
            ZPException::raise_format(ZPInvalidArgumentException,
                                      "%@: number of objects (%d) not equal to number of keys (%d)"_zp,
                                      _ZPMethodExceptionProem(this, "initWithObjects:forKeys:"_sel), o.count, k.count);
        return self()->initWithObjects_forKeys_count(o.items, k.items, o.count);
    }
    id initWithDictionary(ZPDictionary *other) { return self()->initWithDictionary_copyItems(other, NO); }
    id initWithDictionary_copyItems(ZPDictionary *other, BOOL copyItems) {
        Entries entries(other);
        unsigned count = entries.keys.count;
        if (!copyItems) return self()->initWithObjects_forKeys_count(entries.objects.items, entries.keys.items, count);
        _ZPObjectBuffer copies(count);
        _ZPReleaser releaser{copies.items, 0};
        ZPZone *zone = self()->zone();
        for (; releaser.count < count; ++releaser.count)
            copies.items[releaser.count] = entries.objects.items[releaser.count]->copyWithZone(zone);
        return self()->initWithObjects_forKeys_count(copies.items, entries.keys.items, count);
    }

    // ---- primitives ----
    unsigned count() { ZPRequestConcreteImplementation(this, "count"_sel, ZPDictionary::class_()); }
    id objectForKey(id) { ZPRequestConcreteImplementation(this, "objectForKey:"_sel, ZPDictionary::class_()); }
    ZPEnumerator *keyEnumerator() {
        ZPRequestConcreteImplementation(this, "keyEnumerator"_sel, ZPDictionary::class_());
    }

    // ---- entries ----
    ZPEnumerator *objectEnumerator() { return _ZPDictionaryEnumerator::overValues(this); }
    template <class F> ZPArray *gather(const F &take) {
        _ZPObjectList list;
        _ZPForEachEntry(this, [&](id key, id object) {
            if (id taken = take(key, object)) list.add(taken);
            return true;
        });
        return _ZPMakeArray(list.items, list.count);
    }
    ZPArray *allKeys() {
        return gather([](id key, id) { return key; });
    }
    ZPArray *allValues() {
        return gather([](id, id object) { return object; });
    }
    ZPArray *allKeysForObject(id object) {
        return gather([=](id key, id value) { return object && _ZPSameOrEqual(value, object) ? key : id(); });
    }
    BOOL containsKey(id key) { return self()->objectForKey(key) != nullptr; }
    BOOL containsObject(id object) {
        BOOL found = NO;
        if (object)
            _ZPForEachEntry(this, [&](id, id value) {
                found = _ZPSameOrEqual(value, object);
                return !found;
            });
        return found;
    }
    unsigned countForObject(id object) {
        unsigned count = 0;
        if (object)
            _ZPForEachEntry(this, [&](id, id value) {
                count += _ZPSameOrEqual(value, object);
                return true;
            });
        return count;
    }
    ZPArray *objectsForKeys_notFoundMarker(ZPArray *keys, id marker) {
        _ZPElements k(keys);
        _ZPObjectBuffer objects(k.count);
        for (unsigned i = 0; i < k.count; ++i) {
            id object = self()->objectForKey(k.items[i]);
            objects.items[i] = object ? object : marker;
        }
        return _ZPMakeArray(objects.items, k.count);
    }
    void getObjects_forKeys(id *objects, id *keys) {
        _ZPForEachEntry(this, [&](id key, id object) {
            if (objects) *objects++ = object;
            if (keys) *keys++ = key;
            return true;
        });
    }
    ZPArray *keysSortedByValueUsingSelector(SEL selector) {
        struct Context {
            ZPDictionary *dictionary;
            SEL selector;
        } context{this, selector};
        return self()->allKeys()->sortedArrayUsingFunction_context(
            [](id a, id b, void *c) {
                auto *context = static_cast<Context *>(c);
                return _ZPCompareBySelector(context->dictionary->objectForKey(a), context->dictionary->objectForKey(b),
                                            const_cast<objc_selector *>(context->selector));
            },
            &context);
    }
    ZPDictionary *invertedDictionary() {
        Entries entries(this);
        return ZPDictionary::dictionaryWithObjects_forKeys_count(entries.keys.items, entries.objects.items,
                                                                 entries.keys.count);
    }

    // ---- equality ----
    BOOL isEqual(id other) {
        if (other.pointer() == this) return YES;
        if (!other || !other->isKindOfClass(ZPDictionary::class_())) return NO;
        return self()->isEqualToDictionary(other);
    }
    BOOL isEqualToDictionary(ZPDictionary *other) {
        if (other == this) return YES;
        if (!other || self()->count() != other->count()) return NO;
        ZPSimpleDictionary *ours, *theirs;
        BOOL equal = YES;
        // Two tables compare by the hashes they have stored.
        if (_ZPConcreteTable(this, ours) && _ZPConcreteTable(other, theirs)) {
            if (!ours || !theirs) return YES;
            ZPSimpleForEach(ours, [&](ZPSimpleDictionaryBucket *b) -> bool {
                auto *match = ZPSimpleFind(theirs, b->key, b->state, _ZPObjectEquality());
                equal = match && _ZPSameOrEqual(_ZPValue(b), _ZPValue(match));
                return equal;
            });
            return equal;
        }
        _ZPForEachEntry(this, [&](id key, id value) {
            id match = other->objectForKey(key);
            equal = match && _ZPSameOrEqual(value, match);
            return equal;
        });
        return equal;
    }
    unsigned hash() { return self()->count(); }

    // ---- copies ----
    id copyWithZone(ZPZone *zone) { return ZPDictionary::allocWithZone(zone)->initWithDictionary_copyItems(this, YES); }
    id mutableCopyWithZone(ZPZone *zone) {
        return ZPMutableDictionary::allocWithZone(zone)->initWithDictionary_copyItems(this, NO);
    }
    Class classForCoder() { return ZPDictionary::class_(); }
};

struct ZPMutableDictionaryMethods : ZPMutableDictionary {
    id initWithCapacity(unsigned) { _ZPRequestConcreteObject(this, "initWithCapacity:"_sel); }
    void setObject_forKey(id, id) {
        ZPRequestConcreteImplementation(this, "setObject:forKey:"_sel, ZPMutableDictionary::class_());
    }
    void removeObjectForKey(id) {
        ZPRequestConcreteImplementation(this, "removeObjectForKey:"_sel, ZPMutableDictionary::class_());
    }
    void setDictionary(ZPDictionary *other) {
        self()->removeAllObjects();
        self()->addEntriesFromDictionary(other);
    }
    void addEntriesFromDictionary(ZPDictionary *other) {
        _ZPForEachEntry(other, [this](id key, id object) {
            self()->setObject_forKey(object, key);
            return true;
        });
    }
    void removeAllObjects() { self()->removeObjectsForKeys(self()->allKeys()); }
    void removeObjectsForKeys(ZPArray *keys) {
        for (unsigned i = keys ? keys->count() : 0; i-- > 0;) self()->removeObjectForKey(keys->objectAtIndex(i));
    }
    void removeKeysForObject(id object) {
        _ZPObjectList keys;
        _ZPForEachEntry(this, [&](id key, id value) {
            if (value == object) keys.add(key);
            return true;
        });
        self()->removeObjectsForKeys(_ZPMakeArray(keys.items, keys.count));
    }
    void invert() {
        ZPArray *keys = self()->allKeys(), *values = self()->objectsForKeys_notFoundMarker(keys, nullptr);
        self()->removeObjectsForKeys(keys);
        for (unsigned i = 0, count = keys->count(); i < count; ++i)
            self()->setObject_forKey(keys->objectAtIndex(i), values->objectAtIndex(i));
    }
    Class classForCoder() { return ZPMutableDictionary::class_(); }
};

}  // namespace

ZP_SAME_FRONT(ZPDictionary, _ZPDictionaryAbove, dictionaryWithObjects_forKeys_count, objectForKey);
ZP_SAME_FRONT(ZPMutableDictionary, _ZPMutableDictionaryAbove, setObject_forKey);
ZP_IMPLEMENT_WITH(ZPDictionary, ZPDictionaryMethods, adopts(ZPCopying, ZPMutableCopying), initWithObjects_forKeys_count,
                  variadic(initWithObjectsAndKeys), initWithObjects_forKeys, initWithDictionary,
                  initWithDictionary_copyItems, count, objectForKey, keyEnumerator, objectEnumerator, allKeys,
                  allValues, allKeysForObject, containsKey, containsObject, countForObject,
                  objectsForKeys_notFoundMarker, getObjects_forKeys, keysSortedByValueUsingSelector, invertedDictionary,
                  isEqual, isEqualToDictionary, hash, copyWithZone, mutableCopyWithZone, classForCoder,
                  classMethodsOf(ZPDictionaryClassMethods, allocWithZone, dictionary,
                                 dictionaryWithObjects_forKeys_count, dictionaryWithObject_forKey,
                                 dictionaryWithObjects_forKeys, variadic(dictionaryWithObjectsAndKeys),
                                 dictionaryWithContentsOfFile, dictionaryWithDictionary));

ZP_IMPLEMENT_WITH(ZPMutableDictionary, ZPMutableDictionaryMethods, initWithCapacity, setObject_forKey,
                  removeObjectForKey, setDictionary, addEntriesFromDictionary, removeAllObjects, removeObjectsForKeys,
                  removeKeysForObject, invert, classForCoder,
                  classMethodsOf(ZPDictionaryClassMethods, dictionaryWithCapacity));
