"""The inputs of compare.py: the same work, written for qxp and for each tool that can do it.

A workload writes a folder of inputs of any size. `commands` says how each tool is run in that folder; a command that
ends in ">" writes its result to standard output. Texts are the same from run to run.
"""

import os
import random

WORDS = "amount buffer column driver engine filter handle layout marker number object packet region signal target".split()

# What each C preprocessor is called with.
C_TOOLS = {
    "mcpp": ["mcpp", "in.c", "out"],
    "tcc -E": ["tcc", "-E", "-o", "out", "in.c"],
    "gcc -E": ["gcc", "-E", "-o", "out", "in.c"],
}
M4 = {"m4": ["m4", "in.m4", ">"]}
PHP = {"php": ["php", "-d", "memory_limit=-1", "in.php", ">"]}
BUFFERED = "ob_start(null, 1 << 16);"  # php makes a system call of each piece of text otherwise
PREPROCESS = ["preprocess", "-o", "out", "in.txt"]


def put(folder, name, lines):
    path = os.path.join(folder, name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        for line in lines:
            file.write(line + "\n")


def statement(source, number):
    """A line of a program, without comments, strings or names that some tool might know."""
    first, second = source.choice(WORDS), source.choice(WORDS)
    return source.choice((
        f"{first}_{number % 509} = {second}[{number % 61}] + {number};",
        f"while ({first}.{second} < {number % 83}) {{ {second}({first}, {number}); }}",
        f"result({first}_{number % 23}, {second} * {number % 7});",
        f"{first}.{second}({number}, {number % 5}, {number % 11}, {number % 3});",
    ))


def line_of_text(source, number):
    """Mostly statements: indented, with comments and strings, and some lines of which nothing stays."""
    code = statement(source, number)
    kind = source.randrange(20)
    if kind < 9:
        return "    " + code
    if kind < 12:
        return f"  {code}  // remark {number}"
    if kind < 14:
        return f'\tlog("see http://host{number % 40}/a /* no comment */", {number});'
    if kind == 14:
        return f'  say("one half of {number}, " "the other \\"half\\"");'
    if kind == 15:
        return f"first({number % 13}, /* between {number} */ second);"
    if kind == 16:
        return f"// nothing but remark {number}"
    if kind == 17:
        return f"/* remark {number}\n   that goes on */"
    return "" if kind == 18 else code + "   "


class Workload:
    """A kind of input. Its docstring is the line in the table."""

    size = 0  # for figures
    small = 200  # for comparing results
    arguments = PREPROCESS  # of qxp
    commands = {}  # the others
    result = "code"  # how results are compared: "code", "text" or "xml"

    def write(self, folder, size):
        raise NotImplementedError


class Lines(Workload):
    """lines of code with comments and strings"""

    size = 1_000_000
    commands = C_TOOLS

    def write(self, folder, size):
        source = random.Random(size)
        put(folder, "in.txt", (line_of_text(source, number) for number in range(size)))
        os.link(os.path.join(folder, "in.txt"), os.path.join(folder, "in.c"))


class Calls(Workload):
    """lines, each fifth with one of 1,000 defines"""

    size = 200_000
    commands = {**C_TOOLS, **M4}

    def write(self, folder, size):
        source = random.Random(size)
        text, c, m4 = [], [], []
        for number in range(500):
            text += [f"#define V{number} {number * 3 + 100}", f"#define S{number}(x,y) scale(#x, #y, #V{number})"]
            c += [f"#define V{number} {number * 3 + 100}", f"#define S{number}(x,y) scale(x, y, V{number})"]
            m4 += [f"define(`V{number}', `{number * 3 + 100}')dnl", f"define(`S{number}', `scale($1, $2, V{number})')dnl"]
        for number in range(size):
            if source.randrange(5):
                line = statement(source, number)
                for lines in (text, c, m4):
                    lines.append(line)
                continue
            use = f"{source.randrange(500)}({source.choice(WORDS)}_{number % 90}, {number})"
            text.append(f"part_{number % 77} = #S{use};")
            c.append(f"part_{number % 77} = S{use};")
            m4.append(f"part_{number % 77} = S{use};")
        put(folder, "in.txt", text)
        put(folder, "in.c", c)
        put(folder, "in.m4", m4)


class Sections(Workload):
    """groups of nested conditional sections"""

    size = 100_000
    commands = C_TOOLS

    def write(self, folder, size):
        text = [f"#define OPTION{number} 1" for number in range(0, 90, 2)]
        for number in range(size):
            text += [
                f"#ifdef OPTION{number % 90}",
                f"known({number % 701});",
                f"#if ({number} + 4) * 5 % 9 > 4 && !defined(OPTION{number * 3 % 90})",
                f"case_a({number % 701});",
                f"#elif {number} % 4 == 1 || defined(OPTION{number * 7 % 90})",
                f"case_b({number % 701});",
                "#else",
                f"case_c({number % 701});",
                "#endif",
                "#else",
                f"unknown({number % 701});",
                f"#ifndef OPTION{number * 5 % 90}",
                f"neither({number % 701});",
                "#endif",
                "#endif",
            ]
        put(folder, "in.txt", text)
        put(folder, "in.c", text)


class Includes(Workload):
    """included files of 50 lines, and one that all of them include"""

    size = 2_000
    small = 30
    commands = {**C_TOOLS, **M4}

    def write(self, folder, size):
        source = random.Random(size)
        put(folder, "set/all.inc", ["#ifndef ALL_ONCE", "#define ALL_ONCE 1", "once();", "#endif"])
        put(folder, "set/all.m4", ["ifdef(`ALL_ONCE', , `define(`ALL_ONCE', 1)once();", "')dnl"])
        names = [f"set/part{number // 100}/n{number}" for number in range(size)]
        for name in names:
            body = [statement(source, line) for line in range(50)]
            put(folder, name + ".inc", ['#include "../all.inc"'] + body)
            put(folder, name + ".m4", ["include(`set/all.m4')dnl"] + body)
        text = [f'#include "{name}.inc"' for name in names]
        put(folder, "in.txt", text)
        put(folder, "in.c", text)
        put(folder, "in.m4", [f"include(`{name}.m4')dnl" for name in names])


class Loop(Workload):
    """passes of a counted loop"""

    size = 200_000
    commands = {**M4, **PHP}
    text_row = 'step(#i, "of many", #i);'
    m4_row = 'step($1, "of many", $1);'
    php_row = 'step(<?= $i ?>, "of many", <?= $i ?>);'

    def write(self, folder, size):
        put(folder, "in.txt", [f"#for i 1;{size};1", self.text_row, "#endfor"])
        put(folder, "in.m4", [
            f"define(`steps', `ifelse(eval($1 > $2), 1, , `{self.m4_row}",
            "steps(incr($1), $2)')')dnl",
            f"steps(1, {size})",
        ])
        put(folder, "in.php", [f"<?php {BUFFERED} for ($i = 1; $i <= {size}; ++$i) {{ ?>", self.php_row, "<?php } ?>"])


class ScriptLoop(Loop):
    """passes of a counted loop with an inline script"""

    text_row = "step(#i, #{#i * 3 + 1});"
    m4_row = "step($1, eval($1 * 3 + 1));"
    php_row = "step(<?= $i ?>, <?= $i * 3 + 1 ?>);"


def put_items(folder, size):
    put(folder, "in.xml", ["<stock>"] + [
        f'<item name="{WORDS[number % 15]} {number}" price="{number * 7 % 1000}" count="{number % 3}" place="{number % 40}"/>'
        for number in range(size)
    ] + ["</stock>"])


class Template(Workload):
    """items of a document, expanded with a condition"""

    size = 100_000
    arguments = ["expand", "--compact", "-o", "out", "in.tpl", "in.xml"]
    commands = {"xsltproc": ["xsltproc", "-o", "out", "in.xsl", "in.xml"], **PHP}
    result = "text"

    def write(self, folder, size):
        put_items(folder, size)
        put(folder, "in.tpl", [
            '<%repeat filter="item"%>',
            "[%name%] at [%price%], place [%place%]",
            '<%if cond="[%count%] > 0"%>',
            "there are [%count%] of [%name%]",
            "<%/if%>",
            "<%else%>",
            "sold out",
            "<%/else%>",
            "<%/repeat%>",
        ])
        put(folder, "in.xsl", [
            '<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">',
            '<xsl:output method="text"/><xsl:template match="/"><xsl:for-each select="stock/item">',
            '<xsl:value-of select="@name"/> at <xsl:value-of select="@price"/>, place <xsl:value-of select="@place"/>',
            '<xsl:text>&#10;</xsl:text><xsl:choose><xsl:when test="@count &gt; 0">',
            'there are <xsl:value-of select="@count"/> of <xsl:value-of select="@name"/>',
            "</xsl:when><xsl:otherwise>sold out</xsl:otherwise></xsl:choose><xsl:text>&#10;</xsl:text>",
            "</xsl:for-each></xsl:template></xsl:stylesheet>",
        ])
        put(folder, "in.php", [
            f"<?php {BUFFERED} $document = new DOMDocument(); $document->load('in.xml', LIBXML_PARSEHUGE);",
            "for ($item = $document->documentElement->firstElementChild; $item; $item = $item->nextElementSibling) {",
            "$name = $item->getAttribute('name'); $count = $item->getAttribute('count');",
            "echo $name, ' at ', $item->getAttribute('price'), ', place ', $item->getAttribute('place'), PHP_EOL;",
            "echo $count > 0 ? \"there are $count of $name\" : 'sold out', PHP_EOL; }",
        ])


class Document(Workload):
    """records of a document, loaded and saved"""

    size = 200_000
    arguments = ["merge", "-o", "out", "in.xml", "none.xml"]
    commands = {"xsltproc": ["xsltproc", "-o", "out", "in.xsl", "in.xml"], **PHP}
    result = "xml"

    def write(self, folder, size):
        put(folder, "in.xml", ["<records>"] + [
            f'<record id="{number}" kind="{WORDS[number % 15]}"><title>record &amp; {number}</title>'
            f'<value unit="mm">{number * 13 % 997}</value><!-- note {number} --><flag/></record>'
            for number in range(size)
        ] + ["</records>"])
        put(folder, "none.xml", ["<records/>"])
        put(folder, "in.xsl", [
            '<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">',
            '<xsl:template match="@*|node()"><xsl:copy><xsl:apply-templates select="@*|node()"/></xsl:copy>',
            "</xsl:template></xsl:stylesheet>",
        ])
        put(folder, "in.php", [
            "<?php $document = new DOMDocument(); $document->load('in.xml', LIBXML_PARSEHUGE); echo $document->saveXML();",
        ])


WORKLOADS = {
    "lines": Lines(),
    "calls": Calls(),
    "sections": Sections(),
    "includes": Includes(),
    "loop": Loop(),
    "script_loop": ScriptLoop(),
    "template": Template(),
    "document": Document(),
}
