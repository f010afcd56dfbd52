"""What the keys of an entity hold, and how their values are read.

A field reads a value into something hashable, which is what a shape depends on. What it can't read
raises ``ValueError`` or ``TypeError`` with a :class:`Reason`.
"""

from __future__ import annotations

import math
import struct
from itertools import chain
from numbers import Real
from typing import Any, Hashable, List

import numpy as np

from tandrel._reasons import Reason
from tandrel.geometry.edges import LARGEST, Point
from tandrel.gui.i18n import N_

MOST_CORNERS = 10_000


class Number:
    """A number; read, a float. Text is no number, and neither is True or None."""

    def __init__(self, name: str) -> None:
        self._name = Reason(name)  # for the user

    def read(self, value: Any) -> Hashable:
        if type(value) is float and -LARGEST <= value <= LARGEST:
            return value
        return _number(value, self._name)


class Count(Number):
    """A number that stands as a whole one in files."""


class Corners:
    """A list of points [u, v]; read, the bytes of their doubles: u, v, u, v ..."""

    def read(self, value: Any) -> Hashable:
        if isinstance(value, np.ndarray):
            value = value.tolist()
        if not isinstance(value, (list, tuple)):
            raise TypeError(Reason(N_("the corners must be a list")))
        if len(value) > MOST_CORNERS:
            text = N_("an outline can have {most} corners at most")
            raise ValueError(Reason(text, {"most": MOST_CORNERS}))
        # Every look-up of an outline comes this way: lists of two floats are packed without a loop.
        flat: List[float] = []
        if {list}.issuperset(map(type, value)) and {2}.issuperset(map(len, value)):
            flat = list(chain.from_iterable(value))
        if not flat or not {float}.issuperset(map(type, flat)):
            flat = [c for n, point in enumerate(value, 1) for c in _pair(point, n)]
        return struct.pack(f"{len(flat)}d", *flat)


def unpacked(points: bytes) -> List[Point]:
    """The points that a field of corners has read."""
    numbers = struct.unpack(f"{len(points) // 8}d", points)
    pairs = list(zip(numbers[::2], numbers[1::2]))
    for n, (u, v) in enumerate(pairs, 1):
        if not (abs(u) <= LARGEST and abs(v) <= LARGEST):
            _pair((u, v), n)
    return pairs


def _number(value: Any, name: Reason) -> float:
    if isinstance(value, bool) or not isinstance(value, Real):
        raise TypeError(Reason(N_("{name}: not a number"), {"name": name}))
    try:
        number = float(value)
    except OverflowError:
        number = math.inf
    if math.isnan(number):
        raise ValueError(Reason(N_("{name}: not a number"), {"name": name}))
    if abs(number) > LARGEST:
        raise ValueError(Reason(N_("{name}: the number is too large"), {"name": name}))
    return number


def _pair(point: Any, n: int) -> List[float]:
    if isinstance(point, np.ndarray):
        point = point.tolist()
    if not isinstance(point, (list, tuple)) or len(point) != 2:
        raise ValueError(Reason(N_("corner {n}: two numbers are needed"), {"n": n}))
    return [_number(c, _corner(n)) for c in point]


def _corner(n: int) -> Reason:
    return Reason(N_("corner {n}"), {"n": n})
