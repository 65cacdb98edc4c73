#!/usr/bin/env bash
# Tests of the runners: what is right passes, and everything that can be wrong in a case or a page is found.
#
#     runner_test.sh QXP
set -uo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
qxp=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0

# expect RESULT DESCRIPTION COMMAND...: RESULT is passes or fails.
expect() {
    local wanted=$1 description=$2 result=passes
    shift 2
    "$@" >"$scratch/log" 2>&1 || result=fails
    [ $result = "$wanted" ] && return
    echo "$description: $result"
    cat "$scratch/log"
    failed=1
}

case=$scratch/case
make_case() {
    rm -rf "$case" && mkdir "$case"
    printf 'qxp preprocess in.txt\necho warned >&2\nexit 3\n' >"$case/cmd"
    printf 'text\n' >"$case/in.txt"
    printf 'text\n' >"$case/stdout"
    printf 'warned\n' >"$case/stderr"
    echo 3 >"$case/status"
}
run_case() { bash "$here/run_case.sh" "$qxp" "$case"; }

make_case
expect passes "a right case" run_case
for part in stdout stderr status; do
    make_case && rm "$case/$part"
    expect fails "a case without its $part" run_case
    make_case && echo more >>"$case/$part"
    expect fails "a case with more in its $part" run_case
done
make_case && printf 'text' >"$case/stdout"
expect fails "a case without the last line feed" run_case
make_case && rm "$case/in.txt"
expect fails "a case without its input" run_case

page=$scratch/page.md
make_page() {
    printf '%s\n' '# Page' '```text name=a/in.txt' "$1" '```' '```console' "$2" "$3" "$4" '```' >"$page"
    printf '%s\n' '# Next' '```console' '$ cat a/in.txt' '```' '```text file=tests/cli/cases/.empty' '```' >>"$page"
}
run_page() { bash "$here/run_page.sh" run "$page" "$1" "$qxp"; }

make_page '#error x' '$ qxp preprocess a/in.txt' $'a/in.txt:1: error: ERROR :  x\n    #error x' '[status 1]'
expect passes "a right example" run_page example_01
expect fails "an example with a file of another section" run_page example_02
expect fails "an example that does not exist" run_page example_03
expect fails "a listing of a file that does not exist" run_page listing_01
make_page '#error x' '$ qxp preprocess a/in.txt' $'a/in.txt:1: error: ERROR :  x\n    #error x' '[status 2]'
expect fails "an example with another status" run_page example_01
make_page 'text' '$ qxp preprocess a/in.txt' 'text' '[status 1]'
expect fails "an example with a status that it does not have" run_page example_01
make_page 'text' 'qxp preprocess a/in.txt' 'text' ''
expect fails "an example without a command" run_page example_01
make_page 'text' '$ printf text' 'text' '[no line feed]'
expect passes "an example without the last line feed" run_page example_01
make_page 'text' '$ printf text' 'text' ''
expect fails "an example that hides that the last line feed is missing" run_page example_01

[ "$(bash "$here/run_page.sh" list "$page" | tr '\n' ' ')" = 'example_01 example_02 listing_01 ' ] || {
    echo "the checks of a page are not all listed"
    failed=1
}
exit $failed
