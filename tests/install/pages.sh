#!/usr/bin/env bash
# Runs the commands that README.md and CONTRIBUTING.md give to new users, in their order and as one user would.
#
#     pages.sh CHECK BUILD [FLAGS]    CHECK is a function below; BUILD is the library's build folder; FLAGS are compiler
#                                     flags that a program needs with it
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
build=$(cd "$2" && pwd)
export CXXFLAGS=${3:-} LC_ALL=C.UTF-8
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# blocks PAGE HEADING LANGUAGE: what stands in the fenced blocks of a section.
blocks() {
    awk -v heading="$2" -v fence="\`\`\`$3" '
        /^#/ && !inside { section = $0 == heading }
        /^```/ { shown = section && !inside && $0 == fence; inside = !inside; next }
        shown' "$root/$1"
}

# What the two example hosts of the pages print.
cat >"$scratch/expected" <<'END'
file "label.txt (LOOP l.2)" line 1: Lamp of size 1
file "label.txt (LOOP l.2)" line 1: Lamp of size 2
file "label.txt" line 8: in stock
END

# The tour is one session in one folder, with the files of the page in it.
tour_of_the_readme() {
    local tour='## Five minutes with qxp preprocess' name
    mkdir "$scratch/tour"
    cd "$scratch/tour"
    for name in server.conf.in ports.inc; do
        blocks README.md "$tour" "qxp name=$name" >"$name"
        [ -s "$name" ]
    done
    blocks README.md "$tour" console >"$scratch/transcript"
    [ "$(grep -c '^\$ ' "$scratch/transcript")" -ge 7 ]
    PATH=$build/qxp:$PATH
    while read -r line; do
        [[ $line != '$ '* ]] || {
            printf '%s\n' "$line"
            bash -c "${line#'$ '}" 2>&1 </dev/null || echo "[status $?]"
        }
    done <"$scratch/transcript" >"$scratch/actual"
    diff -u "$scratch/transcript" "$scratch/actual"
}

# The host, built against an installed copy.
host_of_the_readme() {
    blocks README.md '## Use the library' sh >"$scratch/commands"
    grep -q 'host_preprocess label.txt' "$scratch/commands"
    cmake --install "$build" --prefix "$scratch/prefix" >"$scratch/log"
    sed -i "s|PREFIX\$|$scratch/prefix|; s|/tmp/host|$scratch/host|g" "$scratch/commands"
    run_commands
}

# run_commands: the commands end with the lines of the example host.
run_commands() {
    (cd "$root" && bash -e "$scratch/commands") >"$scratch/output" 2>"$scratch/log" || {
        cat "$scratch/log" "$scratch/output" >&2
        return 1
    }
    grep '^file "' "$scratch/output" | diff -u "$scratch/expected" -
}

# release_command LINE: the line as it can be run here; nothing for one that cannot.
release_command() {
    case $1 in
    'git clone '* | ./test.sh | 'sudo apt-get '*) ;; # the network, this very run, the system
    *cpack*) ;;                                      # other tests make the packages
    ./run.sh) [ "$build" != "$root/build/release" ] || echo "./run.sh >$scratch/lines" ;;
    'cmake --install build/release'*) echo "cmake --install $build${1#*release}" ;;
    *) echo "$1" ;;
    esac
}

# What is to be done before a release, but for what changes the system: a line that is new there is run here.
release_check() {
    local line
    blocks CONTRIBUTING.md '## Release check' sh | sed 's/ *#.*//' >"$scratch/lines_of_the_page"
    [ "$(wc -l <"$scratch/lines_of_the_page")" -ge 11 ]
    while read -r line; do
        release_command "$line"
    done <"$scratch/lines_of_the_page" >"$scratch/commands"
    export HOME=$scratch/home PATH=$scratch/home/qxparser/bin:$PATH MANPATH=$scratch/home/qxparser/share/man PAGER=cat
    mkdir "$HOME"
    run_commands
    grep -qE '^qxp [0-9.]+$' "$scratch/output"
    grep -q 'qxp preprocess' "$scratch/output"
    [ ! -e "$scratch/lines" ] || grep -q '^config.h.in:' "$scratch/lines"
}

"$1"
