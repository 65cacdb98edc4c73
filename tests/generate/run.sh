#!/usr/bin/env bash
# Builds the project beside this with Ninja, against the installed library, and sees what each change makes anew.
#
#     run.sh BUILD    BUILD is the library's build folder, whose tests have installed it
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
tree=$(cd "$1/tests/install/tree" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
LD_LIBRARY_PATH=$(dirname "$(find "$tree" -name libvc_qxparser.so)")
export LC_ALL=C.UTF-8 LD_LIBRARY_PATH
unset DESTDIR CMAKE_GENERATOR
# Names with blanks are everywhere.
source="$scratch/the source"
build="$scratch/the build"
log=$scratch/log
outputs=(config.h 'generated code/colours.h' page.txt 'other page.txt')

fail() {
    echo "$1" >&2
    cat "$log" >&2
    exit 1
}

build() {
    cmake --build "$build" >"$log" 2>&1
}

# The outputs that are made from now on are newer than this.
mark() {
    sleep 0.02
    touch "$scratch/mark"
    sleep 0.02
}

# builds_only WHAT OUTPUT...: a build makes these outputs and no others.
builds_only() {
    local what=$1 output made=() expected=("${@:2}")
    mark
    build || fail "$what: the build failed"
    for output in "${outputs[@]}"; do
        [ "$build/$output" -nt "$scratch/mark" ] && made+=("$output")
    done
    [ "${made[*]-}" = "${expected[*]-}" ] || fail "$what: made '${made[*]-}', not '${expected[*]-}'"
    build || fail "$what: the second build failed"
    grep -q 'no work to do' "$log" || fail "$what: a second build has something to do"
}

says() {
    local said
    said=$("$build/show")
    [ "$said" = "$1" ] || fail "the program says '$said', not '$1'"
}

# is_refused TEXT ARGUMENTS: a project with this call is refused with this message.
is_refused() {
    mkdir -p "$scratch/refused"
    cat >"$scratch/refused/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.25)
project(refused LANGUAGES C)
find_package(vc_qxparser 1.0 REQUIRED)
$2
END
    ! cmake -G Ninja -S "$scratch/refused" -B "$scratch/refused/build" -DCMAKE_PREFIX_PATH="$tree" >"$log" 2>&1 ||
        fail "not refused: $2"
    tr -s '\n ' '  ' <"$log" | grep -qF "$1" || fail "not the message '$1'"
}

cp -R "$here/project" "$source"
cmake -G Ninja -S "$source" -B "$build" -DCMAKE_PREFIX_PATH="$tree" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF \
    >"$log" 2>&1 || fail 'the project was not configured'

builds_only 'the first build' "${outputs[@]}"
says 'lamp good day; all 7 1'
[ "$(cat "$build/page.txt")" = $'page.txt:1:\tpage\nparts/foot 1.inc:1:\tfoot' ] || fail 'the page is another one'
builds_only 'nothing'

touch "$source/config.h.in"
builds_only 'an input that was touched' config.h
echo '#define size 8' >"$source/parts/sizes.inc"
builds_only 'an include' config.h
says 'lamp good day; all 8 1'
touch "$source/parts/foot 1.inc"
builds_only 'an include of two outputs' page.txt 'other page.txt'
touch "$source/templates/more parts/names.inc"
builds_only 'an include of a template' 'generated code/colours.h'
sed -i 's|<colours>|&<colour name="green"/>|' "$source/templates/the model.xml"
builds_only 'the document' 'generated code/colours.h'
says 'lamp good day; all 8 2'
touch "$source/extra.txt"
builds_only 'a further dependency' page.txt
sed -i 's|product=lamp|product=torch|' "$source/CMakeLists.txt"
builds_only 'a define' config.h
says 'torch good day; all 8 2'
rm "$build/page.txt"
builds_only 'a missing output' page.txt

# A file that is included no longer is no longer waited for.
sed -i '/include/d' "$source/page.txt"
builds_only 'an input without its include' page.txt
rm "$source/parts/foot 1.inc"
sed -i '/include/d' "$source/other page.txt"
builds_only 'an include that is gone' 'other page.txt'

# What fails leaves the output as it was, fails the build, and is tried again.
cp "$build/generated code/colours.h" "$scratch/colours.h"
cp "$source/templates/colours of.tpl" "$scratch/good.tpl"
echo '[[repeat' >>"$source/templates/colours of.tpl"
for _ in first second; do
    ! build || fail 'a build with a bad template succeeded'
    grep -q 'colours of.tpl:5: error: ' "$log" || fail 'the error is not shown'
    cmp -s "$build/generated code/colours.h" "$scratch/colours.h" || fail 'a failed build changed the output'
done
cp "$scratch/good.tpl" "$source/templates/colours of.tpl"
builds_only 'a template that is good again' 'generated code/colours.h'

is_refused 'qxp_preprocess: SOURCES is missing' 'qxp_preprocess(a OUTPUT b)'
is_refused 'qxp_preprocess: OUTPUT is missing' 'qxp_preprocess(a SOURCES b)'
is_refused 'qxp_preprocess: unknown arguments: c' 'qxp_preprocess(a c OUTPUT b SOURCES b)'
is_refused 'qxp_expand: XML is missing' 'qxp_expand(a OUTPUT b TEMPLATE c)'
is_refused 'qxp_expand: nothing behind: BEGIN' 'qxp_expand(a OUTPUT b TEMPLATE c XML d BEGIN)'
