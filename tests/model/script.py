"""The few expressions of JavaScript that the model's programs use: whole numbers, texts without backslashes, "true" and
"false", the operators ! - * + < > <= >= == != && || ?:, and parentheses. All else is what the engine would refuse."""

import re

TOKEN = re.compile(r"""\s*(?:(?P<number>\d+)|(?P<text>"[^"\\]*"|'[^'\\]*')|(?P<word>[A-Za-z_]\w*)"""
                   r"""|(?P<step>\+\+|--)|(?P<sign>[<>=!]=|&&|\|\||[-+*<>!?:()]))""")
BINARY = (("||",), ("&&",), ("==", "!="), ("<", ">", "<=", ">="), ("+", "-"), ("*",))

UNDEFINED = object()

# What fails once it is asked for: a name that nobody has declared, a call of what is no function.
UNKNOWN = object()


class ScriptFailure(Exception):
    """The script cannot be evaluated."""


def evaluate(script):
    """The value: a bool, an int, a float that is no number, a str, or UNDEFINED of nothing at all."""
    tokens = list(tokens_of(script))
    if not tokens:
        return UNDEFINED
    reader = Reader(tokens)
    value = reader.choice()
    if reader.tokens or value is UNKNOWN:
        raise ScriptFailure
    return value


def tokens_of(script):
    script = script.split("//")[0].rstrip()
    at = 0
    while at < len(script):
        match = TOKEN.match(script, at)
        if not match:
            raise ScriptFailure
        yield match.lastgroup, match.group(match.lastgroup)
        at = match.end()


def is_true(value):
    return value is not UNDEFINED and value == value and bool(value)


def to_number(value):
    if isinstance(value, str):
        return int(value) if re.fullmatch(r"\d+", value) else 0 if not value.strip() else float("nan")
    return value if isinstance(value, float) else int(value)


def to_text(value):
    if value is UNDEFINED:
        return "undefined"
    if isinstance(value, bool):
        return str(value).lower()
    return "NaN" if value != value else str(value)


class Reader:
    """Reads all of an expression before it knows what counts, as texts with faults behind a "||" are faulty too."""

    def __init__(self, tokens):
        self.tokens = tokens

    def take(self, *signs):
        if self.tokens and self.tokens[0][0] == "sign" and self.tokens[0][1] in signs:
            return self.tokens.pop(0)[1]
        return None

    def need(self, sign):
        if not self.take(sign):
            raise ScriptFailure

    def choice(self):
        condition = self.binary(0)
        if not self.take("?"):
            return condition
        first = self.choice()
        self.need(":")
        second = self.choice()
        if condition is UNKNOWN:
            return UNKNOWN
        return first if is_true(condition) else second

    def binary(self, level):
        if level == len(BINARY):
            return self.unary()
        value = self.binary(level + 1)
        while sign := self.take(*BINARY[level]):
            value = self.apply(sign, value, self.binary(level + 1))
        return value

    def unary(self):
        if self.take("!"):
            value = self.unary()
            return UNKNOWN if value is UNKNOWN else not is_true(value)
        if self.take("-"):
            value = self.unary()
            return UNKNOWN if value is UNKNOWN else -to_number(value)
        if self.take("+"):
            value = self.unary()
            return UNKNOWN if value is UNKNOWN else to_number(value)
        value = self.primary()
        while self.take("("):
            if not self.take(")"):
                self.choice()
                self.need(")")
            value = UNKNOWN  # nothing here can be called
        return value

    def primary(self):
        if self.take("("):
            value = self.choice()
            self.need(")")
            return value
        if not self.tokens:
            raise ScriptFailure
        kind, text = self.tokens.pop(0)
        if kind == "number":
            return int(text)
        if kind == "text":
            return text[1:-1]
        if kind != "word":
            raise ScriptFailure
        if text in ("true", "false"):
            return text == "true"
        return UNKNOWN

    @staticmethod
    def apply(sign, left, right):
        if left is UNKNOWN:
            return UNKNOWN
        if sign in ("||", "&&"):
            return right if is_true(left) == (sign == "&&") else left
        if right is UNKNOWN:
            return UNKNOWN
        both_texts = isinstance(left, str) and isinstance(right, str)
        if sign == "+" and (isinstance(left, str) or isinstance(right, str)):
            return to_text(left) + to_text(right)
        if not both_texts or sign in "-*":
            left, right = to_number(left), to_number(right)
        return {
            "+": lambda: left + right,
            "-": lambda: left - right,
            "*": lambda: left * right,
            "==": lambda: left == right,
            "!=": lambda: left != right,
            "<": lambda: left < right,
            ">": lambda: left > right,
            "<=": lambda: left <= right,
            ">=": lambda: left >= right,
        }[sign]()
