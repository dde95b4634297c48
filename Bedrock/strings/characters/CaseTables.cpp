// SPDX-License-Identifier: MIT
// The case tables: the built-in ones, and those of the file "CaseMapping" in the resource directory.
//
// The file: four 16-bit numbers, of which the last three count the entries of the lower, upper and title tables,
// then the tables; an entry is a unit and the unit it maps to, or 0. Everything is little-endian. A mapping holds
// only for units in the bitmap file of its direction.
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/platform/host/Host.h>
#include <Bedrock/platform/kernel/MakeOnce.h>
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/strings/characters/Case.h>
#include <Bedrock/strings/characters/Characters.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

struct Page {
    unichar of[256] = {};
};

consteval Page lowerPage() {
    Page page;
    for (unsigned u = 0; u < 256; ++u)
        if (_ZPIsCapitalLetter(u) || (u >= 0xC0 && u <= 0xDE && u != 0xD7)) page.of[u] = 0x20;
    return page;
}

consteval Page upperPage() {
    Page page;
    for (unsigned u = 0; u < 256; ++u)
        if (_ZPIsSmallLetter(u) || (u >= 0xE0 && u <= 0xFE && u != 0xF7)) page.of[u] = unichar(-0x20);
    page.of[0xFF] = 0x178 - 0xFF;
    return page;
}

consteval Page titlePage() {
    Page page = upperPage();
    for (unsigned u = 0x80; u < 256; ++u) page.of[u] = 0;
    return page;
}

// Mappings that hold whatever the file says.
struct FixedPages {
    Page lower, upper;
    consteval FixedPages() {
        lower.of[0x41] = 1, upper.of[0x42] = unichar(-1);
        lower.of[0x52] = 1, upper.of[0x53] = unichar(-1);
        lower.of[0x78] = unichar(0xFF - 0x178);
    }
};

constexpr Page noChange, lowLower = lowerPage(), lowUpper = upperPage(), lowTitle = titlePage();
constexpr FixedPages fixedPages;

ZPCaseTables makeBuiltin() {
    ZPCaseTables tables = {};
    for (ZPCaseMap *map : {&tables.lower, &tables.upper, &tables.title})
        for (const unichar *&page : map->pages) page = noChange.of;
    tables.lower.pages[0] = lowLower.of;
    tables.upper.pages[0] = lowUpper.of;
    tables.title.pages[0] = lowTitle.of;
    tables.lower.pages[1] = fixedPages.lower.of;
    tables.upper.pages[1] = fixedPages.upper.of;
    return tables;
}

// Tables whose pages are their own where they differ from the built-in ones.
struct LoadedTables : ZPCaseTables {
    LoadedTables() : ZPCaseTables(_ZPBuiltinCaseTables()) {}
    ~LoadedTables() {
        for (ZPCaseMap *map : {&lower, &upper, &title})
            for (unsigned high = 0; high < 256; ++high)
                if (isOwn(map, high)) std::free(const_cast<unichar *>(map->pages[high]));
    }
    bool isOwn(const ZPCaseMap *map, unsigned high) const {
        const ZPCaseMap &builtin = map == &lower   ? _ZPBuiltinCaseTables().lower
                                   : map == &upper ? _ZPBuiltinCaseTables().upper
                                                   : _ZPBuiltinCaseTables().title;
        return map->pages[high] != builtin.pages[high];
    }
    bool isFixed(const ZPCaseMap &map, unsigned low) const {
        return (&map == &lower && fixedPages.lower.of[low]) || (&map == &upper && fixedPages.upper.of[low]);
    }
    bool add(ZPCaseMap &map, const ZPHostResource &file, std::size_t at, unsigned count, unsigned known,
             const char *bitmapName) {
        ZPHostResource bitmap(bitmapName);
        if (!bitmap) return false;
        for (unsigned i = 0; i < count; ++i, at += 4) {
            unsigned from = file.number(at), to = file.number(at + 2);
            if (from < known || to == 0 || from >> 3 >= bitmap.length || !_ZPBit(bitmap.bytes, from)) continue;
            unsigned high = from >> 8;
            if (high == 1 && isFixed(map, from & 0xFF)) continue;
            if (!isOwn(&map, high)) {
                auto *page = static_cast<unichar *>(std::malloc(sizeof(Page)));
                if (!page) return false;
                std::memcpy(page, map.pages[high], sizeof(Page));
                map.pages[high] = page;
            }
            const_cast<unichar *>(map.pages[high])[from & 0xFF] = unichar(to - from);
        }
        return true;
    }
    bool read() {
        ZPHostResource file;
        if (!file.read("CharacterSets/CaseMapping-L.data") && !file.read("CharacterSets/CaseMapping")) return false;
        if (file.length < 8) return false;
        unsigned lowers = file.number(2), uppers = file.number(4), titles = file.number(6);
        if (file.length < 8 + 4 * (std::size_t(lowers) + uppers + titles)) return false;
        if (!add(lower, file, 8, lowers, 0x100, "CharacterSets/hasNonSelfLowercaseMapping.bitmap")) return false;
        if (!add(upper, file, 8 + 4 * std::size_t(lowers), uppers, 0x100,
                 "CharacterSets/hasNonSelfUppercaseMapping.bitmap"))
            return false;
        if (!add(title, file, 8 + 4 * (std::size_t(lowers) + uppers), titles, 0x80,
                 "CharacterSets/hasNonSelfTitlecaseMapping.bitmap"))
            return false;
        return true;
    }
};

}  // namespace

// Not constant data: the dynamic linker would find 768 addresses at every start.
const ZPCaseTables &_ZPBuiltinCaseTables() {
    static const ZPCaseTables *tables;
    return *ZPMakeOnce(tables, [] { return new const ZPCaseTables(makeBuiltin()); });
}
const ZPCaseTables *_ZPReadCaseTables;

const ZPCaseTables *_ZPLoadCaseTables() {
    auto made = std::make_unique<LoadedTables>();
    if (!made->read()) {
        static std::atomic_flag logged = ATOMIC_FLAG_INIT;
        if (!logged.test_and_set()) ZPLog("ZPCharConversion: could not load case conversion table.\n"_zp);
        return &_ZPBuiltinCaseTables();
    }
    return ZPKeepFirst(_ZPReadCaseTables, made.release(),
                       [](const ZPCaseTables *late) { delete static_cast<const LoadedTables *>(late); });
}
