"""Regular polygons: xc and yc of the centre, r from there to the corners, their number n, and the
angle of the first one in degrees."""

from __future__ import annotations

import math
from typing import Iterator

from tandrel._reasons import Reason
from tandrel.geometry.edges import polar, smallest_detail
from tandrel.geometry.loops import Loop, is_curved, straight
from tandrel.gui.i18n import N_
from tandrel.kinds.fields import Count, Number
from tandrel.kinds.kind import Drawing, Guess, Kind, ask_drawable, ask_positive

MOST_SIDES = 1000


def _drawing(xc: float, yc: float, r: float, n: float, angle: float) -> Drawing:
    ask_positive(r, N_("the radius must be greater than zero"))
    if n != round(n):
        raise ValueError(Reason(N_("the number of sides must be a whole number")))
    if not 3 <= n <= MOST_SIDES:
        text = N_("the number of sides must lie between 3 and {most}")
        raise ValueError(Reason(text, {"most": MOST_SIDES}))
    ask_drawable(r, smallest_detail(xc, yc, r))
    corners = [polar((xc, yc), r, angle + 360.0 * k / n) for k in range(round(n))]
    return Drawing(corners, straight(corners))


def _guesses(contour: Loop, tolerance: float) -> Iterator[Guess]:
    if is_curved(contour) or not 3 <= len(contour) <= MOST_SIDES:
        return
    corners = [edge.start for edge in contour]
    n = len(corners)
    u, v = (math.fsum(c) / n for c in zip(*corners))
    r = math.fsum(math.dist((u, v), corner) for corner in corners) / n
    angle = math.degrees(math.atan2(corners[0][1] - v, corners[0][0] - u))
    # The digits that are dropped are noise: they move the corners by less than any tolerance.
    angle = round(angle, 11)
    entity = {"type": "regular", "xc": u, "yc": v, "r": r, "n": n, "angle": angle}
    yield Guess(entity, tolerance)


KIND = Kind(
    "regular",
    N_("Polygon"),
    {
        "xc": Number(N_("Centre u")),
        "yc": Number(N_("Centre v")),
        "r": Number(N_("Radius")),
        "n": Count(N_("Sides")),
        "angle": Number(N_("Angle of first corner (degrees)")),
    },
    _drawing,
    _guesses,
    rank=40,
)
