// SPDX-License-Identifier: MIT
// From strings to bytes: one conversion for every encoding, over a view of the text where it shows one run
// and over blocks of units where it does not.
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/strings/cluster/Cluster.h>
#include <Bedrock/strings/encodings/Encodings.h>

#include <algorithm>
#include <iterator>

namespace {

// Where bytes go: nowhere, only counted, when `out` is null.
struct Sink {
    unsigned char *out;
    unsigned room;
    unsigned written = 0;

    bool put(const void *bytes, unsigned count) {
        if (count > room) return false;
        if (out) {
            std::memcpy(out, bytes, count);
            out += count;
        }
        room -= count;
        written += count;
        return true;
    }
    /// Counts bytes that were written in place.
    void skip(unsigned count) {
        if (out) out += count;
        room -= count;
        written += count;
    }
};

enum class Outcome { done, full, failed };

// A conversion under way.
struct Conversion {
    Sink sink;
    ZPStringEncoding encoding;
    BOOL lossy;
    const _ZPByteTable *table = nullptr;
    const _ZPEUCEncoder *euc = nullptr;
    enum Mode { ascii, kana, pairs } mode = ascii;
};

// Converts units until they end, the sink is full or a unit fails; `*taken` counts the units converted.
// With `more`, a high surrogate that ends the block waits for the next one.
using Encoder = Outcome(Conversion &c, const unichar *units, unsigned count, bool more, unsigned *taken);

Outcome encodeBytes(Conversion &c, const unichar *units, unsigned count, bool, unsigned *taken) {
    unsigned i = 0;
    for (; i < count; ++i) {
        unsigned n = std::min(count - i, c.sink.room);
        unsigned converted = _ZPEncodeBytes(*c.table, units + i, n, c.sink.out);
        c.sink.skip(converted);
        *taken = i += converted;
        if (i == count) break;
        if (converted == n) return Outcome::full;
        if (!c.lossy) return Outcome::failed;
        const char *text = c.encoding == ZPASCIIStringEncoding ? _ZPLossyASCII(units[i]) : "_";
        if (!c.sink.put(text, unsigned(std::strlen(text)))) return Outcome::full;
    }
    *taken = count;
    return Outcome::done;
}

Outcome encodeUTF8(Conversion &c, const unichar *units, unsigned count, bool more, unsigned *taken) {
    Sink &sink = c.sink;
    // A high surrogate at the end waits for what the next block begins with.
    unsigned whole = more && count && (units[count - 1] & 0xFC00) == 0xD800 ? count - 1 : count, i = 0;
    if (sink.out) sink.skip(_ZPEncodeUTF8Run(units, whole, sink.out, sink.room, &i));
    else if (std::uint64_t n = _ZPLengthInUTF8(units, whole); n <= sink.room) {
        sink.skip(unsigned(n));
        i = whole;
    }
    while (i < whole) {
        *taken = i;
        unsigned char bytes[4];
        unsigned used, n = _ZPEncodeUTF8(units + i, whole - i, bytes, &used);
        if (!sink.put(bytes, n)) return Outcome::full;
        i += used;
    }
    *taken = whole;
    return Outcome::done;
}

template <bool shiftJIS>
Outcome encodeJapanese(Conversion &c, const unichar *units, unsigned count, bool, unsigned *taken) {
    for (unsigned i = 0; i < count; ++i) {
        if (c.euc && c.sink.out) {
            unsigned run;
            c.sink.skip(_ZPEncodePairs(*c.euc, shiftJIS, units + i, count - i, c.sink.out, c.sink.room, &run));
            i += run;
        }
        *taken = i;
        if (i == count) break;
        unsigned char bytes[2];
        unsigned n = !c.euc     ? 0
                     : shiftJIS ? _ZPEncodeShiftJIS(*c.euc, units[i], bytes)
                                : _ZPEncodeEUC(*c.euc, units[i], bytes);
        if (n == 0) {
            if (!c.lossy) return Outcome::failed;
            bytes[0] = '_';
            n = 1;
        }
        if (!c.sink.put(bytes, n)) return Outcome::full;
    }
    *taken = count;
    return Outcome::done;
}

// Room for the way back to ASCII is kept, so that what fits is a whole text.
constexpr unsigned escapeBytes = 3;
constexpr const char *escapesTo[] = {"\x1B(B", "\x1B(I", "\x1B$B"};

Outcome encodeJIS(Conversion &c, const unichar *units, unsigned count, bool, unsigned *taken) {
    for (unsigned i = 0; i < count; ++i) {
        *taken = i;
        unsigned char bytes[2];
        unsigned n = c.euc ? _ZPEncodeEUC(*c.euc, units[i], bytes) : 0;
        if (n == 0) {
            if (!c.lossy) return Outcome::failed;
            bytes[0] = '_';
            n = 1;
        }
        Conversion::Mode mode = n == 1 ? Conversion::ascii : Conversion::pairs;
        if (n == 2 && bytes[0] == 0x8E) mode = Conversion::kana, bytes[0] = bytes[1] & 0x7F, n = 1;
        else if (n == 2 && bytes[0] == 0xA0) {
            // What only KESTREL holds is approximated where no loss is asked for, and dropped where it is allowed.
            if (c.lossy) continue;
            mode = Conversion::ascii;
            bytes[0] = _ZPShortApproximationOfKESTREL(bytes[1]);
            n = 1;
        } else if (n == 2) bytes[0] &= 0x7F, bytes[1] &= 0x7F;
        unsigned needed = n + (mode == c.mode ? 0 : escapeBytes) + (mode == Conversion::ascii ? 0 : escapeBytes);
        if (needed > c.sink.room) return Outcome::full;
        if (mode != c.mode) c.sink.put(escapesTo[mode], escapeBytes);
        c.mode = mode;
        c.sink.put(bytes, n);
    }
    *taken = count;
    return Outcome::done;
}

Outcome encodeNonLossyASCII(Conversion &c, const unichar *units, unsigned count, bool, unsigned *taken) {
    for (unsigned i = 0; i < count; ++i) {
        *taken = i;
        unsigned u = units[i], n;
        char text[6] = {'\\', '\\'};
        if (u == '\\') n = 2;
        else if (u == '\t' || u == '\n' || u == '\r' || (u >= 0x20 && u <= 0x7E)) text[0] = char(u), n = 1;
        else if (u < 0x100) {
            n = unsigned(_ZPPutByteEscape(text, static_cast<unsigned char>(u)) - text);
        } else {
            n = unsigned(_ZPPutUnitEscape(text, u, _ZPCapitalHexDigits) - text);
        }
        if (!c.sink.put(text, n)) return Outcome::full;
    }
    *taken = count;
    return Outcome::done;
}

Outcome encodeUnicode(Conversion &c, const unichar *units, unsigned count, bool, unsigned *taken) {
    unsigned n = *taken = std::min(count, c.sink.room / 2);
    if constexpr (__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__) c.sink.put(units, n * 2);
    else
        for (unsigned i = 0; i < n; ++i) {
            unsigned char bytes[2] = {static_cast<unsigned char>(units[i]), static_cast<unsigned char>(units[i] >> 8)};
            c.sink.put(bytes, 2);
        }
    return n < count ? Outcome::full : Outcome::done;
}

Encoder *encoderOf(ZPStringEncoding encoding) {
    switch (encoding) {
    case ZPUTF8StringEncoding: return encodeUTF8;
    case ZPNonLossyASCIIStringEncoding: return encodeNonLossyASCII;
    case ZPUnicodeStringEncoding: return encodeUnicode;
    case ZPJapaneseEUCStringEncoding: return encodeJapanese<false>;
    case ZPShiftJISStringEncoding: return encodeJapanese<true>;
    case ZPISO2022JPStringEncoding: return encodeJIS;
    default: return encodeBytes;
    }
}

struct EncodingMethods : ZPString {
    BOOL getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
        void *buffer, unsigned maxLength, unsigned *filled, ZPStringEncoding encoding, BOOL lossy, ZPRange range,
        ZPRange *remaining) {
        SEL selector = "getBytes:maxLength:filledLength:encoding:allowLossyConversion:range:remainingRange:"_sel;
        if (encoding == 0) encoding = ZPUnicodeStringEncoding;
        if (!_ZPEncodingIsKnown(encoding)) return NO;
        ZPStringView view = _ZPViewOfString(this);
        _ZPCheckRange(this, selector, range, view.shown() ? view.length : self()->length());

        Conversion c{{static_cast<unsigned char *>(buffer), maxLength}, encoding, lossy, _ZPTableOfEncoding(encoding)};
        Encoder *encoder = encoderOf(encoding);
        unsigned done = 0;
        bool ended = false;
        if (view.bytes && _ZPEncodingHasASCIIHalf(encoding)) {
            const unsigned char *bytes = view.bytes + range.location;
            unsigned n = std::min(range.length, maxLength);
            done = encoding == _ZPCStringEncoding ? n : _ZPLengthOfASCII(bytes, n);
            c.sink.put(bytes, done);
            ended = done == maxLength;
        }
        if (encoding == ZPJapaneseEUCStringEncoding || encoding == ZPShiftJISStringEncoding ||
            encoding == ZPISO2022JPStringEncoding)
            c.euc = range.length ? _ZPSharedEUCEncoder() : nullptr;
        if (encoding == ZPUnicodeStringEncoding && !c.sink.put("\xFF\xFE", 2)) ended = true;
        unichar block[256];
        while (done < range.length && !ended) {
            unsigned left = range.length - done, taken = 0;
            const unichar *units = block;
            if (view.units) units = view.units + range.location + done;
            else {
                left = std::min(left, unsigned(std::size(block)));
                if (view.bytes) _ZPCopyUnits(view, range.location + done, left, block);
                else self()->getCharacters_range(block, {range.location + done, left});
            }
            Outcome outcome = encoder(c, units, left, done + left < range.length, &taken);
            if (outcome == Outcome::failed) return NO;
            ended = outcome == Outcome::full;
            done += taken;
        }
        if (c.mode != Conversion::ascii) c.sink.put(escapesTo[Conversion::ascii], escapeBytes);
        if (filled) *filled = c.sink.written;
        if (remaining) *remaining = {range.location + done, range.length - done};
        return YES;
    }

    BOOL _getBytesInJISEncoding_range_usedBytes_lossy(void *buffer, ZPRange range, unsigned *usedBytes, BOOL lossy) {
        ZPRange remaining{};
        return self()->getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
                   buffer, 0xFFFFFFFF, usedBytes, ZPISO2022JPStringEncoding, lossy, range, &remaining) &&
               remaining.length == 0;
    }

    BOOL canBeConvertedToEncoding(ZPStringEncoding encoding) {
        if (encoding == 0 || encoding == ZPUnicodeStringEncoding || encoding == ZPUTF8StringEncoding ||
            encoding == ZPNonLossyASCIIStringEncoding)
            return YES;
        return self()->getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
            nullptr, 0xFFFFFFFF, nullptr, encoding, NO, {0, self()->length()}, nullptr);
    }

    static ZPStringEncoding defaultCStringEncoding(Class) { return _ZPDefaultCStringEncoding(); }
    static const ZPStringEncoding *availableStringEncodings(Class) {
        static const ZPStringEncoding list[] = {10, 2, 1, 5, 9, 3, 8, 4, 6, 7, 11, 12, 15, 13, 14, 21, 0};
        return list;
    }
};

}  // namespace

ZP_CATEGORY(ZPString, EncodingMethods,
            getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange,
            _getBytesInJISEncoding_range_usedBytes_lossy, canBeConvertedToEncoding,
            classMethods(defaultCStringEncoding, availableStringEncodings));
