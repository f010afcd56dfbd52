"""The units of length that drawings name by a code."""

from __future__ import annotations

import math
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
# Those that drawings name: the sign of each, and its length in metres.
_UNITS: dict[int, tuple[str, Decimal]] = {
    **{code: (name, SYSTEMS[name].metres) for name, code in CODES.items()},
    InsertUnits.Feet: ("ft", Decimal("0.3048")),
    InsertUnits.Yards: ("yd", Decimal("0.9144")),
    InsertUnits.Miles: ("mi", Decimal("1609.344")),
    InsertUnits.Mils: ("mil", Decimal("2.54e-5")),
    InsertUnits.Microinches: ("µin", Decimal("2.54e-8")),
    InsertUnits.Microns: ("µm", Decimal("1e-6")),
    InsertUnits.Decimeters: ("dm", Decimal("0.1")),
    InsertUnits.Decameters: ("dam", Decimal(10)),
    InsertUnits.Hectometers: ("hm", Decimal(100)),
    InsertUnits.Kilometers: ("km", Decimal(1000)),
    InsertUnits.USSurveyFeet: ("ft (US)", Decimal(1200) / 3937),
    InsertUnits.USSurveyInch: ("in (US)", Decimal(100) / 3937),
    InsertUnits.USSurveyYard: ("yd (US)", Decimal(3600) / 3937),
}
_INCHES = InsertUnits.Inches, InsertUnits.USSurveyInch
_OF_PARTS = InsertUnits.Millimeters, InsertUnits.Meters
_FINE = InsertUnits.Mils, InsertUnits.Microinches, InsertUnits.Microns
_ARM, _HAND, _FINGER = 0.5, 0.25, 0.02  # metres
_TOOL = 0.5  # the smallest radius of what is cut, in millimetres


def stated(code: int, is_metric: Optional[bool]) -> Optional[Stated]:
    """The unit of this code; None for one that is unknown or that no part was ever drawn in.

    ``is_metric`` is what the drawing says of that besides. Programs write inches where nobody ever
    chose a unit: they are believed of drawings that aren't called metric, no larger than a hand,
    and with a detail that were too small for any tool if its numbers were millimetres; so are
    centimetres, of parts as long as an arm. Neither millimetres are believed of very small parts if
    the drawing calls itself imperial, nor mils and the like, and other units never.
    """
    if code not in _UNITS:
        return None
    name, metres = _UNITS[code]
    if code in _INCHES:
        return Stated(name, metres, most=0.0 if is_metric else _HAND, radius=_TOOL)
    if code == InsertUnits.Centimeters:
        return Stated(name, metres, most=_ARM, radius=_TOOL)
    if code in _FINE or (code in _OF_PARTS and is_metric is False):
        return Stated(name, metres, least=_FINGER)
    if code in _OF_PARTS:
        return Stated(name, metres)
    return Stated(name, metres, least=math.inf)
