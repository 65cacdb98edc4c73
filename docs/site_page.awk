# Makes a page of this project ready for Doxygen: awk -v root=FOLDER -f site_page.awk PAGE. Headings get the anchors
# that links to them have everywhere else, links between pages become references, so that Doxygen warns of broken ones,
# and blocks lose what only the tests need to know.

function page_id(path) {
    sub(/\.md$/, "", path)
    gsub(/[^A-Za-z0-9]+/, "_", path)
    return path == "README" ? "mainpage" : tolower(path)
}

# The path of `target` as seen from the folder of this page, from the root.
function resolve(target, path) {
    path = folder target
    sub(/^\.\//, "", path)
    while (path ~ /[^\/]+\/\.\.\//)
        sub(/[^\/]+\/\.\.\//, "", path)
    return path
}

function slug(text) {
    gsub(/`/, "", text)
    text = tolower(text)
    gsub(/[^a-z0-9 _-]/, "", text)
    gsub(/ /, "-", text)
    return text
}

# Where a link leads on the site; empty for what is not on it, such as sources.
function reference(target, hash, anchor) {
    if (target ~ /^[a-z]+:/)
        return target
    hash = index(target, "#")
    anchor = hash ? substr(target, hash + 1) : ""
    if (hash)
        target = substr(target, 1, hash - 1)
    target = target == "" ? page : resolve(target)
    if (target ~ /\.h$/)
        return "@ref " target
    return target ~ /\.md$/ ? "@ref " page_id(target) (anchor != "" ? "_" anchor : "") : ""
}

function with_references(line, out, link, middle, target) {
    out = ""
    while (match(line, /\[[^\[\]]*\]\([^() ]+\)/)) {
        link = substr(line, RSTART, RLENGTH)
        middle = index(link, "](")
        target = reference(substr(link, middle + 2, length(link) - middle - 2))
        link = substr(link, 2, middle - 2)
        out = out substr(line, 1, RSTART - 1) (target == "" ? link : "[" link "](" target ")")
        line = substr(line, RSTART + RLENGTH)
    }
    return out line
}

# A code span in which nothing means anything to Doxygen: it looks for commands, names and quotes in its own.
function literal(code, out, i, c) {
    gsub(/\\\|/, "|", code) # a bar in a table
    out = ""
    for (i = 1; i <= length(code); ++i) {
        c = substr(code, i, 1)
        if (c in entities)
            out = out entities[c]
        else if (index("\\@%#*_|", c) || (c == "-" && substr(code, i + 1, 1) == "-"))
            out = out "\\" c
        else
            out = out c
    }
    return "<code>" out "</code>"
}

function with_code_spans(line, out) {
    out = ""
    while (match(line, /`[^`]+`/)) {
        out = out substr(line, 1, RSTART - 1) literal(substr(line, RSTART + 1, RLENGTH - 2))
        line = substr(line, RSTART + RLENGTH)
    }
    return out line
}

BEGIN {
    entities["&"] = "&amp;"
    entities["<"] = "&lt;"
    entities[">"] = "&gt;"
    entities["\""] = "&quot;"
    entities["'"] = "&apos;"
}

FNR == 1 {
    page = substr(FILENAME, length(root) + 2)
    folder = page
    sub(/[^\/]*$/, "", folder)
}

fence == "" && /^```/ {
    match($0, /^`+/)
    fence = substr($0, 1, RLENGTH)
    info = substr($0, RLENGTH + 1)
    if (info ~ / (name|file)=/) {
        caption = info
        sub(/.* (name|file)=/, "", caption)
        print "*" caption "*"
        print ""
    }
    sub(/ .*/, "", info)
    print fence "{." (info ~ /^(cpp|xml|js)$/ ? info : "unparsed") "}"
    next
}
fence != "" {
    print
    if (index($0, fence) == 1)
        fence = ""
    next
}
/^#+ / {
    text = $0
    sub(/^#+ /, "", text)
    # The page's own title names the page.
    print $0 " {#" page_id(page) (/^# / ? "" : "_" slug(text)) "}"
    next
}
{ print with_code_spans(with_references($0)) }
