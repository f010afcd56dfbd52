"""Lines and arcs joined to closed contours."""

import math

import pytest
from hypothesis import given, settings
from hypothesis import strategies as st
from tandrel.exchange.join import joined
from tandrel.exchange.lines import Line
from tandrel.geometry.edges import Edge
from tandrel.geometry.loops import enclosed


def made(*lines):
    return joined([Line([Edge(*edge) for edge in line], False) for line in lines], 1.0)


def closed(*lines):
    """The contours, and how many lines are in none."""
    found = made(*lines)
    return [contour.edges for contour in found.contours], found.left


def sides(*corners):
    return [[(a, b)] for a, b in zip(corners, [*corners[1:], corners[0]])]


def areas(contours):
    return sorted(abs(enclosed(edges)) for edges in contours)


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


def test_nothing_comes_of_nothing():
    assert closed() == ([], 0)
    assert closed([((5, 5), (5, 5))]) == ([], 0)


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
    assert areas(contours) == pytest.approx([0.5] * 3)


SQUARE = sides((0, 0), (1, 0), (1, 1), (0, 1))


@pytest.mark.parametrize("gap, closes", [(9e-7, 1), (9e-6, 1), (9e-5, 1), (2e-4, 0)])
def test_ends_that_do_not_quite_meet(gap, closes):
    found = made(*SQUARE[:3], [((0, 1), (0, gap))])
    assert len(found.contours) == closes
    assert found.left == (0 if closes else 4)
    assert len(found.bridged) == (1 if 1e-6 < gap < 1e-4 else 0)
    if found.bridged:
        assert math.dist(*found.bridged[0]) == pytest.approx(gap)


def test_no_gap_is_closed_across_a_better_partner():
    """Of three ends in reach of each other the nearest two meet, and the third stays open."""
    stray = [((0.0, 3e-5), (-0.5, 0.5))]
    contours, left = closed(*SQUARE[:3], [((0, 1), (1e-5, 0))], stray)
    assert (len(contours), left) == (1, 1)
    assert areas(contours) == pytest.approx([1.0], abs=1e-4)


def test_a_short_line_is_not_closed_by_its_own_ends():
    assert closed([((0, 0), (5e-5, 0))], [((3, 0), (3, 5))])[1] == 2


def test_lines_without_length_and_lines_drawn_twice_are_one():
    found = made(*SQUARE, [((1, 0), (1, 0))], SQUARE[1], [SQUARE[2][0][::-1]])
    assert areas([c.edges for c in found.contours]) == pytest.approx([1.0])
    assert (found.left, found.doubled) == (0, 2)


def test_arcs_drawn_twice_are_one_and_both_sides_of_a_circle_are_two():
    halves = [[((0, 0), (1, 0), 1.0)], [((1, 0), (0, 0), 1.0)]]
    found = made(*halves, [((1, 0), (0, 0), -1.0)])
    assert areas([c.edges for c in found.contours]) == pytest.approx([math.pi / 4])
    assert found.doubled == 1


def test_a_stray_line_at_a_corner_does_not_open_a_contour():
    contours, left = closed(*SQUARE, [((0, 0), (-1, 0))])
    assert (areas(contours), left) == (pytest.approx([1.0]), 1)


def test_faces_that_share_an_edge():
    """Two rooms and the wall between them, which ends in the middle of lines; one is round."""
    lines = [
        [((0, 0), (2, 0))],
        [((2, 0), (2, 1), 1.0)],
        [((2, 1), (0, 1))],
        [((0, 1), (0, 0))],
        [((1, 0), (1, 1))],
        [((0, 0), (1, 1))],
    ]
    contours, left = closed(*lines)
    assert left == 0
    assert areas(contours) == pytest.approx([0.5, 0.5, 1 + math.pi / 8])


def test_a_line_over_several_others():
    found = made(*SQUARE[1:], [((0, 0), (0.4, 0))], [((0.4, 0), (1, 0))], [((0, 0), (1, 0))])
    assert areas([c.edges for c in found.contours]) == pytest.approx([1.0])
    assert found.left == 0


def test_arcs_are_divided_where_lines_end_on_them():
    """A half disc on its diameter, cut by its axis."""
    half = [((1, 0), (-1, 0), 1.0)]
    contours, left = closed(half, [((-1, 0), (0, 0))], [((0, 0), (1, 0))], [((0, 0), (0, 1))])
    assert (areas(contours), left) == (pytest.approx([math.pi / 4] * 2), 0)


def test_a_tick_stops_it_where_lines_end_on_lines():
    comb = [[((k / 9, 0), (k / 9, 1))] for k in range(9)]
    told = []
    lines = [Line([Edge(*edge) for edge in line], False) for line in [*comb, [((0, 0), (1, 0))]]]
    joined(lines, 1.0, told.append)
    assert told == sorted(told) and len(told) > 10 and told[-1] <= 1


def test_what_is_as_thin_as_a_gap_is_no_face():
    """A side drawn again by way of a point a little beside it."""
    again = [((1, 0), (1 + 5e-5, 0.5))], [((1 + 5e-5, 0.5), (1, 1))]
    contours, left = closed(*SQUARE, *again)
    assert (areas(contours), left) == (pytest.approx([1.0], abs=1e-4), 0)


def test_a_line_with_many_points_is_not_closed_by_its_own_inner_ones():
    fine = [(0, 0), (1, 0), (1, 1), (0, 1), (0, 1.4e-4), (0, 1.1e-4), (0, 8e-5)]
    contours, left = closed([(a, b) for a, b in zip(fine, fine[1:])])
    assert (areas(contours), left) == (pytest.approx([1.0], abs=1e-4), 0)
