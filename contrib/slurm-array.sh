#!/usr/bin/env bash
#SBATCH --job-name=kormelin-segment
#SBATCH --requeue
#SBATCH --open-mode=append
# usage: sbatch --array=1-SHARDS slurm-array.sh [-f json|csv] SHARDS LIST DIR [OPTION...]
# A Slurm array job: task I segments every SHARDSth picture of LIST, a name a line, beginning with the Ith, on as many
# threads as it has processors (--cpus-per-task), and writes DIR/I-of-SHARDS.jsonl or .csv. OPTIONs are those of
# kormelin-segment. A task that was stopped, requeued or submitted again, such as by --array=3,7 with the same SHARDS,
# goes on behind the last picture in its file. merge-shards.sh puts the files together. The environment variable
# KORMELIN_SEGMENT names the program if it is not in PATH.
# Exit codes: those of kormelin-segment.
set -euo pipefail

usage()
{
    [ $# -eq 0 ] || printf 'slurm-array: %s\n' "$1" >&2
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
[ $# -ge 3 ] || usage
shards=$1 list=$2 dir=$3 task=${SLURM_ARRAY_TASK_ID:-}
shift 3
[[ $shards =~ ^[1-9][0-9]{0,6}$ ]] || usage "SHARDS is a number from 1, not $shards"
[[ $task =~ ^[0-9]{1,7}$ ]] || usage "this runs as a task of an array job"
((task >= 1 && task <= shards)) || usage "task $task is none of 1 to $shards"

mkdir -p -- "$dir"
# In place of the shell, so that the signals of Slurm reach it.
exec "${KORMELIN_SEGMENT:-kormelin-segment}" --quiet --jobs "${SLURM_CPUS_PER_TASK:-1}" --format "$format" \
    --files-from "$list" --shard "$task/$shards" --resume --output "$dir/$task-of-$shards.$ending" "$@"
