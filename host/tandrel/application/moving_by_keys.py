"""Ctrl+D and the arrow keys: another shape of the same kind, and small steps."""

from __future__ import annotations

from functools import partial
from typing import Any

from tandrel.application.keyboard import is_field
from tandrel.application.status_messages import LastingMessages
from tandrel.gui import sketcher
from tandrel.gui.i18n import tr

_ARROWS = {"Left": (-1, 0), "Right": (1, 0), "Up": (0, 1), "Down": (0, -1)}
_FINE = 0.1  # with Shift


class MovingByKeys(LastingMessages):
    """Duplicates the selected shape, and moves it by grid steps, unless it can't be there.

    The arrow keys are those of the list, of a field or of a button while one of them has the
    keyboard.
    """

    def _build(self, allow_plane: bool) -> None:
        super()._build(allow_plane)
        for key in ("Control-d", "Control-D"):
            self.bind(f"<{key}>", lambda e: None if is_field(e.widget) else self.duplicate())
        for key, way in _ARROWS.items():
            self.bind(f"<{key}>", partial(self._arrow, way, 1.0))
            self.bind(f"<Shift-{key}>", partial(self._arrow, way, _FINE))

    def _arrow(self, way: Any, steps: float, e: Any) -> None:
        if e.widget in (self, self.canvas):
            self.move(way[0] * steps, way[1] * steps)

    def duplicate(self) -> None:
        """Add a copy of the selected shape one grid step to its right, and select that."""
        copied = self._held_moved(1.0, 0.0, tr("Not added: {why}"))
        if copied is not None:
            self.add(copied)
            # The next keys are for the copy, not for the list.
            self.canvas.focus_set()

    def move(self, right: float, up: float) -> None:
        """Move the selected shape by so many grid steps."""
        moved = self._held_moved(right, up, tr("Not moved: {why}"))
        if moved is not None:
            self.sk["entities"][self.sel or 0] = moved
            self.select(self.sel)

    def _held_moved(self, right: float, up: float, refusal: str) -> Any:
        """The shape that keys go to so many grid steps further; None, and told, where it can't be.

        It is the selected one, unless the pointer has it.
        """
        self._heard()
        entities, step = self.sk["entities"], self.grid_step()
        if self.sel is None or self.sel >= len(entities) or self.drag is not None:
            return None
        if not self._ok(entities[self.sel]):
            return None
        moved = self._moved(entities[self.sel], (right * step, up * step))
        try:
            sketcher.S.outline(moved)
        except ValueError as error:
            self.tell(refusal.format(why=error))
            return None
        return moved
