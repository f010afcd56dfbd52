"""The drawings of the parts that come with the application: what each is, and its dimensions.

The sketch files beside this module are made from it, in millimetres as on the drawing:

    PYTHONPATH=host python3 host/parts/drawings.py [FOLDER]
"""

from __future__ import annotations

import math
import sys
from pathlib import Path
from typing import Any, Dict, List, Tuple

from tandrel import sketch, storage
from tandrel.storage import Document

Point = Tuple[float, float]
Entity = Dict[str, Any]


def mm(length: float) -> float:
    """A length of the drawing in metres, as typed: the double nearest to its decimal number."""
    return float(f"{length:.4f}e-3") + 0.0  # never -0.0


def rectangle(u: float, v: float, w: float, h: float, radius: float = 0) -> Entity:
    """By its lower left corner."""
    sizes = {"x": u, "y": v, "w": w, "h": h, "radius": radius}
    return {"type": "rectangle", **{key: mm(size) for key, size in sizes.items()}}


def plate(w: float, h: float, radius: float = 0) -> Entity:
    """A rectangle about the origin."""
    return rectangle(-w / 2, -h / 2, w, h, radius)


def hole(diameter: float, u: float = 0, v: float = 0) -> Entity:
    return {"type": "circle", "xc": mm(u), "yc": mm(v), "r": mm(diameter / 2)}


def nut(corners: float, u: float, v: float, angle: float = 0) -> Entity:
    """A hexagon, by the distance across its corners."""
    centre = {"xc": mm(u), "yc": mm(v)}
    return {"type": "regular", **centre, "r": mm(corners / 2), "n": 6, "angle": float(angle)}


def slot(width: float, start: Point, end: Point) -> Entity:
    """By its width and the centres of its ends."""
    ends = dict(zip(("x1", "y1", "x2", "y2"), map(mm, (*start, *end))))
    return {"type": "slot", **ends, "r": mm(width / 2)}


def outline(points: List[Point], radius: float = 0) -> Entity:
    return {"type": "polygon", "points": [[mm(u), mm(v)] for u, v in points], "radius": mm(radius)}


def four(u: float, v: float) -> List[Point]:
    """Symmetric about both axes, counter-clockwise from the lower left."""
    return [(-u, -v), (u, -v), (u, v), (-u, v)]


def around(n: int, radius: float, first: float = 0) -> List[Point]:
    """Evenly spaced on a pitch circle; the first at an angle in degrees."""
    turns = [math.radians(first + 360 * k / n) for k in range(n)]
    return [(radius * math.cos(turn), radius * math.sin(turn)) for turn in turns]


def flange() -> List[Entity]:
    """Mounting flange, 140 x 100, corners R12.

    Bore 62 with a loose ring 42 / 30 cut from it; four holes 9 at 110 x 70; slot 35 x 7 above.
    """
    return [
        plate(140, 100, radius=12),
        hole(62),
        *(hole(9, *at) for at in four(55, 35)),
        slot(7, (-14, 40.5), (14, 40.5)),
        hole(42),
        hole(30),
    ]


def bracket() -> List[Entity]:
    """Corner bracket, legs 80 and 64 by 24 wide, all corners R3.

    Holes 6.6 (M6) in the corner and in the short leg, which also holds a nut, 11.6 across corners;
    slot 26.6 x 6.6 in the long leg.
    """
    legs: List[Point] = [(0, 0), (80, 0), (80, 24), (24, 24), (24, 64), (0, 64)]
    return [
        outline(legs, radius=3),
        hole(6.6, 12, 12),
        hole(6.6, 12, 52),
        nut(11.6, 12, 34, angle=90),
        slot(6.6, (44, 12), (64, 12)),
    ]


def gasket() -> List[Entity]:
    """Gasket of a pump's outlet, oval 110 x 50.

    Bore 32, two bolt holes 9 at 80 apart, two drain holes 3 at 38 apart.
    """
    return [
        slot(50, (-30, 0), (30, 0)),
        hole(32),
        *(hole(9, u, 0) for u in (-40, 40)),
        *(hole(3, 0, v) for v in (-20, 20)),
    ]


def gear() -> List[Entity]:
    """Toothed plate, 24 teeth, corners of tips on 96, of roots on 80, all broken R0.5.

    A tooth is 9 degrees wide at the root and 4.5 at the tip. Bore 20 with a keyway 6 wide to 22.8;
    six holes 14 on a pitch circle of 52.
    """
    teeth = 24
    flanks = [around(teeth, *corner) for corner in ((40, -4.5), (48, -2.25), (48, 2.25), (40, 4.5))]
    return [
        outline([point for tooth in zip(*flanks) for point in tooth], radius=0.5),
        hole(20),
        rectangle(-3, 0, 6, 12.8),
        *(hole(14, *at) for at in around(6, 26)),
    ]


def panel() -> List[Entity]:
    """Front panel of an enclosure, 200 x 120, corners R4.

    Four holes 4.5 at 184 x 104. Display 72 x 26, R1, top left; inlet 28 x 20 with two corners cut
    off by 5, bottom right; three buttons 16 at a pitch of 28, bottom left; eight slots 30 x 3 at a
    pitch of 6, top right.
    """
    u, v = 56, -42
    inlet: List[Point] = [(u, v), (u + 28, v), (u + 28, v + 15), (u + 23, v + 20), (u + 5, v + 20)]
    return [
        plate(200, 120, radius=4),
        *(hole(4.5, *at) for at in four(92, 52)),
        rectangle(-80, 10, 72, 26, radius=1),
        outline([*inlet, (u, v + 15)], radius=0.5),
        *(hole(16, u, -32) for u in (-72, -44, -16)),
        *(slot(3, (56.5, v), (83.5, v)) for v in range(2, 50, 6)),
    ]


def spanner() -> List[Entity]:
    """Spanner for 13 mm nuts, open at one end and a ring at the other.

    Handle 14 wide, jaw 13.2 wide and 15 deep in a head of 30, all corners R1; ring 28 around a
    hexagon 15.3 across corners, slot 45 x 5 in the handle.
    """
    upper: List[Point] = [(58, 6.6), (53, 15), (34, 15), (26, 7), (-54, 7)]
    lower = [(u, -v) for u, v in reversed(upper)]
    return [
        outline([(43, 6.6), *upper, *lower, (43, -6.6)], radius=1),
        hole(28, -65, 0),
        nut(15.3, -65, 0),
        slot(5, (-35, 0), (5, 0)),
    ]


def blank(w: float, h: float, u: float = 0, v: float = 0) -> Tuple[float, float, float, float]:
    """The piece that a part is cut from, by its centre: least and greatest u, the same of v."""
    return u - w / 2, u + w / 2, v - h / 2, v + h / 2


PARTS = {
    "flange": ("Mounting flange", flange, blank(160, 120)),
    "bracket": ("Corner bracket", bracket, blank(100, 84, 40, 32)),
    "gasket": ("Pump gasket", gasket, blank(120, 60)),
    "gear": ("Toothed plate", gear, blank(100, 100)),
    "panel": ("Front panel", panel, blank(210, 130)),
    "spanner": ("Spanner 13 mm", spanner, blank(150, 40, -10.5)),
}


def document(part: str) -> Document:
    """A part as it comes with the application, with the blank that it is cut from."""
    name, entities, (left, right, low, high) = PARTS[part]
    corners = (left, low), (right, low), (right, high), (left, high)
    reference = {"name": "Blank", "points": [[mm(u), mm(v)] for u, v in corners]}
    return Document(name, {**sketch.new(), "entities": entities()}, [reference])


def main(folder: Path) -> None:
    for part in PARTS:
        (folder / f"{part}.json").write_bytes(storage.dumps(document(part)))


if __name__ == "__main__":
    main(Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).parent)
