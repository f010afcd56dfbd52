"""The vocabulary tables, and the names, docs and signatures of the module."""

import ast
import copy
import inspect
import math
import tkinter
import typing
from tkinter import ttk

import numpy
import pytest
from harness.places import ROOT

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


def declared(stub=ROOT / "tandrel" / "gui" / "sketcher.pyi"):
    """What the stub says of the class's methods: parameters, whether static, and their docs."""
    body = ast.parse(stub.read_text()).body
    (editor,) = (node for node in body if getattr(node, "name", "") == "SketchEditor")
    for node in editor.body:
        decorators = [ast.unparse(each) for each in getattr(node, "decorator_list", ())]
        if isinstance(node, ast.FunctionDef) and decorators in ([], ["staticmethod"]):
            defaults = [f"={ast.unparse(default)}" for default in node.args.defaults]
            defaults = [""] * (len(node.args.args) - len(defaults)) + defaults
            names = [each.arg + default for each, default in zip(node.args.args, defaults)]
            yield node.name, ", ".join(names), bool(decorators), ast.get_docstring(node)


METHODS = {name: row for name, *row in declared()}


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


def test_class_has_the_methods_of_its_stub_and_no_others(sketcher):
    own = {name for name, value in vars(sketcher.SketchEditor).items() if callable(value)}
    assert own == set(METHODS)


def test_documented_operations_carry_their_texts(sketcher):
    cls = sketcher.SketchEditor
    assert sketcher.describe.__doc__ == "A short summary of an entity in display units."
    assert cls._dimensions.__doc__ == "Dimension labels for the selected shape."
    assert cls._preview.__doc__ == "The shape being drawn, following the pointer."


def parameters(function):
    return ", ".join(
        str(p.replace(kind=p.POSITIONAL_OR_KEYWORD))
        for p in inspect.signature(function).parameters.values()
    )


@pytest.mark.parametrize("name", METHODS)
def test_method_shows_its_signature_and_its_doc(sketcher, name):
    signature, is_static, doc = METHODS[name]
    cls = sketcher.SketchEditor
    assert parameters(getattr(cls, name)) == signature
    assert getattr(cls, name).__doc__.split() == doc.split()
    assert isinstance(vars(cls)[name], staticmethod) is is_static
    assert parameters(sketcher.describe) == "e"


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


@pytest.mark.parametrize("name", [name for name in METHODS if name != "__init__"])
def test_method_refuses_surplus_and_missing_arguments(sketcher, name):
    operation, names = getattr(sketcher.SketchEditor, name), METHODS[name][0].split(", ")
    needed = [each for each in names if "=" not in each]
    editor = PlainEditor()
    for arguments in ([editor] * (len(names) + 1), [editor] * (len(needed) - 1)):
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
