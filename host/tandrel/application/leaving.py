"""Nothing is lost by closing the editor, nor by a crash while it is open."""

from __future__ import annotations

from tkinter import ttk
from typing import Any, Callable

from tandrel.application.dialogs import ask
from tandrel.application.history import Undoing
from tandrel.application.typed_sizes import TypedSizes
from tandrel.gui.i18n import tr


class Leaving(Undoing, TypedSizes):
    """Asks before it drops what OK has not accepted; hands each change to `keep`, if given.

    `keep` gets the sketch as it is, to be read at once; it returns why it couldn't, or "".
    """

    _asks = False
    _keep_failed = ""

    def __init__(
        self, parent: Any, sketch: Any, keep: Callable[[Any], str] = lambda _: "", **options: Any
    ) -> None:
        self._keep = keep
        super().__init__(parent, sketch, **options)
        self.protocol("WM_DELETE_WINDOW", self.close)
        self._offset_shown = self.offset.get()

    def _build(self, allow_plane: bool) -> None:
        super()._build(allow_plane)
        bottom: Any = self.status.master.winfo_children()[-1]
        (cancel,) = (
            w
            for w in bottom.winfo_children()
            if isinstance(w, ttk.Button) and str(w.cget("style")) != "Primary.TButton"
        )
        cancel.configure(command=self.close)

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
        typed = self.is_unapplied() or self.offset.get() != self._offset_shown
        return drawn or bool(self.clicks) or typed

    def changed(self) -> None:
        super().changed()
        failed = self._keep(self.sk)
        if failed and failed != self._keep_failed:
            self.tell(tr("Not kept for a crash: {why}").format(why=failed))
        self._keep_failed = failed
