"""Typing exact sizes in the window."""

import copy
import math

import pytest

from support.canvas import items
from support.events import type_text
from support.form import EVERY_TYPE, corners_text, form_of, form_texts, type_corners
from support.neighbours import circle, one_of_each, polygon, rectangle
from support.widgets import button, walk

pytestmark = pytest.mark.usefixtures("neighbours")

HINT = "Select a shape to type its exact size."
CORNERS = "Corners (u v, one pair per line):"


@pytest.mark.parametrize("kind", EVERY_TYPE)
def test_form_that_is_applied_unchanged_changes_nothing(select, kind):
    entity = EVERY_TYPE[kind]
    editor = select(entity)
    editor.apply_props()
    assert editor.sk["entities"] == [entity]
    assert [(k, type(v)) for k, v in editor.sk["entities"][0].items()] == [
        (k, type(v)) for k, v in entity.items()
    ]
    assert editor.status.cget("text") == ""


@pytest.mark.parametrize(
    "kind, key", [(kind, key) for kind, e in EVERY_TYPE.items() for key in e if key != "type"]
)
def test_every_field_is_typed_and_applied(select, send, kind, key):
    entity = EVERY_TYPE[kind]
    editor = select(entity)
    expected = copy.deepcopy(entity)
    if key == "points":
        type_corners(editor, "0 0\n40 0\n40 10\n0, 10")
        button(editor, "Apply").invoke()
        expected["points"] = [[0.0, 0.0], [0.04, 0.0], [0.04, 0.01], [0.0, 0.01]]
    else:
        entry = form_of(editor).entries()[list(editor.vars).index(key)]
        type_text(entry, "8.25" if key == "angle" else "8")
        send(editor).key("Return", entry)
        expected[key] = {"angle": 8.25, "n": 8}.get(key, 0.008)
    assert editor.sk["entities"] == [expected]


def test_return_in_any_field_applies_the_whole_form(select, send):
    editor = select(rectangle())
    entries = form_of(editor).entries()
    for entry, text in zip(entries, ("1", "2", "3", "4", "0.5")):
        type_text(entry, text)
    send(editor).key("Return", entries[0])
    assert editor.sk["entities"] == [rectangle(0.001, 0.002, 0.003, 0.004, 0.0005)]


def test_return_in_a_field_is_followed_by_the_dialogs_own(open_editor, sketcher, send):
    calls = []

    class Editor(sketcher.SketchEditor):
        def apply_props(self, *args):
            calls.append(("apply_props", args))

        def close_line(self, *args):
            calls.append(("close_line", args))

    editor = open_editor({"entities": [circle()]}, cls=Editor)
    editor.select(0)
    for entry in form_of(editor).entries():
        calls.clear()
        send(editor).key("Return", entry)
        assert calls == [("apply_props", ()), ("close_line", ())]


def test_apply_button_applies(select):
    editor = select(circle())
    editor.vars["r"].set("25")
    button(editor, "Apply").invoke()
    assert editor.sk["entities"] == [circle(r=0.025)]


def test_applied_form_keeps_its_texts_and_widgets(select):
    editor = select(circle())
    editor.update()
    widgets = list(walk(editor.props))
    editor.vars["xc"].set(" 2.50 ")
    button(editor, "Apply").invoke()
    editor.update()
    assert list(walk(editor.props)) == widgets
    assert form_texts(editor) == [" 2.50 ", "0", "1000"]
    assert editor.sel == 0
    assert editor.list.selection() == ("0",)


def test_applied_size_shows_in_list_and_canvas(select):
    editor = select(circle(r=0.01))
    before = items(editor.canvas)
    editor.vars["r"].set("20")
    editor.apply_props()
    assert editor.list.set("0", "size") == "diameter 40 mm"
    assert items(editor.canvas) != before


def test_failed_apply_changes_only_the_status_line(select):
    editor = select(*one_of_each()["entities"], index=4)
    before = copy.deepcopy(editor.sk), items(editor.canvas), form_texts(editor)
    rows = [editor.list.item(iid) for iid in editor.list.get_children()]
    type_corners(editor, "0 0\n1 1\n2 2 2")
    widgets = list(walk(editor.props))
    button(editor, "Apply").invoke()
    editor.update()
    assert (editor.sk, items(editor.canvas), form_texts(editor)) == before
    assert [editor.list.item(iid) for iid in editor.list.get_children()] == rows
    assert list(walk(editor.props)) == widgets
    assert corners_text(editor) == "0 0\n1 1\n2 2 2"
    assert editor.sel == 4
    assert editor.status.cget("text") == "Not applied: each corner needs two numbers"


def test_error_is_corrected_and_the_status_cleared(select):
    editor = select(circle())
    editor.vars["r"].set("ten")
    editor.apply_props()
    assert editor.status.cget("text").startswith("Not applied: ")
    editor.vars["r"].set("10")
    editor.apply_props()
    assert editor.status.cget("text") == ""
    assert editor.sk["entities"] == [circle(r=0.01)]


def test_broken_entity_can_be_mended_in_the_form(select):
    editor = select({"type": "circle"})
    assert editor.list.set("0", "size") == "?"
    editor.vars["r"].set("10")
    editor.apply_props()
    assert editor.sk["entities"] == [circle(r=0.01)]
    assert editor.list.set("0", "size") == "diameter 20 mm"


def test_outline_without_corners_can_be_given_some(select):
    editor = select({"type": "polygon", "points": []})
    type_corners(editor, "0 0\n1 0\n0 1")
    editor.apply_props()
    assert editor.sk["entities"][0]["points"] == [[0.0, 0.0], [0.001, 0.0], [0.0, 0.001]]


def test_display_units_may_change_while_the_dialog_is_open(select, neighbours):
    editor = select(circle(r=0.5))
    assert form_texts(editor) == ["0", "0", "500"]
    neighbours.units.factor, neighbours.units.symbol = 100.0, "cm"
    editor.vars["r"].set("20")
    editor.apply_props()
    assert editor.sk["entities"] == [circle(r=0.2)]
    editor.show_props()
    assert form_texts(editor) == ["0", "0", "20"]
    assert editor.list.set("0", "size") == "diameter 40 cm"


def test_language_may_change_while_the_dialog_is_open(select, neighbours):
    editor = select(polygon())
    neighbours.tr.texts = {
        "Apply": "Anwenden",
        CORNERS: "Ecken:",
        "Corner radius (0 = sharp)": "Radius",
        "Not applied: {why}": "Fehler: {why}",
        "each corner needs two numbers": "zwei Zahlen",
        HINT: "Form wählen",
    }
    type_corners(editor, "1")
    editor.apply_props()
    assert editor.status.cget("text") == "Fehler: zwei Zahlen"
    editor.show_props()
    texts = [w.cget("text") for w in walk(editor.props) if "text" in w.keys()]
    assert {"Anwenden", "Ecken:", "Radius"} <= set(texts)
    editor.select(None)
    assert [w.cget("text") for w in editor.props.winfo_children()] == ["Form wählen"]


def test_large_number_of_corners(select):
    corners = [(math.cos(i / 500 * math.tau), math.sin(i / 500 * math.tau)) for i in range(500)]
    editor = select(polygon(*corners))
    assert len(corners_text(editor).splitlines()) == 500
    editor.apply_props()
    assert len(editor.sk["entities"][0]["points"]) == 500
