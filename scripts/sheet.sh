#!/usr/bin/env bash
# usage: sheet.sh [OUT.png]
# Builds the contact sheet program and draws the sheet: what every image operator makes of fixed pictures in each of its
# modes, to be judged by eye. By default it goes to build/release/contact-sheet.png. Fails if a run ends with a code that
# is not expected of it. Installs what is missing.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

if [ $# -gt 1 ] || [[ ${1:-} == -* ]]; then
    sed -n '2,5s/^# //p' "${BASH_SOURCE[0]}" >&2
    exit 2
fi

install_missing "${build_packages[@]}" "${sheet_packages[@]}"
say "Building"
configure_product
build release contact-sheet
say "Drawing"
"$repository/build/release/contact-sheet" "${1:-$repository/build/release/contact-sheet.png}"
