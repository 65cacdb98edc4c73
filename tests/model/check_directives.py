#!/usr/bin/env python3
"""Compares the preprocessor with its model (directives.py) on all small programs of some kinds (programs.py).

    check_directives.py DRIVER KIND=SIZE...    DRIVER is the program directives_driver, SIZE that of the largest programs
"""

import itertools
import os
import subprocess
import sys
import tempfile

from directives import ANY, Failure, Preprocessor
from programs import FILES, KINDS, PARTIAL, UNTRIMMED

# Programs at a time: enough that starting the driver costs nothing, few enough for the memory.
BATCH = 20_000


def expected(program, mode):
    """As the driver says it."""
    preprocessor = Preprocessor(FILES, partial=mode == PARTIAL, trims=mode != UNTRIMMED)
    try:
        kept = preprocessor.run("p", program)
    except Failure as failure:
        return f"error\t{failure.context}\t{failure.message}"
    return "".join(
        ["partial\n"] * preprocessor.kept_something
        + [f"warning\t{context}\t{text}\n" for context, text in preprocessor.warnings]
        + [f"{file}:{line}:{text}\n" for file, line, text in kept]
        + [preprocessor.listed_defines()]
    )


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


def check(driver, folder, kind, size, mode):
    count = failures = errors = marked = 0
    source = KINDS[kind].programs(size)
    while batch := list(itertools.islice(source, BATCH)):
        given = results(driver, folder, mode, batch)
        assert len(given) == len(batch), f"{len(given)} results for {len(batch)} programs"
        for program, result in zip(batch, given):
            wanted = expected(program, mode)
            count += 1
            errors += result.startswith("error")
            marked += result.startswith("partial")
            if is_same(wanted, result):
                continue
            failures += 1
            if failures <= 10:
                print(f"--- program, {mode}\n{program}\n--- by the rules\n{wanted}\n--- as it is\n{result}\n")
    print(f"{kind}={size} {mode}: {count} programs, {errors} of them with errors, {marked} partial, {failures} differ")
    # Partial mode makes hardly anything an error.
    tells_apart = errors < count and (errors > 0 or mode == PARTIAL) and (marked > 0) == (mode == PARTIAL)
    return failures == 0 and tells_apart


def main():
    driver = sys.argv[1]
    with tempfile.TemporaryDirectory() as folder:
        for name, text in FILES.items():
            with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                file.write(text)
        asked = [argument.split("=") for argument in sys.argv[2:]]
        runs = [(kind, int(size), mode) for kind, size in asked for mode in KINDS[kind].modes]
        return 0 if runs and all([check(driver, folder, *run) for run in runs]) else 1


if __name__ == "__main__":
    sys.exit(main())
