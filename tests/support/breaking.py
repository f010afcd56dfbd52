"""Drawings of sound parts, broken in the ways in which drawings of the world are."""

import io
import math
import random

import ezdxf
from ezdxf.math import BSpline, ConstructionArc
from tandrel import sketch as S
from tandrel.exchange import dxf
from tandrel.geometry.edges import Edge, arc
from tandrel.geometry.loops import box, enclosed, joined, straight
from tandrel.progress import no_tick
from tandrel.storage import Document

from .drawings import sketch_in

VERSIONS = "R12", "R2000", "R2004", "R2007", "R2010", "R2013", "R2018"
HALF = 1.0


class Part:
    """What is drawn: contours of edges in millimetres, an outline and then its holes."""

    def __init__(self, rng):
        width, height = rng.uniform(60, 300), rng.uniform(60, 200)
        outlines = _rectangle, _cut, _rounded, _half_round
        self.contours = [rng.choice(outlines)(rng, width, height)]
        for k in range(rng.randint(1, 6)):
            u, v = 14 + 9 * (k % 4), 14 + 12 * (k // 4)
            self.contours.append(rng.choice((_circle, _slot, _square))(rng, u, v))

    @property
    def areas(self):
        """In square metres."""
        return sorted(abs(enclosed(contour)) * 1e-6 for contour in self.contours)

    @property
    def length(self):
        """Of all contours, in metres."""
        return sum(edge.length for contour in self.contours for edge in contour) * 1e-3


def _rectangle(rng, width, height):
    return straight([(0, 0), (width, 0), (width, height), (0, height)])


def _cut(rng, width, height):
    """Chamfered, so that no type of shape but the outline fits."""
    c = rng.uniform(1, 5)
    return straight([(c, 0), (width, 0), (width, height), (3 * c, height), (0, height - c), (0, c)])


def _rounded(rng, width, height):
    """With corners of two radii."""
    r, s = rng.uniform(1, 3), rng.uniform(4, 6)
    return joined(
        [
            Edge((r, 0), (width - s, 0)),
            arc((width - s, s), s, -90.0, 90.0),
            Edge((width, s), (width, height)),
            Edge((width, height), (0, height)),
            Edge((0, height), (0, r)),
            arc((r, r), r, 180.0, 90.0),
        ]
    )


def _half_round(rng, width, height):
    return [
        Edge((0, 0), (width, 0)),
        Edge((width, 0), (width, height), HALF),
        Edge((width, height), (0, height)),
        Edge((0, height), (0, 0)),
    ]


def _circle(rng, u, v):
    r = rng.uniform(0.5, 3)
    return [Edge((u - r, v), (u + r, v), HALF), Edge((u + r, v), (u - r, v), HALF)]


def _slot(rng, u, v):
    r, a = rng.uniform(0.5, 2), rng.uniform(1, 2)
    return [
        Edge((u - a, v - r), (u + a, v - r)),
        Edge((u + a, v - r), (u + a, v + r), HALF),
        Edge((u + a, v + r), (u - a, v + r)),
        Edge((u - a, v + r), (u - a, v - r), HALF),
    ]


def _square(rng, u, v):
    a = rng.uniform(1, 3)
    return straight([(u - a, v - a), (u + a, v - a), (u + a, v + a), (u - a, v + a)])


# Ways to break a drawing: each changes the list of what is to be drawn, in which an item is an
# edge, a contour that stays a closed polyline, or a function that draws something into a space.


def zero_lengths(rng, part, items):
    edges = [item for item in items if isinstance(item, Edge)]
    items += [Edge(edge.start, edge.start) for edge in rng.sample(edges, min(3, len(edges)))]


def doubled_lines(rng, part, items):
    edges = [item for item in items if isinstance(item, Edge)]
    for edge in rng.sample(edges, min(5, len(edges))):
        items.append(rng.choice((edge, edge.reversed())))


def doubled_shapes(rng, part, items):
    items += [list(rng.choice(part.contours)), list(rng.choice(part.contours))]


def gaps_of(micrometres):
    def gaps(rng, part, items):
        for k, item in enumerate(items):
            if isinstance(item, Edge) and item.start != item.end and rng.random() < 0.5:
                angle, off = rng.uniform(0, 7), rng.uniform(0.3, 0.45) * micrometres * 1e-3
                u, v = item.start
                start = u + off * math.cos(angle), v + off * math.sin(angle)
                items[k] = item._replace(start=start)

    gaps.__name__ = f"gaps_{micrometres}"
    return gaps


def stray_lines(rng, part, items):
    """From corners of the outline outwards; closed polylines have them too."""
    for edge in rng.sample(part.contours[0], 2):
        u, v = edge.start
        items.append(Edge((u, v), (u - 7 - u / 50, v - 3)))


def bend_lines(rng, part, items):
    """Across the part, from one edge of the outline to another: they bound nothing."""
    left, low, right, high = box(part.contours[0])
    items.append(Edge((left - 1, high * 0.97), (right + 200, high * 0.97)))


def hidden_layers(rng, part, items):
    def draw(drawing, space):
        drawing.layers.add("Off").off()
        drawing.layers.add("Cold").freeze()
        for layer in ("OFF", "cold"):
            space.add_circle((500, 0), 40, dxfattribs={"layer": layer})

    items.append(draw)


def annotations(rng, part, items):
    def draw(drawing, space):
        space.add_text("Ø 5", dxfattribs={"insert": (3, 3)})
        space.add_point((1, 1))
        if drawing.dxfversion > "AC1009":
            space.add_mtext("a note")
            space.add_hatch()

    items.append(draw)


def degree_one(rng, part, items):
    """Lines as splines, which are straight."""
    for k, item in enumerate(items):
        if isinstance(item, Edge) and not item.bulge and item.start != item.end:
            items[k] = _spline([item.start, item.end], 1)


def nurbs(rng, part, items):
    """Arcs as rational splines, which are exactly those arcs."""
    for k, item in enumerate(items):
        if isinstance(item, Edge) and item.bulge:
            start, end = (item.start, item.end) if item.bulge > 0 else (item.end, item.start)
            bent = ConstructionArc.from_2p_angle(start, end, math.degrees(abs(item.sweep)))
            items[k] = _nurbs(BSpline.from_arc(bent))


def elliptic(rng, part, items):
    """Arcs as arcs of ellipses whose axes are equal."""
    for k, item in enumerate(items):
        if isinstance(item, Edge) and item.bulge:
            items[k] = _ellipse(item if item.bulge > 0 else item.reversed())


def _spline(points, degree):
    def draw(drawing, space):
        if drawing.dxfversion == "AC1009":
            space.add_line(*points)
        else:
            space.add_open_spline(points, degree)

    return draw


def _nurbs(spline):
    def draw(drawing, space):
        space.add_spline().apply_construction_tool(spline)

    return draw


def _ellipse(edge):
    (u, v), (x, y) = edge.centre, edge.start

    def draw(drawing, space):
        space.add_ellipse((u, v), (x - u, y - v), 1.0, 0.0, edge.sweep)

    return draw


SOUND = [zero_lengths, doubled_lines, doubled_shapes, stray_lines, bend_lines, hidden_layers]
SOUND += [annotations, degree_one, nurbs, elliptic]
GAPS = [gaps_of(1), gaps_of(10), gaps_of(100)]
BREAKS = [*SOUND, *GAPS]
_NEED_SPLINES = {nurbs, elliptic}


def broken(seed, breaks):
    """A part and the bytes of a drawing of it that is broken in these ways."""
    rng = random.Random(seed)
    part = Part(rng)
    items = []
    for contour in part.contours:
        items += [contour] if rng.random() < 0.25 else contour
    if not any(isinstance(item, Edge) for item in items):
        items = list(part.contours[0])
        items += part.contours[1:]
    # Curves take the place of edges, so whatever else is done to these comes first.
    for way in sorted(breaks, key=lambda way: way in (degree_one, nurbs, elliptic)):
        way(rng, part, items)
    rng.shuffle(items)
    versions = VERSIONS[1:] if _NEED_SPLINES & set(breaks) else VERSIONS
    return part, _drawn(items, versions[seed % len(versions)])


def _drawn(items, version):
    drawing = ezdxf.new(version, units=4)
    space = drawing.modelspace()
    for item in items:
        if callable(item):
            item(drawing, space)
        elif not isinstance(item, Edge):
            vertices = [(*edge.start, edge.bulge) for edge in item]
            if version == "R12":
                space.add_polyline2d(vertices, format="xyb", close=True)
            else:
                space.add_lwpolyline(vertices, format="xyb", close=True)
        elif item.bulge:
            edge = item if item.bulge > 0 else item.reversed()
            (u, v), start, end = edge.centre, edge.start, edge.end
            angles = [math.degrees(math.atan2(y - v, x - u)) for x, y in (start, end)]
            space.add_arc((u, v), edge.radius, *angles)
        else:
            space.add_line(item.start, item.end)
    text = io.StringIO()
    drawing.write(text)
    return text.getvalue().encode()


def misread(seed, breaks):
    """What is wrong with what is read of a part whose drawing is broken; None if nothing is.

    There are as many shapes as were drawn, of the same areas, and they can be used and written.
    """
    part, data = broken(seed, breaks)
    sketch, notes = sketch_in(data, "mm")  # the oldest drawings don't name their unit
    areas = sorted(S.area(entity) for entity in sketch["entities"])
    gap = max([1e-6, *(1e-4 for way in breaks if way in GAPS)])
    alike = len(areas) == len(part.areas) and all(
        abs(one - other) <= gap * part.length for one, other in zip(areas, part.areas)
    )
    if not alike or S.check(sketch):
        return {"read": areas, "drawn": part.areas, "check": S.check(sketch), "notes": notes}
    dxf.written(Document("", sketch), "mm", no_tick)
    return None
