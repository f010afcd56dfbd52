"""Shapes that a loop encloses, as they are drawn, picked and compared."""

from __future__ import annotations

from functools import cached_property
from typing import Sequence

import numpy as np
from shapely.geometry import Polygon
from shapely.prepared import PreparedGeometry, prep

from tandrel.geometry.edges import Point, Points
from tandrel.geometry.loops import Box, Loop, enclosed, is_curved, sampled, straight


class Shape:
    """What is known of a shape that can be drawn.

    Arrays have the shape (N, 2) and can't be written to, as everybody shares them:
    ``outline`` and ``ring`` run counter-clockwise, ``corners`` as drawn. ``box`` is (least u, least
    v, greatest u, greatest v). Two shapes are equal only if they are the same object.
    """

    def __init__(self, corners: Sequence[Point], loop: Loop) -> None:
        self.corners = _array(corners)
        self.area = enclosed(loop)
        self._is_curved = is_curved(loop)
        # Points along straight edges would only slow the predicates down, and blur them.
        ring = sampled(loop) if self._is_curved else [edge.start for edge in loop]
        self.ring = _array(ring)
        us, vs = zip(*ring)
        self.box: Box = min(us), min(vs), max(us), max(vs)

    @cached_property
    def outline(self) -> Points:
        """The ring with points along its straight edges as well."""
        if self._is_curved:
            return self.ring
        return _array(sampled(straight([(u, v) for u, v in self.ring.tolist()])))

    @cached_property
    def polygon(self) -> Polygon:
        """The shape to shapely, to within the sampling of its arcs."""
        return Polygon(self.ring)

    @cached_property
    def prepared(self) -> PreparedGeometry:
        """The polygon made ready to be asked many times."""
        return prep(self.polygon)


def _array(points: Sequence[Point]) -> Points:
    array = np.array(points, dtype=np.float64).reshape(-1, 2)
    array.flags.writeable = False
    return array
