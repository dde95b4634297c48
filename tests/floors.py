#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Reads the tree's includes against Bedrock/floors. usage: floors.py SOURCE_FOLDER | floors.py --self-test FOLDER

Prints FILE:LINE and what is wrong there for each violation, and fails when there is one. The self-test makes a small
tree in FOLDER in which each rule is broken once, and fails unless each is found."""
import os
import re
import shutil
import sys

LIBRARY = "Bedrock"
AS_CLIENTS = ("examples", "tools", "demo")
BESIDE = AS_CLIENTS + ("tests", "bench", "fuzz")
STANDARD = set("""
algorithm any array atomic barrier bit bitset charconv chrono codecvt compare complex concepts condition_variable
coroutine deque exception execution expected filesystem format forward_list fstream functional future initializer_list
iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource mutex new numbers
numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore set shared_mutex source_location
span sstream stack stdexcept stop_token streambuf string string_view syncstream system_error thread tuple type_traits
typeindex typeinfo unordered_map unordered_set utility valarray variant vector version
""".split())
for name in """assert ctype errno fenv float inttypes limits locale math setjmp signal stdarg stdbool stddef stdint
               stdio stdlib string time uchar wchar wctype""".split():
    STANDARD |= {"c" + name, name + ".h"}

INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s*([<"])([^>"]+)[>"]')


class Floors:
    def __init__(self, path, complain):
        self.floor, self.rooms, self.system, self.compiler = {}, {}, set(), set()
        count = 0
        with open(path) as lines:
            for number, line in enumerate(lines, 1):
                words = line.split("#")[0].split()
                if not words:
                    continue
                if words[0] == "floor":
                    count += 1
                    for folder in words[1:]:
                        self.floor[folder] = count
                elif words[0] == "rooms" and len(words) > 2:
                    self.rooms[words[1]] = set(words[2:])
                elif words[0] == "system":
                    self.system |= set(words[1:])
                elif words[0] == "compiler":
                    self.compiler |= set(words[1:])
                else:
                    complain(path, number, "no line of this file: " + line.strip())


class Check:
    def __init__(self, root):
        self.root, self.found = root, []
        self.floors = Floors(os.path.join(root, LIBRARY, "floors"), self.complain)
        self.public = {LIBRARY + "/Bedrock.h"}

    def complain(self, path, line, what):
        self.found.append("%s:%d: %s" % (os.path.relpath(path, self.root), line, what))

    def folders(self):
        """Every folder and room is in the floors file, and what it names is there; gathers the public headers."""
        base, floors = os.path.join(self.root, LIBRARY), self.floors
        listing = os.path.join(base, "floors")
        for folder in sorted(os.listdir(base)):
            path = os.path.join(base, folder)
            if not os.path.isdir(path) or (folder not in floors.floor and not has_code(path)):
                continue
            if folder not in floors.floor:
                self.complain(path, 1, "the folder is on no floor")
                continue
            rooms = {f for f in os.listdir(path) if os.path.isdir(os.path.join(path, f))}
            for room in sorted(rooms - floors.rooms.get(folder, set())):
                self.complain(os.path.join(path, room), 1, "no room of its folder by the list")
            for room in sorted(floors.rooms.get(folder, set()) - rooms):
                self.complain(listing, 1, "lists a room that is not there: %s/%s" % (folder, room))
            self.headers(folder, os.path.join(path, "headers.cmake"))
        for folder in sorted(floors.floor):
            if not os.path.isdir(os.path.join(base, folder)):
                self.complain(listing, 1, "lists a folder that is not there: " + folder)

    def headers(self, folder, path):
        if not os.path.exists(path):
            return self.complain(path, 1, "the folder has no list of public headers")
        with open(path) as file:
            text = file.read()
        match = re.search(r"set\(PUBLIC_HEADERS\s+([^)]*)\)", text)
        if not match:
            return self.complain(path, 1, "sets no PUBLIC_HEADERS")
        for word in re.finditer(r"\S+", match.group(1)):
            line = text.count("\n", 0, match.start(1) + word.start()) + 1
            name = "%s/%s/%s" % (LIBRARY, folder, word.group())
            self.public.add(name)
            if not os.path.exists(os.path.join(self.root, name)):
                self.complain(path, line, "lists a header that is not there: " + word.group())
            if "+Internal" in name:
                self.complain(path, line, "makes a room's own header public: " + word.group())

    def file(self, path):
        name = os.path.relpath(path, self.root).replace(os.sep, "/")
        with open(path, encoding="utf-8", errors="replace") as lines:
            for number, line in enumerate(lines, 1):
                match = INCLUDE.match(line)
                if not match:
                    continue
                target = match.group(2)
                beside = os.path.normpath(os.path.join(os.path.dirname(path), target))
                if match.group(1) == '"' and os.path.exists(beside):
                    target = os.path.relpath(beside, self.root).replace(os.sep, "/")
                for what in self.wrong(name, target):
                    self.complain(path, number, what)

    def wrong(self, name, target):
        """What is wrong with the file `name` including `target`."""
        mine = name.split("/")
        inside = mine[0] == LIBRARY
        if not target.startswith(LIBRARY + "/"):
            if inside and "/" not in target and (target in STANDARD or target in self.floors.compiler):
                return
            if inside and mine[1] not in self.floors.system:
                yield "includes a header of the host's: " + target
            return
        theirs = target.split("/")
        if not os.path.exists(os.path.join(self.root, target)):
            yield "includes what is not there: " + target
            return
        if "+Internal" in target and mine[:-1] != theirs[:-1]:
            yield "includes another room's own header: " + target
        elif target not in self.public and (name in self.public or mine[0] in AS_CLIENTS):
            yield "includes a header that is not public: " + target
        if inside and len(mine) > 2:
            height = self.floors.floor
            if len(theirs) == 2:
                yield "includes the header over all floors: " + target
            elif mine[1] in height and theirs[1] in height and height[theirs[1]] > height[mine[1]]:
                yield "includes upward: " + target

    def run(self):
        self.folders()
        count = 0
        for top in (LIBRARY,) + BESIDE:
            for path in sorted(code_of(os.path.join(self.root, top))):
                self.file(path)
                count += 1
        if not count:
            self.complain(self.root, 1, "holds no sources")
        return self.found


def code_of(folder):
    for path, folders, files in os.walk(folder):
        folders[:] = [f for f in folders if f != "build"]
        for file in files:
            if file.endswith((".h", ".cpp")):
                yield os.path.join(path, file)


def has_code(folder):
    return next(code_of(folder), None) is not None


def self_test(root):
    shutil.rmtree(root, ignore_errors=True)
    tree = {
        "Bedrock/floors": "floor low\nfloor mid side\nfloor high\nrooms mid one two\nsystem low\ncompiler cxxabi.h\n",
        "Bedrock/Bedrock.h": "#include <Bedrock/high/High.h>\n",
        "Bedrock/low/headers.cmake": "set(PUBLIC_HEADERS Low.h Gone.h)\n",
        "Bedrock/low/Low.h": "#include <unistd.h>\n#include <Bedrock/low/Own.h>\n#include <vector>\n",
        "Bedrock/low/Own.h": "#include <Bedrock/Bedrock.h>\n",
        "Bedrock/low/Up.cpp": "// up\n#include <Bedrock/high/High.h>\n#include <Bedrock/low/Lost.h>\n",
        "Bedrock/mid/headers.cmake": "set(PUBLIC_HEADERS\n  Mid.h)\n",
        "Bedrock/mid/Mid.h": "#include <Bedrock/side/Side.h>\n#include <Bedrock/low/Low.h>\n",
        "Bedrock/mid/one/Part+Internal.h": "",
        "Bedrock/mid/one/Part.h": '#include "Part+Internal.h"\n',
        "Bedrock/mid/two/Part.cpp": "#include <Bedrock/mid/one/Part+Internal.h>\n#include <Bedrock/mid/one/Part.h>\n",
        "Bedrock/side/headers.cmake": "set(PUBLIC_HEADERS Side.h)\n",
        "Bedrock/side/Side.h": "",
        "Bedrock/side/Side.cpp": "#include <sys/mman.h>\n#include <cxxabi.h>\n",
        "Bedrock/side/shed/Shed.cpp": "#include <Bedrock/mid/one/Part.h>\n",
        "Bedrock/high/headers.cmake": "set(PUBLIC_HEADERS High.h)\n",
        "Bedrock/high/High.h": "#include <Bedrock/mid/Mid.h>\n",
        "Bedrock/cellar/Cellar.cpp": "",
        "examples/one.cpp": "#include <Bedrock/Bedrock.h>\n#include <unistd.h>\n#include <Bedrock/mid/one/Part.h>\n",
        "tests/one.cpp": "#include <Bedrock/mid/one/Part.h>\n#include <Bedrock/mid/one/Part+Internal.h>\n",
    }
    for name, text in tree.items():
        path = os.path.join(root, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w") as file:
            file.write(text)
    expected = {
        "Bedrock/low/headers.cmake:1: lists a header that is not there: Gone.h",
        "Bedrock/low/Low.h:2: includes a header that is not public: Bedrock/low/Own.h",
        "Bedrock/low/Own.h:1: includes the header over all floors: Bedrock/Bedrock.h",
        "Bedrock/low/Up.cpp:2: includes upward: Bedrock/high/High.h",
        "Bedrock/low/Up.cpp:3: includes what is not there: Bedrock/low/Lost.h",
        "Bedrock/mid/two/Part.cpp:1: includes another room's own header: Bedrock/mid/one/Part+Internal.h",
        "Bedrock/side/Side.cpp:1: includes a header of the host's: sys/mman.h",
        "Bedrock/side/shed:1: no room of its folder by the list",
        "Bedrock/cellar:1: the folder is on no floor",
        "examples/one.cpp:3: includes a header that is not public: Bedrock/mid/one/Part.h",
        "tests/one.cpp:2: includes another room's own header: Bedrock/mid/one/Part+Internal.h",
    }
    found = set(Check(root).run())
    for line in sorted(expected - found):
        print("not found: " + line)
    for line in sorted(found - expected):
        print("found without need: " + line)
    return 0 if found == expected else 1


def main(arguments):
    if len(arguments) == 2 and arguments[0] == "--self-test":
        return self_test(arguments[1])
    if len(arguments) != 1:
        print(__doc__, file=sys.stderr)
        return 2
    found = Check(arguments[0]).run()
    print("\n".join(found) if found else "floors: nothing wrong")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
