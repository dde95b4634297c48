// SPDX-License-Identifier: MIT
// What every mutable string does on its one primitive, the editing category, and the constructors.
#include <Bedrock/strings/cluster/Mutable.h>
#include <Bedrock/core/Fronts.h>
#include <Bedrock/core/ZPRef.h>

#include <cstdarg>
#include <vector>

namespace {

ZPString *newString() { return _ZPPlaceholderStringFromZone(nullptr); }

struct MutableStringMethods : ZPMutableString {
    void replaceCharactersInRange_withString(ZPRange, ZPString *) {
        ZPRequestConcreteImplementation(this, "replaceCharactersInRange:withString:"_sel, ZPMutableString::class_());
    }
    id initWithCapacity(unsigned) { _ZPRequestConcreteObject(this, "initWithCapacity:"_sel); }
    void insertString_atIndex(ZPString *string, unsigned index) {
        self()->replaceCharactersInRange_withString({index, 0}, string);
    }
    void appendString(ZPString *string) { self()->replaceCharactersInRange_withString({self()->length(), 0}, string); }
    void deleteCharactersInRange(ZPRange range) { self()->replaceCharactersInRange_withString(range, ""_zp); }
    void setString(ZPString *string) { self()->replaceCharactersInRange_withString({0, self()->length()}, string); }
    void replaceCharactersInRange_withCString_length(ZPRange range, const char *bytes, unsigned n) {
        ZPRef<ZPString> text = ZPAdopt(newString()->initWithCString_length(bytes, n));
        self()->replaceCharactersInRange_withString(range, text);
    }
    void replaceCharactersInRange_withCharacters_length(ZPRange range, const unichar *characters, unsigned n) {
        ZPRef<ZPString> text = ZPAdopt(newString()->initWithCharacters_length(characters, n));
        self()->replaceCharactersInRange_withString(range, text);
    }
    void appendFormat(ZPString *format, std::va_list arguments) {
        ZPRef<ZPString> text = ZPAdopt(_ZPNewFormattedString(nullptr, format, nullptr, arguments));
        self()->appendString(text);
    }
    Class classForCoder() { return ZPMutableString::class_(); }

    // Replaces every range that `next` finds from a position on, in one edit: the text between and the
    // replacements are gathered first.
    template <class Next> void replaceFound(Next next, ZPString *replacement) {
        ZPRange found = next(0);
        if (found.length == 0) return;
        unsigned first = found.location, at = first, end = self()->length();
        ZPRef<ZPMutableString> text = ZPAdopt<ZPMutableString>(ZPConcreteMutableString::alloc()->initWithCapacity(0));
        for (; found.length; found = at < end ? next(at) : ZPRange{}) {
            if (found.location > at) {
                ZPRef<ZPString> piece =
                    ZPAdopt(self()->_newSubstringWithRange_zone({at, found.location - at}, nullptr));
                text->appendString(piece);
            }
            text->appendString(replacement);
            at = found.location + found.length;
        }
        self()->replaceCharactersInRange_withString({first, at - first}, text);
    }
    void _deleteAllCharactersFromSet(ZPCharacterSet *set) {
        unsigned end = self()->length();
        replaceFound(
            [&](unsigned at) {
                return self()->rangeOfCharacterFromSet_options_range(set, 0, {at, end - at});
            },
            ""_zp);
    }
    void replaceOne(ZPString *target, ZPString *replacement, unsigned options) {
        ZPRange found = self()->rangeOfString_options_range(target, options, {0, self()->length()});
        if (found.length) self()->replaceCharactersInRange_withString(found, replacement);
    }
    void _replaceFirstAppearanceOfString_withString(ZPString *target, ZPString *replacement) {
        replaceOne(target, replacement, 0);
    }
    void _replaceLastAppearanceOfString_withString(ZPString *target, ZPString *replacement) {
        replaceOne(target, replacement, ZPBackwardsSearch);
    }
    void _replaceAllAppearancesOfString_withString(ZPString *target, ZPString *replacement) {
        unsigned end = self()->length();
        replaceFound(
            [&](unsigned at) {
                return self()->rangeOfString_options_range(target, 0, {at, end - at});
            },
            replacement);
    }
};

struct MutableStringClassMethods {
    static ZPMutableString *made() { return ZPConcreteMutableString::alloc(); }

    static id allocWithZone(Class self, ZPZone *zone) {
        return ZPAllocateObject(self == ZPMutableString::class_() ? ZPConcreteMutableString::class_() : self, 0, zone);
    }
    static id alloc(Class self) { return ZPMutableString::allocFrom(self); }
    static id stringWithCapacity(Class, unsigned capacity) { return made()->initWithCapacity(capacity)->autorelease(); }
    static id stringWithCharacters_length(Class, const unichar *characters, unsigned length) {
        return made()->initWithCharacters_length(characters, length)->autorelease();
    }
    static id stringWithCString(Class self, const char *bytes) {
        if (!bytes) _ZPRaiseNullCString(self, "stringWithCString:"_sel);
        unsigned length = _ZPCheckedLength(std::strlen(bytes));
        return autoreleased(made()->initWithCString_length(bytes, length));
    }
    static id stringWithCString_length(Class, const char *bytes, unsigned length) {
        return autoreleased(made()->initWithCString_length(bytes, length));
    }
    static id stringWithFormat(Class, ZPString *format, std::va_list arguments) {
        return made()->initWithFormat_locale_arguments(format, nullptr, arguments)->autorelease();
    }
    static id localizedStringWithFormat(Class, ZPString *format, std::va_list arguments) {
        return made()->initWithFormat_locale_arguments(format, _ZPUserLocale(), arguments)->autorelease();
    }
    static id autoreleased(ZPString *string) { return string ? string->autorelease() : id(); }
    static id stringWithContentsOfFile(Class, ZPString *path) {
        return autoreleased(made()->initWithContentsOfFile(path));
    }
};

}  // namespace

ZP_SAME_FRONT(ZPConcreteMutableString, _ZPMutableStringAbove, stringWithCapacity, initWithCapacity, appendString,
              setStringWithFormat_locale_arguments);
ZP_IMPLEMENT_WITH(ZPMutableString, MutableStringMethods, version(1), replaceCharactersInRange_withString,
                  initWithCapacity, insertString_atIndex, appendString, deleteCharactersInRange, setString,
                  replaceCharactersInRange_withCString_length, replaceCharactersInRange_withCharacters_length,
                  variadic(appendFormat), classForCoder, _deleteAllCharactersFromSet,
                  _replaceFirstAppearanceOfString_withString, _replaceLastAppearanceOfString_withString,
                  _replaceAllAppearancesOfString_withString,
                  classMethodsOf(MutableStringClassMethods, alloc, allocWithZone, stringWithCapacity,
                                 stringWithCharacters_length, stringWithCString, stringWithCString_length,
                                 variadic(stringWithFormat), variadic(localizedStringWithFormat),
                                 stringWithContentsOfFile));

ZPString *_ZPNewStringJoiningBytes(const ZPStringView *views, unsigned count, unsigned total, ZPZone *zone) {
    auto fill = [&](char *at) {
        for (unsigned i = 0; i < count; ++i) {
            if (views[i].length) std::memcpy(at, views[i].bytes, views[i].length);
            at += views[i].length;
        }
    };
    constexpr unsigned largestInside = 2048;
    if (total <= largestInside) {
        ZPInlineCString *s = ZPAllocateObject(ZPInlineCString::class_(), total + 1, zone);
        s->_flags.numBytes = total & 0xFFFF;
        fill(s->contents());
        return s;
    }
    ZPZoneBlock<char> block(total, zone);
    fill(block.get());
    return _ZPNewStringAdoptingBytes(block.take(), total, YES, zone);
}

// The strings one after the other; their views stay good while those that show none are asked.
static ZPString *newJoined(ZPString *const *strings, const ZPStringView *views, unsigned count, ZPZone *zone) {
    std::uint64_t total = 0;
    bool bytes = true;
    for (unsigned i = 0; i < count; ++i) {
        total += views[i].length;
        if (views[i].length) bytes = bytes && views[i].bytes;
    }
    if (total == 0) return ""_zp;
    if (total > _ZPLongestString) _ZPRaiseTooLong(total);
    if (bytes) return _ZPNewStringJoiningBytes(views, count, unsigned(total), zone);
    ZPZoneBlock<unichar> block(total, zone);
    unichar *at = block.get();
    for (unsigned i = 0; i < count; ++i) {
        const ZPStringView &view = views[i];
        if (view.shown()) _ZPCopyUnits(view, 0, view.length, at);
        else strings[i]->getCharacters_range(at, {0, view.length});
        at += view.length;
    }
    return _ZPNewStringAdoptingUnits(block.take(), unsigned(total), YES, zone);
}

ZPString *_ZPNewStringByAppendingStrings(ZPZone *zone, ZPString *first, ...) {
    constexpr unsigned most = 40;
    ZPString *strings[most];
    unsigned count = 0;
    struct List {
        std::va_list list;
        ~List() { va_end(list); }
    } rest;
    va_start(rest.list, first);
    for (ZPString *s = first; s; s = reinterpret_cast<ZPString *>(va_arg(rest.list, objc_object *))) {
        if (count == most) ZPException::raise_format(ZPInternalInconsistencyException, "Too many strings to append"_zp);
        strings[count++] = s;
    }
    union Views {
        ZPStringView of[most];
        Views() {}
    } views;  // not cleared: few are used
    bool fields = true;
    for (unsigned i = 0; i < count && fields; ++i)
        fields = _ZPViewFields(strings[i], *::new (&views.of[i]) ZPStringView);
    if (fields) [[likely]]
        return newJoined(strings, views.of, count, zone);
    std::vector<ZPHeldView> held;
    held.reserve(count);
    for (unsigned i = 0; i < count; ++i) ::new (&views.of[i]) ZPStringView(held.emplace_back(strings[i]));
    return newJoined(strings, views.of, count, zone);
}
