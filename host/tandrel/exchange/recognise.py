"""The entities that contours of drawings stand for."""

from __future__ import annotations

from typing import NamedTuple, Sequence

from tandrel import kinds
from tandrel._shapes import contour, shape
from tandrel.geometry import loops
from tandrel.geometry.edges import Edge
from tandrel.kinds import circle, polygon
from tandrel.kinds.fields import MOST_CORNERS
from tandrel.kinds.kind import Entity, Guess

# How well an entity must fit a contour to stand for it. The first is a matter of rounding; the
# second, of digits that another program cut off, is tried where the alternative is to divide arcs.
FINE = 1e-11  # of the contour's size
COARSE, COARSEST = 1e-5, 1e-7  # of the contour's size, and metres
CHORD = 1e-6  # metres between an arc that had to be divided and its chords, at most
# More can't be an outline, even if each of its corners is an arc between two gaps.
MOST_EDGES = 4 * MOST_CORNERS


class Recognised(NamedTuple):
    """The entity that stands for a contour, and how far its arcs are from it; 0 if it is exact."""

    entity: Entity
    error: float


def recognised(edges: Sequence[Edge]) -> Recognised:
    """The entity that a contour, running either way, was or might have been drawn as.

    Gaps and edges shorter than any detail of a sketch don't count. What no other entity fits is a
    polygon, with its arcs divided. ``ValueError`` if there is none that ``S.outline`` takes.
    """
    if loops.is_circle(edges) and edges[0].turn is not None:
        whole = circle.entity(edges[0].turn.centre, edges[0].turn.radius)
        shape(whole)
        return Recognised(whole, 0.0)
    if len(edges) > MOST_EDGES:
        shape(polygon.entity([edge.start for edge in edges]))
    edges = loops.tidied(edges)
    if not edges:
        shape(polygon.entity([]))
    curved = loops.is_curved(edges)
    if not curved:  # so a polygon of them would run, over the gaps
        edges = loops.straight([edge.start for edge in edges])
    left, low, right, high = loops.box(edges)
    size, lost = max(right - left, high - low), loops.rounding(edges)
    for tolerance in [FINE * size, min(COARSE * size, COARSEST)] if curved else [FINE * size]:
        for kind in kinds.KINDS.values():
            for guess in kind.guesses(edges, tolerance + lost):
                if _is_right(guess, edges):
                    return Recognised(guess.entity, 0.0)
    error = loops.fineness(edges, CHORD) if curved else 0.0
    while (
        curved and sum(loops.chords(edge, error) for edge in edges) > MOST_CORNERS and error < size
    ):
        error *= 2
    entity = polygon.entity(loops.divided(edges, error))
    shape(entity)
    return Recognised(entity, error)


def _is_right(guess: Guess, edges: Sequence[Edge]) -> bool:
    try:
        drawn = contour(guess.entity)
    except ValueError:
        return False
    return guess.tolerance is None or loops.agree(edges, loops.tidied(drawn), guess.tolerance)
