"""The picture that an editor's state calls for: the items of its canvas, the lowest first.

An item is a tuple of its kind, its coordinates and those of its options that the editor sets, all
as Tk reports them.
"""

from __future__ import annotations

import math
from collections.abc import Iterator, Sequence
from typing import Any, NamedTuple

import numpy as np

from soak.user import shapes
from soak.user.shapes import Entity, Point
from support.types.slot import CARD as slot
from tandrel import sketch as S
from tandrel.gui.widgets import PAL

AXIS_U, AXIS_V, ORANGE = "#D2504B", "#3E9B5B", "#E8833A"
LEAST_GRID_PIXELS = 10

Coordinates = tuple[float, ...]
Item = tuple[Any, ...]


class View(NamedTuple):
    """A canvas and what it shows of the plane."""

    width: float
    height: float
    scale: float
    centre: Point

    def to_screen(self, p: Any) -> Any:
        return (
            self.width / 2 + (p[0] - self.centre[0]) * self.scale,
            self.height / 2 - (p[1] - self.centre[1]) * self.scale,
        )

    def to_world(self, x: float, y: float) -> Point:
        return (
            self.centre[0] + (x - self.width / 2) / self.scale,
            self.centre[1] - (y - self.height / 2) / self.scale,
        )

    def path(self, points: Any) -> Coordinates:
        """The pixels of points, one after the other."""
        xs, ys = self.to_screen(np.asarray(points, dtype=np.float64).T)
        return tuple(map(float, np.column_stack((xs, ys)).ravel()))


def line(coordinates: Coordinates, fill: str, width: int = 1, dash: str = "") -> Item:
    return "line", coordinates, fill, f"{width}.0", dash


def polygon(coordinates: Coordinates, fill: str, outline: str, width: int, dash: str = "") -> Item:
    return "polygon", coordinates, fill, outline, f"{width}.0", dash


def text(pixel: Point, words: str, fill: str, anchor: str = "center") -> Item:
    return "text", pixel, words, fill, anchor


def oval(centre: Point, radius: float, fill: str, outline: str) -> Item:
    x, y = centre
    return "oval", (x - radius, y - radius, x + radius, y + radius), fill, outline, "1.0"


def reference(view: View, points: Any) -> Iterator[Item]:
    if len(points) >= 2:
        yield line(view.path([*points, points[0]]), PAL["muted"], dash="2 3")


def grid(view: View, step: float) -> Iterator[Item]:
    (u1, v1), (u2, v2) = view.to_world(0.0, view.height), view.to_world(view.width, 0.0)
    while step * view.scale < LEAST_GRID_PIXELS:
        step *= 5
    if not all(map(math.isfinite, (u1, v1, u2, v2, step))):
        return
    for u in multiples(step, u1, u2):
        x, _ = view.to_screen((u, 0.0))
        yield line((x, 0.0, x, view.height), PAL["bg"])
    for v in multiples(step, v1, v2):
        _, y = view.to_screen((0.0, v))
        yield line((0.0, y, view.width, y), PAL["bg"])


def multiples(step: float, first: float, last: float) -> Iterator[float]:
    """The multiples of a step, from the last one below the range, as adding it up gives them.

    They end early where the numbers are so large that the step no longer changes them.
    """
    at = math.floor(first / step) * step
    while at <= last:
        yield at
        if at + step == at:
            return
        at += step


def axes(view: View, names: Sequence[str]) -> Iterator[Item]:
    x, y = view.to_screen((0.0, 0.0))
    yield line((0.0, y, view.width, y), AXIS_U, dash="4 3")
    yield line((x, 0.0, x, view.height), AXIS_V, dash="4 3")
    yield text((view.width - 6, y - 4), names[0], AXIS_U, "se")
    yield text((x + 4, 6.0), names[1], AXIS_V, "nw")


def filled_shapes(view: View, sk: dict[str, Any], sel: int | None) -> Iterator[Item]:
    """Every shape that has an outline, outer ones before those inside them."""
    entities = sk["entities"]
    outlines = [shapes.outline(e) for e in entities]
    depths: Sequence[int] = [0] * len(entities)
    if all(points is not None for points in outlines):
        depths = S.depths(sk)
    for i in sorted(range(len(entities)), key=lambda i: depths[i]):
        if outlines[i] is None:
            continue
        fill = PAL["panel"] if depths[i] % 2 else PAL["accent_soft"]
        pixels = view.path(outlines[i])
        if i == sel:
            yield polygon(pixels, fill, ORANGE, 3)
            yield from dimensions(view, entities[i])
        else:
            yield polygon(pixels, fill, PAL["accent"], 2)


def dimensions(view: View, e: Entity) -> Iterator[Item]:
    """The labels of the selected shape."""
    card = shapes.card(e)
    for place, (dx, dy), words, anchor in card.dimensions(e, shapes.length) if card else ():
        x, y = view.to_screen(place)
        yield text((x + dx, y + dy), words, ORANGE, anchor)


def clicked(view: View, tool: str, clicks: Sequence[Point], cursor: Point) -> Iterator[Item]:
    """The shape that is being clicked, and the dot where a click would land."""
    dot = view.to_screen(cursor)
    corners = [view.to_screen(p) for p in clicks]
    if tool == "line" and corners:
        yield line(tuple(c for pixel in (*corners, dot) for c in pixel), ORANGE, 2)
        for pixel in corners:
            yield oval(pixel, 3, "", ORANGE)
    if tool == "slot" and len(corners) == 1:
        yield line((*corners[0], *dot), ORANGE, 2, "5 3")
    elif tool == "slot" and corners:
        yield from rubber_band(view, slot.drawn(clicks[0], clicks[1], cursor))
    yield oval(dot, 2, ORANGE, "")


def rubber_band(view: View, e: Entity | None) -> Iterator[Item]:
    outline = None if e is None else shapes.outline(e)
    if outline is not None:
        yield polygon(view.path(outline), "", ORANGE, 2, "5 3")
