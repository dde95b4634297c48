// Case mapping: the functions for one unit, and whole strings through them.
#include <Bedrock/strings/ZPCase+Internal.h>
#include <Bedrock/strings/ZPCharacterSet+Internal.h>
#include <Bedrock/strings/ZPString+Internal.h>

namespace {

constexpr unsigned turkish = 1;
constexpr unsigned mostUnits = 3;

struct Expansion { unichar unit; unichar upper[3], title[3]; };
constexpr Expansion expansions[] = {
    {0xFB00, {'F', 'F'}, {'F', 'f'}},           {0xFB01, {'F', 'I'}, {'F', 'i'}},           {0xFB02, {'F', 'L'}, {'F', 'l'}},
    {0xFB03, {'F', 'F', 'I'}, {'F', 'f', 'i'}}, {0xFB04, {'F', 'F', 'L'}, {'F', 'f', 'l'}}, {0xFB05, {'S', 'T'}, {'S', 't'}},
    {0xFB06, {'S', 'T'}, {'S', 't'}},
};
constexpr Expansion sharpS = {0xDF, {'S', 'S'}, {'S', 's'}};

const Expansion *expansionOf(unichar u) {
    if (u == sharpS.unit) return &sharpS;
    return u >= 0xFB00 && u <= 0xFB06 ? &expansions[u - 0xFB00] : nullptr;
}

unsigned write(const unichar (&units)[3], unichar *output) {
    unsigned n = units[2] ? 3 : 2;
    std::copy_n(units, n, output);
    return n;
}

unsigned write(unichar unit, unichar *output) {
    *output = unit;
    return 1;
}

unichar upperASCII(unichar u) { return u >= 'a' && u <= 'z' ? unichar(u - 0x20) : u; }

using Convert = unsigned (*)(unichar, unichar *, unsigned);

// Maps every unit with `convert(unit, previous unit or 0 at the start, output)` into a new Unicode string.
template <class F> ZPString *mapped(ZPString *string, F convert) {
    return _ZPWithUnits(string, [&](auto &&units, unsigned length) -> ZPString * {
        if (length == 0) return ""_zp;
        ZPZoneBlock<unichar> block(std::size_t(length) * mostUnits);
        std::size_t written = 0;
        for (unsigned i = 0; i < length; ++i) written += convert(units[i], i, block.memory + written);
        if (written > 0xFFFFFFFF) ZPException::raise_format(ZPMallocException, "*** out of memory for a string"_zp);
        return _ZPNewStringAdoptingUnits(block.takeShrunk(written), unsigned(written), YES, nullptr)->autorelease();
    });
}

struct CaseMethods : ZPString {
    ZPString *caseCopy(Convert convert, unsigned flags) {
        return mapped(this, [=](unichar u, unsigned, unichar *output) { return convert(u, output, flags); });
    }
    // The two common maps are called by name so that they can be inlined.
    ZPString *uppercaseString() {
        return mapped(this, [](unichar u, unsigned, unichar *output) {
            return u < 0x80 ? write(upperASCII(u), output) : ZPConvertToUpper(u, output, 0);
        });
    }
    ZPString *lowercaseString() {
        return mapped(this, [](unichar u, unsigned, unichar *output) { return ZPConvertToLower(u, output, 0); });
    }
    ZPString *capitalizedStringWithFlags(unsigned flags) {
        bool afterLetter = false;
        return mapped(this, [=](unichar u, unsigned, unichar *output) mutable {
            unsigned n = afterLetter ? ZPConvertToLower(u, output, flags) : ZPConvertToTitle(u, output, flags);
            afterLetter = _ZPIsInStandardSet(_ZPLetterSet, u);
            return n;
        });
    }
    ZPString *capitalizedString() { return _capitalizedStringWithFlags(0); }
};

}  // namespace

ZP_CATEGORY(ZPString, ZPStringCase)
    .method<&CaseMethods::caseCopy>("_caseCopyAux:flags:")
    .method<&CaseMethods::uppercaseString>("uppercaseString")
    .method<&CaseMethods::lowercaseString>("lowercaseString")
    .method<&CaseMethods::capitalizedStringWithFlags>("_capitalizedStringWithFlags:")
    .method<&CaseMethods::capitalizedString>("capitalizedString");

unsigned ZPConvertToUpper(unichar unit, unichar *output, unsigned flags) {
    if (flags & turkish) {
        if (unit == 'i') return write(0x130, output);
        if (unit == 0x131) return write('I', output);
    }
    if (unit < 0x80) return write(upperASCII(unit), output);
    if (const Expansion *e = expansionOf(unit)) return write(e->upper, output);
    return write(unit == 0xB5 ? unit : _ZPUpperTable[unit], output);
}

unsigned ZPConvertToTitle(unichar unit, unichar *output, unsigned flags) {
    if (flags & turkish) {
        if (unit == 'i') return write(0x130, output);
        if (unit == 0x131) return write('I', output);
    }
    if (unit < 0x80) return write(upperASCII(unit), output);
    if (const Expansion *e = expansionOf(unit)) return write(e->title, output);
    return write(_ZPTitleTable[unit], output);
}

unsigned ZPConvertToLower(unichar unit, unichar *output, unsigned flags) {
    if (flags & turkish) {
        if (unit == 0x130) return write('i', output);
        if (unit == 'I') return write(0x131, output);
    }
    if (unit < 0x80) return write(unit >= 'A' && unit <= 'Z' ? unichar(unit + 0x20) : unit, output);
    return write(_ZPLowerTable[unit], output);
}
