"""Typing exact sizes, the keyboard, and switches of unit and language, in the whole dialog."""

import copy
import tkinter as tk
from tkinter import ttk

import numpy as np
import pytest
from support import canvas as shown
from support.desk import ORANGE, Desk, of_class
from support.events import focus, run_while, type_text
from support.neighbours import (
    circle,
    one_of_each,
    polygon,
    rectangle,
    regular,
)
from support.types import CARDS
from support.widgets import walk
from tandrel.gui import i18n, widgets

pytestmark = pytest.mark.usefixtures("millimetres_in_english")


FIELDS_AND_VALUES = [
    (card.placed, field.key, text, value)
    for card in CARDS
    for field in card.fields
    for text, value in field.typed
]


class TestTypingSizes:
    @pytest.mark.parametrize("way", ["Return", "Apply"])
    @pytest.mark.parametrize("entity, key, text, value", FIELDS_AND_VALUES)
    def test_every_field_of_every_type(self, desk, entity, key, text, value, way):
        one = desk({"entities": [circle(0.0, 0.1, 0.001), copy.deepcopy(entity)]})
        one.editor.select(1)
        one.fill_in(key, text)
        if way == "Return":
            one.hands.key("Return", one.field(key))
        else:
            one.button("Apply").invoke()
        assert one.entities[1] == {**entity, key: value}
        assert type(one.entities[1][key]) is type(value)
        assert one.status() == ""
        assert one.field(key).get() == text
        assert one.selected() == 1

    def test_the_corners_of_an_outline(self, desk):
        one = desk({"entities": [polygon((0, 0), (0.03, 0), (0, 0.02))]})
        one.editor.select(0)
        box = one.editor.points_text
        assert box.get("1.0", "end-1c") == "0 0\n30 0\n0 20"
        box.delete("1.0", "end")
        box.insert("1.0", "0,0\n\n 40 0 \n40,\t25.5\n0 20\n")
        one.button("Apply").invoke()
        assert one.entities == [polygon((0.0, 0.0), (0.04, 0.0), (0.04, 0.0255), (0.0, 0.02))]
        assert one.sizes() == ["4 corners"]

    @pytest.mark.parametrize("line", ["1", "1 2 3", "0 0 0"])
    def test_a_wrong_line_of_corners_and_its_correction(self, desk, line):
        before = polygon((0, 0), (0.03, 0), (0, 0.02))
        one = desk({"entities": [before]})
        one.editor.select(0)
        one.editor.points_text.insert("end", "\n" + line)
        one.button("Apply").invoke()
        assert one.status() == "Not applied: each corner needs two numbers"
        assert one.entities == [before]
        one.editor.points_text.delete("end-1l linestart", "end")
        one.button("Apply").invoke()
        assert one.status() == ""
        assert one.entities == [before]

    def test_a_mistake_and_its_correction(self, desk):
        before = circle(0.01, 0.0, 0.02)
        one = desk({"entities": [before]})
        one.editor.select(0)
        picture = [item[:2] for item in shown.items(one.editor.canvas)]
        one.fill_in("xc", "5")
        one.fill_in("r", "ten")
        one.hands.key("Return", one.field("r"))
        assert one.status() == "Not applied: could not convert string to float: 'ten'"
        assert one.entities == [before]
        assert [one.field(key).get() for key in ("xc", "r")] == ["5", "ten"]
        assert [item[:2] for item in shown.items(one.editor.canvas)] == picture
        one.fill_in("r", "10")
        one.hands.key("Return", one.field("r"))
        assert one.status() == ""
        assert one.entities == [circle(0.005, 0.0, 0.01)]
        assert one.sizes() == ["diameter 20 mm"]

    def test_a_size_that_makes_no_shape_and_its_correction(self, desk):
        before = circle(0.01, 0.0, 0.02)
        one = desk({"entities": [before]})
        one.editor.select(0)
        one.fill_in("r", "-1")
        one.hands.key("Return", one.field("r"))
        assert one.status().startswith("Not applied: ")
        assert len(one.status()) > len("Not applied: ")
        assert one.entities == [before]
        one.fill_in("r", "1")
        one.hands.key("Return", one.field("r"))
        assert one.entities == [circle(0.01, 0.0, 0.001)]


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

    @pytest.mark.parametrize("key, left", [("Delete", "1"), ("BackSpace", "12")])
    def test_a_property_field_keeps_its_key(self, desk, key, left):
        one = self.open(desk)
        entry = one.field("radius")
        type_text(entry, "123")
        entry.icursor(1 if key == "Delete" else 3)
        for _ in range(2 if key == "Delete" else 1):
            one.hands.key(key, entry)
        assert entry.get() == left
        assert one.entities == [self.OUTLINE]

    @pytest.mark.parametrize(
        "key, left", [("Delete", " 0\n30 0\n0 20"), ("BackSpace", "0 0\n30 0\n0 2")]
    )
    def test_the_corners_box_keeps_its_key(self, desk, key, left):
        one = self.open(desk)
        box = one.editor.points_text
        box.mark_set("insert", "1.0" if key == "Delete" else "end-1c")
        one.hands.key(key, box)
        assert box.get("1.0", "end-1c") == left
        assert one.entities == [self.OUTLINE]

    def test_other_keys_of_the_corners_box_reach_the_dialog(self, desk):
        one = self.open(desk)
        one.tool("line")
        one.click((-20, -20), (-10, -20), (-10, -10))
        one.hands.key("Escape", one.editor.points_text)
        assert one.editor.clicks == []


class TestKeyboardOnly:
    def tab(self, one, back=False):
        widget = one.editor.focus_get()
        widget.event_generate("<<PrevWindow>>" if back else "<<NextWindow>>")
        one.editor.update()
        return one.editor.focus_get()

    def test_tab_reaches_every_control_and_comes_round(self, desk):
        one = desk(one_of_each())
        one.editor.select(0)
        focus(one.editor)
        seen = []
        for _ in range(60):
            widget = self.tab(one)
            if seen and widget is seen[0]:
                break
            seen.append(widget)
        controls = (ttk.Button, ttk.Checkbutton, ttk.Radiobutton, ttk.Entry, ttk.Treeview)
        missing = [w for w in of_class(one.editor, controls) if w not in seen]
        # Of a group of tools, one stop may stand for all.
        assert [w for w in missing if not isinstance(w, ttk.Radiobutton)] == []

    def test_a_tool_is_chosen_with_the_space_bar(self, desk):
        one = desk()
        radios = of_class(one.editor, ttk.Radiobutton)
        one.editor.clicks = [np.zeros(2)]
        one.hands.key("space", radios[3])
        assert one.editor.tool.get() == "circle"
        assert one.editor.clicks == []

    def test_the_next_tool_is_chosen_with_an_arrow(self, desk):
        one = desk()
        radios = of_class(one.editor, ttk.Radiobutton)
        one.hands.key("space", radios[1])
        one.hands.key("Down", radios[1])
        assert one.editor.focus_get() is radios[2]
        one.hands.key("space", radios[2])
        assert one.editor.tool.get() == "rectangle"

    def test_the_grid_is_switched_with_the_space_bar(self, desk):
        one = desk()
        button = of_class(one.editor, ttk.Checkbutton)[0]
        one.hands.key("space", button)
        assert one.editor.snap.get() is False
        one.hands.key("space", button)
        assert one.editor.snap.get() is True

    def test_a_row_is_chosen_sized_and_deleted(self, desk):
        one = desk(one_of_each())
        one.editor.list.focus("0")
        for _ in range(2):
            one.hands.key("Down", one.editor.list)
            one.editor.update()
        row = one.editor.list.selection()[0]
        assert one.selected() == int(row)
        count = len(one.entities)
        one.hands.key("Delete", one.editor.list)
        assert len(one.entities) == count - 1
        assert one.selected() is None

    def test_ok_and_cancel_with_the_space_bar(self, open_editor, send, root):
        for text, accepted in (("OK", True), ("Cancel", False)):
            editor = open_editor(one_of_each())
            one = Desk(editor, send(editor))
            result = run_while(editor, lambda e: one.hands.key("space", one.button(text)))
            assert (result == one_of_each()) is accepted
            assert (result is None) is not accepted


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

    def test_units_give_the_grid_field_s_text_a_new_meaning(self, desk):
        one = desk()
        assert one.editor.grid.get() == "1"
        widgets.set_units("cm")
        assert one.editor.grid_step() == 0.01
        assert one.editor.grid.get() == "1"

    def test_units_never_scale_sides_and_angle(self, desk):
        one = desk({"entities": [regular(0.0, 0.0, 0.0254, 6, 15.0)]})
        widgets.set_units("in")
        one.editor.select(0)
        assert [one.field(key).get() for key in ("r", "n", "angle")] == ["1", "6", "15"]
        one.hands.key("Return", one.field("n"))
        assert one.entities == [regular(0.0, 0.0, 0.0254, 6, 15.0)]

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
