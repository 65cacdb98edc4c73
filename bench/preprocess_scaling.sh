#!/usr/bin/env bash
# Preprocesses texts of n and of 4n parts and prints the processor time that each took, start-up taken off, and how
# many times as long the second was. What is linear comes to about 4; above 4.4 the run fails.
#
#     bench/preprocess_scaling.sh build/release/qxp/qxp [KIND...]    all kinds take some three minutes
#
# The best of ROUNDS runs counts (3 unless the environment says otherwise), and of that the time of the program itself.
# The system's share, which is the price of fresh memory for the most part, is shown beside it: the same run has been
# seen to pay from once to six times as much for the same pages.
set -euo pipefail
qxp=$(realpath "$1")
shift
wanted=("$@")
rounds=${ROUNDS:-3}
highest=4.4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# Kinds: name, n, and what qxp preprocess is asked for besides.
kinds='
lines                   1000000
lines_with_origins       500000 --origins
lines_with_markers       500000 --line-markers
line_length            10000000
comment_depth           1000000
comment_depth_on_a_line 2000000
comments_on_a_line      1000000
strings                  500000
strings_on_a_line       1000000
defines                  100000
defines_of_defines       100000
calls                    200000
calls_on_a_line          200000
arguments                100000
redefinitions            200000
includes                   5000
include_files              2000
sections                 200000
section_depth              2500
loop_passes              200000
loops                     50000
loop_body                200000
scripts                  200000
scripts_on_a_line        200000
engine_scripts            20000
partial                  100000 --partial
partial_section_depth      2500 --partial
removed_names            200000 --remove NAME1
'

# Writes in.txt with $2 parts of the kind $1.
generate() {
  rm -f part*.inc
  awk -v kind="$1" -v n="$2" '
  function repeat(text, separator,   i) {
    for (i = 0; i < n; ++i) printf "%s%s", text, i + 1 < n ? separator : "\n"
  }
  BEGIN {
    if (kind == "loop_passes") print "#for i 1;" n ";1\nrow #i of many\n#endfor"
    else if (kind == "loop_body") { print "#for i 1;2;1"; for (i = 0; i < n; ++i) print "row " i " of #i"; print "#endfor" }
    else if (kind == "comment_depth") { repeat("/*", "\n"); repeat("*/", "\n") }
    else if (kind == "comment_depth_on_a_line") { repeat("/*", " "); repeat("*/", " ") }
    else if (kind == "comments_on_a_line") repeat("word /* a note */", " ")
    else if (kind == "strings_on_a_line") repeat("\"part of it\"", " ")
    else if (kind == "line_length") repeat("word", " ")
    else if (kind == "calls_on_a_line") { print "#define M(a,b) (#a, #b)"; repeat("#M(one, two)", " ") }
    else if (kind == "scripts_on_a_line") repeat("#{ 6 * 7 }", " ")
    else if (kind == "arguments") {
      printf "#define M(p0"; for (i = 1; i < n; ++i) printf ",p%d", i; printf ") "
      for (i = 0; i < n; ++i) printf "#p%d ", i
      printf "\n#M(0"; for (i = 1; i < n; ++i) printf ",%d", i; print ")"
    } else if (kind == "section_depth" || kind == "partial_section_depth") {
      # In partial mode nobody knows A, and each warning asks whether a section around it is undecided.
      for (round = 0; round < 40; ++round) {
        for (i = 0; i < n; ++i) print (kind == "section_depth" ? "#ifndef A" : "#ifdef A") "\nx"
        if (kind == "partial_section_depth") for (i = 0; i < n; ++i) print "#warning a note"
        for (i = 0; i < n; ++i) print "#endif"
      }
    } else if (kind == "include_files") {
      for (i = 0; i < n; ++i) {
        file = "part" i ".inc"
        for (j = 0; j < 20; ++j) print "line " j " of " i > file
        close(file)
        print "#include \"" file "\""
      }
    } else for (i = 0; i < n; ++i) {
      if (kind ~ /^lines/) print "  value[" i "] = " i * 2 ";  // a note"
      else if (kind == "strings") print "text(\"number " i "\"  \" of many\", '\''x'\'');"
      else if (kind == "defines") print "#define NAME" i " " i "\nuse #NAME" i
      else if (kind == "defines_of_defines")
        print "#define NAME" i " (" (i % 50 ? "#NAME" i - 1 " + " : "") i ")\nuse #NAME" i
      else if (kind == "calls") print (i ? "" : "#define M(a,b) (#a, #b)\n") "#M(number " i ", \"two\")"
      else if (kind == "redefinitions") print (i ? "#redefine" : "#define") " A " i "\nuse #A"
      else if (kind == "includes") print "#include \"part.inc\""
      else if (kind == "sections") print "#if " i " % 3 == 1 && defined(A)\na\n#elif " i " % 3 == 2\nb\n#else\nc\n#endif"
      else if (kind == "loops") print "#for i 1;3;1\nrow #i of " i "\n#endfor"
      else if (kind == "scripts") print "value = #{ " i " * 2 + 1 };"
      else if (kind == "engine_scripts") print "value = #{ Math.max(" i ", 7) };"
      else if (kind == "partial") print "#ifdef UNKNOWN" i "\nuse #UNKNOWN" i "\n#else\n#define A" i " 1\n#endif"
      else if (kind == "removed_names") print "#define NAME" i % 3 " " i % 3 "\nline " i
    }
  }' > in.txt
  printf 'part of a file\n' > part.inc
}

# Sets `used` to the processor time of one run in milliseconds, and `system` to what the system took besides.
run() {
  local TIMEFORMAT='%U %S' times
  if ! times=$({ time "$qxp" preprocess --quiet -o out.txt "$@" 2> errors.txt; } 2>&1); then
    head -n 3 errors.txt >&2
    exit 2
  fi
  read -r used system < <(awk '{ printf "%.0f %.0f\n", $1 * 1000, $2 * 1000 }' <<< "$times")
}

# Sets `best` and `best_system` to those of some runs.
measure() {
  best='' best_system=''
  for ((i = 0; i < rounds; ++i)); do
    run "$@"
    [ -n "$best" ] && [ "$used" -ge "$best" ] || best=$used
    [ -n "$best_system" ] && [ "$system" -ge "$best_system" ] || best_system=$system
  done
}

for kind in "${wanted[@]}"; do
  grep -q "^$kind " <<< "$kinds" || { echo "preprocess_scaling.sh: no kind $kind" >&2; exit 2; }
done
printf 'x\n' > empty.txt
measure empty.txt
start=$best
failures=0
printf '%-24s %9s %9s %9s %6s %12s\n' kind n 'ms(n)' 'ms(4n)' ratio 'system ms'
while read -r kind n options; do
  [ -n "$kind" ] || continue
  [ ${#wanted[@]} -eq 0 ] || [[ " ${wanted[*]} " == *" $kind "* ]] || continue
  generate "$kind" "$n"
  # shellcheck disable=SC2086 # several words
  measure $options in.txt
  small=$((best - start)) small_system=$best_system
  generate "$kind" $((4 * n))
  # shellcheck disable=SC2086
  measure $options in.txt
  large=$((best - start))
  awk -v kind="$kind" -v n="$n" -v small="$small" -v large="$large" -v highest="$highest" \
    -v system_times="$small_system, $best_system" 'BEGIN {
    ratio = small > 0 ? large / small : 0
    printf "%-24s %9d %9d %9d %6.2f %12s%s\n", kind, n, small, large, ratio, system_times, (ratio > highest ? "  too high" : "")
    exit (ratio > highest) }' || failures=$((failures + 1))
done <<< "$kinds"
[ "$failures" -eq 0 ]
