"""A dialog built of stand-ins, call by call: what is made, packed, bound and asked for."""

import ast
import textwrap

import pytest
from support.children import run
from support.operations import BUTTONS
from support.stand_ins import Stage, call

OPEN = """
import json
from support.neighbours import *
from support.stand_ins import *

stage = Stage()
stage.install()
import tandrel.gui.sketcher as module
from tandrel.gui.sketcher import SketchEditor
{}
print(json.dumps(repr(answer)))
"""


def among_stand_ins(code):
    """What `answer` is after this code, in a process that has no other tkinter."""
    return ast.literal_eval(run(OPEN.format(textwrap.dedent(code))))


def button(number, parent, text, command, style=None, **pack):
    options = {"text": f"<{text}>", **({"style": style} if style else {}), "command": command}
    return [call("ttk.Button", parent, **options), call(f"Button{number}.pack", **pack)]


def label(number, parent, text, style, **pack):
    return [
        call("ttk.Label", parent, text=text, style=f"{style}.TLabel"),
        call(f"Label{number}.pack", side="left", **pack),
    ]


def frame(number, parent, options=(), **pack):
    return [
        call("ttk.Frame", parent, style="Panel.TFrame", **dict(options)),
        call(f"Frame{number}.pack", **pack),
    ]


STATE = [
    call("StringVar", value="rectangle"),
    call("BooleanVar", value=True),
    call("StringVar", value="number 1"),
    call("StringVar", value="6"),
]
PLACEMENT = [
    *label(1, "Frame2", "<Plane>", "Panel"),
    call(
        "ttk.Combobox",
        "Frame2",
        textvariable="StringVar4",
        values=("XY", "XZ", "YZ"),
        state="readonly",
        width=5,
    ),
    call("Combobox1.pack", side="left", padx=(4, 12)),
    call("Combobox1.bind", "<<ComboboxSelected>>", "handler"),
    *label(2, "Frame2", "<Offset along the normal>", "Panel"),
    call("ttk.Entry", "Frame2", textvariable="StringVar5", width=9),
    call("Entry1.pack", side="left", padx=(4, 2)),
    *label(3, "Frame2", "mm", "Muted", padx=(0, 12)),
]
SNAP_AND_GRID = [
    call("ttk.Checkbutton", "Frame2", text="<Snap to grid>", variable="BooleanVar1"),
    call("Checkbutton1.pack", side="left"),
    *label(4, "Frame2", "<Grid>", "Panel", padx=(10, 4)),
    call("ttk.Entry", "Frame2", textvariable="StringVar2", width=7),
    call("Entry2.pack", side="left"),
    call("Entry2.bind", "<Return>", "handler"),
    call("Entry2.bind", "<FocusOut>", "handler"),
    *label(5, "Frame2", "mm", "Muted", padx=(2, 0)),
    *button(1, "Frame2", "Fit", "editor.fit", side="right"),
]


def tool(number, key, text, tip):
    return [
        call(
            "ttk.Radiobutton",
            "Frame4",
            text=f"<{text}>",
            value=key,
            variable="StringVar1",
            style="SketchTool.TRadiobutton",
            command="editor.cancel_drawing",
        ),
        call(f"Radiobutton{number}.pack", fill="x", pady=1),
        call("Tooltip", f"Radiobutton{number}", f"<{tip}>"),
    ]


BODY = [
    *frame(3, "Frame1", fill="both", expand=True, pady=(8, 0)),
    *frame(4, "Frame3", side="left", fill="y", padx=(0, 8)),
    *(entry for number, row in enumerate(BUTTONS, 1) for entry in tool(number, *row)),
    *frame(5, "Frame4", fill="x", pady=(6, 0)),
    *label(6, "Frame5", "<Sides>", "Panel"),
    call("ttk.Spinbox", "Frame5", from_=3, to=64, textvariable="StringVar3", width=4),
    call("Spinbox1.pack", side="left", padx=(4, 0)),
    *button(2, "Frame4", "Delete", "editor.delete", fill="x", pady=(12, 0)),
    call(
        "Canvas",
        "Frame3",
        width=620,
        height=460,
        background="the panel",
        highlightthickness=1,
        highlightbackground="the line",
        cursor="crosshair",
    ),
    call("Canvas1.pack", side="left", fill="both", expand=True),
    *frame(6, "Frame3", {"width": 280}, side="left", fill="y", padx=(8, 0)),
    call(
        "ttk.Treeview",
        "Frame6",
        columns=("size",),
        show="tree headings",
        height=8,
        selectmode="browse",
    ),
    call("Treeview1.heading", "#0", text="<Shape>"),
    call("Treeview1.heading", "size", text="<Size>"),
    call("Treeview1.column", "#0", width=110),
    call("Treeview1.column", "size", width=160),
    call("Treeview1.pack", fill="x"),
    call("Treeview1.bind", "<<TreeviewSelect>>", "handler"),
    *frame(7, "Frame6", fill="x", pady=(8, 0)),
]
BOTTOM = [
    call(
        "ttk.Label",
        "Frame1",
        text="",
        style="Muted.TLabel",
        wraplength=("px", 900),
        justify="left",
    ),
    call("Label7.pack", fill="x", pady=(6, 0)),
    *frame(8, "Frame1", fill="x", pady=(8, 0)),
    *label(
        8,
        "Frame8",
        "<Shapes inside other shapes become holes; overlapping shapes join.>",
        "Muted",
    ),
    *button(3, "Frame8", "Cancel", "editor.destroy", side="right"),
    *button(4, "Frame8", "OK", "editor.ok", "Primary.TButton", side="right", padx=(0, 6)),
]
CANVAS = [
    call("Canvas1.bind", event, handler)
    for event, handler in [
        ("<Configure>", "handler"),
        ("<ButtonPress-1>", "editor._press"),
        ("<B1-Motion>", "editor._drag"),
        ("<ButtonRelease-1>", "editor._release"),
        ("<Double-Button-1>", "handler"),
        ("<Motion>", "editor._motion"),
        ("<ButtonPress-2>", "editor._pan_start"),
        ("<ButtonPress-3>", "editor._pan_start"),
        ("<B2-Motion>", "editor._pan_move"),
        ("<B3-Motion>", "editor._pan_move"),
        ("<MouseWheel>", "handler"),
        ("<Button-4>", "handler"),
        ("<Button-5>", "handler"),
    ]
]
NOTHING_SELECTED = [
    call(
        "ttk.Label",
        "Frame7",
        text="<Select a shape to type its exact size.>",
        style="Muted.TLabel",
        wraplength=("px", 260),
    ),
    call("Label9.pack", anchor="w"),
]
KEYS = [
    call("editor.bind", event, "handler")
    for event in ("<Escape>", "<Return>", "<Delete>", "<BackSpace>")
]
OUTER = [
    *frame(1, "editor", {"padding": 10}, fill="both", expand=True),
    *frame(2, "Frame1", fill="x"),
]
NAMED = "tool snap grid sides plane offset canvas list props status".split()
CONSTRUCTION = [
    call("Toplevel", "the parent"),
    call("editor.title", "<Sketch>"),
    call("editor.transient", "the parent"),
    call("editor.configure", background="the panel"),
    *STATE,
    call("StringVar", value="XY"),
    call("StringVar", value="number 0"),
    *OUTER,
    *PLACEMENT,
    *SNAP_AND_GRID,
    *BODY,
    *BOTTOM,
    *CANVAS,
    call("Treeview1.delete"),
    *NOTHING_SELECTED,
    call("editor.update_idletasks"),
    call("Canvas1.delete", "all"),
    *KEYS,
    *("StringVar1", "BooleanVar1", "StringVar2", "StringVar3", "StringVar4", "StringVar5"),
    *("Canvas1", "Treeview1", "Frame7", "Label7"),
]


ARGUMENTS = {
    "nothing": "None",
    "a sketch": '{"plane": "YZ", "offset": 0.25, "entities": [rectangle()]}, 3.0, "Profile"',
    "a fixed plane": "None, allow_plane=False",
    **{f"{dim} dimensions": f"None, {dim}" for dim in ("2", "None", "'3'")},
}


@pytest.fixture(scope="module")
def constructed():
    """What is done for a dialog with these arguments, and which widgets have a name."""
    made = (f"{name!r}: made({arguments})" for name, arguments in ARGUMENTS.items())
    return among_stand_ins(
        f"""
        def made(*arguments, **named):
            stage.numbers.clear()
            editor = SketchEditor("the parent", *arguments, **named)
            return stage.recorded() + [getattr(editor, name).name for name in {NAMED}]

        answer = {{{", ".join(made)}}}
        """
    )


def test_construction_call_by_call(constructed):
    assert constructed["nothing"] == CONSTRUCTION


def test_construction_on_a_sketch_call_by_call(constructed):
    expected = list(CONSTRUCTION)
    expected[1] = call("editor.title", "Profile")
    expected[4:10] = [
        call("StringVar", value="select"),
        call("BooleanVar", value=True),
        call("StringVar", value="number 100"),
        call("StringVar", value="6"),
        call("StringVar", value="YZ"),
        call("StringVar", value="number 250"),
    ]
    rows = expected.index(call("Treeview1.delete"))
    row = {"iid": "0", "text": "1. <Rectangle>", "values": ("2000 mm x 1000 mm",)}
    expected.insert(rows + 1, call("Treeview1.insert", "", "end", **row))
    assert constructed["a sketch"] == expected


def renumbered(entries, shifts):
    """The entries with the widgets' numbers as they are where some aren't made."""
    text = repr(entries)
    for before, after in shifts:
        text = text.replace(before, after)
    return ast.literal_eval(text)


def without_placement(kept, shifts):
    """The construction where only a part of the widgets that place a sketch is made."""
    start = CONSTRUCTION.index(SNAP_AND_GRID[0])
    left = renumbered(kept + CONSTRUCTION[start:], shifts)
    return CONSTRUCTION[: start - len(PLACEMENT)] + left


def test_layout_without_plane_chooser(constructed):
    shifts = [(f"Label{number}", f"Label{number - 1}") for number in range(2, 10)]
    assert constructed["a fixed plane"] == without_placement(PLACEMENT[5:], shifts)


@pytest.mark.parametrize("dim", ["2", "None", "'3'"])
def test_layout_of_a_plain_region(constructed, dim):
    shifts = [(f"Label{number}", f"Label{number - 3}") for number in range(4, 10)]
    expected = without_placement([], [*shifts, ("Entry2", "Entry1")])
    assert constructed[f"{dim} dimensions"] == expected


def test_running_and_accepting_call_by_call():
    record = among_stand_ins(
        """
        master = Master(winfo_rootx=10, winfo_rooty=20, winfo_width=901, winfo_height=607)
        editor = SketchEditor(master, {"plane": "XZ"})
        stage.record.clear()
        editor.offset.value = "12"
        result = editor.run()
        editor.ok()
        answer = stage.recorded() + [result, editor.result, editor.result is editor.sk]
        """
    )
    assert record == [
        call("editor.update_idletasks"),
        call("editor.geometry", "+310+121"),
        call("editor.grab_set"),
        call("Canvas1.delete", "all"),
        call("editor.wait_window"),
        call("editor.destroy"),
        None,
        {"plane": "XZ", "entities": [], "offset": 0.012},
        True,
    ]


# --- keys of the dialog


def test_keys_delete_a_shape_unless_they_come_from_its_corners():
    """Each of the four operations is looked up when its key comes."""
    events = ["SimpleNamespace(widget=box)", "SimpleNamespace(widget=5)", "SimpleNamespace()"]
    pressed = among_stand_ins(
        f"""
        from types import SimpleNamespace

        def pressed(event, **attributes):
            done = []
            vars(editor).update(attributes)
            for name in ("cancel_drawing", "close_line", "delete"):
                setattr(editor, name, lambda *args, name=name: done.append((name, *args)))
            for (name, _), handler in handlers.items():
                if name == "editor":
                    handler(event)
            return done

        editor, box = SketchEditor("the parent", None), object()
        handlers = stage.handlers()
        answer = [pressed(event) for event in ({events[1]}, {events[2]}, None)]
        answer += [pressed(event, points_text=box) for event in ({", ".join(events)})]
        answer += [pressed({events[2]}, points_text=None)]
        """
    )
    every = [("cancel_drawing",), ("close_line",), ("delete",), ("delete",)]
    assert pressed == [every, every, every, every[:2], every, every, every]


def test_keys_need_their_event():
    outcomes = among_stand_ins(
        """
        editor = SketchEditor("the parent", None)
        answer = []
        for handler in stage.handlers().values():
            try:
                handler()
            except TypeError:
                answer.append("TypeError")
        """
    )
    assert outcomes == ["TypeError"] * (1 + 2 + 1 + 13 + 4)


# --- overrides


def test_commands_and_pointer_handlers_are_the_operations_as_they_are_when_widgets_are_made():
    outcomes = among_stand_ins(
        """
        class Editor(SketchEditor):
            def __init__(self, *args):
                self.fit = lambda: done.append("own fit")
                super().__init__(*args)

            def ok(self):
                done.append("overridden ok")

            def _press(self, event):
                done.append("overridden _press")

        done = []
        editor = Editor("the parent", None)
        commands, handlers = stage.commands(), stage.handlers()
        same = [
            commands["<Fit>"] is editor.fit,
            commands["<OK>"] == editor.ok,
            commands["<Cancel>"] == editor.destroy,
            commands["<Delete>"] == editor.delete == SketchEditor.delete.__get__(editor),
            commands["<Slot>"] == editor.cancel_drawing,
            handlers["Canvas1", "<ButtonPress-1>"] == editor._press,
            handlers["Canvas1", "<ButtonPress-3>"] == editor._pan_start,
        ]
        done.clear()
        for name in ("fit", "ok", "_press", "redraw"):
            setattr(editor, name, lambda *args, name=name: done.append("later " + name))
        commands["<Fit>"]()
        commands["<OK>"]()
        handlers["Canvas1", "<ButtonPress-1>"](None)
        handlers["Canvas1", "<Configure>"](None)
        answer = [same, done]
        """
    )
    same, done = outcomes
    assert same == [True] * 7
    assert done == ["own fit", "overridden ok", "overridden _press", "later redraw"]


HANDLED = [
    ("Combobox1", "<<ComboboxSelected>>", [("_plane_changed",), ("redraw",)]),
    ("Entry2", "<Return>", [("redraw",)]),
    ("Entry2", "<FocusOut>", [("redraw",)]),
    ("Treeview1", "<<TreeviewSelect>>", [("_list_selected",)]),
    ("Canvas1", "<Configure>", [("redraw",)]),
    ("Canvas1", "<Double-Button-1>", [("close_line",)]),
    ("Canvas1", "<Button-4>", [("_zoom", 1.2, "x", "y")]),
    ("Canvas1", "<Button-5>", [("_zoom", 1 / 1.2, "x", "y")]),
]


def test_handlers_look_their_operations_up_when_the_event_comes(monkeypatch, sketcher):
    stage = Stage()
    stage.replace(monkeypatch, sketcher)
    editor = stage.editor()
    editor._build(True)
    handlers = stage.handlers()
    calls = editor.watch("_plane_changed", "redraw", "_list_selected", "close_line", "_zoom")
    for widget, event, expected in HANDLED:
        handlers[widget, event](EVENT)
        assert [(name, *args) for name, args, _ in calls] == expected
        calls.clear()


class EVENT:
    x, y = "x", "y"


@pytest.mark.parametrize("delta, factor", [(120, 1.2), (0, 1 / 1.2), (-0.5, 1 / 1.2)])
def test_wheel_is_read_off_its_event(monkeypatch, sketcher, delta, factor):
    stage = Stage()
    stage.replace(monkeypatch, sketcher)
    editor = stage.editor()
    editor._build(False)
    calls = editor.watch("_zoom")
    event = type("Event", (EVENT,), {"delta": delta})
    stage.handlers()["Canvas1", "<MouseWheel>"](event)
    assert calls == [("_zoom", (factor, "x", "y"), {})]
