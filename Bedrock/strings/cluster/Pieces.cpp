// SPDX-License-Identifier: MIT
// Parts of strings, and strings made of others.
#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/strings/characters/Case.h>
#include <Bedrock/strings/characters/Characters.h>
#include <Bedrock/strings/ZPMutableString.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/strings/cluster/Cluster.h>

namespace {

// Which storage a substring may share.
enum class Family { other, bytes, units };

Family familyOf(ZPString *string) {
    for (Class c = string->isa; c && c != ZPString::class_(); c = c->superclass) {
        if (c == ZPInlineCString::class_() || c == ZPSimpleCString::class_()) return Family::bytes;
        if (c == ZPSimpleString::class_()) return Family::units;
    }
    return Family::other;
}

ZPString *newShared(ZPString *parent, Family family, ZPRange range, ZPZone *zone) {
    ZPRef<ZPString> held = ZPAdopt<ZPString>(parent->copyWithZone(parent->zone()));
    ZPString *result;
    if (family == Family::bytes) {
        ZPCSubstring *s = ZPAllocateObject(ZPCSubstring::class_(), 0, zone);
        s->bytes = const_cast<char *>(reinterpret_cast<const char *>(_ZPViewOfString(held).bytes)) + range.location;
        s->numBytes = range.length;
        s->_flags.freeWhenDone = 1;
        s->_referenceString = held.detach();
        result = s;
    } else {
        ZPUnicodeSubstring *s = ZPAllocateObject(ZPUnicodeSubstring::class_(), 0, zone);
        s->characters = const_cast<unichar *>(_ZPViewOfString(held).units) + range.location;
        s->numCharacters = range.length;
        s->_referenceString = held.detach();
        result = s;
    }
    return result;
}

struct PieceMethods : ZPString {
    ZPString *_newSubstringWithRange_zone(ZPRange range, ZPZone *zone) {
        ZPStringView view = _ZPViewOfString(this);
        _ZPCheckRange(this, "_newSubstringWithRange:zone:"_sel, range, view.length);
        if (range.length == 0) return ""_zp;
        Family family = familyOf(this);
        if (range.length == view.length) return family == Family::other ? self()->copyWithZone(zone) : self()->retain();
        if (family != Family::other && range.length >= _ZPShareThreshold) return newShared(this, family, range, zone);
        if (family == Family::bytes)
            return _ZPNewInlineCString(reinterpret_cast<const char *>(view.bytes) + range.location, range.length, zone);
        if (family == Family::units) return _ZPNewStringWithUnits(view.units + range.location, range.length, zone);
        ZPZoneBlock<unichar> block(range.length, zone);
        self()->getCharacters_range(block.get(), range);
        return _ZPNewStringAdoptingUnits(block.take(), range.length, YES, zone);
    }
    ZPString *_newSubstringFromRange_zone(ZPRange range, ZPZone *) {
        return self()->_newSubstringWithRange_zone(range, self()->zone());
    }
    ZPString *substringWithRange(ZPRange range) {
        _ZPCheckRange(this, "substringWithRange:"_sel, range, self()->length());
        return self()->_newSubstringWithRange_zone(range, self()->zone())->autorelease();
    }
    ZPString *substringFromIndex(unsigned index) {
        unsigned length = self()->length();
        if (index > length) _ZPRaiseOutOfBounds(this, "substringFromIndex:"_sel);
        return self()->substringWithRange({index, length - index});
    }
    ZPString *substringToIndex(unsigned index) {
        if (index > self()->length()) _ZPRaiseOutOfBounds(this, "substringToIndex:"_sel);
        return self()->substringWithRange({0, index});
    }

    // ---- joining ----

    ZPString *copied(ZPString *string) { return string->copyWithZone(nullptr)->autorelease(); }
    ZPString *stringByAppendingString(ZPString *other) {
        return _ZPWithViews(this, other, [&](const ZPStringView &mine, const ZPStringView &its) {
            return joined(mine, other, its);
        });
    }
    ZPString *joined(const ZPStringView &mine, ZPString *other, const ZPStringView &its) {
        Family family = familyOf(this);
        if (mine.length == 0 && (its.length == 0 || !other)) return ""_zp;
        if (mine.length == 0) return copied(other);
        if (its.length == 0) return copied(this);
        if (family == Family::other || !mine.shown())
            return _ZPNewStringByAppendingStrings(self()->zone(), this, other, static_cast<ZPString *>(nullptr))
                ->autorelease();
        std::uint64_t sum = std::uint64_t(mine.length) + its.length;
        if (sum > 0xFFFFFFFF) _ZPRaiseOutOfMemory("a string");
        unsigned length = unsigned(sum);
        ZPZone *zone = QLZoneFromPtr(this);
        if (mine.bytes && its.bytes) {
            ZPStringView both[] = {mine, its};
            ZPString *joined = _ZPNewStringJoiningBytes(both, 2, length, zone);
            ZPAutoreleaseObject(joined);
            return joined;
        }
        ZPZoneBlock<unichar> block(length, zone);
        _ZPCopyUnits(mine, 0, mine.length, block.get());
        if (its.shown()) _ZPCopyUnits(its, 0, its.length, block.get() + mine.length);
        else other->getCharacters_range(block.get() + mine.length, {0, its.length});
        return _ZPNewStringAdoptingUnits(block.take(), length, YES, zone)->autorelease();
    }
    ZPString *stringByAppendingFormat(ZPString *format, std::va_list arguments) {
        ZPRef<ZPString> tail =
            ZPAdopt(_ZPPlaceholderStringFromZone(nullptr)->initWithFormat_locale_arguments(format, nullptr, arguments));
        return _ZPNewStringByAppendingStrings(self()->zone(), this, tail.get(), static_cast<ZPString *>(nullptr))
            ->autorelease();
    }

    // ---- taking apart ----

    // The list retains its pieces: one that borrowed would part at once, or keep the whole text.
    ZPString *newPiece(ZPRange range, ZPZone *zone) {
        ZPStringView view;
        if (!_ZPViewFields(this, view) || range.length == view.length)
            return self()->_newSubstringWithRange_zone(range, zone);
        if (view.units) return _ZPNewStringWithUnits(view.units + range.location, range.length, zone);
        return _ZPNewInlineCString(reinterpret_cast<const char *>(view.bytes) + range.location, range.length, zone);
    }
    void add(ZPMutableArray *pieces, ZPRange range, ZPZone *zone) {
        ZPRef<ZPString> piece = ZPAdopt(newPiece(range, zone));
        pieces->addObject(piece);
    }
    ZPArray *componentsSeparatedByString(ZPString *separator) {
        unsigned length = self()->length(), from = 0;
        ZPRange found = self()->rangeOfString_options_range(separator, 0, {0, length});
        if (found.length == 0) return ZPArray::arrayWithObject(this);
        ZPMutableArray *pieces = ZPMutableArray::array();
        ZPZone *zone = self()->zone();
        while (found.length) {
            add(pieces, {from, found.location - from}, zone);
            from = found.location + found.length;
            found = self()->rangeOfString_options_range(separator, 0, {from, length - from});
        }
        add(pieces, {from, length - from}, zone);
        return pieces;
    }
    ZPArray *_componentsSeparatedBySet(ZPCharacterSet *set) {
        ZPMutableArray *pieces = ZPMutableArray::arrayWithCapacity(3);
        ZPZone *zone = self()->zone();
        _ZPWithHeldUnits(this, [&](auto &&units, unsigned length) {
            ZPMembership isSeparator(set);
            for (unsigned i = 0; i < length; ++i) {
                unsigned from = i;
                while (i < length && !isSeparator(units[i])) ++i;
                if (i > from) add(pieces, {from, i - from}, zone);
            }
        });
        return pieces;
    }
    // The longest run of whole composed characters within the units that agree.
    ZPString *commonPrefixWithString_options(ZPString *other, unsigned options) {
        if (!other) return ""_zp;
        if (options & ZPBackwardsSearch) return commonPrefixBySearch(other, options);
        unsigned same = 0, end = 0, length = self()->length();
        ZPHeldView held(this), heldOther(other);
        _ZPWithUnitsOf(held, this, [&](auto &&mine, unsigned n) {
            _ZPWithUnitsOf(heldOther, other, [&](auto &&its, unsigned m) {
                bool folding = options & ZPCaseInsensitiveSearch;
                ZPCaseMapper fold;
                auto agree = [&](unichar a, unichar b) { return a == b || (folding && fold(a) == fold(b)); };
                while (same < n && same < m && agree(mine[same], its[same])) ++same;
            });
            if (same == n) return;
            // A sequence surely begins where neither the unit nor the one before asks for company.
            for (end = same; end > 0; --end)
                if (!_ZPIsInStandardSet(_ZPNonBaseSet, mine[end]) && (mine[end - 1] & 0xFC00) != 0xD800) break;
        });
        if (same == 0 || same == length) return self()->substringToIndex(same);
        for (;;) {
            ZPRange next = self()->rangeOfComposedCharacterSequenceAtIndex(end);
            if (next.location + next.length > same) return self()->substringToIndex(end);
            end = next.location + next.length;
        }
    }
    ZPString *commonPrefixBySearch(ZPString *other, unsigned options) {
        unsigned length = self()->length();
        ZPString *common = ""_zp;
        for (unsigned at = 0; at < length;) {
            ZPRange sequence = self()->rangeOfComposedCharacterSequenceAtIndex(at);
            at = std::max(sequence.location + sequence.length, at + 1);
            ZPString *prefix = self()->substringToIndex(at);
            if (other->rangeOfString_options(prefix, options | ZPAnchoredSearch).length == 0) break;
            common = prefix;
        }
        return common;
    }

    // ---- layout ----

    ZPString *_stringWithSeparator_atFrequency(unichar separator, int frequency) {
        unsigned n = self()->length();
        if (n == 0) return ""_zp;
        unsigned group = frequency > 0 ? unsigned(frequency) : n;
        std::size_t total = std::size_t(n) + (n - 1) / group;
        if (total > 0xFFFFFFFF) _ZPRaiseOutOfMemory("a string");
        ZPZoneBlock<unichar> block(total);
        _ZPWithUnits(this, [&](auto &&units, unsigned length) {
            unichar *out = block.get() + total;
            for (unsigned i = 0; i < length; ++i) {
                if (i && i % group == 0) *--out = separator;
                *--out = units[length - 1 - i];
            }
        });
        return ZPString::stringWithCharacters_length(block.get(), unsigned(total));
    }
    void _copyToUnicharBuffer_saveLength(unichar **buffer, int *length) {
        unsigned n = self()->length();
        unichar *units = nullptr;
        if (n) {
            ZPZoneBlock<unichar> block(std::size_t(n) + 1);
            self()->getCharacters_range(block.get(), {0, n});
            units = block.take();
        }
        if (*buffer) ZPZoneFree(ZPZoneFromPointer(*buffer), *buffer);
        *buffer = units;
        *length = int(n);
    }
};

}  // namespace

ZP_CATEGORY(ZPString, PieceMethods, _newSubstringWithRange_zone, _newSubstringFromRange_zone, substringWithRange,
            substringFromIndex, substringToIndex, stringByAppendingString, variadic(stringByAppendingFormat),
            componentsSeparatedByString, _componentsSeparatedBySet, commonPrefixWithString_options,
            _stringWithSeparator_atFrequency, _copyToUnicharBuffer_saveLength);
