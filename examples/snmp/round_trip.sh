#!/bin/sh
# One round trip: starts Debian's snmpd on the loopback interface, polls it with snmp_poll, shows beside each value what
# snmpget says, asks with a wrong community, and stops it. What the daemon and its tools read and write is in a folder
# that goes with them.
# Usage: round_trip.sh SNMP_POLL [OPTION...]
# shellcheck disable=SC2086 # the words of the poll command
set -eu

poll=$1 # which an emulator may stand before
shift
configuration=$(dirname "$0")/snmpd.conf
PATH=$PATH:/usr/sbin:/sbin
work=$(mktemp -d)
# The MIBs are not free, so names are numbers. No name server is asked for the name of this machine.
export MIBS='' SNMPCONFPATH="$work" SNMP_PERSISTENT_DIR="$work/state" RPCB0_HOSTNAME=127.0.0.1
daemon=

finish()
{
    if [ -n "$daemon" ]; then
        kill "$daemon" 2>/dev/null || true
        wait "$daemon" 2>/dev/null || true
    fi
    rm -rf "$work"
}
trap finish EXIT
trap 'exit 1' HUP INT TERM

get()
{
    snmpget -v 2c -c demo -On -r 0 -t 1 "$node" "$@"
}

# Fails when another process has the port: the daemon then ends at once.
start()
{
    node=127.0.0.1:$1
    snmpd -f -C -c "$configuration" -Lf "$work/log" -p "$work/pid" "udp:$node" >"$work/errors" 2>&1 &
    daemon=$!
    for _ in 1 2 3 4 5 6 7 8 9 10; do
        kill -0 "$daemon" 2>/dev/null || return 1
        ! get 1.3.6.1.2.1.1.3.0 >/dev/null 2>&1 || return 0
    done
    return 1
}

port=$((20000 + $$ % 20000))
start $port || start $((port + 1)) || start $((port + 2)) || {
    cat "$work/errors" "$work/log" >&2
    exit 1
}

echo "\$ snmp_poll $node --community demo"
$poll "$node" --community demo "$@" >"$work/polled"
cat "$work/polled"

printf '\n%-24s %-28s %s\n' "" snmp_poll snmpget
while read -r _ _ name _ value; do
    case $name in
    1.3.*) printf '%-24s %-28s %s\n' "$name" "$value" "$(get "$name" | cut -d ' ' -f 3-)" ;;
    esac
done <"$work/polled"

printf '\n$ snmp_poll %s --community wrong --timeout 300\n' "$node"
$poll "$node" --community wrong --timeout 300 "$@" || echo "(exit status $?)"
