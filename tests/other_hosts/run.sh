#!/bin/sh
# Runs the tests that were built for another host, in its emulator: all of them, less the exceptions, each of which it
# names with its reason. An exception that names no test fails.
# Usage: run.sh HOST [OPTION OF CTEST]...   (a preset: s390x, i386)
set -eu
cd "$(dirname "$0")/../.."
host=$1
shift

exceptions=tests/other_hosts/exceptions.txt
if grep -vE '^(#|$|(all|s390x|i386) +[^ ]+ +[^ ])' "$exceptions"; then
    echo "$exceptions: the lines above name no host, test and reason" >&2
    exit 1
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
ctest --preset "$host" --show-only | sed -n 's/^ *Test *#[0-9]*: //p' >"$work/tests"

sed -n "s/^\(all\|$host\)  *\([^ ]*\)  *\(.*\)/\2 \3/p" "$exceptions" >"$work/exceptions"
pattern= missing=
while read -r test reason; do
    echo "$host: not run: $test: $reason"
    grep -qxF -e "$test" "$work/tests" || missing="$missing $test"
    pattern="$pattern|$(echo "$test" | sed 's/[].[*^$+?(){}|\\]/\\&/g')"
done <"$work/exceptions"
[ -z "$missing" ] || {
    echo "$exceptions names tests that do not exist:$missing" >&2
    exit 1
}

[ -z "$pattern" ] || set -- --exclude-regex "^(${pattern#|})\$" "$@"
ctest --preset "$host" "$@"
