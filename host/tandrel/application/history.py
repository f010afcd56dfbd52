"""Undo and redo inside the dialog."""

from __future__ import annotations

from functools import partial
from typing import Any, List, NamedTuple, Optional, Tuple

from tandrel.application.keyboard import field_kept, is_field
from tandrel.gui.sketcher import SketchEditor

MOST = 1000  # states that are kept

_KEYS = {
    "undo": ("Control-z", "Control-Z"),
    "redo": ("Control-y", "Control-Y", "Control-Shift-z", "Control-Shift-Z"),
}


class State(NamedTuple):
    """What an editor shows. The editor replaces entities whole, so that states may share them."""

    entities: Tuple[Any, ...]
    plane: Any
    selected: Optional[int]

    def draws(self, other: State) -> bool:
        """Whether the other one is the same sketch, whatever is selected in it."""
        return self.plane == other.plane and self.entities == other.entities


class History:
    """The states of a sketch one after the other; the present one is that `at` this index."""

    def __init__(self, first: State) -> None:
        self._states: List[State] = [first]
        self.at = 0
        self.first = first

    @property
    def present(self) -> State:
        return self._states[self.at]

    def note(self, state: State, is_same_step: bool = False) -> bool:
        """Go on with a state. False where only the selection is another one: that is no step.

        One of the same step takes the place of the present state.
        """
        if state.draws(self.present):
            self._states[self.at] = state
            return False
        del self._states[self.at + (not is_same_step) :]
        self._states.append(state)
        del self._states[:-MOST]
        self.at = len(self._states) - 1
        return True

    def has(self, by: int) -> bool:
        """Whether there is a state so many after the present one, or before it."""
        return 0 <= self.at + by < len(self._states)

    def step(self, by: int) -> Optional[State]:
        """Go one state back (-1) or forth (1); None, and no step, at the end."""
        if not self.has(by):
            return None
        self.at += by
        return self.present


class Undoing(SketchEditor):
    """An editor whose changes can be taken back, with the selection; a drag is one of them.

    Every change ends in a repaint: that is where it is noticed.
    """

    history: Optional[History] = None
    _is_same_step = False  # whether what changes now goes on with the last change

    def _build(self, allow_plane: bool) -> None:
        super()._build(allow_plane)
        for operation, keys in _KEYS.items():
            for key in keys:
                self.bind(f"<{key}>", partial(self._call, operation))

    def _call(self, operation: str, e: Any) -> None:
        # Tk's fields paste by Ctrl+Y.
        if e.keysym.lower() != "y" or not is_field(e.widget):
            getattr(self, operation)()

    def redraw(self) -> None:
        # Where a shape is while it is being moved is no state of the sketch.
        if self.drag is None or self.drag["kind"] != "move":
            self._note()
        super().redraw()

    def _note(self) -> None:
        state = State(tuple(self.sk["entities"]), self.sk.get("plane", "XY"), self.sel)
        if self.history is None:
            self.history = History(state)
        elif self.history.note(state, self._is_same_step):
            self.changed()

    def changed(self) -> None:
        """The sketch is another one than before; called once for each change, undone ones too."""

    def undo(self) -> None:
        """Take the last change back."""
        self._step(-1)

    def redo(self) -> None:
        """Make the change again that was taken back last."""
        self._step(1)

    def _step(self, by: int) -> None:
        # A shape that the pointer holds isn't where it is going to be.
        state = None if self.history is None or self.drag is not None else self.history.step(by)
        if state is None:
            self.bell()
            return
        self.sk["entities"][:] = state.entities
        if state.plane != self.sk.get("plane", "XY"):
            self.sk["plane"] = state.plane
            self.plane.set(state.plane)
        self.sel = state.selected
        with field_kept(self.props):
            self.refresh_list()
        self.redraw()
        self.changed()
