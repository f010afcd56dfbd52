"""Circles."""

import math

from .card import INF, NAN, NO_NUMBER, TOO_LARGE, Card, Field, Tool, Variant, distance, numbers


def circle(xc=0.0, yc=0.0, r=1.0):
    return {"type": "circle", "xc": xc, "yc": yc, "r": r}


def outline(e):
    x, y, r = numbers(e, "xc", "yc", "r")
    if not r > 0:
        raise ValueError("the radius must be positive")
    return [[x + r, y], [x, y + r], [x - r, y], [x, y - r]]


def drawn(a, b, sides=6):
    r = distance(a, b)
    return None if r == 0 else circle(a[0], a[1], r)


def random(dice, point, size):
    return circle(*point(), size())


def summary(e, length, tr):
    return tr("diameter {d}").format(d=length(2 * float(e["r"])))


def dimensions(e, length):
    yield (e["xc"], e["yc"]), (0, 0), "Ø " + length(2 * float(e["r"])), "center"


FIELDS = [
    Field("xc", "Centre u", True, [(" 3e1 ", 0.03)]),
    Field("yc", "Centre v", True, [("-0.25", -0.00025)]),
    Field("r", "Radius", True, [("33.3", 0.0333)]),
]
BORE = circle(r=0.01)
CARD = Card(
    name="circle",
    label="Circle",
    tool=Tool(
        "circle",
        "Circle",
        "Press at the centre and drag out the radius.",
        gesture=[(-20, -15), (4, 17)],
        size="diameter 80 mm",
        dragged=True,
    ),
    fields=FIELDS,
    centres=[("xc", "yc")],
    has_corners=False,
    make=circle,
    sample=circle(0.001, 0.002, 0.03),
    shown=["1", "2", "30"],
    moved=circle(0.001 + 1, 0.002 + 2, 0.03),
    placed=circle(0.0, 0.02, 0.01),
    place=(0.004, 0.023),
    row="diameter 20 mm",
    variants={"circle": Variant(circle(0.01, -0.02, 0.015), 0, 2, math.pi * 0.015**2)},
    returns={"circle"},
    middle=lambda e: (e["xc"], e["yc"]),
    outline=outline,
    drawn=drawn,
    random=random,
    summary=summary,
    dimensions=dimensions,
    summaries=[
        (circle(r=0.1), "diameter <0.2 length>"),
        (circle(r="1.5"), "diameter <3.0 length>"),
        (circle(r=INF), "diameter <inf length>"),
    ],
    summary_keys=["r"],
    no_summary=[(circle(r="wide"), ValueError), (circle(r=None), TypeError)],
    labels=[(circle(1.0, 0.5, 10.0), [(240.0, 130.0, "Ø 20000 mm", {})])],
    no_labels=[
        ({"type": "circle", "xc": 0.0, "yc": 0.0}, KeyError),
        (circle(r="wide"), ValueError),
    ],
    refused=[
        ({**BORE, "r": 0.0}, "the radius must be greater than zero"),
        ({**BORE, "r": -0.01}, "the radius must be greater than zero"),
        ({**BORE, "xc": NAN}, f"Centre u: {NO_NUMBER}"),
        ({**BORE, "xc": -1e308}, f"Centre u: {TOO_LARGE}"),
        ({**BORE, "xc": 10**400}, f"Centre u: {TOO_LARGE}"),
        ({**BORE, "yc": INF}, f"Centre v: {TOO_LARGE}"),
        ({**BORE, "r": 1e308}, f"Radius: {TOO_LARGE}"),
        ({**BORE, "r": 1e-300}, "the shape is too small to be drawn exactly where it lies"),
        (
            {**BORE, "xc": 1e6, "r": 1e-3},
            "the shape is too small to be drawn exactly where it lies",
        ),
    ],
)
