#!/usr/bin/env bash
# Checks what a stranger gets: an installed copy of the library, and the packages that are made of it.
#
#     run.sh CHECK BUILD [FLAGS]    CHECK is a function below; BUILD is the library's build folder; FLAGS are compiler
#                                   flags that a program needs with it
#
# The checks work in BUILD/tests/install: `install_tree` fills `tree`, `make_packages` fills `packages`, and the others
# look at those.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(cd "$2" && pwd)
flags=${3:-}
work=$build/tests/install
tree=$work/tree
packages=$work/packages
export LC_ALL=C.UTF-8
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

quietly() {
    "$@" >"$scratch/log" 2>&1 || { cat "$scratch/log" >&2 && return 1; }
}

fail() {
    echo "$1" >&2
    exit 1
}

# use_tree ROOT: programs are built against what is installed there, and find their libraries there.
use_tree() {
    local pc
    pc=$(find "$1" -name vc_qxparser.pc)
    export CMAKE_PREFIX_PATH=$1
    PKG_CONFIG_PATH=$(dirname "$pc")
    LD_LIBRARY_PATH=$(dirname "$PKG_CONFIG_PATH")
    export PKG_CONFIG_PATH LD_LIBRARY_PATH
}

consumer_says_what_it_should() {
    "$scratch/consumer" >"$scratch/actual" 2>&1 || true
    diff -u "$here/consumer/output.txt" "$scratch/actual"
}

install_tree() {
    rm -rf "$tree"
    quietly cmake --install "$build" --prefix "$tree"
}

# What is installed can be moved as a whole, and needs nothing of the surroundings to find its libraries.
programs_run_from_any_prefix() {
    local file moved="$scratch/moved here"
    quietly cmake --install "$build" --prefix "$scratch/first"
    mv "$scratch/first" "$moved"
    unset LD_LIBRARY_PATH
    [ "$("$moved/bin/qxp" script -e '6 * 7')" = 42 ] || fail "qxp does not run"
    for file in "$moved/bin/qxp" "$(find "$moved" -name libvc_qxparser_window.so)"; do
        ldd "$file" >"$scratch/libraries"
        grep -qF "=> $moved/" "$scratch/libraries" || fail "$file finds another library: $(cat "$scratch/libraries")"
        ! grep -F "$build" "$scratch/libraries" || fail "$file needs the build folder"
    done
}

consumer_through_cmake() {
    use_tree "$tree"
    unset LD_LIBRARY_PATH
    quietly cmake -G Ninja -S "$here/consumer" -B "$scratch/build" -DCMAKE_CXX_FLAGS="$flags" \
        -DCMAKE_CXX_COMPILER_LAUNCHER= -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
    quietly cmake --build "$scratch/build"
    mv "$scratch/build/consumer" "$scratch/consumer"
    consumer_says_what_it_should
}

consumer_through_pkg_config() {
    use_tree "${1:-$tree}"
    # shellcheck disable=SC2046,SC2086
    g++ -std=c++17 $flags -Wall -Wextra -Werror "$here/consumer/main.cpp" -o "$scratch/consumer" \
        $(pkg-config --cflags --libs vc_qxparser) -Wl,-rpath,"$(pkg-config --variable=libdir vc_qxparser)"
    (unset LD_LIBRARY_PATH && consumer_says_what_it_should)
    [ "$(pkg-config --modversion vc_qxparser)" = "$("$tree/bin/qxp" --version | cut -d' ' -f2)" ]
}

# A host asks for a version that it was written to: the same major version and no newer one will do.
other_versions_are_refused() {
    local version
    for version in 1.99 2.0 0.9; do
        mkdir "$scratch/$version"
        sed "s/vc_qxparser 1.0/vc_qxparser $version/" "$here/consumer/CMakeLists.txt" >"$scratch/$version/CMakeLists.txt"
        cp "$here/consumer/main.cpp" "$scratch/$version"
        ! CMAKE_PREFIX_PATH=$tree cmake -G Ninja -S "$scratch/$version" -B "$scratch/$version/build" \
            >"$scratch/log" 2>&1 || fail "version $version was accepted"
        grep -q 'compatible with requested version' "$scratch/log"
    done
}

# Each header compiles alone, as the only one of a program.
headers_compile_alone() {
    use_tree "$tree"
    local cflags window_cflags
    cflags=$(pkg-config --cflags vc_qxparser)
    window_cflags=$(pkg-config --cflags vc_qxparser_window)
    (cd "$tree/include/vc_qxparser" && find . -name '*.h' -printf '%P\n' | sort) >"$scratch/headers"
    [ "$(wc -l <"$scratch/headers")" -gt 40 ]
    while read -r header; do
        echo "#include <$header>" >"$scratch/$(echo "$header" | tr / _).cpp"
    done <"$scratch/headers"
    # shellcheck disable=SC2086
    compile() { g++ -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Werror $1 "$2"; }
    export -f compile
    printf '%s\0' "$scratch"/*.cpp | xargs -0 -n 1 -P "$(nproc)" bash -c 'compile "$0" "$1"' "$cflags"
    compile "$window_cflags" "$scratch/vc_qxparser.h.cpp"
}

# The classes, functions and data that programs can link with, members left out.
exported_names() {
    nm -DC --defined-only "$1" | cut -d' ' -f3- |
        sed -E 's/^(vtable|typeinfo name|typeinfo|guard variable|(non-)?virtual thunk) (for|to) //; s/\[abi:cxx11\]//' |
        sed -E 's/\(.*//; s/<.*//; s/^(qxjs::[A-Za-z0-9_]+).*/\1/; /^qxjs::/!s/::.*//; s/^.* //' | sort -u
}

# What is exported is the interface: a name that comes or goes is a decision, and stands in exports.txt after it.
exported_symbols() {
    local lib
    for lib in vc_qxparser vc_qxparser_window; do
        echo "[$lib]"
        exported_names "$(find "$tree" -name "lib$lib.so")"
    done >"$scratch/actual"
    [ "${UPDATE_EXPORTS:-}" = "" ] || cp "$scratch/actual" "$here/exports.txt"
    diff -u "$here/exports.txt" "$scratch/actual"
}

# The names that a linker notes in programs, so that a later version with another interface is not taken for this one.
sonames() {
    local lib soname
    for lib in vc_qxparser vc_qxparser_window; do
        soname=$(objdump -p "$(find "$tree" -name "lib$lib.so")" | awk '$1 == "SONAME" { print $2 }')
        [ "$soname" = "lib$lib.so.1" ] || fail "the soname of $lib is $soname"
    done
    ! objdump -p "$tree/bin/qxp" | grep -E 'NEEDED.*(gtk|gdk|wx_gtk)' || fail "qxp needs a library for windows"
}

man_page_is_clean() {
    local page=$build/qxp/reference/qxp.1
    man --warnings -E UTF-8 -Tutf8 -l "$page" 2>"$scratch/warnings" >"$scratch/page"
    [ ! -s "$scratch/warnings" ] || fail "$(cat "$scratch/warnings")"
    grep -q 'preprocess' "$scratch/page"
    # Every option of every command is on the page.
    local command option
    for command in preprocess tags expand merge script; do
        "$build/qxp/qxp" "$command" --help | sed -nE 's/^  (-[A-Za-z],)?(--[a-z-]+).*/\2/p' >"$scratch/options"
        [ -s "$scratch/options" ]
        sed 's/\\-/-/g' "$page" | awk -v start=".SS qxp $command" '/^\.S/ { inside = $0 == start } inside' \
            >"$scratch/section"
        while read -r option; do
            grep -qF -e "$option" "$scratch/section" || fail "$command $option is not on the page"
        done <"$scratch/options"
    done
}

# completes EXPECTED WORD...: what the shell's completion offers for the last word, sorted and in one line.
completes() {
    local expected=$1 actual
    shift
    actual=$(complete_words "$@" | sort -u | tr '\n' ' ')
    [ "$actual" = "$expected" ] || fail "completing '$*' gives '$actual' instead of '$expected'"
}

# What all completions must do. `complete_words WORD...` is one shell's way to complete.
check_completions() {
    cd "$scratch"
    mkdir folder
    touch file.txt
    completes 'merge ' qxp me
    completes '--no-trim ' qxp preprocess --no-
    completes 'always auto never ' qxp preprocess --color ''
    completes 'folder/ ' qxp preprocess -C fo
    completes '' qxp preprocess -D fi
    completes 'file.txt folder/ ' qxp preprocess f
    completes 'file.txt ' qxp tags fi
    completes 'file.txt ' qxp expand --output fi
    completes '' qxp merge --in-place-no
}

bash_completion() {
    complete_words() {
        bash --norc -c 'source "$0"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
            _qxp qxp "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
            for word in "${COMPREPLY[@]}"; do [ -d "$word" ] && echo "$word/" || echo "$word"; done' \
            "$build/qxp/reference/qxp.bash" "$@"
    }
    check_completions
}

fish_completion() {
    complete_words() {
        HOME=$scratch/home fish --no-config -c 'source $argv[1]; complete -C "$argv[2]"' \
            "$build/qxp/reference/qxp.fish" "$*" | cut -f1
    }
    check_completions
}

# zsh completes only on a terminal: one is made for it, and it is asked for the list of what it would offer.
zsh_completion() {
    complete_words() {
        zsh -f "$here/complete.zsh" "$build/qxp/reference" "$*"
    }
    check_completions
}

make_packages() {
    rm -rf "$packages"
    (cd "$build" && quietly cpack -G DEB -B "$packages")
    rm -rf "$packages/_CPack_Packages"
    [ "$(find "$packages" -name '*.deb' | wc -l)" -eq 5 ]
}

lintian_finds_no_errors() {
    lintian --allow-root --fail-on error "$packages"/*.deb >"$scratch/log" 2>&1 || fail "$(cat "$scratch/log")"
}

# Everything that the packages depend on is there to be installed with them.
packages_can_be_installed() {
    apt-get install --simulate --no-install-recommends -o Debug::NoLocking=1 "$packages"/*.deb >"$scratch/log" 2>&1 ||
        fail "$(cat "$scratch/log")"
    [ "$(grep -c '^Inst .*qxp' "$scratch/log")" -eq 5 ]
}

# The system knows where its libraries are.
packages_name_no_search_path() {
    local package file count=0
    for package in "$packages"/*.deb; do
        dpkg-deb --extract "$package" "$scratch/root"
    done
    while read -r file; do
        ! objdump -p "$file" | grep -E 'R(UN)?PATH' || fail "$file searches on its own"
        count=$((count + 1))
    done < <(find "$scratch/root" -type f \( -path '*/bin/*' -o -name '*.so.*' \))
    [ "$count" -eq 3 ] || fail "$count files looked at"
}

packages_work_in_a_clean_root() {
    local package root=$scratch/root
    mkdir "$root"
    for package in "$packages"/*.deb; do
        dpkg-deb --extract "$package" "$root"
    done
    consumer_through_pkg_config "$root"
    [ "$("$root/usr/bin/qxp" script -e '6 * 7')" = 42 ]
    [ -e "$root/usr/share/doc/libvc-qxparser-doc/docs/preprocessor.md" ]
    man -l "$root/usr/share/man/man1/qxp.1.gz" >"$scratch/page"
    [ -s "$scratch/page" ]
}

"$1"
