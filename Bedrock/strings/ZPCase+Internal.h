// The case tables, as the files of the cluster see them.
#pragma once

#include <Bedrock/platform/ZPTypes.h>

/// One direction of the simple case mappings: sorted pairs, and for each high byte of a unit where its pairs
/// begin. Made by resources/make_unicode_tables.py.
struct ZPCaseTable {
    struct Pair { unichar from, to; };
    const Pair *pairs;
    const unsigned short *starts;  ///< 257 of them

    unichar operator[](unichar u) const {
        unsigned low = starts[u >> 8], high = starts[(u >> 8) + 1];
        while (low < high) {
            unsigned middle = (low + high) / 2;
            if (pairs[middle].from < u) low = middle + 1;
            else high = middle;
        }
        return low < starts[(u >> 8) + 1] && pairs[low].from == u ? pairs[low].to : u;
    }
};

extern const ZPCaseTable _ZPLowerTable, _ZPUpperTable, _ZPTitleTable;

/// The unit as case-insensitive searches see it: the first unit of its lower case.
inline unichar _ZPFoldUnit(unichar u) {
    if (u < 0x80) return u >= 'A' && u <= 'Z' ? unichar(u + 0x20) : u;
    return _ZPLowerTable[u];
}
