"""What an editor must make of entities and points, stated plainly to compare it with."""

import copy
from typing import Any

from support.types import CARD, CARDS
from support.types.card import Card, Entity, Point
from support.types.slot import CARD as SLOT
from tandrel import sketch as S
from tandrel.geometry.edges import Points
from tandrel.gui.i18n import tr
from tandrel.gui.widgets import units

POSITIONS = (("x", "y"), ("xc", "yc"), ("x1", "y1"), ("x2", "y2"))


def outline(e: Any) -> Points | None:
    """The outline of an entity, None where it has none."""
    try:
        return S.outline(e)
    except (ValueError, KeyError, TypeError):
        return None


def length(value: Any) -> str:
    return units().fmt(value, "length")


def card(e: Any) -> Card | None:
    """What is known of the type of an entity."""
    return next((card for card in CARDS if card.name == e["type"]), None)


def summary(e: Any) -> str:
    """The size of an entity in a few words."""
    return (card(e) or CARD["polygon"]).summary(e, length, tr)


def moved(e: Entity, shift: Point) -> Entity:
    """A copy of an entity at another place."""
    du, dv = shift
    n = copy.deepcopy(e)
    for u_key, v_key in POSITIONS:
        if u_key in n:
            n[u_key] = float(n[u_key]) + du
            n[v_key] = float(n[v_key]) + dv
    if n["type"] == "polygon":
        n["points"] = [[float(p[0]) + du, float(p[1]) + dv] for p in n["points"]]
    return n


def slot(a: Any, b: Any, p: Any) -> Entity | None:
    """The slot with these ends whose side runs through a point."""
    return SLOT.drawn(a.tolist(), b.tolist(), p.tolist())
