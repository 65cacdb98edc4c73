# Names what has no description in Doxygen's XML output, of the kinds that Doxygen itself is silent about: values of
# enumerations, and classes without members. Exits with 1 when there is something.

function attribute(which) {
    return match($0, which "=\"[^\"]*\"") ? substr($0, RSTART + length(which) + 2, RLENGTH - length(which) - 3) : ""
}

function push(what, isPublic) {
    ++depth
    isPublic = isPublic && (depth == 1 || public[depth - 1])
    public[depth] = isPublic
    kind[depth] = what ~ /^(class|struct|union|namespace|value)$/ ? what : ""
    name[depth] = ""
    described[depth] = 0
}

function pop() {
    if (public[depth] && kind[depth] != "" && !described[depth]) {
        print kind[depth] " " name[depth] " is not documented."
        found = 1
    }
    --depth
}

/<compounddef / { push(attribute("kind"), attribute("prot") != "private") }
/<memberdef / { push(attribute("kind"), attribute("prot") != "private") }
/<enumvalue / { push("value", 1) }
/<(compound)?name>/ && name[depth] == "" {
    name[depth] = $0
    gsub(/<[^>]*>|^ +/, "", name[depth])
}
/<(brief|detailed)description>/ { inDescription = 1 }
inDescription && /<para>/ { described[depth] = 1 }
/<\/(brief|detailed)description>/ { inDescription = 0 }
/<\/(compounddef|memberdef|enumvalue)>/ { pop() }
END { exit found }
