"""Numbers as people type them: "3,5", "40 mm", "120/2", "1 1/2 in", "2*(10+5)".

A sum is worked out exactly; only its result is rounded, to the nearest number that there is. A
product or a quotient may have one unit, which goes for all of it: "1/2 in" is half an inch. A
number without a unit has that of its field; but a sum in which some numbers have another unit and
some have none could mean two things, and is refused.
"""

from __future__ import annotations

import re
from fractions import Fraction
from typing import List, Mapping, NamedTuple, Optional

from tandrel.gui import i18n
from tandrel.gui.i18n import tr

LONGEST, SHOWN = 100, 40  # characters; of a text that is read, and of one that is shown

# Where people write a decimal comma. A point is read everywhere: that is how numbers are shown.
_COMMA = {"de", "fr"}

_PLAIN = str.maketrans("０１２３４５６７８９．，；＋－−＊×／÷（）″", '0123456789.,;+--**//()"')
_TOKEN = re.compile(
    r"""\s*(?:
        (?P<mixed>[0-9]+\s+[0-9]+\s*/\s*[0-9]+)
      | (?P<number>(?:[0-9]+(?:[.,][0-9]*)?|[.,][0-9]+)(?:[eE][+-]?[0-9]{1,3}(?![0-9]))?)
      | (?P<unit>[^\W\d_]+|["°])
      | (?P<sign>[-+*/()])
      | (?P<end>$)
    )""",
    re.VERBOSE,
)

Units = Mapping[str, Fraction]  # each unit that may be typed, in the unit of the field


class Unreadable(ValueError):
    """Why a text is no number, in the user's language."""


def decimal_comma() -> bool:
    """Whether people write a decimal comma in the language in use."""
    return i18n.language() in _COMMA


def in_plain_signs(text: str) -> str:
    """A text with the digits and signs of every keyboard, such as "１２×３；", as "12*3;"."""
    return text.translate(_PLAIN)


def read(text: str, units: Units) -> float:
    """The number that a text stands for, in the unit of its field; `Unreadable` if it is none."""
    text = text.strip()
    plain = in_plain_signs(text)
    if not plain:
        raise Unreadable(tr("a number is missing"))
    if len(plain) > LONGEST:
        raise _unreadable(text)
    if "," in plain and not decimal_comma():
        raise Unreadable(tr("“{text}”: write decimals with a point").format(text=_cut(text)))
    try:
        return _Reader(plain.replace(",", "."), text, units).number()
    except ZeroDivisionError:
        raise Unreadable(
            tr("“{text}”: nothing can be divided by 0").format(text=_cut(text))
        ) from None
    except OverflowError:
        raise Unreadable(tr("“{text}”: the number is too large").format(text=_cut(text))) from None


def _cut(text: str) -> str:
    return text if len(text) <= SHOWN else f"{text[:SHOWN - 1]}…"


def _unreadable(text: str) -> Unreadable:
    return Unreadable(tr("“{text}” can't be read as a number").format(text=_cut(text)))


class _Token(NamedTuple):
    kind: str
    text: str


class _Value(NamedTuple):
    """A number, and its unit: none, one that is still to be applied, or "" once it was."""

    number: Fraction
    unit: Optional[str] = None


class _Reader:
    """Reads sums of products, one token after the other."""

    def __init__(self, plain: str, shown: str, units: Units) -> None:
        self._shown = shown
        self._units = {"": Fraction(1), **units}
        self._tokens = self._split(plain)

    def _split(self, plain: str) -> List[_Token]:
        tokens: List[_Token] = []
        at = 0
        while not tokens or tokens[-1].kind != "end":
            found = _TOKEN.match(plain, at)
            if found is None:
                raise _unreadable(self._shown)
            kind = str(found.lastgroup)
            tokens.append(_Token(kind, found[kind]))
            at = found.end()
        return tokens[::-1]

    def number(self) -> float:
        total = self._sum()
        if self._tokens[-1].kind != "end":
            raise _unreadable(self._shown)
        return float(self._measured(total))

    def _next(self, *wanted: str) -> str:
        """The next token's text where it is one of these signs, and "" where it isn't."""
        kind, text = self._tokens[-1]
        return self._tokens.pop().text if kind == "sign" and text in wanted else ""

    def _measured(self, value: _Value) -> Fraction:
        return value.number * self._units[value.unit or ""]

    def _sum(self) -> _Value:
        terms = [self._product()]
        while sign := self._next("+", "-"):
            number, unit = self._product()
            terms.append(_Value(-number if sign == "-" else number, unit))
        if len(terms) == 1:
            return terms[0]
        bare = any(term.unit is None for term in terms)
        if bare and any(term.unit and self._units[term.unit] != 1 for term in terms):
            raise Unreadable(
                tr("“{text}”: each number of a sum needs its unit").format(text=_cut(self._shown))
            )
        total = sum((self._measured(term) for term in terms), Fraction(0))
        return _Value(total, None if all(term.unit is None for term in terms) else "")

    def _product(self) -> _Value:
        number, unit = self._factor()
        while sign := self._next("*", "/"):
            factor = self._factor()
            if unit is not None and factor.unit is not None:
                raise _unreadable(self._shown)
            unit = unit if factor.unit is None else factor.unit
            number = number * factor.number if sign == "*" else number / factor.number
        return _Value(number, unit)

    def _factor(self) -> _Value:
        if sign := self._next("+", "-"):
            number, unit = self._factor()
            return _Value(-number if sign == "-" else number, unit)
        if self._next("("):
            number, unit = self._sum()
            if not self._next(")"):
                raise _unreadable(self._shown)
        else:
            kind, text = self._tokens.pop()
            if kind not in ("number", "mixed"):
                raise _unreadable(self._shown)
            number, unit = sum((Fraction(part) for part in _parts(text)), Fraction(0)), None
        if self._tokens[-1].kind == "unit":
            if unit is not None:
                raise _unreadable(self._shown)
            unit = self._unit(self._tokens.pop().text)
        return _Value(number, unit)

    def _unit(self, name: str) -> str:
        if name.lower() in self._units:
            return name.lower()
        known = ", ".join(unit for unit in self._units if unit)
        if not known:
            raise _unreadable(self._shown)
        text = tr("“{unit}” is no unit here; there are {known}")
        raise Unreadable(text.format(unit=_cut(name), known=known))


def _parts(text: str) -> List[str]:
    """A number, or the whole and the fraction of a mixed one."""
    whole, *fraction = text.split(None, 1)
    return [whole, *("".join(part.split()) for part in fraction)]
