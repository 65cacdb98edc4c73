#!/usr/bin/env bash
# build_site.sh DOXYGEN DOXYFILE: makes the site afresh. Fails on every warning, such as a public name without a
# description or a link to nothing, and on what Doxygen does not warn about.
set -uo pipefail

setting() {
    sed -n "s/^$1 *= *\"\?\([^\"]*\)\"\?$/\1/p" "$2" | tail -n 1
}

site=$(setting OUTPUT_DIRECTORY "$2")
xml=$(setting XML_OUTPUT "$2")
rm -rf "$site" "$xml"
mkdir -p "$site"
status=0
"$1" "$2" || status=1
awk -f "$(dirname "${BASH_SOURCE[0]}")/undocumented.awk" "$xml"/*.xml || status=1
exit $status
