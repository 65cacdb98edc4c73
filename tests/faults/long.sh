#!/usr/bin/env bash
# The long form of the experiments on the configuration store: some minutes.
#
#     tests/faults/long.sh build/release
set -euo pipefail
export QXP_FAULTS_FACTOR=${QXP_FAULTS_FACTOR:-10}
"$1/tests/faults/config_calls_test" "${@:2}"
exec "$1/tests/faults/config_processes_test" "${@:2}"
