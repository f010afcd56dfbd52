"""Ctrl+D and the arrow keys: another shape of the same kind, and small steps."""

from __future__ import annotations

from functools import partial
from typing import Any, Optional

from tandrel.application.history import Undoing
from tandrel.application.keyboard import is_field
from tandrel.application.status_messages import LastingMessages
from tandrel.gui import sketcher
from tandrel.gui.i18n import tr

_ARROWS = {"Left": (-1, 0), "Right": (1, 0), "Up": (0, 1), "Down": (0, -1)}
_FINE = 0.1  # with Shift


class MovingByKeys(Undoing, LastingMessages):
    """Duplicates the selected shape, and moves it by grid steps, unless it can't be there.

    The arrow keys are those of the list, of a field or of a button while one of them has the
    keyboard. One that is held down makes one change, as a drag does.
    """

    _arrow_pressed: Any = None  # the last one, with how far it moves
    _arrow_released: Optional[int] = None  # the time of that event; None while it is down
    _carried: Any = None  # the shape as the last move left it, until the user does anything else

    def _build(self, allow_plane: bool) -> None:
        super()._build(allow_plane)
        for key in ("Control-d", "Control-D"):
            self.bind(f"<{key}>", lambda e: None if is_field(e.widget) else self.duplicate())
        for key, way in _ARROWS.items():
            self.bind(f"<{key}>", partial(self._arrow, way, 1.0))
            self.bind(f"<Shift-{key}>", partial(self._arrow, way, _FINE))
            self.bind(f"<KeyRelease-{key}>", self._arrow_up)

    def _arrow(self, way: Any, steps: float, e: Any) -> None:
        if e.widget in (self, self.canvas):
            arrow = way, steps
            # The X server repeats a key by a release and a press at the same time.
            is_held = self._arrow_released in (None, e.time) and arrow == self._arrow_pressed
            self._arrow_pressed, self._arrow_released = arrow, None
            self.move(way[0] * steps, way[1] * steps, is_held)

    def _arrow_up(self, e: Any) -> None:
        self._arrow_released = e.time

    def _heard(self) -> None:
        super()._heard()
        self._carried = None

    def duplicate(self) -> None:
        """Add a copy of the selected shape one grid step to its right, and select that."""
        copied = self._held_moved(1.0, 0.0, tr("Not added: {why}"))
        if copied is not None:
            self.add(copied)
            # The next keys are for the copy, not for the list.
            self.canvas.focus_set()

    def move(self, right: float, up: float, goes_on: bool = False) -> None:
        """Move the selected shape by so many grid steps.

        What goes on is one change with the move before, if nothing else was done in between.
        """
        carried = self._carried
        moved = self._held_moved(right, up, tr("Not moved: {why}"))
        if moved is not None:
            entities, index = self.sk["entities"], self.sel or 0
            self._is_same_step = goes_on and entities[index] is carried
            entities[index] = self._carried = moved
            try:
                self.select(index)
            finally:
                self._is_same_step = False

    def _held_moved(self, right: float, up: float, refusal: str) -> Any:
        """The shape that keys go to so many grid steps further; None, and told, where it can't be.

        It is the selected one, unless the pointer has it.
        """
        self._heard()
        entities, step = self.sk["entities"], self.grid_step()
        if self.sel is None or self.sel >= len(entities) or self.drag is not None:
            return None
        try:
            # What is damaged may have no place to be moved from.
            sketcher.S.outline(entities[self.sel])
            moved = self._moved(entities[self.sel], (right * step, up * step))
            sketcher.S.outline(moved)
            return moved
        except KeyError as error:
            why = tr("{key} is missing").format(key=error.args[0])
        except (ValueError, TypeError) as error:
            why = str(error)
        self.tell(refusal.format(why=why))
        return None
