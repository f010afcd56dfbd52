"""DXF drawings: written with a contour for each shape, and read for the closed contours in them.

A drawing is flat: the sketch plane and its offset are kept in custom properties of the file, which
drawing programs show and don't use. Shapes that cut material away lie on a layer of their own.
"""

from __future__ import annotations

import codecs
import io
import logging
import math
from collections import Counter
from contextlib import contextmanager
from decimal import Decimal
from typing import Any, Callable, Collection, Iterator, Sequence

import ezdxf
from ezdxf.document import Drawing
from ezdxf.enums import InsertUnits
from ezdxf.lldxf.tagger import binary_tags_loader

from tandrel import sketch as S
from tandrel._outlines import LARGEST, MOST_CORNERS, Point, polar
from tandrel.contours import MOST_EDGES, Edge, Entity, box, contour, recognised
from tandrel.exchange import ExchangeError, UnitsMissing
from tandrel.exchange.chains import Chains
from tandrel.gui.i18n import N_, tr
from tandrel.progress import Tick
from tandrel.storage import Document
from tandrel.units import SYSTEMS, units

CONTOURS, HOLES = "CONTOUR", "HOLES"
_COLOURS = {CONTOURS: 7, HOLES: 5}  # the drawing program's foreground; blue
_PLANE, _OFFSET = "Sketch plane", "Offset along the normal (m)"
_CODES = {
    "mm": InsertUnits.Millimeters,
    "cm": InsertUnits.Centimeters,
    "m": InsertUnits.Meters,
    "in": InsertUnits.Inches,
}
_METRES: dict[int, Decimal] = {
    **{code: SYSTEMS[name].metres for name, code in _CODES.items()},
    InsertUnits.Feet: Decimal("0.3048"),
    InsertUnits.Yards: Decimal("0.9144"),
    InsertUnits.Mils: Decimal("0.0000254"),
    InsertUnits.Microns: Decimal("0.000001"),
    InsertUnits.Decimeters: Decimal("0.1"),
    InsertUnits.Kilometers: Decimal(1000),
}
_MOST_PARTS = 100_000  # entities of a drawing, those of blocks counted as often as they are placed
_MOST_COPIES = 10_000  # in an array of blocks
_DEEPEST = 8  # blocks within each other
_MOST_NOTES = 12
_LONGEST_KIND = 40  # characters
_LINES_BETWEEN_TICKS = 4096
_FLAT = 1e-9  # how far the normal of a part may lean out of that of the drawing
_NO_NUMBERS = N_("numbers that are too large, or none")
_BINARY = b" Binary DXF\r\n\x1a\x00"

# What the library finds odd in a drawing is nothing that the user could act on.
logging.getLogger("ezdxf").addHandler(logging.NullHandler())


def written(document: Document, unit: str, tick: Tick) -> bytes:
    """A drawing with the contours of a sketch, which S.check must have passed.

    Circles are circles, everything else is a closed polyline with exact arcs. The same sketch
    always makes the same bytes.
    """
    sketch = document.sketch
    with _reproducible():
        drawing: Any = ezdxf.new("R2010", units=_CODES[unit])
        for name, colour in _COLOURS.items():
            drawing.layers.add(name, color=colour)
        properties = drawing.header.custom_vars
        properties.append(_PLANE, sketch.get("plane", S.PLANES[0]))
        properties.append(_OFFSET, repr(float(sketch.get("offset") or 0.0)))
        space = drawing.modelspace()
        metres = SYSTEMS[unit].metres

        def shown(length: float) -> float:
            return float(Decimal(repr(float(length))) / metres)

        entities, boxes = sketch["entities"], []
        for k, (entity, depth) in enumerate(zip(entities, S.depths(sketch))):
            tick(k / len(entities))
            edges = contour(entity)
            boxes.append(box(edges))
            where = {"layer": HOLES if depth % 2 else CONTOURS}
            if entity["type"] == "circle":
                centre = shown(entity["xc"]), shown(entity["yc"])
                space.add_circle(centre, shown(entity["r"]), dxfattribs=where)
            else:
                vertices = [(*map(shown, edge.start), edge.bulge) for edge in edges]
                space.add_lwpolyline(vertices, format="xyb", close=True, dxfattribs=where)
        lefts, lows, rights, highs = zip(*boxes)
        left, low, right, high = map(shown, (min(lefts), min(lows), max(rights), max(highs)))
        space.reset_extents((left, low, 0), (right, high, 0))
        height = max(high - low, right - left) * 1.1
        drawing.set_modelspace_vport(height, ((left + right) / 2, (low + high) / 2))
        # The library would name the classes of the drawing's parts in the order of a set.
        for kind in sorted(drawing.entitydb.dxf_types_in_use()):
            drawing.classes.add_class(kind)
        text = io.StringIO()
        drawing.write(text)
    return bytes(drawing.encode(text.getvalue()))


@contextmanager
def _reproducible() -> Iterator[None]:
    """No dates and no identifiers made up at random in the drawings that are made meanwhile."""
    before = ezdxf.options.write_fixed_meta_data_for_testing
    ezdxf.options.write_fixed_meta_data_for_testing = True
    try:
        yield
    finally:
        ezdxf.options.write_fixed_meta_data_for_testing = before


def read(data: bytes, unit: str | None, tick: Tick) -> tuple[dict[str, Any], list[str]]:
    """The sketch in a drawing, and notes for the user on what is not as it was there.

    Read are closed polylines, circles, and lines and arcs that close where they meet; everything
    that is placed as a block too. ExchangeError where there is nothing of the kind.
    """
    drawing = _Drawing(data, lambda done: tick(done / 2))
    harvest = _Harvest(_metres(drawing.unit, unit), drawing.hidden)
    for part in harvest.spread(drawing.parts, lambda done: tick(0.5 + 0.4 * done)):
        harvest.take(part)
    harvest.close(lambda done: tick(0.9 + 0.1 * done))
    if not harvest.entities:
        text = tr("there is no closed contour of lines and arcs in this drawing")
        raise ExchangeError("; ".join([text, *harvest.notes()]))
    return {**_placing(drawing.properties), "entities": harvest.entities}, harvest.notes()


class _Drawing:
    """What is of use in a drawing; ExchangeError where the library can't make sense of it."""

    def __init__(self, data: bytes, tick: Tick) -> None:
        stream = _Watched(data.removeprefix(codecs.BOM_UTF8), tick)
        try:
            if _BINARY in data[:22]:
                drawing = Drawing.load(binary_tags_loader(data))
            else:
                drawing = ezdxf.read(stream)  # type: ignore[arg-type]
            self.parts: list[Any] = list(drawing.modelspace())
            self.hidden = {
                layer.dxf.name.lower()
                for layer in drawing.layers
                if layer.is_off() or layer.is_frozen()
            }
            self.properties = dict(drawing.header.custom_vars.properties)
            # A drawing without a header gets one from the library, with a unit that nobody chose.
            self.unit = drawing.units if b"$INSUNITS" in data else 0
        except Exception as error:
            # Of a damaged drawing the library may raise anything. Half of one is of no use.
            if stream.stopped is not None:
                raise stream.stopped from None
            text = tr("this is not a sound DXF drawing ({why})")
            why = str(error)[:200] or type(error).__name__
            raise ExchangeError(text.format(why=why)) from error


class _Watched:
    """The lines of a file, ticking as they are read."""

    def __init__(self, data: bytes, tick: Tick) -> None:
        # Only keywords and numbers matter, which are ASCII in whatever code page texts are.
        self._lines = io.StringIO(data.decode("latin-1"), newline=None)
        self._total = 1 + data.count(b"\n")
        self._count = 0
        self._tick = tick
        self.stopped: Exception | None = None  # what the tick raised

    def readline(self) -> str:
        if not self._count % _LINES_BETWEEN_TICKS:
            try:
                self._tick(min(1.0, self._count / self._total))
            except Exception as error:
                self.stopped = error
                raise
        self._count += 1
        return self._lines.readline()


def _metres(code: int, unit: str | None) -> Decimal:
    """The length of a drawing's unit, given by its code, or where there is none, by its name."""
    if code == 0:
        if unit is None:
            raise UnitsMissing(tr("the drawing does not say what unit its lengths are in"))
        return SYSTEMS[unit].metres
    if code not in _METRES:
        name = InsertUnits(code).name if code in list(InsertUnits) else str(code)
        text = tr("the drawing's unit of length, {unit}, is not supported")
        raise ExchangeError(text.format(unit=name))
    return _METRES[code]


def _placing(properties: dict[str, str]) -> dict[str, Any]:
    """Plane and offset as this application notes them; the usual ones if another made the file."""
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


class _Harvest:
    """What the parts of a drawing give: entities, open lines still to be joined, and the rest."""

    def __init__(self, metres: Decimal, hidden: set[str]) -> None:
        self.entities: list[Entity] = []
        self._metres = metres
        self._hidden = hidden  # names of layers
        self._chains = Chains()
        self._left: Counter[str] = Counter()
        self._errors: list[float] = []
        self._parts = 0

    def spread(self, parts: Collection[Any], tick: Tick) -> Iterator[Any]:
        """The parts that are shown, with those of blocks in place of the blocks."""
        nested = [iter(parts)]
        while nested:
            try:
                part = next(nested[-1], None)
            except Exception:  # of a damaged drawing the library may raise anything
                self.leave(tr("blocks that are missing, damaged or endless"))
                part = None
            if part is None:
                nested.pop()
                continue
            tick(min(1.0, self._parts / len(parts)))
            self._parts += 1
            if self._parts > _MOST_PARTS:
                raise ExchangeError(tr("the drawing has too many parts"))
            if self._is_hidden(part):
                self.leave(tr("parts that are not shown"))
            elif part.dxftype() != "INSERT":
                yield part
            elif len(nested) <= _DEEPEST:
                nested.append(_inside(part))
            else:
                self.leave(tr("blocks too deep within each other"))

    def _is_hidden(self, part: Any) -> bool:
        # Of what the library doesn't know it doesn't know the layer.
        layer, invisible = (
            part.dxf.get(name) if part.dxf.hasattr(name) else None
            for name in ("layer", "invisible")
        )
        return bool(invisible) or str(layer).lower() in self._hidden

    def take(self, part: Any) -> None:
        """Make of a part what can be made of it."""
        kind = part.dxftype()
        if kind not in _READERS:
            self.leave(kind[:_LONGEST_KIND])
            return
        reader, needed = _READERS[kind]
        try:
            # For what is missing the library has values of its own.
            if not all(map(part.dxf.hasattr, needed)):
                raise ValueError
            reader(part, self)
        except _Unfit as error:
            self.leave(str(error))
        except Exception:  # of a damaged drawing the library may raise anything
            self.leave(tr("{kind}, damaged").format(kind=kind))

    def add_circle(self, centre: Point, radius: float) -> None:
        entity = {"type": "circle", "xc": centre[0], "yc": centre[1], "r": radius}
        try:
            S.outline(entity)
        except ValueError as why:
            self.leave(str(why))
        else:
            self.entities.append(entity)

    def add(self, edges: list[Edge], is_closed: bool) -> None:
        if not is_closed:
            self._chains.add(edges)
            return
        try:
            entity, error = recognised(edges)
        except ValueError as why:
            self.leave(str(why))
            return
        self.entities.append(entity)
        if error:
            self._errors.append(error)

    def close(self, tick: Tick) -> None:
        """Join the lines that are still open."""
        closed, open_lines = self._chains.closed()
        for k, edges in enumerate(closed):
            tick(k / len(closed))
            self.add(edges, True)
        self._left[tr("lines and arcs that do not close")] += open_lines

    def leave(self, what: str) -> None:
        self._left[what] += 1

    def notes(self) -> list[str]:
        """What the user should know of, the most important first."""
        found = []
        if self._errors:
            text = tr("Approximated ({n}): contours with arcs, now polygons within {error}")
            error = units().fmt(max(self._errors), "length")
            found.append(text.format(n=len(self._errors), error=error))
        text = tr("Left out ({n}): {what}")
        found += [text.format(n=n, what=what) for what, n in self._left.most_common() if n]
        further = len(found) - _MOST_NOTES
        if further > 0:
            found[_MOST_NOTES:] = [tr("Further notes: {n}").format(n=further)]
        return found

    def point(self, u: float, v: float, mirrored: bool = False) -> Point:
        """A point of the drawing in metres."""
        return self.length(-u if mirrored else u), self.length(v)

    def length(self, number: float) -> float:
        """A number of the drawing in metres; _Unfit if no sketch can hold it."""
        # In decimal arithmetic 12.3 mm are 0.0123 m to the last digit.
        length = float(Decimal(repr(float(number))) * self._metres)
        if not abs(length) <= LARGEST:
            raise _Unfit(tr(_NO_NUMBERS))
        return length


class _Unfit(Exception):
    """A part that no sketch can hold, and why."""


def _inside(block: Any) -> Iterator[Any]:
    """The parts of a block where it is placed, or of an array of blocks."""
    if block.mcount > _MOST_COPIES:
        raise ValueError
    for copy in block.multi_insert() if block.mcount > 1 else [block]:
        yield from copy.virtual_entities()


# Readers: each takes a part of its kind and adds what it is to a harvest.


def _line(part: Any, harvest: _Harvest) -> None:
    # The coordinates of lines, unlike those of flat shapes, don't depend on where they face.
    start, end = part.dxf.start, part.dxf.end
    harvest.add([Edge(harvest.point(start.x, start.y), harvest.point(end.x, end.y))], False)


def _circle(part: Any, harvest: _Harvest) -> None:
    centre = harvest.point(part.dxf.center.x, part.dxf.center.y, _is_mirrored(part))
    harvest.add_circle(centre, harvest.length(part.dxf.radius))


def _arc(part: Any, harvest: _Harvest) -> None:
    first, last = float(part.dxf.start_angle), float(part.dxf.end_angle)
    if not abs(first) + abs(last) <= LARGEST:
        raise _Unfit(tr(_NO_NUMBERS))
    sweep = (last - first) % 360.0
    if sweep == 0:
        _circle(part, harvest)
        return
    mirrored = _is_mirrored(part)
    centre = harvest.point(part.dxf.center.x, part.dxf.center.y, mirrored)
    radius = harvest.length(part.dxf.radius)
    if mirrored:
        first, sweep = 180.0 - first, -sweep
    # The bulge of an almost full circle would be all rounding.
    pieces = 1 if abs(sweep) < 181 else 2
    bulge = math.tan(math.radians(sweep) / 4 / pieces)
    ends = [polar(centre, radius, first + sweep * k / pieces) for k in range(pieces + 1)]
    harvest.add([Edge(one, two, bulge) for one, two in zip(ends, ends[1:])], False)


def _ellipse(part: Any, harvest: _Harvest) -> None:
    around = abs(part.dxf.end_param - part.dxf.start_param)
    if abs(part.dxf.ratio - 1) > _FLAT or abs(around - 2 * math.pi) > _FLAT:
        raise _Unfit(part.dxftype())
    _is_mirrored(part)  # it makes no difference, but the circle may stand askew
    centre = harvest.point(part.dxf.center.x, part.dxf.center.y)
    harvest.add_circle(centre, harvest.length(part.dxf.major_axis.magnitude))


def _light_polyline(part: Any, harvest: _Harvest) -> None:
    _polyline(part, part.get_points("xyb"), harvest)


def _heavy_polyline(part: Any, harvest: _Harvest) -> None:
    if not part.is_2d_polyline:
        raise _Unfit(tr("{kind} in space").format(kind=part.dxftype()))
    # The handles that a smooth curve was drawn by are no points of it.
    corners = [corner.dxf for corner in part.vertices if not corner.dxf.flags & 16]
    points = [(c.location.x, c.location.y, c.get("bulge", 0.0)) for c in corners]
    _polyline(part, points, harvest)


def _polyline(part: Any, vertices: Sequence[tuple[float, float, float]], harvest: _Harvest) -> None:
    if len(vertices) > MOST_EDGES:
        text = tr("an outline can have {most} corners at most")
        raise _Unfit(text.format(most=MOST_CORNERS))
    mirrored = _is_mirrored(part)
    points = [harvest.point(u, v, mirrored) for u, v, _ in vertices]
    bulges = [-bulge if mirrored else bulge for *_, bulge in vertices]
    if not all(abs(bulge) <= LARGEST for bulge in bulges):
        raise _Unfit(tr(_NO_NUMBERS))
    edges = [Edge(*edge) for edge in zip(points, [*points[1:], *points[:1]], bulges)]
    is_closed = bool(part.is_closed)
    if not is_closed:
        del edges[-1:]
    if edges:
        harvest.add(edges, is_closed)


def _is_mirrored(part: Any) -> bool:
    """Whether a flat part is drawn from below; _Unfit if it is drawn from anywhere but above."""
    u, v, w = part.dxf.get("extrusion", (0.0, 0.0, 1.0))
    if not (w and math.hypot(u, v) <= _FLAT * abs(w)):
        raise _Unfit(tr("{kind} that stands askew in space").format(kind=part.dxftype()))
    return bool(w < 0)


# By kind: the reader, and what a part must say of itself.
_READERS: dict[str, tuple[Callable[[Any, _Harvest], None], tuple[str, ...]]] = {
    "LINE": (_line, ("start", "end")),
    "CIRCLE": (_circle, ("center", "radius")),
    "ARC": (_arc, ("center", "radius", "start_angle", "end_angle")),
    "ELLIPSE": (_ellipse, ("center", "major_axis", "ratio")),
    "LWPOLYLINE": (_light_polyline, ()),
    "POLYLINE": (_heavy_polyline, ()),
}
