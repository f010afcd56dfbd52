"""The sketch editor as this application opens it: overridden operations, and nothing else.

Whatever isn't overridden here is the module's own; each override calls what it overrides.
"""

from __future__ import annotations

import math
from typing import Any, Optional, Tuple

from tandrel.application import editor_layout
from tandrel.gui.sketcher import SketchEditor
from tandrel.gui.widgets import px

CLICK_PX = 4  # nominal; as far as that from its press the pointer hasn't left it


class Editor(SketchEditor):
    """A sketch editor whose layout keeps still, and which takes a click for no drag.

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

    def geometry(self, newGeometry: Any = None) -> Any:  # type: ignore[override]
        """As Tk has it, but a place is changed where part of the dialog would be off the screen."""
        return super().geometry(newGeometry and editor_layout.on_screen(self, newGeometry))

    def destroy(self) -> None:
        if self.winfo_exists():
            self.window_size = f"{self.winfo_width()}x{self.winfo_height()}"
        super().destroy()

    # The pointer: a shape follows it from when it has left the press.

    _pressed: Optional[Tuple[int, int]] = None

    def _press(self, e: Any) -> None:
        super()._press(e)
        moves = self.drag is not None and self.drag["kind"] == "move"
        self._pressed = (e.x, e.y) if moves else None

    def _drag(self, e: Any) -> None:
        if self._pressed is not None:
            if math.dist(self._pressed, (e.x, e.y)) < px(CLICK_PX):
                return
            self._pressed = None
        super()._drag(e)
