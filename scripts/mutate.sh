#!/usr/bin/env bash
# usage: mutate.sh [--count N] [--seed N] [--jobs N] [--only PATTERN] [--list] [--again]
# Changes one small thing of the sources at a time and tells which changes no test notices; see tests/mutation. By
# default 300 mutants, some ten seconds each. Fails if fewer than 90 of 100 are killed.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

install_missing "${build_packages[@]}" "${test_packages[@]}" binutils git python3
exec /usr/bin/python3 -B "$repository/tests/mutation/mutate.py" "$@"
