"""Shapes that a sketch can hold: some of every kind, and hypothesis' own."""

from hypothesis import strategies as st
from tandrel import sketch as S
from tandrel.storage import Document

from .types import CARDS
from .types.polygon import ELL  # noqa: F401

EVERY_KIND = {name: v.entity for card in CARDS for name, v in card.variants.items()}
PLATE = [
    {"type": "rectangle", "x": -0.08, "y": -0.06, "w": 0.16, "h": 0.12, "radius": 0.01},
    {"type": "circle", "xc": 0.0, "yc": 0.0, "r": 0.03},
    {"type": "regular", "xc": 0.0, "yc": 0.0, "r": 0.02, "n": 6, "angle": 10.0},
    {"type": "slot", "x1": -0.06, "y1": -0.03, "x2": -0.05, "y2": 0.03, "r": 0.005},
    {"type": "polygon", "points": [[0.04, -0.04], [0.06, -0.04], [0.06, 0.03]], "radius": 0.001},
]
# Two plates that overlap, and a hole in what they have in common.
PAIR = [
    {"type": "rectangle", "x": 0.0, "y": 0.0, "w": 0.06, "h": 0.04, "radius": 0.0},
    {"type": "rectangle", "x": 0.04, "y": 0.0, "w": 0.06, "h": 0.04, "radius": 0.0},
    {"type": "circle", "xc": 0.05, "yc": 0.02, "r": 0.005},
]


def sketch(*entities, plane="XY", offset=0.0):
    return {"plane": plane, "offset": offset, "entities": list(entities)}


def document(*entities, name="part", **placing):
    return Document(name, sketch(*entities, **placing))


@st.composite
def entities(draw, sizes=st.floats(1e-6, 1e3), farthest=1e3):
    """A valid entity of a size in metres, at most so many times its size from the origin."""
    size, dice = draw(sizes), draw(st.randoms(use_true_random=False))
    place = [size * farthest * dice.uniform(-1, 1) for _ in "uv"]
    made = draw(st.sampled_from(CARDS)).random(
        dice,
        lambda: [c + size * dice.uniform(-1, 1) for c in place],
        lambda: size * dice.uniform(0.05, 1),
    )
    while not _is_valid(made):
        # Only roundings can be too large for the corners that they were drawn for.
        made["radius"] = made["radius"] * 0.7 if made["radius"] > size * 1e-3 else 0.0
    return made


def _is_valid(entity):
    try:
        S.outline(entity)
    except ValueError:
        return False
    return True
