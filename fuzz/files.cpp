// SPDX-License-Identifier: MIT
// Files: data, texts and property lists read from one are those that the same bytes in memory give, mapped or not, and
// what is written to a file comes back. The first byte chooses what is read.
#include "child.h"

namespace {

using Make = ZPData *(*)(ZPString *);

void checkData(ZPString *path, const std::uint8_t *bytes, unsigned size) {
    static const Make ways[] = {
        [](ZPString *p) { return ZPData::dataWithContentsOfFile(p); },
        [](ZPString *p) { return ZPData::dataWithContentsOfMappedFile(p); },
        [](ZPString *p) { return (ZPData *)ZPMutableData::dataWithContentsOfFile(p); },
        [](ZPString *p) { return (ZPData *)ZPMutableData::dataWithContentsOfMappedFile(p); },
        [](ZPString *p) { return (ZPData *)ZPData::alloc()->initWithContentsOfMappedFile(p)->autorelease().pointer(); },
    };
    ZPData *memory = ZPData::dataWithBytes_length(bytes, size);
    for (Make way : ways) {
        ZPData *data = way(path);
        require(data && data->length() == size && (size == 0 || std::memcmp(data->bytes(), bytes, size) == 0));
        require(data->isEqual(memory) && data->hash() == memory->hash());
        if (size < 3) continue;
        ZPData *part = data->subdataWithRange({1, size - 2});
        require(part->length() == size - 2 && std::memcmp(part->bytes(), bytes + 1, size - 2) == 0);
    }
    // A view that was written to leaves the file alone.
    ZPMutableData *own = ZPMutableData::dataWithContentsOfMappedFile(path);
    if (size) static_cast<std::uint8_t *>(own->mutableBytes())[size - 1] ^= 0xFF;
    own->appendBytes_length("more", 4);
    require(own->length() == size + 4 && ZPData::dataWithContentsOfFile(path)->isEqual(memory));

    ZPFileMapper *mapper = ZPFileMapper::fileMapperForPath(path);
    require(mapper && mapper->length() == size && !mapper->newReadOnlyMappingOfLength(size + 1));
    void *view = mapper->newReadOnlyMappingOfLength(size);
    require((view != nullptr) == (size != 0) && (!size || std::memcmp(view, bytes, size) == 0));
    if (view) mapper->removeMapping_length(view, size);
}

ZPString *textOf(ZPData *data, ZPStringEncoding encoding) {
    return (ZPString *)ZPString::alloc()->initWithData_encoding(data, encoding)->autorelease().pointer();
}

ZPString *textInMemory(const std::uint8_t *bytes, unsigned size) {
    bool marked = size >= 2 && size % 2 == 0 &&
                  ((bytes[0] == 0xFE && bytes[1] == 0xFF) || (bytes[0] == 0xFF && bytes[1] == 0xFE));
    return textOf(ZPData::dataWithBytes_length(bytes, size),
                  marked ? ZPUnicodeStringEncoding : _ZPDefaultCStringEncoding());
}

id treeOf(ZPString *text) {
    try {
        return text ? text->propertyList() : id();
    } catch (ZPException *) {
        return nullptr;
    }
}

bool alike(id a, id b) { return !a == !b && (!a || ((ZPObject *)a.pointer())->isEqual(b)); }

void checkText(ZPString *path, const std::uint8_t *bytes, unsigned size) {
    ZPString *text = textInMemory(bytes, size), *read = ZPString::stringWithContentsOfFile(path);
    require(alike(text, read) && alike(text, ZPMutableString::stringWithContentsOfFile(path)));
    if (!text) return;
    MemoryFile to(nullptr, 0);
    ZPString *there = ZPString::stringWithCString(to.path().c_str());
    if (!text->writeToFile_atomically(there, NO)) return;
    ZPString *again = ZPString::stringWithContentsOfFile(there);
    // Text that begins as UTF-16 does in the encoding of C strings is taken for that.
    unichar first = text->length() ? text->characterAtIndex(0) : 0;
    require(first == 0xFEFF || first == 0xFFFE || first == 0xFF || first == 0xFE || alike(again, text));
}

// Of a list of the class in the text, if there is one.
template <class T> void checkList(T *read, T *changeable, id tree) {
    id expected = tree && tree->isKindOfClass(T::class_()) ? tree : id();
    require(alike(read, expected) && alike(changeable, expected));
    if (!read) return;
    MemoryFile to(nullptr, 0);
    ZPString *there = ZPString::stringWithCString(to.path().c_str());
    require(read->writeToFile_atomically(there, NO));
    T *again;
    if constexpr (std::is_same_v<T, ZPArray>) again = ZPArray::arrayWithContentsOfFile(there);
    else again = ZPDictionary::dictionaryWithContentsOfFile(there);
    require(alike(again, read));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 1 || size > 1 << 20) return 0;
    ZPAutoreleasePoolScope pool;
    unsigned what = data[0] & 3;
    ++data;
    --size;
    MemoryFile file(data, size);
    ZPString *path = ZPString::stringWithCString(file.path().c_str());
    switch (what) {
    case 0: checkData(path, data, unsigned(size)); break;
    case 1: checkText(path, data, unsigned(size)); break;
    case 2: {
        ZPString *text = textOf(ZPData::dataWithBytes_length(data, unsigned(size)), ZPKESTRELStringEncoding);
        checkList<ZPArray>(ZPArray::arrayWithContentsOfFile(path), ZPMutableArray::arrayWithContentsOfFile(path),
                           treeOf(text));
        break;
    }
    default:
        checkList<ZPDictionary>(ZPDictionary::dictionaryWithContentsOfFile(path),
                                ZPMutableDictionary::dictionaryWithContentsOfFile(path),
                                treeOf(textInMemory(data, unsigned(size))));
    }
    return 0;
}
