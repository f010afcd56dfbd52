"""The types of shapes, a card each: what the tests know of a type, and nothing else names it.

A module of this folder that has a CARD is one, found by itself.
"""

import importlib
import pkgutil

from .card import Card

# The order of the samples, which tests refer to; what is new comes last.
_FIRST = ("rectangle", "circle", "regular", "slot", "polygon")
_NAMES = sorted(module.name for module in pkgutil.iter_modules(__path__) if module.name != "card")
_ORDER = [*_FIRST, *(name for name in _NAMES if name not in _FIRST)]

CARDS: "list[Card]" = [importlib.import_module(f".{name}", __name__).CARD for name in _ORDER]
CARD = {card.name: card for card in CARDS}


def random_entity(dice, reach):
    """A shape of any type within a reach of the origin; now and then one that can't be built."""
    made = dice.choice(CARDS).random(
        dice,
        lambda: (dice.uniform(-reach, reach), dice.uniform(-reach, reach)),
        lambda: dice.uniform(reach / 1000, reach),
    )
    if dice.random() < 0.08:
        del made[dice.choice([key for key in made if key != "type"])]
    return made
