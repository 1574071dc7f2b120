#!/usr/bin/env bash
# usage: run.sh [OPTION...] [PICTURE...]
# Builds the library and the program kormelin-segment, and runs the program with these arguments (--help lists them).
# Without any it cuts samples/two-fingers.bmp into its fingers, in build/release/segments. Installs what a build needs
# and is not there yet.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

# What the build prints goes to standard error: the results are all that a reader of the output shall see.
{
    install_missing "${build_packages[@]}" "${tool_packages[@]}"
    say "Building"
    configure_product
    build release VelmarinKormelinSegmentation kormelin-segment
} >&2
program=$repository/build/release/tools/segment/kormelin-segment
if [ $# -eq 0 ]; then
    set -- -o "$repository/build/release/segments" --overlay "$repository/samples/two-fingers.bmp"
    mkdir -p "$repository/build/release/segments"
fi
exec "$program" "$@"
