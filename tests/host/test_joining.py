"""Lines and arcs joined to closed contours."""

import math
from functools import partial

import pytest
from hypothesis import given, settings
from hypothesis import strategies as st
from pytest import approx
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


near = partial(approx, abs=1e-4)
SQUARE = sides((0, 0), (1, 0), (1, 1), (0, 1))
WALLS = [
    [((0, 0), (2, 0))],
    [((2, 0), (2, 1), 1.0)],
    [((2, 1), (0, 1))],
    [((0, 1), (0, 0))],
    [((1, 0), (1, 1))],
    [((0, 0), (1, 1))],
]
FINE = [(0, 0), (1, 0), (1, 1), (0, 1), (0, 1.4e-4), (0, 1.1e-4), (0, 8e-5)]
HALF_DISC = [((1, 0), (-1, 0), 1.0)]
HALF, QUARTER = math.pi / 8, math.pi / 4  # of a disc of this diameter and of one of this radius
# What is drawn, the areas of what it is joined to, and how many lines are left.
JOINED = {
    "in any order and direction": (
        [[((0, 0), (1, 0))], [((1, 1), (0, 0))], [((1, 1 + 1e-7), (1, 1e-7))]],
        approx([0.5]),
        0,
    ),
    "an arc turned round keeps its sense": (
        [[((0, 0), (1, 0))], [((0, 0), (1, 0), -1.0)]],
        approx([HALF]),
        0,
    ),
    "a line that closes itself": (
        [[((0, 0), (1, 0)), ((1, 0), (0, 1)), ((0, 1), (0, 0))]],
        approx([0.5]),
        0,
    ),
    "nothing": ([], approx([]), 0),
    "a point": ([[((5, 5), (5, 5))]], approx([]), 0),
    # Of three ends in reach of each other the nearest two meet, and the third stays open.
    "no gap is closed across a better partner": (
        [*SQUARE[:3], [((0, 1), (1e-5, 0))], [((0.0, 3e-5), (-0.5, 0.5))]],
        near([1.0]),
        1,
    ),
    "a short line is not closed by its own ends": (
        [[((0, 0), (5e-5, 0))], [((3, 0), (3, 5))]],
        approx([]),
        2,
    ),
    "nor a line by its own inner points": ([list(zip(FINE, FINE[1:]))], near([1.0]), 0),
    "a stray line at a corner": ([*SQUARE, [((0, 0), (-1, 0))]], approx([1.0]), 1),
    "walls that end in the middle of lines": (WALLS, approx([0.5, 0.5, 1 + HALF]), 0),
    "a line over several others": (
        [*SQUARE[1:], [((0, 0), (0.4, 0))], [((0.4, 0), (1, 0))], [((0, 0), (1, 0))]],
        approx([1.0]),
        0,
    ),
    "a half disc cut by its axis": (
        [HALF_DISC, [((-1, 0), (0, 0))], [((0, 0), (1, 0))], [((0, 0), (0, 1))]],
        approx([QUARTER, QUARTER]),
        0,
    ),
    # A side drawn again by way of a point a little beside it.
    "what is as thin as a gap is no face": (
        [*SQUARE, [((1, 0), (1 + 5e-5, 0.5))], [((1 + 5e-5, 0.5), (1, 1))]],
        near([1.0]),
        0,
    ),
}


@pytest.mark.parametrize("lines, found, left", JOINED.values(), ids=JOINED)
def test_lines_are_joined_to_contours(lines, found, left):
    contours, left_over = closed(*lines)
    assert (areas(contours), left_over) == (found, left)


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
    assert areas(contours) == approx([0.5] * 3)


@pytest.mark.parametrize("gap, closes", [(9e-7, 1), (9e-6, 1), (9e-5, 1), (2e-4, 0)])
def test_ends_that_do_not_quite_meet(gap, closes):
    found = made(*SQUARE[:3], [((0, 1), (0, gap))])
    assert len(found.contours) == closes
    assert found.left == (0 if closes else 4)
    assert len(found.bridged) == (1 if 1e-6 < gap < 1e-4 else 0)
    if found.bridged:
        assert math.dist(*found.bridged[0]) == approx(gap)


def test_lines_without_length_and_lines_drawn_twice_are_one():
    found = made(*SQUARE, [((1, 0), (1, 0))], SQUARE[1], [SQUARE[2][0][::-1]])
    assert areas([c.edges for c in found.contours]) == approx([1.0])
    assert (found.left, found.doubled) == (0, 2)


def test_arcs_drawn_twice_are_one_and_both_sides_of_a_circle_are_two():
    halves = [[((0, 0), (1, 0), 1.0)], [((1, 0), (0, 0), 1.0)]]
    found = made(*halves, [((1, 0), (0, 0), -1.0)])
    assert areas([c.edges for c in found.contours]) == approx([math.pi / 4])
    assert found.doubled == 1


def test_a_tick_stops_it_where_lines_end_on_lines():
    comb = [[((k / 9, 0), (k / 9, 1))] for k in range(9)]
    told = []
    lines = [Line([Edge(*edge) for edge in line], False) for line in [*comb, [((0, 0), (1, 0))]]]
    joined(lines, 1.0, tick=told.append)
    assert told == sorted(told) and len(told) > 10 and told[-1] <= 1
