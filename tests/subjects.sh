#!/bin/sh
# SPDX-License-Identifier: MIT
# The subjects of commits: "area: text", 72 characters at most. Earlier commits are left alone, and nothing is asked
# where the history is not there. usage: subjects.sh SOURCE_FOLDER
cd "$1" || exit 2
since=2589e171251f4b3687af8859fed9e4e2dbf6ddca
git cat-file -e "$since^{commit}" 2>/dev/null && git merge-base --is-ancestor "$since" HEAD 2>/dev/null || {
    echo "no history to look at"
    exit 77
}
wrong=$(git log --no-merges --format='%h %s' "$since..HEAD" |
    LC_ALL=C.UTF-8 grep -vE '^[0-9a-f]+ [a-z][a-z0-9, +_/.-]*: [^ ]' ; git log --no-merges --format='%h %s' "$since..HEAD" |
    LC_ALL=C.UTF-8 grep -E '^[0-9a-f]+ .{73,}')
[ -z "$wrong" ] || { printf 'commit subjects that are not "area: text" of 72 characters at most:\n%s\n' "$wrong"; exit 1; }
