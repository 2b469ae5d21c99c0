#!/bin/sh
# Fuzzes, after building what is missing. Every finding fails.
# Usage: run.sh MINUTES [TARGET...]         MINUTES in total, shared out evenly among the targets
#        run.sh --each SECONDS [TARGET...]  as long for each target
# JOBS targets run at a time, 1 unless set. Inputs that reach something new are kept in build/fuzz/corpus/TARGET and used
# by the next run; an input that ends a target goes to build/fuzz/findings.
set -eu
cd "$(dirname "$0")/.."

usage()
{
    sed -n 's/^# \(Usage.*\|  *run\.sh.*\)/\1/p' "$0" >&2
    exit 2
}

is_number()
{
    case $1 in '' | *[!0-9]* | 0*) return 1 ;; esac
}

each=
if [ "${1-}" = --each ]; then
    is_number "${2-}" || usage
    each=$2
    shift 2
else
    is_number "${1-}" || usage
    minutes=$1
    shift
fi
if [ $# -eq 0 ]; then
    for folder in fuzz/corpus/*/; do
        set -- "$@" "$(basename "$folder")"
    done
fi
[ -n "$each" ] || each=$((minutes * 60 / $#))

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
build=build/fuzz
rm -rf $build/findings $build/logs
mkdir -p $build/findings $build/logs $build/work

export ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1:detect_stack_use_after_return=1:strict_string_checks=1:quarantine_size_mb=16:malloc_context_size=5
export TMPDIR="$PWD/$build/work"

fuzz_one()
{
    dictionary=
    [ ! -f "fuzz/dictionaries/$1" ] || dictionary=-dict=fuzz/dictionaries/$1
    mkdir -p "$build/corpus/$1"
    # shellcheck disable=SC2086 # one word or none
    "$build/fuzz/fuzz_$1" -max_total_time="$2" -max_len=800 -timeout=20 -rss_limit_mb=1024 -print_final_stats=1 \
        $dictionary -artifact_prefix="$build/findings/$1-" "$build/corpus/$1" "fuzz/corpus/$1" \
        >"$build/logs/$1" 2>&1 && : >"$build/logs/$1.passed" || true
}

running=0
for target in "$@"; do
    fuzz_one "$target" "$each" &
    running=$((running + 1))
    if [ $running -ge "${JOBS:-1}" ]; then
        wait
        running=0
    fi
done
wait

failed=0
total=0
printf '%-20s %12s\n' target executions
for target in "$@"; do
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$build/logs/$target")
    total=$((total + ${executions:-0}))
    verdict=
    if [ ! -f "$build/logs/$target.passed" ]; then
        verdict="a finding, see below"
        failed=$((failed + 1))
    fi
    printf '%-20s %12s %s\n' "$target" "${executions:-?}" "$verdict"
done
printf '%-20s %12s in %d s each, %d targets with a finding\n' total "$total" "$each" "$failed"
for target in "$@"; do
    if [ ! -f "$build/logs/$target.passed" ]; then
        printf '\n%s:\n' "$target"
        tail -n 60 "$build/logs/$target"
    fi
done
[ "$failed" -eq 0 ]
