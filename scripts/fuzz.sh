#!/usr/bin/env bash
# usage: fuzz.sh [-j PROCESSES] [SECONDS [TARGET...]]
#        fuzz.sh -m [TARGET...]
# Builds the fuzzers with clang and runs each target (by default all) for so many seconds (by default 60), one after the
# other or PROCESSES at a time, beginning with its corpus in fuzz/corpus. What it finds new goes to
# build/fuzz/found/TARGET; an input that breaks a promise stops the target, stands in build/fuzz/crash and makes the
# script fail. Ends with a table of executions and processor time; build/fuzz/totals.tsv sums them up over all runs.
# -m: replaces the corpus by the fewest of its inputs and of those found that reach as much code, however often. Inputs
# of at most 2000 bytes are taken over, and an input with a name of its own stays.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

usage()
{
    sed -n '2,10s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2
    exit 2
}

processes=1
merge=
while getopts j:m option; do
    case $option in
        j) processes=$OPTARG ;;
        m) merge=1 ;;
        *) usage ;;
    esac
done
shift $((OPTIND - 1))
seconds=60
if [ -z "$merge" ] && [ $# -gt 0 ]; then
    seconds=$1
    shift
fi
[[ $seconds =~ ^[0-9]+$ && $processes =~ ^[1-9][0-9]*$ ]] || usage
# The sanitizers take the names in their stacks from llvm-14's symbolizer, which they know where to find.
install_missing "${build_packages[@]}" clang-14 libclang-rt-14-dev llvm-14
configure fuzz
build fuzz kormelin_fuzzers
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
    for source in "$repository"/fuzz/*Fuzz.cpp; do
        targets+=("$(basename "$source" .cpp)")
    done
fi

folder=$repository/build/fuzz
export ASAN_OPTIONS=detect_leaks=1:quarantine_size_mb=64:malloc_context_size=6
mkdir -p "$folder/crash"

# fuzz TARGET: one run, whose log and row of the table stand in build/fuzz. Fails as the target does.
fuzz()
{
    local target=$1 log=$folder/$1.log result=0
    local found=$folder/found/$target corpus=$repository/fuzz/corpus/$target
    local options=(-max_total_time="$seconds" -timeout=20 -rss_limit_mb=2500 -print_final_stats=1
        -entropic_scale_per_exec_time=1 -artifact_prefix="$folder/crash/$target-")
    [ -e "$repository/fuzz/$target.dict" ] && options+=(-dict="$repository/fuzz/$target.dict")
    [ -d "$corpus" ] || corpus=
    mkdir -p "$found"
    TIMEFORMAT='%U %S'
    { time "$folder/fuzz/$target" "${options[@]}" "$found" ${corpus:+"$corpus"} >"$log" 2>&1 || result=$?; } \
        2>"$folder/$target.time"
    awk -v target="$target" -v result="$result" -v now="$(date -u +%Y-%m-%dT%H:%M:%SZ)" '
        FNR == NR { processor = $1 + $2; next }
        /^stat::number_of_executed_units/ { executions = $2 }
        /^stat::new_units_added/ { found = $2 }
        END { printf "%s\t%s\t%d\t%.1f\t%d\t%s\n", now, target, executions, processor, found, result ? "broken" : "ok" }
    ' "$folder/$target.time" "$log" >"$folder/$target.row"
    return "$result"
}

# merge_corpus TARGET
merge_corpus()
{
    local target=$1 corpus=$repository/fuzz/corpus/$1 new=$folder/merged/$1 file
    rm -rf "$new"
    mkdir -p "$new" "$corpus" "$folder/found/$target"
    "$folder/fuzz/$target" -merge=1 -use_counters=0 -max_len=2000 "$new" "$corpus" "$folder/found/$target" \
        >"$folder/$target.log" 2>&1
    for file in "$corpus"/*; do
        [[ $(basename "$file") =~ ^[0-9a-f]{40}$ ]] && rm -- "$file"
    done
    cp -- "$new"/* "$corpus"
    echo "$target: $(find "$corpus" -type f | wc -l) inputs, $(du -sbh "$corpus" | cut -f 1)"
}

if [ -n "$merge" ]; then
    for target in "${targets[@]}"; do
        merge_corpus "$target"
    done
    exit 0
fi

failed=0
running=0
for target in "${targets[@]}"; do
    if [ "$running" -ge "$processes" ]; then
        wait -n || failed=1
        running=$((running - 1))
    fi
    say "$target, $seconds seconds"
    fuzz "$target" &
    running=$((running + 1))
done
while [ "$running" -gt 0 ]; do
    wait -n || failed=1
    running=$((running - 1))
done

for target in "${targets[@]}"; do
    cat "$folder/$target.row" >>"$folder/totals.tsv"
    grep -q 'ok$' "$folder/$target.row" && continue
    echo "$target:" >&2
    grep -E 'ERROR|runtime error|broken promise|SUMMARY|Test unit written' "$folder/$target.log" >&2 ||
        tail -n 20 "$folder/$target.log" >&2
done
say "Executions and seconds of processor time, this run and all runs"
awk -F '\t' -v targets="${targets[*]}" '
    { all[$2] += $3; allTime[$2] += $4; run[$2] = $3; runTime[$2] = $4; result[$2] = $6 }
    function row(name, a, b, c, d, e) { printf "%-16s %12d %9.1f %14d %11.1f  %s\n", name, a, b, c, d, e }
    END {
        n = split(targets, name, " ")
        for (i = 1; i <= n; ++i) {
            t = name[i]
            row(t, run[t], runTime[t], all[t], allTime[t], result[t])
            a += run[t]; b += runTime[t]; c += all[t]; d += allTime[t]
        }
        row("together", a, b, c, d, "")
    }
' "$folder/totals.tsv"
exit "$failed"
