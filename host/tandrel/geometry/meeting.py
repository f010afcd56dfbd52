"""Where edges meet: cross, touch, or lie on each other, to within a tolerance."""

from __future__ import annotations

import math
from typing import Iterator, List, Optional, Sequence, Tuple

import numpy as np
import numpy.typing as npt

from tandrel.geometry.edges import Edge, Point
from tandrel.geometry.loops import box

_PARALLEL = 1e-12  # sine of the angle below which lines don't cross but at their ends
_ROWS = 256  # edges whose boxes are compared with others at a time

Pairs = npt.NDArray[np.intp]


class Track:
    """An edge of a contour with what is asked of it again and again."""

    __slots__ = ("edge", "centre", "radius", "sweep", "length")

    def __init__(self, edge: Edge) -> None:
        self.edge = edge
        self.sweep = edge.sweep if edge.bulge else 0.0
        self.length = edge.length
        self.centre, self.radius = (edge.centre, edge.radius) if edge.bulge else (edge.start, 0.0)

    def position(self, point: Point, tolerance: float) -> Optional[float]:
        """How far along the edge a point of it lies, 0 to 1; None if it lies elsewhere."""
        for end, position in ((self.edge.start, 0.0), (self.edge.end, 1.0)):
            if math.dist(point, end) <= tolerance:
                return position
        if not self.edge.bulge:
            return self._along(point, tolerance)
        if abs(math.dist(point, self.centre) - self.radius) > tolerance:
            return None
        turned = self._angle(point) - self._angle(self.edge.start)
        part = math.copysign(1.0, self.sweep) * turned % (2 * math.pi) / abs(self.sweep)
        return part if part <= 1 else None

    def part(self, start: float, end: float) -> float:
        """The bulge of the part between two positions."""
        if not self.sweep or (start, end) == (0.0, 1.0):
            return self.edge.bulge
        return math.tan(self.sweep * (end - start) / 4)

    def at(self, position: float) -> Point:
        """The point at a position."""
        (u, v), (u2, v2) = self.edge.start, self.edge.end
        if not self.sweep:
            return u + (u2 - u) * position, v + (v2 - v) * position
        (u0, v0), angle = self.centre, self.sweep * position
        c, s = math.cos(angle), math.sin(angle)
        return u0 + (u - u0) * c - (v - v0) * s, v0 + (u - u0) * s + (v - v0) * c

    def _along(self, point: Point, tolerance: float) -> Optional[float]:
        (u, v), (u2, v2) = self.edge.start, self.edge.end
        if not self.length:
            return None
        du, dv = (u2 - u) / self.length, (v2 - v) / self.length
        along = (point[0] - u) * du + (point[1] - v) * dv
        aside = (point[0] - u) * dv - (point[1] - v) * du
        is_on = abs(aside) <= tolerance and 0 <= along <= self.length
        return along / self.length if is_on else None

    def _angle(self, point: Point) -> float:
        return math.atan2(point[1] - self.centre[1], point[0] - self.centre[0])


def crossings(one: Track, other: Track, tolerance: float) -> Iterator[Tuple[Point, float, float]]:
    """Where two edges cross, or touch but with their ends: points, and how far along both.

    Edges that lie on each other don't cross.
    """
    if one.sweep and other.sweep:
        points = _of_circles(one, other, tolerance)
    elif one.sweep or other.sweep:
        points = _of_line_and_circle(*((other, one) if one.sweep else (one, other)), tolerance)
    else:
        points = _of_lines(one, other)
    for point in points:
        # A point where they touch may be as far as that from either.
        positions = [track.position(point, 2 * tolerance) for track in (one, other)]
        if positions[0] is not None and positions[1] is not None:
            yield point, positions[0], positions[1]


def _of_lines(one: Track, other: Track) -> List[Point]:
    (u1, v1), (u2, v2) = one.edge.start, one.edge.end
    (u3, v3), (u4, v4) = other.edge.start, other.edge.end
    du, dv, eu, ev = u2 - u1, v2 - v1, u4 - u3, v4 - v3
    cross = du * ev - dv * eu
    if abs(cross) <= _PARALLEL * one.length * other.length:
        return []
    t = ((u3 - u1) * ev - (v3 - v1) * eu) / cross
    return [(u1 + t * du, v1 + t * dv)]


def _of_line_and_circle(line: Track, arc: Track, tolerance: float) -> List[Point]:
    (u1, v1), (u2, v2), (u0, v0) = line.edge.start, line.edge.end, arc.centre
    if not line.length:
        return []
    du, dv = (u2 - u1) / line.length, (v2 - v1) / line.length
    along = (u0 - u1) * du + (v0 - v1) * dv
    foot = u1 + along * du, v1 + along * dv
    # The line's own distance: along is large where the line begins far away.
    away = abs((u0 - u1) * dv - (v0 - v1) * du)
    if away > arc.radius + tolerance:
        return []
    if away >= arc.radius - tolerance:
        return [foot]
    half = math.sqrt((arc.radius - away) * (arc.radius + away))
    return [(foot[0] + side * half * du, foot[1] + side * half * dv) for side in (-1, 1)]


def _of_circles(one: Track, other: Track, tolerance: float) -> List[Point]:
    """The line through both points is as far from the first centre as the cosine rule says."""
    (u1, v1), (u2, v2) = one.centre, other.centre
    apart, r1, r2 = math.dist(one.centre, other.centre), one.radius, other.radius
    if apart > r1 + r2 + tolerance or apart < abs(r1 - r2) - tolerance or apart <= tolerance:
        return []
    du, dv = (u2 - u1) / apart, (v2 - v1) / apart
    along = (apart + (r1 - r2) * (r1 + r2) / apart) / 2
    u, v = u1 + along * du, v1 + along * dv
    if apart >= r1 + r2 - tolerance or apart <= abs(r1 - r2) + tolerance:
        return [(u, v)]
    half = math.sqrt(max((r1 - along) * (r1 + along), 0.0))
    return [(u - side * half * dv, v + side * half * du) for side in (-1, 1)]


def near(
    tracks: Sequence[Track], owners: Sequence[int], reach: Sequence[float]
) -> Iterator[Tuple[float, Pairs]]:
    """Pairs of edges of different owners that may meet, each edge with a reach of its own.

    They come in batches: the part of all edges that is done with it, and rows of two indexes.
    """
    if not tracks:
        return
    slack = np.array(reach)
    boxes = np.array([box([t.edge, Edge(t.edge.end, t.edge.start)]) for t in tracks])
    boxes[:, :2] -= slack[:, None]
    boxes[:, 2:] += slack[:, None]
    order = np.argsort(boxes[:, 0], kind="stable")
    boxes, owner = boxes[order], np.array(owners)[order]
    circles = np.array([(*t.centre, t.radius) for t in tracks])[order]
    for first in range(0, len(order), _ROWS):
        rows = boxes[first:][:_ROWS]
        last = int(np.searchsorted(boxes[:, 0], rows[:, 2].max(), side="right"))
        others = boxes[first:last]
        meet = (
            (rows[:, None, 0] <= others[:, 2])
            & (others[:, 0] <= rows[:, None, 2])
            & (rows[:, None, 1] <= others[:, 3])
            & (others[:, 1] <= rows[:, None, 3])
            & (owner[first:][:_ROWS, None] != owner[first:last])
        )
        one, other = np.nonzero(np.triu(meet, 1))
        one, other = one + first, other + first
        keep = _may_meet(circles[one], circles[other], slack[order[one]] + slack[order[other]])
        pairs = np.column_stack([order[one[keep]], order[other[keep]]])
        yield min(1.0, (first + _ROWS) / len(order)), pairs


def _may_meet(
    one: npt.NDArray[np.float64], other: npt.NDArray[np.float64], slack: npt.NDArray[np.float64]
) -> npt.NDArray[np.bool_]:
    """Of arcs' circles, those that neither hold each other nor lie apart; of others all."""
    apart = np.hypot(one[:, 0] - other[:, 0], one[:, 1] - other[:, 1])
    r1, r2 = one[:, 2], other[:, 2]
    is_line = (r1 == 0) | (r2 == 0)
    found: npt.NDArray[np.bool_] = is_line | (apart <= r1 + r2 + slack) & (
        apart >= np.abs(r1 - r2) - slack
    )
    return found
