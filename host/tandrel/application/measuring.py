"""What the window shows of a sketch."""

from __future__ import annotations

from typing import Any, NamedTuple, Optional

from tandrel import profile
from tandrel.gui.i18n import tr
from tandrel.profile import Contour
from tandrel.progress import Tick, no_tick
from tandrel.units import units


class Measured(NamedTuple):
    """A profile, its width and height, and its area. No contours where computing was stopped."""

    contours: Optional[list[Contour]] = None
    size: tuple[float, float] = (0.0, 0.0)
    area: float = 0.0


def measure(sketch: dict[str, Any], tick: Tick = no_tick) -> Measured:
    contours = profile.contours(sketch, tick)
    if not contours:
        return Measured([])
    left, bottom, right, top = profile.box(sketch)
    return Measured(contours, (right - left, top - bottom), profile.area(sketch))


def facts(measured: Measured) -> list[str]:
    """Size, area and number of contours in words and display units; empty where nothing is."""
    if not measured.contours:
        return ["", "", ""]
    size = " × ".join(units().fmt(length, "length") for length in measured.size)
    area = tr("Area {area}").format(area=units().fmt(measured.area, "area"))
    return [size, area, tr("Contours: {n}").format(n=len(measured.contours))]
