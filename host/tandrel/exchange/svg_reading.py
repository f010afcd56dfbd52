"""SVG drawings read: their shapes as lines, in true size where the drawing says how large it is."""

from __future__ import annotations

import io
import math
import re
import xml.etree.ElementTree as ET
from decimal import Decimal, InvalidOperation
from typing import Any, Dict, Iterator, List, Optional, Tuple

import svgelements

from tandrel import sketch as S
from tandrel.exchange import ExchangeError
from tandrel.exchange.curves import as_edges
from tandrel.exchange.lines import LARGEST, TOO_LARGE, Drawing, Line, Stated
from tandrel.exchange.tell import Notes
from tandrel.geometry.edges import Edge, Point
from tandrel.gui.i18n import N_, tr
from tandrel.progress import Tick

_PIXEL = Decimal("0.0254") / 96  # metres, as CSS has it
_METRES = {
    "mm": Decimal("0.001"),
    "cm": Decimal("0.01"),
    "in": Decimal("0.0254"),
    "pt": Decimal("0.0254") / 72,
    "pc": Decimal("0.0254") / 6,
}
_LENGTH = re.compile(r"\s*([-+0-9.eE]+)\s*([a-z%]*)\s*$")
_ROUND = 1e-9  # by how much the radii of a circle may differ, as a part of them
# The square of how far the centre may seem to lie from the chord of half a circle where both are
# rounded to twelve digits, as a part of the radius and of the largest of these numbers.
_HALF = 1e-11
_MOST = 10_000  # chords of a curve
_MOST_PARTS = 100_000  # elements of a drawing, those that are used counted as often as they are
# What the library would draw where it stands, although it only shows where something refers to it.
_ONLY_USED = ("symbol", "mask", "marker")
_HIDDEN = N_("parts that are hidden or on hidden layers")
_SWITCHES_OFF = re.compile(rb"""display\s*[:=]\s*["']?\s*none""")
_OTHERS = {"Text": N_("texts"), "Image": N_("pictures")}


def read(data: bytes, tick: Tick) -> Drawing:
    """What is shown in a drawing, whatever it is filled with; its lower left corner is the origin.

    ExchangeError where it is no sound one.
    """
    tick(0.0)
    try:
        root = ET.fromstring(data)
        _ask_bounded(root)
        stated, bottom = _placed(root)
        # The library knows how long a millimetre is to six digits only, and takes the place of a
        # whole drawing for that of one within another.
        for name in ("width", "height", "x", "y"):
            root.attrib.pop(name, None)
        _hide_what_is_only_used(root)
        shapes = _elements(root)
        hidden = 0
        if _SWITCHES_OFF.search(data):
            hidden = _shapes_of(_elements(root, parse_display_none=True)) - _shapes_of(shapes)
    except ExchangeError:
        raise
    except Exception as error:  # of a damaged drawing the library may raise anything
        text = tr("this is not a sound SVG drawing ({why})")
        raise ExchangeError(text.format(why=str(error)[:200] or type(error).__name__)) from error
    notes, lines = Notes(), []
    for _ in range(hidden):
        notes.leave(tr(_HIDDEN))
    for k, shape in enumerate(shapes):
        tick(k / len(shapes))
        kind = type(shape).__name__
        if kind in _OTHERS:
            notes.leave(tr(_OTHERS[kind]))
        if not isinstance(shape, svgelements.Shape):
            continue
        if shape.values.get("visibility") in ("hidden", "collapse"):
            notes.leave(tr(_HIDDEN))
            continue
        try:
            lines += [line for line in _lines(shape, bottom) if line is not None]
        except OverflowError:
            notes.leave(tr(TOO_LARGE))
        except Exception:  # of a damaged drawing the library may raise anything
            notes.leave(tr("parts that are damaged"))
    return Drawing(lines, stated, notes, S.new())


def _ask_bounded(root: ET.Element) -> None:
    """ExchangeError where elements that use others make far too many of them, or never end."""
    named = {element.get("id"): element for element in root.iter()}
    known: Dict[ET.Element, int] = {}

    def count(element: ET.Element) -> int:
        if element not in known:
            known[element] = _MOST_PARTS  # for itself among its own parts
            used = next((v for k, v in element.items() if k.endswith("href")), "")
            target = named.get(used[1:]) if used.startswith("#") else None
            parts = [*element, *([] if target is None else [target])]
            known[element] = 1 + sum(map(count, parts))
        return known[element]

    if count(root) > _MOST_PARTS:
        raise ExchangeError(tr("the drawing has too many parts"))


def _hide_what_is_only_used(root: ET.Element) -> None:
    """Put it among definitions, where it can be referred to and isn't drawn."""
    hidden = ET.Element(f"{str(root.tag).rpartition('svg')[0]}defs")
    for parent in list(root.iter()):
        for element in list(parent):
            if str(element.tag).rpartition("}")[2] in _ONLY_USED:
                parent.remove(element)
                hidden.append(element)
    root.insert(0, hidden)


def _elements(root: ET.Element, **options: bool) -> List[Any]:
    for element in root.iter():
        # In a style sheet without any text the library would look for rules all the same.
        element.text = element.text or " "
    return list(svgelements.SVG.parse(io.BytesIO(ET.tostring(root)), **options).elements())


def _shapes_of(elements: List[Any]) -> int:
    return sum(isinstance(element, svgelements.Shape) for element in elements)


def _placed(root: ET.Element) -> Tuple[Stated, float]:
    """The unit of a drawing's numbers, and the v at which it ends below."""
    box = [float(n) for n in re.split(r"[\s,]+", root.get("viewBox", "").strip()) if n]
    sizes = [_length(root.get(name, "")) for name in ("width", "height")]
    bottom = box[3] if len(box) == 4 else float(sizes[1][0] / _PIXEL) if sizes[1] else 0.0
    if len(box) != 4 or not (box[2] > 0 and box[3] > 0):
        return _pixels(_PIXEL), bottom
    scales = [
        (size[0] / Decimal(repr(side)), size[1])
        for size, side in zip(sizes, box[2:])
        if size is not None
    ]
    if not scales:
        return _pixels(_PIXEL), bottom
    scale, is_physical = min(scales)
    return (Stated("mm", scale) if is_physical else _pixels(scale)), bottom


def _pixels(metres: Decimal) -> Stated:
    """Pixels have a size, but nobody means it: it is never believed."""
    return Stated("px", metres, least=math.inf)


def _length(text: str) -> Optional[Tuple[Decimal, bool]]:
    """A length in metres, and whether its unit is a physical one; None if it is relative."""
    found = _LENGTH.match(text)
    try:
        number = Decimal(found[1]) if found else Decimal(0)
    except InvalidOperation:
        number = Decimal(0)
    unit = found[2] if found else ""
    if not number > 0 or unit not in ("", "px", *_METRES):
        return None
    return number * _METRES.get(unit, _PIXEL), unit in _METRES


def _lines(shape: Any, bottom: float) -> Iterator[Optional[Line]]:
    path = abs(svgelements.Path(shape))
    for row in path.as_subpaths():
        steps = [step for step in svgelements.Path(row) if type(step).__name__ != "Move"]
        if not steps:
            continue
        is_closed = type(steps[-1]).__name__ == "Close"
        if all(_is_exact(step) for step in steps):
            yield _line(_edges(steps, bottom, math.inf), is_closed)
        else:
            yield _line([], is_closed, steps, bottom)


def _line(
    edges: List[Edge],
    is_closed: bool,
    steps: Optional[List[Any]] = None,
    bottom: float = 0.0,
) -> Optional[Line]:
    if steps is None:
        return Line(edges, is_closed) if edges else None
    if not _edges(steps, bottom, math.inf):
        return None
    return Line([], is_closed, curve=lambda error: _edges(steps or [], bottom, error))


def _is_exact(step: Any) -> bool:
    """Whether a step of a path is straight, or an arc of a circle."""
    kind = type(step).__name__
    return kind in ("Line", "Close") or (
        kind == "Arc" and math.isclose(step.rx, step.ry, rel_tol=_ROUND)
    )


def _edges(steps: List[Any], bottom: float, error: float) -> List[Edge]:
    """The edges of a path's steps, curves within an error of them; none without length."""

    def point(p: Any) -> Point:
        u, v = float(p.x), bottom - float(p.y)
        if not max(abs(u), abs(v)) <= LARGEST:
            raise OverflowError
        return u, v

    edges: List[Edge] = []
    for step in steps:
        start, end = point(step.start), point(step.end)
        if type(step).__name__ == "Arc" and _is_exact(step):
            radius, centre = (step.rx + step.ry) / 2, point(step.center)
            # Angles turn the other way where v runs up.
            edges += _round(start, end, centre, radius, is_left=step.sweep < 0)
        elif _is_exact(step):
            edges.append(Edge(start, end))
        else:
            count = _chords(step, error)
            stops = [
                start,
                *(point(step.point(k / count)) for k in range(1, count)),
                end,
            ]
            edges += as_edges(stops, error) if math.isfinite(error) else _straight(stops)
    return [edge for edge in edges if edge.start != edge.end]


def _round(start: Point, end: Point, centre: Point, radius: float, is_left: bool) -> List[Edge]:
    """An arc of a circle, which may turn left; one of more than half the circle in two pieces.

    By its radius and ends: the library's angles are all rounding where an arc is short, which it
    may take for a full circle.
    """
    du, dv = end[0] - start[0], end[1] - start[1]
    chord = math.hypot(du, dv)
    if not chord:
        return []
    # How far to the left of the chord the centre lies; beyond it where the arc is a small one.
    left = (du * (centre[1] - start[1]) - dv * (centre[0] - start[0])) / chord
    beyond = left if is_left else -left
    largest = max(abs(c) for c in (*start, *end, radius))
    if beyond * beyond <= _HALF * radius * largest:
        beyond = 0.0
    if beyond < 0:
        out = math.copysign(radius / chord, left)
        top = centre[0] - out * dv, centre[1] + out * du
        ends = [(start, top), (top, end)]
        return [edge for pair in ends for edge in _round(*pair, centre, radius, is_left)]
    bulge = chord / 2 / (radius + beyond)
    return [Edge(start, end, bulge if is_left else -bulge)]


def _straight(points: List[Point]) -> List[Edge]:
    return [Edge(a, b) for a, b in zip(points, points[1:])]


def _chords(step: Any, error: float) -> int:
    """How many equal steps of its parameter keep a curve within half an error of its chords.

    An ellipse is off by no more than the circle of its longer radius would be; a Bézier curve of
    the degree d by d (d - 1) / 8 of the largest second difference of its control points, over the
    square of the number.
    """
    error /= 2
    if type(step).__name__ == "Arc":
        radius = max(step.rx, step.ry)
        most = 2 * math.acos(max(1 - error / radius, 0.0))
        return min(max(math.ceil(abs(step.sweep) / most), 4), _MOST)
    controls = [
        getattr(step, name)
        for name in ("start", "control1", "control2", "control", "end")
        if getattr(step, name, None) is not None
    ]
    degree = len(controls) - 1
    bend = max(
        math.hypot(a.x - 2 * b.x + c.x, a.y - 2 * b.y + c.y)
        for a, b, c in zip(controls, controls[1:], controls[2:])
    )
    count = math.ceil(math.sqrt(degree * (degree - 1) / 8 * bend / error))
    return min(max(count, 4), _MOST)
