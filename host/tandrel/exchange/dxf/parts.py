"""The parts of a drawing: those that are shown, and what edges they are."""

from __future__ import annotations

import math
from typing import Any, Callable, Collection, Iterator, Sequence

from tandrel.exchange import ExchangeError
from tandrel.exchange.dxf.harvest import NO_NUMBERS, Harvest, Unfit
from tandrel.exchange.recognition import MOST_EDGES
from tandrel.geometry.edges import LARGEST, Edge, polar
from tandrel.gui.i18n import tr
from tandrel.kinds.fields import MOST_CORNERS
from tandrel.progress import Tick

_MOST_PARTS = 100_000  # entities of a drawing, those of blocks counted as often as they are placed
_MOST_COPIES = 10_000  # in an array of blocks
_DEEPEST = 8  # blocks within each other
_LONGEST_KIND = 40  # characters
_FLAT = 1e-9  # how far the normal of a part may lean out of that of the drawing


def spread(
    parts: Collection[Any], hidden: Collection[str], harvest: Harvest, tick: Tick
) -> Iterator[Any]:
    """The parts that are shown, with those of blocks in place of the blocks.

    Parts on the hidden layers, which are given by their names, aren't shown.
    """
    nested, count = [iter(parts)], 0
    while nested:
        try:
            part = next(nested[-1], None)
        except Exception:  # of a damaged drawing the library may raise anything
            harvest.leave(tr("blocks that are missing, damaged or endless"))
            part = None
        if part is None:
            nested.pop()
            continue
        tick(min(1.0, count / len(parts)))
        count += 1
        if count > _MOST_PARTS:
            raise ExchangeError(tr("the drawing has too many parts"))
        if _is_hidden(part, hidden):
            harvest.leave(tr("parts that are not shown"))
        elif part.dxftype() != "INSERT":
            yield part
        elif len(nested) <= _DEEPEST:
            nested.append(_inside(part))
        else:
            harvest.leave(tr("blocks too deep within each other"))


def _is_hidden(part: Any, layers: Collection[str]) -> bool:
    # Of what the library doesn't know it doesn't know the layer.
    layer, invisible = (
        part.dxf.get(name) if part.dxf.hasattr(name) else None for name in ("layer", "invisible")
    )
    return bool(invisible) or str(layer).lower() in layers


def _inside(block: Any) -> Iterator[Any]:
    """The parts of a block where it is placed, or of an array of blocks."""
    if block.mcount > _MOST_COPIES:
        raise ValueError
    for copy in block.multi_insert() if block.mcount > 1 else [block]:
        yield from copy.virtual_entities()


def take(part: Any, harvest: Harvest) -> None:
    """Make of a part what can be made of it."""
    kind = part.dxftype()
    if kind not in _READERS:
        harvest.leave(kind[:_LONGEST_KIND])
        return
    reader, needed = _READERS[kind]
    try:
        # For what is missing the library has values of its own.
        if not all(map(part.dxf.hasattr, needed)):
            raise ValueError
        reader(part, harvest)
    except Unfit as error:
        harvest.leave(str(error))
    except Exception:  # of a damaged drawing the library may raise anything
        harvest.leave(tr("{kind}, damaged").format(kind=kind))


# Readers: each takes a part of its kind and adds what it is to a harvest.


def _line(part: Any, harvest: Harvest) -> None:
    # The coordinates of lines, unlike those of flat shapes, don't depend on where they face.
    start, end = part.dxf.start, part.dxf.end
    harvest.add([Edge(harvest.point(start.x, start.y), harvest.point(end.x, end.y))], False)


def _circle(part: Any, harvest: Harvest) -> None:
    centre = harvest.point(part.dxf.center.x, part.dxf.center.y, _is_mirrored(part))
    harvest.add_circle(centre, harvest.length(part.dxf.radius))


def _arc(part: Any, harvest: Harvest) -> None:
    first, last = float(part.dxf.start_angle), float(part.dxf.end_angle)
    if not abs(first) + abs(last) <= LARGEST:
        raise Unfit(tr(NO_NUMBERS))
    sweep = (last - first) % 360.0
    if sweep == 0:
        _circle(part, harvest)
        return
    mirrored = _is_mirrored(part)
    centre = harvest.point(part.dxf.center.x, part.dxf.center.y, mirrored)
    radius = harvest.length(part.dxf.radius)
    if mirrored:
        first, sweep = 180.0 - first, -sweep
    # The bulge of an almost full circle would be all rounding.
    pieces = 1 if abs(sweep) < 181 else 2
    bulge = math.tan(math.radians(sweep) / 4 / pieces)
    ends = [polar(centre, radius, first + sweep * k / pieces) for k in range(pieces + 1)]
    harvest.add([Edge(one, two, bulge) for one, two in zip(ends, ends[1:])], False)


def _ellipse(part: Any, harvest: Harvest) -> None:
    around = abs(part.dxf.end_param - part.dxf.start_param)
    if abs(part.dxf.ratio - 1) > _FLAT or abs(around - 2 * math.pi) > _FLAT:
        raise Unfit(part.dxftype())
    _is_mirrored(part)  # it makes no difference, but the circle may stand askew
    centre = harvest.point(part.dxf.center.x, part.dxf.center.y)
    harvest.add_circle(centre, harvest.length(part.dxf.major_axis.magnitude))


def _light_polyline(part: Any, harvest: Harvest) -> None:
    _polyline(part, part.get_points("xyb"), harvest)


def _heavy_polyline(part: Any, harvest: Harvest) -> None:
    if not part.is_2d_polyline:
        raise Unfit(tr("{kind} in space").format(kind=part.dxftype()))
    # The handles that a smooth curve was drawn by are no points of it.
    corners = [corner.dxf for corner in part.vertices if not corner.dxf.flags & 16]
    points = [(c.location.x, c.location.y, c.get("bulge", 0.0)) for c in corners]
    _polyline(part, points, harvest)


def _polyline(part: Any, vertices: Sequence[tuple[float, float, float]], harvest: Harvest) -> None:
    if len(vertices) > MOST_EDGES:
        text = tr("an outline can have {most} corners at most")
        raise Unfit(text.format(most=MOST_CORNERS))
    mirrored = _is_mirrored(part)
    points = [harvest.point(u, v, mirrored) for u, v, _ in vertices]
    bulges = [-bulge if mirrored else bulge for *_, bulge in vertices]
    if not all(abs(bulge) <= LARGEST for bulge in bulges):
        raise Unfit(tr(NO_NUMBERS))
    edges = [Edge(*edge) for edge in zip(points, [*points[1:], *points[:1]], bulges)]
    is_closed = bool(part.is_closed)
    if not is_closed:
        del edges[-1:]
    if edges:
        harvest.add(edges, is_closed)


def _is_mirrored(part: Any) -> bool:
    """Whether a flat part is drawn from below; Unfit if it is drawn from anywhere but above."""
    u, v, w = part.dxf.get("extrusion", (0.0, 0.0, 1.0))
    if not (w and math.hypot(u, v) <= _FLAT * abs(w)):
        raise Unfit(tr("{kind} that stands askew in space").format(kind=part.dxftype()))
    return bool(w < 0)


# By kind: the reader, and what a part must say of itself.
_READERS: dict[str, tuple[Callable[[Any, Harvest], None], tuple[str, ...]]] = {
    "LINE": (_line, ("start", "end")),
    "CIRCLE": (_circle, ("center", "radius")),
    "ARC": (_arc, ("center", "radius", "start_angle", "end_angle")),
    "ELLIPSE": (_ellipse, ("center", "major_axis", "ratio")),
    "LWPOLYLINE": (_light_polyline, ()),
    "POLYLINE": (_heavy_polyline, ()),
}
