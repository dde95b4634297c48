# SPDX-License-Identifier: MIT
# Pretty printers of Bedrock's objects for gdb; docs/debugging.md says what they show.
#
# Everything is read from the memory of the program, alive or a core file; nothing is called in it. Where a field lies
# is asked of the debug information, and of FIELDS when there is none. Memory may hold anything: every count that comes
# from it is bounded here, and whatever cannot be read is said in place of the value.

import datetime
import re
import struct

import gdb
import gdb.printing

MOST_CHARACTERS = 1000  # of a string that is shown by itself
MOST_NESTED_CHARACTERS = 200  # of a string in another object
MOST_ELEMENTS = 200  # of one value, those in its elements included
MOST_BUCKETS = 65536  # looked at in a table
MOST_BYTES = 200  # of data
MOST_DEPTH = 4
MOST_SUPERCLASSES = 100
CLASS_RECORD = 192  # bytes

# Class or structure: its fields, each with its place in bytes and the format of its value (P pointer, I unsigned,
# i int, d double, * not read as a value). tests/gdb holds them against the library's debug information.
FIELDS = {
    "objc_class": {"superclass": (24, "P"), "info": (32, "I"), "name": (40, "P"), "instanceSize": (48, "I")},
    "objc_header": {"extraReferences": (0, "I")},
    "SideTable": {"capacity": (44, "I"), "mask": (48, "I"), "buckets": (56, "P"), "overflow": (64, "*")},
    "ZPSimpleCString": {"bytes": (8, "P"), "numBytes": (16, "I")},
    "ZPCSubstring": {"_referenceString": (24, "P")},
    "ZPCStringWithGap": {"gapBegin": (24, "I"), "gapEnd": (28, "I")},
    "ZPInlineCString": {"_flags": (8, "I")},
    "ZPSimpleString": {"characters": (8, "P"), "numCharacters": (16, "I")},
    "ZPUnicodeSubstring": {"_referenceString": (24, "P")},
    "ZPUnicodeStringWithGap": {"gapBegin": (24, "I"), "gapEnd": (28, "I")},
    "ZPPathStore2": {"_lengthAndRefCount": (8, "I")},
    "ZPConcreteMutableString": {"_contents": (16, "P")},
    "ZPCheapMutableString": {"_contents": (8, "P"), "_flags": (16, "I"), "_numCharacters": (20, "I")},
    "ZPConcreteArray": {"_info": (8, "I"), "_items": (16, "P")},
    "ZPConcreteMutableArray": {"_info": (8, "I"), "_items": (16, "P"), "_size": (24, "I")},
    "ZPConcreteDictionary": {"_table": (8, "P")},
    "ZPConcreteMutableDictionary": {"_table": (8, "P")},
    "ZPConcreteSet": {"_table": (8, "P")},
    "ZPConcreteMutableSet": {"_table": (8, "P")},
    "ZPCountedSet": {"_table": (8, "P")},
    "ZPSimpleSet": {"info": (0, "I"), "buckets": (24, "*")},
    "ZPSimpleDictionary": {"info": (0, "I"), "buckets": (16, "*")},
    "ZPSimpleSetBucket": {"state": (0, "I"), "item": (8, "P")},
    "ZPSimpleDictionaryBucket": {"state": (0, "I"), "key": (8, "P"), "value": (16, "P")},
    "ZPConcreteData": {"_flags": (8, "I"), "_length": (12, "I"), "_capacity": (16, "I"), "_bytes": (32, "P")},
    "ZPConcreteMutableData": {"_flags": (8, "I"), "_length": (12, "I"), "_capacity": (16, "I"), "_bytes": (32, "P")},
    "ZPSubrangeData": {"_location": (12, "I"), "_length": (16, "I"), "_data": (24, "P")},
    "ZPConcreteDate": {"_time": (8, "d")},
    "ZPDistantDate": {"_timeInterval": (8, "d")},
    "ZPCalendarDate": {"_timeIntervalSinceReferenceDate": (8, "d"), "_timeZone": (16, "P")},
    "ZPConcreteTimeZone": {"_timeZoneName": (8, "P"), "_timeZoneSecondsFromGMT": (16, "i"), "_abbreviation": (24, "P")},
    "ZPException": {"_name": (8, "P"), "_reason": (16, "P"), "_userInfo": (24, "P")},
    "ZPConcreteNotification": {"_name": (8, "P"), "_object": (16, "P"), "_userInfo": (24, "P")},
}
INLINE_BYTES = 12  # where the bytes of a ZPInlineCString lie
PATH_UNITS = 12  # and the units of a ZPPathStore2
INLINE_LENGTH = 16  # the shift of the length in an inline string's flags
BUCKET_SIZES = {"ZPSimpleSet": 16, "ZPSimpleDictionary": 24}

IS_METACLASS, IS_REALIZED, COUNTS_IN_HEADER, DEFAULT_COUNTING = 1, 2, 32, 64  # objc_classInfo
COUNT_MASK = 0x07FFFFFF
OCCUPIED = 0x80000000
DATA_INLINE, DATA_OWNED, DATA_PAGES = 1, 2, 4
SATURATED = 0xFFFFFFFF

# The classes whose instances live as long as the process.
UNCOUNTED = {"ZPConstantString", "_ZPConstantUnicodeString", "ZPPlaceholderString", "ZPBuiltinCharacterSet",
             "ZPDistantDate", "ZPHostTimeZoneDetail", "ZPLocalTimeZone", "Protocol"}

# These part from the string that they belong to when they are retained, and count as all others do.
COUNTED_AS_ALL = {"ZPCSubstring", "ZPUnicodeSubstring"}

# The units of the bytes 0x80 to 0x9F; docs/kestrel.md has the table.
KESTREL = ("\u20ac\u0141\u201a\u0192\u201e\u2026\u2020\u2021\ufb01\u2030\u0160\u2039\u0152\u0131\u017d\u2212"
           "\ufffd\u2018\u2019\u201c\u201d\u2022\u2013\u2014\ufb02\u2122\u0161\u203a\u0153\u0142\u017e\u0178")


class Broken(Exception):
    """What the memory holds is not what was looked for; the text says what is wrong."""


# ---- where fields lie ------------------------------------------------------------------------------------------------

def type_named(name):
    for full in (name, "(anonymous namespace)::" + name):
        try:
            found = gdb.lookup_type(full).strip_typedefs()
            if found.fields():
                return found
        except (gdb.error, TypeError):
            pass
    return None


def place_in_type(t, name):
    """The place of a field in bytes, base classes included, or None."""
    for field in t.fields():
        if not hasattr(field, "bitpos"):
            continue
        if field.name == name:
            return field.bitpos // 8
        if field.is_base_class:
            place = place_in_type(field.type.strip_typedefs(), name)
            if place is not None:
                return field.bitpos // 8 + place
    return None


places = {}


def forget_places(event=None):
    places.clear()


def place(structure, field):
    key = (structure, field)
    if key not in places:
        fixed = FIELDS[structure][field]
        t = type_named(structure)
        found = place_in_type(t, field) if t else None
        places[key] = (fixed[0] if found is None else found, fixed[1])
    return places[key]


# ---- memory ----------------------------------------------------------------------------------------------------------

def memory(address, size):
    if address <= 0 or address + size > 1 << 64:
        raise Broken("no address")
    if size == 0:
        return b""
    try:
        return bytes(gdb.selected_inferior().read_memory(address, size))
    except (gdb.error, OverflowError):
        raise Broken("unreadable memory at 0x%x" % address)


SIZES = {"P": 8, "I": 4, "i": 4, "d": 8}


def number(address, form):
    return struct.unpack("<" + ("Q" if form == "P" else form), memory(address, SIZES[form]))[0]


def field(address, structure, name):
    offset, form = place(structure, name)
    return number(address + offset, form)


def c_text(address, most):
    """The bytes before the NUL, read without crossing into a page that the text does not reach."""
    text = b""
    while len(text) < most:
        part = memory(address + len(text), min(64, 4096 - (address + len(text)) % 4096, most - len(text)))
        if b"\0" in part:
            return text + part[:part.index(b"\0")]
        text += part
    raise Broken("text without an end")


# ---- classes and counts ----------------------------------------------------------------------------------------------

class ClassRecord:
    def __init__(self, address):
        if address == 0 or address % 64:
            raise Broken("isa is no class")
        self.address = address
        # A class and its metaclass lie side by side; which of the two this is stands in the record.
        meta = address if field(address, "objc_class", "info") & IS_METACLASS else address + CLASS_RECORD
        if number(meta - CLASS_RECORD, "P") != meta:
            raise Broken("isa is no class")
        name = c_text(field(address, "objc_class", "name"), 256)
        if not re.fullmatch(rb"[A-Za-z_%(][ -~]*", name):
            raise Broken("isa is no class")
        self.name = name.decode("ascii")
        self.info = field(address, "objc_class", "info")

    def lineage(self):
        """The class and its superclasses."""
        records = [self]
        while len(records) <= MOST_SUPERCLASSES:
            at = field(records[-1].address, "objc_class", "superclass")
            if at == 0:
                break
            records.append(ClassRecord(at))
        return records

    def ancestors(self):
        """Their names, without the mark of one that another class poses as."""
        return [record.name.lstrip("%") for record in self.lineage()]

    def type(self):
        """The C++ type of the instances by the record's symbol, which names it in full, else by the class's name."""
        try:
            symbol = re.match(r"(.*)::classRecord", gdb.execute("info symbol 0x%x" % self.address, to_string=True))
        except gdb.error:
            symbol = None
        for name in ([symbol.group(1)] if symbol else []) + [self.name.lstrip("%")]:
            found = type_named(name)
            if found and is_object_type(found):
                return found
        return None


def class_of(address):
    if address % 8:
        raise Broken("no aligned address")
    isa = number(address, "P")
    try:
        return ClassRecord(isa)
    except Broken:
        raise Broken("isa is no class")


def count_in_side_table(address):
    """The extra references of an object without a header; None when the table cannot be found."""
    try:
        table = int(gdb.parse_and_eval("*(unsigned long *)&'(anonymous namespace)::sideTable'"))
    except gdb.error:
        return None
    if table == 0:
        return 0
    mask, buckets = field(table, "SideTable", "mask"), field(table, "SideTable", "buckets")
    slot = (address >> 2) & mask
    for _ in range(min(mask + 1, 1024)):
        word = number(buckets + 8 * slot, "P")
        if word == 0:
            return 0
        if word >> 2 == address >> 2:
            break
        slot = (slot + 1) & mask
    else:
        return None
    if word & 3 != 3:
        return word & 3
    node = number(table + place("SideTable", "overflow")[0] + 16, "P")  # the first node of the standard library's map
    for _ in range(10000):
        if node == 0:
            break
        if number(node + 8, "P") == address:
            return number(node + 16, "I")
        node = number(node, "P")
    return None


def retain_count(address, cls, names):
    if UNCOUNTED.intersection(names):
        return "uncounted"
    if cls.info & COUNTS_IN_HEADER:
        extra = number(address - 8, "I")
        plain = cls.info & DEFAULT_COUNTING or not cls.info & IS_REALIZED or COUNTED_AS_ALL.intersection(names)
        note = "" if plain else " (its class overrides counting)"
    else:
        extra, note = count_in_side_table(address), ""
        if extra is None:
            return "retain count unknown"
    return "retain count " + ("saturated" if extra == SATURATED else str(extra + 1)) + note


# ---- texts -----------------------------------------------------------------------------------------------------------

def host_charset():
    try:
        name = gdb.host_charset()
        "".encode(name)
        return name
    except (AttributeError, LookupError, gdb.error):
        return "ascii"


ESCAPES = {'"': '\\"', "\\": "\\\\", "\n": "\\n", "\r": "\\r", "\t": "\\t", "\0": "\\0"}


def quoted(text):
    charset, out = host_charset(), []
    for c in text:
        if c in ESCAPES:
            out.append(ESCAPES[c])
            continue
        shown = c.isprintable()
        if shown and c > "~":
            try:
                c.encode(charset)
            except UnicodeError:
                shown = False
        out.append(c if shown else "\\u%04X" % ord(c) if ord(c) < 0x10000 else "\\U%08X" % ord(c))
    return '"' + "".join(out) + '"'


def text_of_bytes(data):
    return "".join(KESTREL[b - 0x80] if 0x80 <= b < 0xA0 else chr(b) for b in data)


def text_of_units(data):
    return data.decode("utf-16-le", "surrogatepass")


class Text:
    """A string's first characters, its length in units, and how it is stored."""

    def __init__(self, text, length, form):
        self.text, self.length, self.form = text, length, form

    def shown(self, most):
        cut = self.length > most
        return quoted(self.text) + ("..." if cut else "")


def run(pointer, length, wide, most):
    count = min(length, most)
    if count == 0:
        return ""
    return text_of_units(memory(pointer, 2 * count)) if wide else text_of_bytes(memory(pointer, count))


def gap_run(pointer, length, begin, end, wide, most):
    if begin > length or end < begin:
        raise Broken("a gap from %d to %d in %d characters" % (begin, end, length))
    size = 2 if wide else 1
    head = memory(pointer, size * min(begin, most)) if begin else b""
    rest = min(length, most) - begin
    tail = memory(pointer + size * end, size * rest) if rest > 0 else b""
    return text_of_units(head + tail) if wide else text_of_bytes(head + tail)


def read_string(address, names, most, nested=False):
    """The Text of a string; None when the class stores no text that is known here."""
    for name in names:
        wide = name.startswith(("ZPUnicode", "ZPSimpleString", "_ZPConstantUnicode"))
        if name == "ZPInlineCString":
            length = field(address, name, "_flags") >> INLINE_LENGTH
            return Text(run(address + INLINE_BYTES, length, False, most), length, "8-bit inline")
        if name == "ZPPathStore2":
            length = field(address, name, "_lengthAndRefCount")
            return Text(run(address + PATH_UNITS, length, True, most), length, "16-bit path store")
        if name == "ZPConcreteMutableString":
            contents = field(address, name, "_contents")
            if contents == 0 or nested:
                return Text("", 0, "mutable, no contents" if contents == 0 else "mutable")
            inner = read_string(contents, class_of(contents).ancestors(), most, True)
            if inner is None:
                raise Broken("contents of an unknown form at 0x%x" % contents)
            return Text(inner.text, inner.length, "mutable, " + inner.form)
        if name == "ZPCheapMutableString":
            length, flags = field(address, name, "_numCharacters"), field(address, name, "_flags")
            pointer = field(address, name, "_contents")
            if flags & 1:
                return Text(run(pointer, length, True, most), length, "16-bit over a caller's buffer")
            data = memory(pointer, min(length, most)) if length else b""
            return Text(data.decode("latin-1"), length, "8-bit over a caller's buffer")
        if name == "ZPPlaceholderString":
            return Text("", 0, "placeholder")
        if name in ("ZPSimpleCString", "ZPCString", "ZPCSubstring", "ZPConstantString", "ZPCStringWithGap",
                    "ZPSimpleString", "ZPUnicodeString", "ZPUnicodeSubstring", "_ZPConstantUnicodeString",
                    "ZPUnicodeStringWithGap"):
            base, pointer_name, length_name = (("ZPSimpleString", "characters", "numCharacters") if wide else
                                               ("ZPSimpleCString", "bytes", "numBytes"))
            pointer, length = field(address, base, pointer_name), field(address, base, length_name)
            form = "16-bit" if wide else "8-bit"
            if name.endswith("WithGap"):
                begin, end = field(address, name, "gapBegin"), field(address, name, "gapEnd")
                form += " gap buffer" + (", gap of %d at %d" % (end - begin, begin) if end > begin else "")
                return Text(gap_run(pointer, length, begin, end, wide, most), length, form)
            if name.endswith("Substring"):
                parent = field(address, name, "_referenceString")
                form += " substring of 0x%x" % parent if parent else " substring"
            elif "Constant" in name:
                form += " literal"
            return Text(run(pointer, length, wide, most), length, form)
    return None


# ---- other contents --------------------------------------------------------------------------------------------------

def entries(table, shape, most):
    """The words of up to `most` entries of a hash table and their number."""
    if table == 0:
        return [], 0
    info, first = field(table, shape, "info"), place(shape, "buckets")[0]
    count, size = info & COUNT_MASK, BUCKET_SIZES[shape]
    buckets = 4 << (info >> 27)
    names = ("item",) if shape == "ZPSimpleSet" else ("key", "value")
    offsets = [place(shape + "Bucket", n)[0] for n in names]
    found, at = [], 0
    if info >> 27 < 2:
        buckets = min(count, buckets)
    while at < min(buckets, MOST_BUCKETS) and len(found) < min(most, count):
        block = min(64, buckets - at)
        data = memory(table + first + at * size, block * size)
        for i in range(block):
            if struct.unpack_from("<I", data, i * size)[0] & OCCUPIED and len(found) < most:
                found.append([struct.unpack_from("<Q", data, i * size + o)[0] for o in offsets])
        at += block
    return found, count


def data_of(address, names, depth=0):
    """The first bytes of a data object, its length and its form; None when its class is not known here."""
    for name in names:
        if name in ("ZPConcreteData", "ZPConcreteMutableData"):
            flags, length = field(address, name, "_flags"), field(address, name, "_length")
            inline = name == "ZPConcreteData" and flags & DATA_INLINE
            start = address + place(name, "_bytes")[0] if inline else field(address, name, "_bytes")
            form = ("inline" if inline else "pages" if flags & DATA_PAGES else
                    "mutable" if name == "ZPConcreteMutableData" else "block" if flags & DATA_OWNED else "borrowed")
            return (memory(start, min(length, MOST_BYTES)) if length else b""), length, form
        if name == "ZPSubrangeData":
            whole, location, length = (field(address, name, part) for part in ("_data", "_location", "_length"))
            form = "%d bytes from %d of 0x%x" % (length, location, whole)
            cls = class_of(whole).ancestors()
            start = None
            for inner in cls:
                if inner in ("ZPConcreteData", "ZPConcreteMutableData"):
                    inline = inner == "ZPConcreteData" and field(whole, inner, "_flags") & DATA_INLINE
                    start = whole + place(inner, "_bytes")[0] if inline else field(whole, inner, "_bytes")
                    break
            if start is None:
                raise Broken("a part of data of an unknown form at 0x%x" % whole)
            return (memory(start + location, min(length, MOST_BYTES)) if length else b""), length, form
    return None


def hexadecimal(data, length, most):
    text = data[:most].hex()
    more = "..." if length > min(len(data), most) else ""
    return "<" + " ".join(text[i:i + 8] for i in range(0, len(text), 8)) + more + ">"


DATES = {"ZPConcreteDate": "_time", "ZPDistantDate": "_timeInterval",
         "ZPCalendarDate": "_timeIntervalSinceReferenceDate"}


def date_text(address, names):
    for name in names:
        if name in DATES:
            seconds, offset, zone = field(address, name, DATES[name]), 0, "+0000"
            if name == "ZPCalendarDate":
                detail = field(address, name, "_timeZone")
                if detail and "ZPConcreteTimeZone" in class_of(detail).ancestors():
                    offset = field(detail, "ZPConcreteTimeZone", "_timeZoneSecondsFromGMT")
                    if abs(offset) < 360000:
                        zone = "%s%02d%02d" % ("-" if offset < 0 else "+", abs(offset) // 3600, abs(offset) // 60 % 60)
            try:
                moment = datetime.datetime(2001, 1, 1) + datetime.timedelta(seconds=seconds // 1 + offset)
                return "%04d-%s %s" % (moment.year, moment.strftime("%m-%d %H:%M:%S"), zone)
            except (OverflowError, ValueError):
                return "%r seconds since 2001" % seconds
    return None


# Classes that show a few of their fields, with the names they are shown by.
PARTS = {
    "ZPException": (("name", "_name"), ("reason", "_reason"), ("userInfo", "_userInfo")),
    "ZPConcreteNotification": (("name", "_name"), ("object", "_object"), ("userInfo", "_userInfo")),
    "ZPConcreteTimeZone": (("name", "_timeZoneName"), ("abbreviation", "_abbreviation"),
                           ("seconds", "_timeZoneSecondsFromGMT")),
}

TABLES = {"ZPConcreteDictionary": "ZPSimpleDictionary", "ZPConcreteMutableDictionary": "ZPSimpleDictionary",
          "ZPCountedSet": "ZPSimpleDictionary", "ZPConcreteSet": "ZPSimpleSet", "ZPConcreteMutableSet": "ZPSimpleSet"}


# ---- objects ---------------------------------------------------------------------------------------------------------

class Reading:
    """One value being shown: how many elements may still be."""

    def __init__(self):
        self.left = MOST_ELEMENTS

    def take(self):
        self.left -= 1
        return self.left >= 0

    def nested(self, address, depth):
        """An object inside another, in one text."""
        if address == 0:
            return "null"
        try:
            return Description(address, self, depth).inside()
        except Broken as problem:
            return "<no object at 0x%x: %s>" % (address, problem)


class Description:
    """What an object is (`kind`, `summary`), and its parts as pairs (`parts()`)."""

    def __init__(self, address, reading, depth):
        self.address, self.reading, self.depth = address, reading, depth
        self.cls = class_of(address)
        self.kind = "object"
        if self.cls.info & IS_METACLASS:
            self.kind = "class"
            record = ClassRecord(address)
            self.summary = ("metaclass " if record.info & IS_METACLASS else "class ") + record.name
            self.count = "uncounted"
            return
        try:
            self.read(address, reading)
        except Broken as problem:
            self.kind, self.problem = "broken", problem

    def read(self, address, reading):
        self.count = "retain count unknown"
        self.names = self.cls.ancestors()
        self.count = retain_count(address, self.cls, self.names)
        self.most = MOST_CHARACTERS if self.depth == 0 else MOST_NESTED_CHARACTERS
        string = read_string(address, self.names, self.most)
        if string is not None:
            self.kind, self.string = "string", string
            return
        self.data = data_of(address, self.names)
        if self.data is not None:
            self.kind = "data"
            return
        self.date = date_text(address, self.names)
        if self.date is not None:
            self.kind = "date"
            return
        for name in self.names:
            self.form = name
            if name in ("ZPConcreteArray", "ZPConcreteMutableArray"):
                self.kind, self.total = "array", field(address, name, "_info") & COUNT_MASK
                return
            if name in TABLES:
                self.kind = ("counted set" if name == "ZPCountedSet" else
                             "dictionary" if TABLES[name] == "ZPSimpleDictionary" else "set")
                self.found, self.total = entries(field(address, name, "_table"), TABLES[name], max(0, reading.left))
                return
            if name in PARTS:
                self.kind = "record"
                return

    def collection(self):
        return self.kind in ("array", "set", "counted set", "dictionary")

    def counted(self):
        what = {"array": "element", "set": "member", "counted set": "member", "dictionary": "entry"}[self.kind]
        return "1 " + what if self.total == 1 else "%d %s" % (self.total, "entries" if what == "entry" else what + "s")

    def full(self):
        """The text of an object that is shown by itself, without its parts."""
        if self.kind == "class":
            return "%s (0x%x, uncounted)" % (self.summary, self.address)
        where = "%s 0x%x" % (self.cls.name, self.address)
        if self.kind == "broken":
            return "%s, %s <broken: %s>" % (where, self.count, self.problem)
        if self.kind == "string":
            s = self.string
            shown, plural = s.shown(self.most), "" if s.length == 1 else "s"
            return "%s (%s, %s, %d character%s, %s)" % (shown, where, s.form, s.length, plural, self.count)
        if self.kind == "data":
            data, length, form = self.data
            shown, plural = hexadecimal(data, length, MOST_BYTES), "" if length == 1 else "s"
            return "%s (%s, %s, %d byte%s, %s)" % (shown, where, form, length, plural, self.count)
        if self.kind == "date":
            return "%s (%s, %s)" % (self.date, where, self.count)
        if self.collection():
            return "%s, %s, %s" % (where, self.counted(), self.count)
        return "%s, %s" % (where, self.count)

    def pairs(self):
        """Pairs of texts: of an array and a set the second is the element, else both count."""
        below = self.depth + 1
        r = self.reading
        if self.kind == "array":
            items = field(self.address, self.form, "_items") if self.total else 0
            for i in range(self.total):
                if not r.take():
                    yield "...", "... (%d more)" % (self.total - i)
                    return
                try:
                    element = number(items + 8 * i, "P")
                except Broken as problem:
                    yield "...", "<%s>" % problem
                    return
                yield str(i), r.nested(element, below)
        elif self.collection():
            shown = 0
            for words in self.found:
                if not r.take():
                    break
                shown += 1
                first = r.nested(words[0], below)
                if self.kind == "set":
                    yield str(shown - 1), first
                elif self.kind == "counted set":
                    yield first, "%d times" % words[1]
                else:
                    yield first, r.nested(words[1], below)
            if shown < self.total:
                yield "...", "... (%d more)" % (self.total - shown)
        elif self.kind == "record":
            for name, part in PARTS[self.form]:
                value = field(self.address, self.form, part)
                yield name, r.nested(value, below) if FIELDS[self.form][part][1] == "P" else str(value)

    def inside(self):
        if self.kind == "class":
            return self.summary
        if self.kind == "string":
            return self.string.shown(self.most)
        if self.kind == "data":
            return hexadecimal(self.data[0], self.data[1], 16)
        if self.kind == "date":
            return self.date
        if self.depth < MOST_DEPTH and (self.collection() or self.kind == "record"):
            listed = self.kind in ("array", "set")
            parts = [second if listed or first == "..." else first + " = " + second for first, second in self.pairs()]
            return ("" if self.collection() else self.cls.name + " ") + "{" + ", ".join(parts) + "}"
        if self.kind == "broken":
            return "%s 0x%x <broken: %s>" % (self.cls.name, self.address, self.problem)
        if self.collection():
            return "%s with %s" % (self.cls.name, self.counted())
        return "%s 0x%x" % (self.cls.name, self.address)


# ---- printers --------------------------------------------------------------------------------------------------------

def own_fields(value, t):
    for f in t.fields():
        if not hasattr(f, "bitpos"):
            continue
        if f.is_base_class:
            if f.name not in ("objc_object", "ZPObject", "ZPProxy"):
                yield from own_fields(value.cast(f.type), f.type.strip_typedefs())
        elif f.name:
            yield f.name, value[f]


def fields_of(address, cls, value):
    """The fields by the nearest class whose type is known; by the variable's type when that is one of the object's."""
    for record in cls.lineage():
        t = record.type()
        if t:
            return list(own_fields(gdb.Value(address).cast(t.pointer()).dereference(), t))
        declared = value.type.strip_typedefs()
        if declared.name and declared.name.split("::")[-1] == record.name.lstrip("%").split("::")[-1]:
            return list(own_fields(value, declared))
    return []


class ObjectPrinter:
    """A reference to an object, or an object itself, whose own fields are then shown where nothing better is known."""

    def __init__(self, value, address, itself):
        self.value, self.itself, self.parts = value, itself, []
        self.hint = None
        if address == 0:
            self.text = "null"
            return
        try:
            description = Description(address, Reading(), 0)
            self.text = description.full()
            if description.kind in ("dictionary", "counted set"):
                self.hint = "map"
                for first, second in description.pairs():
                    self.parts += [("key", first), ("value", second)]
            else:
                if description.collection():
                    self.hint = "array"
                self.parts = list(description.pairs())
            if description.kind == "object" and itself:
                self.parts = fields_of(address, description.cls, value)
        except Broken as problem:
            self.text = "0x%x <no object here: %s>" % (address, problem)

    def to_string(self):
        return self.text

    def children(self):
        return iter(self.parts)

    def display_hint(self):
        return self.hint


class PlainText:
    """A value without parts: gdb writes braces behind every printer that has `children`."""

    def __init__(self, text):
        self.text = text

    def to_string(self):
        return self.text


def is_object_type(t, depth=0):
    """Whether a structure begins with an object; one that is only declared is told by its name."""
    if t.code != gdb.TYPE_CODE_STRUCT or depth > MOST_SUPERCLASSES:
        return False
    if t.name == "objc_object":
        return True
    fields = t.fields()
    if not fields:
        return bool(t.name and re.fullmatch(r"_?ZP[A-Z]\w*", t.name))
    return fields[0].is_base_class and is_object_type(fields[0].type.strip_typedefs(), depth + 1)


def printer_of(value, address, itself=False):
    made = ObjectPrinter(value, address, itself)
    return made if made.parts or made.hint else PlainText(made.text)


class Printers(gdb.printing.PrettyPrinter):
    def __init__(self):
        super().__init__("Bedrock", [])

    def __call__(self, value):
        try:
            return self.find(value)
        except (gdb.error, Broken, RecursionError):
            return None

    def find(self, value):
        t = value.type
        if t.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
            value = value.referenced_value()
            t = value.type
        t = t.strip_typedefs()
        if t.code == gdb.TYPE_CODE_PTR:
            target = t.target().strip_typedefs()
            if target.name == "objc_selector":
                address = int(value)
                try:
                    if not address:
                        return PlainText("null")
                    return PlainText("@selector(%s)" % c_text(address, 256).decode("ascii", "backslashreplace"))
                except Broken as problem:
                    return PlainText("0x%x <no selector here: %s>" % (address, problem))
            if not is_object_type(target):
                return None
            if not target.fields():  # only declared: shown when there is an object, else left to gdb
                class_of(int(value))
            return printer_of(value, int(value))
        if t.code != gdb.TYPE_CODE_STRUCT:
            return None
        if t.name == "id" or (t.name or "").startswith("ZPRef<"):
            return printer_of(value, int(value["_object"]))
        if not is_object_type(t) or value.address is None or t.name == "objc_class":
            return None
        return printer_of(value, int(value.address), True)


gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers(), replace=True)
gdb.events.new_objfile.connect(forget_places)
gdb.events.clear_objfiles.connect(forget_places)
