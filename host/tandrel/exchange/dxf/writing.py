"""Sketches written as drawings."""

from __future__ import annotations

import io
from contextlib import contextmanager
from decimal import Decimal
from typing import Any, Dict, Iterator, NamedTuple

import ezdxf

from tandrel import profile
from tandrel import sketch as S
from tandrel._shapes import drawn
from tandrel.exchange.curves import contour_with_arcs
from tandrel.exchange.dxf.placing import noted
from tandrel.exchange.dxf.units import CODES
from tandrel.exchange.recognise import CHORD
from tandrel.geometry.loops import Loop, box, is_circle, is_curved, joined
from tandrel.progress import Tick
from tandrel.storage import Document
from tandrel.units import SYSTEMS

CONTOURS, HOLES = "CONTOUR", "HOLES"
_COLOURS = {CONTOURS: 7, HOLES: 5}  # the drawing program's foreground; blue


class _Outline(NamedTuple):
    """A contour to be written, counter-clockwise; a circle as the loop that it was drawn as."""

    loop: Loop
    is_hole: bool


def written(document: Document, unit: str, tick: Tick, own_contours: bool = False) -> bytes:
    """A drawing of the profile of a sketch, or of the contours of its shapes as they are.

    S.check must have passed the sketch. Circles are circles, everything else is a closed polyline
    with exact arcs; corners that lie so close on an arc that they stand for one are an arc again.
    The same sketch always makes the same bytes.
    """
    sketch = document.sketch
    with _reproducible():
        drawing: Any = ezdxf.new("R2010", units=CODES[unit])
        for name, colour in _COLOURS.items():
            drawing.layers.add(name, color=colour)
        for name, value in noted(sketch):
            drawing.header.custom_vars.append(name, value)
        space = drawing.modelspace()
        metres = SYSTEMS[unit].metres

        def shown(length: float) -> float:
            return float(Decimal(repr(float(length))) / metres)

        boxes = []
        outlines = [*(_shapes if own_contours else _profile)(sketch, lambda done: tick(done / 2))]
        for k, (loop, is_hole) in enumerate(outlines):
            tick((1 + k / len(outlines)) / 2)
            edges = joined(loop) if is_circle(loop) else loop
            boxes.append(box(edges))
            where = {"layer": HOLES if is_hole else CONTOURS}
            if is_circle(loop):
                centre = shown(loop[0].centre[0]), shown(loop[0].centre[1])
                space.add_circle(centre, shown(loop[0].radius), dxfattribs=where)
            else:
                if not is_curved(loop):
                    edges = contour_with_arcs([edge.start for edge in edges], CHORD)
                vertices = [(*map(shown, edge.start), edge.bulge) for edge in edges]
                space.add_lwpolyline(vertices, format="xyb", close=True, dxfattribs=where)
        lefts, lows, rights, highs = zip(*boxes)
        left, low, right, high = map(shown, (min(lefts), min(lows), max(rights), max(highs)))
        space.reset_extents((left, low, 0), (right, high, 0))
        height = max(high - low, right - left) * 1.1
        drawing.set_modelspace_vport(height, ((left + right) / 2, (low + high) / 2))
        # The library would name the classes of the drawing's parts in the order of a set.
        for kind in sorted(drawing.entitydb.dxf_types_in_use()):
            drawing.classes.add_class(kind)
        text = io.StringIO()
        drawing.write(text)
    return bytes(drawing.encode(text.getvalue()))


def _profile(sketch: Dict[str, Any], tick: Tick) -> Iterator[_Outline]:
    for edges, area, own in profile.contours(sketch, tick):
        if own is not None:
            yield _Outline(own if is_circle(own) else joined(own), area < 0)
        elif area < 0:
            yield _Outline([edge.reversed() for edge in reversed(edges)], True)
        else:
            yield _Outline(edges, False)


def _shapes(sketch: Dict[str, Any], tick: Tick) -> Iterator[_Outline]:
    entities = sketch["entities"]
    for k, (entity, depth) in enumerate(zip(entities, S.depths(sketch))):
        tick(k / len(entities))
        loop = drawn(entity).loop
        yield _Outline(loop if is_circle(loop) else joined(loop), depth % 2 == 1)


@contextmanager
def _reproducible() -> Iterator[None]:
    """No dates and no identifiers made up at random in the drawings that are made meanwhile."""
    before = ezdxf.options.write_fixed_meta_data_for_testing
    ezdxf.options.write_fixed_meta_data_for_testing = True
    try:
        yield
    finally:
        ezdxf.options.write_fixed_meta_data_for_testing = before
