// SPDX-License-Identifier: MIT
// Runs of bytes and units: ASCII, single-byte encodings, UTF-8. Sixteen bytes at a time where the processor has
// vectors, a word at a time elsewhere.
#include <Bedrock/strings/encodings/Encodings.h>

#include <algorithm>
#include <bit>
#include <cstring>
#ifdef __SSE2__
#include <cpuid.h>
#include <immintrin.h>
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
ZP_INLINE bool isASCIIBlock(const unsigned char *in) {
    return _mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(in))) == 0;
}
// Narrows 8 units to 8 bytes, the first at the lowest address, and answers a bit for each unit from `limit`, 0x80 or
// 0x100, on; such a unit's byte is nothing of use. Only the caller knows how many of the bytes may be stored.
template <unsigned limit = 0x80> ZP_INLINE unsigned narrowBlock(const unichar *in, std::uint64_t *out) {
    __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in));
    __m128i high = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0x10000 - limit)));
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
ZP_INLINE bool isASCIIBlock(const unsigned char *in) {
    std::uint64_t w[2];
    std::memcpy(w, in, blockBytes);
    return ((w[0] | w[1]) & 0x8080808080808080u) == 0;
}
template <unsigned limit = 0x80> ZP_INLINE unsigned narrowBlock(const unichar *in, std::uint64_t *out) {
    unsigned char bytes[8];
    unsigned mask = 0;
    for (unsigned i = 0; i < 8; ++i) {
        bytes[i] = static_cast<unsigned char>(in[i]);
        mask |= unsigned(in[i] >= limit) << i;
    }
    std::memcpy(out, bytes, 8);
    return mask;
}
#endif

}  // namespace

// ---- ASCII --------------------------------------------------------------------------------------

// The first `length` bytes that are ASCII, copied, and no other, when `copy` is not null.
ZP_INLINE unsigned lengthOfASCII(const unsigned char *in, unsigned length, unsigned char *copy) {
    unsigned i = 0;
#ifdef __SSE2__
    for (; i + 64 <= length; i += 64) {
        auto *from = reinterpret_cast<const __m128i *>(in + i);
        __m128i a = _mm_loadu_si128(from), b = _mm_loadu_si128(from + 1), c = _mm_loadu_si128(from + 2),
                d = _mm_loadu_si128(from + 3);
        if (_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d)))) break;
        if (!copy) continue;
        auto *to = reinterpret_cast<__m128i *>(copy + i);
        _mm_storeu_si128(to, a);
        _mm_storeu_si128(to + 1, b);
        _mm_storeu_si128(to + 2, c);
        _mm_storeu_si128(to + 3, d);
    }
#endif
    for (; i + 8 <= length; i += 8) {
        std::uint64_t w;
        std::memcpy(&w, in + i, 8);
        if (w & 0x8080808080808080u) break;
        if (copy) std::memcpy(copy + i, &w, 8);
    }
    for (; i < length && in[i] < 0x80; ++i)
        if (copy) copy[i] = in[i];
    return i;
}

unsigned _ZPLengthOfASCII(const void *bytes, unsigned length) {
    return lengthOfASCII(static_cast<const unsigned char *>(bytes), length, nullptr);
}

unsigned _ZPCopyASCII(const void *bytes, unsigned length, void *copy) {
    return lengthOfASCII(static_cast<const unsigned char *>(bytes), length, static_cast<unsigned char *>(copy));
}

void _ZPWidenBytes(const void *bytes, unsigned length, unichar *units) {
    auto *p = static_cast<const unsigned char *>(bytes);
    unsigned i = 0;
    for (; i + blockBytes <= length; i += blockBytes) widenBlock(p + i, units + i);
    for (; i < length; ++i) units[i] = p[i];
}

unsigned _ZPNarrowASCII(const unichar *units, unsigned count, unsigned char *bytes) {
    unsigned i = 0;
    for (; i + 8 <= count; i += 8) {
        std::uint64_t narrow;
        unsigned mask = narrowBlock(units + i, &narrow), plain = mask ? unsigned(std::countr_zero(mask)) : 8;
        std::memcpy(bytes + i, &narrow, plain);
        if (mask) return i + plain;
    }
    for (; i < count && units[i] < 0x80; ++i) bytes[i] = static_cast<unsigned char>(units[i]);
    return i;
}

// ---- single-byte encodings ----------------------------------------------------------------------

void _ZPDecodeBytes(const _ZPByteTable &table, const unsigned char *in, unsigned length, unichar *out) {
    if (&table == &_ZPTableISOLatin1 || &table == &_ZPTableASCII) return _ZPWidenBytes(in, length, out);
    const unichar *units = table.units;
    unsigned i = 0;
    for (; i + blockBytes <= length; i += blockBytes) {
        if (table.asciiHalf && isASCIIBlock(in + i)) {
            widenBlock(in + i, out + i);
            continue;
        }
        for (unsigned k = 0; k < blockBytes; ++k) out[i + k] = units[in[i + k]];
    }
    for (; i < length; ++i) out[i] = units[in[i]];
}

template <unsigned plain>
static unsigned encodeBytes(const _ZPByteTable &table, const unichar *in, unsigned count, unsigned char *out) {
    unsigned i = 0;
    for (; i + 8 <= count; i += 8) {
        std::uint64_t block;
        if constexpr (plain != 0) {
            if (!narrowBlock<plain>(in + i, &block)) {
                if (out) std::memcpy(out + i, &block, 8);
                continue;
            }
        }
        unsigned char bytes[8];
        bool all = true;
        for (unsigned k = 0; k < 8; ++k) {
            bytes[k] = table.pages[table.pageOf[in[i + k] >> 8]][in[i + k] & 0xFF];
            all &= bytes[k] != 0;
        }
        // A unit without a byte, or U+0000: one at a time says which.
        unsigned good = 8;
        if (!all) [[unlikely]]
            for (good = 0; good < 8 && table.byteOf(in[i + good]) >= 0;) ++good;
        if (out) std::memcpy(out + i, bytes, good);
        if (good < 8) return i + good;
    }
    for (; i < count; ++i) {
        int byte = table.byteOf(in[i]);
        if (byte < 0) break;
        if (out) out[i] = static_cast<unsigned char>(byte);
    }
    return i;
}

unsigned _ZPEncodeBytes(const _ZPByteTable &table, const unichar *in, unsigned count, unsigned char *out) {
    if (&table == &_ZPTableISOLatin1) return encodeBytes<0x100>(table, in, count, out);
    return table.asciiHalf ? encodeBytes<0x80>(table, in, count, out) : encodeBytes<0>(table, in, count, out);
}

// ---- UTF-8 --------------------------------------------------------------------------------------

unsigned _ZPUnitsOfUTF8(const unsigned char *in, unsigned length) {
    unsigned units = 0, i = 0;
#ifdef __SSE2__
    // Every byte that continues nothing begins a unit, and one from 0xF0 on another. Sums of 127 blocks fit bytes.
    const __m128i zero = _mm_setzero_si128(), lastContinuing = _mm_set1_epi8(static_cast<char>(0xBF)),
                  four = _mm_set1_epi8(static_cast<char>(0xF0));
    while (i + blockBytes <= length) {
        __m128i sums = zero;
        for (unsigned block = 0; block < 127 && i + blockBytes <= length; ++block, i += blockBytes) {
            __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in + i));
            sums = _mm_sub_epi8(sums, _mm_cmpgt_epi8(bytes, lastContinuing));
            sums = _mm_sub_epi8(sums, _mm_cmpeq_epi8(_mm_max_epu8(bytes, four), bytes));
        }
        __m128i total = _mm_sad_epu8(sums, zero);
        units += unsigned(_mm_cvtsi128_si32(total)) + unsigned(_mm_extract_epi16(total, 4));
    }
#endif
    for (; i < length; ++i) units += (static_cast<signed char>(in[i]) >= -0x40) + (in[i] >= 0xF0);
    return units;
}

// Four bytes, the first in the lowest.
static ZP_INLINE std::uint32_t fourBytes(const unsigned char *in) {
    if constexpr (std::endian::native == std::endian::little) {
        std::uint32_t w;
        std::memcpy(&w, in, 4);
        return w;
    }
    return in[0] | in[1] << 8 | in[2] << 16 | std::uint32_t(in[3]) << 24;
}

// Decodes by the lead byte alone, like ZPUTF8ToUnicode; the short ways are for sequences that are what they say.
long long _ZPDecodeUTF8(const unsigned char *in, unsigned length, unichar *out, unsigned room) {
    const unsigned char *end = in + length;
    unichar *start = out, *limit = out + room;
    while (in < end) {
        while (end - in >= long(blockBytes) && limit - out >= long(blockBytes)) {
            unsigned mask = widenBlock(in, out);
            unsigned plain = mask ? unsigned(std::countr_zero(mask)) : blockBytes;
            in += plain;
            out += plain;
            if (mask) break;
        }
        // As many characters of up to three bytes as may be read, and written, without a look at the ends.
        for (long safe = std::min((end - in) / 4, (limit - out) / 2); safe > 0; --safe) {
            std::uint32_t w = fourBytes(in);
            if ((w & 0xC0E0) == 0x80C0) {
                *out++ = static_cast<unichar>((w & 0x1F) << 6 | (w >> 8 & 0x3F));
                in += 2;
            } else if ((w & 0xC0C0F0) == 0x8080E0) {
                *out++ = static_cast<unichar>((w & 0x0F) << 12 | (w >> 2 & 0xFC0) | (w >> 16 & 0x3F));
                in += 3;
            } else if ((w & 0x80) == 0) {
                *out++ = static_cast<unichar>(w & 0x7F);
                ++in;
                // A lone blank between words is not worth a block.
                if ((w & 0x8000) == 0) break;
            } else if ((w & 0xC0C0C0F8) == 0x808080F0) {
                std::uint32_t c = (w & 0x07) << 18 | (w << 4 & 0x3F000) | (w >> 10 & 0xFC0) | (w >> 24 & 0x3F);
                if (c - 0x10000 > 0xFFFFF) break;
                *out++ = static_cast<unichar>(0xD7C0 + (c >> 10));
                *out++ = static_cast<unichar>(0xDC00 + (c & 0x3FF));
                in += 4;
            } else break;
        }
        // Other sequences, and what lies too near the ends.
        bool odd = in < end && (*in >= 0x80 || end - in < long(blockBytes) || limit - out < long(blockBytes));
        if (odd) {
            unichar units[2];
            unsigned n = ZPUTF8ToUnicode(&in, unsigned(end - in), units);
            if (!n) return -1;
            if (n > limit - out) return -2;
            for (unsigned i = 0; i < n; ++i) *out++ = units[i];
        }
    }
    return out - start;
}

#ifdef __SSE2__
// For each set of units below 0x80 among eight below 0x800: where the bytes of their two-byte forms go.
struct Packing {
    alignas(16) unsigned char from[256][16];
    constexpr Packing() : from{} {
        for (unsigned set = 0; set < 256; ++set) {
            unsigned to = 0;
            for (unsigned lane = 0; lane < 8; ++lane) {
                from[set][to++] = static_cast<unsigned char>(2 * lane);
                if (!(set >> lane & 1)) from[set][to++] = static_cast<unsigned char>(2 * lane + 1);
            }
            while (to < 16) from[set][to++] = 0x80;
        }
    }
};

// Asked of the processor itself: the compiler's own question costs every program that starts a table of its features.
static bool hasShuffles() {
    enum Answer : unsigned char { unknown, no, yes };
    constinit static Answer answer = unknown;
    Answer known = __atomic_load_n(&answer, __ATOMIC_RELAXED);
    if (known == unknown) [[unlikely]] {
        unsigned a, b, c = 0, d;
        known = __get_cpuid(1, &a, &b, &c, &d) && c & bit_SSSE3 ? yes : no;
        __atomic_store_n(&answer, known, __ATOMIC_RELAXED);
    }
    return known == yes;
}

// Encodes blocks of eight units below 0x800 while there are such and 16 bytes are going to be filled: the units that
// follow a block fill what is stored behind it. Stops at a block of ASCII. Answers the units, and moves `*out`.
__attribute__((target("ssse3"))) static unsigned encodeShortBlocks(const unichar *in, unsigned count,
                                                                   unsigned char **out, const unsigned char *limit) {
    static constexpr Packing packing;
    unsigned i = 0;
    unsigned char *to = *out;
    for (; count - i >= 16 && limit - to >= 16; i += 8) {
        __m128i u = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in + i)), zero = _mm_setzero_si128();
        __m128i wide = _mm_cmpeq_epi16(_mm_and_si128(u, _mm_set1_epi16(static_cast<short>(0xF800))), zero);
        if (_mm_movemask_epi8(wide) != 0xFFFF) break;
        __m128i plain = _mm_cmpeq_epi16(_mm_and_si128(u, _mm_set1_epi16(static_cast<short>(0xFF80))), zero);
        unsigned set = unsigned(_mm_movemask_epi8(_mm_packs_epi16(plain, zero)));
        if (set == 0xFF) break;
        __m128i lead = _mm_or_si128(_mm_srli_epi16(u, 6), _mm_set1_epi16(0xC0));
        __m128i trail = _mm_slli_epi16(_mm_or_si128(_mm_and_si128(u, _mm_set1_epi16(0x3F)), _mm_set1_epi16(0x80)), 8);
        __m128i bytes = _mm_or_si128(_mm_andnot_si128(plain, _mm_or_si128(lead, trail)), _mm_and_si128(plain, u));
        bytes = _mm_shuffle_epi8(bytes, _mm_load_si128(reinterpret_cast<const __m128i *>(packing.from[set])));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to), bytes);
        to += 16 - unsigned(std::popcount(set));
    }
    *out = to;
    return i;
}
#endif

unsigned _ZPEncodeUTF8Run(const unichar *units, unsigned count, unsigned char *out, unsigned room, unsigned *taken) {
    constexpr unsigned blockUnits = 8, blockRoom = 4 * blockUnits;
    const unichar *in = units, *last = units + (count ? count - 1 : 0);
    unsigned char *start = out;
    const unsigned char *limit = out + room;
#ifdef __SSE2__
    const bool shuffles = hasShuffles();
#endif
    while (last - in >= long(blockUnits) && limit - out >= long(blockRoom)) {
        std::uint64_t narrow;
        unsigned mask = narrowBlock(in, &narrow), plain = mask ? unsigned(std::countr_zero(mask)) : blockUnits;
        std::memcpy(out, &narrow, blockUnits);  // each of the units fills a byte or more
        if (!mask) {
            in += plain;
            out += plain;
            continue;
        }
#ifdef __SSE2__
        if (shuffles) {
            if (unsigned n = encodeShortBlocks(in, unsigned(last - in), &out, limit)) {
                in += n;
                continue;
            }
        }
#endif
        in += plain;
        out += plain;
        // Three bytes a unit fit for as many units as follow without a look at the room.
        const unichar *stop = in + std::min<long>(last - in, (limit - out - 4) / 3);
        while (in < stop) {
            unsigned c = *in;
            if (c < 0x800) {
                unsigned two = c >= 0x80;
                out[0] = static_cast<unsigned char>(two ? 0xC0 | c >> 6 : c);
                out[1] = static_cast<unsigned char>(0x80 | (c & 0x3F));
                out += 1 + two;
                ++in;
                // Blocks are better where two such characters meet.
                if (*in < 0x800) break;
            } else if ((c & 0xF800) != 0xD800) {
                // Four bytes fit: only three of them count.
                std::uint32_t bytes = 0x8080E0 | c >> 12 | (c << 2 & 0x3F00) | (c & 0x3F) << 16;
                if constexpr (std::endian::native == std::endian::big) bytes = __builtin_bswap32(bytes);
                std::memcpy(out, &bytes, 4);
                out += 3;
                ++in;
            } else {
                unsigned used;
                out += _ZPEncodeUTF8(in, 2, out, &used);
                in += used;
            }
        }
    }
    *taken = unsigned(in - units);
    return unsigned(out - start);
}

// A pair takes four bytes, two for each of its units; other surrogates take three.
std::uint64_t _ZPLengthInUTF8(const unichar *units, unsigned count) {
    std::uint64_t total = 0;
    unsigned i = 0;
#ifdef __SSE2__
    constexpr unsigned blockUnits = 8, mostBlocks = 8000;
    auto lanes = [](unsigned unit) { return _mm_set1_epi16(static_cast<short>(unit)); };
    const __m128i zero = _mm_setzero_si128();
    while (i + blockUnits < count) {
        __m128i saved = zero;
        unsigned from = i;
        for (unsigned block = 0; block < mostBlocks && i + blockUnits < count; ++block, i += blockUnits) {
            __m128i u = _mm_loadu_si128(reinterpret_cast<const __m128i *>(units + i));
            __m128i next = _mm_loadu_si128(reinterpret_cast<const __m128i *>(units + i + 1));
            __m128i high = _mm_cmpeq_epi16(_mm_and_si128(u, lanes(0xFC00)), lanes(0xD800));
            __m128i pair = _mm_and_si128(high, _mm_cmpeq_epi16(_mm_and_si128(next, lanes(0xFC00)), lanes(0xDC00)));
            saved = _mm_sub_epi16(saved, _mm_add_epi16(pair, pair));
            saved = _mm_sub_epi16(saved, _mm_cmpeq_epi16(_mm_and_si128(u, lanes(0xFF80)), zero));
            saved = _mm_sub_epi16(saved, _mm_cmpeq_epi16(_mm_and_si128(u, lanes(0xF800)), zero));
        }
        alignas(16) std::uint16_t sums[blockUnits];
        _mm_store_si128(reinterpret_cast<__m128i *>(sums), saved);
        total += 3ull * (i - from);
        for (unsigned sum : sums) total -= sum;
    }
#endif
    for (; i < count; ++i) {
        total += 1u + (units[i] >= 0x80) + (units[i] >= 0x800);
        if (i + 1 < count && (units[i] & 0xFC00) == 0xD800 && (units[i + 1] & 0xFC00) == 0xDC00) total -= 2;
    }
    return total;
}
