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

#include <cstddef>
#include <initializer_list>

/// Where every loop ends.
struct ZPCollectionEnd {};

/// @cond machinery
// Room for keys and as many values after them, without the cost of <memory> to all who include this.
class ZPEntryRoom {
    id *_keys;
    std::size_t _count;

  public:
    explicit ZPEntryRoom(std::size_t count) : _keys(count ? new id[2 * count] : nullptr), _count(count) {}
    ZPEntryRoom(ZPEntryRoom &&other) noexcept : _keys(other._keys), _count(other._count) { other._keys = nullptr; }
    ZPEntryRoom &operator=(ZPEntryRoom &&) = delete;
    ~ZPEntryRoom() { delete[] _keys; }
    id *keys() const { return _keys; }
    id *values() const { return _keys + _count; }
};
/// @endcond

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
    unsigned _index = 0, _count;
    ZPEntryRoom _entries;

  public:
    /// What the loop gets.
    using value_type = ZPDictionaryEntry;
    /// What the standard library asks of an iterator; there is no distance.
    using difference_type = std::ptrdiff_t;

    /// Stands before the first entry; null is empty.
    explicit ZPDictionaryIterator(ZPDictionary *dictionary)
        : _count(dictionary ? dictionary->count() : 0), _entries(_count) {
        if (_count) dictionary->getObjects_forKeys(_entries.values(), _entries.keys());
    }
    /// The entry, borrowed.
    ZPDictionaryEntry operator*() const { return {_entries.keys()[_index], _entries.values()[_index]}; }
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
    ZPEntryRoom room(entries.size());
    std::size_t n = 0;
    for (const ZPDictionaryEntry &entry : entries) {
        room.keys()[n] = entry.key;
        room.values()[n++] = entry.value;
    }
    return ZPDictionary::dictionaryWithObjects_forKeys_count(room.values(), room.keys(), unsigned(n));
}

/// `ZPMakeArray({a, b, c})`: an autoreleased array; a null raises ZPInvalidArgumentException.
inline ZPArray *ZPMakeArray(std::initializer_list<id> elements) {
    return ZPArray::arrayWithObjects_count(elements.begin(), unsigned(elements.size()));
}
