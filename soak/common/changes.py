"""Small wrong changes to C++: where a text has places for them, found by the look of the code.

Each is what a slip of the hand makes: another operator, number or word, a condition the other way
round, a statement left out, two arguments exchanged. Not all of them compile.
"""

import re
from collections.abc import Iterator
from typing import NamedTuple


class Change(NamedTuple):
    """The text from `start` to `end` becomes `new`."""

    kind: str
    start: int
    end: int
    new: str

    def made_in(self, text: str) -> str:
        return text[: self.start] + self.new + text[self.end :]


_PAIRS = [
    *("&& ||", "< <=", "> >=", "== !=", "+ -", "* /", "+= -=", "++ --"),
    *("true false", "min max", "lesser greater", "floor ceil", "cos sin", "lo hi", "x y"),
    *("width height", "break continue"),
]
_OTHER = {a: b for pair in _PAIRS for a, b in (pair.split(), pair.split()[::-1])}
# The formatter has binary operators between spaces, and neither templates nor pointers.
_OPERATOR = re.compile(r"(?<= )(?:[<>=!]=|&&|\|\||[-+]=|[-<>+*/])(?= )|\+\+|--")
_WORD = re.compile(rf"\b(?:{'|'.join(word for word in _OTHER if word.isalpha())})\b")
_NUMBER = re.compile(r"(?<![\w.])\d+(?![\w.'])")
_SIGN = re.compile(r"(?<=[\s(,{\[])[!-](?=[\w(])")
_TEXT = re.compile(r'"[^"\\]+"_n')
_HIDDEN = re.compile(
    r'//[^\n]*|R"\((?s:.*?)\)"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\])\'|^ *#.*', re.M
)


def changes_in(text: str) -> Iterator[Change]:
    """Every change that there is a place for."""
    code = _HIDDEN.sub(lambda hidden: re.sub(r"[^\n]", "_", hidden[0]), text)
    for kind, pattern in ("operator", _OPERATOR), ("word", _WORD):
        for found in pattern.finditer(code):
            yield Change(kind, *found.span(), _OTHER[found[0]])
    for found in _NUMBER.finditer(code):
        yield Change("number", *found.span(), "0" if found[0] == "1" else str(int(found[0]) + 1))
    for found in _SIGN.finditer(code):
        yield Change("sign", *found.span(), "")
    for found in _TEXT.finditer(text):
        if code[found.start()] == "_":
            yield Change("name", *found.span(), found[0].replace('"_n', 'x"_n'))
    yield from _conditions(code, text)
    yield from _statements(code)
    yield from _exchanges(code, text)


def _conditions(code: str, text: str) -> Iterator[Change]:
    for found in re.finditer(r"\b(?:if|while) \(", code):
        start, end = found.end(), _cuts(code, found.end() - 1)[-1]
        if ";" not in code[start:end] and " = " not in code[start:end]:
            yield Change("condition", start, end, f"!({text[start:end]})")


def _statements(code: str) -> Iterator[Change]:
    """What stands on lines of its own up to a semicolon, without blocks; no result."""
    for found in re.finditer(
        r"(?<=[;{}]\n) +(?=\S)(?!return [^;])[^;{}]*(?:\{[^;{}]*\}[^;{}]*)*;", code
    ):
        if found[0].count("(") == found[0].count(")"):
            yield Change("statement", *found.span(), "")
    for found in re.finditer(r" else [^;{}]*;", code):
        yield Change("statement", *found.span(), "")


def _exchanges(code: str, text: str) -> Iterator[Change]:
    for found in re.finditer(r"(?<=\w)[({](?! )", code):
        cuts = _cuts(code, found.start())
        for first, middle, last in zip(cuts, cuts[1:], cuts[2:]):
            one, other = text[first + 1 : middle], text[middle + 1 : last]
            if one.strip() != other.strip():
                yield Change("exchange", first + 1, last, f"{other.strip()}, {one.strip()}")


def _cuts(code: str, opening: int) -> list[int]:
    """Where a bracket is opened, where commas part what is in it, and where it is closed."""
    cuts, depth = [opening], 0
    for place in range(opening, len(code)):
        depth += (code[place] in "({[") - (code[place] in ")}]")
        if depth == 0:
            return [*cuts, place]
        if code[place] == "," and depth == 1:
            cuts.append(place)
    return [*cuts, len(code)]
