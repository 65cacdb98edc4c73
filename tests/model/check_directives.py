#!/usr/bin/env python3
"""Compares the preprocessor with its model (directives.py) on every program of a few lines.

    check_directives.py DRIVER LINES    DRIVER is the program directives_driver, LINES the longest program

Four lines are some two million programs, each run in both modes.
"""

import itertools
import os
import subprocess
import sys
import tempfile

from directives import ANY, Failure, Preprocessor

LINES = (
    "x #A",
    "#A",
    "##A # b",
    '"#A" "b" \'#A\'',
    "#define A 1",
    "#define A 2",
    "#define B #A",
    "#redefine A 2",
    "#undef A",
    "#ifdef A",
    "#ifndef A",
    "#if (#A == 1)",
    "#elif (defined(B))",
    "#elseifdef B",
    "#else",
    "#endif",
    "#for A 1;2;1",
    "#for B 1;#A;1",
    "#endfor",
    "c /* #A",
    "*/ d // #A",
    "/* /* */ #else",
    "\"/*",
    "#include \"a.inc\"",
    "#include <if.inc>",
    "#include \"endif.inc\"",
    "#error e",
)

FILES = {
    "a.inc": "#!interpreter\n#ifdef A\n#undef A\n#endif\n#define A 3\na #A",
    "if.inc": "i\n#ifdef A",
    "endif.inc": "e #B\n#endif\n",
}

# Each program is run alone and behind these, so that not nearly all of them fail.
PROLOGUES = ("", "#define A 1\n#define B 2\n")

# Programs at a time: enough that starting the driver costs nothing, few enough for the memory.
BATCH = 20_000


def programs(longest):
    for length in range(1, longest + 1):
        for lines in itertools.product(LINES, repeat=length):
            yield from (prologue + "\n".join(lines) for prologue in PROLOGUES)


def expected(program, partial):
    """As the driver says it."""
    preprocessor = Preprocessor(FILES, partial)
    try:
        kept = preprocessor.run("p", program)
    except Failure as failure:
        return f"error\t{failure.context}\t{failure.message}"
    mark = "partial\n" if preprocessor.kept_something else ""
    return mark + "".join(f"{file}:{line}:{text}\n" for file, line, text in kept)


def is_same(wanted, given):
    if ANY not in wanted:
        return wanted == given
    at = 0
    parts = wanted.split(ANY)
    for part in parts:
        found = given.find(part, at)
        if found < 0 or (at == 0 and found != 0):
            return False
        at = found + len(part)
    return given.endswith(parts[-1])


def results(driver, folder, mode, batch):
    run = subprocess.run([driver, folder, mode], input="\0".join(batch).encode(), stdout=subprocess.PIPE, check=True)
    return run.stdout.decode().split("\0")[:-1]


def check(driver, longest, folder, mode):
    count = failures = errors = marked = 0
    source = programs(longest)
    while batch := list(itertools.islice(source, BATCH)):
        given = results(driver, folder, mode, batch)
        assert len(given) == len(batch), f"{len(given)} results for {len(batch)} programs"
        for program, result in zip(batch, given):
            wanted = expected(program, mode == "partial")
            count += 1
            errors += result.startswith("error")
            marked += result.startswith("partial")
            if is_same(wanted, result):
                continue
            failures += 1
            if failures <= 10:
                print(f"--- program, {mode}\n{program}\n--- by the rules\n{wanted}\n--- as it is\n{result}\n")
    print(f"{mode}: {count} programs, {errors} of them with errors, {marked} partial, {failures} differ")
    return failures == 0 and 0 < errors < count and (marked > 0) == (mode == "partial")


def main():
    driver, longest = sys.argv[1], int(sys.argv[2])
    with tempfile.TemporaryDirectory() as folder:
        for name, text in FILES.items():
            with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                file.write(text)
        return 0 if all([check(driver, longest, folder, mode) for mode in ("whole", "partial")]) else 1


if __name__ == "__main__":
    sys.exit(main())
