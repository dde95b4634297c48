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
    static ZPDictionary *dictionary() { return objc_msgSend<ZPDictionary *>(class_(), "dictionary"_sel); }
    /// `count` values with their keys; a later value of an equal key takes the place of an earlier one.
    static ZPDictionary *dictionaryWithObjects_forKeys_count(const id *objects, const id *keys, unsigned count) {
        return objc_msgSend<ZPDictionary *>(class_(), "dictionaryWithObjects:forKeys:count:"_sel, objects, keys, count);
    }
    /// One entry.
    static ZPDictionary *dictionaryWithObject_forKey(id object, id key) {
        return objc_msgSend<ZPDictionary *>(class_(), "dictionaryWithObject:forKey:"_sel, object, key);
    }
    /// Values and keys from two arrays of equal counts, else ZPInvalidArgumentException.
    static ZPDictionary *dictionaryWithObjects_forKeys(ZPArray *objects, ZPArray *keys) {
        return objc_msgSend<ZPDictionary *>(class_(), "dictionaryWithObjects:forKeys:"_sel, objects, keys);
    }
    /// Value, key, value, key ..., up to the first null; an odd number of arguments raises
    /// ZPInvalidArgumentException.
    template <class... A> static ZPDictionary *dictionaryWithObjectsAndKeys(A... objectsAndKeys) {
        return objc_sendObjectList<ZPDictionary *>(class_(), "dictionaryWithObjectsAndKeys:"_sel, objectsAndKeys...);
    }
    /// Reads a property list; null when the file cannot be read or holds no dictionary.
    static ZPDictionary *dictionaryWithContentsOfFile(ZPString *path) {
        return objc_msgSend<ZPDictionary *>(class_(), "dictionaryWithContentsOfFile:"_sel, path);
    }
    /// The entries of another dictionary.
    static ZPDictionary *dictionaryWithDictionary(ZPDictionary *other) {
        return objc_msgSend<ZPDictionary *>(class_(), "dictionaryWithDictionary:"_sel, other);
    }

    /// `count` values with their keys, where a later value of an equal key takes the place of an earlier one: the
    /// initialiser that a subclass supplies.
    ZPDictionary *initWithObjects_forKeys_count(const id *objects, const id *keys, unsigned count) {
        return objc_msgSend<ZPDictionary *>(this, "initWithObjects:forKeys:count:"_sel, objects, keys, count);
    }
    /// As `dictionaryWithObjectsAndKeys`.
    template <class... A> ZPDictionary *initWithObjectsAndKeys(A... objectsAndKeys) {
        return objc_sendObjectList<ZPDictionary *>(this, "initWithObjectsAndKeys:"_sel, objectsAndKeys...);
    }
    /// As `dictionaryWithObjects_forKeys`.
    ZPDictionary *initWithObjects_forKeys(ZPArray *objects, ZPArray *keys) {
        return objc_msgSend<ZPDictionary *>(this, "initWithObjects:forKeys:"_sel, objects, keys);
    }
    /// The entries of another dictionary.
    ZPDictionary *initWithDictionary(ZPDictionary *other) {
        return objc_msgSend<ZPDictionary *>(this, "initWithDictionary:"_sel, other);
    }
    /// With `copyItems` the values are copies of the other dictionary's.
    ZPDictionary *initWithDictionary_copyItems(ZPDictionary *other, BOOL copyItems) {
        return objc_msgSend<ZPDictionary *>(this, "initWithDictionary:copyItems:"_sel, other, copyItems);
    }
    /// Null when the file cannot be read or holds no dictionary.
    ZPDictionary *initWithContentsOfFile(ZPString *path) {
        return objc_msgSend<ZPDictionary *>(this, "initWithContentsOfFile:"_sel, path);
    }

    /// The number of entries.
    unsigned count() { return objc_msgSend<unsigned>(this, "count"_sel); }
    /// The value of the key; null when the key is absent or null.
    id objectForKey(id key) { return objc_msgSend<id>(this, "objectForKey:"_sel, key); }
    /// Enumerates the keys; autoreleased.
    ZPEnumerator *keyEnumerator() { return objc_msgSend<ZPEnumerator *>(this, "keyEnumerator"_sel); }
    /// Enumerates the values in the order of their keys; autoreleased.
    ZPEnumerator *objectEnumerator() { return objc_msgSend<ZPEnumerator *>(this, "objectEnumerator"_sel); }
    /// The keys, in enumeration order.
    ZPArray *allKeys() { return objc_msgSend<ZPArray *>(this, "allKeys"_sel); }
    /// The values, in the order of their keys.
    ZPArray *allValues() { return objc_msgSend<ZPArray *>(this, "allValues"_sel); }
    /// The keys of the values that are identical or equal to the object.
    ZPArray *allKeysForObject(id object) { return objc_msgSend<ZPArray *>(this, "allKeysForObject:"_sel, object); }
    /// Whether the key is there; NO for null.
    BOOL containsKey(id key) { return objc_msgSend<BOOL>(this, "containsKey:"_sel, key); }
    /// Whether a value is identical or equal to the object; NO for null.
    BOOL containsObject(id object) { return objc_msgSend<BOOL>(this, "containsObject:"_sel, object); }
    /// The number of values that are identical or equal to the object.
    unsigned countForObject(id object) { return objc_msgSend<unsigned>(this, "countForObject:"_sel, object); }
    /// The values of an array of keys, the marker for a key that is absent.
    ZPArray *objectsForKeys_notFoundMarker(ZPArray *keys, id marker) {
        return objc_msgSend<ZPArray *>(this, "objectsForKeys:notFoundMarker:"_sel, keys, marker);
    }
    /// Stores every value and its key, not retained, into two buffers with room for all; either may be null.
    void getObjects_forKeys(id *objects, id *keys) { objc_msgSend(this, "getObjects:forKeys:"_sel, objects, keys); }
    /// The keys in the order of their values: the selector compares a value with another.
    ZPArray *keysSortedByValueUsingSelector(SEL selector) {
        return objc_msgSend<ZPArray *>(this, "keysSortedByValueUsingSelector:"_sel, selector);
    }
    /// The values as keys of the keys; of keys with equal values one is left.
    ZPDictionary *invertedDictionary() { return objc_msgSend<ZPDictionary *>(this, "invertedDictionary"_sel); }
    /// Whether both have equal keys with equal values; NO for null.
    BOOL isEqualToDictionary(ZPDictionary *other) {
        return objc_msgSend<BOOL>(this, "isEqualToDictionary:"_sel, other);
    }

    /// Property-list text; numbers and dates take the locale (may be null).
    ZPString *descriptionWithLocale(ZPDictionary *locale) {
        return objc_msgSend<ZPString *>(this, "descriptionWithLocale:"_sel, locale);
    }
    /// The same for a dictionary that lies `level` levels deep.
    ZPString *descriptionWithLocale_indent(ZPDictionary *locale, unsigned level) {
        return objc_msgSend<ZPString *>(this, "descriptionWithLocale:indent:"_sel, locale, level);
    }
    /// The text of a strings file: `"key" = "value";` line by line.
    ZPString *descriptionInStringsFileFormat() {
        return objc_msgSend<ZPString *>(this, "descriptionInStringsFileFormat"_sel);
    }
    /// Writes the description; with `atomically` the file is there whole or not at all. NO when it fails.
    BOOL writeToFile_atomically(ZPString *path, BOOL atomically) {
        return objc_msgSend<BOOL>(this, "writeToFile:atomically:"_sel, path, atomically);
    }
};

/// A dictionary that can change. A subclass supplies the dictionary's primitives, `setObject:forKey:` and
/// `removeObjectForKey:`. Growing raises ZPMallocException when there is no memory.
struct ZPMutableDictionary : ZPDictionary {
    ZP_CLASS(ZPMutableDictionary)

    /// A new, empty dictionary.
    static ZPMutableDictionary *dictionary() { return objc_msgSend<ZPMutableDictionary *>(class_(), "dictionary"_sel); }
    /// Empty, with room for `capacity` entries; more fit as well. A capacity above 134,217,727 raises
    /// ZPInvalidArgumentException.
    static ZPMutableDictionary *dictionaryWithCapacity(unsigned capacity) {
        return objc_msgSend<ZPMutableDictionary *>(class_(), "dictionaryWithCapacity:"_sel, capacity);
    }
    ///@{
    /// As ZPDictionary makes them, but to be changed.
    static ZPMutableDictionary *dictionaryWithObjects_forKeys_count(const id *objects, const id *keys, unsigned count) {
        return objc_msgSend<ZPMutableDictionary *>(class_(), "dictionaryWithObjects:forKeys:count:"_sel, objects, keys,
                                                   count);
    }
    static ZPMutableDictionary *dictionaryWithObject_forKey(id object, id key) {
        return objc_msgSend<ZPMutableDictionary *>(class_(), "dictionaryWithObject:forKey:"_sel, object, key);
    }
    static ZPMutableDictionary *dictionaryWithObjects_forKeys(ZPArray *objects, ZPArray *keys) {
        return objc_msgSend<ZPMutableDictionary *>(class_(), "dictionaryWithObjects:forKeys:"_sel, objects, keys);
    }
    template <class... A> static ZPMutableDictionary *dictionaryWithObjectsAndKeys(A... objectsAndKeys) {
        return objc_sendObjectList<ZPMutableDictionary *>(class_(), "dictionaryWithObjectsAndKeys:"_sel,
                                                          objectsAndKeys...);
    }
    static ZPMutableDictionary *dictionaryWithContentsOfFile(ZPString *path) {
        return objc_msgSend<ZPMutableDictionary *>(class_(), "dictionaryWithContentsOfFile:"_sel, path);
    }
    static ZPMutableDictionary *dictionaryWithDictionary(ZPDictionary *other) {
        return objc_msgSend<ZPMutableDictionary *>(class_(), "dictionaryWithDictionary:"_sel, other);
    }
    ///@}

    /// Empty, with room for `capacity` entries: the second initialiser that a subclass supplies.
    ZPMutableDictionary *initWithCapacity(unsigned capacity) {
        return objc_msgSend<ZPMutableDictionary *>(this, "initWithCapacity:"_sel, capacity);
    }

    /// Sets the value of a key, and releases the former one. A new key is copied; of a present one the stored key
    /// stays.
    void setObject_forKey(id object, id key) { objc_msgSend(this, "setObject:forKey:"_sel, object, key); }
    /// Removes the entry of a key; nothing happens when the key is absent, null raises ZPInvalidArgumentException.
    void removeObjectForKey(id key) { objc_msgSend(this, "removeObjectForKey:"_sel, key); }
    /// Takes another dictionary's entries in the place of its own.
    void setDictionary(ZPDictionary *other) { objc_msgSend(this, "setDictionary:"_sel, other); }
    /// Sets another dictionary's entries; their values take the place of those with equal keys.
    void addEntriesFromDictionary(ZPDictionary *other) { objc_msgSend(this, "addEntriesFromDictionary:"_sel, other); }
    /// Removes every entry; the room for them stays.
    void removeAllObjects() { objc_msgSend(this, "removeAllObjects"_sel); }
    /// Removes the entries of an array of keys, those that are there.
    void removeObjectsForKeys(ZPArray *keys) { objc_msgSend(this, "removeObjectsForKeys:"_sel, keys); }
    /// Removes the entries whose value is the identical object.
    void removeKeysForObject(id object) { objc_msgSend(this, "removeKeysForObject:"_sel, object); }
    /// Makes the values the keys of their keys; of keys with equal values one is left.
    void invert() { objc_msgSend(this, "invert"_sel); }
};
