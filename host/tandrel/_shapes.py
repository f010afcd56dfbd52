"""Entities read and built once: the same numbers always give the same shape, at a look-up's cost.

An entity is a plain dictionary that anybody may change in place at any time, so what is remembered
hangs on its values, never on the dictionary.
"""

from __future__ import annotations

import math
import reprlib
import struct
from functools import cached_property
from itertools import chain
from numbers import Real
from typing import Any, Callable, Hashable, NamedTuple, Sequence

import numpy as np
from shapely.geometry import Polygon
from shapely.prepared import PreparedGeometry, prep

from tandrel import _outlines
from tandrel._outlines import LARGEST, MOST_CORNERS, Drawing, Edge, Point, Points
from tandrel._reasons import Reason
from tandrel.gui.i18n import N_


class Kind(NamedTuple):
    """What the geometry needs to know of a kind of shape."""

    label: str  # for the user
    build: Callable[..., Drawing]  # takes the numbers in their order; a polygon's corners first
    numbers: dict[str, Reason]  # keys, and their names for the user


_CENTRE = {"xc": Reason(N_("Centre u")), "yc": Reason(N_("Centre v"))}
_RADIUS, _ROUNDING = Reason(N_("Radius")), Reason(N_("Corner radius"))
KINDS = {
    "rectangle": Kind(
        N_("Rectangle"),
        _outlines.rectangle,
        {
            "x": Reason(N_("Corner u")),
            "y": Reason(N_("Corner v")),
            "w": Reason(N_("Width")),
            "h": Reason(N_("Height")),
            "radius": _ROUNDING,
        },
    ),
    "circle": Kind(N_("Circle"), _outlines.circle, {**_CENTRE, "r": _RADIUS}),
    "regular": Kind(
        N_("Polygon"),
        _outlines.regular,
        {
            **_CENTRE,
            "r": _RADIUS,
            "n": Reason(N_("Sides")),
            "angle": Reason(N_("Angle of first corner (degrees)")),
        },
    ),
    "slot": Kind(
        N_("Slot"),
        _outlines.slot,
        {
            "x1": Reason(N_("End 1 centre u")),
            "y1": Reason(N_("End 1 centre v")),
            "x2": Reason(N_("End 2 centre u")),
            "y2": Reason(N_("End 2 centre v")),
            "r": Reason(N_("Half width")),
        },
    ),
    "polygon": Kind(N_("Outline"), _outlines.polygon, {"radius": _ROUNDING}),  # and the corners
}
ROOM = 1 << 20  # points remembered at most; a point takes about 100 bytes with all that hangs on it


class Shape:
    """What is known of a valid entity.

    Arrays have the shape (N, 2) and can't be written to, as everybody shares them:
    ``outline`` runs counter-clockwise, ``corners`` as drawn. ``box`` is (least u, least v,
    greatest u, greatest v). Two shapes are equal only if they are the same object.
    """

    def __init__(self, corners: list[Point], loop: Sequence[Edge]) -> None:
        self.outline = _array(_outlines.sampled(loop))
        self.corners = _array(corners)
        self.area = _outlines.enclosed(loop)
        # Points along straight edges would only slow the predicates down, and blur them.
        self._ring = self.outline if _outlines.is_curved(loop) else self.corners
        (u1, v1), (u2, v2) = self._ring.min(axis=0).tolist(), self._ring.max(axis=0).tolist()
        self.box: tuple[float, float, float, float] = u1, v1, u2, v2

    @cached_property
    def polygon(self) -> Polygon:
        """The shape to shapely, to within the sampling of its arcs."""
        return Polygon(self._ring)

    @cached_property
    def prepared(self) -> PreparedGeometry:
        """The polygon made ready to be asked many times."""
        return prep(self.polygon)


class Memo:
    """A bounded memory of the values used last.

    Two generations: when the young one is full it becomes the old one, and what the old one held
    and nobody asked for since is forgotten. ``room`` bounds the summed weights of each.
    """

    def __init__(self, room: int) -> None:
        self._room = room
        self._weight = 0
        self._young: dict[Hashable, tuple[Any, int]] = {}
        self._old: dict[Hashable, tuple[Any, int]] = {}

    def get(self, key: Hashable) -> Any:
        """The value remembered under this key, or None."""
        kept = self._young.get(key)
        if kept is None:
            kept = self._old.get(key)
            if kept is None:
                return None
            self.put(key, *kept)
        return kept[0]

    def put(self, key: Hashable, value: Any, weight: int) -> None:
        """Remember a value that isn't None."""
        if self._weight + weight > self._room:
            self._old, self._young, self._weight = self._young, {}, 0
        self._young[key] = value, weight
        self._weight += weight


_shapes = Memo(ROOM // 2)


def shape(e: Any) -> Shape:
    """The shape of an entity; ``ValueError``, ``KeyError`` or ``TypeError`` if it has none.

    A ``KeyError`` names the missing key; the others carry a :class:`Reason`.
    """
    key = _values(e)
    found = _shapes.get(key)
    if found is None:
        found = _built(key)
        _shapes.put(key, found, _weight(key, found))
    if isinstance(found, Shape):
        return found
    raise ValueError(found)


def drawing(e: Any) -> Drawing:
    """Corners and loop of an entity, built afresh; raises what :func:`shape` does."""
    return _drawing(_values(e))


def _drawing(key: tuple[Any, ...]) -> Drawing:
    kind, *values = key
    if kind == "polygon":
        values = [_unpacked(values[1]), values[0]]
    return KINDS[kind].build(*values)


def _built(key: tuple[Any, ...]) -> Shape | Reason:
    try:
        corners, loop = _drawing(key)
    except ValueError as error:
        reason: Reason = error.args[0]
        return reason
    return Shape(corners, loop)


def _weight(key: tuple[Any, ...], found: Shape | Reason) -> int:
    if isinstance(found, Shape):
        return len(found.outline)
    return 1 + len(key[-1]) // 16 if key[0] == "polygon" else 1


def _values(e: Any) -> tuple[Any, ...]:
    """The type and the numbers of an entity, as floats: what its shape depends on, hashable."""
    if not isinstance(e, dict):
        raise TypeError(Reason(N_("a shape must be a dictionary")))
    kind = e["type"]
    known = KINDS.get(kind) if isinstance(kind, str) else None
    if known is None:
        raise ValueError(Reason(N_("{kind} is no kind of shape"), {"kind": reprlib.repr(kind)}))
    values = [kind, *[number(e[key], name) for key, name in known.numbers.items()]]
    if kind == "polygon":
        values.append(_packed(e["points"]))
    return tuple(values)


def _packed(points: Any) -> bytes:
    """The corners of a free outline as the bytes of doubles: u, v, u, v ..."""
    if isinstance(points, np.ndarray):
        points = points.tolist()
    if not isinstance(points, (list, tuple)):
        raise TypeError(Reason(N_("the corners must be a list")))
    if len(points) > MOST_CORNERS:
        raise ValueError(
            Reason(N_("an outline can have {most} corners at most"), {"most": MOST_CORNERS})
        )
    # Every look-up of an outline comes this way: lists of two floats are packed without a loop.
    flat: list[float] = []
    if {list}.issuperset(map(type, points)) and {2}.issuperset(map(len, points)):
        flat = list(chain.from_iterable(points))
    if not flat or not {float}.issuperset(map(type, flat)):
        flat = [c for n, point in enumerate(points, 1) for c in _pair(point, n)]
    return struct.pack(f"{len(flat)}d", *flat)


def _pair(point: Any, n: int) -> list[float]:
    if isinstance(point, np.ndarray):
        point = point.tolist()
    if not isinstance(point, (list, tuple)) or len(point) != 2:
        raise ValueError(Reason(N_("corner {n}: two numbers are needed"), {"n": n}))
    return [number(c, _corner(n)) for c in point]


def _unpacked(packed: bytes) -> list[Point]:
    numbers = struct.unpack(f"{len(packed) // 8}d", packed)
    pairs = zip(numbers[::2], numbers[1::2])
    return [(number(u, _corner(n)), number(v, _corner(n))) for n, (u, v) in enumerate(pairs, 1)]


def _corner(n: int) -> Reason:
    return Reason(N_("corner {n}"), {"n": n})


def number(value: Any, name: Reason) -> float:
    """A number as a float. Text is no number, and neither is True or None."""
    if type(value) is float and -LARGEST <= value <= LARGEST:
        return value
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


def _array(points: Sequence[Point]) -> Points:
    array = np.array(points, dtype=np.float64).reshape(-1, 2)
    array.flags.writeable = False
    return array
