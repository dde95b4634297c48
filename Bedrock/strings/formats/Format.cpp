// SPDX-License-Identifier: MIT
// The format engine: the conventions of printf, with `%@` for objects and positions ("%2$s").
//
// A format whose first directive has a position is positional: up to nine directives are gathered, the list is
// walked once to give every argument its place, then they are written; text behind the ninth stays as it is. In
// any other format the arguments are taken in order. A directive that is cut short, is no directive of C, or does
// not fit the mode of its format stands for itself and takes no argument.
#include <Bedrock/strings/formats/Formats+Internal.h>
#include <Bedrock/core/Scope.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/core/Fronts.h>
#include <Bedrock/strings/encodings/Encodings.h>

#include <algorithm>
#include <array>

// ---- the text under construction ----------------------------------------------------------------

void ZPFormatText::grow(unsigned more) {
    std::uint64_t need = std::uint64_t(_length) + more,
                  capacity = std::max(need, std::min<std::uint64_t>(2 * std::uint64_t(_capacity), _ZPLongestString));
    unsigned width = _wide ? 2 : 1;
    if (need > _ZPLongestString) _ZPRaiseTooLong(need);
    void *larger =
        _buffer == _local ? ZPZoneMalloc(nullptr, capacity * width) : ZPZoneRealloc(nullptr, _buffer, capacity * width);
    if (!larger) _ZPRaiseOutOfMemory("a string");
    if (_buffer == _local) std::memcpy(larger, _local, std::size_t(_length) * width);
    _buffer = larger;
    _capacity = unsigned(capacity);
}

void ZPFormatText::widen() {
    unsigned capacity = std::max(_capacity, 120u);
    ZPZoneBlock<unichar> block(capacity);
    _ZPCopyUnits({bytes(), nullptr, _length}, 0, _length, block.get());
    if (_buffer != _local) ZPZoneFree(nullptr, _buffer);
    _buffer = block.take();
    _capacity = capacity;
    _wide = true;
}

void ZPFormatText::append(const unichar *text, unsigned count) {
    if (count == 0) return;
    if (!_wide) widen();
    if (count > _capacity - _length) grow(count);
    std::copy_n(text, count, units() + _length);
    _length += count;
}

void ZPFormatText::append(ZPString *string) {
    ZPStringView view = _ZPViewOfString(string);
    if (view.length == 0) return;
    if (view.shown()) {
        append(view, 0, view.length);
        return;
    }
    if (view.length > _capacity - _length) grow(view.length);  // refused before it is read
    ZPStackBuffer<unichar, 128> block(view.length);
    string->getCharacters_range(block.memory, {0, view.length});
    append(block.memory, view.length);
}

void ZPFormatText::appendCText(const char *text, unsigned count) {
    if (_ZPFitsByteStorage(text, count)) {
        append(text, count);
        return;
    }
    _ZPBlock<void> converted;
    unsigned n;
    BOOL isASCII;
    if (_ZPConvertToASCIIorUnicode(text, count, _ZPDefaultCStringEncoding(), converted.place(), &n, &isASCII,
                                   nullptr)) {
        if (isASCII) append(converted.get(), n);
        else append(static_cast<unichar *>(converted.get()), n);
        return;
    }
    auto *at = reinterpret_cast<const unsigned char *>(text), *end = at + count;
    while (at < end) {
        unichar units[2] = {_ZPNoCharacter};
        unsigned made = ZPUTF8ToUnicode(&at, unsigned(end - at), units);
        if (!made) ++at;
        append(units, made ? made : 1);
    }
}

ZPString *ZPFormatText::newString(ZPZone *zone) {
    if (_length == 0) return ""_zp;
    auto make = [&]<class S>(std::type_identity<S>) {
        using Unit = typename S::Unit;
        constexpr std::size_t largestInside = 1024;
        std::size_t size = _length * sizeof(Unit);
        S *s;
        if (size <= largestInside) {
            s = ZPAllocateObject(S::class_(), unsigned(size), zone);
            _ZPBufferOf(s) = reinterpret_cast<Unit *>(s + 1);
            std::memcpy(_ZPBufferOf(s), _buffer, size);
        } else {
            ZPZoneBlock<Unit> block(_length, zone);
            std::memcpy(block.get(), _buffer, size);
            s = ZPAllocateObject(S::class_(), 0, zone);
            _ZPBufferOf(s) = block.take();
            s->_flags.freeWhenDone = 1;
        }
        s->_flags.capacity = _capacityToInternal(_length) & 0xFFFF;
        s->_flags.canWriteIntoBuffer = 1;
        _ZPLengthOf(s) = s->gapBegin = s->gapEnd = _length;
        return s;
    };
    if (_wide) return make(std::type_identity<ZPUnicodeStringWithGap>{});
    return make(std::type_identity<ZPCStringWithGap>{});
}

// ---- directives ---------------------------------------------------------------------------------

namespace {

constexpr auto conversions = [] {
    std::array<bool, 128> set{};
    for (char c : {'d', 'i', 'o', 'u', 'x', 'X', 'c', 's', 'e', 'E', 'f', 'g', 'G', 'p', 'n', '@', '%'})
        set[std::size_t(c)] = true;
    return set;
}();
bool isConversion(char c) { return conversions[static_cast<unsigned char>(c)]; }

constexpr int largestWidth = 999999999;

// The units of a directive as characters: 0 behind the longest directive, the format's end and a unit above 0x7F.
struct Cursor {
    const ZPStringView &format;
    unsigned at, end;

    char operator[](unsigned i) const {
        if (i >= end) return 0;
        unsigned unit = format.bytes ? format.bytes[i] : format.units[i];
        return unit <= 0x7F ? char(unit) : 0;
    }
    char operator*() const { return (*this)[at]; }
    // A digit that is not 0, and "$".
    bool takePosition(unsigned &position) {
        char digit = **this;
        if (digit < '1' || digit > '9' || (*this)[at + 1] != '$') return false;
        position = unsigned(digit - '0');
        at += 2;
        return true;
    }
    bool take(char c) {
        if (**this != c) return false;
        ++at;
        return true;
    }
};

// Digits, a star, or a star with a position.
void parseNumber(Cursor &c, int *number, unsigned *position) {
    if (c.take('*')) {
        *number = ZPFormatDirective::fromArgument;
        c.takePosition(*position);
        return;
    }
    long long n = 0;
    _ZPReadNumber(c, c.at, c.end, largestWidth, n);
    *number = int(n);
}

void parseFlags(Cursor &c, ZPFormatDirective &d) {
    for (;; ++c.at) {
        switch (*c) {
        case '-': d.left = true; break;
        case '+': d.plus = true; break;
        case ' ': d.blank = true; break;
        case '#': d.alternate = true; break;
        case '0': d.zeros = true; break;
        case '\'': break;
        default: return;
        }
    }
}

ZPFormatSize parseSize(Cursor &c) {
    switch (*c) {
    case 'h': ++c.at; return c.take('h') ? ZPFormatSize::char_ : ZPFormatSize::short_;
    case 'l': ++c.at; return c.take('l') ? ZPFormatSize::longLong : ZPFormatSize::long_;
    case 'q': ++c.at; return ZPFormatSize::longLong;
    case 'L': ++c.at; return ZPFormatSize::longDouble;
    case 'j': ++c.at; return ZPFormatSize::intMax;
    case 'z': ++c.at; return ZPFormatSize::size;
    case 't': ++c.at; return ZPFormatSize::pointerDifference;
    default: return ZPFormatSize::int_;
    }
}

}  // namespace

ZPFormatDirective _ZPParseDirective(const ZPStringView &format, unsigned begin) {
    constexpr unsigned longest = 31;
    ZPFormatDirective d{begin, begin};
    Cursor c{format, begin + 1, begin + std::min(longest, format.length - begin)};
    if (!isConversion(*c)) {
        c.takePosition(d.position);
        parseFlags(c, d);
        if (*c == '*' || _ZPIsDigit(*c)) parseNumber(c, &d.width, &d.widthPosition);
        if (c.take('.')) parseNumber(c, &d.precision, &d.precisionPosition);
        d.size = parseSize(c);
    }
    if (isConversion(*c)) {
        d.conversion = *c;
        d.end = c.at + 1;
        return d;
    }
    // Not a directive of C: it ends all the same with the first conversion character, or where it is cut short.
    while (*c && !isConversion(*c)) ++c.at;
    d.end = *c ? c.at + 1 : c.at;
    return d;
}

ZPFormatKind _ZPKindOfDirective(const ZPFormatDirective &d) {
    switch (d.conversion) {
    case 0:
    case '%': return ZPFormatKind::nothing;
    case 'd':
    case 'i':
    case 'o':
    case 'u':
    case 'x':
    case 'X':
        return d.size == ZPFormatSize::int_ || d.size == ZPFormatSize::char_ || d.size == ZPFormatSize::short_
                   ? ZPFormatKind::int_
                   : ZPFormatKind::long_;
    case 'c': return ZPFormatKind::int_;
    case 's':
    case 'p':
    case 'n':
    case '@': return ZPFormatKind::pointer;
    default: return d.size == ZPFormatSize::longDouble ? ZPFormatKind::longDouble : ZPFormatKind::double_;
    }
}

// ---- the engine -----------------------------------------------------------------------------------

namespace {

static_assert(sizeof(long) == sizeof(long long) && sizeof(std::size_t) == sizeof(long long),
              "integers of every modifier from 'l' on are one word");

struct ArgumentList {
    std::va_list list;
    explicit ArgumentList(std::va_list given) { va_copy(list, given); }
    ~ArgumentList() { va_end(list); }

    int nextInt() { return va_arg(list, int); }
    ZPFormatValue next(ZPFormatKind kind) {
        ZPFormatValue v{};
        switch (kind) {
        case ZPFormatKind::nothing: break;
        case ZPFormatKind::int_: v.integer = va_arg(list, int); break;
        case ZPFormatKind::long_: v.integer = va_arg(list, long long); break;
        case ZPFormatKind::double_: v.number = va_arg(list, double); break;
        case ZPFormatKind::longDouble: v.longNumber = va_arg(list, long double); break;
        case ZPFormatKind::pointer: v.pointer = va_arg(list, const void *); break;
        }
        return v;
    }
};

// An integer argument as the directive's type reads it.
long long narrowed(const ZPFormatDirective &d, long long v) {
    bool isSigned = d.conversion == 'd' || d.conversion == 'i';
    switch (d.size) {
    case ZPFormatSize::char_: return isSigned ? static_cast<signed char>(v) : static_cast<unsigned char>(v);
    case ZPFormatSize::short_: return isSigned ? static_cast<short>(v) : static_cast<unsigned short>(v);
    case ZPFormatSize::int_: return isSigned ? static_cast<int>(v) : static_cast<long long>(static_cast<unsigned>(v));
    default: return v;
    }
}

void setWidth(ZPFormatDirective &d, int width) {
    if (width < 0) d.left = true;
    d.width = int(std::min<long long>(width < 0 ? -static_cast<long long>(width) : width, largestWidth));
}

bool isPlainString(Class cls) {
    return cls == ZPInlineCString::class_() || cls == ZPConstantString::class_() || cls == ZPCStringWithGap::class_() ||
           cls == ZPConcreteMutableString::class_() || cls == ZPCString::class_() || cls == ZPUnicodeString::class_() ||
           cls == ZPUnicodeStringWithGap::class_();
}

struct Engine {
    ZPFormatText text;
    ZPStringView format;
    id locale;
    unichar separator = 0;  // 0: not asked for yet

    unichar decimalSeparator() { return separator ? separator : separator = _ZPDecimalSeparator(locale); }

    void describe(id object) {
        if (!object) {
            text.append("*nil*", 5);
            return;
        }
        auto *description = object.unchecked<ZPString>();
        if (!isPlainString(description->isa)) {
            auto *other = object.unchecked<_ZPLocalizable>();
            bool takesLocale = other->respondsToSelector("descriptionWithLocale:"_sel);
            description = takesLocale ? other->descriptionWithLocale(locale) : other->description();
        }
        text.append(description);
    }

    void write(const ZPFormatDirective &d, ZPFormatValue value) {
        switch (d.conversion) {
        case '@': describe(static_cast<objc_object *>(const_cast<void *>(value.pointer))); return;
        case 'd':
        case 'i':
        case 'o':
        case 'u':
        case 'x':
        case 'X': value.integer = narrowed(d, value.integer); break;
        }
        bool isNumber = d.conversion == 'f' || d.conversion == 'e' || d.conversion == 'g' || d.conversion == 'E' ||
                        d.conversion == 'G';
        _ZPFormatValue(text, d, value, isNumber ? decimalSeparator() : '.');
    }
    void writeLiterally(unsigned from, unsigned to) {
        if (to > from) text.append(format, from, to - from);
    }

    unsigned nextPercent(unsigned from) const {
        if (format.bytes) {
            const void *found =
                from < format.length ? std::memchr(format.bytes + from, '%', format.length - from) : nullptr;
            return found ? unsigned(static_cast<const unsigned char *>(found) - format.bytes) : format.length;
        }
        while (from < format.length && format.units[from] != '%') ++from;
        return from;
    }

    void run(ArgumentList &arguments, unsigned percent) {
        bool first = true;
        for (unsigned at = 0;; percent = nextPercent(at)) {
            writeLiterally(at, percent);
            if (percent == format.length) return;
            ZPFormatDirective d = _ZPParseDirective(format, percent);
            at = d.end;
            if (d.conversion == '%') {
                text.append('%');
                continue;
            }
            if (first && d.conversion && d.position) {
                text.clear();
                runByPosition(arguments);
                return;
            }
            if (d.conversion) first = false;
            if (!d.conversion || d.position || d.widthPosition || d.precisionPosition) {
                writeLiterally(d.begin, d.end);
                continue;
            }
            if (d.width == ZPFormatDirective::fromArgument) setWidth(d, arguments.nextInt());
            if (d.precision == ZPFormatDirective::fromArgument)
                d.precision = std::clamp(arguments.nextInt(), -1, largestWidth);
            write(d, arguments.next(_ZPKindOfDirective(d)));
        }
    }

    static bool fitsPositions(const ZPFormatDirective &d) {
        return d.position && (d.width != ZPFormatDirective::fromArgument || d.widthPosition) &&
               (d.precision != ZPFormatDirective::fromArgument || d.precisionPosition);
    }

    void runByPosition(ArgumentList &arguments) {
        constexpr unsigned most = 9;
        ZPFormatDirective directives[most];
        unsigned count = 0, highest = 0;
        ZPFormatKind kinds[most + 1] = {};
        auto need = [&](unsigned position, ZPFormatKind kind) {
            // An argument that is named with several types is read as the widest of its register class.
            kinds[position] = std::max(kinds[position], kind);
            highest = std::max(highest, position);
        };
        unsigned end = format.length;
        for (unsigned at = nextPercent(0); at < format.length; at = nextPercent(at)) {
            ZPFormatDirective d = _ZPParseDirective(format, at);
            at = d.end;
            if (!d.conversion || !fitsPositions(d)) continue;
            if (count == most) {
                end = d.begin;
                break;
            }
            directives[count++] = d;
            need(d.position, _ZPKindOfDirective(d));
            if (d.widthPosition) need(d.widthPosition, ZPFormatKind::int_);
            if (d.precisionPosition) need(d.precisionPosition, ZPFormatKind::int_);
        }
        ZPFormatValue values[most + 1];
        for (unsigned i = 1; i <= highest; ++i)
            values[i] = arguments.next(kinds[i] == ZPFormatKind::nothing ? ZPFormatKind::int_ : kinds[i]);
        unsigned at = 0;
        for (unsigned i = 0; i < count; ++i) {
            ZPFormatDirective &d = directives[i];
            writeText(at, d.begin);
            at = d.end;
            auto clamped = [&](unsigned position) {
                return int(std::clamp<long long>(int(values[position].integer), 0, largestWidth));
            };
            if (d.widthPosition) d.width = clamped(d.widthPosition);
            if (d.precisionPosition) d.precision = clamped(d.precisionPosition);
            write(d, values[d.position]);
        }
        if (end == format.length) writeText(at, end);
        else {
            writeText(at, end);
            writeLiterally(end, format.length);
        }
    }
    // Text between positional directives, with "%%" for a percent sign.
    void writeText(unsigned from, unsigned to) {
        for (unsigned at = from; at < to;) {
            unsigned percent = std::min(nextPercent(at), to);
            writeLiterally(at, percent);
            if (percent == to) return;
            ZPFormatDirective d = _ZPParseDirective(format, percent);
            at = std::min(d.end, to);
            if (d.conversion == '%') text.append('%');
            else writeLiterally(percent, at);
        }
    }
};

}  // namespace

ZPString *_ZPNewFormattedString(ZPZone *zone, ZPString *format, id locale, std::va_list arguments) {
    if (!format) return ""_zp;
    // A description may change the format, or retain it.
    ZPHeldView held(format);
    if (held.owner) format = held.owner;
    Engine engine;
    engine.format = held;
    engine.locale = locale;
    ZPStackBuffer<unichar, 128> units(engine.format.shown() ? 0 : engine.format.length);
    if (!engine.format.shown()) {
        format->getCharacters_range(units.memory, {0, engine.format.length});
        engine.format.units = units.memory;
    }
    unsigned percent = engine.nextPercent(0);
    if (percent == engine.format.length) return format->copyWithZone(zone);
    ArgumentList list(arguments);
    engine.run(list, percent);
    return engine.text.newString(zone);
}
