"""Lines and arcs joined to closed contours: where their ends meet, then where they nearly do."""

from __future__ import annotations

import math
from collections import defaultdict
from typing import (
    Dict,
    Hashable,
    Iterable,
    Iterator,
    List,
    NamedTuple,
    Optional,
    Sequence,
    Set,
    Tuple,
)

from tandrel.exchange.faces import dividing, faces
from tandrel.exchange.lines import Line
from tandrel.exchange.tidy import Piece, Places, bow, once, pieces, reach
from tandrel.geometry.edges import Edge, Point
from tandrel.geometry.loops import Loop
from tandrel.progress import Tick, no_tick

# How far apart ends lie that are joined when no others are left: metres, and a part of the extent.
_LOOSE = (1e-5, 1e-3), (1e-4, 1e-2)


class Contour(NamedTuple):
    """A closed row of edges, and the layer of its first."""

    edges: List[Edge]
    layer: str


class Joined(NamedTuple):
    """What lines make: contours, and rows of edges that close nowhere.

    Of how many lines the latter are, how many lines were drawn more than once, and which ends were
    joined although they lie apart, is for the user. ``gaping`` are rows that were nearly closed
    before the faces of what was left were taken.
    """

    contours: List[Contour]
    open: List[List[Edge]]
    gaping: List[List[Edge]]
    left: int
    doubled: int
    bridged: List[Tuple[Point, Point]]


def joined(
    lines: Sequence[Line], extent: float, closed: Sequence[Loop] = (), tick: Tick = no_tick
) -> Joined:
    """The closed contours that open lines make, in a drawing of this extent, beside closed ones.

    Ends that meet within a micrometre are one place; where just two edges end in each place of a
    row of them, it is a contour; lines of one layer and pen come before others that end there. Of
    the ends that nothing meets those are joined that lie within 10 micrometres of each other, then
    within 100, if neither has one that lies nearer. Of what is still left, the faces that it
    encloses are contours, but for lines that divide what another contour lies across.
    """
    places = Places(reach(extent))
    left, doubled = once(pieces([line.edges for line in lines], places), places.reach)
    contours: List[Contour] = []
    bridged: List[Tuple[Point, Point]] = []

    def take(rings: Iterable[List[Piece]]) -> None:
        for ring in rings:
            layer = lines[ring[0].line].layer
            contours.append(Contour([piece.edge for piece in ring], layer))

    rings, left = _rings_by_pen(left, lines)
    take(rings)
    tick(0.5)
    loose = places.reach
    for farthest, part in _LOOSE:
        loose = max(min(farthest, part * extent), places.reach)
        more: Optional[Set[int]] = None
        while more is None or more:
            left, more = _without_near_doubles(left, places.points, loose)
            doubled |= more
        left, more = once(_bridged(left, places, loose, bridged), loose)
        doubled |= more
        rings, left = _rings_by_pen(left, lines)
        take(rings)
    gaping = [[piece.edge for piece in row] for row, _ in _rows(left)]
    gaping = [row for row in gaping if math.dist(row[0].start, row[-1].end) > loose]
    rings, left = faces(left, places, loose, lambda done: tick(0.5 + done / 2))
    around_itself = (line.edges for line in lines if _comes_back(line.edges, loose))
    across = dividing(rings, [*closed, *around_itself, *(one.edges for one in contours)])
    if across:
        around = [piece for ring in rings for piece in ring]
        rings, rest = faces([p for p in around if p.edge not in across], places, loose)
        left += once((p for p in around if p.edge in across), places.reach)[0] + rest
    take(rings)
    rows = [[piece.edge for piece in row] for row, _ in _rows(left)]
    left_lines = len({piece.line for piece in left})
    return Joined(contours, rows, gaping, left_lines, len(doubled), bridged)


def _comes_back(edges: Sequence[Edge], loose: float) -> bool:
    """Whether a line closes by itself: some programs don't mark such ones as closed."""
    return len(edges) > 1 and math.dist(edges[0].start, edges[-1].end) <= loose


def _meeting(pieces: Sequence[Piece]) -> Dict[int, List[int]]:
    """For each place the pieces that end in it."""
    found: Dict[int, List[int]] = defaultdict(list)
    for k, piece in enumerate(pieces):
        found[piece.start].append(k)
        found[piece.end].append(k)
    return found


def _rings_by_pen(
    pieces: List[Piece], lines: Sequence[Line]
) -> Tuple[List[List[Piece]], List[Piece]]:
    """The rings of each pen on each layer, then of each layer, then of what is left of all.

    And the pieces that are in none.
    """
    found: List[List[Piece]] = []
    for key in (lambda line: (line.layer, line.pen)), (lambda line: line.layer):
        alike: Dict[Hashable, List[Piece]] = defaultdict(list)
        for piece in pieces:
            alike[key(lines[piece.line])].append(piece)
        if len(alike) > 1:
            pieces = []
            for row in alike.values():
                rings, left = _rings(row)
                found += rings
                pieces += left
    rings, left = _rings(pieces)
    return found + rings, left


def _rings(pieces: List[Piece]) -> Tuple[List[List[Piece]], List[Piece]]:
    """The rings in which two pieces end in each place, and the pieces that are in none."""
    rings, left = [], []
    for row, is_ring in _rows(pieces):
        if is_ring:
            rings.append(row)
        else:
            left += row
    return rings, left


def _rows(pieces: List[Piece]) -> Iterator[Tuple[List[Piece], bool]]:
    """Rows of pieces, each as long as there is no doubt how to go on, and whether it is a ring."""
    at = _meeting(pieces)
    used = [False] * len(pieces)

    def walk(k: int, place: int) -> Iterator[Piece]:
        """From a place along a piece and on, as long as there is one way."""
        while not used[k]:
            used[k] = True
            piece = pieces[k] if pieces[k].start == place else pieces[k].reversed()
            yield piece
            place = piece.end
            if len(at[place]) != 2:
                return
            one, two = at[place]
            k = two if one == k else one

    for k, piece in enumerate(pieces):
        # Rows start where they can't be gone along further back.
        for place in (piece.start, piece.end):
            if not used[k] and len(at[place]) != 2:
                yield list(walk(k, place)), False
    for k, piece in enumerate(pieces):
        if not used[k]:
            yield list(walk(k, piece.start)), True


def _without_near_doubles(
    pieces: List[Piece], points: Sequence[Point], loose: float
) -> Tuple[List[Piece], Set[int]]:
    """The pieces but for those with a loose end that nearly lie on another one.

    And the numbers of the lines that they were of.
    """
    at = _meeting(pieces)
    near: Dict[int, Set[int]] = {place: {place} for place in at}
    if any(len(ends) == 1 for ends in at.values()):
        for _, one, two in _within(list(at), points, loose):
            near[one].add(two)
            near[two].add(one)
    gone: Set[int] = set()
    for k, piece in enumerate(pieces):
        is_loose = 1 in (len(at[piece.start]), len(at[piece.end]))
        # A short piece lies near its own neighbours.
        if not is_loose or piece.edge.length <= 4 * loose:
            continue
        for start in near[piece.start]:
            for other in at[start]:
                twin = pieces[other] if pieces[other].start == start else pieces[other].reversed()
                off = abs(bow(piece.edge) - bow(twin.edge))
                if other != k and other not in gone and twin.end in near[piece.end]:
                    if off <= loose:
                        gone.add(k)
    return [p for k, p in enumerate(pieces) if k not in gone], {pieces[k].line for k in gone}


class _End(NamedTuple):
    """An end that nothing meets: the row of pieces that it is of, where that ends else, and how
    long it is."""

    row: int
    other: int
    length: float


def _ends(pieces: List[Piece]) -> Tuple[Dict[int, _End], Dict[int, int]]:
    """By their places, the ends that nothing meets, and the rows that run through."""
    at = _meeting(pieces)
    ends: Dict[int, _End] = {}
    through: Dict[int, int] = {}
    for k, (row, is_ring) in enumerate(_rows(pieces)):
        through.update((piece.end, k) for piece in row[:-1])
        if not is_ring:
            start, end = row[0].start, row[-1].end
            length = math.fsum(piece.edge.length for piece in row)
            for one, other in ((start, end), (end, start)):
                if len(at[one]) == 1:
                    ends[one] = _End(k, other, length)
    return ends, through


def _bridged(
    pieces: List[Piece], places: Places, loose: float, bridged: List[Tuple[Point, Point]]
) -> List[Piece]:
    """The pieces after loose ends and what lies nearest to them have become one place.

    Of two loose ends each must be the other's nearest.
    """
    while True:
        ends, through = _ends(pieces)
        nearest: Dict[int, Tuple[float, int]] = {}

        def look(distance: float, one: int, two: int) -> None:
            end = ends.get(one)
            # A line isn't closed by its own inner places, a short one not by its own ends.
            if end and through.get(two) != end.row:
                if end.other != two or end.length > 4 * loose:
                    nearest[one] = min(nearest.get(one, (math.inf, 0)), (distance, two))

        numbers = {place for piece in pieces for place in (piece.start, piece.end)} if ends else ()
        for distance, one, two in _within(list(numbers), places.points, loose):
            look(distance, one, two)
            look(distance, two, one)
        merged: Dict[int, int] = {}
        for one, (_, two) in nearest.items():
            if two not in ends or (one < two and nearest.get(two, (0.0, -1))[1] == one):
                merged[one] = two
        if not merged:
            return pieces
        bridged += [(places.points[one], places.points[two]) for one, two in merged.items()]
        pieces = [
            piece._replace(
                start=merged.get(piece.start, piece.start), end=merged.get(piece.end, piece.end)
            )
            for piece in pieces
        ]
        pieces = [piece for piece in pieces if piece.start != piece.end]


def _within(
    numbers: Sequence[int], points: Sequence[Point], distance: float
) -> Iterator[Tuple[float, int, int]]:
    """The pairs of places that lie within a distance of each other, and how far apart they are."""
    ordered = sorted(numbers, key=lambda number: points[number])
    cells: Dict[Tuple[int, int], List[int]] = defaultdict(list)
    for number in ordered:
        u, v = points[number]
        cell = int(u // distance), int(v // distance)
        for du in (-1, 0, 1):
            for dv in (-1, 0, 1):
                for other in cells.get((cell[0] + du, cell[1] + dv), ()):
                    apart = math.dist(points[number], points[other])
                    if apart <= distance:
                        yield apart, other, number
        cells[cell].append(number)
