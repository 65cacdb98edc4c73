# Sourced by run.sh, test.sh and bench/build.sh: installs missing packages, configures and builds the release preset.
# Everything it says goes to standard error, so that the output of run.sh is qxp's alone.

build_packages=(
    build-essential cmake ninja-build pkg-config
    libwxgtk3.2-dev libmozjs-102-dev libexpat1-dev libcli11-dev nlohmann-json3-dev libedit-dev
)
# Besides what tests are made of, what they look at the manuals, the completions and the packages with, as users will.
test_packages=(
    libgtest-dev librapidcheck-dev python3 xvfb xauth
    doxygen man-db zsh fish lintian
)
# Debian's npm brings some 350 packages with it: only where there is none from elsewhere.
command -v node >/dev/null || test_packages+=(nodejs)
command -v npm >/dev/null || test_packages+=(npm)

# What benchmarks are made of, and what tells the memory that a program took.
bench_packages=(libbenchmark-dev time)

# install_missing_packages PACKAGE...
install_missing_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    echo "Installing with apt-get: ${missing[*]}" >&2
    local as_root=()
    [ "$(id -u)" = 0 ] || as_root=(sudo)
    "${as_root[@]}" apt-get update -qq >&2
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
}

# configure TESTS: configures the release preset, with the tests or (OFF) without. Tests that are there stay.
configure() {
    local tests=$1
    if [ -f "$build/build.ninja" ] && { [ "$tests" = OFF ] || grep -qx 'QXP_BUILD_TESTS:BOOL=ON' "$build/CMakeCache.txt"; }; then
        return
    fi
    echo "Configuring $build" >&2
    (cd "$root" && cmake --preset release -DQXP_BUILD_TESTS="$tests" -DQXP_BUILD_DOCS="$tests") >&2
}

# setup_release TARGET TESTS: installs what is missing, and builds TARGET of the release preset.
setup_release() {
    local target=$1 tests=$2 build="$root/build/release"
    local packages=("${build_packages[@]}")
    [ "$tests" = OFF ] || packages+=("${test_packages[@]}")
    install_missing_packages "${packages[@]}"
    configure "$tests"
    # A build with nothing to do is silent; one that takes its time shows how far it is.
    local quiet=()
    [ "$(ninja -C "$build" -n "$target" | grep -c '^\[')" -gt 2 ] || quiet=(--quiet)
    ninja -C "$build" "${quiet[@]}" "$target" >&2
}
