#!/usr/bin/env bash
# Compares bridge_class with bridge_floor, run by turns: nanoseconds of processor time an operation, start-up taken off.
#
#     bench/bridge_compare.sh build/bench/bench [ROUNDS]
set -euo pipefail
folder=$1
rounds=${2:-5}

# Processor time of a run in milliseconds; checks what it prints when given.
run() {
  local TIMEFORMAT='%U %S' times
  times=$({ time "$@" > /dev/null; } 2>&1)
  awk '{ printf "%.0f", ($1 + $2) * 1000 }' <<< "$times"
}

printf '%-10s %9s %9s %6s\n' operation floor class ratio
while read -r mode count; do
  expected=$("$folder/bridge_floor" "$mode" 1000)
  result=$("$folder/bridge_class" "$mode" 1000)
  [ "$expected" = "$result" ] || { echo "$mode: $result instead of $expected" >&2; exit 1; }
  best_floor=0 best_class=0
  for ((i = 0; i < rounds; ++i)); do
    for driver in floor class; do
      used=$(($(run "$folder/bridge_$driver" "$mode" "$count") - $(run "$folder/bridge_$driver" "$mode" 1)))
      best=best_$driver
      [ "${!best}" != 0 ] && [ "$used" -ge "${!best}" ] || printf -v "$best" %d "$used"
    done
  done
  awk -v mode="$mode" -v floor="$best_floor" -v class="$best_class" -v count="$count" 'BEGIN {
    printf "%-10s %6.1f ns %6.1f ns %6.2f\n", mode, floor * 1e6 / count, class * 1e6 / count, class / floor }'
done << 'MODES'
call_int 20000000
prop 20000000
prop_set 20000000
call_str 5000000
construct 3000000
eval 50000
eval_same 1000000
MODES
