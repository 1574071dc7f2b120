#!/usr/bin/env bash
# usage: fuzz.sh [SECONDS [TARGET...]]
# Builds the fuzzers with clang and runs each target (by default all) for so many seconds (by default 60), beginning with
# its corpus in fuzz/corpus. What it finds new goes to build/fuzz/found/TARGET; an input that breaks a promise stops the
# target, stands in build/fuzz/crash and makes the script fail.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

seconds=${1:-60}
[ $# -gt 0 ] && shift
[[ $seconds =~ ^[0-9]+$ ]] || { sed -n '2,5s/^# //p' "${BASH_SOURCE[0]}" >&2 && exit 2; }
install_missing "${build_packages[@]}" clang-14 libclang-rt-14-dev
configure fuzz
build fuzz kormelin_fuzzers
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
    for source in "$repository"/fuzz/*Fuzz.cpp; do
        targets+=("$(basename "$source" .cpp)")
    done
fi

export ASAN_OPTIONS=detect_leaks=1
failed=0
mkdir -p "$repository/build/fuzz/crash"
for target in "${targets[@]}"; do
    found=$repository/build/fuzz/found/$target
    corpus=$repository/fuzz/corpus/$target
    mkdir -p "$found"
    log=$repository/build/fuzz/$target.log
    say "$target, $seconds seconds"
    options=(-max_total_time="$seconds" -timeout=20 -rss_limit_mb=2500 -print_final_stats=1
        -artifact_prefix="$repository/build/fuzz/crash/$target-")
    [ -e "$repository/fuzz/$target.dict" ] && options+=(-dict="$repository/fuzz/$target.dict")
    [ -d "$corpus" ] || corpus=
    if "$repository/build/fuzz/fuzz/$target" "${options[@]}" "$found" ${corpus:+"$corpus"} >"$log" 2>&1; then
        grep -E 'number_of_executed_units|new_units_added|peak_rss' "$log"
    else
        grep -E 'ERROR|runtime error|broken promise|SUMMARY|Test unit written' "$log" >&2 || tail -n 20 "$log" >&2
        failed=1
    fi
done
exit "$failed"
