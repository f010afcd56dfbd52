"""The entities that contours of drawings stand for."""

import math

import pytest
from shapely.geometry import Polygon
from support.neighbours import polygon, rectangle, regular, slot
from support.shapes import ELL, EVERY_KIND
from tandrel import sketch as S
from tandrel._shapes import contour
from tandrel.exchange.recognise import recognised
from tandrel.geometry.edges import Edge
from tandrel.geometry.loops import enclosed

HALF = math.tan(math.radians(45.0))
every_kind = pytest.mark.parametrize("entity", EVERY_KIND.values(), ids=EVERY_KIND)


@every_kind
@pytest.mark.parametrize("first", [0, 1, 2])
@pytest.mark.parametrize("backwards", [False, True])
def test_contours_are_recognised_wherever_they_start_and_whichever_way_they_run(
    entity, first, backwards
):
    edges = contour(entity)
    edges = [*edges[first:], *edges[:first]]
    if backwards:
        edges = [edge.reversed() for edge in reversed(edges)]
    found, error = recognised(edges)
    assert error == 0
    assert found["type"] == entity["type"]
    assert S.area(found) == pytest.approx(S.area(entity), rel=1e-13)
    assert Polygon(S.outline(found)).symmetric_difference(
        Polygon(S.outline(entity))
    ).area <= 1e-3 * S.area(entity)
    if entity["type"] == "rectangle":
        assert found == pytest.approx(entity, abs=1e-15)
    if entity["type"] == "polygon":
        assert found["radius"] == pytest.approx(entity["radius"], abs=1e-15)
        rounded = {(round(u, 12), round(v, 12)) for u, v in found["points"]}
        assert rounded == {(u, v) for u, v in ELL}


def polyline(*vertices):
    """A closed polyline: u, v and the bulge of the edge that starts there, if it has one."""
    full = [(*vertex, 0.0)[:3] for vertex in vertices]
    ends = [vertex[:2] for vertex in [*full[1:], full[0]]]
    return [Edge((u, v), end, bulge) for (u, v, bulge), end in zip(full, ends)]


@pytest.mark.parametrize("parts", [2, 3, 4, 7])
def test_a_circle_may_be_made_of_any_arcs(parts):
    angles = [0.3 + 2 * math.pi * k / parts for k in range(parts)]
    bulge = math.tan(math.pi / 2 / parts)
    rim = [(0.5 + 0.2 * math.cos(a), 0.1 + 0.2 * math.sin(a), bulge) for a in angles]
    found, error = recognised(polyline(*rim))
    assert (found["type"], error) == ("circle", 0)
    assert (found["xc"], found["yc"], found["r"]) == pytest.approx((0.5, 0.1, 0.2), rel=1e-14)


def test_arcs_of_one_circle_that_go_round_twice_are_no_circle():
    half = [Edge((1.0, 0.0), (-1.0, 0.0), 1.0), Edge((-1.0, 0.0), (1.0, 0.0), 1.0)]
    with pytest.raises(ValueError):
        recognised(half * 2)


def test_repeated_corners_do_not_count():
    found, _ = recognised(polyline((0, 0), (0, 0), (2, 0), (2, 1), (2, 1), (2, 1), (0, 1), (0, 0)))
    assert found == rectangle(0, 0, 2, 1)


def test_edges_too_short_for_where_their_arcs_reach_do_not_count():
    """No point could be told from the next one there."""
    found, _ = recognised(polyline((0, 0, 1e9), (1, 0)))
    assert S.area(found) == pytest.approx(math.pi * 2.5e8**2, rel=1e-5)
    short = slot(3e3, 0.0, 3e3 + 3e-5, 0.0, 3.0)
    found, _ = recognised(contour(short))
    assert S.area(found) == pytest.approx(S.area(short), rel=1e-9)


def test_squares_that_stand_straight_are_rectangles_and_others_regular_polygons():
    for angle, kind in ((45.0, "rectangle"), (44.0, "regular")):
        assert recognised(contour(regular(n=4, angle=angle)))[0]["type"] == kind


def test_a_polygon_that_is_hardly_regular_stays_as_it_is():
    corners = [[math.cos(k), math.sin(k)] for k in (0.0, math.pi * 2 / 3, math.pi * 4 / 3 + 1e-9)]
    assert recognised(contour(polygon(*corners)))[0] == polygon(*corners)


def test_digits_that_another_program_cut_off_do_not_hide_what_a_contour_was():
    edges = contour(EVERY_KIND["rounded polygon"])
    cut = polyline(*[(round(u, 7), round(v, 7), round(bulge, 6)) for (u, v), _, bulge, _ in edges])
    found, error = recognised(cut)
    assert error == 0
    assert found["radius"] == pytest.approx(0.004, abs=1e-7)
    assert len(found["points"]) == len(ELL)


def test_arcs_of_different_radii_are_divided():
    """A plate whose one end is a half circle and whose other end has a small fillet."""
    fillet = math.tan(math.radians(22.5))
    edges = polyline((0, 0), (0.09, 0, fillet), (0.1, 0.01), (0.1, 0.06, HALF), (0, 0.06))
    found, error = recognised(edges)
    assert (found["type"], found["radius"], error) == ("polygon", 0.0, 1e-6)
    assert S.area(found) == pytest.approx(enclosed(edges), abs=1e-6 * 0.3)
    assert 100 < len(found["points"]) < 500


def test_huge_arcs_are_divided_as_finely_as_an_outline_allows():
    found, error = recognised(polyline((0, 0, HALF), (9e8, 0)))
    assert 1e-6 < error
    assert 2000 < len(found["points"]) <= 10_000
    assert S.area(found) == pytest.approx(math.pi * 4.5e8**2 / 2, rel=1e-5)


@pytest.mark.parametrize(
    "edges",
    [
        [],
        polyline((0, 0)),
        polyline((0, 0), (1, 0)),
        polyline((0, 0), (1, 0), (2, 0)),
        polyline((0, 0), (1, 1), (1, 0), (0, 1)),
        polyline((0, 0, -1.0), (1, 0), (1, 0.2), (0, 0.2)),
        polyline(*[(math.cos(k), math.sin(k)) for k in range(50_000)]),
    ],
    ids=["empty", "point", "twice", "straight", "crossing", "crossing arcs", "many"],
)
def test_what_is_no_contour_is_refused_with_a_reason(edges):
    with pytest.raises(ValueError) as caught:
        recognised(edges)
    assert str(caught.value)
