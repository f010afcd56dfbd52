"""Corners that were clicked are not lost: the last one can be taken back, a refused outline mended.
"""

from __future__ import annotations

from typing import Any, List

from tandrel.application.keyboard import is_field
from tandrel.application.status_messages import LastingMessages
from tandrel.gui import sketcher
from tandrel.gui.i18n import tr


class CornerByCorner(LastingMessages):
    """BackSpace takes back the last corner of an outline or a slot that is being clicked.

    Held down it takes back all of them and no more: it removes no shape until another key or a
    button was pressed.
    """

    _has_emptied = False  # BackSpace, by taking back the first corner

    def __init__(self, parent: Any, sketch: Any, **options: Any) -> None:
        self._taken: List[Any] = []  # corners that were taken back since the last one was clicked
        super().__init__(parent, sketch, **options)
        self.bind("<BackSpace>", self._backspace)
        self.bind("<Return>", lambda e: None if is_field(e.widget) else self.close_line())

    def _heard(self) -> None:
        super()._heard()
        self._has_emptied = False

    def _backspace(self, e: Any) -> None:
        has_emptied = self._has_emptied
        self._heard()
        if is_field(e.widget):
            return
        if self.take_back() or has_emptied:
            self._has_emptied = not self.clicks
        else:
            self.delete()

    def take_back(self) -> bool:
        """Take back the corner that was clicked last; False where none was."""
        if not self.clicks:
            return False
        self._taken.append(self.clicks.pop())
        self.redraw()
        return True

    def give_back(self) -> bool:
        """Have the corner again that was taken back last; False where none was."""
        if not self._taken:
            return False
        self.clicks.append(self._taken.pop())
        self.redraw()
        return True

    def _press(self, e: Any) -> None:
        """Keep the ends of a slot that would have no width."""
        self._taken.clear()
        ends, shapes = self.clicks, len(self.sk["entities"])
        super()._press(e)
        if ends and not self.clicks and len(self.sk["entities"]) == shapes:
            self.clicks = ends
            (x1, y1), (x2, y2) = (map(float, end) for end in ends)
            self._tell_refused({"type": "slot", "x1": x1, "y1": y1, "x2": x2, "y2": y2, "r": 0.0})
            self.redraw()

    def cancel_drawing(self) -> None:
        self._taken.clear()
        super().cancel_drawing()

    def close_line(self) -> None:
        """Keep the corners of an outline that is refused, and tell of too few of them."""
        self._heard()
        corners, shapes = self.clicks, len(self.sk["entities"])
        super().close_line()
        if not corners or len(self.sk["entities"]) > shapes:
            self._taken.clear()
        elif not self.clicks:
            self.clicks = corners
            self._told = str(self.status.cget("text"))
            self.redraw()
        elif self.tool.get() == "line":
            points = [[float(u), float(v)] for u, v in corners]
            self._tell_refused({"type": "polygon", "points": points, "radius": 0.0})

    def _tell_refused(self, entity: Any) -> None:
        try:
            sketcher.S.outline(entity)
        except ValueError as error:
            self.tell(tr("Not added: {why}").format(why=error))

    def ok(self) -> None:
        """Accept no sketch while corners stand that would go with the dialog."""
        if self.clicks:
            self.tell(tr("Finish what you began to draw, or abandon it by Escape."))
        else:
            super().ok()
