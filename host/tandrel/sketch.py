"""Sketch geometry: what the numbers of a sketch mean.

A sketch is a dictionary with the name of its ``plane``, its ``offset`` along the plane's normal and
the list of its ``entities``; an entity is a dictionary with a ``type`` and the numbers of it, which
the module of its kind in :mod:`tandrel.kinds` tells.

Lengths are SI throughout. What can't be built raises ``ValueError`` (a size or an arrangement that
makes no shape; the message is for the user, in display units), ``KeyError`` (a number is missing)
or ``TypeError`` (a value of the wrong kind), and nothing else, whatever the dictionary holds.
"""

from __future__ import annotations

from typing import Any, Mapping

from tandrel import _checks
from tandrel._reasons import Reason
from tandrel._shapes import shape
from tandrel.geometry import nesting
from tandrel.geometry.edges import Points
from tandrel.geometry.shapes import Shape
from tandrel.gui.i18n import N_

PLANES = ("XY", "XZ", "YZ")
AXES: Mapping[str, tuple[str, str]] = {"XY": ("x", "y"), "XZ": ("x", "z"), "YZ": ("y", "z")}

inside = nesting.inside  # whether a point lies inside an outline, for whoever needs no entity


def new() -> dict[str, Any]:
    """An empty sketch."""
    return {"plane": PLANES[0], "offset": 0.0, "entities": []}


def outline(e: Any) -> Points:
    """The closed outline of an entity: an array of the shape (N, 2), counter-clockwise.

    The first point is not repeated at the end. Corners and ends of arcs are among the points;
    arcs and straight edges alike are divided so that no two neighbours lie further apart than a
    64th of the way round. The array is shared and can't be written to.
    """
    return shape(e).outline


def corners(e: Any) -> Points:
    """The corners that an entity is drawn by, in drawing order: an array of the shape (N, 2).

    Rounded corners count where their edges meet; circles and slots have none. Here whatever can't
    be built raises ``ValueError`` or ``KeyError`` only.
    """
    try:
        return shape(e).corners
    except TypeError as error:
        raise ValueError(*error.args) from None


def area(e: Any) -> float:
    """The area that an entity encloses, exact for arcs too; greater than zero."""
    return shape(e).area


def depths(sk: Mapping[str, Any]) -> list[int]:
    """For each entity of a sketch how deep it is nested: 0 for material, 1 for a hole in it, ...

    That is the length of the longest chain of others that lie each inside the next, the first
    around this one: a hole in the common part of two plates that overlap is a hole. A shape lies
    inside another one when it touches its outline nowhere; equal and overlapping shapes don't lie
    inside each other. An entity that can't be built has the depth 0 and holds nothing.
    ``ValueError`` if there is no list of entities to go by.
    """
    entities = sk.get("entities", []) if isinstance(sk, Mapping) else None
    if not isinstance(entities, (list, tuple)):
        raise ValueError(Reason(N_("The list of shapes is damaged")))
    valid: dict[int, Shape] = {}
    for k, e in enumerate(entities):
        try:
            valid[k] = shape(e)
        except (ValueError, KeyError, TypeError):
            pass
    found = [0] * len(entities)
    for k, depth in zip(valid, nesting.depths(tuple(valid.values()))):
        found[k] = depth
    return found


def check(sk: Any) -> list[str]:
    """What must be put right before a sketch can be used: messages for the user, none if it can.

    Said are a sketch without shapes, an unknown plane, an offset that is no finite number, each
    shape that can't be built and why, a shape drawn twice, and a shape that touches another from
    inside, so that it is neither clearly a hole nor clearly not. Of many messages the first few
    are given and the number of the others. Nothing that a sketch may hold makes this raise.
    """
    return _checks.messages(sk, PLANES)
