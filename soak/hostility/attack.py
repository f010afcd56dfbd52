"""Foreign code that strikes in the middle of an operation.

Hostile values and neighbours call `Attack.hit` whenever they are asked for something; now and then
one of the attack's acts follows: it changes what the operation works on, replaces a name, enters
the editor again, raises. What is done depends on the dice alone, so a seed replays it.
"""

import copy
import math
import random
import sys
from collections.abc import Callable
from functools import partial
from typing import Any

import numpy as np

MOST_HITS = 20_000  # of one case: what goes on for ever is cut off
MOST_ACTS = 12
DEEPEST = 2  # acts within acts


class CutOff(BaseException):
    """Ends what an endless input would make last for ever."""


class Own(Exception):
    """An error that no code but the application's knows."""


class OwnBase(BaseException):
    """The same, no ordinary error."""


class Unspeakable(ValueError):
    """An error without a text."""

    def __str__(self) -> str:
        raise RuntimeError("no text")


ERRORS: list[Callable[[], BaseException]] = [
    lambda: ValueError("bad {value} %s"),
    lambda: StopIteration(3),
    lambda: UnicodeDecodeError("utf-8", b"x", 0, 1, "why"),
    *(KeyError, TypeError, IndexError, AttributeError, NameError, ZeroDivisionError, OverflowError),
    *(RecursionError, MemoryError, KeyboardInterrupt, GeneratorExit, Unspeakable, Own, OwnBase),
]
_PLAIN = [None, 0, -1, math.nan, math.inf, 10**400, True, "x", "nul\0\ud800", b"bytes", type]
_LISTS: list[Any] = [[], {}, {0: 1}, (), [[]], [5], [None] * 3, [[1.0], [2.0]], [[1.0, 2.0], [3.0]]]
_LISTS += [[["a", "b"]], [[math.nan, math.inf], [0.0, 1.0], [10**400, 0]]]
NONSENSE: list[Callable[[], Any]] = [
    *(partial(copy.deepcopy, answer) for answer in (*_PLAIN, *_LISTS)),
    object,
    lambda: iter(()),
    lambda: iter([[0.0, 0.0], [0.01, 0.0], [0.0, 0.01]]),
    lambda: np.zeros(0),
    lambda: np.zeros((0, 2)),
    lambda: np.zeros((3, 1)),
    lambda: np.zeros((3, 2, 2)),
    lambda: np.float64(1),
    lambda: range(5),
    lambda: np.zeros((3, 2), complex),
    lambda: np.full((3, 2), math.nan),
    lambda: np.array([["a", "b"]]),
    lambda: np.zeros((3, 2)).T,
    lambda: np.zeros((2, 4))[:, ::2],
    lambda: np.zeros((4, 2), dtype=">f8"),
    lambda: memoryview(b"abcd"),
    lambda: lambda *arguments, **keywords: None,
]


def cyclic_list() -> list[Any]:
    """Not for Tk: tkinter itself crashes on `configure(background=cyclic_list())`."""
    cycle: list[Any] = [0.0, 1.0]
    cycle[1] = cycle
    return cycle


class Attack:
    """Strikes with a rate of its own at the places that call `hit`; quiet until it is armed."""

    def __init__(self, dice: random.Random) -> None:
        self.dice = dice
        self.rate = dice.choice([0.0, 0.01, 0.05, 0.3])
        self.acts: list[Callable[[], object]] = []
        self.answers: list[Callable[[], Any]] = [*NONSENSE, cyclic_list]
        self.errors: list[Callable[[], BaseException]] = [*ERRORS, SystemExit]
        self.armed = False
        self.aloud = False  # tells each act, for whoever replays a case
        self._hits_left = MOST_HITS
        self._acts_left = dice.randint(1, MOST_ACTS)
        self._depth = 0

    def hit(self, where: str) -> None:
        """Foreign code is asked for something here."""
        if not self.armed:
            return
        self._hits_left -= 1
        if self._hits_left < 0:
            raise CutOff
        if self._depth >= DEEPEST or not self._acts_left or self.dice.random() >= self.rate:
            return
        self._acts_left -= 1
        act = self.dice.choice(self.acts)
        self._tell(where, act)
        self._depth += 1
        try:
            act()
        finally:
            self._depth -= 1

    def raises(self) -> None:
        raise self.dice.choice(self.errors)()

    def nonsense(self) -> Any:
        return self.dice.choice(self.answers)()

    def answer(self, real: Callable[[], Any]) -> Any:
        """The real answer, or now and then nonsense."""
        if self.armed and self._acts_left and self.dice.random() < self.rate / 2:
            self._acts_left -= 1
            answer = self.dice.choice(self.answers)
            self._tell("answer", answer)
            return answer()
        return real()

    def _tell(self, where: str, act: Callable[[], object]) -> None:
        if self.aloud:
            print(f"{where}: {getattr(act, '__name__', act)}", file=sys.stderr, flush=True)

    def quietly(self, step: Callable[[], object]) -> None:
        """What goes wrong with an attack is not a matter of the attacked."""
        try:
            step()
        except Exception as error:
            if isinstance(error, SystemError):
                raise
