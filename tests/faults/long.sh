#!/usr/bin/env bash
# The long forms of the experiments with faults, about half an hour. Further arguments go to the programs of tests.
#
#     tests/faults/long.sh build/release
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$1
shift
export QXP_FAULTS_FACTOR=${QXP_FAULTS_FACTOR:-10}
for program in config_calls_test config_processes_test command_calls_test; do
    "$build/tests/faults/$program" "$@"
done
bash "$here/allocations.sh" "$build/qxp/qxp" "$build/tests/faults/libqxp_failing_malloc.so" 50
"$here/../model/check_directives.py" "$build/tests/model/directives_driver" lines=4 blocks=3 \
    scan=4 values=4 arguments=4 conditions=3 random_blocks=100
"$build/tests/faults/soak" 1000000
