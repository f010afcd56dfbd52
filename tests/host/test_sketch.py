"""Outlines, corners and areas of every kind of shape, and the point-in-outline test."""

import math

import numpy as np
import pytest
from harness.places import HOST
from hypothesis import assume, given, settings
from hypothesis import strategies as st
from shapely.geometry import Point, Polygon
from support.children import printed
from support.neighbours import circle, polygon, rectangle, regular, slot
from support.shapes import ELL, EVERY_KIND
from support.types import CARDS
from tandrel import _shapes
from tandrel import sketch as S
from tandrel._shapes import contour
from tandrel.geometry import loops
from tandrel.geometry.loops import is_curved

SHARP = [e for e in EVERY_KIND.values() if not is_curved(contour(e))]
every_kind = pytest.mark.parametrize("e", EVERY_KIND.values(), ids=EVERY_KIND)


def shoelace(ring):
    u, v = np.asarray(ring, dtype=float).T
    return float(u @ np.roll(v, -1) - v @ np.roll(u, -1)) / 2


def gaps(ring):
    return np.hypot(*(np.roll(ring, -1, axis=0) - ring).T)


def test_a_new_sketch_is_empty_and_one_s_own():
    assert S.new() == {"plane": "XY", "offset": 0.0, "entities": []}
    S.new()["entities"].append(circle())
    assert S.new()["entities"] == []


def test_every_plane_has_two_axes():
    assert S.PLANES == ("XY", "XZ", "YZ")
    assert {plane: S.AXES.get(plane) for plane in S.PLANES} == {
        "XY": ("x", "y"),
        "XZ": ("x", "z"),
        "YZ": ("y", "z"),
    }


@pytest.mark.parametrize("built_first", [False, True])
def test_modules_built_into_another_tree_belong_to_the_packages(tmp_path, built_first):
    for folder in ("tandrel", "tandrel/gui"):
        (tmp_path / folder).mkdir()
        (tmp_path / folder / "elsewhere.py").write_text("here = True\n")
    paths = [tmp_path, HOST] if built_first else [HOST, tmp_path]
    code = "import tandrel.sketch, tandrel.elsewhere, tandrel.gui.elsewhere, tandrel.gui.i18n"
    printed("-W", "error", "-c", code, paths=paths)


@every_kind
class TestEveryOutline:
    def test_is_an_array_of_points_that_nobody_can_write_to(self, e):
        ring = S.outline(e)
        assert ring.dtype == np.float64 and ring.ndim == 2 and ring.shape[1] == 2
        with pytest.raises(ValueError):
            ring[0, 0] = 1.0
        with pytest.raises(ValueError):
            S.corners(e)[...] = 1.0

    def test_runs_counter_clockwise_and_does_not_repeat_its_first_point(self, e):
        ring = S.outline(e)
        assert shoelace(ring) > 0
        assert gaps(ring).min() > 0

    def test_has_about_64_points_without_long_gaps(self, e):
        ring = S.outline(e)
        assert 64 <= len(ring) <= 64 + 8 * 6
        assert gaps(ring).max() <= gaps(ring).sum() / 64 * 1.01

    def test_is_simple(self, e):
        assert Polygon(S.outline(e)).is_valid

    def test_encloses_the_area_but_for_the_sampling_of_arcs(self, e):
        loss = 1e-12 if e in SHARP else 3e-3
        area = S.area(e)
        assert type(area) is float
        assert area * (1 - loss) <= shoelace(S.outline(e)) <= area * (1 + loss)

    def test_finer_sampling_leads_to_the_exact_area(self, e, monkeypatch):
        monkeypatch.setattr(_shapes, "_shapes", _shapes.Memo(10**6))
        monkeypatch.setattr(loops, "POINTS", 50_000)
        monkeypatch.setattr(loops, "ARC_STEP", math.radians(0.05))
        assert shoelace(S.outline(e)) == pytest.approx(S.area(e), rel=1e-7)


@pytest.mark.parametrize(
    "e, area",
    [
        *((variant.entity, variant.area) for card in CARDS for variant in card.variants.values()),
        (rectangle(w=0.03, h=0.03, radius=0.015), math.pi * 0.015**2),
        (regular(r=2.0, n=3), 3 * math.sqrt(3)),
        (regular(r=2.0, n=4), 8.0),
        (regular(r=2.0, n=1000), 2000 * math.sin(2 * math.pi / 1000)),
        (slot(0.01, 0.02, 0.01, 0.02, 0.004), math.pi * 0.004**2),
        (
            polygon((0.0, 0.0), (2.0, 0.0), (1.0, math.sqrt(3)), radius=0.1),
            math.sqrt(3) - (3 * math.sqrt(3) - math.pi) * 0.1**2,
        ),
    ],
)
def test_areas_are_those_of_the_closed_formulas_also_far_away(e, area):
    assert S.area(e) == pytest.approx(area, rel=1e-13)
    places = ("x", "y", "xc", "yc", "x1", "y1", "x2", "y2")
    far = {**e, **{key: e[key] + 1000.0 for key in places if key in e}}
    assert S.area(far) == pytest.approx(area, rel=1e-9)


def test_straight_corners_are_exact_points_of_the_outline():
    for e in SHARP:
        ring = {tuple(point) for point in S.outline(e).tolist()}
        assert {tuple(corner) for corner in S.corners(e).tolist()} <= ring


def test_a_rectangle_has_its_corners_from_the_lower_left_one_on():
    corners = S.corners(rectangle(1.0, 2.0, 3.0, 4.0)).tolist()
    assert corners == [[1.0, 2.0], [4.0, 2.0], [4.0, 6.0], [1.0, 6.0]]
    assert S.corners(rectangle(1.0, 2.0, 3.0, 4.0, radius=1.5)).tolist() == corners


def test_an_outline_keeps_its_corners_as_drawn():
    for points in (ELL, ELL[::-1]):
        for radius in (0.0, 0.005):
            assert S.corners(polygon(*points, radius=radius)).tolist() == points


def test_circles_and_slots_have_no_corners():
    assert S.corners(circle()).shape == S.corners(slot()).shape == (0, 2)


def test_a_clockwise_outline_is_turned_round_at_its_first_corner():
    assert S.outline(polygon(*ELL[::-1]))[0].tolist() == ELL[-1]


@pytest.mark.parametrize("angle", [0.0, 90.0, -180.0, 270.0, 3600000.0])
def test_corners_in_the_directions_of_the_axes_are_exact(angle):
    corners = {tuple(corner) for corner in S.corners(regular(0.0, 0.0, 0.1, 4, angle)).tolist()}
    assert corners == {(0.1, 0.0), (0.0, 0.1), (-0.1, 0.0), (0.0, -0.1)}


def test_a_regular_polygon_begins_at_its_angle_and_goes_on_counter_clockwise():
    corners = S.corners(regular(1.0, 2.0, 0.5, 5, 20.0)) - (1.0, 2.0)
    assert np.hypot(*corners.T) == pytest.approx([0.5] * 5)
    angles = np.degrees(np.unwrap(np.arctan2(corners[:, 1], corners[:, 0])))
    assert angles == pytest.approx([20.0, 92.0, 164.0, 236.0, 308.0])


def test_the_axes_hit_a_circle_exactly():
    ring = {tuple(point) for point in S.outline(circle(0.0, 0.0, 0.1)).tolist()}
    assert {(0.1, 0.0), (0.0, 0.1), (-0.1, 0.0), (0.0, -0.1)} <= ring


def test_a_rounding_of_no_size_leaves_corners_sharp():
    assert S.outline(rectangle(radius=1e-20)).tolist() == S.outline(rectangle()).tolist()


def test_rounding_errors_add_no_points():
    for k in range(1, 200):
        side = k / 70
        assert len(S.outline(rectangle(0.0, 0.0, side, side))) == 64
        assert len(S.outline(circle(0.0, 0.0, side))) == 64


@pytest.mark.parametrize("w, h", [(0.05, 0.03), (0.03, 0.05), (0.03, 0.03)])
def test_a_radius_that_rounding_made_too_large_is_half_of_the_shorter_side(w, h):
    """A larger one would bend the outline back on itself."""
    too_large = rectangle(w=w, h=h, radius=0.015 * (1 + 9e-9))
    assert contour(too_large) == contour(rectangle(w=w, h=h, radius=0.015))


def test_arcs_that_meet_leave_no_straight_edge_between_them():
    for e in (
        rectangle(w=0.03, h=0.03, radius=0.015),
        rectangle(w=0.3, h=0.1, radius=0.05),
        slot(0.01, 0.02, 0.01, 0.02, 0.004),
    ):
        assert gaps(S.outline(e)).min() > 1e-4


class TestInside:
    @settings(deadline=None, max_examples=200)
    @given(
        st.sampled_from(list(EVERY_KIND.values())), st.floats(-0.02, 0.08), st.floats(-0.05, 0.08)
    )
    def test_agrees_with_shapely_off_the_outline(self, e, u, v):
        ring = S.outline(e)
        shape = Polygon(ring)
        assume(shape.exterior.distance(Point(u, v)) > 1e-12)
        assert S.inside(ring, (u, v)) is shape.contains(Point(u, v))
        assert S.inside(ring[::-1], np.array([u, v])) is shape.contains(Point(u, v))

    def test_takes_any_sequence_of_points(self):
        square = [(0, 0), [2, 0], np.array([2, 2]), (0, 2)]
        assert S.inside(square, (1, 1)) is True
        assert S.inside(square, [3, 1]) is False

    def test_left_and_lower_edges_belong_right_and_upper_ones_do_not(self):
        square = [(0, 0), (2, 0), (2, 2), (0, 2)]
        on_edges = {"left": (0, 1), "lower": (1, 0), "right": (2, 1), "upper": (1, 2)}
        found = {name: S.inside(square, p) for name, p in on_edges.items()}
        assert found == {"left": True, "lower": True, "right": False, "upper": False}

    @given(*[st.integers(-20, 20)] * 4, st.integers(0, 16))
    def test_a_point_on_a_shared_edge_belongs_to_one_side(self, u1, v1, u2, v2, k):
        assume((u1, v1) != (u2, v2))
        across = [100 * (v2 - v1), 100 * (u1 - u2)]
        left = [(u1, v1), (u2, v2), (-across[0], -across[1])]
        right = [(u2, v2), (u1, v1), (across[0], across[1])]
        p = (u1 + (u2 - u1) * k / 16, v1 + (v2 - v1) * k / 16)
        assume(0 < k < 16)
        assert S.inside(left, p) != S.inside(right, p)

    def test_nothing_is_inside_nothing(self):
        assert S.inside([], (0, 0)) is False
        assert S.inside(np.empty((0, 2)), (0, 0)) is False
        assert S.inside([(0, 0)], (0, 0)) is False

    @pytest.mark.parametrize("p", [(math.nan, 0.01), (0.01, math.nan), (math.inf, -math.inf)])
    def test_no_point_that_is_not_finite_is_inside(self, p):
        assert S.inside(S.outline(circle()), p) is False
