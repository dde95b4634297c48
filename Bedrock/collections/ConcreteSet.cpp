// SPDX-License-Identifier: MIT
// The concrete sets and the counted set on their tables, and the enumerator over a table.
#include <Bedrock/collections/Set+Internal.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/core/Scope.h>

namespace {

[[noreturn]] ZP_COLD void raise(id receiver, SEL selector, ZPString *format) {
    ZPException::raise_format(ZPInvalidArgumentException, format, _ZPMethodExceptionProem(receiver, selector));
}

ZP_INLINE void checkMember(id receiver, SEL selector, id object) {
    if (!object) [[unlikely]]
        raise(receiver, selector, "%@: attempt to insert nil object"_zp);
}
ZP_INLINE void checkRemoval(id receiver, id object) {
    if (!object) [[unlikely]]
        raise(receiver, "removeObject:"_sel, "%@: attempt to remove nil object"_zp);
}
void checkLimit(id receiver, SEL selector, const char *what, unsigned value) {
    if (value >= _ZPSetLimit) _ZPRaiseAbsurd(receiver, selector, what, value);
}

// ---- tables of members ---------------------------------------------------------------------------

ZPSimpleSet *newTable(unsigned capacity, ZPZone *zone) {
    return ZPCreateSimpleSet(capacity, _ZPStoredObjectsEqual, zone);
}

void releaseMember(void *, void *item) { id(_ZPStored(item))->release(); }
void releaseCounted(void *, void *item, void *) { id(_ZPStored(item))->release(); }

void destroyTable(ZPSimpleSet *&table) {
    if (!table) return;
    ZPSimpleForEach(table, [](ZPSimpleSetBucket *b) { _ZPMember(b)->release(); });
    ZPFreeSimpleSet(table);
    table = nullptr;
}

template <class S> ZPSimpleBucketOf<S> *find(S *table, id object) {
    if (!object || !table || !ZPSimpleCount(table)) return nullptr;
    return ZPSimpleFind(table, object.pointer(), _ZPHashOfObject(object), _ZPObjectEquality());
}

ZP_INLINE void addMember(ZPSimpleSet **table, id object) {
    unsigned hash = _ZPHashOfObject(object);
    ZPSimpleSetBucket *place;
    if (ZPSimpleFind(*table, object.pointer(), hash, _ZPObjectEquality(), &place)) return;
    ZPSimpleAdd(table, place, {(hash & ZPSimpleHashMask) | ZPSimpleOccupied, object.pointer()});
    object->retain();
}

void addMembers(id receiver, ZPSimpleSet **table, const id *objects, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        checkMember(receiver, "initWithObjects:count:"_sel, objects[i]);
        addMember(table, objects[i]);
    }
}

// The same buckets with the members retained.
ZPSimpleSet *copyTable(ZPSimpleSet *source, ZPZone *zone) {
    ZPSimpleSet *copy = ZPCopySimpleSet(source, zone);
    ZPSimpleForEach(copy, [](ZPSimpleSetBucket *b) { _ZPMember(b)->retain(); });
    return copy;
}

ZP_INLINE id memberOf(ZPSimpleSet *table, id object) {
    ZPSimpleSetBucket *b = find(table, object);
    return b ? _ZPMember(b) : id();
}

// Empties a table that an object holds. It is set aside meanwhile: releasing may run anybody's code, which
// finds an empty set.
template <class S, class R, class F> void emptyTable(S *&held, void (*reset)(S *, R, void *), R release, F free) {
    if (!held || !ZPSimpleCount(held)) return;
    S *table = std::exchange(held, nullptr);
    reset(table, release, nullptr);
    if (held) free(table);
    else held = table;
}

// ---- concrete sets -------------------------------------------------------------------------------

struct ZPConcreteSetMethods : ZPConcreteSet {
    id init() { return initWithObjects_count(nullptr, 0); }
    id initWithObjects_count(const id *objects, unsigned count) {
        checkLimit(this, "initWithObjects:count:"_sel, "count", count);
        if (!count) {
            self()->release();
            return _ZPEmptySet()->retain();
        }
        _table = newTable(count, _ZPZoneOf(this));
        addMembers(this, &_table, objects, count);
        return this;
    }
    id initWithSet_copyItems(ZPSet *other, BOOL copyItems) {
        ZPSimpleSet *table;
        if (copyItems || !other || !_ZPConcreteTable(other, table))
            return ZP_SUPER(ZPConcreteSet, initWithSet_copyItems)(other, copyItems);
        if (!table || !ZPSimpleCount(table)) return init();
        _table = copyTable(table, _ZPZoneOf(this));
        return this;
    }
    void dealloc() {
        destroyTable(_table);
        ZP_SUPER(ZPConcreteSet, dealloc)();
    }
    unsigned count() { return _table ? ZPSimpleCount(_table) : 0; }
    id member(id object) { return memberOf(_table, object); }
    ZPEnumerator *objectEnumerator() { return _ZPSetEnumerator::over(_table, this); }
    id copyWithZone(ZPZone *) { return self()->retain(); }
};

struct ZPConcreteMutableSetMethods : ZPConcreteMutableSet {
    void makeTable() {
        if (!_table) [[unlikely]]
            _table = newTable(0, _ZPZoneOf(this));
    }
    id init() { return this; }
    id initWithCapacity(unsigned capacity) {
        checkLimit(this, "initWithCapacity:"_sel, "capacity", capacity);
        _table = newTable(capacity, _ZPZoneOf(this));
        return this;
    }
    id initWithObjects_count(const id *objects, unsigned count) {
        checkLimit(this, "initWithObjects:count:"_sel, "count", count);
        _table = newTable(count, _ZPZoneOf(this));
        addMembers(this, &_table, objects, count);
        return this;
    }
    id initWithSet_copyItems(ZPSet *other, BOOL copyItems) {
        ZPSimpleSet *table;
        if (copyItems || !other || !_ZPConcreteTable(other, table))
            return ZP_SUPER(ZPConcreteMutableSet, initWithSet_copyItems)(other, copyItems);
        if (table) _table = copyTable(table, _ZPZoneOf(this));
        return this;
    }
    void dealloc() {
        destroyTable(_table);
        ZP_SUPER(ZPConcreteMutableSet, dealloc)();
    }
    unsigned count() { return _table ? ZPSimpleCount(_table) : 0; }
    id member(id object) { return memberOf(_table, object); }
    ZPEnumerator *objectEnumerator() { return _ZPSetEnumerator::over(_table, this); }
    id copyWithZone(ZPZone *zone) {
        if (!_table || !ZPSimpleCount(_table)) return _ZPEmptySet()->retain();
        auto *copy = ZPAllocateObject(ZPConcreteSet::class_(), 0, zone).unchecked<ZPConcreteSet>();
        copy->_table = copyTable(_table, zone);
        return copy;
    }
    void addObject(id object) {
        checkMember(this, "addObject:"_sel, object);
        makeTable();
        addMember(&_table, object);
    }
    void removeObject(id object) {
        checkRemoval(this, object);
        ZPSimpleSetBucket *b = find(_table, object);
        if (!b) return;
        id member = _ZPMember(b);
        ZPSimpleRemove(_table, b);
        member->release();
    }
    void removeAllObjects() { emptyTable(_table, ZPResetSimpleSet, releaseMember, ZPFreeSimpleSet); }
};

// ---- counted sets --------------------------------------------------------------------------------

struct ZPCountedSetMethods : ZPCountedSet {
    void makeTable(unsigned capacity) {
        if (!_table) [[unlikely]]
            _table = ZPCreateSimpleDictionary(capacity, _ZPStoredObjectsEqual, _ZPZoneOf(this));
    }
    id initWithCapacity(unsigned capacity) {
        checkLimit(this, "initWithCapacity:"_sel, "capacity", capacity);
        makeTable(capacity);
        return this;
    }
    id initWithObjects_count(const id *objects, unsigned count) {
        checkLimit(this, "initWithObjects:count:"_sel, "count", count);
        makeTable(count);
        for (unsigned i = 0; i < count; ++i) {
            checkMember(this, "initWithObjects:count:"_sel, objects[i]);
            add(objects[i], 1);
        }
        return this;
    }
    id initWithSet_copyItems(ZPSet *other, BOOL copyItems) {
        ZPZone *zone = _ZPZoneOf(this);
        makeTable(other ? other->count() : 0);
        _ZPForEachMember(other, [&](id member, unsigned count) {
            if (copyItems) {
                ZPOwnedObject copy(member->copyWithZone(zone).pointer());
                checkMember(this, "initWithSet:copyItems:"_sel, copy.get());
                add(copy.get(), count);
            } else add(member, count);
            return true;
        });
        return this;
    }
    void dealloc() {
        if (_table) {
            ZPResetSimpleDictionary(_table, releaseCounted, nullptr);
            ZPFreeSimpleDictionary(_table);
            _table = nullptr;
        }
        ZP_SUPER(ZPCountedSet, dealloc)();
    }
    unsigned count() { return _table ? ZPSimpleCount(_table) : 0; }
    id member(id object) {
        ZPSimpleDictionaryBucket *b = find(_table, object);
        return b ? _ZPKey(b) : id();
    }
    unsigned countForObject(id object) {
        ZPSimpleDictionaryBucket *b = find(_table, object);
        return b ? _ZPMemberCount(b) : 0;
    }
    ZPEnumerator *objectEnumerator() { return _ZPSetEnumerator::over(_table, this); }
    // Counts an object, not null, `times` more.
    void add(id object, unsigned times) {
        makeTable(0);
        unsigned hash = _ZPHashOfObject(object);
        ZPSimpleDictionaryBucket *place, *b = ZPSimpleFind(_table, object.pointer(), hash, _ZPObjectEquality(), &place);
        unsigned before = b ? _ZPMemberCount(b) : 0;
        void *count = reinterpret_cast<void *>(std::uintptr_t(times > ~before ? ~0u : before + times));
        if (b) {
            b->value = count;
            return;
        }
        ZPSimpleAdd(&_table, place, {(hash & ZPSimpleHashMask) | ZPSimpleOccupied, object.pointer(), count});
        object->retain();
    }
    void addObject(id object) {
        checkMember(this, "addObject:"_sel, object);
        add(object, 1);
    }
    void removeObject(id object) {
        checkRemoval(this, object);
        remove(object, 1);
    }
    void remove(id object, unsigned times) {
        ZPSimpleDictionaryBucket *b = find(_table, object);
        if (!b) return;
        if (unsigned count = _ZPMemberCount(b); count > times) {
            b->value = reinterpret_cast<void *>(std::uintptr_t(count - times));
            return;
        }
        id member = _ZPKey(b);
        ZPSimpleRemove(_table, b);
        member->release();
    }
    void removeAllObjects() { emptyTable(_table, ZPResetSimpleDictionary, releaseCounted, ZPFreeSimpleDictionary); }
    id copyWithZone(ZPZone *zone) { return copyTo(zone, YES); }
    id mutableCopyWithZone(ZPZone *zone) { return copyTo(zone, NO); }
    id copyTo(ZPZone *zone, BOOL copyItems) {
        ZPRef<ZPCountedSet> made = ZPAdopt<ZPCountedSet>(ZPCountedSet::allocWithZone(zone));
        id result = made->initWithSet_copyItems(this, copyItems);
        (void)made.detach();  // the initialiser has it, and answered what may be another
        return result;
    }
    Class classForCoder() { return ZPCountedSet::class_(); }
};

// ---- enumeration ---------------------------------------------------------------------------------

struct EnumeratorMethods : _ZPSetEnumerator {
    id nextObject() {
        void *item = _countedSet ? _taken.advance(static_cast<ZPSimpleDictionary *>(_table), _slot,
                                                  [](ZPSimpleDictionaryBucket *b) { return b->key; })
                                 : _taken.advance(static_cast<ZPSimpleSet *>(_table), _slot,
                                                  [](ZPSimpleSetBucket *b) { return b->item; });
        if (item) return id(_ZPStored(item));
        finish();
        return nullptr;
    }
    void finish() {
        _slot = _taken.next = _taken.count = 0;
        if (id target = std::exchange(_target, id())) target->release();
    }
    void dealloc() {
        finish();
        ZP_SUPER(_ZPSetEnumerator, dealloc)();
    }
};

}  // namespace

ZPEnumerator *_ZPSetEnumerator::over(void *table, id target, BOOL counted, unsigned count, unsigned buckets) {
    auto *e = ZPAllocateObject(class_(), 0, nullptr).unchecked<_ZPSetEnumerator>();
    if (count) {
        e->_target = target->retain();
        e->_table = table;
        e->_countedSet = counted;
        e->_slot = buckets;
    }
    return e->autorelease();
}

void _ZPCountMore(ZPCountedSet *set, id object, unsigned times) {
    static_cast<ZPCountedSetMethods *>(set)->add(object, times);
}
void _ZPCountLess(ZPCountedSet *set, id object, unsigned times) {
    static_cast<ZPCountedSetMethods *>(set)->remove(object, times);
}

ZP_IMPLEMENT_WITH(ZPConcreteSet, ZPConcreteSetMethods, init, initWithObjects_count, initWithSet_copyItems, dealloc,
                  count, member, objectEnumerator, copyWithZone);

ZP_IMPLEMENT_WITH(ZPConcreteMutableSet, ZPConcreteMutableSetMethods, init, initWithCapacity, initWithObjects_count,
                  initWithSet_copyItems, dealloc, count, member, objectEnumerator, copyWithZone, addObject,
                  removeObject, removeAllObjects);

ZP_IMPLEMENT_WITH(ZPCountedSet, ZPCountedSetMethods, version(1), initWithCapacity, initWithObjects_count,
                  initWithSet_copyItems, dealloc, count, member, countForObject, objectEnumerator, addObject,
                  removeObject, removeAllObjects, copyWithZone, mutableCopyWithZone, classForCoder);

ZP_IMPLEMENT_WITH(_ZPSetEnumerator, EnumeratorMethods, nextObject, dealloc);
