"""Rectangles: x and y of the lower left corner, w, h, and the radius of all corners, 0 = sharp."""

from __future__ import annotations

from typing import Iterator

from tandrel._reasons import Reason
from tandrel.geometry.edges import smallest_detail
from tandrel.geometry.fillets import unrounded
from tandrel.geometry.loops import Loop
from tandrel.gui.i18n import N_
from tandrel.kinds.fields import Number
from tandrel.kinds.kind import Drawing, Guess, Kind, ask_drawable, ask_positive, rounded

_ROOM = 1e-8  # by how much of it a radius may be too large, for rounding


def _drawing(x: float, y: float, w: float, h: float, radius: float) -> Drawing:
    ask_positive(w, N_("the width must be greater than zero"))
    ask_positive(h, N_("the height must be greater than zero"))
    detail = smallest_detail(x, y, x + w, y + h)
    ask_drawable(min(w, h), detail)
    half = min(w, h) / 2
    if radius > half * (1 + _ROOM):
        text = N_("the corner radius {radius} is larger than half of the shorter side, {half}")
        raise ValueError(Reason(text, radius=radius, half=half))
    radius = min(radius, half)
    corners = [(x, y), (x + w, y), (x + w, y + h), (x, y + h)]
    return Drawing(corners, rounded(corners, radius, detail))


def _guesses(contour: Loop, tolerance: float) -> Iterator[Guess]:
    corners, radius = unrounded(contour)
    if len(corners) == 4:
        us, vs = zip(*corners)
        x, y = min(us), min(vs)
        w, h = max(us) - x, max(vs) - y
        entity = {"type": "rectangle", "x": x, "y": y, "w": w, "h": h, "radius": radius}
        yield Guess(entity, tolerance)


KIND = Kind(
    "rectangle",
    N_("Rectangle"),
    {
        "x": Number(N_("Corner u")),
        "y": Number(N_("Corner v")),
        "w": Number(N_("Width")),
        "h": Number(N_("Height")),
        "radius": Number(N_("Corner radius")),
    },
    _drawing,
    _guesses,
    rank=30,
)
