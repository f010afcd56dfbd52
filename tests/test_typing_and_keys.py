"""Typing exact sizes, the keyboard, and switches of unit and language, in the whole dialog."""

import copy
import tkinter as tk
from tkinter import ttk

import pytest
from support import canvas as shown
from support.desk import ORANGE, of_class
from support.events import focus
from support.neighbours import circle, one_of_each, polygon, rectangle
from support.widgets import walk
from tandrel.gui import i18n, widgets

pytestmark = pytest.mark.usefixtures("millimetres_in_english")


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
