"""Undo and redo in the editor: every change, with the selection; a drag is one."""

import copy

import pytest
from support.desk import field
from support.events import focus, settle
from support.neighbours import circle, polygon, rectangle
from support.shapes import sketch
from tandrel.application.history import MOST, History, State, Undoing

SKETCH = sketch(rectangle(0.0, 0.0, 0.1, 0.05), circle(0.05, 0.02, 0.01))


def states(*numbers):
    return [State((number,), "XY", None) for number in numbers]


def test_states_come_back_one_by_one():
    one, two, three, other = states(1, 2, 3, 4)
    history = History(one)
    assert history.note(two) and history.note(three)
    assert [history.step(by) for by in (-1, -1, -1, 1, 1, 1)] == [two, one, None, two, three, None]
    history.step(-1)
    assert history.note(other)
    assert history.step(1) is None
    assert [history.step(-1), history.step(-1)] == [two, one]


def test_another_selection_is_no_step_but_is_remembered():
    (one, two), history = states(1, 2), History(State((1,), "XY", 0))
    assert not history.note(one._replace(selected=5))
    history.note(two)
    assert history.step(-1).selected == 5


def test_the_oldest_states_go_where_there_are_too_many():
    history = History(State((0,), "XY", None))
    for state in states(*range(1, MOST + 10)):
        history.note(state)
    steps = 0
    while history.step(-1):
        steps += 1
    assert (steps, history.present.entities, history.first.entities) == (MOST - 1, (10,), (0,))


@pytest.fixture
def hands(habit):
    """A user at an editor with undo, and with nothing else of the application's."""
    hands = habit(Undoing, *SKETCH["entities"])
    editor, hands.editor.changes = hands.editor, []
    editor.changed = lambda: editor.changes.append(copy.deepcopy(editor.sk))
    return hands


def draw(hands):
    hands.editor.tool.set("circle")
    hands.stroke((30, 30), (40, 40), (50, 50))


def drag(hands):
    x, y = hands.at((0.02, 0.02))
    hands.stroke((x, y), (x + 10, y), (x + 30, y + 20), (x + 60, y))


def type_in(hands):
    hands.editor.vars["r"].set("7")
    hands.editor.apply_props()


def change_plane(hands):
    hands.editor.plane.set("YZ")
    hands.editor._plane_changed()
    hands.editor.redraw()


CHANGES = [draw, drag, type_in, lambda hands: hands.key("Delete"), change_plane]


@pytest.mark.parametrize("change", CHANGES)
def test_a_change_is_one_step_there_and_back(hands, change):
    editor = hands.editor
    editor.select(1)
    before = copy.deepcopy((editor.sk, editor.sel))
    change(hands)
    after = copy.deepcopy((editor.sk, editor.sel))
    assert after[0] != before[0]
    hands.key("Control-z")
    undone = copy.deepcopy((editor.sk, editor.sel))
    hands.key("Control-y")
    redone = copy.deepcopy((editor.sk, editor.sel))
    hands.key("Control-z")
    hands.key("Control-Shift-Z")
    hands.key("Control-z")
    if change is drag:
        # It began with a press that selected the plate.
        before = (before[0], 0)
    assert (undone, redone) == (before, after)
    assert (editor.sk, editor.sel) == before
    assert editor.changes == [after[0], before[0]] * 3
    assert editor.plane.get() == editor.sk["plane"] == "XY"
    assert [editor.list.selection()] == [(str(editor.sel),)]
    assert set(editor.vars) == set(before[0]["entities"][editor.sel]) - {"type"}


def test_nothing_is_undone_while_the_pointer_has_a_shape(hands):
    editor = hands.editor
    hands.key("Delete")
    editor.select(1)
    hands.key("Delete")
    hands.press(*hands.at((0.02, 0.02)))
    hands.key("Control-z")
    assert len(editor.sk["entities"]) == 1
    hands.release(*hands.at((0.02, 0.02)))
    hands.key("Control-z")
    assert editor.sk == SKETCH


def test_there_is_an_end_to_undo_and_redo(hands):
    for key in ("Control-z", "Control-y"):
        hands.key(key)
        assert hands.editor.sk == SKETCH


def test_the_sketch_handed_back_is_the_one_shown(hands):
    editor = hands.editor
    editor.select(1)
    hands.key("Delete")
    hands.key("Control-z")
    editor.ok()
    assert editor.result == SKETCH


def test_a_field_has_its_own_paste_and_no_undo(hands):
    editor = hands.editor
    hands.key("Delete")
    editor.select(1)
    type_in(hands)
    for key in ("Control-z", "Control-y"):
        hands.key(key, field(editor, "r"))
        assert editor.sk == SKETCH
    hands.key("Control-y")
    assert editor.sk != SKETCH


def test_undo_in_a_field_leaves_the_keyboard_to_that(hands):
    editor = hands.editor
    editor.select(1)
    editor.vars["r"].set("17")
    editor.apply_props()
    before = field(editor, "r")
    focus(before)
    before.icursor(1)
    hands.key("Control-z", before)
    settle(editor, lambda: editor.focus_get() is field(editor, "r"))
    assert not before.winfo_exists()
    hands.key("BackSpace", editor.focus_get())
    assert (editor.sk, editor.vars["r"].get()) == (SKETCH, "0")


def test_undo_in_the_corners_leaves_the_keyboard_to_them(hands):
    editor = hands.editor
    editor.add(polygon((0.0, 0.1), (0.02, 0.1), (0.0, 0.12)))
    editor.vars["radius"].set("1")
    editor.apply_props()
    editor.points_text.mark_set("insert", "2.1")
    hands.key("Control-z", editor.points_text)
    settle(editor, lambda: editor.focus_get() is editor.points_text)
    hands.key("BackSpace", editor.points_text)
    assert editor.points_text.get("1.0", "end-1c") == "0 100\n0 100\n0 120"
    assert [e["type"] for e in editor.sk["entities"]] == ["rectangle", "circle", "polygon"]


def test_undo_in_a_field_goes_on_to_the_form_of_another_shape(hands):
    editor = hands.editor
    editor.select(1)
    type_in(hands)
    editor.select(0)
    hands.key("Control-z", field(editor, "radius"))
    assert editor.sel == 1
    settle(editor, lambda: editor.focus_get() is field(editor, "r"))
    # Or to none.
    editor.select(None)
    editor.add(circle(0.02, 0.02, 0.004))
    hands.key("Control-z", field(editor, "r"))
    assert (editor.sk, editor.sel) == (SKETCH, None)


def test_undo_in_a_field_goes_on_to_the_corners_and_from_there(hands):
    """Places in a text are numbered otherwise than those in a line."""
    editor = hands.editor
    editor.add(polygon((0.0, 0.1), (0.02, 0.1), (0.0, 0.12)))
    editor.vars["radius"].set("1")
    editor.apply_props()
    editor.select(1)
    hands.key("Control-z", field(editor, "r"))
    settle(editor, lambda: editor.focus_get() is editor.points_text)
    hands.key("BackSpace", editor.points_text)
    assert editor.points_text.get("1.0", "end-1c") == "0 100\n20 100\n0 12"
    editor.select(1)
    type_in(hands)
    editor.select(2)
    hands.key("Control-z", editor.points_text)
    assert editor.sel == 1
    settle(editor, lambda: editor.focus_get() is field(editor, "yc"))
    hands.key("BackSpace", editor.focus_get())
    assert editor.vars["yc"].get() == "2"
