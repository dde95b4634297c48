// SPDX-License-Identifier: MIT
// The room of formats and numbers: the engine behind every `stringWithFormat:`, the reader of numbers and the scanner.
// Other rooms call `_ZPNewFormattedString` (cluster/Mutable.h) and the public headers ZPNumberReader.h and ZPScanner.h.
// Read this first, then Format.cpp. Here are the engine's parts: the text under construction, directives, and the C
// conversions.
#pragma once

#include <Bedrock/strings/cluster/Mutable.h>

/// A text that grows: bytes in the storage encoding until something comes that they cannot hold, then units.
class ZPFormatText {
    unsigned char _local[240];
    void *_buffer = _local;
    unsigned _length = 0, _capacity = sizeof _local;
    bool _wide = false;

    void grow(unsigned more);
    void widen();
    unsigned char *bytes() { return static_cast<unsigned char *>(_buffer); }
    unichar *units() { return static_cast<unichar *>(_buffer); }

  public:
    ZPFormatText() = default;
    ZPFormatText(const ZPFormatText &) = delete;
    ~ZPFormatText() {
        if (_buffer != _local) ZPZoneFree(nullptr, _buffer);
    }
    /// Empties the text; what it has become wide for is forgotten with it.
    void clear() {
        _length = 0;
        if (_wide) _wide = false;
    }
    /// Bytes in the storage encoding.
    void append(const void *text, unsigned count) {
        if (count > _capacity - _length) grow(count);
        if (_wide)
            _ZPCopyUnits({static_cast<const unsigned char *>(text), nullptr, count}, 0, count, units() + _length);
        else std::memcpy(bytes() + _length, text, count);
        _length += count;
    }
    void append(char c) { append(&c, 1); }
    void append(const unichar *text, unsigned count);
    void fill(char c, unsigned count) {
        if (count > _capacity - _length) grow(count);
        for (unsigned i = 0; i < count; ++i)
            if (_wide) units()[_length + i] = static_cast<unsigned char>(c);
            else bytes()[_length + i] = static_cast<unsigned char>(c);
        _length += count;
    }
    void append(const ZPStringView &view, unsigned from, unsigned count) {
        if (view.bytes) append(view.bytes + from, count);
        else append(view.units + from, count);
    }
    void append(ZPString *string);
    /// Bytes in the default C-string encoding; what is not text in it becomes U+FFFD.
    void appendCText(const char *text, unsigned count);
    /// The text as a gap-buffer string of exactly its size that the caller owns; "" when empty.
    ZPString *newString(ZPZone *zone);
};

enum class ZPFormatSize : unsigned char {
    int_,
    char_,
    short_,
    long_,
    longLong,
    intMax,
    size,
    pointerDifference,
    longDouble
};

/// One directive of a format. Positions count from 1; 0 is the next argument.
struct ZPFormatDirective {
    static constexpr int none = -1, fromArgument = -2;

    unsigned begin, end;  ///< in the format
    char conversion = 0;  ///< 0: not a directive, the text stands for itself
    ZPFormatSize size = ZPFormatSize::int_;
    bool left = false, plus = false, blank = false, alternate = false, zeros = false;
    int width = none, precision = none;
    unsigned position = 0, widthPosition = 0, precisionPosition = 0;
};

/// What a directive takes from the argument list.
enum class ZPFormatKind : unsigned char { nothing, int_, long_, double_, longDouble, pointer };
ZPFormatKind _ZPKindOfDirective(const ZPFormatDirective &directive);

union ZPFormatValue {
    long long integer;
    double number;
    long double longNumber;
    const void *pointer;
};

/// Reads the directive that begins with the '%' at `begin`.
ZPFormatDirective _ZPParseDirective(const ZPStringView &format, unsigned begin);
/// Writes a value by a directive of any conversion but '@', its width and precision resolved. `separator`
/// takes the place of the '.' of numbers.
void _ZPFormatValue(ZPFormatText &text, const ZPFormatDirective &directive, const ZPFormatValue &value,
                    unichar separator);
