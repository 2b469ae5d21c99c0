#!/bin/sh
# Each public header compiles alone as C11 and as C++17, without a warning.
# Usage: headers_alone.sh SOURCE_FOLDER C_COMPILER CXX_COMPILER
set -eu
root=$1 cc=$2 cxx=$3
for header in "$root"/include/*.h; do
    warnings="-Wall -Wextra -Wpedantic -Werror -fsyntax-only"
    # Before C2X a declaration with an empty parameter list is no prototype, which -Wstrict-prototypes would say.
    echo "#include \"$header\"" | "$cc" -std=c11 -D_DEFAULT_SOURCE $warnings -x c -
    echo "#include \"$header\"" | "$cxx" -std=c++17 $warnings -Wold-style-cast -x c++ -
    echo "$(basename "$header"): C11 and C++17"
    if grep -E '^ *# *include' "$header" | grep -vE '<[a-z/]+\.h>|"dov0610_platform.h"'; then
        echo "$(basename "$header") includes what is not a system header" >&2
        exit 1
    fi
done
