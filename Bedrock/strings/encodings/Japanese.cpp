// SPDX-License-Identifier: MIT
// Japanese EUC, Shift JIS and ISO 2022-JP from bytes, and the characters of the first two to bytes.
//
// EUC is the form in which the tables are written: pairs of bytes from 0xA1 on for JIS X 0208, 0x8E and a byte for
// half-width katakana, and, the library's own, 0xA0 and a byte for a KESTREL character. The extension row that Shift
// JIS has under the lead 0x87 lies in row 0xFE.
#include <Bedrock/strings/cluster/Cluster.h>
#include <Bedrock/strings/encodings/Encodings.h>

#include <Bedrock/core/ZPLog.h>
#include <Bedrock/platform/host/Host.h>
#include <Bedrock/platform/kernel/MakeOnce.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <string>

namespace {

constexpr unsigned kanaLead = 0x8E, kestrelLead = 0xA0, firstPair = 0xA1;
constexpr unichar firstKana = 0xFF61, lastKana = 0xFF9F;

// ---- the tables' files --------------------------------------------------------------------------

// A file of pairs of 16-bit numbers, little-endian.
struct PairFile : ZPHostResource {
    explicit PairFile(const char *name) {
        std::string path = std::string("CharacterSets/") + name;
        if (!read((path + "-L.data").c_str())) read(path.c_str());
    }
    std::size_t count() const { return length / 4; }
    unsigned key(std::size_t i) const { return number(4 * i); }
    unsigned value(std::size_t i) const { return number(4 * i + 2); }
};

bool isPair(unsigned code) { return code >> 8 >= firstPair && (code & 0xFF) >= firstPair; }

std::unique_ptr<_ZPEUCDecoder> readTable(const PairFile &file, _ZPEUCDecoder *) {
    auto table = std::make_unique<_ZPEUCDecoder>();
    for (std::size_t i = 0; i < file.count(); ++i)
        if (unsigned code = file.key(i); isPair(code))
            table->units[(code >> 8 & 0x7F) << 7 | (code & 0x7F)] = static_cast<unichar>(file.value(i));
    for (unsigned lead = 0x81; lead < 0xF0; ++lead)
        for (unsigned trail = 0x40; trail < 0x100; ++trail) {
            unsigned char pair[2] = {static_cast<unsigned char>(lead), static_cast<unsigned char>(trail)}, euc[2];
            unsigned consumed, n = ZPShiftJISToEUC(pair, euc, &consumed);
            table->shiftJIS[lead - 0x81][trail - 0x40] =
                n == 2 && consumed == 2 ? table->of(euc[0], euc[1]) : _ZPNotDirect;
        }
    return table;
}

std::unique_ptr<_ZPEUCEncoder> readTable(const PairFile &file, _ZPEUCEncoder *) {
    auto table = std::make_unique<_ZPEUCEncoder>();
    unsigned pages = 0;
    for (std::size_t i = 0; i < file.count(); ++i)
        if (unsigned char &page = table->pageOf[file.key(i) >> 8]; !page && pages < 255)
            page = static_cast<unsigned char>(++pages);
    table->pages = new _ZPEUCEncoder::Page[pages + 1]{};
    table->plainASCII = true;
    for (std::size_t i = 0; i < file.count(); ++i) {
        unsigned unit = file.key(i), code = file.value(i), page = table->pageOf[unit >> 8];
        if (!isPair(code) || !page) continue;
        unsigned char euc[2] = {static_cast<unsigned char>(code >> 8), static_cast<unsigned char>(code)}, pair[2];
        unsigned consumed;
        table->pages[page].euc[unit & 0xFF] = static_cast<unichar>(code);
        if (ZPEUCToShiftJIS(euc, pair, &consumed) == 2)
            table->pages[page].shiftJIS[unit & 0xFF] = static_cast<unichar>(pair[0] << 8 | pair[1]);
        if (unit < 0x80) table->plainASCII = false;
    }
    return table;
}

// The table, once it could be read; two threads that read at the same time read the same.
template <class T> const T *shared(T *&table, std::atomic<bool> &complained, const char *name, ZPString *complaint) {
    return ZPMakeOnce(table, [&]() -> T * {
        PairFile file(name);
        if (file.count()) return readTable(file, table).release();
        if (!complained.exchange(true)) ZPLog(complaint);
        return nullptr;
    });
}

}  // namespace

const _ZPEUCDecoder *_ZPSharedEUCDecoder() {
    static _ZPEUCDecoder *table;
    static std::atomic<bool> complained;
    return shared(table, complained, "EUCToUnicode",
                  "ZPCharConversion: could not load EUCToUnicode conversion table.\n"_zp);
}

const _ZPEUCEncoder *_ZPSharedEUCEncoder() {
    static _ZPEUCEncoder *table;
    static std::atomic<bool> complained;
    return shared(table, complained, "UnicodeToEUC",
                  "ZPCharConversion: could not load UnicodeToEUC conversion table.\n"_zp);
}

// ---- one character, EUC -------------------------------------------------------------------------

namespace {

// By the second byte; 0xA1 to 0xDF are assigned.
unichar kanaOfByte(unsigned byte) {
    static constexpr auto units = [] {
        struct {
            unichar of[256];
        } t{};
        for (unsigned b = 0; b < 256; ++b)
            t.of[b] = b - 0xA1 <= lastKana - firstKana ? static_cast<unichar>(firstKana + b - 0xA1) : _ZPNoCharacter;
        return t;
    }();
    return units.of[byte];
}

// `decoder` is fetched when it is first needed; null then fails.
ZP_INLINE bool decodeEUC(const unsigned char *&in, const unsigned char *end, unichar *out,
                         const _ZPEUCDecoder *&decoder) {
    unsigned first = in[0];
    if (first < 0x80) {
        *out = static_cast<unichar>(first);
        ++in;
        return true;
    }
    unsigned second = end - in > 1 ? in[1] : 0;
    if (first >= firstPair && second >= firstPair) {
        if (!decoder && !(decoder = _ZPSharedEUCDecoder())) return false;
        *out = decoder->of(first, second);
    } else if (first == kanaLead && second >= firstPair) *out = kanaOfByte(second);
    else if (first == kestrelLead && second >= 0x80) *out = _ZPTableKESTREL.unitOf(static_cast<unsigned char>(second));
    else {
        *out = _ZPTableKESTREL.unitOf(static_cast<unsigned char>(first));
        ++in;
        return true;
    }
    in += 2;
    return true;
}

}  // namespace

unsigned ZPCorvidEUCToUnicode(const unsigned char **bytes, unsigned left, unichar *units) {
    const _ZPEUCDecoder *decoder = nullptr;
    return left && decodeEUC(*bytes, *bytes + left, units, decoder);
}

unsigned _ZPEncodeEUC(const _ZPEUCEncoder &encoder, unichar unit, unsigned char *bytes) {
    if (unsigned code = encoder.of(unit)) {
        bytes[0] = static_cast<unsigned char>(code >> 8);
        bytes[1] = static_cast<unsigned char>(code);
        return 2;
    }
    if (unit < 0x80) return bytes[0] = static_cast<unsigned char>(unit), 1;
    if (unit >= firstKana && unit <= lastKana) {
        bytes[0] = kanaLead;
        bytes[1] = static_cast<unsigned char>(unit + 0x40);
        return 2;
    }
    if (unit == 0x2029) return bytes[0] = '\n', 1;
    int kestrel = unit < 0xA0 ? -1 : _ZPTableKESTREL.byteOf(unit);
    if (kestrel < 0) return 0;
    bytes[0] = kestrelLead;
    bytes[1] = static_cast<unsigned char>(kestrel);
    return 2;
}

// ---- one character, Shift JIS -------------------------------------------------------------------

namespace {

struct Place {
    unsigned char euc, trail;
};
// Signs of EUC row 0xA2 that Shift JIS has in its extension row.
constexpr Place signs[] = {{0xDC, 0x97}, {0xDD, 0x96}, {0xE1, 0x91}, {0xE2, 0x90}, {0xE5, 0x95}, {0xE9, 0x92}};
constexpr unsigned signRow = 0xA2, extensionRow = 0xFE, extensionLead = 0x87;

}  // namespace

unsigned ZPEUCToShiftJIS(const unsigned char *in, unsigned char *out, unsigned *consumed) {
    unsigned first = in[0];
    *consumed = 1;
    if (first < 0x80) return out[0] = in[0], 1;
    unsigned second = in[1];
    if (first == kanaLead && second >= firstPair && second <= 0xFE) {
        *consumed = 2;
        return out[0] = in[1], 1;
    }
    if (first < firstPair || first > 0xFE || second < firstPair || second > 0xFE) return out[0] = '?', 1;
    *consumed = 2;
    if (first == signRow)
        for (Place p : signs)
            if (p.euc == second) {
                out[0] = extensionLead;
                out[1] = p.trail;
                return 2;
            }
    if (first == extensionRow && second >= 0xA2 && second <= 0xF9) {
        out[0] = extensionLead;
        out[1] = static_cast<unsigned char>(second < 0xD7 ? second - 0x61 : second - 0x60);
        return 2;
    }
    // Two rows share a lead: the odd ones take the trails below 0x9F, without 0x7F.
    unsigned pairOfRows = (first - 0xA1) >> 1;
    out[0] = static_cast<unsigned char>(pairOfRows + (pairOfRows < 0x1F ? 0x81 : 0xC1));
    out[1] = static_cast<unsigned char>(first & 1 ? second - (second < 0xE0 ? 0x61 : 0x60) : second - 2);
    return 2;
}

unsigned ZPShiftJISToEUC(const unsigned char *in, unsigned char *out, unsigned *consumed) {
    unsigned lead = in[0];
    *consumed = 1;
    if (lead < 0x80) return out[0] = in[0], 1;
    if (lead >= 0xA1 && lead <= 0xDF) {
        out[0] = kanaLead;
        out[1] = in[0];
        return 2;
    }
    unsigned trail = in[1];
    if (lead == 0x80 || lead == 0xA0 || lead > 0xFC || trail < 0x40 || trail == 0x7F || trail > 0xFC) return 0;
    if (lead == extensionLead) {
        for (Place p : signs)
            if (p.trail == trail) {
                *consumed = 2;
                out[0] = signRow;
                out[1] = p.euc;
                return 2;
            }
        if (trail < 0x41 || trail > 0x99 || (trail & 0x0F) > 9 || (trail >= 0x76 && trail <= 0x7F)) return 0;
        *consumed = 2;
        out[0] = extensionRow;
        out[1] = static_cast<unsigned char>(trail + (trail < 0x80 ? 0x61 : 0x60));
        return 2;
    }
    *consumed = 2;
    if (lead >= 0xF0) {
        out[0] = out[1] = '?';
        return 2;
    }
    unsigned first = 0xA1 + 2 * (lead - (lead < 0xA0 ? 0x81 : 0xC1));
    bool even = trail >= 0x9F;
    out[0] = static_cast<unsigned char>(first + even);
    out[1] = static_cast<unsigned char>(even ? trail + 2 : trail + (trail < 0x80 ? 0x61 : 0x60));
    return 2;
}

namespace {

ZP_INLINE bool decodeShiftJIS(const unsigned char *&in, const unsigned char *end, unichar *out,
                              const _ZPEUCDecoder *&decoder) {
    unsigned lead = in[0];
    if (lead < 0x80 || lead - 0xA1 <= lastKana - firstKana) {
        *out = static_cast<unichar>(lead < 0x80 ? lead : firstKana + lead - 0xA1);
        ++in;
        return true;
    }
    if (end - in > 1 && lead - 0x81 < 0xF0 - 0x81 && in[1] >= 0x40) {
        if (!decoder && !(decoder = _ZPSharedEUCDecoder())) return false;
        *out = decoder->shiftJIS[lead - 0x81][in[1] - 0x40];
        if (*out != _ZPNotDirect) [[likely]] {
            in += 2;
            return true;
        }
    }
    unsigned char euc[2];
    unsigned consumed = 1;
    const unsigned char *at = euc;
    unsigned n = end - in > 1 ? ZPShiftJISToEUC(in, euc, &consumed) : 0;
    in += consumed;
    return n && decodeEUC(at, euc + n, out, decoder);
}

}  // namespace

unsigned ZPShiftJISToUnicode(const unsigned char **bytes, unsigned left, unichar *units) {
    const _ZPEUCDecoder *decoder = nullptr;
    return left && decodeShiftJIS(*bytes, *bytes + left, units, decoder);
}

unsigned _ZPEncodeShiftJIS(const _ZPEUCEncoder &encoder, unichar unit, unsigned char *bytes) {
    unsigned char euc[2];
    unsigned consumed;
    return _ZPEncodeEUC(encoder, unit, euc) ? ZPEUCToShiftJIS(euc, bytes, &consumed) : 0;
}

template <bool shiftJIS> static unsigned encodePairs(const _ZPEUCEncoder &encoder, const unichar *units, unsigned count,
                                                     unsigned char *out, unsigned room, unsigned *taken) {
    const unichar *in = units, *end = units + count;
    unsigned char *start = out;
    const unsigned char *limit = out + room;
    for (; in < end && limit - out >= 2; ++in) {
        const _ZPEUCEncoder::Page &page = encoder.pages[encoder.pageOf[*in >> 8]];
        if (unsigned code = shiftJIS ? page.shiftJIS[*in & 0xFF] : page.euc[*in & 0xFF]) {
            out[0] = static_cast<unsigned char>(code >> 8);
            out[1] = static_cast<unsigned char>(code);
            out += 2;
        } else if (*in < 0x80) {
            *out++ = static_cast<unsigned char>(*in);
            if (end - in < 16 || in[1] >= 0x80 || in[2] >= 0x80 || !encoder.plainASCII) continue;
            unsigned run = _ZPNarrowASCII(in + 1, unsigned(std::min<long>(end - in - 1, limit - out)), out);
            out += run;
            in += run;
        } else break;
    }
    *taken = unsigned(in - units);
    return unsigned(out - start);
}

unsigned _ZPEncodePairs(const _ZPEUCEncoder &encoder, bool shiftJIS, const unichar *units, unsigned count,
                        unsigned char *out, unsigned room, unsigned *taken) {
    return shiftJIS ? encodePairs<true>(encoder, units, count, out, room, taken)
                    : encodePairs<false>(encoder, units, count, out, room, taken);
}

// ---- whole texts --------------------------------------------------------------------------------

template <auto decodeOne> static long long decodeText(const unsigned char *in, unsigned length, unichar *out) {
    const unsigned char *end = in + length;
    const _ZPEUCDecoder *decoder = nullptr;
    unichar *start = out;
    while (in < end)
        if (!decodeOne(in, end, out++, decoder)) return -1;
    return out - start;
}

long long _ZPDecodeEUC(const unsigned char *in, unsigned length, unichar *out) {
    return decodeText<decodeEUC>(in, length, out);
}
long long _ZPDecodeShiftJIS(const unsigned char *in, unsigned length, unichar *out) {
    return decodeText<decodeShiftJIS>(in, length, out);
}

// ASCII, half-width katakana, pairs: ESC and two bytes lead from each to each. What is no pair in its mode is read byte
// by byte, so that nothing is lost.
long long _ZPDecodeISO2022JP(const unsigned char *in, unsigned length, unichar *out) {
    const unsigned char *end = in + length;
    const _ZPEUCDecoder *decoder = nullptr;
    unichar *start = out;
    enum { ascii, kana, pairs } mode = ascii;
    while (in < end) {
        if (*in == 0x1B) {
            if (end - in < 3) break;
            unsigned tail = in[1] << 8 | in[2];
            in += 3;
            if (tail == ('(' << 8 | 'B') || tail == ('(' << 8 | 'H') || tail == ('(' << 8 | 'J')) mode = ascii;
            else if (tail == ('(' << 8 | 'I') || tail == (')' << 8 | 'I')) mode = kana;
            else if (tail == ('$' << 8 | '@') || tail == ('$' << 8 | 'B')) mode = pairs;
            else in -= 2;
            continue;
        }
        if (mode == ascii) {
            *out++ = *in++;
            continue;
        }
        if (mode == pairs && end - in < 2) break;
        unsigned char euc[2];
        euc[0] = static_cast<unsigned char>(mode == kana ? kanaLead : *in++ | 0x80);
        euc[1] = static_cast<unsigned char>(*in++ | 0x80);
        for (const unsigned char *at = euc; at < euc + 2;)
            if (!decodeEUC(at, euc + 2, out++, decoder)) return -1;
    }
    return out - start;
}
