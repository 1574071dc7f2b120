#!/usr/bin/env bash
# usage: BatchProgramTest.sh KORMELIN_SEGMENT MAKE_SLAP [PICTURES [KILLS]]
# Batches of kormelin-segment: the same results whatever the threads, shards that add up, runs that are killed again and
# again and end with the bytes of an undisturbed one, signals, closed pipes, progress.
set -euo pipefail
program=$1
make_slap=$2
pictures=${3:-60}
kills=${4:-4}
. "$(dirname -- "$0")/ProgramTools.sh"

# Pictures of many scenes, some of them links to the same file, and bad ones among them.
mkdir drawn slaps
for scene in four-fingers-right four-fingers-left three-fingers two-fingers one-finger leaning-hand-left; do
    draw "$scene" "drawn/$scene.bmp" 9000
done
number=0
while [ "$number" -lt "$pictures" ]; do
    for file in drawn/*.bmp; do
        number=$((number + 1))
        ln "$file" "slaps/$(printf %05d "$number").bmp"
    done
done
printf 'no picture' >slaps/00003-bad.bmp
: >slaps/00011-empty.bmp

# expect_same WHAT FILE...: the files are alike.
expect_same()
{
    local what=$1 first=$2 file
    shift 2
    for file in "$@"; do cmp "$first" "$file" || fail "$what"; done
}

# --- threads
for jobs in 1 2 7; do
    run 3 -q -j "$jobs" -r slaps --format json --output "all.$jobs" -o "fingers.$jobs" --overlay
    sed -i "s/fingers\.$jobs/fingers/g" "all.$jobs"
    rm -rf "fingers.$((jobs + 100))"
done
expect_same "threads change the results" all.1 all.2 all.7
diff -r fingers.1 fingers.2 && diff -r fingers.1 fingers.7 || fail "threads change the pictures"
rm -rf fingers.2 fingers.7
run 2 -j 0 slaps
run 2 -j many slaps

# --- shards, and a list from standard input
find slaps -name '*.bmp' | sort >list
"$program" -q --files-from - --format json <list >from-list || true
"$program" -q -r slaps --format json >plain || true
expect_same "a list gives something else than its folder" from-list plain
for shard in 1 2 3; do
    "$program" -q --files-from list --format json --shard $shard/3 >"shard.$shard" || true
done
paste -d '\n' shard.1 shard.2 shard.3 | sed '/^$/d' >merged
expect_same "the shards do not add up" plain merged

# --- killed again and again
for format in json csv; do
    status=0
    "$program" -q -r slaps --format $format --output undisturbed.$format -o fingers --report whole.html || status=$?
    [ "$status" -eq 3 ] || fail "the undisturbed run ends with $status"
    mv fingers "undisturbed-$format"
    signals=(KILL TERM INT KILL)
    for ((kill = 0; kill < kills; ++kill)); do
        rm -f kill-errors
        signal=${signals[kill % 4]}
        "$program" -q -r slaps --format $format --output killed.$format --resume -o fingers \
            --report page.html 2>kill-errors &
        id=$!
        sleep "0.0$((RANDOM % 10))"
        kill -s "$signal" $id 2>/dev/null || true
        status=0
        wait $id 2>/dev/null || status=$?
        case $signal/$status in
            KILL/137 | TERM/143 | INT/130) ;;
            # Bash lets its children ignore SIGINT, and a run may have been quicker.
            */3) ;;
            *) fail "ended by SIG$signal with $status: $(<kill-errors)" ;;
        esac
        # Whatever was there is the beginning of the whole, but for a line that was cut off.
        [ -e killed.$format ] || continue
        lines=$(wc -l <killed.$format)
        head -n "$lines" killed.$format | cmp - <(head -n "$lines" undisturbed.$format) || fail "wrong results"
    done
    status=0
    "$program" -q -r slaps --format $format --output killed.$format --resume -o fingers --report page.html || status=$?
    [ "$status" -eq 3 ] || fail "the last resumed run ends with $status, not as an undisturbed one"
    expect_same "killed runs leave other results" undisturbed.$format killed.$format
    diff -r "undisturbed-$format" fingers || fail "killed runs leave other pictures"
    expect_same "killed runs leave another page" whole.html page.html
    [ ! -e page.html.part ] || fail "a part of the page is left"
    rm -r fingers page.html
    # Once more there is nothing to do.
    run 3 -r slaps --format $format --output killed.$format --resume
    says "a run of nothing" "$(sed -n '$=' list) pictures: "
    expect_same "a run of nothing changes the results" undisturbed.$format killed.$format
done

# A line cut off at each of some places.
size=$(stat -c %s undisturbed.json)
for cut in 0 1 $((size / 2)) $((size - 1)); do
    head -c "$cut" undisturbed.json >torn.json
    run 3 -q -r slaps --format json --output torn.json --resume
    sed -E 's/"file":"[^"]*"/"file":null/g' undisturbed.json | cmp - <(sed -E 's/"file":"[^"]*"/"file":null/g' torn.json) ||
        fail "a torn line at $cut"
done

# --- resuming what cannot be
run 2 -r slaps --format json --resume
says "no file" "--output"
run 2 -r slaps --output a.txt --resume
says "text" "json or csv"
cp undisturbed.json other.json
run 2 slaps/00004.bmp --format json --output other.json --resume
says "another list" "is not of this list"
expect_same "a refused file was changed" undisturbed.json other.json
run 2 -r slaps --format csv --output other.json --resume
says "another format" "no results of this format"
expect_same "a refused file was changed" undisturbed.json other.json

# --- signals: 130 and 143, and nothing half
mkfifo slow
for signal in INT:130 TERM:143 HUP:129; do
    # Bash lets its children in the background ignore SIGINT; perl gives them back the default.
    perl -e '$SIG{INT} = "DEFAULT"; exec @ARGV' "$program" --files-from slow --format json --output "signal.json" \
        2>errors &
    id=$!
    exec 3>slow
    sed -n 1,5p list >&3
    for ((i = 0; i < 500; ++i)); do
        [ "$(wc -l 2>/dev/null <signal.json)" = 5 ] && break
        sleep 0.02
    done
    kill -s "${signal%:*}" $id
    status=0
    wait $id || status=$?
    exec 3>&-
    errors=$(<errors)
    [ "$status" -eq "${signal#*:}" ] || fail "SIG${signal%:*} ends with $status: $errors"
    says "SIG${signal%:*}" "behind 5 pictures; the same with --resume goes on there"
    [ "$(wc -l <signal.json)" -eq 5 ] || fail "not five results: $(<signal.json)"
    rm signal.json
done

# --- all processes of a run ended at the same time, and the decoder a little earlier: that is nothing about its picture
printf 'no picture' >ended.wsq
# shellcheck disable=SC2016 # for the decoder's shell
ended='setsid sh -c ": >escaped; sleep 0.1; kill -s TERM $PPID" >/dev/null 2>&1 &
until [ -e escaped ]; do sleep 0.01; done
rm escaped
'
# shellcheck disable=SC2016
for ending in 'kill -s TERM $$' 'kill -s KILL $$' 'exit 143'; do
    run 143 -q --format json --output ended.json --decoder "$ended$ending" slaps/00001.bmp ended.wsq slaps/00002.bmp
    [ "$(wc -l <ended.json)" -eq 1 ] || fail "a decoder that ends with its run: $(<ended.json)"
done

# --- a page that cannot be, or is not to be
run 4 -r slaps --report no/page.html
says "no folder" "no/page.html"
run 2 -r slaps --format json --output a.json --report a.json
run 2 -r slaps --format json --output undisturbed.json --resume --report none.html
says "no page" "resume without --report"
[ ! -e none.html.part ] || fail "a refused page leaves something"
perl -e '$SIG{INT} = "DEFAULT"; exec @ARGV' "$program" -q --files-from slow --report stopped.html >stopped &
id=$!
exec 3>slow
sed -n 1,2p list >&3
for ((i = 0; i < 500; ++i)); do
    [ "$(grep -c hand stopped 2>/dev/null)" = 2 ] && break
    sleep 0.02
done
kill -s INT $id
wait $id || true
exec 3>&-
[ -z "$(ls stopped.html* 2>/dev/null)" ] || fail "a page that nothing can go on with is left"

# --- a closed pipe
status=0
{ "$program" -q -r slaps --format json 2>errors || echo $? >status; } | head -n 2 >first
[ "$(wc -l <first)" -eq 2 ] || fail "not two lines: $(<first)"
errors=$(<errors)
[ "$(<status)" -eq 4 ] || fail "a closed pipe ends with $(<status)"
says "a closed pipe" "Broken pipe"

# --- two runs on one file
"$program" -q --files-from slow --format json --output shared.json &
id=$!
exec 3>slow
for ((i = 0; i < 500; ++i)); do
    [ -e shared.json ] && break
    sleep 0.02
done
sleep 0.1
run 4 slaps/00004.bmp --output shared.json
says "two runs" "another run"
exec 3>&-
wait $id || fail "the first of two runs"

# --- progress: on a terminal only
if script -qec true /dev/null </dev/null >/dev/null 2>&1; then
    script -qefc "'$program' -r slaps --format json --output terminal.json" /dev/null >shown </dev/null || true
    grep -aq '/s' shown || fail "no progress on a terminal: $(cat -v shown)"
    grep -aq 'left' shown || fail "no time left: $(cat -v shown)"
    script -qefc "'$program' -q -r slaps --format json --output terminal.json" /dev/null >shown </dev/null || true
    [ ! -s shown ] || fail "--quiet shows: $(cat -v shown)"
else
    echo "the progress bar is not tested: no pseudo-terminal can be had here"
fi
run 3 -r slaps --format json --output terminal.json
[[ $errors != *'/s'* ]] || fail "progress without a terminal: $errors"
says summary "pictures: "
echo "batches of kormelin-segment end as they should"
