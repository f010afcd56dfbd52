"""The pictures of a check box, drawn smoothly at any size."""

from __future__ import annotations

import math
import tkinter as tk

_SAMPLES = 4
# In units of the box: the edge, half the stroke of the tick, and the tick's corners.
_EDGE, _ROUNDING, _STROKE = 0.07, 0.16, 0.075
_TICK = ((0.23, 0.52), (0.43, 0.71), (0.78, 0.30))


def check_box(root: tk.Misc, name: str, size: int, face: str, edge: str, tick: str | None) -> str:
    """Make a Tk image of a box, ticked where `tick` is a colour. It lives as long as `root`."""
    colours = {"face": _rgb(face), "edge": _rgb(edge), "tick": _rgb(tick or face)}
    root.tk.call("image", "create", "photo", name, "-width", size, "-height", size)
    for y in range(size):
        for x in range(size):
            samples = [_part((x + i) / size, (y + j) / size) for i in _OFFSETS for j in _OFFSETS]
            inside = [colours[part] for part in samples if part is not None]
            if 2 * len(inside) >= len(samples):
                mean = (sum(channel) // len(inside) for channel in zip(*inside))
                colour = "#{:02X}{:02X}{:02X}".format(*mean)
                root.tk.call(name, "put", colour, "-to", x, y)
    return name


_OFFSETS = [(k + 0.5) / _SAMPLES for k in range(_SAMPLES)]


def _part(x: float, y: float) -> str | None:
    """What lies at a point of the unit square; None outside the rounded box."""
    if any(_distance(x, y, *ends) < _STROKE for ends in zip(_TICK, _TICK[1:])):
        return "tick"
    depth = _ROUNDING - math.hypot(*(max(abs(c - 0.5) - 0.5 + _ROUNDING, 0) for c in (x, y)))
    if depth < 0:
        return None
    return "edge" if min(depth, 0.5 - abs(x - 0.5), 0.5 - abs(y - 0.5)) < _EDGE else "face"


def _distance(x: float, y: float, a: tuple[float, float], b: tuple[float, float]) -> float:
    """How far a point is from the line between two others."""
    dx, dy = b[0] - a[0], b[1] - a[1]
    along = ((x - a[0]) * dx + (y - a[1]) * dy) / (dx * dx + dy * dy)
    along = min(max(along, 0.0), 1.0)
    return math.hypot(x - a[0] - along * dx, y - a[1] - along * dy)


def _rgb(colour: str) -> tuple[int, ...]:
    return tuple(bytes.fromhex(colour[1:]))
