#!/usr/bin/env bash
# usage: measure.sh
# Builds, and prints how much memory runs take in both modes, on the sample, on drawn pictures of 1600 by 1500 pixels and
# more, upright and leaning, and on two real ones, where the folder KORMELIN_SLAPS, or ../shared/data/slaps beside the
# repository, is there. Fails if a run takes more than 4 bytes per pixel beside the picture, or if memory is left over
# from run to run. Installs what a build needs and is not there yet.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

if [ $# -ne 0 ]; then
    sed -n '2,6s/^# //p' "${BASH_SOURCE[0]}" >&2
    exit 2
fi

install_missing "${build_packages[@]}"
use_real_slaps
say "Building"
configure_product
build release make-slap run-many

programs=$repository/build/release
pictures=$programs/measured
mkdir -p "$pictures"
"$programs/make-slap" four-fingers-right 19685 "$pictures/four-fingers-right.bmp" >/dev/null
"$programs/make-slap" leaning-hand-left 19685 "$pictures/leaning-hand-left.bmp" >/dev/null

say "Memory"
failed=0
header=1
# measure RUNS PICTURE: a row of the table for each mode, the heading above the first.
measure()
{
    local mode table status
    for mode in 0 1; do
        status=0
        table=$("$programs/run-many" "$2" --runs "$1" --mode $mode) || status=1
        sed -n "$header,\$p" <<<"$table"
        header=2
        [ $status -eq 0 ] || failed=1
    done
}
measure 1000 "$repository/samples/two-fingers.bmp"
measure 20 "$pictures/four-fingers-right.bmp"
measure 20 "$pictures/leaning-hand-left.bmp"
if [ -n "${KORMELIN_SLAPS:-}" ]; then
    measure 20 "$KORMELIN_SLAPS/nist-left-four-2.bmp"
    measure 20 "$KORMELIN_SLAPS/nist-right-four-1.bmp"
fi
exit $failed
