"""Ctrl+D and the arrow keys in the editor."""

import copy

import pytest
from support.application import status
from support.desk import field
from support.neighbours import circle, slot
from tandrel.application.moving_by_keys import MovingByKeys

CIRCLE, SLOT = circle(0.02, 0.0, 0.01), slot(0.0, 0.05, 0.02, 0.05, 0.004)


@pytest.fixture
def hands(habit):
    hands = habit(MovingByKeys, CIRCLE, SLOT)
    hands.editor.grid.set("5")
    hands.editor.select(0)
    return hands


def test_a_duplicate_lies_one_step_aside_and_is_selected(hands):
    editor = hands.editor
    hands.key("Control-d", editor.list)
    assert editor.sk["entities"] == [CIRCLE, SLOT, {**CIRCLE, "xc": 0.025}]
    assert editor.sel == 2
    hands.key("Control-d")
    assert editor.sk["entities"][3] == {**CIRCLE, "xc": 0.025 + 0.005}


STEPS = {
    "Right": (0.005, 0.0),
    "Left": (-0.005, 0.0),
    "Up": (0.0, 0.005),
    "Down": (0.0, -0.005),
    "Shift-Right": (0.0005, 0.0),
    "Shift-Up": (0.0, 0.0005),
}


def test_an_arrow_key_moves_the_selected_shape(hands):
    editor = hands.editor
    for key, (u, v) in STEPS.items():
        editor.sk["entities"][0] = CIRCLE
        hands.key(key)
        moved = {**CIRCLE, "xc": CIRCLE["xc"] + u, "yc": CIRCLE["yc"] + v}
        assert editor.sk["entities"] == [moved, SLOT]
        assert float(editor.vars["xc"].get()) == pytest.approx(moved["xc"] * 1000)


def test_keys_of_fields_and_of_the_list_are_theirs(hands):
    editor = hands.editor
    for key in ("Control-d", "Left", "Shift-Up"):
        hands.key(key, field(editor, "xc"))
        assert editor.sk["entities"] == [CIRCLE, SLOT]
    editor.list.focus("0")
    hands.key("Down", editor.list)
    editor.update()
    assert (editor.sk["entities"], editor.sel) == ([CIRCLE, SLOT], 1)


@pytest.mark.parametrize("key", ["Control-d", "Left", "Shift-Down"])
@pytest.mark.parametrize("grid", ["1e300", "1e15"])
def test_a_shape_stays_where_it_could_not_be_beyond(hands, key, grid):
    editor = hands.editor
    editor.grid.set(grid)
    hands.key(key)
    hands.motion(100, 100)
    assert (editor.sk["entities"], editor.sel) == ([CIRCLE, SLOT], 0)
    act = "added" if key == "Control-d" else "moved"
    assert status(editor).startswith(f"Not {act}: ")
    editor.grid.set("5")
    hands.key("Right")
    hands.motion(100, 100)
    assert status(editor).startswith("x = ")


@pytest.mark.parametrize("key", ["Control-d", "Left"])
def test_nothing_happens_without_a_shape_or_while_the_pointer_has_it(hands, key):
    editor = hands.editor
    editor.tool.set("select")
    hands.press(*hands.at((0.02, 0.0)))
    assert editor.drag
    hands.key(key)
    hands.release(*hands.at((0.02, 0.0)))
    for index in (None, 7):
        editor.select(index)
        hands.key(key)
    editor.sk["entities"].append({**CIRCLE, "r": -1.0})
    editor.select(2)
    before = copy.deepcopy(editor.sk["entities"])
    hands.key(key)
    assert editor.sk["entities"] == before == [CIRCLE, SLOT, {**CIRCLE, "r": -1.0}]
