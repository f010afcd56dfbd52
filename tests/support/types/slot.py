"""Slots, by the centres of their round ends."""

import math

from .card import NAN, NO_NUMBER, Card, Field, Tool, Variant, distance, numbers

KEYS = ("x1", "y1", "x2", "y2", "r")


def slot(x1=0.0, y1=0.0, x2=4.0, y2=0.0, r=1.0):
    return {"type": "slot", "x1": x1, "y1": y1, "x2": x2, "y2": y2, "r": r}


def outline(e):
    x1, y1, x2, y2, r = numbers(e, *KEYS)
    if not r > 0:
        raise ValueError("the half width must be positive")
    return [[x1 - r, y1 - r], [x2 + r, y2 - r], [x2 + r, y2 + r], [x1 - r, y1 + r]]


def drawn(a, b, p, sides=6):
    dx, dy = b[0] - a[0], b[1] - a[1]
    length = distance(a, b)
    if length == 0:
        return None
    r = abs(dx * (p[1] - a[1]) - dy * (p[0] - a[0])) / length
    return None if r == 0 else slot(*a, *b, r)


def random(dice, point, size):
    return slot(*point(), *point(), size())


def summary(e, length, tr):
    x1, y1, x2, y2, r = numbers(e, *KEYS)
    return f"{length(math.hypot(x2 - x1, y2 - y1) + 2 * r)} x {length(2 * r)}"


def dimensions(e, length):
    x1, y1, x2, y2, r = numbers(e, *KEYS)
    yield ((x1 + x2) * 0.5, (y1 + y2) * 0.5), (0, 0), summary(e, length, str), "center"


GROOVE = slot(0.0, 0.0, 0.03, 0.0, 0.004)
SLANTED = slot(0.1, 0.7, 0.35, -0.13, 0.07)
LONG = math.hypot(0.35 - 0.1, -0.13 - 0.7) + 2 * 0.07
CARD = Card(
    name="slot",
    label="Slot",
    tool=Tool(
        "slot",
        "Slot",
        "Click the centre of one end, then the other end, then the width.",
        gesture=[(-30, -20), (20, -20), (31, -10)],
        size="70 mm x 20 mm",
    ),
    fields=[
        Field("x1", "End 1 centre u", True, [("-25", -0.025)]),
        Field("y1", "End 1 centre v", True, [("1", 0.001)]),
        Field("x2", "End 2 centre u", True, [("25", 0.025)]),
        Field("y2", "End 2 centre v", True, [("-1", -0.001)]),
        Field("r", "Half width", True, [("6", 0.006)]),
    ],
    centres=[("x1", "y1"), ("x2", "y2")],
    has_corners=False,
    make=slot,
    sample=slot(0.001, 0.002, 0.03, 0.04, 0.005),
    shown=["1", "2", "30", "40", "5"],
    moved=slot(0.001 + 1, 0.002 + 2, 0.03 + 1, 0.04 + 2, 0.005),
    placed=slot(0.02, -0.02, 0.04, -0.02, 0.004),
    place=(0.03, -0.02),
    row="28 mm x 8 mm",
    variants={
        "slot": Variant(
            slot(0.0, 0.01, 0.03, 0.04, 0.004),
            2,
            2,
            math.hypot(0.03, 0.03) * 0.008 + math.pi * 0.004**2,
        )
    },
    returns={"slot", "circle"},
    middle=lambda e: ((e["x1"] + e["x2"]) / 2, (e["y1"] + e["y2"]) / 2),
    outline=outline,
    drawn=drawn,
    random=random,
    summary=summary,
    dimensions=dimensions,
    summaries=[
        (slot(1.0, 1.0, 4.0, 5.0, 0.5), "<6.0 length> x <1.0 length>"),
        (SLANTED, f"<{LONG!r} length> x <0.14 length>"),
        (slot("0", "0", "3", "4", "1"), "<7.0 length> x <2.0 length>"),
        (slot(1.0, 2.0, 1.0, 2.0, 0.3), "<0.6 length> x <0.6 length>"),
        (slot(x1=NAN, r=1), "<nan length> x <2.0 length>"),
        (slot(x1=-1e308, x2=1e308, r=1), "<inf length> x <2.0 length>"),
    ],
    summary_keys=KEYS,
    no_summary=[(slot(x1=[]), TypeError)],
    labels=[
        (slot(-1.0, 0.0, 2.0, 1.0, 0.25), [(220.0, 130.0, "3662.28 mm x 500 mm", {})]),
    ],
    no_labels=[
        ({"type": "slot", "x1": 0.0, "y1": 0.0, "y2": 0.0, "r": 1.0}, KeyError),
        (slot(x2="far"), ValueError),
    ],
    refused=[
        ({**GROOVE, "r": 0.0}, "the half width must be greater than zero"),
        *(
            ({**GROOVE, key: NAN}, f"{name}: {NO_NUMBER}")
            for key, name in [
                ("x1", "End 1 centre u"),
                ("y1", "End 1 centre v"),
                ("x2", "End 2 centre u"),
                ("y2", "End 2 centre v"),
                ("r", "Half width"),
            ]
        ),
    ],
)
