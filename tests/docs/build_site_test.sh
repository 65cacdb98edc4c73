#!/usr/bin/env bash
# build_site_test.sh DOXYGEN DOXYFILE: with the settings of the site, build_site.sh must fail where it should.
set -uo pipefail
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# check NAME STATUS: compares what build_site.sh says of $scratch/sample.h with standard input.
check() {
    {
        cat "$2"
        printf '%s = "%s"\n' INPUT "$scratch/sample.h" OUTPUT_DIRECTORY "$scratch/site" XML_OUTPUT "$scratch/xml"
    } >"$scratch/Doxyfile"
    bash "$(dirname "${BASH_SOURCE[0]}")/build_site.sh" "$1" "$scratch/Doxyfile" >"$scratch/output" 2>&1
    local status=$?
    grep -v '^$' "$scratch/output" | sed "s#^$scratch/##" | LC_ALL=C sort -u >"$scratch/said"
    LC_ALL=C sort | diff -u - "$scratch/said" || exit 1
    [ $status -eq "$3" ] || { echo "status $status instead of $3" >&2; exit 1; }
}

cat >"$scratch/sample.h" <<'END'
/// @file
/// A file.

/// Has a description.
#define DESCRIBED 1

#define BARE 2

/// Has a description.
int Described(int a);

int Free(int a);

class Empty
{
};

/// Has a description.
class Sample
{
public:
    int Member() const;

    /// Has a description; see #Nowhere.
    enum Kind
    {
        silent,
        spoken ///< Has a description.
    };

private:
    int Hidden();
};
END
check "$1" "$2" 1 <<'END'
class Empty is not documented.
sample.h:12: error: Member Free(int a) (function) of file sample.h is not documented.
sample.h:22: error: Member Member() const (function) of class Sample is not documented.
sample.h:24: error: explicit link request to 'Nowhere' could not be resolved
sample.h:7: error: Member BARE (macro definition) of file sample.h is not documented.
value silent is not documented.
END

cat >"$scratch/sample.h" <<'END'
/// @file

/// Has a description.
int Described(int a);
END
check "$1" "$2" 0 </dev/null
