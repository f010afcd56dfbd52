"""Who the keys of the keyboard are for."""

from __future__ import annotations

import tkinter as tk
from typing import Any


def is_field(widget: Any) -> bool:
    """Whether a widget takes keys as text that is typed into it."""
    return isinstance(widget, (tk.Entry, tk.Text))
