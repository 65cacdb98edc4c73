#!/usr/bin/env bash
# Runs qxp with allocations that fail, one in each run and then all from one on: it succeeds with the right result, or
# says that it does not, and no file is anything but old or new.
#
#     allocations.sh QXP LIBRARY [STEP]    LIBRARY is the one of fault_malloc.cpp; each next number is higher by a part
#                                          of STEP (8), so that 1000 means nearly every allocation, and hours
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../cli/environment.sh"
library=$(cd "$(dirname "$2")" && pwd)/$(basename "$2")
step=${3:-8}
enter_work_directory "$1"

make_input() {
    printf '#define A 1\n#include <part.txt>\n#for i 1;3;1\n#if (#i == 2)\n#A #i\n#endif\n#endfor\n' >in.txt
    printf 'a part\n' >part.txt
    printf '<r v="1"><a/></r>\n' >base.xml
    printf '<r><b/></r>\n' >overlay.xml
    printf '<%%keep%%>\n[%%v%%] [%%(GetProp("v") * 2)%%]\n<%%/keep%%>\n' >template.txt
    echo 'var f = new TextFile(); if (!f.Create("out.txt.made") || !f.WriteLn("x")) throw "not written"' >script.js
    echo old >out.txt
    rm -f out.txt.made
}

fail() {
    echo "$*" >&2
    sed 's/^/    /' "$scratch/errors" >&2
    exit 1
}

# Some file that may be written is what it was, or what it is to be. Scripts make it empty first.
check_file() {
    local name=$1
    if [ -e "$name" ]; then
        cmp -s "$name" "$scratch/before/$name" || cmp -s "$name" "$scratch/after/$name" ||
            { [ "$name" = out.txt.made ] && [ ! -s "$name" ]; } || fail "$what: $name is neither old nor new"
    elif [ -e "$scratch/before/$name" ]; then
        fail "$what: $name is gone"
    fi
}

# under_failures COMMAND...: all runs of one command.
under_failures() {
    make_input
    rm -rf "$scratch/before" "$scratch/after"
    cp -R . "$scratch/before"
    qxp "$@" >"$scratch/output" 2>"$scratch/errors" || fail "$* fails without failures"
    cp -R . "$scratch/after"
    local behind number status failed succeeded
    for behind in '' +; do
        failed=0 succeeded=0
        # The end is where so many runs in a row have met no failure that all allocations must have been before.
        for ((number = 1; succeeded < 3; number += 1 + number / step)); do
            what="allocation $number$behind of qxp $*"
            make_input
            status=0
            { QXP_FAILING=$number$behind LD_PRELOAD=$library timeout 60 qxp "$@" >"$scratch/actual"; } \
                2>"$scratch/errors" || status=$?
            check_file out.txt
            check_file out.txt.made
            check_file base.xml
            if [ $status -eq 0 ]; then
                cmp -s "$scratch/output" "$scratch/actual" || fail "$what: another output"
                diff -r . "$scratch/after" >&2 || fail "$what: reported as done"
                [ $number -lt 2000 ] || succeeded=$((succeeded + 1))
            else
                [ $status -ne 124 ] || fail "$what: it hangs"
                [ -s "$scratch/errors" ] || fail "$what: status $status without a word"
                failed=$((failed + 1)) succeeded=0
            fi
        done
        [ $failed -gt 5 ] || fail "qxp $*: failures hardly show ($failed)"
        echo "qxp $*: $failed runs have failed, up to allocation $number$behind"
    done
}

under_failures preprocess -o out.txt in.txt
under_failures expand -o out.txt template.txt base.xml
under_failures merge --in-place base.xml overlay.xml
under_failures script script.js
