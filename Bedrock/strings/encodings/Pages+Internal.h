// SPDX-License-Identifier: MIT
// How the tables of a single-byte encoding are made, by the compiler, from the units of its upper bytes.
#pragma once

#include <Bedrock/strings/encodings/Encodings.h>

#include <array>

/// Both directions of an encoding. Pairs go in by rising precedence.
struct _ZPByteMap {
    struct Pair {
        unichar unit;
        unsigned char byte;
    };
    std::array<unichar, 256> units{};
    std::array<Pair, 520> pairs{};
    unsigned count = 0;
    bool asciiHalf = true;

    constexpr void add(unichar unit, unsigned byte) {
        for (unsigned i = 0; i < count; ++i)
            if (pairs[i].unit == unit) {
                pairs[i].byte = static_cast<unsigned char>(byte);
                return;
            }
        pairs[count++] = {unit, static_cast<unsigned char>(byte)};
    }
    /// Bytes from `first` on as the array says, with their inverse; other bytes are their own units.
    template <std::size_t N> constexpr _ZPByteMap(const unichar (&array)[N], unsigned first, unsigned sameBelow) {
        for (unsigned b = 0; b < 256; ++b) units[b] = static_cast<unichar>(b);
        for (unsigned i = 0; i < N; ++i)
            if ((units[first + i] = array[i]) != _ZPNoCharacter) add(array[i], first + i);
        for (unsigned b = first + N; b < 256; ++b) add(static_cast<unichar>(b), b);
        add(0x2029, 0x0A);
        for (unsigned u = 0; u < sameBelow; ++u) add(static_cast<unichar>(u), u);
    }
    /// Bytes that are their own units, and back below `sameBelow`.
    constexpr explicit _ZPByteMap(unsigned sameBelow) {
        for (unsigned b = 0; b < 256; ++b) units[b] = static_cast<unichar>(b);
        add(0x2029, 0x0A);
        for (unsigned u = 0; u < sameBelow; ++u) add(static_cast<unichar>(u), u);
    }
    constexpr unsigned pageCount() const {
        bool used[256] = {};
        unsigned n = 0;
        for (unsigned i = 0; i < count; ++i)
            if (!used[pairs[i].unit >> 8]) used[pairs[i].unit >> 8] = true, ++n;
        return n;
    }
};

/// The pairs of an encoding's inverse: its assigned bytes from `first` on, and the paragraph separator.
template <std::size_t N> consteval unsigned _ZPPairCount(const unichar (&array)[N], unsigned first) {
    unsigned n = 0x100 - first - unsigned(N) + 1;
    for (unichar u : array) n += u != _ZPNoCharacter;
    return n;
}

template <const _ZPByteMap &Map> struct _ZPBytePages {
    unsigned char pageOf[256] = {};
    unsigned char pages[Map.pageCount() + 1][256] = {};

    constexpr _ZPBytePages() {
        unsigned n = 0;
        for (unsigned i = 0; i < Map.count; ++i) {
            auto [unit, byte] = Map.pairs[i];
            if (!pageOf[unit >> 8]) pageOf[unit >> 8] = static_cast<unsigned char>(++n);
            pages[pageOf[unit >> 8]][unit & 0xFF] = byte;
        }
    }
    static const _ZPBytePages shared;
    static constexpr _ZPByteTable table() { return {Map.units.data(), shared.pageOf, shared.pages, Map.asciiHalf}; }
};
template <const _ZPByteMap &Map> constexpr _ZPBytePages<Map> _ZPBytePages<Map>::shared;
