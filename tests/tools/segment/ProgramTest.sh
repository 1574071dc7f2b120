#!/usr/bin/env bash
# usage: ProgramTest.sh KORMELIN_SEGMENT MAKE_SLAP
# kormelin-segment as people run it: every option of a plain run, every exit code, and what it says when something is
# wrong.
set -euo pipefail
program=$1
make_slap=$2
. "$(dirname -- "$0")/ProgramTools.sh"

draw four-fingers-right right.bmp
draw four-fingers-left left.bmp
draw three-fingers three.bmp
draw one-finger one.bmp

# --- 0: all segmented; each kind of result
run 0 right.bmp
prints text "right.bmp: right hand, 4 fingers"
prints text " 2 right index "
[ -z "$errors" ] || fail "a good picture gives messages: $errors"
run 0 --format json left.bmp
[ "$(wc -l <out)" -eq 1 ] || fail "other than one line: $out"
prints json '{"schema_version":1,"index":1,"input":"left.bmp","outcome":"segmented","code":0,'
prints json '"position":10,"name":"left little"'
run 0 --format csv right.bmp left.bmp
[ "$(wc -l <out)" -eq 9 ] || fail "other than a header and eight rows: $out"
[ "$(tr -cd '\r' <out | wc -c)" -eq 9 ] || fail "lines that do not end with CR LF"
prints csv "2,left.bmp,segmented,0,,fingers,"
says summary "2 pictures: 2 segmented"
run 0 --output results.json --format json right.bmp
[ -z "$out" ] || fail "--output leaves results on standard output: $out"
"$program" --format json right.bmp | cmp - results.json || fail "--output writes something else"

# --- 1: no finger, or too few
run 1 --expect 4 three.bmp right.bmp
prints "too few" "three.bmp: too_few: 3 fingers found, 4 expected"
prints "too few" " 4 right ring"
says "too few" "three.bmp: 3 fingers found, 4 expected"
run 0 --expect 3 three.bmp
{
    printf 'P5 300 300 255\n'
    head -c 90000 /dev/zero | tr '\0' '\360'
} >uniform.pgm
run 1 --ppi 500 uniform.pgm
prints "a uniform picture" "no_finger (error -15): all pixels are alike"
run 1 --ppi 500 --format json uniform.pgm right.bmp
prints "the one behind it" '"index":2,"input":"right.bmp","outcome":"segmented"'

# --- 2: wrong usage
run 2
says "no picture" "--files-from"
run 2 --nonsense right.bmp
run 2 --expect 5 right.bmp
run 2 --ppi many right.bmp
run 2 --shard 3/2 right.bmp
run 2 --format xml right.bmp
run 2 --files-from missing-list
says "a missing list" "missing-list"
[ -z "$out" ] || fail "wrong usage prints results: $out"

# --- 3: unreadable
: >empty.bmp
head -c 20000 right.bmp >short.bmp
printf 'just a text\n' >text.png
mkdir sub.bmp
for bad in missing.bmp empty.bmp short.bmp text.png sub.bmp; do
    run 3 "$bad" right.bmp
    says "$bad" "kormelin-segment: $bad: "
    prints "$bad" "$bad: unreadable (error -"
    prints "the one behind $bad" "right.bmp: right hand, 4 fingers"
done
says "a folder" "--recursive"
bmp_to_pgm right.bmp right.pgm
run 3 right.pgm
says "no resolution" "--ppi N"
run 0 --ppi 500 right.pgm
prints "the given resolution" "right hand, 4 fingers"
printf 'P5 1 1 255\nx' >pixel.pgm
run 1 --ppi 500 pixel.pgm
printf 'P5 2 1 255\nxy' >pixels.pgm
run 3 --ppi 500 pixels.pgm
says "two pixels" "at least 160 by 160"
run 1 --ppi 500 --biggest pixel.pgm
printf 'P5 20001 20001 255\n' >huge.pgm
run 3 --ppi 500 huge.pgm
says "a huge picture" "20000 by 20000"
if [ "$(id -u)" -ne 0 ]; then
    cp right.bmp locked.bmp
    chmod 0 locked.bmp
    run 3 locked.bmp
    says "no rights" "Permission denied"
fi
run 3 --expect 4 three.bmp missing.bmp

# --- 4: results that cannot be written
status=0
"$program" right.bmp >/dev/full 2>errors || status=$?
errors=$(<errors)
[ "$status" -eq 4 ] || fail "a full disk ends with $status"
says "a full disk" "No space left"
status=0
"$program" right.bmp >&- 2>errors || status=$?
errors=$(<errors)
[ "$status" -eq 4 ] || fail "a closed output ends with $status"
says "a closed output" "standard output"
status=0
{ "$program" --version 2>errors || echo $? >status; } | true
# Whether the reader was gone in time is chance; that it did not hang and said so is not.
[ ! -s status ] || [ "$(<status)" -eq 4 ] || fail "a closed pipe ends with $(<status)"
run 4 --output no/such/folder/results right.bmp
says "no folder" "no/such/folder/results"

# --- names of any bytes
name=$'a\xff "b",\n<c>.bmp'
cp right.bmp "$name"
run 0 --format json "$name"
[ "$(wc -l <out)" -eq 1 ] || fail "a name breaks the line: $out"
run 0 --format csv "$name"
grep -qa '^1,"a. ""b"",$' out || fail "a name is not quoted: $out"
run 0 -- "$name"
prints "a name on a terminal" '\x0a<c>.bmp'
cp right.bmp -- -r
run 0 -- -r

# --- the biggest object
run 0 --biggest --format json right.bmp
prints biggest '"mode":"biggest"'

# --- lists and folders
mkdir -p tree/b/c
cp right.bmp tree/b/c/1.bmp
cp left.bmp tree/a.bmp
cp text.png tree/notes.txt
run 0 --recursive --format csv tree
[[ $(cut -d , -f 2 out | uniq | tr '\n' ' ') == "input tree/a.bmp tree/b/c/1.bmp " ]] || fail "not the tree: $out"
run 3 -r --endings txt,bmp tree
printf 'tree/a.bmp\nright.bmp\n' >list
run 0 --format csv --files-from list one.bmp
[[ $(cut -d , -f 2 out | uniq | tr '\n' ' ') == "input one.bmp tree/a.bmp right.bmp " ]] || fail "not the list: $out"
"$program" --format csv --files-from - one.bmp <list 2>/dev/null | cmp - out || fail "not the list from standard input"
tr '\n' '\0' <list >list0
"$program" --format csv -0 --files-from list0 one.bmp 2>/dev/null | cmp - out || fail "not the list of zero bytes"
run 0 --format csv --shard 2/2 --files-from list one.bmp
[[ $(cut -d , -f 1,2 out | uniq | tr '\n' ' ') == "index,input 2,tree/a.bmp " ]] || fail "not the shard: $out"
mkdir void
run 3 -r void
says "a folder without pictures" "no picture in this folder"

# --- the decoder
{
    printf 'SECRET\n'
    cat right.pgm
} >right.wsq
run 3 right.wsq
says "an unknown format" "--decoder"
run 0 --ppi 500 --decoder 'tail -n +2 "$1"' right.wsq
prints "a decoded picture" "right hand, 4 fingers"
run 3 --ppi 500 --decoder 'echo broken >&2; exit 3' right.wsq right.pgm
says "a decoder that fails" "status 3: broken"
prints "the picture behind it" "right.pgm: right hand"
run 3 --ppi 500 --decoder 'sleep 100' --decoder-timeout 0.2 right.wsq
says "a slow decoder" "--decoder-timeout"
run 3 --ppi 500 --decoder 'echo no picture' right.wsq
run 0 -r --ppi 500 --endings wsq --decoder 'tail -n +2 "$1"' .

# --- pictures of the fingers
run 0 -o fingers right.bmp
[ "$(ls -A fingers | tr '\n' ' ')" = "right_2.png right_3.png right_4.png right_5.png " ] || fail "not the fingers: $(ls -A fingers)"
prints "their names" "fingers/right_5.png"
run 0 --ppi 500 --biggest fingers/right_3.png
run 0 --biggest fingers/right_3.png # it has the resolution of its picture
sum=$(cksum fingers/*)
run 0 -o fingers --overlay right.bmp
[ -f fingers/right_overlay.png ] || fail "no overlay"
[ "$(cksum fingers/right_?.png)" = "$sum" ] || fail "a second run writes something else"
run 0 -o bmps/deep --image-format bmp one.bmp
[ "$(ls -A bmps/deep)" = one_0.bmp ] || fail "not the finger: $(ls -A bmps/deep)"
run 0 --biggest bmps/deep/one_0.bmp
mkdir -p again
draw four-fingers-right again/right.bmp 10000
run 3 -o fingers again/right.bmp left.bmp
says "two pictures of one name" "fingers/right_2.png is there already"
prints "two pictures of one name" "again/right.bmp: not_written (error -202)"
prints "the one behind them" "left.bmp: left hand"
[ "$(cksum fingers/right_?.png)" = "$sum" ] || fail "fingers of another picture were overwritten"
run 0 -o fingers --tree again/right.bmp
[ -f fingers/again/right_2.png ] || fail "no tree"
run 0 -r --format csv -o tree/fingers tree # which is not searched
[ "$(grep -c fingers/ out)" -eq 8 ] || fail "not the fingers of the tree: $out"
run 0 -r --format csv -o tree/fingers tree
[ "$(grep -c fingers/ out)" -eq 8 ] || fail "the fingers were taken for pictures: $out"
run 2 --overlay right.bmp
says "no folder" "-o DIR"
run 2 --tree right.bmp
run 2 -o fingers --image-format gif right.bmp
run 4 -o text.png right.bmp
says "a file for a folder" "text.png"
[ -z "$out" ] || fail "results without the fingers: $out"
# A disk that is full for the fingers, by the limit of a file's size in blocks of 1024 bytes.
status=0
(
    ulimit -f 50
    exec "$program" -o full right.bmp
) >out 2>errors || status=$?
errors=$(<errors)
[ "$status" -eq 4 ] || fail "fingers that cannot be written end with $status: $errors"
says "fingers that cannot be written" "cannot write full/right_2.png"
[ -z "$(ls -A full)" ] || fail "half a file is left: $(ls -A full)"
[ ! -s out ] || fail "a result without its fingers: $(<out)"
if [ "$(id -u)" -ne 0 ]; then
    mkdir closed
    chmod 500 closed
    run 4 -o closed right.bmp
    says "no rights" "Permission denied"
fi

# --- messages
run 1 --quiet --expect 4 three.bmp right.bmp
[ -z "$errors" ] || fail "--quiet tells: $errors"
run 2 -q
[ -n "$errors" ] || fail "--quiet hides what ends the run"
run 0 --help
prints help "Usage: kormelin-segment"
run 0 --version
prints version "kormelin-segment "
echo "kormelin-segment does what it says"
