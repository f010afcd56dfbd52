"""Slots: x1, y1 and x2, y2 of the centres of both ends, and half of the width, r."""

from __future__ import annotations

import math
from typing import Iterator

from tandrel.geometry.edges import Edge, arc, smallest_detail
from tandrel.geometry.loops import Loop, rounding
from tandrel.gui.i18n import N_
from tandrel.kinds.fields import Number
from tandrel.kinds.kind import Drawing, Guess, Kind, ask_drawable, ask_positive


def _drawing(x1: float, y1: float, x2: float, y2: float, r: float) -> Drawing:
    """With both ends in one place it is a circle."""
    ask_positive(r, N_("the half width must be greater than zero"))
    detail = smallest_detail(x1, y1, x2, y2, r)
    ask_drawable(r, detail)
    one, two = (x1, y1), (x2, y2)
    along = math.degrees(math.atan2(y2 - y1, x2 - x1))
    ends = arc(two, r, along - 90.0, 180.0), arc(one, r, along + 90.0, 180.0)
    if math.dist(one, two) <= detail:
        return Drawing([], [*ends])
    sides = Edge(ends[0].end, ends[1].start), Edge(ends[1].end, ends[0].start)
    return Drawing([], [ends[0], sides[0], ends[1], sides[1]])


def _guesses(contour: Loop, tolerance: float) -> Iterator[Guess]:
    arcs = [edge for edge in contour if edge.bulge]
    if len(arcs) != 2 or len(contour) > 4:
        return
    # From their chords: the bulges may be off a half turn by the tolerance.
    two, one = (arc.beside(0.0) for arc in arcs)
    r = (arcs[0].chord + arcs[1].chord) / 4
    length, lost = math.dist(one, two), rounding(contour)
    # Nearer together they are one, and this is a circle. A short slot far out is turned a little
    # by the rounding of its ends, as it was when it was drawn.
    if length > lost:
        entity = {"type": "slot", "x1": one[0], "y1": one[1], "x2": two[0], "y2": two[1], "r": r}
        yield Guess(entity, tolerance + lost * r / length)


KIND = Kind(
    "slot",
    N_("Slot"),
    {
        "x1": Number(N_("End 1 centre u")),
        "y1": Number(N_("End 1 centre v")),
        "x2": Number(N_("End 2 centre u")),
        "y2": Number(N_("End 2 centre v")),
        "r": Number(N_("Half width")),
    },
    _drawing,
    _guesses,
    rank=10,
)
