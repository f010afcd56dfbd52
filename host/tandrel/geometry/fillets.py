"""Corners rounded by arcs that are tangent to both of their edges, and the corners behind arcs."""

from __future__ import annotations

import math
from typing import List, Sequence, Tuple

from tandrel.geometry.edges import Edge, Point, arc
from tandrel.geometry.loops import Loop, straight

_ROOM = 1e-8  # by how much of an edge the arcs at its ends may overlap


class Tight(ValueError):
    """A rounding that doesn't fit: where the tightest edge starts, and the most that fits there."""

    def __init__(self, place: Point, most: float) -> None:
        super().__init__(place, most)
        self.place = place
        self.most = most


def rounded(corners: Sequence[Point], radius: float, detail: float) -> List[Edge]:
    """The loop through corners, counter-clockwise, with each corner rounded by an arc.

    An arc of radius r that is tangent to both edges of a corner where the outline turns by t
    touches them at the distance r tan(t / 2) from the corner, and tan(t / 2) is
    sin t / (1 + cos t). A radius below ``detail`` leaves the corners sharp; :class:`Tight` where
    an edge is too short for the arcs at both of its ends.
    """
    edges = straight(corners)
    if radius <= detail:
        return edges
    lengths = [edge.length for edge in edges]
    ways = [_direction(edge, length) for edge, length in zip(edges, lengths)]
    turns = [_turn(ways[k - 1], ways[k]) for k in range(len(ways))]
    cuts = [radius * _half_tangent(turn) for turn in turns]
    cuts = [cut if cut > detail else 0.0 for cut in cuts]
    ends = [*cuts[1:], cuts[0]]
    rooms = [length / max(a + b, detail) for length, a, b in zip(lengths, cuts, ends)]
    tightest = min(range(len(edges)), key=rooms.__getitem__)
    if rooms[tightest] < 1 - _ROOM:
        raise Tight(corners[tightest], radius * rooms[tightest])
    loop: List[Edge] = []
    for k, edge in enumerate(edges):
        if cuts[k]:
            loop.append(
                _fillet(_along(edge.start, ways[k - 1], -cuts[k]), ways[k - 1], turns[k], radius)
            )
        if lengths[k] - cuts[k] - ends[k] > detail:
            start, end = _along(edge.start, ways[k], cuts[k]), _along(edge.end, ways[k], -ends[k])
            loop.append(Edge(start, end))
    return loop


def unrounded(loop: Loop) -> Tuple[List[Point], float]:
    """Where the straight edges of a contour meet, or would meet without the arcs between them.

    And the radius of its longest arc, 0 if there is none. No corners where an arc is half a circle
    or more: tangents to its ends meet c tan(sweep / 2) / 2 from its chord, and with the bulge b
    that tangent is 2b / (1 - b^2).
    """
    arcs = [edge for edge in loop if edge.bulge]
    radius = max(arcs, key=lambda arc: arc.chord).radius if arcs else 0.0
    corners: List[Point] = []
    for before, edge in zip([loop[-1], *loop], loop):
        if edge.bulge:
            if abs(edge.bulge) >= 1:
                return [], radius
            corners.append(edge.beside(edge.bulge / (1 - edge.bulge**2)))
        elif not before.bulge:
            corners.append(edge.start)
    return corners, radius


def _fillet(start: Point, way: Point, turn: Point, radius: float) -> Edge:
    """The arc that leaves a point in a direction and turns by an angle (its sine and cosine)."""
    side = math.copysign(radius, turn[0])
    centre = start[0] - way[1] * side, start[1] + way[0] * side
    first = math.degrees(math.atan2(-way[0] * side, way[1] * side))
    return arc(centre, radius, first, math.degrees(math.atan2(*turn)))


def _along(point: Point, way: Point, distance: float) -> Point:
    return point[0] + way[0] * distance, point[1] + way[1] * distance


def _direction(edge: Edge, length: float) -> Point:
    (u1, v1), (u2, v2) = edge.start, edge.end
    return (u2 - u1) / length, (v2 - v1) / length


def _turn(before: Point, after: Point) -> Point:
    """Sine and cosine of the angle by which one direction turns into the next."""
    return (
        before[0] * after[1] - before[1] * after[0],
        before[0] * after[0] + before[1] * after[1],
    )


def _half_tangent(turn: Point) -> float:
    sine, cosine = turn
    return abs(sine) / (1 + cosine) if cosine > -1 else math.inf
