"""Shapes that a sketch can hold: some of every kind, and hypothesis' own."""

import math

from hypothesis import strategies as st
from tandrel import sketch as S
from tandrel.storage import Document

ELL = [[0.0, 0.0], [0.06, 0.0], [0.06, 0.02], [0.02, 0.02], [0.02, 0.05], [0.0, 0.05]]
EVERY_KIND = {
    "rectangle": {"type": "rectangle", "x": 0.01, "y": -0.02, "w": 0.05, "h": 0.03, "radius": 0.0},
    "rounded": {"type": "rectangle", "x": 0.01, "y": -0.02, "w": 0.05, "h": 0.03, "radius": 0.004},
    "stadium": {"type": "rectangle", "x": 0.01, "y": -0.02, "w": 0.05, "h": 0.03, "radius": 0.015},
    "circle": {"type": "circle", "xc": 0.01, "yc": -0.02, "r": 0.015},
    "regular": {"type": "regular", "xc": 0.01, "yc": -0.02, "r": 0.015, "n": 6, "angle": 17.0},
    "slot": {"type": "slot", "x1": 0.0, "y1": 0.01, "x2": 0.03, "y2": 0.04, "r": 0.004},
    "polygon": {"type": "polygon", "points": ELL, "radius": 0.0},
    "rounded polygon": {"type": "polygon", "points": ELL, "radius": 0.004},
    "clockwise": {"type": "polygon", "points": ELL[::-1], "radius": 0.004},
}
PLATE = [
    {"type": "rectangle", "x": -0.08, "y": -0.06, "w": 0.16, "h": 0.12, "radius": 0.01},
    {"type": "circle", "xc": 0.0, "yc": 0.0, "r": 0.03},
    {"type": "regular", "xc": 0.0, "yc": 0.0, "r": 0.02, "n": 6, "angle": 10.0},
    {"type": "slot", "x1": -0.06, "y1": -0.03, "x2": -0.05, "y2": 0.03, "r": 0.005},
    {"type": "polygon", "points": [[0.04, -0.04], [0.06, -0.04], [0.06, 0.03]], "radius": 0.001},
]


def sketch(*entities, plane="XY", offset=0.0):
    return {"plane": plane, "offset": offset, "entities": list(entities)}


def document(*entities, name="part", **placing):
    return Document(name, sketch(*entities, **placing))


_unit = st.floats(0.05, 1.0)
_place = st.floats(-1.0, 1.0)


@st.composite
def corners(draw):
    """Corners of an outline that may have dents, round the origin and about a unit in size."""
    radii = draw(st.lists(st.floats(0.3, 1.0), min_size=3, max_size=12))
    turned = draw(st.floats(0.0, 2 * math.pi))
    step = 2 * math.pi / len(radii)
    points = [
        [r * math.cos(turned + k * step), r * math.sin(turned + k * step)]
        for k, r in enumerate(radii)
    ]
    return points[:: draw(st.sampled_from([1, -1]))]


@st.composite
def entities(draw, sizes=st.floats(1e-6, 1e3), farthest=1e3):
    """A valid entity of a size in metres, at most so many times its size from the origin."""
    size = draw(sizes)
    u, v = (size * farthest * draw(_place) for _ in "uv")
    kind = draw(st.sampled_from(["rectangle", "circle", "regular", "slot", "polygon"]))
    if kind == "circle":
        return {"type": kind, "xc": u, "yc": v, "r": size * draw(_unit)}
    if kind == "regular":
        n, angle = draw(st.integers(3, 40)), draw(st.floats(-720.0, 720.0))
        return {"type": kind, "xc": u, "yc": v, "r": size * draw(_unit), "n": n, "angle": angle}
    if kind == "slot":
        x2, y2 = u + size * draw(_place), v + size * draw(_place)
        return {"type": kind, "x1": u, "y1": v, "x2": x2, "y2": y2, "r": size * draw(_unit)}
    rounding = draw(st.sampled_from([0.0, 0.1, 0.5, 0.9, 1.0]))
    if kind == "rectangle":
        w, h = size * draw(_unit), size * draw(_unit)
        radius = rounding * min(w, h) / 2
        return {"type": kind, "x": u, "y": v, "w": w, "h": h, "radius": radius}
    points = [[u + size * x, v + size * y] for x, y in draw(corners())]
    entity = {"type": kind, "points": points, "radius": rounding * size}
    while not _is_valid(entity):
        entity["radius"] = entity["radius"] * 0.7 if entity["radius"] > size * 1e-3 else 0.0
    return entity


def _is_valid(entity):
    try:
        S.outline(entity)
    except ValueError:
        return False
    return True
