"""From the numbers of an entity to its closed outline: lines and arcs, their area, their points.

Every kind of shape becomes a loop of straight lines and circular arcs that runs counter-clockwise.
The area comes from that loop exactly; the outline's points are taken along it.

Lengths are SI. A shape that can't be built raises ``ValueError`` with a :class:`Reason`.
"""

from __future__ import annotations

import math
import re
from typing import NamedTuple, NoReturn, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt
from shapely.geometry import Polygon
from shapely.validation import explain_validity

from tandrel._reasons import Reason
from tandrel.gui.i18n import N_

Point = Tuple[float, float]
Points = npt.NDArray[np.float64]

LARGEST = 1e9  # of any number in an entity: no product of such lengths comes near an overflow
FINEST = 1e-8  # the smallest detail of a shape, as a part of its largest coordinate
NEAREST = 1e-3  # what that coordinate counts at least
POINTS = 64  # points round an outline, give or take its corners
ARC_STEP = 15.0  # degrees of arc between two points, at most
MOST_SIDES = 1000
MOST_CORNERS = 10_000


class Line(NamedTuple):
    """A straight edge."""

    start: Point
    end: Point

    @property
    def length(self) -> float:
        return math.dist(self.start, self.end)

    def points(self, pitch: float) -> list[Point]:
        """The start and equal steps of about ``pitch`` towards the end, without the end."""
        steps = _steps(self.length, pitch)
        u, v = self.start
        du, dv = self.end[0] - u, self.end[1] - v
        return [(u + du * (k / steps), v + dv * (k / steps)) for k in range(steps)]


class Arc(NamedTuple):
    """Part of a circle: from the direction ``first`` through ``sweep``, both in degrees.

    A positive sweep runs counter-clockwise.
    """

    centre: Point
    radius: float
    first: float
    sweep: float

    @property
    def start(self) -> Point:
        return polar(self.centre, self.radius, self.first)

    @property
    def end(self) -> Point:
        return polar(self.centre, self.radius, self.first + self.sweep)

    @property
    def length(self) -> float:
        return self.radius * math.radians(abs(self.sweep))

    def points(self, pitch: float) -> list[Point]:
        """The start and equal steps of at most ``pitch`` and ``ARC_STEP``, without the end."""
        steps = max(_steps(self.length, pitch), _steps(abs(self.sweep), ARC_STEP))
        return [
            polar(self.centre, self.radius, self.first + self.sweep * (k / steps))
            for k in range(steps)
        ]


Edge = Union[Line, Arc]
Drawing = Tuple["list[Point]", "list[Edge]"]  # corners and loop


def _steps(whole: float, step: float) -> int:
    # A whole that is a multiple of the step but for rounding must not gain a step.
    return max(1, math.ceil(whole / step - 1e-6))


def polar(centre: Point, radius: float, degrees: float) -> Point:
    """The point at a distance and a direction from a centre; exact at multiples of 90 degrees."""
    quarter = round(degrees / 90.0)
    rest = math.radians(degrees - 90.0 * quarter)
    c, s = math.cos(rest), math.sin(rest)
    c, s = ((c, s), (-s, c), (-c, -s), (s, -c))[quarter % 4]
    return centre[0] + radius * c, centre[1] + radius * s


def enclosed(loop: Sequence[Edge]) -> float:
    """The exact area inside a loop, positive when it runs counter-clockwise.

    Green's theorem: half the sum of the cross products of neighbouring ends (the "shoelace"
    formula), and for each arc the circular segment between it and its chord,
    r^2 (sweep - sin sweep) / 2.
    """
    # Taken from a point of the loop itself: far from the origin the products would cancel.
    u0, v0 = loop[0].start
    twice = 0.0
    for edge in loop:
        (u1, v1), (u2, v2) = edge.start, edge.end
        twice += (u1 - u0) * (v2 - v0) - (u2 - u0) * (v1 - v0)
        if isinstance(edge, Arc):
            sweep = math.radians(edge.sweep)
            twice += edge.radius**2 * (sweep - math.sin(sweep))
    return twice / 2


def sampled(loop: Sequence[Edge]) -> list[Point]:
    """Points along a loop, corners and ends of arcs included, the first one not repeated.

    Straight edges get points as well, so that no two neighbours lie further apart than a
    ``POINTS``-th of the way round: whoever is near the outline is near one of its points.
    """
    pitch = math.fsum(edge.length for edge in loop) / POINTS
    return [point for edge in loop for point in edge.points(pitch)]


def is_curved(loop: Sequence[Edge]) -> bool:
    """Whether there is any arc in a loop."""
    return any(isinstance(edge, Arc) for edge in loop)


def smallest_detail(*coordinates: float) -> float:
    """The length below which a detail of a shape with such coordinates is lost in rounding."""
    return FINEST * max([NEAREST, *(abs(c) for c in coordinates)])


def rectangle(x: float, y: float, w: float, h: float, radius: float) -> Drawing:
    """Corners and loop of a rectangle from its lower left corner, its sizes and rounding."""
    _positive(w, N_("the width must be greater than zero"))
    _positive(h, N_("the height must be greater than zero"))
    detail = smallest_detail(x, y, x + w, y + h)
    _drawable(min(w, h), detail)
    if radius > min(w, h) / 2 * (1 + FINEST):
        raise ValueError(
            Reason(
                N_("the corner radius {radius} is larger than half of the shorter side, {half}"),
                radius=radius,
                half=min(w, h) / 2,
            )
        )
    corners = [(x, y), (x + w, y), (x + w, y + h), (x, y + h)]
    return corners, rounded(corners, radius, detail)


def circle(xc: float, yc: float, r: float) -> Drawing:
    """Loop of a circle; it has no corners."""
    _positive(r, N_("the radius must be greater than zero"))
    _drawable(r, smallest_detail(xc, yc, r))
    return [], [Arc((xc, yc), r, 0.0, 360.0)]


def regular(xc: float, yc: float, r: float, n: float, angle: float) -> Drawing:
    """Corners and loop of a regular polygon; the first corner lies in the direction ``angle``."""
    _positive(r, N_("the radius must be greater than zero"))
    if n != round(n):
        raise ValueError(Reason(N_("the number of sides must be a whole number")))
    if not 3 <= n <= MOST_SIDES:
        raise ValueError(
            Reason(N_("the number of sides must lie between 3 and {most}"), {"most": MOST_SIDES})
        )
    _drawable(r, smallest_detail(xc, yc, r))
    corners = [polar((xc, yc), r, angle + 360.0 * k / n) for k in range(round(n))]
    return corners, sharp(corners)


def slot(x1: float, y1: float, x2: float, y2: float, r: float) -> Drawing:
    """Loop of a slot round two end centres; with both in one place it is a circle."""
    _positive(r, N_("the half width must be greater than zero"))
    detail = smallest_detail(x1, y1, x2, y2, r)
    _drawable(r, detail)
    one, two = (x1, y1), (x2, y2)
    along = math.degrees(math.atan2(y2 - y1, x2 - x1))
    ends = Arc(two, r, along - 90.0, 180.0), Arc(one, r, along + 90.0, 180.0)
    if math.dist(one, two) <= detail:
        return [], [*ends]
    sides = Line(ends[0].end, ends[1].start), Line(ends[1].end, ends[0].start)
    return [], [ends[0], sides[0], ends[1], sides[1]]


def polygon(corners: list[Point], radius: float) -> Drawing:
    """Corners as given, and loop, of a free outline with all its corners rounded alike."""
    if len(corners) < 3:
        raise ValueError(Reason(N_("an outline needs at least three corners")))
    detail = smallest_detail(*(c for corner in corners for c in corner))
    _distinct(corners, detail)
    _wide(np.array(corners), detail)
    _simple(
        corners,
        N_("the outline crosses itself near u = {u}, v = {v}"),
        N_("the outline touches itself near u = {u}, v = {v}"),
    )
    run = corners if enclosed(sharp(corners)) > 0 else [corners[0], *corners[:0:-1]]
    loop = rounded(run, radius, detail)
    if is_curved(loop):
        # Arcs that fit don't cross, but in a neck far narrower than they are their points may.
        narrow = N_("the rounded outline is too narrow near u = {u}, v = {v}")
        _simple(sampled(loop), narrow, narrow)
    return corners, loop


def sharp(corners: Sequence[Point]) -> list[Edge]:
    """The loop of straight lines through corners."""
    return [Line(a, b) for a, b in zip(corners, [*corners[1:], corners[0]])]


def rounded(corners: Sequence[Point], radius: float, detail: float) -> list[Edge]:
    """The loop through corners, counter-clockwise, with each corner rounded by an arc.

    An arc of radius r that is tangent to both edges of a corner where the outline turns by t
    touches them at the distance r tan(t / 2) from the corner, and tan(t / 2) is
    sin t / (1 + cos t). A radius below ``detail`` leaves the corners sharp.
    """
    if radius < 0:
        raise ValueError(Reason(N_("the corner radius must not be negative")))
    edges = sharp(corners)
    if radius <= detail:
        return edges
    ways = [_direction(edge.start, edge.end) for edge in edges]
    turns = [_turn(ways[k - 1], ways[k]) for k in range(len(ways))]
    cuts = [radius * _half_tangent(turn) for turn in turns]
    cuts = [cut if cut > detail else 0.0 for cut in cuts]
    _fits(edges, cuts, radius, detail)
    loop: list[Edge] = []
    for k, corner in enumerate(corners):
        after = (k + 1) % len(corners)
        if cuts[k]:
            loop.append(
                _fillet(_along(corner, ways[k - 1], -cuts[k]), ways[k - 1], turns[k], radius)
            )
        if edges[k].length - cuts[k] - cuts[after] > detail:
            end = _along(corners[after], ways[k], -cuts[after])
            loop.append(Line(_along(corner, ways[k], cuts[k]), end))
    return loop


def _fillet(start: Point, way: Point, turn: Point, radius: float) -> Arc:
    """The arc that leaves a point in a direction and turns by an angle (its sine and cosine)."""
    side = math.copysign(radius, turn[0])
    centre = start[0] - way[1] * side, start[1] + way[0] * side
    first = math.degrees(math.atan2(-way[0] * side, way[1] * side))
    return Arc(centre, radius, first, math.degrees(math.atan2(*turn)))


def _along(point: Point, way: Point, distance: float) -> Point:
    return point[0] + way[0] * distance, point[1] + way[1] * distance


def _direction(start: Point, end: Point) -> Point:
    length = math.dist(start, end)
    return (end[0] - start[0]) / length, (end[1] - start[1]) / length


def _turn(before: Point, after: Point) -> Point:
    """Sine and cosine of the angle by which one direction turns into the next."""
    return (
        before[0] * after[1] - before[1] * after[0],
        before[0] * after[0] + before[1] * after[1],
    )


def _half_tangent(turn: Point) -> float:
    sine, cosine = turn
    return abs(sine) / (1 + cosine) if cosine > -1 else math.inf


def _fits(edges: Sequence[Edge], cuts: Sequence[float], radius: float, detail: float) -> None:
    """Every edge must be long enough for the arcs at both of its ends."""
    rooms = [
        edge.length / max(cuts[k] + cuts[(k + 1) % len(cuts)], detail)
        for k, edge in enumerate(edges)
    ]
    tightest = min(range(len(edges)), key=rooms.__getitem__)
    if rooms[tightest] < 1 - FINEST:
        u, v = edges[tightest].start
        raise ValueError(
            Reason(
                N_(
                    "the corner radius {radius} does not fit near u = {u}, v = {v}:"
                    " at most {most} fits there"
                ),
                radius=radius,
                u=u,
                v=v,
                most=radius * rooms[tightest],
            )
        )


def _positive(size: float, message: str) -> None:
    if not size > 0:
        raise ValueError(Reason(message))


def _drawable(size: float, detail: float) -> None:
    if size < detail:
        raise ValueError(Reason(N_("the shape is too small to be drawn exactly where it lies")))


def _distinct(corners: Sequence[Point], detail: float) -> None:
    for k, corner in enumerate(corners):
        if math.dist(corners[k - 1], corner) <= detail:
            one, two = (k, k + 1) if k else (len(corners), 1)
            raise ValueError(
                Reason(
                    N_("corners {one} and {two} are the same point, u = {u}, v = {v}"),
                    {"one": one, "two": two},
                    u=corner[0],
                    v=corner[1],
                )
            )


def _wide(corners: Points, detail: float) -> None:
    """Corners that all lie on one line are refused."""
    off = corners - corners[0]
    far = off[np.argmax(np.hypot(off[:, 0], off[:, 1]))]
    across = np.abs(off[:, 0] * far[1] - off[:, 1] * far[0]) / math.hypot(*far)
    if across.max() <= detail:
        raise ValueError(
            Reason(N_("the outline encloses no area: all its corners lie on one line"))
        )


def _simple(corners: Sequence[Point], crosses: str, touches: str) -> None:
    shape = Polygon(corners)
    if not shape.is_valid:
        _complain(explain_validity(shape), crosses, touches)


def _complain(verdict: str, crosses: str, touches: str) -> NoReturn:
    """Say in the user's words what shapely found, such as ``Self-intersection[0.5 0.5]``."""
    place = re.search(r"\[(\S+) (\S+)\]", verdict)
    if place is None:
        raise ValueError(Reason(N_("the outline is not a simple closed line")))
    text = touches if verdict.startswith("Ring Self-intersection") else crosses
    raise ValueError(Reason(text, u=float(place[1]), v=float(place[2])))
