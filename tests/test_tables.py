"""The vocabulary tables, and the names, docs and signatures of the module."""

import copy
import inspect
import math
import pydoc
import tkinter
import typing
from tkinter import ttk

import numpy
import pytest

from support.neighbours import circle
from support.plain import PlainEditor

TOOLS = [
    ("select", "Select and move"),
    ("line", "Line (closed outline)"),
    ("rectangle", "Rectangle"),
    ("circle", "Circle"),
    ("regular", "Polygon"),
    ("slot", "Slot"),
]
TOOL_TIPS = {
    "select": "Click a shape to select it and edit its dimensions; drag to move it; "
    "Delete removes it.",
    "line": "Click corner after corner; click the first corner again (or press Enter) "
    "to close the outline.",
    "rectangle": "Drag from one corner to the opposite corner.",
    "circle": "Press at the centre and drag out the radius.",
    "regular": "Press at the centre and drag to a corner; set the number of sides first.",
    "slot": "Click the centre of one end, then the other end, then the width.",
}
FIELDS = {
    "rectangle": [
        ("x", "Corner u", True),
        ("y", "Corner v", True),
        ("w", "Width", True),
        ("h", "Height", True),
        ("radius", "Corner radius (0 = sharp)", True),
    ],
    "circle": [("xc", "Centre u", True), ("yc", "Centre v", True), ("r", "Radius", True)],
    "regular": [
        ("xc", "Centre u", True),
        ("yc", "Centre v", True),
        ("r", "Corner radius from centre", True),
        ("n", "Sides", False),
        ("angle", "Angle of first corner (degrees)", False),
    ],
    "slot": [
        ("x1", "End 1 centre u", True),
        ("y1", "End 1 centre v", True),
        ("x2", "End 2 centre u", True),
        ("y2", "End 2 centre v", True),
        ("r", "Half width", True),
    ],
    "polygon": [("radius", "Corner radius (0 = sharp)", True)],
}
TYPE_LABEL = {
    "rectangle": "Rectangle",
    "circle": "Circle",
    "regular": "Polygon",
    "slot": "Slot",
    "polygon": "Outline",
}
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
    assert sketcher.TOOLS == TOOLS
    assert type(sketcher.TOOLS) is list
    assert {type(pair) for pair in sketcher.TOOLS} == {tuple}


def test_tool_tips(sketcher):
    assert sketcher.TOOL_TIPS == TOOL_TIPS
    assert type(sketcher.TOOL_TIPS) is dict
    assert list(sketcher.TOOL_TIPS) == list(TOOL_TIPS)


def test_fields_are_triples_in_form_order(sketcher):
    assert sketcher.FIELDS == FIELDS
    assert type(sketcher.FIELDS) is dict
    assert list(sketcher.FIELDS) == list(FIELDS)
    for rows in sketcher.FIELDS.values():
        assert type(rows) is list
        assert {type(row) for row in rows} == {tuple}
        assert {type(is_len) for _, _, is_len in rows} == {bool}


def test_type_labels(sketcher):
    assert sketcher.TYPE_LABEL == TYPE_LABEL
    assert type(sketcher.TYPE_LABEL) is dict
    assert list(sketcher.TYPE_LABEL) == list(TYPE_LABEL)


def test_snapping_radius_is_the_integer_nine(sketcher):
    assert sketcher.SNAP_PX == 9
    assert type(sketcher.SNAP_PX) is int


def test_every_tool_has_a_tip_and_every_type_has_fields_and_a_label(sketcher):
    tools = {key for key, _ in sketcher.TOOLS}
    assert set(sketcher.TOOL_TIPS) == tools
    assert set(sketcher.FIELDS) == set(sketcher.TYPE_LABEL)
    assert tools - set(sketcher.FIELDS) == {"select", "line"}
    assert set(sketcher.FIELDS) - tools == {"polygon"}


def test_sides_and_angle_are_the_only_fields_that_are_no_lengths(sketcher):
    plain = [
        (kind, key)
        for kind, rows in sketcher.FIELDS.items()
        for key, _, is_len in rows
        if not is_len
    ]
    assert plain == [("regular", "n"), ("regular", "angle")]


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


def test_help_shows_every_public_operation_with_its_signature(sketcher):
    text = pydoc.render_doc(sketcher.SketchEditor, renderer=pydoc.plaintext)
    assert CLASS_DOC in text
    lines = [line.strip(" |") for line in text.splitlines()]
    for name, arguments in OPERATIONS.items():
        if name.startswith("_"):
            continue
        shown = [line for line in lines if line.startswith(f"{name}(self")]
        assert len(shown) == 1, name
        assert all(argument in shown[0] for argument in arguments.split(", ")), shown


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
def test_operation_refuses_surplus_arguments(sketcher, name):
    wanted = len(list(filter(None, OPERATIONS[name].split(", "))))
    with pytest.raises(TypeError):
        getattr(sketcher.SketchEditor, name)(PlainEditor(), *range(wanted + 1))


@pytest.mark.parametrize(
    "name", [n for n in OPERATIONS if OPERATIONS[n] and "=" not in OPERATIONS[n]]
)
def test_operation_refuses_missing_arguments(sketcher, name):
    with pytest.raises(TypeError):
        getattr(sketcher.SketchEditor, name)(PlainEditor())


def test_operation_without_an_editor_is_refused(sketcher):
    for name in OPERATIONS:
        with pytest.raises(TypeError):
            getattr(sketcher.SketchEditor, name)()


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
