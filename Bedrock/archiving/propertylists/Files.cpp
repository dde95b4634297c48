// SPDX-License-Identifier: MIT
// Arrays and dictionaries from property-list files. Whatever fails answers null.
#include <Bedrock/archiving/grammar/Grammar.h>

namespace {

// The tree of a text if it is of a class; null for none, an error or another class.
template <class T, class F> T *tree(const F &text) {
    try {
        ZPString *string = text();
        id tree = string ? string->propertyList() : id();
        return tree && tree->isKindOfClass(T::class_()) ? tree.as<T>() : nullptr;
    } catch (ZPException *) {
        return nullptr;
    }
}

struct ArrayReading : ZPArray {
    id initWithContentsOfFile(ZPString *path) {
        ZPArray *array = tree<ZPArray>([=]() -> ZPString * {
            ZPData *data = path ? ZPData::dataWithContentsOfFile(path) : nullptr;
            if (!data) return nullptr;
            ZPString *string = ZPString::alloc()->initWithData_encoding(data, ZPKESTRELStringEncoding);
            return string ? string->autorelease().as<ZPString>() : nullptr;
        });
        if (array) return self()->initWithArray_copyItems(array, NO);
        self()->release();
        return nullptr;
    }
};

struct DictionaryReading : ZPDictionary {
    id initWithContentsOfFile(ZPString *path) {
        ZPDictionary *dictionary =
            tree<ZPDictionary>([=] { return path ? ZPString::stringWithContentsOfFile(path) : nullptr; });
        if (dictionary) return self()->initWithDictionary(dictionary);
        self()->release();
        return nullptr;
    }
};

}  // namespace

ZP_CATEGORY(ZPArray, ArrayReading, initWithContentsOfFile);
ZP_CATEGORY(ZPDictionary, DictionaryReading, initWithContentsOfFile);
