#!/bin/sh
# The library's interface is that of the baseline in this folder: dov0610.abi has the exported functions with their
# types as abidw writes them, dov0610.constants the constants of the headers. Header, symbol map and manual agree.
# Whatever differs fails, also what old programs would not notice; an intended change renews the baseline and is
# reviewed as a change of those two files.
# Usage: interface.sh check|renew [LIBRARY [C_COMPILER]]
set -eu
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
action=${1-}
library=${2:-$root/build/release/libdov0610.so}
cc=${3:-cc}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for tool in abidw abidiff doxygen python3 "$cc"; do
    command -v "$tool" >/dev/null || { echo "interface.sh: there is no $tool" >&2; exit 1; }
done

# No place in a file, no path, and no libraries, which have a check of their own.
abidw --no-show-locs --no-corpus-path --no-comp-dir-path --no-elf-needed --exported-interfaces-only \
    --drop-private-types --headers-dir "$root/include" --out-file "$work/dov0610.abi" "$library"
grep -q '<function-decl ' "$work/dov0610.abi" || { echo "$library has no debug information" >&2; exit 1; }

# The manual as data. Its warnings are the business of the manual itself, and some are wrong without HTML.
(cd "$root" && { cat docs/Doxyfile && cat <<END
OUTPUT_DIRECTORY = $work
GENERATE_HTML = NO
GENERATE_XML = YES
WARNINGS = NO
WARN_AS_ERROR = NO
WARN_IF_INCOMPLETE_DOC = NO
WARN_NO_PARAMDOC = NO
END
} | doxygen -)
python3 "$here/manual.py" "$work/xml" "$root" "$work/constants.c"
"$cc" -std=c11 -D_DEFAULT_SOURCE -I"$root/include" "$work/constants.c" -o "$work/constants"
"$work/constants" >"$work/dov0610.constants"

case $action in
check)
    status=0
    abidiff --harmless "$here/dov0610.abi" "$work/dov0610.abi" || status=1
    diff -u "$here/dov0610.constants" "$work/dov0610.constants" || status=1
    [ "$status" -eq 0 ] || {
        echo "the interface is not that of the baseline; if that is meant, run tests/library/interface.sh renew" >&2
        exit 1
    }
    echo "$(grep -c '<function-decl ' "$work/dov0610.abi") functions and $(wc -l <"$work/dov0610.constants") constants are those of the baseline"
    ;;
renew)
    cp "$work/dov0610.abi" "$work/dov0610.constants" "$here/"
    ;;
*)
    echo "usage: interface.sh check|renew [LIBRARY [C_COMPILER]]" >&2
    exit 2
    ;;
esac
