#!/bin/sh
# SPDX-License-Identifier: MIT
# The layout of the C++: clang-format has nothing to change, and no line is longer than 120 columns, which clang-format
# does not see to in comments and texts. usage: format.sh SOURCE_FOLDER
cd "$1" || exit 2
command -v clang-format >/dev/null || { echo "clang-format is not installed: apt install clang-format" >&2; exit 2; }
files=$(git ls-files -- '*.cpp' '*.h') || exit 2
[ "$files" ] || { echo "git lists no files" >&2; exit 2; }
failed=0
# The names have no spaces.
# shellcheck disable=SC2086
clang-format --dry-run -Werror $files || failed=1
# shellcheck disable=SC2086
if LC_ALL=C.UTF-8 grep -nHE '^.{121,}' $files; then
    echo "longer than 120 columns" >&2
    failed=1
fi
exit $failed
