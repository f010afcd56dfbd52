"""Regular polygons, by the circle through their corners."""

import math

from .card import INF, NAN, NO_NUMBER, Card, Field, Tool, Variant, distance, numbers, turned


def regular(xc=0.0, yc=0.0, r=1.0, n=6, angle=0.0):
    return {"type": "regular", "xc": xc, "yc": yc, "r": r, "n": n, "angle": angle}


def outline(e):
    x, y, r, angle = numbers(e, "xc", "yc", "r", "angle")
    if not (r > 0 and e["n"] >= 3):
        raise ValueError("at least three sides")
    return [[x + u, y + v] for u, v in turned(r, e["n"], angle)]


def drawn(a, b, sides=6):
    r = distance(a, b)
    angle = round(math.degrees(math.atan2(b[1] - a[1], b[0] - a[0])), 6)
    return None if r == 0 else regular(a[0], a[1], r, sides, angle)


def random(dice, point, size):
    return regular(*point(), size(), dice.randint(3, 40), dice.uniform(-720, 720))


def summary(e, length, tr):
    across = length(2 * float(e["r"]))
    return tr("{n} sides, {d} across corners").format(n=int(e["n"]), d=across)


def dimensions(e, length):
    yield (e["xc"], e["yc"]), (0, 0), length(2 * float(e["r"])), "center"


SIDES = "the number of sides must lie between 3 and 1000"
NUT = regular(r=0.01)
CARD = Card(
    name="regular",
    label="Polygon",
    tool=Tool(
        "regular",
        "Polygon",
        "Press at the centre and drag to a corner; set the number of sides first.",
        gesture=[(10, 10), (10, 35)],
        size="5 sides, 50 mm across corners",
        dragged=True,
    ),
    fields=[
        Field("xc", "Centre u", True, [("1", 0.001)]),
        Field("yc", "Centre v", True, [("2", 0.002)]),
        Field("r", "Corner radius from centre", True, [("30", 0.03)]),
        Field("n", "Sides", False, [("8", 8), ("4.5", 4), ("4.6", 5)]),
        Field("angle", "Angle of first corner (degrees)", False, [("22.5", 22.5)]),
    ],
    centres=[("xc", "yc")],
    has_corners=True,
    make=regular,
    sample=regular(0.001, 0.002, 0.03, 7, 12.5),
    shown=["1", "2", "30", "7", "12.5"],
    moved=regular(0.001 + 1, 0.002 + 2, 0.03, 7, 12.5),
    placed=regular(0.03, 0.02, 0.008, 6, 15.0),
    place=(0.033, 0.018),
    row="6 sides, 16 mm across corners",
    variants={
        "regular": Variant(
            regular(0.01, -0.02, 0.015, 6, 17.0), 6, 0, 1.5 * math.sqrt(3) * 0.015**2
        )
    },
    returns={"regular", "rectangle"},
    middle=lambda e: (e["xc"], e["yc"]),
    outline=outline,
    drawn=drawn,
    random=random,
    summary=summary,
    dimensions=dimensions,
    summaries=[
        (regular(r=0.05, n=7), "7 sides, <0.1 length> across corners"),
        (regular(r=1, n=7.9), "7 sides, <2.0 length> across corners"),
        (regular(r=1, n="8"), "8 sides, <2.0 length> across corners"),
    ],
    summary_keys=["r", "n"],
    no_summary=[
        (regular(n="six"), ValueError),
        (regular(n=None), TypeError),
        (regular(n=INF), OverflowError),
        (regular(n=NAN), ValueError),
    ],
    labels=[(regular(1.0, 0.5, 10.0, 5), [(240.0, 130.0, "20000 mm", {})])],
    no_labels=[
        ({"type": "regular", "xc": 0.0, "r": 1.0}, KeyError),
        (regular(r=[1.0]), TypeError),
    ],
    refused=[
        ({**NUT, "r": 0.0}, "the radius must be greater than zero"),
        ({**NUT, "n": 2}, SIDES),
        ({**NUT, "n": -6}, SIDES),
        ({**NUT, "n": 1001}, SIDES),
        ({**NUT, "n": 4.5}, "the number of sides must be a whole number"),
        ({**NUT, "n": 10**30}, "Sides: the number is too large"),
        ({**NUT, "angle": NAN}, f"Angle of first corner (degrees): {NO_NUMBER}"),
    ],
)
