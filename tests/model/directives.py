"""What the preprocessor makes of a text, said again in the plainest way that the author found.

Only what the small programs of check_directives.py need: comments, strings, defines without parameters, sections,
loops, includes, and conditions that are a comparison of two numbers or "defined(NAME)"; all of it also in partial mode.
No inline script; trimming is on. It shares no line and no idea of its making with the preprocessor: it reads a text the way that
its rules are told, character by character, and is as slow as that.

ANY stands for a part of a result that the rules leave open.
"""

import re

ANY = "\0any\0"

# What a directive gives back that is left as it is written.
KEEP = object()

BLANKS = " \t"
TRIMMED = " \t\n\r"
WORD = re.compile(r"[A-Za-z0-9_]*")
SECTION_WORDS = ("ifdef", "ifndef", "if", "else", "elseifdef", "elif", "elseif", "endif")
OTHER_WORDS = ("include", "for", "error", "define", "redefine", "undef")


class Failure(Exception):
    """An error: its message and the context of its unit, which is "" without one."""

    def __init__(self, message, context):
        super().__init__(message)
        self.message = message
        self.context = context


class Unit:
    def __init__(self, file, line, text):
        self.file = file
        self.line = line
        self.text = text

    def context(self):
        return f'file "{self.file}" line {self.line}'


class Section:
    """An open section; the states are TAKEN, WAITING, ELSE and ELSE_SKIPPED. `taken` is None for one that partial mode
    cannot decide: its directives are kept."""

    def __init__(self, taken, skipped_outside, context):
        self.state = "WAITING" if taken is False else "TAKEN"
        self.unresolved = taken is None
        self.skipped_outside = skipped_outside
        self.context = context


class Unresolved(Exception):
    """Partial mode cannot tell yet. `text` is as much of it as it can."""

    def __init__(self, text):
        super().__init__(text)
        self.text = text


def units_of(file, text):
    return [Unit(file, number, line) for number, line in enumerate(text.split("\n"), 1)]


def is_escaped(text, at):
    backslashes = 0
    while at - backslashes > 0 and text[at - backslashes - 1] == "\\":
        backslashes += 1
    return backslashes % 2 == 1


def end_of_string(text, at):
    """Behind the string that opens at `at`; 0 when it is not closed."""
    end = at + 1
    while end < len(text):
        if text[end] == text[at] and not is_escaped(text, end):
            return end + 1
        end += 1
    return 0


def join_strings(text):
    """Double-quoted strings with nothing but blanks between them become one."""
    result = ""
    at = 0
    while at < len(text):
        end = end_of_string(text, at) if text[at] in "\"'" else 0
        if not end:
            result += text[at]
            at += 1
            continue
        string = text[at:end]
        while string[0] == '"':
            behind = len(text) - len(text[end:].lstrip(BLANKS))
            next_end = end_of_string(text, behind) if text[behind : behind + 1] == '"' else 0
            if not next_end:
                break
            string = string[:-1] + text[behind + 1 : next_end]
            end = next_end
        result += string
        at = end
    return result


class Preprocessor:
    def __init__(self, files=None, partial=False):
        self.files = files or {}
        self.partial = partial
        self.kept_something = False
        self.defines = {}  # name: (value, context of its definition)
        self.sections = []
        self.base = 0
        self.skipping = False

    def run(self, file, text):
        """The kept lines, as (file, line, text)."""
        return [(unit.file, unit.line, unit.text) for unit in self.block(units_of(file, text))]

    def block(self, units):
        self.skipping = False
        kept = []
        comments = []
        waiting = list(units)
        while waiting:
            unit = waiting.pop(0)
            made = []
            self.owner = unit
            output = self.line(unit, comments, waiting, made)
            kept += made
            output = join_strings(output.strip(TRIMMED))
            if output:
                kept.append(Unit(self.owner.file, self.owner.line, output))
        if comments:
            raise Failure(f"Comment not closed (started in {comments[0]})!", ANY)
        if len(self.sections) > self.base:
            raise Failure(f"Missing #endif for #ifdef started {self.sections[-1].context}!", "")
        return kept

    def line(self, unit, comments, waiting, made):
        """What is left of a line. `waiting` are the units behind it, `made` gets those that a loop or an include makes;
        self.owner is the unit that is left with the text."""
        text = unit.text
        output = ""
        at = 0
        while at < len(text):
            two = text[at : at + 2]
            if comments:
                if two == "*/":
                    comments.pop()
                    at += 2
                elif two == "/*" and text[at - 1 : at] != "/":
                    comments.append(unit.context())
                    at += 2
                else:
                    at += 1
            elif text[at] in "\"'":
                end = end_of_string(text, at)
                if not end:
                    raise Failure("String not terminated !", unit.context())
                if not self.skipping:
                    output += text[at:end]
                at = end
            elif two == "//":
                break
            elif two == "/*":
                comments.append(unit.context())
                at += 2
            elif two == "*/":
                raise Failure("Comment closed but not opened !", unit.context())
            elif text[at] == "#":
                output, at = self.construct(unit, output, at, waiting, made)
            else:
                if not self.skipping:
                    output += text[at]
                at += 1
        return output

    def construct(self, unit, output, at, waiting, made):
        """Does what the "#" at `at` asks for; the output with it, and where the line goes on."""
        text = unit.text
        word = WORD.match(text, at + 1).group()
        quoted = not word and text[at + 1 : at + 2] == "#"
        if quoted:
            word = WORD.match(text, at + 2).group()
        elif not output.strip(BLANKS) and not text[:at].strip(BLANKS):
            rest = text[at + 1 + len(word) :]
            if word in SECTION_WORDS:
                return output + self.kept(getattr(self, "do_" + word)(unit, rest), text[at:]), len(text)
            if word in OTHER_WORDS:
                if self.skipping:
                    return output, len(text)
                return output + self.kept(getattr(self, "do_" + word)(unit, rest, waiting, made), text[at:]), len(text)
        end = at + 1 + quoted + len(word)
        if self.skipping:
            return output, end
        if not word and not quoted:
            return output.rstrip(BLANKS), len(text) - len(text[end:].lstrip(BLANKS))
        try:
            value = self.value_of(unit, word)
        except Unresolved:
            self.kept_something = True
            return output + text[at:end], end
        return output + (f'"{value}"' if quoted else value), end

    @staticmethod
    def kept(what, directive):
        """What a directive leaves of itself: nothing, itself, or another text."""
        return directive if what is KEEP else what or ""

    def keep(self):
        self.kept_something = True
        return KEEP

    def value_of(self, unit, name):
        if name not in self.defines and self.partial:
            raise Unresolved("")
        if name not in self.defines:
            raise Failure(f'"{name}" is not defined !', unit.context())
        return self.defines[name][0]

    def expand(self, unit, text):
        """A define's value, a condition or the bound of a loop with its defines replaced."""
        result = ""
        at = 0
        unresolved = False
        while at < len(text):
            if text[at] in "\"'":
                end = end_of_string(text, at)
                if not end:
                    raise Failure("String not terminated !", unit.context())
                result += text[at:end]
                at = end
            elif text[at] == "#" and text[at + 1 : at + 2] not in ("", " ", "\t", "(", "{"):
                quoted = text[at + 1] == "#"
                word = WORD.match(text, at + 1 + quoted).group()
                end = at + 1 + quoted + len(word)
                try:
                    value = self.value_of(unit, word)
                    result += f'"{value}"' if quoted else value
                except Unresolved:
                    result += text[at:end]
                    unresolved = True
                at = end
            else:
                result += text[at]
                at += 1
        if unresolved:
            raise Unresolved(result)
        return result

    def number(self, unit, text):
        return int(self.expand(unit, text))

    def holds(self, unit, condition):
        text = self.expand(unit, condition).strip()
        asked = re.fullmatch(r"\(?\s*defined\s*\(\s*(\w+)\s*\)\s*\)?", text)
        if asked and self.partial and asked.group(1) not in self.defines:
            raise Unresolved(self.expand(unit, condition))
        if asked:
            return asked.group(1) in self.defines
        left, right = re.fullmatch(r"\(?\s*(\d+)\s*==\s*(\d+)\s*\)?", text).groups()
        return int(left) == int(right)

    # Sections

    def open_section(self, unit, taken):
        """`taken` is None for a section that cannot be decided; one in a section that is left out counts as decided."""
        section = Section(True if self.skipping else taken, self.skipping, unit.context())
        self.sections.append(section)
        if section.state == "WAITING":
            self.skipping = True
        return self.keep() if section.unresolved else None

    def top(self, unit, word, opening):
        if len(self.sections) <= self.base:
            raise Failure(f"#{word} without #{opening}", unit.context())
        return self.sections[-1]

    @staticmethod
    def name_in(rest):
        return WORD.match(rest.lstrip(BLANKS)).group()

    def do_ifdef(self, unit, rest):
        is_known = self.name_in(rest) in self.defines
        return self.open_section(unit, None if self.partial and not is_known else is_known)

    def do_ifndef(self, unit, rest):
        is_known = self.name_in(rest) in self.defines
        return self.open_section(unit, None if self.partial and not is_known else not is_known)

    def do_if(self, unit, rest):
        try:
            # In a section that is left out it is not asked; whatever it were, nothing would be kept.
            return self.open_section(unit, self.skipping or self.holds(unit, rest))
        except Unresolved:
            return self.open_section(unit, None)

    def do_else(self, unit, _rest):
        section = self.top(unit, "else", "ifdef")
        section.state = "ELSE_SKIPPED" if section.state == "TAKEN" and not section.unresolved else "ELSE"
        if not section.skipped_outside:
            self.skipping = section.state != "ELSE"
        return KEEP if section.unresolved else None

    def branch(self, section, decide):
        if section.state != "WAITING":
            section.state = "TAKEN"
            self.skipping = True
        elif not section.skipped_outside:
            if decide():
                section.state = "TAKEN"
            self.skipping = section.state != "TAKEN"

    def do_elif(self, unit, rest, word="elif"):
        section = self.top(unit, word, "if")
        if section.unresolved:
            section.state = "TAKEN"
            self.skipping = False
            try:
                return f"#{word}" + self.expand(unit, rest)
            except Unresolved as unresolved:
                return f"#{word}" + unresolved.text
        try:
            return self.branch(section, lambda: self.holds(unit, rest))
        except Unresolved as unresolved:
            raise Failure(f"#{word} : Can not evaluate condition: {unresolved.text}", unit.context()) from None

    def do_elseif(self, unit, rest):
        return self.do_elif(unit, rest, "elseif")

    def do_elseifdef(self, unit, rest):
        section = self.top(unit, "elseifdef", "ifdef")
        is_known = self.name_in(rest) in self.defines
        if not section.unresolved:
            return self.branch(section, lambda: is_known)
        if not is_known:
            return KEEP
        section.state = "TAKEN"
        self.skipping = False
        return "#elif (1==1)"

    def do_endif(self, unit, _rest):
        section = self.top(unit, "endif", "ifdef")
        self.skipping = section.skipped_outside
        self.sections.pop()
        return KEEP if section.unresolved else None

    def do_error(self, unit, rest, _waiting, _made):
        if any(section.unresolved for section in self.sections[self.base :]):
            return self.keep()
        raise Failure(f"ERROR : {rest}", unit.context())

    # Defines

    def definition(self, unit, rest):
        """The name, the value as far as it is known, and whether that is all of it."""
        rest = rest.lstrip(BLANKS)
        name = WORD.match(rest).group()
        if not name:
            raise Failure(f"No Define name in line: {unit.text}", unit.context())
        try:
            return name, self.expand(unit, rest[len(name) :].strip(TRIMMED)), True
        except Unresolved as unresolved:
            return name, unresolved.text, False

    def kept_definition(self, word, name, value):
        self.kept_something = True
        return f"#{word} {name} {value}"

    def not_defined(self, unit, name):
        if self.partial:
            return self.keep()
        raise Failure(f'"{name}" not defined!', unit.context())

    def do_define(self, unit, rest, _waiting, _made):
        name, value, is_known = self.definition(unit, rest)
        if not is_known:
            return self.kept_definition("define", name, value)
        before, origin = self.defines.get(name, (value, ""))
        if before != value:
            raise Failure(f'"{name}" already defined in {origin} ({value} was {before}) !', unit.context())
        self.defines.setdefault(name, (value, unit.context()))
        return None

    def do_redefine(self, unit, rest, _waiting, _made):
        name, value, is_known = self.definition(unit, rest)
        if name not in self.defines:
            return self.not_defined(unit, name)
        if not is_known:
            return self.kept_definition("redefine", name, value)
        self.defines[name] = (value, unit.context())
        return None

    def do_undef(self, unit, rest, _waiting, _made):
        name = self.name_in(rest)
        if name not in self.defines:
            return self.not_defined(unit, name)
        del self.defines[name]
        return None

    # Includes

    def nested(self, file, text):
        """The units of a text of its own, which closes the sections it opens and no others."""
        base = self.base
        self.base = len(self.sections)
        units = self.block(units_of(file, text))
        self.base = base
        return units

    def do_include(self, unit, rest, _waiting, made):
        name = rest.lstrip(' "<').rstrip(' ">')
        if name not in self.files:
            raise Failure(f"Include file not found '{name}' from '{ANY}'", unit.context())
        text = self.files[name]
        if len(text) > 2 and text.startswith("#!"):
            text = "//" + text[2:]
        owner = self.owner
        made += self.nested(name, text)
        self.owner = owner

    # Loops

    @staticmethod
    def take_body(waiting):
        """The text of the lines up to the end of the loop, and the unit of that end, which is taken too; None without
        an end."""
        body = ""
        depth = 0
        while waiting:
            unit = waiting.pop(0)
            line = unit.text.strip(BLANKS)
            word = WORD.match(line, 1).group() if line.startswith("#") else ""
            if word == "for":
                depth += 1
            elif word == "endfor":
                if depth == 0:
                    return body, unit
                depth -= 1
            body += unit.text + "\n"
        return None, None

    def bounds(self, unit, texts):
        """Start, end and step; None when one of them is not known yet."""
        numbers = []
        for text in texts:
            try:
                numbers.append(self.number(unit, text))
            except Unresolved:
                pass
        return numbers if len(numbers) == len(texts) else None

    def do_for(self, unit, rest, waiting, made):
        name, _, texts = rest.strip(" ").partition(" ")
        bounds = self.bounds(unit, texts.split(";", 2))
        body, end = self.take_body(waiting)
        if body is None:
            raise Failure(ANY, ANY)
        label = f"{unit.file} (LOOP l.{unit.line})"
        if bounds is None:
            self.kept_something = True
            self.defines.pop(name, None)
            made.append(unit)
            made += self.nested(label, body)
            self.owner = end
            return "#endfor"
        first, last, step = bounds
        for value in range(first, last + 1, step):
            self.defines[name] = (str(value), ANY)
            made += self.nested(label, body)
        self.defines.pop(name, None)
        self.owner = end
        return None
