#!/usr/bin/env bash
# usage: ImageMagickTest.sh BMP_PIXELS
# BMP files of another program load here with the pixels that it sees in them itself, and files written here open there
# with the pixels that they were written with. Ends with 77, which means skipped, if ImageMagick is not installed.
#
# ImageMagick's RLE8 writer uses runs and marks only, but codes the padding of each row as pixels, so its files are read
# here with widths that have none. It writes no rows from top to bottom: there a sign in the header is changed. Its
# 16-bit files of this header size announce masks that they do not hold, and are not read.
set -euo pipefail
pixels=$1

for program in convert mogrify; do
    if ! command -v "$program" >/dev/null || ! "$program" -version 2>/dev/null | grep ImageMagick >/dev/null; then
        echo "skipped: $program of ImageMagick is not installed"
        exit 77
    fi
done
export MAGICK_THREAD_LIMIT=1 # the pictures are small
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/theirs" "$folder/ours"

fail()
{
    echo "$*"
    exit 1
}

# number FILE OFFSET BYTES: an unsigned little-endian number.
number()
{
    od -An -v -j "$2" -N "$3" -t "u$3" --endian=little "$1" | tr -d ' '
}

# is_kind FILE DEPTH COMPRESSION: what ImageMagick was asked to write.
is_kind()
{
    local kind
    kind="$(number "$1" 28 2) bits, compression $(number "$1" 30 4)"
    [ "$kind" = "$2 bits, compression $3" ] || fail "ImageMagick wrote $kind into $1"
}

# turn_over FILE: negates the height, which stands for rows from top to bottom.
turn_over()
{
    local height=$((4294967296 - $(number "$1" 22 4))) bytes
    bytes=$(printf '\\x%02x' $((height & 255)) $((height >> 8 & 255)) $((height >> 16 & 255)) $((height >> 24)))
    printf '%b' "$bytes" | dd of="$1" bs=1 seek=22 conv=notrunc status=none
}

# as_pixmaps FOLDER: beside each file what ImageMagick sees in it, without alpha.
as_pixmaps()
{
    mogrify -format ppm -alpha off -type truecolor -depth 8 "$1"/*.bmp
}

# same WHAT SEEN OURS STEP: both pixmaps show the same picture, no sample more than STEP apart.
same()
{
    local worst
    [ "$(stat -c %s "$2")" = "$(stat -c %s "$3")" ] || fail "$1: another size"
    worst=$(cmp -l "$2" "$3" | awk '
        function value(octal) { return substr(octal, 1, length(octal) - 2) * 64 + substr(octal, length(octal) - 1, 1) * 8 + substr(octal, length(octal)) }
        { step = value("00" $2) - value("00" $3); if (step < 0) step = -step; if (step > worst) worst = step }
        END { print worst + 0 }') || true
    [ "$worst" -le "$4" ] || fail "$1: samples differ by $worst"
}

# --- theirs
for size in 1x200 3x70 36x23 37x23 301x7; do
    file=$folder/theirs/$size
    convert -size "$size" -seed 7 plasma:red-blue -compress None \
        \( +clone -monochrome -write "BMP3:$file-1.bmp" +delete \) \
        \( +clone -colors 16 -type palette -write "BMP3:$file-4.bmp" +delete \) \
        \( +clone -colors 200 -type palette -write "BMP3:$file-8.bmp" +delete \) \
        \( +clone -type truecolor -write "BMP3:$file-24.bmp" +delete \) \
        \( +clone -alpha set -channel A -evaluate set 50% +channel -define bmp3:alpha=true \
        -write "BMP3:$file-32.bmp" +delete \) null:
    for depth in 1 4 8 24 32; do
        is_kind "$file-$depth.bmp" "$depth" 0
        cp "$file-$depth.bmp" "$file-$depth-turned.bmp"
        turn_over "$file-$depth-turned.bmp"
    done
done
for size in 4x90 36x23 320x200; do
    file=$folder/theirs/$size
    convert -size "$size" -seed 7 -compress RLE plasma:red-blue -colors 200 -type palette "BMP3:$file-noise.bmp"
    convert -size "$size" -compress RLE gradient:red-blue -swirl 90 -colors 64 -type palette "BMP3:$file-runs.bmp"
    is_kind "$file-noise.bmp" 8 1
    is_kind "$file-runs.bmp" 8 1
done
as_pixmaps "$folder/theirs"
count=0
for file in "$folder"/theirs/*.bmp; do
    "$pixels" load "$file" >"$folder/loaded.ppm" || fail "theirs, $(basename "$file"): does not load"
    same "theirs, $(basename "$file")" "${file%.bmp}.ppm" "$folder/loaded.ppm" 0
    count=$((count + 1))
done
[ "$count" -eq 56 ] || fail "$count files of ImageMagick, not 56"

# --- ours
for width in 1 2 3 5 8 31 64; do
    for kind in '1 0' '4 0' '8 0' '16 0' '16 3' '24 0' '32 0' '32 3'; do
        file="$folder/ours/$width-${kind/ /-}"
        # shellcheck disable=SC2086
        "$pixels" store $kind "$width" 9 "$file.bmp" >"$file.expected" || fail "ours, $kind: not written"
    done
done
as_pixmaps "$folder/ours"
for file in "$folder"/ours/*.bmp; do
    step=0
    [[ $file == *-16-[03].bmp ]] && step=1 # from 5 bits to 8 both round, each in its way
    same "ours, $(basename "$file")" "${file%.bmp}.ppm" "${file%.bmp}.expected" "$step"
    count=$((count + 1))
done
[ "$count" -eq 112 ] || fail "$((count - 56)) files of ours, not 56"
echo "$count pictures are the same here and in ImageMagick"
