// SPDX-License-Identifier: MIT
// Keyed collections of objects.
#pragma once

#include <Bedrock/collections/ZPEnumerator.h>
#include <Bedrock/collections/ZPObjectList.h>

ZP_FORWARD(ZPArray);
ZP_FORWARD(ZPMutableDictionary);
ZP_FORWARD(ZPString);

/// Objects found by key. Keys are copied, values retained; equal keys are one entry; neither is ever null, which
/// raises ZPInvalidArgumentException. At most 134,217,727 entries. A cluster: `alloc` gives a private class. A
/// subclass supplies `count`, `objectForKey:` and `keyEnumerator`. The order of entries is the collection's own and
/// stays while it does not change. A null collection as argument counts as empty. Collections that are answered are
/// autoreleased, keys and values borrowed. A copy of a mutable dictionary holds copies of its values. Immutable
/// dictionaries may be read by several threads at once; a mutable one belongs to one thread at a time.
struct ZPDictionary : ZPObject {
    ZP_CLASS(ZPDictionary)

    /// The empty dictionary: one shared object.
    static ZPDictionary *dictionary() ZP_CLASS_ASKS();
    /// `count` values with their keys; a later value of an equal key takes the place of an earlier one.
    static ZPDictionary *dictionaryWithObjects_forKeys_count(const id *objects, const id *keys, unsigned count)
        ZP_CLASS_ASKS(objects, keys, count);
    /// One entry.
    static ZPDictionary *dictionaryWithObject_forKey(id object, id key) ZP_CLASS_ASKS(object, key);
    /// Values and keys from two arrays of equal counts, else ZPInvalidArgumentException.
    static ZPDictionary *dictionaryWithObjects_forKeys(ZPArray *objects, ZPArray *keys) ZP_CLASS_ASKS(objects, keys);
    /// Value, key, value, key ..., up to the first null; an odd number of arguments raises
    /// ZPInvalidArgumentException.
    template <class... A> static ZPDictionary *dictionaryWithObjectsAndKeys(A... objectsAndKeys)
        ZP_CLASS_ASKS_LIST(objectsAndKeys);
    /// Reads a property list; null when the file cannot be read or holds no dictionary.
    static ZPDictionary *dictionaryWithContentsOfFile(ZPString *path) ZP_CLASS_ASKS(path);
    /// The entries of another dictionary.
    static ZPDictionary *dictionaryWithDictionary(ZPDictionary *other) ZP_CLASS_ASKS(other);

    /// `count` values with their keys, where a later value of an equal key takes the place of an earlier one: the
    /// initialiser that a subclass supplies.
    ZPDictionary *initWithObjects_forKeys_count(const id *objects, const id *keys, unsigned count)
        ZP_ASKS(objects, keys, count);
    /// As `dictionaryWithObjectsAndKeys`.
    template <class... A> ZPDictionary *initWithObjectsAndKeys(A... objectsAndKeys) ZP_ASKS_LIST(objectsAndKeys);
    /// As `dictionaryWithObjects_forKeys`.
    ZPDictionary *initWithObjects_forKeys(ZPArray *objects, ZPArray *keys) ZP_ASKS(objects, keys);
    /// The entries of another dictionary.
    ZPDictionary *initWithDictionary(ZPDictionary *other) ZP_ASKS(other);
    /// With `copyItems` the values are copies of the other dictionary's.
    ZPDictionary *initWithDictionary_copyItems(ZPDictionary *other, BOOL copyItems) ZP_ASKS(other, copyItems);
    /// Null when the file cannot be read or holds no dictionary.
    ZPDictionary *initWithContentsOfFile(ZPString *path) ZP_ASKS(path);

    /// The number of entries.
    unsigned count() ZP_ASKS();
    /// The value of the key; null when the key is absent or null.
    id objectForKey(id key) ZP_ASKS(key);
    /// Enumerates the keys; autoreleased.
    ZPEnumerator *keyEnumerator() ZP_ASKS();
    /// Enumerates the values in the order of their keys; autoreleased.
    ZPEnumerator *objectEnumerator() ZP_ASKS();
    /// The keys, in enumeration order.
    ZPArray *allKeys() ZP_ASKS();
    /// The values, in the order of their keys.
    ZPArray *allValues() ZP_ASKS();
    /// The keys of the values that are identical or equal to the object.
    ZPArray *allKeysForObject(id object) ZP_ASKS(object);
    /// Whether the key is there; NO for null.
    BOOL containsKey(id key) ZP_ASKS(key);
    /// Whether a value is identical or equal to the object; NO for null.
    BOOL containsObject(id object) ZP_ASKS(object);
    /// The number of values that are identical or equal to the object.
    unsigned countForObject(id object) ZP_ASKS(object);
    /// The values of an array of keys, the marker for a key that is absent.
    ZPArray *objectsForKeys_notFoundMarker(ZPArray *keys, id marker) ZP_ASKS(keys, marker);
    /// Stores every value and its key, not retained, into two buffers with room for all; either may be null.
    void getObjects_forKeys(id *objects, id *keys) ZP_TELLS(objects, keys);
    /// The keys in the order of their values: the selector compares a value with another.
    ZPArray *keysSortedByValueUsingSelector(SEL selector) ZP_ASKS(selector);
    /// The values as keys of the keys; of keys with equal values one is left.
    ZPDictionary *invertedDictionary() ZP_ASKS();
    /// Whether both have equal keys with equal values; NO for null.
    BOOL isEqualToDictionary(ZPDictionary *other) ZP_ASKS(other);

    /// Property-list text; numbers and dates take the locale (may be null).
    ZPString *descriptionWithLocale(ZPDictionary *locale) ZP_ASKS(locale);
    /// The same for a dictionary that lies `level` levels deep.
    ZPString *descriptionWithLocale_indent(ZPDictionary *locale, unsigned level) ZP_ASKS(locale, level);
    /// The text of a strings file: `"key" = "value";` line by line.
    ZPString *descriptionInStringsFileFormat() ZP_ASKS();
    /// Writes the description; with `atomically` the file is there whole or not at all. NO when it fails.
    BOOL writeToFile_atomically(ZPString *path, BOOL atomically) ZP_ASKS(path, atomically);
};

/// A dictionary that can change. A subclass supplies the dictionary's primitives, `setObject:forKey:` and
/// `removeObjectForKey:`. Growing raises ZPMallocException when there is no memory.
struct ZPMutableDictionary : ZPDictionary {
    ZP_CLASS(ZPMutableDictionary)

    /// A new, empty dictionary.
    static ZPMutableDictionary *dictionary() ZP_CLASS_ASKS();
    /// Empty, with room for `capacity` entries; more fit as well. A capacity above 134,217,727 raises
    /// ZPInvalidArgumentException.
    static ZPMutableDictionary *dictionaryWithCapacity(unsigned capacity) ZP_CLASS_ASKS(capacity);
    ///@{
    /// As ZPDictionary makes them, but to be changed.
    static ZPMutableDictionary *dictionaryWithObjects_forKeys_count(const id *objects, const id *keys, unsigned count)
        ZP_CLASS_ASKS(objects, keys, count);
    static ZPMutableDictionary *dictionaryWithObject_forKey(id object, id key) ZP_CLASS_ASKS(object, key);
    static ZPMutableDictionary *dictionaryWithObjects_forKeys(ZPArray *objects, ZPArray *keys)
        ZP_CLASS_ASKS(objects, keys);
    template <class... A> static ZPMutableDictionary *dictionaryWithObjectsAndKeys(A... objectsAndKeys)
        ZP_CLASS_ASKS_LIST(objectsAndKeys);
    static ZPMutableDictionary *dictionaryWithContentsOfFile(ZPString *path) ZP_CLASS_ASKS(path);
    static ZPMutableDictionary *dictionaryWithDictionary(ZPDictionary *other) ZP_CLASS_ASKS(other);
    ///@}

    /// Empty, with room for `capacity` entries: the second initialiser that a subclass supplies.
    ZPMutableDictionary *initWithCapacity(unsigned capacity) ZP_ASKS(capacity);

    /// Sets the value of a key, and releases the former one. A new key is copied; of a present one the stored key
    /// stays.
    void setObject_forKey(id object, id key) ZP_TELLS(object, key);
    /// Removes the entry of a key; nothing happens when the key is absent, null raises ZPInvalidArgumentException.
    void removeObjectForKey(id key) ZP_TELLS(key);
    /// Takes another dictionary's entries in the place of its own.
    void setDictionary(ZPDictionary *other) ZP_TELLS(other);
    /// Sets another dictionary's entries; their values take the place of those with equal keys.
    void addEntriesFromDictionary(ZPDictionary *other) ZP_TELLS(other);
    /// Removes every entry; the room for them stays.
    void removeAllObjects() ZP_TELLS();
    /// Removes the entries of an array of keys, those that are there.
    void removeObjectsForKeys(ZPArray *keys) ZP_TELLS(keys);
    /// Removes the entries whose value is the identical object.
    void removeKeysForObject(id object) ZP_TELLS(object);
    /// Makes the values the keys of their keys; of keys with equal values one is left.
    void invert() ZP_TELLS();
};
