"""Outlines drawn corner by corner: the list of their points, and the radius of all corners."""

from __future__ import annotations

import math
import re
from typing import Iterator, NoReturn, Sequence

from shapely.geometry import Polygon
from shapely.validation import explain_validity

from tandrel._reasons import Reason
from tandrel.geometry.edges import Point, smallest_detail
from tandrel.geometry.fillets import unrounded
from tandrel.geometry.loops import Loop, enclosed, is_curved, sampled, straight
from tandrel.gui.i18n import N_
from tandrel.kinds.fields import Corners, Number, unpacked
from tandrel.kinds.kind import Drawing, Entity, Guess, Kind, rounded


def entity(points: Sequence[Point], radius: float = 0.0) -> Entity:
    return {"type": "polygon", "points": [[u, v] for u, v in points], "radius": radius}


def _drawing(radius: float, points: bytes) -> Drawing:
    corners = unpacked(points)
    if len(corners) < 3:
        raise ValueError(Reason(N_("an outline needs at least three corners")))
    detail = smallest_detail(*(c for corner in corners for c in corner))
    _ask_distinct(corners, detail)
    _ask_wide(corners, detail)
    _ask_simple(
        corners,
        N_("the outline crosses itself near u = {u}, v = {v}"),
        N_("the outline touches itself near u = {u}, v = {v}"),
    )
    run = corners if enclosed(straight(corners)) > 0 else [corners[0], *corners[:0:-1]]
    loop = rounded(run, radius, detail)
    if is_curved(loop):
        # Arcs that fit don't cross, but in a neck far narrower than they are their points may.
        narrow = N_("the rounded outline is too narrow near u = {u}, v = {v}")
        _ask_simple(sampled(loop), narrow, narrow)
    return Drawing(corners, loop)


def _ask_distinct(corners: Sequence[Point], detail: float) -> None:
    for k, corner in enumerate(corners):
        if math.dist(corners[k - 1], corner) <= detail:
            one, two = (k, k + 1) if k else (len(corners), 1)
            text = N_("corners {one} and {two} are the same point, u = {u}, v = {v}")
            raise ValueError(Reason(text, {"one": one, "two": two}, u=corner[0], v=corner[1]))


def _ask_wide(corners: Sequence[Point], detail: float) -> None:
    """Corners that all lie on one line are refused."""
    u0, v0 = corners[0]
    far = max(corners, key=lambda corner: math.dist(corners[0], corner))
    du, dv = far[0] - u0, far[1] - v0
    across = max(abs((u - u0) * dv - (v - v0) * du) for u, v in corners)
    if across <= detail * math.hypot(du, dv):
        text = N_("the outline encloses no area: all its corners lie on one line")
        raise ValueError(Reason(text))


def _ask_simple(corners: Sequence[Point], crosses: str, touches: str) -> None:
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


def _guesses(contour: Loop, tolerance: float) -> Iterator[Guess]:
    """The outline with all its corners rounded alike; that of straight edges needs no guess."""
    if is_curved(contour):
        corners, radius = unrounded(contour)
        if corners:
            yield Guess(entity(corners, radius), tolerance)


KIND = Kind(
    "polygon",
    N_("Outline"),
    {"radius": Number(N_("Corner radius")), "points": Corners()},
    _drawing,
    _guesses,
    rank=50,
)
