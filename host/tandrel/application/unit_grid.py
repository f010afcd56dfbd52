"""A grid that suits the display unit, and what the status line says of it."""

from __future__ import annotations

import math
from itertools import count
from typing import Any, Iterator

from tandrel.application.status_messages import LastingMessages
from tandrel.gui.i18n import tr
from tandrel.gui.widgets import units

_HALVES = {"in"}  # units in which people halve down to a 64th
_FINEST_HALF = 1 / 64
_LEAST_PIXELS = 10  # from one grid line to the next: the editor takes fewer for too few
_FEWEST_PIXELS = 1e-12  # a step of fewer is left to the editor: numbers end somewhere
_GAP = 5 * " "  # what the editor puts between the coordinates and the hint
_TOLERANCE = 1e-9


def steps(first: float, unit: str) -> Iterator[float]:
    """The steps that suit a unit, from the largest that is not above `first` upwards.

    They are 1, 2 and 5 times the powers of ten; in inches halves between a 64th and 1.
    """
    first *= 1 + _TOLERANCE
    if unit in _HALVES and _FINEST_HALF <= first < 1:
        step = 2.0 ** math.floor(math.log2(first))
        while step < 1:
            yield step
            step *= 2
        first = 1.0
    for power in count(math.floor(math.log10(first))):
        for digit in (1, 2, 5):
            step = float(f"{digit}e{power}")
            if step >= first or _is_last_below(digit, power, first):
                yield step


def _is_last_below(digit: int, power: int, first: float) -> bool:
    after = {1: 2, 2: 5, 5: 10}[digit]
    return float(f"{after}e{power}") > first


def line_step(step: float, least: float, unit: str) -> float:
    """How far apart grid lines are drawn: `least` or more, and a whole number of steps."""
    if step >= least:
        return step
    suits = next(steps(step, unit))
    is_own = math.isclose(suits, step, rel_tol=_TOLERANCE)
    factors = (s / step for s in steps(step, unit)) if is_own else steps(1, "")
    for factor in factors:
        is_whole = math.isclose(factor, round(factor), rel_tol=_TOLERANCE)
        if is_whole and factor * step >= least:
            return round(factor) * step
    raise AssertionError("the steps never end")


class UnitGrid(LastingMessages):
    """Chooses steps, and draws lines, at distances that people know from their rulers."""

    _draws_lines = False

    def _default_grid(self) -> float:
        unit = units()
        coarsest = unit.from_si(super()._default_grid(), "length")
        return unit.to_si(next(steps(coarsest, unit.unit("length"))), "length")

    def redraw(self) -> None:
        self._draws_lines = True
        try:
            super().redraw()
        finally:
            self._draws_lines = False

    def grid_step(self) -> float:
        step = super().grid_step()
        return self._line_step(step) if self._draws_lines else step

    def _line_step(self, step: float) -> float:
        """Where the editor by itself takes 5, 25 or 125 steps."""
        if not _FEWEST_PIXELS < step * self.scale < _LEAST_PIXELS:
            return step
        unit, least = units(), _LEAST_PIXELS * (1 + _TOLERANCE) / self.scale
        shown, least = (unit.from_si(length, "length") for length in (step, least))
        return unit.to_si(line_step(shown, least, unit.unit("length")), "length")

    def _motion(self, e: Any) -> None:
        super()._motion(e)
        if self._still_told():
            return
        place, _, hint = str(self.status.cget("text")).partition(_GAP)
        step = self.grid_step()
        line, unit = self._line_step(step), units()
        text = tr("Grid {step}") if line == step else tr("Grid {step}, lines {line}")
        grid = text.format(step=unit.fmt(step, "length"), line=unit.fmt(line, "length"))
        self.status.configure(text=_GAP.join([place, grid, hint]))
