"""Entities read and built once: the same numbers always give the same shape, at a look-up's cost.

An entity is a plain dictionary that anybody may change in place at any time, so what is remembered
hangs on its values, never on the dictionary.
"""

from __future__ import annotations

import reprlib
from typing import Any, Hashable

from tandrel._reasons import Reason
from tandrel.geometry.edges import Edge
from tandrel.geometry.loops import POINTS, joined
from tandrel.geometry.shapes import Shape
from tandrel.gui.i18n import N_
from tandrel.kinds import KINDS
from tandrel.kinds.kind import Drawing

ROOM = 1 << 21  # points remembered at most; a point takes 50 to 100 bytes with all that hangs on it


class Memo:
    """A bounded memory of the values used last.

    Two generations: when the young one is full it becomes the old one, and what the old one held
    and nobody asked for since is forgotten. ``room`` bounds the summed weights of each.
    """

    def __init__(self, room: int) -> None:
        self._room = room
        self._weight = 0
        self._young: dict[Hashable, tuple[Any, int]] = {}
        self._old: dict[Hashable, tuple[Any, int]] = {}

    def get(self, key: Hashable) -> Any:
        """The value remembered under this key, or None."""
        kept = self._young.get(key)
        if kept is None:
            kept = self._old.get(key)
            if kept is None:
                return None
            self.put(key, *kept)
        return kept[0]

    def put(self, key: Hashable, value: Any, weight: int) -> None:
        """Remember a value that isn't None."""
        if self._weight + weight > self._room:
            self._old, self._young, self._weight = self._young, {}, 0
        self._young[key] = value, weight
        self._weight += weight


_shapes = Memo(ROOM // 2)


def shape(e: Any) -> Shape:
    """The shape of an entity; ``ValueError``, ``KeyError`` or ``TypeError`` if it has none.

    A ``KeyError`` names the missing key; the others carry a :class:`Reason`.
    """
    key = _values(e)
    found = _shapes.get(key)
    if found is None:
        found = _built(key)
        _shapes.put(key, found, _weight(key, found))
    if isinstance(found, Shape):
        return found
    raise ValueError(found)


def drawn(e: Any) -> Drawing:
    """Corners and loop of an entity, worked out afresh; raises what :func:`shape` does."""
    return _drawing(_values(e))


def contour(e: Any) -> list[Edge]:
    """The contour of an entity, the very curve that its outline is sampled from."""
    return joined(drawn(e).loop)


def _drawing(key: tuple[Any, ...]) -> Drawing:
    kind, *values = key
    return KINDS[kind].drawing(*values)


def _built(key: tuple[Any, ...]) -> Shape | Reason:
    try:
        return Shape(*_drawing(key))
    except ValueError as error:
        reason: Reason = error.args[0]
        return reason


def _weight(key: tuple[Any, ...], found: Shape | Reason) -> int:
    if isinstance(found, Shape):
        return max(POINTS, len(found.ring))
    return 1 + sum(len(value) // 16 for value in key if isinstance(value, bytes))


def _values(e: Any) -> tuple[Any, ...]:
    """The type of an entity and what its fields read: all that its shape depends on, hashable."""
    if not isinstance(e, dict):
        raise TypeError(Reason(N_("a shape must be a dictionary")))
    kind = e["type"]
    known = KINDS.get(kind) if isinstance(kind, str) else None
    if known is None:
        raise ValueError(Reason(N_("{kind} is no kind of shape"), {"kind": reprlib.repr(kind)}))
    return (kind, *[field.read(e[key]) for key, field in known.fields.items()])
