# Sourced by the runners of example hosts: builds one as a stranger would, against an installed library.

source "$(dirname "${BASH_SOURCE[0]}")/environment.sh"

# build_host NAME BUILD FLAGS: installs the library of the build folder BUILD and builds examples/NAME with it, with the
# compiler flags FLAGS that the host needs. Afterwards the current directory is empty, $host is the program, $example
# the example's folder, and $scratch is there for what the runs must not see.
build_host() {
    local name=$1 build
    build=$(cd "$2" && pwd)
    example=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../examples/$name" && pwd)
    enter_work_directory "$build/qxp/qxp"
    quietly cmake --install "$build" --prefix "$scratch/installed"
    quietly cmake -G Ninja -S "$example" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$scratch/installed" \
        -DCMAKE_CXX_FLAGS="${3:-}"
    quietly cmake --build "$scratch/build"
    host=$scratch/build/$name
}

# quietly COMMAND...: what it says is shown only when it fails, which ends the test.
quietly() {
    "$@" >"$scratch/log" 2>&1 || { cat "$scratch/log" >&2 && exit 1; }
}
