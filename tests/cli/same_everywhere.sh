#!/usr/bin/env bash
# What qxp gives depends on its input only: not on the locale, the time zone, the user's home, the length of the
# directory's path, the place of things in memory, or how the input arrives.
#
#     same_everywhere.sh QXP
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/environment.sh"
enter_work_directory "$1"
start=$PWD

make_input() {
    mkdir -p part
    {
        echo '#define PI 3.25'
        echo '#define title "İstanbul, straße" '
        for name in zeta alpha Ipsum iota Beta; do echo "#define $name $name"; done
        echo '#include "part/part.txt"'
        echo '#for i 1;3;1'
        echo '#{(#i / 4).toString()} #i'
        echo '#endfor'
        echo '#if ("i".toUpperCase() == "I")'
        echo 'upper #title #{"title".toUpperCase()} #PI'
        echo '#endif'
    } >in.txt
    echo 'déjà vu #iota' >part/part.txt
    printf "<type='window' zeta='1' alpha=\"2\" Ipsum=3 iota=4>\nĞ text\n</type>\n" >tags.txt
    printf '<r title="İi" x="1.5"><b/><a>ß</a><c n="10"/><c n="9"/></r>\n' >base.xml
    printf '<r><d/><a y="2"/></r>\n' >overlay.xml
    printf "x [%%x%%] [%%(GetProp('title').toLowerCase())%%] [%%(GetProp('x') / 2)%%]\n" >template.txt
    cat >script.js <<'END'
print(1 / 3, 1e21, 0.1 + 0.2, 'iI'.toUpperCase(), 'İI'.toLowerCase(), ['z', 'ä', 'a', 'Z'].sort());
var o = {b: 1, a: 2, 10: 3, 9: 4};
for (var name in o) print(name, o[name]);
var d = new XmlDocument();
d.SetContent('<n v="1.5"/>');
print(d.GetRoot().GetAllProps(), FormatString('%s', 2.5));
var f = new TextFile();
if (!f.Create('made.txt') || !f.WriteLn('ğ 1.5')) throw 'not written';
END
}

# Everything that comes of some runs, in the current directory.
run_all() {
    make_input
    qxp preprocess --origins -D HOST=1.5 in.txt || echo "[status $?]"
    qxp preprocess --list-defines in.txt || echo "[status $?]"
    qxp preprocess --deps in.txt || echo "[status $?]"
    qxp preprocess - <in.txt || echo "[status $?]"
    qxp tags --options --content tags.txt || echo "[status $?]"
    qxp expand template.txt base.xml || echo "[status $?]"
    qxp merge base.xml overlay.xml || echo "[status $?]"
    qxp script --config cfg.xml script.js || echo "[status $?]"
    cat made.txt
    rm made.txt
}

# under TEXT COMMAND...: compares what the runs give in surroundings that differ by COMMAND (env, as a rule).
under() {
    local text=$1
    shift
    # The shell has its own word to say about locales that it does not know.
    "$@" bash "$scratch/again.sh" 2>&1 | sed '/^bash: warning: setlocale/d' >"$scratch/actual" || true
    same "the output $text" "$scratch/expected" "$scratch/actual" || failed=1
    compared=$((compared + 1))
}

failed=0
compared=0
declare -f make_input run_all >"$scratch/again.sh"
echo run_all >>"$scratch/again.sh"
bash "$scratch/again.sh" >"$scratch/expected" 2>&1
[ "$(grep -c . "$scratch/expected")" -gt 40 ] || { cat "$scratch/expected" && exit 1; }

for locale in C POSIX C.UTF-8 de_DE.UTF-8 tr_TR.UTF-8 tr_TR.ISO-8859-9 ja_JP.EUC-JP nonsense; do
    # Those that are not installed are made, where their description is.
    if [ -e "/usr/share/i18n/locales/${locale%%.*}" ]; then
        mkdir -p "$scratch/locales"
        localedef -i "${locale%%.*}" -f "${locale#*.}" "$scratch/locales/$locale" 2>/dev/null || true
    fi
    under "in the locale $locale" env LOCPATH="$scratch/locales" LC_ALL="$locale" LANG="$locale" LANGUAGE=tr:de
done
for zone in UTC America/New_York Asia/Kolkata XXX-13; do
    under "in the time zone $zone" env TZ="$zone"
done
for run in 1 2 3; do
    under "in run $run" env RUN="$run"
done
under "without randomised addresses" setarch "$(uname -m)" -R
under "without surroundings" env -i PATH="$PATH"
under "with much in the surroundings" env MUCH="$(head -c 50000 /dev/zero | tr '\0' x)"
long=$(printf 'long%.0s' {1..50})
mkdir -p "$long/$long"
cd "$long/$long"
under "in a directory with a long path" env
cd "$start"
under "with little memory for the stack" bash -c 'ulimit -s 2048; exec "$@"' - env

# Input that arrives one byte at a time.
make_input
for file in in.txt part/part.txt; do
    qxp preprocess --partial - <"$file" >"$scratch/expected" 2>&1 || true
    dd if="$file" bs=1 status=none | qxp preprocess --partial - >"$scratch/actual" 2>&1 || true
    same "what becomes of $file from a pipe" "$scratch/expected" "$scratch/actual" || failed=1
done

[ "$compared" -gt 15 ] || exit 1
exit $failed
