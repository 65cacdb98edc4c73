#!/usr/bin/env bash
# Builds an example host as a stranger would, against an installed library, and compares what it prints.
#
#     run_script_hosts.sh EXAMPLE BUILD FLAGS    BUILD is the library's build folder, FLAGS are compiler flags the host
#                                                needs with it
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/host.sh"

name=$1
build_host "$name" "$2" "${3:-}"

case $name in
host_scriptable)
    cp "$example/tank.js" .
    "$host" tank.js >"$scratch/actual" 2>&1 || echo "[status $?]" >>"$scratch/actual"
    cp "$example/output.txt" "$scratch/expected"
    ;;
host_engine)
    "$host" >"$scratch/actual" 2>&1 || echo "[status $?]" >>"$scratch/actual"
    cp "$example/output.txt" "$scratch/expected"
    ;;
host_threads)
    cp "$example"/*.txt "$example/rules.js" .
    "$host" rules.js ports.txt draft.txt endless.txt long.txt missing.txt >"$scratch/actual" 2>&1 ||
        echo "[status $?]" >>"$scratch/actual"
    cp "$example/output.txt" "$scratch/expected"
    ;;
host_overlay)
    cp "$example"/*.xml .
    echo '<other/>' >other.xml
    printf '<settings>\n</setting>\n' >broken.xml
    "$host" settings.xml defaults.xml site.xml other.xml broken.xml user.xml >"$scratch/out" 2>"$scratch/actual" ||
        echo "[status $?]" >>"$scratch/actual"
    cat "$scratch/out" >>"$scratch/actual"
    cp "$example/output.txt" "$scratch/expected"
    ;;
host_plugin)
    printf 'first\nsecond\n' >lines.txt
    script="var f = new TextFile(); f.Open('lines.txt'); f.ReadLn() + '|' + f.ReadLn() + '|' + f.Eof()"
    {
        "$host" plain "$scratch/build/script_plugin.so" "$script" 2>&1 || echo "[status $?]"
        "$host" managed "$scratch/build/script_plugin.so" "$script" 2>&1 || echo "[status $?]"
    } >"$scratch/actual"
    printf 'first|second|true\nfirst|second|true\n' >"$scratch/expected"
    ;;
host_settings_window)
    cp "$example/settings.js" .
    # The toolkit keeps what it has allocated.
    export ASAN_OPTIONS=detect_leaks=0
    for run in change look look; do
        timeout 60 xvfb-run -a "$host" settings.xml settings.js "$run" 2>/dev/null || echo "[status $?]"
    done >"$scratch/actual"
    for run in change look look; do
        echo "120,90 500x350, sash 210, wrap 1, numbers 0"
    done >"$scratch/expected"
    ;;
esac
same "the host's output" "$scratch/expected" "$scratch/actual"
