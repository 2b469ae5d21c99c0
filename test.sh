#!/bin/sh
# Installs what is missing, builds with warnings as errors, and runs all tests.
set -eu
cd "$(dirname "$0")"
packaging/install-missing.sh build tools tests snmp
cmake --preset release
cmake --build --preset release
ctest --preset release "$@"
