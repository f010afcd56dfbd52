"""Coordinates as they were snapped, without what arithmetic leaves behind.

36 steps of 0.001 m are 0.036000000000000004 m, and so it would stand in the file.
"""

from __future__ import annotations

import math
from typing import Any

from tandrel.gui.sketcher import SketchEditor

_DECIMALS = 12  # of metres: nobody types or snaps to less than a picometre
_DUST = 8  # units in the last place of a metre, or of the length where it is longer


def dusted(value: Any) -> Any:
    """An entity, or a part of one, in which each length close to a whole picometre is that."""
    if isinstance(value, float):
        if not math.isfinite(value):
            return value
        tidy = round(value, _DECIMALS)
        is_dust = abs(tidy - value) <= _DUST * math.ulp(max(abs(value), 1.0))
        # Of a zero without its sign.
        return tidy + 0.0 if is_dust else value
    if isinstance(value, dict):
        return {key: dusted(part) for key, part in value.items()}
    if isinstance(value, list):
        return [dusted(part) for part in value]
    return value


class WithoutDust(SketchEditor):
    """Keeps drawn and moved shapes with the numbers that they are shown with."""

    def add(self, ent: Any) -> None:
        super().add(dusted(ent))

    @staticmethod
    def _moved(e: Any, d: Any) -> Any:
        return dusted(SketchEditor._moved(e, d))
