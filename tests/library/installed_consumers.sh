#!/bin/sh
# Installs the library into a folder of its own; a C program finds it by pkg-config and a C++ program by find_package,
# and both run.
# Usage: installed_consumers.sh SOURCE_FOLDER BUILD_FOLDER "C_COMPILER OPTION..." CXX_COMPILER [EMULATOR OPTION...]
set -eu
root=$1 build=$2 cc=$3 cxx=$4
shift 4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >"$work/install.log" || { cat "$work/install.log"; exit 1; }
prefix=$work/prefix
pc=$(find "$prefix" -name dov0610.pc)
libraries=$(dirname "$(dirname "$pc")")
for file in include/dov0610.h include/dov0610_platform.h; do
    test -f "$prefix/$file" || { echo "$file is not installed" >&2; exit 1; }
done
if find "$prefix" -name '*.pc' -o -name '*.cmake' | xargs grep -l -e "$build" -e "$root/"; then
    echo "the installed files above name the build" >&2
    exit 1
fi

export PKG_CONFIG_PATH="$(dirname "$pc")"
$cc -std=c11 -D_DEFAULT_SOURCE -Wall -Wextra -Werror "$root/tests/library/consumer.c" $(pkg-config --cflags --libs dov0610) \
    -Wl,-rpath,"$libraries" -o "$work/consumer_c"
"$@" "$work/consumer_c"

mkdir "$work/cxx"
cp "$root/tests/library/consumer.cpp" "$work/cxx/"
cp "$root/tests/library/consumer_CMakeLists.txt" "$work/cxx/CMakeLists.txt"
cmake -S "$work/cxx" -B "$work/cxx/build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_FIND_ROOT_PATH="$prefix" \
    -DCMAKE_CXX_COMPILER="$cxx" >"$work/cxx.log" &&
    cmake --build "$work/cxx/build" >>"$work/cxx.log" || { cat "$work/cxx.log"; exit 1; }
"$@" "$work/cxx/build/consumer"
