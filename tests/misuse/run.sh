#!/bin/sh
# SPDX-License-Identifier: MIT
# Compiles and links a file of this folder and expects it to fail with the text its line "// expect:" names.
# usage: run.sh "COMPILER OPTIONS" SOURCE_ROOT LIBRARY_FOLDER FILE
compiler=$1; root=$2; library=$3; file=$4
expected=$(sed -n 's,^// expect: ,,p' "$file")
[ "$expected" ] || { echo "$file names no text to expect"; exit 1; }
output=$($compiler -std=c++20 -I"$root" "$file" -o /dev/null -L"$library" -lBedrock 2>&1) && { echo "$file compiled"; exit 1; }
case $output in *"$expected"*) exit 0 ;; esac
echo "$file: expected '$expected' in:"; echo "$output" | head -30
exit 1
