#!/bin/sh
# Runs clang-tidy over the library, the tools, the examples and the catalogue check. Any finding fails.
# Usage: clang_tidy.sh BUILD_FOLDER
set -eu
build=$1
# Options that only the other compiler knows.
filtered=$(mktemp -d)
trap 'rm -rf "$filtered"' EXIT
sed 's/ -fno-plt//g; s/ -Wcast-align=strict//g' "$build/compile_commands.json" >"$filtered/compile_commands.json"
run-clang-tidy -quiet -p "$filtered" "$(pwd)/(src|tools|examples|messages)/.*" >"$filtered/report" 2>&1 || {
    grep -vE '^clang-tidy|warnings generated|^Suppressed|^Use -' "$filtered/report"
    exit 1
}
if grep -E '(warning|error):' "$filtered/report"; then
    exit 1
fi
echo "$(grep -c '^clang-tidy' "$filtered/report") files without a finding"
