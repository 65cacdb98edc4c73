#!/usr/bin/env python3
"""Gives qxp the inputs that break tools of its kind, and checks how each run ends, in how much memory and time.

    extremes.py QXP [NAME...]    all of them take two minutes, and 3 GiB of memory at most

Each run must end with the status and the first line of standard error that stand below (none: nothing is reported),
and a right result with the number of lines and bytes. Memory is the peak of the process, time that of its processor.
"""

import os
import random
import subprocess
import sys
import tempfile
import threading

MIB = 1024 * 1024
LINE = 100 * MIB

# A text that is itself longer is not compared.
LONGEST_MESSAGE = 300


class Case:
    """One input: `write` makes it in the current folder, `options` stand behind "qxp preprocess"."""

    def __init__(self, name, write, lines=None, size=None, error="", options=(), mib=100, seconds=5, status=None):
        self.name = name
        self.write = write
        self.lines = lines
        self.size = size
        self.error = error
        self.options = list(options) or ["in.txt"]
        self.mib = mib
        self.seconds = seconds
        self.status = status if status is not None else int(bool(error))


def text(*parts):
    """Writes in.txt. A part is a text, or a pair of a text and how often it stands there."""

    def write():
        with open("in.txt", "wb") as file:
            for part in parts:
                piece, times = part if isinstance(part, tuple) else (part, 1)
                piece = piece if isinstance(piece, bytes) else piece.encode()
                at_once = max(1, MIB // max(1, len(piece)))
                for _ in range(times // at_once):
                    file.write(piece * at_once)
                file.write(piece * (times % at_once))

    return write


def numbered(before, line, count, after=""):
    """Writes in.txt with a line for each number; "@" stands for the number, "^" for the one before."""

    def write():
        with open("in.txt", "w", encoding="utf-8") as file:
            file.write(before)
            for number in range(1, count + 1):
                file.write(line.replace("@", str(number)).replace("^", str(number - 1)) + "\n")
            file.write(after)

    return write


def fifo():
    """A pipe whose writer goes away after some lines."""
    os.mkfifo("in.txt")

    def feed():
        with open("in.txt", "wb") as file:
            file.write(b"a line\n" * 100_000)

    threading.Thread(target=feed, daemon=True).start()


def long_line(name, *parts, **expected):
    return Case("line_of_100_mb_" + name, text(*parts), **{"mib": 1200, "seconds": 20, **expected})


def endless(name, directive, shown, error, **more):
    """A script that does not end, below two lines."""
    script = "(function() { while (true) {} })()"
    line = 3 + directive.count("\n")
    message = f"in.txt:{line}: error: " + error.replace("@", shown.replace("@", script))
    return Case("endless_script_in_" + name, text("a\nb\n" + directive.replace("@", script) + "\n#endif\n#endfor\n"),
                error=message, options=["--time-limit", "0.5", "in.txt"], seconds=3, **more)


def greedy(name, directive, shown, error):
    """A script that takes memory without end."""
    script = "(function(a) { while (true) a.push([a.length]) })([])"
    message = "in.txt:3: error: " + error.replace("@", shown.replace("@", script))
    return Case("greedy_script_in_" + name, text("a\nb\n" + directive.replace("@", script) + "\n#endif\n#endfor\n"),
                error=message, options=["--memory-limit", "64", "in.txt"], mib=300, seconds=10)



CONDITION = "#if : Can not evaluate condition: @"

CASES = [
    # Nesting and repetition.
    Case("file_including_itself", text("#include \"in.txt\"\n"),
         error="in.txt:1: error: Include file 'in.txt' nested deeper than 200"),
    Case("file_including_itself_in_a_loop", text("#for i 1;2;1\n#include \"in.txt\"\n#endfor\n"),
         error="in.txt:1: error: for : Loops nested deeper than 200"),
    Case("empty_loop_of_10_9_passes", text("a\n#for i 1;1000000000;1\n\n#endfor\nb\n"), lines=2, size=4, seconds=1),
    Case("loops_nested_too_deep", numbered("", "#for i@ 1;1;1", 100_000),
         error="in.txt:1: error: Missing #endfor for #for started file \"in.txt\" line 1!"),
    Case("closed_loops_nested_too_deep", text(("#for i 1;1;1\n", 201), ("#endfor\n", 201)),
         error="in.txt" + " (LOOP l.1)" * 200 + ":1: error: for : Loops nested deeper than 200"),
    Case("sections_nested_too_deep", text(("#ifndef A\n", 1_000_000)),
         error="in.txt:10001: error: #ifndef : More than 10000 open sections !"),
    Case("comments_nested_100000_deep", text(("/*\n", 100_000), ("*/\n", 100_000), "a\n"), lines=1, size=2),
    Case("open_comments_nested_100000_deep", text("a\n", ("/*\n", 100_000)),
         error="qxp: error: Comment not closed (started in file \"in.txt\" line 2)!"),
    Case("open_comments_nested_on_a_line", text("a\n", ("/* ", 10_000_000)),
         error="qxp: error: Comment not closed (started in file \"in.txt\" line 2)!"),

    # One line of 100 MB.
    long_line("plain", ("word ", LINE // 5), lines=1, size=LINE),
    long_line("with_a_call", "#define A(x) <#x>\n", ("word ", LINE // 10), "#A(1)", (" word", LINE // 10), lines=1),
    long_line("with_inline_script", ("word ", LINE // 10), "#{6 * 7}", (" word", LINE // 10), lines=1),
    long_line("with_a_script_for_the_engine", ("word ", LINE // 10), "#{Math.max(6, 7)}", (" word", LINE // 10),
              lines=1),
    long_line("that_is_one_string", '"', ("word ", LINE // 5), '"', lines=1, size=LINE + 3),
    long_line("that_is_one_open_string", '"', ("word ", LINE // 5), error="in.txt:1: error: String not terminated !",
              mib=1300),
    long_line("of_strings", ('"word " ', LINE // 8), lines=1),
    long_line("that_is_one_comment", "/*", ("word ", LINE // 5), "*/", lines=0, size=0),
    long_line("that_is_a_comment_to_its_end", "//", ("word ", LINE // 5), lines=0, size=0),
    long_line("of_comments", ("a /* */ ", LINE // 8), lines=1),
    long_line("that_is_an_argument", "#define A(x) <#x>\n#A(", ("word ", LINE // 5), ")", lines=1, mib=1800),
    long_line("that_is_an_open_argument", "#define A(x) <#x>\n#A(", ("word ", LINE // 5), mib=2400,
              error='in.txt:2: error: "A" did not find end of parameters in (word' + " word" * LONGEST_MESSAGE),
    long_line("that_is_a_value", "#define A ", ("word ", LINE // 5), "\nx\n", lines=1, size=2),
    long_line("that_is_a_condition", "#if 1", (" + 1", LINE // 4), "\nx\n#endif\n", lines=1, size=2),
    long_line("that_is_an_unknown_name", "#", ("word_", LINE // 5), mib=2400, error='in.txt:1: error: "' + "word_" * LONGEST_MESSAGE),
    long_line("of_number_signs", ("# ", LINE // 2)),
    long_line("of_backslashes", '"', ("\\\\", LINE // 2), '"', lines=1),

    # Many of something.
    Case("million_defines", numbered("", "#define NAME@ @", 1_000_000, "x\n"), lines=1, size=2, mib=600, seconds=10),
    Case("million_defines_and_uses", numbered("", "#define NAME@ @\n#NAME@", 1_000_000), lines=1_000_000, mib=600,
         seconds=10),
    Case("million_calls_of_one_define", numbered("#define A(x,y) #x-#y\n", "#A(@,b)", 1_000_000), lines=1_000_000,
         mib=400, seconds=10),
    Case("million_uses_on_a_line", text("#define A a\n", ("#A ", 1_000_000)), lines=1, mib=100),
    Case("million_redefinitions", numbered("#define A 0\n", "#redefine A @", 1_000_000, "#A\n"), lines=1, size=8,
         seconds=10),
    Case("chain_of_100000_defines", numbered("#define NAME0 x\n", "#define NAME@ #NAME^", 100_000, "#NAME100000\n"),
         lines=1, size=2),
    Case("defines_that_grow_with_their_number", numbered("#define NAME0 x\n", "#define NAME@ #NAME^ y", 10_000),
         lines=0, mib=600),
    Case("100000_arguments", text("#define A(p", (",p", 99_998), ",q) #q\n#A(1", (",1", 99_998), ",2)\n"), lines=1,
         size=2),
    Case("100000_arguments_too_many", text("#define A(p) #p\n#A(1", (",1", 99_999), ")\n"),
         error='in.txt:2: error: "A" requires 1 parameters, but only 100000 given !'),
    Case("million_scripts", numbered("", "#{@ * 2}", 1_000_000), lines=1_000_000, mib=300, seconds=10),
    Case("100000_scripts_for_the_engine", numbered("", "#{Math.max(@, 2)}", 100_000), lines=100_000, mib=300,
         seconds=10),
    Case("million_scripts_on_a_line", text(("#{6 * 7} ", 1_000_000)), lines=1, mib=200, seconds=10),

    # Growth.
    Case("define_that_doubles", numbered("#define A0 twice\n", "#define A@ #A^#A^", 100),
         error='in.txt:27: error: "A25" : More than 268435456 characters after replacing defines !', mib=2500,
         seconds=10),
    Case("argument_that_doubles", text("#define A(x) #x#x\n#for i 1;40;1\n#A(x)\n#endfor\n"), lines=40, size=120),
    Case("define_that_doubles_in_a_loop",
         text("#define A xx\n#for i 1;100;1\n#redefine A #A#A\n#endfor\n"),
         error='in.txt (LOOP l.2):1: error: "A" : More than 268435456 characters after replacing defines !', mib=2500,
         seconds=10),
    Case("defines_of_one_long_value",
         numbered("#define A0 12345678\n", "#define A@ #A^#A^", 23, "".join(f"#define B{i} #A23\n" for i in range(16))),
         error='in.txt:31: error: "B6" : More than 536870912 characters in the values of all defines !', mib=2600,
         seconds=10),
    Case("loop_of_10_9_passes_over_a_line_of_10_mb",
         text("#for i 1;1000000000;1\n", ("word ", 2 * MIB), "\n#endfor\n"), seconds=10, mib=200,
         error="in.txt (LOOP l.1):1: error: More than 4294967296 bytes added by directives !"),

    # Scripts.
    endless("a_condition", "#if @", " @", CONDITION),
    endless("elif", "#if 0\n#elif @", " @", "#elif : Can not evaluate condition: @"),
    endless("a_loop_start", "#for i @;2;1", "@", "#if : Can not evaluate start: @"),
    endless("a_loop_end", "#for i 1;@;1", "@", "for : Can not evaluate end: @"),
    endless("a_loop_step", "#for i 1;2;@", "@", "for : Can not evaluate step: @"),
    greedy("a_condition", "#if @", " @", CONDITION),
    greedy("a_loop_end", "#for i 1;@;1", "@", "for : Can not evaluate end: @"),
    Case("endless_inline_script", text("#{for (;;);}\n"), options=["--time-limit", "0.5", "in.txt"],
         error="in.txt:1: error: #{ : Can not evaluate script: for (;;);"),
    Case("greedy_inline_script", text("#{a = []; for (;;) a.push([1])}\n"), options=["--memory-limit", "64", "in.txt"],
         error="in.txt:1: error: #{ : Can not evaluate script: a = []; for (;;) a.push([1])", mib=300),
    Case("endless_conditional_text", text("#define A(x) #(eval('for(;;);')?a:b)\n#A(1)\n"),
         options=["--time-limit", "0.5", "in.txt"],
         error="in.txt:2: error: #A : Can not evaluate question condition: eval('for(;;);')"),
    Case("script_that_doubles_a_text", text("#{s = 'x'; for (;;) s += s}\n"),
         error="in.txt:1: error: #{ : Can not evaluate script: s = 'x'; for (;;) s += s", mib=1200),
    Case("script_that_calls_itself", text("#{(f = () => f())()}\n"),
         error="in.txt:1: error: #{ : Can not evaluate script: (f = () => f())()"),
    Case("condition_of_million_parentheses", text("#if ", ("(", 1_000_000), "1", (")", 1_000_000), "\nx\n#endif\n"),
         error="in.txt:1: error: #if : Can not evaluate condition:  " + "(" * LONGEST_MESSAGE, mib=400),
    Case("condition_of_million_signs", text("#if ", ("!", 1_000_000), "1", "\nx\n#endif\n"),
         error="in.txt:1: error: #if : Can not evaluate condition:  " + "!" * LONGEST_MESSAGE, mib=400),
    Case("loop_end_of_million_parentheses",
         text("#for i 1;", ("(", 1_000_000), "1", (")", 1_000_000), ";1\nx\n#endfor\n"),
         error="in.txt:1: error: for : Can not evaluate end: " + "(" * LONGEST_MESSAGE, mib=400),
    Case("script_of_million_parentheses", text("#{", ("(", 1_000_000), "1", (")", 1_000_000), "}\n"),
         error="in.txt:1: error: #{ : Can not evaluate script: " + "(" * LONGEST_MESSAGE, mib=400),
    Case("condition_of_10_mb", text("#if 0", (" || 0", 2 * MIB), "\nx\n#endif\n"), lines=0, mib=300),
    Case("condition_of_10_mb_for_the_engine", text("#if Math.PI < 0", (" || 0", 2 * MIB), "\nx\n#endif\n"), lines=0,
         mib=1000, seconds=10),
    Case("condition_of_a_million_defined", text("#if 0", (" || defined(A)", 1_000_000), "\nx\n#endif\n"), lines=0,
         mib=400),
    Case("conditional_text_of_million_parentheses",
         text("#define A(x) #(1?", ("(", 1_000_000), (")", 1_000_000), ":b)\n#A(1)\n"), lines=1, size=2_000_001),

    # Texts that are none.
    Case("zero_bytes", text(("\0", LINE)), lines=1, size=LINE + 1, mib=400),
    Case("bytes_that_are_not_utf_8", text((b"\xff", LINE)), lines=1, size=2 * LINE + 1, mib=1200, seconds=20),
    Case("text_cut_in_a_character", text(("word ", LINE // 5), b"\xe2\x82"), lines=1, mib=1200, seconds=20),
    Case("carriage_returns", text(("\r", LINE)), lines=0, size=0, mib=200),
    Case("carriage_returns_kept", text(("\r", LINE // 10)), lines=LINE // 10, mib=600,
         options=["--keep-empty-lines", "--no-trim", "in.txt"]),
    Case("line_feeds", text(("\n", LINE)), lines=0, size=0, mib=200),
    Case("utf_16_cut_in_a_character", text(b"\xff\xfe", (b"a\0", LINE // 2), b"a"), mib=400,
         error="qxp: error: File not readable 'in.txt'"),
    Case("random_bytes", lambda: open("in.txt", "wb").write(random.Random(1).randbytes(MIB)),
         error="in.txt:2: error: String not terminated !"),

    # Files that are none.
    Case("folder", lambda: os.mkdir("in.txt"), error="qxp: error: File not found 'in.txt' from '@'"),
    Case("pipe_file", fifo, lines=100_000, size=700_000),
    Case("missing_file", lambda: None, error="qxp: error: File not found 'in.txt' from '@'"),
    Case("full_device", text(("word\n", 1_000_000)), options=["-o", "/dev/full", "in.txt"], mib=200,
         error="qxp: error: Output file not writable '/dev/full': No space left on device"),
    Case("memory_of_the_process", lambda: None, options=["/proc/self/mem"],
         error="qxp: error: File not readable '/proc/self/mem'"),
]


def run(qxp, case):
    """The result of a case: what is wrong with it, its processor time in seconds and its memory in MiB."""
    case.write()
    with open("out.txt", "wb") as out, open("err.txt", "wb") as err:
        process = subprocess.Popen([qxp, "preprocess", *case.options], stdin=subprocess.DEVNULL, stdout=out, stderr=err)
        killer = threading.Timer(120, process.kill)
        killer.start()
        _, status, usage = os.wait4(process.pid, 0)
        killer.cancel()
        process.returncode = status = os.waitstatus_to_exitcode(status)
    seconds = usage.ru_utime + usage.ru_stime
    mib = usage.ru_maxrss / 1024
    with open("err.txt", "rb") as err:
        message = err.readline(LONGEST_MESSAGE).decode(errors="replace").rstrip("\n").replace(os.getcwd(), "@")
    with open("out.txt", "rb") as out:
        lines = size = 0
        while piece := out.read(MIB):
            lines += piece.count(b"\n")
            size += len(piece)
    wrong = []
    for what, is_right in (
        (f"status {status}", status == case.status),
        (f"message {message!r}", message == case.error[:LONGEST_MESSAGE]),
        (f"{lines} lines", case.lines is None or lines == case.lines),
        (f"{size} bytes", case.size is None or size == case.size),
        (f"{mib:.0f} MiB", mib <= case.mib),
        (f"{seconds:.1f} s", seconds <= case.seconds),
    ):
        if not is_right:
            wrong.append(what)
    return wrong, seconds, mib


def main():
    qxp = os.path.realpath(sys.argv[1])
    names = sys.argv[2:]
    unknown = set(names) - {case.name for case in CASES}
    if unknown:
        sys.exit("extremes.py: no such case: " + ", ".join(sorted(unknown)))
    failures = 0
    print(f"{'case':<48} {'s':>6} {'MiB':>6}")
    for case in CASES:
        if names and case.name not in names:
            continue
        with tempfile.TemporaryDirectory() as folder:
            os.chdir(folder)
            wrong, seconds, mib = run(qxp, case)
            os.chdir("/")
        failures += bool(wrong)
        print(f"{case.name:<48} {seconds:6.2f} {mib:6.0f}  {'; '.join(wrong) or 'ok'}", flush=True)
    print(f"{failures} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
