"""Which layers of a drawing are the part, and which the frame around the sheet."""

from __future__ import annotations

from typing import Collection, Dict, List, NamedTuple, Optional, Sequence, Tuple

import numpy as np

from tandrel.geometry import nesting
from tandrel.geometry.shapes import Shape
from tandrel.gui.i18n import N_, tr
from tandrel.kinds.kind import Entity

# Those that drawings of this application have: what lies within another is a hole there.
OWN = {"CONTOUR", "HOLES"}

# The sides of sheets of paper, in metres: A4 to A0, and 8.5 by 11 inches with its multiples.
_SHEETS = [(0.21, 0.297), (0.297, 0.42), (0.42, 0.594), (0.594, 0.841), (0.841, 1.189)]
_SHEETS += [(0.2159, 0.2794), (0.2794, 0.4318), (0.4318, 0.5588), (0.5588, 0.8636)]
_SHEETS += [(0.8636, 1.1176)]
_ROUND = 5e-4  # metres by which a sheet may be off
_MARGINS = 0.03  # metres by which its border is smaller, at most
# What the parts on a sheet fill of it at least, if it is of material, and if it is just not paper.
_FILLED, _LEAST = 1 / 3, 0.05


class Frame(NamedTuple):
    """A layer whose contours are sharp rectangles around all of the others."""

    layer: str
    part: List[str]  # the layers that most would take


def without_sheet(
    entities: Sequence[Entity], shapes: Sequence[Shape], layers: Sequence[str]
) -> Tuple[List[str], str]:
    """The layers, but for a sheet's edge and border on the layer of others: they get their own.

    And the layer of the border, empty if there is none. A sheet has a size of paper, or is one of
    material, filled with parts that have holes. A third rectangle is the part; so may the
    second be, if nothing in it lies within another.
    """
    names = list(layers)
    if set(names) <= {"", *OWN}:
        return names, ""
    around, within = _sheet(entities, shapes)
    rest = {names[k] for k in within}
    if len(around) == 2 and not _is_nested([shapes[k] for k in within]):
        rest |= {names[around[0]]}  # it may be a sheet without a border
    border = ""
    if rest & {names[k] for k in around}:
        for k, text in zip(around, (N_("{layer}: sheet"), N_("{layer}: border"))):
            names[k] = border = _unused(tr(text).format(layer=names[k]), layers)
    return names, border if len(around) == 2 else ""


def _sheet(entities: Sequence[Entity], shapes: Sequence[Shape]) -> Tuple[List[int], List[int]]:
    """What may be the edge of a sheet, then its border, and all that lies within them."""
    order = sorted(range(len(shapes)), key=lambda k: -shapes[k].area)
    around: List[int] = []
    while len(around) < min(2, len(order) - 1):
        k, *inner = order[len(around) :]
        e = entities[k]
        if e["type"] != "rectangle" or e["radius"]:
            break
        if around:
            larger = entities[around[-1]]
            is_one = max(larger["w"] - e["w"], larger["h"] - e["h"]) <= _MARGINS + _ROUND
        else:
            parts = _parts([shapes[j] for j in inner])
            is_full = len(parts) > 1 and sum(parts) >= _FILLED * shapes[k].area
            is_one = _is_paper(e) or is_full
        holds = shapes[k].prepared.contains_properly
        if not is_one or not all(holds(shapes[j].polygon) for j in inner):
            break
        around.append(k)
    return around, order[len(around) :]


def _is_paper(sheet: Entity) -> bool:
    return any(
        abs(a - sheet["w"]) <= _ROUND and abs(b - sheet["h"]) <= _ROUND
        for one, other in _SHEETS
        for a, b in ((one, other), (other, one))
    )


def _parts(shapes: Sequence[Shape]) -> List[float]:
    """The areas of those contours, within no other, that hold others, as parts their holes."""
    depths = nesting.depths(tuple(shapes))
    holes = np.array([one.box for one, depth in zip(shapes, depths) if depth == 1]).reshape(-1, 4)
    return [
        one.area
        for one, depth in zip(shapes, depths)
        if depth == 0
        and ((holes[:, :2] > one.box[:2]) & (holes[:, 2:] < one.box[2:])).all(axis=1).any()
    ]


def _unused(name: str, names: Collection[str]) -> str:
    return next(
        other for other in (name + "'" * k for k in range(len(names) + 1)) if other not in names
    )


def _is_nested(shapes: Sequence[Shape]) -> bool:
    """Whether there are contours within each other, as a part has."""
    return max(nesting.depths(tuple(shapes)), default=0) > 0


def frame(
    entities: Sequence[Entity], shapes: Sequence[Shape], layers: Sequence[str], border: str = ""
) -> Optional[Frame]:
    """The layer that may be the frame around the sheet, whose border may be on another."""
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
    part = list(by_contours(layers))
    for name in (layer, border):
        left = [one for one, other in zip(shapes, layers) if other in part and other != name]
        parts = _parts(left) if name in part else []
        # Letters are nested, too, on a plate.
        if parts and (_is_paper(entities[outer]) or sum(parts) >= _LEAST * shapes[outer].area):
            part.remove(name)
    return Frame(layer, part)


def by_contours(layers: Sequence[str]) -> Dict[str, int]:
    """The layers, with how many contours each has, in the order of the drawing."""
    found: Dict[str, int] = {}
    for layer in layers:
        found[layer] = found.get(layer, 0) + 1
    return found
