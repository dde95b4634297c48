#!/usr/bin/env python3
"""Writes strings/ZPUnicodeTables.cpp: the simple case mappings and the standard character sets of the basic
plane, from UnicodeData.txt of Debian's package unicode-data.

    make_unicode_tables.py [--check] [UnicodeData.txt]

With --check nothing is written: the exit code says whether the committed file is what would be written.
"""
import pathlib
import sys

PACKAGE = "unicode-data 15.0.0-1"
OUTPUT = pathlib.Path(__file__).resolve().parent.parent / "strings" / "ZPUnicodeTables.cpp"

# In the order of the set numbers: what belongs to a set below U+0100, and its general categories from there.
SETS = [
    ("control", "00-1F 7F-9F", "Cc Cf"),
    ("whitespace", "09 20 A0", "Zs"),
    ("whitespaceAndNewline", "09 0A 20 A0", "Zs Zl Zp"),
    ("decimalDigit", "30-39", "Nd"),
    ("letter", "41-5A 5E 60-7A A8 AA AF B4-B5 B8 BA C0-D6 D8-F6 F8-FF", "Lu Ll Lt Lm Lo Mn Mc Me Sk"),
    ("lowercaseLetter", "61-7A AA B5 BA DF-F6 F8-FF", "Ll"),
    ("uppercaseLetter", "41-5A C0-D6 D8-DE", "Lu Lt"),
    ("alphanumeric", "30-39 41-5A 5E 60-7A A8 AA AF B2-B5 B8-BA BC-BE C0-D6 D8-F6 F8-FF",
     "Lu Ll Lt Lm Lo Mn Mc Me Sk Nd Nl No"),
    ("nonBase", "", "Mn Mc Me"),
    ("decomposable", "C0-C5 C7-CF D1-D6 D9-DD E0-E5 E7-EF F1-F6 F9-FD FF", "decomposable"),
    ("illegal", "", "Cn"),
    ("punctuation", "21-22 25 27-29 2C-2F 3A-3B 3F 5B-5D 7B 7D A1 AB AD B7 BB BF", "Pc Pd Ps Pe Pi Pf Po"),
]


def read(path):
    category = ["Cn"] * 0x10000
    decomposable = [False] * 0x10000
    upper, lower, title = {}, {}, {}
    first = None
    for line in open(path, encoding="ascii"):
        field = line.rstrip("\n").split(";")
        code = int(field[0], 16)
        if code > 0xFFFF:
            break
        start = first if first is not None else code
        first = code if field[1].endswith(", First>") else None
        hangul = "Hangul Syllable" in field[1]
        for c in range(start, code + 1):
            category[c] = field[2]
            decomposable[c] = hangul or bool(field[5]) and not field[5].startswith("<")
        for mapping, text in ((upper, field[12]), (lower, field[13]), (title, field[14] or field[12])):
            if text and code >= 0x80 and int(text, 16) <= 0xFFFF and int(text, 16) != code:
                mapping[code] = int(text, 16)
    return category, decomposable, lower, upper, title


def members(low, categories, category, decomposable):
    wanted = set(categories.split())
    bits = [decomposable[u] if "decomposable" in wanted else category[u] in wanted for u in range(0x10000)]
    bits[:0x100] = [False] * 0x100
    for piece in low.split():
        first, _, last = piece.partition("-")
        for u in range(int(first, 16), int(last or first, 16) + 1):
            bits[u] = True
    bits[0xFFFF] = "Cn" in wanted
    return bits


def row(bits):
    return tuple(sum(bits[i + b] << b for b in range(8)) for i in range(0, 256, 8))


def numbers(values, width=118):
    lines, line = [], "   "
    for v in values:
        text = f"{v},"
        if len(line) + len(text) > width:
            lines.append(line)
            line = "   "
        line += text
    return "\n".join(lines + [line])


def case_table(name, mapping):
    pairs = sorted(mapping.items())
    starts = [sum(p < high << 8 for p, _ in pairs) for high in range(257)]
    body = numbers(f"{{{a},{b}}}" for a, b in pairs)
    return (f"static constexpr ZPCaseTable::Pair {name}Pairs[] = {{\n{body}\n}};\n"
            f"static constexpr unsigned short {name}Starts[257] = {{\n{numbers(starts)}\n}};\n"
            f"const ZPCaseTable _ZP{name}Table = {{{name}Pairs, {name}Starts}};\n")


def main(arguments):
    check = "--check" in arguments
    paths = [a for a in arguments if a != "--check"]
    category, decomposable, lower, upper, title = read(paths[0] if paths else "/usr/share/unicode/UnicodeData.txt")
    rows, indexes = {}, []
    for _, low, categories in SETS:
        bits = members(low, categories, category, decomposable)
        indexes.append([rows.setdefault(row(bits[h << 8:(h + 1) << 8]), len(rows)) for h in range(256)])
    flat = "".join(f"    {{{','.join(map(str, r))}}},\n" for r in rows)
    sets = "".join(f"    // {name[0]}\n    {{\n{numbers(index)}\n    }},\n" for name, index in zip(SETS, indexes))
    text = (f"// Made by resources/make_unicode_tables.py from {PACKAGE}; do not edit.\n"
            "#include <Bedrock/strings/ZPCase+Internal.h>\n"
            "#include <Bedrock/strings/ZPCharacterSet+Internal.h>\n\n"
            + "\n".join(case_table(n, m) for n, m in (("Lower", lower), ("Upper", upper), ("Title", title)))
            + f"\nconst unsigned char _ZPSetRows[][32] = {{\n{flat}}};\n"
            f"const unsigned short _ZPSetIndexes[{len(SETS)}][256] = {{\n{sets}}};\n")
    if check:
        sys.exit(0 if OUTPUT.read_text() == text else "the committed tables differ from what would be made")
    OUTPUT.write_text(text)


main(sys.argv[1:])
