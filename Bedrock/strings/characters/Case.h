// SPDX-License-Identifier: MIT
// The case tables, as the files of the cluster see them.
#pragma once

#include <Bedrock/platform/ZPTypes.h>

/// One direction of the simple case mappings: for each high byte of a unit a page with what is added to it, modulo
/// 65,536. Pages without mappings are one and the same.
struct ZPCaseMap {
    const unichar *pages[256];
    unichar operator[](unichar u) const { return unichar(u + pages[u >> 8][u & 0xFF]); }
};
struct ZPCaseTables {
    ZPCaseMap lower, upper, title;
};

/// What the library knows by itself: units below U+0100 (title case: below U+0080) and five more.
const ZPCaseTables &_ZPBuiltinCaseTables();
/// Null until the file of the mappings has been read.
extern const ZPCaseTables *_ZPReadCaseTables;
/// Reads the file; the built-in tables when that fails, which is logged once and tried again at the next call.
const ZPCaseTables *_ZPLoadCaseTables();

/// Maps the units of one text: the file is read when the first unit from outside the built-in tables comes.
class ZPCaseMapper {
    const ZPCaseTables *_tables;
    bool _asked;

  public:
    ZPCaseMapper() : _tables(__atomic_load_n(&_ZPReadCaseTables, __ATOMIC_ACQUIRE)), _asked(_tables) {
        if (!_tables) _tables = &_ZPBuiltinCaseTables();
    }
    ZP_INLINE const ZPCaseTables &tables(unichar u, unsigned known = 0x100) {
        if (u >= known && !_asked) [[unlikely]] {
            _tables = _ZPLoadCaseTables();
            _asked = true;
        }
        return *_tables;
    }
    bool hasRead() const { return _asked; }
    ZP_INLINE unichar lower(unichar u) { return tables(u).lower[u]; }
    ZP_INLINE unichar upper(unichar u) { return tables(u).upper[u]; }
    ZP_INLINE unichar title(unichar u) { return tables(u, 0x80).title[u]; }
    /// The unit as case-insensitive searches see it: the first unit of its lower case.
    ZP_INLINE unichar operator()(unichar u) { return lower(u); }
};
