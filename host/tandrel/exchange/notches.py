"""Contours that touch another one from inside, cut out of it: together they are one contour."""

from __future__ import annotations

from typing import List, Sequence

from tandrel._shapes import contour, shape
from tandrel.exchange.tidy import Places, extent_of, reach
from tandrel.geometry import joining
from tandrel.geometry.edges import Edge
from tandrel.geometry.loops import enclosed
from tandrel.kinds.kind import Entity
from tandrel.progress import no_tick

_MOST = 0.5  # of a contour, that may be cut out of it


def cut_out(inner: Sequence[Entity], outer: Entity) -> List[Edge]:
    """The contour of what is left of a shape without those inside it.

    ValueError if that is little, in pieces, or touches itself: then it isn't what was meant.
    """
    if sum(shape(one).area for one in inner) > _MOST * shape(outer).area:
        raise ValueError
    loops = [contour(entity) for entity in (outer, *inner)]
    left = joining.joined(loops, [0, *(1 for _ in inner)], no_tick)
    if len(left) > 1 or left[0].shape is not None or not _is_sound(left[0].edges):
        raise ValueError
    return left[0].edges


def _is_sound(edges: List[Edge]) -> bool:
    """Whether a contour is an outside, and comes to no place twice."""
    places = Places(reach(extent_of(edges)))
    return enclosed(edges) > 0 and len({places.at(edge.start) for edge in edges}) == len(edges)
