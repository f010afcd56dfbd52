"""The lines of a drawing in metres, its curves divided."""

from __future__ import annotations

import math
from decimal import Decimal
from typing import Callable, Dict, Iterator, List, Tuple

from tandrel.exchange import ExchangeError
from tandrel.exchange.lines import TOO_LARGE, Drawing, Line
from tandrel.exchange.recognise import CHORD
from tandrel.geometry.edges import LARGEST, Edge, Point, polar
from tandrel.geometry.loops import is_curved
from tandrel.gui.i18n import tr
from tandrel.units import units


def in_metres(
    drawing: Drawing, metres: Decimal, lost: List[Tuple[List[Edge], str]]
) -> Iterator[Line]:
    """The lines in metres, curves divided, but for those that no sketch can hold.

    Of these it adds where they run, about, and why they are out to ``lost``; those that are too
    large even for that are told.
    """
    known: Dict[float, float] = {}
    divided = 0

    def length(number: float) -> float:
        # In decimal arithmetic 12.3 mm are 0.0123 m to the last digit.
        found = known.get(number)
        if found is None:
            found = known[number] = float(Decimal(repr(number)) * metres)
            if not abs(found) <= LARGEST:
                raise ExchangeError(tr(TOO_LARGE))
        return found

    for line in drawing.lines:
        try:
            edges = line.edges
            if line.curve is not None:
                edges = line.curve(CHORD / float(metres))
                divided += not is_curved(edges)
            edges = [_scaled(edge, length) for edge in edges]
        except ExchangeError as why:
            try:
                rough = line.edges if line.curve is None else line.curve(math.inf)
                lost.append(([_scaled(edge, length) for edge in rough], str(why)))
            except ExchangeError:
                drawing.notes.leave(str(why))
            continue
        if edges:
            yield line._replace(edges=edges, curve=None)
    if divided:
        text = tr("Curves ({n}): divided into edges within {error}")
        error = units().fmt(CHORD, "length")
        drawing.notes.tell(text.format(n=divided, error=error))


def _scaled(edge: Edge, length: Callable[[float], float]) -> Edge:
    (u1, v1), (u2, v2), bulge, turn = edge
    if turn is None:
        return Edge((length(u1), length(v1)), (length(u2), length(v2)), bulge)
    # From the scaled centre the ends are as exact as the drawing's numbers.
    centre = length(turn.centre[0]), length(turn.centre[1])
    turn = turn._replace(centre=centre, radius=length(turn.radius))
    ends: List[Point] = [
        polar(centre, turn.radius, degrees) for degrees in (turn.first, turn.first + turn.angle)
    ]
    return Edge(ends[0], ends[1], bulge, turn if abs(turn.angle) >= 360 else None)
