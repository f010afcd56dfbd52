"""The units of length that drawings name by a code."""

from __future__ import annotations

from decimal import Decimal
from typing import Optional

from ezdxf.enums import InsertUnits

from tandrel.exchange.lines import Stated
from tandrel.units import SYSTEMS

CODES = {
    "mm": InsertUnits.Millimeters,
    "cm": InsertUnits.Centimeters,
    "m": InsertUnits.Meters,
    "in": InsertUnits.Inches,
}
_NAMES = {code: name for name, code in CODES.items()}
_METRES: dict[int, Decimal] = {
    **{code: SYSTEMS[name].metres for name, code in CODES.items()},
    InsertUnits.Feet: Decimal("0.3048"),
    InsertUnits.Yards: Decimal("0.9144"),
    InsertUnits.Miles: Decimal("1609.344"),
    InsertUnits.Mils: Decimal("2.54e-5"),
    InsertUnits.Microinches: Decimal("2.54e-8"),
    InsertUnits.Microns: Decimal("1e-6"),
    InsertUnits.Decimeters: Decimal("0.1"),
    InsertUnits.Decameters: Decimal(10),
    InsertUnits.Hectometers: Decimal(100),
    InsertUnits.Kilometers: Decimal(1000),
    InsertUnits.USSurveyFeet: Decimal(1200) / 3937,
    InsertUnits.USSurveyInch: Decimal(100) / 3937,
    InsertUnits.USSurveyYard: Decimal(3600) / 3937,
}
_HAND, _FINGER = 0.25, 0.02  # metres
_TOOL = 0.5  # the smallest radius of what is cut, in millimetres


def stated(code: int, is_metric: Optional[bool]) -> Optional[Stated]:
    """The unit of this code; None for one that is unknown or that no part was ever drawn in.

    ``is_metric`` is what the drawing says of that besides. Programs write inches where nobody ever
    chose a unit: they are believed of drawings that aren't called metric, no larger than a hand,
    and with a detail that were too small for any tool if its numbers were millimetres. Nor are
    millimetres believed of very small parts if the drawing calls itself imperial.
    """
    if code not in _METRES:
        return None
    name = _NAMES.get(InsertUnits(code), InsertUnits(code).name)
    if code in (InsertUnits.Inches, InsertUnits.USSurveyInch):
        return Stated(name, _METRES[code], most=0.0 if is_metric else _HAND, radius=_TOOL)
    if is_metric is False:
        return Stated(name, _METRES[code], least=_FINGER)
    return Stated(name, _METRES[code])
