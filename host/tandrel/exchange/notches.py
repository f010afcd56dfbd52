"""Contours that touch another one from inside, cut out of it: together they are one contour."""

from __future__ import annotations

from typing import List, Sequence

from tandrel._shapes import contour, shape
from tandrel.geometry import joining
from tandrel.geometry.edges import Edge
from tandrel.kinds.kind import Entity
from tandrel.progress import no_tick

_MOST = 0.5  # of a contour, that may be cut out of it: what is left of more isn't what was drawn


def cut_out(inner: Sequence[Entity], outer: Entity) -> List[List[Edge]]:
    """What is left of a shape without those inside it, as contours; ValueError if that is no part.

    Holes of their own, which touch it in a point, are none.
    """
    if sum(shape(one).area for one in inner) > _MOST * shape(outer).area:
        raise ValueError
    loops = [contour(entity) for entity in (outer, *inner)]
    left = joining.joined(loops, [0, *(1 for _ in inner)], no_tick)
    if any(one.shape is not None for one in left):
        raise ValueError
    return [one.edges for one in left]
