"""Long tasks under the user's eyes: a bar that fills, and a button that stops."""

from __future__ import annotations

import time
import tkinter as tk
from collections.abc import Callable
from tkinter import ttk
from typing import TypeVar

from tandrel.application.dialogs import Dialog
from tandrel.gui.i18n import tr
from tandrel.gui.widgets import px
from tandrel.progress import Stopped, Tick

# What takes less time shows nothing.
PATIENCE_SECONDS = 0.5
# How often the window looks for what the user does, and for what it has to paint.
TURN_SECONDS = 0.05

_Result = TypeVar("_Result")


def run(
    parent: tk.Misc,
    text: str,
    task: Callable[[Tick], _Result],
    clock: Callable[[], float] = time.monotonic,
) -> _Result:
    """The task's result; Stopped, raised where the task ticks, when the user stops it.

    The task runs on this thread and ticks the fraction that is done. Until the window appears no
    event is handled; from then on it has the grab, but keys may still reach other windows.
    """
    window: _Progress | None = None
    started = looked = clock()

    def tick(fraction: float) -> None:
        nonlocal window, looked
        now = clock()
        if now - looked < TURN_SECONDS:
            return
        if window is None and now - started >= PATIENCE_SECONDS:
            window = _Progress(parent, text)
        if window is not None:
            window.turn(fraction)
            if window.stopped:
                raise Stopped
        looked = clock()

    try:
        return task(tick)
    finally:
        if window is not None:
            window.destroy()


def span(tick: Tick, start: float, end: float) -> Tick:
    """A tick for one step of a task, from one fraction of the whole to another."""
    return lambda fraction: tick(start + (end - start) * fraction)


class _Progress(Dialog):
    def __init__(self, parent: tk.Misc, text: str) -> None:
        super().__init__(parent)
        self.stopped = False
        ttk.Label(self.body, text=text, wraplength=px(360)).pack(anchor="w")
        self.bar = ttk.Progressbar(self.body, length=px(360), maximum=1.0)
        self.bar.pack(fill="x", pady=px(12))
        self.button = ttk.Button(self.body, text=tr("Stop"), command=self.close)
        self.button.pack(anchor="e")
        self.show(self.button)

    def close(self) -> None:
        self.stopped = True

    def turn(self, fraction: float) -> None:
        self.bar.configure(value=min(max(fraction, 0.0), 1.0))
        self.update()
