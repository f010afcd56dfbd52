"""The size of what is being drawn, beside the pointer."""

from __future__ import annotations

import math
from typing import Any, Tuple

from tandrel.gui import sketcher
from tandrel.gui.sketcher import SketchEditor
from tandrel.gui.widgets import PAL, num_text, px, units

COLOUR = "#E8833A"  # that of all that is being drawn
_AWAY, _MARGIN = 16, 3  # nominal pixels: from the pointer, and around the text
_ANGLE_DECIMALS = 2


class SizesWhileDrawing(SketchEditor):
    """Says how large the shape is that a release or a click would make.

    The text is a part of the picture: it takes no room from anything and goes with the next one.
    """

    _pointer: Tuple[float, float] = (0.0, 0.0)

    def snapped(self, x: float, y: float) -> Any:
        # Whatever the pointer does begins here.
        self._pointer = x, y
        return super().snapped(x, y)

    def _preview(self) -> None:
        super()._preview()
        text = self._size()
        if text:
            self._write(text)

    def _size(self) -> str:
        """The size of what is being drawn, empty where nothing is."""
        if self.drag is not None and self.drag["kind"] == "new":
            return _described(self._from_drag(self.drag["start"], self.cursor))
        tool = self.tool.get()
        if not self.clicks or tool not in ("line", "slot"):
            return ""
        if tool == "slot" and len(self.clicks) > 1:
            return _described(self._slot(self.clicks[0], self.clicks[1], self.cursor))
        return _edge(*(self.cursor - self.clicks[-1]))

    def _begun(self) -> Any:
        """The point that what is being drawn goes on from to the pointer."""
        if self.drag is not None:
            return self.drag["start"]
        end = self.clicks[-1]
        if len(self.clicks) == 1 or self.tool.get() != "slot":
            return end
        axis = end - self.clicks[0]
        return end + axis * (axis @ (self.cursor - end)) / (axis @ axis)

    def _write(self, text: str) -> None:
        """Write it beyond the pointer, away from what is being drawn, or where there is room."""
        canvas, (x, y) = self.canvas, self._pointer
        width, height = canvas.winfo_width(), canvas.winfo_height()
        margin = px(_MARGIN)
        item = canvas.create_text(0, 0, text=text, fill=COLOUR, anchor="nw")
        canvas.itemconfigure(item, width=max(width - 4 * margin, 1))
        left, top, right, bottom = canvas.bbox(item)
        w, h = right - left + 2 * margin, bottom - top + 2 * margin
        du, dv = self.cursor - self._begun()
        # As it is above or below the pointer, it may lie to any side of it.
        place = _within(_beyond(x, w, du < 0), w, width), _beside(y, h, height, dv > 0)
        canvas.move(item, place[0] + margin - left, place[1] + margin - top)
        box = canvas.create_rectangle(
            *place, place[0] + w, place[1] + h, fill=PAL["panel"], outline=""
        )
        canvas.tag_raise(item, box)


def _described(entity: Any) -> str:
    return sketcher.describe(entity) if entity is not None else ""


def _edge(du: float, dv: float) -> str:
    """Length and direction of an edge."""
    if not (du or dv):
        return ""
    angle = round(math.degrees(math.atan2(dv, du)), _ANGLE_DECIMALS)
    return f"{units().fmt(math.hypot(du, dv), 'length')}   {num_text(angle)}°"


def _beyond(pointer: float, size: int, is_before: bool) -> float:
    """Where something begins that lies before or after the pointer."""
    return pointer - px(_AWAY) - size if is_before else pointer + px(_AWAY)


def _within(start: float, size: int, room: int) -> float:
    return min(max(start, 0), max(room - size, 0))


def _beside(pointer: float, size: int, room: int, is_before: bool) -> float:
    """The same; on the other side where the room ends."""
    start = _beyond(pointer, size, is_before)
    if start != _within(start, size, room):
        start = _beyond(pointer, size, not is_before)
    return _within(start, size, room)
