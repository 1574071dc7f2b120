#!/usr/bin/env bash
# usage: ScaleTest.sh KORMELIN_SEGMENT MAKE_SLAP CONTRIB
# The scripts for archives on many machines, as far as they go without these: shards that are merged to the bytes and
# the exit code of the single run, what the merge refuses, wrong usage. scripts/test-scale.sh does it with Slurm and
# ssh.
set -euo pipefail
program=$(realpath -- "$1")
# shellcheck disable=SC2034 # for the file below
make_slap=$(realpath -- "$2")
contrib=$(realpath -- "$3")
. "$(dirname -- "$(realpath -- "$0")")/tools/segment/ProgramTools.sh"

# contributed STATUS SCRIPT ARGUMENT...: one of the scripts must end with this status; its errors are in $errors.
contributed()
{
    local expected=$1 script=$2 status=0
    shift 2
    "$contrib/$script.sh" "$@" >out 2>errors </dev/null || status=$?
    out=$(<out)
    errors=$(<errors)
    [ "$status" -eq "$expected" ] || fail "$script.sh $* ended with $status, not $expected: $out $errors"
}

# --- the scripts parse, and tell how they are used
for script in merge-shards parallel-ssh slurm-array; do
    bash -n "$contrib/$script.sh"
    for wrong in "" "-x" "-h" "one"; do
        # shellcheck disable=SC2086 # no argument, where there is none
        contributed 2 "$script" $wrong
        says "$script.sh $wrong" "usage: "
        says "$script.sh $wrong" "$script.sh"
    done
done
: >empty-list
contributed 2 merge-shards -n many merged shard
for format in xml text ''; do
    contributed 2 slurm-array -f "$format" 3 empty-list shards
    contributed 2 parallel-ssh -f "$format" empty-list 3 empty-list shards
done
for shards in 0 -1 1.5 many 12345678 ''; do
    contributed 2 slurm-array "$shards" empty-list shards
    contributed 2 parallel-ssh empty-list "$shards" empty-list shards
done
contributed 2 parallel-ssh missing 3 empty-list shards
says "no hosts" "cannot read missing"
contributed 2 parallel-ssh empty-list 3 missing shards
says "no list" "cannot read missing"
contributed 2 parallel-ssh empty-list 3 empty-list shards --recursive
contributed 2 slurm-array 3 empty-list shards
says "no task" "array job"
for task in 0 4 x; do
    SLURM_ARRAY_TASK_ID=$task contributed 2 slurm-array 3 empty-list shards
    says "a wrong task" "task"
done
[ ! -e shards ] || fail "wrong usage leaves $(ls -R shards)"

# --- twelve pictures: each outcome, and names that CSV has to quote
for number in 1 2 3; do
    draw four-fingers-right "right $number.bmp" $((7000 + 500 * number))
    draw four-fingers-left "left,$number.bmp" $((7000 + 400 * number))
    draw three-fingers "\"three\"$number.bmp" $((7000 + 300 * number))
done
{
    printf 'P5 300 300 255\n'
    head -c 90000 /dev/zero | tr '\0' '\360'
} >uniform.pgm
: >empty.bmp
head -c 20000 "right 1.bmp" >short.bmp
good=("right 1.bmp" "left,1.bmp" '"three"1.bmp' "right 2.bmp" "left,2.bmp" '"three"2.bmp')
few=("${good[@]}" uniform.pgm "right 3.bmp")
all=(empty.bmp "${few[@]}" "left,3.bmp" short.bmp '"three"3.bmp')

# split FORMAT SHARDS PICTURE...: the single run in the file single, its exit code in $code, the shards in 1, 2, ... The
# pictures are of one resolution, since one of them tells none.
split()
{
    local format=$1 shards=$2 shard
    shift 2
    printf '%s\n' "$@" >list
    code=0
    "$program" -q --ppi 250 --files-from list --format "$format" --output single || code=$?
    rm -f [0-9]*
    for ((shard = 1; shard <= shards; ++shard)); do
        "$program" -q --ppi 250 --files-from list --format "$format" --shard "$shard/$shards" --output "$shard" || true
    done
}
same_as_single()
{
    cmp single merged || fail "$1: the merged results are not those of the single run"
    rm merged
}
refuses()
{
    contributed 4 merge-shards "${@:3}"
    says "$1" "$2"
    if [ -e merged ] || compgen -G 'merged?*' >/dev/null; then fail "$1: refused, but written"; fi
}

for format in json csv; do
    split $format 3 "${good[@]}"
    contributed 0 merge-shards -n 6 merged 1 2 3
    same_as_single "$format, all segmented"
    split $format 3 "${few[@]}"
    contributed 1 merge-shards -n 8 merged 1 2 3
    same_as_single "$format, a picture without a finger"
    split $format 3 "${all[@]}"
    [ "$code" -eq 3 ] || fail "the single run ends with $code"
    contributed 3 merge-shards -n 12 merged 1 2 3
    same_as_single "$format, pictures that cannot be read"
    contributed 3 merge-shards merged "$PWD/3" ./1 2
    same_as_single "$format, in another order"
    cp 1 merged
    contributed 3 merge-shards merged 1 2 3
    same_as_single "$format, over an older file"
    for shard in 1 2 3; do
        SLURM_ARRAY_TASK_ID=$shard KORMELIN_SEGMENT=$program \
            contributed $((shard == 3 ? 0 : 3)) slurm-array -f $format 3 list "a 'folder'" --ppi 250
    done
    contributed 3 merge-shards merged "a 'folder'"/?-of-3.*
    same_as_single "$format, by tasks"

    # Names may be added behind a list that is done.
    printf '%s\n' "${good[@]:0:2}" >>list
    "$program" -q --ppi 250 --files-from list --format $format --output single || true
    for shard in 1 2 3; do
        SLURM_ARRAY_TASK_ID=$shard KORMELIN_SEGMENT=$program \
            contributed $((shard == 3 ? 0 : 3)) slurm-array -f $format 3 list "a 'folder'" --ppi 250
    done
    contributed 3 merge-shards -n 14 merged "a 'folder'"/?-of-3.*
    same_as_single "$format, a longer list"
    split $format 3 "${all[@]}"
    rm -r "a 'folder'"

    # What is not there
    refuses "a missing file" "4 is missing" merged 1 2 4
    refuses "a missing shard" "shard" merged 1 2
    refuses "a missing shard" "shard" merged 2 3
    refuses "a shard twice" "the same shard" merged 1 2 2
    refuses "another number of pictures" "hold 12 pictures instead of 13" -n 13 merged 1 2 3
    contributed 2 merge-shards 1 1 2 3
    says "a shard as output" "both read and written"
    contributed 2 merge-shards . 1 2 3
    for shard in 1 2 3; do
        cp "$shard" kept
        # Cut off within the last line, behind it, and much shorter.
        head -c -3 kept >"$shard"
        refuses "a torn line" "ends within a line" merged 1 2 3
        head -n -1 kept >"$shard"
        refuses "a lost line" "" -n 12 merged 1 2 3
        [ "$shard" -eq 3 ] || [ $format = csv ] || refuses "a lost line" "is missing: shard $shard/3" merged 1 2 3
        head -n 2 kept >"$shard"
        refuses "a short shard" "" merged 1 2 3
        : >"$shard"
        refuses "an empty shard" "" merged 1 2 3
        sed '$p' kept >"$shard"
        refuses "a line twice" "" merged 1 2 3
        cp kept "$shard"
    done
    echo "no results" >2
    refuses "something else" "2 holds " merged 1 2 3
    "$program" -q --ppi 250 --files-from list --format $format --shard 2/4 --output 2 || true
    refuses "another division" "./2: picture 6 stands where 5 belongs" merged 1 2 3
    split $format 5 "${good[@]:0:3}"
    contributed 0 merge-shards -n 3 merged 1 2 3 4 5
    same_as_single "$format, more shards than pictures"
    split $format 2
    contributed 0 merge-shards -n 0 merged 1 2
    same_as_single "$format, an empty list"
done
split json 2 "${good[@]}"
"$program" -q --ppi 250 --files-from list --format csv --shard 2/2 --output 2
refuses "two forms" "holds " merged 1 2
"$program" -q --ppi 250 --files-from list --shard 2/2 --output 2
refuses "text" "holds no results" merged 1 2

# --- a name with a line end in it
name=$'two\r\nlines "and\n,more".bmp'
cp "right 1.bmp" "$name"
for format in json csv; do
    "$program" -q "$name" "left,1.bmp" "$name" --format $format --output single
    for shard in 1 2; do
        "$program" -q "$name" "left,1.bmp" "$name" --format $format --shard $shard/2 --output $shard
    done
    contributed 0 merge-shards merged 1 2
    same_as_single "$format, a name of lines"
done
lines=$(wc -l <1)
for ((cut = 1; cut < lines; ++cut)); do
    head -n "$cut" 1 >3
    # What is cut between the two pictures of this shard is whole, as far as anyone can tell.
    contributed $(((cut - 1) * 2 == lines - 1 ? 0 : 4)) merge-shards merged 3 2
    rm -f merged
done

# --- a disk that is full
status=0
(
    trap '' XFSZ
    ulimit -f 1
    exec "$contrib/merge-shards.sh" merged 1 2
) >out 2>errors || status=$?
errors=$(<errors)
[ "$status" -eq 4 ] || fail "a full disk ends with $status: $errors"
if compgen -G 'merged*' >/dev/null; then fail "a full disk leaves half a file"; fi
echo "shards are merged to the bytes of the single run"
