"""Cases of hostility on stand-in editors: one seed, one editor, a handful of operations.

A case comes back with what must not be: an error that only broken native code makes, a fresh
editor that doesn't work any more, something that is still held after all is gone.
"""

import gc
import inspect
import random
import sys
from collections.abc import Callable
from typing import Any

import numpy as np
from support.neighbours import circle, one_of_each, polygon
from support.operations import OPERATIONS, TOOLS, sound
from support.plain import Event, Var
from tandrel.gui import sketcher

from soak.hostility.attack import Attack
from soak.hostility.neighbours import (
    EndlessPicture,
    HostileCanvas,
    StandInWidget,
    StandInWidgets,
    neighbours,
    replaced,
)
from soak.hostility.values import NUMBERS, TEXTS, HostileList, damage, hostile

METHODS = sorted(name for name in vars(sketcher.SketchEditor) if name[:2] != "__")
NAMES = sorted(name for name in vars(sketcher) if name[:2] != "__")
ATTRIBUTES = (
    "sk tool snap grid sides canvas scale centre clicks drag sel status list props cursor refs dim"
    " plane vars points_text _pan offset result"
).split()
REPLACED = "sk sel scale centre canvas vars list props clicks drag refs cursor".split()
PARAMETERS = {
    name: set(inspect.signature(getattr(sketcher.SketchEditor, name)).parameters) - {"self", "keep"}
    for name in METHODS
}
# Those that act on what there is, and don't show the dialog and wait.
PLAIN = [name for name in METHODS if not PARAMETERS[name] and name != "run"]


class Token:
    """Stands in the sketch, to be let go by everybody in the end."""


# What an object's references are that only a list has, as they are counted below.
IN_A_LIST = {sys.getrefcount(token) for token in [Token()]}


class Case:
    """One editor among attacked neighbours; `found` is what must not be."""

    def __init__(self, seed: int) -> None:
        self.seed = seed
        self.dice = random.Random(f"hostile {seed}")
        self.attack = Attack(self.dice)
        self.tokens = [Token() for _ in range(4)]
        self.found: list[str] = []
        self.editor: Any = None
        self.attack.acts = [*self.meddling(), self.attack.raises, gc.collect]

    def token(self) -> Token:
        return self.dice.choice(self.tokens)

    # -- what is worked on ---------------------------------------------------------------------

    def entities(self) -> list[Any]:
        dice = self.dice
        shapes: list[Any] = dice.sample(one_of_each()["entities"], dice.randint(0, 5))
        if dice.random() < 0.1:
            turns = np.linspace(0, 6, 40)
            corners = np.column_stack([np.cos(turns), np.sin(turns)]) / 50
            shapes.append(polygon(*corners.tolist()))
        for shape in shapes:
            shape["token"] = self.token()
            if dice.random() < 0.4:
                damage(shape, self.attack)
        if dice.random() < 0.1:
            shapes.append(self.attack.nonsense())
        return HostileList(shapes, self.attack) if dice.random() < 0.3 else shapes

    def point(self) -> Any:
        dice = self.dice
        if dice.random() < 0.9:
            return np.array([dice.uniform(-0.05, 0.05), dice.uniform(-0.05, 0.05)])
        return dice.choice([self.attack.nonsense(), [dice.choice(NUMBERS), dice.choice(NUMBERS)]])

    def number(self) -> Any:
        dice = self.dice
        value = dice.choice(NUMBERS) if dice.random() < 0.1 else dice.uniform(0, 400)
        return hostile(value, self.attack) if dice.random() < 0.2 else value

    def text(self) -> Any:
        sound_texts = ["1", "0.5", "-3", "12", "nan", "inf"]
        text = self.dice.choice(TEXTS if self.dice.random() < 0.3 else sound_texts)
        return hostile(text, self.attack) if self.dice.random() < 0.2 else text

    # -- what strikes in between ---------------------------------------------------------------

    def meddling(self) -> list[Callable[[], object]]:
        return [
            self.change_entities,
            self.change_entity,
            self.replace_attribute,
            self.replace_attribute,
            self.replace_view,
            self.delete_attribute,
            self.clear_collections,
            self.forget_everything,
            self.replace_name,
            self.delete_name,
            self.override,
            self.override_in_class,
            self.enter,
            self.enter,
        ]

    def listed(self) -> Any:
        """The sketch's list as it is, not as it tells."""
        entities = dict.get(vars(self.editor).get("sk", {}), "entities")
        return entities if isinstance(entities, list) else []

    def change_entities(self) -> None:
        entities, dice = self.listed(), self.dice
        how = dice.randrange(5)
        if how == 0:
            entities.clear()
        elif how == 1 and list.__len__(entities):
            entities.pop()
        elif how == 2:
            entities.insert(0, dice.choice([circle(), None, {}, 5]))
        elif how == 3:
            entities.reverse()
        else:
            dict.__setitem__(self.editor.sk, "entities", self.entities())

    def change_entity(self) -> None:
        entities = list(list.__iter__(self.listed()))
        if entities:
            entity = self.dice.choice(entities)
            self.attack.quietly(lambda: self.dice.choice([entity.clear, entity["points"].clear])())
            self.attack.quietly(lambda: damage(entity, self.attack))

    def replace_attribute(self) -> None:
        name = self.dice.choice(REPLACED)
        setattr(self.editor, name, self.replacement(name))

    def replacement(self, name: str) -> Any:
        if self.dice.random() < 0.4:
            return self.attack.nonsense()
        made: dict[str, Callable[[], Any]] = {
            "sk": lambda: {"entities": self.entities(), "token": self.token()},
            "sel": lambda: self.dice.choice([None, 0, 1, -1, 99, "0", 0.5]),
            "scale": lambda: self.dice.choice([1.0, 5000.0, self.number()]),
            "centre": self.point,
            "cursor": self.point,
            "canvas": lambda: HostileCanvas(self.attack),
            "vars": dict,
            "clicks": lambda: HostileList([self.point() for _ in range(3)], self.attack),
            "drag": lambda: {"kind": "move", "start": self.point(), "orig": circle()},
            "refs": lambda: [("edge", [self.point(), self.point()])],
        }
        return made.get(name, StandInWidget)()

    def replace_view(self) -> None:
        """Between the questions of one repaint the view changes by orders of magnitude."""
        self.editor.scale = 10.0 ** self.dice.randint(-12, 12)
        self.attack.quietly(lambda: self.editor.grid.set(self.dice.choice(["1", "1e-9", "1e9"])))

    def delete_attribute(self) -> None:
        vars(self.editor).pop(self.dice.choice(ATTRIBUTES), None)

    def clear_collections(self) -> None:
        for name in "clicks", "drag", "refs", "vars":
            self.attack.quietly(lambda: vars(self.editor)[name].clear())

    def forget_everything(self) -> None:
        if self.dice.random() < 0.2:
            for name in ATTRIBUTES:
                vars(self.editor).pop(name, None)

    def replace_name(self) -> None:
        setattr(sketcher, self.dice.choice(NAMES), self.attack.nonsense())

    def delete_name(self) -> None:
        vars(sketcher).pop(self.dice.choice(NAMES), None)

    def override(self) -> None:
        setattr(self.editor, self.dice.choice(METHODS), self.overriding())

    def override_in_class(self) -> None:
        setattr(sketcher.SketchEditor, self.dice.choice(METHODS), self.overriding())

    def overriding(self) -> Any:
        if self.dice.random() < 0.3:
            return self.attack.nonsense()
        other = self.dice.choice(PLAIN)

        def instead(*_arguments: Any, **_keywords: Any) -> Any:
            self.attack.hit("override")
            return self.attack.answer(getattr(self.editor, other))

        return instead

    def enter(self) -> None:
        """Call an operation from inside another; what it raises passes, or doesn't."""
        try:
            self.operation()()
        except Exception as error:
            if isinstance(error, SystemError) or self.dice.random() < 0.3:
                raise

    # -- operations ----------------------------------------------------------------------------

    def operation(self) -> Callable[[], object]:
        dice, editor = self.dice, self.editor
        if dice.random() < 0.4:
            name = dice.choice(sorted(OPERATIONS))
            return lambda: OPERATIONS[name](editor)
        name = dice.choice(METHODS)
        if not PARAMETERS[name]:
            return lambda: getattr(editor, dice.choice(PLAIN))()
        named = {key: self.argument(key) for key in sorted(PARAMETERS[name])}
        return lambda: getattr(editor, name)(**named)

    def argument(self, name: str) -> Any:
        """What an operation may get for the parameter of this name."""
        if name in ("p", "a", "b", "d"):
            return self.point()
        if name in ("e", "ent"):
            return self.dice.choice([self.pointer, self.an_entity])()
        return self.dice.choice([None, 0, 1, 99]) if name == "i" else self.number()

    def pointer(self) -> Any:
        return Event(self.number(), self.number())

    def an_entity(self) -> Any:
        shape = self.dice.choice(one_of_each()["entities"])
        return damage(shape, self.attack) if self.dice.random() < 0.5 else shape

    def attempt(self, operation: Callable[[], object]) -> None:
        """Any exception is an answer, but those that only broken native code raises."""
        try:
            operation()
        except (SystemError, EndlessPicture) as error:
            self.found.append(f"{type(error).__name__}: {error}")
        except BaseException as error:
            error.__traceback__ = None

    def run(self) -> None:
        """Prepare, attack, and let everything go."""
        with replaced(self.names()):
            self.use()
            self.attack.armed = False
        self.editor = None
        self.attack.acts.clear()

    def names(self) -> dict[str, Any]:
        """What the module has instead of its neighbours: attacked ones, and no Tk."""
        names = neighbours(self.attack, self.dice.random() < 0.5)
        StandInWidgets.attack = self.attack
        stand_in = StandInWidgets()
        names.update(tk=stand_in, ttk=stand_in, Form=StandInWidget, Tooltip=StandInWidget)
        return names

    def use(self) -> None:
        self.editor = self.editor or self.make()
        self.attack.armed = True
        for _ in range(self.dice.randint(1, 6)):
            self.attempt(self.operation())

    def make(self) -> Any:
        dice = self.dice
        editor: Any = sound(dice.choice(TOOLS))
        del editor.show_props
        editor.sk = {"plane": "XY", "entities": self.entities(), "token": self.token()}
        editor.canvas = HostileCanvas(self.attack)
        editor.props = StandInWidget()
        editor.sel = dice.choice([None, 0, 1, 1, 2, self.number()])
        editor.vars = {key: Var(self.text()) for key in "x y w h radius xc yc r n angle".split()}
        editor.points_text = StandInWidget()
        editor.tool = Var(dice.choice([*TOOLS, *TOOLS, self.text()]))
        editor.scale = dice.choice([1.0, 5000.0, 5000.0, 1e-9, 1e9])
        editor._pan = (10, 10, self.point())
        editor.grid = Var(dice.choice(["1", "1", self.text()]))
        editor.clicks = [self.point() for _ in range(dice.randint(0, 4))]
        editor.drag = dice.choice(
            [
                None,
                {"kind": "move", "start": self.point(), "orig": self.an_entity()},
                {"kind": "new", "start": self.point()},
                {},
            ]
        )
        if dice.random() < 0.5:
            editor.refs = [("edge", [self.point() for _ in range(dice.randint(0, 3))])]
        for _ in range(dice.randint(0, 3)):
            name = dice.choice("sk sel scale centre clicks drag refs cursor".split())
            if isinstance(getattr(editor, name), (dict, list, float)):
                setattr(editor, name, hostile(getattr(editor, name), self.attack))
        return editor


class Afterwards:
    """What is compared after every case with what it was before the first."""

    def __init__(self) -> None:
        self._picture = fresh_picture()
        self._shared = [
            *(value for value in vars(sketcher).values() if not isinstance(value, int)),
            *vars(sketcher.SketchEditor).values(),
        ]
        self._held = list(map(sys.getrefcount, self._shared))

    def check(self, case: Case) -> list[str]:
        """What is wrong after a case that has ended."""
        gc.collect()
        wrong = list(case.found)
        held = [sys.getrefcount(token) for token in case.tokens]
        if set(held) != IN_A_LIST:
            wrong.append(f"tokens of the sketch are still held: {held}")
        if fresh_picture() != self._picture:
            wrong.append("a fresh editor paints another picture")
        held = list(map(sys.getrefcount, self._shared))
        rows = zip(self._shared, self._held, held)
        if grown := [f"{thing!r:.60} {now - then:+}" for thing, then, now in rows if now > then]:
            wrong.append(f"held more often than before: {grown}")
            self._held = held
        return wrong


def fresh_picture() -> Any:
    editor: Any = sound()
    editor.fit()
    picked = editor.pick(200, 150), tuple(editor.snapped(10, 10))
    drawn = [(name, len(args)) for name, args, _ in editor.canvas.drawn]
    return picked, drawn, [sketcher.describe(e) for e in editor.sk["entities"]]
