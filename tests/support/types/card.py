"""What a card tells of its type of shapes.

Plain numbers only, so that a card serves every interpreter, with or without the application.
Loading a card asks nothing of numpy, of which some interpreters have a stand-in only.
"""

from __future__ import annotations

import math
from random import Random
from typing import Any, Callable, Iterable, NamedTuple, Sequence

import numpy as np

Entity = dict[str, Any]
Point = tuple[float, float]
Label = tuple[Point, Point, str, str]


class Field(NamedTuple):
    """A row of the form: its texts are typed into a sound shape, and stand for these values."""

    key: str
    label: str
    is_length: bool
    typed: Sequence[tuple[str, Any]]


class Tool(NamedTuple):
    """A tool, and how a user draws with it on a grid of a millimetre, five sides asked for."""

    name: str
    label: str
    tip: str
    gesture: Sequence[Point]  # in millimetres: start and end of a drag, or the places clicked
    size: str  # of what the gesture makes
    dragged: bool = False


class Variant(NamedTuple):
    """A sound shape, and the straight edges and arcs that its contour has at the least."""

    entity: Entity
    lines: int
    arcs: int
    area: float


class Card(NamedTuple):
    """Lengths are SI lengths; rows pair an entity with what it must give, or raise."""

    name: str
    label: str
    tool: Tool
    fields: Sequence[Field]
    centres: Sequence[tuple[str, str]]  # the keys of the points that the pointer snaps to
    has_corners: bool  # whether it snaps to what the sketch module calls corners, too

    make: Callable[..., Entity]  # from the values in their order, with defaults
    sample: Entity  # all of whose values differ
    shown: Sequence[str]  # the form's texts for it, in millimetres
    moved: Entity  # by 1 and 2
    placed: Entity  # apart from those of the other cards
    place: Point  # inside it, away from its key points and theirs
    row: str  # its summary, in millimetres
    variants: dict[str, Variant]

    # What a drawing brings it back as, where it is one: a slot without length is a circle.
    returns: set[str]

    middle: Callable[[Entity], Point] | None  # that it is symmetric about
    outline: Callable[[Entity], list[list[float]]]  # a straight-sided stand-in; ValueError
    drawn: Callable[..., Entity | None]  # what the tool makes of its points, and `sides`
    # Sound but for a rounding that may be too large; from functions that draw points and sizes.
    random: Callable[[Random, Callable[[], Point], Callable[[], float]], Entity]

    # What the editor says of it, from functions that format a length and translate: its summary,
    # and the labels, with the point of each, the pixels from there, and the anchor.
    summary: Callable[[Entity, Callable[[Any], str], Callable[[str], str]], str]
    dimensions: Callable[[Entity, Callable[[Any], str]], Iterable[Label]]

    summaries: Sequence[tuple[Entity, str]]  # lengths as "<0.1 length>"
    summary_keys: Sequence[str]  # without which there is none
    no_summary: Sequence[tuple[Entity, type[Exception]]]
    labels: Sequence[tuple[Entity, Sequence[tuple[float, float, str, dict[str, str]]]]]
    no_labels: Sequence[tuple[Entity, type[Exception]]]
    refused: Sequence[tuple[Entity, str]]  # by the application, with its words

    corners_text: str | None = None  # of the sample, where corners are typed


def numbers(e: Entity, *keys: str) -> list[float]:
    return [float(e[key]) for key in keys]


def distance(a: Point, b: Point) -> float:
    """As numpy measures it: other ways round differently in the last bit."""
    with np.errstate(over="ignore", invalid="ignore"):
        return float(np.linalg.norm(np.array([b[0] - a[0], b[1] - a[1]], float)))


def turned(radius: float, count: int, first: float) -> list[Point]:
    """Corners of a regular polygon round the origin; the direction of the first in degrees."""
    turns = [math.radians(first) + 2 * math.pi * k / count for k in range(count)]
    return [(radius * math.cos(turn), radius * math.sin(turn)) for turn in turns]


NAN, INF = math.nan, math.inf
TOO_LARGE, NO_NUMBER = "the number is too large", "not a number"
