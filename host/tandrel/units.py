"""Display units: SI lengths as people read and type them, and back; and areas.

A length that someone typed is the double next to a number of at most 15 digits. Conversions work on
that number, in decimal arithmetic: 0.0123 m is 12.3 mm, not 12.300000000000001 mm, and every such
length comes back from every unit system as the same double.

A length that was drawn carries noise of arithmetic: 36 steps of 0.001 m are 0.036000000000000004 m.
It shows as 36 mm, which reads back as 0.036 m. Any other length is shown with all its digits. It
comes back as it was, unless a neighbouring double shows as the same number and has the shorter
text: the doubles of two unit systems are not equally dense.
"""

from __future__ import annotations

import math
from dataclasses import dataclass
from decimal import Context, Decimal

# Wide enough that rounding to a double is the only rounding, and nothing traps.
_EXACT = Context(prec=40, traps=[])
_PLAIN_FROM, _PLAIN_TO = 1e-9, 1e16
_TYPED_DIGITS, _SHOWN_DIGITS = 15, 6
# Noise is what takes a length of up to a metre from a whole number of picometres by a few units in
# the last place of a metre; longer lengths have more of it.
_NOISE_DECIMALS, _NOISE_UNITS = 12, 4
# The power of the unit of length that each quantity is measured in, and how that is written.
_POWERS = {"length": (1, ""), "area": (2, "²")}


def num_text(x: float) -> str:
    """The shortest text that reads back as the same number: "12.3", "40", "0"; never "-0".

    Numbers of any ordinary size are written without an exponent.
    """
    x = float(x)
    if x == 0:
        return "0"
    if not math.isfinite(x):
        return repr(x)
    shortest = Decimal(repr(x))
    if not _PLAIN_FROM <= abs(x) < _PLAIN_TO:
        return f"{shortest.normalize(_EXACT):e}"
    text = f"{shortest:f}"
    return text.rstrip("0").rstrip(".") if "." in text else text


@dataclass(frozen=True)
class UnitSystem:
    """One way to show quantities: "length" and "area"; another is a KeyError.

    Areas are computed, not typed: they are converted as they are, noise and all.
    """

    name: str
    metres: Decimal

    def from_si(self, value: float, quantity: str) -> float:
        """The number to show for a length or an area."""
        tidy = _without_noise(value) if quantity == "length" else float(value)
        return float(_EXACT.divide(_typed(tidy), self._size(quantity)))

    def to_si(self, value: float, quantity: str) -> float:
        """The length or area shown as `value`; of several, the one with the shortest text."""
        value = float(value)
        nearest = float(_EXACT.multiply(_typed(value), self._size(quantity)))
        shown_alike = [x for x in _around(nearest) if self.from_si(x, quantity) == value]
        return min(shown_alike, key=lambda x: len(num_text(x)), default=nearest)

    def fmt(self, value: float, quantity: str) -> str:
        """A short text with the unit, such as "12.5 mm": six digits, more only before the point."""
        value = round(float(value), _NOISE_DECIMALS) if quantity == "length" else float(value)
        shown = self.from_si(value, quantity)
        digits = f".{_SHOWN_DIGITS}g" if abs(shown) < 10**_SHOWN_DIGITS else ".0f"
        return f"{num_text(float(format(shown, digits)))} {self.unit(quantity)}"

    def unit(self, quantity: str) -> str:
        return self.name + _POWERS[quantity][1]

    def _size(self, quantity: str) -> Decimal:
        return _EXACT.power(self.metres, _POWERS[quantity][0])


def _typed(value: float) -> Decimal:
    """The number of at most 15 digits that a double stands for; else its exact value."""
    text = f"{value:.{_TYPED_DIGITS}g}"
    return Decimal(text) if float(text) == value else Decimal(value)


def _without_noise(length: float) -> float:
    length = float(length)
    if float(f"{length:.{_TYPED_DIGITS}g}") == length or not math.isfinite(length):
        return length
    tidy = round(length, _NOISE_DECIMALS)
    noise = _NOISE_UNITS * math.ulp(max(abs(length), 1.0))
    return tidy if abs(tidy - length) <= noise else length


def _around(x: float) -> list[float]:
    """`x` and the two doubles on either side of it, `x` first, nearer ones before farther ones."""
    if not math.isfinite(x):
        return [x]
    below, above = math.nextafter(x, -math.inf), math.nextafter(x, math.inf)
    return [x, below, above, math.nextafter(below, -math.inf), math.nextafter(above, math.inf)]


SYSTEMS = {
    "mm": UnitSystem("mm", Decimal("0.001")),
    "cm": UnitSystem("cm", Decimal("0.01")),
    "m": UnitSystem("m", Decimal(1)),
    "in": UnitSystem("in", Decimal("0.0254")),
}
_current = SYSTEMS["mm"]


def units() -> UnitSystem:
    """The unit system in use."""
    return _current


def set_units(name: str) -> None:
    """Use the unit system of this name from now on; ValueError if there is none."""
    global _current
    if name not in SYSTEMS:
        raise ValueError(f"no unit system {name!r}; there are {', '.join(SYSTEMS)}")
    _current = SYSTEMS[name]
