"""Ctrl+D and the arrow keys: another shape of the same kind, and small steps."""

from __future__ import annotations

import tkinter as tk
from functools import partial
from typing import Any

from tandrel.gui.sketcher import SketchEditor

_ARROWS = {"Left": (-1, 0), "Right": (1, 0), "Up": (0, 1), "Down": (0, -1)}
_FINE = 0.1  # with Shift


class MovingByKeys(SketchEditor):
    """Duplicates the selected shape, and moves it by grid steps.

    The arrow keys are those of the list, of a field or of a button while one of them has the
    keyboard.
    """

    def _build(self, allow_plane: bool) -> None:
        super()._build(allow_plane)
        for key in ("Control-d", "Control-D"):
            self.bind(f"<{key}>", lambda e: None if _is_field(e.widget) else self.duplicate())
        for key, way in _ARROWS.items():
            self.bind(f"<{key}>", partial(self._arrow, way, 1.0))
            self.bind(f"<Shift-{key}>", partial(self._arrow, way, _FINE))

    def _arrow(self, way: Any, steps: float, e: Any) -> None:
        if e.widget in (self, self.canvas):
            self.move(way[0] * steps, way[1] * steps)

    def _held(self) -> Any:
        """The shape that keys go to: the selected one, unless the pointer has it."""
        entities = self.sk["entities"]
        if self.sel is None or self.sel >= len(entities) or self.drag is not None:
            return None
        return entities[self.sel] if self._ok(entities[self.sel]) else None

    def duplicate(self) -> None:
        """Add a copy of the selected shape one grid step to its right, and select that."""
        shape = self._held()
        if shape is not None:
            self.add(self._moved(shape, (self.grid_step(), 0.0)))

    def move(self, right: float, up: float) -> None:
        """Move the selected shape by so many grid steps."""
        shape, step = self._held(), self.grid_step()
        if shape is not None:
            self.sk["entities"][self.sel or 0] = self._moved(shape, (right * step, up * step))
            self.select(self.sel)


def _is_field(widget: Any) -> bool:
    return isinstance(widget, (tk.Entry, tk.Text))
