#!/usr/bin/env bash
# usage: format.sh [--check]
# Formats every C and C++ file of the project in place; with --check it only tells which are not formatted, and fails.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"
install_missing clang-format-14

mode=(-i)
case ${1:-} in
    '') ;;
    --check) mode=(--dry-run -Werror) ;;
    *)
        echo "usage: $0 [--check]" >&2
        exit 2
        ;;
esac
cd "$repository"
folders=()
for folder in src include tests tools examples bench fuzz; do
    [ -d "$folder" ] && folders+=("$folder")
done
find "${folders[@]}" \( -name '*.cpp' -o -name '*.hpp' -o -name '*.c' -o -name '*.h' \) -print0 |
    xargs -0 -r -n 8 -P "$jobs" clang-format-14 --style=file "${mode[@]}"
[ "${mode[0]}" = -i ] || echo "clang-format: nothing to change"
