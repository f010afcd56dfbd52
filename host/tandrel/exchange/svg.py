"""SVG drawings of the profile in its true size: one path, filled where there is material."""

from __future__ import annotations

import re
import xml.etree.ElementTree as ET
from typing import Any, Dict, Iterator, List, Sequence

from tandrel import profile
from tandrel._shapes import contour
from tandrel.geometry.edges import Edge
from tandrel.progress import Tick
from tandrel.storage import Document
from tandrel.units import SYSTEMS

_FILL = "#33566f"
_SMOOTH = 1e-5  # how far a divided arc may be off, as a part of the drawing's size
_DIGITS = 12  # of a coordinate; SVG readers that keep fewer round it themselves
_NOT_XML = re.compile(r"[^\t\n\r\x20-\ud7ff\ue000-\ufffd\U00010000-\U0010ffff]")


def written(document: Document, unit: str, tick: Tick) -> bytes:
    """A drawing as large as the part. Its lengths are given in the unit, or in mm for metres.

    Arcs are exact where no shapes overlap.
    """
    unit = unit if unit != "m" else "mm"  # SVG knows no metres
    metres = float(SYSTEMS[unit].metres)
    left, low, right, high = profile.box(document.sketch)

    def shown(u: float, v: float) -> str:
        return f"{_number((u - left) / metres)} {_number((high - v) / metres)}"

    def path(loop: Sequence[Edge]) -> Iterator[str]:
        yield f"M{shown(*loop[0].start)}"
        for edge in loop:
            if edge.bulge:
                radius = _number(edge.radius / metres)
                # Counter-clockwise arcs turn against the angles of a drawing whose v runs down.
                flags = f"{int(abs(edge.bulge) > 1)} {int(edge.bulge < 0)}"
                yield f"A{radius} {radius} 0 {flags} {shown(*edge.end)}"
            elif edge is not loop[-1]:
                yield f"L{shown(*edge.end)}"
        yield "Z"

    width, height = _number((right - left) / metres), _number((high - low) / metres)
    root = ET.Element(
        "svg",
        xmlns="http://www.w3.org/2000/svg",
        width=f"{width}{unit}",
        height=f"{height}{unit}",
        viewBox=f"0 0 {width} {height}",
    )
    ET.SubElement(root, "title").text = _NOT_XML.sub("", document.name)
    loops = list(_loops(document.sketch, tick))
    steps: List[str] = []
    for k, loop in enumerate(loops):
        tick(k / len(loops))
        steps += path(loop)
    ET.SubElement(root, "path", {"fill": _FILL, "fill-rule": "evenodd", "d": " ".join(steps)})
    ET.indent(root)
    return ET.tostring(root, encoding="utf-8", xml_declaration=True) + b"\n"


def _loops(sketch: Dict[str, Any], tick: Tick) -> Iterator[List[Edge]]:
    """The contours of the profile. Each lies inside, or outside, the whole of any other."""
    if profile.has_own_contours(sketch, tick):
        yield from map(contour, sketch["entities"])
        return
    left, low, right, high = profile.box(sketch)
    region = profile.fine_region(sketch, tick).simplify(_SMOOTH * max(right - left, high - low))
    for piece in profile.polygons(region):
        for ring in (piece.exterior, *piece.interiors):
            yield [Edge(start, end) for start, end in zip(ring.coords, ring.coords[1:])]


def _number(value: float) -> str:
    return f"{value:.{_DIGITS}g}"
