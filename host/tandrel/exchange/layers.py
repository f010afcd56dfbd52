"""Which layers of a drawing are the part, and which the frame around the sheet."""

from __future__ import annotations

from typing import Dict, List, NamedTuple, Optional, Sequence

import numpy as np

from tandrel.geometry import nesting
from tandrel.geometry.shapes import Shape
from tandrel.gui.i18n import tr
from tandrel.kinds.kind import Entity

# Those that drawings of this application have: what lies within another is a hole there.
OWN = {"CONTOUR", "HOLES"}

# The sides of sheets of paper, in metres: A4 to A0, and 8.5 by 11 inches with its multiples.
_SHEETS = [(0.21, 0.297), (0.297, 0.42), (0.42, 0.594), (0.594, 0.841), (0.841, 1.189)]
_SHEETS += [(0.2159, 0.2794), (0.2794, 0.4318), (0.4318, 0.5588), (0.5588, 0.8636)]
_SHEETS += [(0.8636, 1.1176)]
_ROUND = 5e-4  # metres by which a sheet may be off
_MARGINS = 0.03  # metres by which its border is smaller, at most


class Frame(NamedTuple):
    """A layer whose contours are sharp rectangles around all of the others."""

    layer: str
    is_sure: bool  # whether what it holds has contours within each other, as a part has


def without_sheet(
    entities: Sequence[Entity], shapes: Sequence[Shape], layers: Sequence[str]
) -> List[str]:
    """The layers, but for a sheet's edge and border on the layer of others: they get their own.

    A third rectangle is the part.
    """
    names = list(layers)
    if set(names) <= {"", *OWN}:
        return names
    order = sorted(range(len(shapes)), key=lambda k: -shapes[k].area)
    around: List[int] = []
    for rank, k in enumerate(order[:-1]):
        e, inner = entities[k], order[rank + 1 :]
        if len(around) == 2 or e["type"] != "rectangle" or e["radius"]:
            break
        if around:
            larger = entities[around[-1]]
            is_part = max(larger["w"] - e["w"], larger["h"] - e["h"]) <= _MARGINS + _ROUND
        else:
            is_part = any(
                abs(a - e["w"]) <= _ROUND and abs(b - e["h"]) <= _ROUND
                for one, other in _SHEETS
                for a, b in ((one, other), (other, one))
            )
        holds = shapes[k].prepared.contains_properly
        if not is_part or not all(holds(shapes[j].polygon) for j in inner):
            break
        around.append(k)
    if {names[k] for k in around} & {names[k] for k in range(len(names)) if k not in around}:
        for k in around:
            names[k] = tr("{layer}: sheet").format(layer=names[k])
    return names


def frame(
    entities: Sequence[Entity], shapes: Sequence[Shape], layers: Sequence[str]
) -> Optional[Frame]:
    """The layer that may be the frame around the sheet."""
    if len(set(layers)) < 2 or set(layers) <= OWN:
        return None
    outer = max(range(len(shapes)), key=lambda k: shapes[k].area)
    layer = layers[outer]
    of_layer = [e for e, other in zip(entities, layers) if other == layer]
    if not all(e["type"] == "rectangle" and not e["radius"] for e in of_layer):
        return None
    inner = [k for k, other in enumerate(layers) if other != layer]
    # What touches the frame lies in it, too: it may be drawn around just so.
    least, greatest = np.array(shapes[outer].box).reshape(2, 2) + [[-_ROUND], [_ROUND]]
    boxes = np.array([shapes[k].box for k in inner]).reshape(-1, 2, 2)
    if (boxes[:, 0] < least).any() or (boxes[:, 1] > greatest).any():
        return None
    depths = nesting.depths(tuple(shapes[k] for k in inner))
    return Frame(layer, max(depths) > 0)


def by_contours(layers: Sequence[str]) -> Dict[str, int]:
    """The layers, with how many contours each has, in the order of the drawing."""
    found: Dict[str, int] = {}
    for layer in layers:
        found[layer] = found.get(layer, 0) + 1
    return found
