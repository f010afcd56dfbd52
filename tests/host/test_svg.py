"""SVG drawings, read back by their own rules."""

import re
import xml.etree.ElementTree as ET

import numpy as np
import pytest
import svgelements
from hypothesis import given, settings
from shapely.geometry import Polygon
from support.neighbours import circle
from support.shapes import PLATE, document, entities, sketch
from support.types import CARDS
from tandrel import profile
from tandrel import sketch as S
from tandrel.exchange import svg
from tandrel.progress import no_tick

ALONG = np.linspace(0, 1, 501)[1:]
NAMES = {"s": "http://www.w3.org/2000/svg"}
MILLIMETRES = {"mm": 1.0, "cm": 10.0, "in": 25.4}


def drawn(*shapes, unit="mm", name="part"):
    return ET.fromstring(svg.written(document(*shapes, name=name), unit, no_tick))


def paths(root, group="*"):
    """The paths of a group, or of all, in the order in which they are cut."""
    return [p for g in root.findall("s:g", NAMES) if group in ("*", g.get("id")) for p in g]


def rings(root, group="*"):
    """The closed rings of the paths, their arcs divided."""
    found = []
    for path in paths(root, group):
        for row in svgelements.Path(path.get("d")).as_subpaths():
            ring = svgelements.Path(row)
            assert isinstance(ring[-1], svgelements.Close)
            points = [
                edge.npoint(ALONG if isinstance(edge, svgelements.Arc) else [1]) for edge in ring
            ]
            found.append(Polygon(np.concatenate(points)))
    return found


def area(root):
    """By the rule of even and odd, for rings that don't cross."""
    found = rings(root)
    depths = [sum(o is not p and o.contains(p) for o in found) for p in found]
    return sum(-p.area if depth % 2 else p.area for p, depth in zip(found, depths))


@pytest.mark.parametrize("unit", MILLIMETRES)
def test_the_drawing_has_the_part_s_true_size(unit):
    root = drawn(*PLATE, unit=unit)
    for side, length in (("width", 160), ("height", 120)):
        number = re.fullmatch(rf"([\d.]+){unit}", root.get(side))[1]
        assert float(number) * MILLIMETRES[unit] == pytest.approx(length)
    box = [float(number) * MILLIMETRES[unit] for number in root.get("viewBox").split()]
    assert box == pytest.approx([0, 0, 160, 120])
    for least in zip(*(ring.bounds[:2] for ring in rings(root))):
        assert min(least) == pytest.approx(0, abs=1e-9)


def test_there_are_no_metres_in_svg():
    assert drawn(*PLATE, unit="m").get("width") == "160mm"


@pytest.mark.parametrize("variant", [v for card in CARDS for v in card.variants.values()])
def test_arcs_are_arcs_and_v_runs_up(variant):
    entity = variant.entity
    root = drawn(entity)
    (polygon,) = rings(root)
    assert polygon.area * 1e-6 == pytest.approx(S.area(entity), rel=1e-4)
    (left, _), (_, top) = S.outline(entity).min(axis=0) * 1000, S.outline(entity).max(axis=0) * 1000
    known = Polygon([(u * 1000 - left, top - v * 1000) for u, v in S.outline(entity)])
    assert polygon.symmetric_difference(known).area <= 5e-3 * known.area
    assert ("A" in paths(root)[0].get("d")) == (variant.arcs > 0)


@settings(max_examples=60)
@given(entities(farthest=2.0))
def test_any_shape_keeps_its_area_and_size(entity):
    root = drawn(entity)
    (ring,) = rings(root)
    assert ring.area * 1e-6 == pytest.approx(S.area(entity), rel=1e-3)
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
    shapes = circle(r=0.02), circle(0.03, r=0.02), circle(r=0.005)
    root = drawn(*shapes)
    assert [len(rings(root, group)) for group in ("holes", "outsides")] == [1, 1]
    assert area(root) * 1e-6 == pytest.approx(profile.area(sketch(*shapes)), rel=1e-4)
    (outside,) = paths(root, "outsides")
    assert "L" not in outside.get("d"), "arcs are arcs"


@pytest.mark.parametrize("name", ["<&>\"'", "Größe 法兰", "a\x00\x07b\ud800c\ufffe", ""])
def test_any_name_makes_a_sound_file(name):
    title = drawn(*PLATE, name=name).find("s:title", NAMES).text or ""
    assert title == re.sub("[\x00\x07\ud800\ufffe]", "", name)
