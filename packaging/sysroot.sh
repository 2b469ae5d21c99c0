#!/bin/sh
# Makes a folder that holds what the library and its tests need of Debian on another architecture, unpacked and not
# installed: foreign development packages would push out the machine's own. Needs no root rights.
# Usage: sysroot.sh ARCHITECTURE FOLDER   (a Debian name: s390x, i386)
set -eu
architecture=$1 folder=$2
packages="libc6-dev libc-bin libstdc++6 libicu-dev icu-devtools libgtest-dev libgmock-dev libcli11-dev"

# Made by this script in this state: nothing to do.
made="$architecture: $(cksum <"$0")"
[ "$(cat "$folder/.made" 2>/dev/null)" != "$made" ] || exit 0

rm -rf "$folder"
mkdir -p "$folder"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/state/lists/partial" "$work/cache/archives/partial"
: >"$work/status"

# The machine's own sources and keys, with package lists, cache and installed packages of its own.
private_apt_get()
{
    apt-get -qq -o Dir::State="$work/state" -o Dir::State::status="$work/status" -o Dir::Cache="$work/cache" \
        -o APT::Architecture="$architecture" -o APT::Sandbox::User= -o Acquire::Languages=none "$@" </dev/null
}
# One index that a mirror just renews is no harm as long as the packages are found.
private_apt_get update || echo "sysroot.sh: going on with the package lists that were had" >&2
# shellcheck disable=SC2086 # one word a package
private_apt_get install --download-only --no-install-recommends --yes $packages >"$work/log" || {
    cat "$work/log" >&2
    exit 1
}
for package in "$work"/cache/archives/*.deb; do
    dpkg-deb -x "$package" "$folder"
done

# What points to the root of a machine is to point to the root of the folder.
find "$folder" -type l -lname '/*' | while read -r link; do
    ln -sfrT "$folder$(readlink "$link")" "$link"
done
echo "$made" >"$folder/.made"
