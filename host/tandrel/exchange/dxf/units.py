"""The units of length of drawings."""

from __future__ import annotations

from decimal import Decimal

from ezdxf.enums import InsertUnits

from tandrel.exchange import ExchangeError, UnitsMissing
from tandrel.gui.i18n import tr
from tandrel.units import SYSTEMS

CODES = {
    "mm": InsertUnits.Millimeters,
    "cm": InsertUnits.Centimeters,
    "m": InsertUnits.Meters,
    "in": InsertUnits.Inches,
}
_METRES: dict[int, Decimal] = {
    **{code: SYSTEMS[name].metres for name, code in CODES.items()},
    InsertUnits.Feet: Decimal("0.3048"),
    InsertUnits.Yards: Decimal("0.9144"),
    InsertUnits.Mils: Decimal("0.0000254"),
    InsertUnits.Microns: Decimal("0.000001"),
    InsertUnits.Decimeters: Decimal("0.1"),
    InsertUnits.Kilometers: Decimal(1000),
}


def metres(code: int, unit: str | None) -> Decimal:
    """The length of a drawing's unit, given by its code, or where there is none, by its name."""
    if code == 0:
        if unit is None:
            raise UnitsMissing(tr("the drawing does not say what unit its lengths are in"))
        return SYSTEMS[unit].metres
    if code not in _METRES:
        name = InsertUnits(code).name if code in list(InsertUnits) else str(code)
        text = tr("the drawing's unit of length, {unit}, is not supported")
        raise ExchangeError(text.format(unit=name))
    return _METRES[code]
