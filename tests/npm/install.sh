#!/usr/bin/env bash
# install.sh NPM FOLDER: installs the packages of package-lock.json into FOLDER/node_modules, unless they are there.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
folder=$2

if [ -e "$folder/installed" ] && cmp -s "$here/package-lock.json" "$folder/installed"; then
    exit 0
fi
rm -rf "$folder"
mkdir -p "$folder"
cp "$here/package.json" "$here/package-lock.json" "$folder"
cd "$folder"
"$1" ci --ignore-scripts --prefer-offline --no-audit --no-fund
cp package-lock.json installed
