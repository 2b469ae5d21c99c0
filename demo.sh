#!/bin/sh
# Installs what is missing, builds, starts an agent on a sample product specification, speaks three languages, polls a node.
set -eu
cd "$(dirname "$0")"
packaging/install-missing.sh build tools snmp

build=build/demo
mkdir -p "$build"
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=OFF \
    -DDOV0_BUILD_TOOLS=ON -DDOV0_BUILD_EXAMPLES=ON -DDOV0_BUILD_MESSAGES=ON >"$build/log" 2>&1 && cmake --build "$build" >>"$build/log" 2>&1 || {
    cat "$build/log"
    exit 1
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo "== A product specification: written, enciphered, checked"
cat examples/product_spec_agent.txt
for sample in agent refused; do
    "$build/tools/dovpsf" compile "examples/product_spec_$sample.txt" -o "$work/$sample"
done
"$build/tools/dovpsf" check "$work/agent" --instance inst1

echo
echo "== An agent starts on it"
"$build/examples/agent_start" "$work/agent" "$work/refused" inst1

echo
echo "== A message of its catalogue in three languages"
for locale in en_US de_DE ja_JP; do
    LC_ALL=$locale.UTF-8 DOVP_RB_PATH=$build/messages "$build/examples/operator_message" S 403 192.0.2.1 genErr 2
done

echo
echo "== A data provider polls a node: Debian's snmpd, started for it on this machine"
DOVP_RB_PATH=$build/messages examples/snmp/round_trip.sh "$build/examples/snmp_poll" --product-spec "$work/agent" \
    --instance inst1
