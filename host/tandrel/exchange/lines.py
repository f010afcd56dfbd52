"""What the readers of drawings hand over: lines in the drawing's own unit, and what else it has."""

from __future__ import annotations

import math
from collections.abc import Callable, Hashable, Mapping
from dataclasses import dataclass
from decimal import Decimal
from typing import Any, List, NamedTuple, Optional

from tandrel.exchange.tell import Notes
from tandrel.geometry.edges import Edge
from tandrel.gui.i18n import N_

LARGEST = 1e18  # of a number in a drawing, of whatever unit: no product of such comes near overflow
TOO_LARGE = N_("numbers that are too large, or none")

# The edges that keep this close to a curve, some of them at any distance.
Curve = Callable[[float], List[Edge]]


class Line(NamedTuple):
    """A row of edges, each of which starts where the one before ends, on a layer.

    A full circle is one edge that knows its turn. What is neither straight nor an arc is a curve
    instead, without edges of its own. What is drawn with one pen looks alike.
    """

    edges: List[Edge]
    is_closed: bool
    layer: str = ""
    curve: Optional[Curve] = None
    pen: Hashable = None


class Stated(NamedTuple):
    """The unit that a drawing names, its length, and what drawings it is believed for.

    Those of a size between two, which have an arc of a smaller radius than a third.
    """

    name: str
    metres: Decimal
    least: float = 0.002  # metres
    most: float = 2.0
    radius: float = math.inf  # in the unit


@dataclass
class Drawing:
    """A drawing as it was read; lengths are in its unit, which is None where it names none."""

    lines: List[Line]
    unit: Optional[Stated]
    notes: Notes
    placing: Mapping[str, Any]  # an empty sketch where the drawing lies
    is_own: bool = False  # whether this application wrote it, so that there is nothing to doubt
