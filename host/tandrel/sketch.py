"""Sketch geometry: what the numbers of a sketch mean.

A sketch is a dictionary with the name of its ``plane``, its ``offset`` along the plane's normal and
the list of its ``entities``; an entity is a dictionary with a ``type`` and the numbers of it:

    rectangle   x, y (the lower left corner), w, h, radius (of its corners, 0 = sharp)
    circle      xc, yc, r
    regular     xc, yc, r (centre to corner), n (sides), angle (of the first corner, in degrees)
    slot        x1, y1, x2, y2 (the centres of its ends), r (half its width)
    polygon     points (a list of [u, v]), radius (of its corners, 0 = sharp)

Lengths are SI throughout. What can't be built raises ``ValueError`` (a size or an arrangement that
makes no shape; the message is for the user, in display units), ``KeyError`` (a number is missing)
or ``TypeError`` (a value of the wrong kind), and nothing else, whatever the dictionary holds.
"""

from __future__ import annotations

from typing import Any, Mapping, Sequence

import numpy as np
import numpy.typing as npt

from tandrel import _checks, _nesting
from tandrel._outlines import Points
from tandrel._reasons import Reason
from tandrel._shapes import Shape, shape
from tandrel.gui.i18n import N_

PLANES = ("XY", "XZ", "YZ")
AXES: Mapping[str, tuple[str, str]] = {"XY": ("x", "y"), "XZ": ("x", "z"), "YZ": ("y", "z")}


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


def inside(ring: npt.ArrayLike, p: Sequence[float]) -> bool:
    """Whether a point lies inside a closed outline, given as a sequence of points.

    Of the outline itself the left and lower edges count as inside, the right and upper ones don't:
    of two shapes that share an edge exactly one owns a point on it.

    A ray from the point to the right crosses the outline an odd number of times.
    """
    points = np.asarray(ring, dtype=np.float64).reshape(-1, 2)
    if not len(points):
        return False
    u, v = float(p[0]), float(p[1])
    above = points[:, 1] > v
    crossed = np.flatnonzero(above[1:] != above[:-1]).tolist()
    if above[0] != above[-1]:
        crossed.append(-1)
    within = False
    for k in crossed:
        # Upwards, whichever way the outline runs, so that rounding is the same for both sides.
        (v1, u1), (v2, u2) = sorted([points[k].tolist()[::-1], points[k + 1].tolist()[::-1]])
        if (u2 - u1) * (v - v1) > (u - u1) * (v2 - v1):
            within = not within
    return within


def depths(sk: Mapping[str, Any]) -> list[int]:
    """For each entity of a sketch the number of others that it lies inside of.

    It lies inside another one when it touches its outline nowhere; equal and overlapping shapes
    don't lie inside each other. An entity that can't be built has the depth 0 and holds nothing.
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
    for k, depth in zip(valid, _nesting.depths(tuple(valid.values()))):
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
