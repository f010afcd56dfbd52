"""A drawing of the profile as it will be cut, with its overall size."""

from __future__ import annotations

import tkinter as tk
from typing import Any, Dict, Iterable, List, Tuple

from shapely.geometry.base import BaseGeometry

from tandrel import profile
from tandrel.gui.widgets import PAL, px, units

_MARGIN = 56


class ProfileView(tk.Canvas):
    """Shows one sketch, always whole, at the size that the window leaves."""

    def __init__(self, parent: tk.Misc) -> None:
        super().__init__(parent, width=px(620), height=px(420), background=PAL["panel"])
        self.configure(highlightthickness=1, highlightbackground=PAL["line"])
        self._region: BaseGeometry | None = None
        self.bind("<Configure>", lambda _event: self.repaint())

    def show(self, sketch: Dict[str, Any] | None) -> None:
        """Show this sketch from now on, or nothing."""
        self._region = None if sketch is None else profile.region(sketch)
        self.repaint()

    def size_text(self) -> str:
        """Overall width and height in display units; empty where there is nothing to measure."""
        if self._region is None or self._region.is_empty:
            return ""
        left, bottom, right, top = self._region.bounds
        return f"{_length(right - left)} × {_length(top - bottom)}"

    def repaint(self) -> None:
        self.delete("all")
        if self._region is None or self._region.is_empty:
            return
        left, bottom, right, top = self._region.bounds
        room = [max(n - 2 * px(_MARGIN), 1) for n in (self.winfo_width(), self.winfo_height())]
        scale = min(room[0] / (right - left), room[1] / (top - bottom))
        mid_x, mid_y = (left + right) / 2, (bottom + top) / 2

        def on_canvas(points: Iterable[Tuple[float, float]]) -> List[float]:
            flat: List[float] = []
            for x, y in points:
                flat.append(self.winfo_width() / 2 + (x - mid_x) * scale)
                flat.append(self.winfo_height() / 2 - (y - mid_y) * scale)
            return flat

        for piece in profile.polygons(self._region):
            for ring in (piece.exterior, *piece.interiors):
                fill = PAL["accent_soft"] if ring is piece.exterior else PAL["panel"]
                self.create_polygon(
                    on_canvas(ring.coords), fill=fill, outline=PAL["accent"], width=2
                )
        self._dimensions(on_canvas([(left, bottom), (right, top)]))

    def _dimensions(self, box: List[float]) -> None:
        """Dimension lines below and to the left of the box, with the lengths in them."""
        left, below, right, above = box
        width, height = self.size_text().split(" × ")
        gap, overhang = px(26), px(6)
        y, x = below + gap, left - gap
        for end in (left, right):
            self.create_line(end, below + overhang, end, y + overhang, fill=PAL["muted"])
        for end in (above, below):
            self.create_line(left - overhang, end, x - overhang, end, fill=PAL["muted"])
        head = (px(9), px(9), px(3))
        line: Dict[str, Any] = {"fill": PAL["muted"], "arrow": "both", "arrowshape": head}
        self.create_line(left, y, right, y, **line)
        self.create_line(x, above, x, below, **line)
        self._label((left + right) / 2, y, width, 0)
        self._label(x, (above + below) / 2, height, 90)

    def _label(self, x: float, y: float, text: str, angle: float) -> None:
        label = self.create_text(x, y, text=text, fill=PAL["muted"])
        self.itemconfigure(label, angle=angle)
        x1, y1, x2, y2 = self.bbox(label)
        self.create_rectangle(x1 - 4, y1 - 4, x2 + 4, y2 + 4, fill=PAL["panel"], width=0)
        self.tag_raise(label)


def _length(value: float) -> str:
    return units().fmt(value, "length")
