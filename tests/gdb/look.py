# SPDX-License-Identifier: MIT
# Run by gdb in the frame of main: what the variables of shown.cpp look like, and the layouts against the debug information.
import random
import re
import struct
import sys
import time

import gdb

failures = []


def shown(expression, options=""):
    return gdb.execute("output %s %s" % (options, expression), to_string=True)


def expect(expression, pattern):
    began = time.monotonic()
    try:
        text = shown(expression)
    except gdb.error as problem:
        text = "error: %s" % problem
    if not re.fullmatch(pattern, text, re.S):
        failures.append("%s: %s\n    shown: %s" % (expression, pattern, text[:600]))
    if len(text) > 20000:
        failures.append("%s: %d characters" % (expression, len(text)))
    if time.monotonic() - began > 5:
        failures.append("%s: took %.1f s" % (expression, time.monotonic() - began))


def info(cls, form, length, count):
    return r" \(%s 0x[0-9a-f]+, %s, %s, %s\)" % (cls, form, length, count)


one, uncounted = "retain count 1", "uncounted"
expect("nothing", "null")
expect("literal", r'"a \\"literal\\"\\n"' + info("ZPConstantString", "8-bit literal", "12 characters", uncounted))
expect("wideLiteral", '"žluva 漢 😀"' + info("_ZPConstantUnicodeString", "16-bit literal", "10 characters", uncounted))
expect("shortText", r'"number 7"' + info("ZPInlineCString", "8-bit inline", "8 characters", r"retain count \d+"))
expect("formatted", '"7"' + info("ZPCStringWithGap", "8-bit gap buffer", "1 character", one))
kestrel = shown("kestrel").split(" (")[0]
expect("kestrelBytes", re.escape(kestrel) + info("ZPCString", "8-bit", "32 characters", one))
expect("kestrel", '"€Ł.*Ÿ"' + info("ZPUnicodeString", "16-bit", "32 characters", one))
expect("bytes", r'"y{1000}"\.\.\.' + info("ZPCString", "8-bit", "3000 characters", r"retain count \d+"))
expect("part", r'"y{60}"' + info("ZPCSubstring", "8-bit substring of 0x[0-9a-f]+", "60 characters", one))
expect("wide", r'"ぁ\\uD800ぃ.*"' + info("ZPUnicodeString", "16-bit", "40 characters", r"retain count \d+"))
expect("widePart", r'"ぃ.{29}"' + info("ZPUnicodeSubstring", "16-bit substring of 0x[0-9a-f]+", "30 characters", one))
expect("path", r'"C:\\\\data\\\\names"' + info("ZPPathStore2", "16-bit path store", "13 characters", one))
expect("gap", '"onewothree"' + info("ZPConcreteMutableString", r"mutable, 8-bit gap buffer, gap of \d+ at 3", "10 characters", one))
expect("wideGap", '"漢字漢"' + info("ZPConcreteMutableString", r"mutable, 16-bit gap buffer, gap of \d+ at 2", "3 characters", one))
expect("cheap", '"lent"' + info("ZPCheapMutableString", "8-bit over a caller's buffer", "4 characters", one))
expect("*literal", r'"a \\"literal\\"\\n" \(.*')

expect("list", r'ZPConcreteArray 0x[0-9a-f]+, 3 elements, retain count 2 = \{"one", "number 7", \{"deep"\}\}')
expect("owned", r'ZPConcreteArray 0x[0-9a-f]+, 3 elements, retain count 2 = \{"one", "number 7", \{"deep"\}\}')
expect("growing", r'ZPConcreteMutableArray 0x[0-9a-f]+, 1000 elements, retain count 1 = \{("number 7", ){199,200}.*\.\.\.( \(800 more\))?\}')
expect("circle", r'ZPConcreteMutableArray 0x[0-9a-f]+, 2 elements, retain count 3 = \{\{\{.*with 2 elements.*\}')
expect("pairs", r'ZPConcreteDictionary 0x[0-9a-f]+, 1 entry, retain count \d = \{\["?key"?\] = "value"\}')
expect("many", r'ZPConcreteMutableDictionary 0x[0-9a-f]+, 300 entries, retain count 1 = \{(\["k\d+"\] = "v", ){50,200}.*\}')
expect("members", r'ZPConcreteSet 0x[0-9a-f]+, 1 member, retain count 1 = \{"member"\}')
expect("bag", r'ZPCountedSet 0x[0-9a-f]+, 1 member, retain count 1 = \{\["twice"\] = 2 times\}')
expect("data", r"<0102ff21 3f> \(ZPConcreteData 0x[0-9a-f]+, inline, 5 bytes, retain count 1\)")
expect("largeData", r"<(07070707 ){49}07070707\.\.\.> \(ZPConcreteMutableData 0x[0-9a-f]+, .*, 5000 bytes, retain count 1\)")
expect("date", r"2001-01-02 00:00:00 \+0000 \(ZPConcreteDate 0x[0-9a-f]+, retain count 1\)")
expect("calendar", r"1969-07-20 15:17:40 -0500 \(ZPCalendarDate 0x[0-9a-f]+, retain count 1\)")
expect("error", r'ZPException 0x[0-9a-f]+, retain count 1 = \{name = "Name", reason = "reason", userInfo = \{"key" = "value"\}\}')
expect("account", r"Account 0x[0-9a-f]+, retain count 3")
expect("any", r"Account 0x[0-9a-f]+, retain count 3")
expect("(objc_object *)account", r"Account 0x[0-9a-f]+, retain count 3")
expect("*account", r'Account 0x[0-9a-f]+, retain count 3 = \{balance = 12\.5, owner = "Ann" \(.*\)\}')
# By what the object is, not by the variable; nothing is read through a type that the object is not of.
expect("*savingsAsAccount", r"Savings 0x[0-9a-f]+, retain count 1 = \{balance = 7, owner = null, rate = 3\}")
expect("*savingsAsObject", r"Savings 0x[0-9a-f]+, retain count 1 = \{balance = 7, owner = null, rate = 3\}")
expect("*(objc_object *)savingsAsObject", r"Savings 0x[0-9a-f]+, retain count 1 = \{balance = 7, owner = null, rate = 3\}")
expect("*any._object", r'Account 0x[0-9a-f]+, retain count 3 = \{balance = 12\.5, owner = "Ann" \(.*\)\}')
expect("*till", r"shop::Till 0x[0-9a-f]+, retain count 1 = \{coins = 20\}")
expect("*shelf", r"Shelf 0x[0-9a-f]+, retain count 1 = \{coins = 0, boards = 4\}")
expect("*drawer", r"Drawer 0x[0-9a-f]+, retain count 1 = \{knobs = 2\}")
expect("*disguised", r"Stand 0x[0-9a-f]+, retain count 1 = \{target = Account 0x[0-9a-f]+, retain count 3\}")
expect("*lock", r"ZPLock 0x[0-9a-f]+, retain count 1.*")
expect("cls", r"class Account \(0x[0-9a-f]+, uncounted\)")
expect("selector", r"@selector\(objectAtIndex:\)")
expect("counted", r"Fixed 0x[0-9a-f]+, retain count 2")
expect("countedOften", r"Fixed 0x[0-9a-f]+, retain count 7")

expect("stray", r"0x1234560 <no object here: unreadable memory at 0x1234560>")
expect("nonsense", r"0x[0-9a-f]+ <no object here: isa is no class>")
expect("brokenString", r"ZPUnicodeString 0x[0-9a-f]+, retain count 1 <broken: unreadable memory at 0x10>")
expect("brokenArray", r"ZPConcreteMutableArray 0x[0-9a-f]+, 134217727 elements, retain count 1 = \{<unreadable memory at 0x10>\}")
expect("brokenGap", r"ZPCStringWithGap 0x[0-9a-f]+, retain count 1 <broken: .*>")
expect("brokenDictionary", r"ZPConcreteMutableDictionary 0x[0-9a-f]+, 134217727 entries, retain count 1 = \{.*\}|ZPConcreteMutableDictionary .* <broken: .*>")

# A session in ASCII still shows every string.
gdb.execute("set host-charset ASCII")
expect("wideLiteral", r'"\\u017Eluva \\u6F22 \\U0001F600" \(.*')
gdb.execute("set host-charset auto")
if "balance = 12.5" not in shown("*account", "/r") or "retain count" in shown("*account", "/r"):
    failures.append("print/r does not show the fields as they are: " + shown("*account", "/r"))

# Memory that was overwritten: something is shown, soon, and without a complaint of Python's, which run.sh looks for.
# A core file cannot be written to.
inferior = gdb.selected_inferior()
if "core dump" not in gdb.execute("info target", to_string=True):
    values = (0, 1, 7, 16, 0xFFFFFFFF, 0x7FFFFFFF, 1 << 63, (1 << 64) - 1)
    dice = random.Random(1)
    for name in ("literal", "shortText", "part", "wide", "path", "gap", "wideGap", "cheap", "list", "growing", "pairs", "many", "members", "bag", "data",
                 "largeData", "date", "calendar", "error", "account", "countedOften"):
        address = int(gdb.parse_and_eval(name))
        tables = [address]
        if name in ("pairs", "many", "members", "bag", "list", "gap"):
            tables.append(struct.unpack("<Q", inferior.read_memory(address + (16 if name in ("list", "gap") else 8), 8))[0])
        for base in tables:
            for _ in range(20):
                at = base + 4 * dice.randrange(10)
                old = bytes(inferior.read_memory(at, 8))
                inferior.write_memory(at, struct.pack("<Q", dice.choice(values + (address, base, int(gdb.parse_and_eval("upper").address)))))
                expect(name, ".+")
                inferior.write_memory(at, old)
        if shown(name) == "":
            failures.append(name + " is not shown any more")

# The layouts, against the debug information where there is some.
script = sys.modules["__main__"]
if script.type_named("ZPConcreteArray"):
    for structure, fields in script.FIELDS.items():
        t = script.type_named(structure)
        if t is None:
            failures.append("%s: no such type" % structure)
            continue
        for name, (offset, form) in fields.items():
            where = script.place_in_type(t, name)
            if where != offset:
                failures.append("%s::%s lies at %s, not at %d" % (structure, name, where, offset))
    for structure, size in script.BUCKET_SIZES.items():
        if script.type_named(structure + "Bucket").sizeof != size:
            failures.append("%sBucket has another size" % structure)
    for name, value in (("objc_isMetaclass", script.IS_METACLASS), ("objc_isRealized", script.IS_REALIZED),
                        ("objc_countsInHeader", script.COUNTS_IN_HEADER), ("objc_defaultCounting", script.DEFAULT_COUNTING)):
        if int(gdb.parse_and_eval(name)) != value:
            failures.append("%s is not %d" % (name, value))
    gdb.write("looked: layouts compared\n")

for failure in failures:
    gdb.write(failure + "\n")
gdb.write("looked: %s\n" % ("everything as expected" if not failures else "%d differences" % len(failures)))
