"""Which layers of a drawing are the part, and which the frame around the sheet."""

from __future__ import annotations

from typing import Dict, NamedTuple, Optional, Sequence

from tandrel import sketch as S
from tandrel._shapes import shape
from tandrel.kinds.kind import Entity

# Those that drawings of this application have: what lies within another is a hole there.
OWN = {"CONTOUR", "HOLES"}


class Frame(NamedTuple):
    """A layer whose contours are sharp rectangles around all of the others."""

    layer: str
    is_sure: bool  # whether what it holds has contours within each other, as a part has


def frame(entities: Sequence[Entity], layers: Sequence[str]) -> Optional[Frame]:
    """The layer that may be the frame around the sheet."""
    if len(set(layers)) < 2 or set(layers) <= OWN:
        return None
    shapes = [shape(entity) for entity in entities]
    outer = max(range(len(shapes)), key=lambda k: shapes[k].area)
    layer = layers[outer]
    of_layer = [e for e, other in zip(entities, layers) if other == layer]
    if not all(e["type"] == "rectangle" and not e["radius"] for e in of_layer):
        return None
    inner = [k for k, other in enumerate(layers) if other != layer]
    if not all(shapes[outer].prepared.contains_properly(shapes[k].polygon) for k in inner):
        return None
    depths = S.depths({"entities": [entities[k] for k in inner]})
    return Frame(layer, max(depths) > 0)


def by_contours(layers: Sequence[str]) -> Dict[str, int]:
    """The layers, with how many contours each has, in the order of the drawing."""
    found: Dict[str, int] = {}
    for layer in layers:
        found[layer] = found.get(layer, 0) + 1
    return found
