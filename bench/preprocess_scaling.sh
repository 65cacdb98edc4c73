#!/usr/bin/env bash
# Preprocesses texts of n and of 4n parts and prints the processor time of each and their ratio, start-up taken off. What
# is linear comes to about 4.
#
#     bench/preprocess_scaling.sh build/release/qxp/qxp [ROUNDS]
set -euo pipefail
qxp=$(realpath "$1")
rounds=${2:-3}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# Writes in.txt with $2 parts of the kind $1.
generate() {
  awk -v kind="$1" -v n="$2" 'BEGIN {
    if (kind == "loop_passes") print "#for i 1;" n ";1\nrow #i of many\n#endfor"
    else if (kind == "comment_depth") {
      for (i = 0; i < n; ++i) print "/*"
      for (i = 0; i < n; ++i) print "*/"
    } else if (kind == "comment_depth_on_a_line") {
      for (i = 0; i < n; ++i) printf "/* "
      for (i = 0; i < n; ++i) printf "*/ "
      print ""
    } else if (kind == "arguments") {
      printf "#define M(p0"; for (i = 1; i < n; ++i) printf ",p%d", i; printf ") "
      for (i = 0; i < n; ++i) printf "#p%d ", i
      printf "\n#M(0"; for (i = 1; i < n; ++i) printf ",%d", i; print ")"
    } else if (kind == "line_length") { for (i = 0; i < n; ++i) printf "word "; print "" }
    else for (i = 0; i < n; ++i) {
      if (kind == "lines") print "  value[" i "] = " i * 2 ";  // a note"
      else if (kind == "defines") print "#define NAME" i " " i "\nuse #NAME" i
      else if (kind == "includes") print "#include \"part.inc\""
      else if (kind == "sections") print "#if " i " % 3 == 1 && defined(A)\na\n#elif " i " % 3 == 2\nb\n#else\nc\n#endif"
    }
  }' > in.txt
}

# Processor time of one run in milliseconds.
run() {
  local TIMEFORMAT='%U %S' times
  times=$({ time "$qxp" preprocess -o out.txt "$1"; } 2>&1)
  awk '{ printf "%.0f", ($1 + $2) * 1000 }' <<< "$times"
}

# The best of some runs.
measure() {
  local best='' used
  for ((i = 0; i < rounds; ++i)); do
    used=$(run "$1")
    [ -n "$best" ] && [ "$used" -ge "$best" ] || best=$used
  done
  echo "$best"
}

printf 'part of a file\n' > part.inc
printf 'x\n' > empty.txt
start=$(measure empty.txt)
printf '%-24s %9s %9s %9s %6s\n' kind n 'ms(n)' 'ms(4n)' ratio
while read -r kind n; do
  generate "$kind" "$n"
  small=$(($(measure in.txt) - start))
  generate "$kind" $((4 * n))
  large=$(($(measure in.txt) - start))
  awk -v kind="$kind" -v n="$n" -v small="$small" -v large="$large" 'BEGIN {
    printf "%-24s %9d %9d %9d %6.2f\n", kind, n, small, large, small > 0 ? large / small : 0 }'
done << 'KINDS'
lines 1000000
defines 100000
includes 5000
sections 200000
loop_passes 200000
comment_depth 1000000
comment_depth_on_a_line 2000000
arguments 100000
line_length 10000000
KINDS
