"""What an editor must make of entities and points, stated plainly to compare it with."""

from __future__ import annotations

import copy
import math
from collections.abc import Iterator
from contextlib import suppress
from typing import Any

from support.types import CARDS
from support.types.card import Entity, Point
from tandrel import sketch as S
from tandrel.geometry.edges import Points
from tandrel.gui.i18n import tr
from tandrel.gui.widgets import units

POSITIONS = (("x", "y"), ("xc", "yc"), ("x1", "y1"), ("x2", "y2"))


def outline(e: Any) -> Points | None:
    """The outline of an entity, None where it has none."""
    try:
        return S.outline(e)
    except (ValueError, KeyError, TypeError):
        return None


def length(value: Any) -> str:
    return units().fmt(value, "length")


def summary(e: Any) -> str:
    """The size of an entity in a few words."""
    kind = e["type"]
    if kind == "rectangle":
        return f"{length(e['w'])} x {length(e['h'])}"
    if kind == "circle":
        return tr("diameter {d}").format(d=length(2 * float(e["r"])))
    if kind == "regular":
        across = length(2 * float(e["r"]))
        return tr("{n} sides, {d} across corners").format(n=int(e["n"]), d=across)
    if kind == "slot":
        x1, y1, x2, y2, r = (float(e[key]) for key in ("x1", "y1", "x2", "y2", "r"))
        return f"{length(math.hypot(x2 - x1, y2 - y1) + 2 * r)} x {length(2 * r)}"
    return tr("{n} corners").format(n=len(e.get("points", [])))


def key_points(e: Any) -> Iterator[Point]:
    """The points of an entity that the pointer snaps to, as far as the entity can be read."""
    for card in CARDS:
        if card.name == e["type"]:
            with suppress(ValueError, KeyError):
                for u, v in card.centres:
                    yield float(e[u]), float(e[v])
                if card.has_corners:
                    for u, v in S.corners(e):
                        yield float(u), float(v)


def moved(e: Entity, shift: Point) -> Entity:
    """A copy of an entity at another place."""
    du, dv = shift
    n = copy.deepcopy(e)
    for u_key, v_key in POSITIONS:
        if u_key in n:
            n[u_key] = float(n[u_key]) + du
            n[v_key] = float(n[v_key]) + dv
    if n["type"] == "polygon":
        n["points"] = [[float(p[0]) + du, float(p[1]) + dv] for p in n["points"]]
    return n


def from_drag(tool: str, sides: str, a: Point, b: Point) -> Entity | None:
    """The entity that a tool makes of a drag from a to b."""
    for card in CARDS:
        if card.tool.dragged and card.tool.name == tool:
            return card.drawn(a, b, sides=number_of_sides(sides))
    return None


def number_of_sides(text: str) -> int:
    try:
        return max(3, int(text))
    except ValueError:
        return 6
