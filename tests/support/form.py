"""A property form that keeps what it was asked for and shows real entries."""

import tkinter as tk
from tkinter import ttk


class GridForm(ttk.Frame):
    """The form of the widgets module: a grid of labels, entries and units."""

    made = []

    def __init__(self, parent, label_width=None):
        super().__init__(parent)
        self.label_width = label_width
        self.calls = []
        GridForm.made.append(self)

    def pack(self, *args, **kwargs):
        self.calls.append(("pack", args, kwargs))
        super().pack(*args, **kwargs)

    def entry(self, *args, **kwargs):
        self.calls.append(("entry", args, kwargs))
        label, variable, unit = args
        row = self.grid_size()[1]
        ttk.Label(self, text=label).grid(row=row, column=0)
        entry = ttk.Entry(self, textvariable=variable, **kwargs)
        entry.grid(row=row, column=1)
        ttk.Label(self, text=unit).grid(row=row, column=2)
        return entry

    def note(self, *args, **kwargs):
        self.calls.append(("note", args, kwargs))
        (text,) = args
        tk.Label(self, text=text).grid(row=self.grid_size()[1], column=0, columnspan=3)

    def entries(self):
        """The entry widgets, in order."""
        return [child for child in self.winfo_children() if isinstance(child, ttk.Entry)]


def form_of(editor):
    (form,) = [w for w in editor.props.winfo_children() if hasattr(w, "entries")]
    return form


def form_texts(editor):
    return [entry.get() for entry in form_of(editor).entries()]


def corners_text(editor):
    return editor.points_text.get("1.0", "end-1c")


def type_corners(editor, text):
    editor.points_text.delete("1.0", "end")
    editor.points_text.insert("1.0", text)
