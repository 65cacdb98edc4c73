"""The programs that check_directives.py tries, by kinds. Each kind is all of its programs up to a size."""

import itertools
import random
from collections import namedtuple

# The texts of all kinds may include these.
FILES = {
    "a.inc": "#!interpreter\n#ifdef A\n#undef A\n#endif\n#define A 3\na #A",
    "if.inc": "i\n#ifdef A",
    "endif.inc": "e #B\n#endif\n",
    "loop.inc": "\n#for i 2;3;1\n\n#i ##A\n#include <line.inc>\n#endfor\n",
    "line.inc": "l #f(#A) /*\n*/ m",
}

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

# Whole sections, loops and calls: what is made of these mostly succeeds.
DEFINED = "#define A 1\n#define f(x) <#x ##x>\n#define g(x,y) #(#x==#y?#x:[##y]) '#x'\n"
BLOCKS = (
    "#A ##A",
    " #B #  x",
    '"a"  ##A "b" /* "c" */ \'d\'  "e"',
    "#define B #A#A",
    "#redefine A 2",
    "#redefine A #A+1",
    "#undef A",
    "#f(#A) ##f(1)",
    '#f("a,b")#f( (1,2) )#f(##A)',
    "#g(1,#A)|#g(#A,(2)) # #g(3,2)",
    "#f(#g(1,2))",
    "#redefine f(y) #y##y#A",
    "#redefine g(x,y) #f(#x)##f(#y) #x",
    "#define h(x) #(defined(#x)?#x:#(#x==1?#f(#A):##x))",
    "#h(A) #h(B) ##h(1)",
    "#{ #A + 1 } ##{ '#A' + ##A }",
    "#{ defined(B) ? 'b' : 'u' + 1 }",
    "\n\tx /* #A\n\n */ y // #B",
    "#include \"a.inc\"",
    "#include <loop.inc>",
    " #warning w #A",
    "#if #A == 1 && !defined(B)\nb\n#elif #A > 2\nc\n#elseifdef B\nd\n#endif",
    "#ifdef i\n#i ##i\n#endif\n#ifndef j\n-\n#else\n##j\n#endif",
)
AROUND = (
    ("#for i 1;2;1\n", "\n#endfor"),
    (" #for j #A;#A+1;1\n", "\n #endfor x"),
    ("#for i 1;#B;1\n", "\n#endfor"),
    ("#ifdef A\n", "\n#else\n-\n#endif"),
    ("#ifndef B\n", "\n#elseifdef A\n+ #A\n#endif"),
    ("#if #A==1\n", "\n#elif #A==2\ne\n#else\nf\n#endif"),
    ("#if 0\n'x'\n#else\n", "\n#endif x"),
    ("#ifdef B\n-\n#elif #i==1\n", "\n#else\n#A\n#endif"),
)

SCAN = ('"', "'", "\\", " ", "a", "#A", "##A", "/*", "*/", "//", "#", "##", "\n", "#{1}", "##{ 2 }", "/", "*")
VALUES = ("#x", "##x", "#(", "?", ":", ")", "(", '"', "'", "1", " ", "#", "{", "==", "#A")
ARGUMENTS = ("(", ")", ",", '"', "'", " ", "#A", "##A", "#f", "#U", "1", "#", "#{1}", "\\")
CONDITIONS = ("1", "0", "'a'", "''", "#A", "##A", "A", "defined", "(", ")", "(A)", "(B)", "==", "!=", "<", ">=", "&&", "||",
              "!", "-", "+", "*", "?", ":")

WHOLE = "whole"
PARTIAL = "partial"
UNTRIMMED = "untrimmed"


def sequences(letters, size, separator=""):
    for length in range(1, size + 1):
        for chosen in itertools.product(letters, repeat=length):
            yield separator.join(chosen)


def lines(size):
    # Alone, and behind defines, so that not nearly all of them fail.
    for program in sequences(LINES, size, "\n"):
        yield program
        yield "#define A 1\n#define B 2\n" + program


def texts_of_blocks(size):
    """All sequences of `size` blocks, those around others among them."""
    if size == 0:
        yield ""
        return
    for rest in range(size):
        for last in texts_of_blocks(rest):
            behind = "\n" + last if last else ""
            if size - rest == 1:
                for block in BLOCKS:
                    yield block + behind
            else:
                for inner in texts_of_blocks(size - rest - 1):
                    for before, after in AROUND:
                        yield before + inner + after + behind


def blocks(size):
    for length in range(1, size + 1):
        for text in texts_of_blocks(length):
            yield DEFINED + text


def random_blocks(size):
    """Not all there are, as these are long: `size` thousands of them, always the same."""
    chance = random.Random(1)

    def text(length):
        parts = []
        while length > 0:
            if length < 2 or chance.random() < 0.6:
                parts.append(chance.choice(BLOCKS))
                length -= 1
            else:
                inner = chance.randint(1, length - 1)
                before, after = chance.choice(AROUND)
                parts.append(before + text(inner) + after)
                length -= inner + 1
        return "\n".join(parts)

    for _ in range(1000 * size):
        yield DEFINED + "#define B 2\n" * chance.randint(0, 1) + text(chance.randint(4, 9))


def scan(size):
    for program in sequences(SCAN, size):
        yield "#define A 1\n" + program


def values(size):
    for value in sequences(VALUES, size):
        yield f"#define A 2\n#define f(x) {value}\n#f(0)|#f(1)"


def arguments(size):
    for given in sequences(ARGUMENTS, size):
        yield f"#define A 2\n#define f(x) <#x>\n#f({given})|"


def conditions(size):
    for condition in sequences(CONDITIONS, size, " "):
        yield f"#define A 2\n#if ({condition})\na\n#elif !({condition})\nb\n#endif"


Kind = namedtuple("Kind", "programs modes")
KINDS = {
    "lines": Kind(lines, (WHOLE, PARTIAL)),
    "blocks": Kind(blocks, (WHOLE, PARTIAL, UNTRIMMED)),
    "random_blocks": Kind(random_blocks, (WHOLE, PARTIAL, UNTRIMMED)),
    "scan": Kind(scan, (WHOLE, UNTRIMMED)),
    "values": Kind(values, (WHOLE,)),
    "arguments": Kind(arguments, (WHOLE, PARTIAL)),
    "conditions": Kind(conditions, (WHOLE, PARTIAL)),
}
