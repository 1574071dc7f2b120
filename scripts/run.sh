#!/usr/bin/env bash
# usage: run.sh [IMAGE.bmp ...] [-o FOLDER]
# Builds the library and the example program, and cuts each image into its fingers: one BMP file per finger in FOLDER,
# by default build/release/segments. Without an image it takes samples/two-fingers.bmp. Installs what a build needs and
# is not there yet.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

usage()
{
    sed -n '2,5s/^# //p' "${BASH_SOURCE[0]}"
}

output=$repository/build/release/segments
images=()
while [ $# -gt 0 ]; do
    case $1 in
        -h | --help)
            usage
            exit 0
            ;;
        -o)
            if [ $# -lt 2 ]; then
                usage >&2
                exit 2
            fi
            output=$2
            shift
            ;;
        -*)
            usage >&2
            exit 2
            ;;
        *) images+=("$1") ;;
    esac
    shift
done

install_missing "${build_packages[@]}"
say "Building"
configure_product
build release VelmarinKormelinSegmentation segment
[ ${#images[@]} -gt 0 ] || images=("$repository/samples/two-fingers.bmp")
say "Segmenting into $output"
mkdir -p "$output"
"$repository/build/release/segment" -o "$output" -- "${images[@]}"
