"""The whole dialog under a user's hands: tools, moving, sizes, keys, other units and languages."""

import copy
import tkinter as tk
from tkinter import ttk

import numpy as np
import pytest
from support import canvas as shown
from support.desk import ORANGE, Desk, entry_of, of_class
from support.events import focus, run_while, type_text
from support.neighbours import circle, one_of_each, polygon, rectangle
from support.types import CARDS
from support.widgets import walk
from tandrel.gui import i18n, widgets

pytestmark = pytest.mark.usefixtures("millimetres_in_english")

STEP = 0.001


def on(*grid_lines):
    """Plane coordinates of grid lines a millimetre apart, as snapping gives them."""
    return tuple(k * STEP for k in grid_lines)


@pytest.fixture(params=[0, 5, -3], ids=["fitted", "zoomed in", "zoomed out"])
def drawing(request, desk):
    """An empty sketch in different views, reached with the wheel and the right button."""
    one = desk()
    middle = one.editor.canvas.winfo_width() // 2, one.editor.canvas.winfo_height() // 2
    for _ in range(abs(request.param)):
        one.hands.wheel(*middle, request.param)
    if request.param:
        one.hands.stroke((200, 200), (215, 190), (237, 179), button=3)
    return one


class TestDrawing:
    def test_every_type(self, drawing):
        type_text(of_class(drawing.editor, ttk.Spinbox)[0], "5")
        for card in CARDS:
            self.draw(drawing, card)
            drawing.hands.key("Delete")
            assert drawing.entities == [] and drawing.rows() == []

    def draw(self, drawing, card):
        tool, (first, *others) = card.tool, card.tool.gesture
        drawing.tool(tool.name)
        if tool.dragged:
            drawing.stroke(first, (0, 0), *others)
        else:
            drawing.click(first, *others[:-1])
            assert len(drawing.editor.clicks) == len(others)
            assert drawing.entities == []
            # An outline is closed on its first corner.
            drawing.click(others[-1], *([first] if tool.name == "line" else []))
        expected = card.drawn(*(on(*point) for point in tool.gesture), sides=5)
        assert drawing.entities == [expected]
        assert list(map(type, drawing.entities[0].values())) == list(map(type, expected.values()))
        assert drawing.rows() == [f"1. {card.label}"]
        assert drawing.sizes() == [tool.size]
        assert drawing.selected() == 0
        assert drawing.editor.clicks == []


class TestSnapping:
    def test_an_outline_takes_corners_of_a_rectangle(self, desk):
        box = rectangle(0.0101, 0.0202, 0.0303, 0.0104)
        one = desk({"entities": [box]})
        one.tool("line")
        corners = [(0.0101, 0.0202), (0.0101 + 0.0303, 0.0202), (0.0101, 0.0202 + 0.0104)]
        for corner in corners:
            x, y = one.hands.at(corner)
            one.hands.click(x - 3, y + 3)
        one.hands.key("Return")
        assert one.entities[1] == polygon(*corners)

    def test_the_typed_grid_counts(self, desk):
        one = desk()
        entry = entry_of(one.editor, one.editor.grid)
        type_text(entry, "10")
        one.hands.key("Return", entry)
        grid = shown.of_kind(one.editor.canvas, "line", fill=widgets.PAL["bg"])
        assert grid[1].coords[0] - grid[0].coords[0] == pytest.approx(0.01 * one.editor.scale)
        one.tool("rectangle")
        one.stroke((-28, -22), (33, 19))
        assert one.entities[0]["x"] == -3 * 0.01
        assert one.entities[0]["w"] == 3 * 0.01 - -3 * 0.01


class TestEditing:
    def test_every_type_is_moved_by_whole_grid_steps(self, desk):
        one = desk(one_of_each())
        for number, card in enumerate(CARDS):
            expected = copy.deepcopy(one.entities)
            u, v = (round(c * 1000) for c in card.place)
            one.stroke((u, v), (u + 4, v - 3), (u + 1, v))
            d = np.array(on(u + 1, v)) - np.array(on(u, v))
            assert one.entities[number] != expected[number]
            expected[number] = one.editor._moved(expected[number], d)
            assert one.entities == expected


class TestAccepting:
    def test_a_rejected_sketch_keeps_the_dialog_open(self, open_editor, send, sketcher):
        editor = open_editor({"entities": [circle(0.0, 0.0, 0.02), circle(0.0, 0.0, -1.0)]})
        one = Desk(editor, send(editor))

        def edit(editor):
            messages = sketcher.S.check(editor.sk)
            assert messages
            one.button("OK").invoke()
            assert one.status() == "; ".join(messages)
            editor.select(1)
            editor.canvas.focus_force()
            editor.delete()
            one.button("OK").invoke()

        assert run_while(editor, edit)["entities"] == [circle(0.0, 0.0, 0.02)]


class TestTypingSizes:
    @pytest.mark.parametrize("way", ["Return", "Apply"])
    def test_every_field_of_every_type(self, desk, card, way):
        one = desk({"entities": [circle(0.0, 0.1, 0.001), card.placed]})
        typed = [(field.key, *row) for field in card.fields for row in field.typed]
        for key, text, value in typed:
            one.entities[1] = copy.deepcopy(card.placed)
            one.editor.select(1)
            one.fill_in(key, text)
            if way == "Return":
                one.hands.key("Return", one.field(key))
            else:
                one.button("Apply").invoke()
            assert one.entities[1] == {**card.placed, key: value}
            assert type(one.entities[1][key]) is type(value)
            assert one.status() == ""
            assert one.field(key).get() == text
            assert one.selected() == 1


class TestDeleteKeysAndFocus:
    """Delete and BackSpace edit the text of the field that has the focus, else remove the shape."""

    OUTLINE = polygon((0, 0), (0.03, 0), (0, 0.02))
    TEXT_FIELDS = (ttk.Entry, tk.Entry, ttk.Spinbox, tk.Text)

    def open(self, desk):
        one = desk({"entities": [self.OUTLINE]})
        one.editor.select(0)
        one.editor.update()
        return one

    @pytest.mark.parametrize("key", ["Delete", "BackSpace"])
    def test_with_the_focus_in_each_widget(self, desk, key):
        one = self.open(desk)
        count = len(list(walk(one.editor)))
        kinds = set()
        for number in range(count):
            widget = list(walk(one.editor))[number]
            kinds.add(type(widget).__name__)
            one.hands.key(key, widget)
            if isinstance(widget, self.TEXT_FIELDS):
                assert one.entities == [self.OUTLINE], widget
                one.editor.show_props()
            else:
                assert one.entities == [], widget
                one.editor.add(copy.deepcopy(self.OUTLINE))
            one.editor.update()
            assert len(list(walk(one.editor))) == count
        assert kinds >= {
            "Canvas",
            "Treeview",
            "Text",
            "Entry",
            "Combobox",
            "Spinbox",
            "Radiobutton",
        }

    def test_other_keys_of_the_corners_box_reach_the_dialog(self, desk):
        one = self.open(desk)
        one.tool("line")
        one.click((-20, -20), (-10, -20), (-10, -10))
        one.hands.key("Escape", one.editor.points_text)
        assert one.editor.clicks == []


def test_tab_reaches_every_control_and_comes_round(desk):
    editor = desk(one_of_each()).editor
    editor.select(0)
    focus(editor)
    seen = []
    while len(seen) < 60 and editor.focus_get() not in seen[:1]:
        seen.append(editor.focus_get())
        seen[-1].event_generate("<<NextWindow>>")
        editor.update()
    controls = (ttk.Button, ttk.Checkbutton, ttk.Radiobutton, ttk.Entry, ttk.Treeview)
    missing = [w for w in of_class(editor, controls) if w not in seen]
    # Of a group of tools, one stop may stand for all.
    assert [w for w in missing if not isinstance(w, ttk.Radiobutton)] == []


class TestSwitchingWhileOpen:
    def test_units(self, desk, sketcher):
        one = desk({"entities": [rectangle(-0.0254, -0.0127, 0.0508, 0.0254)]})
        one.editor.select(0)
        assert [one.field(key).get() for key in "xywh"] == ["-25.4", "-12.7", "50.8", "25.4"]
        widgets.set_units("in")
        one.editor.redraw()
        labels = shown.of_kind(one.editor.canvas, "text", fill=ORANGE)
        assert [item.options["text"] for item in labels] == ["2 in", "1 in"]
        one.editor.select(0)
        assert [one.field(key).get() for key in "xywh"] == ["-1", "-0.5", "2", "1"]
        assert one.sizes() == ["2 in x 1 in"]
        one.fill_in("w", "3")
        one.hands.key("Return", one.field("w"))
        assert one.entities == [rectangle(-0.0254, -0.0127, 0.0762, 0.0254)]
        one.move((20, 10))
        assert one.status().startswith("x = ") and " in   y = " in one.status()

    def test_the_application_s_own_language(self, desk):
        one = desk({"entities": [circle(0.0, 0.0, 0.02)]})
        assert one.rows() == ["1. Circle"]
        i18n.set_language("de")
        one.editor.select(0)
        assert one.rows() == ["1. Kreis"]
        assert one.sizes() == ["Ø 40 mm"]
        one.fill_in("r", "")
        one.button("Anwenden").invoke()
        assert one.status().startswith("Nicht übernommen: ")
        i18n.set_language("en")
        one.editor.select(0)
        assert one.rows() == ["1. Circle"]
        assert one.button("Apply").winfo_exists()
