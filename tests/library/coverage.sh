#!/bin/sh
# Runs all tests on a library that counts, and reports the lines and branches of src/ that they reach. Fails below 98 % of
# lines or 92 % of branches. What is not reached is listed in docs/decisions.md, with the reasons.
# Usage: coverage.sh [gcovr option...]  (for example --html-details build/coverage/report.html)
set -eu
cd "$(dirname "$0")/../.."
cmake --preset coverage
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
ctest --preset coverage
# Branches that only the compiler sees (exceptions, unreachable code) are not counted.
report() { gcovr --root . --filter src/ --exclude-throw-branches --exclude-unreachable-branches "$@" build/coverage/src; }
report "$@"
report --branches --print-summary --fail-under-line 98 --fail-under-branch 92
