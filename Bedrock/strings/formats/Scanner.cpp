// SPDX-License-Identifier: MIT
// Scanners: the front, which rests on the primitives, and the concrete class. References are counted beside the
// instance.
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/core/Digits.h>
#include <Bedrock/core/ZPField.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/strings/characters/Characters.h>
#include <Bedrock/strings/ZPNumberReader.h>
#include <Bedrock/strings/formats/Scanner+Internal.h>
#include <Bedrock/strings/cluster/Cluster.h>

namespace {

// The first index from `from` on whose unit is (or is not) a member; the length when there is none.
unsigned find(ZPString *string, unsigned from, ZPCharacterSet *set, bool member) {
    return _ZPWithUnits(string, [&](auto &&units, unsigned length) {
        unsigned at = from;
        for (ZPMembership isMember(set); at < length && isMember(units[at]) != member;) ++at;
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
    static ZPCharacterSet *const set = ZPCharacterSet::whitespaceAndNewlineCharacterSet();
    return set;
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

    ZPScanner *initWithString(ZPString *) { return init(); }
    id copyWithZone(ZPZone *) {
        ZPString *text = ZPScanner::string();
        ZPRef<ZPScanner> copy = ZPAdopt<ZPScanner>(ZPConcreteScanner::alloc()->initWithString(text));
        copy->setCharactersToBeSkipped(ZPScanner::charactersToBeSkipped());
        copy->setScanLocation(ZPScanner::scanLocation());
        copy->setCaseSensitive(ZPScanner::caseSensitive());
        copy->setLocale(ZPScanner::locale());
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
        if (read) ZPScanner::setScanLocation(location);
        return read;
    }
    BOOL scanInt(int *value) {
        unsigned at = ZPScanner::scanLocation();
        return moved(_ZPScanIntFromString(ZPScanner::string(), ZPScanner::charactersToBeSkipped(), value, &at), at);
    }
    BOOL scanLongLong(long long *value) {
        unsigned at = ZPScanner::scanLocation();
        return moved(_ZPScanLongLongFromString(ZPScanner::string(), ZPScanner::charactersToBeSkipped(), value, &at),
                     at);
    }
    BOOL scanHexInt(unsigned *value) {
        unsigned at = ZPScanner::scanLocation(), read;
        if (!readHex(ZPScanner::string(), ZPScanner::charactersToBeSkipped(), read, at)) return NO;
        ZPScanner::setScanLocation(at);
        if (value) *value = read;
        return YES;
    }
    BOOL scanDouble(double *value) {
        unsigned at = ZPScanner::scanLocation();
        return moved(_ZPScanDoubleFromString(ZPScanner::string(), ZPScanner::charactersToBeSkipped(), value, &at,
                                             ZPScanner::locale()),
                     at);
    }
    BOOL scanFloat(float *value) {
        double read;
        if (!ZPScanner::scanDouble(&read)) return NO;
        if (value) *value = float(read);
        return YES;
    }

    // Stores what lies between start and end and moves to the end, unless it is nothing.
    BOOL take(ZPString *string, unsigned start, unsigned end, ZPString **value) {
        if (end == start) return NO;
        if (value) *value = string->substringWithRange({start, end - start});
        ZPScanner::setScanLocation(end);
        return YES;
    }
    BOOL run(ZPCharacterSet *set, bool upTo, ZPString **value) {
        ZPString *string = ZPScanner::string();
        unsigned start = skip(string, ZPScanner::scanLocation(), ZPScanner::charactersToBeSkipped());
        return take(string, start, find(string, start, set, upTo), value);
    }
    BOOL scanCharactersFromSet(ZPCharacterSet *set, ZPString **value) { return run(set, false, value); }
    BOOL scanUpToCharactersFromSet(ZPCharacterSet *set, ZPString **value) { return run(set, true, value); }
    BOOL scanString(ZPString *target, ZPString **value) {
        ZPString *string = ZPScanner::string();
        unsigned start = skip(string, ZPScanner::scanLocation(), ZPScanner::charactersToBeSkipped());
        unsigned options = ZPAnchoredSearch | (ZPScanner::caseSensitive() ? 0u : unsigned(ZPCaseInsensitiveSearch));
        return take(string, start,
                    start +
                        string->rangeOfString_options_range(target, options, {start, string->length() - start}).length,
                    value);
    }
    BOOL scanUpToString(ZPString *target, ZPString **value) {
        ZPString *string = ZPScanner::string();
        unsigned start = skip(string, ZPScanner::scanLocation(), ZPScanner::charactersToBeSkipped()),
                 length = string->length();
        ZPRange match = string->rangeOfString_options_range(
            target, ZPScanner::caseSensitive() ? 0u : unsigned(ZPCaseInsensitiveSearch), {start, length - start});
        return take(string, start, match.length ? match.location : length, value);
    }
    BOOL isAtEnd() {
        ZPString *string = ZPScanner::string();
        return skip(string, ZPScanner::scanLocation(), ZPScanner::charactersToBeSkipped()) >= string->length();
    }

    ZPString *remainingString() { return ZPScanner::string()->substringFromIndex(ZPScanner::scanLocation()); }
    BOOL scanDigits(unsigned count, int *value) {
        unsigned start = ZPScanner::scanLocation(), at = start, read = 0;
        _ZPWithUnits(ZPScanner::string(), [&](auto &&units, unsigned length) {
            for (; at < length && at - start < count && _ZPIsDigit(units[at]); ++at)
                read = read * 10 + (units[at] - '0');
        });
        if (at == start) return NO;
        ZPScanner::setScanLocation(at);
        if (value) *value = int(read);
        return YES;
    }
};

struct ConcreteScannerMethods : ZPConcreteScanner {
    ZPScanner *initWithString(ZPString *string) {
        if (!objc_super<ZPConcreteScanner>(this).send<id>("initWithString:"_sel, string)) return nullptr;
        ZPRef<ZPScanner> self = ZPRef<ZPScanner>::adopt(this);  // copying may run anybody's code
        _scanString = string->copyWithZone(nullptr);
        _skipSet = defaultSkipSet()->retain();
        return self.detach();
    }
    void dealloc() {
        _scanString->release();
        _skipSet->release();
        id(_locale)->release();
        objc_super<ZPConcreteScanner>(this).send("dealloc"_sel);
    }
    ZPString *string() { return _scanString; }
    unsigned scanLocation() { return _scanLocation; }
    void setScanLocation(unsigned location) {
        if (location > _scanString->length()) _ZPRaiseOutOfBounds(this, "setScanLocation:"_sel);
        _scanLocation = location;
    }
    ZPCharacterSet *charactersToBeSkipped() { return _skipSet; }
    void setCharactersToBeSkipped(ZPCharacterSet *set) {
        ZPCharacterSet *copy = set->copyWithZone(ZPObject::zone());
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

ZP_IMPLEMENT(ZPScanner)
    .adopts<ZPCopying>()
    .classMethod<&ScannerClassMethods::allocWithZone>("allocWithZone:")
    .classMethod<&ScannerClassMethods::scannerWithString>("scannerWithString:")
    .classMethod<&ScannerClassMethods::localizedScannerWithString>("localizedScannerWithString:")
    .method<&ScannerMethods::initWithString>("initWithString:")
    .method<&ScannerMethods::copyWithZone>("copyWithZone:")
    .method<&ScannerMethods::string>("string")
    .method<&ScannerMethods::scanLocation>("scanLocation")
    .method<&ScannerMethods::setScanLocation>("setScanLocation:")
    .method<&ScannerMethods::charactersToBeSkipped>("charactersToBeSkipped")
    .method<&ScannerMethods::setCharactersToBeSkipped>("setCharactersToBeSkipped:")
    .method<&ScannerMethods::caseSensitive>("caseSensitive")
    .method<&ScannerMethods::setCaseSensitive>("setCaseSensitive:")
    .method<&ScannerMethods::locale>("locale")
    .method<&ScannerMethods::setLocale>("setLocale:")
    .method<&ScannerMethods::scanInt>("scanInt:")
    .method<&ScannerMethods::scanLongLong>("scanLongLong:")
    .method<&ScannerMethods::scanHexInt>("scanHexInt:")
    .method<&ScannerMethods::scanFloat>("scanFloat:")
    .method<&ScannerMethods::scanDouble>("scanDouble:")
    .method<&ScannerMethods::scanCharactersFromSet>("scanCharactersFromSet:intoString:")
    .method<&ScannerMethods::scanUpToCharactersFromSet>("scanUpToCharactersFromSet:intoString:")
    .method<&ScannerMethods::scanString>("scanString:intoString:")
    .method<&ScannerMethods::scanUpToString>("scanUpToString:intoString:")
    .method<&ScannerMethods::isAtEnd>("isAtEnd");

ZP_CATEGORY(ZPScanner, ZPRemainingString)
    .method<&ScannerMethods::remainingString>("_remainingString")
    .method<&ScannerMethods::scanDigits>("_scanDecimal:into:");

ZP_IMPLEMENT(ZPConcreteScanner)
    .method<&ConcreteScannerMethods::initWithString>("initWithString:")
    .method<&ConcreteScannerMethods::dealloc>("dealloc")
    .method<&ConcreteScannerMethods::string>("string")
    .method<&ConcreteScannerMethods::scanLocation>("scanLocation")
    .method<&ConcreteScannerMethods::setScanLocation>("setScanLocation:")
    .method<&ConcreteScannerMethods::charactersToBeSkipped>("charactersToBeSkipped")
    .method<&ConcreteScannerMethods::setCharactersToBeSkipped>("setCharactersToBeSkipped:")
    .method<&ConcreteScannerMethods::caseSensitive>("caseSensitive")
    .method<&ConcreteScannerMethods::setCaseSensitive>("setCaseSensitive:")
    .method<&ConcreteScannerMethods::locale>("locale")
    .method<&ConcreteScannerMethods::setLocale>("setLocale:")
    .method<&ConcreteScannerMethods::scanInt>("scanInt:")
    .method<&ConcreteScannerMethods::scanLongLong>("scanLongLong:")
    .method<&ConcreteScannerMethods::scanDouble>("scanDouble:");
