#!/usr/bin/env bash
# usage: same-bits.sh [COMMIT [COUNT]]
# Compares the bits of two states: of COMMIT, by default the last one, and of the files as they are. Each cuts COUNT
# drawn slaps, by default 300, and the real ones of the folder KORMELIN_SLAPS, or ../shared/data/slaps beside the
# repository, where it is there; results in both modes and the images and lists of every stage are hashed. Prints the
# hash over all and fails with the pictures that differ. Any commit with the whole road will do, as the programs of the
# present state are built on the sources of that one. Installs what a build needs and is not there yet.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

commit=${1:-HEAD}
count=${2:-300}
install_missing "${build_packages[@]}" git
use_real_slaps
work=$repository/build/same-bits
mkdir -p "$work"

# hashes SOURCES LIBRARY NAME: builds hash-runs on the sources and writes its lines to NAME.txt.
hashes()
{
    "${CXX:-g++}" -std=c++17 -O2 -I "$1/src" -I "$1/include" -I "$repository/tools" -o "$work/hash-$3" \
        "$repository"/tools/{HashRuns,SlapRun,SlapPicture,SlapPictureScenes}.cpp "$2" -pthread
    "$work/hash-$3" "$count" ${KORMELIN_SLAPS:+"$KORMELIN_SLAPS"} >"$work/$3.txt"
    tail -n 1 "$work/$3.txt"
}

say "$(git -C "$repository" log -1 --format='%h %s' "$commit")"
build_state "$commit" "$work/state"
hashes "$work/state/sources" "$work/state/core/libkormelin_core.a" before
say "As it is"
configure_product
build release kormelin_core >"$work/build.log"
hashes "$repository" "$repository/build/release/libkormelin_core.a" now
if ! cmp -s "$work/before.txt" "$work/now.txt"; then
    echo "These differ:" >&2
    diff "$work/before.txt" "$work/now.txt" >&2 || true
    exit 1
fi
echo "All the same."
