"""What was snapped stands in the sketch as it was snapped."""

import math

import pytest
from tandrel.application.without_dust import WithoutDust, dusted

THIRD = 0.01 / 3


@pytest.mark.parametrize(
    "value, tidy",
    [
        (36 * 0.001, 0.036),
        (0.036 - 0.012, 0.024),
        (0.1 + 0.2 - 0.3, 0.0),
        (0.3 - 0.1 - 0.2, 0.0),
        (-0.0, 0.0),
        (-3 * 0.1, -0.3),
        (THIRD, THIRD),
        (math.sqrt(2) / 100, math.sqrt(2) / 100),
        (1 / 64 * 0.0254, 0.000396875),
        ({"n": 6, "points": [[3 * 0.1, 0.0]]}, {"n": 6, "points": [[0.3, 0.0]]}),
    ],
)
def test_only_dust_goes(value, tidy):
    assert repr(dusted(value)) == repr(tidy)


def test_numbers_that_are_none_stay():
    assert [str(dusted(n)) for n in (math.inf, math.nan)] == ["inf", "nan"]


@pytest.fixture
def hands(habit):
    hands = habit(WithoutDust)
    editor = hands.editor
    editor.scale, editor.centre = 8000.0, editor.centre + [0.03, 0.02]
    editor.redraw()
    return hands


def test_drawn_and_moved_shapes_have_the_numbers_of_the_grid(hands):
    editor = hands.editor
    for tool in ("rectangle", "circle"):
        editor.tool.set(tool)
        hands.stroke(*map(hands.at, [(0.009, 0.003), (0.02, 0.02), (0.036, 0.003 + 0.036)]))
    editor.tool.set("line")
    for corner in ((0.041, 0.0), (0.057, 0.0), (0.049, 0.023)):
        hands.click(*hands.at(corner))
    editor.close_line()
    drawn = editor.sk["entities"]
    assert [(e["x"], e["w"], e["h"]) for e in drawn[:1]] == [(0.009, 0.027, 0.036)]
    assert drawn[2]["points"] == [[0.041, 0.0], [0.057, 0.0], [0.049, 0.023]]
    editor.tool.set("select")
    hands.stroke(*map(hands.at, [(0.049, 0.006), (0.03, 0.01), (0.056, 0.009)]))
    assert editor.sk["entities"][2]["points"] == [[0.048, 0.003], [0.064, 0.003], [0.056, 0.026]]
