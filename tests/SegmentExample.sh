#!/usr/bin/env bash
# usage: SegmentExample.sh SEGMENT MAKE_SLAP FOLDER
# The example program, which knows only the public header and the shared library, on a drawn slap of two fingers: both
# are found where they were drawn, and both files are whole bitmaps. Then its answers to three fingers, to a file that is
# no bitmap, to a missing file and to a wrong option.
set -euo pipefail
segment=$1
make_slap=$2
folder=$3

fail()
{
    echo "FAILED: $*" >&2
    exit 1
}

# exits STATUS COMMAND...: runs it and compares the exit status.
exits()
{
    local expected=$1 status=0
    shift
    "$@" >"$folder/out" 2>"$folder/err" || status=$?
    [ "$status" -eq "$expected" ] || fail "status $status, not $expected, of: $* $(cat "$folder/out" "$folder/err")"
}

rm -rf -- "$folder"
mkdir -p "$folder/fingers"
"$make_slap" two-fingers 19685 "$folder/two.bmp" | grep '^finger ' >"$folder/drawn"
exits 0 "$segment" -o "$folder/fingers" "$folder/two.bmp"
sed -E 's/^.*: ([0-9]+: x .*) -> .*$/finger \1/' "$folder/out" >"$folder/found"

# Both lists: finger N: x X y Y width W height H. The fingers may come in any order; the middle of each drawn one lies in
# exactly one found rectangle.
[ "$(wc -l <"$folder/drawn")" -eq 2 ] || fail "two fingers were to be drawn"
[ "$(wc -l <"$folder/found")" -eq 2 ] || fail "not two fingers: $(cat "$folder/out")"
while read -r _ _ _ x _ y _ width _ height; do
    hits=$(awk -v x=$((x + width / 2)) -v y=$((y + height / 2)) \
        '$4 <= x && x < $4 + $8 && $6 <= y && y < $6 + $10 { ++n } END { print n + 0 }' "$folder/found")
    [ "$hits" -eq 1 ] || fail "finger drawn at $x, $y lies in $hits segments: $(cat "$folder/out")"
done <"$folder/drawn"
for file in "$folder/fingers/two-0.bmp" "$folder/fingers/two-1.bmp"; do
    [ "$(head -c 2 "$file")" = BM ] || fail "$file is no bitmap"
    stated=$(od -An -tu4 -j2 -N4 --endian=little "$file")
    [ "$stated" -eq "$(wc -c <"$file")" ] || fail "$file states a size of $stated"
done

"$make_slap" three-fingers 19685 "$folder/three.bmp" >/dev/null
exits 1 "$segment" -o "$folder/fingers" "$folder/three.bmp"
grep -q -- '-35' "$folder/err" || fail "three fingers: $(cat "$folder/err")"
echo "no picture" >"$folder/text.bmp"
exits 1 "$segment" -o "$folder/fingers" "$folder/text.bmp"
exits 1 "$segment" -o "$folder/fingers" "$folder/missing.bmp"
exits 2 "$segment" --no-such-option "$folder/two.bmp"
[ "$(find "$folder/fingers" -type f | wc -l)" -eq 2 ] || fail "files beyond the two fingers: $(ls "$folder/fingers")"
echo "the example finds both fingers"
