#!/bin/sh
# SPDX-License-Identifier: MIT
# Every source file says under which licence it is. usage: licence.sh SOURCE_FOLDER
cd "$1" || exit 2
missing=$(git ls-files -- '*.cpp' '*.h' '*.py' '*.sh' '*.cmake' '*CMakeLists.txt' check demo '.ci/run' '*/run' '*/check' abi/diff 'fuzz/*.dict' docs/reference docs/reference-filter tests/coverage 2>/dev/null |
    while read -r f; do head -3 "$f" | grep -q 'SPDX-License-Identifier: MIT' || echo "$f"; done)
[ -z "$missing" ] || { echo "without a licence line:"; echo "$missing"; exit 1; }
