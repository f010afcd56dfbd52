"""The smallest application around the sketch editor, in one file.

    PYTHONPATH=build python3 docs/examples/one_file_application.py

or, with the wheel installed, without PYTHONPATH. It makes the three modules that the editor asks
for what it doesn't do itself, as plainly as they can be, and opens the editor on a plate with a
hole.
"""

import math
import sys
import tkinter as tk
from tkinter import ttk
from types import ModuleType, SimpleNamespace

import numpy as np

# --- tandrel.sketch: what the numbers of an entity mean


def corners(e):
    """The corners of rectangles, regular polygons and free outlines, in order."""
    if e["type"] == "rectangle":
        x, y, w, h = (float(e[key]) for key in ("x", "y", "w", "h"))
        return [(x, y), (x + w, y), (x + w, y + h), (x, y + h)]
    if e["type"] == "regular":
        first, turn = math.radians(e["angle"]), 2 * math.pi / e["n"]
        return [_at(e["xc"], e["yc"], e["r"], first + k * turn) for k in range(e["n"])]
    return [(float(u), float(v)) for u, v in e["points"]]


def outline(e):
    """The closed outline as points; ValueError, with a reason for the user, where there is none."""
    if e.get("radius"):
        raise ValueError("this application can't round corners")
    if e["type"] == "circle":
        turns = np.linspace(0, 2 * math.pi, 64, endpoint=False)
        points = [_at(e["xc"], e["yc"], e["r"], turn) for turn in turns]
    elif e["type"] == "slot":
        along = math.atan2(e["y2"] - e["y1"], e["x2"] - e["x1"])
        half = np.linspace(-math.pi / 2, math.pi / 2, 32)
        points = [_at(e["x2"], e["y2"], e["r"], along + turn) for turn in half]
        points += [_at(e["x1"], e["y1"], e["r"], along + math.pi + turn) for turn in half]
    else:
        points = corners(e)
    if len(points) < 3 or not _shoelace(points):
        raise ValueError("the shape has no area")
    return np.array(points)


def area(e):
    return abs(_shoelace(outline(e)))


def inside(points, p):
    """Whether a ray from `p` to the right crosses the closed outline an odd number of times."""
    crossings = 0
    for (u1, v1), (u2, v2) in zip(points, np.roll(points, -1, axis=0)):
        if (v1 > p[1]) != (v2 > p[1]):
            crossings += p[0] < u1 + (u2 - u1) * (p[1] - v1) / (v2 - v1)
    return crossings % 2 == 1


def depths(sk):
    """For each entity, in how many of the others it lies: 1 is a hole, 2 an island in it."""
    outlines = [outline(e) for e in sk["entities"]]
    return [
        sum(inside(other, one[0]) for other in outlines if other is not one) for one in outlines
    ]


def check(sk):
    """What must be put right before OK; an empty list lets the sketch pass."""
    return [] if sk["entities"] else ["The sketch is empty."]


def new():
    return {"plane": "XY", "offset": 0.0, "entities": []}


def _at(u, v, r, turn):
    return (u + r * math.cos(turn), v + r * math.sin(turn))


def _shoelace(points):
    u, v = np.transpose(np.asarray(points, float))
    return float(u @ np.roll(v, -1) - v @ np.roll(u, -1)) / 2


# --- tandrel.gui.widgets: colours, sizes, display units, the form

PAL = {
    "panel": "#10171E",  # the ground of the drawing, and so of holes
    "bg": "#202B36",  # grid lines
    "line": "#7D8894",  # the edge of the canvas
    "muted": "#93A4B5",  # reference outlines
    "accent": "#6DB3F2",  # outlines of shapes
    "accent_soft": "#1B3550",  # their inside
}


class Form(ttk.Frame):
    """Rows of label, entry and unit."""

    def __init__(self, parent, label_width=14):
        super().__init__(parent)
        self.label_width = label_width

    def entry(self, label_text, variable, unit_text, width=10):
        row = ttk.Frame(self)
        row.pack(fill="x")
        ttk.Label(row, text=label_text, width=self.label_width).pack(side="left")
        entry = ttk.Entry(row, textvariable=variable, width=width)
        entry.pack(side="left")
        ttk.Label(row, text=unit_text).pack(side="left")
        return entry

    def note(self, text):
        ttk.Label(self, text=text).pack(anchor="w")


MILLIMETRES = SimpleNamespace(
    from_si=lambda value, quantity: value * 1000,
    to_si=lambda value, quantity: value / 1000,
    fmt=lambda value, quantity: f"{value * 1000:g} mm",
    unit=lambda quantity: "mm",
)

# --- as the modules that the editor imports


def module(name, **names):
    made = ModuleType(name)
    vars(made).update(names)
    sys.modules[name] = made


module(
    "tandrel.sketch",
    **{f.__name__: f for f in (area, check, corners, depths, inside, new, outline)},
    PLANES=("XY", "XZ", "YZ"),
    AXES={"XY": ("x", "y"), "XZ": ("x", "z"), "YZ": ("y", "z")},
)
module("tandrel.gui.i18n", N_=lambda text: text, tr=lambda text: text)
module(
    "tandrel.gui.widgets",
    PAL=PAL,
    Form=Form,
    Tooltip=lambda widget, text: None,
    num_text=lambda x: f"{x:g}",
    px=lambda n: n,
    units=lambda: MILLIMETRES,
)

# --- the editor, in a layout that keeps still

from tandrel.gui.sketcher import SketchEditor  # noqa: E402  (it imports the modules made above)


class SteadyEditor(SketchEditor):
    """Parts of a fixed size: what they show can't push the drawing from under the pointer."""

    def _build(self, allow_plane):
        super()._build(allow_plane)
        side = self.list.master
        side.pack_propagate(False)
        side.configure(width=290)
        lines = ttk.Frame(self.status.master, height=40)
        lines.pack(fill="x", pady=(6, 0), after=self.canvas.master)
        self.status.place(in_=lines, relwidth=1, rely=1, anchor="sw")
        self.status.lift()
        self.geometry("1100x680")
        self.minsize(1000, 640)


PLATE = {
    "plane": "XY",
    "offset": 0.0,
    "entities": [
        {"type": "rectangle", "x": -0.04, "y": -0.03, "w": 0.08, "h": 0.06, "radius": 0.0},
        {"type": "circle", "xc": 0.0, "yc": 0.0, "r": 0.012},
    ],
}


def main():
    window = tk.Tk()
    window.geometry("1100x680")  # that of the editor, which lies over the window's middle
    window.update()
    print(SteadyEditor(window, PLATE, title="Plate").run())
    window.destroy()


if __name__ == "__main__":
    main()
