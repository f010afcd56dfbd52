"""A drawing of the profile as it will be cut, with its overall size."""

from __future__ import annotations

import tkinter as tk
from typing import Any, Dict, List, Optional, Sequence, Tuple

import numpy as np
import numpy.typing as npt

from tandrel.geometry import loops
from tandrel.geometry.edges import Edge
from tandrel.geometry.loops import Box
from tandrel.gui.widgets import PAL, px, units
from tandrel.profile import Contour

_MARGIN = 56
_SMOOTH = 0.02  # pixels between an arc and its chords, at most: their ends fall on whole pixels
_STEP = 1.2  # by which a notch of the wheel zooms
# The deepest view is that much larger than the whole, and the widest that much smaller.
_DEEPEST, _WIDEST = 1e5, 1e-2

_Pixels = npt.NDArray[np.float64]
_MARK, _MARK_COLOUR = 9, "#E8833A"  # the radius of a mark's ring; what the editor marks things with


class ProfileView(tk.Canvas):
    """Shows one profile: whole, at the size that the window leaves, until the user zooms or pans.

    The wheel zooms about the pointer, the middle or the right button pans.
    """

    def __init__(self, parent: tk.Misc) -> None:
        super().__init__(parent, width=px(360), height=px(240), background=PAL["panel"])
        self.configure(highlightthickness=1, highlightbackground=PAL["line"])
        self._outlines: List[_Outline] = []
        self._box: Optional[Box] = None
        self._size = 0.0, 0.0
        self._instead = ""
        self._marked: Optional[Tuple[float, float]] = None
        self._waiting: Optional[str] = None
        self._is_fitted = True
        self._scale = 1.0  # pixels to the metre
        self._centre: _Pixels = np.zeros(2)  # what is shown in the middle
        self._pan: Tuple[int, int, _Pixels] = 0, 0, self._centre
        self.bind("<Configure>", lambda _event: self._repaint_soon())
        self.bind("<Destroy>", lambda _event: self._wait_no_more())
        self.bind("<MouseWheel>", lambda e: self._zoom(_STEP if e.delta > 0 else 1 / _STEP, e))
        self.bind("<Button-4>", lambda e: self._zoom(_STEP, e))
        self.bind("<Button-5>", lambda e: self._zoom(1 / _STEP, e))
        for button in (2, 3):
            self.bind(f"<ButtonPress-{button}>", self._start_pan)
            self.bind(f"<B{button}-Motion>", self._move_pan)

    def show(
        self, contours: Sequence[Contour], size: Tuple[float, float], instead: str = ""
    ) -> None:
        """Show this profile of this overall size, or a text where there is nothing to show."""
        self._size = size
        self._instead = instead
        # Holes lie over what they are cut out of, and islands over them.
        by_size = sorted(contours, key=lambda contour: -abs(contour.area))
        self._outlines = [_Outline(contour) for contour in by_size]
        box = _around([outline.box for outline in self._outlines]) if contours else None
        if box is None or self._box is None:
            self._is_fitted = True
        self._box = box
        self.repaint()

    def fit(self) -> None:
        """Show the whole again."""
        self._is_fitted = True
        self.repaint()

    def mark(self, place: Optional[Tuple[float, float]]) -> None:
        """Show where a place of the plane is, inside the profile or around it; None, no more.

        The view that the user chose stays, unless the place is out of sight.
        """
        self._marked = place
        if place is not None and not self._sees(place):
            self._is_fitted = True
        self.repaint()

    def _sees(self, place: Tuple[float, float]) -> bool:
        """Whether all of a mark there would be in sight."""
        x, y = self._on_canvas(np.array(place))
        edge = px(2 * _MARK)
        width, height = self.winfo_width(), self.winfo_height()
        return edge <= x <= width - edge and edge <= y <= height - edge

    def size_texts(self) -> List[str]:
        """Overall width and height in display units."""
        return [units().fmt(length, "length") for length in self._size]

    def repaint(self) -> None:
        self._wait_no_more()
        self.delete("all")
        width, height = self.winfo_width(), self.winfo_height()
        if self._box is None:
            text = self.create_text(width / 2, height / 2, text=self._instead, fill=PAL["muted"])
            self.itemconfigure(text, width=px(300), justify="center")
            return
        if self._is_fitted:
            whole = self._box if self._marked is None else _around([self._box, 2 * self._marked])
            self._scale = self._fitted_scale(whole)
            self._centre = np.array(whole).reshape(2, 2).mean(axis=0)
        (u, v), half_u, half_v = self._centre, width / 2 / self._scale, height / 2 / self._scale
        sight = u - half_u, v - half_v, u + half_u, v + half_v
        # Straight to Tk: tkinter would walk through the coordinates point by point.
        draw, look = self.tk.call, ("-outline", PAL["accent"], "-width", px(1.7))
        for outline in self._outlines:
            if _meet(outline.box, sight):
                points = outline.points(_SMOOTH / self._scale, sight)
                fill = PAL["panel" if outline.is_hole else "accent_soft"]
                draw(str(self), "create", "polygon", self._on_canvas(points), "-fill", fill, *look)
        left, bottom, right, top = self._box
        self._dimensions(self._on_canvas(np.array([(left, bottom), (right, top)])))
        if self._marked is not None:
            self._paint_mark(*self._on_canvas(np.array(self._marked)))

    def _paint_mark(self, x: float, y: float) -> None:
        inner, outer = px(_MARK), px(2 * _MARK)
        look: Dict[str, Any] = {"width": px(2), "tags": "mark"}
        ring = (x - inner, y - inner, x + inner, y + inner)
        self.create_oval(*ring, outline=_MARK_COLOUR, **look)
        for dx, dy in ((1, 0), (-1, 0), (0, 1), (0, -1)):
            line = (x + dx * inner, y + dy * inner, x + dx * outer, y + dy * outer)
            self.create_line(*line, fill=_MARK_COLOUR, **look)

    def _fitted_scale(self, box: Box) -> float:
        left, bottom, right, top = box
        room_x, room_y = (
            max(n - 2 * px(_MARGIN), 1) for n in (self.winfo_width(), self.winfo_height())
        )
        return min(room_x / (right - left), room_y / (top - bottom))

    def _on_canvas(self, points: _Pixels) -> List[float]:
        middle = self.winfo_width() / 2, self.winfo_height() / 2
        flat: List[float] = (
            ((points - self._centre) * (self._scale, -self._scale) + middle).ravel().tolist()
        )
        return flat

    def _zoom(self, factor: float, e: tk.Event[tk.Misc]) -> None:
        """What is under the pointer stays there."""
        if self._box is None:
            return
        whole = self._fitted_scale(self._box)
        scale = min(max(self._scale * factor, _WIDEST * whole), _DEEPEST * whole)
        away = np.array([e.x - self.winfo_width() / 2, self.winfo_height() / 2 - e.y])
        self._centre = self._centre + away * (1 / self._scale - 1 / scale)
        self._scale = scale
        self._is_fitted = False
        self._repaint_soon()

    def _start_pan(self, e: tk.Event[tk.Misc]) -> None:
        self._pan = e.x, e.y, self._centre

    def _move_pan(self, e: tk.Event[tk.Misc]) -> None:
        x, y, centre = self._pan
        self._centre = centre - np.array([e.x - x, y - e.y]) / self._scale
        self._is_fitted = False
        self._repaint_soon()

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


class _Outline:
    """A contour to be painted, and where it and its edges lie."""

    def __init__(self, contour: Contour) -> None:
        self.is_hole = contour.is_hole
        self._edges = [(edge, _edge_box(edge)) for edge in contour.edges]
        self.box = _around([box for _, box in self._edges])
        self._latest: Tuple[Tuple[float, Tuple[bool, ...]], _Pixels] = (0.0, ()), np.empty((0, 2))

    def points(self, error: float, sight: Box) -> _Pixels:
        """Points that keep this close to the arcs in sight; others are as good as their chords."""
        seen = tuple(_meet(box, sight) for _, box in self._edges)
        # While the view is panned, most are in sight as they were.
        if self._latest[0] != (error, seen):
            edges = [
                edge if is_seen or not edge.bulge else Edge(edge.start, edge.end)
                for is_seen, (edge, _) in zip(seen, self._edges)
            ]
            self._latest = (error, seen), np.array(loops.divided(edges, error))
        return self._latest[1]


def _edge_box(edge: Edge) -> Box:
    return loops.box([edge, Edge(edge.end, edge.start)])


def _around(boxes: Sequence[Box]) -> Box:
    lefts, lows, rights, highs = zip(*boxes)
    return min(lefts), min(lows), max(rights), max(highs)


def _meet(one: Box, other: Box) -> bool:
    return one[0] <= other[2] and other[0] <= one[2] and one[1] <= other[3] and other[1] <= one[3]
