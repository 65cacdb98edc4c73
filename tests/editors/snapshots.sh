#!/usr/bin/env bash
# snapshots.sh MODULES [--update]: the grammars of editors/ give every character of the inputs the scopes that the
# snapshots say. MODULES is the folder with node_modules. The inputs are the files of cases/ and those of examples/.
set -uo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
tool=$1/node_modules/.bin/vscode-tmgrammar-snap
update=${2:-}

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
status=0

# compare SCOPE FILE...: the snapshot of FILE is snapshots/ and its path below the root with "-" between the folders.
compare() {
    local scope=$1 file name folder=$scratch/$1
    shift
    mkdir "$folder"
    for file; do
        name=${file#"$root"/}
        name=${name//\//-}
        cp "$file" "$folder/$name"
        if [ -e "$here/snapshots/$name.snap" ]; then
            cp "$here/snapshots/$name.snap" "$folder"
        elif [ -z "$update" ]; then
            echo "There is no snapshot of $file" >&2
            status=1
        fi
    done
    # The files of a scope are named by their extensions in the package, but those of examples/ have their own.
    "$tool" --config "$root/editors/package.json" -g "$here/javascript.tmLanguage.json" -s "$scope" --expandDiff \
        ${update:+--updateSnapshot} "$folder/*" || status=1
    [ -z "$update" ] || cp "$folder"/*.snap "$here/snapshots"
}

cd "$root/editors" || exit 1
compare text.qxp "$here"/cases/*.qxp "$root"/examples/config/* "$root"/examples/host_preprocess/label.txt
compare text.qxp.template "$here"/cases/*.tpl "$root"/examples/templates/*.tpl
compare text.qxp.tags "$here"/cases/*.tags
exit $status
