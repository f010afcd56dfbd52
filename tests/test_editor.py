"""How the dialog is made: its copy of the sketch, its state, what its widgets show.

What they are, how they are packed and bound: test_construction_among_stand_ins.py.
"""

import tkinter as tk
from tkinter import ttk
from types import SimpleNamespace

import numpy as np
import pytest

from support.desk import of_class
from support.neighbours import FakeUnits, circle, one_of_each, polygon, rectangle
from support.plain import Recorder
from support.roots import close_root, open_root

pytestmark = pytest.mark.usefixtures("neighbours")


# --- the sketch


@pytest.mark.parametrize("nothing", [None, {}, ()], ids=repr)
def test_without_a_sketch_a_new_one_is_started(open_editor, neighbours, nothing):
    new = {"plane": "YZ", "offset": 0.5, "entities": []}
    neighbours.S.answers["new"] = new
    editor = open_editor(nothing)
    assert editor.sk is new
    assert neighbours.S.count("new") == 1
    assert editor.tool.get() == "rectangle"


def test_new_sketch_may_lack_its_keys(open_editor, neighbours):
    neighbours.S.answers["new"] = {}
    editor = open_editor()
    assert editor.sk == {"entities": []}
    assert editor.plane.get() == "XY"
    assert editor.offset.get() == "0"


def test_sketch_without_entities_gains_them_in_the_copy_only(open_editor):
    sketch = {"plane": "XZ"}
    editor = open_editor(sketch)
    assert editor.sk == {"plane": "XZ", "entities": []}
    assert sketch == {"plane": "XZ"}
    assert editor.tool.get() == "rectangle"


def test_editor_works_on_a_deep_copy(open_editor, neighbours):
    sketch = {"entities": [polygon(), circle()], "note": {"by": ["someone"]}}
    editor = open_editor(sketch)
    assert editor.sk == sketch
    assert editor.sk is not sketch
    assert editor.sk["entities"] is not sketch["entities"]
    assert editor.sk["entities"][0]["points"] is not sketch["entities"][0]["points"]
    assert editor.sk["note"]["by"] is not sketch["note"]["by"]
    assert neighbours.S.count("new") == 0


def test_copy_is_made_by_the_copy_module(open_editor, sketcher, monkeypatch):
    copied = {"entities": [circle()]}
    recorder = Recorder(deepcopy=copied)
    monkeypatch.setattr(sketcher, "copy", recorder)
    sketch = {"plane": "XY"}
    assert open_editor(sketch).sk is copied
    assert recorder.named("deepcopy") == [((sketch,), {})]


# --- the state


def test_state_after_construction(open_editor):
    editor = open_editor(one_of_each(), dim=2)
    assert editor.dim == 2
    assert editor.refs == []
    assert editor.result is None
    assert editor.sel is None
    assert editor.drag is None
    assert editor.clicks == [] and type(editor.clicks) is list
    for name in ("tool", "grid", "sides", "plane", "offset"):
        assert type(getattr(editor, name)) is tk.StringVar, name
    assert type(editor.snap) is tk.BooleanVar
    assert editor.snap.get() is True
    assert editor.sides.get() == "6"
    assert type(editor.cursor) is np.ndarray
    assert editor.cursor.dtype == np.float64
    assert editor.cursor.tolist() == [0.0, 0.0]


def test_view_before_the_first_fit(open_editor, sketcher):
    class Unfitted(sketcher.SketchEditor):
        def fit(self):
            pass

    editor = open_editor(one_of_each(), cls=Unfitted)
    assert editor.scale == 1.0 and type(editor.scale) is float
    assert type(editor.centre) is np.ndarray
    assert editor.centre.dtype == np.float64
    assert editor.centre.tolist() == [0.0, 0.0]
    assert editor.centre is not editor.cursor


def test_references_are_taken_into_a_list_of_the_same_pairs(open_editor):
    pairs = [("edge", np.array([[0.0, 0.0], [1.0, 1.0]])), ("none", np.zeros((0, 2)))]
    editor = open_editor(None, references=iter(pairs))
    assert type(editor.refs) is list
    assert [ref is pair for ref, pair in zip(editor.refs, pairs)] == [True, True]
    assert open_editor(None, references=pairs).refs is not pairs


def test_default_step_sees_references(open_editor):
    editor = open_editor(None, references=[("edge", np.array([[0.0, 0.0], [2.0, 0.0]]))])
    assert editor.grid.get() == "100"


def test_arguments_in_their_order(root, sketcher):
    refs = [("edge", np.zeros((2, 2)))]
    editor = sketcher.SketchEditor(root, None, 2, "Region", refs, False)
    assert (editor.dim, editor.title(), editor.refs) == (2, "Region", refs)
    assert editor.master is root


def test_parent_and_sketch_are_required(root, sketcher):
    for arguments in ((), (root,)):
        with pytest.raises(TypeError):
            sketcher.SketchEditor(*arguments)
    with pytest.raises(TypeError):
        sketcher.SketchEditor(root, None, 3, "", (), True, None)
    with pytest.raises(TypeError):
        sketcher.SketchEditor(root, None, colour="red")
    assert root.winfo_children() == []


def test_allow_plane_reaches_the_layout(open_editor, sketcher):
    given = []

    class Editor(sketcher.SketchEditor):
        def _build(self, allow_plane):
            given.append(allow_plane)
            super()._build(allow_plane)

    open_editor(cls=Editor)
    open_editor(cls=Editor, allow_plane=False)
    open_editor(cls=Editor, allow_plane="yes")
    assert given == [True, False, "yes"] and given[0] is True


# --- the window


@pytest.mark.parametrize("offset", [None, 0, 0.0, "", False, []], ids=repr)
def test_offset_that_says_nothing_is_zero(open_editor, neighbours, offset):
    editor = open_editor({"offset": offset})
    assert editor.plane.get() == "XY"
    assert editor.offset.get() == "0"
    assert ("from_si", (0, "length")) in neighbours.units.calls


def test_planes_of_the_sketch_module_are_offered(open_editor, neighbours):
    neighbours.S.PLANES = ["front", "top view", "side"]
    (chooser,) = of_class(open_editor(), ttk.Combobox)
    assert chooser.cget("values") == ("front", "top view", "side")


def test_units_are_asked_for_afresh(open_editor, sketcher, monkeypatch):
    open_editor({"offset": 0.5})
    units = FakeUnits(100.0, "cm")
    monkeypatch.setattr(sketcher, "units", units)
    editor = open_editor({"offset": 0.5})
    assert editor.offset.get() == "50"
    assert [w.cget("text") for w in of_class(editor, ttk.Label)].count("cm") == 2
    assert units.named("unit") == [("length",)] * 2


@pytest.mark.parametrize(
    "title, shown", [("Profile", "Profile"), ("", "Skizze"), (None, "Skizze")], ids=repr
)
def test_title_defaults_to_a_translated_one(open_editor, neighbours, title, shown):
    neighbours.tr.texts = {"Sketch": "Skizze", "Profile": "no title is translated"}
    assert open_editor(title=title).title() == shown


def test_view_is_fitted_with_the_real_size_of_the_canvas(open_editor):
    editor = open_editor({"entities": [rectangle(0.0, 0.0, 2.0, 1.0)]})
    width, height = editor.canvas.winfo_width(), editor.canvas.winfo_height()
    assert (width, height) == (622, 462)
    assert editor.scale == 0.8 * min(width / 2.0, height / 1.0)
    assert editor.centre.tolist() == [1.0, 0.5]


@pytest.fixture
def given_to_variables(sketcher, monkeypatch):
    """The keyword arguments of every variable that is made."""
    given = []

    def kept(kind):
        return lambda **options: given.append(options) or getattr(tk, kind)(**options)

    stand_in = SimpleNamespace(**vars(tk))
    stand_in.StringVar, stand_in.BooleanVar = kept("StringVar"), kept("BooleanVar")
    monkeypatch.setattr(sketcher, "tk", stand_in)
    return given


def test_variables_in_tkinter_s_default_application_get_their_value_alone(
    root, sketcher, given_to_variables
):
    assert tk._default_root is root
    editor = sketcher.SketchEditor(root, {"entities": [circle()]})
    editor.select(0)
    assert len(given_to_variables) == 6 + 3
    assert all(list(options) == ["value"] for options in given_to_variables)


@pytest.mark.parametrize("default", ["another", None, "refused"])
def test_variables_elsewhere_belong_to_their_window(
    root, sketcher, monkeypatch, given_to_variables, default
):
    other = open_root()
    try:
        if default is None:
            monkeypatch.setattr(tk, "_default_root", None)
        elif default == "refused":
            monkeypatch.delattr(tk, "_default_root")
            monkeypatch.setattr(tk, "_support_default_root", False)
        editor = sketcher.SketchEditor(other, {"entities": [circle()]})
        editor.select(0)
        assert len(given_to_variables) == 6 + 3
        for options in given_to_variables:
            assert sorted(options) == ["master", "value"]
            assert options["master"]._root() is other
        assert [editor.tool.get(), editor.vars["r"].get()] == ["select", "1000"]
        monkeypatch.undo()
    finally:
        close_root(other)
