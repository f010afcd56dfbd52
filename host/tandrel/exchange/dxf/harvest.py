"""What the parts of a drawing give: entities, open lines still to be joined, and the rest."""

from __future__ import annotations

from collections import Counter
from decimal import Decimal

from tandrel._shapes import shape
from tandrel.exchange.joining import Chains
from tandrel.exchange.recognition import recognised
from tandrel.geometry.edges import LARGEST, Edge, Point
from tandrel.gui.i18n import N_, tr
from tandrel.kinds import circle
from tandrel.kinds.kind import Entity
from tandrel.progress import Tick
from tandrel.units import units

NO_NUMBERS = N_("numbers that are too large, or none")
_MOST_NOTES = 12


class Unfit(Exception):
    """A part that no sketch can hold, and why."""


class Harvest:
    """What the parts of a drawing give: entities, open lines still to be joined, and the rest."""

    def __init__(self, metres: Decimal) -> None:
        self.entities: list[Entity] = []
        self._metres = metres
        self._chains = Chains()
        self._left: Counter[str] = Counter()
        self._errors: list[float] = []

    def add_circle(self, centre: Point, radius: float) -> None:
        entity = circle.entity(centre, radius)
        try:
            shape(entity)
        except ValueError as why:
            self.leave(str(why))
        else:
            self.entities.append(entity)

    def add(self, edges: list[Edge], is_closed: bool) -> None:
        if not is_closed:
            self._chains.add(edges)
            return
        try:
            entity, error = recognised(edges)
        except ValueError as why:
            self.leave(str(why))
            return
        self.entities.append(entity)
        if error:
            self._errors.append(error)

    def close(self, tick: Tick) -> None:
        """Join the lines that are still open."""
        closed, open_lines = self._chains.closed()
        for k, edges in enumerate(closed):
            tick(k / len(closed))
            self.add(edges, True)
        self._left[tr("lines and arcs that do not close")] += open_lines

    def leave(self, what: str) -> None:
        self._left[what] += 1

    def notes(self) -> list[str]:
        """What the user should know of, the most important first."""
        found = []
        if self._errors:
            text = tr("Approximated ({n}): contours with arcs, now polygons within {error}")
            error = units().fmt(max(self._errors), "length")
            found.append(text.format(n=len(self._errors), error=error))
        text = tr("Left out ({n}): {what}")
        found += [text.format(n=n, what=what) for what, n in self._left.most_common() if n]
        further = len(found) - _MOST_NOTES
        if further > 0:
            found[_MOST_NOTES:] = [tr("Further notes: {n}").format(n=further)]
        return found

    def point(self, u: float, v: float, mirrored: bool = False) -> Point:
        """A point of the drawing in metres."""
        return self.length(-u if mirrored else u), self.length(v)

    def length(self, number: float) -> float:
        """A number of the drawing in metres; Unfit if no sketch can hold it."""
        # In decimal arithmetic 12.3 mm are 0.0123 m to the last digit.
        length = float(Decimal(repr(float(number))) * self._metres)
        if not abs(length) <= LARGEST:
            raise Unfit(tr(NO_NUMBERS))
        return length
