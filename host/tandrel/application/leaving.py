"""Nothing is lost by closing the editor, nor by a crash while it is open."""

from __future__ import annotations

from contextlib import suppress
from typing import Any, Callable, Optional

from tandrel.application.dialogs import ask
from tandrel.application.history import Undoing
from tandrel.application.typed_numbers import Unreadable
from tandrel.application.typed_sizes import TypedSizes, read_length
from tandrel.application.widget_tree import button
from tandrel.gui.i18n import tr
from tandrel.gui.widgets import units

_KEPT_AFTER_MS = 500  # what a crash may cost; a key that is held makes a change every 30


class Leaving(Undoing, TypedSizes):
    """Asks before it drops what OK has not accepted; hands what changes to `keep`, if given.

    `keep` gets the sketch as OK would take it over, to be read at once; it returns why it couldn't,
    or "". It is called half a second after the first of the changes that it wasn't called for.
    """

    _asks = False
    _keep_failed = ""
    _waiting: Optional[str] = None

    def __init__(
        self, parent: Any, sketch: Any, keep: Callable[[Any], str] = lambda _: "", **options: Any
    ) -> None:
        self._keep = keep
        super().__init__(parent, sketch, **options)
        self.protocol("WM_DELETE_WINDOW", self.close)
        self._offset_shown = self.offset.get()
        self.offset.trace_add("write", lambda *_: self._keep_soon())

    def _build(self, allow_plane: bool) -> None:
        super()._build(allow_plane)
        button(self, tr("Cancel")).configure(command=self.close)

    def close(self) -> None:
        """Leave without the changes, if the user wants that."""
        if self._asks:
            return
        if self._has_changes():
            self._asks = True
            answers = {"stay": tr("Keep drawing"), "discard": tr("Discard")}
            answer = ask(self, tr("Discard the changes to the sketch?"), answers)
            self._asks = False
            if not self.winfo_exists():
                return
            if answer != "discard":
                # The question had it.
                self.grab_set()
                return
        self.destroy()

    def _has_changes(self) -> bool:
        """Whether anything was drawn, begun or typed that isn't in the sketch as it came."""
        drawn = self.history is not None and not self.history.present.draws(self.history.first)
        begun = bool(self.clicks) or self.drag is not None
        typed = self.is_unapplied() or self.offset.get() != self._offset_shown
        return drawn or begun or typed

    def changed(self) -> None:
        super().changed()
        self._keep_soon()

    def _keep_soon(self) -> None:
        if self._waiting is None:
            self._waiting = self.after(_KEPT_AFTER_MS, self._keep_now)

    def _keep_now(self) -> None:
        self._waiting = None
        if self.drag is not None:
            # What the pointer has isn't where it is going to be.
            return self._keep_soon()
        failed = self._keep(self._draft())
        if failed and failed != self._keep_failed:
            self.tell(tr("Not kept for a crash: {why}").format(why=failed))
        self._keep_failed = failed

    def _draft(self) -> Any:
        """The sketch, with the offset that was typed, if it can be read."""
        typed = self.offset.get()
        if self.dim == 3 and typed != self._offset_shown:
            with suppress(Unreadable):
                return {**self.sk, "offset": units().to_si(read_length(typed), "length")}
        return self.sk

    def destroy(self) -> None:
        if self._waiting is not None:
            self.after_cancel(self._waiting)
            self._waiting = None
        super().destroy()
