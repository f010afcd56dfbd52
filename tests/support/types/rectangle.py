"""Rectangles, sharp or rounded."""

import math

import numpy as np

from .card import INF, NAN, NO_NUMBER, TOO_LARGE, Card, Field, Tool, Variant, numbers


def rectangle(x=0.0, y=0.0, w=2.0, h=1.0, radius=0.0):
    return {"type": "rectangle", "x": x, "y": y, "w": w, "h": h, "radius": radius}


def outline(e):
    x, y, w, h = numbers(e, "x", "y", "w", "h")
    if not (w > 0 and h > 0):
        raise ValueError("the rectangle has no area")
    return [[x, y], [x + w, y], [x + w, y + h], [x, y + h]]


def drawn(a, b, sides=6):
    w, h = abs(b[0] - a[0]), abs(b[1] - a[1])
    if w == 0 or h == 0:
        return None
    x, y = np.minimum(np.array(a, float), np.array(b, float)).tolist()
    return rectangle(x, y, w, h, 0.0)


def random(dice, point, size):
    w, h = size(), size()
    return rectangle(*point(), w, h, dice.choice([0, 0, 0.1, 0.5, 1]) * min(w, h) / 2)


def summary(e, length, tr):
    return f"{length(e['w'])} x {length(e['h'])}"


def dimensions(e, length):
    x, y, w, h = numbers(e, "x", "y", "w", "h")
    yield (x + w / 2, y), (0, 12), length(w), "center"
    yield (x + w, y + h / 2), (6, 0), length(h), "w"


THIN = rectangle(0.0, 0.0, 0.04, 0.02)
CARD = Card(
    name="rectangle",
    label="Rectangle",
    tool=Tool(
        "rectangle",
        "Rectangle",
        "Drag from one corner to the opposite corner.",
        gesture=[(-30, -20), (25, 15)],
        size="55 mm x 35 mm",
        dragged=True,
    ),
    fields=[
        Field("x", "Corner u", True, [("12.5", 0.0125)]),
        Field("y", "Corner v", True, [("-7", -0.007)]),
        Field("w", "Width", True, [("100", 0.1)]),
        Field("h", "Height", True, [("0.1", 0.0001)]),
        Field("radius", "Corner radius (0 = sharp)", True, [("5", 0.005)]),
    ],
    centres=[],
    has_corners=True,
    make=rectangle,
    sample=rectangle(0.001, 0.002, 0.03, 0.04, 0.005),
    shown=["1", "2", "30", "40", "5"],
    moved=rectangle(0.001 + 1, 0.002 + 2, 0.03, 0.04, 0.005),
    placed=rectangle(-0.05, -0.03, 0.02, 0.01),
    place=(-0.04, -0.025),
    row="20 mm x 10 mm",
    variants={
        "rectangle": Variant(rectangle(0.01, -0.02, 0.05, 0.03), 4, 0, 0.05 * 0.03),
        "rounded": Variant(
            rectangle(0.01, -0.02, 0.05, 0.03, 0.004),
            4,
            4,
            0.05 * 0.03 - (4 - math.pi) * 0.004**2,
        ),
        "stadium": Variant(
            rectangle(0.01, -0.02, 0.05, 0.03, 0.015), 2, 4, 0.02 * 0.03 + math.pi * 0.015**2
        ),
    },
    returns={"rectangle", "circle"},
    middle=lambda e: (e["x"] + e["w"] / 2, e["y"] + e["h"] / 2),
    outline=outline,
    drawn=drawn,
    random=random,
    summary=summary,
    dimensions=dimensions,
    summaries=[
        (rectangle(5.0, 6.0, 0.03, 0.02), "<0.03 length> x <0.02 length>"),
        (rectangle(w=3, h="h"), "<3 length> x <'h' length>"),
    ],
    summary_keys=["w", "h"],
    no_summary=[],
    labels=[
        (
            rectangle(1.0, -1.0, 2.0, 0.5),
            [(280.0, 202.0, "2000 mm", {}), (326.0, 180.0, "500 mm", {"anchor": "w"})],
        ),
        (
            rectangle(0.0, 1.0, 1.0, -2.0),
            [(220.0, 122.0, "1000 mm", {}), (246.0, 150.0, "-2000 mm", {"anchor": "w"})],
        ),
    ],
    no_labels=[
        ({"type": "rectangle"}, KeyError),
        ({"type": "rectangle", "x": 0.0, "y": 0.0, "h": 1.0}, KeyError),
        (rectangle(w=None), TypeError),
        (rectangle(h="high"), ValueError),
    ],
    refused=[
        ({**THIN, "w": 0.0}, "the width must be greater than zero"),
        ({**THIN, "w": -0.01}, "the width must be greater than zero"),
        ({**THIN, "h": -0.01}, "the height must be greater than zero"),
        ({**THIN, "radius": -0.001}, "the corner radius must not be negative"),
        (
            {**THIN, "radius": 0.011},
            "the corner radius 11 mm is larger than half of the shorter side, 10 mm",
        ),
        ({**THIN, "x": NAN}, f"Corner u: {NO_NUMBER}"),
        ({**THIN, "y": INF}, f"Corner v: {TOO_LARGE}"),
        ({**THIN, "w": INF}, f"Width: {TOO_LARGE}"),
        ({**THIN, "h": NAN}, f"Height: {NO_NUMBER}"),
        ({**THIN, "radius": INF}, f"Corner radius: {TOO_LARGE}"),
        (
            {**THIN, "w": 1e6, "h": 1e-3},
            "the shape is too small to be drawn exactly where it lies",
        ),
    ],
)
