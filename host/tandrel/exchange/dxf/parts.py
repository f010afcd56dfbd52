"""The parts of a drawing: those that are shown, and what lines they are."""

from __future__ import annotations

import math
from itertools import chain, islice
from typing import Any, Callable, Collection, Iterator, List, Optional, Sequence, Tuple

from ezdxf.math import BSpline

from tandrel.exchange import ExchangeError
from tandrel.exchange.curves import as_edges
from tandrel.exchange.lines import LARGEST, TOO_LARGE, Line
from tandrel.exchange.recognise import MOST_EDGES
from tandrel.exchange.tell import Notes
from tandrel.geometry.edges import Edge, Point, arc
from tandrel.geometry.loops import straight
from tandrel.gui.i18n import N_, tr
from tandrel.kinds.fields import MOST_CORNERS
from tandrel.progress import Tick

_MOST_PARTS = 100_000  # entities of a drawing, those of blocks counted as often as they are placed
_MOST_COPIES = 10_000  # in an array of blocks
_DEEPEST = 8  # blocks within each other
_FLAT = 1e-5  # how far the normal of a part may lean out of that of the drawing
_GENTLE = 1e-3  # the slope of a polyline in space, which makes it longer by half a millionth
_ROUND = 1e-4  # how far the ends of a whole ellipse (radians) or curve (of its size) may be apart
_SAME = 1e-9  # by how much the axes of a circle may differ, as a part of them
_STRAIGHT = 1e-12  # the bulge of a line, at most
_FEWEST = 4  # chords of a curve between two knots

# What is never cut, by what the user calls it.
_OTHERS = {
    N_("texts"): "TEXT MTEXT ATTDEF ATTRIB ARCALIGNEDTEXT RTEXT",
    N_("dimensions and leaders"): "DIMENSION ARC_DIMENSION LARGE_RADIAL_DIMENSION LEADER"
    " MULTILEADER MLEADER TOLERANCE",
    N_("hatches and filled areas"): "HATCH MPOLYGON SOLID TRACE",
    N_("points"): "POINT",
    N_("pictures"): "IMAGE WIPEOUT OLEFRAME OLE2FRAME PDFUNDERLAY DWFUNDERLAY DGNUNDERLAY",
    N_("surfaces and bodies in space"): "3DFACE 3DSOLID BODY REGION SURFACE MESH",
    N_("endless lines"): "RAY XLINE",
    N_("double lines"): "MLINE",
    N_("tables and views"): "ACAD_TABLE VIEWPORT",
}
NEVER_CUT = {kind: label for label, kinds in _OTHERS.items() for kind in kinds.split()}
_UNKNOWN = N_("parts of other kinds")
_ASKEW = N_("parts that stand askew in space")


class Unfit(ExchangeError):
    """A part that no sketch can hold, and why."""


def spread(
    parts: Collection[Any], hidden: Collection[str], notes: Notes, tick: Tick
) -> Iterator[Tuple[Any, str]]:
    """The parts that are shown and their layers, with those of blocks in place of the blocks.

    Parts on the hidden layers, which are given by their names, aren't shown. In a block the layer 0
    stands for the one that the block is placed on.
    """
    nested, above, count = [iter(parts)], ["0"], 0
    while nested:
        try:
            part = next(nested[-1], None)
        except Exception:  # of a damaged drawing the library may raise anything
            notes.leave(tr("blocks that are missing, damaged or endless"))
            part = None
        if part is None:
            nested.pop()
            above.pop()
            continue
        tick(min(1.0, count / len(parts)))
        count += 1
        if count > _MOST_PARTS:
            raise ExchangeError(tr("the drawing has too many parts"))
        layer, is_hidden = _standing(part)
        layer = above[-1] if layer == "0" else layer
        if is_hidden or layer.lower() in hidden:
            notes.leave(tr("parts that are hidden or on hidden layers"), _place(part))
        elif part.dxftype() != "INSERT":
            yield part, layer
        elif len(nested) <= _DEEPEST:
            nested.append(_inside(part))
            above.append(layer)
        else:
            notes.leave(tr("blocks too deep within each other"))


def _standing(part: Any) -> Tuple[str, bool]:
    """The layer of a part, and whether the part itself is hidden."""
    # Of what the library doesn't know it doesn't know the layer.
    dxf = part.dxf
    layer = dxf.get("layer") if dxf.hasattr("layer") else None
    return str(layer or ""), bool(dxf.hasattr("invisible") and dxf.get("invisible"))


def _inside(block: Any) -> Iterator[Any]:
    """The parts of a block where it is placed, or of an array of blocks."""
    if block.mcount > _MOST_COPIES:
        raise ValueError
    if block.block() is not None and block.block().block.is_xref:  # in another file
        raise ValueError
    for copy in block.multi_insert() if block.mcount > 1 else [block]:
        yield from copy.virtual_entities()


def lines_of(part: Any, layer: str, notes: Notes) -> List[Line]:
    """The line that a part is; none, and a note, where it is none."""
    kind = part.dxftype()
    if kind not in _READERS:
        notes.leave(tr(NEVER_CUT.get(kind, _UNKNOWN)), _place(part))
        return []
    reader, needed = _READERS[kind]
    try:
        # For what is missing the library has values of its own.
        if needed and not all(map(part.dxf.hasattr, needed)):
            raise ValueError
        line = reader(part)
    except Unfit as error:
        notes.leave(str(error), _place(part))
    except Exception:  # of a damaged drawing the library may raise anything
        notes.leave(tr("parts that are damaged"), _place(part))
    else:
        if line.edges or line.curve:
            pen = part.dxf.get("color"), part.dxf.get("linetype")
            return [line._replace(layer=layer, pen=pen)]
    return []


def _place(part: Any) -> Optional[Point]:
    """Where to look for a part, if it says so."""
    for name in ("insert", "center", "start", "location", "defpoint", "elevation"):
        try:
            at = part.dxf.get(name)
            return _point(at[0], at[1])
        except Exception:  # other kinds, and damaged ones, have none
            continue
    try:
        at = next(iter(part.vertices_in_wcs() if hasattr(part, "vertices_in_wcs") else ()))
        return _point(at[0], at[1])
    except Exception:
        return None


# Readers: each takes a part of its kind and answers with the line that it is.


def _line(part: Any) -> Line:
    # The coordinates of lines, unlike those of flat shapes, don't depend on where they face.
    start, end = part.dxf.start, part.dxf.end
    return Line([Edge(_point(start.x, start.y), _point(end.x, end.y))], False)


def _circle(part: Any) -> Line:
    centre = _point(part.dxf.center.x, part.dxf.center.y, _is_mirrored(part))
    return Line([arc(centre, _number(part.dxf.radius), 0.0, 360.0)], True)


def _arc(part: Any) -> Line:
    first, last = _number(part.dxf.start_angle), _number(part.dxf.end_angle)
    sweep = (last - first) % 360.0
    if sweep == 0:
        return _circle(part)
    mirrored = _is_mirrored(part)
    centre = _point(part.dxf.center.x, part.dxf.center.y, mirrored)
    if mirrored:
        first, sweep = 180.0 - first, -sweep
    # The bulge of an almost full circle would be all rounding.
    pieces = 1 if abs(sweep) < 181 else 2
    radius = _number(part.dxf.radius)
    return Line(
        [arc(centre, radius, first + sweep * k / pieces, sweep / pieces) for k in range(pieces)],
        False,
    )


def _ellipse(part: Any) -> Line:
    around = abs(part.dxf.end_param - part.dxf.start_param)
    is_whole = abs(around - 2 * math.pi) <= _ROUND
    if is_whole:  # from wherever it begins
        part.dxf.start_param, part.dxf.end_param = 0.0, 2 * math.pi
    _is_mirrored(part)  # it makes no difference, but the ellipse may stand askew
    if is_whole and abs(part.dxf.ratio - 1) <= _SAME:
        centre = _point(part.dxf.center.x, part.dxf.center.y)
        return Line([arc(centre, _number(part.dxf.major_axis.magnitude), 0.0, 360.0)], True)
    _number(part.dxf.major_axis.magnitude)
    ellipse = part.construction_tool()
    return _curve(lambda error: ellipse.flattening(error, 2 * _FEWEST), is_whole)


def _spline(part: Any) -> Line:
    # Curves of fit points alone are worked out by the library, which leaves them open.
    fit = part.fit_points
    if part.closed and len(fit) and not len(part.control_points):
        # A second point where there is one already would bend the curve.
        if math.dist(fit[0], fit[-1]) > _ROUND * max(math.dist(fit[0], point) for point in fit):
            fit.append(fit[0])
    spline = part.construction_tool()
    points = [_point(p.x, p.y) for p in spline.control_points]
    if spline.degree == 1:
        return Line([Edge(a, b) for a, b in zip(points, points[1:])], False)
    # Those that the curve runs between: of one that isn't clamped, not the first and last few.
    knots = sorted(set(list(spline.knots())[spline.degree : spline.count + 1]))
    if len(knots) < 2 or spline.count > MOST_CORNERS:
        raise ValueError
    return _curve(lambda error: _divided(spline, knots, error), False)


def _divided(spline: BSpline, knots: Sequence[float], error: float) -> Iterator[Any]:
    """Points of a spline, within an error of which the middles and quarters of its chords are.

    A curve that turns from one side to the other in the middle of a chord lies on that there, and
    farthest from it at about the quarters. The library's own division begins elsewhere, and where
    hangs on its release.
    """

    def is_off(point: Any, start: Any, end: Any) -> bool:
        chord, way = end - start, point - start
        length = math.hypot(chord.x, chord.y)
        if length <= error:
            return math.hypot(way.x, way.y) > error
        return abs(chord.x * way.y - chord.y * way.x) > error * length

    steps = [
        first + (last - first) * k / _FEWEST
        for first, last in zip(knots, knots[1:])
        for k in range(1, _FEWEST + 1)
    ]
    t, start = knots[0], spline.point(knots[0])
    yield start
    ends = [(end, spline.point(end)) for end in reversed(steps)]
    while ends:
        t_end, end = ends[-1]
        half, quarter = (t + t_end) / 2, (t_end - t) / 4
        middle = spline.point(half)
        between = chain([middle], map(spline.point, (t + quarter, half + quarter)))
        if t < half < t_end and any(is_off(point, start, end) for point in between):
            ends.append((half, middle))
        else:
            yield end
            t, start = ends.pop()


def _curve(divided: Callable[[float], Any], is_closed: bool) -> Line:
    def edges(error: float) -> List[Edge]:
        # The library estimates the error, which may be more.
        points = [_point(p.x, p.y) for p in islice(divided(error / 2), MOST_EDGES + 1)]
        # Of a curve that runs to infinity and back there is no end.
        if len(points) > MOST_EDGES:
            text = tr("an outline can have {most} corners at most")
            raise Unfit(text.format(most=MOST_CORNERS))
        if math.isfinite(error):
            return as_edges(points, error)
        return [Edge(a, b) for a, b in zip(points, points[1:])]

    if not edges(math.inf):
        raise ValueError
    return Line([], is_closed, curve=edges)


def _light_polyline(part: Any) -> Line:
    return _polyline(part, part.get_points("xyb"), _is_mirrored(part))


def _heavy_polyline(part: Any) -> Line:
    # The handles that a smooth curve was drawn by are no points of it.
    corners = [corner.dxf for corner in part.vertices if not corner.dxf.flags & 16]
    if not part.is_2d_polyline:
        if not part.is_3d_polyline or not _is_flat([corner.location for corner in corners]):
            raise Unfit(tr("curves and nets in space"))
    points = [(c.location.x, c.location.y, c.get("bulge", 0.0)) for c in corners]
    return _polyline(part, points, part.is_2d_polyline and _is_mirrored(part))


def _is_flat(points: Sequence[Any]) -> bool:
    width, depth, height = (max(row) - min(row) for row in zip(*(p.xyz for p in points)))
    return height <= _GENTLE * max(width, depth)


def _polyline(part: Any, vertices: Sequence[Tuple[float, float, float]], mirrored: bool) -> Line:
    points = [_point(u, v, mirrored) for u, v, _ in vertices]
    bulges = [_number(-bulge if mirrored else bulge) for *_, bulge in vertices]
    # Of what is straight but for less than any rounding there is no centre.
    bulges = [bulge if abs(bulge) > _STRAIGHT else 0.0 for bulge in bulges]
    edges = [side._replace(bulge=bulge) for side, bulge in zip(straight(points), bulges)]
    if not part.is_closed:
        del edges[-1:]
    return Line(edges, bool(part.is_closed))


def _is_mirrored(part: Any) -> bool:
    """Whether a flat part is drawn from below; Unfit if it is drawn from anywhere but above."""
    u, v, w = part.dxf.get("extrusion", (0.0, 0.0, 1.0))
    if not (w and math.hypot(u, v) <= _FLAT * abs(w)):
        raise Unfit(tr(_ASKEW))
    return bool(w < 0)


def _point(u: float, v: float, mirrored: bool = False) -> Point:
    return _number(-u if mirrored else u), _number(v)


def _number(number: float) -> float:
    if not abs(number) <= LARGEST:
        raise Unfit(tr(TOO_LARGE))
    return float(number)


# By kind: the reader, and what a part must say of itself.
_READERS: dict[str, Tuple[Callable[[Any], Line], Tuple[str, ...]]] = {
    "LINE": (_line, ("start", "end")),
    "CIRCLE": (_circle, ("center", "radius")),
    "ARC": (_arc, ("center", "radius", "start_angle", "end_angle")),
    "ELLIPSE": (_ellipse, ("center", "major_axis", "ratio")),
    "SPLINE": (_spline, ()),
    "LWPOLYLINE": (_light_polyline, ()),
    "POLYLINE": (_heavy_polyline, ()),
}
READABLE = {*_READERS, "INSERT"}
