"""The profile that a sketch cuts: shapes joined, holes taken out, islands put back."""

from __future__ import annotations

from collections import defaultdict
from typing import Any, Dict, List

from shapely.geometry import Polygon
from shapely.geometry.base import BaseGeometry
from shapely.ops import unary_union

from tandrel import sketch as S


def region(sketch: Dict[str, Any]) -> BaseGeometry:
    """The area that remains after cutting. Shapes that can't be built are left out."""
    shapes = [entity for entity in sketch["entities"] if _buildable(entity)]
    levels: Dict[int, List[Polygon]] = defaultdict(list)
    for entity, depth in zip(shapes, S.depths({**sketch, "entities": shapes})):
        levels[depth].append(Polygon(S.outline(entity)))
    area: BaseGeometry = Polygon()
    for depth in sorted(levels):
        level = unary_union(levels[depth])
        area = area.difference(level) if depth % 2 else area.union(level)
    return area


def polygons(area: BaseGeometry) -> List[Polygon]:
    """The separate pieces of a region, those that lie in a hole of another after it."""
    pieces = [piece for piece in getattr(area, "geoms", [area]) if not piece.is_empty]
    return sorted(pieces, key=lambda piece: -Polygon(piece.exterior).area)


def _buildable(entity: Dict[str, Any]) -> bool:
    try:
        S.outline(entity)
    except (ValueError, KeyError, TypeError):
        return False
    return True
