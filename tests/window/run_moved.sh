#!/usr/bin/env bash
# Runs the program that was not linked with the library for windows on libraries copied to another place.
#
#     run_moved.sh found|missing PROGRAM LIBRARY...
set -euo pipefail

expected=$1 program=$2
shift 2
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
for library in "$@"; do
    name=$(basename "$library")
    cp "$library" "$place/${name%.*.*}"
done
LD_LIBRARY_PATH=$place${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH} EXPECT_WINDOW_LIBRARY=$expected xvfb-run -a "$program"
