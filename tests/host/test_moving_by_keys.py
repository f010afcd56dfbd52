"""Ctrl+D and the arrow keys in the editor."""

import pytest
from support.application import status
from support.desk import field
from support.events import focus
from support.neighbours import circle, slot
from tandrel.application.moving_by_keys import MovingByKeys
from tandrel.gui import i18n

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


def hold(hands, key, times, since):
    """A key that is held down, as an X server repeats it; gives the time of its release."""
    focus(hands.canvas)
    for moment in range(since, since + times):
        hands.canvas.event_generate(f"<KeyPress-{key}>", time=moment)
        hands.canvas.event_generate(f"<KeyRelease-{key}>", time=moment + 1)
    return since + times


def test_a_key_that_is_held_down_makes_one_change(hands):
    editor = hands.editor
    editor.add(SLOT)
    editor.select(0)
    before, at = list(editor.sk["entities"]), editor.history.at
    hold(hands, "Right", 5, since=1000)
    after = list(editor.sk["entities"])
    assert after[0]["xc"] == pytest.approx(CIRCLE["xc"] + 5 * 0.005)
    assert editor.history.at == at + 1
    for key, entities in (("Control-z", before), ("Control-y", after), ("Control-z", before)):
        hands.key(key)
        assert editor.sk["entities"] == entities
    hold(hands, "Right", 5, since=1000)
    hands.key("Control-d")
    hands.key("Control-z")
    assert editor.sk["entities"] == after
    hands.key("Control-z")
    # So does one that is repeated without being released.
    for moment in (2000, 2030, 2060):
        hands.canvas.event_generate("<KeyPress-Right>", time=moment)
    hands.key("Control-z")
    assert editor.sk["entities"] == before


BETWEEN = [
    ("Right", 10, lambda hands: None),
    ("Up", 0, lambda hands: None),
    ("Shift-Right", 0, lambda hands: None),
    ("Right", 0, lambda hands: hands.key("a")),
    ("Right", 0, lambda hands: hands.click(*hands.at((CIRCLE["xc"] + 0.01, 0.0)))),
    ("Right", 0, lambda hands: hands.editor.select(1)),
    ("Right", 0, lambda hands: hands.editor.apply_props()),
]


@pytest.mark.parametrize("key, later, act", BETWEEN)
def test_what_comes_after_a_held_key_is_another_change(hands, key, later, act):
    editor = hands.editor
    editor.tool.set("select")
    released = hold(hands, "Right", 2, since=1000)
    act(hands)
    once = list(editor.sk["entities"])
    *held, name = key.split("-")
    event = "-".join([*held, "KeyPress", name])
    hands.canvas.event_generate(f"<{event}>", time=released + later)
    assert editor.sk["entities"] != once
    editor.undo()
    assert editor.sk["entities"] == once


def test_a_held_key_that_moves_nothing_at_first_leaves_the_change_before_it(hands):
    editor = hands.editor
    editor.add(SLOT)
    editor.select(0)
    before = list(editor.sk["entities"])
    editor.grid.set("1e300")
    released = hold(hands, "Right", 2, since=1000)
    editor.grid.set("5")
    hold(hands, "Right", 2, since=released)
    assert editor.sk["entities"] != before
    editor.undo()
    assert editor.sk["entities"] == before


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
    assert (editor.sk["entities"], status(editor)) == ([CIRCLE, SLOT], "")


DAMAGED = [
    ("en", {**CIRCLE, "r": -1.0}, "the radius must be greater than zero"),
    ("en", {"type": "circle", "yc": 0.0, "r": 0.01}, "xc is missing"),
    ("en", {**CIRCLE, "r": True}, "Radius: not a number"),
    ("de", {"type": "circle", "yc": 0.0, "r": 0.01}, "xc fehlt"),
    ("fr", {"type": "circle", "yc": 0.0, "r": 0.01}, "xc manque"),
    ("zh", {"type": "circle", "yc": 0.0, "r": 0.01}, "缺少 xc"),
]


@pytest.mark.parametrize("key", ["Control-d", "Left"])
@pytest.mark.parametrize("language, entity, why", DAMAGED)
def test_keys_say_why_a_damaged_shape_stays(hands, catalogues, key, language, entity, why):
    editor = hands.editor
    i18n.set_language(language)
    editor.sk["entities"].append(entity)
    editor.select(2)
    hands.key(key)
    assert editor.sk["entities"] == [CIRCLE, SLOT, entity]
    act = "Not added: {why}" if key == "Control-d" else "Not moved: {why}"
    assert status(editor) == i18n.tr(act).format(why=why)
