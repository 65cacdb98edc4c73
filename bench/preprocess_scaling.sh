#!/usr/bin/env bash
# Preprocesses texts of n and of 4n parts and prints the processor time that each took, start-up taken off, and how
# many times as long the second was. What is linear comes to about 4; above 4.4 the run fails.
#
#     bench/preprocess_scaling.sh build/release/qxp/qxp [KIND...]    all kinds take some four minutes
#
# The time is that of the program and of the system for it: the system knows their sum exactly, but how it falls into
# the two only by looking some hundred times a second. The least of ROUNDS runs counts (7 unless the environment says
# otherwise), since what disturbs a run only adds to it. The first run is not counted: on a virtual machine, memory that
# nobody has used for a while costs several times as much as memory given back a moment ago.
#
# Beside the times stand the page faults of the runs, which tell about memory and always come out the same, and with
# COUNT=1 the ratio of the instructions, start-up taken off. They are counted by valgrind, fifty times as slowly. Where
# they come to 4, the algorithm is linear, and whatever the time is above it is the price of memory: more of 4n than of n
# lies outside of the caches. So n is large enough for both to lie outside of those of one processor (1 MiB here).
set -euo pipefail
qxp=$(realpath "$1")
shift
wanted=("$@")
rounds=${ROUNDS:-7}
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
comment_depth_on_a_line 4000000
comments_on_a_line      2000000
strings                  500000
strings_on_a_line       1000000
defines                  200000
defines_of_defines       100000
calls                    200000
calls_on_a_line          200000
arguments                400000
redefinitions            200000
includes                   5000
include_files              5000
sections                 200000
section_depth              2500
loop_passes              200000
loops                    100000
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
      for (round = 0; round < 120; ++round) {
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

# Runs the program and prints for the cheapest of the runs its microseconds, and its page faults.
measure() {
  python3 - "$rounds" "$qxp" preprocess --quiet -o out.txt "$@" << 'END'
import os
import sys

rounds, command = int(sys.argv[1]), sys.argv[2:]
best = None
for number in range(rounds + 1):
    process = os.fork()
    if process == 0:
        os.dup2(os.open("errors.txt", os.O_WRONLY | os.O_CREAT | os.O_TRUNC), 2)
        os.execv(command[0], command)
    _, status, usage = os.wait4(process, 0)
    if status != 0:
        sys.exit(open("errors.txt").read(1000) or f"status {status}")
    used = round(1e6 * (usage.ru_utime + usage.ru_stime)), usage.ru_minflt
    if number > 0:
        best = min(best or used, used)
print(*best)
END
}

# Prints how many instructions a run takes.
count() {
  [ -z "${COUNT:-}" ] && { echo 0; return; }
  valgrind --tool=cachegrind --cache-sim=no --cachegrind-out-file=/dev/null \
    "$qxp" preprocess --quiet -o out.txt "$@" 2>&1 | awk '/I +refs/ { gsub(",", ""); print $NF }'
}

for kind in "${wanted[@]}"; do
  grep -q "^$kind " <<< "$kinds" || { echo "preprocess_scaling.sh: no kind $kind" >&2; exit 2; }
done
printf 'x\n' > empty.txt
read -r start start_faults < <(measure empty.txt)
start_count=$(count empty.txt)
failures=0
printf '%-24s %9s %9s %9s %6s %17s %12s\n' kind n 'ms(n)' 'ms(4n)' ratio 'page faults' instructions
while read -r kind n options; do
  [ -n "$kind" ] || continue
  [ ${#wanted[@]} -eq 0 ] || [[ " ${wanted[*]} " == *" $kind "* ]] || continue
  generate "$kind" "$n"
  # shellcheck disable=SC2086 # several words
  small=$(measure $options in.txt)
  # shellcheck disable=SC2086
  small_count=$(count $options in.txt)
  generate "$kind" $((4 * n))
  # shellcheck disable=SC2086
  large=$(measure $options in.txt)
  # shellcheck disable=SC2086
  large_count=$(count $options in.txt)
  awk -v kind="$kind" -v n="$n" -v start="$start" -v faults="$start_faults" -v small="$small" -v large="$large" \
    -v counts="$start_count $small_count $large_count" -v highest="$highest" 'BEGIN {
    split(small, s); split(large, l); split(counts, c)
    ratio = (l[1] - start) / (s[1] - start)
    instructions = c[1] ? sprintf("%.2f", (c[3] - c[1]) / (c[2] - c[1])) : ""
    printf "%-24s %9d %9.0f %9.0f %6.2f %17s %12s%s\n", kind, n, (s[1] - start) / 1000, (l[1] - start) / 1000, ratio,
      s[2] - faults ", " l[2] - faults, instructions, (ratio > highest ? "  too high" : "")
    exit (ratio > highest) }' || failures=$((failures + 1))
done <<< "$kinds"
[ "$failures" -eq 0 ]
