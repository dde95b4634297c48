#!/bin/sh
# Installs the library into a scratch prefix, moves the prefix, and builds and runs the program of this
# folder with what is there. usage: run.sh CMAKE BUILD_FOLDER WORK_FOLDER
set -e
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$3"
"$1" --install "$2" --prefix "$3/first" >/dev/null
mv "$3/first" "$3/moved"
"$1" -S "$here" -B "$3/build" -DCMAKE_PREFIX_PATH="$3/moved" -DCMAKE_BUILD_TYPE=Debug >/dev/null
"$1" --build "$3/build" >"$3/log" 2>&1 || { cat "$3/log"; exit 1; }
"$3/build/outside"
needed=$(ldd "$3"/moved/lib*/libBedrock.so "$3"/moved/lib/*/libBedrock.so 2>/dev/null | awk '{print $1}' | sed 's,.*/,,' | sort -u)
for library in $needed; do
    case $library in
        linux-vdso*|libstdc++*|libm.so*|libgcc_s*|libc.so*|ld-linux*|moved*|*:) ;;
        *) echo "libBedrock.so needs $library"; exit 1 ;;
    esac
done
