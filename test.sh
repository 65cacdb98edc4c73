#!/usr/bin/env bash
# Installs what is missing, builds, and runs all tests; arguments go to ctest (such as -R NAME).
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$root/cmake/setup.sh"

setup_release all ON
cd "$root"
exec ctest --preset release -j "$(nproc)" "$@"
