// The format engine: the conventions of printf, with `%@` for objects and positions ("%2$s").
//
// A format whose first directive has a position is positional: up to nine directives are gathered, the list is
// walked once to give every argument its place, then they are written; text behind the ninth stays as it is. In
// any other format the arguments are taken in order. A directive that is cut short, is no directive of C, or does
// not fit the mode of its format stands for itself and takes no argument.
#include <Bedrock/strings/ZPFormat+Internal.h>
#include <Bedrock/strings/ZPStringEncoding+Internal.h>

#include <algorithm>

// ---- the text under construction ----------------------------------------------------------------

void ZPFormatText::grow(unsigned more) {
    std::uint64_t need = std::uint64_t(_length) + more, capacity = std::max(need, std::min<std::uint64_t>(2 * std::uint64_t(_capacity), _ZPLongestString));
    unsigned width = _wide ? 2 : 1;
    if (need > _ZPLongestString) ZPException::raise_format(ZPMallocException, "*** a string of %llu characters is too long"_zp, static_cast<unsigned long long>(need));
    void *larger = _buffer == _local ? ZPZoneMalloc(nullptr, capacity * width) : ZPZoneRealloc(nullptr, _buffer, capacity * width);
    if (!larger) ZPException::raise_format(ZPMallocException, "*** out of memory for a string"_zp);
    if (_buffer == _local) std::memcpy(larger, _local, std::size_t(_length) * width);
    _buffer = larger;
    _capacity = unsigned(capacity);
}

void ZPFormatText::widen() {
    unsigned capacity = std::max(_capacity, 120u);
    ZPZoneBlock<unichar> block(capacity);
    _ZPCopyUnits({bytes(), nullptr, _length}, 0, _length, block.memory);
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
    ZPStackBuffer<unichar, 128> block(view.length);
    string->getCharacters_range(block.memory, {0, view.length});
    append(block.memory, view.length);
}

void ZPFormatText::appendCText(const char *text, unsigned count) {
    if (_ZPFitsByteStorage(text, count)) {
        append(text, count);
        return;
    }
    struct Converted { void *p = nullptr; ~Converted() { if (p) ZPZoneFree(nullptr, p); } } converted;
    unsigned n;
    BOOL isASCII;
    if (_ZPConvertToASCIIorUnicode(text, count, _ZPDefaultCStringEncoding(), &converted.p, &n, &isASCII, nullptr)) {
        if (isASCII) append(converted.p, n);
        else append(static_cast<unichar *>(converted.p), n);
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
        ZPZoneBlock<Unit> block(_length, zone);
        std::memcpy(block.memory, _buffer, _length * sizeof(Unit));
        S *s = _ZPNewStringWithGap<S>(_capacityToInternal(_length), zone);
        _ZPBufferOf(s) = block.take();
        _ZPLengthOf(s) = s->gapBegin = s->gapEnd = _length;
        s->_flags.freeWhenDone = s->_flags.canWriteIntoBuffer = 1;
        return s;
    };
    if (_wide) return make(std::type_identity<ZPUnicodeStringWithGap>{});
    return make(std::type_identity<ZPCStringWithGap>{});
}

// ---- directives ---------------------------------------------------------------------------------

namespace {

bool isConversion(char c) {
    switch (c) {
    case 'd': case 'i': case 'o': case 'u': case 'x': case 'X': case 'c': case 's': case 'e': case 'E': case 'f':
    case 'g': case 'G': case 'p': case 'n': case '@': case '%': return true;
    default: return false;
    }
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

constexpr int largestWidth = 999999999;

// Digits, a star, or a star with a position; answers false for a star with a malformed position.
void parseNumber(const char *&p, int *number, unsigned *position) {
    if (*p == '*') {
        *number = ZPFormatDirective::fromArgument;
        ++p;
        if (*p >= '1' && *p <= '9' && p[1] == '$') {
            *position = unsigned(*p - '0');
            p += 2;
        }
        return;
    }
    long long n = 0;
    while (isDigit(*p)) n = std::min<long long>(n * 10 + (*p++ - '0'), largestWidth);
    *number = int(n);
}

}  // namespace

ZPFormatDirective _ZPParseDirective(const ZPStringView &format, unsigned begin) {
    constexpr unsigned longest = 31;
    char text[longest + 1];
    unsigned n = 0, at = begin;
    bool complete = false;
    ZPFormatDirective d{begin, begin};
    while (n < longest && at < format.length) {
        unsigned unit = format.bytes ? format.bytes[at] : format.units[at];
        if (unit > 0x7F) break;
        ++at;
        text[n++] = char(unit);
        if (n > 1 && isConversion(char(unit))) {
            complete = true;
            break;
        }
    }
    d.end = at;
    text[n] = 0;
    if (!complete) return d;

    const char *p = text + 1, *last = text + n - 1;
    if (*p >= '1' && *p <= '9' && p[1] == '$') {
        d.position = unsigned(*p - '0');
        p += 2;
    }
    for (;; ++p) {
        if (*p == '-') d.left = true;
        else if (*p == '+') d.plus = true;
        else if (*p == ' ') d.blank = true;
        else if (*p == '#') d.alternate = true;
        else if (*p == '0') d.zeros = true;
        else if (*p != '\'') break;
    }
    if (*p == '*' || isDigit(*p)) parseNumber(p, &d.width, &d.widthPosition);
    if (*p == '.') {
        ++p;
        parseNumber(p, &d.precision, &d.precisionPosition);
    }
    switch (*p) {
    case 'h': d.size = *++p == 'h' ? (++p, ZPFormatSize::char_) : ZPFormatSize::short_; break;
    case 'l': d.size = *++p == 'l' ? (++p, ZPFormatSize::longLong) : ZPFormatSize::long_; break;
    case 'q': ++p, d.size = ZPFormatSize::longLong; break;
    case 'L': ++p, d.size = ZPFormatSize::longDouble; break;
    case 'j': ++p, d.size = ZPFormatSize::intMax; break;
    case 'z': ++p, d.size = ZPFormatSize::size; break;
    case 't': ++p, d.size = ZPFormatSize::pointerDifference; break;
    }
    if (p == last) d.conversion = *last;
    return d;
}

ZPFormatKind _ZPKindOfDirective(const ZPFormatDirective &d) {
    switch (d.conversion) {
    case 0:
    case '%': return ZPFormatKind::nothing;
    case 'd': case 'i': case 'o': case 'u': case 'x': case 'X':
        return d.size == ZPFormatSize::int_ || d.size == ZPFormatSize::char_ || d.size == ZPFormatSize::short_ ? ZPFormatKind::int_ : ZPFormatKind::long_;
    case 'c': return ZPFormatKind::int_;
    case 's': case 'p': case 'n': case '@': return ZPFormatKind::pointer;
    default: return d.size == ZPFormatSize::longDouble ? ZPFormatKind::longDouble : ZPFormatKind::double_;
    }
}

// ---- the engine -----------------------------------------------------------------------------------

namespace {

static_assert(sizeof(long) == sizeof(long long) && sizeof(std::size_t) == sizeof(long long), "integers of every modifier from 'l' on are one word");

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

    unichar decimalSeparator() {
        if (separator) return separator;
        separator = '.';
        if (locale)
            if (id value = objc_msgSend<id>(locale, "objectForKey:"_sel, id("ZPDecimalSeparator"_zp)))
                if (static_cast<ZPString *>(value)->length()) separator = static_cast<ZPString *>(value)->characterAtIndex(0);
        return separator;
    }

    void describe(objc_object *object) {
        if (!object) {
            text.append("*nil*", 5);
            return;
        }
        ZPString *description = static_cast<ZPString *>(object);
        if (!isPlainString(object->isa)) {
            SEL withLocale = "descriptionWithLocale:"_sel;
            bool takesLocale = objc_msgSend<BOOL>(object, "respondsToSelector:"_sel, withLocale);
            description = takesLocale ? objc_msgSend<ZPString *>(object, withLocale, locale) : objc_msgSend<ZPString *>(object, "description"_sel);
        }
        text.append(description);
    }

    void write(const ZPFormatDirective &d, ZPFormatValue value) {
        switch (d.conversion) {
        case '@': describe(static_cast<objc_object *>(const_cast<void *>(value.pointer))); return;
        case 'd': case 'i': case 'o': case 'u': case 'x': case 'X': value.integer = narrowed(d, value.integer); break;
        }
        bool isNumber = d.conversion == 'f' || d.conversion == 'e' || d.conversion == 'g' || d.conversion == 'E' || d.conversion == 'G';
        _ZPFormatValue(text, d, value, isNumber ? decimalSeparator() : '.');
    }
    void writeLiterally(unsigned from, unsigned to) {
        if (to > from) text.append(format, from, to - from);
    }

    unsigned nextPercent(unsigned from) const {
        if (format.bytes) {
            const void *found = from < format.length ? std::memchr(format.bytes + from, '%', format.length - from) : nullptr;
            return found ? unsigned(static_cast<const unsigned char *>(found) - format.bytes) : format.length;
        }
        while (from < format.length && format.units[from] != '%') ++from;
        return from;
    }

    void runSequentially(ArgumentList &arguments) {
        for (unsigned at = 0; at < format.length;) {
            unsigned percent = nextPercent(at);
            writeLiterally(at, percent);
            if (percent == format.length) return;
            ZPFormatDirective d = _ZPParseDirective(format, percent);
            at = d.end;
            if (!d.conversion || d.position || d.widthPosition || d.precisionPosition) {
                writeLiterally(d.begin, d.end);
                continue;
            }
            if (d.width == ZPFormatDirective::fromArgument) setWidth(d, arguments.nextInt());
            if (d.precision == ZPFormatDirective::fromArgument) d.precision = std::clamp(arguments.nextInt(), -1, largestWidth);
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
        for (unsigned i = 1; i <= highest; ++i) values[i] = arguments.next(kinds[i] == ZPFormatKind::nothing ? ZPFormatKind::int_ : kinds[i]);
        unsigned at = 0;
        for (unsigned i = 0; i < count; ++i) {
            ZPFormatDirective &d = directives[i];
            writeText(at, d.begin);
            at = d.end;
            auto clamped = [&](unsigned position) { return int(std::clamp<long long>(int(values[position].integer), 0, largestWidth)); };
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

    void run(ArgumentList &arguments) {
        for (unsigned at = nextPercent(0); at < format.length; at = nextPercent(at)) {
            ZPFormatDirective d = _ZPParseDirective(format, at);
            at = d.end;
            if (!d.conversion || d.conversion == '%') continue;
            if (d.position) {
                runByPosition(arguments);
                return;
            }
            break;
        }
        runSequentially(arguments);
    }
};

}  // namespace

ZPString *_ZPNewFormattedString(ZPZone *zone, ZPString *format, id locale, std::va_list arguments) {
    if (!format) return ""_zp;
    // A description may change a format that can be changed; a copy shares its text until then.
    struct Kept { ZPString *text = nullptr; ~Kept() { if (text) text->release(); } } kept;
    if (format->isa == ZPConcreteMutableString::class_()) format = kept.text = format->copyWithZone(nullptr);
    Engine engine;
    engine.format = _ZPViewOfString(format);
    engine.locale = locale;
    ZPStackBuffer<unichar, 128> units(engine.format.shown() ? 0 : engine.format.length);
    if (!engine.format.shown()) {
        format->getCharacters_range(units.memory, {0, engine.format.length});
        engine.format.units = units.memory;
    }
    if (engine.nextPercent(0) == engine.format.length) return format->copyWithZone(zone);
    ArgumentList list(arguments);
    engine.run(list);
    return engine.text.newString(zone);
}
