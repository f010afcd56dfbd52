"""Random sketches and references: sound ones, and ones as a broken file might bring them."""

import copy
import math
from random import Random
from typing import Any

import numpy as np

from soak.user.shapes import Entity
from support.types import CARDS
from tandrel import sketch as S

# What may stand where a number should.
NO_NUMBERS: list[Any] = [None, "", "x", "12", [], [1.0], {}, True, b"1"]
NO_NUMBERS += [math.nan, math.inf, -math.inf, 10**400]
NO_CORNERS: list[Any] = [None, "ab", 5, [], [[]], [[0.0]], [[0.0, 0.0], None]]
NO_CORNERS += [[["1", "2"]], [[None, 1.0]]]
NO_ENTITIES: list[Any] = [None, "circle", 7, [], {}]
NO_ENTITIES += [{"type": None}, {"type": "spline"}, {"type": ["circle"]}]
NO_SETTINGS: list[Any] = [None, "x", 3, math.nan]


def length(dice: Random, most: float = 0.06) -> float:
    """A coordinate in metres: mostly whole millimetres, sometimes any double."""
    value = dice.uniform(-most, most)
    return value if dice.random() < 0.2 else round(value, 3)


def entity(dice: Random) -> Entity:
    """A shape with numbers of the right kinds; it may well have no outline."""
    made = dice.choice(CARDS).random(
        dice, lambda: (length(dice), length(dice)), lambda: abs(length(dice, 0.03)) + 0.001
    )
    if "points" in made and dice.random() < 0.15:
        dice.shuffle(made["points"])  # edges cross
    if dice.random() < 0.15:
        key = dice.choice([key for key, value in made.items() if isinstance(value, (int, float))])
        made[key] = dice.choice([0, -made[key], 2 * made[key]])
    return made


def damaged(dice: Random, sound: Entity) -> Any:
    """An entity with something missing or of the wrong kind."""
    if dice.random() < 0.08:
        return copy.deepcopy(dice.choice(NO_ENTITIES))
    e = copy.deepcopy(sound)
    key = dice.choice([key for key in e if key != "type"])
    if dice.random() < 0.3:
        del e[key]
    else:
        e[key] = copy.deepcopy(dice.choice(NO_CORNERS if key == "points" else NO_NUMBERS))
    return e


def sketch(dice: Random, sound: bool) -> Any:
    """A sketch of up to a dozen shapes, or none."""
    if dice.random() < 0.08:
        return dice.choice([None, {}, S.new()])
    entities: list[Any] = [entity(dice) for _ in range(dice.choice([0, 1, 2, 3, 4, 6, 9, 12]))]
    if dice.random() < 0.3:
        entities = acceptable(entities)
    if len(entities) > 1 and dice.random() < 0.2:
        entities[-1] = copy.deepcopy(dice.choice(entities))
    made: dict[str, Any] = {"plane": dice.choice(S.PLANES), "offset": dice.choice([0.0, 0, 0.0125])}
    made["entities"] = entities
    for key in ("plane", "offset", "entities"):
        if dice.random() < 0.03:
            del made[key]
    if dice.random() < 0.2:
        made["maker"] = {"name": "test", "history": [1, 2.5, None]}
    if not sound:
        for i in range(len(entities)):
            if dice.random() < 0.4:
                entities[i] = damaged(dice, entities[i])
        if dice.random() < 0.1:
            key = dice.choice(["plane", "offset", "entities"])
            made[key] = dice.choice(NO_SETTINGS)
    return made


def acceptable(entities: list[Any]) -> list[Any]:
    """Those of the shapes that a sketch is accepted with."""
    kept: list[Any] = []
    for e in entities:
        if not S.check({"entities": [*kept, e]}):
            kept.append(e)
    return kept


def references(dice: Random) -> list[tuple[str, Any]]:
    """Outlines to draw by, some of them of no or of one point."""
    found = []
    for k in range(dice.choice([0, 0, 0, 1, 2])):
        points = [[length(dice), length(dice)] for _ in range(dice.choice([0, 1, 2, 5]))]
        found.append((f"reference {k}", np.array(points, dtype=float).reshape(-1, 2)))
    return found
