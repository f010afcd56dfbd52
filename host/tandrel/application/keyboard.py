"""Who the keys of the keyboard are for."""

from __future__ import annotations

import tkinter as tk
from contextlib import contextmanager
from typing import Any, Iterator

from tandrel.application.widget_tree import walk


def is_field(widget: Any) -> bool:
    """Whether a widget takes keys as text that is typed into it."""
    return isinstance(widget, (tk.Entry, tk.Text))


@contextmanager
def field_kept(form: tk.Misc) -> Iterator[None]:
    """While a form is made anew: the field that had the keyboard has it again, the cursor too.

    Of a form with fewer fields the last one has it. Where a text was a line and is lines now, or
    the other way round, the cursor is at its end. By itself Tk gives the keyboard to the dialog,
    and the next key, meant for a text, would be one for the shape.
    """
    fields: Any = [w for w in walk(form) if is_field(w)]
    holder = str(form.tk.call("focus"))
    held = next((k for k, field in enumerate(fields) if str(field) == holder), None)
    was_text = held is not None and isinstance(fields[held], tk.Text)
    cursor = "" if held is None else fields[held].index("insert")
    yield
    fields = [w for w in walk(form) if is_field(w)]
    if held is not None and fields:
        field = fields[min(held, len(fields) - 1)]
        field.focus_set()
        # Tk numbers the places in a text otherwise than those in a line.
        cursor = cursor if was_text == isinstance(field, tk.Text) else "end"
        if isinstance(field, tk.Text):
            field.mark_set("insert", cursor)
        else:
            field.icursor(cursor)
