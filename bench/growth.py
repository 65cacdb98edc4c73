#!/usr/bin/env python3
"""Gives qxp texts of n and of 4n parts, and tells how many times as long, and as much memory, the second took.

    growth.py QXP [--only REGEX] [--rounds N] [--count]    all kinds take some six minutes
    growth.py QXP --dry-run                                only whether each kind of text is one that qxp can read

What is linear comes to about 4, start-up taken off; above 4.4 the run fails. The time is that of the program and of the
system for it: the system knows their sum exactly, but how it falls into the two only by looking some hundred times a
second. The least of the rounds counts, since what disturbs a run only adds to it. The first run is not counted: on a
virtual machine, memory that nobody has used for a while costs several times as much as memory given back a moment ago.

Memory is counted in pages that were touched for the first time, which always come out the same.

With --count the instructions are compared too, counted by valgrind, fifty times as slowly. Where they come to 4 the
algorithm is linear, and whatever the time is above it is the price of memory: more of 4n than of n lies outside of the
caches. So n is large enough for both to lie outside of those of one processor (1 MiB here).
"""

import argparse
import itertools
import os
import re
import shutil
import subprocess
import sys
import tempfile

HIGHEST = 4.4

# What a program touches besides its data varies by some pages: fewer than these say nothing.
FEWEST_PAGES = 2000


class Kind:
    """Texts of any size: `files` has the pieces of each file for a size, `arguments` stand behind "qxp"."""

    def __init__(self, name, size, files, arguments):
        self.name = name
        self.size = size
        self.files = files
        self.arguments = arguments

    def write(self, size):
        for name, pieces in self.files(size).items():
            with open(name, "w", encoding="utf-8") as file:
                file.writelines(pieces)


def lines(text):
    """A line for each number: "@" stands for the number, "^" for the one before."""
    return lambda size: (text.replace("@", str(i)).replace("^", str(i - 1)) + "\n" for i in range(size))


def times(text, separator=" "):
    """One text again and again."""
    return lambda size: itertools.chain((text + separator for _ in range(size - 1)), (text + "\n",))


def joined(*parts):
    """Texts, and what makes a size into pieces, one after the other."""
    return lambda size: itertools.chain.from_iterable([part] if isinstance(part, str) else part(size) for part in parts)


def numbered(format_line):
    """As `lines`, with a function of the number."""
    return lambda size: (format_line(i) for i in range(size))


def preprocess(name, size, pieces, *options, **files):
    others = {file.replace("_", "."): [text] for file, text in files.items()}
    return Kind(name, size, lambda n: {"in.txt": pieces(n), **others},
                ["preprocess", "--quiet", "-o", "out", *options, "in.txt"])


def include_files(size):
    files = {f"part{i}.inc": [f"line {j} of {i}\n" for j in range(20)] for i in range(size)}
    return {"in.txt": lines('#include "part@.inc"')(size), **files}


def sections(opening, inside=None):
    """Nested to the depth of the size, 120 times."""
    within = [times(inside, "\n")] if inside else []
    level = joined(times(opening + "\nx", "\n"), *within, times("#endif", "\n"))
    return lambda size: itertools.chain.from_iterable(level(size) for _ in range(120))


def arguments(size):
    names = ",".join(f"p{i}" for i in range(size))
    yield f"#define M({names}) "
    yield from (f"#p{i} " for i in range(size))
    yield "\n#M(" + ",".join(map(str, range(size))) + ")\n"


def define_of_define(i):
    before = f"#NAME{i - 1} + " if i % 50 else ""
    return f"#define NAME{i} ({before}{i})\nuse #NAME{i}\n"


def tags(name, size, pieces, *options):
    return Kind(name, size, lambda n: {"in.txt": pieces(n)}, ["tags", "-o", "out", *options, "in.txt"])


def expand(name, size, template, items):
    return Kind(name, size, lambda n: {"in.tpl": template(n), "in.xml": joined("<stock>\n", items, "</stock>\n")(n)},
                ["expand", "--compact", "-o", "out", "in.tpl", "in.xml"])


def merge(name, size, base, overlay, *options):
    def files(n):
        return {"in.xml": joined("<stock>\n", base, "</stock>\n")(n),
                "over.xml": joined("<stock>\n", overlay, "</stock>\n")(n)}

    return Kind(name, size, files, ["merge", *options, "-o", "out", "in.xml", "over.xml"])


def script(name, size, text):
    """A script that knows the size as `size`."""
    return Kind(name, size, lambda n: {"in.js": [f"var size = {n};\n{text}"]}, ["script", "in.js"])


ITEM = lines('<item name="item @" count="@"><note>of item @</note></item>')
BARE_ITEM = lines('<item name="@"/>')
ONE_OF_ALL = joined('<%repeat filter="item"%>\n', "[%name%]: [%count%]\n", "<%/repeat%>\n")
WALK = """
var items = [];
for (var i = 0; i < size; ++i)
    items.push('<item name="' + i + '"/>');
var document = new XmlDocument();
document.SetContent('<stock>' + items.join('') + '</stock>');
for (var node = document.GetRoot().GetFirst(); node.Ok(); node = node.GetNext())
    node.GetProp('name');
"""
ADD = """
var document = new XmlDocument();
document.SetContent('<stock/>');
for (var i = 0; i < size; ++i)
    document.GetRoot().AddNode('item').AddProp('name', i);
"""

KINDS = [
    preprocess("lines", 1_000_000, lines("  value[@] = @;  // a note")),
    preprocess("lines_with_origins", 500_000, lines("  value[@] = @;  // a note"), "--origins"),
    preprocess("lines_with_markers", 500_000, lines("  value[@] = @;  // a note"), "--line-markers"),
    preprocess("line_length", 10_000_000, times("word")),
    preprocess("comment_depth", 1_000_000, joined(times("/*", "\n"), times("*/", "\n"), "x\n")),
    preprocess("comment_depth_on_a_line", 4_000_000, joined("x ", times("/*"), times("*/"))),
    preprocess("comments_on_a_line", 2_000_000, times("word /* a note */")),
    preprocess("strings", 500_000, lines("text(\"number @\"  \" of many\", 'x');")),
    preprocess("strings_on_a_line", 1_000_000, times('"part of it"')),
    preprocess("defines", 200_000, lines("#define NAME@ @\nuse #NAME@")),
    preprocess("defines_of_defines", 100_000, numbered(define_of_define)),
    preprocess("calls", 200_000, joined("#define M(a,b) (#a, #b)\n", lines('#M(number @, "two")'))),
    preprocess("calls_on_a_line", 200_000, joined("#define M(a,b) (#a, #b)\n", times("#M(one, two)"))),
    preprocess("arguments", 400_000, arguments),
    preprocess("redefinitions", 200_000, joined("#define A\n", lines("#redefine A @\nuse #A"))),
    preprocess("includes", 5000, lines('#include "part.inc"'), part_inc="part of a file\n"),
    Kind("include_files", 5000, include_files, ["preprocess", "--quiet", "-o", "out", "in.txt"]),
    preprocess("sections", 200_000, lines("#if @ % 3 == 1 && defined(A)\na\n#elif @ % 3 == 2\nb\n#else\nc\n#endif")),
    preprocess("section_depth", 2500, sections("#ifndef A")),
    preprocess("loop_passes", 200_000, lambda n: [f"#for i 1;{n};1\nrow #i of many\n#endfor\n"]),
    preprocess("loops", 100_000, lines("#for i 1;3;1\nrow #i of @\n#endfor")),
    preprocess("loop_body", 200_000, joined("#for i 1;2;1\n", lines("row @ of #i"), "#endfor\n")),
    preprocess("scripts", 200_000, lines("value = #{ @ * 2 + 1 };")),
    preprocess("scripts_on_a_line", 200_000, times("#{ 6 * 7 }")),
    preprocess("engine_scripts", 20_000, lines("value = #{ Math.max(@, 7) };")),
    preprocess("partial", 100_000, lines("#ifdef UNKNOWN@\nuse #UNKNOWN@\n#else\n#define A@ 1\n#endif"), "--partial"),
    # Nobody knows A then, and each warning asks whether a section around it is undecided.
    preprocess("partial_section_depth", 2500, sections("#ifdef A", "#warning a note"), "--partial"),
    preprocess("removed_names", 200_000, numbered(lambda i: f"#define NAME{i % 3} {i % 3}\nline {i}\n"), "--remove",
               "NAME1"),

    tags("tags", 100_000, lines("<item='@'>\ncontent @\n</item>")),
    tags("tag_content", 500_000, joined("<item>\n", lines("content @"), "</item>\n"), "--content"),
    tags("tag_options", 200_000, joined("<item ", numbered(lambda i: f"o{i}=\"{i}\" "), "/>\n"), "--options"),
    tags("tags_on_a_line", 200_000, times("<a/>", "")),

    expand("repeated_items", 50_000, ONE_OF_ALL, ITEM),
    expand("template_blocks", 50_000, lines("<%keep%>\nblock @ of [%(GetName())%]\n<%/keep%>"), joined()),
    expand("conditions", 20_000, joined('<%repeat filter="item"%>\n', '<%if cond="[%count%] % 3 == 1"%>\n[%name%]\n',
                                        "<%/if%>\n<%else%>\nnone\n<%/else%>\n<%/repeat%>\n"), ITEM),

    merge("document", 100_000, ITEM, joined()),
    merge("attributes", 200_000, joined("<item ", numbered(lambda i: f'a{i}="{i}" '), "/>\n"), joined()),
    merge("long_text", 5_000_000, joined("<item>", times("word &amp;"), "</item>\n"), joined()),
    merge("added_elements", 100_000, joined(), ITEM),
    merge("found_elements", 20_000, BARE_ITEM, lines('<item name="@" Merge="Pos"><new/></item>')),
    merge("found_backwards", 20_000, BARE_ITEM, lambda n: (f'<item name="{n - 1 - i}" Merge="Pos"><new/></item>\n'
                                                           for i in range(n))),
    merge("removed_elements", 20_000, BARE_ITEM, lines('<item name="@" Merge="Remove"/>')),
    merge("copied_elements", 50_000, BARE_ITEM, lines('<item name="@" more="1"/>'), "--copy", "--overwrite"),

    script("handles", 100_000, WALK),
    script("added_nodes", 100_000, ADD),
    script("evaluated_texts", 20_000, "for (var i = 0; i < size; ++i) eval('Math.max(' + i + ', 7)');\n"),
    script("printed_lines", 200_000, "for (var i = 0; i < size; ++i) print('line', i);\n"),
]


def run(command):
    """The processor time of a run in seconds, and its pages."""
    with open("err", "wb") as errors:
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=errors)
        _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode:
        with open("err", encoding="utf-8", errors="replace") as errors:
            sys.exit(f"{' '.join(command)}: status {process.returncode}\n{errors.read(1000)}")
    return usage.ru_utime + usage.ru_stime, usage.ru_minflt


def figures(command, rounds):
    """Of the cheapest of some runs."""
    run(command)
    return min(run(command) for _ in range(rounds))


def instructions(command):
    counter = ["valgrind", "--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null"]
    run = subprocess.run(counter + command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=True)
    return int(re.search(rb"I +refs: +([\d,]+)", run.stderr)[1].replace(b",", b""))


def check(qxp, kind):
    """Whether a few parts of a kind come to something."""
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        kind.write(20)
        run([qxp, *kind.arguments])
        is_right = "-o" not in kind.arguments or os.path.getsize("out") > 0
        os.chdir("/")
    print(f"{kind.name}: {'ok' if is_right else 'nothing was written'}")
    return is_right


def ratio(empty, small, large):
    return (large - empty) / max(small - empty, 1e-9)


def measure(qxp, kind, rounds, count):
    """Of nothing, of n and of 4n parts: seconds, pages, and instructions when they are to be counted."""
    command = [qxp, *kind.arguments]
    taken = []
    for size in (0 if kind.arguments[0] == "script" else 1, kind.size, 4 * kind.size):
        with tempfile.TemporaryDirectory() as folder:
            os.chdir(folder)
            kind.write(size)
            taken.append((*figures(command, rounds), instructions(command) if count else 0))
            os.chdir("/")
    return list(zip(*taken))


def report(kind, seconds, pages, counts):
    """Prints the row of a kind. Whether it is linear."""
    time = ratio(*seconds)
    memory = ratio(*pages) if pages[2] - pages[0] > FEWEST_PAGES else 0
    cells = [kind.arguments[0], kind.name.replace("_", " "), f"{kind.size:,}",
             *(f"{1000 * (taken - seconds[0]):,.0f}" for taken in seconds[1:]), f"{time:.2f}",
             f"{memory:.2f}" if memory else ""]
    if counts[2]:
        cells.append(f"{ratio(*counts):.2f}")
    is_linear = max(time, memory) <= HIGHEST
    print("| " + " | ".join(cells) + " |" + ("" if is_linear else "  too high"), flush=True)
    return is_linear


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("qxp")
    parser.add_argument("--only", default="", metavar="REGEX", help="kinds whose names match")
    parser.add_argument("--rounds", type=int, default=7, help="runs of each size")
    parser.add_argument("--count", action="store_true", help="count instructions")
    parser.add_argument("--dry-run", action="store_true", help="measure nothing")
    options = parser.parse_args()
    if options.count and not shutil.which("valgrind"):
        sys.exit("growth.py: valgrind is not installed")
    qxp = os.path.realpath(options.qxp)
    chosen = [kind for kind in KINDS if re.search(options.only, kind.name)]
    if not chosen:
        sys.exit("growth.py: no kind matches " + options.only)
    if options.dry_run:
        return 0 if all([check(qxp, kind) for kind in chosen]) else 1
    more = (" instructions |", " ---: |") if options.count else ("", "")
    print("| command | kind | n | ms at n | ms at 4n | time | memory |" + more[0])
    print("| --- | --- | ---: | ---: | ---: | ---: | ---: |" + more[1])
    results = [report(kind, *measure(qxp, kind, options.rounds, options.count)) for kind in chosen]
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
