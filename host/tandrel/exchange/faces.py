"""The faces that edges enclose where they don't simply run round one."""

from __future__ import annotations

import math
import warnings
from typing import Dict, Iterator, List, Optional, Sequence, Set, Tuple

import numpy as np
from shapely.geometry import LineString, box
from shapely.ops import polygonize
from shapely.strtree import STRtree

from tandrel.exchange.tidy import Piece, Places, once
from tandrel.geometry.edges import Edge, Point
from tandrel.geometry.loops import chords
from tandrel.progress import Tick, no_tick

_SMOOTH = 0.02  # how far from an arc the line is that stands for it here, as a part of its chord


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
    used = sorted({place for piece in pieces for place in (piece.start, piece.end)})
    rows = [LineString([*_smooth(piece.edge), piece.edge.end]) for piece in pieces]
    # An arc may bulge out of the line that stands for it.
    areas = [
        row.buffer(_SMOOTH * piece.edge.chord).envelope if piece.edge.bulge else row
        for row, piece in zip(rows, pieces)
    ]
    with warnings.catch_warnings():
        # Shapely 1.8 announces what has changed in 2.0: the answers, which there are numbers.
        warnings.simplefilter("ignore")
        tree = STRtree(areas)
    query = getattr(tree, "query_items", tree.query)
    starts = np.array([piece.edge.start for piece in pieces])
    ways = np.array([piece.edge.end for piece in pieces]) - starts
    # Of straight edges the box says little; how far off they are is worked out for all at once.
    slack = np.array([math.inf if p.edge.bulge else reach * p.edge.chord for p in pieces])
    cuts: Dict[int, List[Tuple[float, int]]] = {}
    for done, place in enumerate(used):
        tick(done / len(used))
        u, v = places.points[place]
        near = np.array(query(box(u - reach, v - reach, u + reach, v + reach)), dtype=int)
        off = ways[near, 0] * (v - starts[near, 1]) - ways[near, 1] * (u - starts[near, 0])
        for k in near[np.abs(off) <= slack[near]].tolist():
            if place not in (pieces[k].start, pieces[k].end):
                part = _part(pieces[k].edge, (u, v), reach)
                if part is not None:
                    cuts.setdefault(k, []).append((part, place))
    for k, piece in enumerate(pieces):
        yield from _divided(piece, sorted(cuts.get(k, ())), places)


def _part(edge: Edge, point: Point, reach: float) -> Optional[float]:
    """Which part of an edge lies before a point on it; None if the point is elsewhere."""
    if edge.bulge:
        centre, start = edge.centre, edge.start
        if abs(math.dist(centre, point) - edge.radius) > reach:
            return None
        turn = math.atan2(point[1] - centre[1], point[0] - centre[0])
        turn -= math.atan2(start[1] - centre[1], start[0] - centre[0])
        part = (turn if edge.bulge > 0 else -turn) % (2 * math.pi) / abs(edge.sweep)
    else:
        (u1, v1), (u2, v2) = edge.start, edge.end
        du, dv, length = u2 - u1, v2 - v1, edge.chord
        if abs((point[0] - u1) * dv - (point[1] - v1) * du) > reach * length:
            return None
        part = ((point[0] - u1) * du + (point[1] - v1) * dv) / (length * length)
    return part if 0 < part < 1 else None


def _divided(piece: Piece, cuts: List[Tuple[float, int]], places: Places) -> Iterator[Piece]:
    edge, sweep = piece.edge, piece.edge.sweep
    before, start, place = 0.0, edge.start, piece.start
    for part, number in [*cuts, (1.0, piece.end)]:
        if number != place:
            end = places.points[number] if number != piece.end else edge.end
            bulge = math.tan(sweep * (part - before) / 4) if edge.bulge else 0.0
            yield Piece(Edge(start, end, bulge), place, number, piece.line)
            before, start, place = part, end, number
