"""What the application's windows are made of: palette, form, tooltip, sizes and display units."""

from __future__ import annotations

import tkinter as tk
from tkinter import ttk

from tandrel.gui.theme import PAL, install, main_window, px
from tandrel.units import SYSTEMS, num_text, set_units, units

__all__ = [
    "PAL",
    "SYSTEMS",
    "Form",
    "Tooltip",
    "install",
    "main_window",
    "num_text",
    "on_screen",
    "px",
    "room",
    "set_units",
    "units",
]

_FRAME = 12, 40  # nominal pixels that window managers add to a window, or less; Tk can't tell it


def room(window: tk.Misc) -> tuple[int, int]:
    """The largest size with which a window lies wholly on the screen, its frame included."""
    width, height = (px(n) for n in _FRAME)
    return window.winfo_screenwidth() - width, window.winfo_screenheight() - height


def on_screen(window: tk.Misc, x: int, y: int, size: tuple[int, int]) -> str:
    """The place for a window of this size, "+70+90", as near as may be with all on the screen."""
    places = (max(min(at, n - own), 0) for at, n, own in zip((x, y), room(window), size))
    return "+{}+{}".format(*places)


class Form(ttk.Frame):
    """Labelled entries with their units, one below the other.

    With entries of 10 characters it is no wider than the editor's list of shapes, 270 nominal
    pixels: a wider one would push the canvas beside it.
    """

    _LABELS = 142  # nominal pixels, with the gap to the entries

    def __init__(self, parent: tk.Misc, label_width: int = 14) -> None:
        super().__init__(parent, style="Panel.TFrame")
        self._label_width = label_width
        self._rows = 0
        self.columnconfigure(0, minsize=px(self._LABELS))
        self.columnconfigure(2, minsize=px(22))

    def entry(
        self, label_text: str, variable: tk.Variable, unit_text: str, width: int = 10
    ) -> ttk.Entry:
        """Add a row and return its entry. A long label wraps instead of pushing the entry away."""
        label = ttk.Label(self, text=label_text, style="Panel.TLabel")
        label.configure(width=-self._label_width, wraplength=px(self._LABELS - 12))
        field = ttk.Entry(self, textvariable=variable, width=width)
        unit = ttk.Label(self, text=unit_text, style="Muted.TLabel")
        for column, widget in enumerate((label, field, unit)):
            gap = px(6) if column < 2 else 0
            widget.grid(row=self._rows, column=column, sticky="w", padx=(0, gap), pady=px(2))
        self._rows += 1
        return field

    def note(self, text: str) -> None:
        """Add a line of text over the form's whole width."""
        label = ttk.Label(self, text=text, style="Muted.TLabel", wraplength=px(260))
        label.grid(row=self._rows, column=0, columnspan=3, sticky="w", pady=(px(6), px(2)))
        self._rows += 1


class Tooltip:
    """A hint that appears while the pointer rests on a widget."""

    DELAY_MS = 500

    def __init__(self, widget: tk.Misc, text: str) -> None:
        self._widget = widget
        self._text = text
        self._timer: str | None = None
        self._window: tk.Toplevel | None = None
        widget.bind("<Enter>", self._wait, add="+")
        for event in ("<Leave>", "<ButtonPress>", "<KeyPress>", "<Unmap>", "<Destroy>"):
            widget.bind(event, self._hide, add="+")

    def _wait(self, _event: tk.Event[tk.Misc]) -> None:
        self._hide()
        self._timer = self._widget.after(self.DELAY_MS, self._show)

    def _hide(self, _event: tk.Event[tk.Misc] | None = None) -> None:
        if self._timer is not None:
            self._widget.after_cancel(self._timer)
        if self._window is not None:
            self._window.destroy()
        self._timer = self._window = None

    def _show(self) -> None:
        self._timer = None
        window = self._window = tk.Toplevel(self._widget, background=PAL["text"])
        window.withdraw()
        window.overrideredirect(True)
        label = tk.Label(window, text=self._text, justify="left", wraplength=px(320))
        label.configure(background=PAL["text"], foreground=PAL["field"], font="TkTooltipFont")
        label.pack(padx=px(8), pady=px(5))
        window.update_idletasks()
        window.geometry("+{}+{}".format(*self._place(window)))
        window.deiconify()

    def _place(self, window: tk.Toplevel) -> tuple[int, int]:
        """Right under the widget, or over it where the screen ends; never under the pointer."""
        widget = self._widget
        x = min(widget.winfo_rootx(), widget.winfo_screenwidth() - window.winfo_reqwidth())
        y = widget.winfo_rooty() + widget.winfo_height() + px(4)
        if y + window.winfo_reqheight() > widget.winfo_screenheight():
            y = widget.winfo_rooty() - window.winfo_reqheight() - px(4)
        return max(x, 0), max(y, 0)
