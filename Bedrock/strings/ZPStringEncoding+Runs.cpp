// Runs of bytes and units: ASCII, single-byte encodings, UTF-8. Sixteen bytes at a time where the processor has
// vectors, a word at a time elsewhere.
#include <Bedrock/strings/ZPStringEncoding+Internal.h>

#include <bit>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

// ---- blocks of 16 bytes -------------------------------------------------------------------------

namespace {

constexpr unsigned blockBytes = 16;

#ifdef __SSE2__
// Writes the 16 bytes as units and answers a bit for each byte from 0x80 on.
ZP_INLINE unsigned widenBlock(const unsigned char *in, unichar *out) {
    __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in)), zero = _mm_setzero_si128();
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out), _mm_unpacklo_epi8(bytes, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out + 8), _mm_unpackhi_epi8(bytes, zero));
    return unsigned(_mm_movemask_epi8(bytes));
}
// Writes 8 units as bytes and answers a bit for each unit from 0x80 on; such a unit's byte is nothing of use.
ZP_INLINE unsigned narrowBlock(const unichar *in, unsigned char *out) {
    __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in));
    __m128i high = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xFF80)));
    __m128i plain = _mm_cmpeq_epi16(high, _mm_setzero_si128());
    _mm_storel_epi64(reinterpret_cast<__m128i *>(out), _mm_packus_epi16(units, units));
    return (unsigned(_mm_movemask_epi8(_mm_packs_epi16(plain, plain))) & 0xFF) ^ 0xFF;
}
#else
ZP_INLINE unsigned widenBlock(const unsigned char *in, unichar *out) {
    unsigned mask = 0;
    for (unsigned i = 0; i < blockBytes; ++i) {
        out[i] = in[i];
        mask |= unsigned(in[i] >> 7) << i;
    }
    return mask;
}
ZP_INLINE unsigned narrowBlock(const unichar *in, unsigned char *out) {
    unsigned mask = 0;
    for (unsigned i = 0; i < 8; ++i) {
        out[i] = static_cast<unsigned char>(in[i]);
        mask |= unsigned(in[i] >= 0x80) << i;
    }
    return mask;
}
#endif

}  // namespace

// ---- ASCII --------------------------------------------------------------------------------------

unsigned _ZPLengthOfASCII(const void *bytes, unsigned length) {
    auto *p = static_cast<const unsigned char *>(bytes);
    unsigned i = 0;
#ifdef __SSE2__
    for (; i + 64 <= length; i += 64) {
        auto *v = reinterpret_cast<const __m128i *>(p + i);
        __m128i all = _mm_or_si128(_mm_or_si128(_mm_loadu_si128(v), _mm_loadu_si128(v + 1)), _mm_or_si128(_mm_loadu_si128(v + 2), _mm_loadu_si128(v + 3)));
        if (_mm_movemask_epi8(all)) break;
    }
#endif
    for (; i + 8 <= length; i += 8) {
        std::uint64_t w;
        std::memcpy(&w, p + i, 8);
        if (w & 0x8080808080808080u) break;
    }
    while (i < length && p[i] < 0x80) ++i;
    return i;
}

void _ZPWidenBytes(const void *bytes, unsigned length, unichar *units) {
    auto *p = static_cast<const unsigned char *>(bytes);
    unsigned i = 0;
    for (; i + blockBytes <= length; i += blockBytes) widenBlock(p + i, units + i);
    for (; i < length; ++i) units[i] = p[i];
}

void _ZPWidenBytesInPlace(void *buffer, unsigned length) {
    auto *bytes = static_cast<unsigned char *>(buffer);
    for (unsigned i = length; i-- > 0;) {
        unichar unit = bytes[i];
        std::memcpy(bytes + 2 * std::size_t(i), &unit, 2);
    }
}

unsigned _ZPNarrowASCII(const unichar *units, unsigned count, unsigned char *bytes) {
    unsigned i = 0;
    for (; i + 8 <= count; i += 8)
        if (unsigned mask = narrowBlock(units + i, bytes + i)) return i + unsigned(std::countr_zero(mask));
    for (; i < count && units[i] < 0x80; ++i) bytes[i] = static_cast<unsigned char>(units[i]);
    return i;
}

// ---- single-byte encodings ----------------------------------------------------------------------

void _ZPDecodeBytes(const _ZPByteTable &table, const unsigned char *in, unsigned length, unichar *out) {
    const unichar *units = table.units;
    unsigned i = 0;
    for (; i + blockBytes <= length; i += blockBytes) {
        if (table.asciiHalf && !widenBlock(in + i, out + i)) continue;
        for (unsigned k = 0; k < blockBytes; ++k) out[i + k] = units[in[i + k]];
    }
    for (; i < length; ++i) out[i] = units[in[i]];
}

unsigned _ZPEncodeBytes(const _ZPByteTable &table, const unichar *in, unsigned count, unsigned char *out) {
    unsigned char scratch[8];
    unsigned i = 0;
    for (; i + 8 <= count; i += 8) {
        unsigned char *to = out ? out + i : scratch;
        if (table.asciiHalf && !narrowBlock(in + i, to)) continue;
        bool all = true;
        for (unsigned k = 0; k < 8; ++k) {
            to[k] = table.pages[table.pageOf[in[i + k] >> 8]][in[i + k] & 0xFF];
            all &= to[k] != 0;
        }
        // A unit without a byte, or U+0000: one at a time says which.
        if (!all) [[unlikely]]
            for (unsigned k = 0; k < 8; ++k)
                if (table.byteOf(in[i + k]) < 0) return i + k;
    }
    for (; i < count; ++i) {
        int byte = table.byteOf(in[i]);
        if (byte < 0) break;
        if (out) out[i] = static_cast<unsigned char>(byte);
    }
    return i;
}

// ---- UTF-8 --------------------------------------------------------------------------------------

namespace {

ZP_INLINE bool continues(unsigned b) { return (b & 0xC0) == 0x80; }

}  // namespace

// Decodes by the lead byte alone, like ZPUTF8ToUnicode; the short ways are for sequences that are what they say.
long long _ZPDecodeUTF8(const unsigned char *in, unsigned length, unichar *out) {
    const unsigned char *end = in + length;
    unichar *start = out;
    while (in < end) {
        // Room for the units of a whole block is there: no byte has given more than one unit so far.
        while (end - in >= long(blockBytes)) {
            unsigned mask = widenBlock(in, out);
            unsigned plain = mask ? unsigned(std::countr_zero(mask)) : blockBytes;
            in += plain;
            out += plain;
            if (mask) break;
        }
        while (in < end && end - in < long(blockBytes) && *in < 0x80) *out++ = *in++;
        while (end - in >= 4) {
            unsigned b = in[0];
            if (b < 0x80) {
                // A lone blank between words is not worth a block.
                if (in[1] < 0x80) break;
                *out++ = static_cast<unichar>(b);
                ++in;
            } else if (b - 0xC0 < 0x20 && continues(in[1])) {
                *out++ = static_cast<unichar>((b << 6) + in[1] - 0x3080u);
                in += 2;
            } else if (b - 0xE0 < 0x10 && continues(in[1]) && continues(in[2])) {
                *out++ = static_cast<unichar>((b << 12) + (in[1] << 6) + in[2] - 0xE2080u);
                in += 3;
            } else {
                unsigned n = ZPUTF8ToUnicode(&in, unsigned(end - in), out);
                if (!n) return -1;
                out += n;
            }
        }
        if (in < end && end - in < 4) {
            unsigned n = ZPUTF8ToUnicode(&in, unsigned(end - in), out);
            if (!n) return -1;
            out += n;
        }
    }
    return out - start;
}

unsigned _ZPEncodeUTF8Run(const unichar *units, unsigned count, unsigned char *out, unsigned room, unsigned *taken) {
    constexpr long most = 4;  // bytes of a character
    const unichar *in = units, *last = units + (count ? count - 1 : 0);
    unsigned char *start = out;
    const unsigned char *limit = out + room;
    while (in < last && limit - out >= 8) {
        if (last - in >= 8) {
            unsigned mask = narrowBlock(in, out), plain = mask ? unsigned(std::countr_zero(mask)) : 8;
            in += plain;
            out += plain;
            if (!mask) continue;
        }
        // A lone ASCII character between others is not worth a block.
        while (in < last && limit - out >= most) {
            unsigned used;
            out += _ZPEncodeUTF8(in, 2, out, &used);
            in += used;
            if (in < last && in[0] < 0x80 && in[1] < 0x80) break;
        }
    }
    *taken = unsigned(in - units);
    return unsigned(out - start);
}

std::uint64_t _ZPLengthInUTF8(const unichar *units, unsigned count) {
    std::uint64_t total = 0;
    // Sums of a stretch fit 32 bits.
    for (unsigned from = 0; from < count;) {
        unsigned n = 0, pairs = 0, stop = count - from < 1 << 20 ? count : from + (1 << 20);
        for (unsigned i = from; i < stop; ++i) n += 1u + (units[i] >= 0x80) + (units[i] >= 0x800);
        for (unsigned i = from ? from - 1 : 0; i + 1 < stop; ++i) pairs += ((units[i] & 0xFC00) == 0xD800) & ((units[i + 1] & 0xFC00) == 0xDC00);
        // A pair takes four bytes, two for each of its units; other surrogates take three.
        total += n - 2 * pairs;
        from = stop;
    }
    return total;
}
