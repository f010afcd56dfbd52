"""A reason in the status line that stays until the user acts.

By itself the editor writes the pointer's coordinates over it as soon as the pointer moves.
"""

from __future__ import annotations

from typing import Any

from tandrel.gui.sketcher import SketchEditor


class LastingMessages(SketchEditor):
    """What is told stays until the next press or key, or until something else is told."""

    _told = ""

    def tell(self, text: str) -> None:
        """Say something to the user; an empty text says that all is well."""
        self.status.configure(text=text)
        self._told = text

    def _build(self, allow_plane: bool) -> None:
        super()._build(allow_plane)
        self.bind("<KeyPress>", lambda _event: self._heard(), add="+")

    def _heard(self) -> None:
        """The user acts: what was told has been read."""
        if self._still_told():
            self.status.configure(text="")
        self._told = ""

    def _still_told(self) -> str:
        return self._told if str(self.status.cget("text")) == self._told else ""

    def _press(self, e: Any) -> None:
        self._heard()
        super()._press(e)

    def _motion(self, e: Any) -> None:
        told = self._still_told()
        super()._motion(e)
        if told:
            self.tell(told)

    def cancel_drawing(self) -> None:
        self._heard()
        super().cancel_drawing()

    def delete(self) -> None:
        self._heard()
        super().delete()

    def apply_props(self) -> None:
        super().apply_props()
        if self.sel is not None:
            self._told = str(self.status.cget("text"))

    def ok(self) -> None:
        super().ok()
        if self.winfo_exists():
            self._told = str(self.status.cget("text"))
