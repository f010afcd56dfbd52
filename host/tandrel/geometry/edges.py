"""Straight edges and circular arcs, which outlines and drawings alike are made of."""

from __future__ import annotations

import math
from typing import NamedTuple, Optional, Tuple

import numpy as np
import numpy.typing as npt

Point = Tuple[float, float]
Points = npt.NDArray[np.float64]

LARGEST = 1e9  # of any number in a shape: no product of such lengths comes near an overflow
_FINEST = 1e-8  # the smallest detail of a shape, as a part of its largest coordinate
_NEAREST = 1e-3  # what that coordinate counts at least


def smallest_detail(*coordinates: float) -> float:
    """The length below which a detail of a shape with such coordinates is lost in rounding."""
    return _FINEST * max([_NEAREST, *(abs(c) for c in coordinates)])


def polar(centre: Point, radius: float, degrees: float) -> Point:
    """The point at a distance and a direction from a centre; exact at multiples of 90 degrees."""
    quarter = round(degrees / 90.0)
    rest = math.radians(degrees - 90.0 * quarter)
    c, s = math.cos(rest), math.sin(rest)
    c, s = ((c, s), (-s, c), (-c, -s), (s, -c))[quarter % 4]
    return centre[0] + radius * c, centre[1] + radius * s


class Turn(NamedTuple):
    """A way along a circle: from the direction ``first`` through ``angle``, both in degrees.

    A positive angle runs counter-clockwise.
    """

    centre: Point
    radius: float
    first: float
    angle: float


class Edge(NamedTuple):
    """A straight line or an arc.

    The bulge b is the tangent of a quarter of the angle that the arc sweeps, positive when it runs
    counter-clockwise, and 0 for a straight line. Unlike centre and angles it keeps its precision
    through any translation and however flat the arc is. An arc that was drawn about a centre knows
    that turn as well, to the last digit, and may be a full circle, which no bulge can tell.
    """

    start: Point
    end: Point
    bulge: float = 0.0
    turn: Optional[Turn] = None

    @property
    def chord(self) -> float:
        """The distance c of the ends."""
        return math.dist(self.start, self.end)

    @property
    def sweep(self) -> float:
        """In radians."""
        return math.radians(self.turn.angle) if self.turn else 4 * math.atan(self.bulge)

    @property
    def radius(self) -> float:
        """Of an arc: c / (2 sin(sweep / 2)), and with the bulge b that sine is 2b / (1 + b^2)."""
        if self.turn:
            return self.turn.radius
        return self.chord * (1 / abs(self.bulge) + abs(self.bulge)) / 4

    @property
    def centre(self) -> Point:
        """Of an arc: r cos(sweep / 2) to the left of its chord, which is c (1/b - b) / 4."""
        return self.turn.centre if self.turn else self.beside((self.bulge - 1 / self.bulge) / 4)

    @property
    def length(self) -> float:
        return self.radius * abs(self.sweep) if self.bulge else self.chord

    def beside(self, chords: float) -> Point:
        """The point so many lengths of the chord to the right of its middle."""
        (u1, v1), (u2, v2) = self.start, self.end
        return (u1 + u2) / 2 + chords * (v2 - v1), (v1 + v2) / 2 - chords * (u2 - u1)

    def reversed(self) -> Edge:
        turn = self.turn and self.turn._replace(
            first=self.turn.first + self.turn.angle, angle=-self.turn.angle
        )
        return Edge(self.end, self.start, -self.bulge, turn)

    def points(self, steps: int) -> list[Point]:
        """The start and equal steps towards the end, without the end."""
        if steps == 1:
            return [self.start]
        if self.turn:
            centre, radius, first, angle = self.turn
            return [polar(centre, radius, first + angle * (k / steps)) for k in range(steps)]
        u, v = self.start
        if not self.bulge:
            du, dv = self.end[0] - u, self.end[1] - v
            return [(u + du * (k / steps), v + dv * (k / steps)) for k in range(steps)]
        (u0, v0), sweep = self.centre, self.sweep
        du, dv = u - u0, v - v0
        points = [self.start]
        for k in range(1, steps):
            c, s = math.cos(sweep * k / steps), math.sin(sweep * k / steps)
            points.append((u0 + du * c - dv * s, v0 + du * s + dv * c))
        return points


def arc(centre: Point, radius: float, first: float, angle: float) -> Edge:
    """The arc of a turn: its directions are in degrees, counter-clockwise if they increase."""
    start, end = polar(centre, radius, first), polar(centre, radius, first + angle)
    bulge = math.tan(math.radians(angle) / 4)
    return Edge(start, end, bulge, Turn(centre, radius, first, angle))
