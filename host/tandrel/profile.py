"""The profile that a sketch cuts: shapes joined, holes taken out, islands put back.

Shapes that can't be built are left out. The contours of the profile are made of the shapes' own
edges, so that arcs stay arcs; what is measured, shown and exported comes from them.
"""

from __future__ import annotations

import math
from collections import defaultdict
from typing import Any, Callable, Dict, List, NamedTuple, Optional, Tuple

from shapely.geometry import Polygon
from shapely.geometry.base import BaseGeometry
from shapely.geometry.polygon import orient
from shapely.ops import unary_union

from tandrel import sketch as S
from tandrel._shapes import contour, drawn, shape
from tandrel.geometry import joining, loops
from tandrel.geometry.edges import Edge
from tandrel.geometry.shapes import Shape
from tandrel.progress import Tick, no_tick

_FINE = 1e-6  # how far divided arcs are from their chords, as a part of the shape's size
_AT_ONCE = 200  # shapes joined between two ticks


class Contour(NamedTuple):
    """A closed contour with the material on its left: outsides run counter-clockwise.

    ``area`` is what it encloses, less than zero for a hole. A contour that is all of one shape's
    knows the ``drawn`` loop, which runs counter-clockwise in any case.
    """

    edges: List[Edge]
    area: float
    drawn: Optional[loops.Loop] = None

    @property
    def is_hole(self) -> bool:
        return self.area < 0


def contours(sketch: Dict[str, Any], tick: Tick = no_tick) -> List[Contour]:
    """The contours of the profile: single shapes' in the order of these, then the joined ones."""
    return _profile(sketch).contours(tick)


def area(sketch: Dict[str, Any], tick: Tick = no_tick) -> float:
    """What remains after cutting, in square metres; exact, arcs too."""
    return math.fsum(contour.area for contour in contours(sketch, tick))


def has_own_contours(sketch: Dict[str, Any], tick: Tick = no_tick) -> bool:
    """Whether the profile's contours are just those of the shapes."""
    found = contours(sketch, tick)
    return len(found) == len(_profile(sketch).shapes) and all(c.drawn for c in found)


def region(sketch: Dict[str, Any], tick: Tick = no_tick) -> BaseGeometry:
    """The profile as polygons: arcs are divided so finely that no tool could follow them."""
    return _profile(sketch).region(tick)


def polygons(area: BaseGeometry) -> List[Polygon]:
    """The separate pieces of a region, those that lie in a hole of another after it."""
    pieces = [piece for piece in getattr(area, "geoms", [area]) if not piece.is_empty]
    return sorted(pieces, key=lambda piece: -Polygon(piece.exterior).area)


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

    def contours(self, tick: Tick) -> List[Contour]:
        found: List[Contour] = self._once("contours", lambda: self._contours(tick))
        return found

    def region(self, tick: Tick) -> BaseGeometry:
        def divide() -> BaseGeometry:
            return self._joined(self._divided(lambda done: tick(done / 2)), tick)

        return self._once("region", divide)

    def _contours(self, tick: Tick) -> List[Contour]:
        own = [drawn(entity).loop for entity in self.entities]
        try:
            cut = joining.joined([loops.joined(loop) for loop in own], self.depths, tick)
        except joining.Unjoined:
            rings = _rings(self.region(tick))
            return [Contour(ring, loops.enclosed(ring)) for ring in rings]
        found = []
        for edges, k in sorted(cut, key=lambda c: len(own) if c.shape is None else c.shape):
            enclosed = loops.enclosed(edges)
            if k is None:
                found.append(Contour(edges, enclosed))
            else:
                # To the last digit: the contour's arcs may be a rounding off the shape's.
                exact = math.copysign(self.shapes[k].area, enclosed)
                found.append(Contour(edges, exact, own[k]))
        return found

    def _divided(self, tick: Tick) -> List[Polygon]:
        divided = []
        for k, entity in enumerate(self.entities):
            tick(k / len(self.entities))
            divided.append(_divided(entity))
        return divided

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
                tick((1 + done / len(shapes)) / 2)
                parts.append(unary_union(level[first:][:_AT_ONCE]))
                done += len(level[first:][:_AT_ONCE])
            joined = unary_union(parts)
            whole = whole.difference(joined) if depth % 2 else whole.union(joined)
        return whole

    def _once(self, name: str, compute: Callable[[], Any]) -> Any:
        if name not in self._known:
            self._known[name] = compute()
        return self._known[name]


def _rings(area: BaseGeometry) -> List[List[Edge]]:
    """The contours of a region, with the material on their left."""
    return [
        [Edge(start, end) for start, end in zip(ring.coords, ring.coords[1:])]
        for piece in map(orient, polygons(area))
        for ring in (piece.exterior, *piece.interiors)
    ]


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
