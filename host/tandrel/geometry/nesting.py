"""Which shapes lie inside which, and which of them lie there doubtfully.

A shape lies inside another when it is wholly within it and touches its outline nowhere; equal and
overlapping shapes don't lie inside each other. Arcs count as sampled: walls thinner than about a
thousandth of a circle's radius, or a hundredth of a corner's, may not be seen.

Shapes are worked on in the order of their areas, the largest first, and sets of them are the bits
of integers in that order.
"""

from __future__ import annotations

from functools import lru_cache
from itertools import chain
from typing import Any, Iterator, NamedTuple, Sequence

import numpy as np
import numpy.typing as npt
from shapely.geometry import JOIN_STYLE
from shapely.ops import nearest_points
from shapely.prepared import PreparedGeometry, prep

from tandrel.geometry.edges import Point
from tandrel.geometry.shapes import Shape

ROWS = 64  # shapes whose boxes are compared with others at a time


class Touch(NamedTuple):
    """A shape within another that touches its outline: their indexes, and where."""

    inner: int
    outer: int
    place: Point


def inside(ring: npt.ArrayLike, p: Sequence[float]) -> bool:
    """Whether a point lies inside a closed outline, given as a sequence of points.

    Of the outline itself the left and lower edges count as inside, the right and upper ones don't:
    of two shapes that share an edge exactly one owns a point on it.

    A ray from the point to the right crosses the outline an odd number of times.
    """
    points: Any = np.asarray(ring, dtype=np.float64).reshape(-1, 2)
    if not len(points):
        return False
    u, v = float(p[0]), float(p[1])
    above = points[:, 1] > v
    crossed = list(map(int, np.flatnonzero(above[1:] != above[:-1])))
    if above[0] != above[-1]:
        crossed.append(-1)
    within = False
    for k in crossed:
        # Upwards, whichever way the outline runs, so that rounding is the same for both sides.
        (v1, u1), (v2, u2) = sorted([points[k].tolist()[::-1], points[k + 1].tolist()[::-1]])
        if (u2 - u1) * (v - v1) > (u - u1) * (v2 - v1):
            within = not within
    return within


# A repaint asks for the depths of the same shapes again and again while the pointer moves.
@lru_cache(maxsize=4)
def depths(shapes: tuple[Shape, ...]) -> tuple[int, ...]:
    """For each shape the length of the longest chain of others that lie each inside the next.

    Two shapes that overlap don't count twice for what lies in both.
    """
    order = _by_area(shapes)
    found = [0] * len(shapes)
    for k, (_, innermost) in zip(order, _holders([shapes[k] for k in order])):
        found[k] = max((found[order[holder]] + 1 for holder in innermost), default=0)
    return tuple(found)


def touches(shapes: Sequence[Shape]) -> list[Touch]:
    """Shapes that are within another but for touching its outline, each with one such other.

    Whether such a shape is a hole hangs on the last digit of its numbers.
    """
    order = _by_area(shapes)
    ranked = [shapes[k] for k in order]
    grown: dict[int, PreparedGeometry] = {}

    def covers(outer: int, inner: int) -> bool:
        if ranked[outer].area <= ranked[inner].area * (1 + 1e-9):
            return False
        if outer not in grown:
            reach = tolerance(ranked[outer])
            grown[outer] = prep(ranked[outer].polygon.buffer(reach, join_style=JOIN_STYLE.mitre))
        return bool(grown[outer].contains(ranked[inner].polygon))

    found = []
    boxed = _boxed(ranked, -1.0)
    for inner, ((holders, parents), candidates) in enumerate(zip(_holders(ranked), boxed)):
        one = ranked[inner]
        close = (p for p in parents if _gap(ranked[p], one) <= tolerance(ranked[p]))
        doubtful = (k for k in _members(candidates & ~holders) if covers(k, inner))
        outer = next(chain(close, doubtful), None)
        if outer is not None:
            place = nearest_points(ranked[outer].polygon.exterior, one.polygon.exterior)[0]
            found.append(Touch(order[inner], order[outer], (place.x, place.y)))
    return found


def tolerance(shape: Shape) -> float:
    """The distance up to which something touches the outline of a shape."""
    u1, v1, u2, v2 = shape.box
    return 1e-9 * max(u2 - u1, v2 - v1) + 1e-15 * max(abs(c) for c in shape.box)


def _by_area(shapes: Sequence[Shape]) -> list[int]:
    return sorted(range(len(shapes)), key=lambda k: -shapes[k].area)


def _holders(ranked: Sequence[Shape]) -> Iterator[tuple[int, list[int]]]:
    """For each shape the set of those that it lies inside of, and the innermost of them.

    Candidates are tried from the smallest up. What holds a holder needs no test of its own, so
    even a shape at the bottom of a deep nest is compared with few others.
    """
    known: list[int] = []
    for shape, candidates in zip(ranked, _boxed(ranked, 1.0)):
        holders, innermost = 0, []
        while candidates:
            k = candidates.bit_length() - 1
            candidates ^= 1 << k
            if ranked[k].prepared.contains_properly(shape.polygon):
                holders |= known[k] | 1 << k
                candidates &= ~known[k]
                innermost.append(k)
        known.append(holders)
        yield holders, innermost


def _boxed(ranked: Sequence[Shape], margin: float) -> list[int]:
    """For each shape the set of larger ones whose boxes hold its box.

    The boxes must keep a distance of ``margin`` times the larger shape's tolerance.
    """
    boxes = np.array([shape.box for shape in ranked]).reshape(-1, 4)
    slack = margin * np.array([tolerance(shape) for shape in ranked])[:, None]
    low, high = boxes[:, :2] + slack, boxes[:, 2:] - slack
    found = [0] * len(ranked)
    # Shapes that begin at about the same u are compared together with those that reach past them.
    from_left = np.argsort(boxes[:, 0])
    for top in range(0, len(ranked), ROWS):
        rows = from_left[top:][:ROWS]
        some = boxes[rows]
        near = np.flatnonzero((low[:, 0] < some[-1, 0]) & (high[:, 0] > some[:, 2].min()))
        held = np.zeros((len(rows), len(ranked)), dtype=bool)
        held[:, near] = (
            (low[near, 0] < some[:, 0, None])
            & (low[near, 1] < some[:, 1, None])
            & (some[:, 2, None] < high[near, 0])
            & (some[:, 3, None] < high[near, 1])
        )
        bits = np.packbits(held, axis=1, bitorder="little")
        for k, row in zip(map(int, rows), bits):
            found[k] = int.from_bytes(row.tobytes(), "little") & (1 << k) - 1
    return found


def _members(shapes: int) -> Iterator[int]:
    """The members of a set, the smallest shape first."""
    while shapes:
        k = shapes.bit_length() - 1
        shapes ^= 1 << k
        yield k


def _gap(one: Shape, other: Shape) -> float:
    return float(one.polygon.exterior.distance(other.polygon.exterior))
