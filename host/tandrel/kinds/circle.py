"""Circles: xc and yc of the centre, and the radius r."""

from __future__ import annotations

import math
from typing import Iterator

from tandrel.geometry.edges import Point, arc, smallest_detail
from tandrel.geometry.loops import Loop
from tandrel.gui.i18n import N_
from tandrel.kinds.fields import Number
from tandrel.kinds.kind import Drawing, Entity, Guess, Kind, ask_drawable, ask_positive


def entity(centre: Point, radius: float) -> Entity:
    return {"type": "circle", "xc": centre[0], "yc": centre[1], "r": radius}


def _drawing(xc: float, yc: float, r: float) -> Drawing:
    ask_positive(r, N_("the radius must be greater than zero"))
    ask_drawable(r, smallest_detail(xc, yc, r))
    return Drawing([], [arc((xc, yc), r, 0.0, 360.0)])


def _guesses(contour: Loop, tolerance: float) -> Iterator[Guess]:
    """The circle that all edges lie on, however many they are."""
    if not all(edge.bulge > 0 for edge in contour):
        return
    # The longest arcs tell the centre best.
    centre = max(contour, key=lambda edge: edge.chord).centre
    radii = [math.dist(centre, edge.start) for edge in contour]
    missing = (math.fsum(edge.sweep for edge in contour) - 2 * math.pi) * max(radii)
    apart = max(math.dist(centre, edge.centre) for edge in contour)
    if max(abs(missing), apart, max(radii) - min(radii)) <= tolerance:
        yield Guess(entity(centre, sum(radii) / len(radii)), None)


KIND = Kind(
    "circle",
    N_("Circle"),
    {"xc": Number(N_("Centre u")), "yc": Number(N_("Centre v")), "r": Number(N_("Radius"))},
    _drawing,
    _guesses,
    rank=20,
)
