#!/usr/bin/env bash
# Installs what is missing, builds, and runs qxp with the given arguments; without any, on the shipped example.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$root/cmake/setup.sh"

setup_release qxp OFF
if [ $# -gt 0 ]; then
    exec "$root/build/release/qxp/qxp" "$@"
fi
cd "$root/examples/config"
echo "\$ qxp preprocess --origins -D PLATFORM=linux -D WITH_TLS config.h.in" >&2
exec "$root/build/release/qxp/qxp" preprocess --origins -D PLATFORM=linux -D WITH_TLS config.h.in
