// SPDX-License-Identifier: MIT
// Base characters and what combines with them, from the data file "NonHangulDecomp".
//
// The file is a run of 16-bit words, little-endian: two that nothing is read from, the number of entries, another one,
// then for each entry a unit and the word at which its decomposition begins, which ends with 0.
#include <Bedrock/strings/ZPStringEncoding.h>

#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/platform/host/Host.h>
#include <Bedrock/platform/kernel/MakeOnce.h>
#include <Bedrock/strings/ZPCharacterSet.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

// Of a unit in one step. Two steps write at most the square of it.
constexpr unsigned longestStep = 4;
static_assert(longestStep * longestStep <= ZPLongestDecomposition);

struct Entry {
    unichar unit;
    unsigned char count;
    unichar units[longestStep];
};

struct Table {
    std::vector<Entry> entries;  // sorted by unit
    const Entry *find(unichar unit) const {
        auto at = std::lower_bound(entries.begin(), entries.end(), unit,
                                   [](const Entry &e, unichar u) { return e.unit < u; });
        return at != entries.end() && at->unit == unit ? &*at : nullptr;
    }
};

// Answers an empty table for a file that does not hold what it says.
std::unique_ptr<Table> parse(const ZPHostResource &file) {
    constexpr std::size_t headerWords = 4;
    std::size_t words = file.length / 2;
    auto word = [&](std::size_t i) { return static_cast<unichar>(file.number(2 * i)); };
    auto table = std::make_unique<Table>();
    std::size_t count = words >= headerWords ? word(2) : 0;
    if (headerWords + 2 * count > words) return table;
    table->entries.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        Entry e{word(headerWords + 2 * i), 0, {}};
        std::size_t at = word(headerWords + 2 * i + 1);
        for (; at < words && word(at) && e.count < longestStep; ++at) e.units[e.count++] = word(at);
        bool ends = at < words && word(at) == 0, rises = table->entries.empty() || table->entries.back().unit < e.unit;
        if (!ends || !rises || e.count == 0) return std::make_unique<Table>();
        table->entries.push_back(e);
    }
    return table;
}

// The table, read at the first call; empty when that failed.
const Table &shared() {
    static Table *table;
    bool isNew = false;
    Table *kept = ZPMakeOnce(
        table, [&] { return isNew = true, parse(ZPHostResource("CharacterSets/NonHangulDecomp.data")).release(); },
        [&](Table *late) {
            isNew = false;
            delete late;
        });
    if (isNew && kept->entries.empty()) ZPLog("Warning: unable to load character decomposition table.\n"_zp);
    return *kept;
}

// One step; `reason` is what a hole in the table raises.
unsigned step(unichar unit, unichar *units, ZPString *reason) {
    constexpr unichar firstHangul = 0xAC00, lastHangul = 0xD7A3;
    const Table *table = unit < 0xC0 || (unit >= firstHangul && unit <= lastHangul) ? nullptr : &shared();
    if (!table || table->entries.empty() || !ZPCharacterSet::decomposableCharacterSet()->characterIsMember(unit)) {
        units[0] = unit;
        return 1;
    }
    const Entry *e = table->find(unit);
    if (!e) ZPException::raise_format(ZPInternalInconsistencyException, reason);
    std::copy_n(e->units, e->count, units);
    return e->count;
}

}  // namespace

unsigned ZPSimplyDecomposeCharacter(unichar unit, unichar *units) {
    return step(unit, units, "Internal error in ZPSimpleDecomposeCharacter()."_zp);
}

unsigned ZPDecomposeCharacter(unichar unit, unichar *units) {
    unichar first[longestStep];
    unsigned n = step(unit, first, "Internal error in ZPDecomposeCharacter()."_zp), written = 0;
    if (n == 1 && first[0] == unit) return units[0] = unit, 1;
    for (unsigned i = 0; i < n; ++i) written += ZPSimplyDecomposeCharacter(first[i], units + written);
    return written;
}
