"""The picture that an editor's state calls for: the items of its canvas, the lowest first.

An item is a tuple of its kind, its coordinates and those of its options that the editor sets, all
as Tk reports them.
"""

from __future__ import annotations

from typing import Any, Protocol

import numpy as np
from harness.python_editor import HIGHLIGHT, PythonOperations

from soak.user import shapes
from soak.user.shapes import Entity, Point
from support.plain import Var

Item = tuple[Any, ...]
Dash = tuple[int, ...]


class Window(Protocol):
    """What a window is asked for."""

    def size(self) -> tuple[int, int]:
        """Width and height of the canvas in pixels."""

    def is_typing(self) -> bool:
        """Whether an entry, a combobox or a spin box has the keyboard."""


class Paper:
    """A canvas of the size of a window's, that keeps its items."""

    def __init__(self, window: Window) -> None:
        self.items: list[Item] = []
        self._window = window

    def winfo_width(self) -> int:
        return self._window.size()[0]

    def winfo_height(self) -> int:
        return self._window.size()[1]

    def delete(self, _all: str) -> None:
        self.items = []

    def create_line(self, *at: float, fill: str, width: int = 1, dash: Dash = ()) -> None:
        self.items.append(("line", at, fill, f"{width}.0", dashes(dash)))

    def create_polygon(
        self, *at: float, fill: str, outline: str, width: int, dash: Dash = ()
    ) -> None:
        self.items.append(("polygon", at, fill, outline, f"{width}.0", dashes(dash)))

    def create_text(self, *at: float, text: str, fill: str, anchor: str = "center") -> None:
        self.items.append(("text", at, text, fill, anchor))

    def create_oval(self, *at: float, fill: str, outline: str) -> None:
        self.items.append(("oval", at, fill, outline, "1.0"))


def dashes(dash: Dash) -> str:
    return " ".join(map(str, dash))


class Picture(PythonOperations):
    """The part of an editor's shadow that its canvas shows."""

    tool: Var
    cursor: Any
    drag: dict[str, Any] | None

    def from_drag(self, a: Any, b: Any) -> Entity | None:
        raise NotImplementedError

    def card(self, e: Any) -> Any:
        return shapes.card(e)

    def _flat(self, points: Any) -> list[float]:
        """All at once, for there are many."""
        pixels = self.to_screen(np.asarray(points, dtype=np.float64).T)
        flat: Any = np.column_stack(pixels).ravel()
        return flat.tolist()

    def _ok(self, e: Any) -> bool:
        return shapes.outline(e) is not None

    def _dimensions(self, e: Entity) -> None:
        card = self.card(e)
        for place, (dx, dy), words, anchor in card.dimensions(e, shapes.length) if card else ():
            x, y = self.to_screen(place)
            self.canvas.create_text(x + dx, y + dy, text=words, fill=HIGHLIGHT, anchor=anchor)

    def _preview(self) -> None:
        """The shape that is being drawn, and the dot where a click would land."""
        tool, dot = self.tool.get(), self.to_screen(self.cursor)
        if self.drag is not None and self.drag["kind"] == "new":
            self._rubber_band(self.from_drag(self.drag["start"], self.cursor))
        corners = [self.to_screen(p) for p in self.clicks]
        if tool == "line" and corners:
            path = [c for pixel in (*corners, dot) for c in pixel]
            self.canvas.create_line(*path, fill=HIGHLIGHT, width=2)
            for pixel in corners:
                self._spot(pixel, 3, fill="", outline=HIGHLIGHT)
        if tool == "slot" and len(corners) == 1:
            self.canvas.create_line(*corners[0], *dot, fill=HIGHLIGHT, width=2, dash=(5, 3))
        elif tool == "slot" and corners:
            self._rubber_band(shapes.slot(self.clicks[0], self.clicks[1], self.cursor))
        self._spot(dot, 2, fill=HIGHLIGHT, outline="")

    def _rubber_band(self, e: Entity | None) -> None:
        outline = None if e is None else shapes.outline(e)
        if outline is not None:
            pixels = self._flat(outline)
            self.canvas.create_polygon(*pixels, fill="", outline=HIGHLIGHT, width=2, dash=(5, 3))

    def _spot(self, centre: Point, radius: float, **options: str) -> None:
        x, y = centre
        self.canvas.create_oval(x - radius, y - radius, x + radius, y + radius, **options)
