"""Main windows that keep what goes wrong in their callbacks."""

import os
import tkinter as tk

from .events import settle


def open_root(screen=None):
    """A shown main window; `errors` collects what its callbacks raise and what Tcl reports."""
    root = tk.Tk(screenName=screen)
    # Tk puts the screen's name into the process's DISPLAY, unseen by os.environ: the next window
    # without a screen of its own would follow it there.
    os.environ["DISPLAY"] = os.environ["DISPLAY"]
    root.errors = []
    root.report_callback_exception = lambda kind, error, trace: root.errors.append(error)
    root.createcommand("bgerror", lambda message: root.errors.append(RuntimeError(message)))
    root.geometry("320x240+20+20")
    settle(root)
    # Tk 8.6 crashes where a widget gets the focus by force in a main window that hasn't had it,
    # after another one on the same display, whose menus had been made anew, was destroyed.
    root.focus_force()
    root.update()
    return root


def close_root(root):
    """Destroy the main window; fail if a callback raised something that no test took out."""
    root.destroy()
    if root.errors:
        raise root.errors[0]
