"""Entities as exact contours, and back: straight lines and circular arcs, as drawings carry them.

A contour is a closed loop of edges; here it always runs counter-clockwise. What the sketch module
samples in ``S.outline`` is the very same curve. Lengths are SI.
"""

from __future__ import annotations

import math
from typing import Any, Dict, Iterator, NamedTuple, Sequence, Tuple

from tandrel import _outlines as outlines
from tandrel import sketch as S
from tandrel._outlines import MOST_CORNERS, MOST_SIDES, Line, Point, polar, smallest_detail
from tandrel._shapes import drawing

Entity = Dict[str, Any]
Box = Tuple[float, float, float, float]  # least u, least v, greatest u, greatest v

# How well an entity must fit a contour to stand for it. The first is a matter of rounding; the
# second, of digits that another program cut off, is tried where the alternative is to divide arcs.
FINE = 1e-11  # of the contour's size
COARSE, COARSEST = 1e-5, 1e-7  # of the contour's size, and metres
CHORD = 1e-6  # metres between an arc that had to be divided and its chords, at most
SHALLOW = 1e-3  # the same as a part of the arc's radius
# More can't be an outline, even if each of its corners is an arc between two gaps.
MOST_EDGES = 4 * MOST_CORNERS


class Edge(NamedTuple):
    """A straight line or an arc.

    The bulge b is the tangent of a quarter of the angle that the arc sweeps, positive when it runs
    counter-clockwise, and 0 for a straight line. Unlike centre and angles it keeps its precision
    through any translation and however flat the arc is.
    """

    start: Point
    end: Point
    bulge: float = 0.0

    @property
    def chord(self) -> float:
        """The distance c of the ends."""
        return math.dist(self.start, self.end)

    @property
    def sweep(self) -> float:
        """In radians."""
        return 4 * math.atan(self.bulge)

    @property
    def radius(self) -> float:
        """Of an arc: c / (2 sin(sweep / 2)), and with the bulge b that sine is 2b / (1 + b^2)."""
        return self.chord * (1 / abs(self.bulge) + abs(self.bulge)) / 4

    @property
    def centre(self) -> Point:
        """Of an arc: r cos(sweep / 2) to the left of its chord, which is c (1/b - b) / 4."""
        return self.beside((self.bulge - 1 / self.bulge) / 4)

    def beside(self, chords: float) -> Point:
        """The point so many lengths of the chord to the right of its middle."""
        (u1, v1), (u2, v2) = self.start, self.end
        return (u1 + u2) / 2 + chords * (v2 - v1), (v1 + v2) / 2 - chords * (u2 - u1)

    def reversed(self) -> Edge:
        return Edge(self.end, self.start, -self.bulge)


def contour(entity: Entity) -> list[Edge]:
    """The contour of an entity; raises what ``S.outline`` does. Each edge starts where one ends."""
    _corners, loop = drawing(entity)
    first, *others = loop
    if isinstance(first, Line) or others:
        return _joined(loop)
    return full_circle(first.centre, first.radius)


def full_circle(centre: Point, radius: float) -> list[Edge]:
    """Two halves: no single edge can come back to where it started."""
    ends = polar(centre, radius, 0.0), polar(centre, radius, 180.0)
    return [Edge(ends[0], ends[1], 1.0), Edge(ends[1], ends[0], 1.0)]


def _joined(loop: Sequence[outlines.Edge]) -> list[Edge]:
    """Edges without gaps. Only straight ones know their ends to the last digit."""
    joints = []  # where each edge ends, and where the next one starts
    for edge, after in zip(loop, [*loop[1:], loop[0]]):
        if isinstance(edge, Line):
            joints.append((edge.end, edge.end))
        elif isinstance(after, Line):
            joints.append((after.start, after.start))
        else:
            # A line between them may have been left out because it is so short. It counts unless
            # it is nothing but rounding.
            end, start = edge.end, after.start
            largest = max(abs(c) for c in (*end, *start, edge.radius, after.radius))
            is_gap = math.dist(end, start) > 8 * math.ulp(largest)
            joints.append((end if is_gap else start, start))
    edges = []
    for k, edge in enumerate(loop):
        end, next_start = joints[k]
        bulge = 0.0 if isinstance(edge, Line) else math.tan(math.radians(edge.sweep) / 4)
        edges.append(Edge(joints[k - 1][1], end, bulge))
        if end != next_start:
            edges.append(Edge(end, next_start))
    return edges


def enclosed(edges: Sequence[Edge]) -> float:
    """The exact area inside a loop, positive when it runs counter-clockwise."""
    u0, v0 = edges[0].start
    twice = 0.0
    for (u1, v1), (u2, v2), bulge in edges:
        twice += (u1 - u0) * (v2 - v0) - (u2 - u0) * (v1 - v0)
        if bulge:
            # A segment: r^2 (sweep - sin sweep), with the chord and the bulge put in.
            sweep = 4 * math.atan(bulge)
            square = (u2 - u1) ** 2 + (v2 - v1) ** 2
            twice += square * (1 / bulge + bulge) ** 2 / 16 * (sweep - math.sin(sweep))
    return twice / 2


def box(edges: Sequence[Edge]) -> Box:
    """The exact extent of a loop, arcs included."""
    points = [edge.start for edge in edges]
    for edge in edges:
        if edge.bulge:
            points += _turning_points(edge)
    us, vs = zip(*points)
    return min(us), min(vs), max(us), max(vs)


def _turning_points(arc: Edge) -> Iterator[Point]:
    """Where an arc runs along an axis."""
    (u, v), radius = arc.centre, arc.radius
    first = math.degrees(math.atan2(arc.start[1] - v, arc.start[0] - u))
    low, high = sorted((first, first + math.degrees(arc.sweep)))
    for quarter in range(math.ceil(low / 90), math.floor(high / 90) + 1):
        yield polar((u, v), radius, 90.0 * quarter)


def divided(edges: Sequence[Edge], error: float) -> list[Point]:
    """Points along a loop whose chords keep this close to its arcs; corners are among them."""
    points: list[Point] = []
    for edge in edges:
        points.append(edge.start)
        steps = _steps(edge, error)
        if steps > 1:
            (u, v), sweep = edge.centre, edge.sweep
            du, dv = edge.start[0] - u, edge.start[1] - v
            for k in range(1, steps):
                c, s = math.cos(sweep * k / steps), math.sin(sweep * k / steps)
                points.append((u + du * c - dv * s, v + du * s + dv * c))
    return points


def _steps(edge: Edge, error: float) -> int:
    """How many chords an edge is divided into.

    The chord of an angle a is off by r (1 - cos(a / 2)), which is 2r sin(a / 4)^2, and the chord of
    the whole arc by half of bulge times chord.
    """
    # Flat arcs need no centre, which would be too far away to be of use.
    if abs(edge.bulge) * edge.chord / 2 <= error:
        return 1
    step = 4 * math.asin(math.sqrt(min(error / edge.radius, SHALLOW) / 2))
    return math.ceil(abs(edge.sweep) / step)


class Recognised(NamedTuple):
    """The entity that stands for a contour, and how far its arcs are from it; 0 if it is exact."""

    entity: Entity
    error: float


def recognised(edges: Sequence[Edge]) -> Recognised:
    """The entity that a closed loop, running either way, was or might have been drawn as.

    Gaps and edges shorter than any detail of a sketch don't count. What no other entity fits is a
    polygon, with its arcs divided. ``ValueError`` if there is none that ``S.outline`` takes.
    """
    if len(edges) > MOST_EDGES:
        S.outline(_polygon([edge.start for edge in edges]))
    edges = _tidy(edges)
    if not edges:
        S.outline(_polygon([]))
    curved = any(edge.bulge for edge in edges)
    left, low, right, high = box(edges)
    size, rounding = max(right - left, high - low), _rounding(edges)
    tolerances = [FINE * size, min(COARSE * size, COARSEST)] if curved else [FINE * size]
    for tolerance in tolerances:
        for entity in _candidates(edges, tolerance + rounding):
            return Recognised(entity, 0.0)
    if not curved:
        entity = _polygon([edge.start for edge in edges])
        S.outline(entity)
        return Recognised(entity, 0.0)
    error = min(CHORD, SHALLOW * size)
    while sum(_steps(edge, error) for edge in edges) > MOST_CORNERS and error < size:
        error *= 2
    entity = _polygon(divided(edges, error))
    S.outline(entity)
    return Recognised(entity, error)


def _rounding(edges: Sequence[Edge]) -> float:
    """The length that is lost in the last digits of a loop's coordinates."""
    return 8 * math.ulp(max(abs(c) for edge in edges for c in edge.start))


def _tidy(edges: Sequence[Edge]) -> list[Edge]:
    """The edges that count, counter-clockwise."""
    detail = smallest_detail(*(c for edge in edges for c in edge.start))
    kept = [edge for edge in edges if edge.chord > detail or abs(edge.bulge) > 1]
    if kept and enclosed(kept) < 0:
        kept = [edge.reversed() for edge in reversed(kept)]
    return kept


def _candidates(edges: Sequence[Edge], tolerance: float) -> Iterator[Entity]:
    """The entities whose contours agree with a loop, the plainest first."""
    arcs = [edge for edge in edges if edge.bulge]
    if len(arcs) == 2 and len(edges) <= 4:
        yield from _slots(arcs, edges, tolerance)
    yield from _circles(edges, tolerance)
    for entity in _guesses(edges):
        if _agree(entity, edges, tolerance):
            yield entity


def _slots(arcs: Sequence[Edge], edges: Sequence[Edge], tolerance: float) -> Iterator[Entity]:
    """The slot with these ends, if any."""
    # From their chords: the bulges may be off a half turn by the tolerance.
    two, one = (arc.beside(0.0) for arc in arcs)
    r = (arcs[0].chord + arcs[1].chord) / 4
    length, rounding = math.dist(one, two), _rounding(edges)
    # Nearer together they are one, and this is a circle. A short slot far out is turned a little
    # by the rounding of its ends, as it was when it was drawn.
    if length > rounding:
        entity = {"type": "slot", "x1": one[0], "y1": one[1], "x2": two[0], "y2": two[1], "r": r}
        if _agree(entity, edges, tolerance + rounding * r / length):
            yield entity


def _circles(edges: Sequence[Edge], tolerance: float) -> Iterator[Entity]:
    """The circle that all edges lie on, if any."""
    if not all(edge.bulge > 0 for edge in edges):
        return
    # The longest arcs tell the centre best.
    centre = max(edges, key=lambda edge: edge.chord).centre
    radii = [math.dist(centre, edge.start) for edge in edges]
    missing = (math.fsum(edge.sweep for edge in edges) - 2 * math.pi) * max(radii)
    apart = max(math.dist(centre, edge.centre) for edge in edges)
    if max(abs(missing), apart, max(radii) - min(radii)) <= tolerance:
        entity = {"type": "circle", "xc": centre[0], "yc": centre[1], "r": sum(radii) / len(radii)}
        if _valid(entity):
            yield entity


def _guesses(edges: Sequence[Edge]) -> Iterator[Entity]:
    """What a loop may be, judged by a few of its edges."""
    arcs = [edge for edge in edges if edge.bulge]
    corners = _corners(edges)
    radius = max(arcs, key=lambda arc: arc.chord).radius if arcs else 0.0
    if len(corners) == 4:
        us, vs = zip(*corners)
        x, y = min(us), min(vs)
        w, h = max(us) - x, max(vs) - y
        yield {"type": "rectangle", "x": x, "y": y, "w": w, "h": h, "radius": radius}
    if not arcs and 3 <= len(corners) <= MOST_SIDES:
        yield _regular(corners)
    if arcs and corners:
        yield {**_polygon(corners), "radius": radius}


def _corners(edges: Sequence[Edge]) -> list[Point]:
    """Where the straight edges of a loop meet, or would meet if its arcs were not there.

    Tangents to the ends of an arc meet c tan(sweep / 2) / 2 from its chord, and with the bulge b
    that tangent is 2b / (1 - b^2).
    """
    corners: list[Point] = []
    for before, edge in zip([edges[-1], *edges], edges):
        if edge.bulge:
            if abs(edge.bulge) >= 1:
                return []
            corners.append(edge.beside(edge.bulge / (1 - edge.bulge**2)))
        elif not before.bulge:
            corners.append(edge.start)
    return corners


def _regular(corners: Sequence[Point]) -> Entity:
    n = len(corners)
    u, v = (math.fsum(c) / n for c in zip(*corners))
    r = math.fsum(math.dist((u, v), corner) for corner in corners) / n
    angle = math.degrees(math.atan2(corners[0][1] - v, corners[0][0] - u))
    # The digits that are dropped are noise: they move the corners by less than FINE.
    return {"type": "regular", "xc": u, "yc": v, "r": r, "n": n, "angle": round(angle, 11)}


def _polygon(points: Sequence[Point]) -> Entity:
    return {"type": "polygon", "points": [[u, v] for u, v in points], "radius": 0.0}


def _agree(entity: Entity, edges: Sequence[Edge], tolerance: float) -> bool:
    """Whether an entity's contour is a given one, wherever each of them starts."""
    if not _valid(entity):
        return False
    others = _tidy(contour(entity))
    if len(others) != len(edges):
        return False
    first = min(range(len(others)), key=lambda k: math.dist(others[k].start, edges[0].start))
    return all(
        math.dist(one.start, other.start) <= tolerance
        and math.dist(one.end, other.end) <= tolerance
        and abs(one.bulge * one.chord - other.bulge * other.chord) <= 2 * tolerance
        for one, other in zip(edges, [*others[first:], *others[:first]])
    )


def _valid(entity: Entity) -> bool:
    try:
        S.outline(entity)
    except ValueError:
        return False
    return True
