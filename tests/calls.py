#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Looks for messages to oneself that are written like calls. usage: calls.py SOURCE_FOLDER BUILD_FOLDER

In a methods struct a bare `count()` is this class's own code, and `self()->count()` a message; so with `named(n)` and
`Front::named(n)`, which the class is asked. A name that the struct does not define finds the front's member, which
sends: clang-query, which knows which it is, reads what is built of the folders below, and a file of its own in which
that is done as well. Prints FILE:LINE:COLUMN of each, and fails when the tree has one or those were not found."""
import concurrent.futures
import json
import os
import re
import subprocess
import sys
import tempfile

FOLDERS = ("Bedrock", "examples", "tests", "tools")

PROBE = """
#include <Bedrock/core/ZPObject.h>
struct Front : ZPObject {
    ZP_CLASS(Front)
    unsigned count() ZP_ASKS();
    unsigned both() ZP_ASKS();
    unsigned more() { return both() + 1; }      // wrong
    static Front *named(int n) ZP_CLASS_ASKS(n);
};
struct Code : Front {
    unsigned both() { return self()->count() + self()->hash(); }
    unsigned twice() { return both() + both(); }
    unsigned half() { return count() / 2; }     // wrong
    unsigned other() { return this->hash(); }   // wrong
    static Front *made() { return Front::named(1); }
    Front *another() { return made(); }
    Front *third() { return named(3); }         // wrong
};
"""

# A member that sends, of another struct than the one that the code stands in, or one that ZP_ASKS or ZP_TELLS made:
# asked of `this`, or static and named without its class.
QUERY = """set output diag
set bind-root false
match cxxMemberCallExpr(on(ignoringParenImpCasts(cxxThisExpr())), %(inside)s, callee(%(sender)s), \
callee(memberExpr().bind("call")))
match callExpr(callee(cxxMethodDecl(isStaticStorageClass())), %(inside)s, callee(%(sender)s), \
callee(expr(ignoringImpCasts(declRefExpr(unless(has(nestedNameSpecifierLoc()))).bind("call")))))
"""
INSIDE = """isExpansionInFileMatching("%s"), hasAncestor(cxxMethodDecl(ofClass(\
cxxRecordDecl(isDerivedFrom("objc_object"), unless(isLambda())).bind("code"))))"""
SENDS = 'hasBody(hasDescendant(callExpr(callee(functionDecl(matchesName("::objc_(%s)"))))))'
SENDER = 'cxxMethodDecl(anyOf(%s, allOf(%s, unless(ofClass(cxxRecordDecl(equalsBoundNode("code")))))))' % (
    SENDS % "(ask|tell)$", SENDS % "msgSend|send|allocate")


def disguised(source, build, query):
    out = subprocess.run(["clang-query", "-p", build, "-f", query, *source], capture_output=True, text=True)
    text = out.stdout + out.stderr
    if out.returncode or " error: " in text:
        sys.exit(f"{source[0]}: clang-query cannot read it:\n{text[:2000]}")
    return set(re.findall(r'^(/\S+:\d+:\d+): note: "call" binds here', out.stdout, re.M))


def main(root, build):
    with tempfile.TemporaryDirectory() as folder:
        def asked(pattern):
            path = os.path.join(folder, "query")
            with open(path, "w") as file:
                file.write(QUERY % {"inside": INSIDE % pattern, "sender": SENDER})
            return path

        probe = os.path.join(folder, "probe.cpp")
        with open(probe, "w") as file:
            file.write(PROBE)
        found = disguised([probe, "--", "-std=c++20", "-fno-delete-null-pointer-checks", "-I" + root], build,
                          asked("probe.cpp"))
        there = [n for n, line in enumerate(PROBE.split("\n"), 1) if line.endswith("// wrong")]
        if sorted(int(place.split(":")[1]) for place in found) != there:
            sys.exit(f"calls.py finds {sorted(found)} in its own file, where they are in lines {there}")

        folders = tuple(os.path.join(root, name, "") for name in FOLDERS)
        with open(os.path.join(build, "compile_commands.json")) as file:
            files = sorted({command["file"] for command in json.load(file)})
        files = [file for file in files if file.startswith(folders)]
        if not files:
            sys.exit(f"calls.py: {build} builds nothing of {root}")
        query = asked("^(%s)" % "|".join(map(re.escape, folders)))
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
            found = set().union(*workers.map(lambda file: disguised([file], build, query), files))
    for place in sorted(found):
        print(place + ": a message to oneself, written like a call: self()->, or the class by name")
    sys.exit(bool(found))


main(os.path.abspath(sys.argv[1]), sys.argv[2])
