#!/bin/sh
# Two builds of the library from two folders are identical, and hold no path of either.
# Usage: repeatable_build.sh SOURCE_FOLDER CXX_COMPILER
set -eu
root=$1 cxx=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export SOURCE_DATE_EPOCH=1155694685

for copy in first another/second; do
    mkdir -p "$work/$copy"
    (cd "$root" && tar cf - CMakeLists.txt cmake include src) | tar xf - -C "$work/$copy"
    cmake -S "$work/$copy" -B "$work/$copy/out" -DBUILD_TESTING=OFF -DDOV0_BUILD_TOOLS=OFF -DDOV0_BUILD_EXAMPLES=OFF -DDOV0_BUILD_BENCHMARKS=OFF \
        -DDOV0_BUILD_MESSAGES=OFF \
        -DCMAKE_CXX_COMPILER="$cxx" >"$work/log" && cmake --build "$work/$copy/out" --parallel 2 >>"$work/log" ||
        { cat "$work/log"; exit 1; }
done
cmp "$work/first/out/libdov0610.so" "$work/another/second/out/libdov0610.so"
library=$work/first/out/libdov0610.so
if strings -a "$library" | grep -F -e "$work" -e "$root"; then
    echo "the library holds the paths above" >&2
    exit 1
fi
strings -a "$library" | grep -qxF 'Aug 16 2006' || { echo "the library does not hold its compile date" >&2; exit 1; }
strings -a "$library" | grep -qxF '02:18:05' || { echo "the library does not hold its compile time" >&2; exit 1; }
sha256sum "$library" | cut -d' ' -f1
