// From strings to bytes: one conversion for every encoding, over a view of the text where it shows one run
// and over blocks of units where it does not.
#include <Bedrock/strings/ZPString+Internal.h>
#include <Bedrock/strings/ZPStringEncoding+Internal.h>

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
    bool put(unsigned char byte) {
        if (room == 0) return false;
        if (out) *out++ = byte;
        --room;
        ++written;
        return true;
    }
};

enum class Outcome { done, full, failed };

// Converts units until they end, the sink is full or a unit fails; `*taken` counts the units converted.
// With `more`, a high surrogate that ends the block waits for the next one.
using Encoder = Outcome(ZPStringEncoding, const unichar *units, unsigned count, bool more, BOOL lossy, Sink &sink, unsigned *taken);

Outcome encodeBytes(ZPStringEncoding encoding, const unichar *units, unsigned count, bool, BOOL lossy, Sink &sink, unsigned *taken) {
    for (unsigned i = 0; i < count; ++i) {
        *taken = i;
        if (units[i] < 0x80) {
            if (!sink.put(static_cast<unsigned char>(units[i]))) return Outcome::full;
            continue;
        }
        int byte = _ZPByteOfUnit(encoding, units[i]);
        if (byte >= 0) {
            if (!sink.put(static_cast<unsigned char>(byte))) return Outcome::full;
        } else if (!lossy) return Outcome::failed;
        else {
            unsigned char kestrel;
            const char *text = "";
            if (encoding == ZPASCIIStringEncoding && ZPPrecompUnicodeToKESTREL(units[i], &kestrel)) text = _ZPApproximationOfKESTREL(kestrel);
            if (!*text) text = "_";
            if (!sink.put(text, unsigned(std::strlen(text)))) return Outcome::full;
        }
    }
    *taken = count;
    return Outcome::done;
}

// Units for which there surely is room, without looking at it: up to the last but one, so that pairs are whole.
unsigned encodeUTF8Fast(const unichar *units, unsigned count, Sink &sink) {
    unsigned i = 0, last = count ? count - 1 : 0;
    unsigned char *out = sink.out;
    const unsigned char *limit = out + sink.room;
    constexpr std::uint64_t notASCII = 0xFF80FF80FF80FF80;
    while (i < last && limit - out >= 8) {
        std::uint64_t four;
        if (i + 4 <= last && (std::memcpy(&four, units + i, 8), (four & notASCII) == 0)) {
            for (unsigned k = 0; k < 4; ++k) out[k] = static_cast<unsigned char>(units[i + k]);
            i += 4;
            out += 4;
            continue;
        }
        do {
            unsigned used;
            out += _ZPEncodeUTF8(units + i, 2, out, &used);
            i += used;
        } while (i < last && units[i] >= 0x80 && limit - out >= 8);
    }
    sink.written += unsigned(out - sink.out);
    sink.room -= unsigned(out - sink.out);
    sink.out = out;
    return i;
}

// The same without writing.
unsigned countUTF8Fast(const unichar *units, unsigned count, Sink &sink) {
    std::uint64_t n = 0;
    unsigned limit = std::min(count, sink.room / 3), i = 0;
    // A surrogate pair takes four bytes, two for each of its units; other surrogates take three.
    for (; i < limit; ++i) {
        unsigned u = units[i];
        n += 1 + (u >= 0x80) + (u >= 0x800);
        if ((u & 0xFC00) == 0xD800 && i + 1 < count && (units[i + 1] & 0xFC00) == 0xDC00) {
            if (i + 1 == limit) {
                n -= 3;
                break;
            }
            ++i;
            ++n;
        } else if ((u & 0xFC00) == 0xD800 && i + 1 == count) {
            n -= 3;
            break;
        }
    }
    sink.written += unsigned(n);
    sink.room -= unsigned(n);
    return i;
}

Outcome encodeUTF8(ZPStringEncoding, const unichar *units, unsigned count, bool more, BOOL, Sink &sink, unsigned *taken) {
    unsigned i = sink.out ? encodeUTF8Fast(units, count, sink) : countUTF8Fast(units, count, sink);
    while (i < count) {
        *taken = i;
        if (units[i] < 0x80) {
            if (!sink.put(static_cast<unsigned char>(units[i]))) return Outcome::full;
            ++i;
            continue;
        }
        if (more && i + 1 == count && (units[i] & 0xFC00) == 0xD800) return Outcome::done;
        unsigned char bytes[4];
        unsigned used, n = _ZPEncodeUTF8(units + i, count - i, bytes, &used);
        if (!sink.put(bytes, n)) return Outcome::full;
        i += used;
    }
    *taken = count;
    return Outcome::done;
}

Outcome encodeNonLossyASCII(ZPStringEncoding, const unichar *units, unsigned count, bool, BOOL, Sink &sink, unsigned *taken) {
    static const char digits[] = "0123456789ABCDEF";
    for (unsigned i = 0; i < count; ++i) {
        *taken = i;
        unsigned u = units[i], n;
        char text[6] = {'\\', '\\'};
        if (u == '\\') n = 2;
        else if (u == '\t' || u == '\n' || u == '\r' || (u >= 0x20 && u <= 0x7E)) text[0] = char(u), n = 1;
        else if (u < 0x100) {
            for (int k = 0; k < 3; ++k) text[1 + k] = digits[u >> (6 - 3 * k) & 7];
            n = 4;
        } else {
            text[1] = 'U';
            for (int k = 0; k < 4; ++k) text[2 + k] = digits[u >> (12 - 4 * k) & 15];
            n = 6;
        }
        if (!sink.put(text, n)) return Outcome::full;
    }
    *taken = count;
    return Outcome::done;
}

Outcome encodeUnicode(ZPStringEncoding, const unichar *units, unsigned count, bool, BOOL, Sink &sink, unsigned *taken) {
    unsigned n = *taken = std::min(count, sink.room / 2);
    if constexpr (__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__) sink.put(units, n * 2);
    else
        for (unsigned i = 0; i < n; ++i) sink.put(static_cast<unsigned char>(units[i])), sink.put(static_cast<unsigned char>(units[i] >> 8));
    return n < count ? Outcome::full : Outcome::done;
}

struct EncodingMethods : ZPString {
    BOOL getBytes(void *buffer, unsigned maxLength, unsigned *filled, ZPStringEncoding encoding, BOOL lossy, ZPRange range, ZPRange *remaining) {
        SEL selector = "getBytes:maxLength:filledLength:encoding:allowLossyConversion:range:remainingRange:"_sel;
        if (encoding == 0) encoding = ZPUnicodeStringEncoding;
        if (!_ZPEncodingIsKnown(encoding)) return NO;
        ZPStringView view = _ZPViewOfString(this);
        _ZPCheckRange(this, selector, range, view.shown() ? view.length : ZPString::length());

        Sink sink{static_cast<unsigned char *>(buffer), maxLength};
        unsigned done = 0;
        bool ended = false;
        if (view.bytes && _ZPEncodingHasASCIIHalf(encoding)) {
            const unsigned char *bytes = view.bytes + range.location;
            unsigned n = std::min(range.length, maxLength);
            done = encoding == _ZPCStringEncoding ? n : _ZPLengthOfASCII(bytes, n);
            sink.put(bytes, done);
            ended = done == maxLength;
        }
        Encoder *encoder = encoding == ZPUTF8StringEncoding            ? encodeUTF8
                           : encoding == ZPNonLossyASCIIStringEncoding ? encodeNonLossyASCII
                           : encoding == ZPUnicodeStringEncoding       ? encodeUnicode
                                                                       : encodeBytes;
        if (encoding == ZPUnicodeStringEncoding && !sink.put("\xFF\xFE", 2)) ended = true;
        unichar block[256];
        while (done < range.length && !ended) {
            unsigned left = range.length - done, taken = 0;
            const unichar *units = view.units + range.location + done;
            if (!view.units) {
                left = std::min(left, unsigned(std::size(block)));
                if (view.bytes) _ZPCopyUnits(view, range.location + done, left, block);
                else ZPString::getCharacters_range(block, {range.location + done, left});
                units = block;
            }
            Outcome outcome = encoder(encoding, units, left, done + left < range.length, lossy, sink, &taken);
            if (outcome == Outcome::failed) return NO;
            ended = outcome == Outcome::full;
            done += taken;
        }
        if (filled) *filled = sink.written;
        if (remaining) *remaining = {range.location + done, range.length - done};
        return YES;
    }

    BOOL canBeConverted(ZPStringEncoding encoding) {
        if (encoding == 0 || encoding == ZPUnicodeStringEncoding || encoding == ZPUTF8StringEncoding || encoding == ZPNonLossyASCIIStringEncoding)
            return YES;
        return getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
            nullptr, 0xFFFFFFFF, nullptr, encoding, NO, {0, ZPString::length()}, nullptr);
    }

    static ZPStringEncoding defaultCString(Class) { return _ZPDefaultCStringEncoding(); }
    static const ZPStringEncoding *available(Class) {
        static const ZPStringEncoding list[] = {10, 2, 1, 5, 9, 3, 8, 4, 6, 7, 11, 12, 15, 13, 14, 21, 0};
        return list;
    }
    static ZPString *nameOfEncoding(Class, ZPStringEncoding encoding) {
        switch (encoding) {
        case ZPASCIIStringEncoding: return "ASCII"_zp;
        case ZPKESTRELStringEncoding: return "KESTREL"_zp;
        case ZPJapaneseEUCStringEncoding: return "Japanese EUC"_zp;
        case ZPUTF8StringEncoding: return "UTF-8"_zp;
        case ZPISOLatin1StringEncoding: return "ISO Latin-1"_zp;
        case ZPSymbolStringEncoding: return "Symbol"_zp;
        case ZPNonLossyASCIIStringEncoding: return "Non-lossy ASCII"_zp;
        case ZPShiftJISStringEncoding: return "Shift JIS"_zp;
        case ZPISOLatin2StringEncoding: return "ISO Latin-2"_zp;
        case 0:
        case ZPUnicodeStringEncoding: return "Unicode"_zp;
        case ZPWindowsCP1251StringEncoding: return "Adobe Cyrillic"_zp;
        case ZPWindowsCP1252StringEncoding: return "Windows Latin-1"_zp;
        case ZPWindowsCP1253StringEncoding: return "Windows Greek (Code Page 1253)"_zp;
        case ZPWindowsCP1254StringEncoding: return "Windows Turkish (Code Page 1254)"_zp;
        case ZPWindowsCP1250StringEncoding: return "Windows Latin-2 (Code Page 1250)"_zp;
        case ZPISO2022JPStringEncoding: return "JIS (ISO 2022 JP)"_zp;
        default: return ""_zp;
        }
    }
};

}  // namespace

ZP_CATEGORY(ZPString, ZPStringEncoding)
    .method<&EncodingMethods::getBytes>("getBytes:maxLength:filledLength:encoding:allowLossyConversion:range:remainingRange:")
    .method<&EncodingMethods::canBeConverted>("canBeConvertedToEncoding:")
    .classMethod<&EncodingMethods::defaultCString>("defaultCStringEncoding")
    .classMethod<&EncodingMethods::available>("availableStringEncodings")
    .classMethod<&EncodingMethods::nameOfEncoding>("localizedNameOfStringEncoding:");
