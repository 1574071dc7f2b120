#!/usr/bin/env bash
# usage: Bits.sh PROGRAM REPOSITORY [OPTION...] [--large]
# The results of this build are those that the repository keeps, to the bit. Real slaps count, too, if KORMELIN_SLAPS
# names a folder of them. Options go to the program; --large takes large drawn pictures, too.
set -euo pipefail
program=$1
repository=$2
shift 2
sets=(--operators --drawn)
if [ "${*: -1}" = --large ]; then
    sets+=(--large)
    set -- "${@:1:$#-1}"
fi

"$program" "${sets[@]}" --files "$repository/samples" --expected "$repository/tests/golden/bits.txt" "$@"
if [ -n "${KORMELIN_SLAPS:-}" ]; then
    "$program" --files "$KORMELIN_SLAPS" --expected "$repository/tests/golden/bits-slaps.txt" "$@"
fi
