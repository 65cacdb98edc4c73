#!/usr/bin/env bash
# Runs the examples of a documentation page.
#
#     run_page.sh list PAGE             the names of the page's checks
#     run_page.sh show PAGE CHECK QXP   the transcript of an example as it really is
#     run_page.sh run PAGE CHECK QXP    compares one with what really happens
#
# An example is a fenced block "console": lines "$ COMMAND", each followed by what a terminal would show; a status
# other than 0 is shown as a last line "[status N]". It runs in a fresh directory, shown as /home/me, that holds the section's files: the
# blocks "LANGUAGE name=FILE" between the last heading and the example. A listing is a block "LANGUAGE file=PATH": a
# copy of a file of this project. All other blocks are just text.
set -uo pipefail
shopt -s extglob
source "$(dirname "${BASH_SOURCE[0]}")/environment.sh"

die() {
    echo "$*" >&2
    exit 1
}

# read_page PAGE: calls on_heading, and on_block CHECK INFO TEXT for every fenced block, in order, until one of them
# fails. CHECK is empty for a block that is none.
read_page() {
    local line fence='' info text check examples=0 listings=0
    while IFS= read -r line || [ -n "$line" ]; do
        if [ -n "$fence" ]; then
            if [[ $line != "$fence"* ]]; then
                text+=$line$'\n'
                continue
            fi
            fence= check=
            case $info in
            console) printf -v check 'example_%02d' $((++examples)) ;;
            *\ file=*) printf -v check 'listing_%02d' $((++listings)) ;;
            esac
            on_block "$check" "$info" "$text" || return 0
        elif [[ $line == '```'* ]]; then
            info=${line##*\`} text=
            fence=${line%"$info"}
        elif [[ $line == '#'* && ${line##+('#')} == ' '* ]]; then
            on_heading
        fi
    done <"$1"
    [ -z "$fence" ] || die "$1: a block is not closed"
}

on_heading() { :; }

# play TRANSCRIPT: runs its commands; what a terminal would show goes to standard output.
play() {
    local line status
    while IFS= read -r line <&3; do
        [[ $line == '$ '* ]] || continue
        printf '%s\n' "$line"
        bash -c "${line#'$ '}" >"$scratch/output" 2>&1 3<&- </dev/null
        status=$?
        show_output "$scratch/output"
        [ -z "$(tail -c 1 "$scratch/output")" ] || printf "\n[no line feed]\n"
        [ $status -eq 0 ] || echo "[status $status]"
    done 3<"$1"
}

list_checks() {
    on_block() { [ -z "$1" ] || echo "$1"; }
    read_page "$1"
}

# find_check PAGE CHECK: leaves the section's files in the current directory and the block's text in $scratch/block.
find_check() {
    local wanted=$2
    on_heading() { rm -rf "$scratch/run" && mkdir "$scratch/run" && cd "$scratch/run"; }
    on_block() {
        if [ "$1" = "$wanted" ]; then
            wanted_info=$2
            printf '%s' "$3" >"$scratch/block"
            return 1
        fi
        if [[ $2 == *' name='* ]]; then
            local name=${2#* name=}
            [[ $name != */* ]] || mkdir -p "${name%/*}"
            printf '%s' "$3" >"$name"
        fi
    }
    read_page "$1"
    [ -e "$scratch/block" ] || die "$1: there is no $wanted"
}

run_check() {
    local page wanted_info root
    page=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
    root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
    enter_work_directory "$3"
    find_check "$page" "$2"
    if [[ $wanted_info == *' file='* ]]; then
        local file=${wanted_info#* file=}
        same "$file" "$scratch/block" "$root/$file"
        return
    fi
    [[ $(head -n 1 "$scratch/block") == '$ '* ]] || die "$page: $2 does not begin with a command"
    play "$scratch/block" >"$scratch/transcript"
    if [ "${4:-}" = show ]; then
        cat "$scratch/transcript"
    else
        same "$2" "$scratch/block" "$scratch/transcript"
    fi
}

case ${1:-} in
list) list_checks "$2" ;;
run) run_check "$2" "$3" "$4" ;;
show) run_check "$2" "$3" "$4" show ;;
*) die "usage: run_page.sh list PAGE | run PAGE CHECK QXP | show PAGE CHECK QXP" ;;
esac
