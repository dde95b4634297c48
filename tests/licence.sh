#!/bin/sh
# SPDX-License-Identifier: MIT
# Every source file says under which licence it is. usage: licence.sh SOURCE_FOLDER
cd "$1" || exit 2
files=$(git ls-files -- '*.cpp' '*.h' '*.py' '*.sh' '*.cmake' '*CMakeLists.txt' 'cmake/*.in' '*.map' docs/Doxyfile check demo '.ci/run' '*/run' '*/check' abi/diff 'fuzz/*.dict' docs/reference docs/reference-filter tests/coverage) || exit
[ "$files" ] || { echo "git lists no files"; exit 1; }
missing=$(printf '%s\n' "$files" | while read -r f; do head -3 "$f" | grep -q 'SPDX-License-Identifier: MIT' || echo "$f"; done)
[ -z "$missing" ] || { echo "without a licence line:"; echo "$missing"; exit 1; }
