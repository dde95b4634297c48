// SPDX-License-Identifier: MIT
// Scanners: the front, which rests on the primitives, and the concrete class. References are counted beside the
// instance.
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/core/Field.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/platform/kernel/MakeOnce.h>
#include <Bedrock/strings/characters/Characters.h>
#include <Bedrock/strings/ZPNumberReader.h>
#include <Bedrock/strings/formats/Scanner+Internal.h>
#include <Bedrock/strings/cluster/Cluster.h>

namespace {

// The first index from `from` on whose unit is (or is not) a member; the length when there is none.
unsigned find(ZPString *string, unsigned from, ZPCharacterSet *set, bool member) {
    return _ZPWithUnitsAndSet(string, set, [&](auto &&units, unsigned length, const ZPMembership &isMember) {
        unsigned at = from;
        while (at < length && isMember(units[at]) != member) ++at;
        return at;
    });
}

unsigned skip(ZPString *string, unsigned from, ZPCharacterSet *set) {
    return set ? find(string, from, set, false) : from;
}

bool readHex(ZPString *string, ZPCharacterSet *skipped, unsigned &result, unsigned &location) {
    unsigned at = skip(string, location, skipped);
    return _ZPWithUnits(string, [&](auto &&units, unsigned length) {
        auto digitAt = [&](unsigned i) { return i < length ? _ZPHexValue(units[i]) : -1; };
        if (digitAt(at) < 0) return false;
        result = 0;
        if (digitAt(at) == 0) {
            ++at;
            if (digitAt(at) < 0 && at < length && (units[at] | 0x20) == 'x' && digitAt(at + 1) >= 0) ++at;
        }
        for (int digit; (digit = digitAt(at)) >= 0; ++at)
            result = result < 0x10000000 ? result << 4 | unsigned(digit) : 0xFFFFFFFF;
        location = at;
        return true;
    });
}

ZPCharacterSet *defaultSkipSet() {
    static ZPCharacterSet *set;
    return ZPMakeOnce(set, [] { return ZPCharacterSet::whitespaceAndNewlineCharacterSet()->retain(); });
}

struct ScannerClassMethods {
    static id allocWithZone(Class self, ZPZone *zone) {
        return ZPAllocateObject(self == ZPScanner::class_() ? ZPConcreteScanner::class_() : self, 0, zone);
    }
    static ZPScanner *scannerWithString(Class, ZPString *string) {
        return ZPConcreteScanner::alloc()->initWithString(string)->autorelease();
    }
    static ZPScanner *localizedScannerWithString(Class, ZPString *string) {
        ZPScanner *scanner = ZPScanner::scannerWithString(string);
        scanner->setLocale(_ZPUserLocale());
        return scanner;
    }
};

struct ScannerMethods : ZPScanner {
    [[noreturn]] void abstract(SEL selector) { ZPRequestConcreteImplementation(this, selector, ZPScanner::class_()); }

    ZPScanner *initWithString(ZPString *) { return self()->init(); }
    id copyWithZone(ZPZone *) {
        ZPString *text = self()->string();
        ZPRef<ZPScanner> copy = ZPAdopt<ZPScanner>(ZPConcreteScanner::alloc()->initWithString(text));
        copy->setCharactersToBeSkipped(self()->charactersToBeSkipped());
        copy->setScanLocation(self()->scanLocation());
        copy->setCaseSensitive(self()->caseSensitive());
        copy->setLocale(self()->locale());
        return copy.detach();
    }
    ZPString *string() { abstract("string"_sel); }
    unsigned scanLocation() { abstract("scanLocation"_sel); }
    void setScanLocation(unsigned) { abstract("setScanLocation:"_sel); }
    ZPCharacterSet *charactersToBeSkipped() { return defaultSkipSet(); }
    void setCharactersToBeSkipped(ZPCharacterSet *) { abstract("setCharactersToBeSkipped:"_sel); }
    BOOL caseSensitive() { return NO; }
    void setCaseSensitive(BOOL) { abstract("setCaseSensitive:"_sel); }
    ZPDictionary *locale() { return nullptr; }
    void setLocale(ZPDictionary *) { abstract("setLocale:"_sel); }

    // Moves to the location when a number was read.
    BOOL moved(BOOL read, const unsigned &location) {
        if (read) self()->setScanLocation(location);
        return read;
    }
    BOOL scanInt(int *value) {
        unsigned at = self()->scanLocation();
        return moved(_ZPScanIntFromString(self()->string(), self()->charactersToBeSkipped(), value, &at), at);
    }
    BOOL scanLongLong(long long *value) {
        unsigned at = self()->scanLocation();
        return moved(_ZPScanLongLongFromString(self()->string(), self()->charactersToBeSkipped(), value, &at), at);
    }
    BOOL scanHexInt(unsigned *value) {
        unsigned at = self()->scanLocation(), read;
        if (!readHex(self()->string(), self()->charactersToBeSkipped(), read, at)) return NO;
        self()->setScanLocation(at);
        if (value) *value = read;
        return YES;
    }
    BOOL scanDouble(double *value) {
        unsigned at = self()->scanLocation();
        return moved(_ZPScanDoubleFromString(self()->string(), self()->charactersToBeSkipped(), value, &at,
                                             self()->locale()),
                     at);
    }
    BOOL scanFloat(float *value) {
        double read;
        if (!self()->scanDouble(&read)) return NO;
        if (value) *value = float(read);
        return YES;
    }

    // Stores what lies between start and end and moves to the end, unless it is nothing.
    BOOL take(ZPString *string, unsigned start, unsigned end, ZPString **value) {
        if (end == start) return NO;
        if (value) *value = string->substringWithRange({start, end - start});
        self()->setScanLocation(end);
        return YES;
    }
    BOOL run(ZPCharacterSet *set, bool upTo, ZPString **value) {
        ZPString *string = self()->string();
        unsigned start = skip(string, self()->scanLocation(), self()->charactersToBeSkipped());
        return take(string, start, find(string, start, set, upTo), value);
    }
    BOOL scanCharactersFromSet_intoString(ZPCharacterSet *set, ZPString **value) { return run(set, false, value); }
    BOOL scanUpToCharactersFromSet_intoString(ZPCharacterSet *set, ZPString **value) { return run(set, true, value); }
    BOOL scanString_intoString(ZPString *target, ZPString **value) {
        ZPString *string = self()->string();
        unsigned start = skip(string, self()->scanLocation(), self()->charactersToBeSkipped());
        unsigned options = ZPAnchoredSearch | (self()->caseSensitive() ? 0u : unsigned(ZPCaseInsensitiveSearch));
        return take(string, start,
                    start +
                        string->rangeOfString_options_range(target, options, {start, string->length() - start}).length,
                    value);
    }
    BOOL scanUpToString_intoString(ZPString *target, ZPString **value) {
        ZPString *string = self()->string();
        unsigned start = skip(string, self()->scanLocation(), self()->charactersToBeSkipped()),
                 length = string->length();
        ZPRange match = string->rangeOfString_options_range(
            target, self()->caseSensitive() ? 0u : unsigned(ZPCaseInsensitiveSearch), {start, length - start});
        return take(string, start, match.length ? match.location : length, value);
    }
    BOOL isAtEnd() {
        ZPString *string = self()->string();
        return skip(string, self()->scanLocation(), self()->charactersToBeSkipped()) >= string->length();
    }

    ZPString *_remainingString() { return self()->string()->substringFromIndex(self()->scanLocation()); }
    BOOL _scanDecimal_into(unsigned count, int *value) {
        unsigned start = self()->scanLocation(), at = start, read = 0;
        _ZPWithUnits(self()->string(),
                     [&](auto &&units, unsigned length) { _ZPReadDigits(units, at, length, count, read); });
        if (at == start) return NO;
        self()->setScanLocation(at);
        if (value) *value = int(read);
        return YES;
    }
};

struct ConcreteScannerMethods : ZPConcreteScanner {
    ZPScanner *initWithString(ZPString *string) {
        if (!ZP_SUPER(ZPConcreteScanner, initWithString)(string)) return nullptr;
        ZPRef<ZPScanner> self = ZPRef<ZPScanner>::adopt(this);  // copying may run anybody's code
        _scanString = string->copyWithZone(nullptr);
        _skipSet = defaultSkipSet()->retain();
        return self.detach();
    }
    void dealloc() {
        _scanString->release();
        _skipSet->release();
        id(_locale)->release();
        ZP_SUPER(ZPConcreteScanner, dealloc)();
    }
    ZPString *string() { return _scanString; }
    unsigned scanLocation() { return _scanLocation; }
    void setScanLocation(unsigned location) {
        if (location > _scanString->length()) _ZPRaiseOutOfBounds(this, "setScanLocation:"_sel);
        _scanLocation = location;
    }
    ZPCharacterSet *charactersToBeSkipped() { return _skipSet; }
    void setCharactersToBeSkipped(ZPCharacterSet *set) {
        ZPCharacterSet *copy = set->copyWithZone(self()->zone());
        _skipSet->autorelease();
        _skipSet = copy;
    }
    BOOL caseSensitive() { return _flags.caseSensitive; }
    void setCaseSensitive(BOOL flag) { _flags.caseSensitive = flag != NO; }
    ZPDictionary *locale() { return _locale; }
    void setLocale(ZPDictionary *locale) { ZPReplaceField(_locale, locale); }

    BOOL scanInt(int *value) { return _ZPScanIntFromString(_scanString, _skipSet, value, &_scanLocation); }
    BOOL scanLongLong(long long *value) {
        return _ZPScanLongLongFromString(_scanString, _skipSet, value, &_scanLocation);
    }
    BOOL scanDouble(double *value) {
        return _ZPScanDoubleFromString(_scanString, _skipSet, value, &_scanLocation, _locale);
    }
};

}  // namespace

void _skipWhitespace(ZPScanner *scanner) {
    scanner->setScanLocation(skip(scanner->string(), scanner->scanLocation(), scanner->charactersToBeSkipped()));
}

ZP_IMPLEMENT_WITH(ZPScanner, ScannerMethods, adopts(ZPCopying), initWithString, copyWithZone, string, scanLocation,
                  setScanLocation, charactersToBeSkipped, setCharactersToBeSkipped, caseSensitive, setCaseSensitive,
                  locale, setLocale, scanInt, scanLongLong, scanHexInt, scanFloat, scanDouble,
                  scanCharactersFromSet_intoString, scanUpToCharactersFromSet_intoString, scanString_intoString,
                  scanUpToString_intoString, isAtEnd,
                  classMethodsOf(ScannerClassMethods, allocWithZone, scannerWithString, localizedScannerWithString));

ZP_CATEGORY(ZPScanner, ScannerMethods, _remainingString, _scanDecimal_into);

ZP_IMPLEMENT_WITH(ZPConcreteScanner, ConcreteScannerMethods, initWithString, dealloc, string, scanLocation,
                  setScanLocation, charactersToBeSkipped, setCharactersToBeSkipped, caseSensitive, setCaseSensitive,
                  locale, setLocale, scanInt, scanLongLong, scanDouble);
