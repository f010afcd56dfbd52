"""What an editor must make of entities and points, stated plainly to compare it with."""

from __future__ import annotations

import copy
import math
from collections.abc import Iterator
from typing import Any

from tandrel import sketch as S
from tandrel.geometry.edges import Points
from tandrel.gui.i18n import tr
from tandrel.gui.widgets import units

Entity = dict[str, Any]
Point = tuple[float, float]

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
    kind = e["type"]
    try:
        if kind in ("circle", "regular"):
            yield float(e["xc"]), float(e["yc"])
        if kind == "slot":
            yield float(e["x1"]), float(e["y1"])
            yield float(e["x2"]), float(e["y2"])
        if kind in ("rectangle", "polygon", "regular"):
            for u, v in S.corners(e):
                yield float(u), float(v)
    except (ValueError, KeyError):
        return


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


def distance(a: Point, b: Point) -> float:
    return math.sqrt((b[0] - a[0]) * (b[0] - a[0]) + (b[1] - a[1]) * (b[1] - a[1]))


def from_drag(tool: str, sides: str, a: Point, b: Point) -> Entity | None:
    """The entity that a tool makes of a drag from a to b."""
    du, dv = b[0] - a[0], b[1] - a[1]
    if tool == "rectangle":
        if du == 0 or dv == 0:
            return None
        x, y = min(a[0], b[0]), min(a[1], b[1])
        return {"type": "rectangle", "x": x, "y": y, "w": abs(du), "h": abs(dv), "radius": 0.0}
    r = distance(a, b)
    if r == 0 or tool not in ("circle", "regular"):
        return None
    e = {"type": tool, "xc": a[0], "yc": a[1], "r": r}
    if tool == "regular":
        e["n"] = number_of_sides(sides)
        e["angle"] = round(math.degrees(math.atan2(dv, du)), 6)
    return e


def number_of_sides(text: str) -> int:
    try:
        return max(3, int(text))
    except ValueError:
        return 6


def slot(a: Point, b: Point, p: Point) -> Entity | None:
    """The slot with the end centres a and b whose long side runs through p."""
    axis = distance(a, b)
    if axis == 0:
        return None
    du, dv = b[0] - a[0], b[1] - a[1]
    r = abs(du * (p[1] - a[1]) - dv * (p[0] - a[0])) / axis
    if r == 0:
        return None
    return {"type": "slot", "x1": a[0], "y1": a[1], "x2": b[0], "y2": b[1], "r": r}
