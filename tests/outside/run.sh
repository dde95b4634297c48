#!/bin/sh
# SPDX-License-Identifier: MIT
# Builds and runs the program of this folder with the library from outside: from an installed prefix that was moved
# (package, pkgconfig), or from its sources (subdirectory, fetch).
# usage: run.sh HOW CMAKE SOURCE_FOLDER BUILD_FOLDER WORK_FOLDER
set -e
here=$(cd "$(dirname "$0")" && pwd)
how=$1 cmake=$2 source=$3 build=$4 work=$5
rm -rf "$work"; mkdir -p "$work"
case $how in
package|pkgconfig)
    "$cmake" --install "$build" --prefix "$work/first" >/dev/null
    mv "$work/first" "$work/moved"
    for library in "$work"/moved/lib*/libBedrock.so "$work"/moved/lib/*/libBedrock.so; do [ ! -e "$library" ] || break; done
    PKG_CONFIG_PATH=$(dirname "$library")/pkgconfig; LD_LIBRARY_PATH=
    export PKG_CONFIG_PATH
    [ "$how" = pkgconfig ] && { LD_LIBRARY_PATH=$(dirname "$library"); export LD_LIBRARY_PATH; }
    ;;
esac
"$cmake" -G Ninja -S "$here" -B "$work/build" -DHOW="$how" -DBEDROCK_SOURCE="$source" -DCMAKE_PREFIX_PATH="$work/moved" -DCMAKE_BUILD_TYPE=Debug \
    ${CCACHE:+-DCMAKE_CXX_COMPILER_LAUNCHER="$CCACHE"} >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
"$cmake" --build "$work/build" >"$work/log" 2>&1 || { tail -50 "$work/log"; exit 1; }
"$work/build/outside"
[ "$how" = package ] || exit 0
# The examples by themselves, as they are installed with the guide, whose links lead to what is there too.
documents=$work/moved/share/doc/libbedrock-dev
for page in README.md docs/guide.md docs/debugging.md examples/README.md; do
    for link in $(grep -o '](\([^):]*\))' "$documents/$page" | sed 's/^](//; s/)$//; s/#.*//' | grep -v 'docs/commands.md$'); do
        [ -e "$(dirname "$documents/$page")/$link" ] || { echo "$page of the installed documents: no $link"; exit 1; }
    done
done
{ "$cmake" -G Ninja -S "$documents/examples" -B "$work/examples" -DCMAKE_PREFIX_PATH="$work/moved" -DCMAKE_BUILD_TYPE=Debug \
    ${CCACHE:+-DCMAKE_CXX_COMPILER_LAUNCHER="$CCACHE"} && "$cmake" --build "$work/examples" && cd "$work/examples" &&
    "${cmake%cmake}ctest" --output-on-failure; } >"$work/log" 2>&1 || { tail -50 "$work/log"; exit 1; }
needed=$(ldd "$library" | awk '{print $1}' | sed 's,.*/,,' | sort -u)
for name in $needed; do
    case $name in
        linux-vdso*|libstdc++*|libm.so*|libgcc_s*|libc.so*|ld-linux*|*:) ;;
        *) echo "libBedrock.so needs $name"; exit 1 ;;
    esac
done
# The tools of the moved tree find the library and its data there.
bin=$work/moved/bin
"$bin/plist" --list-encodings | grep -q 'Shift JIS' || { echo "the moved plist finds no encodings"; exit 1; }
printf '("\244\242")' >"$work/euc"
[ "$("$bin/plist" --encoding 3 print "$work/euc")" = '("あ")' ] || { echo "the moved plist reads no Japanese EUC"; exit 1; }
"$bin/when" --zone GMT show @0 | grep -q '^1970-01-01' || { echo "the moved when does not run"; exit 1; }
