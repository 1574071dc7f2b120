#!/usr/bin/env bash
# usage: lint.sh [PATTERN]
# clang-tidy over the sources of the library and of kormelin-segment, or over those whose path matches PATTERN; fails on any finding.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"
install_missing "${build_packages[@]}" "${tool_packages[@]}" clang-tidy-14

# Headers count with the sources that include them.
cd "$repository"
configure release
log=build/lint.log
if run-clang-tidy-14 -quiet -j "$jobs" -p build/release -header-filter "$repository/(src|include|tools/segment)/" \
    "$repository/(src|tools/segment)/.*${1:-}" >"$log" 2>&1; then
    echo "clang-tidy: no finding in $(grep -c '^clang-tidy-14' "$log") sources"
else
    grep -vE '^(clang-tidy-14|[0-9]+ warnings? generated|$)' "$log" || true
    echo "clang-tidy found something; the whole output is in $log" >&2
    exit 1
fi
