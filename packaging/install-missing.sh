#!/bin/sh
# Installs the Debian packages of the named groups that are not on the machine yet.
# Usage: install-missing.sh GROUP...
set -eu

packages=
for group in "$@"; do
    case $group in
    build) packages="$packages g++ cmake make ninja-build libicu-dev git pkg-config" ;;
    tools) packages="$packages libcli11-dev icu-devtools" ;;
    tests) packages="$packages libgtest-dev libgmock-dev python3 binutils openssl strace abigail-tools doxygen" ;;
    checks) packages="$packages clang-format clang-tidy python3-yaml doxygen gcovr" ;;
    fuzz) packages="$packages clang llvm libclang-rt-dev python3" ;;
    benchmarks) packages="$packages libbenchmark-dev valgrind libssl-dev libsnmp-dev" ;;
    other_hosts) packages="$packages g++-s390x-linux-gnu g++-i686-linux-gnu qemu-user-static" ;;
    snmp) packages="$packages snmpd snmp" ;;
    *)
        echo "install-missing.sh: there is no group '$group'" >&2
        exit 2
        ;;
    esac
done

missing=
for package in $packages; do
    dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed ||
        missing="$missing $package"
done
[ -n "$missing" ] || exit 0

as_root=
[ "$(id -u)" -eq 0 ] || as_root=sudo
export DEBIAN_FRONTEND=noninteractive
echo "installing:$missing"
$as_root apt-get update -qq

# A daemon is wanted as a program only. Nothing may start it: not its installation (where the machine has no policy of
# its own, there is one for the moment), nor the next boot.
case $missing in
*snmpd*)
    policy=/usr/sbin/policy-rc.d
    if [ ! -e "$policy" ]; then
        trap '$as_root rm -f "$policy"' EXIT
        trap 'exit 1' HUP INT TERM
        printf '#!/bin/sh\nexit 101\n' | $as_root tee "$policy" >/dev/null
        $as_root chmod +x "$policy"
    fi
    ;;
esac
# shellcheck disable=SC2086 # one word a package
$as_root apt-get install -y -qq --no-install-recommends $missing </dev/null >/dev/null

case $missing in
*snmpd*) $as_root update-rc.d snmpd disable >/dev/null ;;
esac
