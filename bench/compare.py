#!/usr/bin/env python3
"""Measures qxp beside other tools that can do the same work, and prints a table.

    compare.py QXP [--only REGEX] [--rounds N] [--scale FACTOR]    all of it takes some four minutes

Each tool first does a small input, and what it makes of it must be what qxp makes of it, but for blanks and line
markers; a difference ends the run with status 1. Then the tools take turns at the large inputs. Figures are medians: the
processor time of the whole process, and its peak of memory when GNU time is installed. Tools that are not installed are
named and left out.
"""

import argparse
import os
import re
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
import xml.etree.ElementTree

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "generate"))
from workloads import WORKLOADS  # pylint: disable=wrong-import-position

LONGEST = 120  # seconds of one run
STRING = re.compile(r'("(?:\\.|[^"\\])*")')
GNU_TIME = "/usr/bin/time"


def without_blanks(code):
    """Code without line markers and blanks, and with neighbouring strings joined, which C leaves to a later phase."""
    lines = [line for line in code.split("\n") if not line.lstrip().startswith("#")]
    parts = STRING.split("\n".join(lines))
    parts[::2] = ["".join(part.split()) for part in parts[::2]]
    return "".join(parts).replace('""', "")


NORMALISERS = {
    "code": without_blanks,
    "text": lambda text: "\n".join(line.strip() for line in text.split("\n") if line.strip()),
    "xml": lambda text: xml.etree.ElementTree.canonicalize(text, strip_text=True),
}


def run(command, folder):
    """Runs a command. The processor time in seconds and the peak of memory in MiB, None when nobody can tell."""
    has_time = os.path.exists(GNU_TIME)
    out = os.path.join(folder, "out")
    if os.path.exists(out):
        os.remove(out)
    whole = ([GNU_TIME, "-f", "%M", "-o", "memory"] if has_time else []) + [part for part in command if part != ">"]
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    with open(out if command[-1] == ">" else os.devnull, "wb") as output:
        done = subprocess.run(whole, cwd=folder, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.PIPE,
                              timeout=LONGEST, check=False)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    if done.returncode:
        sys.exit(f"{' '.join(command)}: status {done.returncode}\n{done.stderr.decode(errors='replace')[:1000]}")
    seconds = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    if not has_time:
        return seconds, None
    with open(os.path.join(folder, "memory"), encoding="utf-8") as memory:
        return seconds, int(memory.read().split()[-1]) / 1024


def commands_of(workload, qxp):
    """Those that are installed, qxp first, and the names of the others."""
    found = {"qxp": [qxp, *workload.arguments]}
    missing = []
    for name, command in workload.commands.items():
        if shutil.which(command[0]):
            found[name] = command
        else:
            missing.append(name)
    return found, missing


def write(name, size, folder):
    """In a process of its own: what is measured inherits the size of this one."""
    script = "import sys; sys.path.insert(0, sys.argv[1]); from workloads import WORKLOADS; " \
             "WORKLOADS[sys.argv[2]].write(sys.argv[4], int(sys.argv[3]))"
    subprocess.run([sys.executable, "-c", script, sys.path[0], name, str(size), folder], check=True)


def result_of(workload, command, folder):
    run(command, folder)
    with open(os.path.join(folder, "out"), encoding="utf-8") as file:
        return NORMALISERS[workload.result](file.read())


def check(name, workload, commands):
    """Whether all tools make the same of a small input; says which do not."""
    with tempfile.TemporaryDirectory() as folder:
        write(name, workload.small, folder)
        results = {tool: result_of(workload, command, folder) for tool, command in commands.items()}
    wrong = [tool for tool, result in results.items() if result != results["qxp"]]
    for tool in wrong:
        at = len(os.path.commonprefix([results[tool], results["qxp"]]))
        print(f"{name}: {tool} has {results[tool][at:at + 60]!r} where qxp has {results['qxp'][at:at + 60]!r}")
    if not results["qxp"]:
        print(f"{name}: nothing to compare")
    return not wrong and bool(results["qxp"])


def measure(name, size, commands, rounds):
    """The figures of each tool, run in turns; None for one that takes too long."""
    figures = {tool: [] for tool in commands}
    with tempfile.TemporaryDirectory() as folder:
        write(name, size, folder)
        for _ in range(rounds):
            for tool, command in commands.items():
                if figures[tool] is not None:
                    figures[tool] = add_run(figures[tool], command, folder)
    return figures


def add_run(runs, command, folder):
    """The runs with one more, None when that takes too long."""
    try:
        return runs + [run(command, folder)]
    except subprocess.TimeoutExpired:
        return None


def print_rows(name, size, workload, figures):
    if figures["qxp"] is None:
        sys.exit(f"{name}: qxp takes more than {LONGEST} s")
    own = statistics.median(seconds for seconds, _ in figures["qxp"])
    for tool, runs in figures.items():
        if runs is None:
            print(f"|  | {tool} | more than {LONGEST} | - | - |", flush=True)
            continue
        seconds = statistics.median(seconds for seconds, _ in runs)
        memory = "-" if runs[0][1] is None else f"{statistics.median(mib for _, mib in runs):.0f}"
        ratio = "" if tool == "qxp" else f"{own / seconds:.2f}"
        what = f"{name}: {size:,} {workload.__doc__}" if tool == "qxp" else ""
        print(f"| {what} | {tool} | {seconds:.2f} | {memory} | {ratio} |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("qxp")
    parser.add_argument("--only", default="", metavar="REGEX", help="workloads whose names match")
    parser.add_argument("--rounds", type=int, default=3, help="runs of each tool")
    parser.add_argument("--scale", type=float, default=1, help="of the sizes; 0 compares results only")
    options = parser.parse_args()
    qxp = os.path.realpath(options.qxp)
    chosen = {name: workload for name, workload in WORKLOADS.items() if re.search(options.only, name)}
    if not chosen:
        sys.exit("compare.py: no workload matches " + options.only)
    missing = set()
    is_right = True
    for name, workload in chosen.items():
        commands, absent = commands_of(workload, qxp)
        missing.update(absent)
        is_right = check(name, workload, commands) and is_right
    for tool in sorted(missing):
        print(f"{tool} is not installed and left out")
    if not is_right:
        sys.exit(1)
    print("All tools make the same of the small inputs.\n")
    if options.scale <= 0:
        return
    print(time.strftime("%Y-%m-%d, ") + f"{os.cpu_count()} processors\n")
    print("| workload | tool | CPU s | peak MiB | qxp / tool |\n| --- | --- | ---: | ---: | ---: |")
    for name, workload in chosen.items():
        size = max(workload.small, int(workload.size * options.scale))
        print_rows(name, size, workload, measure(name, size, commands_of(workload, qxp)[0], options.rounds))


if __name__ == "__main__":
    main()
