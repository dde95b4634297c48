#!/bin/sh
# SPDX-License-Identifier: MIT
# Each command of the tree with a tool missing that it cannot install: it says so in one line that names the tool, ends
# non-zero, and leaves nothing behind. As root also for a user who is not.
# usage: run.sh SOURCE_FOLDER WORK_FOLDER
set -eu
source=$1 work=$2
rm -rf "$work"; mkdir -p "$work/all"
(cd "$source" && tar -c demo check bench/run bench/cases.json fuzz/run fuzz/*.cpp tests/coverage package/run docs/reference docs/Doxyfile abi .ci cmake CMakePresets.json) |
    (mkdir "$work/tree" && tar -x -C "$work/tree")
# Every command there is but those that install.
IFS=:
for folder in $PATH; do
    for program in "$folder"/*; do [ -x "$program" ] && [ ! -e "$work/all/${program##*/}" ] && ln -s "$program" "$work/all/"; done
done 2>/dev/null || :
unset IFS
rm -f "$work/all/apt-get" "$work/all/sudo"
failed=0
fault() { echo "$*"; sed 's/^/    /' "$work/said"; failed=1; }
without() { # without TOOL COMMAND...: in the tree
    tool=$1; shift
    [ ! -e "$work/all/$tool" ] || mv "$work/all/$tool" "$work/tool"
    (cd "$work/tree" && find . | sort) >"$work/before"
    for user in $users; do
        as=
        if [ "$user" = nobody ]; then
            [ "$(id -u)" = 0 ] && setpriv --reuid=65534 --regid=65534 --clear-groups test -r "$work/tree/demo" 2>/dev/null || continue
            # Their programs may lie where only this user may go.
            case $1 in bench/*) setpriv --reuid=65534 --regid=65534 --clear-groups python3 -c '' 2>/dev/null || continue ;; esac
            as="$(command -v setpriv) --reuid=65534 --regid=65534 --clear-groups"
        fi
        status=0
        (cd "$work/tree" && $as env PATH="$work/all" PYTHONDONTWRITEBYTECODE=1 "$@") >"$work/output" 2>"$work/said" </dev/null || status=$?
        [ "$status" != 0 ] || fault "$* without $tool succeeds"
        [ "$(wc -l <"$work/said")" = 1 ] && grep -q -- "$tool" "$work/said" || fault "$* without $tool does not say so in one line:"
        [ ! -s "$work/output" ] || fault "$* without $tool begins its work"
        (cd "$work/tree" && find . | sort) | cmp -s - "$work/before" || fault "$* without $tool leaves something behind"
    done
    [ ! -e "$work/tool" ] || mv "$work/tool" "$work/all/$tool"
}
touch "$work/library"
users="self nobody"
without g++ ./demo
without python3 ./demo
without gdb ./check
without nm ./.ci/run
without cmake bench/run
without g++ bench/run --peers
without valgrind bench/run
without python3 bench/run
without clang++ fuzz/run 1
without gcovr tests/coverage
without dpkg-shlibdeps package/run
without doxygen docs/reference
without nm abi/check "$work/library"
without abidiff abi/diff HEAD
users=self
[ "$(id -u)" != 0 ] || without debootstrap package/run --try
rm -rf "$work"
exit "$failed"
