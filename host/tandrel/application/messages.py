"""Where a window tells what happened: whole, however long it is."""

from __future__ import annotations

import os
import tkinter as tk
from collections.abc import Sequence
from tkinter import ttk

from tandrel.gui.i18n import tr
from tandrel.gui.widgets import PAL, px

_HIGHEST = 110  # nominal pixels; a longer message scrolls


class MessageArea(ttk.Frame):
    """One message, as high as it needs up to a bound, then with a scroll bar."""

    def __init__(self, parent: tk.Misc) -> None:
        super().__init__(parent, style="Panel.TFrame")
        self._sight = tk.Canvas(self, width=1, height=1, highlightthickness=0, takefocus=False)
        self._bar = ttk.Scrollbar(self, command=self._sight.yview)
        self._sight.configure(yscrollcommand=self._bar.set)
        self._sight.pack(side="left", fill="both", expand=True)
        self.label = ttk.Label(self._sight, style="Muted.TLabel")
        self._sight.create_window(0, 0, window=self.label, anchor="nw")
        # Less than the width by what the label's frame takes.
        self._sight.bind(
            "<Configure>", lambda e: self.label.configure(wraplength=max(e.width - px(4), 1))
        )
        self.label.bind("<Configure>", lambda _event: self._make_room())
        for widget in (self.label, self._sight):
            widget.bind("<MouseWheel>", lambda e: self._scroll(-1 if e.delta > 0 else 1))
            widget.bind("<Button-4>", lambda _event: self._scroll(-1))
            widget.bind("<Button-5>", lambda _event: self._scroll(1))
        self.show("")

    def show(
        self, text: str, notes: Sequence[str] = (), advice: str = "", warning: bool = False
    ) -> None:
        """Show a message; several things to know of are a list under it."""
        lines = [text, *(f"• {note}" for note in notes), advice]
        style = "Warning.TLabel" if warning else "Muted.TLabel"
        self._sight.configure(background=PAL["window"])
        self.label.configure(text="\n".join(filter(None, lines)), style=style)
        self._sight.yview_moveto(0)

    def _make_room(self) -> None:
        needed = self.label.winfo_reqheight() if self.label.cget("text") else 1
        width = self.label.winfo_reqwidth()
        self._sight.configure(height=min(needed, px(_HIGHEST)), scrollregion=(0, 0, width, needed))
        if needed > px(_HIGHEST):
            self._bar.pack(side="right", fill="y")
        else:
            self._bar.pack_forget()

    def _scroll(self, steps: int) -> None:
        if self._bar.winfo_ismapped():
            self._sight.yview_scroll(steps, "units")


def unopened(path: str, why: str) -> tuple[str, str]:
    """What to say of a file that can't be opened, and what the user may do."""
    name = os.path.basename(path)
    text = tr("{file} can't be opened: {why}").format(file=name, why=why)
    if not os.path.exists(path):
        return text, tr("If it was moved or renamed, look for it with “Open…”.")
    before = name + "~"
    if not os.path.exists(path + "~"):
        return text, tr("Choose another file with “Open…”.")
    return text, tr(
        "{file} beside it is the version before: give it another name to open it."
    ).format(file=before)
