"""SVG drawings, read back by their own rules."""

import math
import re
import xml.etree.ElementTree as ET

import pytest
from hypothesis import given, settings
from shapely.geometry import Polygon
from support.shapes import PAIR, PLATE, document, entities, sketch
from support.types import CARDS
from tandrel import profile
from tandrel import sketch as S
from tandrel.exchange import svg
from tandrel.progress import no_tick

NAMES = {"s": "http://www.w3.org/2000/svg"}
MILLIMETRES = {"mm": 1.0, "cm": 10.0, "in": 25.4}


def drawn(*shapes, unit="mm", name="part"):
    return ET.fromstring(svg.written(document(*shapes, name=name), unit, no_tick))


def paths(root, group="*"):
    """The paths of a group, or of all, in the order in which they are cut."""
    return [p for g in root.findall("s:g", NAMES) if group in ("*", g.get("id")) for p in g]


def rings(root, group="*"):
    """The closed rings of the paths, arcs divided, and the exact area of each."""
    found = []
    steps = " ".join(path.get("d") for path in paths(root, group))
    for command, numbers in re.findall(r"([MALZ])([^MALZ]*)", steps):
        values = [float(number) for number in numbers.split()]
        if command == "M":
            ring, segments = [tuple(values)], 0.0
        elif command == "L":
            ring.append(tuple(values))
        elif command == "A":
            points, segment = arc(ring[-1], *values)
            ring += points
            segments += segment
        else:
            found.append((ring, segments))
    return found


def arc(start, rx, ry, turned, large, clockwise, u, v):
    """Points of an arc after its start, and the area of the segment that they don't show."""
    assert rx == ry and turned == 0
    half = math.dist(start, (u, v)) / 2
    sweep = 2 * math.asin(min(1.0, half / rx))
    sweep = (2 * math.pi - sweep if large else sweep) * (1 if clockwise else -1)
    off = math.sqrt(max(rx * rx - half * half, 0.0)) / (2 * half)
    off = off if (sweep > 0) != bool(large) else -off
    cu = (start[0] + u) / 2 - off * (v - start[1])
    cv = (start[1] + v) / 2 + off * (u - start[0])
    steps = 500
    points = []
    for k in range(1, steps + 1):
        c, s = math.cos(sweep * k / steps), math.sin(sweep * k / steps)
        du, dv = start[0] - cu, start[1] - cv
        points.append((cu + du * c - dv * s, cv + du * s + dv * c))
    assert points[-1] == pytest.approx((u, v), abs=1e-6 * rx)
    return points, (sweep - math.sin(sweep)) * rx * rx / 2


def area(root):
    """By the rule of even and odd, for rings that don't cross."""
    polygons = [Polygon(ring) for ring, _ in rings(root)]
    depths = [sum(o is not p and o.contains(p) for o in polygons) for p in polygons]
    return sum(-p.area if depth % 2 else p.area for p, depth in zip(polygons, depths))


@pytest.mark.parametrize("unit", MILLIMETRES)
def test_the_drawing_has_the_part_s_true_size(unit):
    root = drawn(*PLATE, unit=unit)
    for side, length in (("width", 160), ("height", 120)):
        number = re.fullmatch(rf"([\d.]+){unit}", root.get(side))[1]
        assert float(number) * MILLIMETRES[unit] == pytest.approx(length)
    box = [float(number) * MILLIMETRES[unit] for number in root.get("viewBox").split()]
    assert box == pytest.approx([0, 0, 160, 120])
    edges = [c for ring, _ in rings(root) for point in ring for c in point]
    assert min(edges) == pytest.approx(0, abs=1e-9)


def test_there_are_no_metres_in_svg():
    assert drawn(*PLATE, unit="m").get("width") == "160mm"


@pytest.mark.parametrize("variant", [v for card in CARDS for v in card.variants.values()])
def test_arcs_are_arcs_and_v_runs_up(variant):
    entity = variant.entity
    root = drawn(entity)
    ((ring, _),) = rings(root)
    polygon = Polygon(ring)
    assert polygon.area * 1e-6 == pytest.approx(S.area(entity), rel=1e-4)
    (left, _), (_, top) = S.outline(entity).min(axis=0) * 1000, S.outline(entity).max(axis=0) * 1000
    known = Polygon([(u * 1000 - left, top - v * 1000) for u, v in S.outline(entity)])
    assert polygon.symmetric_difference(known).area <= 5e-3 * known.area
    assert ("A" in paths(root)[0].get("d")) == (variant.arcs > 0)


@settings(max_examples=60)
@given(entities(farthest=2.0))
def test_any_shape_keeps_its_area_and_size(entity):
    root = drawn(entity)
    ((ring, _),) = rings(root)
    assert Polygon(ring).area * 1e-6 == pytest.approx(S.area(entity), rel=1e-3)
    left, low, right, high = profile.box(sketch(entity))
    assert float(root.get("width")[:-2]) / 1000 == pytest.approx(right - left, rel=1e-9)
    assert float(root.get("height")[:-2]) / 1000 == pytest.approx(high - low, rel=1e-9)


@pytest.mark.parametrize("unit", MILLIMETRES)
def test_each_contour_is_a_path_to_be_cut_along_a_hairline(unit):
    root = drawn(*PLATE, unit=unit)
    assert [len(rings(root, group)) for group in ("holes", "outsides")] == [3, 2]
    assert len(paths(root)) == len(rings(root)) == 5
    groups = root.findall("s:g", NAMES)
    assert [group.get("id") for group in groups] == ["holes", "outsides"], "holes are cut first"
    assert len({group.get("stroke") for group in groups}) == 2
    for group in groups:
        assert group.get("fill") == "none"
        assert float(group.get("stroke-width")) * MILLIMETRES[unit] == pytest.approx(0.0254)
    assert area(root) * MILLIMETRES[unit] ** 2 * 1e-6 == pytest.approx(
        profile.area(sketch(*PLATE)), rel=1e-4
    )


def test_shapes_that_overlap_are_drawn_as_they_are_cut():
    pair = [{"type": "circle", "xc": 0.03 * k, "yc": 0.0, "r": 0.02} for k in range(2)]
    hole = {"type": "circle", "xc": 0.0, "yc": 0.0, "r": 0.005}
    root = drawn(*pair, hole)
    assert [len(rings(root, group)) for group in ("holes", "outsides")] == [1, 1]
    assert area(root) * 1e-6 == pytest.approx(profile.area(sketch(*pair, hole)), rel=1e-4)
    (outside,) = paths(root, "outsides")
    assert "L" not in outside.get("d"), "arcs are arcs"


def test_a_hole_in_two_plates_is_a_hole():
    root = drawn(*PAIR)
    assert [len(rings(root, group)) for group in ("holes", "outsides")] == [1, 1]
    assert area(root) * 1e-6 == pytest.approx(profile.area(sketch(*PAIR)), rel=1e-4)


@pytest.mark.parametrize("name", ["<&>\"'", "Größe 法兰", "a\x00\x07b\ud800c\ufffe", ""])
def test_any_name_makes_a_sound_file(name):
    title = drawn(*PLATE, name=name).find("s:title", NAMES).text or ""
    assert title == re.sub("[\x00\x07\ud800\ufffe]", "", name)
