"""The sketch editor as this application opens it: overridden operations, and nothing else.

Each of its habits is a class of its own that overrides the few operations it needs, and leaves to
what it overrides all that it doesn't answer itself; whatever no class here overrides is the
module's own. Each works alone. Of two that override the same operation the first listed is asked
first.
"""

from __future__ import annotations

import math
from typing import Any, Optional, Tuple

from tandrel.application import editor_layout
from tandrel.application.corner_by_corner import CornerByCorner
from tandrel.application.leaving import Leaving
from tandrel.application.moving_by_keys import MovingByKeys
from tandrel.application.sizes_while_drawing import SizesWhileDrawing
from tandrel.application.unit_grid import UnitGrid
from tandrel.application.widget_tree import button
from tandrel.application.without_dust import WithoutDust
from tandrel.gui.i18n import tr
from tandrel.gui.widgets import px

CLICK_PX = 4  # nominal; as far as that from its press the pointer hasn't left it


class Editor(UnitGrid, CornerByCorner, Leaving, MovingByKeys, SizesWhileDrawing, WithoutDust):
    """A sketch editor whose layout keeps still, and which takes a click for no drag.

    With undo and redo, sizes while drawing, sums for sizes, and what else people reach for.

    It opens with `window_size`, a text such as "1200x800" in pixels, as far as the screen has room
    for that. Once it is closed, `window_size` is what the user left it with.
    """

    def __init__(self, parent: Any, sketch: Any, window_size: str = "", **options: Any) -> None:
        self.window_size = window_size
        super().__init__(parent, sketch, **options)

    # The window.

    def _build(self, allow_plane: bool) -> None:
        super()._build(allow_plane)
        editor_layout.arrange(self, self.window_size)
        self.canvas.bind("<Double-Button-1>", self._press_again)
        button(self, tr("Delete")).configure(command=self._delete_by_button)
        # Where numbers are typed, Enter is that of the number pad.
        self.bind("<KP_Enter>", lambda e: e.widget.event_generate("<Return>"))

    def geometry(self, newGeometry: Any = None) -> Any:  # type: ignore[override]
        """As Tk has it, but a place is changed where part of the dialog would be off the screen."""
        return super().geometry(newGeometry and editor_layout.on_screen(self, newGeometry))

    def destroy(self) -> None:
        if self.winfo_exists():
            self.window_size = f"{self.winfo_width()}x{self.winfo_height()}"
        super().destroy()

    # The list: the selected row is in sight, and the arrow keys go on from there.

    def refresh_list(self, keep: bool = False) -> None:
        super().refresh_list(keep)
        if self.sel is not None and self.list.exists(str(self.sel)):
            self.list.see(str(self.sel))
            self.list.focus(str(self.sel))

    def _list_selected(self) -> None:
        """While the pointer has a shape, that stays selected: it is what the pointer moves."""
        if self.drag is None:
            super()._list_selected()
        elif self.sel is not None and self.list.selection() != (str(self.sel),):
            self.list.selection_set(str(self.sel))

    # Taking back: first what isn't a change of the sketch yet. It comes again the other way round.

    _corners_at = 0  # in the history: where the last corner was taken back

    def take_back(self) -> bool:
        is_taken = super().take_back()
        if is_taken and self.history is not None:
            self._corners_at = self.history.at
        return is_taken

    def give_back(self) -> bool:
        """Changes that were taken back after the corners come first."""
        history = self.history
        if history is not None and history.at < self._corners_at and history.has(1):
            return False
        return super().give_back()

    def undo(self) -> None:
        """Take back the last corner, what was typed and not applied, or the last change."""
        self._heard()
        if not (self.take_back() or self.forget_typed()):
            super().undo()

    def redo(self) -> None:
        """Have again what was taken back last, a corner or a change; nothing typed is lost."""
        self._heard()
        if self.give_back():
            return
        if self.is_unapplied():
            self.tell(tr("Apply what you typed first, or take it back by Ctrl+Z."))
        else:
            super().redo()

    # Keys. What is typed for a shape is a part of it.

    def cancel_drawing(self) -> None:
        """Abandon what is being drawn; a shape that is being moved goes back."""
        if self.drag is not None and self.drag["kind"] == "move" and self.sel is not None:
            self.sk["entities"][self.sel] = self.drag["orig"]
            self.refresh_list()
        super().cancel_drawing()

    def _delete_by_button(self) -> None:
        """Also while a field has the keyboard: only keys may be meant for its text."""
        self.canvas.focus_set()
        self.delete()

    def duplicate(self) -> None:
        if self.settle():
            super().duplicate()

    def move(self, right: float, up: float, goes_on: bool = False) -> None:
        if self.settle():
            super().move(right, up, goes_on)

    # The pointer: a shape follows it from when it has left the press.

    _pressed: Optional[Tuple[int, int]] = None

    def _press(self, e: Any) -> None:
        super()._press(e)
        moves = self.drag is not None and self.drag["kind"] == "move"
        self._pressed = (e.x, e.y) if moves else None

    def _press_again(self, e: Any) -> None:
        """A second press in the same place: where no corners are clicked, it begins a drag."""
        if self.tool.get() in ("line", "slot"):
            self.close_line()
        else:
            self._press(e)

    def _drag(self, e: Any) -> None:
        if self._pressed is not None:
            if math.dist(self._pressed, (e.x, e.y)) < px(CLICK_PX):
                return
            self._pressed = None
        super()._drag(e)
