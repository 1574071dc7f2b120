#!/usr/bin/env bash
# usage: parallel-ssh.sh [-f json|csv] HOSTS SHARDS LIST DIR [OPTION...]
# Segments the pictures of LIST, a name a line, on the machines of HOSTS, a login a line as ssh takes it (":" is this
# machine), by GNU parallel. The list is split into SHARDS, several for each machine; a machine works on one at a time,
# on all its processors, and gets the next one when it has done. Each goes to DIR/I-of-SHARDS.jsonl or .csv, and all
# together to DIR/results.jsonl or .csv, as a single run would have written it. OPTIONs are those of kormelin-segment.
# After a stop the same command goes on where it was; a shard that fails is tried on up to three machines. All machines
# must see the present folder, LIST, DIR and the pictures under the same names, and have kormelin-segment in PATH, or
# where the environment variable KORMELIN_SEGMENT says.
# Exit codes: those of a single run of kormelin-segment; 4, too, if a machine cannot be reached.
set -euo pipefail

usage()
{
    [ $# -eq 0 ] || printf 'parallel-ssh: %s\n' "$1" >&2
    sed -n 's/^# usage: /usage: /p' "$0" >&2
    exit 2
}

format=json
while getopts f: option; do
    case $option in
        f) format=$OPTARG ;;
        *) usage ;;
    esac
done
shift $((OPTIND - 1))
case $format in
    json) ending=jsonl ;;
    csv) ending=csv ;;
    *) usage "results are json or csv, not $format" ;;
esac
[ $# -ge 4 ] || usage
hosts=$1 shards=$2 list=$3 dir=$4
shift 4
[[ -f $hosts && -r $hosts ]] || usage "cannot read $hosts"
[[ $shards =~ ^[1-9][0-9]{0,5}$ ]] || usage "SHARDS is a number from 1, not $shards"
[[ -f $list && -r $list ]] || usage "cannot read $list"
for option; do
    case $option in
        -r | --recursive | -0 | --null) usage "LIST holds files, a name a line: $option does not fit" ;;
    esac
done
[[ $(parallel --version 2>&1) == "GNU parallel"* ]] || { echo "parallel-ssh: GNU parallel is missing" >&2 && exit 4; }

# quote WORD...: as any shell of POSIX takes it for these words.
quote()
{
    local word mark="'" marked="'\\''"
    for word; do printf "'%s' " "${word//$mark/$marked}"; done
}

# Standard input of GNU parallel. A finished shard is a success to it, whatever is in the pictures; the rest is tried
# again.
commands()
{
    local shard
    for ((shard = 1; shard <= shards; ++shard)); do
        printf 'sh -c %s\0' "$(quote "cd $(quote "$PWD") || exit 4
            $(quote "${KORMELIN_SEGMENT:-kormelin-segment}" --quiet --format "$format" --files-from "$list" \
                --shard "$shard/$shards" --resume --output "$dir/$shard-of-$shards.$ending" "$@")
            status=\$?
            case \$status in 0 | 1 | 3) exit 0 ;; esac
            exit \$status")"
    done
}

mkdir -p -- "$dir" || exit 4
log=$dir/parallel.log
bar=()
[ ! -t 2 ] || bar=(--bar)
commands "$@" | parallel --null --sshloginfile "$hosts" --jobs 1 --retries 3 --joblog "$log" "${bar[@]}" &
engine=$!
stop()
{
    # More than once: it is deaf until its jobs have started.
    while kill -s TERM "$engine" 2>/dev/null; do sleep 0.2; done
    exit "$1"
}
trap 'stop 129' HUP
trap 'stop 130' INT
trap 'stop 143' TERM
status=0
wait "$engine" || status=$?
trap - HUP INT TERM
if [ "$status" -ne 0 ]; then
    # The worst of the shards; with 126, 127 and 255 the shell and ssh tell that a program or machine is not there.
    worst=$(awk -F '\t' 'NR > 1 { code[$1] = $8 > 0 ? 128 + $8 : $7 }
        END {
            for (job in code) {
                exit_code = code[job] == 126 || code[job] == 127 || code[job] == 255 ? 4 : code[job]
                if (exit_code > worst) worst = exit_code
            }
            print worst + 0
        }' "$log")
    echo "parallel-ssh: not all shards are done, see $log; the same command goes on" >&2
    exit $((worst > 0 ? worst : 4))
fi
files=()
for ((shard = 1; shard <= shards; ++shard)); do files+=("$dir/$shard-of-$shards.$ending"); done
pictures=$(LC_ALL=C grep -ac $'[^\r]' -- "$list") || [ "$pictures" = 0 ]
"$(dirname -- "$0")/merge-shards.sh" -n "$pictures" "$dir/results.$ending" "${files[@]}"
