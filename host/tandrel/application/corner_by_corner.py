"""Corners that were clicked are not lost: the last one can be taken back, a refused outline mended.
"""

from __future__ import annotations

import tkinter as tk
from typing import Any

from tandrel.application.status_messages import LastingMessages
from tandrel.gui.i18n import tr


class CornerByCorner(LastingMessages):
    """BackSpace takes back the last corner of an outline or a slot that is being clicked."""

    def __init__(self, parent: Any, sketch: Any, **options: Any) -> None:
        super().__init__(parent, sketch, **options)
        self.bind("<BackSpace>", self._backspace)

    def _backspace(self, e: Any) -> None:
        self._heard()
        if isinstance(e.widget, tk.Text):
            return
        if isinstance(e.widget, tk.Entry) or not self.take_back():
            self.delete()

    def take_back(self) -> bool:
        """Take back the corner that was clicked last; False where none was."""
        if not self.clicks:
            return False
        self.clicks.pop()
        self.redraw()
        return True

    def close_line(self) -> None:
        """Keep the corners of an outline that is refused."""
        corners, shapes = self.clicks, len(self.sk["entities"])
        super().close_line()
        if corners and not self.clicks and len(self.sk["entities"]) == shapes:
            self.clicks = corners
            self._told = str(self.status.cget("text"))
            self.redraw()

    def ok(self) -> None:
        """Accept no sketch while corners stand that would go with the dialog."""
        if self.clicks:
            self.tell(tr("Finish what you began to draw, or abandon it by Escape."))
        else:
            super().ok()
