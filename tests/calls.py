#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Looks for messages to oneself that are written like calls. usage: calls.py SOURCE_FOLDER BUILD_FOLDER

In a methods struct a bare `count()` is this class's own code, and `self()->count()` a message. A name that the struct
does not define finds the front's member, which sends: clang-query, which knows which it is, reads the library and a
file of its own in which that is done twice. Prints FILE:LINE:COLUMN of each, and fails when the library has one or the
two were not found."""
import concurrent.futures
import os
import re
import subprocess
import sys
import tempfile

PROBE = """
#include <Bedrock/core/ZPObject.h>
struct Front : ZPObject {
    ZP_CLASS(Front)
    unsigned count() ZP_ASKS();
    unsigned both() ZP_ASKS();
};
struct Code : Front {
    unsigned both() { return self()->count() + self()->hash(); }  // messages
    unsigned twice() { return both() + both(); }                  // calls
    unsigned wrong() { return count() + this->hash(); }           // messages in disguise
};
"""

# A member of another struct than the one that the code stands in, asked of `this`, whose body sends.
QUERY = """set output diag
set bind-root false
match cxxMemberCallExpr(on(ignoringParenImpCasts(cxxThisExpr())), isExpansionInFileMatching("%s"), \
hasAncestor(cxxMethodDecl(ofClass(cxxRecordDecl(unless(isLambda())).bind("code")))), \
callee(cxxMethodDecl(hasBody(hasDescendant(callExpr(callee(functionDecl(matchesName("objc_(msgSend|send|ask|tell)")))))), \
unless(ofClass(cxxRecordDecl(equalsBoundNode("code")))))), callee(memberExpr().bind("call")))
"""


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
                file.write(QUERY % pattern)
            return path

        probe = os.path.join(folder, "probe.cpp")
        with open(probe, "w") as file:
            file.write(PROBE)
        found = disguised([probe, "--", "-std=c++20", "-fno-delete-null-pointer-checks", "-I" + root], build, asked("probe.cpp"))
        line = PROBE.split("\n").index(next(text for text in PROBE.split("\n") if "wrong" in text)) + 1
        if sorted(int(place.split(":")[1]) for place in found) != [line, line]:
            sys.exit(f"calls.py finds {sorted(found)} in its own file, where there are two in line {line}")

        library = os.path.join(root, "Bedrock")
        files = [os.path.join(place, name) for place, _, names in os.walk(library) for name in names if name.endswith(".cpp")]
        query = asked(library + "/")
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
            found = set().union(*workers.map(lambda file: disguised([file], build, query), files))
    for place in sorted(found):
        print(place + ": a message to oneself, written like a call: self()->")
    sys.exit(bool(found))


main(os.path.abspath(sys.argv[1]), sys.argv[2])
