"""SVG drawings of the profile in its true size, to be cut: a hairline for each contour.

Holes and outsides are groups of their own, in colours of their own. Holes come first, as they must
be cut while the part still hangs in its plate.
"""

from __future__ import annotations

import re
import xml.etree.ElementTree as ET
from typing import Iterator, Sequence

from tandrel import profile
from tandrel.exchange.curves import contour_with_arcs
from tandrel.exchange.recognise import CHORD
from tandrel.geometry.edges import Edge
from tandrel.geometry.loops import is_curved
from tandrel.progress import Tick
from tandrel.storage import Document
from tandrel.units import SYSTEMS

_HAIRLINE = 0.0000254  # metres; cutters that tell cuts from pictures by their width take no more
_COLOURS = {"holes": "#0000ff", "outsides": "#ff0000"}
_DIGITS = 12  # of a coordinate; SVG readers that keep fewer round it themselves
_NOT_XML = re.compile(r"[^\t\n\r\x20-\ud7ff\ue000-\ufffd\U00010000-\U0010ffff]")


def written(document: Document, unit: str, tick: Tick) -> bytes:
    """A drawing as large as the part. Its lengths are given in the unit, or in mm for metres."""
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
    contours = profile.contours(document.sketch, lambda done: tick(done / 2))
    look = {"fill": "none", "stroke-width": _number(_HAIRLINE / metres)}
    groups = [
        ET.SubElement(root, "g", {"id": name, "stroke": colour, **look})
        for name, colour in _COLOURS.items()
    ]
    for k, contour in enumerate(contours):
        tick((1 + k / len(contours)) / 2)
        edges = contour.edges
        if not is_curved(edges):
            edges = contour_with_arcs([edge.start for edge in edges], CHORD)
        group = groups[0 if contour.is_hole else 1]
        ET.SubElement(group, "path", {"d": " ".join(path(edges))})
    ET.indent(root)
    return ET.tostring(root, encoding="utf-8", xml_declaration=True) + b"\n"


def _number(value: float) -> str:
    return f"{value:.{_DIGITS}g}"
