"""The application's editor as a whole: clicks and drags, what its habits do together, its list."""

import copy

import pytest
from support.application import status
from support.desk import field, rearranged
from support.events import Send, focus, settle, type_text
from support.neighbours import rectangle
from support.widgets import button
from tandrel.application.editor import CLICK_PX, Editor
from tandrel.gui import widgets
from tandrel.gui.sketcher import SketchEditor

SKETCH = {"entities": [rectangle(0.0, 0.0, 0.1, 0.05, 0.0)]}
WAY_AND_BACK = [(3, 0), (0, 3), (7, 2), (40, -30), (1, 1)]


class Plain(Editor):
    """The module's way with the pointer, in the same layout."""

    _press = SketchEditor._press
    _drag = SketchEditor._drag


@pytest.fixture
def at_work(open_editor, root):
    """at_work(cls): a user's hands on an editor with a fine grid, and where they begin."""

    def begin(cls, tool="select", parent=root):
        widgets.install(parent)
        editor = open_editor(copy.deepcopy(SKETCH), cls, parent)
        editor.geometry("900x700")
        editor.update()
        editor.fit()
        editor.tool.set(tool)
        editor.grid.set("0.1")
        hands = Send(editor)
        return hands, hands.at((0.02, 0.011))

    return begin


def stroke(at_work, cls, steps):
    """The shapes after each step away from the press, and after the release at the last."""
    hands, (x, y) = at_work(cls)
    hands.press(x, y)
    seen = []
    for dx, dy in steps:
        hands.drag(x + dx, y + dy)
        seen.append(copy.deepcopy(hands.editor.sk["entities"]))
    hands.release(x + steps[-1][0], y + steps[-1][1])
    return [*seen, hands.editor.sk["entities"]]


@pytest.mark.parametrize("scale", [1, 2])
def test_a_press_is_a_click_until_the_pointer_has_left_it(at_work, root, large_root, scale):
    hands, (x, y) = at_work(Editor, parent={1: root, 2: large_root}[scale])
    editor, before = hands.editor, copy.deepcopy(SKETCH["entities"])
    hands.press(x, y)
    for dx, dy in ((1, 0), (0, CLICK_PX * scale - 1), (-CLICK_PX * scale + 1, 0)):
        hands.drag(x + dx, y + dy)
        assert editor.sk["entities"] == before
    hands.release(x + 1, y)
    assert (editor.sk["entities"], editor.sel, editor.drag) == (before, 0, None)
    assert len(editor.vars) == 5
    hands.press(x, y)
    hands.drag(x + CLICK_PX * scale, y)
    assert editor.sk["entities"] != before


def test_a_drag_is_that_of_the_module(at_work):
    ours, theirs = (stroke(at_work, cls, WAY_AND_BACK) for cls in (Editor, Plain))
    clicked = 2
    assert ours[clicked:] == theirs[clicked:]
    assert ours[:clicked] == clicked * [SKETCH["entities"]] != theirs[:clicked]
    # It goes on to follow where the pointer comes back to the press.
    assert ours[-1] != SKETCH["entities"]


@pytest.mark.parametrize("tool", ["rectangle", "circle", "regular"])
def test_what_is_drawn_follows_the_pointer_at_once(at_work, tool):
    hands, (x, y) = at_work(Editor, tool)
    hands.press(x, y)
    hands.drag(x + 1, y + 2)
    editor = hands.editor
    assert (editor.cursor == editor.snapped(x + 1, y + 2)).all()
    assert (editor.cursor != editor.snapped(x, y)).any()
    hands.release(x + 1, y + 2)
    assert len(editor.sk["entities"]) == 2


def test_the_shape_that_the_pointer_has_stays_selected(at_work):
    hands, (x, y) = at_work(Editor)
    editor = hands.editor
    editor.add({"type": "circle", "xc": 0.05, "yc": 0.04, "r": 0.004})
    circle = dict(editor.sk["entities"][1])
    hands.press(x, y)
    editor.list.selection_set("1")
    editor.update()
    hands.drag(x + 30, y)
    editor.update()
    assert (editor.sel, editor.list.selection()) == (0, ("0",))
    assert editor.sk["entities"][1] == circle and editor.sk["entities"][0] != SKETCH["entities"][0]


def test_a_shape_goes_back_where_its_move_is_abandoned(at_work):
    hands, (x, y) = at_work(Editor)
    editor = hands.editor
    hands.press(x, y)
    hands.drag(x + 30, y)
    assert editor.sk["entities"] != SKETCH["entities"]
    hands.key("Escape")
    hands.drag(x + 40, y)
    hands.release(x + 40, y)
    assert editor.sk["entities"] == SKETCH["entities"]
    assert editor.vars["x"].get() == "0" and not editor.history.step(-1)


def test_a_click_on_nothing_and_one_after_it_move_nothing(at_work):
    hands, (x, y) = at_work(Editor)
    hands.stroke((5, 5), (30, 30))
    assert hands.editor.sel is None
    hands.stroke((x, y), (x + 1, y))
    assert hands.editor.sk["entities"] == SKETCH["entities"]


# What its habits do together.


def test_undo_takes_back_first_what_is_no_change_yet(at_work):
    hands, _ = at_work(Editor, "line")
    editor = hands.editor
    editor.add({"type": "circle", "xc": 0.02, "yc": 0.01, "r": 0.004})
    editor.vars["r"].set("5")
    editor.apply_props()
    editor.vars["r"].set("6")
    hands.click(20, 20)
    (corner,) = editor.clicks
    hands.key("Control-z")
    assert (editor.clicks, editor.vars["r"].get()) == ([], "6")
    hands.key("Control-y")
    assert editor.clicks == [corner]
    hands.key("Control-z")
    hands.key("Control-z")
    assert (editor.vars["r"].get(), editor.sk["entities"][1]["r"]) == ("5", 0.005)
    hands.key("Control-z")
    assert editor.sk["entities"][1]["r"] == 0.004
    hands.key("Control-z")
    assert editor.sk["entities"] == SKETCH["entities"]


def test_the_number_pad_s_enter_is_the_other_one(at_work):
    hands, _ = at_work(Editor, "line")
    editor = hands.editor
    editor.select(0)
    entry = field(editor, "w")
    type_text(entry, "80")
    hands.key("KP_Enter", entry)
    assert editor.sk["entities"][0]["w"] == 0.08
    for corner in ((20, 20), (40, 20), (20, 40)):
        hands.click(*corner)
    hands.key("KP_Enter")
    assert [e["type"] for e in editor.sk["entities"]] == ["rectangle", "polygon"]
    box = editor.points_text
    box.mark_set("insert", "end")
    hands.key("KP_Enter", box)
    assert box.get("1.0", "end").count("\n") == 4


def test_changes_taken_back_after_corners_are_made_again_before_them(at_work):
    hands, _ = at_work(Editor, "line")
    editor = hands.editor
    editor.select(0)
    editor.delete()
    hands.click(20, 20)
    (corner,) = editor.clicks
    for key, clicks, shapes in (
        ("Control-z", [], []),
        ("Control-z", [], SKETCH["entities"]),
        ("Control-y", [], []),
        ("Control-y", [corner], []),
    ):
        hands.key(key)
        assert (editor.clicks, editor.sk["entities"]) == (clicks, shapes)


def test_a_size_that_drawing_on_applies_is_a_step_of_its_own(at_work):
    hands, (x, y) = at_work(Editor, "circle")
    editor = hands.editor
    editor.select(0)
    editor.vars["w"].set("80")
    hands.stroke((x, y), (x + 20, y), (x + 40, y))
    assert [e["type"] for e in editor.sk["entities"]] == ["rectangle", "circle"]
    hands.key("Control-z")
    assert editor.sk["entities"] == [{**SKETCH["entities"][0], "w": 0.08}]
    hands.key("Control-z")
    assert editor.sk["entities"] == SKETCH["entities"]


def test_the_button_deletes_whatever_has_the_keyboard(at_work):
    hands, _ = at_work(Editor)
    editor = hands.editor
    editor.select(0)
    for widget in (field(editor, "w"), *editor._entries(editor.grid)):
        focus(widget)
        hands.key("Delete", widget)
        assert len(editor.sk["entities"]) == 1
        button(editor, "Delete").invoke()
        assert editor.sk["entities"] == []
        editor.undo()


def test_the_button_deletes_wherever_it_stands(at_work):
    hands, _ = at_work(rearranged(Editor, "Delete"))
    editor = hands.editor
    editor.select(0)
    focus(field(editor, "w"))
    button(editor, "Delete").invoke()
    assert editor.sk["entities"] == []


def test_what_was_refused_stays_away_once_it_was_mended_and_that_undone(at_work):
    hands, _ = at_work(Editor)
    editor = hands.editor
    editor.select(0)
    for text in ("wide", "80"):
        entry = field(editor, "w")
        type_text(entry, text)
        hands.key("Return", entry)
    hands.key("Control-z")
    assert (editor.vars["w"].get(), editor.sk["entities"]) == ("100", SKETCH["entities"])


def test_undo_in_a_field_costs_no_shape(at_work):
    hands, _ = at_work(Editor)
    editor = hands.editor
    editor.select(0)
    type_text(field(editor, "w"), "80")
    hands.key("Return", field(editor, "w"))
    hands.key("Control-z", field(editor, "w"))
    settle(editor, lambda: editor.focus_get() is field(editor, "w"))
    for name in ("End", "BackSpace", "Delete"):
        hands.key(name, editor.focus_get())
    assert (editor.vars["w"].get(), editor.sk["entities"]) == ("10", SKETCH["entities"])


def test_a_held_arrow_key_is_undone_at_once(at_work):
    hands, _ = at_work(Editor)
    editor = hands.editor
    editor.select(0)
    editor.vars["w"].set("80")
    focus(editor.canvas)
    for moment in range(1000, 1004):
        editor.canvas.event_generate("<KeyPress-Right>", time=moment)
        editor.canvas.event_generate("<KeyRelease-Right>", time=moment + 1)
    assert editor.sk["entities"] == [{**SKETCH["entities"][0], "w": 0.08, "x": 0.0004}]
    hands.key("Control-z")
    assert editor.sk["entities"] == [{**SKETCH["entities"][0], "w": 0.08}]
    hands.key("Control-z")
    assert editor.sk["entities"] == SKETCH["entities"]


@pytest.mark.parametrize("name", ["grid", "offset"])
def test_undo_in_a_field_over_the_drawing_is_that_of_its_text(at_work, name):
    hands, _ = at_work(Editor)
    editor, variable = hands.editor, getattr(hands.editor, name)
    (entry,) = editor._entries(variable)
    before = variable.get()
    editor.select(0)
    editor.delete()
    type_text(entry, "25")
    hands.key("Control-z", entry)
    assert (variable.get(), editor.sk["entities"]) == (before, [])
    hands.key("Control-z", entry)
    assert editor.sk["entities"] == SKETCH["entities"]
    type_text(entry, "1/2 in")
    hands.key("Return", entry)
    editor.update()
    assert variable.get() == "12.7" and editor.focus_get() is editor.canvas


@pytest.mark.parametrize("tool, count", [("select", 1), ("circle", 2), ("slot", 1)])
def test_a_drag_right_after_a_click_is_one(at_work, tool, count):
    hands, (x, y) = at_work(Editor, tool)
    stamp = next(hands.clock)
    for moment in (stamp, stamp + 50):
        hands.canvas.event_generate("<ButtonPress-1>", x=x, y=y, time=moment)
        if moment == stamp:
            hands.release(x, y)
    hands.drag(x + 20, y)
    hands.drag(x + 40, y)
    hands.release(x + 40, y)
    shapes = hands.editor.sk["entities"]
    assert len(shapes) == count
    assert (shapes[0] != SKETCH["entities"][0]) == (tool == "select")


def test_redo_and_moving_lose_nothing_that_is_typed(at_work):
    hands, _ = at_work(Editor)
    editor = hands.editor
    editor.select(0)
    for way in ("Right", "Left"):
        hands.key(way)
    editor.undo()
    editor.vars["w"].set("90")
    hands.key("Control-Y")
    assert editor.vars["w"].get() == "90" and editor.sk["entities"][0]["x"] == 0.0001
    assert status(editor).startswith("Apply what you typed first")
    hands.key("Control-z")
    hands.key("Control-y")
    assert editor.sk["entities"] == SKETCH["entities"]
    for key, typed, widths in (("Up", "91", [0.091]), ("Control-d", "92", [0.092, 0.092])):
        editor.vars["w"].set(typed)
        hands.key(key)
        assert [e["w"] for e in editor.sk["entities"]] == widths
        assert editor.sk["entities"][-1]["y"] == 0.0001


def test_a_sum_in_the_grid_is_what_snaps_and_what_is_drawn(at_work):
    hands, (x, y) = at_work(Editor)
    editor = hands.editor
    editor.grid.set("10/4")
    assert editor.snapped(x, y).tolist() == pytest.approx([0.02, 0.01], abs=1e-15)
    hands.motion(x, y)
    assert "Grid 2.5 mm" in status(editor)


def test_a_reason_lasts_and_then_the_grid_is_told_again(at_work):
    hands, (x, y) = at_work(Editor)
    hands.editor.offset.set("far")
    hands.editor.ok()
    hands.motion(x, y)
    assert "far" in status(hands.editor)
    hands.key("a")
    hands.motion(x, y)
    assert "Grid 0.1 mm" in status(hands.editor)


# The list.

MANY = [{"type": "circle", "xc": 0.01 * k, "yc": 0.0, "r": 0.004} for k in range(40)]


@pytest.fixture
def long_list(open_editor, root):
    widgets.install(root)
    editor = open_editor({"entities": copy.deepcopy(MANY)}, Editor, root)
    editor.geometry("900x600")
    editor.update()
    return Send(editor)


def test_a_scroll_bar_moves_the_list(long_list):
    editor = long_list.editor
    rows = editor.list
    (bar,) = [w for w in rows.master.winfo_children() if w.winfo_class() == "TScrollbar"]
    assert bar.winfo_viewable() and bar.get() == rows.yview() != (0.0, 1.0)
    # Beside the rows, whose last column it would hide.
    assert bar.winfo_x() == rows.winfo_x() + rows.winfo_width()
    assert bar.winfo_x() + bar.winfo_width() <= rows.master.winfo_width()
    x, y = bar.winfo_width() // 2, bar.winfo_height() - 3
    bar.event_generate("<ButtonPress-1>", x=x, y=y)
    bar.event_generate("<ButtonRelease-1>", x=x, y=y)
    editor.update()
    assert rows.yview()[0] > 0 and bar.get() == rows.yview()


def test_the_selected_row_is_in_sight_and_rows_keep_their_places(long_list):
    editor = long_list.editor
    rows = editor.list
    editor.select(30)
    editor.update()
    assert rows.bbox("30")
    places = [rows.bbox(row) for row in rows.get_children()]
    assert not rows.bbox("0")
    editor.select(29)
    editor.update()
    assert [rows.bbox(row) for row in rows.get_children()] == places
    long_list.key("Up", rows)
    editor.update()
    assert editor.sel == 28
    # Also from a row that was chosen while a size was typed and not applied.
    editor.vars["r"].set("5")
    rows.selection_set("30")
    editor.update()
    long_list.key("Up", rows)
    editor.update()
    assert (editor.sel, editor.sk["entities"][28]["r"]) == (29, 0.005)
    editor.select(28)
    long_list.stroke(*(long_list.at((0.28, v)) for v in (0.0, 0.01, 0.02)))
    editor.update()
    assert [rows.bbox(row) for row in rows.get_children()] == places
