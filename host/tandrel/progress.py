"""How a long task tells how far it is, and how it is stopped."""

from __future__ import annotations

from typing import Callable

# Told the fraction done, 0 to 1, now and then. What it raises ends the task and passes through.
Tick = Callable[[float], None]


class Stopped(Exception):
    """The user stopped a long task: raised by a tick, it leaves everything as it was."""


def no_tick(done: float) -> None:
    """For tasks that nobody watches."""
