"""A drawing of the profile as it will be cut, with its overall size."""

from __future__ import annotations

import tkinter as tk
from typing import Any, Dict, List, Optional, Sequence, Tuple

import numpy as np
import numpy.typing as npt
from shapely.geometry import Polygon
from shapely.geometry.base import BaseGeometry

from tandrel import profile
from tandrel.gui.widgets import PAL, px, units

_MARGIN = 56


class ProfileView(tk.Canvas):
    """Shows one profile, always whole, at the size that the window leaves."""

    def __init__(self, parent: tk.Misc) -> None:
        super().__init__(parent, width=px(360), height=px(240), background=PAL["panel"])
        self.configure(highlightthickness=1, highlightbackground=PAL["line"])
        self._region: Optional[BaseGeometry] = None
        self._size = 0.0, 0.0
        self._outlines: List[Tuple[npt.NDArray[np.float64], str]] = []
        self._instead = ""
        self._waiting: Optional[str] = None
        self.bind("<Configure>", lambda _event: self._repaint_soon())
        self.bind("<Destroy>", lambda _event: self._wait_no_more())

    def show(
        self, region: Optional[BaseGeometry], size: Tuple[float, float], instead: str = ""
    ) -> None:
        """Show this profile of this overall size, or a text where there is nothing to show."""
        self._size = size
        self._region = None if region is None or region.is_empty else region
        self._instead = instead
        # Taking a geometry apart costs as much as drawing it, which every new size asks for.
        self._outlines = [
            (np.array(ring.coords)[:, :2], colour)
            for piece in profile.polygons(self._region or Polygon())
            for ring, colour in [
                (piece.exterior, "accent_soft"),
                *((hole, "panel") for hole in piece.interiors),
            ]
        ]
        self.repaint()

    def size_texts(self) -> List[str]:
        """Overall width and height in display units."""
        return [units().fmt(length, "length") for length in self._size]

    def repaint(self) -> None:
        self._wait_no_more()
        self.delete("all")
        width, height = self.winfo_width(), self.winfo_height()
        if self._region is None:
            text = self.create_text(width / 2, height / 2, text=self._instead, fill=PAL["muted"])
            self.itemconfigure(text, width=px(300), justify="center")
            return
        left, bottom, right, top = self._region.bounds
        room_x, room_y = (max(n - 2 * px(_MARGIN), 1) for n in (width, height))
        scale = min(room_x / (right - left), room_y / (top - bottom))
        middle = np.array([(left + right) / 2, (bottom + top) / 2])

        def on_canvas(points: npt.ArrayLike) -> list[float]:
            offset = (np.asarray(points) - middle) * (scale, -scale)
            flat: list[float] = (offset + (width / 2, height / 2)).ravel().tolist()
            return flat

        # Straight to Tk: tkinter would walk through the coordinates point by point.
        draw, look = self.tk.call, ("-outline", PAL["accent"], "-width", px(1.7))
        for outline, fill in self._outlines:
            draw(str(self), "create", "polygon", on_canvas(outline), "-fill", PAL[fill], *look)
        self._dimensions(on_canvas([(left, bottom), (right, top)]))

    def _repaint_soon(self) -> None:
        """Repaint once, however many sizes a window goes through while it is dragged."""
        if self._waiting is None:
            self._waiting = self.after_idle(self.repaint)

    def _wait_no_more(self) -> None:
        if self._waiting is not None:
            self.after_cancel(self._waiting)
            self._waiting = None

    def _dimensions(self, box: Sequence[float]) -> None:
        """Dimension lines below and to the left of the box, with the lengths in them."""
        left, below, right, above = box
        width, height = self.size_texts()
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
