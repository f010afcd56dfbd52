"""Loops of edges: contours as exact as the shapes, their area, extent and points."""

import math

import numpy as np
import pytest
from hypothesis import assume, example, given, settings
from shapely.geometry import Point, Polygon
from support.neighbours import rectangle, slot
from support.shapes import EVERY_KIND, entities
from support.types import CARDS
from tandrel import sketch as S
from tandrel._shapes import contour, drawn
from tandrel.exchange.recognise import recognised
from tandrel.geometry.edges import Edge, arc, smallest_detail
from tandrel.geometry.loops import box, divided, enclosed, sampled

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


@pytest.mark.parametrize("variant", [v for card in CARDS for v in card.variants.values()])
def test_contours_have_as_few_edges_as_they_can(variant):
    arcs = [bool(edge.bulge) for edge in contour(variant.entity)]
    assert (arcs.count(False), arcs.count(True)) == (variant.lines, variant.arcs)


def test_a_line_too_short_to_be_drawn_between_two_arcs_keeps_them_apart():
    """The sketch module leaves it out; without it the arcs would be bent to meet."""
    entity = rectangle(w=1.0, h=0.5, radius=0.25 - 2e-9)
    edges = contour(entity)
    assert len(edges) == 8
    assert sum(0 < edge.chord < 5e-9 for edge in edges) == 2
    assert S.area(recognised(edges).entity) == pytest.approx(S.area(entity), rel=1e-13)


@every_kind
def test_the_box_of_a_contour_holds_it_and_touches_it_on_all_sides(entity):
    left, low, right, high = box(contour(entity))
    us, vs = zip(*divided(contour(entity), 1e-9))
    for exact, found in ((left, min(us)), (low, min(vs)), (-right, -max(us)), (-high, -max(vs))):
        assert exact <= found + 1e-15
        assert exact == pytest.approx(found, abs=2e-9)


def test_the_box_of_a_turned_slot_is_exact():
    turned = slot(0.0, 0.0, 3.0, 4.0, 1.0)
    assert box(contour(turned)) == pytest.approx((-1.0, -1.0, 4.0, 5.0), rel=1e-15)


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


@every_kind
def test_the_loop_of_a_shape_and_its_contour_are_the_same_curve(entity):
    loop, edges = drawn(entity).loop, contour(entity)
    assert enclosed(loop) == pytest.approx(enclosed(edges), rel=1e-12)
    assert box(loop) == pytest.approx(box(edges), abs=1e-15)
    assert sum(edge.length for edge in loop) == pytest.approx(sum(edge.length for edge in edges))


@pytest.mark.parametrize("angle", [10.0, -75.0, 180.0, -300.0])
def test_an_arc_is_the_same_with_and_without_its_turn(angle):
    known = arc((0.3, -0.2), 0.05, 20.0, angle)
    told = Edge(*known[:3])
    assert told.turn is None and known.turn
    for edge in (told, known.reversed().reversed(), told.reversed().reversed()):
        assert edge.centre == pytest.approx(known.centre, rel=1e-13)
        assert (edge.radius, edge.sweep) == pytest.approx((known.radius, known.sweep), rel=1e-13)
        assert np.array(edge.points(7)) == pytest.approx(np.array(known.points(7)), abs=1e-15)
    back = known.reversed()
    assert (back.start, back.end, back.sweep) == (known.end, known.start, -known.sweep)
    assert back.points(2)[1] == pytest.approx(known.points(2)[1], abs=1e-16)


def test_a_circle_that_is_one_edge_knows_its_extent_area_and_points():
    loop = [arc((1.0, 2.0), 0.5, 0.0, 360.0)]
    assert box(loop) == (0.5, 1.5, 1.5, 2.5)
    assert enclosed(loop) == pytest.approx(math.pi / 4, rel=1e-15)
    assert len(sampled(loop)) == 64 and len(divided(loop, 1e-3)) > 30
