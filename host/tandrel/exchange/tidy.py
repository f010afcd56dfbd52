"""What is drawn twice, or is nothing, goes before anything is made of a drawing."""

from __future__ import annotations

import math
import sys
from bisect import bisect_left, insort
from collections import defaultdict
from itertools import product
from typing import Dict, Iterable, Iterator, List, NamedTuple, Sequence, Set, Tuple

import numpy as np
from shapely.geometry import Polygon

from tandrel.geometry.edges import Edge, Point
from tandrel.geometry.loops import Loop, box, divided, enclosed
from tandrel.geometry.shapes import Shape

# How far apart ends may lie that meet: metres, and a part of the extent of the drawing.
_FARTHEST, _FARTHEST_PART = 1e-6, 1e-5
_NEAREST = 1e-12  # metres, where there is no extent
_PEN = 2.5e-4  # metres between the sides of a line that was drawn with its width, at most
_STRIP = 0.4  # of what a contour encloses, that lies between it and its other side, at most
_CELL = 8  # times as far as doubles lie apart: what may be one of a contour is in few cells


class Piece(NamedTuple):
    """An edge between two places, and the number of the line that it is of."""

    edge: Edge
    start: int
    end: int
    line: int

    def reversed(self) -> Piece:
        return Piece(self.edge.reversed(), self.end, self.start, self.line)


class Places:
    """Numbers for points, the same for points that lie close to each other."""

    def __init__(self, reach: float) -> None:
        self.points: List[Point] = []
        self.reach = reach
        self._known: Dict[Point, int] = {}
        self._cells: Dict[Tuple[int, int], List[int]] = {}

    def at(self, point: Point) -> int:
        """The number of the nearest place in reach, or of a new one."""
        found = self._known.get(point)
        if found is None:
            found = self._known[point] = self._near(point)
        return found

    def _near(self, point: Point) -> int:
        u, v = int(point[0] // self.reach), int(point[1] // self.reach)
        near = [
            (math.dist(point, self.points[number]), number)
            for cell in _AROUND
            for number in self._cells.get((u + cell[0], v + cell[1]), ())
        ]
        distance, number = min(near, default=(math.inf, 0))
        if distance <= self.reach:
            return number
        self.points.append(point)
        self._cells.setdefault((u, v), []).append(len(self.points) - 1)
        return len(self.points) - 1


_AROUND = [(du, dv) for du in (-1, 0, 1) for dv in (-1, 0, 1)]


def extent_of(edges: Iterable[Edge]) -> float:
    """The larger side of the box around where edges start."""
    points = [edge.start for edge in edges]
    if not points:
        return 0.0
    us, vs = zip(*points)
    return max(max(us) - min(us), max(vs) - min(vs))


def reach(extent: float) -> float:
    """How far apart ends may lie that meet, in a drawing of this extent."""
    return max(min(_FARTHEST, _FARTHEST_PART * extent), _NEAREST)


def pieces(lines: Sequence[Sequence[Edge]], places: Places) -> Iterator[Piece]:
    """The edges of lines, but for those that come back to the place where they started."""
    for number, edges in enumerate(lines):
        for edge in edges:
            start, end = places.at(edge.start), places.at(edge.end)
            if start != end:
                yield Piece(edge, start, end, number)


def once(pieces: Iterable[Piece], reach: float) -> Tuple[List[Piece], Set[int]]:
    """One of each of the pieces, and the numbers of the lines of which there was another."""
    kept: List[Piece] = []
    alike: Dict[Tuple[int, int], List[float]] = defaultdict(list)
    doubled: Set[int] = set()
    for piece in pieces:
        key, off = (piece.start, piece.end), bow(piece.edge)
        if piece.start > piece.end:
            key, off = key[::-1], -off
        others = alike[key]
        if any(abs(off - other) <= reach for other in others):
            doubled.add(piece.line)
        else:
            others.append(off)
            kept.append(piece)
    return kept, doubled


def bow(edge: Edge) -> float:
    """How far to the right of its chord an arc runs; half of bulge times chord."""
    return edge.bulge * edge.chord / 2 if edge.bulge else 0.0


def doubles(contours: Sequence[Loop], reaches: Sequence[float]) -> Set[int]:
    """The contours that lie on one before them, everywhere within the larger reach of the two."""
    widest = max(reaches, default=0.0)
    # By the cells in which the sides of their boxes lie, the areas and numbers of those before.
    before: Dict[Tuple[float, ...], List[Tuple[float, int]]] = defaultdict(list)
    cell = _CELL * widest
    found: Set[int] = set()
    for k, contour in enumerate(contours):
        sides, area = box(contour), abs(enclosed(contour))
        # What lies between doubles is no more than a strip along them, as wide as the reach.
        strip = 2 * widest * math.fsum(edge.length for edge in contour)
        near = [
            other
            for cells in product(*({(c - widest) // cell, (c + widest) // cell} for c in sides))
            for _, other in _between(before.get(cells, []), area - strip, area + strip)
        ]
        if any(_alike(contour, contours[j], max(reaches[j], reaches[k])) for j in near):
            found.add(k)
        else:
            insort(before[tuple(c // cell for c in sides)], (area, k))
    return found


def _between(rows: List[Tuple[float, int]], least: float, most: float) -> List[Tuple[float, int]]:
    return rows[bisect_left(rows, (least, 0)) : bisect_left(rows, (most, sys.maxsize))]


def _alike(one: Loop, other: Loop, reach: float) -> bool:
    both = [Polygon(divided(contour, reach / 4)) for contour in (one, other)]
    return bool(both[0].hausdorff_distance(both[1]) <= reach)


def strokes(shapes: Sequence[Shape]) -> Dict[int, float]:
    """The contours that run as close inside another one as the two sides of a line with a width.

    With how far inside, at most, in metres.
    """
    boxes = np.array([one.box for one in shapes]).reshape(-1, 4)
    areas = np.array([one.area for one in shapes])
    order = np.argsort(boxes[:, 0], kind="stable")
    lefts = boxes[order, 0]
    ends = np.searchsorted(lefts, lefts + _PEN, "right")
    found: Dict[int, float] = {}
    for k, (outer, end) in enumerate(zip(order, ends)):
        near = order[k + 1 : end]
        margins = (boxes[near] - boxes[outer]) * (1, 1, -1, -1)
        is_one = ((margins > 0) & (margins <= _PEN)).all(axis=1)
        is_one &= areas[near] >= (1 - _STRIP) * areas[outer]
        found.update(zip(near[is_one].tolist(), margins[is_one].max(axis=1).tolist()))
    return found
