#!/usr/bin/env bash
# Installs what is missing and builds the benchmarks and qxp, optimised, in build/bench.
#
#     bench/build.sh [TARGET...]
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/cmake/setup.sh"
install_missing_packages "${build_packages[@]}" "${bench_packages[@]}"
cd "$root"
cmake --preset bench
ninja -C build/bench "$@"
