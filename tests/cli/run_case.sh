#!/usr/bin/env bash
# Runs one golden case and compares all that it gives.
#
#     run_case.sh QXP CASE            compare
#     run_case.sh QXP CASE --update   write what it gives as expected; review the difference before you commit it
#
# CASE is a folder. Its file `cmd` is run by bash, in a fresh directory with copies of all other files of the folder.
# `stdout`, `stderr` and `status` hold what is expected; without one of these files: nothing, nothing, and 0.
# The fresh directory's path is /home/me in them.
set -uo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/environment.sh"

qxp=$1
case=$(cd "$2" && pwd) || exit 1
update=${3:-}
enter_work_directory "$qxp"

cp -R "$case/." . && rm -f cmd stdout stderr status
bash "$case/cmd" >"$scratch/output" 2>"$scratch/errors" </dev/null
echo $? >"$scratch/status"
show_output "$scratch/output" >"$scratch/stdout"
show_output "$scratch/errors" >"$scratch/stderr"

failed=0
for part in stdout stderr status; do
    expected=$scratch/expected
    : >"$expected"
    [ "$part" = status ] && echo 0 >"$expected"
    if [ "$update" = --update ]; then
        rm -f "$case/$part"
        cmp -s "$expected" "$scratch/$part" || cp "$scratch/$part" "$case/$part"
        continue
    fi
    [ -e "$case/$part" ] && cp "$case/$part" "$expected"
    same "$part" "$expected" "$scratch/$part" || failed=1
done
exit $failed
