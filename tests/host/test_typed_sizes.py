"""The form, the corners, the offset and the grid take numbers as people type them."""

import copy

import pytest
from support.application import status
from support.desk import entry_of
from support.events import Send, focus, type_text
from support.neighbours import circle, polygon, regular
from support.shapes import sketch
from tandrel.application.typed_sizes import TypedSizes
from tandrel.gui import i18n
from tandrel.gui.widgets import set_units

OUTLINE = polygon((0.0, 0.1), (0.02, 0.1), (0.0, 0.12))
SKETCH = sketch(circle(0.01, 0.0, 0.004), regular(0.1, 0.0, 0.004), OUTLINE)


@pytest.fixture
def editor(habit, catalogues):
    """One that reads what people type, and with nothing else of the application's."""
    return habit(TypedSizes, *SKETCH["entities"]).editor


SUMS = [
    (0, "r", "10/2", 0.005, "5"),
    (0, "r", "0.5 in", 0.0127, "12.7"),
    (0, "xc", "10 - 2*20", -0.03, "-30"),
    (1, "n", "4+4", 8, "8"),
    (1, "angle", "360/8", 45.0, "45"),
    (1, "angle", "30°", 30.0, "30"),
    (2, "radius", "1 mm", 0.001, "1"),
]


def test_a_sum_in_the_form_is_applied_and_shown_as_its_value(editor):
    for index, key, text, value, shown in SUMS:
        editor.sk["entities"] = copy.deepcopy(SKETCH["entities"])
        editor.select(index)
        editor.vars[key].set(text)
        editor.apply_props()
        assert editor.sk["entities"][index] == {**SKETCH["entities"][index], key: value}
        assert (status(editor), editor.vars[key].get()) == ("", shown)
        assert not editor.is_unapplied()


IN_INCHES = {"30 mm": 0.03, "3cm+1in": 0.0554, "12.3 mm / 3": 0.0041, "1/3": 0.0254 / 3}


def test_what_the_file_holds_is_what_was_typed_whatever_the_window_s_unit(editor):
    set_units("in")
    editor.select(0)
    for text, value in IN_INCHES.items():
        editor.vars["r"].set(text)
        editor.apply_props()
        assert editor.sk["entities"][0]["r"] == value


def test_enter_gives_the_keyboard_back_where_the_size_is_applied(editor):
    editor.select(0)
    entry = entry_of(editor, editor.vars["r"])
    for text, holder in (("four", entry), ("4", editor.canvas)):
        type_text(entry, text)
        Send(editor).key("Return", entry)
        editor.update()
        assert editor.focus_get() is holder


REFUSED = [
    ("en", 0, "r", "four", "Not applied: Radius: “four” can't be read as a number"),
    ("en", 1, "n", "6°", "Not applied: Sides: “6°” can't be read as a number"),
    (
        "en",
        1,
        "angle",
        "6 mm",
        "Not applied: Angle of first corner (degrees): “mm” is no unit here; there are °",
    ),
    ("en", 0, "r", "1-2", "Not applied: the radius must be greater than zero"),
    ("de", 0, "xc", "vier", "Nicht übernommen: Mitte u: „vier“ lässt sich nicht als Zahl lesen"),
]


def test_what_cannot_be_applied_stays_and_is_named(editor):
    for language, index, key, text, why in REFUSED:
        i18n.set_language(language)
        editor.select(index)
        editor.vars[key].set(text)
        editor.apply_props()
        assert editor.sk == SKETCH
        assert (status(editor), editor.vars[key].get()) == (why, text)
        assert editor.is_unapplied()
        editor.forget_typed()


def test_a_reason_stays_until_the_next_press_or_key(editor):
    hands = Send(editor)
    for act in (lambda: hands.click(5, 5), lambda: hands.key("a"), lambda: hands.key("Escape")):
        editor.select(0)
        editor.vars["r"].set("four")
        editor.apply_props()
        hands.motion(100, 100)
        hands.motion(120, 100)
        assert "four" in status(editor)
        act()
        assert status(editor) == ""
        hands.motion(100, 100)
        assert status(editor).startswith("x = ")


CORNERS = [
    ("en", "0,100\n20 100\n 0 , 60*2", [[0, 100], [20, 100], [0, 120]]),
    ("en", "0 10 CM\n2cm 100mm\n0; 100 + 20", [[0, 100], [20, 100], [0, 120]]),
    ("en", "0 -5\n20 -5\n\n0 7.5\n", [[0, -5], [20, -5], [0, 7.5]]),
    ("zh", "０， 100\n20；100\n0，60×2", [[0, 100], [20, 100], [0, 120]]),
    ("de", "0,5 100\n20; 100,5\n0, 120", [[0.5, 100], [20, 100.5], [0, 120]]),
]


def test_corners_are_read_line_by_line(editor):
    for language, text, points in CORNERS:
        i18n.set_language(language)
        editor.select(2)
        editor.points_text.replace("1.0", "end", text)
        editor.apply_props()
        assert status(editor) == ""
        found = editor.sk["entities"][2]["points"]
        assert [[round(c * 1000, 9) for c in point] for point in found] == points
        assert not editor.is_unapplied()


BAD_CORNERS = {
    "0 100\n20\n0 120": "line 2: each corner needs two numbers",
    "0 100\n20 100\n0 1 2": "line 3: each corner needs two numbers",
    "0 100\n20 x\n0 120": "line 2: “x” can't be read as a number",
    "0 10 + 5\n20 1\n0 120": "line 1: each corner needs two numbers",
    "0; a b\n20 1\n0 120": "line 1: “a b” can't be read as a number",
}


def test_a_corner_that_cannot_be_read_is_named_by_its_line(editor):
    for text, why in BAD_CORNERS.items():
        editor.select(2)
        editor.points_text.replace("1.0", "end", text)
        editor.apply_props()
        assert status(editor) == f"Not applied: Corners, {why}"
        assert editor.sk == SKETCH
        assert editor.points_text.get("1.0", "end-1c") == text


def test_the_corners_box_undoes_its_own_text_first(editor):
    editor.undone = []
    editor.bind("<Control-z>", editor.undone.append)
    editor.select(2)
    box, before = editor.points_text, editor.points_text.get("1.0", "end")
    box.edit_reset()
    focus(box)
    box.insert("1.0", "9")
    hands = Send(editor)
    hands.key("Control-z", box)
    assert (box.get("1.0", "end"), editor.undone) == (before, [])
    hands.key("Control-z", box)
    assert len(editor.undone) == 1


def test_what_was_typed_is_taken_back_or_applied_by_ok(editor):
    editor.select(0)
    assert not editor.forget_typed()
    editor.vars["r"].set("7")
    assert editor.forget_typed()
    assert (editor.vars["r"].get(), editor.is_unapplied()) == ("4", False)
    editor.vars["r"].set("seven")
    editor.ok()
    assert editor.winfo_exists() and "seven" in status(editor)
    editor.vars["r"].set("7")
    editor.offset.set("1/2 in")
    editor.ok()
    bored = circle(0.01, 0.0, 0.007)
    assert editor.result == sketch(bored, *SKETCH["entities"][1:], offset=0.0127)


def test_an_offset_that_cannot_be_read_is_named(editor):
    editor.offset.set("far")
    editor.ok()
    assert status(editor).startswith("Not applied: Offset along the normal: “far”")
    assert editor.result is None and editor.sk["offset"] == 0.0


def test_a_grid_is_a_sum_too(editor):
    entry = entry_of(editor, editor.grid)
    default = editor._default_grid()
    for text, step in (("10/4", 0.0025), ("1/16 in", 0.0015875), ("", default), ("-1", default)):
        editor.grid.set(text)
        assert editor.grid_step() == pytest.approx(step, abs=1e-18)
    type_text(entry, "10/4")
    Send(editor).key("Return", entry)
    editor.update()
    assert editor.focus_get() is editor.canvas
    assert (editor.grid.get(), editor.grid_step()) == ("2.5", 0.0025)
    for text, why in (
        ("wide", "can't be read"),
        ("5-9", "is less than"),
        ("1e-320", "is too small"),
    ):
        type_text(entry, text)
        focus(editor.canvas)
        assert status(editor).startswith(f"Not applied: Grid: “{text}” {why}")
        assert (editor.grid.get(), editor.grid_step()) == (text, default)


def by_pointer(hands):
    hands.editor.tool.set("select")
    hands.click(*hands.at((0.1, 0.0)))


def by_row(hands):
    hands.editor.list.selection_set("1")
    hands.editor.update()


def by_drawing(hands):
    hands.editor.tool.set("circle")
    hands.stroke((30, 30), (40, 40), (50, 50))


@pytest.mark.parametrize("go_on", [by_pointer, by_row, by_drawing])
@pytest.mark.parametrize("text, radius, why", [("7", 0.007, ""), ("seven", 0.004, "“seven”")])
def test_going_on_to_another_shape_applies_what_is_typed(editor, go_on, text, radius, why):
    editor.select(0)
    type_text(entry_of(editor, editor.vars["r"]), text)
    go_on(Send(editor))
    typed, *others = SKETCH["entities"]
    assert editor.sk["entities"][:3] == [{**typed, "r": radius}, *others]
    assert editor.sel == (3 if go_on is by_drawing else 1)
    assert editor.vars["r"].get() != text and why in status(editor)


@pytest.mark.parametrize("go_on", [by_pointer, by_row, by_drawing])
def test_what_was_refused_on_going_on_is_there_again_with_its_shape(editor, go_on):
    hands, box = Send(editor), lambda: editor.points_text.get("1.0", "end-1c")
    typed = "0 100\n20 100\n30 x\n0 120"
    editor.select(2)
    shown = box()
    editor.points_text.replace("1.0", "end", typed)
    go_on(hands)
    editor.select(2)
    assert box() == typed and editor.is_unapplied()
    # A click is no change either.
    hands.editor.tool.set("select")
    hands.click(*hands.at((0.005, 0.105)))
    assert (editor.sel, box()) == (2, typed)
    editor.forget_typed()
    editor.show_props()
    assert box() == shown
    for text in (typed, shown, typed):
        editor.points_text.replace("1.0", "end", text)
        go_on(hands)
        editor.select(2)
        assert box() == text
    editor.points_text.replace("1.0", "end", typed.replace("x", "105"))
    editor.apply_props()
    go_on(hands)
    editor.select(2)
    assert len(editor.sk["entities"][2]["points"]) == 4 and not editor.is_unapplied()


def test_what_was_refused_is_kept_for_each_shape(editor):
    typed = {0: "four", 1: "five"}
    for index, text in typed.items():
        editor.select(index)
        type_text(entry_of(editor, editor.vars["r"]), text)
    for index, text in typed.items():
        editor.select(index)
        assert editor.vars["r"].get() == text and editor.is_unapplied()
    editor.select(0)
    editor.forget_typed()
    editor.select(1)
    assert editor.vars["r"].get() == "five"
    type_text(entry_of(editor, editor.vars["r"]), "5")
    applied = editor.sk["entities"][1]
    editor.select(0)
    assert editor.vars["r"].get() == "4"
    # As undo brings it back.
    editor.sk["entities"][1] = applied
    editor.select(1)
    assert editor.vars["r"].get() == "4" and not editor.is_unapplied()


def test_a_press_on_the_drawing_gives_it_the_keyboard(editor):
    type_text(entry_of(editor, editor.grid), "wide")
    Send(editor).press(5, 5)
    editor.update()
    assert editor.focus_get() is editor.canvas
    assert status(editor).startswith("Not applied: Grid: “wide”")
