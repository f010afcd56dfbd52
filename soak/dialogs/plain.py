"""A modal dialog in plain tkinter, with widgets, variables and bindings like the editor's.

What its ways leave behind is left by Tk or by the interpreter, whatever the dialog is.
"""

from __future__ import annotations

import tkinter as tk
from collections.abc import Callable
from tkinter import ttk
from typing import Any


class PlainDialog(tk.Toplevel):
    """A canvas, a list, an entry and two buttons."""

    def __init__(self, parent: tk.Misc) -> None:
        super().__init__(parent)
        self.transient(parent)  # type: ignore[call-overload]
        self.text = tk.StringVar(self, "1")
        self.entry = ttk.Entry(self, textvariable=self.text)
        self.entry.pack()
        self.entry.bind("<Return>", self.paint)
        self.canvas = tk.Canvas(self, width=300, height=200)
        self.canvas.pack()
        self.canvas.bind("<Configure>", self.paint)
        self.list = ttk.Treeview(self, columns=("size",))
        self.list.pack()
        self.list.bind("<<TreeviewSelect>>", self.paint)
        self.accept = ttk.Button(self, text="OK", command=self.destroy)
        self.accept.pack()
        self.update_idletasks()

    def paint(self, _event: Any = None) -> None:
        self.canvas.delete("all")
        self.canvas.create_polygon(0, 0, 50, 0, 0, 50, fill="red")
        self.list.delete(*self.list.get_children())
        self.list.insert("", "end", iid="0", text="row", values=("1 mm",))

    def run(self) -> None:
        self.grab_set()
        self.wait_window()


def accepted(stage: Any) -> None:
    dialog = PlainDialog(stage.root)
    dialog.after(1, dialog.accept.invoke)
    dialog.run()


def parent_destroyed(stage: Any) -> None:
    parent = tk.Toplevel(stage.root)
    dialog = PlainDialog(parent)
    dialog.after(1, parent.destroy)
    dialog.run()


PLAIN_WAYS: dict[str, Callable[[Any], None]] = {
    "plain dialog: OK": accepted,
    "plain dialog: parent destroyed": parent_destroyed,
}
