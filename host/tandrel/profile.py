"""The profile that a sketch cuts: shapes joined, holes taken out, islands put back.

Shapes that can't be built are left out. Where no shape overlaps another, the profile's contours are
the shapes' own, exact arcs and all; only where some do, their arcs are divided to join them.
"""

from __future__ import annotations

import math
from collections import defaultdict
from typing import Any, Callable, Dict, List, Tuple

from shapely.geometry import Polygon
from shapely.geometry.base import BaseGeometry
from shapely.ops import unary_union

from tandrel import sketch as S
from tandrel._shapes import contour, shape
from tandrel.geometry import loops
from tandrel.geometry.shapes import Shape
from tandrel.progress import Tick, no_tick

_FINE = 1e-6  # how far divided arcs are from their chords, as a part of the shape's size
_AT_ONCE = 200  # shapes joined between two ticks


def region(sketch: Dict[str, Any], tick: Tick = no_tick) -> BaseGeometry:
    """The area that remains after cutting, to be looked at: a circle is a polygon of 64 corners."""
    return _profile(sketch).region(tick)


def polygons(area: BaseGeometry) -> List[Polygon]:
    """The separate pieces of a region, those that lie in a hole of another after it."""
    pieces = [piece for piece in getattr(area, "geoms", [area]) if not piece.is_empty]
    return sorted(pieces, key=lambda piece: -Polygon(piece.exterior).area)


def area(sketch: Dict[str, Any], tick: Tick = no_tick) -> float:
    """What remains after cutting, in square metres: exact, arcs too, where no shapes overlap.

    Where some do, good to about a millionth of their common area.
    """
    profile = _profile(sketch)
    enclosed = profile.summed([one.area for one in profile.shapes])
    if not profile.overlaps(tick):
        return enclosed
    # Dividing its arcs changes what a shape counts here and in the region alike, so that what is
    # lost by it cancels out but for the areas that shapes have in common.
    divided = profile.summed([polygon.area for polygon in profile.fine(tick)])
    return enclosed - (divided - profile.fine_region(tick).area)


def contours(sketch: Dict[str, Any], tick: Tick = no_tick) -> int:
    """How many closed contours the profile has, outer ones and holes."""
    return sum(1 + len(piece.interiors) for piece in polygons(region(sketch, tick)))


def has_own_contours(sketch: Dict[str, Any], tick: Tick = no_tick) -> bool:
    """Whether the profile's contours are just those of the shapes."""
    profile = _profile(sketch)
    return contours(sketch, tick) == len(profile.shapes) and not profile.overlaps(tick)


def fine_region(sketch: Dict[str, Any], tick: Tick = no_tick) -> BaseGeometry:
    """The region with its arcs divided so finely that no tool could follow the difference."""
    return _profile(sketch).fine_region(tick)


def box(sketch: Dict[str, Any]) -> loops.Box:
    """Least u and v, greatest u and v, exact for arcs too; ValueError where nothing is drawn."""
    boxes = [loops.box(contour(entity)) for entity in _profile(sketch).entities]
    least_u, least_v, greatest_u, greatest_v = zip(*boxes) if boxes else ((), (), (), ())
    return min(least_u), min(least_v), max(greatest_u), max(greatest_v)


class _Profile:
    """What has been found out of the same shapes so far."""

    def __init__(self, entities: List[Dict[str, Any]], shapes: Tuple[Shape, ...]) -> None:
        self.entities = entities
        self.shapes = shapes
        self.depths = S.depths({"entities": entities})
        self._known: Dict[str, Any] = {}

    def region(self, tick: Tick) -> BaseGeometry:
        return self._once(
            "region", lambda: self._joined([one.polygon for one in self.shapes], tick)
        )

    def fine(self, tick: Tick) -> List[Polygon]:
        def divide() -> List[Polygon]:
            divided = []
            for k, entity in enumerate(self.entities):
                tick(k / len(self.entities))
                divided.append(_divided(entity))
            return divided

        return self._once("fine", divide)

    def fine_region(self, tick: Tick) -> BaseGeometry:
        return self._once("fine region", lambda: self._joined(self.fine(tick), tick))

    def overlaps(self, tick: Tick) -> bool:
        """Whether any shape lies partly in another."""
        counted = self.summed([one.polygon.area for one in self.shapes])
        rounding = 1e-12 * math.fsum(one.area for one in self.shapes)
        return abs(counted - self.region(tick).area) > rounding

    def summed(self, areas: List[float]) -> float:
        """The sum of what the shapes enclose, holes taken away."""
        return math.fsum(-a if depth % 2 else a for a, depth in zip(areas, self.depths))

    def _joined(self, shapes: List[Polygon], tick: Tick) -> BaseGeometry:
        levels: Dict[int, List[Polygon]] = defaultdict(list)
        for polygon, depth in zip(shapes, self.depths):
            levels[depth].append(polygon)
        whole: BaseGeometry = Polygon()
        done = 0
        for depth in sorted(levels):
            parts = []
            # Shapes that lie near each other are joined at little cost.
            level = sorted(levels[depth], key=lambda polygon: polygon.bounds)
            for first in range(0, len(level), _AT_ONCE):
                tick(done / len(shapes))
                parts.append(unary_union(level[first:][:_AT_ONCE]))
                done += len(level[first:][:_AT_ONCE])
            joined = unary_union(parts)
            whole = whole.difference(joined) if depth % 2 else whole.union(joined)
        return whole

    def _once(self, name: str, compute: Callable[[], Any]) -> Any:
        if name not in self._known:
            self._known[name] = compute()
        return self._known[name]


_latest = _Profile([], ())


def _profile(sketch: Dict[str, Any]) -> _Profile:
    """The profile of a sketch; that of the one asked for last is remembered."""
    global _latest
    entities, shapes = [], []
    for entity in sketch["entities"]:
        try:
            shapes.append(shape(entity))
        except (ValueError, KeyError, TypeError):
            continue
        entities.append(entity)
    # The same numbers are the same shape for as long as anybody holds it. The entities of an
    # earlier call may have been changed since.
    if tuple(shapes) != _latest.shapes:
        _latest = _Profile(entities, tuple(shapes))
    _latest.entities = entities
    return _latest


def _divided(entity: Dict[str, Any]) -> Polygon:
    edges = contour(entity)
    left, low, right, high = loops.box(edges)
    return Polygon(loops.divided(edges, _FINE * max(right - left, high - low)))
