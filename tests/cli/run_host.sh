#!/usr/bin/env bash
# Builds examples/host_preprocess as a stranger would, against an installed library, and compares what it prints.
#
#     run_host.sh BUILD FLAGS    BUILD is the library's build folder, FLAGS are compiler flags the host needs with it
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/host.sh"

build_host host_preprocess "$1" "${2:-}"
cp "$example/label.txt" .
echo '#unknown' >bad.txt
{
    "$host" label.txt 2>&1 || echo "[status $?]"
    "$host" bad.txt 2>&1 || echo "[status $?]"
    "$host" missing.txt 2>&1 || echo "[status $?]"
} >"$scratch/actual"
cat >"$scratch/expected" <<'END'
file "label.txt (LOOP l.2)" line 1: Lamp of size 1
file "label.txt (LOOP l.2)" line 1: Lamp of size 2
file "label.txt" line 8: in stock
file "bad.txt" line 1: "unknown" is not defined !
[status 1]
cannot read the file
[status 2]
END
same "the host's output" "$scratch/expected" "$scratch/actual"
