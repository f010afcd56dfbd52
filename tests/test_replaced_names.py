"""Replaced names of the module are the ones that the operations use."""

import copy
import math
from tkinter import ttk

import numpy as np
import pytest

from support.events import focus
from support.neighbours import circle, one_of_each, slot
from support.plain import Event, PlainEditor, Var
from support.widgets import walk

pytestmark = pytest.mark.usefixtures("neighbours")


@pytest.fixture
def replaced(sketcher, monkeypatch):
    """Replaces a name of the module."""
    return lambda name, value: monkeypatch.setattr(sketcher, name, value)


class Through:
    """Stands for a module or an object: hands out what it has, and keeps the names asked for."""

    def __init__(self, original, **replacements):
        self.__dict__.update(original=original, asked=[], **replacements)

    def __getattr__(self, name):
        self.asked.append(name)
        return getattr(self.original, name)


def test_palette_may_be_any_mapping(open_editor, replaced, neighbours):
    class Palette:
        def __getitem__(self, key):
            return neighbours.PAL[key]

    replaced("PAL", Palette())
    assert open_editor(one_of_each()).canvas.cget("background") == neighbours.PAL["panel"]


def test_replaced_tables_are_used(open_editor, replaced, sketcher):
    replaced("TOOLS", [("select", "Pick"), ("ellipse", "Ellipse")])
    replaced("TOOL_TIPS", {"select": "pick it", "ellipse": "draw it"})
    replaced("TYPE_LABEL", {"ellipse": "Ellipse"})
    replaced("FIELDS", {"ellipse": [("a", "Half axis", True)]})
    editor = open_editor({"entities": [{"type": "ellipse", "a": 0.002}]})
    tools = [w.cget("text") for w in walk(editor) if type(w) is ttk.Radiobutton]
    assert tools == ["Pick", "Ellipse"]
    assert editor.list.item("0", "text") == "1. Ellipse"
    editor.select(0)
    assert editor.vars["a"].get() == "2"
    editor.tool.set("ellipse")
    editor._motion(Event(10, 10))
    assert editor.status.cget("text").endswith("     draw it")


def test_replaced_copy_is_used(open_editor, replaced, sketcher):
    editor = open_editor({"entities": [circle(r=0.5)]})
    editor.select(0)
    through = Through(copy)
    replaced("copy", through)
    sketcher.SketchEditor._moved(circle(), (1, 2))
    editor.apply_props()
    editor._press(Event(*editor.to_screen((0.0, 0.0))))
    assert through.asked == ["deepcopy"] * 3


@pytest.mark.parametrize(
    "operation, asked",
    [
        (lambda e: e._default_grid(), ["log10", "floor"]),
        (lambda e: e._from_drag(np.zeros(2), np.ones(2)), ["atan2", "degrees"]),
    ],
)
def test_replaced_math_is_asked(replaced, operation, asked):
    editor, through = PlainEditor(tool=Var("regular")), Through(math)
    replaced("math", through)
    operation(editor)
    assert through.asked == asked


def test_replaced_math_is_used(replaced, sketcher):
    replaced("math", Through(math, hypot=lambda dx, dy: dx + 10 * dy))
    assert sketcher.describe(slot(1.0, 2.0, 4.0, 4.0, 1.0)) == "25000 mm x 2000 mm"


def test_replaced_entries_are_the_ones_that_keep_the_deleting_keys(open_editor, replaced):
    editor = open_editor({"entities": [circle()]})
    editor.select(0)
    focus(editor.list)
    replaced("ttk", Through(ttk, Entry=ttk.Treeview))
    editor.delete()
    assert len(editor.sk["entities"]) == 1
    replaced("ttk", ttk)
    editor.delete()
    assert editor.sk["entities"] == []


def test_replaced_numpy_makes_the_arrays(open_editor, replaced):
    class Points(np.ndarray):
        pass

    def zeros(n, *args):
        return np.zeros(n, *args).view(Points)

    def array(values, *args, **kwargs):
        return np.array(values, *args, **kwargs).view(Points)

    editor = open_editor()
    replaced("np", Through(np, zeros=zeros, array=array))
    assert type(editor.to_world(10, 10)) is Points
    assert type(editor.key_points()[0]) is Points
    assert {type(corner) for corner in editor._extent()} == {Points}
    assert type(editor.snapped(311, 231)) is Points
    assert type(open_editor().cursor) is Points
