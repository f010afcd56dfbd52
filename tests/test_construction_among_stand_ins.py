"""A dialog built of stand-ins, call by call: what is made, packed, bound and asked for."""

import ast
import textwrap

import pytest
from support.children import run
from support.operations import BUTTONS
from support.stand_ins import Stage, call, line, lines

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


def tool(number, key, text, tip):
    radiobutton = {"text": f"<{text}>", "value": key, "variable": "StringVar1"}
    radiobutton |= {"style": "SketchTool.TRadiobutton", "command": "editor.cancel_drawing"}
    yield line(call("ttk.Radiobutton", "Frame4", **radiobutton))
    yield line(call(f"Radiobutton{number}.pack", fill="x", pady=1))
    yield line(call("Tooltip", f"Radiobutton{number}", f"<{tip}>"))


TOP = lines(
    """
Toplevel('the parent')
editor.title('<Sketch>')
editor.transient('the parent')
editor.configure(background='the panel')
StringVar(value='rectangle')
BooleanVar(value=True)
StringVar(value='number 1')
StringVar(value='6')
StringVar(value='XY')
StringVar(value='number 0')
ttk.Frame('editor', style='Panel.TFrame', padding=10)
Frame1.pack(fill='both', expand=True)
ttk.Frame('Frame1', style='Panel.TFrame')
Frame2.pack(fill='x')
"""
)
PLACEMENT = lines(
    """
ttk.Label('Frame2', text='<Plane>', style='Panel.TLabel')
Label1.pack(side='left')
ttk.Combobox('Frame2', textvariable='StringVar4', values=('XY', 'XZ', 'YZ'), state='readonly',
    width=5)
Combobox1.pack(side='left', padx=(4, 12))
Combobox1.bind('<<ComboboxSelected>>', 'handler')
ttk.Label('Frame2', text='<Offset along the normal>', style='Panel.TLabel')
Label2.pack(side='left')
ttk.Entry('Frame2', textvariable='StringVar5', width=9)
Entry1.pack(side='left', padx=(4, 2))
ttk.Label('Frame2', text='mm', style='Muted.TLabel')
Label3.pack(side='left', padx=(0, 12))
"""
)
TOOLBAR = lines(
    """
ttk.Checkbutton('Frame2', text='<Snap to grid>', variable='BooleanVar1')
Checkbutton1.pack(side='left')
ttk.Label('Frame2', text='<Grid>', style='Panel.TLabel')
Label4.pack(side='left', padx=(10, 4))
ttk.Entry('Frame2', textvariable='StringVar2', width=7)
Entry2.pack(side='left')
Entry2.bind('<Return>', 'handler')
Entry2.bind('<FocusOut>', 'handler')
ttk.Label('Frame2', text='mm', style='Muted.TLabel')
Label5.pack(side='left', padx=(2, 0))
ttk.Button('Frame2', text='<Fit>', command='editor.fit')
Button1.pack(side='right')
ttk.Frame('Frame1', style='Panel.TFrame')
Frame3.pack(fill='both', expand=True, pady=(8, 0))
ttk.Frame('Frame3', style='Panel.TFrame')
Frame4.pack(side='left', fill='y', padx=(0, 8))
"""
)
TOOLS = [made for number, row in enumerate(BUTTONS, 1) for made in tool(number, *row)]
REST = lines(
    """
ttk.Frame('Frame4', style='Panel.TFrame')
Frame5.pack(fill='x', pady=(6, 0))
ttk.Label('Frame5', text='<Sides>', style='Panel.TLabel')
Label6.pack(side='left')
ttk.Spinbox('Frame5', from_=3, to=64, textvariable='StringVar3', width=4)
Spinbox1.pack(side='left', padx=(4, 0))
ttk.Button('Frame4', text='<Delete>', command='editor.delete')
Button2.pack(fill='x', pady=(12, 0))
Canvas('Frame3', width=620, height=460, background='the panel', highlightthickness=1,
    highlightbackground='the line', cursor='crosshair')
Canvas1.pack(side='left', fill='both', expand=True)
ttk.Frame('Frame3', style='Panel.TFrame', width=280)
Frame6.pack(side='left', fill='y', padx=(8, 0))
ttk.Treeview('Frame6', columns=('size',), show='tree headings', height=8, selectmode='browse')
Treeview1.heading('#0', text='<Shape>')
Treeview1.heading('size', text='<Size>')
Treeview1.column('#0', width=110)
Treeview1.column('size', width=160)
Treeview1.pack(fill='x')
Treeview1.bind('<<TreeviewSelect>>', 'handler')
ttk.Frame('Frame6', style='Panel.TFrame')
Frame7.pack(fill='x', pady=(8, 0))
ttk.Label('Frame1', text='', style='Muted.TLabel', wraplength=('px', 900), justify='left')
Label7.pack(fill='x', pady=(6, 0))
ttk.Frame('Frame1', style='Panel.TFrame')
Frame8.pack(fill='x', pady=(8, 0))
ttk.Label('Frame8', text='<Shapes inside other shapes become holes; overlapping shapes join.>',
    style='Muted.TLabel')
Label8.pack(side='left')
ttk.Button('Frame8', text='<Cancel>', command='editor.destroy')
Button3.pack(side='right')
ttk.Button('Frame8', text='<OK>', style='Primary.TButton', command='editor.ok')
Button4.pack(side='right', padx=(0, 6))
Canvas1.bind('<Configure>', 'handler')
Canvas1.bind('<ButtonPress-1>', 'editor._press')
Canvas1.bind('<B1-Motion>', 'editor._drag')
Canvas1.bind('<ButtonRelease-1>', 'editor._release')
Canvas1.bind('<Double-Button-1>', 'handler')
Canvas1.bind('<Motion>', 'editor._motion')
Canvas1.bind('<ButtonPress-2>', 'editor._pan_start')
Canvas1.bind('<ButtonPress-3>', 'editor._pan_start')
Canvas1.bind('<B2-Motion>', 'editor._pan_move')
Canvas1.bind('<B3-Motion>', 'editor._pan_move')
Canvas1.bind('<MouseWheel>', 'handler')
Canvas1.bind('<Button-4>', 'handler')
Canvas1.bind('<Button-5>', 'handler')
Treeview1.delete()
ttk.Label('Frame7', text='<Select a shape to type its exact size.>', style='Muted.TLabel',
    wraplength=('px', 260))
Label9.pack(anchor='w')
editor.update_idletasks()
Canvas1.delete('all')
editor.bind('<Escape>', 'handler')
editor.bind('<Return>', 'handler')
editor.bind('<Delete>', 'handler')
editor.bind('<BackSpace>', 'handler')
"""
)
NAMED = "tool snap grid sides plane offset canvas list props status".split()
NAMES = "StringVar1 BooleanVar1 StringVar2 StringVar3 StringVar4 StringVar5".split()
NAMES += "Canvas1 Treeview1 Frame7 Label7".split()
CONSTRUCTION = TOP + PLACEMENT + TOOLBAR + TOOLS + REST + NAMES


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
    records = among_stand_ins(
        f"""
        def made(*arguments, **named):
            stage.numbers.clear()
            editor = SketchEditor("the parent", *arguments, **named)
            return stage.recorded(), [getattr(editor, name).name for name in {NAMED}]

        answer = {{{", ".join(made)}}}
        """
    )
    return {name: [*map(line, record), *names] for name, (record, names) in records.items()}


def test_construction_call_by_call(constructed):
    assert constructed["nothing"] == CONSTRUCTION


def test_construction_on_a_sketch_call_by_call(constructed):
    expected = list(CONSTRUCTION)
    expected[1] = "editor.title('Profile')"
    expected[4:10] = lines(
        """
StringVar(value='select')
BooleanVar(value=True)
StringVar(value='number 100')
StringVar(value='6')
StringVar(value='YZ')
StringVar(value='number 250')
"""
    )
    row = {"iid": "0", "text": "1. <Rectangle>", "values": ("2000 mm x 1000 mm",)}
    inserted = line(call("Treeview1.insert", "", "end", **row))
    expected.insert(expected.index("Treeview1.delete()") + 1, inserted)
    assert constructed["a sketch"] == expected


def without_placement(kept, shifts):
    """The construction where only a part of the widgets that place a sketch is made.

    The numbers of the widgets are as they are where some aren't made.
    """
    text = "\n".join(kept + TOOLBAR + TOOLS + REST + NAMES)
    for before, after in shifts:
        text = text.replace(before, after)
    return TOP + text.splitlines()


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
