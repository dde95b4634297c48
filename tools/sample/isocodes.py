#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes a property list of countries, languages, scripts and currencies, with their names in other
languages, from Debian's iso-codes package.

usage: isocodes.py OUT.plist [utf-16]

The text is UTF-8 unless utf-16 is asked for, which writes a byte-order mark too.
"""
import gettext
import json
import sys

JSON = "/usr/share/iso-codes/json/iso_%s.json"
LOCALES = "/usr/share/locale"
LANGUAGES = ["ar", "de", "el", "fr", "he", "hi", "ja", "ka", "ko", "pl", "ru", "ta", "th", "tr", "vi", "zh_CN"]


def quoted(text):
    text = text.replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n")
    return '"%s"' % text


def table(standard, key):
    with open(JSON % standard, encoding="utf-8") as file:
        entries = json.load(file)[standard]
    catalogs = {}
    for language in LANGUAGES:
        try:
            catalogs[language] = gettext.translation("iso_" + standard, LOCALES, [language])
        except FileNotFoundError:
            continue
    lines = []
    for entry in entries:
        fields = ["%s = %s;" % (k, quoted(v)) for k, v in sorted(entry.items()) if isinstance(v, str)]
        names = []
        for language, catalog in sorted(catalogs.items()):
            translated = catalog.gettext(entry["name"])
            if translated != entry["name"]:
                names.append("%s = %s;" % (quoted(language), quoted(translated)))
        fields.append("names = {%s};" % " ".join(names))
        lines.append("        %s = {%s};" % (quoted(entry[key]), " ".join(fields)))
    return "{\n%s\n    }" % "\n".join(lines)


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    parts = [
        ("countries", table("3166-1", "alpha_2")),
        ("currencies", table("4217", "alpha_3")),
        ("languages", table("639-3", "alpha_3")),
        ("scripts", table("15924", "alpha_4")),
    ]
    text = "// Made from the iso-codes package.\n{\n%s\n}\n" % "\n".join("    %s = %s;" % part for part in parts)
    with open(sys.argv[1], "w", encoding=sys.argv[2] if len(sys.argv) == 3 else "utf-8", newline="\n") as file:
        file.write(text)


main()
