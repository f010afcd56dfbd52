"""Free outlines, by their corners, sharp or rounded."""

import math

from .card import NAN, Card, Field, Tool, Variant, turned


def polygon(*points, radius=0.0):
    corners = points or ((0.0, 0.0), (3.0, 0.0), (0.0, 2.0))
    return {"type": "polygon", "points": [list(p) for p in corners], "radius": radius}


def area(points):
    total = 0.0
    for (x1, y1), (x2, y2) in zip(points, points[1:] + points[:1]):
        total += x1 * y2 - x2 * y1
    return abs(total) / 2


def outline(e):
    points = [[float(u), float(v)] for u, v in e["points"]]
    if len(points) < 3 or area(points) == 0:
        raise ValueError("the outline has no area")
    return points


def drawn(*points, sides=6):
    return polygon(*points)


def random(dice, point, size):
    """Corners round a point, so that none of the edges cross; it may have dents."""
    (u, v), radius, count = point(), size(), dice.randint(3, 12)
    ring = turned(1.0, count, dice.uniform(0, 360))[:: dice.choice([1, -1])]
    reach = [radius * dice.uniform(0.3, 1.0) for _ in ring]
    corners = [(u + r * x, v + r * y) for r, (x, y) in zip(reach, ring)]
    return polygon(*corners, radius=dice.choice([0.0, 0.0, 0.1, 0.5]) * radius)


def summary(e, length, tr):
    return tr("{n} corners").format(n=len(e.get("points", [])))


def millimetres(*points, radius=0.0):
    return polygon(*[(u / 1000, v / 1000) for u, v in points], radius=radius)


ELL = [[0.0, 0.0], [0.06, 0.0], [0.06, 0.02], [0.02, 0.02], [0.02, 0.05], [0.0, 0.05]]
ELL_AREA = 0.06 * 0.02 + 0.02 * 0.03
# Five corners lose what lies outside their arc, the inner one gains it.
ROUNDED_AREA = ELL_AREA - 4 * (1 - math.pi / 4) * 0.004**2
# A strip that is 0.01 mm wide along the first corner and widens further away.
NECK = millimetres(
    *[(0, 0), (600, 0), (600, 150), (80, 0.7), (0.02, 0.06), (0.02, 80), (150, 600), (0, 600)],
    radius=0.0168,
)
TRIANGLE = polygon((0.0, 0.0), (0.02, 0.0), (0.0, 0.01))
CARD = Card(
    name="polygon",
    label="Outline",
    tool=Tool(
        "line",
        "Line (closed outline)",
        "Click corner after corner; click the first corner again (or press Enter) "
        "to close the outline.",
        gesture=[(-30, -20), (30, -20), (30, 10), (-10, 10), (-10, 25), (-30, 25)],
        size="6 corners",
    ),
    fields=[Field("radius", "Corner radius (0 = sharp)", True, [("2", 0.002)])],
    centres=[],
    has_corners=True,
    make=polygon,
    sample=polygon((0.0, 0.0), (0.03, 0.0), (0.0, 0.0205), radius=0.001),
    shown=["1"],
    moved=polygon((1.0, 2.0), (0.03 + 1, 2.0), (1.0, 0.0205 + 2), radius=0.001),
    placed=polygon((-0.03, 0.01), (-0.01, 0.01), (-0.03, 0.03)),
    place=(-0.025, 0.014),
    row="3 corners",
    variants={
        "polygon": Variant(polygon(*ELL), 6, 0, ELL_AREA),
        "rounded polygon": Variant(polygon(*ELL, radius=0.004), 6, 6, ROUNDED_AREA),
        "clockwise": Variant(polygon(*ELL[::-1], radius=0.004), 6, 6, ROUNDED_AREA),
    },
    returns={"polygon", "regular", "rectangle"},
    middle=None,
    outline=outline,
    drawn=drawn,
    random=random,
    summary=summary,
    dimensions=lambda e, length: (),
    summaries=[
        (polygon((0, 0), (1, 0), (1, 1), (0, 1)), "4 corners"),
        ({"type": "polygon"}, "0 corners"),
    ],
    summary_keys=[],
    no_summary=[({"type": "polygon", "points": 3}, TypeError)],
    labels=[(polygon(), [])],
    no_labels=[],
    refused=[
        ({**TRIANGLE, "points": []}, "an outline needs at least three corners"),
        (millimetres((0, 0), (1, 0)), "an outline needs at least three corners"),
        (
            millimetres((0, 0), (20, 20), (20, 0), (0, 20)),
            "the outline crosses itself near u = 10 mm, v = 10 mm",
        ),
        (
            millimetres((0, 0), (24, 6), (24, 0), (0, 6)),
            "the outline crosses itself near u = 12 mm, v = 3 mm",
        ),
        (
            millimetres((0, 0), (20, 0), (20, 20), (10, 0), (0, 20)),
            "the outline touches itself near u = 10 mm, v = 0 mm",
        ),
        (
            millimetres((0, 0), (20, 0), (20, 20), (20, 0), (0, 20)),
            "the outline touches itself near u = 20 mm, v = 0 mm",
        ),
        (
            millimetres((0, 0), (20, 10), (40, 20), (10, 5)),
            "the outline encloses no area: all its corners lie on one line",
        ),
        (
            millimetres((0, 0), (20, 0), (20, 0), (0, 20)),
            "corners 2 and 3 are the same point, u = 20 mm, v = 0 mm",
        ),
        (
            millimetres((5, 5), (20, 0), (0, 20), (5, 5)),
            "corners 4 and 1 are the same point, u = 5 mm, v = 5 mm",
        ),
        ({**TRIANGLE, "radius": -0.001}, "the corner radius must not be negative"),
        (
            millimetres((0, 0), (40, 0), (40, 20), (20, 20), (20, 30), (0, 30), radius=0.006),
            "the corner radius 6 mm does not fit near u = 20 mm, v = 20 mm: "
            "at most 5 mm fits there",
        ),
        (NECK, "the rounded outline is too narrow near u = 1.56604 mm, v = 10.0531 mm"),
        (polygon((0.0, 0.0), (1.0, NAN), (0.0, 1.0)), "corner 2: not a number"),
        (polygon((0.0, 0.0), (1.0, 0.0), (0.0, 1e300)), "corner 3: the number is too large"),
        (polygon((0.0, 0.0), [1.0], (0.0, 1.0)), "corner 2: two numbers are needed"),
        (
            {**TRIANGLE, "points": [[0.0, 0.0], "01", [0.0, 1.0]]},
            "corner 2: two numbers are needed",
        ),
        ({**TRIANGLE, "points": [None] * 3}, "corner 1: two numbers are needed"),
        (
            polygon(*[(float(k), 0.0) for k in range(10_001)]),
            "an outline can have 10000 corners at most",
        ),
    ],
    corners_text="0 0\n30 0\n0 20.5",
)
