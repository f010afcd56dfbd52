"""The faces that edges enclose where they don't simply run round one."""

from __future__ import annotations

import math
from typing import Any, Dict, Iterable, Iterator, List, Sequence, Set, Tuple

import numpy as np
import numpy.typing as npt
from shapely.geometry import LineString, Polygon
from shapely.ops import polygonize
from shapely.prepared import PreparedGeometry, prep

from tandrel.exchange.tidy import Piece, Places, once
from tandrel.geometry.edges import Edge, Point, Points
from tandrel.geometry.loops import Loop, box, chords, divided
from tandrel.progress import Tick, no_tick

_SMOOTH = 0.02  # how far from an arc the line is that stands for it here, as a part of its chord

_SHALLOW = 1e-3  # how deep a line runs into a contour that it crosses, of its size, at least


def faces(
    pieces: List[Piece], places: Places, thin: float, tick: Tick = no_tick
) -> Tuple[List[List[Piece]], List[Piece]]:
    """The rings round the faces that pieces enclose, and the pieces that bound none.

    What is no wider than ``thin`` is no face but a line that was drawn twice.
    """
    if not pieces:
        return [], []
    pieces, _ = once(_split(pieces, places, tick), places.reach)
    points = [_points(piece, places) for piece in pieces]
    # Which piece a ring goes along, and which way, is told by its first or its last step.
    steps: Dict[Tuple[Point, Point], Tuple[int, bool]] = {}
    for k, row in enumerate(points):
        steps[row[0], row[1]] = k, True
        steps[row[-1], row[-2]] = k, False
    rings: List[List[Piece]] = []
    used: Set[int] = set()
    for face in polygonize([LineString(row) for row in points]):
        found = list(_along(list(face.exterior.coords)[:-1], steps, points))
        used.update(k for k, _ in found)
        if 2 * face.area > thin * face.length:
            rings.append([pieces[k] if forward else pieces[k].reversed() for k, forward in found])
    return rings, [piece for k, piece in enumerate(pieces) if k not in used]


def dividing(rings: Iterable[List[Piece]], closed: Sequence[Loop]) -> Set[Edge]:
    """The edges between two rings that run across a closed contour, such as a bend line through a
    hole: they divide a part that is one. Both ways that an edge may run are in the answer.
    """
    edges = [piece.edge for ring in rings for piece in ring]
    both = {*edges} & {edge.reversed() for edge in edges}
    if not both:
        return set()
    boxes = np.array([box(contour) for contour in closed]).reshape(-1, 4)
    sizes = (boxes[:, 2:] - boxes[:, :2]).max(axis=1, initial=0.0)
    areas: Dict[int, PreparedGeometry] = {}
    found: Set[Edge] = set()
    for edge in both:
        left, low, right, high = box([edge, edge.reversed()])
        near = (boxes[:, :2] <= (right, high)).all(axis=1)
        near &= (boxes[:, 2:] >= (left, low)).all(axis=1) & (sizes > 0)
        line = LineString([*_smooth(edge), edge.end])
        for k in map(int, np.flatnonzero(near)):
            if k not in areas:
                areas[k] = prep(_core(closed[k], _SHALLOW * float(sizes[k])))
            if areas[k].crosses(line):
                found.add(edge)
                break
    return found


def _core(contour: Loop, error: float) -> Polygon:
    """What a contour encloses, but for its rim; nothing if it is no contour."""
    is_one = all(edge.radius > 0 for edge in contour if edge.bulge)
    row = divided(contour, error) if is_one else []
    return Polygon(row if len(row) > 2 else None).buffer(-error)


def _along(
    ring: List[Point], steps: Dict[Tuple[Point, Point], Tuple[int, bool]], points: List[List[Point]]
) -> Iterator[Tuple[int, bool]]:
    """The pieces along a ring of points, wherever it begins."""
    count = len(ring)
    first = next(k for k in range(count) if (ring[k], ring[(k + 1) % count]) in steps)
    k = first
    while k < first + count:
        piece, forward = steps[ring[k % count], ring[(k + 1) % count]]
        yield piece, forward
        k += len(points[piece]) - 1


def _points(piece: Piece, places: Places) -> List[Point]:
    """The line that stands for a piece, from place to place."""
    row = _smooth(piece.edge)
    return [places.points[piece.start], *row[1:], places.points[piece.end]]


def _smooth(edge: Edge) -> List[Point]:
    if not edge.bulge:
        return [edge.start]
    return edge.points(max(2, chords(edge, _SMOOTH * edge.chord)))


def _split(pieces: Sequence[Piece], places: Places, tick: Tick) -> Iterator[Piece]:
    """The pieces, divided in those places where others end on them."""
    reach = places.reach
    used = np.array(sorted({place for piece in pieces for place in (piece.start, piece.end)}))
    points = np.array([places.points[place] for place in used])
    orders = np.argsort(points, axis=0, kind="stable")
    boxes = np.array([box([piece.edge, piece.edge.reversed()]) for piece in pieces])
    # Of the places along each axis, those that lie beside each piece: from the first to the last.
    spans = [
        (
            np.searchsorted(points[orders[:, axis], axis], boxes[:, axis] - reach, "left"),
            np.searchsorted(points[orders[:, axis], axis], boxes[:, axis + 2] + reach, "right"),
        )
        for axis in (0, 1)
    ]
    for k, piece in enumerate(pieces):
        tick(k / len(pieces))
        counts = [int(lasts[k] - firsts[k]) for firsts, lasts in spans]
        axis = counts.index(min(counts))
        first, last = (int(bound[k]) for bound in spans[axis])
        near = orders[first:last, axis]
        across = points[near, 1 - axis]
        low, high = boxes[k, 1 - axis] - reach, boxes[k, 3 - axis] + reach
        near = near[(low <= across) & (across <= high)]
        near = near[_lie_on(piece.edge, points[near], reach)]
        cuts: List[Tuple[float, int]] = []
        for place in map(int, used[near]):
            if place not in (piece.start, piece.end):
                part = _part(piece.edge, places.points[place])
                if 0 < part < 1:
                    cuts.append((part, place))
        yield from _divided(piece, sorted(cuts), places)


def _lie_on(edge: Edge, points: Points, reach: float) -> npt.NDArray[np.bool_]:
    """Which points lie on the line or the circle that an edge is a part of."""
    off: npt.NDArray[np.floating[Any]]
    if edge.bulge:
        off = np.hypot(*(points - edge.centre).T) - edge.radius
    else:
        (u1, v1), (u2, v2) = edge.start, edge.end
        off = ((points[:, 0] - u1) * (v2 - v1) - (points[:, 1] - v1) * (u2 - u1)) / edge.chord
    return np.abs(off) <= reach


def _part(edge: Edge, point: Point) -> float:
    """Which part of an edge lies before a point on it; one elsewhere has none from 0 to 1."""
    if edge.bulge:
        centre, start = edge.centre, edge.start
        turn = math.atan2(point[1] - centre[1], point[0] - centre[0])
        turn -= math.atan2(start[1] - centre[1], start[0] - centre[0])
        return (turn if edge.bulge > 0 else -turn) % (2 * math.pi) / abs(edge.sweep)
    (u1, v1), (u2, v2) = edge.start, edge.end
    return ((point[0] - u1) * (u2 - u1) + (point[1] - v1) * (v2 - v1)) / edge.chord**2


def _divided(piece: Piece, cuts: List[Tuple[float, int]], places: Places) -> Iterator[Piece]:
    edge, sweep = piece.edge, piece.edge.sweep
    before, start, place = 0.0, edge.start, piece.start
    for part, number in [*cuts, (1.0, piece.end)]:
        if number != place:
            end = places.points[number] if number != piece.end else edge.end
            bulge = math.tan(sweep * (part - before) / 4) if edge.bulge else 0.0
            yield Piece(Edge(start, end, bulge), place, number, piece.line)
            before, start, place = part, end, number
