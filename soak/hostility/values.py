"""Values that are asked in the middle of an operation and then strike, or lie.

Each is what it seems to be, a dictionary, list, number, text, until its attack is armed.
"""

import math
import os
from collections.abc import Callable, Iterator
from typing import Any

from soak.hostility.attack import Attack

# More than any memory holds is an error of Python's; a sanitizer ends the process instead.
_NO_MEMORY = [] if "asan" in os.environ.get("LD_PRELOAD", "") else [2**40, 2**62]
LENGTHS: list[Any] = [0, 1, 2, 3, 1000, -1, 2**70, None, "x", *_NO_MEMORY]
ENDLESS = 300  # items of an endless input, by which its reader has shown what it does
NUMBERS: list[Any] = [0.0, -0.0, 1.0, -2.5, 7, math.nan, math.inf, -math.inf, 1e308, -1.7e308]
NUMBERS += [5e-324, 1e-170, 1e154, 10**400, 2**63, True, None, "1", "nan", "x", "", [], {}, 1j]
TEXTS = ["", "x", "nul\0in it", "\ud800", "\udcff\ud800", "{", "{n}", "%s", "1e999", "-", "𝔘" * 9]


class _Hostile:
    """What all hostile values share."""

    attack: Attack

    def hit(self, name: str) -> None:
        self.attack.hit(f"{type(self).__name__}.{name}")


def _striking(base: type, striking: str, lying: str = "") -> Callable[[type], Any]:
    """Has methods of a base strike before they answer; those that lie may answer nonsense."""

    def method(name: str, lies: bool) -> Callable[..., Any]:
        real = getattr(base, name)

        def strike(self: Any, *arguments: Any) -> Any:
            self.hit(name)
            if lies:
                return self.attack.answer(lambda: real(self, *arguments))
            return real(self, *arguments)

        return strike

    def made(cls: type) -> type:
        for name in striking.split() + lying.split():
            setattr(cls, name, method(name, name in lying.split()))
        return cls

    return made


@_striking(dict, "__setitem__ setdefault __contains__", lying="__getitem__ get")
class HostileDict(_Hostile, dict[Any, Any]):
    """A dictionary whose methods strike and lie."""

    def __init__(self, value: dict[Any, Any], attack: Attack) -> None:
        dict.__init__(self, value)
        self.attack = attack

    def __bool__(self) -> bool:
        self.hit("__bool__")
        return True

    def __deepcopy__(self, memo: Any) -> Any:
        self.hit("__deepcopy__")
        return self.attack.answer(lambda: HostileDict(self, self.attack))


@_striking(list, "append", lying="__getitem__")
class HostileList(_Hostile, list[Any]):
    """A list that tells wrong lengths, changes while it is read, and may never end."""

    def __init__(self, value: Any, attack: Attack) -> None:
        list.__init__(self, value)
        self.attack = attack
        self.endless = attack.dice.random() < 0.1

    def __len__(self) -> int:
        self.hit("__len__")
        if self.attack.armed and self.attack.dice.random() < self.attack.rate / 4:
            return self.attack.dice.choice(LENGTHS)
        return list.__len__(self)

    def __iter__(self) -> Iterator[Any]:
        for item in list.__iter__(self):
            self.hit("__iter__")
            yield item
        if self.endless and self.attack.armed:
            for _ in range(ENDLESS):
                self.hit("__iter__")
                yield self.attack.answer(lambda: list.__getitem__(self, 0))

    def __bool__(self) -> bool:
        self.hit("__bool__")
        return list.__len__(self) > 0


class HostileNumber(_Hostile):
    """No number by its class; converted to one it strikes, and is another one each time."""

    __hash__ = None  # type: ignore[assignment]

    def __init__(self, value: Any, attack: Attack) -> None:
        self.value, self.attack = value, attack

    def _told(self, _other: Any = None) -> Any:
        self.hit("arithmetic")
        return self.attack.answer(lambda: self.value)

    __float__ = __neg__ = __abs__ = __add__ = __radd__ = __sub__ = __rsub__ = _told
    __mul__ = __rmul__ = __truediv__ = __rtruediv__ = __mod__ = __rmod__ = _told

    def __index__(self) -> int:
        return int(self._told())

    def __bool__(self) -> bool:
        self.hit("__bool__")
        return True

    def __eq__(self, other: object) -> bool:
        return bool(self._told() == other)

    def __lt__(self, other: Any) -> bool:
        return bool(self._told() < other)

    def __gt__(self, other: Any) -> bool:
        return bool(self._told() > other)


@_striking(float, "__float__ __lt__ __add__ __radd__")
class HostileFloat(_Hostile, float):
    """A number that strikes when it is compared or calculated with."""


@_striking(str, "__eq__ __str__")
class HostileText(_Hostile, str):
    """A text that strikes when it is compared."""


def hostile(value: Any, attack: Attack) -> Any:
    """A hostile value that seems to be this one."""
    if isinstance(value, dict):
        return HostileDict(value, attack)
    if isinstance(value, list):
        return HostileList(value, attack)
    made: Any
    if isinstance(value, str):
        made = HostileText(value)
    elif isinstance(value, float) and attack.dice.random() < 0.3:
        made = HostileFloat(value)
    else:
        return HostileNumber(value, attack)
    made.attack = attack
    return made


def damage(entity: Any, attack: Attack) -> Any:
    """Take a key away, put something else in its place, or make it hostile."""
    dice = attack.dice
    if not isinstance(entity, dict) or not entity:
        return entity
    key = dice.choice(sorted(entity))
    kind = dice.randrange(5)
    if kind == 0:
        del entity[key]
    elif kind == 1:
        entity[key] = dice.choice(TEXTS if isinstance(entity[key], str) else NUMBERS)
    elif kind == 2 and "points" in entity:
        damage_points(entity, attack)
    elif kind == 3:
        entity["cycle"] = entity
    else:
        entity[key] = hostile(entity[key], attack)
    return HostileDict(entity, attack) if dice.random() < 0.2 else entity


def damage_points(entity: Any, attack: Attack) -> None:
    points = entity["points"]
    if not isinstance(points, list) or not points:
        return
    dice = attack.dice
    index = dice.randrange(len(points))
    pair = [dice.choice(NUMBERS), dice.choice(NUMBERS)]
    others = [[1.0], [], None, "uv", pair, points, hostile(points[index], attack)]
    points[index] = dice.choice(others)
    if dice.random() < 0.3:
        entity["points"] = HostileList(points, attack)
