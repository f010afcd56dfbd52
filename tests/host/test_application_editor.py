"""A click in the application's editor is no drag; a drag is that of the module."""

import copy

import pytest
from support.events import Send
from support.neighbours import rectangle
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


def test_a_click_on_nothing_and_one_after_it_move_nothing(at_work):
    hands, (x, y) = at_work(Editor)
    hands.stroke((5, 5), (30, 30))
    assert hands.editor.sel is None
    hands.stroke((x, y), (x + 1, y))
    assert hands.editor.sk["entities"] == SKETCH["entities"]
