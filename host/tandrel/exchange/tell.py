"""What the user is told of a drawing: a line for each kind of thing, with how many and where."""

from __future__ import annotations

from typing import Dict, List, Optional

from tandrel.geometry.edges import Point
from tandrel.gui.i18n import tr
from tandrel.units import units


class Note(str):
    """A line for the user; ``place`` is where on the plane to look for it, in metres, or None."""

    place: Optional[Point]

    def __new__(cls, text: str, place: Optional[Point] = None) -> Note:
        note = super().__new__(cls, text)
        note.place = place
        return note


class Notes:
    """Collects what there is to tell. Places are in the drawing's unit until it is known."""

    def __init__(self) -> None:
        self._told: List[Note] = []
        self._left: Dict[str, List[Optional[Point]]] = {}  # by what it is; a place for each

    def tell(self, text: str, place: Optional[Point] = None) -> None:
        """Say something, as it is."""
        self._told.append(Note(text, place))

    def leave(self, what: str, place: Optional[Point] = None) -> None:
        """Count something that is left out; ``what`` names its kind, in the plural."""
        self._left.setdefault(what, []).append(place)

    def scale(self, metres: float) -> None:
        """From now on places are in metres; those so far were in a unit of this length."""
        for places in self._left.values():
            places[:] = [place and (place[0] * metres, place[1] * metres) for place in places]

    def lines(self) -> List[Note]:
        """What was said, in its order, then what was left out, the most numerous first."""
        found = list(self._told)
        for what, places in sorted(self._left.items(), key=lambda item: -len(item[1])):
            where = next((place for place in places if place is not None), None)
            text = tr("Left out ({n}): {what}").format(n=len(places), what=what)
            if where is not None:
                text = tr("{text}, near {place}").format(text=text, place=placed(where))
            found.append(Note(text, where))
        return found


def placed(place: Point) -> str:
    """A place on the plane as the user reads it."""
    u, v = (units().fmt(c, "length") for c in place)
    return f"u = {u}, v = {v}"
