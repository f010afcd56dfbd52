"""What the widgets of the dialog show of the sketch, the sketch module and the units.

What they are, how they are packed and bound: test_construction_among_stand_ins.py.
"""

from tkinter import ttk

import pytest

from support.neighbours import FakeUnits
from support.widgets import walk

pytestmark = pytest.mark.usefixtures("neighbours")


def labels(editor):
    return [w.cget("text") for w in walk(editor) if isinstance(w, ttk.Label)]


@pytest.mark.parametrize("offset", [None, 0, 0.0, "", False, []], ids=repr)
def test_offset_that_says_nothing_is_zero(open_editor, neighbours, offset):
    editor = open_editor({"offset": offset})
    assert editor.plane.get() == "XY"
    assert editor.offset.get() == "0"
    assert ("from_si", (0, "length")) in neighbours.units.calls


def test_planes_of_the_sketch_module_are_offered(open_editor, neighbours):
    neighbours.S.PLANES = ["front", "top view", "side"]
    editor = open_editor()
    (chooser,) = [w for w in walk(editor) if type(w) is ttk.Combobox]
    assert chooser.cget("values") == ("front", "top view", "side")


def test_unit_stands_after_lengths(open_editor, neighbours):
    neighbours.units.symbol = "in"
    assert labels(open_editor()).count("in") == 2
    assert neighbours.units.named("unit") == [("length",)] * 2


def test_units_are_asked_for_afresh(open_editor, sketcher, monkeypatch):
    open_editor({"offset": 0.5})
    monkeypatch.setattr(sketcher, "units", FakeUnits(100.0, "cm"))
    editor = open_editor({"offset": 0.5})
    assert editor.offset.get() == "50"
    assert "cm" in labels(editor)
