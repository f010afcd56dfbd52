"""The vocabulary tables, and the names, docs and signatures of the module."""

import copy
import inspect
import math
import tkinter
import typing
from tkinter import ttk

import numpy
import pytest

from support.neighbours import circle
from support.operations import BUTTONS
from support.plain import PlainEditor
from support.types import CARDS

TOOL_TIPS = {name: tip for name, _, tip in BUTTONS}
FIELDS = {
    card.name: [(key, label, is_length) for key, label, is_length, _ in card.fields]
    for card in CARDS
}
TYPE_LABEL = {card.name: card.label for card in CARDS}
MODULE_DOC = (
    "Sketch editor: draw closed profiles with the mouse, snap to a grid and to existing points,\n"
    "and type exact dimensions. Used by the sketch-based features (extrude, revolve and 2D "
    "regions)."
)
CLASS_DOC = "Edit a sketch in place. `result` is the edited sketch after OK (None after Cancel)."
OPERATIONS = {
    "run": "",
    "ok": "",
    "fit": "",
    "redraw": "",
    "pick": "x, y",
    "select": "i",
    "add": "ent",
    "delete": "",
    "close_line": "",
    "cancel_drawing": "",
    "refresh_list": "keep=False",
    "show_props": "",
    "apply_props": "",
    "grid_step": "",
    "to_screen": "p",
    "to_world": "x, y",
    "key_points": "",
    "snapped": "x, y",
    "_press": "e",
    "_drag": "e",
    "_release": "e",
    "_motion": "e",
    "_zoom": "f, x, y",
    "_pan_start": "e",
    "_pan_move": "e",
    "_preview": "",
    "_dimensions": "e",
    "_from_drag": "a, b",
    "_slot": "a, b, p",
    "_extent": "",
    "_default_grid": "",
    "_plane_changed": "",
    "_list_selected": "",
    "_build": "allow_plane",
}
STATIC_OPERATIONS = {"_ok": "e", "_moved": "e, d"}


# --- tables


def test_tools_are_pairs_in_the_order_of_the_buttons(sketcher):
    assert sketcher.TOOLS == [(name, label) for name, label, _ in BUTTONS]
    assert type(sketcher.TOOLS) is list
    assert {type(pair) for pair in sketcher.TOOLS} == {tuple}


@pytest.mark.parametrize("name", ["TOOL_TIPS", "FIELDS", "TYPE_LABEL"])
def test_other_tables_are_dictionaries_in_their_order(sketcher, name):
    table, expected = getattr(sketcher, name), globals()[name]
    assert table == expected
    assert type(table) is dict
    assert list(table) == list(expected)


def test_fields_are_lists_of_triples(sketcher):
    for rows in sketcher.FIELDS.values():
        assert type(rows) is list
        assert {type(row) for row in rows} == {tuple}
        assert {type(is_len) for _, _, is_len in rows} == {bool}


def test_snapping_radius_is_the_integer_nine(sketcher):
    assert sketcher.SNAP_PX == 9
    assert type(sketcher.SNAP_PX) is int


# --- names, docs and signatures


def test_imported_names_are_attributes_of_the_module(sketcher):
    import tandrel.gui.i18n
    import tandrel.gui.widgets
    import tandrel.sketch

    assert sketcher.copy is copy
    assert sketcher.math is math
    assert sketcher.tk is tkinter
    assert sketcher.ttk is ttk
    assert sketcher.np is numpy
    assert sketcher.S is tandrel.sketch
    for name in ("N_", "tr"):
        assert getattr(sketcher, name) is getattr(tandrel.gui.i18n, name)
    for name in ("PAL", "Form", "Tooltip", "num_text", "px", "units"):
        assert getattr(sketcher, name) is getattr(tandrel.gui.widgets, name)
    for name in ("Any", "Dict", "List", "Optional", "Sequence", "Tuple"):
        assert getattr(sketcher, name) is getattr(typing, name)


def test_module_names_itself_and_its_purpose(sketcher):
    assert sketcher.__name__ == "tandrel.gui.sketcher"
    assert sketcher.__package__ == "tandrel.gui"
    assert sketcher.__doc__ == MODULE_DOC


def test_class_derives_from_toplevel_and_names_itself(sketcher):
    cls = sketcher.SketchEditor
    assert cls.__bases__ == (tkinter.Toplevel,)
    assert cls.__module__ == "tandrel.gui.sketcher"
    assert cls.__name__ == cls.__qualname__ == "SketchEditor"
    assert cls.__doc__ == CLASS_DOC


def test_class_has_its_operations_and_no_others(sketcher):
    own = {name for name in vars(sketcher.SketchEditor) if not name.startswith("__")}
    assert own == set(OPERATIONS) | set(STATIC_OPERATIONS)


def test_documented_operations_carry_their_texts(sketcher):
    cls = sketcher.SketchEditor
    assert sketcher.describe.__doc__ == "A short summary of an entity in display units."
    assert cls._dimensions.__doc__ == "Dimension labels for the selected shape."
    assert cls._preview.__doc__ == "The shape being drawn, following the pointer."
    for name in [*OPERATIONS, *STATIC_OPERATIONS]:
        assert inspect.getdoc(getattr(cls, name)), name


def parameters(function):
    return ", ".join(
        str(p.replace(kind=p.POSITIONAL_OR_KEYWORD))
        for p in inspect.signature(function).parameters.values()
    )


@pytest.mark.parametrize("name", OPERATIONS)
def test_operation_shows_its_signature(sketcher, name):
    expected = ", ".join(filter(None, ["self", OPERATIONS[name]]))
    assert parameters(getattr(sketcher.SketchEditor, name)) == expected


@pytest.mark.parametrize("name", STATIC_OPERATIONS)
def test_static_operation_shows_its_signature(sketcher, name):
    assert parameters(getattr(sketcher.SketchEditor, name)) == STATIC_OPERATIONS[name]


def test_constructor_and_describe_show_their_signatures(sketcher):
    expected = "self, parent, sketch, dim=3, title='', references=(), allow_plane=True"
    assert parameters(sketcher.SketchEditor.__init__) == expected
    assert parameters(sketcher.describe) == "e"


def test_only_validity_and_moving_are_static(sketcher):
    members = vars(sketcher.SketchEditor)
    for name in STATIC_OPERATIONS:
        assert isinstance(members[name], staticmethod), name
    for name in OPERATIONS:
        assert not isinstance(members[name], (staticmethod, classmethod)), name


def test_operations_take_any_object_as_their_editor(sketcher):
    class Bare:
        sk = {"plane": "XY"}

        class plane:
            get = staticmethod(lambda: "YZ")

    bare = Bare()
    assert sketcher.SketchEditor._plane_changed(bare) is None
    assert bare.sk == {"plane": "YZ"}


def test_operations_bind_to_the_editor_that_they_are_taken_from(sketcher):
    member = vars(sketcher.SketchEditor)["to_screen"]
    editor = PlainEditor(width=100, height=50)
    bound = member.__get__(editor, type(editor))
    assert bound((1.0, 2.0)) == sketcher.SketchEditor.to_screen(editor, (1.0, 2.0)) == (51.0, 23.0)


@pytest.mark.parametrize("name", OPERATIONS)
def test_operation_refuses_surplus_and_missing_arguments(sketcher, name):
    operation, wanted = getattr(sketcher.SketchEditor, name), OPERATIONS[name].split(", ")
    refused = [(PlainEditor(), *range(len(list(filter(None, wanted))) + 1)), ()]
    if wanted[0] and "=" not in wanted[0]:
        refused.append((PlainEditor(),))
    for arguments in refused:
        with pytest.raises(TypeError):
            operation(*arguments)


def test_arguments_may_be_given_by_name(sketcher):
    cls = sketcher.SketchEditor
    editor = PlainEditor(width=100, height=50)
    assert cls.to_screen(editor, p=(1.0, 2.0)) == (51.0, 23.0)
    assert cls.to_world(editor, x=51.0, y=23.0).tolist() == [1.0, 2.0]
    assert cls._moved(e=circle(), d=(1, 2)) == circle(1.0, 2.0)
    with pytest.raises(TypeError):
        cls.to_screen(editor, q=(1.0, 2.0))
    with pytest.raises(TypeError):
        cls.to_screen(editor, (1.0, 2.0), p=(1.0, 2.0))
