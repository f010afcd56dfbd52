"""Lines and arcs joined to closed contours."""

import math

import pytest
from hypothesis import given, settings
from hypothesis import strategies as st
from tandrel.exchange.joining import Chains
from tandrel.geometry.edges import Edge
from tandrel.geometry.loops import enclosed


def closed(*lines):
    chains = Chains()
    for line in lines:
        chains.add([Edge(*edge) for edge in line])
    return chains.closed()


def test_lines_in_any_order_and_direction():
    contours, left = closed([((0, 0), (1, 0))], [((1, 1), (0, 0))], [((1, 1 + 1e-7), (1, 1e-7))])
    assert (len(contours), left) == (1, 0)
    assert abs(enclosed(contours[0])) == pytest.approx(0.5, abs=1e-6)


def test_arcs_keep_their_sense_when_they_are_turned_round():
    contours, _ = closed([((0, 0), (1, 0))], [((0, 0), (1, 0), -1.0)])
    assert abs(enclosed(contours[0])) == pytest.approx(math.pi / 8)


def test_a_line_may_close_itself():
    contours, left = closed([((0, 0), (1, 0)), ((1, 0), (0, 1)), ((0, 1), (0, 0))])
    assert (len(contours), left) == (1, 0)


def test_ends_too_far_apart_and_places_where_more_lines_meet():
    square = [[((0, 0), (1, 0))], [((1, 0), (1, 1))], [((1, 1), (0, 1))]]
    assert closed(*square, [((0, 1), (0, 2e-6))]) == ([], 4)
    assert closed(*square, [((0, 1), (0, 0))], [((0, 0), (-1, 0))]) == ([], 5)
    assert closed() == ([], 0)
    assert closed([((5, 5), (5, 5))])[1] == 0


@settings(max_examples=50)
@given(st.permutations(range(9)), st.lists(st.booleans(), min_size=9, max_size=9))
def test_three_triangles_from_nine_lines(order, turned):
    corners = [(3 * k, 0) for k in range(3)], [(3 * k + 1, 0) for k in range(3)]
    sides = []
    for one, two in zip(*corners):
        top = (one[0], 1)
        sides += [(one, two), (two, top), (top, one)]
    lines = [[sides[k][::-1] if turned[k] else sides[k]] for k in order]
    contours, left = closed(*lines)
    assert (len(contours), left) == (3, 0)
    assert [abs(enclosed(edges)) for edges in contours] == pytest.approx([0.5] * 3)
