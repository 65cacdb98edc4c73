#!/usr/bin/env bash
# snapshots_test.sh MODULES: snapshots.sh must fail where it should. It runs on a copy of the project's folders.
set -uo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# fails MESSAGE: the snapshots of the copy do not hold, and MESSAGE is said.
fails() {
    if bash "$scratch/tests/editors/snapshots.sh" "$modules" >"$scratch/output" 2>&1; then
        echo "no failure: $1" >&2
        exit 1
    fi
    grep -qF -- "$1" "$scratch/output" || { cat "$scratch/output"; echo "not said: $1" >&2; exit 1; }
}

copy() {
    rm -rf "$scratch/tests" "$scratch/editors" "$scratch/examples"
    mkdir "$scratch/tests"
    cp -r "$root/editors" "$root/examples" "$scratch"
    cp -r "$here" "$scratch/tests"
}

modules=$1
copy
sed -i '0,/keyword.control.directive.define/s//keyword.control.directive.other/' \
    "$scratch/tests/editors/snapshots/tests-editors-cases-directives.qxp.snap"
fails 'keyword.control.directive.other.qxp'

copy
sed -i 's/ifdef|ifndef|elseifdef/ifdef|ifndef/' "$scratch/editors/syntaxes/qxp.tmLanguage.json"
fails '#elseifdef other'

copy
echo '#else' >>"$scratch/tests/editors/cases/text.qxp"
fails 'tests-editors-cases-text.qxp'

copy
rm "$scratch/tests/editors/snapshots/examples-templates-class.tpl.snap"
fails 'There is no snapshot of'
