"""The profile that a sketch cuts: its area, its contours, its extent."""

import math

import pytest
from hypothesis import given, settings
from hypothesis import strategies as st
from shapely.geometry import Point
from support.neighbours import circle, polygon, rectangle, regular, slot
from support.shapes import EVERY_KIND, PAIR, PLATE, sketch
from support.ticks import stop
from tandrel import profile
from tandrel import sketch as S
from tandrel.geometry import joining
from tandrel.geometry.loops import enclosed
from tandrel.progress import Stopped


@pytest.mark.parametrize("entity", EVERY_KIND.values(), ids=EVERY_KIND)
def test_one_shape_is_its_own_profile(entity):
    one = sketch(entity)
    assert profile.area(one) == S.area(entity)
    assert len(profile.contours(one)) == 1
    assert profile.has_own_contours(one)


def test_holes_are_taken_away_and_islands_put_back_exactly():
    plate = sketch(*PLATE)
    areas = [S.area(entity) for entity in PLATE]
    exact = areas[0] - areas[1] + areas[2] - areas[3] - areas[4]
    assert profile.area(plate) == pytest.approx(exact, rel=1e-15)
    assert len(profile.contours(plate)) == 5
    assert profile.has_own_contours(plate)
    assert profile.box(plate) == pytest.approx((-0.08, -0.06, 0.08, 0.06), abs=1e-15)


def lens(r, d):
    """The common area of two circles of a radius whose centres are a distance apart."""
    return 2 * r * r * math.acos(d / 2 / r) - d / 2 * math.sqrt(4 * r * r - d * d)


@pytest.mark.parametrize("d", [0.01, 0.03, 0.0599])
def test_shapes_that_overlap_are_joined(d):
    one, two = circle(0.0, 0.0, 0.03), circle(d, 0.0, 0.03)
    both = sketch(one, two)
    joined = 2 * S.area(one) - lens(0.03, d)
    assert profile.area(both) == pytest.approx(joined, rel=1e-12)
    assert profile.region(both).area == pytest.approx(joined, rel=1e-5)
    (whole,) = profile.contours(both)
    assert [edge.radius for edge in whole.edges] == pytest.approx([0.03] * len(whole.edges))
    assert not profile.has_own_contours(both)


def test_overlapping_holes_in_a_plate():
    holes = circle(0.0, 0.0, 0.02), circle(0.03, 0.0, 0.02)
    plate = sketch(rectangle(-0.1, -0.1, 0.2, 0.2), *holes)
    cut = 2 * S.area(holes[0]) - lens(0.02, 0.03)
    assert profile.area(plate) == pytest.approx(0.04 - cut, rel=1e-13)
    found = [(contour.is_hole, contour.drawn is None) for contour in profile.contours(plate)]
    assert found == [(False, False), (True, True)]


def test_a_hole_in_what_two_plates_have_in_common_goes_through_both():
    assert profile.area(sketch(*PAIR)) == pytest.approx(0.004 - math.pi * 25e-6, rel=1e-14)
    hole, plate = profile.contours(sketch(*PAIR))
    assert (plate.is_hole, hole.is_hole) == (False, True)


def test_edges_that_lie_on_each_other_become_one():
    """A slot, drawn as a plate with a boss at each end that is tangent to its sides."""
    plate = rectangle(0.0, -0.01, 0.06, 0.02)
    one = circle(0.0, 0.0, 0.01)
    for other in (circle(0.06, 0.0, 0.01), slot(0.0, 0.0, 0.06, 0.0, 0.01)):
        (whole,) = profile.contours(sketch(plate, one, other))
        assert whole.area == pytest.approx(0.0012 + math.pi * 1e-4, rel=1e-14)
        assert [bool(edge.bulge) for edge in whole.edges].count(False) == 2


def test_shapes_that_touch_in_a_point_stay_two():
    for pair in (
        (rectangle(0, 0, 1, 1), rectangle(1, 1, 1, 1)),
        (circle(0.0, 0.0, 1.0), circle(3.0, 0.0, 2.0)),
    ):
        assert profile.has_own_contours(sketch(*pair))
        holes = profile.contours(sketch(rectangle(-5, -5, 20, 20), *pair))[1:]
        assert len(holes) == 2 and all(hole.is_hole and hole.drawn for hole in holes)


def test_shapes_that_touch_in_two_points_stay_two_whatever_lies_between():
    angle = polygon((0, 0), (2, 0), (2, 1), (1, 1), (1, 2), (0, 2))
    other = polygon((1, 2), (2, 2), (2, 1), (3, 1), (3, 3), (1, 3))
    for pair in ((angle, other), (other, angle)):
        assert profile.has_own_contours(sketch(*pair))
    bars = rectangle(0, 0, 2, 1), rectangle(0, 0, 1, 2)
    joined = profile.contours(sketch(bars[0], other, bars[1]))
    assert [contour.area for contour in joined] == [3.0, 3.0]


def test_contours_that_can_t_be_joined_exactly_are_joined_as_polygons(monkeypatch):
    def fail(*_):
        raise joining.Unjoined

    exact = profile.area(sketch(circle(0.0, 0.0, 0.03), circle(0.02, 0.0, 0.03)))
    monkeypatch.setattr(joining, "joined", fail)
    both = sketch(circle(0.0, 0.0, 0.03), circle(0.02, 0.0, 0.0299))
    assert profile.area(both) == pytest.approx(exact, rel=0.01)
    assert len(profile.contours(both)) == 1


def test_crossing_bars_have_as_many_contours_as_they_are_and_yet_others():
    """Four bars across three: one outer contour and six holes."""
    bars = [rectangle(-1.0, k, 9.0, 0.5) for k in range(4)]
    bars += [rectangle(2.0 * k, -1.0, 0.5, 6.0) for k in range(3)]
    crossing = sketch(*bars)
    assert len(profile.contours(crossing)) == len(bars)
    assert not profile.has_own_contours(crossing)
    assert profile.area(crossing) == pytest.approx(4 * 4.5 + 3 * 3.0 - 12 * 0.25)


def test_neighbours_that_share_an_edge_become_one_piece():
    pair = sketch(rectangle(0, 0, 1, 1), rectangle(1, 0, 1, 1))
    assert profile.area(pair) == 2.0
    (piece,) = profile.contours(pair)
    assert len(piece.edges) == 4, "without corners where there are none"
    assert not profile.has_own_contours(pair)


def test_shapes_that_cannot_be_built_are_left_out():
    damaged = sketch(circle(0, 0, -1), {"type": "circle"}, None, circle(0.0, 0.0, 1.0))
    assert profile.area(damaged) == math.pi
    assert len(profile.contours(damaged)) == 1
    assert profile.polygons(profile.region(damaged))[0].contains(Point(0, 0))


def test_nothing_has_no_area():
    assert profile.area(sketch()) == 0
    assert profile.contours(sketch()) == []
    assert profile.polygons(profile.region(sketch())) == []
    with pytest.raises(ValueError):
        profile.box(sketch())


def test_a_sketch_changed_in_place_is_measured_anew():
    entity = circle(0.0, 0.0, 1.0)
    changing = sketch(entity, circle(1.5, 0.0, 1.0))
    alike = sketch(dict(entity), circle(1.5, 0.0, 1.0))
    profile.contours(changing)
    entity["r"] = 0.1
    assert profile.area(alike) == pytest.approx(2 * math.pi - lens(1.0, 1.5), rel=1e-14)
    assert profile.area(changing) == pytest.approx(1.01 * math.pi)


def test_a_tick_can_stop_it_and_later_it_starts_again():
    many = sketch(*[circle(3.0 * k, 0.0, 1.0) for k in range(500)])
    told = []
    profile.contours(many, told.append)
    assert len(told) > 2
    assert told == sorted(told)
    assert 0 <= told[0] and told[-1] <= 1

    other = sketch(*[circle(3.0 * k, 1.0, 1.0) for k in range(500)])
    with pytest.raises(Stopped):
        profile.area(other, stop)
    assert profile.area(other) == pytest.approx(500 * math.pi, rel=1e-14)


GRID, SIZE = st.integers(0, 8), st.integers(1, 8)
BLOCKS = st.lists(st.builds(rectangle, GRID, GRID, SIZE, SIZE), min_size=1, max_size=6)


@settings(max_examples=150)
@given(BLOCKS)
def test_blocks_on_a_grid_cut_the_cells_that_counting_says(blocks):
    """Level by level: what lies deeper is drawn over what it lies in."""
    depths = S.depths(sketch(*blocks))
    cells = set()
    for depth, block in sorted(zip(depths, blocks), key=lambda pair: pair[0]):
        covered = {
            (u, v)
            for u in range(block["x"], block["x"] + block["w"])
            for v in range(block["y"], block["y"] + block["h"])
        }
        cells = cells - covered if depth % 2 else cells | covered
    assert profile.area(sketch(*blocks)) == pytest.approx(len(cells), rel=1e-12)


PLACE = st.integers(0, 12).map(lambda k: k / 3)
LENGTH = st.integers(1, 6).map(lambda k: k / 3)
# On one grid, so that edges cross, touch and lie on each other.
SHAPES = st.one_of(
    st.builds(rectangle, PLACE, PLACE, LENGTH, LENGTH),
    st.builds(rectangle, PLACE, PLACE, LENGTH, LENGTH, st.just(1 / 6)),
    st.builds(circle, PLACE, PLACE, LENGTH),
    st.builds(slot, PLACE, PLACE, PLACE, PLACE, LENGTH),
    st.builds(regular, PLACE, PLACE, LENGTH, st.sampled_from([3, 4, 6]), st.just(30.0)),
)


@settings(max_examples=100, deadline=None)
@given(st.lists(SHAPES, min_size=1, max_size=10))
def test_any_shapes_cut_what_their_polygons_do(shapes):
    """And each contour closes, the material on its left."""
    whole = sketch(*shapes)
    assert profile.area(whole) == pytest.approx(profile.region(whole).area, rel=1e-4)
    for contour in profile.contours(whole):
        ends = zip(contour.edges, [*contour.edges[1:], contour.edges[0]])
        assert all(one.end == other.start for one, other in ends)
        assert contour.area == pytest.approx(enclosed(contour.edges), rel=1e-9)
