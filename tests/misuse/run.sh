#!/bin/sh
# SPDX-License-Identifier: MIT
# Compiles and links each file of this folder and expects it to fail with the text its first line names.
# usage: run.sh COMPILER SOURCE_ROOT LIBRARY_FOLDER FILE
compiler=$1; root=$2; library=$3; file=$4
expected=$(sed -n '1s,^// expect: ,,p' "$file")
output=$($compiler -std=c++20 -I"$root" "$file" -o /dev/null -L"$library" -lBedrock 2>&1) && { echo "$file compiled"; exit 1; }
case $output in *"$expected"*) exit 0 ;; esac
echo "$file: expected '$expected' in:"; echo "$output" | head -30
exit 1
