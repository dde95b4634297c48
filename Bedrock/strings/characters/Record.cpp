// SPDX-License-Identifier: MIT
// Bitmaps, records and their dumps.
#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/strings/characters/Characters.h>
#include <Bedrock/strings/cluster/Cluster.h>

#include <bit>
#include <string>

namespace {

// The first unit from `from` on whose bit is `value`; _ZPUnitCount when there is none.
unsigned nextBit(const unsigned char *bits, unsigned from, bool value) {
    const unsigned char whole = value ? 0 : 0xFF;
    while (from < _ZPUnitCount) {
        if ((from & 7) == 0 && bits[from >> 3] == whole) from += 8;
        else if (_ZPBit(bits, from) == value) return from;
        else ++from;
    }
    return _ZPUnitCount;
}

template <class F> void eachRun(const unsigned char *bits, F f) {
    for (unsigned first = nextBit(bits, 0, true); first < _ZPUnitCount;) {
        unsigned end = nextBit(bits, first, false);
        f(first, end - 1);
        first = nextBit(bits, end, true);
    }
}

ZPCharacterSetRecord *newRecord(ZPZone *zone, std::size_t size) {
    auto *record = reinterpret_cast<ZPCharacterSetRecord *>(_ZPAllocate<char>(size, zone, "a character set"));
    return record;
}

ZPArray *arrayIn(ZPDictionary *dictionary, ZPString *key) {
    id value = dictionary->objectForKey(key);
    return value && value->isKindOfClass(ZPArray::class_()) ? value.as<ZPArray>() : nullptr;
}

unsigned numberOf(id value) {
    return value && value->isKindOfClass(ZPString::class_()) ? ZPParseIntegerFromString(value) : 0xFFFFFFFF;
}

// How many entries of the array the dictionary says there are; all of them when it does not say.
unsigned countIn(ZPDictionary *dictionary, ZPString *key, ZPArray *array, unsigned each) {
    unsigned count = array->count() / each;
    id said = dictionary->objectForKey(key);
    return said ? std::min(count, numberOf(said)) : count;
}

// Text as it grows; most of it is numbers.
struct Text {
    std::string bytes;
    void format(const char *format, unsigned value) {
        char piece[64];
        bytes.append(piece, unsigned(std::snprintf(piece, sizeof piece, format, value)));
    }
    void list(const char *name, const unsigned *values, unsigned count) {
        bytes += name;
        for (unsigned i = 0; i < count; ++i) format(i ? ", %u" : "%u", values[i]);
        bytes += " );\n";
    }
    ZPString *string() const {
        return _ZPNewInlineCString(bytes.data(), unsigned(bytes.size()), nullptr)->autorelease();
    }
};

}  // namespace

// ---- bitmaps ----

void _ZPSetBits(unsigned char *bits, ZPRange range, bool value) {
    if (range.location >= _ZPUnitCount || range.length == 0) return;
    unsigned first = range.location, last = first + std::min(range.length, _ZPUnitCount - first) - 1;
    auto change = [=](unsigned byte, unsigned mask) {
        bits[byte] = static_cast<unsigned char>(value ? bits[byte] | mask : bits[byte] & ~mask);
    };
    unsigned head = 0xFF << (first & 7) & 0xFF, tail = 0xFF >> (7 - (last & 7));
    if (first >> 3 == last >> 3) return change(first >> 3, head & tail);
    change(first >> 3, head);
    std::memset(bits + (first >> 3) + 1, value ? 0xFF : 0, (last >> 3) - (first >> 3) - 1);
    change(last >> 3, tail);
}

void _ZPSetBits(unsigned char *bits, ZPString *string, bool value) {
    _ZPWithUnits(string, [&](auto &&units, unsigned length) {
        for (unsigned i = 0; i < length; ++i) _ZPSetBits(bits, ZPRange{units[i], 1}, value);
    });
}

ZPSetBitmap::ZPSetBitmap(ZPCharacterSet *set) {
    bool inverted = false;
    set = _ZPBehindInversions(set, inverted);
    std::memset(bits, 0, sizeof bits);
    Class cls = set ? set->isa : nullptr;
    if (cls == ZPBuiltinCharacterSet::class_()) {
        auto *standard = static_cast<ZPBuiltinCharacterSet *>(set);
        if (ZPConcreteMutableCharacterSet *full = _ZPFullSet(standard)) set = full;
        else std::memcpy(bits, _ZPLow.of[standard->offset], sizeof _ZPLow.of[0]);
        cls = set->isa;
    }
    if (cls == ZPConcreteMutableCharacterSet::class_()) {
        auto *concrete = static_cast<ZPConcreteMutableCharacterSet *>(set);
        if (concrete->bits) std::memcpy(bits, concrete->bits, sizeof bits);
        else if (concrete->set) concrete->set->addTo(bits);
    } else if (cls == ZPImmutableRangeCharacterSet::class_()) {
        auto *range = static_cast<ZPImmutableRangeCharacterSet *>(set);
        _ZPSetBits(bits, {range->low, range->high - range->low}, true);
    } else if (cls == ZPImmutableStringCharacterSet::class_()) {
        // The bitmap of a set that is known by its membership alone never holds U+FFFF.
        auto *some = static_cast<ZPImmutableStringCharacterSet *>(set);
        for (unsigned i = 0; i < some->numChars && some->buffer[i] != 0xFFFF; ++i)
            _ZPSetBits(bits, {some->buffer[i], 1}, true);
    } else if (set && cls != ZPBuiltinCharacterSet::class_()) {
        if (set->respondsToSelector("bitmapRepresentation"_sel)) {
            if (ZPData *data = set->bitmapRepresentation()) data->getBytes_length(bits, sizeof bits);
        } else {
            for (unsigned u = 0; u < _ZPUnitCount; ++u)
                if (set->characterIsMember(unichar(u))) _ZPSetBits(bits, {u, 1}, true);
        }
    }
    if (inverted)
        for (unsigned char &byte : bits) byte = ~byte;
}

unsigned ZPSetBitmap::count() const {
    unsigned n = 0;
    for (unsigned i = 0; i < sizeof bits; i += 8) {
        std::uint64_t word;
        std::memcpy(&word, bits + i, 8);
        n += unsigned(std::popcount(word));
    }
    return n;
}

ZPData *ZPSetBitmap::data() const { return ZPData::dataWithBytes_length(bits, sizeof bits); }

// ---- records ----

bool ZPCharacterSetRecord::isSingle(unichar u) const {
    const unsigned *single = units(), *end = single + singles;
    return singles < linearSearch ? std::find(single, end, u) != end : std::binary_search(single, end, u);
}

unsigned ZPCharacterSetRecord::count() const {
    const unsigned *range = units() + singles;
    unsigned n = singles;
    for (unsigned i = 0; i < ranges; ++i) n += range[2 * i + 1] - range[2 * i] + 1;
    return n;
}

void ZPCharacterSetRecord::addTo(unsigned char *bits) const {
    const unsigned *single = units(), *range = single + singles;
    for (unsigned i = 0; i < singles; ++i) _ZPSetBits(bits, {single[i], 1}, true);
    for (unsigned i = 0; i < ranges; ++i) _ZPSetBits(bits, {range[2 * i], range[2 * i + 1] - range[2 * i] + 1}, true);
}

ZPCharacterSetRecord *ZPMakeSetStructFromBitmap(const void *bitmap) {
    auto *bits = static_cast<const unsigned char *>(bitmap);
    ZPCharacterSetRecord head = {1, {}, 0, 0, 0xFFFF, 0};
    eachRun(bits, [&](unsigned first, unsigned last) {
        if (first == last) {
            head.singmin = std::min(head.singmin, first);
            head.singmax = first;
            ++head.singles;
        } else ++head.ranges;
        for (unsigned block = first >> 10; block <= last >> 10; ++block) head.summary[block >> 5] |= 1u << (block & 31);
    });
    ZPCharacterSetRecord *record = newRecord(nullptr, head.size());
    *record = head;
    unsigned *single = record->units(), *range = single + head.singles;
    eachRun(bits, [&](unsigned first, unsigned last) {
        if (first == last) *single++ = first;
        else *range++ = first, *range++ = last;
    });
    if (record->ranges >= record->linearSearch) {
        auto *index = const_cast<std::uint16_t *>(record->index());
        range = record->units() + record->singles;
        for (unsigned block = 0, at = 0; block <= record->blocks; ++block) {
            while (at < record->ranges && range[2 * at + 1] < block << 10) ++at;
            index[block] = static_cast<std::uint16_t>(at);
        }
    }
    return record;
}

ZPCharacterSetRecord *ZPMakeSetFromDictionary(ZPDictionary *dictionary) {
    unsigned char bits[_ZPBitmapBytes] = {};
    if (ZPArray *singles = dictionary ? arrayIn(dictionary, "singles"_zp) : nullptr)
        for (unsigned i = 0, n = countIn(dictionary, "nsingles"_zp, singles, 1); i < n; ++i)
            _ZPSetBits(bits, {numberOf(singles->objectAtIndex(i)), 1}, true);
    if (ZPArray *ranges = dictionary ? arrayIn(dictionary, "ranges"_zp) : nullptr)
        for (unsigned i = 0, n = countIn(dictionary, "nranges"_zp, ranges, 2); i < n; ++i) {
            unsigned first = numberOf(ranges->objectAtIndex(2 * i)), last = numberOf(ranges->objectAtIndex(2 * i + 1));
            if (first <= last && last != 0xFFFFFFFF)
                _ZPSetBits(bits, {first, std::min(last, _ZPUnitCount) - first + 1}, true);
        }
    // The short form of small sets.
    if (ZPArray *units = dictionary ? arrayIn(dictionary, "characters"_zp) : nullptr)
        for (unsigned i = 0, n = std::min(units->count(), ZPImmutableStringCharacterSet::most); i < n; ++i)
            _ZPSetBits(bits, {numberOf(units->objectAtIndex(i)), 1}, true);
    return ZPMakeSetStructFromBitmap(bits);
}

ZPCharacterSetRecord *ZPCopySetStructFromZone(const ZPCharacterSetRecord *record, ZPZone *zone) {
    if (!record) return nullptr;
    ZPCharacterSetRecord *copy = newRecord(zone, record->size());
    std::memcpy(static_cast<void *>(copy), record, record->size());
    return copy;
}

unsigned ZPParseIntegerFromString(ZPString *string) {
    return _ZPWithUnits(string, [](auto &&units, unsigned length) {
        unsigned at = 0, base = 10, value = 0;
        while (at < length && units[at] == ' ') ++at;
        if (at + 1 < length && units[at] == '0' && (units[at + 1] | 0x20) == 'x') {
            at += 2;
            base = 16;
        }
        for (; at < length; ++at) {
            int digit = _ZPHexValue(units[at]);
            if (digit < 0) break;
            value = value * base + unsigned(digit);
        }
        return value;
    });
}

// ---- dumps ----

static ZPString *dumpBitmap(Class, const void *bitmap) {
    if (!bitmap) return "<NIL>"_zp;
    Text text{"10 10 translate\n256 256 scale\n256 256 1 [256 0 0 -256 0 256]\n{<"};
    for (unsigned i = 0; i < _ZPBitmapBytes; ++i) {
        unsigned byte = static_cast<const unsigned char *>(bitmap)[i], reversed = 0;
        for (unsigned bit = 0; bit < 8; ++bit) reversed |= (byte >> bit & 1) << (7 - bit);
        text.format(i % 32 ? "%02X" : "\n%02X", ~reversed & 0xFF);
    }
    text.bytes += ">} image\nshowpage\n";
    return text.string();
}

static ZPString *dumpRecord(Class, const void *pointer) {
    if (!pointer) return "<NIL>"_zp;
    auto *record = static_cast<const ZPCharacterSetRecord *>(pointer);
    Text text{"{\n"};
    text.format("\tnsingles = %u;\n", record->singles);
    text.format("\tnranges = %u;\n", record->ranges);
    text.format("\tsingmin = %u;\n", record->singmin);
    text.format("\tsingmax = %u;\n", record->singmax);
    text.list("\tsingles = ( ", record->units(), record->singles);
    text.list("\tranges = ( ", record->units() + record->singles, 2 * record->ranges);
    text.bytes += "}\n";
    return text.string();
}

struct CharacterSetDumps {
    static ZPString *_dumpBitmapRepresentation(Class self, const void *bitmap) { return dumpBitmap(self, bitmap); }
    static ZPString *_dumpSetRepresentation(Class self, const void *record) { return dumpRecord(self, record); }
};

ZP_CATEGORY(ZPCharacterSet, CharacterSetDumps, classMethods(_dumpBitmapRepresentation, _dumpSetRepresentation));
