// SPDX-License-Identifier: MIT
// The storage forms of the clusters, so that one suite runs over all of them.
#pragma once

#include <support/Objects.h>

inline unsigned inBounds(unsigned index, std::size_t bound) {
    if (index >= bound) ZPException::raise_format(ZPRangeException, "beyond bounds"_zp);
    return index;
}

/// Client classes that supply the primitives only.
struct PlainArray : ZPArray {
    ZP_CLASS(PlainArray)
    std::vector<ZPRef<ZPObject>> elements;
    id initWithObjects_count(const id *objects, unsigned count) {
        elements.assign(objects, objects + count);
        return this;
    }
    unsigned count() { return unsigned(elements.size()); }
    id objectAtIndex(unsigned index) { return id(elements[inBounds(index, elements.size())].get()); }
};

struct PlainMutableArray : ZPMutableArray {
    ZP_CLASS(PlainMutableArray)
    std::vector<ZPRef<ZPObject>> elements;
    id initWithObjects_count(const id *objects, unsigned count) {
        elements.assign(objects, objects + count);
        return this;
    }
    id initWithCapacity(unsigned) { return this; }
    unsigned count() { return unsigned(elements.size()); }
    id objectAtIndex(unsigned index) { return id(elements[inBounds(index, elements.size())].get()); }
    void addObject(id object) { elements.push_back(object); }
    void insertObject_atIndex(id object, unsigned index) {
        elements.insert(elements.begin() + index, ZPRef<ZPObject>(object));
    }
    void removeLastObject() { elements.pop_back(); }
    void removeObjectAtIndex(unsigned index) { elements.erase(elements.begin() + inBounds(index, elements.size())); }
    void replaceObjectAtIndex_withObject(unsigned index, id object) {
        elements[inBounds(index, elements.size())] = ZPRef<ZPObject>(object);
    }
};

struct PlainMutableDictionary : ZPMutableDictionary {
    ZP_CLASS(PlainMutableDictionary)
    ZPRef<ZPMutableArray> keys, values;
    id init() {
        keys = ZPAdopt(ZPMutableArray::new_());
        values = ZPAdopt(ZPMutableArray::new_());
        return this;
    }
    id initWithCapacity(unsigned) { return init(); }
    id initWithObjects_forKeys_count(const id *objects, const id *k, unsigned count) {
        init();
        for (unsigned i = 0; i < count; ++i) setObject_forKey(objects[i], k[i]);
        return this;
    }
    unsigned count() { return keys->count(); }
    id objectForKey(id key) {
        unsigned i = keys->indexOfObject(key);
        return i == ZPNotFound ? id() : values->objectAtIndex(i);
    }
    ZPEnumerator *keyEnumerator() { return keys->objectEnumerator(); }
    void setObject_forKey(id object, id key) {
        unsigned i = keys->indexOfObject(key);
        if (i != ZPNotFound) return values->replaceObjectAtIndex_withObject(i, object);
        keys->addObject(ZPAdopt<ZPObject>(key->copy()).get());
        values->addObject(object);
    }
    void removeObjectForKey(id key) {
        unsigned i = keys->indexOfObject(key);
        if (i == ZPNotFound) return;
        keys->removeObjectAtIndex(i);
        values->removeObjectAtIndex(i);
    }
};

struct PlainMutableSet : ZPMutableSet {
    ZP_CLASS(PlainMutableSet)
    ZPRef<ZPMutableArray> list;
    id init() {
        list = ZPAdopt(ZPMutableArray::new_());
        return this;
    }
    id initWithCapacity(unsigned) { return init(); }
    id initWithObjects_count(const id *objects, unsigned count) {
        init();
        for (unsigned i = 0; i < count; ++i) addObject(objects[i]);
        return this;
    }
    unsigned count() { return list->count(); }
    id member(id object) {
        unsigned i = list->indexOfObject(object);
        return i == ZPNotFound ? id() : list->objectAtIndex(i);
    }
    ZPEnumerator *objectEnumerator() { return list->objectEnumerator(); }
    void addObject(id object) {
        if (list->indexOfObject(object) == ZPNotFound) list->addObject(object);
    }
    void removeObject(id object) {
        unsigned i = list->indexOfObject(object);
        if (i != ZPNotFound) list->removeObjectAtIndex(i);
    }
};

inline std::vector<id> itemsOf(const std::vector<int> &values) {
    std::vector<id> items;
    for (int value : values) items.push_back(TestItem::with(value));
    return items;
}

inline std::vector<int> valuesOf(ZPEnumerator *e) {
    std::vector<int> values;
    while (id object = e->nextObject()) values.push_back(valueOf(object));
    return values;
}

inline std::vector<int> valuesOf(ZPArray *array) {
    std::vector<int> values;
    for (unsigned i = 0; i < array->count(); ++i) values.push_back(valueOf(array->objectAtIndex(i)));
    return values;
}

using Values = std::vector<int>;

/// An array, or a set, of a class.
template <class C = ZPArray> C *make(Class cls, SEL maker, const std::vector<id> &items) {
    return objc_msgSend<id>(cls, maker, items.data(), unsigned(items.size()));
}

const auto nameOfParameter = [](auto &info) { return info.param->name; };

/// A pool around each test, and a check that every test item is gone after it.
struct CollectionTest : testing::Test {
    ZPAutoreleasePoolScope *pool;
    int before;
    void SetUp() override {
        before = TestItem::live;
        pool = new ZPAutoreleasePoolScope;
    }
    void TearDown() override {
        delete pool;
        EXPECT_EQ(TestItem::live, before);
    }
};
