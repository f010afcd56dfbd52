"""The unit of a drawing's numbers: what it says, what its size says, and what the user says."""

from __future__ import annotations

import math
from decimal import Decimal
from typing import Dict, List, Optional, Tuple

from tandrel.exchange import UnitsMissing
from tandrel.exchange.lines import Drawing, Line, Stated
from tandrel.geometry.loops import box
from tandrel.gui.i18n import N_, tr
from tandrel.units import SYSTEMS, UnitSystem

_LEAST, _MOST = 0.002, 2.0  # the sizes of parts, in metres
# What vector drawing programs draw in, and write as it is: no drawing names them.
_POINTS = {"pt": (72, N_("points of 1/72 in")), "px": (96, N_("points of 1/96 in"))}
AS_STATED = "stated"  # the answer that a drawing's own unit is right, which may be none of ours


def metres(drawing: Drawing, chosen: Optional[str]) -> Decimal:
    """The length of a drawing's unit; UnitsMissing where somebody must choose it."""
    stated = drawing.unit
    if chosen is not None and chosen != AS_STATED:
        length = _points(chosen) if chosen in _POINTS else SYSTEMS[chosen].metres
        if stated is not None and stated.metres != length:
            text = tr("The drawing says that its unit is {stated}; it was read in {unit}.")
            drawing.notes.tell(text.format(stated=stated.name, unit=chosen))
        return length
    width, height = _size(drawing.lines)
    size = max(width, height)
    if stated is None:
        text = tr("the drawing does not say what unit its lengths are in")
        raise UnitsMissing(text, choices(width, height, None))
    is_sure = drawing.is_own or chosen == AS_STATED or not size
    if not is_sure and not _is_likely(stated, size, drawing.lines):
        text = tr("the drawing says that its unit is {unit}, which makes it {size} large")
        shown = _shown(width, height, float(stated.metres), SYSTEMS["mm"])
        raise UnitsMissing(
            text.format(unit=stated.name, size=shown), choices(width, height, stated)
        )
    return stated.metres


def _is_likely(stated: Stated, size: float, lines: List[Line]) -> bool:
    if not stated.least <= size * float(stated.metres) <= stated.most:
        return False
    return math.isinf(stated.radius) or any(
        edge.bulge and edge.radius < stated.radius for line in lines for edge in line.edges
    )


def choices(width: float, height: float, stated: Optional[Stated]) -> Dict[str, str]:
    """The units that a drawing of this size may have, the most likely first, each with the size."""
    found = {}
    for name, unit in SYSTEMS.items():
        own = _shown(width, height, float(unit.metres), unit)
        in_mm = _shown(width, height, float(unit.metres), SYSTEMS["mm"])
        found[name] = own if name == "mm" else f"{own} = {in_mm}"
    if stated is not None and stated.metres not in [unit.metres for unit in SYSTEMS.values()]:
        shown = _shown(width, height, float(stated.metres), SYSTEMS["mm"])
        found[AS_STATED] = tr("{unit}: {size}").format(unit=stated.name, size=shown)
    for name, (_, label) in _POINTS.items():
        if stated is None or stated.metres != _points(name):
            shown = _shown(width, height, float(_points(name)), SYSTEMS["mm"])
            found[name] = tr("{unit}: {size}").format(unit=tr(label), size=shown)
    size = max(width, height)
    believed = [
        name
        for name in ("mm", "in", "cm", "m")
        if _LEAST <= size * float(SYSTEMS[name].metres) <= _MOST
    ]
    return {name: found[name] for name in dict.fromkeys([*believed, *found])}


def _points(name: str) -> Decimal:
    return SYSTEMS["in"].metres / _POINTS[name][0]


def _shown(width: float, height: float, metres: float, unit: UnitSystem) -> str:
    return " × ".join(unit.fmt(length * metres, "length") for length in (width, height))


def _size(lines: List[Line]) -> Tuple[float, float]:
    boxes = [box(line.curve(math.inf) if line.curve else line.edges) for line in lines]
    if not boxes:
        return 0.0, 0.0
    left, low, right, high = zip(*boxes)
    return max(right) - min(left), max(high) - min(low)
