"""A program that opens the editor on a shape of each type and overrides one of its operations.

It prints what the user accepts. Type checkers accept it in their strictest mode.
"""

from __future__ import annotations

import tkinter as tk
from typing import TYPE_CHECKING

import numpy as np

from tandrel.gui import sketcher

if TYPE_CHECKING:
    from tandrel.gui.sketcher import (
        _Circle,
        _Entity,
        _Polygon,
        _Rectangle,
        _Regular,
        _Sketch,
        _Slot,
    )


def plate() -> _Sketch:
    outside: _Rectangle = {
        "type": "rectangle",
        "x": -0.05,
        "y": -0.03,
        "w": 0.1,
        "h": 0.06,
        "radius": 0.005,
    }
    hole: _Circle = {"type": "circle", "xc": -0.035, "yc": 0.0, "r": 0.004}
    nut: _Regular = {"type": "regular", "xc": -0.015, "yc": 0.0, "r": 0.006, "n": 6, "angle": 30.0}
    groove: _Slot = {"type": "slot", "x1": 0.0, "y1": 0.01, "x2": 0.0, "y2": -0.01, "r": 0.003}
    corners = [[0.01, -0.01], [0.04, -0.01], [0.025, 0.015]]
    window: _Polygon = {"type": "polygon", "points": corners, "radius": 0.002}
    return {"plane": "XY", "offset": 0.0, "entities": [outside, hole, nut, groove, window]}


class DrillingEditor(sketcher.SketchEditor):
    """Circles are drilled, and drills come in whole millimetres."""

    def add(self, ent: _Entity) -> None:
        if ent["type"] == "circle":
            ent["r"] = max(round(ent["r"] * 2000), 1) / 2000
        super().add(ent)


def main() -> None:
    root = tk.Tk()
    sheet = np.array([[-0.06, -0.04], [0.06, -0.04], [0.06, 0.04], [-0.06, 0.04]])
    editor = DrillingEditor(root, plate(), title="Plate", references=[("sheet", sheet)])
    editor.tool.set("circle")
    accepted = editor.run()
    root.destroy()
    if accepted is None:
        print("Cancelled")
        return
    for entity in accepted["entities"]:
        print(f"{sketcher.TYPE_LABEL[entity['type']]}: {sketcher.describe(entity)}")


if __name__ == "__main__":
    main()
