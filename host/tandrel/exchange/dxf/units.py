"""The units of length that drawings name by a code."""

from __future__ import annotations

from decimal import Decimal
from typing import Optional

from ezdxf.enums import InsertUnits

from tandrel.exchange import ExchangeError
from tandrel.exchange.lines import Stated
from tandrel.gui.i18n import tr
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
    InsertUnits.Mils: Decimal("0.0000254"),
    InsertUnits.Microns: Decimal("0.000001"),
    InsertUnits.Decimeters: Decimal("0.1"),
    InsertUnits.Kilometers: Decimal(1000),
}
_HAND, _FINGER = 0.25, 0.02  # metres


def stated(code: int, is_metric: Optional[bool], unit: Optional[str]) -> Optional[Stated]:
    """The unit of this code, None for 0; ExchangeError if it is of no use and none is given.

    ``is_metric`` is what the drawing says of that besides. Programs write inches where nobody ever
    chose a unit: of parts larger than a hand they aren't believed, nor are millimetres of very
    small ones if the drawing calls itself imperial.
    """
    if code == 0:
        return None
    is_known = code in list(InsertUnits)
    name = InsertUnits(code).name if is_known else str(code)
    if code in _METRES:
        unit_name = _NAMES.get(InsertUnits(code), name)
        if code == InsertUnits.Inches:
            return Stated(unit_name, _METRES[code], most=_HAND)
        if is_metric is False:
            return Stated(unit_name, _METRES[code], least=_FINGER)
        return Stated(unit_name, _METRES[code])
    if unit is not None:
        return None
    text = tr("the drawing's unit of length, {unit}, is not supported")
    raise ExchangeError(text.format(unit=name))
