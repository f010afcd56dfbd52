"""Rounded corners, and the corners behind arcs."""

import math

import numpy as np
import pytest
from hypothesis import assume, given, settings
from hypothesis import strategies as st
from shapely.geometry import Polygon
from support.neighbours import polygon
from tandrel import sketch as S
from tandrel.geometry.edges import Edge
from tandrel.geometry.fillets import Tight, rounded, unrounded
from tandrel.geometry.loops import joined


def star(radii):
    """A free outline round the origin: simple, as its corners' directions increase."""
    step = 2 * math.pi / len(radii)
    return [(r * math.cos(k * step), r * math.sin(k * step)) for k, r in enumerate(radii)]


def ends(edge, at_start):
    """A point and the direction of travel at one end of a line or an arc."""
    if not edge.bulge:
        way = np.subtract(edge.end, edge.start) / edge.length
        return (edge.start if at_start else edge.end), way
    point = edge.start if at_start else edge.end
    out = np.subtract(point, edge.centre) / edge.radius
    return point, np.array([-out[1], out[0]]) * math.copysign(1.0, edge.sweep)


@settings(deadline=None, max_examples=200)
@given(st.lists(st.floats(0.2, 1.0), min_size=3, max_size=12), st.floats(0.001, 0.3))
def test_roundings_are_tangent_to_both_edges_or_refused(radii, radius):
    corners = star(radii)
    try:
        S.outline(polygon(*corners, radius=radius))
    except ValueError:
        assume(False)
    loop = rounded(corners, radius, 1e-8)
    assert all(edge.radius == radius for edge in loop if edge.bulge)
    for before, after in zip(loop, [*loop[1:], loop[0]]):
        (point, way), (next_point, next_way) = ends(before, False), ends(after, True)
        assert next_point == pytest.approx(point, abs=3e-8)
        if before.bulge or after.bulge:
            assert next_way == pytest.approx(way, abs=1e-6)


@settings(deadline=None, max_examples=100)
@given(st.lists(st.floats(0.2, 1.0), min_size=3, max_size=12), st.floats(0.01, 0.2))
def test_convex_roundings_stay_within_the_sharp_outline(radii, radius):
    sharp = polygon(*star(radii))
    try:
        ring = S.outline({**sharp, "radius": radius})
    except ValueError:
        assume(False)
    reach = Polygon(S.outline(sharp)).convex_hull.buffer(1e-9)
    assert reach.contains(Polygon(ring))


@settings(deadline=None, max_examples=100)
@given(st.lists(st.floats(0.5, 1.0), min_size=4, max_size=9), st.floats(0.001, 0.05))
def test_corners_and_radius_are_found_again_behind_the_arcs(radii, radius):
    corners = star(radii)
    try:
        loop = rounded(corners, radius, 1e-8)
    except Tight:
        assume(False)
    assume(all(edge.bulge for edge in loop[::2]))
    found, found_radius = unrounded(joined(loop))
    assert found_radius == pytest.approx(radius, rel=1e-6)
    assert np.array(found) == pytest.approx(np.array(corners), abs=1e-9)


def test_what_does_not_fit_is_told_with_its_place_and_what_would():
    with pytest.raises(Tight) as refusal:
        rounded([(0.0, 0.0), (4.0, 0.0), (4.0, 1.0), (0.0, 1.0)], 0.6, 1e-8)
    assert (refusal.value.place, refusal.value.most) == ((4.0, 0.0), pytest.approx(0.5))


def test_tangents_at_the_ends_of_half_a_circle_do_not_meet():
    bar = [Edge((0, 1), (0, 0), 1.0), Edge((0, 0), (4, 0)), Edge((4, 0), (4, 1), 1.0)]
    assert unrounded([*bar, Edge((4, 1), (0, 1))]) == ([], 0.5)
