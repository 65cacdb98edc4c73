# Sourced by run.sh and test.sh: installs missing packages, configures and builds the release preset.
# Everything it says goes to standard error, so that the output of run.sh is qxp's alone.

packages=(
    build-essential cmake ninja-build pkg-config
    libwxgtk3.2-dev libmozjs-102-dev libexpat1-dev libcli11-dev libedit-dev
    libgtest-dev librapidcheck-dev xvfb xauth doxygen
)
# Debian's npm brings some 350 packages with it: only where there is none from elsewhere.
command -v node >/dev/null || packages+=(nodejs)
command -v npm >/dev/null || packages+=(npm)

install_missing_packages() {
    local missing=() package
    for package in "${packages[@]}"; do
        dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    echo "Installing with apt-get: ${missing[*]}" >&2
    local as_root=()
    [ "$(id -u)" = 0 ] || as_root=(sudo)
    "${as_root[@]}" apt-get update -qq >&2
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
}

# setup_release TARGET: builds TARGET of the release preset.
setup_release() {
    install_missing_packages
    local build="$root/build/release"
    if [ ! -f "$build/build.ninja" ]; then
        echo "Configuring $build" >&2
        (cd "$root" && cmake --preset release) >&2
    fi
    # A build with nothing to do is silent; one that takes its time shows how far it is.
    local quiet=()
    [ "$(ninja -C "$build" -n "$1" | grep -c '^\[')" -gt 2 ] || quiet=(--quiet)
    ninja -C "$build" "${quiet[@]}" "$1" >&2
}
