"""Closed loops of edges: their area, extent and points.

A loop runs counter-clockwise unless something else is said. That of a shape as it is drawn may have
gaps and overlaps of rounding between its edges; a contour, as drawings carry it, has none: each of
its edges starts where the one before ends.
"""

from __future__ import annotations

import math
from typing import Iterator, List, Sequence, Tuple

from tandrel.geometry.edges import Edge, Point, polar, smallest_detail

Loop = Sequence[Edge]
Box = Tuple[float, float, float, float]  # least u, least v, greatest u, greatest v

POINTS = 64  # points round an outline, give or take its corners
ARC_STEP = math.radians(15.0)  # of arc between two of them, at most
SHALLOW = 1e-3  # between an arc and a chord that stands for a part of it, in radii, at most


def straight(corners: Sequence[Point]) -> List[Edge]:
    """The loop of straight edges through corners."""
    return [Edge(a, b) for a, b in zip(corners, [*corners[1:], *corners[:1]])]


def is_curved(loop: Loop) -> bool:
    """Whether there is any arc in a loop."""
    return any(edge.bulge for edge in loop)


def enclosed(loop: Loop) -> float:
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
        if edge.bulge:
            sweep = edge.sweep
            twice += edge.radius**2 * (sweep - math.sin(sweep))
    return twice / 2


def box(loop: Loop) -> Box:
    """The exact extent of a loop, arcs included."""
    points = [edge.start for edge in loop]
    for edge in loop:
        if edge.bulge:
            points += turning_points(edge)
    us, vs = zip(*points)
    return min(us), min(vs), max(us), max(vs)


def turning_points(arc: Edge) -> Iterator[Point]:
    """Where an arc runs along an axis."""
    (u, v), radius = arc.centre, arc.radius
    first = math.degrees(math.atan2(arc.start[1] - v, arc.start[0] - u))
    low, high = sorted((first, first + math.degrees(arc.sweep)))
    for quarter in range(math.ceil(low / 90), math.floor(high / 90) + 1):
        yield polar((u, v), radius, 90.0 * quarter)


def sampled(loop: Loop) -> List[Point]:
    """Points along a loop, corners and ends of arcs included, the first one not repeated.

    Straight edges get points as well, so that no two neighbours lie further apart than a
    ``POINTS``-th of the way round: whoever is near the outline is near one of its points.
    """
    lengths = [edge.length for edge in loop]
    pitch = math.fsum(lengths) / POINTS
    points: List[Point] = []
    for edge, length in zip(loop, lengths):
        steps = _steps(length, pitch)
        if edge.bulge:
            steps = max(steps, _steps(abs(edge.sweep), ARC_STEP))
        points += edge.points(steps)
    return points


def _steps(whole: float, step: float) -> int:
    # A whole that is a multiple of the step but for rounding must not gain a step.
    return max(1, math.ceil(whole / step - 1e-6))


def divided(loop: Loop, error: float) -> List[Point]:
    """Points along a loop whose chords keep this close to its arcs; corners are among them."""
    return [point for edge in loop for point in edge.points(chords(edge, error))]


def chords(edge: Edge, error: float) -> int:
    """How many chords an edge is divided into, to keep this close to it.

    The chord of an angle a is off by r (1 - cos(a / 2)), which is 2r sin(a / 4)^2, and the chord of
    the whole arc by half of bulge times chord.
    """
    # Flat arcs need no centre, which would be too far away to be of use.
    if edge.turn is None and abs(edge.bulge) * edge.chord / 2 <= error:
        return 1
    step = 4 * math.asin(math.sqrt(min(error / edge.radius, SHALLOW) / 2))
    return math.ceil(abs(edge.sweep) / step)


def fineness(loop: Loop, error: float) -> float:
    """How close chords are to be to the arcs of a loop: less than an error where it is small."""
    left, low, right, high = box(loop)
    return min(error, SHALLOW * max(right - left, high - low))


def is_circle(loop: Loop) -> bool:
    """Whether a loop, as it is drawn, is one edge that comes back to where it started."""
    return len(loop) == 1


def joined(loop: Loop) -> List[Edge]:
    """The contour of a shape as it is drawn. Only straight edges know their ends to the last digit.

    Arcs keep their bulges, but not their turns. A circle becomes two halves, as no edge of a
    contour can come back to where it started.
    """
    if is_circle(loop):
        one, two = (polar(loop[0].centre, loop[0].radius, degrees) for degrees in (0.0, 180.0))
        return [Edge(one, two, 1.0), Edge(two, one, 1.0)]
    joints = []  # where each edge ends, and where the next one starts
    for edge, after in zip(loop, [*loop[1:], loop[0]]):
        if not edge.bulge:
            joints.append((edge.end, edge.end))
        elif not after.bulge:
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
        edges.append(Edge(joints[k - 1][1], end, edge.bulge))
        if end != next_start:
            edges.append(Edge(end, next_start))
    return edges


def tidied(loop: Loop) -> List[Edge]:
    """The edges of a contour, running either way, that are no shorter than any detail of a shape.

    They run counter-clockwise.
    """
    # Arcs may reach farther than their ends, and what stands for them has to be told apart there.
    detail = smallest_detail(*box(loop)) if loop else 0.0
    kept = [edge for edge in loop if edge.chord > detail or abs(edge.bulge) > 1]
    if kept and enclosed(kept) < 0:
        kept = [edge.reversed() for edge in reversed(kept)]
    return kept


def rounding(loop: Loop) -> float:
    """The length that is lost in the last digits of a loop's coordinates."""
    return 8 * math.ulp(max(abs(c) for edge in loop for c in edge.start))


def agree(one: Loop, other: Loop, tolerance: float) -> bool:
    """Whether two contours are the same edges, wherever each of them starts."""
    if len(other) != len(one):
        return False
    first = min(range(len(other)), key=lambda k: math.dist(other[k].start, one[0].start))
    return all(
        math.dist(a.start, b.start) <= tolerance
        and math.dist(a.end, b.end) <= tolerance
        and abs(a.bulge * a.chord - b.bulge * b.chord) <= 2 * tolerance
        for a, b in zip(one, [*other[first:], *other[:first]])
    )
