#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes the standard character sets and the case mappings of data/CharacterSets from UnicodeData.txt of Debian's
package unicode-data.

    make_character_sets.py [--check] [UnicodeData.txt]

With --check nothing is written: the exit code says whether the committed files are what would be written.
"""
import os
import pathlib
import struct
import sys

PACKAGE = "unicode-data 15.0.0-1"
DATA = pathlib.Path(__file__).resolve().parent / "data"
FOLDER = DATA / "CharacterSets"
UNITS = 0x10000

# What belongs to a set below U+0100, and its general categories from there. The small sets are kept as lists.
SETS = [
    ("control", "00-1F 7F-9F", "Cc Cf", "dict"),
    ("whitespace", "09 20 A0", "Zs", "dict"),
    ("whitespaceAndNewline", "09 0A 20 A0", "Zs Zl Zp", "dict"),
    ("decimalDigit", "30-39", "Nd", "dict"),
    ("letter", "41-5A 5E 60-7A A8 AA AF B4-B5 B8 BA C0-D6 D8-F6 F8-FF", "Lu Ll Lt Lm Lo Mn Mc Me Sk", "bitmap"),
    ("lowercaseLetter", "61-7A AA B5 BA DF-F6 F8-FF", "Ll", "bitmap"),
    ("uppercaseLetter", "41-5A C0-D6 D8-DE", "Lu Lt", "bitmap"),
    ("alphanumeric", "30-39 41-5A 5E 60-7A A8 AA AF B2-B5 B8-BA BC-BE C0-D6 D8-F6 F8-FF",
     "Lu Ll Lt Lm Lo Mn Mc Me Sk Nd Nl No", "bitmap"),
    ("nonBase", "", "Mn Mc Me", "bitmap"),
    ("decomposable", "C0-C5 C7-CF D1-D6 D9-DD E0-E5 E7-EF F1-F6 F9-FD FF", "decomposable", "bitmap"),
    ("illegal", "", "Cn", "bitmap"),
    ("punctuation", "21-22 25 27-29 2C-2F 3A-3B 3F 5B-5D 7B 7D A1 AB AD B7 BB BF", "Pc Pd Ps Pe Pi Pf Po", "bitmap"),
]


def read(path):
    """The category and the canonical decomposability of each unit, and the simple case mappings."""
    category = ["Cn"] * UNITS
    decomposable = [False] * UNITS
    lower, upper, title = {}, {}, {}
    first = None
    for line in open(path, encoding="ascii"):
        field = line.rstrip("\n").split(";")
        code = int(field[0], 16)
        if code >= UNITS:
            break
        start = first if first is not None else code
        first = code if field[1].endswith(", First>") else None
        hangul = "Hangul Syllable" in field[1]
        for c in range(start, code + 1):
            category[c] = field[2]
            decomposable[c] = hangul or bool(field[5]) and not field[5].startswith("<")
        # Below U+0100 the library knows upper and lower case itself, and below U+0080 title case.
        for mapping, text, least in ((lower, field[13], 0x100), (upper, field[12], 0x100),
                                     (title, field[14] or field[12], 0x80)):
            if text and code >= least and int(text, 16) < UNITS and int(text, 16) != code:
                mapping[code] = int(text, 16)
    return category, decomposable, lower, upper, title


def members(low, categories, category, decomposable):
    wanted = set(categories.split())
    found = {u for u in range(0x100, UNITS - 1)
             if (decomposable[u] if "decomposable" in wanted else category[u] in wanted)}
    for piece in low.split():
        first, _, last = piece.partition("-")
        found.update(range(int(first, 16), int(last or first, 16) + 1))
    if "Cn" in wanted:
        found.add(0xFFFF)
    return found


def bitmap(units):
    bits = bytearray(UNITS // 8)
    for u in units:
        bits[u >> 3] |= 1 << (u & 7)
    return bytes(bits)


def runs(units):
    singles, ranges = [], []
    for u in sorted(units):
        if ranges and ranges[-1][1] == u - 1:
            ranges[-1][1] = u
        else:
            ranges.append([u, u])
    singles = [first for first, last in ranges if first == last]
    return singles, [bound for first, last in ranges if first != last for bound in (first, last)]


def record(units):
    singles, ranges = runs(units)
    return (f"{{\n\tnsingles = {len(singles)};\n\tnranges = {len(ranges) // 2};\n"
            f"\tsingmin = {singles[0] if singles else 0xFFFF};\n\tsingmax = {singles[-1] if singles else 0};\n"
            f"\tsingles = ( {', '.join(map(str, singles))} );\n\tranges = ( {', '.join(map(str, ranges))} );\n}}\n")


def auxiliary(sets):
    """The lists in one file, by name; the shortest as plain characters."""
    entries = ""
    for name, units in sets.items():
        few = len(units) <= 64
        text = f"{{ characters = ( {', '.join(map(str, sorted(units)))} ); }}" if few else record(units).rstrip()
        entries += f"{name} = {text};\n"
    return f"{{\n{entries}}}\n"


def table(mapping):
    return b"".join(struct.pack("<HH", *pair) for pair in sorted(mapping.items()))


def files(source):
    category, decomposable, lower, upper, title = read(source)
    made, lists = {}, {}
    for name, low, categories, form in SETS:
        units = members(low, categories, category, decomposable)
        name += "CharacterSet"
        if form == "dict":
            lists[name] = units
            made[name + ".dict"] = record(units).encode()
        else:
            made[name + ".bitmap"] = bitmap(units)
    made["SystemCharacterSetAux.dict"] = auxiliary(lists).encode()
    head = struct.pack("<4H", 1, len(lower), len(upper), len(title))
    made["CaseMapping-L.data"] = head + table(lower) + table(upper) + table(title)
    for name, mapping in (("Lowercase", lower), ("Uppercase", upper), ("Titlecase", title)):
        made[f"hasNonSelf{name}Mapping.bitmap"] = bitmap(mapping)
    return made


def main(arguments):
    check = "--check" in arguments
    paths = [a for a in arguments if a != "--check"]
    source = pathlib.Path(paths[0] if paths else "/usr/share/unicode/UnicodeData.txt")
    if not source.is_file():
        sys.exit(f"make_character_sets.py: needs {source}" + ("" if paths else " (package unicode-data)"))
    made = files(source)
    if check:
        wrong = [name for name, text in made.items()
                 if not (FOLDER / name).is_file() or (FOLDER / name).read_bytes() != text]
        if PACKAGE not in (DATA / "SOURCES").read_text():
            wrong.append("SOURCES")
        sys.exit(f"these differ from what would be made: {' '.join(wrong)}" if wrong else 0)
    FOLDER.mkdir(parents=True, exist_ok=True)
    for name, text in made.items():
        new = FOLDER / f".{name}.{os.getpid()}"
        new.write_bytes(text)
        new.replace(FOLDER / name)


main(sys.argv[1:])
