# Sourced by the runners: the same surroundings for every run of qxp, in a fresh directory that is removed at the end.

# enter_work_directory QXP: afterwards `qxp` is the program under test and the current directory is empty. What must
# not be seen by the runs goes to $scratch. Runs find this project's files in $PROJECT.
enter_work_directory() {
    PROJECT=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
    export PROJECT
    PATH=$(cd "$(dirname "$1")" && pwd):$PATH
    export PATH LC_ALL=C.UTF-8 TERM=dumb
    unset NO_COLOR CDPATH ENV BASH_ENV
    scratch=$(mktemp -d)
    trap 'chmod -R u+rwx "$scratch"; rm -rf "$scratch"' EXIT
    mkdir "$scratch/run"
    cd "$scratch/run"
}

# show_output FILE: the file, with the work directory's path, which differs from run to run, as /home/me.
show_output() {
    sed "s|$scratch/run|/home/me|g" "$1"
}

# same NAME EXPECTED ACTUAL: shows how two files differ, line feeds at the end included.
same() {
    diff -u --label "$1, expected" --label "$1, actual" "$2" "$3"
}
