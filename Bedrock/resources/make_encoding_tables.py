#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes data/CharacterSets/EUCToUnicode-L.data, UnicodeToEUC-L.data and NonHangulDecomp.data.

    make_encoding_tables.py [--check]

The Japanese tables are made from the character maps of Debian's package locales, the decompositions from
UnicodeData.txt of unicode-data. With --check nothing is written: the exit code says whether the committed files are
what would be written.
"""
import gzip
import os
import pathlib
import re
import struct
import sys

PACKAGES = "locales 2.36-9+deb12u14, unicode-data 15.0.0-1"
OUTPUT = pathlib.Path(__file__).resolve().parent / "data" / "CharacterSets"
MAPS = pathlib.Path("/usr/share/i18n/charmaps")
UNICODE = pathlib.Path("/usr/share/unicode/UnicodeData.txt")


def charmap(name):
    """The two-byte codes of a character map with their characters, both ways only."""
    line = re.compile(r"<U([0-9A-F]{4})>\s+/x([0-9a-f]{2})/x([0-9a-f]{2})\s")
    with gzip.open(MAPS / (name + ".gz"), "rt", encoding="utf-8", errors="replace") as file:
        for found in filter(None, map(line.match, file)):
            yield int(found[2] + found[3], 16), int(found[1], 16)


# What Shift JIS has under the lead 0x87 lies in EUC row 0xFE, as far as the converters between the two carry it both
# ways: trails whose low four bits are no digit have no place there, and six signs stand in row 0xA2.
SIGNS = {0x90, 0x91, 0x92, 0x95, 0x96, 0x97}


def extension_row():
    for code, unit in charmap("WINDOWS-31J"):
        lead, trail = code >> 8, code & 0xFF
        inside = 0x41 <= trail <= 0x75 or 0x80 <= trail <= 0x99
        if lead == 0x87 and inside and trail & 0x0F <= 9 and trail not in SIGNS:
            yield 0xFE00 | trail + (0x61 if trail < 0x80 else 0x60), unit


def japanese():
    to_unicode = {code: unit for code, unit in charmap("EUC-JP") if code >> 8 >= 0xA1 and code & 0xFF >= 0xA1}
    for code, unit in extension_row():
        assert code not in to_unicode and unit not in to_unicode.values()
        to_unicode[code] = unit
    to_euc = {unit: code for code, unit in to_unicode.items()}
    assert len(to_euc) == len(to_unicode) and min(to_euc) >= 0x80
    return to_unicode, to_euc


def pairs(table):
    return b"".join(struct.pack("<HH", key, table[key]) for key in sorted(table))


def decompositions():
    """The canonical decompositions, of one step. Where two would not do, the step is taken further."""
    step = {}
    for line in UNICODE.open(encoding="ascii"):
        field = line.split(";")
        if field[5] and not field[5].startswith("<"):
            step[int(field[0], 16)] = [int(code, 16) for code in field[5].split()]

    def depth(code):
        return 1 + max(map(depth, step[code])) if code in step else 0

    def shorten(codes):
        return [part for code in codes for part in (shorten(step[code]) if depth(code) > 1 else [code])]

    return {code: shorten(codes) for code, codes in step.items() if code <= 0xFFFF}


def words(codes):
    return struct.unpack("<%dH" % (len(b := "".join(map(chr, codes)).encode("utf-16-le")) // 2), b)


def decomposition_file(table):
    start, lists, entries = 4 + 2 * len(table), b"", b""
    for unit in sorted(table):
        units = words(table[unit])
        assert len(units) <= 4 and 0 not in units
        entries += struct.pack("<HH", unit, start + len(lists) // 2)
        lists += struct.pack("<%dH" % (len(units) + 1), *units, 0)
    return struct.pack("<HHHH", 0, 0, len(table), 0) + entries + lists


def main():
    for needed, package in ((MAPS / "EUC-JP.gz", "locales"), (MAPS / "WINDOWS-31J.gz", "locales"),
                            (UNICODE, "unicode-data")):
        if not needed.is_file():
            sys.exit(f"make_encoding_tables.py: needs {needed} (package {package})")
    to_unicode, to_euc = japanese()
    files = {
        "EUCToUnicode-L.data": pairs(to_unicode),
        "UnicodeToEUC-L.data": pairs(to_euc),
        "NonHangulDecomp.data": decomposition_file(decompositions()),
    }
    stale = []
    for name, content in files.items():
        path = OUTPUT / name
        if "--check" not in sys.argv:
            path.parent.mkdir(parents=True, exist_ok=True)
            new = path.with_name(f".{name}.{os.getpid()}")
            new.write_bytes(content)
            new.replace(path)
        elif not path.exists() or path.read_bytes() != content:
            stale.append(name)
    for name in stale:
        print(f"{name} is not what {PACKAGES} give", file=sys.stderr)
    return 1 if stale else 0


if __name__ == "__main__":
    sys.exit(main())
