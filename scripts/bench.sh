#!/usr/bin/env bash
# usage: bench.sh [ARGUMENT ...]
# Builds the benchmarks and runs them; arguments go to Google Benchmark, such as --benchmark_filter=Segment. Real slap
# pictures are used if the folder KORMELIN_SLAPS, or ../shared/data/slaps beside the repository, is there. Where Debian's
# libopencv-imgproc-dev is installed, its functions run beside the operators. Installs what else is missing.
set -euo pipefail
. "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"

install_missing "${build_packages[@]}" "${bench_packages[@]}"
use_real_slaps
say "Building"
configure_product -DKORMELIN_BUILD_BENCH=ON
build release kormelin_bench
say "Running"
"$repository/build/release/kormelin_bench" "$@"
