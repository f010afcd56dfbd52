"""Exact contours of entities, and the entities that contours stand for."""

import math

import pytest
from hypothesis import assume, example, given, settings
from hypothesis import strategies as st
from shapely.geometry import Point, Polygon
from support.shapes import ELL, EVERY_KIND, entities
from tandrel import sketch as S
from tandrel._outlines import smallest_detail
from tandrel.contours import Edge, box, contour, divided, enclosed, recognised
from tandrel.exchange.chains import Chains

HALF = math.tan(math.radians(45.0))
every_kind = pytest.mark.parametrize("entity", EVERY_KIND.values(), ids=EVERY_KIND)


def away(point, edge):
    """How far a point is from an edge."""
    (u1, v1), (u2, v2) = edge.start, edge.end
    if edge.bulge:
        centre, sweep = edge.centre, edge.sweep
        first = math.atan2(v1 - centre[1], u1 - centre[0])
        turned = math.atan2(point[1] - centre[1], point[0] - centre[0]) - first
        along = turned * math.copysign(1, sweep) % (2 * math.pi)
        if along <= abs(sweep):
            return abs(math.dist(point, centre) - edge.radius)
    else:
        along = (point[0] - u1) * (u2 - u1) + (point[1] - v1) * (v2 - v1)
        if 0 <= along <= edge.chord**2:
            return abs((u2 - u1) * (point[1] - v1) - (v2 - v1) * (point[0] - u1)) / edge.chord
    return min(math.dist(point, edge.start), math.dist(point, edge.end))


def largest(edges):
    """What rounding is relative to."""
    lengths = [abs(c) for edge in edges for c in edge.start]
    return max(lengths + [edge.radius for edge in edges if edge.bulge])


@settings(max_examples=200)
@given(entities(farthest=2.0))
@example(EVERY_KIND["stadium"])
@example(EVERY_KIND["clockwise"])
def test_the_outline_is_sampled_from_the_contour(entity):
    edges = contour(entity)
    assert all(one.end == two.start for one, two in zip(edges, [*edges[1:], edges[0]]))
    worst = max(min(away(point, e) for e in edges) for point in S.outline(entity).tolist())
    assert worst <= 1e-12 * largest(edges)


@settings(max_examples=200)
@given(entities(farthest=2.0))
def test_the_contour_encloses_the_entity_s_area(entity):
    edges = contour(entity)
    # The area of a shape whose arcs almost meet leaves out what is between them.
    assume(min(e.chord for e in edges) > smallest_detail(*(c for e in edges for c in e.start)))
    assert enclosed(edges) == pytest.approx(S.area(entity), rel=1e-12)


STRAIGHT_AND_ARCS = {
    "rectangle": (4, 0),
    "rounded": (4, 4),
    "stadium": (2, 4),
    "circle": (0, 2),
    "regular": (6, 0),
    "slot": (2, 2),
    "polygon": (6, 0),
    "rounded polygon": (6, 6),
    "clockwise": (6, 6),
}


@pytest.mark.parametrize("name", EVERY_KIND)
def test_contours_have_as_few_edges_as_they_can(name):
    arcs = [bool(edge.bulge) for edge in contour(EVERY_KIND[name])]
    assert (arcs.count(False), arcs.count(True)) == STRAIGHT_AND_ARCS[name]


def test_a_line_too_short_to_be_drawn_between_two_arcs_keeps_them_apart():
    """The sketch module leaves it out; without it the arcs would be bent to meet."""
    entity = {"type": "rectangle", "x": 0.0, "y": 0.0, "w": 1.0, "h": 0.5, "radius": 0.25 - 2e-9}
    edges = contour(entity)
    assert len(edges) == 8
    assert sum(0 < edge.chord < 5e-9 for edge in edges) == 2
    assert S.area(recognised(edges).entity) == pytest.approx(S.area(entity), rel=1e-13)


@every_kind
def test_the_box_of_a_contour_holds_it_and_touches_it_on_all_sides(entity):
    left, low, right, high = box(contour(entity))
    us, vs = zip(*divided(contour(entity), 1e-9))
    for exact, sampled in ((left, min(us)), (low, min(vs)), (-right, -max(us)), (-high, -max(vs))):
        assert exact <= sampled + 1e-15
        assert exact == pytest.approx(sampled, abs=2e-9)


def test_the_box_of_a_turned_slot_is_exact():
    slot = {"type": "slot", "x1": 0.0, "y1": 0.0, "x2": 3.0, "y2": 4.0, "r": 1.0}
    assert box(contour(slot)) == pytest.approx((-1.0, -1.0, 4.0, 5.0), rel=1e-15)


@every_kind
def test_divided_arcs_keep_close_to_their_chords(entity):
    edges = contour(entity)
    points = divided(edges, 1e-6)
    polygon = Polygon(points)
    for point in divided(edges, 1e-8):
        assert polygon.exterior.distance(Point(point)) <= 1e-6
    lost = enclosed(edges) - polygon.area
    assert abs(lost) <= 1e-6 * polygon.length
    assert {edge.start for edge in edges} <= set(points)


def contents(entity):
    return {key: value for key, value in entity.items() if key != "points"}


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
        assert contents(found) == pytest.approx(entity, abs=1e-15)
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
    assert contents(found) == {"type": "rectangle", "x": 0, "y": 0, "w": 2, "h": 1, "radius": 0}


def test_squares_that_stand_straight_are_rectangles_and_others_regular_polygons():
    for angle, kind in ((45.0, "rectangle"), (44.0, "regular")):
        square = {"type": "regular", "xc": 0.0, "yc": 0.0, "r": 1.0, "n": 4, "angle": angle}
        assert recognised(contour(square))[0]["type"] == kind


def test_a_polygon_that_is_hardly_regular_stays_as_it_is():
    corners = [[math.cos(k), math.sin(k)] for k in (0.0, math.pi * 2 / 3, math.pi * 4 / 3 + 1e-9)]
    found, _ = recognised(contour({"type": "polygon", "points": corners, "radius": 0.0}))
    assert (found["type"], found["points"]) == ("polygon", corners)


def test_digits_that_another_program_cut_off_do_not_hide_what_a_contour_was():
    edges = contour(EVERY_KIND["rounded polygon"])
    cut = polyline(*[(round(u, 7), round(v, 7), round(bulge, 6)) for (u, v), _, bulge in edges])
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
        polyline((0, 0, 1e9), (1, 0)),
        polyline(*[(math.cos(k), math.sin(k)) for k in range(50_000)]),
    ],
    ids=["empty", "point", "twice", "straight", "crossing", "crossing arcs", "huge bulge", "many"],
)
def test_what_is_no_contour_is_refused_with_a_reason(edges):
    with pytest.raises(ValueError) as caught:
        recognised(edges)
    assert str(caught.value)


class TestChains:
    def closed(self, *lines):
        chains = Chains()
        for line in lines:
            chains.add([Edge(*edge) for edge in line])
        return chains.closed()

    def test_lines_in_any_order_and_direction(self):
        contours, left = self.closed(
            [((0, 0), (1, 0))], [((1, 1), (0, 0))], [((1, 1 + 1e-7), (1, 1e-7))]
        )
        assert (len(contours), left) == (1, 0)
        assert abs(enclosed(contours[0])) == pytest.approx(0.5, abs=1e-6)

    def test_arcs_keep_their_sense_when_they_are_turned_round(self):
        contours, _ = self.closed([((0, 0), (1, 0))], [((0, 0), (1, 0), -1.0)])
        assert abs(enclosed(contours[0])) == pytest.approx(math.pi / 8)

    def test_a_line_may_close_itself(self):
        contours, left = self.closed([((0, 0), (1, 0)), ((1, 0), (0, 1)), ((0, 1), (0, 0))])
        assert (len(contours), left) == (1, 0)

    def test_ends_too_far_apart_and_places_where_more_lines_meet(self):
        square = [[((0, 0), (1, 0))], [((1, 0), (1, 1))], [((1, 1), (0, 1))]]
        assert self.closed(*square, [((0, 1), (0, 2e-6))]) == ([], 4)
        assert self.closed(*square, [((0, 1), (0, 0))], [((0, 0), (-1, 0))]) == ([], 5)
        assert self.closed() == ([], 0)
        assert self.closed([((5, 5), (5, 5))])[1] == 0

    @settings(max_examples=50)
    @given(st.permutations(range(9)), st.lists(st.booleans(), min_size=9, max_size=9))
    def test_three_triangles_from_nine_lines(self, order, turned):
        corners = [(3 * k, 0) for k in range(3)], [(3 * k + 1, 0) for k in range(3)]
        sides = []
        for one, two in zip(*corners):
            top = (one[0], 1)
            sides += [(one, two), (two, top), (top, one)]
        lines = [[sides[k][::-1] if turned[k] else sides[k]] for k in order]
        contours, left = self.closed(*lines)
        assert (len(contours), left) == (3, 0)
        assert [abs(enclosed(edges)) for edges in contours] == pytest.approx([0.5] * 3)
