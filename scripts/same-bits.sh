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

# hashes SOURCES NAME: builds hash-runs on the sources and writes its lines to NAME.txt.
hashes()
{
    cmake -S "$1" -B "$work/$2" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKORMELIN_BUILD_TESTS=OFF \
        -DKORMELIN_BUILD_EXAMPLES=OFF -DKORMELIN_BUILD_TOOLS=OFF >"$work/$2.log"
    cmake --build "$work/$2" --parallel "$jobs" --target kormelin_core >>"$work/$2.log" || {
        tail -n 20 "$work/$2.log" >&2
        return 1
    }
    "${CXX:-g++}" -std=c++17 -O2 -I "$1/src" -I "$1/include" -I "$repository/tools" -o "$work/$2/hash-runs" \
        "$repository"/tools/{HashRuns,SlapRun,SlapPicture,SlapPictureScenes}.cpp "$work/$2/libkormelin_core.a" -pthread
    "$work/$2/hash-runs" "$count" ${KORMELIN_SLAPS:+"$KORMELIN_SLAPS"} >"$work/$2.txt"
    tail -n 1 "$work/$2.txt"
}

rm -rf "$work/sources"
mkdir "$work/sources"
git -C "$repository" archive "$commit" | tar -x -C "$work/sources"
say "$(git -C "$repository" log -1 --format='%h %s' "$commit")"
hashes "$work/sources" before
say "As it is"
hashes "$repository" now
if ! cmp -s "$work/before.txt" "$work/now.txt"; then
    echo "These differ:" >&2
    diff "$work/before.txt" "$work/now.txt" >&2 || true
    exit 1
fi
echo "All the same."
