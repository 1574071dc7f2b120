#!/usr/bin/env bash
# usage: performance.sh [COMMIT]
# Measures the time of every operator, stage and whole run, the instructions of the operators under callgrind and the
# memory of runs, and writes the tables of docs/performance.md anew, the one with the goals first. Prints that table.
# With COMMIT the times and instructions of that state are measured, too, and kept in docs/performance-before.json for
# the columns "before". Fails if a goal is not reached or could not be measured. Uses real slap pictures as bench.sh does.
# Wants a quiet machine, and takes about four minutes beside the build. Installs what it needs and is not there yet.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

install_missing "${build_packages[@]}" "${bench_packages[@]}" "${opencv_packages[@]}" git python3 valgrind
use_real_slaps
work=$repository/build/performance
programs=$repository/build/release
mkdir -p "$work"

# measure NAME BENCHMARKS FILTER SECONDS: the medians of repetitions of so many seconds, taken in turns in random order.
measure()
{
    "$2" --benchmark_filter="$3" --benchmark_min_time="$4" --benchmark_repetitions=11 \
        --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true \
        --benchmark_out="$work/$1.json" --benchmark_out_format=json >"$work/$1.log" 2>&1 || {
        tail -n 5 "$work/$1.log" >&2
        return 1
    }
}

# measure_times NAME BENCHMARKS: threads among themselves and longer, as the system takes its time to spread new ones.
measure_times()
{
    measure "$1-times" "$2" '-^Threads/' 0.03
    measure "$1-threads" "$2" '^Threads/' 0.3
}

# count NAME COUNT-OPERATORS: instructions of each operator, and of the functions in a whole run in mode 0.
count()
{
    local function
    for function in 'counted_*' counted_Run_mode0_upright; do
        valgrind -q --tool=callgrind --toggle-collect="$function" --callgrind-out-file="$work/callgrind.out" "$2" \
            "$work/upright.bmp" "$work/leaning.bmp"
        if [ "$function" = 'counted_*' ]; then
            callgrind_annotate --inclusive=yes --threshold=100 "$work/callgrind.out" >"$work/$1-operators.txt"
        else
            callgrind_annotate --inclusive=no --threshold=99 "$work/callgrind.out" >"$work/$1-functions.txt"
        fi
    done
}

say "Building"
configure_product -DKORMELIN_BUILD_BENCH=ON
build release kormelin_bench count-operators make-slap run-many
"$programs/make-slap" four-fingers-right 19685 "$work/upright.bmp" >/dev/null
"$programs/make-slap" leaning-hand-left 19685 "$work/leaning.bmp" >/dev/null
before=()
if [ $# -gt 0 ]; then
    say "Building $(git -C "$repository" log -1 --format='%h %s' "$1")"
    state=$work/state
    build_state "$1" "$state"
    compile=("${CXX:-g++}" -std=c++17 -O2 -I "$state/sources/src" -I "$state/sources/include" -I "$repository/tools")
    (
        cd "$repository"
        "${compile[@]}" -o "$work/before-count" bench/CountOperators.cpp "$state/core/libkormelin_core.a" -pthread
        # The benchmarks of what this state has only are left out, and so is OpenCV.
        "${compile[@]}" -o "$work/before-bench" bench/{BenchPictures,FilterBench,OperatorBench,SegmentBench,StageBench}.cpp \
            tools/{SlapRun,SlapPicture,SlapPictureScenes}.cpp "$state/core/libkormelin_core.a" \
            -lbenchmark_main -lbenchmark -pthread
    )
    before=(--before "$(git -C "$repository" rev-parse --short "$1")")
fi

say "Times"
measure_times now "$programs/kormelin_bench"
[ $# -eq 0 ] || measure_times before "$work/before-bench"
say "Instructions"
count now "$programs/count-operators"
[ $# -eq 0 ] || count before "$work/before-count"
say "Memory"
failed=0
"$repository/scripts/measure.sh" >"$work/memory.txt" || failed=1
"${CXX:-c++}" --version | sed -n 1p >"$work/compiler.txt"
python3 "$repository/scripts/performance.py" "$work" "$repository/docs" "${before[@]}" || failed=1
exit $failed
