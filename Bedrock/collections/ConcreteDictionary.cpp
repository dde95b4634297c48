// SPDX-License-Identifier: MIT
// The concrete dictionaries on their tables, and the enumerator over a table.
#include <Bedrock/collections/Array+Internal.h>
#include <Bedrock/core/Scope.h>
#include <Bedrock/collections/Dictionary+Internal.h>
#include <Bedrock/platform/objects/Slabs.h>

BOOL _ZPStoredObjectsEqual(void *, const void *stored, const void *probe) { return _ZPObjectEquality()(stored, probe); }
BOOL _ZPKeyedObjectsEqual(void *, const void *stored, const void *probe) { return _ZPObjectEquality()(stored, probe); }

namespace {

using Table = ZPSimpleDictionary;
using Bucket = ZPSimpleDictionaryBucket;

Table *newTable(unsigned capacity, ZPZone *zone) {
    return ZPCreateSimpleDictionary(capacity, _ZPStoredObjectsEqual, zone);
}

void releaseEntry(void *, void *key, void *value) {
    id(_ZPStored(key))->release();
    id(_ZPStored(value))->release();
}

void destroyTable(Table *&table) {
    if (!table) return;
    ZPSimpleForEach(table, [](Bucket *b) { releaseEntry(nullptr, b->key, b->value); });
    ZPFreeSimpleDictionary(table);
    table = nullptr;
}

[[noreturn]] ZP_COLD void raise(id receiver, SEL selector, ZPString *format) {
    ZPException::raise_format(ZPInvalidArgumentException, format, _ZPMethodExceptionProem(receiver, selector));
}

ZP_INLINE void checkEntry(id receiver, SEL selector, id object, id key) {
    if (!key) [[unlikely]]
        raise(receiver, selector, "%@: attempt to insert nil key"_zp);
    if (!object) [[unlikely]]
        raise(receiver, selector, "%@: attempt to insert nil value"_zp);
}

// Whether a key of this class is copied, hashed and compared by the library's own code only.
ZP_INLINE bool isQuiet(id key) {
    Class cls = key.pointer()->isa;
    return cls == ZPInlineCString::class_() || cls == ZPConstantString::class_();
}

ZP_INLINE unsigned hashIn(Table *table, id key) {
    return _ZPIsKeyed(table) ? _ZPKeyedHashOfObject(key) : _ZPHashOfObject(key);
}

// Looks for a key while whoever is asked for a hash or for equality may change the table: then again, in the new one.
struct Search {
    Table *const *reference;
    id key;
    bool isKeyed = _ZPIsKeyed(*reference);
    unsigned hash = hashIn(*reference, key);

    Search(Table *const *table, id k) : reference(table), key(k) { agree(); }
    // Whether the hash had to be made anew.
    bool agree() {
        bool was = isKeyed;
        if ((isKeyed = _ZPIsKeyed(*reference)) == was) [[likely]]
            return false;
        hash = hashIn(*reference, key);
        return true;
    }
    Bucket *find(Bucket **place = nullptr) {
        for (int tries = 0; tries < 16; ++tries) {
            Table *table = *reference;
            unsigned info = table->info;
            bool changed = false;
            Bucket *b = ZPSimpleFind(
                table, key.pointer(), hash,
                [&](const void *stored, const void *probe) {
                    bool same = _ZPObjectEquality()(stored, probe);
                    if (*reference == table && table->info == info) [[likely]]
                        return same;
                    return changed = true;
                },
                place);
            if (!changed) [[likely]]
                return b;
            agree();
        }
        // It never stands still: what is identical can be told without a message.
        return ZPSimpleFind(*reference, key.pointer(), hash, ZPSimpleIdentityOnly(), place);
    }
};

// The hash of a string reads a part of it, so that whoever writes a text can make many keys of one hash. When a table
// is full and its entries lie far from where they belong, they are hashed anew by all of their text. Answers whether
// the table has become another one.
ZP_COLD bool becomeKeyed(Table **reference) {
    Table *table = *reference;
    unsigned count = ZPSimpleCount(table), mask = ZPSimpleBuckets(table) - 1;
    if (count < 1000 || _ZPIsKeyed(table)) return false;  // so few cost little, however they lie
    std::uint64_t distance = 0, most = 16 * std::uint64_t(count);
    ZPSimpleForEach(table, [&](Bucket *b) -> bool {
        unsigned hash = b->state & ZPSimpleHashMask, step = ZPSimpleStep(hash, mask);
        for (unsigned i = hash & mask; &table->buckets[i] != b && distance <= most; i = (i + step) & mask) ++distance;
        return distance <= most;
    });
    if (distance <= most) return false;
    // Keys of a client's classes may do anything while they are asked: then this was the wrong moment.
    std::vector<std::pair<ZPRef<ZPObject>, unsigned>> keys;
    keys.reserve(count);
    ZPSimpleForEach(table, [&](Bucket *b) { keys.emplace_back(_ZPKey(b).unchecked<ZPObject>(), 0); });
    unsigned strings = 0;  // what is none has one hash only, and stays where it is
    for (auto &[key, hash] : keys) strings += key->isKindOfClass(ZPString::class_());
    if (strings < count / 2) return false;
    for (auto &[key, hash] : keys) hash = _ZPKeyedHashOfObject(key.get());
    if (*reference != table || ZPSimpleCount(table) != count) return false;
    ZPScope fresh{ZPCreateSimpleDictionary(count, _ZPKeyedObjectsEqual, ZPZoneFromPointer(table)),
                  ZPFreeSimpleDictionary};
    unsigned at = 0;
    bool isSame = true;
    ZPSimpleForEach(table, [&](Bucket *b) {
        unsigned hash = keys[at].second;
        isSame = isSame && keys[at++].first.get() == _ZPStored(b->key);
        Bucket *place = nullptr;
        ZPSimpleFind(static_cast<Table *>(fresh), b->key, hash, ZPSimpleIdentityOnly(), &place);
        ZPSimplePut(static_cast<Table *>(fresh), place,
                    {(hash & ZPSimpleHashMask) | ZPSimpleOccupied, b->key, b->value});
    });
    if (!isSame) return false;
    fresh->retainCount = table->retainCount;
    *reference = fresh.take();
    ZPFreeSimpleDictionary(table);
    return true;
}

// One guard for both, which is ready before anything is made: two made insertions slower.
struct Owned {
    objc_object *key = nullptr, *value = nullptr;
    ~Owned() {
        id(key)->release();
        id(value)->release();
    }
};

void replace(Bucket *b, id object) {
    id old = _ZPValue(b);
    b->value = object->retain().pointer();
    old->release();
}

bool isFull(Table *table) { return ZPSimpleCount(table) >= ZPSimpleThreshold(ZPSimpleClass(table)); }

// The same for a key that, or a stored one of whose hash, may be anybody's code.
[[gnu::noinline]] void setAnyEntry(id receiver, const char *selector, Table **table, ZPZone *zone, id object, id key) {
    Search search(table, key);
    Bucket *place, *b = search.find(&place);
    if (b) return replace(b, object);
    Owned owned;
    owned.key = key->copyWithZone(zone).pointer();
    owned.value = object->retain().pointer();
    if (!owned.key) [[unlikely]]
        raise(receiver, sel_registerName(selector), "%@: attempt to insert nil key"_zp);
    // Copying may have entered and removed keys, this one too.
    if (isFull(*table)) becomeKeyed(table);
    search.agree();
    if ((b = search.find(&place))) {
        owned.value = static_cast<objc_object *>(std::exchange(b->value, owned.value));
        return;
    }
    ZPSimpleAdd(table, place, {(search.hash & ZPSimpleHashMask) | ZPSimpleOccupied, owned.key, owned.value});
    owned.key = owned.value = nullptr;
}

// Sets a value, neither key nor value being null. The stored key is a copy in the zone.
ZP_INLINE void setEntry(id receiver, const char *selector, Table **table, ZPZone *zone, id object, id key) {
    if (!isQuiet(key) || _ZPIsKeyed(*table)) [[unlikely]]
        return setAnyEntry(receiver, selector, table, zone, object, key);
    // What would be asked by anybody's code ends the search, as if it were equal.
    auto isInline = [](const void *item) { return _ZPStored(item)->isa == ZPInlineCString::class_(); };
    auto equals = [=](const void *stored, const void *probe) {
        return !isInline(stored) || !isInline(probe) || _ZPObjectEquality()(stored, probe);
    };
    unsigned hash = _ZPHashOfObject(key);
    Bucket *place, *b = ZPSimpleFind(*table, key.pointer(), hash, equals, &place);
    if (b && (b->key == key.pointer() || (isInline(b->key) && isInline(key.pointer())))) return replace(b, object);
    if (b || isFull(*table)) [[unlikely]]
        return setAnyEntry(receiver, selector, table, zone, object, key);
    Owned owned;
    owned.key = key->copyWithZone(zone).pointer();
    owned.value = object->retain().pointer();
    ZPSimpleAdd(table, place, {(hash & ZPSimpleHashMask) | ZPSimpleOccupied, owned.key, owned.value});
    owned.key = owned.value = nullptr;
}

void setEntries(id receiver, Table **table, ZPZone *zone, const id *objects, const id *keys, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        checkEntry(receiver, "initWithObjects:forKeys:count:"_sel, objects[i], keys[i]);
        setEntry(receiver, "initWithObjects:forKeys:count:", table, zone, objects[i], keys[i]);
    }
}

[[gnu::noinline]] id findAny(Table *const *table, id key) {
    if (!ZPSimpleCount(*table)) return nullptr;
    Bucket *b = Search(table, key).find();
    return b ? _ZPValue(b) : id();
}

// The usual look-up, by a short 8-bit string in a hashed table. Such a key never changes, so the identical key
// is found under its hash too. Whatever is unusual on the way starts again in `findAny`; nothing here is called
// that would need registers saved.
ZP_INLINE id find(Table *const &reference, id key) {
    Table *table = reference;
    if (!key || !table) [[unlikely]]
        return nullptr;
    unsigned hash;
    if (key.pointer()->isa != ZPInlineCString::class_() || ZPSimpleIsLinear(table) || _ZPIsKeyed(table)) [[unlikely]]
        return findAny(&reference, key);
    auto *probe = key.unchecked<ZPInlineCString>();
    unsigned length = probe->byteCount();
    if (!_ZPHashShortBytes(probe->contents(), length, hash)) [[unlikely]]
        return findAny(&reference, key);
    unsigned state = (hash & ZPSimpleHashMask) | ZPSimpleOccupied;
    unsigned mask = ZPSimpleBuckets(table) - 1, first = hash & mask, i = first;
    do {
        Bucket *b = &table->buckets[i];
        if (b->state == state) [[likely]] {
            auto *stored = static_cast<ZPInlineCString *>(b->key);
            if (stored == probe) return _ZPValue(b);
            if (stored->isa != probe->isa) [[unlikely]]
                return findAny(&reference, key);
            if (stored->byteCount() == length && _ZPSameShortBytes(stored->contents(), probe->contents(), length))
                [[likely]]
                return _ZPValue(b);
        } else if (!b->state) return nullptr;
        i = (i + ZPSimpleStep(hash & ZPSimpleHashMask, mask)) & mask;
    } while (i != first);
    return nullptr;
}

// Without a branch for each bucket: what an unused one holds is overwritten.
void getEntries(Table *table, id *objects, id *keys) {
    unsigned count = table ? ZPSimpleCount(table) : 0, n = 0;
    for (Bucket *b = count ? &table->buckets[ZPSimpleBuckets(table)] : nullptr; n < count;) {
        --b;
        if (objects) objects[n] = _ZPValue(b);
        if (keys) keys[n] = _ZPKey(b);
        n += b->state >> 31;
    }
}

// The same buckets with copies of the keys and with the values, or copies of them.
Table *copyTable(id receiver, Table *source, ZPZone *zone, bool copyValues) {
    Table *copy = ZPCopySimpleDictionary(source, zone);
    // Entries below `done` in bucket order still belong to the source.
    struct Guard {
        Table *table;
        unsigned done;
        ~Guard() {
            if (!table) return;
            for (unsigned i = done; i < ZPSimpleBuckets(table); ++i)
                if (Bucket *b = ZPSimpleDictionaryGetBucket(table, i)) releaseEntry(nullptr, b->key, b->value);
            ZPFreeSimpleDictionary(table);
        }
    } guard{copy, ZPSimpleBuckets(copy)};
    for (unsigned i = guard.done; i-- > 0;) {
        Bucket *b = ZPSimpleDictionaryGetBucket(copy, i);
        if (b) {
            ZPOwnedObject key(_ZPKey(b)->copyWithZone(zone).pointer());
            ZPOwnedObject value((copyValues ? _ZPValue(b)->copyWithZone(zone) : _ZPValue(b)->retain()).pointer());
            checkEntry(receiver, "initWithDictionary:copyItems:"_sel, value.get(), key.get());
            b->key = key.take();
            b->value = value.take();
        }
        guard.done = i;
    }
    guard.table = nullptr;
    return copy;
}

struct ZPConcreteDictionaryMethods : ZPConcreteDictionary {
    id init() { return initWithObjects_forKeys_count(nullptr, nullptr, 0); }
    id initWithObjects_forKeys_count(const id *objects, const id *keys, unsigned count) {
        if (count >= _ZPCollectionLimit) _ZPRaiseAbsurd(this, "initWithObjects:forKeys:count:"_sel, "count", count);
        if (!count) {
            self()->release();
            return _ZPEmptyDictionary()->retain();
        }
        ZPZone *zone = self()->zone();
        _table = newTable(count, zone);
        setEntries(this, &_table, zone, objects, keys, count);
        return this;
    }
    id initWithDictionary_copyItems(ZPDictionary *other, BOOL copyItems) {
        Table *table;
        if (!other || !_ZPConcreteTable(other, table))
            return ZP_SUPER(ZPConcreteDictionary, initWithDictionary_copyItems)(other, copyItems);
        if (!table || !ZPSimpleCount(table)) return init();
        _table = copyTable(this, table, self()->zone(), copyItems);
        return this;
    }
    void dealloc() {
        if (_table == room()) ZPSimpleForEach(_table, [](Bucket *b) { releaseEntry(nullptr, b->key, b->value); });
        else destroyTable(_table);
        ZP_SUPER(ZPConcreteDictionary, dealloc)();
    }
    unsigned count() { return _table ? ZPSimpleCount(_table) : 0; }
    id objectForKey(id key) { return find(_table, key); }
    ZPEnumerator *keyEnumerator() { return _ZPDictionaryEnumerator::over(_table, this, NO); }
    ZPEnumerator *objectEnumerator() { return _ZPDictionaryEnumerator::over(_table, this, YES); }
    void getObjects_forKeys(id *objects, id *keys) { getEntries(_table, objects, keys); }
    id copyWithZone(ZPZone *) { return self()->retain(); }
};

struct ZPConcreteMutableDictionaryMethods : ZPConcreteMutableDictionary {
    void makeTable() {
        if (!_table) [[unlikely]]
            _table = newTable(0, _ZPZoneOf(this));
    }
    id init() {
        makeTable();
        return this;
    }
    id initWithCapacity(unsigned capacity) {
        if (capacity >= _ZPCollectionLimit) _ZPRaiseAbsurd(this, "initWithCapacity:"_sel, "capacity", capacity);
        _table = newTable(capacity, self()->zone());
        return this;
    }
    id initWithObjects_forKeys_count(const id *objects, const id *keys, unsigned count) {
        if (count >= _ZPCollectionLimit) _ZPRaiseAbsurd(this, "initWithObjects:forKeys:count:"_sel, "count", count);
        ZPZone *zone = self()->zone();
        _table = newTable(count, zone);
        setEntries(this, &_table, zone, objects, keys, count);
        return this;
    }
    id initWithDictionary_copyItems(ZPDictionary *other, BOOL copyItems) {
        Table *table;
        if (!other || !_ZPConcreteTable(other, table))
            return ZP_SUPER(ZPConcreteMutableDictionary, initWithDictionary_copyItems)(other, copyItems);
        if (table) _table = copyTable(this, table, self()->zone(), copyItems);
        return this;
    }
    void dealloc() {
        destroyTable(_table);
        ZP_SUPER(ZPConcreteMutableDictionary, dealloc)();
    }
    unsigned count() { return _table ? ZPSimpleCount(_table) : 0; }
    id objectForKey(id key) { return find(_table, key); }
    ZPEnumerator *keyEnumerator() { return _ZPDictionaryEnumerator::over(_table, this, NO); }
    ZPEnumerator *objectEnumerator() { return _ZPDictionaryEnumerator::over(_table, this, YES); }
    void getObjects_forKeys(id *objects, id *keys) { getEntries(_table, objects, keys); }
    id copyWithZone(ZPZone *zone) {
        if (!_table || !ZPSimpleCount(_table)) return _ZPEmptyDictionary()->retain();
        ZPScope copied{copyTable(this, _table, zone, true), [](Table *t) { destroyTable(t); }};
        auto *copy = ZPAllocateObject(ZPConcreteDictionary::class_(), 0, zone).unchecked<ZPConcreteDictionary>();
        copy->_table = copied.take();
        return copy;
    }

    void setObject_forKey(id object, id key) {
        checkEntry(this, "setObject:forKey:"_sel, object, key);
        makeTable();
        setEntry(this, "setObject:forKey:", &_table, _ZPZoneOf(this), object, key);
    }
    void removeObjectForKey(id key) {
        if (!key) raise(this, "removeObjectForKey:"_sel, "%@: attempt to remove nil key"_zp);
        if (!_table || !ZPSimpleCount(_table)) return;
        Bucket *b = Search(&_table, key).find();
        if (!b) return;
        id storedKey = _ZPKey(b), value = _ZPValue(b);
        ZPSimpleRemove(_table, b);
        storedKey->release();
        value->release();
    }
    // The table is set aside meanwhile: releasing may run anybody's code, which finds an empty dictionary.
    void removeAllObjects() {
        if (!_table || !ZPSimpleCount(_table)) return;
        Table *table = std::exchange(_table, nullptr);
        ZPResetSimpleDictionary(table, releaseEntry, nullptr);
        if (_table) ZPFreeSimpleDictionary(table);
        else _table = table;
    }
};

struct EnumeratorMethods : _ZPDictionaryEnumerator {
    id nextObject() {
        void *item = _fastObjects ? _taken.advance(_table, _slot, [](Bucket *b) { return b->value; })
                                  : _taken.advance(_table, _slot, [](Bucket *b) { return b->key; });
        if (item) return id(_ZPStored(item));
        if (_keyEnumerator)
            if (id key = _keyEnumerator->nextObject()) return _target.unchecked<ZPDictionary>()->objectForKey(key);
        finish();
        return nullptr;
    }
    void finish() {
        _slot = _taken.next = _taken.count = 0;
        id target = std::exchange(_target, id()), keys = std::exchange(_keyEnumerator, nullptr);
        if (keys) keys->release();
        if (target) target->release();
    }
    void dealloc() {
        finish();
        ZP_SUPER(_ZPDictionaryEnumerator, dealloc)();
    }
};

}  // namespace

bool _ZPTableOfDictionary(id dictionary, ZPSimpleDictionary *&table) { return _ZPConcreteTable(dictionary, table); }

ZPDictionary *_ZPNewDictionaryToFill(unsigned count, objc_slabs &slabs, ZPSimpleDictionary *&table) {
    unsigned sizeClass = ZPSimpleClassFor(count);
    std::size_t size = ZPSimpleSize<Table>(sizeClass);
    auto *dictionary = static_cast<ZPConcreteDictionary *>(slabs.allocate(ZPConcreteDictionary::class_(), size));
    if (!dictionary) dictionary = ZPAllocateObject(ZPConcreteDictionary::class_(), unsigned(size), nullptr);
    table = dictionary->_table = ZPSimpleInit<Table>(dictionary->room(), sizeClass, _ZPStoredObjectsEqual);
    return dictionary;
}

ZPEnumerator *_ZPDictionaryEnumerator::over(ZPSimpleDictionary *table, id target, BOOL objects) {
    auto *e = ZPAllocateObject(class_(), 0, nullptr).unchecked<_ZPDictionaryEnumerator>();
    e->_fastObjects = e->_enumerateObjects = objects;
    if (table && ZPSimpleCount(table)) {
        e->_target = target->retain();
        e->_table = table;
        e->_slot = ZPSimpleIsLinear(table) ? ZPSimpleCount(table) : ZPSimpleBuckets(table);
    }
    return e->autorelease();
}

ZPEnumerator *_ZPDictionaryEnumerator::overValues(ZPDictionary *dictionary) {
    auto *e = ZPAllocateObject(class_(), 0, nullptr).unchecked<_ZPDictionaryEnumerator>();
    e->autorelease();
    e->_enumerateObjects = YES;
    e->_keyEnumerator = dictionary->keyEnumerator()->retain();
    e->_target = dictionary->retain();
    return e;
}

ZP_IMPLEMENT_WITH(ZPConcreteDictionary, ZPConcreteDictionaryMethods, init, initWithObjects_forKeys_count,
                  initWithDictionary_copyItems, dealloc, count, objectForKey, keyEnumerator, objectEnumerator,
                  getObjects_forKeys, copyWithZone);

ZP_IMPLEMENT_WITH(ZPConcreteMutableDictionary, ZPConcreteMutableDictionaryMethods, init, initWithCapacity,
                  initWithObjects_forKeys_count, initWithDictionary_copyItems, dealloc, count, objectForKey,
                  keyEnumerator, objectEnumerator, getObjects_forKeys, copyWithZone, setObject_forKey,
                  removeObjectForKey, removeAllObjects);

ZP_IMPLEMENT_WITH(_ZPDictionaryEnumerator, EnumeratorMethods, nextObject, dealloc);
