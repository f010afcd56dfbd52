"""Where a flat drawing lies: notes of plane and offset in its custom properties."""

from __future__ import annotations

from typing import Any, Iterator, Mapping

from tandrel import sketch as S
from tandrel.geometry.edges import LARGEST

_PLANE, _OFFSET = "Sketch plane", "Offset along the normal (m)"


def noted(sketch: Mapping[str, Any]) -> Iterator[tuple[str, str]]:
    """The names and values of the properties for a sketch."""
    yield _PLANE, sketch.get("plane", S.PLANES[0])
    yield _OFFSET, repr(float(sketch.get("offset") or 0.0))


def is_noted(properties: Mapping[str, str]) -> bool:
    """Whether there are such notes, which no other program writes."""
    return _PLANE in properties and _OFFSET in properties


def placed(properties: Mapping[str, str]) -> dict[str, Any]:
    """An empty sketch where the properties say, or in the usual place if they don't."""
    placing = S.new()
    if properties.get(_PLANE) in S.PLANES:
        placing["plane"] = properties[_PLANE]
    try:
        offset = float(properties.get(_OFFSET, ""))
    except ValueError:
        offset = 0.0
    if abs(offset) <= LARGEST:
        placing["offset"] = offset
    return placing
