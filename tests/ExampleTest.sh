#!/usr/bin/env bash
# usage: ExampleTest.sh SEGMENT FINGERS MAKE_SLAP SAMPLE.bmp
# The example program, which knows only the public header and the shared library, as people use it: the sample, which is
# the scene two-fingers, gives two whole BMP files and a line for each, around the fingers that are drawn in it. Wrong
# usage ends with 2, an image that cannot be read or cut with 1, and the program says why.
set -euo pipefail
segment=$1
fingers=$2
make_slap=$3
sample=$4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

fail()
{
    echo "$*"
    exit 1
}

# run STATUS ARGUMENT...: the program must end with this status; what it prints is in out and errors.
run()
{
    local expected=$1 status=0
    shift
    "$segment" "$@" >"$folder/out" 2>"$folder/errors" || status=$?
    out=$(<"$folder/out")
    errors=$(<"$folder/errors")
    [ "$status" -eq "$expected" ] || fail "segment $* ended with $status, not $expected: $out $errors"
}

# number FILE OFFSET BYTES: an unsigned little-endian number.
number()
{
    od -An -v -j "$2" -N "$3" -t "u$3" --endian=little "$1" | tr -d ' '
}

# is_bmp FILE WIDTH HEIGHT: one 8-bit grey picture of this size at 500 pixels per inch, and nothing missing.
is_bmp()
{
    local file=$1 width height stride i
    [ "$(head -c 2 "$file")" = BM ] || fail "$file does not begin with BM"
    width=$(number "$file" 18 4)
    height=$(number "$file" 22 4)
    stride=$(((width + 3) / 4 * 4))
    [ "$width $height" = "$2 $3" ] || fail "$file: $width by $height, not $2 by $3"
    [ "$(stat -c %s "$file")" -eq $((1078 + stride * height)) ] || fail "$file: size does not fit $width by $height"
    [ "$(number "$file" 2 4)" -eq $((1078 + stride * height)) ] || fail "$file: size in the file header"
    [ "$(number "$file" 10 4)" -eq 1078 ] || fail "$file: offset of the pixels"
    [ "$(number "$file" 14 4)" -eq 40 ] || fail "$file: size of the bitmap header"
    [ "$(number "$file" 26 2)" -eq 1 ] || fail "$file: planes"
    [ "$(number "$file" 28 2)" -eq 8 ] || fail "$file: bits of a pixel"
    [ "$(number "$file" 30 4)" -eq 0 ] || fail "$file: compression"
    [ "$(number "$file" 38 4) $(number "$file" 42 4)" = "19685 19685" ] || fail "$file: resolution"
    for i in 0 1 128 255; do
        [ "$(number "$file" $((54 + 4 * i)) 4)" -eq $((i * 65793)) ] || fail "$file: entry $i of the colour table"
    done
}

# --- the sample
run 0 -o "$folder" "$sample"
[ -z "$errors" ] || fail "the sample gives errors: $errors"
[ "$(wc -l <"$folder/out")" -eq 2 ] || fail "the sample gives other than two lines: $out"
pattern='^.*two-fingers\.bmp: ([01]): x ([0-9]+) y ([0-9]+) width ([0-9]+) height ([0-9]+) -> (.*)$'
index=0
while read -r line; do
    [[ $line =~ $pattern ]] || fail "not the line of a finger: $line"
    [ "${BASH_REMATCH[1]}" -eq $index ] || fail "not finger $index: $line"
    [ "${BASH_REMATCH[6]}" = "$folder/two-fingers-$index.bmp" ] || fail "not the file of finger $index: $line"
    # Images of fingers are limited, rectangles are not.
    width=${BASH_REMATCH[4]}
    height=${BASH_REMATCH[5]}
    is_bmp "${BASH_REMATCH[6]}" $((width < 500 ? width : 500)) $((height < 500 ? height : 500))
    index=$((index + 1))
done <"$folder/out"
[ "$(find "$folder" -name '*.bmp' | wc -l)" -eq 2 ] || fail "other than two files"

# Lines of drawn fingers: finger N: x X y Y width W height H. The middle of each lies in exactly one segment.
sed -E 's/^.*: ([0-9]+: x .*) -> .*$/\1/' "$folder/out" >"$folder/found"
"$make_slap" two-fingers 19685 "$folder/drawn.bmp" | grep '^finger ' >"$folder/drawn"
while read -r _ _ _ x _ y _ width _ height; do
    hits=$(awk -v x=$((x + width / 2)) -v y=$((y + height / 2)) \
        '$3 <= x && x < $3 + $7 && $5 <= y && y < $5 + $9 { ++n } END { print n + 0 }' "$folder/found")
    [ "$hits" -eq 1 ] || fail "the finger drawn at $x, $y lies in $hits segments: $out"
done <"$folder/drawn"
rm "$folder"/*.bmp

# --- the biggest object of the sample is its whole ground, which is darker than white
run 0 --biggest -o "$folder" "$sample"
[[ $out == *"two-fingers.bmp: 0: x 0 y 0 width 806 height 806 -> "* ]] || fail "not the biggest object: $out"
is_bmp "$folder/two-fingers-0.bmp" 806 806

# --- the C++ example finds the same fingers, and counts y from the top: picture height less upper edge
height=$(number "$sample" 22 4)
run 0 -o "$folder" "$sample"
awk -v height="$height" '{ print "x " $4 " y " height - ($6 + $10) " width " $8 " height " $10 }' "$folder/out" >"$folder/in_c"
"$fingers" "$sample" "$folder/finger" | sed 's/ -> .*//' >"$folder/in_cpp"
diff "$folder/in_c" "$folder/in_cpp" || fail "the examples in C and in C++ differ"
for index in 0 1; do
    read -r width height < <(sed -n 2p "$folder/finger$index.pgm")
    is_bmp "$folder/two-fingers-$index.bmp" "$width" "$height"
    [ "$(stat -c %s "$folder/finger$index.pgm")" -eq $((width * height + $(head -n 3 "$folder/finger$index.pgm" | wc -c))) ] ||
        fail "finger$index.pgm is not whole"
done
status=0
errors=$("$fingers" "$folder/missing.bmp" "$folder/finger" 2>&1) || status=$?
[[ $status -eq 1 && $errors == *missing.bmp*"cannot be read"* ]] || fail "fingers on a missing file: $status, $errors"
"$fingers" 2>/dev/null && fail "fingers takes wrong usage"
rm "$folder"/*.bmp "$folder"/*.pgm

# --- failures
run 1 "$folder/missing.bmp"
[[ $errors == *missing.bmp*"No such file"* ]] || fail "a missing file is not named: $errors"
: >"$folder/empty.bmp"
run 1 "$folder/empty.bmp"
[[ $errors == *empty.bmp* ]] || fail "an empty file is not named: $errors"
head -c 20000 "$sample" >"$folder/short.bmp"
run 1 "$folder/short.bmp"
[[ $errors == *short.bmp*"error -21"* ]] || fail "a file that was cut off is not told: $errors"
"$make_slap" three-fingers 19685 "$folder/three.bmp" >/dev/null
run 1 -o "$folder" "$folder/three.bmp"
[[ $errors == *three.bmp*"error -35"*"shows 3 fingers"* ]] || fail "three fingers are not told: $errors"
run 1 "$segment"
[[ $errors == *"error -"* ]] || fail "a file that is no picture is not told: $errors"

# One bad file does not stop the others.
run 1 -o "$folder" "$folder/missing.bmp" "$sample"
[ "$(wc -l <"$folder/out")" -eq 2 ] || fail "the sample is not cut behind a missing file: $out"

# --- usage
run 2
[[ $errors == usage:* ]] || fail "no usage on standard error: $errors"
run 2 --unknown "$sample"
run 2 -o
run 2 -o "$folder"
run 0 --help
[[ $out == usage:* ]] || fail "no usage on standard output: $out"
echo "the example program does what it says"
