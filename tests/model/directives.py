"""What the preprocessor makes of a text, said again in the plainest way that the author found.

Only what the programs of check_directives.py need: comments, strings, defines with and without parameters, conditional
texts, sections, loops, includes, and the scripts that script.py can evaluate; all of it also in partial mode and without
trimming. It shares no line and no idea of its making with the preprocessor: it reads a text the way that its rules are
told, character by character, and is as slow as that.

ANY stands for a part of a result that the rules leave open.
"""

import re
from collections import namedtuple

from script import ScriptFailure, UNDEFINED, evaluate, is_true, to_text

ANY = "\0any\0"

# What a directive gives back that is left as it is written.
KEEP = object()

BLANKS = " \t"
TRIMMED = " \t\n\r"
WORD = re.compile(r"[A-Za-z0-9_]*")
SECTION_WORDS = ("ifdef", "ifndef", "if", "else", "elseifdef", "elif", "elseif", "endif")
OTHER_WORDS = ("include", "for", "error", "warning", "define", "redefine", "undef")
DEFINED = re.compile(r"(?<![A-Za-z0-9_])defined[ \t]*\(([^)]*)\)")

Define = namedtuple("Define", "value origin params")


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


def units_of(file, text, keeps_empty):
    lines = text.replace("\r\n", "\n").replace("\r", "\n").split("\n")
    if not lines[-1]:
        lines.pop()
    return [Unit(file, number, line) for number, line in enumerate(lines, 1) if line or keeps_empty]


def is_escaped(text, at):
    backslashes = 0
    while at - backslashes > 0 and text[at - backslashes - 1] == "\\":
        backslashes += 1
    return backslashes % 2 == 1


def reference(text, at):
    """Whether a second "#" asks for quotes, where the word behind the one at `at` starts, and the word."""
    quoted = text[at + 1 : at + 2] == "#"
    start = at + 1 + quoted
    return quoted, start, WORD.match(text, start).group()


def end_of_string(text, at):
    """Behind the string that opens at `at`; 0 when it is not closed."""
    end = at + 1
    while end < len(text):
        if text[end] == text[at] and not is_escaped(text, end):
            return end + 1
        end += 1
    return 0


def join_strings(text):
    """Double-quoted strings with nothing but blanks between them become one. A quote behind a backslash is none here,
    wherever it stands."""
    result = ""
    pending = 0
    examined = -1
    in_single = is_open = False
    at = 0
    while at < len(text):
        quote = text[at]
        if quote not in "\"'":
            at += 1
            continue
        escaped = is_escaped(text[examined + 1 :], at - examined - 1)
        examined = at
        at += 1
        if escaped or (quote == "'" and is_open) or (quote == '"' and in_single):
            continue
        if quote == "'":
            in_single = not in_single
            continue
        behind = len(text) - len(text[at:].lstrip(BLANKS))
        if is_open and text[behind : behind + 1] == '"':
            result += text[pending:examined]
            examined = behind
            pending = at = behind + 1
        else:
            is_open = not is_open
    return result + text[pending:]


def find_at_level(text, at, end, what):
    """The first `what` outside strings and parentheses in front of the parenthesis that closes; -1 without one."""
    depth = 0
    while at < end:
        if text[at] == what and depth == 0:
            return at
        if text[at] in "\"'":
            at = end_of_string(text, at)
            if not at:
                return -1
            continue
        if text[at] == "(":
            depth += 1
        elif text[at] == ")":
            depth -= 1
            if depth < 0:
                return -1
        at += 1
    return -1


class Preprocessor:
    def __init__(self, files=None, partial=False, trims=True):
        self.files = files or {}
        self.partial = partial
        self.trims = trims
        self.kept_something = False
        self.defines = {}
        self.warnings = []  # (context, text)
        self.sections = []
        self.base = 0
        self.skipping = False

    def run(self, file, text):
        """The kept lines, as (file, line, text)."""
        return [(unit.file, unit.line, unit.text) for unit in self.block(self.units(file, text))]

    def listed_defines(self):
        return "".join(sorted(f"#define {self.form(name, *self.defines[name])}\n" for name in self.defines))

    def units(self, file, text):
        return units_of(file, text, keeps_empty=not self.trims)

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
            output = join_strings(output.strip(TRIMMED) if self.trims else output)
            if output or not self.trims:
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
                left = self.kept(getattr(self, "do_" + word)(unit, rest, waiting, made), text[at:])
                return ("" if word == "include" else output) + left, len(text)
        start = at + 1 + quoted
        end = start + len(word)
        if self.skipping:
            return output, end
        if text[start : start + 1] == "{":
            return self.inline_script(unit, output, at, start + 1, quoted)
        if not word:
            return output.rstrip(BLANKS), len(text) - len(text[end:].lstrip(BLANKS))
        if word not in self.defines:
            return output + self.unknown(unit, word, text[at:end]), end
        value, end = self.use(unit, word, text, end)
        if value is None:
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

    def unknown(self, unit, name, text):
        if not self.partial:
            raise Failure(f'"{name}" is not defined !', unit.context())
        self.kept_something = True
        return text

    # Expansion

    def expand(self, unit, text, left_alone=()):
        """A define's value, a condition, a script or the bound of a loop with its defines replaced."""
        result = ""
        at = 0
        unresolved = False
        while at < len(text):
            end = at + 1
            if text[at] in "\"'":
                end = end_of_string(text, at)
                if not end:
                    raise Failure("String not terminated !", unit.context())
            if text[at] != "#":
                result += text[at:end]
                at = end
                continue
            quoted, start, word = reference(text, at)
            end = start + len(word)
            value = None
            if text[start : start + 1] in ("", " ", "\t", "(", "{") or word in left_alone:
                result += text[at:end]
                at = end
                continue
            if word in self.defines:
                value, end = self.use(unit, word, text, end, left_alone)
            elif not self.partial:
                raise Failure(f'"{word}" is not defined !', unit.context())
            unresolved = unresolved or value is None
            if value is None:
                value = text[at:end]
            elif quoted:
                value = f'"{value}"'
            result += value
            at = end
        if unresolved:
            raise Unresolved(result)
        return result

    def arguments(self, unit, name, text, at):
        """What stands in the parentheses at `at`, if any, and the place behind them."""
        if text[at : at + 1] != "(":
            return [], at
        found = []
        start = at = at + 1
        is_nested = False
        while at < len(text):
            if text[at] in "\"'":
                at = end_of_string(text, at)
                if not at:
                    break
                continue
            if text[at] == "(" and is_nested:
                raise Failure("CPreprocessor::GetParams multiple nested parenthesis not supported", unit.context())
            if text[at] in "()" and (is_nested or text[at] == "("):
                is_nested = not is_nested
            elif text[at] in ",)" and not is_nested:
                found.append(text[start:at].strip(TRIMMED))
                start = at + 1
                if text[at] == ")":
                    return ([] if found == [""] else found), start
            at += 1
        raise Failure(f'"{name}" did not find end of parameters in {ANY} !', unit.context())

    def use(self, unit, name, text, at, left_alone=()):
        """The expansion of a define whose arguments stand at `at`, and the place behind them; None for one that cannot
        be told yet."""
        define = self.defines[name]
        arguments = []
        unresolved = False
        given, end = self.arguments(unit, name, text, at)
        for argument in given:
            try:
                arguments.append(self.expand(unit, argument, left_alone))
            except Unresolved:
                unresolved = True
            except Failure as failure:
                reason = f"'{argument}'->'{ANY}' : {failure.message}"
                raise Failure(f'"{name}" error parsing parameters {reason} !', unit.context()) from None
        if unresolved:
            return None, end
        if len(arguments) != len(define.params):
            message = f'"{name}" requires {len(define.params)} parameters, but only {len(arguments)} given !'
            raise Failure(message, unit.context())
        try:
            return self.substitute(unit, name, define.value, dict(zip(define.params, arguments))), end
        except Unresolved:
            return None, end

    def substitute(self, unit, name, value, arguments):
        """A define's value with its arguments."""
        result = ""
        at = 0
        while at < len(value):
            end = at + 1
            if value[at] in "\"'":
                end = end_of_string(value, at) or len(value)
            if value[at] != "#":
                result += value[at:end]
                at = end
                continue
            quoted, start, word = reference(value, at)
            end = start + len(word)
            part = arguments.get(word)
            if value[start : start + 1] == "(":
                part, end = self.chosen_text(unit, name, value, start, arguments)
            if part is None:
                part = value[at:end]
            elif quoted:
                part = f'"{part}"'
            result += part
            at = end
        return result

    def chosen_text(self, unit, name, value, at, arguments):
        """What the conditional text whose parenthesis opens at `at` comes to, and the place behind it."""
        places = [at]
        for what, sign in (("question", "?"), ("colon", ":"), ("close parenthesis", ")")):
            places.append(find_at_level(value, places[-1] + 1, len(value), sign))
            if places[-1] < 0:
                raise Failure(f"#(param?true:false) : Can not find {what}", unit.context())
        _, question, colon, close = places
        condition = self.substitute(unit, name, value[at + 1 : question], arguments)
        rewritten, is_known = self.rewrite_defined(condition)
        if not is_known:
            raise Unresolved(condition)
        try:
            holds = is_true(evaluate(rewritten))
        except ScriptFailure:
            message = f"#{name} : Can not evaluate question condition: {condition}"
            raise Failure(message, unit.context()) from None
        chosen = value[question + 1 : colon] if holds else value[colon + 1 : close]
        return self.substitute(unit, name, chosen, arguments), close + 1

    # Script

    def rewrite_defined(self, text):
        """"defined(NAME)" as script; whether partial mode knows all of the names."""
        is_known = True

        def rewritten(match):
            nonlocal is_known
            name = match.group(1).strip(TRIMMED)
            if name not in self.defines and self.partial:
                is_known = False
                return f"defined({name})"
            return "true" if name in self.defines else "false"

        return DEFINED.sub(rewritten, text), is_known

    def inline_script(self, unit, output, at, start, quoted):
        text = unit.text
        end = start
        while text[end : end + 1] not in ("", "{", "}"):
            end += 1
        if end == len(text):
            raise Failure("#{ needs a } on same line !", unit.context())
        if text[end] == "{":
            raise Failure("#{ can not be nested !", unit.context())
        try:
            script = self.expand(unit, text[start:end])
            rewritten, is_known = self.rewrite_defined(script)
            if not is_known:
                raise Unresolved(script)
            value = to_text(evaluate(rewritten))
        except Unresolved:
            self.kept_something = True
            return output + text[at : end + 1], end + 1
        except ScriptFailure:
            raise Failure("#{ : Can not evaluate script: " + script, unit.context()) from None
        return (output.rstrip(TRIMMED) + f'"{value}"' if quoted else output + value), end + 1

    def number(self, unit, text, message):
        expression = self.expand(unit, text)
        rewritten, is_known = self.rewrite_defined(expression)
        if not is_known:
            raise Unresolved(expression)
        try:
            value = evaluate(rewritten)
        except ScriptFailure:
            value = None
        if value is UNDEFINED or not isinstance(value, int) or isinstance(value, bool):
            raise Failure(message + expression, unit.context())
        return value

    def holds(self, unit, condition):
        text = self.expand(unit, condition)
        try:
            return is_true(evaluate(self.rewrite_defined(text)[0]))
        except ScriptFailure:
            raise Unresolved(text) from None

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
        # In a section that is left out it is not asked; whatever it were, nothing would be kept.
        try:
            holds = self.skipping or self.holds(unit, rest)
        except Unresolved as unresolved:
            if not self.partial:
                raise self.bad_condition(unit, "if", unresolved) from None
            holds = None
        except Failure:
            if not self.partial:
                raise
            holds = None
        return self.open_section(unit, holds)

    @staticmethod
    def bad_condition(unit, word, unresolved):
        return Failure(f"#{word} : Can not evaluate condition: {unresolved.text}", unit.context())

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
            except Failure:
                return f"#{word}" + rest
        try:
            return self.branch(section, lambda: self.holds(unit, rest))
        except Unresolved as unresolved:
            raise self.bad_condition(unit, word, unresolved) from None

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

    def is_undecided(self):
        return any(section.unresolved for section in self.sections[self.base :])

    def do_warning(self, unit, rest, _waiting, _made):
        if self.is_undecided():
            return self.keep()
        self.warnings.append((unit.context(), rest))
        return None

    def do_error(self, unit, rest, _waiting, _made):
        if self.is_undecided():
            return self.keep()
        raise Failure(f"ERROR : {rest}", unit.context())

    # Defines

    def definition(self, unit, rest):
        """The name, the define as far as it is known, and whether that is all of it."""
        rest = rest.lstrip(BLANKS)
        name = WORD.match(rest).group()
        if not name:
            raise Failure(f"No Define name in line: {unit.text}", unit.context())
        params, end = self.arguments(unit, name, rest, len(name))
        try:
            value, is_known = self.expand(unit, rest[end:].strip(TRIMMED), params), True
        except Unresolved as unresolved:
            value, is_known = unresolved.text, False
        return name, Define(value, unit.context(), params), is_known

    @staticmethod
    def form(name, value, _origin, params):
        return f"{name}({','.join(params)}) {value}" if params else f"{name} {value}"

    def kept_definition(self, word, name, define):
        self.kept_something = True
        return f"#{word} {self.form(name, *define)}"

    def not_defined(self, unit, name):
        if self.partial:
            return self.keep()
        raise Failure(f'"{name}" not defined!', unit.context())

    def do_define(self, unit, rest, _waiting, _made):
        name, define, is_known = self.definition(unit, rest)
        if not is_known:
            return self.kept_definition("define", name, define)
        before = self.defines.setdefault(name, define)
        if before.value != define.value:
            values = f"{define.value} was {before.value}"
            raise Failure(f'"{name}" already defined in {before.origin} ({values}) !', unit.context())
        return None

    def do_redefine(self, unit, rest, _waiting, _made):
        name, define, is_known = self.definition(unit, rest)
        if name not in self.defines:
            return self.not_defined(unit, name)
        if not is_known:
            return self.kept_definition("redefine", name, define)
        self.defines[name] = define
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
        units = self.block(self.units(file, text))
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
        start, _, rest = texts.partition(";")
        end, _, step = rest.partition(";")
        numbers = []
        for word, what, text in (("#if", "start", start), ("for", "end", end), ("for", "step", step)):
            try:
                numbers.append(self.number(unit, text, f"{word} : Can not evaluate {what}: "))
            except Unresolved:
                pass
        if len(numbers) < 3:
            return None
        if numbers[0] <= numbers[1] and numbers[2] <= 0:
            raise Failure(f"for : Step is not above 0: {ANY}", unit.context())
        return numbers

    def do_for(self, unit, rest, waiting, made):
        name, _, texts = rest.strip(" ").partition(" ")
        bounds = self.bounds(unit, texts)
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
        for value in range(first, last + 1, max(step, 1)):
            self.defines[name] = Define(str(value), ANY, [])
            made += self.nested(label, body)
        self.defines.pop(name, None)
        self.owner = end
        return None
