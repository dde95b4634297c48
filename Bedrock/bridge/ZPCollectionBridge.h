// SPDX-License-Identifier: MIT
// Collections the C++ way: range-for over every collection and enumerator, and lists in braces. The folder stands over
// all others and joins the library with the C++ standard library; each header is read by itself.
//
//     for (ZPString *name : names) ...                   // ZPArray, ZPSet, ZPEnumerator, or a ZPRef to one
//     for (auto [key, value] : dictionary) ...
//
// A collection must not change while a loop over it runs, and outlives the loop: elements are not retained.
#pragma once

#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/collections/ZPSet.h>

#include <initializer_list>
#include <iterator>
#include <memory>

/// Where every loop ends.
struct ZPCollectionEnd {};

/// Walks an array by index, taking elements out a few at a time.
class ZPArrayIterator {
    static constexpr unsigned taken = 16;
    ZPArray *_array;
    unsigned _index = 0, _count;
    union {
        id _elements[taken];
    };

    void take() {
        if (_index < _count)
            _array->getObjects_range(_elements, {_index, _count - _index < taken ? _count - _index : taken});
    }

  public:
    /// What the loop gets.
    using value_type = id;
    /// What the standard library asks of an iterator; there is no distance.
    using difference_type = std::ptrdiff_t;

    /// Stands before the first element; null is empty.
    explicit ZPArrayIterator(ZPArray *array) : _array(array), _count(array ? array->count() : 0) { take(); }
    /// The element, borrowed.
    id operator*() const { return _elements[_index % taken]; }
    ///@{
    /// Goes on to the next one.
    ZPArrayIterator &operator++() {
        if (++_index % taken == 0) take();
        return *this;
    }
    void operator++(int) { ++*this; }
    ///@}
    /// Whether there is none left.
    friend bool operator==(const ZPArrayIterator &i, ZPCollectionEnd) { return i._index == i._count; }
};

/// Walks an enumerator to its end.
class ZPEnumeratorIterator {
    ZPEnumerator *_enumerator;
    id _object;

  public:
    /// What the loop gets.
    using value_type = id;
    /// What the standard library asks of an iterator; there is no distance.
    using difference_type = std::ptrdiff_t;

    /// Takes the first element; null is empty.
    explicit ZPEnumeratorIterator(ZPEnumerator *enumerator)
        : _enumerator(enumerator), _object(enumerator->nextObject()) {}
    /// The element, borrowed.
    id operator*() const { return _object; }
    ///@{
    /// Goes on to the next one.
    ZPEnumeratorIterator &operator++() {
        _object = _enumerator->nextObject();
        return *this;
    }
    void operator++(int) { ++*this; }
    ///@}
    /// Whether there is none left.
    friend bool operator==(const ZPEnumeratorIterator &i, ZPCollectionEnd) { return !i._object; }
};

/// One entry, for range-for with `auto [key, value]`; not retained.
struct ZPDictionaryEntry {
    id key;  ///< borrowed
    id value;  ///< borrowed
};

/// Walks the entries of a dictionary in its own order, all taken out at the beginning.
class ZPDictionaryIterator {
    std::unique_ptr<id[]> _keysAndValues;
    unsigned _index = 0, _count;

  public:
    /// What the loop gets.
    using value_type = ZPDictionaryEntry;
    /// What the standard library asks of an iterator; there is no distance.
    using difference_type = std::ptrdiff_t;

    /// Stands before the first entry; null is empty.
    explicit ZPDictionaryIterator(ZPDictionary *dictionary) : _count(dictionary ? dictionary->count() : 0) {
        if (!_count) return;
        _keysAndValues.reset(new id[2 * std::size_t(_count)]);
        dictionary->getObjects_forKeys(_keysAndValues.get() + _count, _keysAndValues.get());
    }
    /// The entry, borrowed.
    ZPDictionaryEntry operator*() const { return {_keysAndValues[_index], _keysAndValues[_count + _index]}; }
    ///@{
    /// Goes on to the next one.
    ZPDictionaryIterator &operator++() {
        ++_index;
        return *this;
    }
    void operator++(int) { ++*this; }
    ///@}
    /// Whether there is none left.
    friend bool operator==(const ZPDictionaryIterator &i, ZPCollectionEnd) { return i._index == i._count; }
};

///@{
/// The ends of a loop over a collection; null is an empty one.
inline ZPArrayIterator begin(ZPArray *array) { return ZPArrayIterator(array); }
inline ZPArrayIterator begin(ZPArray &array) { return ZPArrayIterator(&array); }
inline ZPCollectionEnd end(ZPArray *) { return {}; }
inline ZPCollectionEnd end(ZPArray &) { return {}; }
inline ZPEnumeratorIterator begin(ZPSet *set) { return ZPEnumeratorIterator(set->objectEnumerator()); }
inline ZPEnumeratorIterator begin(ZPSet &set) { return begin(&set); }
inline ZPCollectionEnd end(ZPSet *) { return {}; }
inline ZPCollectionEnd end(ZPSet &) { return {}; }
inline ZPEnumeratorIterator begin(ZPEnumerator *enumerator) { return ZPEnumeratorIterator(enumerator); }
inline ZPEnumeratorIterator begin(ZPEnumerator &enumerator) { return ZPEnumeratorIterator(&enumerator); }
inline ZPCollectionEnd end(ZPEnumerator *) { return {}; }
inline ZPCollectionEnd end(ZPEnumerator &) { return {}; }
inline ZPDictionaryIterator begin(ZPDictionary *dictionary) { return ZPDictionaryIterator(dictionary); }
inline ZPDictionaryIterator begin(ZPDictionary &dictionary) { return ZPDictionaryIterator(&dictionary); }
inline ZPCollectionEnd end(ZPDictionary *) { return {}; }
inline ZPCollectionEnd end(ZPDictionary &) { return {}; }
///@}

/// `ZPMakeDictionary({{"name"_zp, name}, {"size"_zp, size}})`: an autoreleased dictionary of key and value pairs.
/// A later value of an equal key wins; nulls raise ZPInvalidArgumentException.
inline ZPDictionary *ZPMakeDictionary(std::initializer_list<ZPDictionaryEntry> entries) {
    auto count = unsigned(entries.size());
    std::unique_ptr<id[]> keysAndValues(new id[2 * entries.size()]);
    id *next = keysAndValues.get();
    for (const ZPDictionaryEntry &entry : entries) {
        next[0] = entry.key;
        next[count] = entry.value;
        ++next;
    }
    return ZPDictionary::dictionaryWithObjects_forKeys_count(keysAndValues.get() + count, keysAndValues.get(), count);
}

/// `ZPMakeArray({a, b, c})`: an autoreleased array; a null raises ZPInvalidArgumentException.
inline ZPArray *ZPMakeArray(std::initializer_list<id> elements) {
    return ZPArray::arrayWithObjects_count(elements.begin(), unsigned(elements.size()));
}
