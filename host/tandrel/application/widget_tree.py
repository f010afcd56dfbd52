"""Finding what the editor has built by what it is, wherever its layout puts it."""

from __future__ import annotations

import tkinter as tk
from tkinter import ttk
from typing import Iterator


def walk(widget: tk.Misc) -> Iterator[tk.Misc]:
    """All widgets inside one, each before those inside it."""
    for child in widget.winfo_children():
        yield child
        yield from walk(child)


def button(window: tk.Misc, text: str) -> ttk.Button:
    """The only button in a window that shows this text; ``ValueError`` where there isn't one."""
    (found,) = (
        w for w in walk(window) if isinstance(w, ttk.Button) and str(w.cget("text")) == text
    )
    return found
