#!/usr/bin/env bash
# usage: test.sh
# Everything that must hold before a change lands: format, lint, and the tests as delivered, under the thread sanitizer
# (those about threads) and under the address and undefined-behaviour sanitizers (all). Stops at the first failure.
# Real slap pictures are used if the folder KORMELIN_SLAPS, or ../shared/data/slaps beside the repository, is there.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

use_real_slaps
install_missing "${build_packages[@]}" "${test_packages[@]}" "${tool_packages[@]}" "${bench_packages[@]}" \
    "${sheet_packages[@]}" "${abi_packages[@]}" clang-format-14 clang-tidy-14

say "Format"
"$repository/scripts/format.sh" --check
for preset in release tsan asan; do
    say "Build and test: $preset"
    configure "$preset" -DKORMELIN_BUILD_TESTS=ON
    build "$preset"
    (cd "$repository" && ctest --preset "$preset" --parallel "$jobs")
    if [ "$preset" = release ]; then
        say "Lint"
        "$repository/scripts/lint.sh"
    fi
done
