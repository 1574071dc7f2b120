#!/usr/bin/env bash
# usage: determinism.sh [REPEATS [BUILD...]]
# Builds the core with g++ and clang++, without optimisation to full, with the processor's own instructions and without
# the wide vectors, and compares the results of each build, as hashes, with those that the repository keeps. Then, with
# the first build: one to eight threads, after a fork, on a heap filled with other values, without the C library's fused
# forms, and REPEATS times (by default 100). The builds have names like g++-O2; without names all are made.
# Real slaps count, too, if KORMELIN_SLAPS or ../shared/data/slaps is there. Takes long: an hour on two cores.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

repeats=${1:-100}
[ $# -gt 0 ] && shift
[[ $repeats =~ ^[1-9][0-9]*$ ]] || { sed -n '2,7s/^# //p' "${BASH_SOURCE[0]}" >&2 && exit 2; }
use_real_slaps
install_missing "${build_packages[@]}" "${test_packages[@]}" clang-14

# name: compiler, flags
declare -A flags=()
names=()
for compiler in g++ clang++-14; do
    for level in -O3 -O0 -O1 -O2; do
        names+=("$compiler$level")
        flags[$compiler$level]="$compiler $level"
    done
    names+=("$compiler-narrow" "$compiler-native")
    flags[$compiler-narrow]="$compiler -O3 -DKORMELIN_NARROW_VECTORS"
    flags[$compiler-native]="$compiler -O3 -march=native"
done
[ $# -eq 0 ] || names=("$@")

failed=0
# check WHAT COMMAND ARGUMENT...
check()
{
    local what=$1
    shift
    printf '%s: ' "$what"
    "$@" || failed=1
}

for name in "${names[@]}"; do
    folder=$repository/build/determinism/$name
    read -r compiler options <<<"${flags[$name]}"
    c_compiler=gcc
    [[ $compiler = g++ ]] || c_compiler=${compiler/++/}
    mkdir -p "$folder"
    cmake -G Ninja -S "$repository" -B "$folder" -DCMAKE_CXX_COMPILER="$compiler" \
        -DCMAKE_C_COMPILER="$c_compiler" -DCMAKE_BUILD_TYPE=Plain \
        -DCMAKE_CXX_FLAGS="$options" -DKORMELIN_BUILD_TESTS=ON >"$folder/log" 2>&1 || { cat "$folder/log" && exit 1; }
    cmake --build "$folder" --parallel "$jobs" --target kormelin_bits >"$folder/log" 2>&1 || { cat "$folder/log" && exit 1; }
    check "$name" "$repository/tests/Bits.sh" "$folder/tests/kormelin_bits" "$repository" --large
done

bits=("$repository/tests/Bits.sh" "$repository/build/determinism/${names[0]}/tests/kormelin_bits" "$repository")
for threads in 1 2 3 4 5 6 7 8; do
    check "$threads threads" "${bits[@]}" --threads "$threads" --large
done
check "after a fork" "${bits[@]}" --fork --threads 4 --large
for byte in 1 85 170 254; do
    check "memory of $byte" env MALLOC_PERTURB_=$byte "${bits[@]}" --large
done
# Processors without these have other forms of the mathematics library.
check "without fused multiplication" env \
    GLIBC_TUNABLES=glibc.cpu.hwcaps=-FMA_Usable,-FMA4_Usable,-AVX2_Usable,-FMA,-FMA4,-AVX2 "${bits[@]}" --large
check "$repeats times" "${bits[@]}" --threads "$jobs" --repeat "$repeats"
exit $failed
