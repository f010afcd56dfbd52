"""The grid suits the unit, and what is drawn agrees with what is said."""

from itertools import islice

import pytest
from support.application import status
from support.canvas import of_kind
from support.events import Send
from support.neighbours import circle
from tandrel.application.unit_grid import UnitGrid, line_step, steps
from tandrel.gui import widgets
from tandrel.gui.widgets import units


@pytest.mark.parametrize(
    "first, unit, found",
    [
        (1, "mm", [1, 2, 5, 10, 20]),
        (7, "mm", [5, 10, 20]),
        (0.03, "m", [0.02, 0.05, 0.1]),
        (0.0393701, "in", [1 / 32, 1 / 16, 1 / 8, 1 / 4, 1 / 2, 1, 2, 5]),
        (3.9, "in", [2, 5, 10]),
        (0.0156, "in", [0.01, 0.02]),
        (1 / 64, "in", [1 / 64, 1 / 32]),
    ],
)
def test_steps_are_those_of_rulers(first, unit, found):
    assert list(islice(steps(first, unit), len(found))) == found


@pytest.mark.parametrize(
    "step, least, unit, lines",
    [
        (1, 0.5, "mm", 1),
        (1, 1.5, "mm", 2),
        (1, 2.5, "mm", 5),
        (2, 3, "mm", 10),
        (5, 11, "mm", 20),
        (3, 7, "mm", 15),
        (1 / 32, 0.1, "in", 1 / 8),
        (1 / 64, 0.6, "in", 1),
        (0.01, 0.04, "in", 0.05),
    ],
)
def test_lines_are_a_whole_number_of_steps_apart(step, least, unit, lines):
    assert line_step(step, least, unit) == pytest.approx(lines)


@pytest.fixture
def open_one(habit):
    def open_in(unit, size=0.1):
        widgets.set_units(unit)
        return habit(UnitGrid, circle(r=size / 2)).editor

    return open_in


@pytest.mark.parametrize(
    "unit, size, text",
    [("mm", 0.1, "1"), ("cm", 3.0, "10"), ("in", 0.1, "0.03125"), ("in", 3.0, "2")],
)
def test_the_step_offered_suits_the_unit(open_one, unit, size, text):
    editor = open_one(unit, size)
    assert editor.grid.get() == text
    assert editor.grid_step() == units().to_si(float(text), "length")


def line_distances(editor):
    """How far apart the vertical grid lines are, in the display unit."""
    xs = [line.coords[0] for line in of_kind(editor.canvas, "line", fill=widgets.PAL["bg"])]
    xs = [x for x in xs if xs.count(x) == 1]
    return {round(units().from_si((b - a) / editor.scale, "length"), 6) for a, b in zip(xs, xs[1:])}


LINES = {
    "mm": [
        ("1", 10, "Grid 1 mm", 1),
        ("1", 6, "Grid 1 mm, lines 2 mm", 2),
        ("1", 0.3, "Grid 1 mm, lines 50 mm", 50),
        ("3", 1, "Grid 3 mm, lines 15 mm", 15),
    ],
    "in": [("0.03125", 4, "Grid 0.03125 in, lines 0.125 in", 0.125)],
}


@pytest.mark.parametrize("unit", LINES)
def test_the_status_line_says_what_is_drawn(open_one, unit):
    editor = open_one(unit)
    for text, zoom, said, lines in LINES[unit]:
        editor.grid.set(text)
        editor.scale = zoom * 1000.0
        Send(editor).motion(100, 100)
        assert said in status(editor).split("     ")
        assert line_distances(editor) == {lines}
        # What snaps is the step itself.
        assert editor.grid_step() == units().to_si(float(text), "length")


def test_a_view_beyond_all_numbers_is_painted(open_one):
    editor = open_one("mm")
    for scale in (1e-300, 1e-9, 1e9):
        editor.scale = scale
        Send(editor).motion(100, 100)
        assert "Grid 1 mm" in status(editor)
