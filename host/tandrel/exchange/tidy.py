"""What is drawn twice, or is nothing, goes before anything is made of a drawing."""

from __future__ import annotations

import math
from collections import defaultdict
from typing import Dict, Iterable, Iterator, List, NamedTuple, Sequence, Set, Tuple

from shapely.geometry import Polygon

from tandrel.geometry.edges import Edge, Point
from tandrel.geometry.loops import Loop, box, divided

# How far apart ends may lie that meet: metres, and a part of the extent of the drawing.
_FARTHEST, _FARTHEST_PART = 1e-6, 1e-5
_NEAREST = 1e-12  # metres, where there is no extent


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


def doubles(contours: Sequence[Loop], reach: float) -> Set[int]:
    """The contours that lie on one before them, everywhere within a distance."""
    places = Places(reach)
    boxes = [box(contour) for contour in contours]
    alike: Dict[int, List[int]] = defaultdict(list)
    found = set()
    for k, (left, low, _, _) in enumerate(boxes):
        others = alike[places.at((left, low))]
        near = [j for j in others if max(abs(a - b) for a, b in zip(boxes[k], boxes[j])) <= reach]
        one = Polygon(divided(contours[k], reach / 4)) if near else None
        if one and any(_lie_on(one, contours[j], reach) for j in near):
            found.add(k)
        else:
            others.append(k)
    return found


def _lie_on(one: Polygon, contour: Loop, reach: float) -> bool:
    return bool(one.hausdorff_distance(Polygon(divided(contour, reach / 4))) <= reach)
