#!/bin/sh
# Instructions of one call with tracing off, counted by callgrind, beside a plain function and calloc.
# Each count is the difference between a run of 20,000 calls and one of 10,000, so that start-up does not count; the
# empty loop is taken off as well. The counts repeat exactly for the same binaries.
# Usage: instruction_counts.sh [BUILD_FOLDER]
set -eu
cd "$(dirname "$0")/.."
packaging/install-missing.sh build benchmarks
build=${1:-build/release}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cc -O2 -Wall -Iinclude bench/call_overhead.c "$build/libdov0610.so" -Wl,-rpath,"$(realpath "$build")" -o "$work/call_overhead"

instructions()
{
    env -u DOV_TRACE LD_BIND_NOW=1 valgrind --tool=callgrind --callgrind-out-file=/dev/null "$work/call_overhead" "$1" "$2" 2>&1 |
        sed -n 's/.*Collected : *//p'
}

per_call()
{
    echo $((($(instructions "$1" 20000) - $(instructions "$1" 10000)) / 10000))
}

empty=$(per_call e)
printf '%-48s %6s\n' 'call' 'instructions'
for row in 'f:a plain function of the program' 'p:DOV0_IsValidPointer' \
    'c:calloc and free of 64 bytes' 's:DOV0_GetStorage and DOV0_FreeStorage of 64 bytes'; do
    printf '%-48s %6d\n' "${row#*:}" $(($(per_call "${row%%:*}") - empty))
done
