"""The view, snapping, picking and repainting of the editor, written plainly in Python.

What the benchmarks measure the module against, and what the random user compares it with. The
rest of an editor is the business of who has these operations.
"""

import math
from typing import Any

import numpy as np
from tandrel.gui import sketcher
from tests.support.types import CARD

AXIS_1, AXIS_2, HIGHLIGHT = "#D2504B", "#3E9B5B", "#E8833A"
LEAST_GRID_PIXELS = 10


class PythonOperations:
    """For a class that has these attributes and operations of an editor."""

    canvas: Any
    sk: Any
    sel: Any
    refs: Any
    dim: Any
    plane: Any
    snap: Any
    clicks: Any
    scale: Any
    centre: Any
    grid_step: Any
    _ok: Any
    _dimensions: Any
    _preview: Any

    def to_screen(self, p):
        w, h = self.canvas.winfo_width(), self.canvas.winfo_height()
        return (
            w / 2 + (p[0] - self.centre[0]) * self.scale,
            h / 2 - (p[1] - self.centre[1]) * self.scale,
        )

    def to_world(self, x, y):
        w, h = self.canvas.winfo_width(), self.canvas.winfo_height()
        return np.array(
            [
                self.centre[0] + (x - w / 2) / self.scale,
                self.centre[1] - (y - h / 2) / self.scale,
            ]
        )

    def card(self, e):
        """What is known of the type of an entity; None for an unknown one."""
        return CARD.get(e["type"])

    def key_points(self):
        points: list[Any] = [np.zeros(2)]
        for e in self.sk["entities"]:
            known = self.card(e)
            if known is None:
                continue
            try:
                for u, v in known.centres:
                    points.append(np.array([float(e[u]), float(e[v])]))
                if known.has_corners:
                    for corner in sketcher.S.corners(e):
                        points.append(np.array(corner, float))
            except (ValueError, KeyError):
                continue
        return points + list(self.clicks)

    def snapped(self, x, y):
        w = self.to_world(x, y)
        best, bd = None, float(sketcher.SNAP_PX)
        for k in self.key_points():
            sx, sy = self.to_screen(k)
            d = math.hypot(sx - x, sy - y)
            if d < bd:
                best, bd = k, d
        if best is not None:
            return np.array(best, float)
        if self.snap.get():
            g = self.grid_step()
            return np.round(w / g) * g
        return w

    def pick(self, x, y):
        p = self.to_world(x, y)
        hits = []
        for i, e in enumerate(self.sk["entities"]):
            if not self._ok(e):
                continue
            o = sketcher.S.outline(e)
            pixels = np.array([self.to_screen(q) for q in o])
            near = np.hypot(pixels[:, 0] - x, pixels[:, 1] - y).min() <= sketcher.SNAP_PX
            if near or sketcher.S.inside(o, p):
                hits.append((sketcher.S.area(e), i))
        return min(hits)[1] if hits else None

    def redraw(self):
        c = self.canvas
        c.delete("all")
        w, h = c.winfo_width(), c.winfo_height()
        if w < 2:
            return
        self._draw_grid(w, h)
        self._draw_axes(w, h)
        for _, points in self.refs:
            if len(points) >= 2:
                flat = self._flat(points)
                c.create_line(*flat, *flat[:2], fill=sketcher.PAL["muted"], dash=(2, 3))
        self._draw_shapes()
        self._preview()

    def _draw_grid(self, w, h):
        lo, hi = self.to_world(0, h), self.to_world(w, 0)
        g = self.grid_step()
        while g * self.scale < LEAST_GRID_PIXELS:
            g *= 5
        if not np.isfinite([*lo, *hi, g]).all():
            return
        for u in multiples(g, lo[0], hi[0]):
            x = self.to_screen((u, 0))[0]
            self.canvas.create_line(x, 0, x, h, fill=sketcher.PAL["bg"])
        for v in multiples(g, lo[1], hi[1]):
            y = self.to_screen((0, v))[1]
            self.canvas.create_line(0, y, w, y, fill=sketcher.PAL["bg"])

    def axis_names(self):
        if self.dim == 3:
            return sketcher.S.AXES.get(self.plane.get(), ("x", "y"))
        return "x", "y"

    def _draw_axes(self, w, h):
        c = self.canvas
        ox, oy = self.to_screen((0, 0))
        a, b = self.axis_names()
        c.create_line(0, oy, w, oy, fill=AXIS_1, dash=(4, 3))
        c.create_line(ox, 0, ox, h, fill=AXIS_2, dash=(4, 3))
        c.create_text(w - 6, oy - 4, text=a, anchor="se", fill=AXIS_1)
        c.create_text(ox + 4, 6, text=b, anchor="nw", fill=AXIS_2)

    def _draw_shapes(self):
        entities = self.sk["entities"]
        depth = self._depths(entities)
        for i in sorted(range(len(entities)), key=lambda i: depth[i]):
            e = entities[i]
            if not self._ok(e):
                continue
            self.canvas.create_polygon(
                *self._flat(sketcher.S.outline(e)),
                fill=sketcher.PAL["accent_soft" if depth[i] % 2 == 0 else "panel"],
                outline=HIGHLIGHT if i == self.sel else sketcher.PAL["accent"],
                width=3 if i == self.sel else 2,
            )
            if i == self.sel:
                self._dimensions(e)

    def _depths(self, entities):
        try:
            if all(self._ok(e) for e in entities):
                return sketcher.S.depths(self.sk)
        except (ValueError, KeyError):
            pass
        return [0] * len(entities)

    def _flat(self, points):
        return [value for p in points for value in self.to_screen(p)]


def multiples(step, first, last):
    """The multiples of a step, from the last one below the range, as adding it up gives them.

    They end early where the numbers are so large that the step no longer changes them.
    """
    at = math.floor(first / step) * step
    while at <= last:
        yield at
        if at + step == at:
            return
        at += step


class PythonEditor(PythonOperations, sketcher.SketchEditor):
    """An editor that behaves like the module's, operation by operation.

    Everything that isn't above is inherited, so it also shows that the editor's operations can be
    overridden in a subclass.
    """
