// SPDX-License-Identifier: MIT
// Character sets from files: a client's by path, the library's own by name. Named sets are kept in a list that only
// grows at its head, so that it is read without a lock.
#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/platform/host/Host.h>
#include <Bedrock/strings/characters/Characters.h>
#include <Bedrock/strings/cluster/Cluster.h>

#include <atomic>
#include <memory>
#include <string>

namespace {

// ---- the resource directory ----

struct Resource : ZPHostResource {
    explicit Resource(const std::string &name) : ZPHostResource(("CharacterSets/" + name).c_str()) {}
};

// The name as a file's; empty for what cannot be one.
std::string fileName(ZPString *name) {
    std::string text;
    unsigned length = name->length();
    if (length > 200) return "";
    for (unsigned i = 0; i < length; ++i) {
        unichar u = name->characterAtIndex(i);
        if (u <= ' ' || u >= 0x7F || u == '/' || u == '\\') return "";
        text += char(u);
    }
    return text;
}

ZPDictionary *asDictionary(id object) {
    return object && object->isKindOfClass(ZPDictionary::class_()) ? object.as<ZPDictionary>() : nullptr;
}

ZPDictionary *readDictionary(const std::string &name) {
    Resource file(name);
    if (!file) return nullptr;
    try {
        ZPString *text =
            ZPString::alloc()->initWithBytes_length_encoding(file.bytes, unsigned(file.length), ZPASCIIStringEncoding);
        return text ? asDictionary(text->autorelease().as<ZPString>()->propertyList()) : nullptr;
    } catch (ZPException *) {
        return nullptr;
    }
}

// The entry for a name in the auxiliary file; `read` tells whether there is such a file.
ZPDictionary *auxiliaryEntry(ZPString *name, bool &read) {
    ZPDictionary *all = readDictionary("SystemCharacterSetAux.dict");
    read = all != nullptr;
    return all ? asDictionary(all->objectForKey(name)) : nullptr;
}

ZPConcreteMutableCharacterSet *newSet(ZPDictionary *description, ZPZone *zone = nullptr) {
    auto set = ZPAdopt(ZPConcreteMutableCharacterSet::make(zone));
    set->set = ZPMakeSetFromDictionary(description);
    return set.detach();
}

// From "NAME.bitmap" or "NAME.dict"; null when neither can be read. The caller owns it.
ZPConcreteMutableCharacterSet *newFromResource(ZPString *name) {
    std::string file = fileName(name);
    if (file.empty()) return nullptr;
    if (Resource bitmap(file + ".bitmap"); bitmap) {
        auto set = ZPAdopt(ZPConcreteMutableCharacterSet::make(nullptr));
        std::memcpy(set->ownBits(), bitmap.bytes, std::min<std::size_t>(bitmap.length, _ZPBitmapBytes));
        return set.detach();
    }
    ZPDictionary *description = readDictionary(file + ".dict");
    return description ? newSet(description) : nullptr;
}

void logFailure() {
    static std::atomic_flag logged = ATOMIC_FLAG_INIT;
    if (!logged.test_and_set()) ZPLog("Unable to load extended character set(s); using builtin.\n"_zp);
}

// ---- named sets ----

struct Named {
    ZPString *name;
    bool compact;
    ZPConcreteMutableCharacterSet *set;
    Named *next;
};
std::atomic<Named *> namedSets;

ZPConcreteMutableCharacterSet *keep(ZPString *name, bool compact, ZPConcreteMutableCharacterSet *set) {
    if (compact) set->makeCompact();
    set->mayChange = 0;
    auto *entry = new Named{name->copyWithZone(nullptr), compact, set, namedSets.load(std::memory_order_acquire)};
    while (!namedSets.compare_exchange_weak(entry->next, entry, std::memory_order_acq_rel)) {}
    return set;
}

ZPConcreteMutableCharacterSet *kept(ZPString *name, bool compact) {
    for (Named *entry = namedSets.load(std::memory_order_acquire); entry; entry = entry->next)
        if (entry->compact == compact && entry->name->isEqualToString(name)) return entry->set;
    return nullptr;
}

// The set of a name, kept. Without one the answer is null, and `anyAuxiliary` (may be null) tells whether there
// was an auxiliary file to look into.
ZPConcreteMutableCharacterSet *named(ZPString *name, bool compact, bool *anyAuxiliary) {
    if (auto *set = kept(name, compact)) return set;
    ZPAutoreleasePoolScope pool;
    if (auto *set = newFromResource(name)) return keep(name, compact, set);
    bool read = false;
    if (ZPDictionary *entry = auxiliaryEntry(name, read)) return keep(name, compact, newSet(entry));
    logFailure();
    if (anyAuxiliary) *anyAuxiliary = read;
    return nullptr;
}

struct NamedSetMethods {
    static ZPConcreteMutableCharacterSet *characterSetWithName(Class, ZPString *name) {
        if (!name) return nullptr;
        bool anyAuxiliary = false;
        if (auto *set = named(name, false, &anyAuxiliary)) return set;
        // Not kept: anybody can ask for any name.
        return anyAuxiliary ? newSet(nullptr)->autorelease().as<ZPConcreteMutableCharacterSet>() : nullptr;
    }
    static ZPConcreteMutableCharacterSet *_findDictOrBitmapSetNamed(Class, ZPString *name) {
        auto *set = name ? newFromResource(name) : nullptr;
        return set ? set->autorelease().as<ZPConcreteMutableCharacterSet>() : nullptr;
    }
    static ZPConcreteMutableCharacterSet *_readAndRetainFileNamed_makeCompact(Class, ZPString *name, BOOL compact) {
        return name ? _ZPNamedSet(name, compact) : nullptr;
    }
};

// ---- a client's files ----

// What the concrete set's initialiser reads; null when the file cannot be read. The caller owns it.
ZPConcreteMutableCharacterSet *newFromFile(ZPString *path, ZPZone *zone) {
    if (!path) return nullptr;
    if (path->hasSuffix(".bitmap"_zp)) {
        ZPData *data = ZPData::dataWithContentsOfFile(path);
        if (!data) return nullptr;
        auto set = ZPAdopt(ZPConcreteMutableCharacterSet::make(zone));
        data->getBytes_length(set->ownBits(), _ZPBitmapBytes);
        return set.detach();
    }
    ZPDictionary *description =
        path->hasSuffix(".dict"_zp) ? ZPDictionary::dictionaryWithContentsOfFile(path) : nullptr;
    return description ? newSet(description, zone) : nullptr;
}

struct FileMethods : ZPConcreteMutableCharacterSet {
    ZPCharacterSet *initWithContentsOfFile(ZPString *path) {
        ZPConcreteMutableCharacterSet *read = newFromFile(path, self()->zone());
        if (!read) return self()->init();
        std::swap(set, read->set);
        std::swap(bits, read->bits);
        read->release();
        return this;
    }
};

ZPCharacterSet *withCharacters(ZPArray *numbers) {
    std::u16string units;
    for (unsigned i = 0, n = std::min(numbers->count(), ZPImmutableStringCharacterSet::most); i < n; ++i) {
        id number = numbers->objectAtIndex(i);
        if (!number->isKindOfClass(ZPString::class_())) continue;
        unsigned unit = ZPParseIntegerFromString(number);
        if (unit < _ZPUnitCount) units += char16_t(unit);
    }
    return ZPCharacterSet::characterSetWithCharactersInString(
        ZPString::stringWithCharacters_length(units.data(), unsigned(units.size())));
}

struct CharacterSetFiles {
    static ZPCharacterSet *characterSetWithContentsOfFile(Class, ZPString *path) {
        if (path && path->hasSuffix(".builtin"_zp)) {
            bool read;
            ZPDictionary *entry = auxiliaryEntry(path->lastPathComponent()->stringByDeletingPathExtension(), read);
            if (!entry) return nullptr;
            id characters = entry->objectForKey("characters"_zp);
            if (characters && characters->isKindOfClass(ZPArray::class_())) return withCharacters(characters);
            ZPConcreteMutableCharacterSet *set = newSet(entry);
            set->mayChange = 0;
            return set->autorelease();
        }
        ZPConcreteMutableCharacterSet *set = newFromFile(path, nullptr);
        if (!set) return nullptr;
        set->mayChange = 0;
        return set->autorelease();
    }
};

}  // namespace

ZPConcreteMutableCharacterSet *_ZPNamedSet(ZPString *name, bool compact) { return named(name, compact, nullptr); }

ZP_CATEGORY(ZPCharacterSet, CharacterSetFiles, classMethods(characterSetWithContentsOfFile));

ZP_CATEGORY(ZPConcreteMutableCharacterSet, FileMethods, initWithContentsOfFile,
            classMethodsOf(NamedSetMethods, characterSetWithName, _findDictOrBitmapSetNamed,
                           _readAndRetainFileNamed_makeCompact));
