#!/bin/sh
# SPDX-License-Identifier: MIT
# The debugger's view of objects, in a running program and in its core. usage: run.sh PROGRAM LIBRARY_FOLDER WORK_FOLDER [stripped]
here=$(cd "$(dirname "$0")" && pwd)
program=$1 library=$2 work=$3
command -v gdb >/dev/null 2>&1 || { echo "SKIPPED: gdb is not installed"; exit 77; }
rm -rf "$work"; mkdir -p "$work"
LC_ALL=C.UTF-8; export LC_ALL
failures=0
look() { # look WHAT GDB-ARGUMENTS...
    what=$1; shift
    timeout 120 gdb -nx -nh -batch -iex "set debuginfod enabled off" -iex "add-auto-load-safe-path $library" "$@" -x "$here/look.py" >"$work/log" 2>&1
    if ! grep -q '^looked: everything as expected$' "$work/log" || grep -q 'Traceback\|Python Exception' "$work/log"; then
        echo "== $what"; tail -60 "$work/log"; failures=1
    fi
}
look "a running program" -ex 'break stop' -ex run -ex up "$program"
gdb -nx -nh -batch -iex "set debuginfod enabled off" -ex 'break stop' -ex run -ex "generate-core-file $work/core" "$program" >"$work/log" 2>&1
[ -e "$work/core" ] || { tail "$work/log"; echo "no core file"; exit 1; }
look "a core file" -ex "core-file $work/core" -ex up "$program"
# Without the library's debug information the fixed layouts serve.
mkdir "$work/bare"
cp "$library"/libBedrock.so.*.*[0-9] "$library"/libBedrock.so.*-gdb.py "$work/bare"
for file in "$work"/bare/libBedrock.so.*[0-9]; do strip --strip-debug "$file"; done
soname=$(cd "$library" && ls libBedrock.so.? | head -1)
[ -e "$work/bare/$soname" ] || ln -s "$(basename "$file")" "$work/bare/$soname"
library=$work/bare
look "without debug information" -ex "set environment LD_LIBRARY_PATH $work/bare" -ex 'break stop' -ex run -ex up "$program"
exit $failures
